// Matching compiled patterns: against a reference loop, and without allocating.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "alloc_counter.h"
#include "describe.h"

namespace {

// The obvious matcher: every byte in the set of its position.
long long referenceFind(const sHexSearchRule::_pattern& p, const std::vector<unsigned char>& data) {
  for (long long at = 0; at + p.count() <= static_cast<long long>(data.size()); ++at) {
    bool all = true;
    for (long long i = 0; i < p.count() && all; ++i) {
      all = p[i].has(data[static_cast<size_t>(at + i)]);
    }
    if (all) return at;
  }
  return -1;
}

TEST(Match, AtAnOffset) {
  sHexSearchRule::_pattern p;
  ASSERT_TRUE(sHexSearchRule::cnvAdv(p, "4D5A ?? *2* -'pe'"));
  const unsigned char hit[] = {0x4D, 0x5A, 0x90, 0, 0, 'P', 'e'};
  const unsigned char miss[] = {0x4D, 0x5A, 0x90, 0, 0, 'P', 'x'};
  EXPECT_TRUE(sHexSearchRule::matchAt(p.data(), p.count(), hit));
  EXPECT_FALSE(sHexSearchRule::matchAt(p.data(), p.count(), miss));
  ASSERT_TRUE(sHexSearchRule::cnvAdv(p, "41 {}"));
  const unsigned char a[] = {'A', 0};
  EXPECT_FALSE(sHexSearchRule::matchAt(p.data(), p.count(), a)); // an empty set never matches
}

TEST(Match, FindAgreesWithTheReference) {
  std::mt19937 rng(99);
  const char* patterns[] = {"41 ?2",     "{41,61}{42,62}", "[80/C0]", "!00! 00",
                            "0? *3* 7?", "-'ab'",          "\"a\"",   "4?{!41!,!42!}"};
  for (const char* text : patterns) {
    sHexSearchRule::_pattern p;
    ASSERT_TRUE(sHexSearchRule::cnvAdv(p, text));
    for (int round = 0; round < 200; ++round) {
      std::vector<unsigned char> data(rng() % 40);
      for (auto& b : data)
        b = static_cast<unsigned char>("\x00\x41\x42\x61\x62\x80\x02\x72"[rng() % 8]);
      const long long size = static_cast<long long>(data.size());
      EXPECT_EQ(sHexSearchRule::find(p, data.data(), size), referenceFind(p, data)) << text;
    }
  }
  sHexSearchRule::_pattern p;
  ASSERT_TRUE(sHexSearchRule::cnvAdv(p, "41"));
  const unsigned char data[] = {'A', 'b', 'A'};
  EXPECT_EQ(sHexSearchRule::find(p, data, 3, 1), 2);
  EXPECT_EQ(sHexSearchRule::find(p, data, 3, 3), -1);
  EXPECT_EQ(sHexSearchRule::find(p, nullptr, 3), -1);
}

TEST(Match, AllocatesNothing) {
  sHexSearchRule::_pattern p;
  ASSERT_TRUE(sHexSearchRule::cnvAdv(p, "50 4B 03 04 *20* -'zip'"));
  std::vector<unsigned char> data(1 << 16, 0x50);
  const long before = allocationCount();
  long long found = 0;
  for (int i = 0; i < 10; ++i) {
    found += sHexSearchRule::find(p, data.data(), static_cast<long long>(data.size()));
    found += sHexSearchRule::matchAt(p.data(), p.count(), data.data());
  }
  EXPECT_EQ(allocationCount() - before, 0);
  EXPECT_EQ(found, -10);
}

} // namespace
