// The theme: every colour, size and picture piece the widgets draw with.
//
// Three tables, filled from a static definition: 25 dimensions (value, minimum, maximum),
// 62 colours (0x00BBGGRR) and 157 image elements (a picture, or a single colour for a
// 1 × 1 element). The process-wide theme is made on first use from the built-in
// definition, whose image elements are drawn at build time from data/theme/theme.txt;
// "ciom/themeimages.h" names them. Used from the GUI thread only.
#pragma once

#include <array>
#include <memory>

#include "picture.h"

class cCanvas;

// A built-in image element: its size, and either one colour (1 × 1, a 0xAARRGGBB pixel) or
// a picture resource (see cPicture::create(resource, size)).
struct sStaticCIThemeImage {
  int width = 0, height = 0;
  unsigned colour = 0;
  const unsigned char* resource = nullptr;
  unsigned size = 0;
  const unsigned char* detail = nullptr; // the picture's detail (cPicture::createDetail)
  unsigned detailSize = 0;
};

struct cStaticCIThemeDef {
  const int* dimensions = nullptr;             // kDimensions rows of value, minimum, maximum
  const unsigned* colours = nullptr;           // kColours
  const sStaticCIThemeImage* images = nullptr; // kImages
};

class cCITheme {
public:
  static constexpr int kDimensions = 25;
  static constexpr int kColours = 62;
  static constexpr int kImages = 157;

  struct sImageDef {
    int width = 0, height = 0;
    unsigned colour = 0;
    std::unique_ptr<cPicture> picture;
  };

  // Null: every table zeroed, every image element 0 × 0 without a picture.
  explicit cCITheme(const cStaticCIThemeDef* def);

  static cCITheme& theme();
  static void setTheme(const cStaticCIThemeDef* def);
  static const cStaticCIThemeDef& builtIn();

  // 0 for a dimension above 24 or a type outside 0 to 3. Type 3 reads one int past the
  // row, which is the value of the following dimension (0 after the last).
  int getDimension(int dim, int type) const;
  void setDimension(int dim, int value);
  unsigned getColor(int colour) const;
  void setColor(int colour, unsigned value);
  // The element's pixels (or, for a 1 × 1 element, its colour) and size; null for an
  // element above 156.
  const unsigned* getImage(int elem, sSize& size) const;
  cPicture* getPict(int elem) const;
  // Draws the element's picture stretched (nearest pixel) over the rectangle.
  void drawStretched(cCanvas* canvas, int elem, const sRect& rect) const;
  // A 1 × 1 element's colour in the 0x00BBGGRR form of the other colours; 0 for an
  // element that is not a single colour.
  unsigned elementColour(int elem) const;
  bool setImage(int elem, const unsigned* pixels, int w, int h, bool bottomUp);

private:
  std::array<int, kDimensions * 3> myDimensions{};
  std::array<unsigned, kColours> myColours{};
  std::array<sImageDef, kImages> myImages{};
};
