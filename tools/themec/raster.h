// An antialiased rasteriser for small theme pictures.
//
// Shapes are tested at 8 × 8 points inside every pixel of their bounding box; the covered
// share of a pixel scales the paint's alpha, and the result is laid over what is already
// there (source over). Pixel (x, y) covers [x, x + 1) × [y, y + 1).
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

struct sRgba {
  double r = 0, g = 0, b = 0, a = 0; // 0 to 1, straight alpha
};

// A solid colour, or a gradient across the shape's bounding box from `from` (top or left
// pixel) to `to` (bottom or right pixel).
struct sPaint {
  enum eKind { solid, vertical, horizontal };
  eKind kind = solid;
  sRgba from, to;
};

struct sBox {
  double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
};

struct sShape {
  sBox box;
  std::function<bool(double x, double y)> inside;
};

struct sPointD {
  double x = 0, y = 0;
};

namespace shapes {
sShape rect(double x, double y, double w, double h);
sShape roundRect(double x, double y, double w, double h, double r);
// The band of thickness t just inside a rounded rectangle's edge.
sShape frame(double x, double y, double w, double h, double r, double t);
sShape circle(double cx, double cy, double r);
// The band of thickness t just inside a circle's edge.
sShape ring(double cx, double cy, double r, double t);
// Filled by the even-odd rule.
sShape polygon(std::vector<sPointD> points);
// Every point within t / 2 of the line through the points: round joins and ends.
sShape polyline(std::vector<sPointD> points, double t);
// An arc of a circle of radius r, from angle a0 clockwise to a1 (degrees, 0 = right,
// y grows downwards), stroked with thickness t and round ends.
sShape arc(double cx, double cy, double r, double a0, double a1, double t);
} // namespace shapes

// A raster of w × h units at `scale` pixels per unit: shapes are given in units.
class cRaster {
public:
  cRaster(int w, int h, int scale = 1);
  int width() const { return myWidth; }
  int height() const { return myHeight; }
  void paint(const sShape& shape, const sPaint& paint);
  // 0xAARRGGBB, straight alpha, rows from the top.
  std::vector<std::uint32_t> pixels() const;

private:
  int myWidth, myHeight, myScale; // in pixels
  std::vector<sRgba> myPremultiplied;
};
