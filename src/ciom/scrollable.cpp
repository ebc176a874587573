#include "scrollable.h"

#include <algorithm>

sSize cScrollableElement::scrollRange() const {
  return {std::max(0, myContent.width - width()), std::max(0, myContent.height - height())};
}

void cScrollableElement::virtualSize(sSize* size) {
  if (size) *size = {std::max(myContent.width, width()), std::max(myContent.height, height())};
}

void cScrollableElement::virtualOffset(sPoint* offset) {
  if (offset) *offset = myOffset;
}

void cScrollableElement::setVirtualSize(int w, int h) {
  myContent = {std::max(0, w), std::max(0, h)};
  if (clampOffset()) onScrolled();
  repaint();
}

void cScrollableElement::setScrollSteps(int x, int y) {
  mySteps = {std::max(1, x), std::max(1, y)};
}

bool cScrollableElement::clampOffset() {
  const sSize range = scrollRange();
  const sPoint was = myOffset;
  myOffset.x = std::clamp(myOffset.x, 0, range.width);
  myOffset.y = std::clamp(myOffset.y, 0, range.height);
  return was.x != myOffset.x || was.y != myOffset.y;
}

bool cScrollableElement::scrollTo(int x, int y) {
  const sPoint was = myOffset;
  myOffset = {x, y};
  clampOffset();
  if (was.x == myOffset.x && was.y == myOffset.y) return false;
  repaint();
  onScrolled();
  return true;
}

bool cScrollableElement::scrollBy(int dx, int dy) {
  // In 64 bits: a huge step must not wrap around.
  const auto add = [](int a, int b) {
    return static_cast<int>(std::clamp<long long>(static_cast<long long>(a) + b, 0, 1LL << 30));
  };
  return scrollTo(add(myOffset.x, dx), add(myOffset.y, dy));
}

bool cScrollableElement::ensureVisible(const sRect& r) {
  int x = myOffset.x, y = myOffset.y;
  // The far edge first, so that a rectangle larger than the view shows its start.
  if (r.x + r.width > x + width()) x = r.x + r.width - width();
  if (r.x < x) x = r.x;
  if (r.y + r.height > y + height()) y = r.y + r.height - height();
  if (r.y < y) y = r.y;
  return scrollTo(x, y);
}

bool cScrollableElement::onMouseWheel(int, int, bool shift, bool, int delta) {
  // A notch up (delta > 0) shows what lies above (or, with shift, to the left).
  const int notches = std::clamp(delta, -100, 100);
  if (shift) return scrollBy(-notches * kWheelSteps * mySteps.width, 0);
  return scrollBy(0, -notches * kWheelSteps * mySteps.height);
}

void cScrollableElement::onSizeChanged() {
  if (clampOffset()) onScrolled();
}
