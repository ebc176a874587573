// The bytes of a scanned source: in memory (or mapped), or a file or device read on demand.
#pragma once

#include <algorithm>
#include <vector>

// Random access to the bytes of a scanned source.
class cByteSource {
public:
  static constexpr unsigned int kMaxRead = 64;

  virtual ~cByteSource() = default;
  virtual unsigned long long size() const = 0;
  // n bytes (n <= kMaxRead) at offset, valid until the next call; nullptr when they are not
  // all there or cannot be read.
  virtual const unsigned char* at(unsigned long long offset, unsigned int n) = 0;
  // Up to n bytes from offset, in one piece, valid until the next call; n becomes how many
  // (at least one). nullptr when there is nothing at offset.
  virtual const unsigned char* span(unsigned long long offset, unsigned long long& n) = 0;
};

// A source held in memory (or mapped).
class cMemorySource final : public cByteSource {
public:
  cMemorySource(const unsigned char* data, unsigned long long size) : myData(data), mySize(size) {}
  unsigned long long size() const override { return mySize; }
  const unsigned char* at(unsigned long long offset, unsigned int n) override {
    return offset <= mySize && n <= mySize - offset ? myData + offset : nullptr;
  }
  const unsigned char* span(unsigned long long offset, unsigned long long& n) override {
    if (offset >= mySize || n == 0) return nullptr;
    n = std::min(n, mySize - offset);
    return myData + offset;
  }

private:
  const unsigned char* myData;
  unsigned long long mySize;
};

// A file or device read on demand through a window.
class cFileSource final : public cByteSource {
public:
  cFileSource(int fd, unsigned long long size) : myFd(fd), mySize(size), myWindow(64 * 1024) {}
  unsigned long long size() const override { return mySize; }
  const unsigned char* at(unsigned long long offset, unsigned int n) override;
  const unsigned char* span(unsigned long long offset, unsigned long long& n) override;

private:
  bool load(unsigned long long offset, unsigned long long n);

  int myFd;
  unsigned long long mySize;
  std::vector<unsigned char> myWindow;
  unsigned long long myStart = 0; // the offset of myWindow[0]
  size_t myHave = 0;
};
