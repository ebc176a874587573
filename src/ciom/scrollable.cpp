#include "scrollable.h"

#include <algorithm>

#include "theme.h"

namespace {

constexpr int kTrackColour = 0; // the corner between two bars

} // namespace

cScrollableElement::cScrollableElement()
    : myVBar([this](int y) { scrollTo(myOffset.x, y); }),
      myHBar([this](int x) { scrollTo(x, myOffset.y); }) {}

sSize cScrollableElement::viewSize() const {
  sRect client;
  const_cast<cScrollableElement*>(this)->clientRect(&client);
  return {client.width, client.height};
}

sSize cScrollableElement::scrollRange() const {
  const sSize view = viewSize();
  return {std::max(0, myContent.width - view.width), std::max(0, myContent.height - view.height)};
}

void cScrollableElement::virtualSize(sSize* size) {
  const sSize view = viewSize();
  if (size)
    *size = {std::max(myContent.width, view.width), std::max(myContent.height, view.height)};
}

void cScrollableElement::virtualOffset(sPoint* offset) {
  if (offset) *offset = myOffset;
}

void cScrollableElement::clientRect(sRect* rect) {
  if (!rect) return;
  cChildElement::clientRect(rect);
  if (myShowV) rect->width = std::max(0, rect->width - cScrollBar::kThickness);
  if (myShowH) rect->height = std::max(0, rect->height - cScrollBar::kThickness);
}

void cScrollableElement::allowScrollBars(bool vertical, bool horizontal) {
  myAllowV = vertical;
  myAllowH = horizontal;
  layoutBars();
  repaint();
}

// Shows each bar that its axis needs (a bar on one axis takes room from the other) and
// places both inside the border.
void cScrollableElement::layoutBars() {
  sRect inner;
  cChildElement::clientRect(&inner);
  const int t = cScrollBar::kThickness;
  bool v = false, h = false;
  for (int pass = 0; pass < 2; ++pass) {
    v = myAllowV && myContent.height > inner.height - (h ? t : 0);
    h = myAllowH && myContent.width > inner.width - (v ? t : 0);
  }
  // A bar needs room for its two arrows and the other axis for its own thickness.
  if (v && (inner.height < 2 * t || inner.width < 2 * t)) v = false;
  if (h && (inner.width < 2 * t || inner.height < 2 * t)) h = false;
  myShowV = v;
  myShowH = h;
  const sSize view = viewSize();
  myVBar.place(v ? sRect{inner.x + inner.width - t, inner.y, t, view.height} : sRect{});
  myHBar.place(h ? sRect{inner.x, inner.y + inner.height - t, view.width, t} : sRect{});
  myVBar.setValues(myContent.height, view.height, myOffset.y, mySteps.height);
  myHBar.setValues(myContent.width, view.width, myOffset.x, mySteps.width);
}

void cScrollableElement::setVirtualSize(int w, int h) {
  myContent = {std::max(0, w), std::max(0, h)};
  layoutBars();
  if (clampOffset()) onScrolled();
  layoutBars();
  repaint();
}

void cScrollableElement::setScrollSteps(int x, int y) {
  mySteps = {std::max(1, x), std::max(1, y)};
  layoutBars();
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
  layoutBars();
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
  const sSize view = viewSize();
  int x = myOffset.x, y = myOffset.y;
  // The far edge first, so that a rectangle larger than the view shows its start.
  if (r.x + r.width > x + view.width) x = r.x + r.width - view.width;
  if (r.x < x) x = r.x;
  if (r.y + r.height > y + view.height) y = r.y + r.height - view.height;
  if (r.y < y) y = r.y;
  return scrollTo(x, y);
}

bool cScrollableElement::onMouseWheel(int, int, bool shift, bool, int delta) {
  // A notch up (delta > 0) shows what lies above (or, with shift, to the left).
  const int notches = std::clamp(delta, -100, 100);
  if (shift) return scrollBy(-notches * kWheelSteps * mySteps.width, 0);
  return scrollBy(0, -notches * kWheelSteps * mySteps.height);
}

bool cScrollableElement::onKey(int key, bool, bool ctrl, bool alt) {
  if (alt) return false;
  const sSize view = viewSize();
  const int page = std::max(mySteps.height, view.height - mySteps.height);
  switch (key) {
  case kKeyPageUp:
    scrollBy(0, -page);
    return true;
  case kKeyPageDown:
    scrollBy(0, page);
    return true;
  case kKeyHome:
  case kKeyEnd:
    if (!ctrl) return false;
    scrollTo(myOffset.x, key == kKeyHome ? 0 : scrollRange().height);
    return true;
  case kKeyUp:
  case kKeyDown:
    scrollBy(0, (key == kKeyUp ? -1 : 1) * mySteps.height);
    return true;
  case kKeyLeft:
  case kKeyRight:
    scrollBy((key == kKeyLeft ? -1 : 1) * mySteps.width, 0);
    return true;
  default:
    return false;
  }
}

void cScrollableElement::onSizeChanged() {
  layoutBars();
  if (clampOffset()) onScrolled();
  layoutBars();
}

// --- the bars' share of painting and the mouse -------------------------------------------

void cScrollableElement::processPaint(cCanvas* canvas) {
  if (!canvas) return;
  // The bars first, then kept out of reach of the element's own painting and children.
  const sRect bars[] = {myVBar.rect(), myHBar.rect()};
  if (myShowV) myVBar.paint(canvas, enabled());
  if (myShowH) myHBar.paint(canvas, enabled());
  sRect corner{};
  if (myShowV && myShowH) {
    corner = {myVBar.rect().x, myHBar.rect().y, cScrollBar::kThickness, cScrollBar::kThickness};
    const unsigned ground = cCITheme::theme().getColor(kTrackColour);
    canvas->drawRect(&corner, ground, ground);
  }
  for (const sRect& r : bars) {
    if (!r.empty()) canvas->clip(&r);
  }
  if (!corner.empty()) canvas->clip(&corner);
  canvas->select();
  cChildElement::processPaint(canvas);
  for (const sRect& r : bars) {
    if (!r.empty()) canvas->unclip(&r);
  }
  if (!corner.empty()) canvas->unclip(&corner);
  canvas->select();
}

bool cScrollableElement::inBarStrip(int x, int y) {
  const sRect v = myVBar.rect(), h = myHBar.rect();
  const bool right = myShowV && x >= v.x && x < v.x + v.width && y >= v.y;
  const bool below = myShowH && y >= h.y && y < h.y + h.height && x >= h.x;
  sRect inner;
  cChildElement::clientRect(&inner);
  return (right || below) && x < inner.x + inner.width && y < inner.y + inner.height;
}

cScrollBar* cScrollableElement::barAt(int x, int y) {
  if (myShowV && myVBar.partAt(x, y) != cScrollBar::spNone) return &myVBar;
  if (myShowH && myHBar.partAt(x, y) != cScrollBar::spNone) return &myHBar;
  return nullptr;
}

bool cScrollableElement::processMouseBtn(int x, int y, int button, bool down, bool shift,
                                         bool ctrl) {
  if (myDragging && button == 1 && !down) {
    myDragging->release();
    myDragging = nullptr;
    if (myHeldBefore) {
      capturePointer(myHeldRoute);
    } else {
      releasePointer();
    }
    repaint();
    return true;
  }
  cScrollBar* bar = myDragging ? nullptr : barAt(x, y);
  if (!bar && !myDragging && inBarStrip(x, y)) return true; // the corner: nothing there
  if (!bar || !enabled()) return cChildElement::processMouseBtn(x, y, button, down, shift, ctrl);
  if (button == 1 && down && bar->press(x, y)) {
    myDragging = bar;
    myHeldBefore = myHolding;
    myHeldRoute = myHoldRoute;
    capturePointer(false);
    repaint();
  }
  return true;
}

bool cScrollableElement::processMouseMove(int x, int y) {
  if (myDragging) {
    myDragging->drag(x, y);
    return true;
  }
  // Both bars learn where the pointer is, whichever of them changed.
  const bool vChanged = myVBar.hover(x, y);
  const bool hChanged = myHBar.hover(x, y);
  if (vChanged || hChanged) repaint();
  if (!barAt(x, y)) return cChildElement::processMouseMove(x, y);
  changePointerReq(mpArrow);
  notifyHover(this);
  return true;
}

bool cScrollableElement::capturePointer(bool routeToChildren) {
  myHolding = true;
  myHoldRoute = routeToChildren;
  return cChildElement::capturePointer(routeToChildren);
}

bool cScrollableElement::releasePointer() {
  myHolding = false;
  return cChildElement::releasePointer();
}

void cScrollableElement::onMouseLeft() {
  const bool vChanged = myVBar.hover(-1, -1);
  const bool hChanged = myHBar.hover(-1, -1);
  if (vChanged || hChanged) repaint();
  cChildElement::onMouseLeft();
}
