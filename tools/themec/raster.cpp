#include "raster.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr int kSamples = 8; // per pixel side

double squared(double v) {
  return v * v;
}

bool inRoundRect(double x, double y, double x0, double y0, double x1, double y1, double r) {
  if (x < x0 || x >= x1 || y < y0 || y >= y1) return false;
  r = std::min({r, (x1 - x0) / 2, (y1 - y0) / 2});
  if (r <= 0) return true;
  // Only the four corner squares can lie outside the rounded outline.
  const double cx = std::clamp(x, x0 + r, x1 - r);
  const double cy = std::clamp(y, y0 + r, y1 - r);
  return squared(x - cx) + squared(y - cy) <= r * r;
}

double segmentDistance2(sPointD p, sPointD a, sPointD b) {
  const double dx = b.x - a.x, dy = b.y - a.y;
  const double length2 = dx * dx + dy * dy;
  double t = length2 > 0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / length2 : 0;
  t = std::clamp(t, 0.0, 1.0);
  return squared(p.x - (a.x + t * dx)) + squared(p.y - (a.y + t * dy));
}

sBox boundsOf(const std::vector<sPointD>& points, double margin) {
  sBox box{1e9, 1e9, -1e9, -1e9};
  for (const sPointD& p : points) {
    box = {std::min(box.x0, p.x), std::min(box.y0, p.y), std::max(box.x1, p.x),
           std::max(box.y1, p.y)};
  }
  return {box.x0 - margin, box.y0 - margin, box.x1 + margin, box.y1 + margin};
}

sRgba mix(const sRgba& a, const sRgba& b, double t) {
  return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t,
          a.a + (b.a - a.a) * t};
}

// The gradient position of a pixel's centre: 0 at the first pixel of the box, 1 at the
// last, so both end colours appear exactly.
double gradientAt(double centre, double from, double to) {
  const double first = std::floor(from) + 0.5, last = std::ceil(to) - 0.5;
  return last > first ? std::clamp((centre - first) / (last - first), 0.0, 1.0) : 0.0;
}

std::uint32_t toByte(double v) {
  return static_cast<std::uint32_t>(std::lround(std::clamp(v, 0.0, 1.0) * 255));
}

} // namespace

namespace shapes {

sShape rect(double x, double y, double w, double h) {
  return {{x, y, x + w, y + h},
          [=](double px, double py) { return px >= x && px < x + w && py >= y && py < y + h; }};
}

sShape roundRect(double x, double y, double w, double h, double r) {
  return {{x, y, x + w, y + h},
          [=](double px, double py) { return inRoundRect(px, py, x, y, x + w, y + h, r); }};
}

sShape frame(double x, double y, double w, double h, double r, double t) {
  return {{x, y, x + w, y + h}, [=](double px, double py) {
            return inRoundRect(px, py, x, y, x + w, y + h, r) &&
                   !inRoundRect(px, py, x + t, y + t, x + w - t, y + h - t, std::max(0.0, r - t));
          }};
}

sShape circle(double cx, double cy, double r) {
  return {{cx - r, cy - r, cx + r, cy + r},
          [=](double px, double py) { return squared(px - cx) + squared(py - cy) <= r * r; }};
}

sShape ring(double cx, double cy, double r, double t) {
  const double inner = std::max(0.0, r - t);
  return {{cx - r, cy - r, cx + r, cy + r}, [=](double px, double py) {
            const double d2 = squared(px - cx) + squared(py - cy);
            return d2 <= r * r && d2 > inner * inner;
          }};
}

sShape polygon(std::vector<sPointD> points) {
  const sBox box = boundsOf(points, 0);
  return {box, [points = std::move(points)](double px, double py) {
            bool in = false;
            for (size_t i = 0, j = points.size() - 1; i < points.size(); j = i++) {
              const sPointD& a = points[i];
              const sPointD& b = points[j];
              if ((a.y > py) != (b.y > py) && px < (b.x - a.x) * (py - a.y) / (b.y - a.y) + a.x)
                in = !in;
            }
            return in;
          }};
}

sShape polyline(std::vector<sPointD> points, double t) {
  const sBox box = boundsOf(points, t / 2);
  const double limit = t * t / 4;
  return {box, [points = std::move(points), limit](double px, double py) {
            if (points.size() == 1)
              return segmentDistance2({px, py}, points[0], points[0]) <= limit;
            for (size_t i = 1; i < points.size(); ++i) {
              if (segmentDistance2({px, py}, points[i - 1], points[i]) <= limit) return true;
            }
            return false;
          }};
}

sShape arc(double cx, double cy, double r, double a0, double a1, double t) {
  const double rad = std::numbers::pi / 180;
  const double sweep = std::fmod(std::fmod(a1 - a0, 360) + 360, 360);
  const sPointD start{cx + r * std::cos(a0 * rad), cy + r * std::sin(a0 * rad)};
  const sPointD end{cx + r * std::cos(a1 * rad), cy + r * std::sin(a1 * rad)};
  const double half = t / 2;
  return {{cx - r - half, cy - r - half, cx + r + half, cy + r + half}, [=](double px, double py) {
            if (segmentDistance2({px, py}, start, start) <= half * half ||
                segmentDistance2({px, py}, end, end) <= half * half)
              return true;
            const double d = std::hypot(px - cx, py - cy);
            if (std::abs(d - r) > half) return false;
            const double a = std::atan2(py - cy, px - cx) / rad;
            return std::fmod(std::fmod(a - a0, 360) + 360, 360) <= sweep;
          }};
}

} // namespace shapes

cRaster::cRaster(int w, int h, int scale)
    : myWidth(w * scale), myHeight(h * scale), myScale(scale),
      myPremultiplied(static_cast<size_t>(myWidth) * myHeight) {}

void cRaster::paint(const sShape& shape, const sPaint& paint) {
  const sBox box = {shape.box.x0 * myScale, shape.box.y0 * myScale, shape.box.x1 * myScale,
                    shape.box.y1 * myScale};
  const int x0 = std::max(0, static_cast<int>(std::floor(box.x0)));
  const int y0 = std::max(0, static_cast<int>(std::floor(box.y0)));
  const int x1 = std::min(myWidth, static_cast<int>(std::ceil(box.x1)));
  const int y1 = std::min(myHeight, static_cast<int>(std::ceil(box.y1)));
  const double step = 1.0 / (kSamples * myScale);
  for (int y = y0; y < y1; ++y) {
    for (int x = x0; x < x1; ++x) {
      int hits = 0;
      for (int sy = 0; sy < kSamples; ++sy) {
        for (int sx = 0; sx < kSamples; ++sx) {
          hits += shape.inside((x * kSamples + sx + 0.5) * step, (y * kSamples + sy + 0.5) * step);
        }
      }
      if (!hits) continue;
      sRgba colour = paint.from;
      if (paint.kind == sPaint::vertical)
        colour = mix(paint.from, paint.to, gradientAt(y + 0.5, box.y0, box.y1));
      else if (paint.kind == sPaint::horizontal)
        colour = mix(paint.from, paint.to, gradientAt(x + 0.5, box.x0, box.x1));
      const double alpha = colour.a * hits / (kSamples * kSamples);
      sRgba& to = myPremultiplied[static_cast<size_t>(y) * myWidth + x];
      const double keep = 1 - alpha;
      to = {colour.r * alpha + to.r * keep, colour.g * alpha + to.g * keep,
            colour.b * alpha + to.b * keep, alpha + to.a * keep};
    }
  }
}

std::vector<std::uint32_t> cRaster::pixels() const {
  std::vector<std::uint32_t> out;
  out.reserve(myPremultiplied.size());
  for (const sRgba& p : myPremultiplied) {
    const std::uint32_t a = toByte(p.a);
    if (!a) {
      out.push_back(0);
      continue;
    }
    out.push_back(a << 24 | toByte(p.r / p.a) << 16 | toByte(p.g / p.a) << 8 | toByte(p.b / p.a));
  }
  return out;
}
