// What the structure walkers share: the walkers themselves, over a source that holds only
// the bytes a walk may read (its size is the walk's limit), and readers of numbers and
// patterns. Each walker returns the length of the file that starts at start, or 0.
#pragma once

#include <string_view>

#include "walk.h"

namespace walkers {

using tPos = unsigned long long;

inline tPos be16(const unsigned char* p) {
  return static_cast<tPos>(p[0]) << 8 | p[1];
}
inline tPos be32(const unsigned char* p) {
  return be16(p) << 16 | be16(p + 2);
}
inline tPos be64(const unsigned char* p) {
  return be32(p) << 32 | be32(p + 4);
}
inline tPos le16(const unsigned char* p) {
  return static_cast<tPos>(p[1]) << 8 | p[0];
}
inline tPos le32(const unsigned char* p) {
  return le16(p + 2) << 16 | le16(p);
}
inline tPos le64(const unsigned char* p) {
  return le32(p + 4) << 32 | le32(p);
}
// A number of n bytes (1, 2, 4 or 8) in either byte order.
inline tPos number(const unsigned char* p, unsigned int n, bool bigEndian) {
  switch (n) {
  case 1:
    return p[0];
  case 2:
    return bigEndian ? be16(p) : le16(p);
  case 4:
    return bigEndian ? be32(p) : le32(p);
  default:
    return bigEndian ? be64(p) : le64(p);
  }
}

// Copies n bytes at p into out; false when they are not all there.
bool copy(cByteSource& s, tPos p, unsigned char* out, tPos n);
// Where needle first occurs wholly in [from, s.size()); s.size() when nowhere.
tPos find(cByteSource& s, tPos from, std::string_view needle);

tPos walkGif(cByteSource& s, tPos start);
tPos walkIsoMedia(cByteSource& s, tPos start);
tPos walkMpegProgram(cByteSource& s, tPos start);
tPos walkJpeg(cByteSource& s, tPos start);
tPos walkPng(cByteSource& s, tPos start);
tPos walkTiff(cByteSource& s, tPos start);
tPos walkZip(cByteSource& s, tPos start);
tPos walkPdf(cByteSource& s, tPos start);
tPos walkElf(cByteSource& s, tPos start);
tPos walkFont(cByteSource& s, tPos start);
tPos walkGzip(cByteSource& s, tPos start);
tPos walkBzip2(cByteSource& s, tPos start);
tPos walkXz(cByteSource& s, tPos start);
tPos walkSevenZip(cByteSource& s, tPos start);
tPos walkSqlite(cByteSource& s, tPos start);
tPos walkMarkup(cByteSource& s, tPos start);
tPos walkOgg(cByteSource& s, tPos start);
tPos walkMatroska(cByteSource& s, tPos start);
tPos walkFlv(cByteSource& s, tPos start);
tPos walkMp3(cByteSource& s, tPos start);
tPos walkTar(cByteSource& s, tPos start);
tPos walkRiff(cByteSource& s, tPos start);
tPos walkAsf(cByteSource& s, tPos start);
tPos walkBmp(cByteSource& s, tPos start);

} // namespace walkers
