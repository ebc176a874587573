#include "csigendrules.h"

#include <cstring>

#include "base/str.h"
#include "textbytes.h"

namespace {

template <class Rule, class... Args> std::unique_ptr<cScanSigEndRule> remade(Args... args) {
  return zorb::remade<cScanSigEndRule, Rule>(args...);
}

// A found start p: the file ends the rule's own distance after it.
bool endAt(long long p, unsigned int ruleDistance, unsigned int& endOffset) {
  if (p < 0) return false;
  endOffset = static_cast<unsigned int>(p) + ruleDistance;
  return true;
}

} // namespace

// ---- 1: size field ----------------------------------------------------------------------

bool cScanSigEndRuleMatchSize::create(unsigned int fieldOffset, unsigned char fieldBytes,
                                      unsigned int increment, unsigned int multiplier,
                                      bool bigEndian) {
  myFieldOffset = fieldOffset;
  myFieldBytes = fieldBytes;
  myIncrement = increment;
  myMultiplier = multiplier;
  myBigEndian = bigEndian;
  myFileSize = 0;
  return true;
}

bool cScanSigEndRuleMatchSize::init(const unsigned char* data, unsigned int avail) {
  const int w = myFieldBytes;
  if (w == 0 || w > 8 || static_cast<unsigned long long>(myFieldOffset) + w > avail) return false;
  const unsigned char* field = data + myFieldOffset;
  const unsigned long long value = myBigEndian ? zorb::readBE(field, w) : zorb::readLE(field, w);
  myFileSize = myIncrement + static_cast<unsigned long long>(myMultiplier) * value;
  return true;
}

bool cScanSigEndRuleMatchSize::match(const unsigned char*, unsigned int, unsigned int,
                                     unsigned long long distance, unsigned int& endOffset) {
  if (myFileSize > distance) return false;
  endOffset = static_cast<unsigned int>(distance - myFileSize);
  return true;
}

void cScanSigEndRuleMatchSize::genStdName(char* buf, long long bufSize) const {
  _sprintf_s(buf, bufSize,
             "File field at %d (%d bytes), multiplied by %d and increased by %d defines file size.",
             static_cast<int>(myFieldOffset), static_cast<int>(myFieldBytes),
             static_cast<int>(myMultiplier), static_cast<int>(myIncrement));
}

std::unique_ptr<cScanSigEndRule> cScanSigEndRuleMatchSize::clone() const {
  return remade<cScanSigEndRuleMatchSize>(myFieldOffset, myFieldBytes, myIncrement, myMultiplier,
                                          myBigEndian);
}

// ---- 2 and 6: 8-bit string, byte sequence -----------------------------------------------

bool cScanSigEndRuleHasStr::create(const char* s, bool caseSensitive, unsigned int distance) {
  if (!s) s = "";
  myNeedle.set(s, static_cast<long long>(std::strlen(s)), caseSensitive);
  myDistance = distance;
  return true;
}

bool cScanSigEndRuleHasStr::match(const unsigned char* data, unsigned int size, unsigned int,
                                  unsigned long long, unsigned int& endOffset) {
  return endAt(myNeedle.find(data, size), myDistance, endOffset);
}

void cScanSigEndRuleHasStr::genStdName(char* buf, long long bufSize) const {
  _sprintf_s(buf, bufSize, "File ends in %d bytes after ASCII string [%s] begins.",
             static_cast<int>(myDistance), myNeedle.text());
}

std::unique_ptr<cScanSigEndRule> cScanSigEndRuleHasStr::clone() const {
  return remade<cScanSigEndRuleHasStr>(myNeedle.text(), myNeedle.caseSensitive(), myDistance);
}

bool cScanSigEndRuleHasHex::create(const unsigned char* bytes, unsigned int length,
                                   unsigned int distance) {
  myNeedle.set(reinterpret_cast<const char*>(bytes), bytes ? length : 0, true);
  myDistance = distance;
  return true;
}

void cScanSigEndRuleHasHex::genStdName(char* buf, long long bufSize) const {
  zorb::describeBytes(buf, bufSize, "File ends in %d bytes after byte sequence [%s] begins.",
                      static_cast<int>(myDistance), myNeedle.bytes(), myNeedle.length());
}

std::unique_ptr<cScanSigEndRule> cScanSigEndRuleHasHex::clone() const {
  return remade<cScanSigEndRuleHasHex>(myNeedle.bytes(),
                                       static_cast<unsigned int>(myNeedle.length()), myDistance);
}

// ---- 3: 16-bit string -------------------------------------------------------------------

bool cScanSigEndRuleHasUniStr::create(const unsigned short* s, bool caseSensitive,
                                      unsigned int distance) {
  myNeedle.set(s, caseSensitive);
  myDistance = distance;
  return true;
}

bool cScanSigEndRuleHasUniStr::match(const unsigned char* data, unsigned int size, unsigned int,
                                     unsigned long long, unsigned int& endOffset) {
  return endAt(myNeedle.find(data, size), myDistance, endOffset);
}

void cScanSigEndRuleHasUniStr::genStdName(char* buf, long long bufSize) const {
  _guardchar<char> platform;
  _w2pc(myNeedle.text(), platform);
  _sprintf_s(buf, bufSize, "File ends in %d bytes after Unicode string [%s] begins.",
             static_cast<int>(myDistance), platform.c_str());
}

std::unique_ptr<cScanSigEndRule> cScanSigEndRuleHasUniStr::clone() const {
  return remade<cScanSigEndRuleHasUniStr>(myNeedle.text(), myNeedle.caseSensitive(), myDistance);
}

// ---- 4 and 5: end of text ---------------------------------------------------------------

bool cScanSigEndRuleIsStrEnd::match(const unsigned char* data, unsigned int size, unsigned int,
                                    unsigned long long, unsigned int& endOffset) {
  for (unsigned int p = 0; p < size; ++p) {
    if (!zorb::isTextByte(data[p])) return endAt(p, 0, endOffset);
  }
  return false;
}

void cScanSigEndRuleIsStrEnd::genStdName(char* buf, long long bufSize) const {
  _sprintf_s(buf, bufSize, "File ends if ASCII text ends.");
}

std::unique_ptr<cScanSigEndRule> cScanSigEndRuleIsStrEnd::clone() const {
  return std::make_unique<cScanSigEndRuleIsStrEnd>();
}

bool cScanSigEndRuleIsUniStrEnd::match(const unsigned char* data, unsigned int size, unsigned int,
                                       unsigned long long, unsigned int& endOffset) {
  for (unsigned int i = 0; i < size / 2; ++i) {
    if (!zorb::isTextUnit(zorb::unitAt(data + 2 * i))) return endAt(2LL * i, 0, endOffset);
  }
  return false;
}

void cScanSigEndRuleIsUniStrEnd::genStdName(char* buf, long long bufSize) const {
  _sprintf_s(buf, bufSize, "File ends if Unicode text ends.");
}

std::unique_ptr<cScanSigEndRule> cScanSigEndRuleIsUniStrEnd::clone() const {
  return std::make_unique<cScanSigEndRuleIsUniStrEnd>();
}

// ---- 7: Advanced/HEX --------------------------------------------------------------------

bool cScanSigEndRuleUniHex::create(const char* text, unsigned int distance) {
  if (!mySearch.compile(text)) return false;
  myDistance = distance;
  return true;
}

bool cScanSigEndRuleUniHex::match(const unsigned char* data, unsigned int size, unsigned int,
                                  unsigned long long, unsigned int& endOffset) {
  const long long n = mySearch.length();
  if (n >= size) return false;
  return endAt(mySearch.find(data, 0, size - n), myDistance, endOffset);
}

void cScanSigEndRuleUniHex::genStdName(char* buf, long long bufSize) const {
  if (!mySearch.hasText()) return static_cast<void>(_sprintf_s(buf, bufSize, "Empty"));
  _sprintf_s(buf, bufSize, "Ends in %d bytes after Adv/HEX: %s", static_cast<int>(myDistance),
             mySearch.text());
}

std::unique_ptr<cScanSigEndRule> cScanSigEndRuleUniHex::clone() const {
  return remade<cScanSigEndRuleUniHex>(mySearch.text(), myDistance);
}
