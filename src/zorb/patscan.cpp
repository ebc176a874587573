#include "patscan.h"

#include <cstring>
#include <utility>

bool cPatternSearch::compile(const char* text) {
  sHexSearchRule::_pattern pattern;
  if (!sHexSearchRule::cnvAdv(pattern, text)) return false;
  assign(std::move(pattern));
  myText.set(text);
  return true;
}

void cPatternSearch::assign(sHexSearchRule::_pattern pattern) {
  myPattern = std::move(pattern);
  myText.clear();
  findAnchor();
}

void cPatternSearch::findAnchor() {
  myAnchor = 0;
  myAnchorCount = 256;
  myOnly = 0;
  for (long long i = 0; i < myPattern.count(); ++i) {
    const int count = myPattern[i].count();
    if (count >= myAnchorCount) continue;
    myAnchor = i;
    myAnchorCount = count;
  }
  if (myAnchorCount == 1) {
    while (!myPattern[myAnchor].has(myOnly)) ++myOnly;
  }
}

long long cPatternSearch::find(const unsigned char* data, long long from, long long end) const {
  const long long n = myPattern.count();
  if (from >= end || myAnchorCount == 0) return -1;
  if (n == 0) return from; // an empty pattern matches everywhere
  const long long k = myAnchor;
  if (myAnchorCount == 1) {
    for (long long at = from; at < end; ++at) {
      const void* hit = std::memchr(data + at + k, myOnly, static_cast<size_t>(end - at));
      if (!hit) return -1;
      at = static_cast<const unsigned char*>(hit) - data - k;
      if (matchAt(data + at)) return at;
    }
    return -1;
  }
  const sHexSearchRule::sByteDescr& set = myPattern.data()[k];
  for (long long at = from; at < end; ++at) {
    if (set.has(data[at + k]) && matchAt(data + at)) return at;
  }
  return -1;
}
