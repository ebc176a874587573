// The hex helpers, the plain compilers and the pattern check.
#include <gtest/gtest.h>

#include <string>

#include "base/str.h"
#include "describe.h"

namespace {

std::string bytesOf(const char* text, long long length = -1) {
  _typebuf<unsigned char> out;
  if (!sHexSearchRule::cnvHexToBytes(out, text, length)) return "FAIL";
  std::string s;
  for (unsigned char b : out) {
    if (!s.empty()) s += ' ';
    s += std::to_string(b);
  }
  return s;
}

TEST(HexToBytes, DigitsSpacesAndLoneDigits) {
  EXPECT_EQ(bytesOf("4d5A"), "77 90");
  EXPECT_EQ(bytesOf("4 d5A"), "4 213 10");
  EXPECT_EQ(bytesOf("1\t2\r\n3"), "1 2 3");
  EXPECT_EQ(bytesOf("  "), ""); // accepted, no bytes
  EXPECT_EQ(bytesOf("4d5A", 3), "77 5");
  EXPECT_EQ(bytesOf("4d", 0), "FAIL");
  EXPECT_EQ(bytesOf(nullptr), "FAIL");
  EXPECT_EQ(bytesOf("4g"), "FAIL");
  EXPECT_EQ(bytesOf("4\v5"), "FAIL"); // vertical tab is no white space here
  EXPECT_EQ(bytesOf("4?"), "FAIL");
  EXPECT_EQ(bytesOf("41\0"
                    "42",
                    5),
            "FAIL"); // an explicit length reads past the zero

  const unsigned short wide[] = {'f', 'F', ' ', '1', 0};
  _typebuf<unsigned char> out;
  ASSERT_TRUE(sHexSearchRule::cnvHexToBytes(out, wide, -1));
  ASSERT_EQ(out.count(), 2);
  EXPECT_EQ(out[0], 0xFF);
  EXPECT_EQ(out[1], 1);
  const unsigned short wideBad[] = {'4', 0x0134, 0};
  EXPECT_FALSE(sHexSearchRule::cnvHexToBytes(out, wideBad, -1));
}

TEST(HexDigits, IsHexAndHchar) {
  EXPECT_TRUE(sHexSearchRule::isHex('0'));
  EXPECT_TRUE(sHexSearchRule::isHex('f'));
  EXPECT_FALSE(sHexSearchRule::isHex('F')); // callers lower-case first
  EXPECT_FALSE(sHexSearchRule::isHex('g'));
  EXPECT_EQ(sHexSearchRule::hchar('F'), 15);
  EXPECT_EQ(sHexSearchRule::hchar('a'), 10);
  EXPECT_EQ(sHexSearchRule::hchar('7'), 7);
  EXPECT_EQ(sHexSearchRule::hchar('?'), 255);
  EXPECT_EQ(sHexSearchRule::hchar('\xC1'), 255);
}

TEST(CnvHex, OneExactBytePerPosition) {
  sHexSearchRule::_pattern p;
  ASSERT_TRUE(sHexSearchRule::cnvHex(p, "504b 0304"));
  EXPECT_EQ(describe(p), (positions{"50", "4B", "03", "04"}));
  const unsigned short wide[] = {'2', '5', 0};
  ASSERT_TRUE(sHexSearchRule::cnvHex(p, wide));
  EXPECT_EQ(describe(p), (positions{"25"}));
  EXPECT_FALSE(sHexSearchRule::cnvHex(p, "   "));
  EXPECT_FALSE(sHexSearchRule::cnvHex(p, "5?"));
  EXPECT_FALSE(sHexSearchRule::cnvHex(p, static_cast<const char*>(nullptr)));
}

std::vector<std::string> text(const char* t, int encoding, bool sensitive) {
  sHexSearchRule::_pattern p;
  if (!sHexSearchRule::cnvText(p, t, encoding, sensitive)) return {"FAIL"};
  return describe(p);
}

TEST(CnvText, Utf16AndCodePages) {
  EXPECT_EQ(text("Ab", 0, true), (positions{"41", "00", "62", "00"}));
  EXPECT_EQ(text("Ab", 0, false), (positions{"41,61", "00", "42,62", "00"}));
  EXPECT_EQ(text("\xD0\x96", 0, false), (positions{"16,36", "04"})); // Cyrillic Zhe
  EXPECT_EQ(text("Ab", 1, true), (positions{"41", "62"}));           // UTF-8
  EXPECT_EQ(text("\xC3\xA9", 1, false), (positions{"C3", "89,A9"}));
  EXPECT_EQ(text("\xD0\x96", 3, true), (positions{"C6"})); // CP-1251
  EXPECT_EQ(text("\xD0\x96", 3, false), (positions{"C6,E6"}));
  EXPECT_EQ(text("A", 29, false), (positions{"81,C1"}));        // EBCDIC 037
  EXPECT_EQ(text("\xE2\x82\xAC", 18, true), (positions{"3F"})); // no euro in 8859-1
}

TEST(CnvText, Refusals) {
  EXPECT_EQ(text("a", 40, true), kFail); // past the list
  EXPECT_EQ(text("a", -1, true), kFail);
  EXPECT_EQ(text("a", 32, true), kFail); // Shift-JIS is decoded only: no bytes
  EXPECT_EQ(text("", 4, true), kFail);
  EXPECT_EQ(text("", 0, true), kFail);
  EXPECT_EQ(text(nullptr, 0, true), kFail);
}

bool good(const char* pattern) {
  sHexSearchRule::_pattern p;
  EXPECT_TRUE(sHexSearchRule::cnvAdv(p, pattern)) << pattern;
  return sHexSearchRule::good(p);
}

TEST(Good, EightEmptyPositionsOrAnEmptyEnd) {
  EXPECT_TRUE(good("41"));
  EXPECT_TRUE(good("{} 41"));
  EXPECT_FALSE(good("41 {}")); // the run at the last position is cut there
  EXPECT_TRUE(good("{}{}{}{}{}{}{} 41"));
  EXPECT_FALSE(good("{}{}{}{}{}{}{}{} 41"));
  EXPECT_FALSE(good("`a\\`b`")); // ends in the empty position of the escaped backtick
  EXPECT_FALSE(sHexSearchRule::good(sHexSearchRule::_pattern()));
}

} // namespace
