// Helpers of the signature engine tests.
#pragma once

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "zorb/customsig.h"

using bytes = std::vector<unsigned char>;

inline bytes block(const std::string& s) {
  return bytes(s.begin(), s.end());
}

template <class R> std::string named(const R& rule) {
  char buf[512];
  rule.genStdName(buf, sizeof buf);
  return buf;
}

inline const unsigned short* w(const char16_t* s) {
  return reinterpret_cast<const unsigned short*>(s);
}

template <class Rule, class... Args> std::unique_ptr<Rule> made(Args... args) {
  auto rule = std::make_unique<Rule>();
  EXPECT_TRUE(rule->create(args...));
  return rule;
}

inline std::unique_ptr<cScanSigRule> adv(const char* text, int offset = -1, int blockSize = 0) {
  return made<cScanSigRuleUniHexMatch>(text, static_cast<unsigned int>(blockSize),
                                       static_cast<unsigned int>(offset));
}

// match over a whole buffer: size and avail both its length unless given.
inline bool hits(cScanSigRule& rule, const bytes& b, long long size = -1, long long avail = -1) {
  return rule.match(b.data(), static_cast<unsigned int>(size < 0 ? b.size() : size),
                    static_cast<unsigned int>(avail < 0 ? b.size() : avail));
}

// The end offset an end rule reports over a whole buffer, or -1 when it does not fire.
inline long long endsAt(cScanSigEndRule& rule, const bytes& b, unsigned long long distance = 0,
                        long long size = -1) {
  unsigned int end = 0xDEAD;
  const unsigned int s = static_cast<unsigned int>(size < 0 ? b.size() : size);
  if (!rule.match(b.data(), s, static_cast<unsigned int>(b.size()), distance, end)) return -1;
  return end;
}

// Random trees for round trips: every kind of rule and subset (the older kinds too unless
// currentOnly), names of any bytes, hit modes to 7, numbers at their limits.
inline void randomTree(cCustomSignaturesTree& t, std::mt19937& rng, bool currentOnly) {
  const char* patterns[] = {
      "4D 5A", "-'ab' *3*", "{41,42} [40/F0]", "\"X\" `\xC3\xA9`", " 00 ", "'a\\'b\\\\x'", "??"};
  const unsigned char raw[] = {0x4D, 0x5A, 0x27, 0x00};
  const auto text = [&] {
    std::string s;
    for (int i = static_cast<int>(rng() % 6); i > 0; --i) s += static_cast<char>(1 + rng() % 255);
    return s;
  };
  const auto number = [&]() -> unsigned {
    const unsigned edges[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    return rng() % 2 ? edges[rng() % 5] : static_cast<unsigned>(rng());
  };
  const auto pattern = [&] { return patterns[rng() % 7]; };
  std::vector<cScanSignature*> nodes = {nullptr};
  for (int i = static_cast<int>(rng() % 10); i >= 0; --i) {
    cScanSignature* n = t.add(nodes[rng() % nodes.size()], std::make_unique<cScanSignature>());
    nodes.push_back(n);
    n->create(text().c_str(), text().c_str());
    n->hitMode = static_cast<int>(rng() % 8);
    n->allRules = rng() % 2;
    if (rng() % 3 == 0)
      n->subset = made<cFieldRelativeSubset>(number(), static_cast<unsigned char>(rng() % 7),
                                             number(), number());
    else if (rng() % 3 == 0)
      n->subset = made<cMagicRelativeSubset>(pattern(), number());
    const unsigned kinds = currentOnly ? 3 : 6, first = currentOnly ? 3 : 0;
    for (int r = static_cast<int>(rng() % 4); r > 0; --r) {
      switch (first + rng() % kinds) {
      case 0:
        n->addStrRule(made<cScanSigRuleExactMatch>(raw, 1u + rng() % 4, rng() % 64));
        break;
      case 1:
        n->addStrRule(made<cScanSigRuleHasStr>("It's", rng() % 2 == 0));
        break;
      case 2: {
        auto m = std::make_unique<cScanSigRuleMaskMatch>();
        m->create(0x0102, static_cast<unsigned char>(rng() % 4), 0xFFFF, rng() % 32);
        n->addStrRule(std::move(m));
        break;
      }
      case 3:
        n->addStrRule(std::make_unique<cScanSigRuleIsStr>());
        break;
      case 4:
        n->addStrRule(std::make_unique<cScanSigRuleIsUniStr>());
        break;
      default:
        n->addStrRule(adv(pattern(), rng() % 2 ? -1 : static_cast<int>(number() >> 1),
                          static_cast<int>(number() >> 1)));
      }
    }
    for (int r = static_cast<int>(rng() % 4); r > 0; --r) {
      switch (first + rng() % kinds) {
      case 0:
        n->addEndRule(made<cScanSigEndRuleHasStr>("EOF", rng() % 2 == 0, rng() % 9));
        break;
      case 1:
        n->addEndRule(made<cScanSigEndRuleHasUniStr>(w(u"End"), rng() % 2 == 0, 4u));
        break;
      case 2:
        n->addEndRule(made<cScanSigEndRuleHasHex>(raw, 2u, 1u));
        break;
      case 3: {
        auto size = std::make_unique<cScanSigEndRuleMatchSize>();
        size->create(number(), static_cast<unsigned char>(rng()), number(), number(), rng() % 2);
        n->addEndRule(std::move(size));
        break;
      }
      case 4:
        n->addEndRule(rng() % 2 ? std::unique_ptr<cScanSigEndRule>(
                                      std::make_unique<cScanSigEndRuleIsStrEnd>())
                                : std::make_unique<cScanSigEndRuleIsUniStrEnd>());
        break;
      default:
        n->addEndRule(made<cScanSigEndRuleUniHex>(pattern(), number()));
      }
    }
  }
}
