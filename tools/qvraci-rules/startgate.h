// A quick test of whether any definition of a tree could recognise a block.
//
// Most definitions demand certain bytes at fixed offsets. The gate gathers, for each
// offset, the byte values that some definition reachable from the top of the tree demands
// there (children are only asked after their parent hits, so the parent's demand covers
// them). A block whose bytes at all those offsets are outside the gathered values cannot
// be recognised, so the tree need not be asked; the tree is asked for every other block.
// Nothing is ever skipped that the tree could have found: a definition that the gate cannot
// judge (one with a subset, a search anywhere in the block, a text check) leaves the gate
// open for every block.
#pragma once

#include <vector>

#include "zorb/customsig.h"

class cStartGate {
public:
  explicit cStartGate(const cCustomSignaturesTree& tree);

  // False only when no definition can match the block whose first avail bytes are data.
  bool mayStart(const unsigned char* data, unsigned int avail) const {
    if (myAlwaysOpen) return true;
    for (const sDemand& d : myDemands) {
      if (d.offset < avail && d.values.has(data[d.offset])) return true;
    }
    return false;
  }
  bool alwaysOpen() const { return myAlwaysOpen; }
  size_t offsets() const { return myDemands.size(); }

private:
  struct sDemand {
    unsigned int offset = 0;
    sHexSearchRule::sByteDescr values{};
  };
  void gather(const cScanSignature* first);
  void demand(unsigned int offset, const sHexSearchRule::sByteDescr& values);

  std::vector<sDemand> myDemands; // by offset, ascending
  bool myAlwaysOpen = false;
};
