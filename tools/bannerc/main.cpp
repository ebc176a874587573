// bannerc: draws the editor's About banner at build time and stores it as a built-in
// picture resource.
//
//   bannerc OUTPUT.cpp [PREVIEW.png]
//
// The banner is 475 × 258: a blue title band with the product's mark, name and version, a
// light body (the About text is shown over it at run time) and a close mark in the
// 17 × 17 square at (451, 6). OUTPUT.cpp defines kAboutBanner and kAboutBannerSize: width
// and height as little-endian 32-bit ints, then a zlib stream of the 0xAARRGGBB pixels,
// little-endian, bottom row first. PREVIEW.png is the banner as drawn, for looking at it.
#include <cairo.h>
#include <pango/pangocairo.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 475, kHeight = 258, kBand = 74;
constexpr double kCloseX = 451, kCloseY = 6, kCloseSide = 17;

void rgb(cairo_t* cr, unsigned hex, double alpha = 1.0) {
  cairo_set_source_rgba(cr, ((hex >> 16) & 0xFF) / 255.0, ((hex >> 8) & 0xFF) / 255.0,
                        (hex & 0xFF) / 255.0, alpha);
}

void roundedRect(cairo_t* cr, double x, double y, double w, double h, double r) {
  cairo_new_sub_path(cr);
  cairo_arc(cr, x + w - r, y + r, r, -G_PI / 2, 0);
  cairo_arc(cr, x + w - r, y + h - r, r, 0, G_PI / 2);
  cairo_arc(cr, x + r, y + h - r, r, G_PI / 2, G_PI);
  cairo_arc(cr, x + r, y + r, r, G_PI, 3 * G_PI / 2);
  cairo_close_path(cr);
}

void text(cairo_t* cr, const char* utf8, const char* font, double x, double y, unsigned colour) {
  PangoLayout* layout = pango_cairo_create_layout(cr);
  PangoFontDescription* description = pango_font_description_from_string(font);
  pango_layout_set_font_description(layout, description);
  pango_layout_set_text(layout, utf8, -1);
  rgb(cr, colour);
  cairo_move_to(cr, x, y);
  pango_cairo_show_layout(cr, layout);
  pango_font_description_free(description);
  g_object_unref(layout);
}

// The product's mark: a disk's blocks, one of them recognised.
void mark(cairo_t* cr, double x, double y) {
  roundedRect(cr, x, y, 44, 44, 6);
  rgb(cr, 0xFFFFFF, 0.18);
  cairo_fill(cr);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      roundedRect(cr, x + 6 + column * 11.5, y + 6 + row * 11.5, 9, 9, 1.5);
      const bool found = row == 1 && column == 2;
      rgb(cr, found ? 0xFFD873 : 0xFFFFFF, found ? 1.0 : 0.75);
      cairo_fill(cr);
    }
  }
}

void draw(cairo_t* cr) {
  // The body: the light surface of the theme's forms, lit from above.
  cairo_pattern_t* body = cairo_pattern_create_linear(0, kBand, 0, kHeight);
  cairo_pattern_add_color_stop_rgb(body, 0, 0xF5 / 255.0, 0xF7 / 255.0, 0xFC / 255.0);
  cairo_pattern_add_color_stop_rgb(body, 1, 0xDF / 255.0, 0xE5 / 255.0, 0xF3 / 255.0);
  cairo_set_source(cr, body);
  cairo_paint(cr);
  cairo_pattern_destroy(body);

  // The title band, in the theme's accent blues.
  cairo_pattern_t* band = cairo_pattern_create_linear(0, 0, 0, kBand);
  cairo_pattern_add_color_stop_rgb(band, 0, 0x3D / 255.0, 0x9E / 255.0, 0xFF / 255.0);
  cairo_pattern_add_color_stop_rgb(band, 1, 0x1C / 255.0, 0x6F / 255.0, 0xD6 / 255.0);
  cairo_rectangle(cr, 0, 0, kWidth, kBand);
  cairo_set_source(cr, band);
  cairo_fill(cr);
  cairo_pattern_destroy(band);
  cairo_rectangle(cr, 0, kBand - 1, kWidth, 1);
  rgb(cr, 0x1A63BD);
  cairo_fill(cr);

  mark(cr, 20, 15);
  text(cr, "Zorbex rules editor", "DejaVu Sans Bold 15px", 78, 16, 0xFFFFFF);
  text(cr, "version 2.0 (64 bit)  \xc2\xb7  file-type definitions for raw-scan recovery",
       "DejaVu Sans 11px", 78, 40, 0xDCEBFF);

  // The close mark.
  roundedRect(cr, kCloseX + 0.5, kCloseY + 0.5, kCloseSide - 1, kCloseSide - 1, 3);
  rgb(cr, 0xFFFFFF, 0.22);
  cairo_fill_preserve(cr);
  rgb(cr, 0xFFFFFF, 0.55);
  cairo_set_line_width(cr, 1);
  cairo_stroke(cr);
  const double inset = 5;
  cairo_move_to(cr, kCloseX + inset, kCloseY + inset);
  cairo_line_to(cr, kCloseX + kCloseSide - inset, kCloseY + kCloseSide - inset);
  cairo_move_to(cr, kCloseX + kCloseSide - inset, kCloseY + inset);
  cairo_line_to(cr, kCloseX + inset, kCloseY + kCloseSide - inset);
  rgb(cr, 0xFFFFFF);
  cairo_set_line_width(cr, 1.6);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  cairo_stroke(cr);

  // The frame around the whole popup.
  cairo_rectangle(cr, 0.5, 0.5, kWidth - 1, kHeight - 1);
  rgb(cr, 0x8596CA);
  cairo_set_line_width(cr, 1);
  cairo_stroke(cr);
}

// Width, height, then the deflated pixels from the bottom row up.
std::vector<unsigned char> resource(cairo_surface_t* surface) {
  std::vector<unsigned char> out;
  for (const int side : {kWidth, kHeight})
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<unsigned char>(side >> 8 * i));
  const unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  std::vector<unsigned char> raw;
  raw.reserve(static_cast<size_t>(kWidth) * kHeight * 4);
  for (int y = kHeight - 1; y >= 0; --y) {
    const auto* row =
        reinterpret_cast<const std::uint32_t*>(data + static_cast<size_t>(y) * stride);
    // The banner is opaque, so cairo's premultiplied pixels are the straight ones.
    for (int x = 0; x < kWidth; ++x)
      for (int i = 0; i < 4; ++i) raw.push_back(static_cast<unsigned char>(row[x] >> 8 * i));
  }
  uLongf packed = compressBound(raw.size());
  std::vector<unsigned char> stream(packed);
  if (compress2(stream.data(), &packed, raw.data(), raw.size(), 9) != Z_OK) return {};
  out.insert(out.end(), stream.begin(), stream.begin() + static_cast<long>(packed));
  return out;
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: bannerc OUTPUT.cpp [PREVIEW.png]\n");
    return 2;
  }
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, kHeight);
  cairo_t* cr = cairo_create(surface);
  draw(cr);
  cairo_destroy(cr);
  cairo_surface_flush(surface);
  // RGB24 leaves the alpha byte undefined: every pixel is opaque.
  unsigned char* data = cairo_image_surface_get_data(surface);
  const int stride = cairo_image_surface_get_stride(surface);
  for (int y = 0; y < kHeight; ++y) {
    auto* row = reinterpret_cast<std::uint32_t*>(data + static_cast<size_t>(y) * stride);
    for (int x = 0; x < kWidth; ++x) row[x] |= 0xFF000000u;
  }
  cairo_surface_mark_dirty(surface);

  const std::vector<unsigned char> bytes = resource(surface);
  bool ok = !bytes.empty();
  if (ok) {
    std::ofstream out(argv[1]);
    out << "// Generated by bannerc: the About banner as a built-in picture resource.\n"
        << "extern const unsigned char kAboutBanner[];\nextern const unsigned kAboutBannerSize;\n"
        << "const unsigned char kAboutBanner[] = {";
    for (size_t i = 0; i < bytes.size(); ++i)
      out << (i % 20 ? " " : "\n    ") << static_cast<unsigned>(bytes[i]) << ",";
    out << "};\nconst unsigned kAboutBannerSize = " << bytes.size() << ";\n";
    ok = static_cast<bool>(out);
  }
  if (ok && argc == 3) ok = cairo_surface_write_to_png(surface, argv[2]) == CAIRO_STATUS_SUCCESS;
  cairo_surface_destroy(surface);
  if (!ok) std::fprintf(stderr, "bannerc: cannot write the banner\n");
  return ok ? 0 : 1;
}
