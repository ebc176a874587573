// Every rule and subset type copies through its create: same type and description, and
// the copy outlives the original.
#include <gtest/gtest.h>

#include "zorb/csigtext.h"
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
  EXPECT_EQ(magicCopy->typeOf(), stMagic);
}

// A copied tree holds the same definitions in the same places, each mapped to the node it
// copies, and matching the copy leaves the original as it was.
TEST(Clone, ATreeCopiesWithItsOrigins) {
  const char* text = "qvraci-rules text 1\n"
                     "definition \"Images\" mode never {\n"
                     "  subset field at 60 width u8 multiplier 4\n"
                     "  definition \"PNG\" ext \"png\" match any {\n"
                     "    start at 0: 89 'PNG'\n"
                     "    start scan block 16: 'IHDR'\n"
                     "    end size at 8 width 4 big-endian multiplier 2 increment 12\n"
                     "    end after 8: 'IEND'\n"
                     "  }\n"
                     "}\n"
                     "definition \"Text\" ext \"txt\" mode passive {\n"
                     "  start ascii-text\n"
                     "  end ascii-text\n"
                     "}\n";
  cCustomSignaturesTree tree, copy;
  sRulesTextError error;
  ASSERT_TRUE(rulesFromText(text, tree, error)) << error.message;
  tNodeOrigins origins;
  ASSERT_TRUE(tree.copyTo(copy, origins));
  std::string before, after, why;
  ASSERT_TRUE(rulesToText(tree, before, why));
  ASSERT_TRUE(rulesToText(copy, after, why));
  EXPECT_EQ(after, before);
  ASSERT_EQ(origins.size(), 3u);
  for (const cTreeItem *c = copy.first(), *o = tree.first(); c || o;
       c = c->nextInOrder(), o = o->nextInOrder()) {
    ASSERT_TRUE(c && o);
    EXPECT_EQ(origins.at(static_cast<const cScanSignature*>(c)), o);
    EXPECT_NE(static_cast<const void*>(c), static_cast<const void*>(o));
  }

  // A hit in the copy opens a file there only.
  static const char kHead[] = "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR";
  bytes png = block(std::string(kHead, sizeof kHead - 1));
  png.resize(64);
  const cScanSignature* hit = copy.find_match(png.data(), 64, 64, 512);
  ASSERT_TRUE(hit);
  EXPECT_STREQ(hit->name.c_str(), "PNG");
  EXPECT_EQ(hit->startPos, 512u);
  EXPECT_EQ(origins.at(hit)->startPos, cScanSignature::kNoFile);
  EXPECT_EQ(hit->getSizeEndRule()->fileSize(), 2u * 13 + 12);
  EXPECT_EQ(origins.at(hit)->getSizeEndRule()->fileSize(), 0u);

  // A file open in the original is not open in a new copy, and the copy outlives it.
  ASSERT_TRUE(tree.copyTo(copy, origins));
  tree.destroy();
  EXPECT_EQ(copy.firstSig()->firstChildSig()->startPos, cScanSignature::kNoFile);
  EXPECT_TRUE(copy.find_match(png.data(), 64, 64, 0));
}

} // namespace
