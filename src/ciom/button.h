// A push button: a text and/or a picture on a themed face. A left click (pressed and
// released inside) or Enter or the space bar while it has the focus raises a code-0
// action from the button. A flat button (as in tool bars) shows its face only while the
// pointer is over it or it is pressed.
#pragma once

#include "canvas.h"
#include "element.h"

class cButtonChild : public cChildElement {
public:
  enum eLook { lkPush = 0, lkFlat = 1 };
  static constexpr int kPadding = 8;    // room left and right of the content
  static constexpr int kPictureGap = 4; // between picture and text

  explicit cButtonChild(eLook look = lkPush);

  // Pictures owned elsewhere (they must outlive the button): the normal look, the look
  // under the pointer and the disabled look. Missing variants fall back to the normal one.
  void setPictures(const cPicture* normal, const cPicture* active, const cPicture* disabled);
  void setMinWidth(int w) { myMinWidth = w; }
  // The default button of a dialog wears the default face.
  void setDefault(bool on);
  bool pressed() const { return myPressed && myInside; }
  // The room the content needs (at least the minimum width).
  bool wantedSize(sSize& size);

  // Draws a theme face element stretched over the rectangle: its three outer columns on
  // each side stay as they are, the middle repeats, the height is scaled.
  static void drawFace(cCanvas* canvas, int element, const sRect& rect);

  void onPaint(cCanvas* canvas) override;
  void onMouseButton(int x, int y, int button, bool down) override;
  void onMouseMoving(int x, int y) override;
  bool onKey(int key, bool shift, bool ctrl, bool alt) override;
  void onLooseFocus(bool shift, bool ctrl) override;
  void onEnableChanged(bool state) override;
  bool wantTabStop() override { return myLook == lkPush; }
  bool wantAcceptFoucs() override { return myLook == lkPush; }

private:
  // The picture and text side by side, without padding.
  bool contentSize(sSize& size);
  int faceElement() const;
  const cPicture* currentPicture() const;

  eLook myLook;
  const cPicture* myPictures[3] = {nullptr, nullptr, nullptr};
  int myMinWidth = 0;
  bool myDefault = false, myPressed = false, myInside = false;
};
