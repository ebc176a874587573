// The built-in theme's artwork, as the program stores and decodes it.
#include <gtest/gtest.h>

#include <map>
#include <utility>

#include "ciom/theme.h"
#include "ciom/themeimages.h"

namespace {

sSize sizeOf(const cCITheme& theme, int elem) {
  sSize size{};
  theme.getImage(elem, size);
  return size;
}

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

// The common sizes the widgets are drawn from: 18 × 18 (24 elements), 10 × 10, 1 × 14 and
// 14 × 1 (10 each), 20 × 16 and 14 × 14 (8 each); every other size is rarer.
TEST(ThemeArt, SizesFollowTheWidgetsPieces) {
  const cCITheme theme(&cCITheme::builtIn());
  std::map<std::pair<int, int>, int> counts;
  for (int elem = 0; elem < cCITheme::kImages; ++elem) {
    const sSize size = sizeOf(theme, elem);
    ++counts[{size.width, size.height}];
  }
  const std::map<std::pair<int, int>, int> common = {{{18, 18}, 24}, {{10, 10}, 10}, {{1, 14}, 10},
                                                     {{14, 1}, 10},  {{20, 16}, 8},  {{14, 14}, 8}};
  for (const auto& [size, count] : counts) {
    SCOPED_TRACE(std::to_string(size.first) + " x " + std::to_string(size.second));
    const auto expected = common.find(size);
    if (expected != common.end())
      EXPECT_EQ(count, expected->second);
    else
      EXPECT_LT(count, 8);
  }
}

TEST(ThemeArt, NamedPicturesSitAtTheIndicesWidgetsUse) {
  EXPECT_EQ(tiIconInfo, 10);
  EXPECT_EQ(tiIconError, 13);
  EXPECT_EQ(tiActionDots, 29);
  EXPECT_EQ(tiFoldCollapsed, 66);
  EXPECT_EQ(tiFoldOpen, 67);
  EXPECT_EQ(tiTreeCollapsed, 68);
  EXPECT_EQ(tiTreeExpanded, 69);
  EXPECT_EQ(tiTreeLeaf, 70);
  EXPECT_EQ(tiTreeLastLeaf, 71);
  EXPECT_EQ(tiOk, 77);
  EXPECT_EQ(tiCancel, 78);

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

TEST(ThemeArt, RowsComeOutTopFirst) {
  // The stored pixels run bottom-up; the form header's gradient must still start light at
  // the top and end in its dark line.
  const cCITheme theme(&cCITheme::builtIn());
  const cPicture* header = theme.getPict(tiFormHeader);
  ASSERT_NE(header, nullptr);
  ASSERT_EQ(header->height(), 30);
  EXPECT_EQ(header->pixel(0, 0), 0xFFF7F9FDu);
  EXPECT_EQ(header->pixel(0, 28), 0xFFDFE5F3u);
  EXPECT_EQ(header->pixel(0, 29), 0xFFC9D2E8u);
  // A 1 × 1 element keeps the colour as a pixel value.
  sSize size{};
  EXPECT_EQ(*theme.getImage(tiEditFocusEdge, size), 0xFF3399FFu);
}

TEST(ThemeArt, ScrollArrowsAreMirrorImages) {
  const cCITheme theme(&cCITheme::builtIn());
  const cPicture* up = theme.getPict(tiScrollUp);
  const cPicture* down = theme.getPict(tiScrollDown);
  ASSERT_TRUE(up && down);
  // The button's gradient runs the same way in both, a few levels apart from top to
  // bottom; the arrow, far darker, must sit in mirrored places.
  const auto blue = [](unsigned p) { return static_cast<int>(p & 0xFF); };
  for (int y = 0; y < 14; ++y) {
    for (int x = 0; x < 14; ++x)
      EXPECT_NEAR(blue(up->pixel(x, y)), blue(down->pixel(x, 13 - y)), 0x14) << x << "," << y;
  }
}

} // namespace

TEST(ThemeArt, SingleColourElementsReadAsColours) {
  const cCITheme& theme = cCITheme::theme();
  EXPECT_EQ(theme.elementColour(tiEditEdge), 0xDCB6A9u); // #A9B6DC, blue in the high byte
  EXPECT_EQ(theme.elementColour(tiEditFocusEdge), 0xFF9933u);
  EXPECT_EQ(theme.elementColour(tiButton), 0u); // a picture, not a colour
  EXPECT_EQ(theme.elementColour(cCITheme::kImages), 0u);
}
