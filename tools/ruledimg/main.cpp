// ruledimg: draws the editor's pictures at build time and stores them as built-in picture
// resources.
//
//   ruledimg OUTPUT.cpp PREVIEWS
//
// OUTPUT.cpp defines kAboutBanner (475 × 258, a blue title band with the product's mark,
// name and version, a light body under the About text and a close mark in the 17 × 17
// square at (451, 6)) and the main form's pictures (icons.cpp), each with its size in
// bytes (kAboutBannerSize, kToolNewSize...), and each one's detail, drawn at twice the
// density (kAboutBannerDetail, kAboutBannerDetailSize...). A resource is the width and height as
// little-endian 32-bit ints, then a zlib stream of the 0xAARRGGBB pixels (straight alpha),
// little-endian, bottom row first.
//
// PREVIEWS is a folder that receives what was drawn: about-banner.png and ruled-icons.png
// (every icon at four times its size) for looking at them, and the program's desktop icon
// in three sizes (qvraci-ruled-48.png, -128, -256) for installing.
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "draw.h"

namespace {

// Owns a Cairo image surface and its context.
struct sCanvas {
  sCanvas(cairo_format_t format, int w, int h)
      : surface(cairo_image_surface_create(format, w, h)), cr(cairo_create(surface)) {}
  ~sCanvas() {
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
  }
  sCanvas(const sCanvas&) = delete;
  sCanvas& operator=(const sCanvas&) = delete;
  cairo_surface_t* surface;
  cairo_t* cr;
};

// Width, height, then the deflated straight-alpha pixels from the bottom row up.
std::vector<unsigned char> resource(cairo_surface_t* surface) {
  cairo_surface_flush(surface);
  const int w = cairo_image_surface_get_width(surface);
  const int h = cairo_image_surface_get_height(surface);
  const bool opaque = cairo_image_surface_get_format(surface) == CAIRO_FORMAT_RGB24;
  std::vector<unsigned char> out;
  for (const int side : {w, h})
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<unsigned char>(side >> 8 * i));
  const unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  std::vector<unsigned char> raw;
  raw.reserve(static_cast<size_t>(w) * h * 4);
  for (int y = h - 1; y >= 0; --y) {
    const auto* row =
        reinterpret_cast<const std::uint32_t*>(data + static_cast<size_t>(y) * stride);
    for (int x = 0; x < w; ++x) {
      // Cairo premultiplies; RGB24 leaves the alpha byte undefined.
      std::uint32_t p = row[x];
      const unsigned a = opaque ? 0xFF : p >> 24;
      if (a == 0) {
        p = 0;
      } else if (a < 0xFF) {
        std::uint32_t straight = a << 24;
        for (int shift = 0; shift < 24; shift += 8) {
          const unsigned c = ((p >> shift) & 0xFF) * 255 + a / 2;
          straight |= std::min(c / a, 255u) << shift;
        }
        p = straight;
      } else {
        p |= 0xFF000000u;
      }
      for (int i = 0; i < 4; ++i) raw.push_back(static_cast<unsigned char>(p >> 8 * i));
    }
  }
  uLongf packed = compressBound(raw.size());
  std::vector<unsigned char> stream(packed);
  if (compress2(stream.data(), &packed, raw.data(), raw.size(), 9) != Z_OK) return {};
  out.insert(out.end(), stream.begin(), stream.begin() + static_cast<long>(packed));
  return out;
}

bool emit(std::ofstream& out, const std::string& name, cairo_surface_t* surface) {
  const std::vector<unsigned char> bytes = resource(surface);
  if (bytes.empty()) return false;
  out << "extern const unsigned char " << name << "[];\nextern const unsigned " << name
      << "Size;\nconst unsigned char " << name << "[] = {";
  for (size_t i = 0; i < bytes.size(); ++i)
    out << (i % 20 ? " " : "\n    ") << static_cast<unsigned>(bytes[i]) << ",";
  out << "};\nconst unsigned " << name << "Size = " << bytes.size() << ";\n\n";
  return static_cast<bool>(out);
}

// Every icon at four times its size, side by side on the form's colour.
bool contactSheet(const std::string& path) {
  constexpr int kZoom = 4, kCell = 24 * kZoom + 8;
  sCanvas sheet(CAIRO_FORMAT_RGB24, kCell * kIconCount, kCell);
  rgb(sheet.cr, 0xDFE5F3);
  cairo_paint(sheet.cr);
  for (int i = 0; i < kIconCount; ++i) {
    sCanvas icon(CAIRO_FORMAT_ARGB32, kIcons[i].side, kIcons[i].side);
    kIcons[i].draw(icon.cr);
    cairo_surface_flush(icon.surface);
    cairo_save(sheet.cr);
    cairo_translate(sheet.cr, i * kCell + 4, 4);
    cairo_scale(sheet.cr, kZoom, kZoom);
    cairo_set_source_surface(sheet.cr, icon.surface, 0, 0);
    cairo_pattern_set_filter(cairo_get_source(sheet.cr), CAIRO_FILTER_NEAREST);
    cairo_paint(sheet.cr);
    cairo_restore(sheet.cr);
  }
  return cairo_surface_write_to_png(sheet.surface, path.c_str()) == CAIRO_STATUS_SUCCESS;
}

// The product's mark with a small margin, as desktop icons have.
bool desktopIcons(const std::string& folder) {
  for (const int side : {48, 128, 256}) {
    sCanvas icon(CAIRO_FORMAT_ARGB32, side, side);
    const double margin = side / 32.0;
    mark(icon.cr, margin, margin, side - 2 * margin, false);
    const std::string path = folder + "/qvraci-ruled-" + std::to_string(side) + ".png";
    if (cairo_surface_write_to_png(icon.surface, path.c_str()) != CAIRO_STATUS_SUCCESS)
      return false;
  }
  return true;
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: ruledimg OUTPUT.cpp PREVIEWS\n");
    return 2;
  }
  const std::string previews = argv[2];
  sCanvas banner(CAIRO_FORMAT_RGB24, kBannerWidth, kBannerHeight);
  drawBanner(banner.cr);

  std::ofstream out(argv[1]);
  out << "// Generated by ruledimg: the editor's pictures as built-in picture resources.\n\n";
  // Each picture twice: as it is, and its detail for screens of twice the density.
  const auto both = [&out](const std::string& name, cairo_format_t format, int w, int h,
                           void (*draw)(cairo_t*)) {
    bool ok = true;
    for (const int scale : {1, 2}) {
      sCanvas canvas(format, w * scale, h * scale);
      cairo_scale(canvas.cr, scale, scale);
      draw(canvas.cr);
      ok = ok && emit(out, scale == 1 ? name : name + "Detail", canvas.surface);
    }
    return ok;
  };
  bool ok = both("kAboutBanner", CAIRO_FORMAT_RGB24, kBannerWidth, kBannerHeight, drawBanner);
  for (int i = 0; ok && i < kIconCount; ++i)
    ok = both(kIcons[i].name, CAIRO_FORMAT_ARGB32, kIcons[i].side, kIcons[i].side, kIcons[i].draw);
  out.close();
  ok = ok && out &&
       cairo_surface_write_to_png(banner.surface, (previews + "/about-banner.png").c_str()) ==
           CAIRO_STATUS_SUCCESS &&
       contactSheet(previews + "/ruled-icons.png") && desktopIcons(previews);
  if (!ok) std::fprintf(stderr, "ruledimg: cannot write the pictures\n");
  return ok ? 0 : 1;
}
