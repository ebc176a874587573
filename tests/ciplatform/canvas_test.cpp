// The Cairo canvas drawn on image surfaces: colours, frames, lines, the exclusion list,
// sub-canvases, pictures, offscreen canvases and snapshots, checked pixel by pixel.
#include <gtest/gtest.h>

#include <memory>

#include "ciplatform/cairooffscreen.h"
#include "surface.h"

namespace {

constexpr unsigned kGrey = 0x808080; // the surface before drawing, as 0x00RRGGBB

TEST(CairoCanvas, ColoursAreBlueGreenRed) {
  cTestSurface s(4, 1);
  cCairoCanvas canvas(s.get(), 4, 1);
  const unsigned bgr[] = {0x0000FF, 0x00FF00, 0xFF0000, 0x123456};
  for (int i = 0; i < 4; ++i) {
    const sRect r = {i, 0, 1, 1};
    ASSERT_TRUE(canvas.drawRect(&r, bgr[i], bgr[i]));
  }
  EXPECT_EQ(s.at(0, 0), 0xFF0000u); // 0x0000FF is pure red
  EXPECT_EQ(s.at(1, 0), 0x00FF00u);
  EXPECT_EQ(s.at(2, 0), 0x0000FFu);
  EXPECT_EQ(s.at(3, 0), 0x563412u);
}

TEST(CairoCanvas, RectFillsOrFramesExactly) {
  cTestSurface s(20, 20);
  cCairoCanvas canvas(s.get(), 20, 20);
  const sRect solid = {1, 1, 5, 4};
  ASSERT_TRUE(canvas.drawRect(&solid, 0xFFFFFF, 0xFFFFFF));
  EXPECT_EQ(s.countOther(1, 1, 6, 5, 0xFFFFFF), 0);
  EXPECT_EQ(s.countOther(0, 0, 20, 1, kGrey), 0);
  EXPECT_EQ(s.countOther(6, 0, 7, 20, kGrey), 0);

  // A one-pixel frame around a filled inside; nothing outside the rectangle changes.
  const sRect framed = {8, 8, 6, 5};
  ASSERT_TRUE(canvas.drawRect(&framed, 0xFFFFFF, 0x000000));
  for (int y = 8; y < 13; ++y) {
    for (int x = 8; x < 14; ++x) {
      const bool edge = x == 8 || x == 13 || y == 8 || y == 12;
      EXPECT_EQ(s.at(x, y), edge ? 0u : 0xFFFFFFu) << x << "," << y;
    }
  }
  EXPECT_EQ(s.countOther(7, 7, 15, 8, kGrey), 0);
  EXPECT_EQ(s.countOther(7, 13, 15, 14, kGrey), 0);
  EXPECT_EQ(s.countOther(14, 7, 15, 14, kGrey), 0);

  // With line width 2 the frame is two pixels deep, still inside the rectangle.
  cTestSurface t(10, 10);
  cCairoCanvas wide(t.get(), 10, 10);
  wide.setLineMode(0, 2);
  const sRect r = {1, 1, 8, 8};
  ASSERT_TRUE(wide.drawRect(&r, 0xFFFFFF, 0x0000FF));
  EXPECT_EQ(t.at(1, 5), 0xFF0000u);
  EXPECT_EQ(t.at(2, 5), 0xFF0000u);
  EXPECT_EQ(t.at(3, 5), 0xFFFFFFu);
  EXPECT_EQ(t.at(8, 5), 0xFF0000u);
  EXPECT_EQ(t.at(9, 5), kGrey);
  EXPECT_EQ(t.at(0, 5), kGrey);

  const sRect empty = {3, 3, 0, 4};
  EXPECT_FALSE(canvas.drawRect(&empty, 0, 0));
  EXPECT_FALSE(canvas.drawRect(nullptr, 0, 0));
}

TEST(CairoCanvas, LinesCoverBothEnds) {
  cTestSurface s(12, 6);
  cCairoCanvas canvas(s.get(), 12, 6);
  canvas.setLineMode(0x0000FF, 1);
  const sPoint a = {2, 3}, b = {9, 3};
  ASSERT_TRUE(canvas.drawLine(&a, &b));
  EXPECT_EQ(s.countOther(2, 3, 10, 4, 0xFF0000), 0);
  EXPECT_EQ(s.at(1, 3), kGrey);
  EXPECT_EQ(s.at(10, 3), kGrey);
  EXPECT_EQ(s.countOther(0, 2, 12, 3, kGrey), 0);
  EXPECT_EQ(s.countOther(0, 4, 12, 5, kGrey), 0);
}

TEST(CairoCanvas, ExclusionsApplyFromSelect) {
  cTestSurface s(20, 10);
  cCairoCanvas canvas(s.get(), 20, 10);
  const sRect all = {0, 0, 20, 10};
  const sRect left = {0, 0, 6, 10}, middle = {4, 2, 6, 4}, right = {15, 5, 5, 5};
  ASSERT_TRUE(canvas.clip(&left));
  ASSERT_TRUE(canvas.clip(&middle)); // overlaps the first: the overlap stays excluded
  ASSERT_TRUE(canvas.clip(&right));

  // Until select() the list is only recorded.
  canvas.drawRect(&all, 0xFFFFFF, 0xFFFFFF);
  EXPECT_EQ(s.countOther(0, 0, 20, 10, 0xFFFFFF), 0);

  s.fill(kGrey);
  ASSERT_TRUE(canvas.select());
  canvas.drawRect(&all, 0xFFFFFF, 0xFFFFFF);
  for (int y = 0; y < 10; ++y) {
    for (int x = 0; x < 20; ++x) {
      const bool excluded = x < 6 || (x < 10 && y >= 2 && y < 6) || (x >= 15 && y >= 5);
      EXPECT_EQ(s.at(x, y), excluded ? kGrey : 0xFFFFFFu) << x << "," << y;
    }
  }

  // Covered by two exclusions together: nothing can be drawn there.
  const sRect covered = {3, 3, 6, 2}, partly = {8, 5, 4, 4}, outside = {30, 0, 3, 3};
  EXPECT_FALSE(canvas.canDrawAt(&covered));
  EXPECT_TRUE(canvas.canDrawAt(&partly));
  EXPECT_FALSE(canvas.canDrawAt(&outside));
  EXPECT_TRUE(canvas.inDrawArea(&partly));
  EXPECT_FALSE(canvas.inDrawArea(&outside));

  // unclip takes a rectangle back out of the list; an unknown one is refused.
  ASSERT_TRUE(canvas.unclip(&left));
  EXPECT_FALSE(canvas.unclip(&left));
  EXPECT_TRUE(canvas.canDrawAt(&covered));
  s.fill(kGrey);
  canvas.select();
  canvas.drawRect(&all, 0xFFFFFF, 0xFFFFFF);
  EXPECT_EQ(s.at(0, 0), 0xFFFFFFu);
  EXPECT_EQ(s.at(5, 3), kGrey);
}

TEST(CairoCanvas, SubCanvasStartsFreshAndStaysInside) {
  cTestSurface s(30, 20);
  cCairoCanvas parent(s.get(), 30, 20);
  const sRect excluded = {0, 0, 30, 20};
  parent.clip(&excluded);
  parent.select();
  parent.setLineMode(0xFF0000, 3);
  parent.setTextColors(0x00FF00, 0x0000FF);

  const sRect at = {25, 5, 10, 10}; // runs past the parent's right edge
  std::unique_ptr<cCanvas> sub(parent.subCanvas(&at));
  ASSERT_TRUE(sub);
  EXPECT_EQ(sub->width(), 5);
  EXPECT_EQ(sub->height(), 10);
  EXPECT_EQ(sub->bgColor(), 0xFFFFFFu);
  // The parent's exclusion of everything does not reach the sub-canvas.
  const sRect r = {-5, -5, 20, 20};
  ASSERT_TRUE(sub->drawRect(&r, 0x000000, 0x000000));
  EXPECT_EQ(s.countOther(25, 5, 30, 15, 0), 0);
  EXPECT_EQ(s.countOther(0, 0, 30, 5, kGrey), 0);
  EXPECT_EQ(s.countOther(0, 15, 30, 20, kGrey), 0);
  EXPECT_EQ(s.countOther(0, 5, 25, 15, kGrey), 0);
  // A line in the default width (1) and colour (black).
  sub.reset(parent.subCanvas(&at));
  s.fill(kGrey);
  const sPoint a = {0, 0}, b = {4, 0};
  sub->drawLine(&a, &b);
  EXPECT_EQ(s.countOther(25, 5, 30, 6, 0), 0);
  EXPECT_EQ(s.countOther(25, 6, 30, 7, kGrey), 0);

  // The parent keeps its own exclusions after the sub-canvas is gone.
  sub.reset();
  s.fill(kGrey);
  parent.drawRect(&excluded, 0, 0);
  EXPECT_EQ(s.countOther(0, 0, 30, 20, kGrey), 0);

  const sRect away = {30, 0, 5, 5}, none = {2, 2, 0, 3};
  EXPECT_EQ(parent.subCanvas(&away), nullptr);
  EXPECT_EQ(parent.subCanvas(&none), nullptr);
}

TEST(CairoCanvas, NestedSubCanvasesAddTheirOrigins) {
  cTestSurface s(40, 40);
  cCairoCanvas root(s.get(), 40, 40);
  const sRect outer = {10, 10, 20, 20}, inner = {5, 5, 30, 30};
  std::unique_ptr<cCanvas> a(root.subCanvas(&outer));
  ASSERT_TRUE(a);
  std::unique_ptr<cCanvas> b(a->subCanvas(&inner));
  ASSERT_TRUE(b);
  EXPECT_EQ(b->width(), 15); // cut to the outer canvas
  const sRect everything = {0, 0, 100, 100};
  b->drawRect(&everything, 0x0000FF, 0x0000FF);
  EXPECT_EQ(s.inkOther(kGrey), (sArea{15, 15, 30, 30}));
}

cPicture twoByTwo() {
  // Top row: opaque red, half-transparent blue; bottom row: transparent, opaque white.
  const unsigned pixels[] = {0xFFFF0000, 0x800000FF, 0x00000000, 0xFFFFFFFF};
  cPicture p;
  p.create(pixels, 2, 2, false);
  return p;
}

TEST(CairoCanvas, PicturesPlainTransparentAndResized) {
  cTestSurface s(12, 4, 0x000000);
  cCairoCanvas canvas(s.get(), 12, 4);
  const cPicture p = twoByTwo();
  const sPoint plainAt = {0, 0}, blendAt = {3, 0};
  ASSERT_TRUE(canvas.drawBitmap(&plainAt, &p, nullptr));
  ASSERT_TRUE(canvas.drawTransparent(&blendAt, &p, nullptr));
  EXPECT_EQ(s.at(0, 0), 0xFF0000u);
  EXPECT_EQ(s.at(1, 0), 0x0000FFu); // plain: alpha ignored
  EXPECT_EQ(s.at(0, 1), 0x000000u);
  EXPECT_EQ(s.at(1, 1), 0xFFFFFFu);
  EXPECT_EQ(s.at(3, 0), 0xFF0000u);
  EXPECT_NEAR(static_cast<int>(s.at(4, 0)), 0x80, 1); // half blue over black
  EXPECT_EQ(s.at(3, 1), 0x000000u);                   // transparent keeps the background

  // A size smaller than the picture draws its top-left part only.
  const sPoint cropAt = {6, 0};
  const sSize one = {1, 1};
  ASSERT_TRUE(canvas.drawBitmap(&cropAt, &p, &one));
  EXPECT_EQ(s.at(6, 0), 0xFF0000u);
  EXPECT_EQ(s.at(7, 0), 0u);
  EXPECT_EQ(s.at(6, 1), 0u);

  // Stretched to 4 × 4: each pixel becomes a 2 × 2 block.
  ASSERT_TRUE(canvas.drawBitmapResized(&p, 8, 0, 4, 4, cPicture::rmStretch));
  EXPECT_EQ(s.at(8, 0), 0xFF0000u);
  EXPECT_EQ(s.at(9, 1), 0xFF0000u);
  EXPECT_EQ(s.at(11, 3), 0xFFFFFFu);
  EXPECT_EQ(s.at(10, 0), 0x0000FFu);

  const cPicture none;
  EXPECT_FALSE(canvas.drawBitmap(&plainAt, &none, nullptr));
  EXPECT_FALSE(canvas.drawBitmapResized(&p, 0, 0, 0, 4, cPicture::rmScaling));
}

TEST(CairoCanvas, OffscreenCopiesBackAndSnapshots) {
  cTestSurface s(20, 20);
  cCairoCanvas canvas(s.get(), 20, 20);
  std::unique_ptr<cCanvas> off(canvas.offscreen(6, 4, 0, 0));
  ASSERT_TRUE(off);
  EXPECT_EQ(off->width(), 6);
  const sRect all = {0, 0, 6, 4}, dot = {2, 1, 1, 1};
  off->drawRect(&all, 0xFFFFFF, 0xFFFFFF);
  off->drawRect(&dot, 0x0000FF, 0x0000FF);

  cPicture shot;
  ASSERT_TRUE(off->snapshot(&shot, &all));
  ASSERT_EQ(shot.width(), 6);
  ASSERT_EQ(shot.height(), 4);
  EXPECT_EQ(shot.pixel(2, 1), 0xFFFF0000u); // opaque red in the picture's own order
  EXPECT_EQ(shot.pixel(0, 0), 0xFFFFFFFFu);

  // The whole source (-1, -1), then a part of it.
  ASSERT_TRUE(canvas.draw(10, 10, off.get(), 0, 0, -1, -1));
  EXPECT_EQ(s.inkOther(kGrey), (sArea{10, 10, 16, 14}));
  EXPECT_EQ(s.at(12, 11), 0xFF0000u);
  s.fill(kGrey);
  ASSERT_TRUE(canvas.draw(0, 0, off.get(), 2, 1, 2, 2));
  EXPECT_EQ(s.at(0, 0), 0xFF0000u);
  EXPECT_EQ(s.at(1, 1), 0xFFFFFFu);
  EXPECT_EQ(s.inkOther(kGrey), (sArea{0, 0, 2, 2}));

  // A snapshot is cut to the canvas; nothing at all is refused.
  const sRect beyond = {4, 2, 10, 10}, outside = {7, 0, 2, 2};
  ASSERT_TRUE(off->snapshot(&shot, &beyond));
  EXPECT_EQ(shot.width(), 2);
  EXPECT_EQ(shot.height(), 2);
  EXPECT_FALSE(off->snapshot(&shot, &outside));
  EXPECT_TRUE(shot.empty());

  EXPECT_EQ(canvas.offscreen(0, 5, 0, 0), nullptr);
  EXPECT_EQ(canvas.offscreen(5, 1 << 20, 0, 0), nullptr);
}

TEST(CairoCanvas, NoSurfaceDrawsNothing) {
  cCairoCanvas canvas(nullptr, 10, 10);
  const sRect r = {0, 0, 5, 5};
  const sPoint a = {0, 0};
  EXPECT_FALSE(canvas.drawRect(&r, 0, 0));
  EXPECT_FALSE(canvas.drawLine(&a, &a));
  EXPECT_FALSE(canvas.select());
  EXPECT_EQ(canvas.subCanvas(&r), nullptr);
  EXPECT_EQ(canvas.offscreen(5, 5, 0, 0), nullptr);
}

} // namespace
