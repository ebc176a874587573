#include "split.h"

#include <algorithm>
#include <cmath>

#include "ciom/themeimages.h"
#include "theme.h"

namespace {

constexpr int kFormColour = 0;

} // namespace

cSplitterChild::cSplitterChild(bool vertical) : myVertical(vertical) {}

void cSplitterChild::onConstruct() {
  const unsigned ground = cCITheme::theme().getColor(kFormColour);
  setDefaultBackgroundColor(ground);
  myFirst.setDefaultBackgroundColor(ground);
  mySecond.setDefaultBackgroundColor(ground);
  attach(&myFirst, 0, 0, 0, 0);
  attach(&mySecond, 0, 0, 0, 0);
  myPosition = clampPosition(static_cast<int>(std::lround(myShare * room())));
  placePanes();
}

int cSplitterChild::room() const {
  return std::max(0, (myVertical ? height() : width()) - kDivider);
}

int cSplitterChild::clampPosition(int position) const {
  const int total = room();
  // The first pane's minimum wins when both cannot be kept.
  const int high = std::max(0, total - myMin[1]);
  return std::clamp(std::min(position, high), std::min(myMin[0], total), total);
}

void cSplitterChild::placePanes() {
  const int second = myPosition + kDivider;
  if (myVertical) {
    anchor(&myFirst, 0, 0, ~0, myPosition);
    anchor(&mySecond, 0, second, ~0, std::max(0, height() - second));
  } else {
    anchor(&myFirst, 0, 0, myPosition, ~0);
    anchor(&mySecond, second, 0, std::max(0, width() - second), ~0);
  }
  repaint();
}

void cSplitterChild::setShare(double share) {
  myShare = std::isfinite(share) ? std::clamp(share, 0.0, 1.0) : kDefaultShare;
  myPosition = clampPosition(static_cast<int>(std::lround(myShare * room())));
  myFixedLength = -1;
  placePanes();
}

void cSplitterChild::setMinSizes(int first, int second) {
  myMin[0] = std::max(0, first);
  myMin[1] = std::max(0, second);
  myPosition = clampPosition(myPosition);
  placePanes();
}

void cSplitterChild::setFixedPane(int pane) {
  myFixed = pane == 0 || pane == 1 ? pane : -1;
  myFixedLength = -1;
}

void cSplitterChild::setPosition(int position) {
  myPosition = clampPosition(position);
  const int total = room();
  if (total > 0) myShare = static_cast<double>(myPosition) / total;
  myFixedLength = myFixed == 0 ? myPosition : myFixed == 1 ? total - myPosition : -1;
  placePanes();
}

void cSplitterChild::onSizeChanged() {
  const int total = room();
  int position = static_cast<int>(std::lround(myShare * total));
  if (myFixed >= 0 && myFixedLength >= 0)
    position = myFixed == 0 ? myFixedLength : total - myFixedLength;
  myPosition = clampPosition(position);
  placePanes();
}

void cSplitterChild::setDividerLine(unsigned colour) {
  myLine = colour;
  repaint();
}

void cSplitterChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, defaultBackgroundColor(), defaultBackgroundColor());
  if (myLine != kGripLook) {
    const int middle = myPosition + kDivider / 2;
    const sRect line = myVertical ? sRect{0, middle, width(), 1} : sRect{middle, 0, 1, height()};
    canvas->drawRect(&line, myLine, myLine);
    return;
  }
  // The grip in the middle of the divider.
  const cPicture* grip = cCITheme::theme().getPict(myVertical ? tiSplitterGripH : tiSplitterGripV);
  if (!grip) return;
  const sPoint at =
      myVertical
          ? sPoint{(width() - grip->width()) / 2, myPosition + (kDivider - grip->height()) / 2}
          : sPoint{myPosition + (kDivider - grip->width()) / 2, (height() - grip->height()) / 2};
  canvas->drawTransparent(&at, grip, nullptr);
}

bool cSplitterChild::onDivider(int x, int y) const {
  if (x < 0 || y < 0 || x >= width() || y >= height()) return false;
  const int a = along(x, y);
  return a >= myPosition - kGrip && a < myPosition + kDivider + kGrip;
}

bool cSplitterChild::processMouseBtn(int x, int y, int button, bool down, bool shift, bool ctrl) {
  if (myDragging && button == 1 && !down) {
    myDragging = false;
    releasePointer();
    notifyAction(new cChildAction(kMovedCode));
    return true;
  }
  if (!myDragging && button == 1 && down && enabled() && onDivider(x, y)) {
    myDragging = true;
    myGrab = along(x, y) - myPosition;
    capturePointer(false);
    return true;
  }
  if (myDragging) return true; // other buttons while dragging
  return cChildElement::processMouseBtn(x, y, button, down, shift, ctrl);
}

bool cSplitterChild::processMouseMove(int x, int y) {
  if (myDragging) {
    setPosition(along(x, y) - myGrab);
    return true;
  }
  if (!onDivider(x, y) || !enabled()) return cChildElement::processMouseMove(x, y);
  changePointerReq(myVertical ? mpSizeNS : mpSizeWE);
  notifyHover(this);
  return true;
}
