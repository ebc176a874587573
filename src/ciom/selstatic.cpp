#include "selstatic.h"

#include <algorithm>
#include <cstring>

#include "theme.h"

namespace {

constexpr int kInk = 13, kWhite = 14, kAccent = 16;

} // namespace

cSelectableStaticChild::cSelectableStaticChild() {
  const cCITheme& theme = cCITheme::theme();
  myNormal = {theme.getColor(kInk), theme.getColor(kWhite), theme.getColor(kWhite)};
  mySelected = {theme.getColor(kWhite), theme.getColor(kAccent), theme.getColor(kAccent)};
}

void cSelectableStaticChild::setColours(const sColours& normal, const sColours& selected) {
  myNormal = normal;
  mySelected = selected;
  repaint();
}

bool cSelectableStaticChild::setImages(const cPicture* normal, const cPicture* selected,
                                       const cPicture* disabled) {
  if (myImages[0] == normal && myImages[1] == selected && myImages[2] == disabled) return false;
  myImages[0] = normal;
  myImages[1] = selected;
  myImages[2] = disabled;
  repaint();
  return true;
}

void cSelectableStaticChild::setFont(cFontObject* font) {
  myFont = font;
  repaint();
}

void cSelectableStaticChild::setMarked(bool on) {
  if (myMarked == on) return;
  myMarked = on;
  repaint();
}

void cSelectableStaticChild::select() {
  if (hasFocus()) {
    notifyAction(new cChildAction(kSelected));
    return;
  }
  focus();
}

const cPicture* cSelectableStaticChild::picture() const {
  if (!enabled() && myImages[2]) return myImages[2];
  if ((hasFocus() || myMarked) && myImages[1]) return myImages[1];
  return myImages[0];
}

bool cSelectableStaticChild::wantedSize(sSize& size) {
  size = {};
  const char* t = text();
  if (t && *t && !sizeOf(t, size, font())) return false;
  if (const cPicture* p = myImages[0]) {
    size.width += p->width() + (size.width ? kPictureGap : 0);
    size.height = std::max(size.height, p->height());
  }
  size.width += 2 * kPadding;
  return true;
}

void cSelectableStaticChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sColours& c = colours(hasFocus() || myMarked);
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, c.background, c.frame);
  int x = kPadding;
  if (const cPicture* p = picture()) {
    const sPoint at{x, (height() - p->height()) / 2};
    canvas->drawTransparent(&at, p, nullptr);
    x += p->width() + kPictureGap;
  }
  const char* t = text();
  if (!t || !*t || !canvas->setTextMode(font())) return;
  const unsigned ink = enabled() ? c.text : cCITheme::theme().getColor(8);
  canvas->setTextColors(ink, c.background);
  canvas->drawTextLimited(x, 0, std::max(0, width() - x - kPadding), height(), cCanvas::taLeft,
                          true, 0, 0, t, static_cast<long long>(std::strlen(t)), nullptr, false);
}

void cSelectableStaticChild::onMouseButton(int, int, int button, bool down) {
  if (button == 1 && down && !hasFocus()) focus();
}

void cSelectableStaticChild::onMouseDoubleClick(int x, int y) {
  notifyAction(new cChildAction(kActivated));
  cChildElement::onMouseDoubleClick(x, y);
}

bool cSelectableStaticChild::onKey(int key, bool shift, bool ctrl, bool alt) {
  myKeypadSign = false;
  if (shift || ctrl || alt) return false;
  switch (key) {
  case kKeyEnter:
    notifyAction(new cChildAction(kActivated));
    return true;
  case kKeyKeypadPlus:
  case kKeyKeypadMinus:
    // The key's character follows it; the request is raised once.
    notifyAction(new cChildAction(key == kKeyKeypadPlus ? kExpand : kCollapse));
    myKeypadSign = true;
    return true;
  default:
    return false;
  }
}

bool cSelectableStaticChild::onChar(unsigned short ch, bool, bool ctrl, bool) {
  if (ctrl || (ch != '+' && ch != '-')) return false;
  if (myKeypadSign) {
    myKeypadSign = false;
    return true;
  }
  notifyAction(new cChildAction(ch == '+' ? kExpand : kCollapse));
  return true;
}

void cSelectableStaticChild::onSetFocusEvent(eEventOrigin origin, bool shift, bool ctrl) {
  notifyAction(new cChildAction(kSelected));
  cChildElement::onSetFocusEvent(origin, shift, ctrl);
}

void cSelectableStaticChild::onLooseFocus(bool, bool) {
  repaint();
}
