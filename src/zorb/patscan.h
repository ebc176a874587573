// Fast search for a compiled pattern.
//
// An anchor is the most selective position of a pattern (fewest allowed values, the
// earliest on a tie), found once when a rule is created. A search tests the anchor byte
// first and the whole pattern only where the anchor fits: through memchr when the anchor
// allows a single value, through its bit set otherwise. Results are exactly those of
// testing every start position in order.
#pragma once

#include "cihex/search.h"

struct sPatternAnchor {
  long long index = 0;    // position in the pattern
  int count = 256;        // how many values it allows
  unsigned char only = 0; // the value, when count is 1
};

sPatternAnchor anchorOf(const sHexSearchRule::_pattern& pattern);

// The first p in [from, end) at which pattern matches data + p, or -1. The caller
// guarantees that data[p .. p + length) is readable for every such p.
long long scanPattern(const sHexSearchRule::_pattern& pattern, const sPatternAnchor& anchor,
                      const unsigned char* data, long long from, long long end);
