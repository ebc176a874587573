// Compiling Advanced/HEX patterns: documented examples, failures, and a differential test
// against an independent model of the language.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "describe.h"

namespace {

TEST(AdvBytes, NibblesPairAndCloseAlone) {
  EXPECT_EQ(adv("4D5A"), (positions{"4D", "5A"}));
  EXPECT_EQ(adv("4d 5a"), (positions{"4D", "5A"}));
  EXPECT_EQ(adv("4 D5A"), (positions{"04", "D5", "0A"}));
  EXPECT_EQ(adv("123"), (positions{"12", "03"}));
  EXPECT_EQ(adv("?"), (positions{"00-0F"}));
  EXPECT_EQ(adv("??"), (positions{"*"}));
  EXPECT_EQ(adv("4?"), (positions{"40-4F"}));
  EXPECT_EQ(adv("?4").front().substr(0, 11), "04,14,24,34");
  EXPECT_EQ(adv("5\"a\""), (positions{"05", "61", "00"}));
  EXPECT_EQ(adv("5+6"), (positions{"05", "06"}));
}

TEST(AdvBytes, NotByte) {
  EXPECT_EQ(adv("!00!"), (positions{"^00"}));
  EXPECT_EQ(adv("!A!"), (positions{"^0A"}));
  EXPECT_EQ(adv("!ff!41"), (positions{"^FF", "41"}));
  for (const char* bad : {"!!", "!123!", "!g!", "!4", "!?!", "! 4!"})
    EXPECT_EQ(adv(bad), kFail) << bad;
}

TEST(AdvAlternatives, ItemsApplyInOrder) {
  EXPECT_EQ(adv("{41,61}"), (positions{"41,61"}));
  EXPECT_EQ(adv("{4?,!4F!}"), (positions{"40-4E"}));
  EXPECT_EQ(adv("{??,!00!}"), (positions{"^00"}));
  EXPECT_EQ(adv("{!00!,??}"), (positions{"*"}));
  EXPECT_EQ(adv("{41,}"), (positions{"41"}));
  EXPECT_EQ(adv("{12 , 34}"), (positions{"12,34"}));
  EXPECT_EQ(adv("{ 5 }"), (positions{"05"}));
  EXPECT_EQ(adv("{}"), (positions{""}));
  EXPECT_EQ(adv("{   }"), (positions{""}));
  EXPECT_EQ(adv("{!41! ,42}"), (positions{"42"}));
  for (const char* bad : {"{,41}", "{41,,61}", "{414}", "{1 2}", "{41!42!}", "{41 !42!}",
                          "{!42!43}", "{41", "{4x}", "{!4}", "{!123!}", "{'a'}", "{\t41}"}) {
    EXPECT_EQ(adv(bad), kFail) << bad;
  }
}

TEST(AdvMask, ValueAndMask) {
  EXPECT_EQ(adv("[41/DF]"), (positions{"41,61"}));
  EXPECT_EQ(adv("[4142/FFDF]"), (positions{"41", "42,62"}));
  EXPECT_EQ(adv("[0/F0]").front(), "00-0F");
  EXPECT_EQ(adv("[00/00]"), (positions{"*"}));
  for (const char* bad : {"[41/0F]", "[4142/FF]", "[41DF]", "[/FF]", "[41/]", "[ /FF]", "[41/DF",
                          "[4g/FF]", "[41/DF/00]"}) {
    EXPECT_EQ(adv(bad), kFail) << bad;
  }
}

TEST(AdvAnyRun, CountsInDecimalOrHex) {
  EXPECT_EQ(adv("*4096*").size(), 4096u);
  EXPECT_EQ(adv("*0x10*"), positions(16, "*"));
  EXPECT_EQ(adv("*1*41"), (positions{"*", "41"}));
  EXPECT_EQ(adv("*00004*").size(), 4u);
  for (const char* bad :
       {"*0*", "*4097*", "*123456*", "**", "*x*", "*0x*", "*0x1001*", "* 4*", "*-1*", "*4"}) {
    EXPECT_EQ(adv(bad), kFail) << bad;
  }
}

TEST(AdvText, AsciiAndCaseModes) {
  EXPECT_EQ(adv("'ab'"), (positions{"61", "62"}));
  EXPECT_EQ(adv("-'ab'"), (positions{"41,61", "42,62"}));
  EXPECT_EQ(adv("-'a'+'a'"), (positions{"41,61", "61"}));
  EXPECT_EQ(adv("-'1.'"), (positions{"31", "2E"}));
  EXPECT_EQ(adv("'it\\'s'"), (positions{"69", "74", "27", "73"}));
  EXPECT_EQ(adv("'a\\b'"), (positions{"61", "5C", "62"})); // other backslashes are text
  EXPECT_EQ(adv("'\x80'"), (positions{"80"}));
  for (const char* bad : {"''", "'abc", "'\x81'", "'caf\xC3\xA9'", "'a\\'"}) {
    EXPECT_EQ(adv(bad), kFail) << bad;
  }
}

TEST(AdvText, Utf16LittleEndian) {
  EXPECT_EQ(adv("\"A\""), (positions{"41", "00"}));
  EXPECT_EQ(adv("-\"a\""), (positions{"41,61", "00"}));
  EXPECT_EQ(adv("\"\\\"\""), (positions{"22", "00"}));
  // Two positions per byte written: é is two bytes, one unit; the rest stays empty.
  EXPECT_EQ(adv("\"\xC3\xA9\""), (positions{"E9", "00", "", ""}));
  // Insensitive: the two bytes of a unit are judged independently.
  EXPECT_EQ(adv("-\"\xD0\xB0\""), (positions{"10,30", "04", "", ""}));
  EXPECT_EQ(adv("\"\""), kFail);
}

TEST(AdvText, Utf8) {
  EXPECT_EQ(adv("`\xC3\xA9`"), (positions{"C3", "A9"}));
  EXPECT_EQ(adv("-`\xC3\xA9`"), (positions{"C3", "89,A9"}));
  EXPECT_EQ(adv("-`aB`"), (positions{"41,61", "42,62"}));
  // A lone byte of 0x80 or above is read as Latin-1 and written back in UTF-8.
  EXPECT_EQ(adv("`\xFF`"), (positions{"C3", "BF"}));
  // An escaped backtick is counted with its backslash but filled without it.
  EXPECT_EQ(adv("`a\\`b`"), (positions{"61", "60", "62", ""}));
  // U+0130 lower-cases to one byte but upper-cases to two: the lengths differ.
  EXPECT_EQ(adv("-`\xC4\xB0`"), kFail);
  EXPECT_EQ(adv("`\xC4\xB0`"), (positions{"C4", "B0"}));
  EXPECT_EQ(adv("``"), kFail);
  EXPECT_EQ(adv("`abc"), kFail);
}

TEST(AdvSyntax, CharactersOutsideTheTokenSetFail) {
  for (const char* bad :
       {"", "41\t42", "41\n", "4G", "41,42", "41}", "]", "/", "41#", "\\41", "\xC3\xA9"}) {
    EXPECT_EQ(adv(bad), kFail) << bad;
  }
  sHexSearchRule::_pattern p;
  EXPECT_FALSE(sHexSearchRule::cnvAdv(p, nullptr));
  EXPECT_EQ(adv("   "), kFail); // nothing but separators
  EXPECT_EQ(adv("+-"), kFail);
}

TEST(AdvSyntax, LengthIsBounded) {
  std::string many;
  for (int i = 0; i < 16; ++i) many += "*4096*";
  EXPECT_EQ(adv(many.c_str()).size(), 65536u);
  many += "41";
  EXPECT_EQ(adv(many.c_str()), kFail);
}

TEST(AdvSyntax, FaultsNameTheTokenThatIsWrong) {
  using S = sHexSearchRule;
  std::string many;
  for (int i = 0; i < 16; ++i) many += "*4096*";
  const struct {
    std::string text;
    S::eAdvFault fault;
    long long at;
  } cases[] = {{"4D 5A", S::afNone, 5},     {"", S::afEmpty, 0},
               {" + ", S::afEmpty, 3},      {"41 4G", S::afNotHex, 4},
               {"41 !4", S::afNotByte, 3},  {"{41,", S::afAlternatives, 0},
               {"41 [41/FF", S::afMask, 3}, {"*0*", S::afAnyRun, 0},
               {"41 'ab", S::afText, 3},    {many + "41", S::afTooLong, 96}};
  for (const auto& c : cases) {
    long long at = -1;
    EXPECT_EQ(S::advFault(c.text.c_str(), at), c.fault) << c.text;
    EXPECT_EQ(at, c.at) << c.text;
    S::_pattern p;
    EXPECT_EQ(S::cnvAdv(p, c.text.c_str()), c.fault == S::afNone) << c.text;
  }
}

TEST(AdvSyntax, OutOfBoundsIndexThrows) {
  sHexSearchRule::_pattern p;
  ASSERT_TRUE(sHexSearchRule::cnvAdv(p, "41"));
  EXPECT_THROW((void)p[1], cException);
}

// ---- Differential test --------------------------------------------------------------
// A generator writes random valid patterns together with the sets each position must
// hold, computed by a model written independently of the compiler.

using set = std::set<int>;

struct sModel {
  std::string text;
  std::vector<set> expected;
  bool sensitive = true;
};

std::string hex2(int v) {
  char b[3];
  snprintf(b, sizeof b, "%02X", v);
  return b;
}

set nibblePair(int hi, int lo) { // -1 is a wildcard
  set s;
  for (int v = 0; v < 256; ++v) {
    if ((hi < 0 || v >> 4 == hi) && (lo < 0 || (v & 15) == lo)) s.insert(v);
  }
  return s;
}

set all() {
  return nibblePair(-1, -1);
}

void addToken(sModel& m, std::mt19937& rng) {
  auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
  auto nib = [&](int& v) { // a digit or a wildcard
    v = pick(5) == 0 ? -1 : pick(16);
    return v < 0 ? std::string("?")
                 : std::string(1, "0123456789abcdefABCDEF"[v + (v > 9 && pick(2) ? 6 : 0)]);
  };
  switch (pick(10)) {
  case 0: { // a pair
    int hi, lo;
    m.text += nib(hi);
    m.text += nib(lo);
    m.expected.push_back(nibblePair(hi, lo));
    break;
  }
  case 1: { // a lone nibble closed by a space
    int lo;
    m.text += nib(lo) + " ";
    m.expected.push_back(nibblePair(0, lo));
    break;
  }
  case 2: { // !hh!
    const int v = pick(256);
    set s = all();
    s.erase(v);
    m.text += "!" + hex2(v) + "!";
    m.expected.push_back(s);
    break;
  }
  case 3: { // alternatives
    set s;
    m.text += "{";
    const int items = 1 + pick(4);
    for (int i = 0; i < items; ++i) {
      if (i) m.text += pick(2) ? "," : " , ";
      if (pick(3) == 0) {
        const int v = pick(256);
        m.text += "!" + hex2(v) + "!";
        s.erase(v);
      } else {
        int hi, lo;
        std::string a = nib(hi), b = nib(lo);
        m.text += a + b;
        for (int v : nibblePair(hi, lo)) s.insert(v);
      }
    }
    m.text += "}";
    m.expected.push_back(s);
    break;
  }
  case 4: { // mask
    const int n = 1 + pick(3);
    std::string value, mask;
    for (int i = 0; i < n; ++i) {
      const int k = pick(256), v = pick(256) & k;
      value += hex2(v);
      mask += hex2(k);
      set s;
      for (int x = 0; x < 256; ++x) {
        if ((x & k) == v) s.insert(x);
      }
      m.expected.push_back(s);
    }
    m.text += "[" + value + "/" + mask + "]";
    break;
  }
  case 5: { // any run
    const int n = 1 + pick(6);
    m.text += pick(2) ? "*" + std::to_string(n) + "*" : "*0x" + hex2(n) + "*";
    for (int i = 0; i < n; ++i) m.expected.push_back(all());
    break;
  }
  case 6: // case mode
    m.sensitive = pick(2);
    m.text += m.sensitive ? "+" : "-";
    break;
  default: { // a quoted text of letters, digits and punctuation
    const char quote = "'\"`"[pick(3)];
    std::string body;
    const int n = 1 + pick(5);
    for (int i = 0; i < n; ++i) body += "aZ9 .x_Q"[pick(8)];
    m.text += quote + body + quote;
    for (char c : body) {
      set s = {c};
      if (!m.sensitive) s = {std::tolower(c), std::toupper(c)};
      m.expected.push_back(s);
      if (quote == '"') m.expected.push_back({0});
    }
  }
  }
}

TEST(AdvDifferential, RandomPatternsMatchTheModel) {
  std::mt19937 rng(7);
  for (int round = 0; round < 2000; ++round) {
    sModel m;
    const int tokens = 1 + static_cast<int>(rng() % 8);
    for (int i = 0; i < tokens; ++i) addToken(m, rng);
    sHexSearchRule::_pattern p;
    const bool ok = sHexSearchRule::cnvAdv(p, m.text.c_str());
    if (m.expected.empty()) {
      EXPECT_FALSE(ok) << m.text;
      continue;
    }
    ASSERT_TRUE(ok) << m.text;
    ASSERT_EQ(p.count(), static_cast<long long>(m.expected.size())) << m.text;
    for (long long i = 0; i < p.count(); ++i) {
      set got;
      for (int v = 0; v < 256; ++v) {
        if (p[i].has(static_cast<unsigned char>(v))) got.insert(v);
      }
      ASSERT_EQ(got, m.expected[static_cast<size_t>(i)]) << m.text << " position " << i;
    }
  }
}

} // namespace
