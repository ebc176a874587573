// The About popup: the banner with its close mark over the whole popup, and the product's
// statement in a read-only text area on it. A click on the close mark or Escape ends it.
#pragma once

#include "ciom/picture.h"
#include "ciom/pictzones.h"
#include "ciom/propssheetex.h"

class cAboutPopupUI : public cChildElement {
public:
  static constexpr int kWidth = 475, kHeight = 258;
  static constexpr sRect kCloseZone{451, 6, 17, 17};
  static constexpr sRect kTextArea{20, 90, 435, 150};

  // Shows the popup modally, centred over parent; 0 when it ends, -1 without a parent or
  // its window.
  static int runAbout(cChildElement* parent);
  // Where the popup stands over parent: centred, each halving rounded toward zero.
  static sPoint placeOver(const sRect& parent);

  cPictureZonesChild& banner() { return myBanner; }
  cPropDispAreaChild& statement() { return myText; }

  const char* wantLangResource() override { return "ruled::about"; }
  void onConstruct() override;
  bool onAction(cChildElement* source, cChildAction* action) override;
  bool processKey(int key, bool shift, bool ctrl, bool alt) override;
  bool wantAcceptFoucs() override { return true; }

private:
  cPicture myPicture;
  cPictureZonesChild myBanner;
  cPropDispAreaChild myText;
};
