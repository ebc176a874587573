// UTF-8 <-> UTF-16, and the platform-text conversions built on them.
#include <algorithm>
#include <memory>

#include "codec.h"
#include "str.h"

using namespace base_codec;

namespace {

bool isContinuation(unsigned char b) {
  return (b & 0xC0) == 0x80;
}

// The unit count that a text needs, then the text itself, into a fresh buffer.
template <class Out, class In, class Convert>
std::unique_ptr<Out[]> convertAll(const In* src, long long n, long long& units, Convert convert) {
  units = convert(src, n, nullptr, 0);
  auto buffer = std::make_unique<Out[]>(static_cast<size_t>(units) + 1);
  units = convert(src, n, buffer.get(), units);
  buffer[static_cast<size_t>(units)] = 0;
  return buffer;
}

} // namespace

namespace base_codec {

void decodeUtf8(const unsigned char* s, long long n, sUnitSink& out, long long* consumed) {
  long long i = 0;
  while (i < n && !out.full()) {
    const unsigned char b = s[i];
    const int need = (b & 0xE0) == 0xC0 ? 2 : (b & 0xF0) == 0xE0 ? 3 : 1;
    int have = 1;
    while (have < need && i + have < n && isContinuation(s[i + have])) ++have;
    if (have < need && i + have >= n) break; // a sequence cut off by the end: stop before it
    if (have < need) {
      out.put(b); // a lead byte without its continuation bytes stands for itself
      ++i;
      continue;
    }
    if (need == 1)
      out.put(b);
    else if (need == 2)
      out.put(static_cast<unsigned short>(((b & 0x1F) << 6) | (s[i + 1] & 0x3F)));
    else
      out.put(static_cast<unsigned short>(((b & 0x0F) << 12) | ((s[i + 1] & 0x3F) << 6) |
                                          (s[i + 2] & 0x3F)));
    i += need;
  }
  if (consumed) *consumed = i;
}

void encodeUtf8(const unsigned short* s, long long n, sByteSink& out, long long* consumed) {
  long long i = 0;
  for (; i < n; ++i) {
    const unsigned short u = s[i];
    if (u < 0x80) {
      if (!out.fits(1)) break;
      out.put(static_cast<unsigned char>(u));
    } else if (u < 0x800) {
      if (!out.fits(2)) break;
      out.put(static_cast<unsigned char>(0xC0 | (u >> 6)));
      out.put(static_cast<unsigned char>(0x80 | (u & 0x3F)));
    } else {
      if (!out.fits(3)) break;
      out.put(static_cast<unsigned char>(0xE0 | (u >> 12)));
      out.put(static_cast<unsigned char>(0x80 | ((u >> 6) & 0x3F)));
      out.put(static_cast<unsigned char>(0x80 | (u & 0x3F)));
    }
  }
  if (consumed) *consumed = i;
}

} // namespace base_codec

long long utf82w(const char* src, long long len, unsigned short* dst, long long cap,
                 long long* consumed) {
  if (consumed) *consumed = 0;
  if (!src) return 0;
  if (!dst) return utf82w_require(src, len);
  const long long n = measure(src, len);
  sUnitSink sink{dst, cap};
  decodeUtf8(reinterpret_cast<const unsigned char*>(src), n, sink, consumed);
  if (len < 0 && !sink.full()) sink.put(0);
  return sink.n;
}

long long utf82w_require(const char* src, long long len) {
  return __a2w_require(src, len, 65001);
}

long long w2utf8(const unsigned short* src, long long len, char* dst, long long cap,
                 long long* consumed) {
  if (consumed) *consumed = 0;
  if (!src) return 0;
  if (!dst) return w2utf8_require(src, len);
  const long long n = measure(src, len);
  sByteSink sink{dst, cap};
  encodeUtf8(src, n, sink, consumed);
  if (len < 0 && sink.fits(1)) sink.put(0);
  return sink.n;
}

long long w2utf8_require(const unsigned short* src, long long len) {
  return __w2a_require(src, len, 65001);
}

long long _pc2w(const char* src, long long len, unsigned short* dst, long long cap) {
  return __a2w(src, len, dst, cap, 65001);
}

long long _pc2w_require(const char* src, long long len) {
  return __a2w_require(src, len, 65001);
}

long long _w2pc(const unsigned short* src, long long len, char* dst, long long cap) {
  return __w2a(src, len, dst, cap, 65001);
}

long long _w2pc_require(const unsigned short* src, long long len) {
  return __w2a_require(src, len, 65001);
}

void _pc2w(const char* src, _guardchar<unsigned short>& out, long long len) {
  if (!src) return out.clear();
  long long units = 0;
  auto text = convertAll<unsigned short>(
      src, measure(src, len), units,
      [](const char* s, long long l, unsigned short* d, long long c) { return _pc2w(s, l, d, c); });
  out.adopt(std::move(text), units);
}

void _pc2w(const char* src, _typebuf<unsigned short>& out, long long len) {
  if (!src) return out.clear();
  const long long n = measure(src, len);
  out.set(_pc2w_require(src, n));
  _pc2w(src, n, out.data(), out.count());
}

void _w2pc(const unsigned short* src, _guardchar<char>& out, long long len) {
  if (!src) return out.clear();
  long long units = 0;
  auto text = convertAll<char>(
      src, measure(src, len), units,
      [](const unsigned short* s, long long l, char* d, long long c) { return _w2pc(s, l, d, c); });
  out.adopt(std::move(text), units);
}

void _w2pc(const unsigned short* src, _typebuf<char>& out, long long len) {
  if (!src) return out.clear();
  const long long n = measure(src, len);
  out.set(_w2pc_require(src, n));
  _w2pc(src, n, out.data(), out.count());
}

long long _a2pc(const char* src, char* dst, long long size) {
  if (!src || !dst || size <= 0) return 0;
  const long long n = std::min(measure(src, -1), size - 1);
  std::memcpy(dst, src, static_cast<size_t>(n));
  dst[n] = 0;
  return n;
}

long long _pc2a(const char* src, char* dst, long long size) {
  return _a2pc(src, dst, size);
}
void _a2pc(const char* src, _guardchar<char>& out) {
  out.set(src);
}
void _pc2a(const char* src, _guardchar<char>& out) {
  out.set(src);
}

void _enc2pc(const char* src, long long len, int cp, _guardchar<char>& out) {
  if (!src) return out.clear();
  const long long n = measure(src, len);
  long long units = 0;
  auto wide = convertAll<unsigned short>(src, n, units,
                                         [cp](const char* s, long long l, unsigned short* d,
                                              long long c) { return __a2w(s, l, d, c, cp); });
  _w2pc(wide.get(), out, units);
}

void _pc2enc(const char* src, long long len, int cp, _guardchar<char>& out) {
  if (!src) return out.clear();
  _typebuf<unsigned short> wide;
  _pc2w(src, wide, len);
  long long bytes = 0;
  auto text = convertAll<char>(wide.data(), wide.count(), bytes,
                               [cp](const unsigned short* s, long long l, char* d, long long c) {
                                 return s ? __w2a(s, l, d, c, cp) : 0;
                               });
  out.adopt(std::move(text), bytes);
}
