// A property sheet with a panel under it that describes the selected property, and that
// panel on its own.
//
// cPropDispAreaChild shows a title and a word-wrapped text, each in a font of its own, on
// a background; when the text needs another height it says so with a
// cPropDispResizeAction (code 6). cPropSheetExChild stacks the sheet over such a panel in
// a vertical splitter: selecting a property shows its caption and description below, and
// the panel keeps the height its text asks for.
#pragma once

#include <string>

#include "propsheet.h"
#include "scrollable.h"
#include "vsplit.h"

class cPropDispAreaChild : public cScrollableElement {
public:
  static constexpr int kMargin = 6;

  class cPropDispResizeAction : public cChildAction {
  public:
    explicit cPropDispResizeAction(int height) : cChildAction(kResizeCode), height(height) {}
    int height;
  };
  static constexpr int kResizeCode = 6;

  cPropDispAreaChild();

  // Fonts owned elsewhere; null: the element's bold and standard fonts.
  void setFonts(cFontObject* title, cFontObject* text);
  void setColorSchema(unsigned background, unsigned title, unsigned text);
  void setFrameColor(unsigned colour);
  void setExtraTitleSpacing(int spacing);
  // A negative length takes the whole zero-terminated string. The element's own one-text
  // form stays reachable.
  using cChildElement::setText;
  void setText(const char* title, const char* text) { setText(title, -1, text, -1); }
  void setText(const char* title, long long titleLength, const char* text, long long textLength);
  const std::string& title() const { return myTitle; }
  const std::string& body() const { return myText; }
  int wantedHeight() const { return myWanted; }

  void onPaint(cCanvas* canvas) override;
  void onSizeChanged() override;
  bool wantDoubleBuffer() override { return true; }
  int wantBorderWidth() override { return 1; }

private:
  // Lays the texts out at the current width from y = top, drawing them when asked;
  // returns the height they take.
  int flow(cCanvas* canvas, bool draw, int top);

  std::string myTitle, myText;
  cFontObject* myTitleFont = nullptr;
  cFontObject* myTextFont = nullptr;
  unsigned myBackground, myTitleColour, myTextColour, myFrame;
  int mySpacing = 2;
  int myWanted = 0;
};

class cPropSheetExChild : public cVSplitterChild {
public:
  cPropSheetExChild();

  cPropSheetChild& sheet() { return mySheet; }
  cPropDispAreaChild& display() { return myDisplay; }
  // Empties the sheet and the panel.
  void clear();

  void onConstruct() override;
  bool onAction(cChildElement* source, cChildAction* action) override;

private:
  cPropSheetChild mySheet;
  cPropDispAreaChild myDisplay;
};
