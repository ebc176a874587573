// The theme artwork reader and its rasteriser.
#include <gtest/gtest.h>

#include "raster.h"
#include "themesrc.h"

namespace {

std::vector<sThemeElement> read(const std::string& text) {
  std::vector<sThemeElement> elements;
  std::string error;
  EXPECT_TRUE(readThemeSource(text, "t.txt", elements, error)) << error;
  return elements;
}

std::string problem(const std::string& text) {
  std::vector<sThemeElement> elements;
  std::string error;
  EXPECT_FALSE(readThemeSource(text, "t.txt", elements, error));
  EXPECT_TRUE(elements.empty());
  return error;
}

unsigned alphaOf(std::uint32_t pixel) {
  return pixel >> 24;
}

TEST(ThemeRaster, PixelAlignedShapesAreCrispAndHalvesAreHalf) {
  cRaster r(4, 2);
  const sRgba red{1, 0, 0, 1};
  r.paint(shapes::rect(0, 0, 2, 1), {sPaint::solid, red, red});
  r.paint(shapes::rect(2.5, 1, 1, 1), {sPaint::solid, red, red});
  const std::vector<std::uint32_t> px = r.pixels();
  EXPECT_EQ(px[0], 0xFFFF0000u);
  EXPECT_EQ(px[1], 0xFFFF0000u);
  EXPECT_EQ(px[2], 0u);
  EXPECT_EQ(px[4 + 1], 0u);
  EXPECT_EQ(px[4 + 2], 0x80FF0000u); // half covered
  EXPECT_EQ(px[4 + 3], 0x80FF0000u);
}

TEST(ThemeRaster, GradientsReachBothEndsAndLayersBlend) {
  cRaster r(1, 3);
  r.paint(shapes::rect(0, 0, 1, 3), {sPaint::vertical, {1, 1, 1, 1}, {0, 0, 0, 1}});
  std::vector<std::uint32_t> px = r.pixels();
  EXPECT_EQ(px[0], 0xFFFFFFFFu);
  EXPECT_EQ(px[1], 0xFF808080u);
  EXPECT_EQ(px[2], 0xFF000000u);

  cRaster over(1, 1);
  over.paint(shapes::rect(0, 0, 1, 1), {sPaint::solid, {0, 0, 1, 1}, {}});
  over.paint(shapes::rect(0, 0, 1, 1), {sPaint::solid, {1, 0, 0, 0.5}, {}});
  EXPECT_EQ(over.pixels()[0], 0xFF800080u); // half red over blue

  cRaster glass(1, 1);
  glass.paint(shapes::rect(0, 0, 1, 1), {sPaint::solid, {0, 1, 0, 0.5}, {}});
  glass.paint(shapes::rect(0, 0, 1, 1), {sPaint::solid, {0, 1, 0, 0.5}, {}});
  EXPECT_EQ(glass.pixels()[0], 0xBF00FF00u); // straight colour kept, alpha 1 - 0.5²
}

TEST(ThemeRaster, CurvedShapesCoverAboutTheirArea) {
  const auto coverage = [](const sShape& shape, int side) {
    cRaster r(side, side);
    r.paint(shape, {sPaint::solid, {0, 0, 0, 1}, {}});
    double sum = 0;
    for (std::uint32_t p : r.pixels()) sum += alphaOf(p) / 255.0;
    return sum;
  };
  EXPECT_NEAR(coverage(shapes::circle(10, 10, 8), 20), 3.14159 * 64, 1.5);
  EXPECT_NEAR(coverage(shapes::ring(10, 10, 8, 2), 20), 3.14159 * (64 - 36), 1.5);
  // The diagonal passes through a row of sample points in each of its ten pixels, and a
  // point on the edge counts as outside: up to 4/64 of a pixel each.
  EXPECT_NEAR(coverage(shapes::polygon({{0, 0}, {10, 0}, {0, 10}}), 10), 50, 0.7);
  EXPECT_NEAR(coverage(shapes::frame(0, 0, 10, 10, 0, 1), 10), 36, 0.01);
  // A stroke 2 wide and 8 long with round ends: 16 plus a circle of radius 1.
  EXPECT_NEAR(coverage(shapes::polyline({{3, 5}, {11, 5}}, 2), 14), 16 + 3.14159, 0.5);
  // A half circle arc, 2 wide, on radius 5 (round ends add a circle).
  EXPECT_NEAR(coverage(shapes::arc(8, 8, 5, 0, 180, 2), 16), 3.14159 * 5 * 2 + 3.14159, 1);
  // A rounded rectangle loses the corners' squares less their quarter circles.
  EXPECT_NEAR(coverage(shapes::roundRect(0, 0, 10, 10, 3), 10), 100 - (36 - 3.14159 * 9), 0.5);
}

TEST(ThemeSource, ColoursPartsAndMovesDraw) {
  const auto elements = read(R"(
    colour ink #102030        // named colours
    colour glass #10203080
    part dot                  // $1 colour
      rect 0 0 1 1 $1
    end
    element 0 tiOne 1 1
      rect 0 0 1 1 ink
    end
    element 1 tiTwo 3 2
      draw dot glass
      move 2 1
      draw dot h:#000000:#FFFFFF
    end
  )");
  ASSERT_EQ(elements.size(), 2u);
  EXPECT_EQ(elements[0].name, "tiOne");
  EXPECT_EQ(elements[0].pixels, (std::vector<std::uint32_t>{0xFF102030}));
  ASSERT_EQ(elements[1].width, 3);
  ASSERT_EQ(elements[1].height, 2);
  EXPECT_EQ(elements[1].pixels, (std::vector<std::uint32_t>{0x80102030, 0, 0, 0, 0, 0xFF000000}));
}

TEST(ThemeSource, MistakesNameTheirLine) {
  EXPECT_EQ(problem("element 0 a 2 2\n  blob 1\nend\n"), "t.txt:2: unknown command \"blob\"");
  EXPECT_EQ(problem("element 1 a 2 2\nend\n"), "t.txt:1: element 1 stands where element 0 belongs");
  EXPECT_EQ(problem("element 0 a 2 2\n rect 0 0 1 1 #fff\n"), "t.txt:1: the block has no \"end\"");
  EXPECT_EQ(problem("element 0 a 2 2\nelement 1 b 1 1\nend\n"),
            "t.txt:2: \"element\" inside a block: is an \"end\" missing?");
  EXPECT_EQ(problem("element 0 a 2 2\n rect 0 0 1 1 grey\nend"),
            "t.txt:2: unknown colour \"grey\"");
  EXPECT_EQ(problem("colour a #12345\n"), "t.txt:1: a colour is #RRGGBB or #RRGGBBAA: \"#12345\"");
  EXPECT_EQ(problem("element 0 a 2 2\n rect 0 0 1 x #000000\nend"),
            "t.txt:2: not a number within ±4096: \"x\"");
  EXPECT_EQ(problem("element 0 a 2 2\n rect 0 0 1 nan #000000\nend"),
            "t.txt:2: not a number within ±4096: \"nan\"");
  EXPECT_EQ(problem("element 0 a 2 2\n rect 0 0 1 #000000\nend"),
            "t.txt:2: \"rect\" takes 5 values, not 4");
  EXPECT_EQ(problem("element 0 a 257 1\nend"),
            "t.txt:1: expected a whole number from 1 to 256: \"257\"");
  EXPECT_EQ(problem("element 0 a 0 1\nend"),
            "t.txt:1: expected a whole number from 1 to 256: \"0\"");
  EXPECT_EQ(problem("element 0 2a 1 1\nend"), "t.txt:1: expected \"element INDEX NAME W H\"");
  EXPECT_EQ(problem("element 0 a 1 1\nend\nelement 1 a 1 1\nend"),
            "t.txt:3: element name \"a\" is used twice");
  EXPECT_EQ(problem("element 0 a 1 1\n line 1 #000000 0 0 1\nend"),
            "t.txt:2: points come in X Y pairs");
  EXPECT_EQ(problem("element 0 a 1 1\n poly #000000 0 0 1 1\nend"),
            "t.txt:2: \"poly\" needs a paint and at least three points");
  EXPECT_EQ(problem("element 0 a 1 1\n rect 0 0 1 1 v:#000000\nend"),
            "t.txt:2: a gradient is v:FROM:TO or h:FROM:TO: \"v:#000000\"");
  EXPECT_EQ(problem("end\n"), "t.txt:1: expected \"colour\", \"part\" or \"element\", not \"end\"");
}

TEST(ThemeSource, PartsFailCleanly) {
  EXPECT_EQ(problem("part p\n rect 0 0 1 1 $2\nend\nelement 0 a 1 1\n draw p #000000\nend"),
            "t.txt:2: the part has no argument $2");
  EXPECT_EQ(problem("element 0 a 1 1\n draw q\nend"), "t.txt:2: unknown part \"q\"");
  // A part that draws itself stops at the depth limit instead of running forever.
  EXPECT_EQ(problem("part p\n draw p\nend\nelement 0 a 1 1\n draw p\nend"),
            "t.txt:2: parts are drawn more than 16 deep");
  EXPECT_EQ(problem("part p\nend\npart p\nend"), "t.txt:3: part \"p\" is defined twice");
}

TEST(ThemeSource, NothingButCommentsIsNoElements) {
  EXPECT_TRUE(read("// only a comment\n\n   \n").empty());
}

} // namespace
