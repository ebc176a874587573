#include "cairocanvas.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include <pango/pangocairo.h>

#include "base/str.h"
#include "cairooffscreen.h"
#include "pangofont.h"

namespace {

sArea areaOf(const sRect& r) {
  return {r.x, r.y, r.x + r.width, r.y + r.height};
}

sArea intersection(const sArea& a, const sArea& b) {
  return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
          std::min(a.bottom, b.bottom)};
}

bool isEmpty(const sArea& a) {
  return a.right <= a.left || a.bottom <= a.top;
}

struct sRegionFree {
  void operator()(cairo_region_t* r) const { cairo_region_destroy(r); }
};
using tRegion = std::unique_ptr<cairo_region_t, sRegionFree>;

// The visible area less every exclusion.
tRegion drawableRegion(const std::vector<cCairoCanvas::cClippingItem>& clipping) {
  const sArea& v = clipping.front().area();
  const cairo_rectangle_int_t visible = {v.left, v.top, v.right - v.left, v.bottom - v.top};
  tRegion region(cairo_region_create_rectangle(&visible));
  for (size_t i = 1; i < clipping.size(); ++i) {
    const sArea& e = clipping[i].area();
    const cairo_rectangle_int_t excluded = {e.left, e.top, e.right - e.left, e.bottom - e.top};
    cairo_region_subtract_rectangle(region.get(), &excluded);
  }
  return region;
}

const unsigned short kNoText[] = {0};

long long unitsOf(const unsigned short* text, long long len) {
  return len >= 0 ? len : _wcslen(text);
}

// UTF-16 to UTF-8 for Pango; an unpaired surrogate becomes U+FFFD. offsets, when given,
// receives the byte offset at which each unit's character starts.
void toUtf8(const unsigned short* text, long long units, std::string& out,
            std::vector<int>* offsets) {
  out.clear();
  if (offsets) offsets->assign(static_cast<size_t>(units), 0);
  for (long long i = 0; i < units; ++i) {
    if (offsets) (*offsets)[static_cast<size_t>(i)] = static_cast<int>(out.size());
    gunichar c = text[i];
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < units && text[i + 1] >= 0xDC00 &&
        text[i + 1] < 0xE000) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      if (offsets) (*offsets)[static_cast<size_t>(i + 1)] = static_cast<int>(out.size());
      ++i;
    } else if (c >= 0xD800 && c < 0xE000) {
      c = 0xFFFD;
    }
    char bytes[6];
    out.append(bytes, static_cast<size_t>(g_unichar_to_utf8(c, bytes)));
  }
}

// Pango wants at most INT_MAX bytes of valid UTF-8; anything else goes through UTF-16,
// which turns stray bytes into characters of their own.
bool validUtf8(const char* text, long long bytes) {
  return bytes <= INT_MAX / 4 && g_utf8_validate(text, bytes, nullptr);
}

} // namespace

bool cCairoCanvas::cClippingItem::contains(const sPoint& p) const {
  return p.x >= myArea.left && p.x < myArea.right && p.y >= myArea.top && p.y < myArea.bottom;
}

bool cCairoCanvas::cClippingItem::intersects(const sArea& other) const {
  return !isEmpty(intersection(myArea, other));
}

bool cCairoCanvas::cClippingItem::isIn(const sArea& other) const {
  return myArea.left >= other.left && myArea.top >= other.top && myArea.right <= other.right &&
         myArea.bottom <= other.bottom;
}

cCairoCanvas::cCairoCanvas(cairo_surface_t* surface, int w, int h)
    : cCairoCanvas(surface, {0, 0}, {0, 0, std::max(w, 0), std::max(h, 0)}) {}

cCairoCanvas::cCairoCanvas(cairo_surface_t* surface, sPoint origin, const sArea& visible)
    : myOrigin(origin), myWidth(visible.right), myHeight(visible.bottom) {
  cPangoFont::install();
  myClipping.emplace_back(visible);
  if (!surface || cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) return;
  mySurface.reset(cairo_surface_reference(surface));
  myContext = cairo_create(surface);
  if (cairo_status(myContext) != CAIRO_STATUS_SUCCESS) {
    cairo_destroy(myContext);
    myContext = nullptr;
    return;
  }
  // At a fractional scale the edges of logical pixels fall inside device pixels: shapes
  // snap to whole device pixels rather than blend, so that pieces drawn side by side meet
  // without a seam. Text keeps its own antialiasing.
  double scale = 1, unused = 1;
  cairo_surface_get_device_scale(surface, &scale, &unused);
  if (scale != static_cast<int>(scale)) cairo_set_antialias(myContext, CAIRO_ANTIALIAS_NONE);
  cairo_translate(myContext, origin.x, origin.y);
  select();
}

cCairoCanvas::~cCairoCanvas() {
  if (myContext) cairo_destroy(myContext);
}

void cCairoCanvas::setColour(unsigned colour) {
  cairo_set_source_rgb(myContext, (colour & 255) / 255.0, (colour >> 8 & 255) / 255.0,
                       (colour >> 16 & 255) / 255.0);
}

bool cCairoCanvas::select() {
  if (!ready()) return false;
  cairo_reset_clip(myContext);
  tRegion region = drawableRegion(myClipping);
  cairo_new_path(myContext);
  for (int i = 0, n = cairo_region_num_rectangles(region.get()); i < n; ++i) {
    cairo_rectangle_int_t r;
    cairo_region_get_rectangle(region.get(), i, &r);
    cairo_rectangle(myContext, r.x, r.y, r.width, r.height);
  }
  cairo_clip(myContext); // an empty path clips everything away
  return true;
}

bool cCairoCanvas::clip(const sRect* rect) {
  if (!rect || rect->empty()) return false;
  myClipping.emplace_back(areaOf(*rect));
  return true;
}

bool cCairoCanvas::unclip(const sRect* rect) {
  if (!rect) return false;
  const sArea area = areaOf(*rect);
  for (auto it = myClipping.begin() + 1; it != myClipping.end(); ++it) {
    if (it->area() == area) {
      myClipping.erase(it);
      return true;
    }
  }
  return false;
}

bool cCairoCanvas::canDrawAt(const sRect* rect) {
  if (!rect || rect->empty()) return false;
  tRegion region = drawableRegion(myClipping);
  const cairo_rectangle_int_t r = {rect->x, rect->y, rect->width, rect->height};
  return cairo_region_contains_rectangle(region.get(), &r) != CAIRO_REGION_OVERLAP_OUT;
}

void cCairoCanvas::setLineMode(unsigned colour, int width) {
  myLineColour = colour;
  myLineWidth = std::max(width, 1);
}

void cCairoCanvas::setTextColors(unsigned foreground, unsigned background) {
  myTextColour = foreground;
  myTextBackground = background;
}

bool cCairoCanvas::drawRect(const sRect* rect, unsigned fill, unsigned border) {
  if (!ready() || !rect || rect->empty()) return false;
  const double x = rect->x, y = rect->y, w = rect->width, h = rect->height;
  if ((fill & 0xFFFFFF) == (border & 0xFFFFFF) || rect->width <= 2 || rect->height <= 2) {
    // Nothing is left inside a frame this small: the border colour covers it.
    setColour(fill == border ? fill : border);
    cairo_rectangle(myContext, x, y, w, h);
    cairo_fill(myContext);
    return true;
  }
  setColour(fill);
  cairo_rectangle(myContext, x + 1, y + 1, w - 2, h - 2);
  cairo_fill(myContext);
  // A frame of the line width lies inside the rectangle; its centre line sits on half
  // pixels for odd widths, so it covers whole pixels.
  const double lw = std::min({static_cast<double>(myLineWidth), w / 2, h / 2});
  setColour(border);
  cairo_set_line_width(myContext, lw);
  cairo_rectangle(myContext, x + lw / 2, y + lw / 2, w - lw, h - lw);
  cairo_stroke(myContext);
  return true;
}

bool cCairoCanvas::drawLine(const sPoint* a, const sPoint* b) {
  if (!ready() || !a || !b) return false;
  // Square caps make both end pixels part of the line, as on a pixel grid.
  const double shift = myLineWidth % 2 ? 0.5 : 0.0;
  setColour(myLineColour);
  cairo_set_line_width(myContext, myLineWidth);
  cairo_set_line_cap(myContext, CAIRO_LINE_CAP_SQUARE);
  cairo_move_to(myContext, a->x + shift, a->y + shift);
  cairo_line_to(myContext, b->x + shift, b->y + shift);
  cairo_stroke(myContext);
  return true;
}

bool cCairoCanvas::draw(int x, int y, cCanvas* source, int sx, int sy, int w, int h) {
  auto* from = dynamic_cast<cCairoCanvas*>(source);
  if (!ready() || !from || !from->surface()) return false;
  if (w == -1) w = from->width() - sx;
  if (h == -1) h = from->height() - sy;
  if (w <= 0 || h <= 0) return false;
  cairo_save(myContext);
  cairo_set_operator(myContext, CAIRO_OPERATOR_SOURCE);
  cairo_set_source_surface(myContext, from->surface(), x - sx - from->origin().x,
                           y - sy - from->origin().y);
  cairo_rectangle(myContext, x, y, w, h);
  cairo_fill(myContext);
  cairo_restore(myContext);
  return true;
}

bool cCairoCanvas::picture(int x, int y, const cPicture* picture, int w, int h, bool opaque) {
  if (!ready() || !picture || picture->empty()) return false;
  if (w < 0) w = picture->width();
  if (h < 0) h = picture->height();
  w = std::min(w, picture->width());
  h = std::min(h, picture->height());
  if (w == 0 || h == 0) return false;
  // A denser screen takes the picture's detail, laid over the same logical area.
  double scale = 1, unused = 1;
  cairo_surface_get_device_scale(mySurface.get(), &scale, &unused);
  const cPicture* art = scale > 1 && picture->detail() ? picture->detail() : picture;
  tCairoSurface pixels = surfaceOf(*art, opaque);
  if (!pixels) return false;
  if (art != picture)
    cairo_surface_set_device_scale(pixels.get(), cPicture::kDetail, cPicture::kDetail);
  cairo_set_source_surface(myContext, pixels.get(), x, y);
  cairo_rectangle(myContext, x, y, w, h);
  cairo_fill(myContext);
  return true;
}

bool cCairoCanvas::drawBitmap(const sPoint* at, const cPicture* picture, const sSize* size) {
  if (!at) return false;
  return this->picture(at->x, at->y, picture, size ? size->width : -1, size ? size->height : -1,
                       true);
}

bool cCairoCanvas::drawBitmap(int x, int y, const cPicture* picture, int w, int h) {
  return this->picture(x, y, picture, w, h, true);
}

bool cCairoCanvas::drawTransparent(const sPoint* at, const cPicture* picture, const sSize* size) {
  if (!at) return false;
  return this->picture(at->x, at->y, picture, size ? size->width : -1, size ? size->height : -1,
                       false);
}

cFontObject* cCairoCanvas::createFont(int kind, int size, const char* face, bool bold,
                                      bool underline, bool italic) {
  return cFontObject::get(kind, size, face, bold, underline, italic);
}

bool cCairoCanvas::setTextMode(int kind, int size, const char* face, bool bold, bool underline,
                               bool italic) {
  return setTextMode(createFont(kind, size, face, bold, underline, italic));
}

bool cCairoCanvas::setTextMode(cFontObject* font) {
  auto* pango = dynamic_cast<cPangoFont*>(font);
  if (!pango) return false;
  myFont = pango;
  return true;
}

bool cCairoCanvas::measureUtf8(const char* text, int bytes, sSize& size) {
  size = {};
  if (!myFont) return false;
  int w = 0, h = 0;
  pango_layout_get_size(myFont->layout(text, bytes), &w, &h);
  size = {PANGO_PIXELS(w), PANGO_PIXELS(h)};
  return true;
}

bool cCairoCanvas::drawUtf8(int x, int y, bool transparent, const char* text, int bytes) {
  if (!ready() || !myFont) return false;
  if (!transparent) {
    sSize size;
    measureUtf8(text, bytes, size);
    const sRect box = {x, y, size.width, size.height};
    if (!box.empty()) drawRect(&box, myTextBackground, myTextBackground);
  }
  PangoLayout* layout = myFont->layout(text, bytes);
  setColour(myTextColour);
  cairo_move_to(myContext, x, y);
  pango_cairo_show_layout(myContext, layout);
  return true;
}

bool cCairoCanvas::drawText(int x, int y, bool transparent, const char* text, long long len) {
  if (!text) return false;
  const long long bytes = len < 0 ? static_cast<long long>(std::strlen(text)) : len;
  if (validUtf8(text, bytes)) return drawUtf8(x, y, transparent, text, static_cast<int>(bytes));
  _typebuf<unsigned short> wide;
  _pc2w(text, wide, bytes);
  return drawText(x, y, transparent, wide.count() ? &wide[0] : kNoText, wide.count());
}

bool cCairoCanvas::drawText(int x, int y, bool transparent, const unsigned short* text,
                            long long len) {
  if (!text) return false;
  const long long units = unitsOf(text, len);
  if (units > INT_MAX / 4) return false;
  std::string utf8;
  toUtf8(text, units, utf8, nullptr);
  return drawUtf8(x, y, transparent, utf8.data(), static_cast<int>(utf8.size()));
}

bool cCairoCanvas::textSize(const char* text, long long len, sSize& size) {
  size = {};
  if (!text) return false;
  const long long bytes = len < 0 ? static_cast<long long>(std::strlen(text)) : len;
  if (validUtf8(text, bytes)) return measureUtf8(text, static_cast<int>(bytes), size);
  _typebuf<unsigned short> wide;
  _pc2w(text, wide, bytes);
  return textSize(wide.count() ? &wide[0] : kNoText, wide.count(), size);
}

bool cCairoCanvas::textSize(const unsigned short* text, long long len, sSize& size) {
  size = {};
  if (!text) return false;
  const long long units = unitsOf(text, len);
  if (units > INT_MAX / 4) return false;
  std::string utf8;
  toUtf8(text, units, utf8, nullptr);
  return measureUtf8(utf8.data(), static_cast<int>(utf8.size()), size);
}

std::vector<int> cCairoCanvas::clusterWidths(const std::string& utf8) {
  // Each cluster's logical width (Pango units) goes to the byte that starts it.
  std::vector<int> widthAt(utf8.size() + 1, 0);
  PangoLayoutIter* it =
      pango_layout_get_iter(myFont->layout(utf8.data(), static_cast<int>(utf8.size())));
  do {
    const int index = pango_layout_iter_get_index(it);
    PangoRectangle logical;
    pango_layout_iter_get_cluster_extents(it, nullptr, &logical);
    if (index >= 0 && index < static_cast<int>(utf8.size()))
      widthAt[static_cast<size_t>(index)] += logical.width;
  } while (pango_layout_iter_next_cluster(it));
  pango_layout_iter_free(it);
  return widthAt;
}

bool cCairoCanvas::textRuler(const unsigned short* text, long long len, int* advances) {
  if (!text || !advances || !myFont) return false;
  const long long units = unitsOf(text, len);
  if (units > INT_MAX / 4) return false;
  std::string utf8;
  std::vector<int> offsets;
  toUtf8(text, units, utf8, &offsets);
  const std::vector<int> widthAt = clusterWidths(utf8);
  // Rounding the running total keeps the advances adding up to the text's width. The
  // second unit of a surrogate pair starts no character and gets 0.
  long long total = 0;
  for (long long i = 0; i < units; ++i) {
    const auto at = static_cast<size_t>(i);
    const int width =
        i > 0 && offsets[at] == offsets[at - 1] ? 0 : widthAt[static_cast<size_t>(offsets[at])];
    advances[i] = PANGO_PIXELS(total + width) - PANGO_PIXELS(total);
    total += width;
  }
  return true;
}

bool cCairoCanvas::textRuler(const char* text, long long len, int* advances) {
  if (!text || !advances || !myFont) return false;
  const long long bytes = len < 0 ? static_cast<long long>(std::strlen(text)) : len;
  if (!validUtf8(text, bytes)) {
    // Through UTF-16, where every byte that is not UTF-8 stands for a character.
    _typebuf<unsigned short> wide;
    _pc2w(text, wide, bytes);
    return wide.count() == 0 || textRuler(&wide[0], wide.count(), advances);
  }
  const std::string utf8(text, static_cast<size_t>(bytes));
  const std::vector<int> widthAt = clusterWidths(utf8);
  long long total = 0;
  int n = 0;
  for (const char* p = utf8.c_str(); p < utf8.c_str() + utf8.size(); p = g_utf8_next_char(p)) {
    const int width = widthAt[static_cast<size_t>(p - utf8.c_str())];
    advances[n++] = PANGO_PIXELS(total + width) - PANGO_PIXELS(total);
    total += width;
  }
  return true;
}

bool cCairoCanvas::snapshot(cPicture* picture, const sRect* rect) {
  if (picture) picture->destroy();
  if (!ready() || !picture || !rect) return false;
  const sArea cut = intersection(areaOf(*rect), myClipping.front().area());
  if (isEmpty(cut)) return false;
  cairo_surface_flush(mySurface.get());
  const sRect onSurface = {cut.left + myOrigin.x, cut.top + myOrigin.y, cut.right - cut.left,
                           cut.bottom - cut.top};
  return pictureOf(mySurface.get(), onSurface, picture);
}

cCanvas* cCairoCanvas::subCanvas(const sRect* rect) {
  if (!ready() || !rect || rect->empty()) return nullptr;
  const sArea visible = intersection(areaOf(*rect), myClipping.front().area());
  if (isEmpty(visible)) return nullptr;
  const sArea local = {visible.left - rect->x, visible.top - rect->y, visible.right - rect->x,
                       visible.bottom - rect->y};
  auto* sub =
      new cCairoCanvas(mySurface.get(), {myOrigin.x + rect->x, myOrigin.y + rect->y}, local);
  if (!sub->ready()) {
    delete sub;
    return nullptr;
  }
  return sub;
}

cCanvas* cCairoCanvas::offscreen(int w, int h, int, int) {
  if (!ready()) return nullptr;
  return cCairoOffscreenCanvas::make(mySurface.get(), w, h).release();
}
