// A check box: the theme's box and a label. A click, or the space bar while it has the
// focus, turns it over and raises a code-0 action.
#pragma once

#include "element.h"

class cCheckBoxChild : public cChildElement {
public:
  static constexpr int kBox = 18, kGap = 4;

  cCheckBoxChild() { setHoverLook(true); }

  void setChecked(bool on);
  bool checked() const { return myChecked; }
  bool wantedSize(sSize& size);

  void onPaint(cCanvas* canvas) override;
  void onMouseButton(int x, int y, int button, bool down) override;
  bool onKey(int key, bool shift, bool ctrl, bool alt) override;
  void onSetFocus(bool, bool) override { repaint(); }
  void onLooseFocus(bool, bool) override { repaint(); }
  bool wantTabStop() override { return true; }
  bool wantAcceptFoucs() override { return true; }

private:
  void toggle();

  bool myChecked = false, myPressed = false;
};
