#include "hex.h"

#include "codec.h"

namespace {

int digit(unsigned short c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

template <class T> int pairValue(const T* s) {
  if (!s) return -1;
  const int hi = digit(static_cast<unsigned short>(s[0]));
  if (hi < 0) return -1; // s[1] is not read past a terminator
  const int lo = digit(static_cast<unsigned short>(s[1]));
  return lo < 0 ? -1 : hi * 16 + lo;
}

template <class T> bool readPairs(const T* text, _typebuf<unsigned char>& out) {
  if (!text) return false;
  const long long n = base_codec::measure(text, -1);
  if (n == 0 || n % 2) return false;
  out.set(n / 2);
  for (long long i = 0; i < n / 2; ++i) {
    const int b = pairValue(text + 2 * i);
    if (b < 0) return false;
    out[i] = static_cast<unsigned char>(b);
  }
  return true;
}

} // namespace

int getHexb(const char* s) {
  return pairValue(reinterpret_cast<const unsigned char*>(s));
}
int getHexb(const unsigned short* s) {
  return pairValue(s);
}

bool hexToBytes(const char* text, _typebuf<unsigned char>& out) {
  return readPairs(text, out);
}
bool hexToBytes(const unsigned short* text, _typebuf<unsigned char>& out) {
  return readPairs(text, out);
}

bool readWholeNumber(std::string_view text, unsigned long long& value) {
  const bool hex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  if (hex) text.remove_prefix(2);
  const unsigned base = hex ? 16 : 10;
  value = 0;
  for (const char c : text) {
    const int d = digit(static_cast<unsigned char>(c));
    if (d < 0 || d >= static_cast<int>(base)) return false;
    const auto u = static_cast<unsigned>(d);
    value = value > (~0ULL - u) / base ? ~0ULL : value * base + u;
  }
  return !text.empty();
}
