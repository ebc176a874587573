#include "link.h"

#include <algorithm>
#include <cstring>

#include "ciom/themeimages.h"
#include "theme.h"

namespace {

constexpr int kAccentDark = 17, kDisabled = 8;

// Theme colour 16 is the accent; the link takes the darker edge of the accent artwork so
// that it reads as text on white.
unsigned linkColour() {
  const unsigned accent = cCITheme::theme().elementColour(tiEditFocusEdge);
  // Two thirds of the way to black.
  unsigned out = 0;
  for (int shift = 0; shift < 24; shift += 8) out |= (((accent >> shift) & 0xFF) * 2 / 3) << shift;
  return out;
}

} // namespace

void cLinkChild::setColour(unsigned colour) {
  myColour = colour;
  repaint();
}

void cLinkChild::setMargin(int left) {
  myMargin = std::max(0, left);
  repaint();
}

bool cLinkChild::wantedSize(sSize& size) {
  const char* t = text();
  size = {};
  if (!t || !sizeOf(t, size, stdFontUnderlined())) return false;
  size.width += myMargin;
  return true;
}

void cLinkChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  if (!transparent()) canvas->drawRect(&all, defaultBackgroundColor(), defaultBackgroundColor());
  const char* t = text();
  if (!t || !*t || !canvas->setTextMode(stdFontUnderlined())) return;
  const cCITheme& theme = cCITheme::theme();
  unsigned ink = myColour == 0xFF000000 ? linkColour() : myColour;
  if (hot()) ink = theme.getColor(kAccentDark);
  if (!enabled()) ink = theme.getColor(kDisabled);
  canvas->setTextColors(ink, defaultBackgroundColor());
  sSize size;
  canvas->textSize(t, -1, size);
  canvas->drawTextLimited(0, 0, width(), height(), cCanvas::taLeft, true, myMargin, 0, t,
                          static_cast<long long>(std::strlen(t)), nullptr, false);
  if (hasFocus()) {
    // A dotted line under the text marks the focus.
    const int y = std::min(height() - 1, (height() + size.height) / 2);
    canvas->drawDots(myMargin, y, std::min(size.width, width() - myMargin), ink);
  }
}

void cLinkChild::onMouseButton(int x, int y, int button, bool down) {
  if (button != 1) return;
  if (down) {
    myPressed = true;
    capturePointer(false);
    return;
  }
  if (!myPressed) return;
  myPressed = false;
  releasePointer();
  if (x >= 0 && y >= 0 && x < width() && y < height()) notifyAction();
}

bool cLinkChild::onKey(int key, bool shift, bool ctrl, bool alt) {
  if ((key != kKeyEnter && key != kKeySpace) || shift || ctrl || alt) return false;
  notifyAction();
  return true;
}
