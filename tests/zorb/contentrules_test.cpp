// Content rules: bounds, case folding, descriptions and copies.
#include <gtest/gtest.h>

#include "zorbtest.h"

namespace {

TEST(ExactMatch, BoundedBySizeAndAvail) {
  const unsigned char mz[] = {'M', 'Z'};
  auto rule = made<cScanSigRuleExactMatch>(mz, 2u, 2u);
  const bytes b = block("..MZ..");
  EXPECT_TRUE(hits(*rule, b));
  EXPECT_TRUE(hits(*rule, b, 4, 4));  // ends exactly at both bounds
  EXPECT_FALSE(hits(*rule, b, 3, 6)); // past size
  EXPECT_FALSE(hits(*rule, b, 6, 3)); // past avail
  EXPECT_FALSE(hits(*rule, block("..MX..")));
  auto far = made<cScanSigRuleExactMatch>(mz, 2u, 0xFFFFFFFFu); // no 32-bit wrap
  EXPECT_FALSE(hits(*far, b));
  EXPECT_EQ(named(*rule), "At offset 2 contains [4D 5A ].");
}

TEST(HasStr, StartsStopOneShort) {
  auto rule = made<cScanSigRuleHasStr>("abc", true);
  EXPECT_TRUE(hits(*rule, block("xxabcx")));
  EXPECT_FALSE(hits(*rule, block("xxxabc"))); // ends on the last byte: not found
  EXPECT_FALSE(hits(*rule, block("abc")));    // size - length is 0
  EXPECT_FALSE(hits(*rule, block("ab")));
  EXPECT_FALSE(hits(*rule, block("xxABCx")));
  EXPECT_EQ(named(*rule), "Contains ASCII string [abc].");
}

TEST(HasStr, CaseInsensitiveFoldsAsciiOnly) {
  auto rule = made<cScanSigRuleHasStr>("PK\xC4z", false);
  EXPECT_STREQ(rule->needle().text(), "pk\xC4z"); // stored folded; 0xC4 unchanged
  EXPECT_EQ(named(*rule), "Contains ASCII string [pk\xC4z].");
  EXPECT_TRUE(hits(*rule, block("pK\xC4Z.")));
  EXPECT_FALSE(hits(*rule, block("pk\xE4z."))); // no case mapping above ASCII
  auto copy = rule->clone();
  EXPECT_TRUE(hits(*copy, block("PK\xC4z.")));
}

TEST(HasUniStr, OddOffsetsAndTheTwoByteMargin) {
  auto rule = made<cScanSigRuleHasUniStr>(w(u"Ab"), true);
  const bytes at1 = {0, 'A', 0, 'b', 0, 0, 0};
  EXPECT_TRUE(hits(*rule, at1));     // found at an odd offset
  EXPECT_FALSE(hits(*rule, at1, 6)); // must end two bytes before the range does
  EXPECT_FALSE(hits(*rule, bytes{0, 'a', 0, 'b', 0, 0, 0}));
  auto folded = made<cScanSigRuleHasUniStr>(w(u"\u00C4B"), false);
  EXPECT_EQ(folded->needle().text()[0], 0xE4);
  EXPECT_TRUE(hits(*folded, bytes{0xC4, 0, 'b', 0, 0, 0}));
  EXPECT_EQ(named(*folded), "Contains Unicode string [\xC3\xA4"
                            "b].");
}

TEST(IsStr, TextThenZeros) {
  cScanSigRuleIsStr rule;
  EXPECT_TRUE(hits(rule, block("abc\t\r\n\x7F\xFF")));
  EXPECT_TRUE(hits(rule, bytes{'a', 'b', 'c', 0, 0, 0}));
  EXPECT_FALSE(hits(rule, bytes{0, 'a', 'b'})); // begins with a zero
  EXPECT_FALSE(hits(rule, bytes{'a', 0, 'b'})); // zeros must run to the end
  EXPECT_FALSE(hits(rule, bytes{'a', 1, 'b'}));
  EXPECT_TRUE(hits(rule, bytes{}));             // an empty range is text
  EXPECT_TRUE(hits(rule, bytes{'a', 0, 7}, 2)); // only the range counts
  EXPECT_EQ(named(rule), "Is ASCII string.");
  EXPECT_FALSE(rule.supportsMultiple());
}

TEST(IsUniStr, TextUnitsThenZeros) {
  cScanSigRuleIsUniStr rule;
  EXPECT_TRUE(hits(rule, bytes{'h', 0, 'i', 0}));
  EXPECT_TRUE(hits(rule, bytes{'h', 0, 0, 0, 0})); // a trailing odd zero byte counts too
  EXPECT_FALSE(hits(rule, bytes{'h', 0, 0, 0, 7}));
  EXPECT_FALSE(hits(rule, bytes{0, 0, 'h', 0}));
  EXPECT_FALSE(hits(rule, bytes{'h', 0, 1, 0}));
  EXPECT_TRUE(hits(rule, bytes{0})); // below two bytes
  EXPECT_EQ(named(rule), "Is Unicode string.");
}

TEST(MaskMatch, WidthsBoundsAndClamp) {
  cScanSigRuleMaskMatch rule;
  EXPECT_EQ(rule.create(0x0100, 7, 0xFF00, 1), 3);
  EXPECT_EQ(named(rule), "QWORD value at 1 by mask [0xFF00] is 0x100");
  const bytes b = {9, 0x34, 0x01, 0, 0, 0, 0, 0, 0};
  EXPECT_TRUE(hits(rule, b));
  EXPECT_FALSE(hits(rule, b, 9, 8)); // the field needs 8 bytes of avail
  cScanSigRuleMaskMatch word;
  word.create(0x1234, 1, 0xFFFF, 3);
  EXPECT_TRUE(hits(word, bytes{0, 0, 0, 0x34, 0x12}, 3, 5)); // offset may equal size
  EXPECT_FALSE(hits(word, bytes{0, 0, 0, 0x34, 0x12}, 2, 5));
  EXPECT_EQ(named(word), "WORD value at 3 by mask [0xFFFF] is 0x1234");
  auto copy = rule.clone();
  EXPECT_EQ(static_cast<cScanSigRuleMaskMatch&>(*copy).width(), 3);
}

TEST(UniHexMatch, CreateChecksAndDescriptions) {
  cScanSigRuleUniHexMatch rule;
  EXPECT_EQ(named(rule), "Empty");
  EXPECT_FALSE(rule.create("4D5A", 0, static_cast<unsigned int>(-2)));
  EXPECT_FALSE(rule.create("4D5A", static_cast<unsigned int>(-1), 0));
  EXPECT_FALSE(rule.create("4D5G", 0, 0));
  EXPECT_EQ(named(rule), "Empty"); // nothing stored by a refused create
  EXPECT_TRUE(rule.create("4D5A", 0, static_cast<unsigned int>(-1)));
  EXPECT_EQ(named(rule), "Advanced/HEX: 4D5A (scan for)");
  EXPECT_TRUE(rule.create("4D5A", 0, 0x10));
  EXPECT_EQ(named(rule), "Advanced/HEX: 4D5A (at 0x10)");
  EXPECT_TRUE(rule.create("4D5A", 0x200, 4));
  EXPECT_EQ(named(rule), "Advanced/HEX: 4D5A (at 0x4 of 0x200-byte block)");
}

TEST(UniHexMatch, ScanForStopsOneShort) {
  auto rule = adv("'ab'");
  EXPECT_TRUE(hits(*rule, block("xabx")));
  EXPECT_FALSE(hits(*rule, block("xxab"))); // would end on the last byte
  EXPECT_FALSE(hits(*rule, block("ab")));   // size equal to the length
  EXPECT_TRUE(hits(*rule, block("abx")));
  EXPECT_FALSE(hits(*rule, block("abx"), 1, 3));           // a range shorter than the pattern
  EXPECT_FALSE(hits(*rule, block("abx"), 3, 1));           // the pattern is longer than avail
  EXPECT_FALSE(hits(*rule, block("abx"), 0x80000000u, 3)); // size negative as signed
}

TEST(UniHexMatch, FixedOffsetAndBlockGrid) {
  auto fixed = adv("'ab'", 2);
  EXPECT_TRUE(hits(*fixed, block("..ab"))); // bounded by avail only
  EXPECT_TRUE(hits(*fixed, block("..ab"), 1, 4));
  EXPECT_FALSE(hits(*fixed, block("..ab"), 4, 3));
  auto grid = adv("'ab'", 1, 4);
  EXPECT_TRUE(hits(*grid, block("xxxx"
                                "xabx"))); // p = 1, 5: found at 5
  EXPECT_FALSE(hits(*grid, block("xxab"
                                 "xxab"))); // not on the grid
  EXPECT_FALSE(hits(*grid, block("xxxx"
                                 "xab"))); // 5 + 2 < 7 fails: strictly less
  auto fromMinusOne = adv("'ab'", -1, 4);  // grid positions -1, 3, 7: none before the block
  EXPECT_TRUE(hits(*fromMinusOne, block("xxxabxx")));
  EXPECT_FALSE(hits(*fromMinusOne, block("abxxxxx")));
}

TEST(UniHexMatch, CloneRecompilesAndIsIndependent) {
  auto rule = adv("-'zip'", 3, 16);
  auto copy = rule->clone();
  ASSERT_TRUE(copy);
  rule.reset();
  EXPECT_EQ(named(*copy), "Advanced/HEX: -'zip' (at 0x3 of 0x10-byte block)");
  EXPECT_TRUE(hits(*copy, block("...ZiP..........")));
  cScanSigRuleUniHexMatch empty;
  EXPECT_EQ(empty.clone(), nullptr); // holds no text that compiles
}

} // namespace
