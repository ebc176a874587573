// cMemoryTarget: a byte target over memory, for data held in the program (built-in
// images) and for tests and fuzzers. Reads move what is left; writes append.
#pragma once

#include <algorithm>
#include <cstring>
#include <vector>

#include "files.h"

class cMemoryTarget : public cFileIOTarget {
public:
  cMemoryTarget() = default;
  cMemoryTarget(const void* data, size_t size)
      : myBytes(static_cast<const unsigned char*>(data),
                static_cast<const unsigned char*>(data) + size) {}

  long long read(void* buf, unsigned int n) override {
    const size_t take = std::min<size_t>(n, myBytes.size() - myPos);
    if (take) std::memcpy(buf, myBytes.data() + myPos, take);
    myPos += take;
    return static_cast<long long>(take);
  }
  long long write(const void* buf, unsigned int n) override {
    const auto* p = static_cast<const unsigned char*>(buf);
    myBytes.insert(myBytes.end(), p, p + n);
    return n;
  }

  const std::vector<unsigned char>& bytes() const { return myBytes; }
  size_t position() const { return myPos; }
  void rewind() { myPos = 0; }

private:
  std::vector<unsigned char> myBytes;
  size_t myPos = 0;
};
