// Content rules: what a definition looks for in a block.
//
// Every rule is made default-constructed and then set up by its create(); clone() makes
// an independent copy through the same create (null when a pattern no longer compiles).
// match(data, size, avail) examines a block: searches start at positions below `size`,
// fixed-position reads stay below `avail`; data must hold max(size, avail) bytes.
// Matching allocates nothing.
#pragma once

#include <memory>
#include <vector>

#include "base/buffers.h"
#include "base/list.h"
#include "cihex/search.h"
#include "needle.h"
#include "patscan.h"
#include "ruletypes.h"

// What a rule demands of every block it hits: the byte values allowed at consecutive
// offsets from `offset`. No values: the rule can hit without fixed bytes (a search, a text
// check).
struct sByteDemand {
  unsigned int offset = 0;
  std::vector<sHexSearchRule::sByteDescr> values;
};

class cScanSigRule : public cListItem {
public:
  bool eq(const void* other) const { return this == other; }
  virtual bool match(const unsigned char* data, unsigned int size, unsigned int avail) = 0;
  virtual std::unique_ptr<cScanSigRule> clone() const = 0;
  virtual int typeOf() const = 0;
  virtual void genStdName(char* buf, long long bufSize) const = 0;
  virtual bool supportsMultiple() const { return true; }
  // For quick tests that spare asking the tree about blocks no rule can hit.
  virtual sByteDemand demand() const { return {}; }
};

// 1: the bytes at a fixed offset.
class cScanSigRuleExactMatch : public cScanSigRule {
public:
  bool create(const unsigned char* bytes, unsigned int length, unsigned int offset);
  bool match(const unsigned char* data, unsigned int size, unsigned int avail) override;
  std::unique_ptr<cScanSigRule> clone() const override;
  int typeOf() const override { return rtExactBytes; }
  void genStdName(char* buf, long long bufSize) const override;
  sByteDemand demand() const override;

  const _typebuf<unsigned char>& bytes() const { return myBytes; }
  unsigned int offset() const { return myOffset; }

private:
  _typebuf<unsigned char> myBytes;
  unsigned int myOffset = 0;
};

// 2: an 8-bit string anywhere in the block; kept folded to lower case when insensitive.
class cScanSigRuleHasStr : public cScanSigRule {
public:
  bool create(const char* s, bool caseSensitive);
  bool match(const unsigned char* data, unsigned int size, unsigned int avail) override;
  std::unique_ptr<cScanSigRule> clone() const override;
  int typeOf() const override { return rtAsciiString; }
  void genStdName(char* buf, long long bufSize) const override;

  const cAsciiNeedle& needle() const { return myNeedle; }

private:
  cAsciiNeedle myNeedle;
};

// 3: a 16-bit string anywhere in the block, at even or odd offsets.
class cScanSigRuleHasUniStr : public cScanSigRule {
public:
  bool create(const unsigned short* s, bool caseSensitive);
  bool match(const unsigned char* data, unsigned int size, unsigned int avail) override;
  std::unique_ptr<cScanSigRule> clone() const override;
  int typeOf() const override { return rtUnicodeString; }
  void genStdName(char* buf, long long bufSize) const override;

  const cUnicodeNeedle& needle() const { return myNeedle; }

private:
  cUnicodeNeedle myNeedle;
};

// 4: the whole block is 8-bit text (trailing zeros allowed).
class cScanSigRuleIsStr : public cScanSigRule {
public:
  bool create() { return true; }
  bool match(const unsigned char* data, unsigned int size, unsigned int avail) override;
  std::unique_ptr<cScanSigRule> clone() const override;
  int typeOf() const override { return rtIsAsciiText; }
  void genStdName(char* buf, long long bufSize) const override;
  bool supportsMultiple() const override { return false; }
};

// 5: the whole block is 16-bit text (trailing zeros allowed).
class cScanSigRuleIsUniStr : public cScanSigRule {
public:
  bool create() { return true; }
  bool match(const unsigned char* data, unsigned int size, unsigned int avail) override;
  std::unique_ptr<cScanSigRule> clone() const override;
  int typeOf() const override { return rtIsUnicodeText; }
  void genStdName(char* buf, long long bufSize) const override;
  bool supportsMultiple() const override { return false; }
};

// 6: a little-endian field of 1 << width bytes, masked, equals a value.
class cScanSigRuleMaskMatch : public cScanSigRule {
public:
  // Widths above 3 are clamped to 3; returns the width stored.
  unsigned char create(unsigned long long value, unsigned char width, unsigned long long mask,
                       unsigned int offset);
  bool match(const unsigned char* data, unsigned int size, unsigned int avail) override;
  std::unique_ptr<cScanSigRule> clone() const override;
  int typeOf() const override { return rtMaskedValue; }
  void genStdName(char* buf, long long bufSize) const override;
  sByteDemand demand() const override;

  unsigned long long value() const { return myValue; }
  unsigned char width() const { return myWidth; }
  unsigned long long mask() const { return myMask; }
  unsigned int offset() const { return myOffset; }

private:
  unsigned long long myValue = 0;
  unsigned char myWidth = 0;
  unsigned long long myMask = 0;
  unsigned int myOffset = 0;
};

// 7: an Advanced/HEX pattern at a fixed offset, on a grid of blocks, or anywhere.
class cScanSigRuleUniHexMatch : public cScanSigRule {
public:
  // Refused when blockSize as signed is negative, offset as signed is below -1 (scan
  // for), or the text does not compile.
  bool create(const char* text, unsigned int blockSize, unsigned int offset);
  bool match(const unsigned char* data, unsigned int size, unsigned int avail) override;
  std::unique_ptr<cScanSigRule> clone() const override;
  int typeOf() const override { return rtAdvHex; }
  void genStdName(char* buf, long long bufSize) const override;
  sByteDemand demand() const override;

  const char* text() const { return mySearch.text(); }
  int blockSize() const { return myBlockSize; }
  int offset() const { return myOffset; }
  const sHexSearchRule::_pattern& pattern() const { return mySearch.pattern(); }

private:
  cPatternSearch mySearch;
  int myBlockSize = 0;
  int myOffset = 0;
};
