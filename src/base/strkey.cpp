// cStringKey and cCompactStr.
#include "codec.h"
#include "str.h"

void cStringKey::set(const char* text, long long len) {
  myWords.clear();
  if (!text) return;
  const long long n = base_codec::measure(text, len);
  myWords.assign(static_cast<size_t>((n + 3) / 4), 0);
  for (long long i = 0; i < n; ++i) {
    const int shift = 24 - 8 * static_cast<int>(i % 4); // big-endian within the word
    myWords[static_cast<size_t>(i / 4)] |=
        static_cast<uint32_t>(static_cast<unsigned char>(text[i])) << shift;
  }
}

void cStringKey::set(const unsigned short* text, long long len) {
  if (!text) return myWords.clear();
  _typebuf<char> utf8;
  _w2pc(text, utf8, len);
  set(utf8.data() ? utf8.data() : "", utf8.count());
}

int cStringKey::cmp(const cStringKey& o) const {
  const size_t common = std::min(myWords.size(), o.myWords.size());
  for (size_t i = 0; i < common; ++i) {
    if (myWords[i] != o.myWords[i]) return myWords[i] < o.myWords[i] ? -1 : 1;
  }
  return myWords.size() < o.myWords.size() ? -1 : myWords.size() > o.myWords.size() ? 1 : 0;
}

std::string cStringKey::utf8() const {
  std::string bytes;
  bytes.reserve(myWords.size() * 4);
  for (uint32_t w : myWords) {
    for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<char>(w >> shift));
  }
  return bytes;
}

namespace {

// Units to take of a text of `own` units when asked for `length`: -1 means empty.
long long takeUnits(long long own, int length) {
  if (length >= 65535) return own;
  if (static_cast<short>(length) <= 0) return -1; // 0, or negative as a 16-bit value
  return std::min<long long>(own, length);
}

unsigned short clip16(long long n) {
  return static_cast<unsigned short>(std::min<long long>(n, 65535));
}

} // namespace

void cCompactStr::set(const unsigned short* text, int length) {
  myText.clear();
  myLen = 0;
  if (!text) return;
  const long long n = takeUnits(base_codec::measure(text, -1), length);
  if (n <= 0) return;
  _w2pc(text, myText, n);
  myLen = clip16(n);
}

void cCompactStr::set(const char* text, int length) {
  myText.clear();
  myLen = 0;
  if (!text) return;
  const long long n = takeUnits(base_codec::measure(text, -1), length);
  if (n <= 0) return;
  myText.set(text, n);
  myLen = clip16(utf82w_require(text, n));
}
