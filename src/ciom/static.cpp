#include "static.h"

#include <algorithm>
#include <cstring>

#include "theme.h"

namespace {

constexpr int kTextColour = 13; // theme colour of plain text
constexpr int kPictureGap = 4;  // between a picture and the text after it

} // namespace

void cStaticChild::setTextColour(unsigned colour) {
  myColour = colour;
  repaint();
}

void cStaticChild::setFont(cFontObject* font) {
  myFont = font;
  repaint();
}

void cStaticChild::setAlign(cCanvas::eTextAlign align) {
  myAlign = align;
  repaint();
}

void cStaticChild::setMargin(int left) {
  myMargin = std::max(0, left);
  repaint();
}

cFontObject* cStaticChild::font() {
  return myFont ? myFont : stdFont();
}

bool cStaticChild::wantedSize(sSize& size) {
  size = {};
  const cPicture* pict = myPicture.image();
  const char* t = text();
  if (t && *t && !sizeOf(t, size, font())) return false;
  if (pict) {
    size.width += pict->width() + (size.width ? kPictureGap : 0);
    size.height = std::max(size.height, pict->height());
  }
  size.width += myMargin;
  return true;
}

void cStaticChild::onPaint(cCanvas* canvas) {
  if (!canvas) return;
  const sRect all{0, 0, width(), height()};
  if (!transparent()) canvas->drawRect(&all, defaultBackgroundColor(), defaultBackgroundColor());
  const char* t = text();
  const bool hasText = t && *t;
  int x = myMargin;
  if (const cPicture* pict = myPicture.image()) {
    const int px = hasText ? x : (width() - pict->width()) / 2;
    const sPoint at{px, (height() - pict->height()) / 2};
    canvas->drawTransparent(&at, pict, nullptr);
    x += pict->width() + kPictureGap;
  }
  if (!hasText || !canvas->setTextMode(font())) return;
  const unsigned colour =
      myColour == kDefaultColour ? cCITheme::theme().getColor(kTextColour) : myColour;
  canvas->setTextColors(colour, defaultBackgroundColor());
  canvas->drawTextLimited(x, 0, width() - x, height(), myAlign, true, 0, 0, t,
                          static_cast<long long>(std::strlen(t)), nullptr, false);
}
