#include "cssubset.h"

#include "textbytes.h"

bool cFieldRelativeSubset::create(unsigned int offset, unsigned char width, unsigned int multiplier,
                                  unsigned int increment) {
  myOffset = offset;
  myWidth = width > 6 ? 6 : width;
  myMultiplier = multiplier;
  myIncrement = increment;
  return true;
}

unsigned int cFieldRelativeSubset::subset(const unsigned char* data, unsigned int size) {
  // The bound is 1 << code even for the big-endian codes, whose fields are shorter.
  if (myOffset > size || myOffset + (1u << myWidth) > size) return kNotFound;
  const unsigned char* f = data + myOffset;
  unsigned int value = 0;
  switch (myWidth) {
  case 0:
    value = f[0];
    break;
  case 1:
    value = static_cast<unsigned int>(zorb::readLE(f, 2));
    break;
  case 2:
  case 3:
    value = static_cast<unsigned int>(zorb::readLE(f, 4));
    break;
  case 4:
    value = static_cast<unsigned int>(zorb::readBE(f, 2));
    break;
  case 5:
    value = static_cast<unsigned int>(zorb::readBE(f, 4));
    break;
  case 6:
    value = static_cast<unsigned int>(zorb::readBE(f + 4, 4));
    break;
  default:
    return 0;
  }
  return value * myMultiplier + myIncrement;
}

std::unique_ptr<cScanSigSubset> cFieldRelativeSubset::clone() const {
  auto copy = std::make_unique<cFieldRelativeSubset>();
  copy->create(myOffset, myWidth, myMultiplier, myIncrement);
  return copy;
}

bool cMagicRelativeSubset::create(const char* text, unsigned int offset) {
  if (!mySearch.compile(text)) return false;
  myOffset = offset;
  return true;
}

unsigned int cMagicRelativeSubset::subset(const unsigned char* data, unsigned int size) {
  const long long n = mySearch.length();
  // A magic longer than the range is not looked for: it could only be read past its end.
  if (n == 0 || n >= size) return kNotFound;
  // p = 0 is tried first; after a failed try at p the search stops once p + 1 >= size - n.
  long long p = 0;
  if (!mySearch.matchAt(data)) {
    p = mySearch.find(data, 1, size - n);
    if (p < 0) return kNotFound;
  }
  return static_cast<unsigned int>(p + n) + myOffset;
}

std::unique_ptr<cScanSigSubset> cMagicRelativeSubset::clone() const {
  auto copy = std::make_unique<cMagicRelativeSubset>();
  if (!copy->create(mySearch.text(), myOffset)) return nullptr;
  return copy;
}
