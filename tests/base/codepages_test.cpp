// The text-encoding list, the page classes and the single-byte pages.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/str.h"

namespace {

using u16 = std::u16string;

u16 decode(const std::string& bytes, int cp) {
  std::vector<unsigned short> out(bytes.size() * 2 + 4, 0xBEEF);
  const long long n = __a2w(bytes.data(), static_cast<long long>(bytes.size()), out.data(),
                            static_cast<long long>(out.size()), cp);
  return u16(out.begin(), out.begin() + n);
}

std::string encode(const u16& text, int cp) {
  std::string out(text.size() * 3 + 4, '\x7f');
  const long long n = __w2a(reinterpret_cast<const unsigned short*>(text.data()),
                            static_cast<long long>(text.size()), out.data(),
                            static_cast<long long>(out.size()), cp);
  out.resize(static_cast<size_t>(n));
  return out;
}

TEST(EncodingList, HasItsThirtyNineEntriesInOrder) {
  ASSERT_EQ(__text_encoding_count(), 39);
  EXPECT_EQ(__text_encoding_cp(1), 65001);
  EXPECT_EQ(__text_encoding_cp(4), 1252);
  EXPECT_EQ(__text_encoding_cp(29), 37);
  EXPECT_EQ(__text_encoding_cp(39), 51936);
  EXPECT_EQ(__text_encoding_cp(0), 0);
  EXPECT_EQ(__text_encoding_cp(40), 0);
  for (int place = 1; place <= 39; ++place) {
    EXPECT_STRNE(__text_encoding_name(__text_encoding_cp(place)), "Unknown") << place;
  }
}

TEST(EncodingList, NamesKeepTheirTrailingBlanks) {
  EXPECT_STREQ(__text_encoding_name(932), "ANSI/OEM - Japanese, Shift-JIS ");
  EXPECT_STREQ(__text_encoding_name(950),
               "ANSI/OEM - Traditional Chinese (Taiwan; Hong Kong SAR, PRC)  ");
  EXPECT_STREQ(__text_encoding_name(737), "OEM - Greek / 437G");
  EXPECT_STREQ(__text_encoding_name(870), "Multilingual/ROECE (Latin-2) (870)");
  EXPECT_STREQ(__text_encoding_name(1253), "Unknown");
  EXPECT_STREQ(__text_encoding_name(0), "Unknown");
  EXPECT_STREQ(__text_encoding_name(-7), "Unknown");
}

TEST(CodePageClasses, EachPageInItsClass) {
  for (int cp : {37,    437,   500,   737,   850,   852,   855,   857,   858,   862,   866,
                 870,   1250,  1251,  1252,  1254,  1255,  10007, 10029, 20866, 21866, 28591,
                 28592, 28593, 28595, 28596, 28597, 28598, 28599, 28605, 0}) {
    EXPECT_TRUE(isSimpleCP(cp)) << cp;
    EXPECT_FALSE(isJIS(cp)) << cp;
    EXPECT_FALSE(isISO2022(cp)) << cp;
  }
  for (int cp : {932, 936, 949, 950}) EXPECT_TRUE(isJIS(cp) && !isSimpleCP(cp)) << cp;
  for (int cp : {50221, 50227, 51932, 51936}) EXPECT_TRUE(isISO2022(cp) && !isJIS(cp)) << cp;
  for (int cp : {1253, 65001, 1, 28594}) {
    EXPECT_FALSE(isSimpleCP(cp) || isJIS(cp) || isISO2022(cp)) << cp;
  }
}

// A characteristic byte of each single-byte page and the unit the published table gives it.
TEST(SimplePages, MapTheirCharacteristicBytes) {
  struct sCase {
    int cp;
    unsigned char byte;
    unsigned short unit;
  } cases[] = {
      {1252, 0x80, 0x20AC},  {1250, 0x8A, 0x0160},  {1251, 0xC0, 0x0410},  {1254, 0xD0, 0x011E},
      {1255, 0xE0, 0x05D0},  {850, 0xD5, 0x0131},   {858, 0xD5, 0x20AC},   {852, 0x80, 0x00C7},
      {866, 0x80, 0x0410},   {855, 0x80, 0x0452},   {437, 0x80, 0x00C7},   {862, 0x80, 0x05D0},
      {737, 0x80, 0x0391},   {857, 0x8D, 0x0131},   {20866, 0xC1, 0x0430}, {21866, 0xA4, 0x0454},
      {28591, 0xE9, 0x00E9}, {28592, 0xA1, 0x0104}, {28593, 0xA1, 0x0126}, {28595, 0xB0, 0x0410},
      {28596, 0xC7, 0x0627}, {28597, 0xC1, 0x0391}, {28598, 0xE0, 0x05D0}, {28599, 0xD0, 0x011E},
      {28605, 0xA4, 0x20AC}, {10007, 0x80, 0x0410}, {10029, 0x80, 0x00C4}, {37, 0xC1, 'A'},
      {37, 0x4A, 0x00A2},    {500, 0x4A, '['},      {870, 0xC1, 'A'},      {0, 0xE9, 0x00E9},
  };
  for (const sCase& c : cases) {
    EXPECT_EQ(__a2w(static_cast<char>(c.byte), c.cp), c.unit) << c.cp;
    EXPECT_EQ(static_cast<unsigned char>(__w2a(c.unit, c.cp)), c.byte) << c.cp;
  }
}

TEST(SimplePages, UnmappedGivesZeroForOneAndQuestionMarkInText) {
  EXPECT_EQ(__a2w('\x81', 1252), 0); // a hole in the published table
  EXPECT_EQ(__w2a(0x20AC, 28591), 0);
  EXPECT_EQ(__a2w('A', 65001), 0); // not a single-byte page
  EXPECT_EQ(encode(u"\u20AC", 28591), "?");
  EXPECT_EQ(encode(u"\u20AC", 1252), "\x80");
  EXPECT_EQ(encode(u"a\u4E00b", 1251), "a?b");
}

TEST(SimplePages, EveryMappedByteRoundTrips) {
  for (int place = 1; place <= __text_encoding_count(); ++place) {
    const int cp = __text_encoding_cp(place);
    if (!isSimpleCP(cp)) continue;
    for (int b = 1; b < 256; ++b) {
      const unsigned short u = __a2w(static_cast<char>(b), cp);
      if (!u) continue;
      EXPECT_EQ(__a2w(__w2a(u, cp), cp), u) << "cp " << cp << " byte " << b;
    }
  }
}

TEST(SimplePages, TextConversionFollowsTheLengthRules) {
  const unsigned short text[] = {'a', 'b', 0, 'c'};
  char out[8] = {};
  EXPECT_EQ(__w2a(text, 4, out, 8, 1252), 2); // stops at the zero unit even with a length
  EXPECT_EQ(__w2a_require(text, 4, 1252), 2);
  EXPECT_EQ(__w2a_require(text, -1, 1252), 3); // the terminator counts
  EXPECT_EQ(__w2a(text, -1, out, 8, 1252), 3);
  EXPECT_STREQ(out, "ab");
  EXPECT_EQ(__w2a(text, -1, out, 1, 1252), 1); // capacity is respected
  EXPECT_EQ(__w2a(text, -1, nullptr, 0, 1252), 3);

  EXPECT_EQ(decode("\xC0\xC1", 1251), u"\u0410\u0411");
  unsigned short w[4] = {9, 9, 9, 9};
  EXPECT_EQ(__a2w("xyz", -1, w, 4, 1252), 4);
  EXPECT_EQ(w[3], 0);
  EXPECT_EQ(__a2w("xyz", -1, w, 2, 1252), 2);
  EXPECT_EQ(__a2w_require("xyz", -1, 1252), 4);
  EXPECT_EQ(__a2w_require("xyz", 3, 1252), 3);
  EXPECT_EQ(__a2w("xyz", -1, nullptr, 0, 1252), 4);
}

TEST(Dispatch, UnknownPagesAndNullConvertNothing) {
  unsigned short w[4] = {7, 7, 7, 7};
  EXPECT_EQ(__a2w("abc", -1, w, 4, 1253), 0);
  EXPECT_EQ(w[0], 7);
  EXPECT_EQ(__a2w_require("abc", -1, 12345), 0);
  EXPECT_EQ(__a2w(nullptr, -1, w, 4, 1252), 0);
  EXPECT_EQ(encode(u"abc", 1253), "");
  EXPECT_EQ(encode(u"abc", 932), ""); // double-byte pages are decoded only
  EXPECT_EQ(encode(u"abc", 50221), "");
  EXPECT_EQ(decode("abc", 0), u"abc"); // 0 is the default page, UTF-8
  EXPECT_EQ(encode(u"\u00E9", 0), "\xC3\xA9");
}

TEST(PlatformText, ConvertsThroughUtf16) {
  _guardchar<unsigned short> wide;
  _pc2w("h\xC3\xA9!", wide);
  ASSERT_EQ(wide.length(), 3);
  EXPECT_EQ(wide.c_str()[1], 0xE9);
  _guardchar<char> back;
  _w2pc(wide.c_str(), back);
  EXPECT_STREQ(back.c_str(), "h\xC3\xA9!");

  _typebuf<unsigned short> units;
  _pc2w("abc", units, 2);
  EXPECT_EQ(units.count(), 2);

  _guardchar<char> enc;
  _pc2enc("\xD0\x90\xD0\xB1", -1, 1251, enc); // Cyrillic A, be
  EXPECT_STREQ(enc.c_str(), "\xC0\xE1");
  _guardchar<char> pc;
  _enc2pc(enc.c_str(), -1, 1251, pc);
  EXPECT_STREQ(pc.c_str(), "\xD0\x90\xD0\xB1");
  _enc2pc("\x82\xA0", 2, 932, pc); // hiragana a
  EXPECT_STREQ(pc.c_str(), "\xE3\x81\x82");

  char small[4];
  EXPECT_EQ(_a2pc("abcdef", small, 4), 3);
  EXPECT_STREQ(small, "abc");
  EXPECT_EQ(_pc2a(nullptr, small, 4), 0);
  _guardchar<char> copy;
  _a2pc("same", copy);
  EXPECT_STREQ(copy.c_str(), "same");
}

} // namespace
