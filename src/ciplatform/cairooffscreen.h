// An offscreen canvas: a canvas over a surface of its own, made like another surface (an
// X pixmap for a window, an image otherwise) so that copying it back is cheap.
#pragma once

#include "cairocanvas.h"

class cCairoOffscreenCanvas : public cCairoCanvas {
public:
  // Null when the surface cannot be made (a side not positive or too large).
  static std::unique_ptr<cCairoOffscreenCanvas> make(cairo_surface_t* like, int w, int h);

private:
  cCairoOffscreenCanvas(cairo_surface_t* surface, int w, int h) : cCairoCanvas(surface, w, h) {}
};
