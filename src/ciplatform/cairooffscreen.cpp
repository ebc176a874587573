#include "cairooffscreen.h"

std::unique_ptr<cCairoOffscreenCanvas> cCairoOffscreenCanvas::make(cairo_surface_t* like, int w,
                                                                   int h) {
  constexpr int kMaxSide = 32767; // Cairo's own limit
  if (w <= 0 || h <= 0 || w > kMaxSide || h > kMaxSide) return nullptr;
  // A surface like a scaled one has as many device pixels as the scale gives, cut down to
  // whole ones: at a fractional scale one more logical pixel keeps the last one covered.
  double scale = 1, unused = 1;
  if (like) cairo_surface_get_device_scale(like, &scale, &unused);
  const int pad = scale != static_cast<int>(scale) ? 1 : 0;
  tCairoSurface surface(
      like ? cairo_surface_create_similar(like, CAIRO_CONTENT_COLOR, w + pad, h + pad)
           : cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  std::unique_ptr<cCairoOffscreenCanvas> canvas(new cCairoOffscreenCanvas(surface.get(), w, h));
  if (!canvas->surface()) return nullptr;
  return canvas;
}
