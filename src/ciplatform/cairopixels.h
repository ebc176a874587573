// Moving pixels between cPicture (straight-alpha 0xAARRGGBB) and Cairo image surfaces
// (native-endian 32-bit words, premultiplied alpha in ARGB32, alpha ignored in RGB24).
#pragma once

#include <memory>

#include <cairo.h>

#include "ciom/picture.h"

struct sCairoSurfaceFree {
  void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};
using tCairoSurface = std::unique_ptr<cairo_surface_t, sCairoSurfaceFree>;

// An image surface holding the picture; opaque drops the alpha channel (RGB24), else the
// pixels are premultiplied (ARGB32). Null for an empty picture or when Cairo fails.
tCairoSurface surfaceOf(const cPicture& picture, bool opaque);

// The pixels of rect (in surface coordinates) into picture, with straight alpha; RGB24
// surfaces give opaque pixels. Image surfaces cut rect to their size; for other kinds the
// caller keeps it inside. False when nothing remains.
bool pictureOf(cairo_surface_t* surface, const sRect& rect, cPicture* picture);
