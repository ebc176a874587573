#include "patscan.h"

#include <cstring>

sPatternAnchor anchorOf(const sHexSearchRule::_pattern& pattern) {
  sPatternAnchor best;
  for (long long i = 0; i < pattern.count(); ++i) {
    const int count = pattern[i].count();
    if (count >= best.count) continue;
    best.index = i;
    best.count = count;
  }
  if (best.count == 1) {
    const auto& set = pattern[best.index];
    while (!set.has(best.only)) ++best.only;
  }
  return best;
}

long long scanPattern(const sHexSearchRule::_pattern& pattern, const sPatternAnchor& anchor,
                      const unsigned char* data, long long from, long long end) {
  const long long n = pattern.count();
  const sHexSearchRule::sByteDescr* p = pattern.data();
  if (from >= end || anchor.count == 0) return -1;
  if (n == 0) return from; // an empty pattern matches everywhere
  const long long k = anchor.index;
  if (anchor.count == 1) {
    for (long long at = from; at < end; ++at) {
      const void* hit = std::memchr(data + at + k, anchor.only, static_cast<size_t>(end - at));
      if (!hit) return -1;
      at = static_cast<const unsigned char*>(hit) - data - k;
      if (sHexSearchRule::matchAt(p, n, data + at)) return at;
    }
    return -1;
  }
  const sHexSearchRule::sByteDescr& set = p[k];
  for (long long at = from; at < end; ++at) {
    if (set.has(data[at + k]) && sHexSearchRule::matchAt(p, n, data + at)) return at;
  }
  return -1;
}
