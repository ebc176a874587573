// UTF-8, case, white space, composition, bounded functions, keys and hex readers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/hex.h"
#include "base/str.h"

namespace {

using units = std::vector<unsigned short>;

units fromUtf8(const std::string& bytes, long long cap = 64) {
  units out(static_cast<size_t>(cap));
  long long consumed = -1;
  const long long n =
      utf82w(bytes.data(), static_cast<long long>(bytes.size()), out.data(), cap, &consumed);
  out.resize(static_cast<size_t>(n));
  return out;
}

std::string toUtf8(const units& text, long long cap = 64) {
  std::string out(static_cast<size_t>(cap), '\0');
  const long long n = w2utf8(text.data(), static_cast<long long>(text.size()), out.data(), cap);
  out.resize(static_cast<size_t>(n));
  return out;
}

const unsigned short* w(const char16_t* s) {
  return reinterpret_cast<const unsigned short*>(s);
}

TEST(Utf8, LenientDecoding) {
  EXPECT_EQ(fromUtf8("\xC3\x28"), (units{0xC3, 0x28}));
  EXPECT_EQ(fromUtf8("\xF0\x9F\x98\x80"), (units{0xF0, 0x9F, 0x98, 0x80})); // never 4 bytes
  EXPECT_EQ(fromUtf8("\xE2\x82\xAC"), (units{0x20AC}));
  EXPECT_EQ(fromUtf8("\xC3\xA9"), (units{0xE9}));
  EXPECT_EQ(fromUtf8("\xC0\x80"), (units{0})); // over-long forms are not checked
  EXPECT_EQ(fromUtf8("\xED\xA0\x80"), (units{0xD800}));
  EXPECT_EQ(fromUtf8("\x80\xBF"), (units{0x80, 0xBF}));
  EXPECT_EQ(fromUtf8("\xE2\x82"
                     "A"),
            (units{0xE2, 0x82, 'A'}));
}

TEST(Utf8, StopsBeforeACutSequenceAndAtCapacity) {
  units out(8);
  long long consumed = 0;
  EXPECT_EQ(utf82w("a\xE2\x82", 3, out.data(), 8, &consumed), 1);
  EXPECT_EQ(consumed, 1);
  EXPECT_EQ(utf82w("abcd", 4, out.data(), 2, &consumed), 2);
  EXPECT_EQ(consumed, 2);
  EXPECT_EQ(utf82w_require("ab\xC3\xA9", -1), 4); // three units and the terminator
  EXPECT_EQ(utf82w("ab", -1, out.data(), 8), 3);
  EXPECT_EQ(out[2], 0);
}

TEST(Utf16ToUtf8, UnitsAndSurrogatesOneByOne) {
  EXPECT_EQ(toUtf8({'A', 0xE9, 0x20AC}), "A\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(toUtf8({0xD83D, 0xDE00}), "\xED\xA0\xBD\xED\xB8\x80");
  EXPECT_EQ(toUtf8({'a', 0x20AC}, 3), "a"); // a sequence that does not fit is not begun
  EXPECT_EQ(w2utf8_require(w(u"\u00E9x"), -1), 4);
  long long consumed = 0;
  char out[8];
  EXPECT_EQ(w2utf8(w(u"\u20ACab"), 3, out, 4, &consumed), 4);
  EXPECT_EQ(consumed, 2);
}

TEST(Case, UnitsMapThroughTheTables) {
  EXPECT_EQ(__acp_lower(static_cast<unsigned short>(0xC4)), 0xE4);
  EXPECT_EQ(__acp_upper(static_cast<unsigned short>(0xE4)), 0xC4);
  EXPECT_EQ(__acp_lower(static_cast<unsigned short>(0x0410)), 0x0430); // Cyrillic
  EXPECT_EQ(__acp_upper(static_cast<unsigned short>(0x03C9)), 0x03A9); // Greek omega
  EXPECT_EQ(__acp_lower(static_cast<unsigned short>(0xFF21)), 0xFF41); // full-width A
  EXPECT_EQ(__acp_lower(static_cast<unsigned short>(0xFF41)), 0xFF41);
  EXPECT_EQ(__acp_lower(static_cast<unsigned short>('5')), '5');
  EXPECT_EQ(__acp_upper(static_cast<unsigned short>(0x4E00)), 0x4E00);
}

TEST(Case, BytesChangeOnlyForAscii) {
  EXPECT_EQ(__acp_lower('Q'), 'q');
  EXPECT_EQ(__acp_upper('q'), 'Q');
  EXPECT_EQ(__acp_lower('\xC4'), '\xC4');
  EXPECT_EQ(__acp_upper('\xE4'), '\xE4');
  EXPECT_EQ(__acp_lower('@'), '@');
  EXPECT_EQ(__acp_upper('['), '[');
}

TEST(WhiteSpace, ExactlyFourValues) {
  int count = 0;
  for (int c = 0; c < 65536; ++c) count += __acp_isspace(static_cast<unsigned short>(c));
  EXPECT_EQ(count, 4);
  for (char c : {'\t', '\n', '\r', ' '}) EXPECT_TRUE(__acp_isspace(c));
  EXPECT_FALSE(__acp_isspace('\v'));
  EXPECT_FALSE(__acp_isspace('\f'));
  EXPECT_FALSE(__acp_isspace('\xA0'));
}

std::string compose(const units& text, bool swap = false) {
  _guardchar<char> out;
  _precompose_glyphs(text.data(), static_cast<long long>(text.size()), out, swap);
  return out.c_str();
}

TEST(Composition, PairsOnly) {
  EXPECT_EQ(compose({'e', 0x0301}), "\xC3\xA9");
  EXPECT_EQ(compose({0x0301}), "\xCC\x81");
  EXPECT_EQ(compose({'a', 'e', 0x0301, 'x'}), "a\xC3\xA9x");
  // The result is not combined again: A + ring + acute stays Å followed by the acute.
  EXPECT_EQ(compose({'A', 0x030A, 0x0301}), "\xC3\x85\xCC\x81");
  EXPECT_EQ(compose({0x0001, 'a', 0x001F}), ".a.");
  EXPECT_EQ(compose({0x6500, 0x0103}, true), "\xC3\xA9"); // big-endian units, swapped
  EXPECT_EQ(compose({}), "");
  _guardchar<char> out;
  out.set("stale");
  _precompose_glyphs(nullptr, 3, out, false);
  EXPECT_STREQ(out.c_str(), "");
}

TEST(Composition, TableFollowsTheUnicodeData) {
  const unsigned short shin[] = {0xFB49, 0x05C1};
  const unsigned short sin[] = {0xFB49, 0x05C2};
  EXPECT_EQ(_get_precomposed_glyph(shin), 0xFB2C);
  EXPECT_EQ(_get_precomposed_glyph(sin), 0xFB2D);
  const unsigned short hangulless[] = {'e', 'e'};
  EXPECT_EQ(_get_precomposed_glyph(hangulless), 0);
  EXPECT_EQ(_get_precomposed_glyph(nullptr), 0);
}

TEST(BoundedCopies, TruncateAndTerminate) {
  char d[4];
  EXPECT_EQ(_strcpy_s(d, 4, "abcdef"), 0);
  EXPECT_STREQ(d, "abc");
  _strcpy_s(d, 4, "ab");
  EXPECT_STREQ(d, "ab");
  EXPECT_EQ(_strcpy_s(nullptr, 4, "ab"), 0);

  char e[8] = "zzzzzzz";
  _strncpy_s(e, 8, "abcdef", 3);
  EXPECT_STREQ(e, "abc");
  _strncpy_s(e, 4, "abcdef", 10);
  EXPECT_STREQ(e, "abc");

  unsigned short t[6] = {};
  _wcscpy_s(t, 6, w(u"ab"));
  _wcscat_s(t, 6, w(u"cdefg"));
  EXPECT_EQ(_wcscmp(t, w(u"abcde")), 0);
  _wcsncpy_s(t, 6, w(u"xyz"), 2);
  EXPECT_EQ(_wcscmp(t, w(u"xy")), 0);
  unsigned short full[3] = {'a', 'b', 'c'}; // no terminator inside the size
  _wcscat_s(full, 3, w(u"d"));
  EXPECT_EQ(full[2], 0);
}

TEST(Formatting, EightBitRulesAndCapacity) {
  char d[16];
  EXPECT_EQ(_sprintf_s(d, 16, "%d-%s", 42, "x"), 4);
  EXPECT_STREQ(d, "42-x");
  EXPECT_EQ(_sprintf_s(d, 4, "%s", "truncated"), 3);
  EXPECT_STREQ(d, "tru");

  unsigned short wd[8];
  EXPECT_EQ(_swprintf_s(wd, 8, w(u"%s=%d\u00E9"), "k", 7), 4);
  EXPECT_EQ(_wcscmp(wd, w(u"k=7\u00E9")), 0);
  EXPECT_EQ(_swprintf_s(wd, 3, w(u"%d"), 12345), 2);
  EXPECT_EQ(_wcscmp(wd, w(u"12")), 0);

  int a = 0, b = 0;
  EXPECT_EQ(_sscanf_s("10 20", "%d %d", &a, &b), 2);
  EXPECT_EQ(a + b, 30);
  EXPECT_EQ(_swscanf_s(w(u"x=5"), w(u"x=%d"), &a), 1);
  EXPECT_EQ(a, 5);
}

TEST(Searching, FirstOccurrenceWithOrWithoutCase) {
  const unsigned short* text = w(u"Hello World");
  EXPECT_EQ(_wcsstr(text, w(u"World")), text + 6);
  EXPECT_EQ(_wcsstr(text, w(u"world")), nullptr);
  EXPECT_EQ(_wcsistr(text, w(u"WORLD")), text + 6);
  EXPECT_EQ(_wcsstr(text, w(u"Hello World!")), nullptr);
  EXPECT_EQ(_wcsstr(text, w(u"World"), 8), nullptr); // the text is cut before the match
  EXPECT_EQ(_wcsstr(text, w(u"Wxyz"), -1, 1), text + 6);
  EXPECT_EQ(_wcsstr(nullptr, w(u"a")), nullptr);
  EXPECT_EQ(_wcschr(text, 'o'), text + 4);
  EXPECT_EQ(_wcsrchr(text, 'o'), text + 7);
  EXPECT_EQ(_wcschr(text, 'q'), nullptr);
  EXPECT_EQ(_wcslen(text), 11);
  EXPECT_EQ(_wcslen(nullptr), 0);
  EXPECT_EQ(_wcscmp(text, nullptr), 0);
  EXPECT_EQ(_wcscmp(w(u"ab"), w(u"b")), -1);
}

TEST(Comparing, CaseInsensitiveThroughLower) {
  EXPECT_EQ(__stricmp("abc", "ABC"), 0);
  EXPECT_EQ(__stricmp("abc", "abd"), -1);
  EXPECT_EQ(__stricmp("b", "A"), 1);
  EXPECT_EQ(__stricmp(nullptr, "a"), -1);
  EXPECT_EQ(__stricmp("ab", "abc"), -1);
  EXPECT_EQ(__wcsicmp(w(u"\u00C4bc"), w(u"\u00E4BC")), 0);
  EXPECT_EQ(__wcsicmp(w(u"abcX"), w(u"ABCy"), 3), 0);
  EXPECT_EQ(__wcsnicmp(w(u"abcX"), w(u"ABCy"), 4), -1);
  EXPECT_EQ(__wcsicmp(w(u"a"), nullptr), -1);
  EXPECT_EQ(__memicmp("AbC\0x", "aBc\0y", 4), 0);
  EXPECT_EQ(__memicmp("AbC\0x", "aBc\0y", 5), -1);
}

TEST(StringKey, OrdersLikeItsBytes) {
  const char* words[] = {"", "a", "ab", "abc", "abcd", "abcde", "b", "\xC3\xA9", "z"};
  for (const char* x : words) {
    for (const char* y : words) {
      const int expected = std::string(x).compare(y);
      const int got = cStringKey(x).cmp(cStringKey(y));
      EXPECT_EQ(got < 0, expected < 0) << x << " vs " << y;
      EXPECT_EQ(got == 0, expected == 0) << x << " vs " << y;
    }
  }
  EXPECT_TRUE(cStringKey("abc") < cStringKey("abd"));
  EXPECT_TRUE(cStringKey("abcd") <= cStringKey("abcd"));
  EXPECT_EQ(cStringKey(w(u"\u00E9t\u00E9")), cStringKey("\xC3\xA9t\xC3\xA9"));
  EXPECT_EQ(cStringKey("abcde").words(), 2);
  EXPECT_EQ(cStringKey("ab").utf8(), std::string("ab\0\0", 4));
  EXPECT_EQ(cStringKey("abcd").utf8(), "abcd");
}

TEST(CompactStr, LengthRules) {
  cCompactStr s;
  s.set(w(u"h\u00E9llo"));
  EXPECT_STREQ(s.c_str(), "h\xC3\xA9llo");
  EXPECT_EQ(s.len(), 5);
  s.set(w(u"hello"), 2);
  EXPECT_STREQ(s.c_str(), "he");
  EXPECT_EQ(s.len(), 2);
  s.set(w(u"hello"), 0);
  EXPECT_STREQ(s.c_str(), "");
  EXPECT_EQ(s.len(), 0);
  s.set(w(u"hello"), 40000); // negative as a 16-bit value
  EXPECT_EQ(s.len(), 0);
  s.set(w(u"hello"), 70000);
  EXPECT_EQ(s.len(), 5);
  s.set("caf\xC3\xA9", 65535);
  EXPECT_STREQ(s.c_str(), "caf\xC3\xA9");
  EXPECT_EQ(s.len(), 4);
  s.set(static_cast<const char*>(nullptr));
  EXPECT_STREQ(s.c_str(), "");
}

TEST(Hex, StrictReaders) {
  EXPECT_EQ(getHexb("4d"), 0x4D);
  EXPECT_EQ(getHexb("FF"), 255);
  EXPECT_EQ(getHexb("g0"), -1);
  EXPECT_EQ(getHexb("0"), -1); // the terminator is no digit
  EXPECT_EQ(getHexb(static_cast<const char*>(nullptr)), -1);
  EXPECT_EQ(getHexb(w(u"aB")), 0xAB);

  _typebuf<unsigned char> out;
  ASSERT_TRUE(hexToBytes("4D5a00", out));
  ASSERT_EQ(out.count(), 3);
  EXPECT_EQ(out[1], 0x5A);
  EXPECT_FALSE(hexToBytes("4D5", out));
  EXPECT_FALSE(hexToBytes("", out));
  EXPECT_FALSE(hexToBytes("4D 5", out));
  EXPECT_FALSE(hexToBytes(static_cast<const char*>(nullptr), out));
  EXPECT_TRUE(hexToBytes(w(u"ff01"), out));
  EXPECT_EQ(out[0], 0xFF);

  // Whole numbers: decimal or 0x hex, nothing around them; past 64 bits, the largest.
  const struct {
    const char* text;
    bool ok;
    unsigned long long value;
  } kNumbers[] = {{"0", true, 0},
                  {"4096", true, 4096},
                  {"0x1F", true, 31},
                  {"0X1f", true, 31},
                  {"0x", false, 0},
                  {"", false, 0},
                  {" 1", false, 0},
                  {"1a", false, 0},
                  {"-1", false, 0},
                  {"0xg", false, 0},
                  {"99999999999999999999999", true, ~0ULL}};
  for (const auto& n : kNumbers) {
    unsigned long long value = 0;
    EXPECT_EQ(readWholeNumber(n.text, value), n.ok) << n.text;
    if (n.ok) {
      EXPECT_EQ(value, n.value) << n.text;
    }
  }
}

} // namespace

TEST(Unicode, PairedConversionRoundTripsAndReplacesBadInput) {
  struct sCase {
    const char* utf8;
    std::vector<unsigned short> units;
    const char* back; // what the units give again
  } cases[] = {
      {"a\xC3\xA9", {'a', 0xE9}, "a\xC3\xA9"},
      {"\xE6\x97\xA5", {0x65E5}, "\xE6\x97\xA5"},
      {"\xF0\x9F\x98\x80", {0xD83D, 0xDE00}, "\xF0\x9F\x98\x80"}, // one pair
      {"\xC3(", {0xFFFD, '('}, "\xEF\xBF\xBD("},                  // a lead without its tail
      {"\xC0\x80", {0xFFFD}, "\xEF\xBF\xBD"},                     // overlong
      {"\xED\xA0\x80", {0xFFFD}, "\xEF\xBF\xBD"},                 // an encoded surrogate
      {"\xF4\x90\x80\x80", {0xFFFD}, "\xEF\xBF\xBD"},             // above U+10FFFF
      {"\xFF", {0xFFFD}, "\xEF\xBF\xBD"},
      {"\xF0\x9F\x98", {0xFFFD}, "\xEF\xBF\xBD"}, // cut off by the end
  };
  for (const sCase& c : cases) {
    _typebuf<unsigned short> units;
    utf8ToUnits(c.utf8, -1, units);
    EXPECT_EQ(std::vector<unsigned short>(units.begin(), units.end()), c.units) << c.utf8;
    _guardchar<char> back;
    unitsToUtf8(units.data(), units.count(), back);
    EXPECT_STREQ(back.c_str(), c.back);
  }
  const unsigned short lone[] = {'x', 0xDC00, 0xD800};
  _guardchar<char> out;
  unitsToUtf8(lone, 3, out);
  EXPECT_STREQ(out.c_str(), "x\xEF\xBF\xBD\xEF\xBF\xBD");
}
