// Bounded copies, formatting, scanning, searching and comparing of 8-bit and UTF-16 text.
#include <algorithm>
#include <cstdio>
#include <vector>

#include "codec.h"
#include "str.h"

using base_codec::measure;

namespace {

template <class T> int copyBounded(T* dst, long long size, const T* src) {
  if (!dst || !src || size <= 0) return 0;
  long long i = 0;
  for (; i < size; ++i) {
    dst[i] = src[i];
    if (!src[i]) return 0;
  }
  dst[size - 1] = 0; // the source did not fit
  return 0;
}

template <class T> int copyCounted(T* dst, long long size, const T* src, long long count) {
  if (!dst || !src || size <= 0 || count < 0) return 0;
  const long long limit = std::min(size, count);
  for (long long i = 0; i < limit; ++i) {
    dst[i] = src[i];
    if (!src[i]) break;
  }
  dst[count < size ? count : size - 1] = 0;
  return 0;
}

// Both texts to UTF-8, kept alive for the call.
std::vector<char> toUtf8(const unsigned short* s) {
  std::vector<char> out(static_cast<size_t>(_w2pc_require(s, -1)));
  _w2pc(s, -1, out.data(), static_cast<long long>(out.size()));
  return out;
}

template <class T> int sign(T a, T b) {
  return a < b ? -1 : a > b ? 1 : 0;
}

template <class T, class Lower>
int compareLowered(const T* a, const T* b, long long length, Lower lower) {
  if (!a || !b) return -1;
  for (long long i = 0; length < 0 || i < length; ++i) {
    const auto x = lower(a[i]), y = lower(b[i]);
    if (x != y || !x) return sign(x, y);
  }
  return 0;
}

unsigned char lowerByte(char c) {
  return static_cast<unsigned char>(__acp_lower(c));
}

template <class Equal>
const unsigned short* search(const unsigned short* text, const unsigned short* pattern,
                             long long textLength, long long patternLength, Equal equal) {
  if (!text || !pattern) return nullptr;
  const long long n = measure(text, textLength), m = measure(pattern, patternLength);
  if (m > n) return nullptr;
  for (long long i = 0; i + m <= n; ++i) {
    long long k = 0;
    while (k < m && equal(text[i + k], pattern[k])) ++k;
    if (k == m) return text + i;
  }
  return nullptr;
}

} // namespace

int _strcpy_s(char* dst, long long size, const char* src) {
  return copyBounded(dst, size, src);
}
int _wcscpy_s(unsigned short* dst, long long size, const unsigned short* src) {
  return copyBounded(dst, size, src);
}
int _strncpy_s(char* dst, long long size, const char* src, long long count) {
  return copyCounted(dst, size, src, count);
}
int _wcsncpy_s(unsigned short* dst, long long size, const unsigned short* src, long long count) {
  return copyCounted(dst, size, src, count);
}

int _wcscat_s(unsigned short* dst, long long size, const unsigned short* src) {
  if (!dst || !src || size <= 0) return 0;
  long long end = 0;
  while (end < size && dst[end]) ++end;
  if (end == size) {
    dst[size - 1] = 0;
    return 0;
  }
  return copyBounded(dst + end, size - end, src);
}

int _vsprintf_s(char* dst, long long size, const char* format, va_list args) {
  if (!dst || !format || size <= 0) return 0;
  const int n = std::vsnprintf(dst, static_cast<size_t>(size), format, args);
  return n < 0 ? 0 : static_cast<int>(std::min<long long>(n, size - 1));
}

int _sprintf_s(char* dst, long long size, const char* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = _vsprintf_s(dst, size, format, args);
  va_end(args);
  return n;
}

int _vswprintf_s(unsigned short* dst, long long size, const unsigned short* format, va_list args) {
  if (!dst || !format || size <= 0) return 0;
  std::vector<char> narrow(static_cast<size_t>(3 * size + 1));
  std::vector<char> fmt = toUtf8(format);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::vsnprintf(narrow.data(), narrow.size(), fmt.data(), args);
#pragma GCC diagnostic pop
  // Convert back leaving room for the terminator, which the -1 form would not guarantee.
  const long long n =
      _pc2w(narrow.data(), static_cast<long long>(std::strlen(narrow.data())), dst, size - 1);
  dst[n] = 0;
  return static_cast<int>(n);
}

int _swprintf_s(unsigned short* dst, long long size, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = _vswprintf_s(dst, size, format, args);
  va_end(args);
  return n;
}

int _sscanf_s(const char* text, const char* format, ...) {
  if (!text || !format) return 0;
  va_list args;
  va_start(args, format);
  const int n = std::vsscanf(text, format, args);
  va_end(args);
  return n;
}

int _vswscanf_s(const unsigned short* text, const unsigned short* format, va_list args) {
  if (!text || !format) return 0;
  std::vector<char> t = toUtf8(text), f = toUtf8(format);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  return std::vsscanf(t.data(), f.data(), args);
#pragma GCC diagnostic pop
}

int _swscanf_s(const unsigned short* text, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  const int n = _vswscanf_s(text, format, args);
  va_end(args);
  return n;
}

long long _wcslen(const unsigned short* s) {
  return s ? measure(s, -1) : 0;
}

const unsigned short* _wcschr(const unsigned short* s, unsigned short c) {
  if (!s) return nullptr;
  for (;; ++s) {
    if (*s == c) return s;
    if (!*s) return nullptr;
  }
}

const unsigned short* _wcsrchr(const unsigned short* s, unsigned short c) {
  if (!s) return nullptr;
  const unsigned short* found = nullptr;
  for (;; ++s) {
    if (*s == c) found = s;
    if (!*s) return found;
  }
}

int _wcscmp(const unsigned short* a, const unsigned short* b) {
  if (!a || !b) return 0;
  for (;; ++a, ++b) {
    if (*a != *b || !*a) return sign(*a, *b);
  }
}

const unsigned short* _wcsstr(const unsigned short* text, const unsigned short* pattern,
                              long long textLength, long long patternLength) {
  return search(text, pattern, textLength, patternLength,
                [](unsigned short a, unsigned short b) { return a == b; });
}

const unsigned short* _wcsistr(const unsigned short* text, const unsigned short* pattern,
                               long long textLength, long long patternLength) {
  return search(text, pattern, textLength, patternLength, [](unsigned short a, unsigned short b) {
    return __acp_lower(a) == __acp_lower(b);
  });
}

int __stricmp(const char* a, const char* b) {
  return compareLowered(a, b, -1, lowerByte);
}

int __wcsicmp(const unsigned short* a, const unsigned short* b) {
  return __wcsicmp(a, b, -1);
}

int __wcsicmp(const unsigned short* a, const unsigned short* b, long long length) {
  return compareLowered(a, b, length, [](unsigned short u) { return __acp_lower(u); });
}

int __wcsnicmp(const unsigned short* a, const unsigned short* b, long long count) {
  return count <= 0 ? (a && b ? 0 : -1) : __wcsicmp(a, b, count);
}

int __memicmp(const void* a, const void* b, size_t count) {
  if (!a || !b) return -1;
  const auto* x = static_cast<const char*>(a);
  const auto* y = static_cast<const char*>(b);
  for (size_t i = 0; i < count; ++i) {
    const unsigned char p = lowerByte(x[i]), q = lowerByte(y[i]);
    if (p != q) return sign(p, q);
  }
  return 0;
}
