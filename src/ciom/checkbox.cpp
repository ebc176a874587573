#include "checkbox.h"

#include <algorithm>
#include <cstring>

#include "ciom/themeimages.h"
#include "theme.h"

namespace {

constexpr int kInk = 13, kDisabledInk = 8;

} // namespace

void cCheckBoxChild::setChecked(bool on) {
  if (on == myChecked) return;
  myChecked = on;
  repaint();
}

void cCheckBoxChild::toggle() {
  myChecked = !myChecked;
  repaint();
  notifyAction();
}

bool cCheckBoxChild::wantedSize(sSize& size) {
  const char* t = text();
  size = {kBox, kBox};
  sSize label{};
  if (t && *t && !sizeOf(t, label, stdFont())) return false;
  if (label.width) size.width += kGap + label.width;
  size.height = std::max(size.height, label.height);
  return true;
}

void cCheckBoxChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const cCITheme& theme = cCITheme::theme();
  if (!transparent()) {
    const sRect all{0, 0, width(), height()};
    canvas->drawRect(&all, defaultBackgroundColor(), defaultBackgroundColor());
  }
  const int art = !enabled() ? (myChecked ? tiCheckOnDisabled : tiCheckOffDisabled)
                  : hot()    ? (myChecked ? tiCheckOnHot : tiCheckOffHot)
                             : (myChecked ? tiCheckOn : tiCheckOff);
  if (const cPicture* box = theme.getPict(art)) {
    const sPoint at{0, (height() - box->height()) / 2};
    canvas->drawTransparent(&at, box, nullptr);
  }
  const char* t = text();
  if (!t || !*t || !canvas->setTextMode(stdFont())) return;
  const unsigned ink = theme.getColor(enabled() ? kInk : kDisabledInk);
  canvas->setTextColors(ink, defaultBackgroundColor());
  const int x = kBox + kGap;
  canvas->drawTextLimited(x, 0, width() - x, height(), cCanvas::taLeft, true, 0, 0, t,
                          static_cast<long long>(std::strlen(t)), nullptr, false);
  if (hasFocus()) {
    // A dotted line under the label marks the focus.
    sSize size{};
    canvas->textSize(t, -1, size);
    const int y = std::min(height() - 1, (height() + size.height) / 2);
    canvas->drawDots(x, y, std::min(size.width, width() - x), ink);
  }
}

void cCheckBoxChild::onMouseButton(int x, int y, int button, bool down) {
  if (button != 1) return;
  if (down) {
    myPressed = true;
    focus();
    capturePointer(false);
    return;
  }
  if (!myPressed) return;
  myPressed = false;
  releasePointer();
  if (x >= 0 && y >= 0 && x < width() && y < height()) toggle();
}

bool cCheckBoxChild::onKey(int key, bool shift, bool ctrl, bool alt) {
  if (key != kKeySpace || shift || ctrl || alt) return false;
  toggle();
  return true;
}
