// A link: underlined text in the accent colour, with the hand pointer; a click (pressed
// and released on it), or Enter or Space while it has the focus, raises a code-0 action.
#pragma once

#include "element.h"

class cLinkChild : public cChildElement {
public:
  cLinkChild() { setHoverLook(true); }
  void setColour(unsigned colour);
  void setMargin(int left); // room left of the text
  bool wantedSize(sSize& size);

  void onPaint(cCanvas* canvas) override;
  void onMouseButton(int x, int y, int button, bool down) override;
  bool onKey(int key, bool shift, bool ctrl, bool alt) override;
  void onLooseFocus(bool, bool) override { repaint(); }
  bool wantTabStop() override { return true; }
  bool wantAcceptFoucs() override { return true; }
  eMousePointerTypes defaultPointer() override { return mpHand; }

private:
  unsigned myColour = 0xFF000000; // the theme's accent until set
  int myMargin = 0;
  bool myPressed = false;
};
