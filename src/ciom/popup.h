// Popup lists and menus: the items in a popup window under the pointer's grab; the call
// returns the id of the chosen item, or -1 when the popup was dismissed (Escape, a press
// outside it, or the loss of focus). Keys: Up and Down (Home, End) move the highlight,
// Enter chooses it; typing letters highlights the next item whose text starts with them.
#pragma once

#include <memory>
#include <vector>

#include "base/btree.h"
#include "base/buffers.h"
#include "pictlist.h"
#include "scrollable.h"
#include "typeahead.h"

struct sActiveElementItem {
  int id = 0;
  _guardchar<char> text;
  int icon = -1;       // an id in the popup's pictures list; -1: none
  bool enabled = true; // a disabled item is shown greyed and cannot be chosen
};

using tActiveElementItems = cFasterTreeList<int, sActiveElementItem>;

class cPopupMaster : public cScrollableElement {
public:
  static constexpr unsigned kDefault = 0xFFFFFFFF; // a colour taken from the theme
  static constexpr int kPadding = 8, kIconRoom = 22, kMinItemHeight = 20;

  struct sPopupConfig {
    const cPicturesList* pictures = nullptr;
    int minWidth = 0; // for the automatic width
    int width = -1;   // -1: as wide as the widest item
    unsigned textColour, background, highlight;
    unsigned frame = kDefault, highlightText = kDefault;
    cFontObject* font = nullptr; // null: the standard font
    int hotId = -1;              // the item highlighted (and scrolled into view) at first
    sPopupConfig();
  };

  // Shows the items (in id order) below and right of x, y on the desktop.
  static int simplePopup(cChildElement* owner, const tActiveElementItems& items, int x, int y,
                         const sPopupConfig* config = nullptr);
  static int simplePopup(cChildElement* owner, const tActiveElementItems& items, int x, int y,
                         int width, const cPicturesList* pictures, unsigned textColour,
                         unsigned background, unsigned highlight, unsigned frame,
                         unsigned highlightText, cFontObject* font, int hotId = -1);
  // w × h is the list's size without the frame lines; the popup is fitted on the desktop.
  static int runPopUp(cChildElement* owner, const tActiveElementItems& items,
                      const cPicturesList* pictures, int x, int y, int w, int h,
                      unsigned textColour, unsigned background, unsigned highlight, unsigned frame,
                      unsigned highlightText, cFontObject* font, int hotId = -1);
  // Where a popup of w × h asked for at x, y goes on a desktop of the given size: pushed
  // left to fit, and near the bottom cut to the room below or, when there is more room
  // above, opened upwards.
  static sRect place(const sSize& desktop, int x, int y, int w, int h);
  // The width that shows every item's text (and icon room when there are pictures).
  static int autoWidth(cChildElement* owner, const tActiveElementItems& items,
                       const cPicturesList* pictures, cFontObject* font);
  // The height of one item row in the font (null: the owner's standard font).
  static int itemHeight(cChildElement* owner, cFontObject* font);

  cPopupMaster(cChildElement* owner, const tActiveElementItems& items,
               const cPicturesList* pictures, cFontObject* font);
  ~cPopupMaster() override;

  void setColours(unsigned textColour, unsigned background, unsigned highlight, unsigned frame,
                  unsigned highlightText);
  // The highlighted item's id, or -1.
  int hotId() const;
  // Highlights the item with that id once the popup is built.
  void setInitialHot(int id) { myInitialHot = id; }

  void onConstruct() override;
  void onPaint(cCanvas* canvas) override;
  void onMouseButton(int x, int y, int button, bool down) override;
  bool processKey(int key, bool shift, bool ctrl, bool alt) override;
  bool processChar(unsigned short ch, bool shift, bool ctrl, bool alt) override {
    return onChar(ch, shift, ctrl, alt); // like its keys, a popup keeps typed letters
  }
  bool onChar(unsigned short ch, bool shift, bool ctrl, bool alt) override;
  void processOSFocus() override {}
  void processOSFocusLost() override {}
  void onLooseFocus(bool shift, bool ctrl) override;
  bool onAction(cChildElement* source, cChildAction* action) override;

  class cBtnListItem;

private:
  friend class cBtnListItem;
  void setHot(int index);
  void moveHot(int step);
  void finish(int result);

  cChildElement* myOwner;
  tActiveElementItems myItems;
  const cPicturesList* myPictures;
  cFontObject* myFont;
  unsigned myText = 0, myBackground = 0, myHighlight = 0, myFrame = 0, myHotText = 0;
  std::vector<std::unique_ptr<cBtnListItem>> myButtons;
  int myHot = -1, myRowHeight = 0, myInitialHot = -1;
  cTypeAhead myTyped;
  bool myDone = false;
};
