// Double-byte, ISO-2022 and EUC pages, checked against text that iconv encoded (fixtures/).
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "base/charsets.h"
#include "base/str.h"

namespace {

std::string fixture(const std::string& name) {
  std::ifstream in(std::string(QVRACI_FIXTURES) + "/" + name, std::ios::binary);
  EXPECT_TRUE(in) << name;
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// Decodes bytes in cp and returns the platform (UTF-8) text.
std::string toUtf8(const std::string& bytes, int cp) {
  _guardchar<char> out;
  _enc2pc(bytes.data(), static_cast<long long>(bytes.size()), cp, out);
  return out.c_str();
}

std::vector<unsigned short> units(const std::string& bytes, int cp) {
  const long long n = __a2w_require(bytes.data(), static_cast<long long>(bytes.size()), cp);
  std::vector<unsigned short> out(static_cast<size_t>(n));
  EXPECT_EQ(__a2w(bytes.data(), static_cast<long long>(bytes.size()), out.data(), n, cp), n);
  return out;
}

struct sFixture {
  const char* encoded;
  const char* original;
  int cp;
};

class DecodesFixture : public testing::TestWithParam<sFixture> {};

TEST_P(DecodesFixture, ToTheOriginalText) {
  const sFixture& f = GetParam();
  EXPECT_EQ(toUtf8(fixture(f.encoded), f.cp), fixture(f.original)) << f.encoded;
}

INSTANTIATE_TEST_SUITE_P(IconvText, DecodesFixture,
                         testing::Values(sFixture{"ja.cp932", "ja.utf8", 932},
                                         sFixture{"zhs.cp936", "zhs.utf8", 936},
                                         sFixture{"ko.cp949", "ko.utf8", 949},
                                         sFixture{"zht.cp950", "zht.utf8", 950},
                                         sFixture{"jafull.iso2022jp", "jafull.utf8", 50221},
                                         sFixture{"ja0212.iso2022jp", "ja0212.utf8", 50221},
                                         sFixture{"ja.eucjp", "ja.utf8", 51932},
                                         sFixture{"ja0212.eucjp", "ja0212.utf8", 51932},
                                         sFixture{"zhs.euccn", "zhs.utf8", 51936},
                                         sFixture{"zhs.iso2022cn", "zhs.utf8", 50227},
                                         sFixture{"zht.iso2022cn", "zht.utf8", 50227}));

TEST(DoubleByte, SingleBytesAndHalfWidthKatakana) {
  EXPECT_EQ(units("A\xB1z", 932), (std::vector<unsigned short>{'A', 0xFF71, 'z'}));
  EXPECT_EQ(units("\x80", 936), (std::vector<unsigned short>{0x20AC})); // GBK's euro sign
}

TEST(DoubleByte, BadAndTruncatedSequences) {
  // A lead byte cut off by the end is dropped; with -1 the terminator still follows.
  EXPECT_EQ(units("a\x82", 932), (std::vector<unsigned short>{'a'}));
  unsigned short out[4] = {};
  EXPECT_EQ(__a2w("a\x82", -1, out, 4, 932), 2);
  EXPECT_EQ(out[1], 0);
  // An unmapped pair becomes U+FFFD; an ASCII trail byte is read again on its own.
  EXPECT_EQ(units("\x85\x40"
                  "b",
                  932),
            (std::vector<unsigned short>{0xFFFD, '@', 'b'}));
  EXPECT_EQ(units("\x85\xA0", 932), (std::vector<unsigned short>{0xFFFD}));
  EXPECT_EQ(units("\x81\x20", 949), (std::vector<unsigned short>{0xFFFD, ' '}));
  // A byte that is neither a character nor a lead.
  EXPECT_EQ(units("\xFF"
                  "c",
                  936),
            (std::vector<unsigned short>{0xFFFD, 'c'}));
  EXPECT_EQ(units("\x80"
                  "c",
                  950),
            (std::vector<unsigned short>{0x80, 'c'}));
}

TEST(Iso2022Jp, ShiftsAndEscapes) {
  // ESC ( I selects half-width katakana; SO / SI do the same in between.
  EXPECT_EQ(units("\x1b(I\x31\x1b(B"
                  "a",
                  50221),
            (std::vector<unsigned short>{0xFF71, 'a'}));
  EXPECT_EQ(units("a\x0e\x31\x0f"
                  "b",
                  50221),
            (std::vector<unsigned short>{'a', 0xFF71, 'b'}));
  // JIS X 0201 Roman: yen sign and overline in place of backslash and tilde.
  EXPECT_EQ(units("\x1b(J\\~", 50221), (std::vector<unsigned short>{0xA5, 0x203E}));
  // An escape cut off by the end stops the text; an unknown one is replaced.
  EXPECT_EQ(units("a\x1b$", 50221), (std::vector<unsigned short>{'a'}));
  EXPECT_EQ(units("\x1bZz", 50221), (std::vector<unsigned short>{0xFFFD, 'Z', 'z'}));
  // Half a two-byte character at the end is dropped; an unmapped one replaced.
  EXPECT_EQ(units("\x1b$B\x30", 50221), (std::vector<unsigned short>{}));
  EXPECT_EQ(units("\x1b$B\x22\x2F", 50221), (std::vector<unsigned short>{0xFFFD}));
}

TEST(Iso2022Cn, DesignationsEndWithTheLine) {
  const std::string text = fixture("zhs.iso2022cn"); // designates GB 2312 and shifts out
  std::vector<unsigned short> decoded = units(text + "\n\x0e\x37\x31", 50227);
  // After the line break the set is no longer designated: the bytes are replaced.
  ASSERT_GE(decoded.size(), 3u);
  EXPECT_EQ(decoded[decoded.size() - 3], '\n');
  EXPECT_EQ(decoded[decoded.size() - 2], 0xFFFD);
  // Single shift 2 without a G2 designation is replaced too.
  EXPECT_EQ(units("\x1bN\x21\x21", 50227), (std::vector<unsigned short>{0xFFFD, '!', '!'}));
}

TEST(Euc, BadSequences) {
  EXPECT_EQ(units("\x8e\x20", 51932), (std::vector<unsigned short>{0xFFFD, ' '}));
  EXPECT_EQ(units("\xa4\xa2", 51932), (std::vector<unsigned short>{0x3042}));
  EXPECT_EQ(units("\xa4", 51932), (std::vector<unsigned short>{}));
  EXPECT_EQ(units("\x8f\xa2", 51932), (std::vector<unsigned short>{}));
  EXPECT_EQ(units("\xb0\xa1", 51936), (std::vector<unsigned short>{0x554A}));
  EXPECT_EQ(units("\xb0\x41", 51936), (std::vector<unsigned short>{0xFFFD, 'A'}));
}

TEST(CharacterSets, DecodeTheirOwnCodes) {
  unsigned short u = 0;
  const unsigned char jis[] = {0x30, 0x21}; // first kanji row
  EXPECT_EQ(jisx0208_mbtowc(&u, jis, 2), 2);
  EXPECT_EQ(u, 0x4E9C);
  EXPECT_EQ(jisx0208_mbtowc(&u, jis, 1), -1);
  const unsigned char gb[] = {0x30, 0x21};
  EXPECT_EQ(gb2312_mbtowc(&u, gb, 2), 2);
  EXPECT_EQ(u, 0x554A);
  const unsigned char cns1[] = {0x44, 0x21};
  EXPECT_EQ(cns11643_1_mbtowc(&u, cns1, 2), 2);
  EXPECT_EQ(u, 0x4E00);
  const unsigned char cns2[] = {0x21, 0x21};
  EXPECT_EQ(cns11643_2_mbtowc(&u, cns2, 2), 2);
  EXPECT_EQ(u, 0x4E42);
  const unsigned char outside[] = {0x7F, 0x21};
  EXPECT_EQ(jisx0212_mbtowc(&u, outside, 2), 0);
  const unsigned char kana = 0xB1;
  EXPECT_EQ(jisx0201_mbtowc(&u, &kana, 1), 1);
  EXPECT_EQ(u, 0xFF71);
  const unsigned char high = 0xE0;
  EXPECT_EQ(jisx0201_mbtowc(&u, &high, 1), 0);
}

// Random bytes through every decoding page: never past the capacity, and the sizing
// companion agrees with the conversion.
TEST(AllDecoders, RandomBytesStayInBounds) {
  std::mt19937 rng(20261121);
  const int pages[] = {65001, 1252, 37, 932, 936, 949, 950, 50221, 50227, 51932, 51936};
  for (int round = 0; round < 300; ++round) {
    std::string bytes(rng() % 64, '\0');
    for (char& c : bytes) {
      c = static_cast<char>(round % 3 ? rng() : "\x1b$()ABDGHIJN\x0e\x0f\x8e\x8f\xa1"[rng() % 18]);
    }
    for (int cp : pages) {
      const long long n = static_cast<long long>(bytes.size());
      const long long need = __a2w_require(bytes.data(), n, cp);
      std::vector<unsigned short> out(static_cast<size_t>(need) + 1, 0xBEEF);
      EXPECT_EQ(__a2w(bytes.data(), n, out.data(), need, cp), need) << cp;
      EXPECT_EQ(out[static_cast<size_t>(need)], 0xBEEF) << cp;
      const long long half = need / 2;
      std::vector<unsigned short> small(static_cast<size_t>(half) + 1, 0xBEEF);
      EXPECT_LE(__a2w(bytes.data(), n, small.data(), half, cp), half) << cp;
      EXPECT_EQ(small[static_cast<size_t>(half)], 0xBEEF) << cp;
    }
  }
}

} // namespace
