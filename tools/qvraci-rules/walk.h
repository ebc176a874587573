// Structure walkers: find where a file ends by following its own layout, for formats whose
// end no rule can find. A GIF's trailer byte also occurs inside its image data, and MP4 and
// MPEG program streams have neither a total size nor a footer; but all three are chains of
// length-prefixed parts that can be walked from the start.
#pragma once

#include <cstddef>
#include <string_view>
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
};

// A source held in memory (or mapped).
class cMemorySource final : public cByteSource {
public:
  cMemorySource(const unsigned char* data, unsigned long long size) : myData(data), mySize(size) {}
  unsigned long long size() const override { return mySize; }
  const unsigned char* at(unsigned long long offset, unsigned int n) override {
    return offset <= mySize && n <= mySize - offset ? myData + offset : nullptr;
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

private:
  int myFd;
  unsigned long long mySize;
  std::vector<unsigned char> myWindow;
  unsigned long long myStart = 0; // the offset of myWindow[0]
  size_t myHave = 0;
};

enum class eWalker { none, gif, isoMedia, mpegProgram };

// The walker for files with that extension: gif; mp4, mov, m4a, m4v, 3gp, 3g2; mpg, mpeg,
// vob.
eWalker walkerFor(std::string_view extension);

// The length of the file of that format that starts at start, reading no further than
// start + limit; 0 when the structure is broken before it ends or runs past the limit.
unsigned long long walkLength(eWalker walker, cByteSource& source, unsigned long long start,
                              unsigned long long limit);
