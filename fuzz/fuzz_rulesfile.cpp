// Fuzz target: loading a rules file from any bytes, alone and through the loader that tells
// the two forms apart; a tree that loads must save, load again and save to the same bytes,
// must build from its text form to those bytes too, must copy to a tree that saves them,
// and must scan the input as a disk block.
#include <cstddef>
#include <cstdint>

#include "base/memtarget.h"
#include "fuzz_saved.h"
#include "zorb/csigtext.h"
#include "zorb/customsig.h"
#include "zorb/rulesfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 65536) return 0;
  cCustomSignaturesTree tree;
  cMemoryTarget in(data, size);
  const int result = tree.load(&in);
  if (result < 0 || result > 4) __builtin_trap();
  if (result == 0) {
    const std::vector<unsigned char> first = saved(tree);
    cCustomSignaturesTree again;
    cMemoryTarget back(first.data(), first.size());
    if (again.load(&back) != 0 || saved(again) != first) __builtin_trap();
    std::string text, error;
    if (!rulesToText(tree, text, error)) __builtin_trap();
    cCustomSignaturesTree built;
    sRulesTextError where;
    if (!rulesFromText(text, built, where) || saved(built) != first) __builtin_trap();
    cCustomSignaturesTree copy;
    tNodeOrigins origins;
    if (!tree.copyTo(copy, origins) || saved(copy) != first) __builtin_trap();
  }
  cCustomSignaturesTree either;
  const sRulesFileResult loaded =
      loadRulesBytes("fuzz", {reinterpret_cast<const char*>(data), size}, either);
  if (!loaded.ok() && loaded.message.empty()) __builtin_trap(); // every failure says why
  // Whatever was read, half a tree included, scans the input as a block.
  const auto block = static_cast<unsigned int>(size);
  if (cScanSignature* found = tree.find_match(data, block / 2, block, 0)) {
    unsigned int end = 0;
    tree.shouldEnd(found, data, block, block, size, end);
  }
  return 0;
}
