// Drawing helpers shared by the editor's pictures.
#pragma once

#include <cairo.h>

constexpr double kPi = 3.14159265358979323846;

void rgb(cairo_t* cr, unsigned hex, double alpha = 1.0);
void roundedRect(cairo_t* cr, double x, double y, double w, double h, double r);
void text(cairo_t* cr, const char* utf8, const char* font, double x, double y, unsigned colour);
// A vertical gradient between two colours over y0..y1, as the current source.
void vgradient(cairo_t* cr, double y0, double y1, unsigned top, unsigned bottom);
// The product's mark in a side × side square at x, y: a disk's blocks, one recognised.
void mark(cairo_t* cr, double x, double y, double side, bool onBand);

// The About banner, 475 × 258, drawn on an opaque surface.
constexpr int kBannerWidth = 475, kBannerHeight = 258;
void drawBanner(cairo_t* cr);

// The main form's pictures, by the names the editor knows them under.
struct sIcon {
  const char* name; // the resource's C++ name
  int side;         // width and height in pixels
  void (*draw)(cairo_t* cr);
};
extern const sIcon kIcons[];
extern const int kIconCount;
