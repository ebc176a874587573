// The main form's pictures: the tool bar's (24 × 24), the tree's (18 × 18 root, 16 × 16
// items) and the rule bar's (16 × 16 definition, 14 × 14 commands), in the theme's
// colours: accent blues, a yellow folder, green for yes and start, red for no and end.
#include <cmath>

#include "draw.h"

namespace {

constexpr unsigned kInk = 0x3E5F9E, kPaper = 0xFFFFFF, kPaperShade = 0xE4EBF7;
constexpr unsigned kGreen = 0x2E9E4F, kRed = 0xD13B3B;
constexpr unsigned kFolder = 0xF4C65A, kFolderDark = 0xC9952A, kFolderBack = 0xE3AE3E;

void stroke(cairo_t* cr, unsigned colour, double width) {
  rgb(cr, colour);
  cairo_set_line_width(cr, width);
  cairo_stroke(cr);
}

// A sheet of paper with a folded corner in w × h at x, y (pixel-aligned outline).
void page(cairo_t* cr, double x, double y, double w, double h, unsigned outline) {
  const double fold = std::round(w * 0.35);
  cairo_move_to(cr, x + 0.5, y + 0.5);
  cairo_line_to(cr, x + w - fold - 0.5, y + 0.5);
  cairo_line_to(cr, x + w - 0.5, y + fold + 0.5);
  cairo_line_to(cr, x + w - 0.5, y + h - 0.5);
  cairo_line_to(cr, x + 0.5, y + h - 0.5);
  cairo_close_path(cr);
  vgradient(cr, y, y + h, kPaper, kPaperShade);
  cairo_fill_preserve(cr);
  stroke(cr, outline, 1);
  cairo_move_to(cr, x + w - fold - 0.5, y + 0.5);
  cairo_line_to(cr, x + w - fold - 0.5, y + fold + 0.5);
  cairo_line_to(cr, x + w - 0.5, y + fold + 0.5);
  stroke(cr, outline, 1);
}

// Lines of text on a page.
void lines(cairo_t* cr, double x, double y, double w, int count, double step, unsigned colour) {
  for (int i = 0; i < count; ++i) {
    cairo_rectangle(cr, x, y + i * step, w, 1);
    rgb(cr, colour);
    cairo_fill(cr);
  }
}

// A disc with a plus, for "new".
void plusBadge(cairo_t* cr, double cx, double cy, double r) {
  cairo_arc(cr, cx, cy, r, 0, 2 * kPi);
  rgb(cr, kGreen);
  cairo_fill_preserve(cr);
  stroke(cr, 0x1F7A3A, 1);
  const double arm = r * 0.55;
  cairo_move_to(cr, cx - arm, cy);
  cairo_line_to(cr, cx + arm, cy);
  cairo_move_to(cr, cx, cy - arm);
  cairo_line_to(cr, cx, cy + arm);
  stroke(cr, kPaper, r > 4 ? 2 : 1.5);
}

// A folder: back with a tab, then the front.
void folder(cairo_t* cr, double x, double y, double w, double h) {
  const double tab = std::round(w * 0.4);
  cairo_move_to(cr, x + 0.5, y + h - 0.5);
  cairo_line_to(cr, x + 0.5, y + 0.5);
  cairo_line_to(cr, x + tab, y + 0.5);
  cairo_line_to(cr, x + tab + 2, y + 2.5);
  cairo_line_to(cr, x + w - 0.5, y + 2.5);
  cairo_line_to(cr, x + w - 0.5, y + h - 0.5);
  cairo_close_path(cr);
  rgb(cr, kFolderBack);
  cairo_fill_preserve(cr);
  stroke(cr, kFolderDark, 1);
  const double front = std::round(h * 0.3);
  cairo_rectangle(cr, x + 0.5, y + front + 0.5, w - 1, h - front - 1);
  vgradient(cr, y + front, y + h, 0xFFDC82, kFolder);
  cairo_fill_preserve(cr);
  stroke(cr, kFolderDark, 1);
}

// --- the tool bar, 24 × 24

void toolNew(cairo_t* cr) {
  page(cr, 4, 2, 15, 19, kInk);
  lines(cr, 7, 9, 8, 3, 3, 0xB7C5E0);
  plusBadge(cr, 17.5, 17.5, 5.5);
}

void toolOpen(cairo_t* cr) {
  // The back of the folder, a page sticking out, and the front tilted open.
  folder(cr, 2, 4, 19, 17);
  page(cr, 6, 6, 12, 10, 0x8596CA);
  cairo_move_to(cr, 2.5, 20.5);
  cairo_line_to(cr, 6.5, 11.5);
  cairo_line_to(cr, 23.5, 11.5);
  cairo_line_to(cr, 19.5, 20.5);
  cairo_close_path(cr);
  vgradient(cr, 11, 21, 0xFFE49A, kFolder);
  cairo_fill_preserve(cr);
  stroke(cr, kFolderDark, 1);
}

void toolSave(cairo_t* cr) {
  // A diskette: blue body, white label, grey shutter.
  roundedRect(cr, 3.5, 3.5, 17, 17, 2);
  vgradient(cr, 3, 21, 0x4C8FE8, 0x245FB8);
  cairo_fill_preserve(cr);
  stroke(cr, 0x1D4E99, 1);
  cairo_rectangle(cr, 7, 4, 10, 7);
  rgb(cr, kPaper);
  cairo_fill(cr);
  lines(cr, 8, 6, 8, 2, 2, 0xB7C5E0);
  cairo_rectangle(cr, 8, 14, 8, 6);
  rgb(cr, 0xD5DBE6);
  cairo_fill(cr);
  cairo_rectangle(cr, 13, 15, 2, 4);
  rgb(cr, 0x5A6780);
  cairo_fill(cr);
}

void toolAbout(cairo_t* cr) {
  cairo_arc(cr, 12, 12, 9.5, 0, 2 * kPi);
  vgradient(cr, 2, 22, 0x3D9EFF, 0x1C6FD6);
  cairo_fill_preserve(cr);
  stroke(cr, 0x1A63BD, 1);
  cairo_arc(cr, 12, 7.5, 1.6, 0, 2 * kPi);
  rgb(cr, kPaper);
  cairo_fill(cr);
  cairo_rectangle(cr, 10.5, 10.5, 3, 8);
  cairo_fill(cr);
}

void toolTest(cairo_t* cr) {
  // Samples looked at through a lens: a page, and a magnifying glass over it.
  page(cr, 3, 2, 14, 18, kInk);
  lines(cr, 6, 8, 7, 3, 3, 0xB7C5E0);
  cairo_move_to(cr, 18, 17);
  cairo_line_to(cr, 22, 21);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  stroke(cr, 0x5A4632, 3);
  cairo_arc(cr, 14.5, 13.5, 5, 0, 2 * kPi);
  rgb(cr, 0xDDEEFF, 0.85);
  cairo_fill_preserve(cr);
  stroke(cr, 0x3D4B66, 1.6);
}

// --- the tree

void treeRoot(cairo_t* cr) {
  mark(cr, 0, 0, 18, false);
}

void treeContainer(cairo_t* cr) {
  folder(cr, 1, 2, 14, 12);
}

void treePassive(cairo_t* cr) {
  // A definition that only counts when nothing else hits: a pale page.
  page(cr, 2, 1, 12, 14, 0x9AA6BF);
  lines(cr, 4, 7, 7, 3, 2, 0xCBD3E3);
}

void treeActive(cairo_t* cr) {
  // A definition that always counts: a page with a blue band.
  page(cr, 2, 1, 12, 14, kInk);
  cairo_rectangle(cr, 3, 6, 10, 3);
  rgb(cr, 0x2F7BE0);
  cairo_fill(cr);
  lines(cr, 4, 11, 7, 2, 2, 0xB7C5E0);
}

// --- the rule bar

void ruleType(cairo_t* cr) {
  treeActive(cr);
  plusBadge(cr, 11.5, 11.5, 4.2);
}

void ruleOk(cairo_t* cr) {
  cairo_move_to(cr, 2, 7.5);
  cairo_line_to(cr, 5.5, 11);
  cairo_line_to(cr, 12, 3);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
  stroke(cr, kGreen, 2.4);
}

void ruleCancel(cairo_t* cr) {
  cairo_move_to(cr, 3.5, 3.5);
  cairo_line_to(cr, 10.5, 10.5);
  cairo_move_to(cr, 10.5, 3.5);
  cairo_line_to(cr, 3.5, 10.5);
  cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
  stroke(cr, kRed, 2.4);
}

// Where a file starts: a green arrow onto a bar.
void ruleStart(cairo_t* cr) {
  cairo_rectangle(cr, 1, 2, 2, 10);
  rgb(cr, kInk);
  cairo_fill(cr);
  cairo_move_to(cr, 5, 2);
  cairo_line_to(cr, 13, 7);
  cairo_line_to(cr, 5, 12);
  cairo_close_path(cr);
  vgradient(cr, 2, 12, 0x4CC46C, kGreen);
  cairo_fill_preserve(cr);
  cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
  stroke(cr, 0x1F7A3A, 1);
}

// Where a file ends: a red block against a bar.
void ruleEnd(cairo_t* cr) {
  roundedRect(cr, 1.5, 2.5, 8, 9, 1.5);
  vgradient(cr, 2, 12, 0xEB6A6A, kRed);
  cairo_fill_preserve(cr);
  stroke(cr, 0xA32A2A, 1);
  cairo_rectangle(cr, 11, 2, 2, 10);
  rgb(cr, kInk);
  cairo_fill(cr);
}

} // namespace

const sIcon kIcons[] = {
    {"kToolNew", 24, toolNew},
    {"kToolOpen", 24, toolOpen},
    {"kToolSave", 24, toolSave},
    {"kToolAbout", 24, toolAbout},
    {"kToolTest", 24, toolTest},
    {"kTreeRoot", 18, treeRoot},
    {"kTreeContainer", 16, treeContainer},
    {"kTreePassive", 16, treePassive},
    {"kTreeActive", 16, treeActive},
    {"kRuleType", 16, ruleType},
    {"kRuleOk", 14, ruleOk},
    {"kRuleCancel", 14, ruleCancel},
    {"kRuleStart", 14, ruleStart},
    {"kRuleEnd", 14, ruleEnd},
};
const int kIconCount = static_cast<int>(sizeof kIcons / sizeof kIcons[0]);
