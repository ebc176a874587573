// The canvas's own text layout (limited and wrapped text) over a canvas double with fixed
// advances, and the font cache with its global faces.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ciom/canvas.h"
#include "ciom/langtable.h"

namespace {

// Every character 7 pixels wide, '.' 3 and ' ' 4; every text 13 pixels high. Records what
// is drawn.
class cRulerCanvas : public cCanvas {
public:
  struct sText {
    int x, y;
    std::string text;
    bool operator==(const sText&) const = default;
  };
  std::vector<sText> texts;
  std::vector<std::pair<sRect, unsigned>> fills;

  static int advance(unsigned short c) { return c == '.' ? 3 : c == ' ' ? 4 : 7; }

  int width() override { return 200; }
  int height() override { return 100; }
  bool drawText(int, int, bool, const char*, long long) override { return false; }
  bool drawText(int x, int y, bool, const unsigned short* text, long long len) override {
    texts.push_back({x, y, std::string(text, text + len)});
    return true;
  }
  bool drawRect(const sRect* rect, unsigned fill, unsigned) override {
    fills.push_back({*rect, fill});
    return true;
  }
  bool drawBitmap(const sPoint*, const cPicture*, const sSize*) override { return false; }
  bool drawBitmap(int, int, const cPicture*, int, int) override { return false; }
  bool drawTransparent(const sPoint*, const cPicture*, const sSize*) override { return false; }
  bool drawLine(const sPoint*, const sPoint*) override { return false; }
  bool draw(int, int, cCanvas*, int, int, int, int) override { return false; }
  bool clip(const sRect*) override { return false; }
  bool unclip(const sRect*) override { return false; }
  void setLineMode(unsigned, int) override {}
  bool setTextMode(int, int, const char*, bool, bool, bool) override { return false; }
  bool setTextMode(cFontObject*) override { return false; }
  cFontObject* createFont(int, int, const char*, bool, bool, bool) override { return nullptr; }
  void setTextColors(unsigned, unsigned) override {}
  unsigned bgColor() override { return 0xABCDEF; }
  bool textSize(const char*, long long, sSize&) override { return false; }
  bool textSize(const unsigned short* text, long long len, sSize& size) override {
    size = {0, 13};
    for (long long i = 0; i < len; ++i) size.width += advance(text[i]);
    return true;
  }
  bool textRuler(const char*, long long, int*) override { return false; }
  bool textRuler(const unsigned short* text, long long len, int* advances) override {
    for (long long i = 0; i < len; ++i) advances[i] = advance(text[i]);
    return true;
  }
  bool canDrawAt(const sRect*) override { return true; }
  bool snapshot(cPicture*, const sRect*) override { return false; }
  cCanvas* subCanvas(const sRect*) override { return nullptr; }
  cCanvas* offscreen(int, int, int, int) override { return nullptr; }
  bool select() override { return true; }
};

using sText = cRulerCanvas::sText;

int limited(cRulerCanvas& c, const char* text, int w, cCanvas::eTextAlign align,
            long long* shown = nullptr, int x = 10, int ml = 2, int mr = 3) {
  return c.drawTextLimited(x, 20, w, 33, align, true, ml, mr, text, -1, shown, false);
}

TEST(CanvasText, LimitedTextFitsOrIsCutWithDots) {
  cRulerCanvas c;
  long long shown = 0;
  EXPECT_EQ(limited(c, "abcd", 33, cCanvas::taLeft, &shown), 28); // exactly the room
  EXPECT_EQ(c.texts.back(), (sText{12, 30, "abcd"}));
  EXPECT_EQ(shown, 4);
  EXPECT_EQ(limited(c, "abcdefgh", 35, cCanvas::taLeft, &shown), 30);
  EXPECT_EQ(c.texts.back().text, "abc...");
  EXPECT_EQ(shown, 3);
  EXPECT_EQ(limited(c, "abcdefgh", 14, cCanvas::taLeft, &shown), 9); // only the dots fit
  EXPECT_EQ(c.texts.back().text, "...");
  EXPECT_EQ(shown, 0);
  // Multi-byte text: what was shown is counted in bytes.
  EXPECT_EQ(c.drawTextLimited(0, 0, 25, 13, cCanvas::taLeft, true, 0, 0,
                              "\xC3\xA9\xC3\xA9\xC3\xA9x", -1, &shown, false),
            23);
  EXPECT_EQ(shown, 4);
}

TEST(CanvasText, LimitedTextPlacement) {
  cRulerCanvas c;
  limited(c, "ab", 50, cCanvas::taRight); // room 45: ends one pixel short of it
  EXPECT_EQ(c.texts.back(), (sText{10 + 2 + 45 - 1 - 14, 30, "ab"}));
  limited(c, "ab", 50, cCanvas::taCenter);
  EXPECT_EQ(c.texts.back().x, 10 + 2 + (45 - 14) / 2);
  limited(c, "ab", 50, cCanvas::taJustify);
  EXPECT_EQ(c.texts.back().x, 12);
  const size_t drawn = c.texts.size();
  EXPECT_EQ(limited(c, "ab", 0, cCanvas::taLeft), -1);
  EXPECT_EQ(limited(c, "ab", 5, cCanvas::taLeft), -1); // margins leave no room
  EXPECT_EQ(limited(c, "ab", 50, cCanvas::taLeft, nullptr, 0, -1, 0), -1);
  EXPECT_EQ(limited(c, "ab", 7, cCanvas::taLeft, nullptr, 0, 0, 0), -1); // not even "..."
  EXPECT_EQ(c.texts.size(), drawn);
}

TEST(CanvasText, LimitedTextFillsAroundItself) {
  cRulerCanvas c;
  ASSERT_EQ(
      c.drawTextLimited(10, 20, 50, 33, cCanvas::taLeft, false, 2, 3, "ab", -1, nullptr, true), 14);
  // The box minus the text at 12, 30, 14 × 13, in the text background.
  const std::vector<std::pair<sRect, unsigned>> expected = {{{10, 20, 2, 33}, 0xABCDEF},
                                                            {{12, 20, 14, 10}, 0xABCDEF},
                                                            {{12, 43, 14, 10}, 0xABCDEF},
                                                            {{26, 20, 34, 33}, 0xABCDEF}};
  EXPECT_EQ(c.fills, expected);
  c.fills.clear();
  c.drawTextLimited(10, 20, 50, 33, cCanvas::taLeft, true, 2, 3, "ab", -1, nullptr, true);
  EXPECT_TRUE(c.fills.empty()); // transparent text paints no background
}

std::vector<sText> wrapped(const char* text, int w, cCanvas::eTextAlign align, sSize& used,
                           int h = 0, bool measureOnly = false) {
  cRulerCanvas c;
  EXPECT_TRUE(c.drawTextWrapped(0, 0, w, h, align, text, used, measureOnly, 1.2));
  return c.texts;
}

TEST(CanvasText, WrappedTextFillsLinesAndPlacesThem) {
  sSize used;
  // "aa bb" is exactly 32 wide; lines are trunc(13 × 1.2) = 15 apart.
  EXPECT_EQ(wrapped("aa bb cc", 32, cCanvas::taLeft, used),
            (std::vector<sText>{{0, 0, "aa"}, {18, 0, "bb"}, {0, 15, "cc"}}));
  EXPECT_EQ(used, (sSize{32, 30}));
  EXPECT_EQ(wrapped("aa bb cc", 40, cCanvas::taRight, used),
            (std::vector<sText>{{8, 0, "aa"}, {26, 0, "bb"}, {26, 15, "cc"}}));
  EXPECT_EQ(wrapped("aa bb cc", 40, cCanvas::taCenter, used),
            (std::vector<sText>{{4, 0, "aa"}, {22, 0, "bb"}, {13, 15, "cc"}}));
  // Justified: the spare 2 pixels go into the gap; the last line stays left.
  EXPECT_EQ(wrapped("a b c d", 20, cCanvas::taJustify, used),
            (std::vector<sText>{{0, 0, "a"}, {13, 0, "b"}, {0, 15, "c"}, {11, 15, "d"}}));
}

TEST(CanvasText, WrappedTextCutsLongWordsAndKeepsLineFeeds) {
  sSize used;
  EXPECT_EQ(wrapped("abcdefgh x", 21, cCanvas::taLeft, used),
            (std::vector<sText>{{0, 0, "abc"}, {0, 15, "def"}, {0, 30, "gh"}, {0, 45, "x"}}));
  EXPECT_EQ(used, (sSize{21, 60}));
  EXPECT_EQ(wrapped("a\n\nb", 50, cCanvas::taLeft, used),
            (std::vector<sText>{{0, 0, "a"}, {0, 30, "b"}}));
  EXPECT_EQ(used.height, 45);
  EXPECT_TRUE(wrapped("aa bb cc", 32, cCanvas::taLeft, used, 0, true).empty());
  EXPECT_EQ(used, (sSize{32, 30}));
  EXPECT_EQ(wrapped("aa bb cc", 32, cCanvas::taLeft, used, 15).size(), 2u); // one line's room
}

std::unique_ptr<cFontObject> makeFont() {
  // A platform that knows every face but "Missing Face".
  class cTestFont : public cFontObject {
    bool define(int kind, int size, const char* face, bool bold, bool underline,
                bool italic) override {
      return std::string(face) != "Missing Face" &&
             cFontObject::define(kind, size, face, bold, underline, italic);
    }
  };
  return std::make_unique<cTestFont>();
}

TEST(Fonts, CacheMakesEachFontOnce) {
  cFontObject::setMaker(nullptr);
  EXPECT_EQ(cFontObject::get(5, 13, "Cache Face", false, false, false), nullptr);
  cFontObject::setMaker(makeFont);
  const size_t before = cFontObject::cached();
  cFontObject* plain = cFontObject::get(5, 13, "Cache Face", false, false, false);
  ASSERT_NE(plain, nullptr);
  EXPECT_EQ(cFontObject::get(5, 13, "Cache Face", false, false, false), plain);
  cFontObject* underlined = cFontObject::get(5, 13, "Cache Face", false, true, false);
  EXPECT_NE(underlined, plain);
  EXPECT_TRUE(underlined->underline());
  EXPECT_EQ(cFontObject::get(6, 13, "Missing Face", true, false, false), nullptr);
  EXPECT_EQ(cFontObject::cached(), before + 2);
  EXPECT_DOUBLE_EQ(cFontObject::pixelSize(13), 11.0);
  EXPECT_DOUBLE_EQ(cFontObject::pixelSize(11), 9.5);
}

TEST(Fonts, StandardFaceByLanguage) {
  cFontObject::setMaker(makeFont);
  int out = -1;
  cLibLang::applyLang(lngGerman);
  setDefaultPlatformFont(&out);
  EXPECT_EQ(out, 3);
  EXPECT_STREQ(_glbalStdFont(), "Tahoma");
  EXPECT_DOUBLE_EQ(textWrapYFactor(), 1.2);
  EXPECT_STREQ(_glbalFixedFont(), "Courier");
  cLibLang::applyLang(lngTraditionalChinese);
  setDefaultPlatformFont(&out);
  EXPECT_EQ(out, 0);
  EXPECT_STREQ(_glbalStdFont(), "Microsoft JhengHei");
  EXPECT_DOUBLE_EQ(textWrapYFactor(), 1.07);
  setGlobalFixedFont("Mono");
  EXPECT_STREQ(_glbalFixedFont(), "Mono");
}

} // namespace
