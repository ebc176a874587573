// Fuzz target: every structure walker on any bytes, from the start and from an offset the
// first byte chooses, with the whole input and a shorter limit.
#include <cstddef>
#include <cstdint>

#include "scan/walk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  cMemorySource source(data, size);
  const unsigned long long start = data[0] % size;
  for (int kind = 1; kind < static_cast<int>(eWalker::count); ++kind) {
    const auto w = static_cast<eWalker>(kind);
    for (unsigned long long from : {0ull, start}) {
      for (unsigned long long limit : {static_cast<unsigned long long>(size), size / 2ull}) {
        unsigned long long reached = 0;
        const unsigned long long length = walkLength(w, source, from, limit, &reached);
        // Neither the length nor what was read may pass the limit.
        if (length > limit || from + length > size || reached > from + limit) __builtin_trap();
      }
    }
  }
  return 0;
}
