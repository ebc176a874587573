// Painting an element tree on an image surface: parents never paint under their children,
// children stay inside the client area, scrolled and hidden children, double buffering and
// the background of transparent elements.
#include <gtest/gtest.h>

#include "ciom/element.h"
#include "surface.h"

namespace {

constexpr unsigned kUntouched = 0x808080; // the surface before painting (0x00RRGGBB)

// Fills its whole canvas with one colour (0x00BBGGRR), or paints nothing with colour -1.
class cSolid : public cChildElement {
public:
  explicit cSolid(long long colour, int border = 0, bool buffered = false)
      : myColour(colour), myBorder(border), myBuffered(buffered) {}
  void onPaint(cCanvas* canvas) override {
    ++paints;
    if (myColour < 0) return;
    const sRect all = {0, 0, canvas->width(), canvas->height()};
    canvas->drawRect(&all, static_cast<unsigned>(myColour), static_cast<unsigned>(myColour));
  }
  bool onBackgroundRequest(cCanvas* canvas, sRect* rect) override {
    // The part of this element under rect, drawn at the canvas origin: a stripe pattern
    // keyed to this element's coordinates shows whether the offset is right.
    for (int x = 0; x < rect->width; ++x) {
      const sRect column = {x, 0, 1, rect->height};
      const unsigned c = (rect->x + x) % 2 ? 0x00FF00u : 0x000000u;
      canvas->drawRect(&column, c, c);
    }
    return true;
  }
  void virtualOffset(sPoint* offset) override { *offset = scroll; }
  int wantBorderWidth() override { return myBorder; }
  bool wantDoubleBuffer() override { return myBuffered; }
  sPoint scroll;
  int paints = 0;

private:
  long long myColour;
  int myBorder;
  bool myBuffered;
};

class cRoot : public cWindowRequestTarget {};

TEST(ElementPaint, ChildrenPaintInsideParentsAroundThem) {
  cTestSurface s(100, 60);
  cSolid root(0xFFFFFF, 2), blue(0xFF0000), red(0x0000FF), hidden(0x00FF00), empty(-1),
      buffered(0x00FFFF, 0, true);
  cRoot window;
  root.setWinTarget(&window, 0, 0, 100, 60);
  root.attach(&blue, 10, 10, 30, 30);
  root.attach(&red, 50, 5, 20, 20); // scrolled up by 10: partly under the top border
  root.attach(&hidden, 80, 10, 10, 10);
  root.attach(&empty, 80, 30, 10, 10);
  root.attach(&buffered, 10, 45, 20, 10, cptFixed); // fixed: not scrolled
  hidden.hide(false);
  root.scroll = {0, 10};
  cCairoCanvas canvas(s.get(), 100, 60);
  root.processPaint(&canvas);

  // blue sits at 10, 0 (scrolled), cut by the 2-pixel border at the top.
  EXPECT_EQ(s.at(10, 2), 0x0000FFu);
  EXPECT_EQ(s.at(39, 19), 0x0000FFu);
  EXPECT_EQ(s.at(10, 1), 0xFFFFFFu) << "the border stays the root's";
  // red at 50, -5: only rows 2..14 show.
  EXPECT_EQ(s.at(50, 2), 0xFF0000u);
  EXPECT_EQ(s.at(69, 14), 0xFF0000u);
  EXPECT_EQ(s.at(50, 15), 0xFFFFFFu);
  // The hidden child is not painted and leaves its area to the root.
  EXPECT_EQ(hidden.paints, 0);
  EXPECT_EQ(s.at(85, 5), 0xFFFFFFu);
  // Under a child that paints nothing, the root has not painted either.
  EXPECT_EQ(empty.paints, 1);
  EXPECT_EQ(s.countOther(80, 20, 90, 30, kUntouched), 0);
  // The double-buffered child arrives whole, copied from its offscreen canvas.
  EXPECT_EQ(s.countOther(10, 45, 30, 55, 0xFFFF00), 0);
  // The root paints all the rest of its client area.
  EXPECT_EQ(s.at(2, 2), 0xFFFFFFu);
  EXPECT_EQ(s.at(97, 57), 0xFFFFFFu);
  root.setWinTarget(nullptr, 0, 0, 0, 0);
}

TEST(ElementPaint, TransparentChildGetsItsParentsBackground) {
  cTestSurface s(40, 20);
  cSolid root(0xFFFFFF), glass(-1);
  cRoot window;
  root.setWinTarget(&window, 0, 0, 40, 20);
  root.attach(&glass, 11, 5, 10, 10);
  glass.setTransparent(true);
  cCairoCanvas canvas(s.get(), 40, 20);
  root.processPaint(&canvas);
  // Columns at odd x of the root are green, in the glass's area too.
  EXPECT_EQ(s.at(11, 5), 0x00FF00u);
  EXPECT_EQ(s.at(12, 5), 0x000000u);
  EXPECT_EQ(s.at(20, 14), 0x000000u);
  EXPECT_EQ(s.at(21, 5), 0xFFFFFFu);
  root.setWinTarget(nullptr, 0, 0, 0, 0);
}

} // namespace
