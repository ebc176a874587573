// Fuzz target: building a tree from any text. Text that builds must export to a text that
// builds to the same bytes and exports unchanged.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_saved.h"
#include "zorb/csigtext.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 65536) return 0;
  cCustomSignaturesTree tree;
  sRulesTextError error;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  if (!rulesFromText(input, tree, error)) {
    if (error.message.empty()) __builtin_trap();
    return 0;
  }
  std::string text, why;
  if (!rulesToText(tree, text, why)) __builtin_trap();
  cCustomSignaturesTree again;
  if (!rulesFromText(text, again, error) || saved(again) != saved(tree)) __builtin_trap();
  std::string twice;
  if (!rulesToText(again, twice, why) || twice != text) __builtin_trap();
  return 0;
}
