// A quick test of whether any definition of a tree could recognise a block.
//
// Most definitions demand certain bytes at fixed offsets. For each definition reachable
// from the top of the tree (children are only asked after their parent hits, so the
// parent's demand covers them), the gate keeps the two neighbouring bytes that it demands
// most narrowly, as a table of the byte pairs allowed at that offset. A block whose pairs
// at all those offsets are outside the tables cannot be recognised, so the tree need not
// be asked; the tree is asked for every other block. Nothing is ever skipped that the tree
// could have found: a definition that the gate cannot judge (one with a subset, a search
// anywhere in the block, a text check) leaves the gate open for every block.
#pragma once

#include <cstdint>
#include <vector>

#include "zorb/customsig.h"

class cStartGate {
public:
  explicit cStartGate(const cCustomSignaturesTree& tree);

  // False only when no definition can match the block whose first avail bytes are data.
  bool mayStart(const unsigned char* data, unsigned int avail) const {
    if (myAlwaysOpen) return true;
    for (const sWindow& w : myWindows) {
      if (w.admits(data, avail)) return true;
    }
    return false;
  }
  // The positions among from, from + step, ... before to at which a definition may start,
  // ascending, in out; data holds avail bytes (to <= avail). One pass over the bytes with
  // a table of every pair that any definition demands, so even a step of 1 stays fast.
  void candidates(const unsigned char* data, unsigned int from, unsigned int to, unsigned int step,
                  unsigned int avail, std::vector<unsigned int>& out) const;
  bool alwaysOpen() const { return myAlwaysOpen; }
  size_t offsets() const { return myWindows.size(); }

  using sValues = sHexSearchRule::sByteDescr;
  // Values demanded at consecutive offsets (one or two of them are kept).
  using sDemand = sByteDemand;

private:
  struct sWindow {
    unsigned int offset = 0;
    std::vector<uint64_t> pairs = std::vector<uint64_t>(65536 / 64); // bit: first | second << 8
    sValues lone{}; // first bytes of one-byte demands, which hold whatever follows them
    bool admits(const unsigned char* data, unsigned int avail) const {
      if (offset >= avail) return false;
      if (offset + 1 == avail) return lone.has(data[offset]);
      return has(pairs, data + offset);
    }
  };
  static bool has(const std::vector<uint64_t>& table, const unsigned char* pair) {
    const unsigned int v = pair[0] | static_cast<unsigned int>(pair[1]) << 8;
    return (table[v >> 6] >> (v & 63)) & 1u;
  }
  void gather(const cScanSignature* first);
  void demand(const sDemand& d);

  std::vector<sWindow> myWindows;                                      // by offset, ascending
  std::vector<uint64_t> myAnyPair = std::vector<uint64_t>(65536 / 64); // in any window
  bool myAlwaysOpen = false;
};
