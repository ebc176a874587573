// Fuzz target: the structure walkers on any bytes, from the start and from an offset the
// first byte chooses, with the whole input and a shorter limit.
#include <cstddef>
#include <cstdint>

#include "qvraci-rules/walk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  cMemorySource source(data, size);
  const unsigned long long start = data[0] % size;
  for (eWalker w : {eWalker::gif, eWalker::isoMedia, eWalker::mpegProgram}) {
    for (unsigned long long from : {0ull, start}) {
      for (unsigned long long limit : {static_cast<unsigned long long>(size), size / 2ull}) {
        const unsigned long long length = walkLength(w, source, from, limit);
        if (length > limit || from + length > size) __builtin_trap();
      }
    }
  }
  return 0;
}
