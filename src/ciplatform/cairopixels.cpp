#include "cairopixels.h"

#include <algorithm>
#include <cstdint>

namespace {

unsigned premultiply(unsigned p) {
  const unsigned a = p >> 24;
  if (a == 255) return p;
  if (a == 0) return 0;
  const auto mul = [a](unsigned c) { return (c * a + 127) / 255; };
  return a << 24 | mul(p >> 16 & 255) << 16 | mul(p >> 8 & 255) << 8 | mul(p & 255);
}

unsigned unpremultiply(unsigned p) {
  const unsigned a = p >> 24;
  if (a == 255 || a == 0) return a == 0 ? 0 : p;
  const auto div = [a](unsigned c) { return std::min(255u, (c * 255 + a / 2) / a); };
  return a << 24 | div(p >> 16 & 255) << 16 | div(p >> 8 & 255) << 8 | div(p & 255);
}

} // namespace

tCairoSurface surfaceOf(const cPicture& picture, bool opaque) {
  if (picture.empty()) return nullptr;
  tCairoSurface surface(cairo_image_surface_create(
      opaque ? CAIRO_FORMAT_RGB24 : CAIRO_FORMAT_ARGB32, picture.width(), picture.height()));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  cairo_surface_flush(surface.get());
  unsigned char* data = cairo_image_surface_get_data(surface.get());
  const int stride = cairo_image_surface_get_stride(surface.get());
  for (int y = 0; y < picture.height(); ++y) {
    auto* row = reinterpret_cast<uint32_t*>(data + static_cast<long long>(y) * stride);
    const unsigned* src = picture.raw() + static_cast<long long>(y) * picture.width();
    for (int x = 0; x < picture.width(); ++x) {
      row[x] = opaque ? (src[x] | 0xFF000000u) : premultiply(src[x]);
    }
  }
  cairo_surface_mark_dirty(surface.get());
  return surface;
}

bool pictureOf(cairo_surface_t* surface, const sRect& rect, cPicture* picture) {
  if (!surface || !picture) return false;
  picture->destroy();
  sArea cut = {rect.x, rect.y, rect.x + rect.width, rect.y + rect.height};
  if (cairo_surface_get_type(surface) == CAIRO_SURFACE_TYPE_IMAGE) {
    cut.left = std::max(cut.left, 0);
    cut.top = std::max(cut.top, 0);
    cut.right = std::min(cut.right, cairo_image_surface_get_width(surface));
    cut.bottom = std::min(cut.bottom, cairo_image_surface_get_height(surface));
  }
  if (cut.right <= cut.left || cut.bottom <= cut.top) return false;
  cairo_rectangle_int_t area = {cut.left, cut.top, cut.right - cut.left, cut.bottom - cut.top};
  // map_to_image works for any surface kind (an X pixmap too).
  cairo_surface_t* image = cairo_surface_map_to_image(surface, &area);
  if (cairo_surface_status(image) != CAIRO_STATUS_SUCCESS) {
    cairo_surface_unmap_image(surface, image);
    return false;
  }
  const int w = cairo_image_surface_get_width(image), h = cairo_image_surface_get_height(image);
  const cairo_format_t format = cairo_image_surface_get_format(image);
  bool done = false;
  if (w > 0 && h > 0 && (format == CAIRO_FORMAT_ARGB32 || format == CAIRO_FORMAT_RGB24) &&
      picture->create(w, h)) {
    const unsigned char* data = cairo_image_surface_get_data(image);
    const int stride = cairo_image_surface_get_stride(image);
    for (int y = 0; y < h; ++y) {
      const auto* row =
          reinterpret_cast<const uint32_t*>(data + static_cast<long long>(y) * stride);
      unsigned* dst = picture->raw() + static_cast<long long>(y) * w;
      for (int x = 0; x < w; ++x) {
        dst[x] = format == CAIRO_FORMAT_RGB24 ? (row[x] | 0xFF000000u) : unpremultiply(row[x]);
      }
    }
    done = true;
  }
  cairo_surface_unmap_image(surface, image);
  return done;
}
