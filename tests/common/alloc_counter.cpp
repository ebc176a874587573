// Replaces the global allocation functions to count allocations. Kept in a translation
// unit of its own so that no caller inlines the replacement.
#include "alloc_counter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> gAllocations{0};
} // namespace

long allocationCount() {
  return gAllocations.load();
}

void* operator new(size_t size) {
  ++gAllocations;
  if (void* p = std::malloc(size ? size : 1)) return p;
  throw std::bad_alloc();
}
void* operator new[](size_t size) {
  return operator new(size);
}
void operator delete(void* p) noexcept {
  std::free(p);
}
void operator delete[](void* p) noexcept {
  std::free(p);
}
void operator delete(void* p, size_t) noexcept {
  std::free(p);
}
void operator delete[](void* p, size_t) noexcept {
  std::free(p);
}
