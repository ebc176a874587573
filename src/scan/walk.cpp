#include "walk.h"

#include <array>
#include <cstring>
#include <string>
#include <unistd.h>

#include "walkers.h"

using walkers::tPos;

namespace {

// The part of a source that one walk may read, from 0 to its limit, noting how far the
// walk read.
class cWalkView final : public cByteSource {
public:
  cWalkView(cByteSource& source, tPos end) : mySource(source), myEnd(end) {}
  unsigned long long size() const override { return myEnd; }
  const unsigned char* at(unsigned long long offset, unsigned int n) override {
    if (offset > myEnd || n > myEnd - offset) return nullptr;
    myReached = std::max(myReached, offset + n);
    return mySource.at(offset, n);
  }
  const unsigned char* span(unsigned long long offset, unsigned long long& n) override {
    if (offset >= myEnd) return nullptr;
    n = std::min(n, myEnd - offset);
    const unsigned char* p = mySource.span(offset, n);
    if (p) myReached = std::max(myReached, offset + n);
    return p;
  }
  tPos reached() const { return myReached; }

private:
  cByteSource& mySource;
  tPos myEnd;
  tPos myReached = 0;
};

struct sKind {
  const char* extensions[10];
  eWalker walker;
};

constexpr std::array<sKind, 24> kKinds = {{
    {{"gif"}, eWalker::gif},
    {{"mp4", "mov", "m4a", "m4v", "3gp", "3g2"}, eWalker::isoMedia},
    {{"mpg", "mpeg", "vob"}, eWalker::mpegProgram},
    {{"jpg", "jpeg"}, eWalker::jpeg},
    {{"png"}, eWalker::png},
    {{"tif", "tiff"}, eWalker::tiff},
    {{"zip", "docx", "xlsx", "pptx", "odt", "ods", "odp", "epub", "jar", "apk"}, eWalker::zip},
    {{"pdf"}, eWalker::pdf},
    {{"elf", "so", "o"}, eWalker::elf},
    {{"ttf", "otf"}, eWalker::font},
    {{"gz", "tgz"}, eWalker::gzip},
    {{"bz2"}, eWalker::bzip2},
    {{"xz"}, eWalker::xz},
    {{"7z"}, eWalker::sevenZip},
    {{"sqlite", "db"}, eWalker::sqlite},
    {{"html", "htm", "xhtml", "xml", "svg"}, eWalker::markup},
    {{"ogg", "oga", "ogv", "opus"}, eWalker::ogg},
    {{"mkv", "mka", "webm"}, eWalker::matroska},
    {{"flv"}, eWalker::flv},
    {{"mp3"}, eWalker::mp3},
    {{"tar"}, eWalker::tar},
    {{"wav", "avi", "webp"}, eWalker::riff},
    {{"wmv", "wma", "asf"}, eWalker::asf},
    {{"bmp"}, eWalker::bmp},
}};

tPos walkOne(eWalker walker, cByteSource& s, tPos start) {
  using namespace walkers;
  switch (walker) {
  case eWalker::gif:
    return walkGif(s, start);
  case eWalker::isoMedia:
    return walkIsoMedia(s, start);
  case eWalker::mpegProgram:
    return walkMpegProgram(s, start);
  case eWalker::jpeg:
    return walkJpeg(s, start);
  case eWalker::png:
    return walkPng(s, start);
  case eWalker::tiff:
    return walkTiff(s, start);
  case eWalker::zip:
    return walkZip(s, start);
  case eWalker::pdf:
    return walkPdf(s, start);
  case eWalker::elf:
    return walkElf(s, start);
  case eWalker::font:
    return walkFont(s, start);
  case eWalker::gzip:
    return walkGzip(s, start);
  case eWalker::bzip2:
    return walkBzip2(s, start);
  case eWalker::xz:
    return walkXz(s, start);
  case eWalker::sevenZip:
    return walkSevenZip(s, start);
  case eWalker::sqlite:
    return walkSqlite(s, start);
  case eWalker::markup:
    return walkMarkup(s, start);
  case eWalker::ogg:
    return walkOgg(s, start);
  case eWalker::matroska:
    return walkMatroska(s, start);
  case eWalker::flv:
    return walkFlv(s, start);
  case eWalker::mp3:
    return walkMp3(s, start);
  case eWalker::tar:
    return walkTar(s, start);
  case eWalker::riff:
    return walkRiff(s, start);
  case eWalker::asf:
    return walkAsf(s, start);
  case eWalker::bmp:
    return walkBmp(s, start);
  case eWalker::none:
  case eWalker::count:
    break;
  }
  return 0;
}

} // namespace

bool walkers::copy(cByteSource& s, tPos p, unsigned char* out, tPos n) {
  while (n > 0) {
    tPos have = n;
    const unsigned char* d = s.span(p, have);
    if (!d) return false;
    std::memcpy(out, d, have);
    out += have;
    p += have;
    n -= have;
  }
  return true;
}

tPos walkers::find(cByteSource& s, tPos from, std::string_view needle) {
  const tPos end = s.size();
  const tPos n = needle.size();
  if (n == 0 || from > end || n > end - from) return end;
  constexpr tPos kPiece = 1 << 20;
  while (end - from >= n) {
    // Each piece overlaps the next by n - 1 bytes, so no occurrence falls between them.
    tPos have = std::min(kPiece, end - from);
    const unsigned char* p = s.span(from, have);
    if (!p || have < n) {
      // A window shorter than the needle: compare through small reads.
      const unsigned char* q = s.at(from, static_cast<unsigned int>(n));
      if (!q) return end;
      if (std::memcmp(q, needle.data(), n) == 0) return from;
      ++from;
      continue;
    }
    if (const void* hit = memmem(p, have, needle.data(), n))
      return from + static_cast<tPos>(static_cast<const unsigned char*>(hit) - p);
    from += have - (n - 1);
  }
  return end;
}

eWalker walkerFor(std::string_view extension) {
  std::string lower(extension);
  for (char& c : lower) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  for (const sKind& kind : kKinds) {
    for (const char* e : kind.extensions) {
      if (e && lower == e) return kind.walker;
    }
  }
  return eWalker::none;
}

unsigned long long walkLength(eWalker walker, cByteSource& source, unsigned long long start,
                              unsigned long long limit, unsigned long long* reached) {
  if (reached) *reached = start;
  if (start >= source.size()) return 0;
  cWalkView view(source, start + std::min(limit, source.size() - start));
  const tPos length = walkOne(walker, view, start);
  if (reached) *reached = std::max(start, view.reached());
  return length;
}
