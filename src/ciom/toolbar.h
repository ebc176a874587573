// A tool bar: a row of buttons, each known by an id. Pressing a button raises a
// cToolBarAction (code 6) from the tool bar carrying that id. Buttons are flat (tool
// buttons) or, with the push look, framed dialog buttons; they take their pictures by id
// from a pictures list, whose highlighted and disabled looks the tool bar derives itself.
#pragma once

#include <memory>
#include <vector>

#include "button.h"
#include "pictlist.h"

class cToolBarAction : public cChildAction {
public:
  static constexpr int kCode = 6;
  explicit cToolBarAction(int id) : cChildAction(kCode), id(id) {}
  int id;
};

class cToolBarChild : public cChildElement {
public:
  static constexpr int kGap = 4; // between two buttons

  explicit cToolBarChild(cButtonChild::eLook look = cButtonChild::lkFlat);

  // The pictures of the buttons (owned elsewhere; it must outlive the tool bar). Null:
  // no pictures.
  void setPictures(const cPicturesList* pictures);
  // The same with the highlighted and disabled looks made already (mkActive, mkDisabled),
  // for pictures shared by several tool bars.
  void setPictures(const cPicturesList* pictures, const cPicturesList* active,
                   const cPicturesList* disabled);
  // Adds a button at the end; picture is an id in the pictures list (-1: none). False
  // when the id is taken.
  bool addButton(int id, const char* text, const char* hint = nullptr, int picture = -1,
                 int minWidth = 0);
  bool removeButton(int id);
  bool enableButton(int id, bool on);
  bool showButton(int id, bool on);
  bool setButtonText(int id, const char* text);
  cButtonChild* button(int id) const;
  // The width the visible buttons need, gaps included.
  int wantedWidth();

  void onPaint(cCanvas* canvas) override;
  void onSizeChanged() override;
  bool onAction(cChildElement* source, cChildAction* action) override;

private:
  struct sItem {
    int id = 0, picture = -1;
    std::unique_ptr<cButtonChild> button;
  };

  sItem* item(int id) const;
  void applyPictures(sItem& item);
  void layout();

  cButtonChild::eLook myLook;
  const cPicturesList* myPictures = nullptr;
  const cPicturesList* myActive = nullptr;
  const cPicturesList* myDisabled = nullptr;
  cPicturesList myOwnActive, myOwnDisabled; // derived when not given
  std::vector<std::unique_ptr<sItem>> myItems;
};
