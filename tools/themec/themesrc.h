// The theme artwork source: named colours, reusable parts and the image elements, each
// drawn with a few antialiased shapes.
//
//   // a comment, to the end of the line
//   colour NAME VALUE            VALUE: #RRGGBB, #RRGGBBAA or an earlier NAME
//   part NAME ... end            drawing commands; $1 to $9 stand for draw's arguments
//   element INDEX NAME W H ... end
//
// Elements are numbered from 0 in the order they stand; NAME is a C identifier (it names
// the element in the generated enumeration) and W and H lie in 1 to 256.
//
// Drawing commands (numbers may have fractions; P is a paint: a colour, or v:A:B or h:A:B
// for a gradient from A to B down or across the shape's bounding box):
//   rect X Y W H P               circle CX CY R P
//   rrect X Y W H R P            ring CX CY R T P          (band of thickness T inside R)
//   frame X Y W H R T P          (band of thickness T inside a rounded rectangle)
//   poly P X Y X Y X Y ...       (filled, even-odd)
//   line T P X Y X Y ...         (stroked with thickness T, round ends and joins)
//   arc CX CY R A0 A1 T P        (clockwise from A0 to A1 degrees, 0 = right)
//   move DX DY                   (shifts what follows in this element or part)
//   draw PART ARGS...
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct sThemeElement {
  int index = 0;
  std::string name;
  int width = 0, height = 0;
  std::vector<std::uint32_t> pixels; // 0xAARRGGBB, straight alpha, rows from the top
  std::vector<std::uint32_t> detail; // the same drawn kThemeDetail times as dense
};

// How much denser the detail of every element is drawn, for high-resolution screens.
constexpr int kThemeDetail = 2;

// Reads a whole source. On failure returns false with "FILE:LINE: what is wrong" in
// `error`.
bool readThemeSource(const std::string& text, const std::string& fileName,
                     std::vector<sThemeElement>& elements, std::string& error);
