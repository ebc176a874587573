// The definition tree: nodes, search order, subsets, ALL / ANY, end detection, counting.
#include <gtest/gtest.h>

#include "zorbtest.h"

namespace {

// A definition with one content rule: the ASCII text at offset 0.
std::unique_ptr<cScanSignature> def(const char* name, const char* magic = nullptr) {
  auto node = std::make_unique<cScanSignature>();
  node->create(name, "bin");
  if (magic) {
    node->addStrRule(made<cScanSigRuleExactMatch>(reinterpret_cast<const unsigned char*>(magic),
                                                  static_cast<unsigned int>(strlen(magic)), 0u));
  }
  return node;
}

const char* found(cCustomSignaturesTree& t, const bytes& b, long long size = -1) {
  cScanSignature* node =
      t.find_match(b.data(), static_cast<unsigned int>(size < 0 ? b.size() : size),
                   static_cast<unsigned int>(b.size()), 1000);
  return node ? node->name.c_str() : "none";
}

TEST(Node, DefaultsAndOwnership) {
  cScanSignature node;
  EXPECT_EQ(node.startPos, cScanSignature::kNoFile);
  EXPECT_EQ(node.extVFID, -1);
  EXPECT_EQ(node.hitMode, 2);
  EXPECT_TRUE(node.allRules);
  EXPECT_FALSE(node.subset);
  EXPECT_STREQ(node.name.c_str(), "");

  cScanSigRule* a = node.addStrRule(std::make_unique<cScanSigRuleIsStr>());
  cScanSigRule* b = node.addStrRule(adv("41"));
  node.addEndRule(std::make_unique<cScanSigEndRuleIsStrEnd>());
  cScanSigEndRule* size = node.addEndRule(std::make_unique<cScanSigEndRuleMatchSize>());
  EXPECT_EQ(node.first_str(), a);
  EXPECT_EQ(node.next_str(a), b);
  EXPECT_EQ(node.next_str(b), nullptr);
  EXPECT_EQ(node.next_str(nullptr), nullptr);
  EXPECT_EQ(node.first_typed_str(rtAdvHex), b);
  EXPECT_EQ(node.first_typed_str(rtMaskedValue), nullptr);
  EXPECT_EQ(node.getSizeEndRule(), size);
  EXPECT_EQ(node.next_end(node.first_end()), size);

  std::unique_ptr<cScanSigRule> handed = node.remove(a);
  ASSERT_EQ(handed.get(), a);
  EXPECT_EQ(node.first_str(), b);
  cScanSignature other;
  EXPECT_EQ(other.remove(b), nullptr); // not that node's rule

  node.create("PNG image", "png");
  EXPECT_FALSE(node.hasStrRules());
  EXPECT_FALSE(node.hasEndRules());
  EXPECT_STREQ(node.name.c_str(), "PNG image");
  EXPECT_STREQ(node.ext.c_str(), "png");
}

TEST(Search, FirstSiblingAndDeepestHitWin) {
  cCustomSignaturesTree t;
  cScanSignature* zip = t.add(nullptr, def("zip", "PK"));
  t.add(zip, def("docx", "PK\x03\x04"));
  t.add(zip, def("jar", "PK\x03"));
  t.add(nullptr, def("pk-other", "PK"));
  EXPECT_STREQ(found(t, block("PK\x03\x04....")), "docx");
  EXPECT_STREQ(found(t, block("PK\x03\x05....")), "jar");
  EXPECT_STREQ(found(t, block("PK\x01.......")), "zip");
  EXPECT_STREQ(found(t, block("MZ.........")), "none");
  cCustomSignaturesTree empty;
  EXPECT_STREQ(found(empty, block("PK..")), "none");
}

TEST(Search, ContainersGroupAndCanEndTheSearch) {
  cCustomSignaturesTree t;
  cScanSignature* group = t.add(nullptr, def("images"));
  group->hitMode = cScanSignature::hmNever;
  t.add(group, def("gif", "GIF8"));
  cScanSignature* hitting = t.add(nullptr, def("hitting container", "BM"));
  hitting->hitMode = cScanSignature::hmNever;
  t.add(hitting, def("bmp v5", "BM\x7c"));
  t.add(nullptr, def("later", "BM"));
  EXPECT_STREQ(found(t, block("GIF89a....")), "gif"); // through a rule-less container
  EXPECT_STREQ(found(t, block("BM\x7c.......")), "bmp v5");
  EXPECT_STREQ(found(t, block("BM\x28.......")), "none"); // the container ends the search
}

TEST(Search, SubsetsShiftSkipOrFail) {
  cCustomSignaturesTree t;
  cScanSignature* shifted = t.add(nullptr, def("after magic", "IHDR"));
  auto magic = std::make_unique<cMagicRelativeSubset>();
  ASSERT_TRUE(magic->create("'PNG'", 0));
  shifted->subset = std::move(magic);
  // The subset begins after "PNG"; the rule at offset 0 then sees "IHDR".
  EXPECT_STREQ(found(t, block("xPNGIHDR......")), "after magic");
  // No magic: the rules are tried on the whole block (a failed subset hides nothing).
  EXPECT_STREQ(found(t, block("IHDR..........")), "after magic");
  EXPECT_STREQ(found(t, block("xPNGxxxxIHDR..")), "none");

  cCustomSignaturesTree u;
  cScanSignature* field = u.add(nullptr, def("field", "Z"));
  auto sub = std::make_unique<cFieldRelativeSubset>();
  sub->create(0, 0);
  field->subset = std::move(sub);
  u.add(nullptr, def("sibling", "\x04"));
  bytes b = {4, 0, 0, 0, 'Z', 0, 0, 0};
  EXPECT_STREQ(found(u, b), "field");
  b[0] = 8; // the subset starts at size: the node and its subtree are skipped
  EXPECT_STREQ(found(u, b), "none");
  b[0] = 4;
  b[4] = 'Y'; // the sibling sees the unshifted block
  EXPECT_STREQ(found(u, b), "sibling");
}

TEST(Search, AllVersusAnyWithTheSizeField) {
  for (bool all : {true, false}) {
    cCustomSignaturesTree t;
    cScanSignature* node = t.add(nullptr, def("sized", "SZ"));
    node->allRules = all;
    auto size = std::make_unique<cScanSigEndRuleMatchSize>();
    size->create(2, 4, 0, 1, false);
    node->addEndRule(std::move(size));
    EXPECT_STREQ(found(t, bytes{'S', 'Z', 0x10, 0, 0, 0, '.', '.'}), "sized");
    EXPECT_EQ(node->startPos, 1000u);
    EXPECT_EQ(node->getSizeEndRule()->fileSize(), 0x10u);
    // The field cannot be read: ALL does not hit, ANY still does.
    EXPECT_STREQ(found(t, block("SZ\x10")), all ? "none" : "sized") << all;
  }
}

TEST(Search, AnyModeTriesRulesInOrder) {
  cScanSignature node;
  node.allRules = false;
  node.addStrRule(made<cScanSigRuleHasStr>("abc", true));
  node.addStrRule(made<cScanSigRuleHasStr>("xyz", true));
  const bytes b = block("..xyz..");
  EXPECT_TRUE(node.match(b.data(), 7, 7, 5));
  EXPECT_EQ(node.startPos, 5u);
  node.allRules = true;
  EXPECT_FALSE(node.match(b.data(), 7, 7, 9));
  EXPECT_FALSE(cScanSignature().match(b.data(), 7, 7, 0)); // no rules: no hit
}

TEST(EndDetection, NearestDefinitionFirstThenAncestors) {
  cCustomSignaturesTree t;
  cScanSignature* outer = t.add(nullptr, def("outer", "OU"));
  outer->addEndRule(made<cScanSigEndRuleHasStr>("STOP", true, 4u));
  cScanSignature* inner = t.add(outer, def("inner", "OUT"));
  inner->addEndRule(made<cScanSigEndRuleHasStr>("END", true, 3u));
  ASSERT_STREQ(found(t, block("OUT.......")), "inner");
  unsigned int end = 0;
  const bytes tail = block("..END.STOP.");
  EXPECT_TRUE(t.shouldEnd(inner, tail.data(), 11, 11, 2000, end));
  EXPECT_EQ(end, 2u + 3);
  EXPECT_EQ(inner->startPos, cScanSignature::kNoFile);
  const bytes stop = block("....STOP...");
  ASSERT_STREQ(found(t, block("OUT.......")), "inner");
  EXPECT_TRUE(t.shouldEnd(inner, stop.data(), 11, 11, 2000, end)); // inherited from outer
  EXPECT_EQ(end, 4u + 4);
  EXPECT_EQ(outer->startPos, cScanSignature::kNoFile);
  EXPECT_NE(inner->startPos, cScanSignature::kNoFile); // its own rules did not fire
  // The outer file has ended, so outer reports an end at once, at offset 0.
  const bytes none = block("..........");
  end = 99;
  EXPECT_TRUE(t.shouldEnd(inner, none.data(), 10, 10, 2000, end));
  EXPECT_EQ(end, 0u);
  EXPECT_NE(inner->startPos, cScanSignature::kNoFile);
}

TEST(EndDetection, NoOpenFileEndsAtOnceAndDistanceCounts) {
  cScanSignature node;
  auto size = std::make_unique<cScanSigEndRuleMatchSize>();
  size->create(0, 1, 0, 1, false);
  node.addEndRule(std::move(size));
  unsigned int end = 77;
  const bytes b(32, 0);
  EXPECT_TRUE(node.shouldEnd(b.data(), 32, 32, 5000, end)); // no file open
  EXPECT_EQ(end, 0u);
  const bytes header = {100};
  ASSERT_TRUE(node.matchNotify(header.data(), 4096, 1));
  EXPECT_FALSE(node.shouldEnd(b.data(), 32, 32, 4096 + 64, end)); // 64 of 100 bytes seen
  EXPECT_EQ(node.startPos, 4096u);
  EXPECT_TRUE(node.shouldEnd(b.data(), 32, 32, 4096 + 128, end));
  EXPECT_EQ(end, 28u);
  EXPECT_EQ(node.startPos, cScanSignature::kNoFile);
}

TEST(Counting, ContainersAreNotCountedAndIdsReset) {
  cCustomSignaturesTree t;
  cScanSignature* group = t.add(nullptr, def("group"));
  group->hitMode = cScanSignature::hmNever;
  cScanSignature* a = t.add(group, def("a", "A"));
  cScanSignature* fresh = t.add(group, def("new definition"));
  fresh->hitMode = cScanSignature::hmNever; // as the editor's new-definition command leaves it
  cScanSignature* b = t.add(a, def("b", "B"));
  b->hitMode = cScanSignature::hmPassive;
  t.add(nullptr, def("c", "C"));
  EXPECT_EQ(t.numRules(), 3u);
  fresh->hitMode = cScanSignature::hmActive;
  EXPECT_EQ(t.numRules(), 4u);
  int count = 0;
  t.enumTerminalRules(a, count); // a, its child b, and its later siblings
  EXPECT_EQ(count, 3);
  a->extVFID = 7;
  b->extVFID = 8;
  t.resetExtVFIDs();
  EXPECT_EQ(a->extVFID, -1);
  EXPECT_EQ(b->extVFID, -1);
}

TEST(Search, DeepTreesWithinTheLimit) {
  cCustomSignaturesTree t;
  cScanSignature* parent = nullptr;
  for (int i = 0; i < cCustomSignaturesTree::kMaxDepth; ++i) {
    parent =
        t.add(parent, def(i + 1 == cCustomSignaturesTree::kMaxDepth ? "deepest" : "level", "D"));
  }
  EXPECT_STREQ(found(t, block("D....")), "deepest");
}

} // namespace
