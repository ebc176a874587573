// A static element that can be selected: a picture and a label, drawn in selection
// colours while it holds the focus (or while its owner marks it selected). It is what
// the tree view's labels and the property sheet's captions are made of.
//
// Actions: 6 when it becomes selected (a press, or select()), 7 when it is activated (a
// double click or Enter), 8 and 9 for the "+" and "-" keys (keypad too): requests to
// expand or collapse; a right click or the menu key raises the core's context request (2).
#pragma once

#include "element.h"
#include "pictlist.h"

class cSelectableStaticChild : public cChildElement {
public:
  enum eCode { kSelected = 6, kActivated = 7, kExpand = 8, kCollapse = 9 };
  struct sColours {
    unsigned text = 0, background = 0, frame = 0;
    bool operator==(const sColours&) const = default;
  };
  static constexpr int kPadding = 3, kPictureGap = 4;

  cSelectableStaticChild();

  // The look unselected and selected; the owner may swap them (an unfocused selection).
  void setColours(const sColours& normal, const sColours& selected);
  const sColours& colours(bool selected) const { return selected ? mySelected : myNormal; }
  // Pictures owned elsewhere: normal, selected and disabled (missing ones fall back to
  // the normal picture); true when they changed.
  bool setImages(const cPicture* normal, const cPicture* selected, const cPicture* disabled);
  void setFont(cFontObject* font);
  // Drawn selected even without the focus.
  void setMarked(bool on);
  bool marked() const { return myMarked; }
  // Takes the focus, which selects it (action 6).
  void select();
  // The picture, the gap and the text, with padding on both sides.
  bool wantedSize(sSize& size);

  void onPaint(cCanvas* canvas) override;
  void onMouseButton(int x, int y, int button, bool down) override;
  void onMouseDoubleClick(int x, int y) override;
  bool onKey(int key, bool shift, bool ctrl, bool alt) override;
  bool onChar(unsigned short ch, bool shift, bool ctrl, bool alt) override;
  void onSetFocusEvent(eEventOrigin origin, bool shift, bool ctrl) override;
  void onLooseFocus(bool shift, bool ctrl) override;
  bool wantAcceptFoucs() override { return true; }

private:
  const cPicture* picture() const;
  cFontObject* font() { return myFont ? myFont : stdFont(); }

  sColours myNormal, mySelected;
  const cPicture* myImages[3] = {nullptr, nullptr, nullptr};
  cFontObject* myFont = nullptr;
  bool myMarked = false;
  bool myKeypadSign = false; // a keypad + or - was just pressed: its character is ignored
};
