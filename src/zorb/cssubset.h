// Subsets: where in a block a definition and its descendants look.
//
// subset(data, size) returns the offset at which the subset begins, or kNotFound.
#pragma once

#include <memory>

#include "base/buffers.h"
#include "cihex/search.h"
#include "patscan.h"
#include "ruletypes.h"

class cScanSigSubset {
public:
  static constexpr unsigned int kNotFound = 0xFFFFFFFF;

  virtual ~cScanSigSubset() = default;
  virtual unsigned int subset(const unsigned char* data, unsigned int size) = 0;
  virtual int typeOf() const = 0;
  virtual std::unique_ptr<cScanSigSubset> clone() const = 0;
};

// 1: the offset is read from a header field: value * multiplier + increment (32-bit).
// Width codes: 0 8-bit; 1, 2, 3 little-endian 16, 32, low half of 64; 4, 5, 6 the same
// big-endian. The field needs 1 << code bytes from its offset, whatever the code.
class cFieldRelativeSubset : public cScanSigSubset {
public:
  bool create(unsigned int offset, unsigned char width, unsigned int multiplier = 1,
              unsigned int increment = 0); // widths above 6 are clamped to 6
  unsigned int subset(const unsigned char* data, unsigned int size) override;
  int typeOf() const override { return stField; }
  std::unique_ptr<cScanSigSubset> clone() const override;

  unsigned int offset() const { return myOffset; }
  unsigned char width() const { return myWidth; }
  unsigned int multiplier() const { return myMultiplier; }
  unsigned int increment() const { return myIncrement; }

private:
  unsigned int myOffset = 0;
  unsigned char myWidth = 0;
  unsigned int myMultiplier = 1;
  unsigned int myIncrement = 0;
};

// 2: the subset begins `offset` bytes after the end of the first occurrence of a magic.
class cMagicRelativeSubset : public cScanSigSubset {
public:
  bool create(const char* text, unsigned int offset); // false when text does not compile
  unsigned int subset(const unsigned char* data, unsigned int size) override;
  int typeOf() const override { return stMagic; }
  std::unique_ptr<cScanSigSubset> clone() const override;

  const char* text() const { return mySearch.text(); }
  unsigned int offset() const { return myOffset; }
  const sHexSearchRule::_pattern& pattern() const { return mySearch.pattern(); }

private:
  cPatternSearch mySearch;
  unsigned int myOffset = 0;
};
