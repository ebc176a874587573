// Fuzz target: the Advanced/HEX compiler and the pattern check on any text.
#include <cstddef>
#include <cstdint>
#include <string>

#include "cihex/search.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 4096) return 0; // long inputs only slow the search down
  const std::string text(reinterpret_cast<const char*>(data), size);
  sHexSearchRule::_pattern pattern;
  if (sHexSearchRule::cnvAdv(pattern, text.c_str())) {
    if (pattern.count() < 1 || pattern.count() > sHexSearchRule::kMaxPositions) __builtin_trap();
    sHexSearchRule::good(pattern);
    sHexSearchRule::find(pattern, data, static_cast<long long>(size));
  }
  sHexSearchRule::cnvHex(pattern, text.c_str());
  return 0;
}
