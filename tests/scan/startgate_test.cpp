// The start gate never closes on a block that the tree would recognise, and does close.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "scan/startgate.h"
#include "zorb/csigstrrules.h"

namespace {

// Bytes from a small alphabet, so that short rules hit often.
unsigned char letter(std::mt19937& rng) {
  static const unsigned char kLetters[] = {0x00, 0x01, 0x41, 0xFF};
  return kLetters[rng() % 4];
}

std::string hexOf(unsigned char b) {
  static const char kDigits[] = "0123456789ABCDEF";
  return {kDigits[b >> 4], kDigits[b & 15]};
}

// A random content rule of a kind the gate can judge, or now and then one it cannot.
std::unique_ptr<cScanSigRule> randomRule(std::mt19937& rng, bool judgeable) {
  const unsigned int offset = rng() % 12;
  switch (judgeable ? rng() % 3 : 3 + rng() % 2) {
  case 0: {
    unsigned char bytes[3] = {letter(rng), letter(rng), letter(rng)};
    auto r = std::make_unique<cScanSigRuleExactMatch>();
    r->create(bytes, 1 + rng() % 3, offset);
    return r;
  }
  case 1: {
    auto r = std::make_unique<cScanSigRuleMaskMatch>();
    const unsigned long long mask = rng() % 2 ? 0xFF00FF : 0x00FF03;
    r->create((letter(rng) | static_cast<unsigned long long>(letter(rng)) << 8 |
               static_cast<unsigned long long>(letter(rng)) << 16) &
                  mask,
              static_cast<unsigned char>(rng() % 3), mask, offset);
    return r;
  }
  case 2: {
    std::string text;
    for (unsigned int i = 1 + rng() % 3; i > 0; --i) {
      const unsigned int form = rng() % 4;
      text += form == 0   ? std::string("??")
              : form == 1 ? "{" + hexOf(letter(rng)) + ",41}"
                          : hexOf(letter(rng));
      text += ' ';
    }
    auto r = std::make_unique<cScanSigRuleUniHexMatch>();
    EXPECT_TRUE(r->create(text.c_str(), 0, offset)) << text;
    return r;
  }
  case 3: {
    auto r = std::make_unique<cScanSigRuleUniHexMatch>();
    EXPECT_TRUE(r->create("41 01", 0, static_cast<unsigned int>(-1))); // anywhere
    return r;
  }
  default:
    return std::make_unique<cScanSigRuleIsStr>();
  }
}

void randomLevel(cCustomSignaturesTree& tree, cScanSignature* parent, std::mt19937& rng, int depth,
                 bool judgeable) {
  for (unsigned int i = 1 + rng() % 3; i > 0; --i) {
    cScanSignature* n = tree.add(parent, std::make_unique<cScanSignature>());
    n->create("n", "x");
    n->hitMode = static_cast<int>(rng() % 3);
    n->allRules = rng() % 2;
    const unsigned int rules = rng() % 4; // some nodes only hand the block on
    for (unsigned int r = 0; r < rules; ++r) {
      n->addStrRule(randomRule(rng, judgeable || rng() % 4 != 0));
    }
    if (depth < 2 && rng() % 2) randomLevel(tree, n, rng, depth + 1, judgeable);
  }
}

TEST(StartGate, NeverClosesOnABlockTheTreeRecognises) {
  std::mt19937 rng(7);
  int closed = 0, checked = 0;
  for (int t = 0; t < 300; ++t) {
    cCustomSignaturesTree tree;
    randomLevel(tree, nullptr, rng, 0, t % 3 != 0);
    const cStartGate gate(tree);
    for (int b = 0; b < 200; ++b) {
      std::vector<unsigned char> block(16);
      for (unsigned char& c : block) c = letter(rng);
      const auto avail = static_cast<unsigned int>(rng() % 17);
      const bool found = tree.find_match(block.data(), avail, avail, 0) != nullptr;
      ASSERT_TRUE(!found || gate.mayStart(block.data(), avail)) << "tree " << t;
      closed += !gate.mayStart(block.data(), avail);
      ++checked;
      // The places found in one pass are those that the gate admits one by one.
      const unsigned int from = avail ? rng() % avail : 0, step = 1 + rng() % 3;
      std::vector<unsigned int> one, pass;
      for (unsigned int q = from; q < avail; q += step) {
        if (gate.mayStart(block.data() + q, avail - q)) one.push_back(q);
      }
      gate.candidates(block.data(), from, avail, step, avail, pass);
      ASSERT_EQ(pass, one) << "tree " << t;
    }
  }
  // The gate is worth having: it turns a fair share of these blocks away.
  EXPECT_GT(closed, checked / 10);
}

TEST(StartGate, StaysOpenForDefinitionsItCannotJudge) {
  cCustomSignaturesTree tree;
  cScanSignature* text = tree.add(nullptr, std::make_unique<cScanSignature>());
  text->create("text", "txt");
  text->addStrRule(std::make_unique<cScanSigRuleIsStr>());
  EXPECT_TRUE(cStartGate(tree).alwaysOpen());

  cCustomSignaturesTree sub;
  cScanSignature* n = sub.add(nullptr, std::make_unique<cScanSignature>());
  n->create("sub", "bin");
  auto field = std::make_unique<cFieldRelativeSubset>();
  field->create(0, 0);
  n->subset = std::move(field);
  auto rule = std::make_unique<cScanSigRuleUniHexMatch>();
  ASSERT_TRUE(rule->create("'MZ'", 0, 0));
  n->addStrRule(std::move(rule));
  EXPECT_TRUE(cStartGate(sub).alwaysOpen());
}

TEST(StartGate, GathersDemandsByOffset) {
  cCustomSignaturesTree tree;
  cScanSignature* folder = tree.add(nullptr, std::make_unique<cScanSignature>());
  folder->create("Images", "");
  for (const char* pattern : {"'GIF8'", "FF D8 FF", "?? ?? ?? ?? 'ftyp'"}) {
    cScanSignature* n = tree.add(folder, std::make_unique<cScanSignature>());
    n->create(pattern, "x");
    auto rule = std::make_unique<cScanSigRuleUniHexMatch>();
    ASSERT_TRUE(rule->create(pattern, 0, 0));
    n->addStrRule(std::move(rule));
    // A child asked only after its parent hits adds nothing.
    cScanSignature* child = tree.add(n, std::make_unique<cScanSignature>());
    child->create("child", "y");
    child->addStrRule(std::make_unique<cScanSigRuleIsStr>());
  }
  const cStartGate gate(tree);
  EXPECT_FALSE(gate.alwaysOpen());
  // 'GI' at 0; FF D8 at 0 (the fill byte FF is narrowed by its neighbour); 'ft' at 4.
  EXPECT_EQ(gate.offsets(), 2u);
  const auto block = [](const char* s) { return reinterpret_cast<const unsigned char*>(s); };
  EXPECT_TRUE(gate.mayStart(block("GI.."), 4));
  EXPECT_FALSE(gate.mayStart(block("G..."), 4));
  EXPECT_TRUE(gate.mayStart(block("\xFF\xD8.."), 4));
  EXPECT_FALSE(gate.mayStart(block("\xFF..."), 4));
  EXPECT_TRUE(gate.mayStart(block("....ft"), 6));
  EXPECT_FALSE(gate.mayStart(block("....ft"), 5)); // beyond what can be read
  EXPECT_FALSE(gate.mayStart(block("HI..fu"), 6));
  // The places where a definition may start, in steps, near the end of the data too.
  const unsigned char* run = block("xxGIxxxGIxftG");
  std::vector<unsigned int> at;
  const auto candidates = [&](unsigned int from, unsigned int to, unsigned int step,
                              unsigned int avail) {
    gate.candidates(run, from, to, step, avail, at);
    return at;
  };
  using list = std::vector<unsigned int>;
  EXPECT_EQ(candidates(0, 9, 1, 13), (list{2, 6, 7})); // 'ft' at 10 is at 4 from 6
  EXPECT_EQ(candidates(3, 9, 1, 13), (list{6, 7}));
  EXPECT_EQ(candidates(1, 9, 2, 13), (list{7}));        // 2 and 6 are not among 1, 3, ...
  EXPECT_EQ(candidates(0, 13, 1, 13), (list{2, 6, 7})); // 'G' alone at the end is no pair
  EXPECT_EQ(candidates(0, 11, 1, 11), (list{2, 7}));    // 'ft' cut off

  // Exact bytes are gated on their most selective byte too: the 01, not the zeros before it.
  cCustomSignaturesTree exact;
  cScanSignature* mpeg = exact.add(nullptr, std::make_unique<cScanSignature>());
  mpeg->create("mpeg", "mpg");
  auto pack = std::make_unique<cScanSigRuleExactMatch>();
  const unsigned char code[] = {0x00, 0x00, 0x01, 0xBA};
  ASSERT_TRUE(pack->create(code, 4, 2));
  mpeg->addStrRule(std::move(pack));
  const cStartGate exactGate(exact);
  EXPECT_TRUE(exactGate.mayStart(block("..\x00\x00\x01\xBA"), 6));
  EXPECT_FALSE(exactGate.mayStart(block("..\x00\x00\x00\xBA"), 6));
  EXPECT_FALSE(exactGate.mayStart(block("\x00\x00\x00\x00\x00\x00"), 6));
}

} // namespace
