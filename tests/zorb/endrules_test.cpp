// End rules: where they fire, the offsets they report, and their descriptions.
#include <gtest/gtest.h>

#include "zorbtest.h"

namespace {

TEST(EndSize, InitReadsTheFieldBothWays) {
  cScanSigEndRuleMatchSize rule;
  rule.create(2, 4, 100, 2, false); // offset 2, 4 bytes, increment 100, multiplier 2
  const bytes header = {0, 0, 0x10, 0, 0, 0, 0};
  ASSERT_TRUE(rule.init(header.data(), 6));
  EXPECT_EQ(rule.fileSize(), 100u + 2 * 0x10);
  EXPECT_FALSE(rule.init(header.data(), 5)); // the field ends past avail
  cScanSigEndRuleMatchSize big;
  big.create(0, 2, 0, 1, true);
  ASSERT_TRUE(big.init(bytes{0x12, 0x34}.data(), 2));
  EXPECT_EQ(big.fileSize(), 0x1234u);
  for (unsigned char width : {0, 9}) {
    cScanSigEndRuleMatchSize bad;
    bad.create(0, width, 0, 1, false);
    EXPECT_FALSE(bad.init(header.data(), 7)) << int(width);
  }
  EXPECT_EQ(named(rule),
            "File field at 2 (4 bytes), multiplied by 2 and increased by 100 defines file size.");
}

TEST(EndSize, FiresOnceTheDistanceReachesTheSize) {
  cScanSigEndRuleMatchSize rule;
  rule.create(0, 1, 0, 1, false);
  rule.init(bytes{200}.data(), 1);
  const bytes any(16);
  EXPECT_EQ(endsAt(rule, any, 199), -1);
  EXPECT_EQ(endsAt(rule, any, 200), 0);
  EXPECT_EQ(endsAt(rule, any, 250), 50);
  auto copy = rule.clone(); // the computed size is not copied
  EXPECT_EQ(static_cast<cScanSigEndRuleMatchSize&>(*copy).fileSize(), 0u);
  EXPECT_FALSE(copy->supportsMultiple());
}

TEST(EndHasStr, OffsetIsStartPlusDistance) {
  auto rule = made<cScanSigEndRuleHasStr>("END", false, 3u);
  EXPECT_EQ(endsAt(*rule, block("..end.")), 2 + 3);
  EXPECT_EQ(endsAt(*rule, block("...end")), -1); // stops one short, as the content rule
  EXPECT_EQ(named(*rule), "File ends in 3 bytes after ASCII string [end] begins.");
}

TEST(EndHasUniStr, OddPositions) {
  auto rule = made<cScanSigEndRuleHasUniStr>(w(u"x"), true, 2u);
  EXPECT_EQ(endsAt(*rule, bytes{1, 'x', 0, 0, 0}), 1 + 2);
  EXPECT_EQ(endsAt(*rule, bytes{1, 'x', 0, 0}), -1);
  EXPECT_EQ(named(*rule), "File ends in 2 bytes after Unicode string [x] begins.");
}

TEST(EndOfText, FirstNonTextByteOrUnit) {
  cScanSigEndRuleIsStrEnd ascii;
  EXPECT_EQ(endsAt(ascii, bytes{'a', 'b', 0, 'c'}), 2);
  EXPECT_EQ(endsAt(ascii, block("abc")), -1);
  EXPECT_EQ(endsAt(ascii, bytes{}), -1);
  EXPECT_EQ(endsAt(ascii, bytes{'a', 1}, 0, 1), -1); // outside the range
  EXPECT_EQ(named(ascii), "File ends if ASCII text ends.");
  cScanSigEndRuleIsUniStrEnd uni;
  EXPECT_EQ(endsAt(uni, bytes{'a', 0, 'b', 0, 0, 0}), 4);
  EXPECT_EQ(endsAt(uni, bytes{'a', 0, 'b'}), -1); // the odd byte is no unit
  EXPECT_EQ(endsAt(uni, bytes{0}), -1);
  EXPECT_EQ(named(uni), "File ends if Unicode text ends.");
}

TEST(EndHasHex, BytesWithZerosAreCaseSensitive) {
  const unsigned char seq[] = {'A', 0, 'B'};
  auto rule = made<cScanSigEndRuleHasHex>(seq, 3u, 0u);
  EXPECT_EQ(rule->typeOf(), etByteSequence);
  EXPECT_EQ(endsAt(*rule, bytes{'x', 'A', 0, 'B', 'x'}), 1);
  EXPECT_EQ(endsAt(*rule, bytes{'x', 'a', 0, 'B', 'x'}), -1);
  EXPECT_EQ(named(*rule), "File ends in 0 bytes after byte sequence [41 00 42 ] begins.");
  auto copy = rule->clone();
  EXPECT_EQ(named(*copy), named(*rule));
  EXPECT_EQ(copy->typeOf(), etByteSequence);
}

TEST(EndUniHex, PatternBeforeTheEnd) {
  auto rule = made<cScanSigEndRuleUniHex>("FF D9", 2u);
  EXPECT_EQ(endsAt(*rule, bytes{1, 0xFF, 0xD9, 7}), 1 + 2);
  EXPECT_EQ(endsAt(*rule, bytes{1, 2, 0xFF, 0xD9}), -1);
  EXPECT_EQ(endsAt(*rule, bytes{0xFF, 0xD9}), -1); // L must be below size
  EXPECT_EQ(named(*rule), "Ends in 2 bytes after Adv/HEX: FF D9");
  cScanSigEndRuleUniHex empty;
  EXPECT_EQ(named(empty), "Empty");
  EXPECT_FALSE(empty.create("{", 0));
  EXPECT_EQ(empty.clone(), nullptr);
}

} // namespace
