#include "scrollbar.h"

#include <algorithm>

#include "ciom/themeimages.h"
#include "theme.h"

namespace {

constexpr int kEnd = 3; // rows (columns) of each rounded end in the thumb's end piece

// The theme's pieces of one axis.
struct sPieces {
  int less, more, lessPressed, morePressed;
  int track, trackPressed, trackDisabled;
  int thumb, thumbHot, thumbPressed, thumbDisabled;
  int ends, endsHot, endsPressed, endsDisabled, grip;
};

constexpr sPieces kVertical{
    tiScrollUp,      tiScrollDown,        tiScrollUpPressed,    tiScrollDownPressed,
    tiVTrack,        tiVTrackPressed,     tiVTrackDisabled,     tiVThumb,
    tiVThumbHot,     tiVThumbPressed,     tiVThumbDisabled,     tiVThumbEnds,
    tiVThumbEndsHot, tiVThumbEndsPressed, tiVThumbEndsDisabled, tiVThumbGrip};
constexpr sPieces kHorizontal{
    tiScrollLeft,    tiScrollRight,       tiScrollLeftPressed,  tiScrollRightPressed,
    tiHTrack,        tiHTrackPressed,     tiHTrackDisabled,     tiHThumb,
    tiHThumbHot,     tiHThumbPressed,     tiHThumbDisabled,     tiHThumbEnds,
    tiHThumbEndsHot, tiHThumbEndsPressed, tiHThumbEndsDisabled, tiHThumbGrip};

void drawPiece(cCanvas* canvas, int element, int x, int y) {
  if (const cPicture* p = cCITheme::theme().getPict(element)) {
    const sPoint at{x, y};
    canvas->drawTransparent(&at, p, nullptr);
  }
}

} // namespace

cScrollBar::cScrollBar(bool vertical, std::function<void(int)> scroll)
    : myVertical(vertical), myScroll(std::move(scroll)), myRepeat([this] { repeat(); }) {}

void cScrollBar::setValues(int content, int view, int offset, int step) {
  myContent = std::max(0, content);
  myView = std::max(0, view);
  myOffset = std::clamp(offset, 0, range());
  myStep = std::max(1, step);
}

sRect cScrollBar::span(int start, int len) const {
  return myVertical ? sRect{myRect.x, myRect.y + start, myRect.width, len}
                    : sRect{myRect.x + start, myRect.y, len, myRect.height};
}

void cScrollBar::thumb(int& start, int& len) const {
  const int track = std::max(0, length() - 2 * kThickness);
  if (myContent <= 0 || range() == 0) {
    start = kThickness;
    len = track;
    return;
  }
  const long long share = static_cast<long long>(track) * myView / myContent;
  len = std::min(track, std::max(kMinThumb, static_cast<int>(share)));
  start = kThickness + static_cast<int>(static_cast<long long>(track - len) * myOffset / range());
}

sRect cScrollBar::partRect(ePart part) const {
  int start = 0, len = 0;
  thumb(start, len);
  const int n = length();
  switch (part) {
  case spLess:
    return span(0, std::min(kThickness, n));
  case spMore:
    return span(std::max(0, n - kThickness), std::min(kThickness, n));
  case spThumb:
    return span(start, len);
  case spTrackLess:
    return span(kThickness, std::max(0, start - kThickness));
  case spTrackMore:
    return span(start + len, std::max(0, n - kThickness - start - len));
  default:
    return {};
  }
}

cScrollBar::ePart cScrollBar::partAt(int x, int y) const {
  if (x < myRect.x || y < myRect.y || x >= myRect.x + myRect.width || y >= myRect.y + myRect.height)
    return spNone;
  for (const ePart part : {spLess, spMore, spThumb, spTrackLess, spTrackMore}) {
    const sRect r = partRect(part);
    if (x >= r.x && y >= r.y && x < r.x + r.width && y < r.y + r.height) return part;
  }
  return spNone;
}

void cScrollBar::act(ePart part) {
  const int page = std::max(myStep, myView - myStep);
  int to = myOffset;
  switch (part) {
  case spLess:
    to -= myStep;
    break;
  case spMore:
    to += myStep;
    break;
  case spTrackLess:
    to -= page;
    break;
  case spTrackMore:
    to += page;
    break;
  default:
    return;
  }
  to = std::clamp(to, 0, range());
  if (to == myOffset) return;
  myOffset = to;
  if (myScroll) myScroll(to);
}

bool cScrollBar::press(int x, int y) {
  const ePart part = partAt(x, y);
  if (part == spNone) return false;
  myPressed = part;
  myInside = true;
  myPointer = along(x, y);
  if (part == spThumb) {
    int start = 0, len = 0;
    thumb(start, len);
    myGrab = myPointer - start;
    return true;
  }
  act(part);
  myRepeat.start(kRepeatDelayMs, false);
  return true;
}

void cScrollBar::repeat() {
  if (myPressed == spNone || myPressed == spThumb) return;
  // The track pages only while the thumb has not reached the pointer.
  const ePart under = partAt(myVertical ? myRect.x : myRect.x + myPointer,
                             myVertical ? myRect.y + myPointer : myRect.y);
  if (myInside && under == myPressed) act(myPressed);
  myRepeat.start(kRepeatMs, false);
}

void cScrollBar::drag(int x, int y) {
  if (myPressed == spNone) return;
  myPointer = along(x, y);
  if (myPressed != spThumb) {
    myInside = partAt(x, y) == myPressed;
    return;
  }
  int start = 0, len = 0;
  thumb(start, len);
  const int free = std::max(1, length() - 2 * kThickness - len);
  const int wanted = std::clamp(myPointer - myGrab - kThickness, 0, free);
  const int to = static_cast<int>((static_cast<long long>(wanted) * range() + free / 2) / free);
  if (to == myOffset) return;
  myOffset = to;
  if (myScroll) myScroll(to);
}

void cScrollBar::release() {
  myPressed = spNone;
  myRepeat.stop();
}

bool cScrollBar::hover(int x, int y) {
  const ePart part = partAt(x, y);
  if (part == myHot) return false;
  myHot = part;
  return true;
}

void cScrollBar::paint(cCanvas* canvas, bool enabled) const {
  if (!canvas || myRect.empty()) return;
  const sPieces& p = myVertical ? kVertical : kHorizontal;
  const bool active = enabled && range() > 0;
  cCITheme::theme().drawStretched(canvas, active ? p.track : p.trackDisabled, myRect);
  for (const ePart part : {spTrackLess, spTrackMore}) {
    if (myPressed == part) cCITheme::theme().drawStretched(canvas, p.trackPressed, partRect(part));
  }
  const sRect less = partRect(spLess), more = partRect(spMore);
  drawPiece(canvas, myPressed == spLess ? p.lessPressed : p.less, less.x, less.y);
  drawPiece(canvas, myPressed == spMore ? p.morePressed : p.more, more.x, more.y);
  if (!active) return;

  // The thumb: its two rounded ends from the end piece, the middle stretched between.
  const sRect t = partRect(spThumb);
  const int state = myPressed == spThumb ? 2 : myHot == spThumb ? 1 : 0;
  const int middle[] = {p.thumb, p.thumbHot, p.thumbPressed};
  const int endsOf[] = {p.ends, p.endsHot, p.endsPressed};
  const cPicture* ends = cCITheme::theme().getPict(endsOf[state]);
  const int len = myVertical ? t.height : t.width;
  if (!ends || len < 2 * kEnd) return;
  cCITheme::theme().drawStretched(canvas, middle[state],
                                  myVertical ? sRect{t.x, t.y + kEnd, t.width, len - 2 * kEnd}
                                             : sRect{t.x + kEnd, t.y, len - 2 * kEnd, t.height});
  cPicture first, second;
  const sRect cutFirst = myVertical ? sRect{0, 0, kThickness, kEnd} : sRect{0, 0, kEnd, kThickness};
  const sRect cutSecond =
      myVertical ? sRect{0, kEnd, kThickness, kEnd} : sRect{kEnd, 0, kEnd, kThickness};
  if (ends->subPictTo(cutFirst, &first)) {
    const sPoint at{t.x, t.y};
    canvas->drawTransparent(&at, &first, nullptr);
  }
  if (ends->subPictTo(cutSecond, &second)) {
    const sPoint at = myVertical ? sPoint{t.x, t.y + len - kEnd} : sPoint{t.x + len - kEnd, t.y};
    canvas->drawTransparent(&at, &second, nullptr);
  }
  if (const cPicture* grip = cCITheme::theme().getPict(p.grip); grip && len >= grip->height() + 8)
    drawPiece(canvas, p.grip, t.x + (t.width - grip->width()) / 2,
              t.y + (t.height - grip->height()) / 2);
}
