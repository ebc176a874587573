// Helpers of the signature engine tests.
#pragma once

#include <cstring>
#include <memory>
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
