// An image surface to draw on in tests, with its pixels readable as 0x00RRGGBB.
#pragma once

#include <cstdint>

#include <cairo.h>

#include "ciplatform/cairocanvas.h"

class cTestSurface {
public:
  cTestSurface(int w, int h, unsigned rgb = 0x808080)
      : mySurface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h)) {
    fill(rgb);
  }
  ~cTestSurface() { cairo_surface_destroy(mySurface); }
  cTestSurface(const cTestSurface&) = delete;
  cTestSurface& operator=(const cTestSurface&) = delete;

  cairo_surface_t* get() const { return mySurface; }
  int width() const { return cairo_image_surface_get_width(mySurface); }
  int height() const { return cairo_image_surface_get_height(mySurface); }

  void fill(unsigned rgb) {
    for (int y = 0; y < height(); ++y) {
      for (int x = 0; x < width(); ++x) row(y)[x] = rgb;
    }
    cairo_surface_mark_dirty(mySurface);
  }
  unsigned at(int x, int y) const {
    cairo_surface_flush(mySurface);
    return row(y)[x] & 0xFFFFFF;
  }
  // How many pixels of the area x0..x1-1, y0..y1-1 are not rgb.
  int countOther(int x0, int y0, int x1, int y1, unsigned rgb) const {
    int n = 0;
    for (int y = y0; y < y1; ++y) {
      for (int x = x0; x < x1; ++x) n += at(x, y) != rgb;
    }
    return n;
  }
  // The smallest area holding every pixel that is not rgb: {left, top, right, bottom},
  // exclusive; all zero when there is none.
  sArea inkOther(unsigned rgb) const {
    sArea a = {width(), height(), 0, 0};
    for (int y = 0; y < height(); ++y) {
      for (int x = 0; x < width(); ++x) {
        if (at(x, y) == rgb) continue;
        a = {std::min(a.left, x), std::min(a.top, y), std::max(a.right, x + 1),
             std::max(a.bottom, y + 1)};
      }
    }
    return a.right == 0 ? sArea{} : a;
  }

private:
  uint32_t* row(int y) const {
    return reinterpret_cast<uint32_t*>(cairo_image_surface_get_data(mySurface) +
                                       y * cairo_image_surface_get_stride(mySurface));
  }
  cairo_surface_t* mySurface;
};
