// The edit box's look: the frame, the text scrolled to keep the caret in view, the
// selection, the banner and the caret.
#include <algorithm>
#include <cstring>
#include <memory>

#include "edit.h"

namespace {

constexpr int kCaretMargin = 8; // the caret keeps this far from the edges while scrolling

// A colour halfway between two others (a softened corner pixel).
unsigned mix(unsigned a, unsigned b) {
  unsigned out = 0;
  for (int shift = 0; shift < 24; shift += 8) {
    out |= ((((a >> shift) & 0xFF) + ((b >> shift) & 0xFF)) / 2) << shift;
  }
  return out;
}

} // namespace

int cEditChild::textAreaWidth() const {
  return std::max(0, width() - 2 * kPadding);
}

bool cEditChild::layout(cCanvas* canvas) {
  if (!myLayoutDirty) return true;
  int* pos = myPos.data();
  pos[0] = 0;
  if (myLength > 0) {
    // The advances go into the table from index 1 and are then summed up in place.
    const bool measured = canvas ? canvas->setTextMode(myFont ? myFont : stdFont()) &&
                                       canvas->textRuler(shown(), myLength, pos + 1)
                                 : rulerOf(shown(), myLength, pos + 1, myFont);
    if (!measured) return false;
    for (long long i = 1; i <= myLength; ++i) pos[i] += pos[i - 1];
  }
  myLayoutDirty = false;
  keepCaretVisible();
  return true;
}

void cEditChild::keepCaretVisible() {
  const int room = textAreaWidth();
  const int* pos = myPos.data();
  const int end = pos[myLength];
  const int margin = std::min(kCaretMargin, room / 3);
  const int at = pos[myCaret];
  if (at - myScrollX > room - margin) myScrollX = at - room + margin;
  if (at - myScrollX < margin) myScrollX = at - margin;
  // No empty room after the text while some of it is scrolled out on the left.
  myScrollX = std::min(myScrollX, end + 1 - room);
  myScrollX = std::max(0, myScrollX);
}

int cEditChild::symbolPos(int i) {
  layout(nullptr);
  const long long at = std::clamp<long long>(i, 0, myLength);
  return kPadding + myPos[at] - myScrollX;
}

long long cEditChild::indexAt(int x) {
  if (!layout(nullptr)) return myCaret;
  const int* pos = myPos.data();
  const int target = x - kPadding + myScrollX;
  // The first position past the target, then whichever of it and the one before is nearer.
  const long long after = std::upper_bound(pos, pos + myLength + 1, target) - pos;
  if (after > myLength) return myLength;
  if (after == 0) return 0;
  long long best = target - pos[after - 1] <= pos[after] - target ? after - 1 : after;
  // Never between the halves of a pair: its second half has no width of its own.
  while (best > 0 && best < myLength && isLowSurrogate(myText[best])) --best;
  return best;
}

int cEditChild::lineHeight(cCanvas* canvas) {
  if (myLineHeight > 0) return myLineHeight;
  sSize size;
  if (canvas && canvas->setTextMode(myFont ? myFont : stdFont()) &&
      canvas->textSize("Ag", 2, size)) {
    myLineHeight = size.height;
  } else if (sizeOf("Ag", size, myFont)) {
    myLineHeight = size.height;
  }
  return myLineHeight;
}

int cEditChild::wantedHeight() {
  return std::max(lineHeight(nullptr), 12) + 2 * kPadding;
}

void cEditChild::drawFrame(cCanvas* canvas, const sRect& all, unsigned fill, unsigned edge,
                           unsigned around) {
  canvas->drawRect(&all, fill, edge);
  if (all.width < 4 || all.height < 4) return;
  // Softened corners: each corner pixel halfway between the frame and what lies around.
  const unsigned corner = mix(edge, around);
  const int r = all.x + all.width - 1, b = all.y + all.height - 1;
  for (const sRect& dot : {sRect{all.x, all.y, 1, 1}, sRect{r, all.y, 1, 1}, sRect{all.x, b, 1, 1},
                           sRect{r, b, 1, 1}}) {
    canvas->drawRect(&dot, corner, corner);
  }
}

void cEditChild::paintFrame(cCanvas* canvas) {
  const unsigned around = parent() ? parent()->defaultBackgroundColor() : bgColor();
  drawFrame(canvas, {0, 0, width(), height()}, bgColor(), borderColor(), around);
}

void cEditChild::paintText(cCanvas* canvas) {
  const sRect area{kPadding, 1, textAreaWidth(), std::max(0, height() - 2)};
  if (area.empty()) return;
  std::unique_ptr<cCanvas> inside(canvas->subCanvas(&area));
  if (!inside) return;
  const int lh = lineHeight(canvas);
  const int y = (area.height - lh) / 2;
  if (myLength == 0) {
    if (!myReadonly && !myBanner.empty() &&
        inside->setTextMode(myBannerFont ? myBannerFont
                            : myFont     ? myFont
                                         : stdFont())) {
      inside->setTextColors(myBannerColour, bgColor());
      inside->drawText(0, y, true, myBanner.c_str(), myBanner.length());
    }
  } else if (inside->setTextMode(myFont ? myFont : stdFont())) {
    inside->setTextColors(fgColor(), bgColor());
    inside->drawText(-myScrollX, y, true, shown(), myLength);
    if (hasSelection()) {
      // The selection is filled and its text drawn again, clipped to the filled part.
      const bool active = hasFocus() && myActive;
      const unsigned fill = active ? mySelection : mySelectionInactive;
      const int x0 = myPos[mySelFirst] - myScrollX, x1 = myPos[mySelLast + 1] - myScrollX;
      const sRect band{x0, std::max(0, y - 1), x1 - x0, std::min(area.height, lh + 2)};
      std::unique_ptr<cCanvas> sel(inside->subCanvas(&band));
      if (sel && sel->setTextMode(myFont ? myFont : stdFont())) {
        const sRect whole{0, 0, band.width, band.height};
        sel->drawRect(&whole, fill, fill);
        sel->setTextColors(active ? mySelectedText : fgColor(), fill);
        sel->drawText(-myScrollX - x0, y - band.y, true, shown(), myLength);
      }
    }
  }
  const bool caretAllowed = !myReadonly || myCursorForRO;
  if (hasFocus() && myActive && myCaretOn && caretAllowed) {
    const int x = myPos[myCaret] - myScrollX;
    const sRect caret{std::min(x, area.width - 1), y, 1, lh};
    inside->drawRect(&caret, fgColor(), fgColor());
  }
}

void cEditChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  layout(canvas);
  paintFrame(canvas);
  paintText(canvas);
}

void cEditChild::onSizeChanged() {
  if (!myLayoutDirty) keepCaretVisible();
  repaint();
}
