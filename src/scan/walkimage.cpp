// JPEG, PNG, TIFF and BMP.
#include <algorithm>
#include <cstring>
#include <vector>

#include "walkers.h"

namespace walkers {

namespace {

// After a start-of-scan header: the entropy-coded data runs to the first FF that is
// followed by neither 00 (a stuffed byte), a restart marker (D0 to D7) nor another FF
// (fill). Returns where that marker's FF stands, or end.
tPos skipScanData(cByteSource& s, tPos p) {
  const tPos end = s.size();
  while (p < end) {
    tPos have = 1 << 20;
    const unsigned char* d = s.span(p, have);
    if (!d) return end;
    const auto* ff = static_cast<const unsigned char*>(std::memchr(d, 0xFF, have));
    if (!ff) {
      p += have;
      continue;
    }
    p += static_cast<tPos>(ff - d);
    const unsigned char* m = s.at(p, 2);
    if (!m) return end;
    if (m[1] == 0x00 || (m[1] >= 0xD0 && m[1] <= 0xD7)) {
      p += 2;
    } else if (m[1] == 0xFF) {
      p += 1;
    } else {
      return p;
    }
  }
  return end;
}

} // namespace

// Markers and their segments from the start of image; a start of scan is followed by its
// entropy-coded data. The end-of-image marker that closes the file is the first one met
// between segments: a thumbnail's lies inside its APP1 segment and is stepped over.
tPos walkJpeg(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 3);
  if (!h || h[0] != 0xFF || h[1] != 0xD8 || h[2] != 0xFF) return 0;
  const tPos end = s.size();
  tPos p = start + 2;
  bool frame = false;
  while (p < end) {
    const unsigned char* m = s.at(p, 2);
    if (!m || m[0] != 0xFF) return 0;
    const unsigned char marker = m[1];
    if (marker == 0xFF) { // fill before a marker
      p += 1;
      continue;
    }
    if (marker == 0xD9) return frame ? p + 2 - start : 0;
    if (marker == 0x00 || marker == 0xD8) return 0;
    if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {
      p += 2;
      continue;
    }
    const unsigned char* l = s.at(p + 2, 2);
    if (!l || be16(l) < 2) return 0;
    frame = frame || (marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 &&
                      marker != 0xCC);
    p += 2 + be16(l);
    if (marker == 0xDA) {
      if (!frame) return 0;
      p = skipScanData(s, p);
    }
  }
  return 0;
}

// The signature, then chunks (length, type, data, CRC) from IHDR to IEND.
tPos walkPng(cByteSource& s, tPos start) {
  static const unsigned char kSignature[8] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
  const unsigned char* h = s.at(start, 16);
  if (!h || std::memcmp(h, kSignature, 8) != 0 || std::memcmp(h + 12, "IHDR", 4) != 0) return 0;
  const tPos end = s.size();
  const auto letter = [](unsigned char c) { return (c | 0x20) >= 'a' && (c | 0x20) <= 'z'; };
  tPos p = start + 8;
  while (p < end) {
    const unsigned char* c = s.at(p, 8);
    if (!c || be32(c) > 0x7FFFFFFF || !std::all_of(c + 4, c + 8, letter)) return 0;
    const tPos next = p + 12 + be32(c);
    if (next > end) return 0;
    if (std::memcmp(c + 4, "IEND", 4) == 0) return next - start;
    p = next;
  }
  return 0;
}

namespace {

// The byte size of one value of a TIFF field type; 0 for types we do not know.
unsigned int tiffTypeSize(tPos type) {
  static const unsigned char kSizes[19] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
  return type < 19 ? kSizes[type] : 0;
}

struct sTiffField {
  tPos type = 0, count = 0, value = 0; // value: the inline bytes' offset, or the data's
  bool present = false;
};

class cTiffWalk {
public:
  cTiffWalk(cByteSource& s, tPos start, bool big) : s(s), start(start), big(big) {}

  // The furthest byte of the IFD chain and all it points to, relative to start; 0 when
  // something lies outside the source or the structure is broken.
  tPos run(tPos first) {
    std::vector<tPos> pending{first};
    constexpr size_t kMaxIfds = 4096;
    while (!pending.empty()) {
      const tPos ifd = pending.back();
      pending.pop_back();
      if (std::find(visited.begin(), visited.end(), ifd) != visited.end()) continue;
      if (visited.size() >= kMaxIfds || !directory(ifd, pending)) return 0;
      visited.push_back(ifd);
    }
    return furthest;
  }

private:
  bool extend(tPos offset, tPos length) {
    if (offset > s.size() - start || length > s.size() - start - offset) return false;
    furthest = std::max(furthest, offset + length);
    return true;
  }

  // Value i of a field: inline in the entry when it fits in four bytes.
  bool value(const sTiffField& f, tPos i, tPos& out) {
    const unsigned int size = tiffTypeSize(f.type);
    if (size == 0 || size > 4 || i >= f.count) return false;
    const tPos at = f.count * size <= 4 ? f.value + i * size : start + f.value + i * size;
    const unsigned char* p = s.at(at, size);
    if (!p) return false;
    out = number(p, size, big);
    return true;
  }

  // The extents of the pieces that an offsets field and a byte-counts field give.
  bool pieces(const sTiffField& offsets, const sTiffField& counts) {
    if (!offsets.present || !counts.present) return true;
    if (offsets.count != counts.count) return false;
    for (tPos i = 0; i < offsets.count; ++i) {
      tPos at = 0, length = 0;
      if (!value(offsets, i, at) || !value(counts, i, length) || !extend(at, length)) return false;
    }
    return true;
  }

  bool directory(tPos ifd, std::vector<tPos>& pending) {
    const unsigned char* n = s.at(start + ifd, 2);
    if (ifd < 8 || !n) return false;
    const tPos entries = number(n, 2, big);
    if (entries == 0 || !extend(ifd, 2 + 12 * entries + 4)) return false;
    sTiffField strips, stripCounts, tiles, tileCounts, thumb, thumbLength;
    for (tPos i = 0; i < entries; ++i) {
      const tPos e = start + ifd + 2 + 12 * i;
      const unsigned char* p = s.at(e, 12);
      if (!p) return false;
      const tPos tag = number(p, 2, big);
      sTiffField f{number(p + 2, 2, big), number(p + 4, 4, big), e + 8, true};
      const unsigned int size = tiffTypeSize(f.type);
      if (size == 0) continue; // a type we do not know: its size is unknown too
      if (f.count > (s.size() - start) / size) return false;
      if (f.count * size > 4) {
        f.value = number(p + 8, 4, big);
        if (!extend(f.value, f.count * size)) return false;
      }
      switch (tag) {
      case 273:
        strips = f;
        break;
      case 279:
        stripCounts = f;
        break;
      case 324:
        tiles = f;
        break;
      case 325:
        tileCounts = f;
        break;
      case 513:
        thumb = f;
        break;
      case 514:
        thumbLength = f;
        break;
      case 330:   // sub-IFDs
      case 34665: // Exif
      case 34853: // GPS
      case 40965: // interoperability
        for (tPos k = 0; k < f.count && k < 64; ++k) {
          tPos sub = 0;
          if (value(f, k, sub) && sub) pending.push_back(sub);
        }
        break;
      default:
        break;
      }
    }
    const unsigned char* next = s.at(start + ifd + 2 + 12 * entries, 4);
    if (!next) return false;
    if (const tPos to = number(next, 4, big)) pending.push_back(to);
    return pieces(strips, stripCounts) && pieces(tiles, tileCounts) && pieces(thumb, thumbLength);
  }

  cByteSource& s;
  tPos start;
  bool big;
  tPos furthest = 8;
  std::vector<tPos> visited;
};

} // namespace

// Either byte order: the header, then the chain of image file directories with the
// directories they point to (sub-images, Exif, GPS); the file ends at the furthest byte
// of a directory, a value, a strip, a tile or a thumbnail.
tPos walkTiff(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 8);
  if (!h) return 0;
  const bool little = std::memcmp(h, "II\x2A\x00", 4) == 0;
  const bool big = std::memcmp(h, "MM\x00\x2A", 4) == 0;
  if (!little && !big) return 0;
  return cTiffWalk(s, start, big).run(number(h + 4, 4, big));
}

// The file size in the header, once the header holds together: a known information header
// with one plane and a usual depth, and pixels that start after the headers and, when not
// compressed, fit in the file. Writers that leave the size 0 give the end of the pixels.
tPos walkBmp(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 30);
  if (!h || h[0] != 'B' || h[1] != 'M') return 0;
  const tPos size = le32(h + 2), pixels = le32(h + 10), info = le32(h + 14);
  tPos width = 0, height = 0, planes = 0, depth = 0, compression = 0;
  if (info == 12) {
    width = le16(h + 18), height = le16(h + 20), planes = le16(h + 22), depth = le16(h + 24);
  } else if (info == 40 || info == 52 || info == 56 || info == 64 || info == 108 || info == 124) {
    const unsigned char* more = s.at(start + 18, 16);
    if (!more) return 0;
    width = le32(more);
    const auto signedHeight = static_cast<int>(static_cast<unsigned int>(le32(more + 4)));
    height =
        static_cast<tPos>(signedHeight < 0 ? -static_cast<long long>(signedHeight) : signedHeight);
    planes = le16(more + 8), depth = le16(more + 10), compression = le32(more + 12);
  } else {
    return 0;
  }
  static constexpr tPos kDepths[] = {1, 2, 4, 8, 16, 24, 32, 64};
  if (planes != 1 ||
      std::find(std::begin(kDepths), std::end(kDepths), depth) == std::end(kDepths) || width == 0 ||
      height == 0 || width > 1u << 20 || height > 1u << 20 || pixels < 14 + info)
    return 0;
  const tPos raw = (width * depth + 31) / 32 * 4 * height;
  const bool packed = compression == 0 || compression == 3 || compression == 6;
  tPos end = size;
  if (size == 0) {
    if (!packed) return 0;
    end = pixels + raw;
  } else if (pixels >= size || (packed && pixels + raw > size)) {
    return 0;
  }
  return end <= s.size() - start ? end : 0;
}

} // namespace walkers
