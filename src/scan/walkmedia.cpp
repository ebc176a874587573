// GIF, ISO media (MP4, QuickTime) and MPEG program streams: chains of length-prefixed parts.
#include <algorithm>
#include <array>
#include <cstring>

#include "walkers.h"

namespace walkers {

namespace {

// Size of a GIF colour table from its packed flags byte; 0 when there is none.
unsigned long long colourTable(unsigned char flags) {
  return flags & 0x80 ? 3ull << ((flags & 7) + 1) : 0;
}

// Header, screen descriptor and colour table, then extensions and images, each followed by
// a chain of sub-blocks (a length byte and that many bytes) that a zero length closes; the
// trailer 3B ends the file.
} // namespace

tPos walkGif(cByteSource& s, tPos start) {
  const tPos end = s.size();
  const unsigned char* h = s.at(start, 13);
  if (!h || std::memcmp(h, "GIF8", 4) != 0 || (h[4] != '7' && h[4] != '9') || h[5] != 'a') return 0;
  unsigned long long p = start + 13 + colourTable(h[10]);
  bool image = false;
  while (p < end) {
    const unsigned char* b = s.at(p, 1);
    if (!b) return 0;
    if (*b == 0x3B) return image ? p + 1 - start : 0;
    if (*b == 0x21) {
      p += 2; // introducer and label
    } else if (*b == 0x2C) {
      const unsigned char* d = s.at(p, 11); // descriptor and the first byte after it
      if (!d) return 0;
      p += 10 + colourTable(d[9]);
      const unsigned char* codeSize = s.at(p, 1);
      if (!codeSize || *codeSize < 1 || *codeSize > 11) return 0;
      p += 1;
      image = true;
    } else {
      return 0;
    }
    for (;;) {
      const unsigned char* length = p < end ? s.at(p, 1) : nullptr;
      if (!length) return 0;
      p += 1 + *length;
      if (*length == 0) break;
    }
  }
  return 0;
}

namespace {

bool isTopLevelBox(const unsigned char* type) {
  static constexpr std::array<const char*, 16> kTypes = {
      "moov", "mdat", "free", "skip", "wide", "uuid", "moof", "mfra",
      "meta", "pdin", "styp", "sidx", "ssix", "prft", "emsg", "pnot"};
  return std::any_of(kTypes.begin(), kTypes.end(),
                     [&](const char* t) { return std::memcmp(t, type, 4) == 0; });
}

// A chain of boxes (32-bit size, type, or size 1 and a 64-bit size after the type) that
// opens with ftyp. The file ends before the first box that is not a known top-level one,
// or that opens another file (a second ftyp). Without a moov box it is not complete.
} // namespace

tPos walkIsoMedia(cByteSource& s, tPos start) {
  const tPos end = s.size();
  unsigned long long p = start;
  bool movie = false;
  while (p < end) {
    const unsigned char* h = s.at(p, 8);
    if (!h) break;
    const bool first = p == start;
    if (first != (std::memcmp(h + 4, "ftyp", 4) == 0)) {
      if (first) return 0;
      break;
    }
    if (!first && !isTopLevelBox(h + 4)) break;
    movie = movie || std::memcmp(h + 4, "moov", 4) == 0;
    unsigned long long size = be32(h);
    if (size == 1) {
      const unsigned char* large = s.at(p + 8, 8);
      size = large ? be64(large) : 0;
      if (size < 16) break;
    } else if (size == 0) {
      return 0; // runs to an end we cannot know
    } else if (size < 8) {
      break;
    }
    if (size > end - p) return 0; // cut short, or longer than allowed
    p += size;
  }
  return movie ? p - start : 0;
}

// The system clock reference of a pack header, MPEG-2 or MPEG-1; false when the header is
// neither.
namespace {

bool packClock(const unsigned char* h, unsigned long long& clock, unsigned int& length) {
  const auto b = [&](int i) { return static_cast<unsigned long long>(h[i]); };
  if ((h[4] & 0xC4) == 0x44) {
    clock = (b(4) >> 3 & 7) << 30 | (b(4) & 3) << 28 | b(5) << 20 | (b(6) >> 3) << 15 |
            (b(6) & 3) << 13 | b(7) << 5 | b(8) >> 3;
    length = 14 + (h[13] & 7);
    return true;
  }
  if ((h[4] & 0xF1) == 0x21) {
    clock = (b(4) >> 1 & 7) << 30 | b(5) << 22 | (b(6) >> 1) << 15 | b(7) << 7 | b(8) >> 1;
    length = 12;
    return true;
  }
  return false;
}

// Pack headers, system headers and packets, each behind a 00 00 01 start code. The stream
// ends at its end code, before anything else, or where the clock goes back: streams are
// often written back to back and the next one starts its clock again.
} // namespace

tPos walkMpegProgram(cByteSource& s, tPos start) {
  const tPos end = s.size();
  unsigned long long p = start, lastClock = 0;
  bool pack = false;
  while (p < end) {
    const unsigned char* h = s.at(p, 6);
    if (!h || h[0] != 0 || h[1] != 0 || h[2] != 1) break;
    unsigned long long length = 0;
    if (h[3] == 0xBA) {
      unsigned long long clock = 0;
      unsigned int headerLength = 0;
      h = s.at(p, 14);
      if (!h || !packClock(h, clock, headerLength) || (pack && clock < lastClock)) break;
      lastClock = clock;
      pack = true;
      length = headerLength;
    } else if (!pack) {
      return 0;
    } else if (h[3] == 0xB9) {
      if (end - p >= 4) p += 4; // the end code, when it is within the limit
      break;
    } else if (h[3] >= 0xBB) {
      length = 6 + be16(h + 4);
    } else {
      break;
    }
    if (length > end - p) break;
    p += length;
  }
  return pack ? p - start : 0;
}

} // namespace walkers
