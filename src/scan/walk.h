// Structure walkers: find where a file ends by following its own layout, for formats whose
// end no rule can find exactly. A GIF's trailer byte also occurs inside its image data, a
// JPEG holds the end marker of its thumbnail, MP4 and MPEG program streams have neither a
// total size nor a footer, ELF programs and fonts end where their furthest part ends, and
// compressed streams end where their decoder (zlib, libbz2, liblzma) says they do.
//
// A walk reads only from its start up to the limit it is given, and stops with no length
// when the structure is broken, cut short or longer than the limit. Decoders also stop
// when a stream would decode to far more than it holds (a bomb), so a walk's time is
// bounded by the bytes it may read.
#pragma once

#include <algorithm>
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

enum class eWalker {
  none,
  gif,
  isoMedia,
  mpegProgram,
  jpeg,
  png,
  tiff,
  zip,
  pdf,
  elf,
  font,
  gzip,
  bzip2,
  xz,
  sevenZip,
  sqlite,
  markup,
  ogg,
  matroska,
  flv,
  mp3,
  tar,
  riff,
  asf,
  bmp,
  count // the number of kinds, none included
};

// The walker for files with that extension: gif; mp4, mov, m4a, m4v, 3gp, 3g2; mpg, mpeg,
// vob; jpg, jpeg; png; tif, tiff; zip and the formats built on it (docx, xlsx, pptx, odt,
// ods, odp, epub, jar, apk); pdf; elf, so, o; ttf, otf; gz, tgz; bz2; xz; 7z; sqlite, db;
// html, htm, xhtml, xml, svg; ogg, oga, ogv, opus; mkv, mka, webm; flv; mp3; tar; wav,
// avi, webp; wmv, wma, asf; bmp.
eWalker walkerFor(std::string_view extension);

// The length of the file of that format that starts at start, reading no further than
// start + limit; 0 when the structure is broken before it ends or runs past the limit.
// reached, when given, receives the end of the furthest byte the walk read.
unsigned long long walkLength(eWalker walker, cByteSource& source, unsigned long long start,
                              unsigned long long limit, unsigned long long* reached = nullptr);
