#include "picture.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <zlib.h>

namespace {

unsigned channel(unsigned p, int shift) {
  return p >> shift & 0xFF;
}

unsigned pack(unsigned b, unsigned g, unsigned r, unsigned a) {
  return a << 24 | r << 16 | g << 8 | b;
}

// src laid over dst by src's alpha (straight alpha both sides).
unsigned over(unsigned src, unsigned dst) {
  const unsigned sa = channel(src, 24);
  if (sa == 255) return src;
  if (sa == 0) return dst;
  const unsigned da = channel(dst, 24);
  const unsigned outA = sa * 255 + da * (255 - sa); // scaled by 255
  unsigned out = (outA + 127) / 255 << 24;
  for (int shift = 0; shift < 24; shift += 8) {
    const unsigned mixed = channel(src, shift) * sa * 255 + channel(dst, shift) * da * (255 - sa);
    out |= (outA ? (mixed + outA / 2) / outA : 0) << shift;
  }
  return out;
}

int32_t readInt32(const unsigned char* p) {
  return static_cast<int32_t>(static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
                              static_cast<uint32_t>(p[2]) << 16 |
                              static_cast<uint32_t>(p[3]) << 24);
}

} // namespace

cPicture::cPicture(const cPicture& other)
    : myWidth(other.myWidth), myHeight(other.myHeight), myPixels(other.myPixels),
      myDetail(other.myDetail ? std::make_unique<cPicture>(*other.myDetail) : nullptr) {}

cPicture& cPicture::operator=(const cPicture& other) {
  if (this != &other) {
    cPicture copy(other);
    swap(copy);
  }
  return *this;
}

template <class F> void cPicture::deriveDetail(cPicture* out, F make) const {
  if (!myDetail) return;
  auto detail = std::make_unique<cPicture>();
  if (make(*myDetail, *detail)) out->myDetail = std::move(detail);
}

bool cPicture::createDetail(const unsigned char* resource, unsigned size) {
  myDetail.reset();
  if (empty()) return false;
  auto detail = std::make_unique<cPicture>();
  if (!detail->create(resource, size) || detail->width() != kDetail * myWidth ||
      detail->height() != kDetail * myHeight)
    return false;
  myDetail = std::move(detail);
  return true;
}

bool cPicture::allocate(int w, int h) {
  destroy();
  if (w <= 0 || h <= 0 || w > kMaxSide || h > kMaxSide) return false;
  try {
    myPixels.set(static_cast<long long>(w) * h);
  } catch (const std::bad_alloc&) {
    return false;
  }
  myWidth = w;
  myHeight = h;
  return true;
}

bool cPicture::create(int w, int h) {
  return allocate(w, h);
}

bool cPicture::create(unsigned pixel, int w, int h) {
  if (!allocate(w, h)) return false;
  std::fill(raw(), raw() + myPixels.count(), pixel);
  return true;
}

bool cPicture::create(const unsigned* pixels, int w, int h, bool bottomUp) {
  if (!pixels || !allocate(w, h)) return false;
  for (int y = 0; y < h; ++y) {
    const unsigned* row = pixels + static_cast<long long>(bottomUp ? h - 1 - y : y) * w;
    std::copy(row, row + w, raw() + static_cast<long long>(y) * w);
  }
  return true;
}

bool cPicture::create(const unsigned char* resource, unsigned size) {
  destroy();
  if (!resource || size < 9) return false;
  const int32_t w = readInt32(resource), h = readInt32(resource + 4);
  if (w <= 0 || h <= 0 || w > kMaxSide || h > kMaxSide) return false;
  const unsigned long long bytes = static_cast<unsigned long long>(w) * h * 4;
  // Deflate packs at most about 1032 to 1: a stream too short for the pixels is refused
  // before their memory is taken.
  if (bytes / 1032 > size) return false;
  _typebuf<unsigned> pixels;
  try {
    pixels.set(static_cast<long long>(w) * h);
  } catch (const std::bad_alloc&) {
    return false;
  }
  z_stream z{};
  if (inflateInit(&z) != Z_OK) return false;
  z.next_in = const_cast<unsigned char*>(resource + 8);
  z.avail_in = size - 8;
  z.next_out = reinterpret_cast<unsigned char*>(&pixels[0]);
  z.avail_out = static_cast<uInt>(bytes);
  const int result = inflate(&z, Z_FINISH);
  const bool whole = result == Z_STREAM_END && z.total_out == bytes;
  inflateEnd(&z);
  return whole && create(&pixels[0], w, h, true);
}

bool cPicture::create_on(_typebuf<unsigned>& pixels, int w, int h) {
  destroy();
  if (w <= 0 || h <= 0 || w > kMaxSide || h > kMaxSide ||
      pixels.count() != static_cast<long long>(w) * h)
    return false;
  std::swap(myPixels, pixels);
  myWidth = w;
  myHeight = h;
  return true;
}

void cPicture::destroy() {
  myDetail.reset();
  myPixels.clear();
  myWidth = myHeight = 0;
}

void cPicture::swap(cPicture& other) noexcept {
  std::swap(myWidth, other.myWidth);
  std::swap(myHeight, other.myHeight);
  std::swap(myPixels, other.myPixels);
  std::swap(myDetail, other.myDetail);
}

void cPicture::makesolid() {
  if (myDetail) myDetail->makesolid();
  for (long long i = 0; i < myPixels.count(); ++i) raw()[i] |= 0xFF000000u;
}

bool cPicture::blt(cPicture* dst, int x, int y, int w, int h, bool blendIt) const {
  if (!dst || dst == this || empty() || dst->empty()) return false;
  const int sx = std::max(0, -x), sy = std::max(0, -y);
  const int right = std::min({w, myWidth, dst->myWidth - x});
  const int bottom = std::min({h, myHeight, dst->myHeight - y});
  if (sx >= right || sy >= bottom) return false;
  for (int row = sy; row < bottom; ++row) {
    const unsigned* from = raw() + static_cast<long long>(row) * myWidth;
    unsigned* to = dst->raw() + static_cast<long long>(y + row) * dst->myWidth + x;
    for (int col = sx; col < right; ++col) {
      to[col] = blendIt ? over(from[col], to[col]) : from[col];
    }
  }
  if (myDetail && dst->myDetail)
    myDetail->blt(dst->myDetail.get(), kDetail * x, kDetail * y, kDetail * std::min(w, myWidth),
                  kDetail * std::min(h, myHeight), blendIt);
  else
    dst->myDetail.reset();
  return true;
}

bool cPicture::resizing(eResizeMethod method, int w, int h, cPicture* out) const {
  return method == rmScaling ? scaling(w, h, out) : stretch(w, h, out);
}

bool cPicture::stretch(int w, int h, cPicture* out) const {
  if (!out || out == this || empty() || !out->allocate(w, h)) return false;
  for (int y = 0; y < h; ++y) {
    const unsigned* from = raw() + static_cast<long long>(y) * myHeight / h * myWidth;
    unsigned* to = out->raw() + static_cast<long long>(y) * w;
    for (int x = 0; x < w; ++x) to[x] = from[static_cast<long long>(x) * myWidth / w];
  }
  deriveDetail(out, [w, h](const cPicture& d, cPicture& to) {
    return d.stretch(kDetail * w, kDetail * h, &to);
  });
  return true;
}

bool cPicture::scaling(int w, int h, cPicture* out) const {
  if (!out || out == this || empty() || !out->allocate(w, h)) return false;
  // Every output pixel covers a box of the source: the average of what the box covers,
  // weighted by area and alpha, and for enlargements a bilinear blend of the neighbours.
  const double fx = static_cast<double>(myWidth) / w, fy = static_cast<double>(myHeight) / h;
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      double x0 = x * fx, x1 = x0 + fx, y0 = y * fy, y1 = y0 + fy;
      if (fx < 1) { // enlarging: a box of one source pixel around the sample point
        x0 = std::clamp((x + 0.5) * fx - 0.5, 0.0, myWidth - 1.0);
        x1 = x0 + 1;
      }
      if (fy < 1) {
        y0 = std::clamp((y + 0.5) * fy - 0.5, 0.0, myHeight - 1.0);
        y1 = y0 + 1;
      }
      double sum[4] = {0, 0, 0, 0}, weight = 0;
      for (int sy = static_cast<int>(y0); sy < y1 && sy < myHeight; ++sy) {
        const double wy = std::min<double>(sy + 1, y1) - std::max<double>(sy, y0);
        for (int sx = static_cast<int>(x0); sx < x1 && sx < myWidth; ++sx) {
          const double wxy = wy * (std::min<double>(sx + 1, x1) - std::max<double>(sx, x0));
          if (wxy <= 0) continue;
          const unsigned p = pixel(sx, sy);
          const double a = channel(p, 24) * wxy;
          for (int c = 0; c < 3; ++c) sum[c] += channel(p, 8 * c) * a;
          sum[3] += a;
          weight += wxy;
        }
      }
      unsigned result = 0;
      if (sum[3] > 0) {
        for (int c = 0; c < 3; ++c) {
          result |= static_cast<unsigned>(std::lround(std::min(255.0, sum[c] / sum[3]))) << 8 * c;
        }
        result |= static_cast<unsigned>(std::lround(std::min(255.0, sum[3] / weight))) << 24;
      }
      out->raw()[static_cast<long long>(y) * w + x] = result;
    }
  }
  deriveDetail(out, [w, h](const cPicture& d, cPicture& to) {
    return d.scaling(kDetail * w, kDetail * h, &to);
  });
  return true;
}

bool cPicture::hStretch(int w, int edge, cPicture* out) const {
  if (!out || out == this || empty() || edge < 0 || 2 * edge >= myWidth || w < 2 * edge ||
      !out->allocate(w, myHeight))
    return false;
  const int middle = myWidth - 2 * edge;
  for (int y = 0; y < myHeight; ++y) {
    const unsigned* from = raw() + static_cast<long long>(y) * myWidth;
    unsigned* to = out->raw() + static_cast<long long>(y) * w;
    for (int x = 0; x < w; ++x) {
      const int sx = x < edge ? x : x >= w - edge ? myWidth - (w - x) : edge + (x - edge) % middle;
      to[x] = from[sx];
    }
  }
  deriveDetail(out, [w, edge](const cPicture& d, cPicture& to) {
    return d.hStretch(kDetail * w, kDetail * edge, &to);
  });
  return true;
}

bool cPicture::subPictTo(const sRect& rect, cPicture* out) const {
  if (!out || out == this) return false;
  const int x0 = std::max(rect.x, 0), y0 = std::max(rect.y, 0);
  const int x1 = std::min<long long>(static_cast<long long>(rect.x) + rect.width, myWidth);
  const int y1 = std::min<long long>(static_cast<long long>(rect.y) + rect.height, myHeight);
  if (x0 >= x1 || y0 >= y1 || !out->allocate(x1 - x0, y1 - y0)) {
    out->destroy();
    return false;
  }
  for (int y = y0; y < y1; ++y) {
    const unsigned* from = raw() + static_cast<long long>(y) * myWidth + x0;
    std::copy(from, from + (x1 - x0), out->raw() + static_cast<long long>(y - y0) * (x1 - x0));
  }
  const sRect inDetail = {kDetail * x0, kDetail * y0, kDetail * (x1 - x0), kDetail * (y1 - y0)};
  deriveDetail(out,
               [&inDetail](const cPicture& d, cPicture& to) { return d.subPictTo(inDetail, &to); });
  return true;
}

void cPicture::flip() {
  if (myDetail) myDetail->flip();
  for (int y = 0; y < myHeight / 2; ++y) {
    std::swap_ranges(raw() + static_cast<long long>(y) * myWidth,
                     raw() + static_cast<long long>(y + 1) * myWidth,
                     raw() + static_cast<long long>(myHeight - 1 - y) * myWidth);
  }
}

void cPicture::flip_left() {
  if (empty()) return;
  cPicture turned;
  if (!turned.allocate(myHeight, myWidth)) return;
  if (myDetail) myDetail->flip_left();
  turned.myDetail = std::move(myDetail);
  // The top row becomes the left column, read from the bottom up.
  for (int y = 0; y < myHeight; ++y) {
    for (int x = 0; x < myWidth; ++x) {
      turned.raw()[static_cast<long long>(myWidth - 1 - x) * myHeight + y] = pixel(x, y);
    }
  }
  swap(turned);
}

void cPicture::flip_right() {
  if (empty()) return;
  cPicture turned;
  if (!turned.allocate(myHeight, myWidth)) return;
  if (myDetail) myDetail->flip_right();
  turned.myDetail = std::move(myDetail);
  // The top row becomes the right column, read from the top down.
  for (int y = 0; y < myHeight; ++y) {
    for (int x = 0; x < myWidth; ++x) {
      turned.raw()[static_cast<long long>(x) * myHeight + (myHeight - 1 - y)] = pixel(x, y);
    }
  }
  swap(turned);
}

bool cPicture::rotate(int degrees) {
  if (degrees % 90 != 0) return false;
  switch ((degrees / 90 % 4 + 4) % 4) {
  case 1:
    flip_right();
    break;
  case 2:
    // A half turn reverses the pixel order.
    std::reverse(raw(), raw() + myPixels.count());
    if (myDetail) myDetail->rotate(180);
    break;
  case 3:
    flip_left();
    break;
  default:
    break;
  }
  return true;
}

bool cPicture::blend(int x, int y, const cPicture* src) {
  return src && src->blt(this, x, y, src->width(), src->height(), true);
}

void cPicture::mkDisabled() {
  if (myDetail) myDetail->mkDisabled();
  for (long long i = 0; i < myPixels.count(); ++i) {
    const unsigned p = raw()[i];
    const double g = channel(p, 8) * 0.5714285714285714 +
                     (channel(p, 16) * 0.2857142857142857 + channel(p, 0) * 0.14285714285714285);
    unsigned v = static_cast<unsigned>(std::trunc(std::trunc(g) * 0.7647058823529411)) + 30;
    if (v > 255) v = 255;
    raw()[i] = pack(v, v, v, channel(p, 24));
  }
}

void cPicture::mkActive() {
  if (myDetail) myDetail->mkActive();
  for (long long i = 0; i < myPixels.count(); ++i) {
    const unsigned p = raw()[i];
    unsigned out = p & 0xFF000000u;
    for (int shift = 0; shift < 24; shift += 8) {
      const double t = channel(p, shift) / 255.0;
      out |= static_cast<unsigned>((t * t + 2 * t) * 85) << shift;
    }
    raw()[i] = out;
  }
}
