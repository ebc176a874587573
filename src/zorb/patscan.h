// Fast search for a compiled pattern.
//
// cPatternSearch keeps a compiled pattern (and the Advanced/HEX text it came from, when it
// came from one) together with its anchor: the most selective position (fewest allowed
// values, the earliest on a tie), found once when the pattern is set. A search tests the
// anchor byte first and the whole pattern only where the anchor fits: through memchr when
// the anchor allows a single value, through its bit set otherwise. Results are exactly
// those of testing every start position in order. Searching allocates nothing.
#pragma once

#include "base/buffers.h"
#include "cihex/search.h"

class cPatternSearch {
public:
  // Compiles Advanced/HEX text; on failure false, and nothing changes.
  bool compile(const char* text);
  // Takes a pattern built by other means (no text).
  void assign(sHexSearchRule::_pattern pattern);

  const char* text() const { return myText.c_str(); }
  bool hasText() const { return !myText.empty(); }
  const sHexSearchRule::_pattern& pattern() const { return myPattern; }
  long long length() const { return myPattern.count(); }

  bool matchAt(const unsigned char* data) const {
    return sHexSearchRule::matchAt(myPattern.data(), myPattern.count(), data);
  }
  // The first p in [from, end) at which the pattern matches data + p, or -1. The caller
  // guarantees that data[p .. p + length) is readable for every such p.
  long long find(const unsigned char* data, long long from, long long end) const;

private:
  void findAnchor();

  _guardchar<char> myText;
  sHexSearchRule::_pattern myPattern;
  long long myAnchor = 0;   // position in the pattern
  int myAnchorCount = 256;  // how many values it allows
  unsigned char myOnly = 0; // the value, when it allows one
};
