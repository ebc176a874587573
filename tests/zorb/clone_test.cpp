// Every rule and subset type copies through its create: same type and description, and
// the copy outlives the original.
#include <gtest/gtest.h>

#include "zorbtest.h"

namespace {

template <class Base> void expectSameCopy(std::unique_ptr<Base> original) {
  const std::string description = named(*original);
  const int type = original->typeOf();
  const bool multiple = original->supportsMultiple();
  std::unique_ptr<Base> copy = original->clone();
  ASSERT_TRUE(copy) << description;
  original.reset();
  EXPECT_EQ(named(*copy), description);
  EXPECT_EQ(copy->typeOf(), type);
  EXPECT_EQ(copy->supportsMultiple(), multiple);
}

TEST(Clone, EveryContentRule) {
  const unsigned char bytes[] = {0xCA, 0xFE};
  expectSameCopy<cScanSigRule>(made<cScanSigRuleExactMatch>(bytes, 2u, 9u));
  expectSameCopy<cScanSigRule>(made<cScanSigRuleHasStr>("Text", false));
  expectSameCopy<cScanSigRule>(made<cScanSigRuleHasUniStr>(w(u"T\u00C9xt"), false));
  expectSameCopy<cScanSigRule>(std::make_unique<cScanSigRuleIsStr>());
  expectSameCopy<cScanSigRule>(std::make_unique<cScanSigRuleIsUniStr>());
  auto mask = std::make_unique<cScanSigRuleMaskMatch>();
  mask->create(5, 2, 0xF, 3);
  expectSameCopy<cScanSigRule>(std::move(mask));
  expectSameCopy<cScanSigRule>(adv("4D 5A *2* -`exe`", 0x40, 0x200));
}

TEST(Clone, EveryEndRuleAndSubset) {
  auto size = std::make_unique<cScanSigEndRuleMatchSize>();
  size->create(4, 4, 8, 2, true);
  expectSameCopy<cScanSigEndRule>(std::move(size));
  expectSameCopy<cScanSigEndRule>(made<cScanSigEndRuleHasStr>("EOF", true, 3u));
  expectSameCopy<cScanSigEndRule>(made<cScanSigEndRuleHasUniStr>(w(u"END"), false, 6u));
  expectSameCopy<cScanSigEndRule>(std::make_unique<cScanSigEndRuleIsStrEnd>());
  expectSameCopy<cScanSigEndRule>(std::make_unique<cScanSigEndRuleIsUniStrEnd>());
  const unsigned char tail[] = {0xFF, 0xD9};
  expectSameCopy<cScanSigEndRule>(made<cScanSigEndRuleHasHex>(tail, 2u, 2u));
  expectSameCopy<cScanSigEndRule>(made<cScanSigEndRuleUniHex>("'IEND' *4*", 8u));

  auto field = made<cFieldRelativeSubset>(0x3Cu, static_cast<unsigned char>(5), 4u, 16u);
  auto fieldCopy = field->clone();
  auto& f = static_cast<cFieldRelativeSubset&>(*fieldCopy);
  EXPECT_EQ(f.offset(), 0x3Cu);
  EXPECT_EQ(f.width(), 5);
  EXPECT_EQ(f.multiplier(), 4u);
  EXPECT_EQ(f.increment(), 16u);
  auto magic = made<cMagicRelativeSubset>("'RIFF'", 4u);
  auto magicCopy = magic->clone();
  magic.reset();
  EXPECT_STREQ(static_cast<cMagicRelativeSubset&>(*magicCopy).text(), "'RIFF'");
  EXPECT_EQ(magicCopy->typeOf(), 2);
}

} // namespace
