// The bytes a tree saves as a rules file; a save that fails stops the fuzzer.
#pragma once

#include <vector>

#include "base/memtarget.h"
#include "zorb/customsig.h"

inline std::vector<unsigned char> saved(cCustomSignaturesTree& tree) {
  cMemoryTarget out;
  if (tree.save(&out) != 0) __builtin_trap();
  return out.bytes();
}
