// Windows on a dense screen: logical pixels above the backend, device pixels below it.
#include <gtest/gtest.h>

#include <string>

#include "../common/offscreen_fixture.h"
#include "ciom/theme.h"

namespace {

constexpr unsigned kWhite = 0xFFFFFF, kInk = 0x000000;

// A white root with a probe child at logical (40, 15, 20 × 20), a 1-pixel line in the
// theme's ink at x = 10, a word of text at (100, 40) and, when set, a picture at (150, 5).
class cScaleRoot : public cChildElement {
public:
  class cProbe : public cChildElement {
  public:
    sPoint pressedAt{-1, -1};
    void onMouseButton(int x, int y, int, bool down) override {
      if (down) pressedAt = {x, y};
    }
  } probe;

  void onConstruct() override { attach(&probe, 40, 15, 20, 20); }
  void onPaint(cCanvas* canvas) override {
    const sRect all{0, 0, width(), height()};
    canvas->drawRect(&all, kWhite, kWhite);
    const unsigned ink = cCITheme::theme().getColor(kLineColour);
    const sRect line{10, 0, 1, height()};
    canvas->drawRect(&line, ink, ink);
    canvas->setTextMode(0, 24, "Tahoma", false, false, false);
    canvas->setTextColors(kInk, kWhite);
    canvas->drawText(100, 40, true, "Sharp", -1);
    if (art) canvas->drawBitmap(150, 5, art, -1, -1);
  }
  static constexpr int kLineColour = 4;
  const cPicture* art = nullptr;
};

class Scale : public cOffscreenTest {
protected:
  void TearDown() override {
    holder.reset();
    nsoff::setScale(1);
    cOffscreenTest::TearDown();
  }
  // Opens the root in a 200 × 100 window at the scale and returns the window's info.
  nsoff::sWindowInfo open(cScaleRoot& root, double scale) {
    nsoff::setScale(scale);
    holder = cOffscreenTest::open(&root, 200, 100, -1, -1);
    return nsoff::topWindow();
  }
  static unsigned pixel(cairo_surface_t* s, int x, int y) {
    cairo_surface_flush(s);
    const unsigned char* row =
        cairo_image_surface_get_data(s) + static_cast<long>(y) * cairo_image_surface_get_stride(s);
    return reinterpret_cast<const uint32_t*>(row)[x] & 0xFFFFFF;
  }
  // Of the pixels that are at least half ink, the share of those that are mid greys (a
  // quarter to three quarters ink): the blur at the text's edges.
  static double edgeShare(cairo_surface_t* s, int x0, int y0, int x1, int y1) {
    int inked = 0, grey = 0;
    for (int y = y0; y < y1; ++y) {
      for (int x = x0; x < x1; ++x) {
        const unsigned level = pixel(s, x, y) >> 8 & 0xFF; // green: 255 paper, 0 ink
        inked += level < 128;
        grey += level >= 64 && level < 192;
      }
    }
    return inked ? static_cast<double>(grey) / inked : 1;
  }

  cScaleRoot one, two; // outlive the window
  std::unique_ptr<cWindowHolder> holder;
};

TEST_F(Scale, AWindowAtTwiceTheScaleHasTwiceTheDevicePixels) {
  // A theme picture with its detail, up to 40 × 40.
  cScaleRoot& root = one;
  for (int i = 0; i < cCITheme::kImages && !root.art; ++i) {
    const cPicture* p = cCITheme::theme().getPict(i);
    if (p && p->detail() && p->width() <= 40 && p->height() <= 40) root.art = p;
  }
  ASSERT_NE(root.art, nullptr);
  const nsoff::sWindowInfo info = open(root, 2);
  EXPECT_EQ(root.width(), 200);
  EXPECT_EQ(root.height(), 100);
  EXPECT_EQ(info.w, 400);
  EXPECT_EQ(info.h, 200);
  cairo_surface_t* s = nsoff::surface(info.handle);
  EXPECT_EQ(cairo_image_surface_get_width(s), 400);
  EXPECT_EQ(cairo_image_surface_get_height(s), 200);

  // A click at device (100, 50) lands at logical (50, 25): 10, 10 inside the probe.
  nsoff::click(info.x + 100, info.y + 50);
  nsoff::runUntilIdle();
  EXPECT_EQ(root.probe.pressedAt, (sPoint{10, 10}));

  // The 1-pixel line at logical x = 10 covers device columns 20 and 21, and no others.
  const unsigned ink = cCITheme::theme().getColor(cScaleRoot::kLineColour);
  const unsigned rgb = (ink & 0xFF) << 16 | (ink & 0xFF00) | (ink >> 16 & 0xFF);
  for (int x = 18; x < 24; ++x)
    EXPECT_EQ(pixel(s, x, 100) == rgb, x == 20 || x == 21) << "column " << x;

  // The picture is its detail, pixel for pixel.
  const cPicture* detail = root.art->detail();
  int differ = 0;
  for (int y = 0; y < detail->height(); ++y) {
    for (int x = 0; x < detail->width(); ++x)
      differ += pixel(s, 300 + x, 10 + y) != (detail->pixel(x, y) & 0xFFFFFF);
  }
  EXPECT_EQ(differ, 0);
}

TEST_F(Scale, TextIsDrawnAtTheDeviceResolution) {
  // Text rendered for the denser screen has edges as thin as at 1×: against twice the
  // strokes' width, half the share of its pixels is grey. Text drawn at 1× and enlarged
  // would have edges twice as wide, and the same share.
  const nsoff::sWindowInfo at1 = open(one, 1);
  const double blur1 = edgeShare(nsoff::surface(at1.handle), 95, 35, 200, 85);
  const nsoff::sWindowInfo at2 = open(two, 2);
  const double blur2 = edgeShare(nsoff::surface(at2.handle), 190, 70, 400, 170);
  EXPECT_GT(blur1, 0);
  EXPECT_LT(blur2, blur1 * 0.7) << "1x " << blur1 << ", 2x " << blur2;
}

TEST_F(Scale, AFractionalScaleCoversTheWholeWindow) {
  // 200 × 100 at 1.5 is 300 × 150 device pixels, every one painted white or drawn on.
  const nsoff::sWindowInfo info = open(one, 1.5);
  EXPECT_EQ(info.w, 300);
  EXPECT_EQ(info.h, 150);
  cairo_surface_t* s = nsoff::surface(info.handle);
  EXPECT_EQ(pixel(s, 299, 149), kWhite);
  EXPECT_EQ(pixel(s, 299, 0), kWhite);
}

} // namespace
