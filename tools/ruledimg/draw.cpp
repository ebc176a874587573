#include "draw.h"

#include <pango/pangocairo.h>

#include <utility>

void rgb(cairo_t* cr, unsigned hex, double alpha) {
  cairo_set_source_rgba(cr, ((hex >> 16) & 0xFF) / 255.0, ((hex >> 8) & 0xFF) / 255.0,
                        (hex & 0xFF) / 255.0, alpha);
}

void roundedRect(cairo_t* cr, double x, double y, double w, double h, double r) {
  cairo_new_sub_path(cr);
  cairo_arc(cr, x + w - r, y + r, r, -kPi / 2, 0);
  cairo_arc(cr, x + w - r, y + h - r, r, 0, kPi / 2);
  cairo_arc(cr, x + r, y + h - r, r, kPi / 2, kPi);
  cairo_arc(cr, x + r, y + r, r, kPi, 3 * kPi / 2);
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

void vgradient(cairo_t* cr, double y0, double y1, unsigned top, unsigned bottom) {
  cairo_pattern_t* pattern = cairo_pattern_create_linear(0, y0, 0, y1);
  const std::pair<double, unsigned> stops[] = {{0.0, top}, {1.0, bottom}};
  for (const auto& [at, hex] : stops)
    cairo_pattern_add_color_stop_rgb(pattern, at, ((hex >> 16) & 0xFF) / 255.0,
                                     ((hex >> 8) & 0xFF) / 255.0, (hex & 0xFF) / 255.0);
  cairo_set_source(cr, pattern);
  cairo_pattern_destroy(pattern);
}

void mark(cairo_t* cr, double x, double y, double side, bool onBand) {
  const double unit = side / 44;
  roundedRect(cr, x, y, side, side, 6 * unit);
  if (onBand) {
    rgb(cr, 0xFFFFFF, 0.18);
  } else {
    vgradient(cr, y, y + side, 0x3D9EFF, 0x1C6FD6);
  }
  cairo_fill(cr);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      roundedRect(cr, x + (6 + column * 11.5) * unit, y + (6 + row * 11.5) * unit, 9 * unit,
                  9 * unit, 1.5 * unit);
      const bool found = row == 1 && column == 2;
      rgb(cr, found ? 0xFFD873 : 0xFFFFFF, found ? 1.0 : 0.75);
      cairo_fill(cr);
    }
  }
}

namespace {

constexpr int kBand = 74;
constexpr double kCloseX = 451, kCloseY = 6, kCloseSide = 17;

void closeMark(cairo_t* cr) {
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
}

} // namespace

void drawBanner(cairo_t* cr) {
  // The body: the light surface of the theme's forms, lit from above.
  vgradient(cr, kBand, kBannerHeight, 0xF5F7FC, 0xDFE5F3);
  cairo_paint(cr);

  // The title band, in the theme's accent blues.
  cairo_rectangle(cr, 0, 0, kBannerWidth, kBand);
  vgradient(cr, 0, kBand, 0x3D9EFF, 0x1C6FD6);
  cairo_fill(cr);
  cairo_rectangle(cr, 0, kBand - 1, kBannerWidth, 1);
  rgb(cr, 0x1A63BD);
  cairo_fill(cr);

  mark(cr, 20, 15, 44, true);
  text(cr, "Zorbex rules editor", "DejaVu Sans Bold 15px", 78, 16, 0xFFFFFF);
  text(cr, "version 2.0 (64 bit)  \xc2\xb7  file-type definitions for raw-scan recovery",
       "DejaVu Sans 11px", 78, 40, 0xDCEBFF);
  closeMark(cr);

  // The frame around the whole popup.
  cairo_rectangle(cr, 0.5, 0.5, kBannerWidth - 1, kBannerHeight - 1);
  rgb(cr, 0x8596CA);
  cairo_set_line_width(cr, 1);
  cairo_stroke(cr);
}
