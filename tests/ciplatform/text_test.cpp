// Fonts through Pango and text on the Cairo canvas. Glyph shapes differ between font
// versions, so these tests compare layout (where ink lies, widths, line steps), not pixels.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <fontconfig/fontconfig.h>

#include "ciom/langtable.h"
#include "ciom/static.h"
#include "ciplatform/pangofont.h"
#include "surface.h"

namespace {

constexpr unsigned kWhite = 0xFFFFFF;

cFontObject* standard() {
  cPangoFont::install();
  return cFontObject::get(5, 13, _glbalStdFont(), false, false, false);
}

TEST(PangoFont, DefaultFacesStandInForTheSystemFaces) {
  cPangoFont::install();
  cFontObject* font = standard();
  ASSERT_NE(font, nullptr);
  EXPECT_STREQ(font->face(), "Tahoma");
  EXPECT_EQ(cFontObject::get(5, 13, "Tahoma", false, false, false), font);
  EXPECT_NE(cFontObject::get(6, 13, "Tahoma", true, false, false), font);
  EXPECT_NE(cFontObject::get(5, 13, _glbalFixedFont(), false, false, false), nullptr);
  const auto* pango = dynamic_cast<cPangoFont*>(font);
  ASSERT_NE(pango, nullptr);
  // The size formula gives Pango's absolute size in pixels.
  EXPECT_EQ(pango_font_description_get_size(pango->description()), 11 * PANGO_SCALE);
  EXPECT_TRUE(pango_font_description_get_size_is_absolute(pango->description()));
}

TEST(PangoFont, AMissingFaceIsRefused) {
  cPangoFont::install();
  EXPECT_TRUE(cPangoFont::installed("DejaVu Sans"));
  EXPECT_FALSE(cPangoFont::installed("No Such Face 7f3a"));
  EXPECT_EQ(cFontObject::get(5, 13, "No Such Face 7f3a", false, false, false), nullptr);
  EXPECT_EQ(cFontObject::get(5, 13, "", false, false, false), nullptr);
  EXPECT_EQ(cFontObject::get(5, 0, "Tahoma", false, false, false), nullptr);
  EXPECT_NE(cFontObject::get(5, 13, "DejaVu Sans", false, false, false), nullptr);
}

TEST(CairoText, MeasuresAndRulesAlike) {
  cTestSurface s(10, 10);
  cCairoCanvas canvas(s.get(), 10, 10);
  sSize size;
  EXPECT_FALSE(canvas.textSize("abc", -1, size)); // no font yet
  ASSERT_TRUE(canvas.setTextMode(standard()));
  ASSERT_TRUE(canvas.textSize("Hello, world", -1, size));
  EXPECT_GT(size.width, 40);
  EXPECT_GE(size.height, 11);
  EXPECT_LE(size.height, 16);

  // The advances add up to the width, in UTF-8 (per code point) and UTF-16 (per unit).
  const char* text = "Größe \xF0\x9F\x98\x80 ok"; // a character outside the BMP
  int perPoint[16] = {};
  ASSERT_TRUE(canvas.textRuler(text, -1, perPoint));
  ASSERT_TRUE(canvas.textSize(text, -1, size));
  int sum = 0;
  for (int i = 0; i < 10; ++i) sum += perPoint[i];
  EXPECT_EQ(sum, size.width);

  const unsigned short wide[] = {'G', 'r', 0xF6, 0xDF, 'e', ' ', 0xD83D, 0xDE00, ' ', 'o', 'k'};
  int perUnit[11] = {};
  sSize wideSize;
  ASSERT_TRUE(canvas.textRuler(wide, 11, perUnit));
  ASSERT_TRUE(canvas.textSize(wide, 11, wideSize));
  EXPECT_EQ(wideSize.width, size.width);
  EXPECT_EQ(perUnit[7], 0); // the second half of the pair
  sum = 0;
  for (int a : perUnit) sum += a;
  EXPECT_EQ(sum, wideSize.width);

  // Bytes that are not UTF-8 are measured and drawn, not refused.
  EXPECT_TRUE(canvas.textSize("a\xFF\xC3", 3, size));
  EXPECT_GT(size.width, 0);
  EXPECT_TRUE(canvas.drawText(0, 0, true, "a\xFF\xC3", 3));
}

TEST(CairoText, OpaqueTextFillsItsBox) {
  cTestSurface s(100, 30);
  cCairoCanvas canvas(s.get(), 100, 30);
  ASSERT_TRUE(canvas.setTextMode(standard()));
  canvas.setTextColors(0x000000, 0x0000FF);
  sSize size;
  canvas.textSize("Ab", -1, size);
  ASSERT_TRUE(canvas.drawText(10, 5, false, "Ab", -1));
  EXPECT_EQ(s.at(10, 5), 0xFF0000u); // the box corner: background, not glyph
  EXPECT_EQ(s.inkOther(0x808080), (sArea{10, 5, 10 + size.width, 5 + size.height}));

  s.fill(kWhite);
  ASSERT_TRUE(canvas.drawText(10, 5, true, "Ab", -1));
  const sArea ink = s.inkOther(kWhite);
  EXPECT_GE(ink.left, 10);
  EXPECT_GE(ink.top, 5);
  EXPECT_LE(ink.right, 10 + size.width + 1);
  EXPECT_LE(ink.bottom, 5 + size.height);
}

class cLimitedText : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(canvas.setTextMode(standard()));
    canvas.setTextColors(0x000000, kWhite);
    s.fill(kWhite);
  }
  cTestSurface s{200, 40};
  cCairoCanvas canvas{s.get(), 200, 40};
};

TEST_F(cLimitedText, ExactWidthIsDrawnWhole) {
  sSize size;
  canvas.textSize("Window", -1, size);
  long long shown = 0;
  EXPECT_EQ(canvas.drawTextLimited(0, 0, size.width, 20, cCanvas::taLeft, true, 0, 0, "Window", -1,
                                   &shown, false),
            size.width);
  EXPECT_EQ(shown, 6);
  // One pixel less: the text is cut and ends in "...", all inside the box.
  const int drawn = canvas.drawTextLimited(0, 0, size.width - 1, 20, cCanvas::taLeft, true, 0, 0,
                                           "Window", -1, &shown, false);
  EXPECT_GT(drawn, 0);
  EXPECT_LE(drawn, size.width - 1);
  EXPECT_LT(shown, 6);
  sSize dots;
  canvas.textSize("...", 3, dots);
  int ruler[6];
  canvas.textRuler("Window", 6, ruler);
  int prefix = 0;
  for (long long i = 0; i < shown; ++i) prefix += ruler[i];
  EXPECT_LE(prefix + dots.width, size.width - 1);
  EXPECT_GT(prefix + ruler[shown] + dots.width, size.width - 1); // the longest that fits
}

TEST_F(cLimitedText, TruncatedTextStaysInItsBox) {
  const char* text = "A long caption that cannot fit";
  long long shown = 0;
  const int drawn =
      canvas.drawTextLimited(20, 10, 80, 20, cCanvas::taLeft, true, 4, 4, text, -1, &shown, false);
  ASSERT_GT(drawn, 0);
  EXPECT_LE(drawn, 72);
  EXPECT_GT(shown, 0);
  const sArea ink = s.inkOther(kWhite);
  EXPECT_GE(ink.left, 24);
  EXPECT_LE(ink.right, 20 + 80 - 4 + 1);
  EXPECT_GE(ink.top, 10);
  EXPECT_LE(ink.bottom, 30);
}

TEST_F(cLimitedText, RightAlignedStopsOnePixelShort) {
  sSize size;
  canvas.textSize("Ok", -1, size);
  canvas.setTextColors(0x000000, 0x0000FF);
  // Opaque with fill-around: the whole box is painted, the text's own box sits one pixel
  // left of the right margin.
  ASSERT_EQ(canvas.drawTextLimited(10, 0, 100, 30, cCanvas::taRight, false, 0, 5, "Ok", -1, nullptr,
                                   true),
            size.width);
  EXPECT_EQ(s.countOther(0, 0, 10, 30, kWhite), 0);
  EXPECT_EQ(s.countOther(110, 0, 200, 30, kWhite), 0);
  EXPECT_EQ(s.countOther(10, 0, 110, 30, kWhite), 100 * 30) << "every pixel of the box painted";
  // Draw transparently to see where the glyphs lie.
  s.fill(kWhite);
  canvas.drawTextLimited(10, 0, 100, 30, cCanvas::taRight, true, 0, 5, "Ok", -1, nullptr, false);
  const sArea ink = s.inkOther(kWhite);
  EXPECT_LE(ink.right, 10 + 100 - 5 - 1 + 1);
  EXPECT_GE(ink.left, 10 + 100 - 5 - 1 - size.width);
  // Centred vertically.
  EXPECT_GE(ink.top, (30 - size.height) / 2);
}

TEST_F(cLimitedText, NothingWithoutRoom) {
  EXPECT_EQ(
      canvas.drawTextLimited(0, 0, 10, 20, cCanvas::taLeft, true, 6, 4, "x", -1, nullptr, false),
      -1);
  EXPECT_EQ(s.countOther(0, 0, 200, 40, kWhite), 0);
}

TEST_F(cLimitedText, AMiddleElidedTextKeepsBothEnds) {
  const char* path = "/home/user/recovery/cases/2026/rules.qrrs";
  auto width = [&](const std::vector<unsigned short>& t) {
    sSize size;
    canvas.textSize(t.data(), static_cast<long long>(t.size()), size);
    return size.width;
  };
  auto text = [](const std::vector<unsigned short>& t) {
    std::string out;
    for (const unsigned short u : t) out += u == 0x2026 ? '~' : u < 0x80 ? char(u) : '?';
    return out;
  };
  sSize whole;
  canvas.textSize(path, -1, whole);
  EXPECT_EQ(text(elideMiddle(canvas, path, whole.width)), path);
  for (const int w : {whole.width - 1, whole.width / 2, 30}) {
    const std::vector<unsigned short> shown = elideMiddle(canvas, path, w);
    const std::string t = text(shown);
    const size_t dots = t.find('~');
    ASSERT_NE(dots, std::string::npos) << w;
    EXPECT_LE(width(shown), w);
    EXPECT_EQ(t.substr(0, dots), std::string(path).substr(0, dots)) << t;
    EXPECT_EQ(t.substr(dots + 1), std::string(path).substr(strlen(path) - (t.size() - dots - 1)));
    EXPECT_LE(t.size() - dots - 1, dots) << t; // the start has the odd unit
  }
  EXPECT_EQ(text(elideMiddle(canvas, path, 0)), "~");
  // A pair of surrogates (U+1F600) on either side of the cut is kept whole or dropped.
  auto high = [](unsigned short u) { return u >= 0xD800 && u <= 0xDBFF; };
  auto low = [](unsigned short u) { return u >= 0xDC00 && u <= 0xDFFF; };
  const char* smiles = "\xF0\x9F\x98\x80"
                       "abc"
                       "\xF0\x9F\x98\x80";
  for (int w = 1; w < 60; ++w) {
    const std::vector<unsigned short> shown = elideMiddle(canvas, smiles, w);
    for (size_t i = 0; i < shown.size(); ++i) {
      if (high(shown[i])) {
        EXPECT_TRUE(i + 1 < shown.size() && low(shown[i + 1])) << w;
      }
      if (low(shown[i])) {
        EXPECT_TRUE(i > 0 && high(shown[i - 1])) << w;
      }
    }
  }
}

TEST(CairoText, WrappedLinesStepByTheFactor) {
  cTestSurface s(200, 200, kWhite);
  cCairoCanvas canvas(s.get(), 200, 200);
  ASSERT_TRUE(canvas.setTextMode(standard()));
  sSize ay, used;
  canvas.textSize("Ay", 2, ay);
  ASSERT_TRUE(canvas.drawTextWrapped(0, 0, 60, 200, cCanvas::taLeft,
                                     "one two three four five six seven", used, false, 1.2));
  const int step = static_cast<int>(ay.height * 1.2);
  EXPECT_EQ(used.height % step, 0);
  EXPECT_GE(used.height / step, 3);
  EXPECT_LE(used.width, 60);
  const sArea ink = s.inkOther(kWhite);
  EXPECT_LE(ink.right, 60);
  EXPECT_GT(ink.bottom, used.height - step);
}

// A copy of an installed font that fontconfig knows by the name of an East Asian face.
bool provideFace(const char* family) {
  const char* source = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
  const std::filesystem::path copy = std::filesystem::temp_directory_path() /
                                     ("qvraci-face-" + std::to_string(::getpid()) + ".ttf");
  std::error_code error;
  std::filesystem::copy_file(source, copy, std::filesystem::copy_options::overwrite_existing,
                             error);
  if (error) return false;
  const std::string xml =
      "<?xml version='1.0'?><fontconfig><include ignore_missing='yes'>/etc/fonts/fonts.conf"
      "</include><match target='scan'><test name='file'><string>" +
      copy.string() + "</string></test><edit name='family' mode='assign' binding='same'><string>" +
      family + "</string></edit></match></fontconfig>";
  FcConfig* config = FcConfigCreate();
  const bool ok = FcConfigParseAndLoadFromMemory(
                      config, reinterpret_cast<const FcChar8*>(xml.c_str()), FcTrue) &&
                  FcConfigAppFontAddFile(config, reinterpret_cast<const FcChar8*>(copy.c_str())) &&
                  FcConfigSetCurrent(config);
  FcConfigDestroy(config); // the current configuration keeps its own reference
  // Pango opens the file when it first draws with it: remove it only at exit.
  static struct sRemoveAtExit {
    std::filesystem::path path;
    ~sRemoveAtExit() {
      std::error_code ignored;
      std::filesystem::remove(path, ignored);
    }
  } cleanup;
  cleanup.path = copy;
  return ok;
}

TEST(StandardFace, EastAsianFaceOnlyWhenInstalled) {
  cPangoFont::install();
  cLibLang::applyLang(lngTraditionalChinese);
  int out = -1;
  if (!cPangoFont::installed("Microsoft JhengHei")) {
    setDefaultPlatformFont(&out);
    EXPECT_EQ(out, 3);
    EXPECT_STREQ(_glbalStdFont(), "Tahoma");
    EXPECT_DOUBLE_EQ(textWrapYFactor(), 1.2);
    ASSERT_TRUE(provideFace("Microsoft JhengHei"));
  }
  setDefaultPlatformFont(&out);
  EXPECT_EQ(out, 0);
  EXPECT_STREQ(_glbalStdFont(), "Microsoft JhengHei");
  EXPECT_DOUBLE_EQ(textWrapYFactor(), 1.07);

  // Wrapped lines are then 1.07 font heights apart.
  cTestSurface s(100, 100);
  cCairoCanvas canvas(s.get(), 100, 100);
  ASSERT_TRUE(canvas.setTextMode(5, 13, _glbalStdFont(), false, false, false));
  sSize ay, used;
  canvas.textSize("Ay", 2, ay);
  ASSERT_TRUE(canvas.drawTextWrapped(0, 0, 100, 100, cCanvas::taLeft, "a\nb\nc", used, true,
                                     textWrapYFactor()));
  EXPECT_EQ(used.height, 3 * static_cast<int>(ay.height * 1.07));
  cLibLang::applyLang(lngEnglish);
  setDefaultPlatformFont(nullptr);
  EXPECT_STREQ(_glbalStdFont(), "Tahoma");
}

} // namespace
