// The built-in theme's artwork, as the program stores and decodes it.
#include <gtest/gtest.h>

#include "ciom/theme.h"
#include "ciom/themeimages.h"

namespace {

bool opaque(unsigned pixel) {
  return pixel >> 24 == 0xFF;
}

TEST(ThemeArt, EveryElementDecodesToItsPictureOrColour) {
  const cCITheme theme(&cCITheme::builtIn());
  for (int elem = 0; elem < cCITheme::kImages; ++elem) {
    SCOPED_TRACE(elem);
    sSize size{};
    const unsigned* pixels = theme.getImage(elem, size);
    ASSERT_NE(pixels, nullptr);
    ASSERT_GT(size.width, 0);
    ASSERT_GT(size.height, 0);
    const cPicture* picture = theme.getPict(elem);
    if (size.width == 1 && size.height == 1) {
      EXPECT_EQ(picture, nullptr);
      EXPECT_TRUE(opaque(*pixels)); // a colour
      continue;
    }
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->width(), size.width);
    EXPECT_EQ(picture->height(), size.height);
    bool drawn = false;
    for (int i = 0; i < size.width * size.height; ++i) drawn |= pixels[i] >> 24 != 0;
    EXPECT_TRUE(drawn) << "an element with no visible pixel";
  }
  sSize size{};
  EXPECT_EQ(theme.getImage(cCITheme::kImages, size), nullptr);
}

TEST(ThemeArt, TheIconsAndExpandersFitWhereWidgetsDrawThem) {
  const cCITheme theme(&cCITheme::builtIn());
  // The message box shows its icon in a 33 × 29 field.
  for (int icon = tiIconInfo; icon <= tiIconError; ++icon) {
    const cPicture* p = theme.getPict(icon);
    ASSERT_NE(p, nullptr);
    EXPECT_LE(p->width(), 33);
    EXPECT_LE(p->height(), 29);
    EXPECT_TRUE(opaque(p->pixel(p->width() / 2, p->height() * 3 / 4))) << icon;
    EXPECT_EQ(p->pixel(0, 0) >> 24, 0u) << icon; // drawn on a transparent ground
  }
  // The expander's signs: the expanded one is the collapsed one without the plus's bar.
  const cPicture* plus = theme.getPict(tiTreeCollapsed);
  const cPicture* minus = theme.getPict(tiTreeExpanded);
  ASSERT_TRUE(plus && minus);
  EXPECT_EQ(plus->pixel(7, 6), 0xFF404040u);
  EXPECT_NE(minus->pixel(7, 6), plus->pixel(7, 6));
  EXPECT_EQ(plus->pixel(5, 8), minus->pixel(5, 8));
}

} // namespace

TEST(ThemeArt, SingleColourElementsReadAsColours) {
  const cCITheme& theme = cCITheme::theme();
  EXPECT_EQ(theme.elementColour(tiEditEdge), 0xDCB6A9u); // #A9B6DC, blue in the high byte
  EXPECT_EQ(theme.elementColour(tiEditFocusEdge), 0xFF9933u);
  EXPECT_EQ(theme.elementColour(tiButton), 0u); // a picture, not a colour
  EXPECT_EQ(theme.elementColour(cCITheme::kImages), 0u);
}
