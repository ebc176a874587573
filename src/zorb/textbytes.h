// Small byte-level helpers of the matching rules.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>

namespace zorb {

// A text byte: 0x20 and above, or tab, line feed, carriage return.
inline bool isTextByte(unsigned char b) {
  return b >= 0x20 || b == 9 || b == 10 || b == 13;
}
inline bool isTextUnit(unsigned short u) {
  return u >= 0x20 || u == 9 || u == 10 || u == 13;
}

// A 16-bit unit in the machine's byte order (little-endian here), at any alignment.
inline unsigned short unitAt(const unsigned char* p) {
  unsigned short u;
  std::memcpy(&u, p, 2);
  return u;
}

inline uint64_t readLE(const unsigned char* p, int bytes) {
  uint64_t v = 0;
  for (int i = bytes - 1; i >= 0; --i) v = v << 8 | p[i];
  return v;
}

inline uint64_t readBE(const unsigned char* p, int bytes) {
  uint64_t v = 0;
  for (int i = 0; i < bytes; ++i) v = v << 8 | p[i];
  return v;
}

// True when every byte of [p, end) is 0.
inline bool allZero(const unsigned char* p, const unsigned char* end) {
  for (; p < end; ++p) {
    if (*p) return false;
  }
  return true;
}

// The bytes as "%02X " each, into out (three characters a byte, then a terminator).
void hexList(const unsigned char* bytes, long long n, char* out);

// A description whose format takes a number and then the bytes as a hex list.
void describeBytes(char* buf, long long bufSize, const char* format, int number,
                   const unsigned char* bytes, long long n);

// A fresh Rule made by create(args...), as its family's Base; null when create fails.
template <class Base, class Rule, class... Args> std::unique_ptr<Base> remade(Args... args) {
  auto rule = std::make_unique<Rule>();
  if (!rule->create(args...)) return nullptr;
  return rule;
}

} // namespace zorb
