// Finding definitions by a part of their name or extension, case-insensitively by the base
// library's case rules, in the order the tree shows them.
#pragma once

#include <string_view>
#include <vector>

#include "zorb/customsig.h"

class cDefinitionFinder {
public:
  explicit cDefinitionFinder(std::string_view text);

  bool empty() const { return myNeedle.empty(); }
  bool matches(const cScanSignature& sig) const;
  // The first match after from (from itself first when included; the first node for null)
  // in tree order, or before it going backward, round the end of the tree; null when no
  // definition matches.
  const cScanSignature* next(const cCustomSignaturesTree& tree, const cScanSignature* from,
                             bool backward, bool includeFrom) const;

private:
  bool contains(const char* utf8) const;

  std::vector<unsigned short> myNeedle;      // lowered, without a terminator
  mutable std::vector<unsigned short> myHay; // each name in turn, its room kept
};
