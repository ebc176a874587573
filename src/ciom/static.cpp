#include "static.h"

#include <algorithm>
#include <cstring>

#include "base/str.h"
#include "theme.h"

namespace {

constexpr int kTextColour = 13; // theme colour of plain text
constexpr int kPictureGap = 4;  // between a picture and the text after it

bool isHighSurrogate(unsigned short u) {
  return u >= 0xD800 && u <= 0xDBFF;
}
bool isLowSurrogate(unsigned short u) {
  return u >= 0xDC00 && u <= 0xDFFF;
}

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

void cStaticChild::setElideMiddle(bool on) {
  myElideMiddle = on;
  repaint();
}

std::vector<unsigned short> elideMiddle(cCanvas& canvas, const char* text, int w) {
  _guardchar<unsigned short> units;
  _pc2w(text, units);
  const long long n = _wcslen(units.c_str());
  const unsigned short* u = units.c_str();
  auto join = [&](long long keep) {
    // keep units in all, the start's half rounded up; a surrogate pair is never split.
    long long head = (keep + 1) / 2, tail = keep - head;
    if (head > 0 && head < n && isHighSurrogate(u[head - 1])) --head;
    if (tail > 0 && isLowSurrogate(u[n - tail])) --tail;
    std::vector<unsigned short> out(u, u + head);
    out.push_back(0x2026); // …
    out.insert(out.end(), u + n - tail, u + n);
    return out;
  };
  auto fits = [&](const std::vector<unsigned short>& t) {
    sSize size;
    return canvas.textSize(t.data(), static_cast<long long>(t.size()), size) && size.width <= w;
  };
  std::vector<unsigned short> whole(u, u + n);
  if (fits(whole)) return whole;
  // The most units that fit around the ellipsis, by halving.
  long long lo = 0, hi = n - 1;
  while (lo < hi) {
    const long long mid = (lo + hi + 1) / 2;
    if (fits(join(mid)))
      lo = mid;
    else
      hi = mid - 1;
  }
  return join(lo);
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
  if (myElideMiddle) {
    const std::vector<unsigned short> shown = elideMiddle(*canvas, t, width() - x);
    canvas->drawTextLimited(x, 0, width() - x, height(), myAlign, true, 0, 0, shown.data(),
                            static_cast<long long>(shown.size()), nullptr, false);
    return;
  }
  canvas->drawTextLimited(x, 0, width() - x, height(), myAlign, true, 0, 0, t,
                          static_cast<long long>(std::strlen(t)), nullptr, false);
}
