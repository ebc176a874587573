// Streams of pages, elements, tags and frames: Ogg, Matroska and WebM, Flash video, MP3;
// containers of chunks and objects: RIFF (WAV, AVI, WebP) and ASF (Windows Media).
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

#include "walkers.h"

namespace walkers {

// Pages to the one that ends the last logical stream (end-of-stream flag): every stream
// is opened by a beginning-of-stream page at the start of the file.
tPos walkOgg(cByteSource& s, tPos start) {
  constexpr size_t kMaxStreams = 64;
  std::vector<tPos> open; // serial numbers of the streams begun and not yet ended
  tPos p = start;
  for (bool first = true;; first = false) {
    const unsigned char* h = s.at(p, 27);
    if (!h || std::memcmp(h, "OggS", 4) != 0 || h[4] != 0) return 0;
    const unsigned char type = h[5];
    const tPos serial = le32(h + 14);
    const unsigned int segments = h[26];
    tPos body = 0;
    for (tPos at = p + 27, left = segments; left > 0;) {
      tPos have = left;
      const unsigned char* table = s.span(at, have);
      if (!table) return 0;
      for (tPos i = 0; i < have; ++i) body += table[i];
      at += have;
      left -= have;
    }
    const auto stream = std::find(open.begin(), open.end(), serial);
    if (type & 0x02) {
      if (stream != open.end() || open.size() == kMaxStreams) return 0;
      open.push_back(serial);
    } else if (stream == open.end() || first) {
      return 0; // a page of a stream that never began
    }
    p += 27 + segments + body;
    if (type & 0x04) {
      open.erase(std::find(open.begin(), open.end(), serial));
      if (open.empty()) return p > s.size() ? 0 : p - start;
    }
  }
}

namespace {

// An EBML element's header at p: its ID (marker bits kept), its data size and where its
// data begins; false when the bytes are no element header.
struct sElement {
  tPos id = 0, size = 0, data = 0;
  bool unknownSize = false;
};
bool element(cByteSource& s, tPos p, sElement& e) {
  const unsigned char* b = s.at(p, 1);
  if (!b || *b == 0) return false;
  const int idLength = std::countl_zero(static_cast<unsigned int>(*b)) - 23;
  if (idLength > 4) return false;
  const unsigned char* id = s.at(p, static_cast<unsigned int>(idLength) + 1);
  if (!id) return false;
  e.id = 0;
  for (int i = 0; i < idLength; ++i) e.id = e.id << 8 | id[i];
  const unsigned char lead = id[idLength];
  if (lead == 0) return false;
  const int sizeLength = std::countl_zero(static_cast<unsigned int>(lead)) - 23;
  const unsigned char* size = s.at(p + idLength, static_cast<unsigned int>(sizeLength));
  if (!size) return false;
  e.size = lead & (0xFFu >> sizeLength);
  bool allOnes = e.size == (0xFFu >> sizeLength);
  for (int i = 1; i < sizeLength; ++i) {
    e.size = e.size << 8 | size[i];
    allOnes = allOnes && size[i] == 0xFF;
  }
  e.unknownSize = allOnes;
  e.data = p + idLength + sizeLength;
  return true;
}

bool isSegmentChild(tPos id) {
  static constexpr std::array<tPos, 10> kIds = {0x114D9B74, 0x1549A966, 0x1654AE6B, 0x1C53BB6B,
                                                0x1F43B675, 0x1043A770, 0x1254C367, 0x1941A469,
                                                0xEC,       0xBF};
  return std::find(kIds.begin(), kIds.end(), id) != kIds.end();
}

} // namespace

// The EBML header, then the segment: to its size, or when the size was left unknown (a
// live recording), over its children to the first element that is none of them.
tPos walkMatroska(cByteSource& s, tPos start) {
  sElement e;
  if (!element(s, start, e) || e.id != 0x1A45DFA3 || e.unknownSize) return 0;
  if (!element(s, e.data + e.size, e) || e.id != 0x18538067) return 0;
  if (!e.unknownSize) return e.data + e.size <= s.size() ? e.data + e.size - start : 0;
  const tPos children = e.data;
  tPos p = children;
  while (p < s.size() && element(s, p, e) && isSegmentChild(e.id)) {
    if (e.unknownSize) return 0; // a cluster of unknown size: its end is not told
    p = e.data + e.size;
  }
  return p > children && p <= s.size() ? p - start : 0;
}

// The header, then tags (audio, video, script data), each followed by its own size, up
// to the first bytes that are no such tag.
tPos walkFlv(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 13);
  if (!h || std::memcmp(h, "FLV\x01", 4) != 0 || be32(h + 5) < 9) return 0;
  tPos p = start + be32(h + 5);
  const unsigned char* first = s.at(p, 4);
  if (!first || be32(first) != 0) return 0;
  p += 4;
  tPos tags = 0;
  for (const unsigned char* t; p < s.size();) {
    if (!(t = s.at(p, 11))) return 0; // a tag cut short
    const unsigned int type = t[0] & 0x1F;
    const tPos data = be32(t) & 0xFFFFFF;
    if ((type != 8 && type != 9 && type != 18) || (t[0] & 0xC0) || (be32(t + 7) & 0xFFFFFF)) break;
    const unsigned char* previous = s.at(p + 11 + data, 4);
    if (!previous || be32(previous) != 11 + data) break;
    p += 11 + data + 4;
    ++tags;
  }
  return tags ? p - start : 0;
}

namespace {

// The length of the MPEG audio frame whose header is h, 0 when h is none; version and
// rate receive what later frames of the same stream must repeat.
tPos mpegAudioFrame(const unsigned char* h, unsigned int& version, unsigned int& rate) {
  static constexpr unsigned short kRates[3][3] = {
      {11025, 12000, 8000}, {22050, 24000, 16000}, {44100, 48000, 32000}};
  static constexpr unsigned short kBitrates[5][15] = {
      {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448}, // 1, I
      {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},    // 1, II
      {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},     // 1, III
      {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},    // 2, I
      {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}};        // 2, II and III
  if (h[0] != 0xFF || (h[1] & 0xE0) != 0xE0) return 0;
  const unsigned int v = (h[1] >> 3) & 3, layer = (h[1] >> 1) & 3, bits = h[2] >> 4,
                     r = (h[2] >> 2) & 3, padding = (h[2] >> 1) & 1;
  if (v == 1 || layer == 0 || bits == 0 || bits == 15 || r == 3) return 0;
  const bool mpeg1 = v == 3;
  const unsigned int row = mpeg1 ? 3 - layer : layer == 3 ? 3 : 4;
  const tPos bitrate = kBitrates[row][bits] * 1000ull;
  const tPos hz = kRates[v == 0 ? 0 : v == 2 ? 1 : 2][r];
  version = v;
  rate = r;
  if (layer == 3) return (12 * bitrate / hz + padding) * 4;          // layer I
  return (layer == 1 && !mpeg1 ? 72 : 144) * bitrate / hz + padding; // layers II, III
}

} // namespace

// An ID3v2 tag, then MPEG audio frames of one version and sample rate, and an ID3v1 tag
// when one follows.
tPos walkMp3(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 10);
  if (!h || std::memcmp(h, "ID3", 3) != 0 || h[3] < 2 || h[3] > 4) return 0;
  if ((h[6] | h[7] | h[8] | h[9]) & 0x80) return 0;
  tPos p = start + 10 + (h[6] << 21 | h[7] << 14 | h[8] << 7 | h[9]) + (h[5] & 0x10 ? 10 : 0);
  // Writers may pad the tag beyond its size with zeros.
  for (const unsigned char* z; (z = s.at(p, 1)) && *z == 0;) ++p;
  unsigned int version = 0, rate = 0;
  tPos frames = 0;
  for (const unsigned char* f; (f = s.at(p, 4));) {
    unsigned int v = 0, r = 0;
    const tPos length = mpegAudioFrame(f, v, r);
    if (length < 4 || (frames && (v != version || r != rate))) break;
    if (p + length > s.size()) return 0;
    version = v;
    rate = r;
    p += length;
    ++frames;
  }
  if (frames < 2) return 0;
  if (const unsigned char* tag = s.at(p, 3);
      tag && std::memcmp(tag, "TAG", 3) == 0 && p + 128 <= s.size())
    p += 128;
  return p - start;
}

namespace {

bool fourCc(const unsigned char* id) {
  return std::all_of(id, id + 4, [](unsigned char c) { return c >= 0x20 && c < 0x7F; });
}

// The end of the RIFF form at p whose chunks add up to its size, or 0.
tPos riffForm(cByteSource& s, tPos p, const char* form) {
  const unsigned char* h = s.at(p, 12);
  if (!h || std::memcmp(h, "RIFF", 4) != 0 || le32(h + 4) < 4) return 0;
  if (form && std::memcmp(h + 8, form, 4) != 0) return 0;
  const tPos end = p + 8 + le32(h + 4);
  for (p += 12; p < end;) {
    const unsigned char* c = s.at(p, 8);
    if (!c || !fourCc(c)) return 0;
    p += 8 + le32(c + 4) + (le32(c + 4) & 1);
  }
  // The last chunk's pad byte may lie outside the form's size.
  return (p == end || p == end + 1) && end <= s.size() ? end : 0;
}

} // namespace

// The RIFF form, whose chunks must add up to its size, and the AVIX forms that extend an
// AVI beyond its first gigabyte.
tPos walkRiff(cByteSource& s, tPos start) {
  tPos end = riffForm(s, start, nullptr);
  if (!end) return 0;
  const unsigned char* form = s.at(start + 8, 4);
  if (form && std::memcmp(form, "AVI ", 4) == 0) {
    while (const tPos next = riffForm(s, end, "AVIX")) end = next;
  }
  return end - start;
}

// The header object and the objects after it (data and indexes), to the first bytes that
// are none of them; the data object must be among them.
tPos walkAsf(cByteSource& s, tPos start) {
  static const unsigned char kHeader[16] = {0x30, 0x26, 0xB2, 0x75, 0x8E, 0x66, 0xCF, 0x11,
                                            0xA6, 0xD9, 0x00, 0xAA, 0x00, 0x62, 0xCE, 0x6C};
  static const unsigned char kData[16] = {0x36, 0x26, 0xB2, 0x75, 0x8E, 0x66, 0xCF, 0x11,
                                          0xA6, 0xD9, 0x00, 0xAA, 0x00, 0x62, 0xCE, 0x6C};
  static const unsigned char kSimpleIndex[16] = {0x90, 0x08, 0x00, 0x33, 0xB1, 0xE5, 0xCF, 0x11,
                                                 0x89, 0xF4, 0x00, 0xA0, 0xC9, 0x03, 0x49, 0xCB};
  static const unsigned char kIndex[16] = {0xD3, 0x29, 0xE2, 0xD6, 0xDA, 0x35, 0xD1, 0x11,
                                           0x90, 0x34, 0x00, 0xA0, 0xC9, 0x03, 0x49, 0xBE};
  tPos p = start;
  bool data = false;
  for (const unsigned char* o; (o = s.at(p, 24));) {
    const bool header = std::memcmp(o, kHeader, 16) == 0;
    if (header != (p == start)) break;
    const bool isData = std::memcmp(o, kData, 16) == 0;
    if (!header && !isData && std::memcmp(o, kSimpleIndex, 16) != 0 &&
        std::memcmp(o, kIndex, 16) != 0)
      break;
    const tPos size = le64(o + 16);
    if (size < 24 || size > s.size() - p) return 0;
    data = data || isData;
    p += size;
  }
  return data ? p - start : 0;
}

} // namespace walkers
