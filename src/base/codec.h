// Internal pieces shared by the converters of str.h.
#pragma once

#include <cstring>

namespace base_codec {

// Output of a decoder: counts only when `out` is null, else stops when `cap` is reached.
struct sUnitSink {
  unsigned short* out;
  long long cap;
  long long n = 0;
  bool full() const { return out && n >= cap; }
  void put(unsigned short u) {
    if (out) out[n] = u;
    ++n;
  }
};

struct sByteSink {
  char* out;
  long long cap;
  long long n = 0;
  bool fits(long long more) const { return !out || n + more <= cap; }
  void put(unsigned char b) {
    if (out) out[n] = static_cast<char>(b);
    ++n;
  }
};

constexpr unsigned short kReplacement = 0xFFFD;

inline long long measure(const char* s, long long len) {
  return len >= 0 ? len : static_cast<long long>(std::strlen(s));
}
inline long long measure(const unsigned short* s, long long len) {
  if (len >= 0) return len;
  long long n = 0;
  while (s[n]) ++n;
  return n;
}

// The byte -> unit table of a single-byte page (0 gives the identity table), or null.
const unsigned short* simpleTable(int cp);

void decodeUtf8(const unsigned char* s, long long n, sUnitSink& out, long long* consumed);
void encodeUtf8(const unsigned short* s, long long n, sByteSink& out, long long* consumed);
void decodeDbcs(int cp, const unsigned char* s, long long n, sUnitSink& out);
void decodeIso2022(int cp, const unsigned char* s, long long n, sUnitSink& out);

} // namespace base_codec
