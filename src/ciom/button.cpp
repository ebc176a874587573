#include "button.h"

#include <algorithm>
#include <cstring>

#include "ciom/themeimages.h"
#include "theme.h"

namespace {

constexpr int kFaceEdge = 3; // unstretched columns at each side of a face element
constexpr int kTextColour = 13, kDisabledTextColour = 8;

} // namespace

cButtonChild::cButtonChild(eLook look) : myLook(look) {
  setHoverLook(true);
}

void cButtonChild::setPictures(const cPicture* normal, const cPicture* active,
                               const cPicture* disabled) {
  myPictures[0] = normal;
  myPictures[1] = active;
  myPictures[2] = disabled;
  repaint();
}

void cButtonChild::setDefault(bool on) {
  myDefault = on;
  repaint();
}

const cPicture* cButtonChild::currentPicture() const {
  const cPicture* normal = myPictures[0];
  if (!enabled()) return myPictures[2] ? myPictures[2] : normal;
  if (hot() && myPictures[1]) return myPictures[1];
  return normal;
}

bool cButtonChild::contentSize(sSize& size) {
  size = {};
  const char* t = text();
  if (t && *t && !sizeOf(t, size, stdFont())) return false;
  if (const cPicture* pict = myPictures[0]) {
    size.width += pict->width() + (size.width ? kPictureGap : 0);
    size.height = std::max(size.height, pict->height());
  }
  return true;
}

bool cButtonChild::wantedSize(sSize& size) {
  if (!contentSize(size)) return false;
  size.width = std::max(size.width + 2 * kPadding, myMinWidth);
  return true;
}

int cButtonChild::faceElement() const {
  const bool down = myPressed && myInside;
  if (myLook == lkFlat) {
    if (!enabled()) return -1;
    return down ? tiToolPressed : hot() ? tiToolHot : -1;
  }
  if (!enabled()) return tiButtonDisabled;
  if (down) return tiButtonPressed;
  if (hot()) return tiButtonHot;
  return myDefault || hasFocus() ? tiButtonDefault : tiButton;
}

void cButtonChild::drawFace(cCanvas* canvas, int element, const sRect& rect) {
  const cPicture* face = cCITheme::theme().getPict(element);
  if (!canvas || !face || rect.width <= 0 || rect.height <= 0) return;
  cPicture wide;
  if (!face->hStretch(std::max(rect.width, 2 * kFaceEdge), kFaceEdge, &wide)) return;
  cPicture sized;
  const cPicture* shown = &wide;
  if (rect.height != wide.height() || rect.width != wide.width()) {
    if (!wide.scaling(rect.width, rect.height, &sized)) return;
    shown = &sized;
  }
  const sPoint at{rect.x, rect.y};
  canvas->drawTransparent(&at, shown, nullptr);
}

void cButtonChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  if (!transparent()) canvas->drawRect(&all, defaultBackgroundColor(), defaultBackgroundColor());
  if (const int face = faceElement(); face >= 0) drawFace(canvas, face, all);

  // The content is measured on this canvas: the window's measuring would make a scratch
  // surface on every paint.
  const char* t = text();
  const long long len = t ? static_cast<long long>(std::strlen(t)) : 0;
  sSize textSize{};
  const bool hasText =
      len > 0 && canvas->setTextMode(stdFont()) && canvas->textSize(t, len, textSize);
  const cPicture* pict = currentPicture();
  const int content = textSize.width + (pict ? pict->width() + (hasText ? kPictureGap : 0) : 0);

  const int shift = myPressed && myInside ? 1 : 0; // the content sinks while pressed
  int x = std::max(kPadding, (width() - content) / 2) + shift;
  if (pict) {
    const sPoint at{x, (height() - pict->height()) / 2 + shift};
    canvas->drawTransparent(&at, pict, nullptr);
    x += pict->width() + kPictureGap;
  }
  if (!hasText) return;
  const cCITheme& theme = cCITheme::theme();
  canvas->setTextColors(theme.getColor(enabled() ? kTextColour : kDisabledTextColour),
                        defaultBackgroundColor());
  canvas->drawTextLimited(x, shift, width() - x - kPadding / 2, height(), cCanvas::taLeft, true, 0,
                          0, t, len, nullptr, false);
}

void cButtonChild::onMouseButton(int x, int y, int button, bool down) {
  if (button != 1) return;
  if (down) {
    if (acceptsFocus()) focus();
    myPressed = myInside = true;
    capturePointer(false);
    repaint();
    return;
  }
  if (!myPressed) return;
  const bool clicked = x >= 0 && y >= 0 && x < width() && y < height();
  myPressed = myInside = false;
  releasePointer();
  repaint();
  if (clicked) notifyAction();
}

void cButtonChild::onMouseMoving(int x, int y) {
  const bool inside = x >= 0 && y >= 0 && x < width() && y < height();
  if (myPressed && inside != myInside) {
    myInside = inside;
    repaint();
  }
}

bool cButtonChild::onKey(int key, bool shift, bool ctrl, bool alt) {
  if ((key != kKeyEnter && key != kKeySpace) || shift || ctrl || alt) return false;
  notifyAction();
  return true;
}

void cButtonChild::onLooseFocus(bool, bool) {
  repaint();
}

void cButtonChild::onEnableChanged(bool) {
  myPressed = myInside = false;
  repaint();
}
