// End rules: where a file that a definition opened ends.
//
// match(data, size, avail, distance, endOffset) examines a block of the open file;
// `distance` is the scan position less the position where the file started. On success
// it writes the offset in the block at which the file ends. Matching allocates nothing;
// data must hold max(size, avail) bytes.
#pragma once

#include <memory>

#include "base/list.h"
#include "cihex/search.h"
#include "needle.h"
#include "patscan.h"
#include "ruletypes.h"

class cScanSigEndRule : public cListItem {
public:
  bool eq(const void* other) const { return this == other; }
  virtual bool match(const unsigned char* data, unsigned int size, unsigned int avail,
                     unsigned long long distance, unsigned int& endOffset) = 0;
  virtual int typeOf() const = 0;
  virtual void genStdName(char* buf, long long bufSize) const = 0;
  virtual bool supportsMultiple() const { return true; }
  virtual std::unique_ptr<cScanSigEndRule> clone() const = 0;
};

// 1: a size field in the header, read when the definition hits.
class cScanSigEndRuleMatchSize : public cScanSigEndRule {
public:
  bool create(unsigned int fieldOffset, unsigned char fieldBytes, unsigned int increment,
              unsigned int multiplier, bool bigEndian);
  // Reads the field at the hit: false when its width is 0 or above 8, or it ends past avail.
  bool init(const unsigned char* data, unsigned int avail);
  bool match(const unsigned char* data, unsigned int size, unsigned int avail,
             unsigned long long distance, unsigned int& endOffset) override;
  int typeOf() const override { return etSizeField; }
  void genStdName(char* buf, long long bufSize) const override;
  bool supportsMultiple() const override { return false; }
  std::unique_ptr<cScanSigEndRule> clone() const override;

  unsigned long long fileSize() const { return myFileSize; }
  // Puts back a size read by init, for a scanner that asked the tree at a place where no
  // file started after all.
  void setFileSize(unsigned long long size) { myFileSize = size; }
  unsigned int multiplier() const { return myMultiplier; }
  unsigned int increment() const { return myIncrement; }
  unsigned int fieldOffset() const { return myFieldOffset; }
  unsigned char fieldBytes() const { return myFieldBytes; }
  bool bigEndian() const { return myBigEndian; }

private:
  unsigned long long myFileSize = 0;
  unsigned int myMultiplier = 0;
  unsigned int myIncrement = 0;
  unsigned int myFieldOffset = 0;
  unsigned char myFieldBytes = 0;
  bool myBigEndian = false;
};

// 2: the file ends `distance` bytes after an 8-bit string begins.
class cScanSigEndRuleHasStr : public cScanSigEndRule {
public:
  bool create(const char* s, bool caseSensitive, unsigned int distance);
  bool match(const unsigned char* data, unsigned int size, unsigned int avail,
             unsigned long long distance, unsigned int& endOffset) override;
  int typeOf() const override { return etAsciiString; }
  void genStdName(char* buf, long long bufSize) const override;
  std::unique_ptr<cScanSigEndRule> clone() const override;

  const cAsciiNeedle& needle() const { return myNeedle; }
  unsigned int distance() const { return myDistance; }

protected:
  cAsciiNeedle myNeedle;
  unsigned int myDistance = 0;
};

// 3: the file ends `distance` bytes after a 16-bit string begins.
class cScanSigEndRuleHasUniStr : public cScanSigEndRule {
public:
  bool create(const unsigned short* s, bool caseSensitive, unsigned int distance);
  bool match(const unsigned char* data, unsigned int size, unsigned int avail,
             unsigned long long distance, unsigned int& endOffset) override;
  int typeOf() const override { return etUnicodeString; }
  void genStdName(char* buf, long long bufSize) const override;
  std::unique_ptr<cScanSigEndRule> clone() const override;

  const cUnicodeNeedle& needle() const { return myNeedle; }
  unsigned int distance() const { return myDistance; }

private:
  cUnicodeNeedle myNeedle;
  unsigned int myDistance = 0;
};

// 4: the file ends where 8-bit text ends.
class cScanSigEndRuleIsStrEnd : public cScanSigEndRule {
public:
  bool create() { return true; }
  bool match(const unsigned char* data, unsigned int size, unsigned int avail,
             unsigned long long distance, unsigned int& endOffset) override;
  int typeOf() const override { return etAsciiTextEnd; }
  void genStdName(char* buf, long long bufSize) const override;
  bool supportsMultiple() const override { return false; }
  std::unique_ptr<cScanSigEndRule> clone() const override;
};

// 5: the file ends where 16-bit text ends.
class cScanSigEndRuleIsUniStrEnd : public cScanSigEndRule {
public:
  bool create() { return true; }
  bool match(const unsigned char* data, unsigned int size, unsigned int avail,
             unsigned long long distance, unsigned int& endOffset) override;
  int typeOf() const override { return etUnicodeTextEnd; }
  void genStdName(char* buf, long long bufSize) const override;
  bool supportsMultiple() const override { return false; }
  std::unique_ptr<cScanSigEndRule> clone() const override;
};

// 6: the file ends `distance` bytes after a byte sequence begins (always case-sensitive).
class cScanSigEndRuleHasHex : public cScanSigEndRuleHasStr {
public:
  bool create(const unsigned char* bytes, unsigned int length, unsigned int distance);
  int typeOf() const override { return etByteSequence; }
  void genStdName(char* buf, long long bufSize) const override;
  std::unique_ptr<cScanSigEndRule> clone() const override;
};

// 7: the file ends `distance` bytes after an Advanced/HEX pattern.
class cScanSigEndRuleUniHex : public cScanSigEndRule {
public:
  bool create(const char* text, unsigned int distance); // false when text does not compile
  bool match(const unsigned char* data, unsigned int size, unsigned int avail,
             unsigned long long distance, unsigned int& endOffset) override;
  int typeOf() const override { return etAdvHex; }
  void genStdName(char* buf, long long bufSize) const override;
  std::unique_ptr<cScanSigEndRule> clone() const override;

  const char* text() const { return mySearch.text(); }
  unsigned int distance() const { return myDistance; }
  const sHexSearchRule::_pattern& pattern() const { return mySearch.pattern(); }

private:
  cPatternSearch mySearch;
  unsigned int myDistance = 0;
};
