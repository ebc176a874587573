#include "csigstrrules.h"

#include <cstring>

#include "base/str.h"
#include "textbytes.h"

using zorb::isTextByte;
using zorb::isTextUnit;
using zorb::unitAt;

void zorb::hexList(const unsigned char* bytes, long long n, char* out) {
  static const char digits[] = "0123456789ABCDEF";
  for (long long i = 0; i < n; ++i) {
    *out++ = digits[bytes[i] >> 4];
    *out++ = digits[bytes[i] & 15];
    *out++ = ' ';
  }
  *out = 0;
}

void zorb::describeBytes(char* buf, long long bufSize, const char* format, int number,
                         const unsigned char* bytes, long long n) {
  auto list = std::make_unique<char[]>(static_cast<size_t>(3 * n + 1));
  hexList(bytes, n, list.get());
  _sprintf_s(buf, bufSize, format, number, list.get());
}

namespace {

template <class Rule, class... Args> std::unique_ptr<cScanSigRule> remade(Args... args) {
  return zorb::remade<cScanSigRule, Rule>(args...);
}

} // namespace

// ---- 1: exact bytes ---------------------------------------------------------------------

bool cScanSigRuleExactMatch::create(const unsigned char* bytes, unsigned int length,
                                    unsigned int offset) {
  myBytes.assign(bytes, bytes ? length : 0);
  myOffset = offset;
  return true;
}

bool cScanSigRuleExactMatch::match(const unsigned char* data, unsigned int size,
                                   unsigned int avail) {
  const unsigned long long end = static_cast<unsigned long long>(myOffset) + myBytes.count();
  if (end > avail || end > size) return false;
  return std::memcmp(data + myOffset, myBytes.data(), static_cast<size_t>(myBytes.count())) == 0;
}

std::unique_ptr<cScanSigRule> cScanSigRuleExactMatch::clone() const {
  return remade<cScanSigRuleExactMatch>(myBytes.data(), static_cast<unsigned int>(myBytes.count()),
                                        myOffset);
}

sByteDemand cScanSigRuleExactMatch::demand() const {
  sByteDemand d{myOffset, {}};
  for (long long i = 0; i < myBytes.count(); ++i) {
    sHexSearchRule::sByteDescr only{};
    only.add(myBytes.data()[i]);
    d.values.push_back(only);
  }
  return d;
}

void cScanSigRuleExactMatch::genStdName(char* buf, long long bufSize) const {
  zorb::describeBytes(buf, bufSize, "At offset %d contains [%s].", static_cast<int>(myOffset),
                      myBytes.data(), myBytes.count());
}

// ---- 2: ASCII string --------------------------------------------------------------------

bool cScanSigRuleHasStr::create(const char* s, bool caseSensitive) {
  if (!s) s = "";
  myNeedle.set(s, static_cast<long long>(std::strlen(s)), caseSensitive);
  return true;
}

bool cScanSigRuleHasStr::match(const unsigned char* data, unsigned int size, unsigned int) {
  return myNeedle.find(data, size) >= 0;
}

std::unique_ptr<cScanSigRule> cScanSigRuleHasStr::clone() const {
  return remade<cScanSigRuleHasStr>(myNeedle.text(), myNeedle.caseSensitive());
}

void cScanSigRuleHasStr::genStdName(char* buf, long long bufSize) const {
  _guardchar<char> platform;
  _a2pc(myNeedle.text(), platform);
  _sprintf_s(buf, bufSize, "Contains ASCII string [%s].", platform.c_str());
}

// ---- 3: Unicode string ------------------------------------------------------------------

bool cScanSigRuleHasUniStr::create(const unsigned short* s, bool caseSensitive) {
  myNeedle.set(s, caseSensitive);
  return true;
}

bool cScanSigRuleHasUniStr::match(const unsigned char* data, unsigned int size, unsigned int) {
  return myNeedle.find(data, size) >= 0;
}

std::unique_ptr<cScanSigRule> cScanSigRuleHasUniStr::clone() const {
  return remade<cScanSigRuleHasUniStr>(myNeedle.text(), myNeedle.caseSensitive());
}

void cScanSigRuleHasUniStr::genStdName(char* buf, long long bufSize) const {
  _guardchar<char> platform;
  _w2pc(myNeedle.text(), platform);
  _sprintf_s(buf, bufSize, "Contains Unicode string [%s].", platform.c_str());
}

// ---- 4 and 5: the block is text ---------------------------------------------------------

bool cScanSigRuleIsStr::match(const unsigned char* data, unsigned int size, unsigned int) {
  for (unsigned int i = 0; i < size; ++i) {
    if (isTextByte(data[i])) continue;
    // Text may be followed by zeros up to the end of the range, but may not begin with one.
    return data[i] == 0 && i != 0 && zorb::allZero(data + i, data + size);
  }
  return true;
}

std::unique_ptr<cScanSigRule> cScanSigRuleIsStr::clone() const {
  return std::make_unique<cScanSigRuleIsStr>();
}

void cScanSigRuleIsStr::genStdName(char* buf, long long bufSize) const {
  _sprintf_s(buf, bufSize, "Is ASCII string.");
}

bool cScanSigRuleIsUniStr::match(const unsigned char* data, unsigned int size, unsigned int) {
  for (unsigned int i = 0; i < size / 2; ++i) {
    const unsigned short u = unitAt(data + 2 * i);
    if (isTextUnit(u)) continue;
    return u == 0 && i != 0 && zorb::allZero(data + 2 * i, data + size);
  }
  return true;
}

std::unique_ptr<cScanSigRule> cScanSigRuleIsUniStr::clone() const {
  return std::make_unique<cScanSigRuleIsUniStr>();
}

void cScanSigRuleIsUniStr::genStdName(char* buf, long long bufSize) const {
  _sprintf_s(buf, bufSize, "Is Unicode string.");
}

// ---- 6: masked value --------------------------------------------------------------------

unsigned char cScanSigRuleMaskMatch::create(unsigned long long value, unsigned char width,
                                            unsigned long long mask, unsigned int offset) {
  myValue = value;
  myWidth = width > 3 ? 3 : width;
  myMask = mask;
  myOffset = offset;
  return myWidth;
}

bool cScanSigRuleMaskMatch::match(const unsigned char* data, unsigned int size,
                                  unsigned int avail) {
  const int bytes = 1 << myWidth;
  if (myOffset > size || static_cast<unsigned long long>(myOffset) + bytes > avail) return false;
  return (zorb::readLE(data + myOffset, bytes) & myMask) == myValue;
}

std::unique_ptr<cScanSigRule> cScanSigRuleMaskMatch::clone() const {
  auto rule = std::make_unique<cScanSigRuleMaskMatch>();
  rule->create(myValue, myWidth, myMask, myOffset);
  return rule;
}

sByteDemand cScanSigRuleMaskMatch::demand() const {
  sByteDemand d{myOffset, {}};
  for (int i = 0; i < (1 << myWidth); ++i) {
    const auto m = static_cast<unsigned char>(myMask >> (8 * i));
    const auto v = static_cast<unsigned char>(myValue >> (8 * i));
    sHexSearchRule::sByteDescr allowed{}; // a value bit outside the mask never hits
    for (int x = 0; x < 256 && (myValue & ~myMask) == 0; ++x) {
      if ((x & m) == v) allowed.add(static_cast<unsigned char>(x));
    }
    d.values.push_back(allowed);
  }
  return d;
}

void cScanSigRuleMaskMatch::genStdName(char* buf, long long bufSize) const {
  static const char* const names[] = {"BYTE", "WORD", "DWORD", "QWORD"};
  _sprintf_s(buf, bufSize, "%s value at %d by mask [0x%llX] is 0x%llX", names[myWidth & 3],
             static_cast<int>(myOffset), myMask, myValue);
}

// ---- 7: Advanced/HEX --------------------------------------------------------------------

bool cScanSigRuleUniHexMatch::create(const char* text, unsigned int blockSize,
                                     unsigned int offset) {
  const int block = static_cast<int>(blockSize), at = static_cast<int>(offset);
  if (block < 0 || at < -1) return false;
  if (!mySearch.compile(text)) return false;
  myBlockSize = block;
  myOffset = at;
  return true;
}

bool cScanSigRuleUniHexMatch::match(const unsigned char* data, unsigned int size,
                                    unsigned int avail) {
  const long long n = mySearch.length();
  const long long range = static_cast<int>(size);
  if (range < 0 || n > avail) return false;
  if (myBlockSize == 0 && myOffset == -1) {
    // A range no longer than the pattern gives no hit; else every start p < size - n.
    if (range <= n) return false;
    return mySearch.matchAt(data) || mySearch.find(data, 1, range - n) >= 0;
  }
  if (myBlockSize == 0) {
    if (myOffset + n > avail) return false;
    return mySearch.matchAt(data + myOffset);
  }
  if (n == 0) return false;
  // A grid that starts at -1 (the scan-for offset) has no position before the block.
  for (long long at = myOffset; at + n < range; at += myBlockSize) {
    if (at >= 0 && mySearch.matchAt(data + at)) return true;
  }
  return false;
}

std::unique_ptr<cScanSigRule> cScanSigRuleUniHexMatch::clone() const {
  return remade<cScanSigRuleUniHexMatch>(mySearch.text(), static_cast<unsigned int>(myBlockSize),
                                         static_cast<unsigned int>(myOffset));
}

sByteDemand cScanSigRuleUniHexMatch::demand() const {
  if (myBlockSize != 0 || myOffset < 0) return {}; // on a grid, or anywhere
  const sHexSearchRule::_pattern& p = mySearch.pattern();
  return {static_cast<unsigned int>(myOffset), {p.data(), p.data() + p.count()}};
}

void cScanSigRuleUniHexMatch::genStdName(char* buf, long long bufSize) const {
  if (!mySearch.hasText()) {
    _sprintf_s(buf, bufSize, "Empty");
  } else if (myBlockSize != 0) {
    _sprintf_s(buf, bufSize, "Advanced/HEX: %s (at 0x%X of 0x%X-byte block)", mySearch.text(),
               static_cast<unsigned int>(myOffset), static_cast<unsigned int>(myBlockSize));
  } else if (myOffset == -1) {
    _sprintf_s(buf, bufSize, "Advanced/HEX: %s (scan for)", mySearch.text());
  } else {
    _sprintf_s(buf, bufSize, "Advanced/HEX: %s (at 0x%X)", mySearch.text(),
               static_cast<unsigned int>(myOffset));
  }
}
