// Fast searches against plain reference loops, and matching without allocation.
#include <gtest/gtest.h>

#include <random>

#include "alloc_counter.h"
#include "zorbtest.h"

namespace {

bool matchesAt(const sHexSearchRule::_pattern& p, const unsigned char* data) {
  for (long long j = 0; j < p.count(); ++j) {
    if (!p[j].has(data[j])) return false;
  }
  return true;
}

// Content rule 7, scanning: every p while p < size - L; none when size <= L.
bool referenceScanFor(const sHexSearchRule::_pattern& p, const bytes& b, long long size) {
  const long long n = p.count();
  if (n > static_cast<long long>(b.size()) || size <= n) return false;
  long long at = 0;
  do {
    if (matchesAt(p, b.data() + at)) return true;
    ++at;
  } while (at < size - n);
  return false;
}

// End rule 7: the first p < size - L.
long long referenceEnd(const sHexSearchRule::_pattern& p, const bytes& b, long long size) {
  const long long n = p.count();
  if (n >= size) return -1;
  for (long long at = 0; at < size - n; ++at) {
    if (matchesAt(p, b.data() + at)) return at;
  }
  return -1;
}

char foldAscii(unsigned char c) {
  return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
}

// The ASCII string rules: the first p < size - length where every byte folds to the text.
long long referenceString(const std::string& folded, bool sensitive, const bytes& b) {
  const long long n = static_cast<long long>(folded.size());
  for (long long at = 0; at < static_cast<long long>(b.size()) - n; ++at) {
    long long k = 0;
    for (; k < n; ++k) {
      const unsigned char c = b[static_cast<size_t>(at + k)];
      if ((sensitive ? static_cast<char>(c) : foldAscii(c)) != folded[static_cast<size_t>(k)])
        break;
    }
    if (k == n) return at;
  }
  return -1;
}

std::string randomPattern(std::mt19937& rng) {
  static const char* pieces[] = {"41",  "4?",   "?1",    "??", "{41,42}", "!41!", "[40/F0]",
                                 "*2*", "'AB'", "-'ab'", "42", "{}",      "0?"};
  std::string text;
  const int n = 1 + static_cast<int>(rng() % 4);
  for (int i = 0; i < n; ++i) text += std::string(pieces[rng() % 13]) + " ";
  return text;
}

bytes randomBlock(std::mt19937& rng) {
  bytes b(rng() % 48);
  for (auto& c : b) c = static_cast<unsigned char>("ABab\x40\x01\x00"[rng() % 7]);
  return b;
}

TEST(Differential, PatternRulesAgreeWithReferenceLoops) {
  std::mt19937 rng(2026);
  for (int round = 0; round < 3000; ++round) {
    const std::string text = randomPattern(rng);
    const bytes b = randomBlock(rng);
    auto rule = adv(text.c_str());
    const auto& pattern = static_cast<cScanSigRuleUniHexMatch&>(*rule).pattern();
    const long long size = b.empty() ? 0 : static_cast<long long>(rng() % (b.size() + 1));
    EXPECT_EQ(hits(*rule, b, size), referenceScanFor(pattern, b, size)) << text;

    auto end = made<cScanSigEndRuleUniHex>(text.c_str(), 10u);
    const long long expected = referenceEnd(pattern, b, static_cast<long long>(b.size()));
    EXPECT_EQ(endsAt(*end, b), expected < 0 ? -1 : expected + 10) << text;

    cMagicRelativeSubset magic;
    ASSERT_TRUE(magic.create(text.c_str(), 0));
    const long long n = pattern.count();
    const long long first =
        n < static_cast<long long>(b.size())
            ? (matchesAt(pattern, b.data()) ? 0 : referenceEnd(pattern, b, b.size()))
            : -1;
    const unsigned int got = magic.subset(b.data(), static_cast<unsigned int>(b.size()));
    EXPECT_EQ(got, first < 0 ? cScanSigSubset::kNotFound : static_cast<unsigned int>(first + n))
        << text;
  }
}

TEST(Differential, StringRulesAgreeWithReferenceLoops) {
  std::mt19937 rng(11);
  const char* texts[] = {"a",
                         "AB",
                         "ba",
                         "\x01"
                         "A",
                         "aaa",
                         "B@"};
  for (int round = 0; round < 3000; ++round) {
    const bytes b = randomBlock(rng);
    const char* text = texts[rng() % 6];
    const bool sensitive = rng() % 2;
    auto rule = made<cScanSigRuleHasStr>(text, sensitive);
    const std::string folded = rule->needle().text();
    const long long expected = referenceString(folded, sensitive, b);
    EXPECT_EQ(hits(*rule, b), expected >= 0) << text;
    auto end = made<cScanSigEndRuleHasStr>(text, sensitive, 1u);
    EXPECT_EQ(endsAt(*end, b), expected < 0 ? -1 : expected + 1) << text;
  }
}

TEST(Allocation, MatchingAndEndDetectionAllocateNothing) {
  cCustomSignaturesTree t;
  cScanSignature* zip = t.add(nullptr, std::make_unique<cScanSignature>());
  zip->create("zip", "zip");
  zip->addStrRule(adv("50 4B 03 04", 0));
  zip->addStrRule(made<cScanSigRuleHasStr>("mimetype", false));
  zip->addEndRule(made<cScanSigEndRuleUniHex>("50 4B 05 06", 22u));
  auto size = std::make_unique<cScanSigEndRuleMatchSize>();
  size->create(18, 4, 0, 1, false);
  zip->addEndRule(std::move(size));
  cScanSignature* text = t.add(nullptr, std::make_unique<cScanSignature>());
  text->create("text", "txt");
  text->addStrRule(std::make_unique<cScanSigRuleIsStr>());
  text->addStrRule(made<cScanSigRuleHasUniStr>(w(u"Hi"), false));
  auto magic = std::make_unique<cMagicRelativeSubset>();
  magic->create("'<?xml'", 0);
  text->subset = std::move(magic);

  bytes b(4096, 'x');
  const std::string head = "PK\x03\x04......mimetype.";
  std::copy(head.begin(), head.end(), b.begin());
  const long before = allocationCount();
  int hitsSeen = 0;
  for (int i = 0; i < 50; ++i) {
    hitsSeen += t.find_match(b.data(), 512, 4096, 512ULL * i) != nullptr;
    unsigned int end = 0;
    t.shouldEnd(zip, b.data(), 512, 4096, 512ULL * i, end);
  }
  EXPECT_EQ(allocationCount() - before, 0);
  EXPECT_EQ(hitsSeen, 50);
}

} // namespace
