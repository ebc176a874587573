// UTF-8 <-> UTF-16 with surrogate pairs (see str.h).
#include <vector>

#include "str.h"

namespace {

constexpr unsigned kReplacement = 0xFFFD;

// One code point from s[i..n), advancing i; malformed input gives U+FFFD and skips the
// bytes that cannot belong to a character.
unsigned nextCodePoint(const unsigned char* s, long long n, long long& i) {
  const unsigned char b = s[i++];
  if (b < 0x80) return b;
  int need = 0;
  unsigned c = 0, min = 0;
  if ((b & 0xE0) == 0xC0) {
    need = 1, c = b & 0x1F, min = 0x80;
  } else if ((b & 0xF0) == 0xE0) {
    need = 2, c = b & 0x0F, min = 0x800;
  } else if ((b & 0xF8) == 0xF0) {
    need = 3, c = b & 0x07, min = 0x10000;
  } else {
    return kReplacement;
  }
  for (int k = 0; k < need; ++k) {
    if (i >= n || (s[i] & 0xC0) != 0x80) return kReplacement;
    c = (c << 6) | (s[i++] & 0x3F);
  }
  const bool surrogate = c >= 0xD800 && c <= 0xDFFF;
  return c < min || c > 0x10FFFF || surrogate ? kReplacement : c;
}

void putUtf8(std::vector<char>& out, unsigned c) {
  if (c < 0x80) {
    out.push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out.push_back(static_cast<char>(0xC0 | c >> 6));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | c >> 12));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | c >> 18));
    out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

} // namespace

void utf8ToUnits(const char* src, long long len, _typebuf<unsigned short>& out) {
  if (!src) return out.clear();
  const long long n = len < 0 ? static_cast<long long>(std::char_traits<char>::length(src)) : len;
  const auto* s = reinterpret_cast<const unsigned char*>(src);
  std::vector<unsigned short> units;
  units.reserve(static_cast<size_t>(n));
  for (long long i = 0; i < n;) {
    const unsigned c = nextCodePoint(s, n, i);
    if (c >= 0x10000) {
      units.push_back(static_cast<unsigned short>(0xD800 | (c - 0x10000) >> 10));
      units.push_back(static_cast<unsigned short>(0xDC00 | ((c - 0x10000) & 0x3FF)));
    } else {
      units.push_back(static_cast<unsigned short>(c));
    }
  }
  out.assign(units.data(), static_cast<long long>(units.size()));
}

void unitsToUtf8(const unsigned short* src, long long len, _guardchar<char>& out) {
  if (!src) return out.clear();
  const long long n = len < 0 ? _wcslen(src) : len;
  std::vector<char> bytes;
  bytes.reserve(static_cast<size_t>(n));
  for (long long i = 0; i < n; ++i) {
    unsigned c = src[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < n && src[i + 1] >= 0xDC00 && src[i + 1] <= 0xDFFF) {
      c = 0x10000 + ((c - 0xD800) << 10) + (src[++i] - 0xDC00u);
    } else if (c >= 0xD800 && c <= 0xDFFF) {
      c = kReplacement;
    }
    putUtf8(bytes, c);
  }
  out.set(bytes.data(), static_cast<long long>(bytes.size()));
}
