// ZIP and 7z by their directories; gzip, bzip2 and xz by decoding them with their own
// libraries, which alone know where a compressed stream ends; tar by its headers.
#include <algorithm>
#include <bzlib.h>
#include <cstring>
#include <lzma.h>
#include <vector>
#include <zlib.h>

#include "walkers.h"

namespace walkers {

// The end of central directory record whose directory lies right before it, counted from
// the archive's start (for ZIP64, through its locator and record); the file ends after
// the record's comment. Local headers in between may use data descriptors, so the
// directory is found from the end record rather than by walking the entries.
namespace {

// Whether the local header at p holds together: a known method, a name, and, when its
// sizes stand in it, another record right after its data. The magic alone also occurs as
// a constant in programs and in compressed data, and the end record would then be looked
// for up to the limit.
bool goodLocalHeader(cByteSource& s, tPos p) {
  static constexpr tPos kMethods[] = {0, 1, 6, 8, 9, 12, 14, 19, 93, 95, 96, 97, 98, 99};
  const unsigned char* l = s.at(p, 30);
  if (!l || std::memcmp(l, "PK\x03\x04", 4) != 0 || l[4] > 100) return false;
  const tPos flags = le16(l + 6), method = le16(l + 8), packed = le32(l + 18);
  const tPos name = le16(l + 26), extra = le16(l + 28);
  if (name == 0 ||
      std::find(std::begin(kMethods), std::end(kMethods), method) == std::end(kMethods))
    return false;
  if ((flags & 8) || packed == 0xFFFFFFFF) return true; // its sizes follow its data
  const unsigned char* next = s.at(p + 30 + name + extra + packed, 2);
  return next && next[0] == 'P' && next[1] == 'K';
}

} // namespace

tPos walkZip(cByteSource& s, tPos start) {
  if (!goodLocalHeader(s, start)) return 0;
  const tPos end = s.size();
  for (tPos q = find(s, start + 4, "PK\x05\x06"); q < end; q = find(s, q + 1, "PK\x05\x06")) {
    const unsigned char* e = s.at(q, 22);
    if (!e) return 0;
    tPos size = le32(e + 12), offset = le32(e + 16), record = q;
    if (offset == 0xFFFFFFFF || size == 0xFFFFFFFF) {
      const unsigned char* locator = q >= 20 ? s.at(q - 20, 20) : nullptr;
      if (!locator || std::memcmp(locator, "PK\x06\x07", 4) != 0) continue;
      record = start + le64(locator + 8);
      const unsigned char* z = record < q ? s.at(record, 56) : nullptr;
      if (!z || std::memcmp(z, "PK\x06\x06", 4) != 0) continue;
      size = le64(z + 40), offset = le64(z + 48);
    }
    if (offset > record - start || size != record - start - offset) continue;
    const unsigned char* first = s.at(start + offset, 4);
    if (size && (!first || std::memcmp(first, "PK\x01\x02", 4) != 0)) continue;
    const tPos fileEnd = q + 22 + le16(e + 20);
    return fileEnd <= end ? fileEnd - start : 0;
  }
  return 0;
}

// The signature header gives the next header's place and size: the file ends there.
tPos walkSevenZip(cByteSource& s, tPos start) {
  const unsigned char* h = s.at(start, 32);
  if (!h || std::memcmp(h, "7z\xBC\xAF\x27\x1C", 6) != 0) return 0;
  if (crc32(0, h + 12, 20) != le32(h + 8)) return 0;
  const tPos offset = le64(h + 12), size = le64(h + 20);
  const tPos room = s.size() - start;
  if (size == 0 || offset > room || size > room - offset || 32 > room - offset - size) return 0;
  return 32 + offset + size;
}

namespace {

// A decoder may make this much more than it has read; a stream that would make more is
// taken for a bomb and left to the end rules.
constexpr tPos kMaxRatio = 32, kFreeOutput = 64ull << 20;

// Feeds the source from p to a decoder, piece by piece, until the decoder says its stream
// ended. step(in, inLength, out, outLength, used, made) decodes once and returns 1 at the
// end of the stream, 0 to go on, -1 on an error. Returns the end of the stream, or 0.
template <typename tStep> tPos decode(cByteSource& s, tPos p, tStep step) {
  std::vector<unsigned char> out(1 << 16);
  tPos read = 0, made = 0;
  const unsigned char* in = nullptr;
  tPos have = 0;
  for (;;) {
    if (have == 0) {
      have = 1 << 20;
      in = s.span(p, have);
      if (!in) return 0; // cut short, or longer than the walk may read
    }
    size_t used = 0, produced = 0;
    const int state = step(in, have, out.data(), out.size(), used, produced);
    in += used, have -= used, p += used, read += used, made += produced;
    if (state < 0 || made > kFreeOutput + kMaxRatio * read) return 0;
    if (state > 0) return p;
    if (used == 0 && produced == 0) return 0; // no progress: a stream the decoder cannot end
  }
}

// The gzip member header: returns where the deflate data starts, or 0.
tPos gzipHeader(cByteSource& s, tPos p) {
  const unsigned char* h = s.at(p, 10);
  if (!h || h[0] != 0x1F || h[1] != 0x8B || h[2] != 8 || (h[3] & 0xE0)) return 0;
  const unsigned char flags = h[3];
  p += 10;
  if (flags & 4) {
    const unsigned char* x = s.at(p, 2);
    if (!x) return 0;
    p += 2 + le16(x);
  }
  for (const unsigned char bit : {8, 16}) { // the name, then the comment, zero-terminated
    if (!(flags & bit)) continue;
    const tPos zero = find(s, p, std::string_view("\0", 1));
    if (zero >= s.size()) return 0;
    p = zero + 1;
  }
  if (flags & 2) p += 2;
  return p < s.size() ? p : 0;
}

} // namespace

// Members, each a header, deflate data decoded by zlib and a trailer (CRC and size of
// what it decodes to). Members that follow each other directly are one file.
tPos walkGzip(cByteSource& s, tPos start) {
  tPos p = start, fileEnd = 0;
  while (tPos data = gzipHeader(s, p)) {
    z_stream z{};
    if (inflateInit2(&z, -MAX_WBITS) != Z_OK) return 0;
    unsigned long crc = crc32(0, nullptr, 0);
    const tPos streamEnd = decode(
        s, data,
        [&](const unsigned char* in, tPos inLength, unsigned char* out, size_t outLength,
            size_t& used, size_t& made) {
          z.next_in = const_cast<unsigned char*>(in);
          z.avail_in = static_cast<uInt>(std::min<tPos>(inLength, 1u << 30));
          z.next_out = out;
          z.avail_out = static_cast<uInt>(outLength);
          const int result = inflate(&z, Z_NO_FLUSH);
          used = static_cast<size_t>(z.next_in - in);
          made = outLength - z.avail_out;
          crc = crc32(crc, out, static_cast<uInt>(made));
          return result == Z_STREAM_END ? 1 : result == Z_OK || result == Z_BUF_ERROR ? 0 : -1;
        });
    const tPos decoded = z.total_out;
    inflateEnd(&z);
    const unsigned char* trailer = streamEnd ? s.at(streamEnd, 8) : nullptr;
    if (!trailer || le32(trailer) != crc || le32(trailer + 4) != (decoded & 0xFFFFFFFF)) break;
    p = fileEnd = streamEnd + 8;
  }
  return fileEnd ? fileEnd - start : 0;
}

namespace {

bool bzip2Start(cByteSource& s, tPos p) {
  const unsigned char* h = s.at(p, 10);
  return h && std::memcmp(h, "BZh", 3) == 0 && h[3] >= '1' && h[3] <= '9' &&
         (std::memcmp(h + 4, "\x31\x41\x59\x26\x53\x59", 6) == 0 ||
          std::memcmp(h + 4, "\x17\x72\x45\x38\x50\x90", 6) == 0);
}

} // namespace

// Streams decoded by libbz2 to their end; streams that follow each other directly (as
// parallel compressors write them) are one file.
tPos walkBzip2(cByteSource& s, tPos start) {
  tPos p = start, fileEnd = 0;
  while (bzip2Start(s, p)) {
    bz_stream b{};
    if (BZ2_bzDecompressInit(&b, 0, 0) != BZ_OK) return 0;
    const tPos streamEnd =
        decode(s, p,
               [&](const unsigned char* in, tPos inLength, unsigned char* out, size_t outLength,
                   size_t& used, size_t& made) {
                 b.next_in = reinterpret_cast<char*>(const_cast<unsigned char*>(in));
                 b.avail_in = static_cast<unsigned int>(std::min<tPos>(inLength, 1u << 30));
                 b.next_out = reinterpret_cast<char*>(out);
                 b.avail_out = static_cast<unsigned int>(outLength);
                 const int result = BZ2_bzDecompress(&b);
                 used = static_cast<size_t>(reinterpret_cast<unsigned char*>(b.next_in) - in);
                 made = outLength - b.avail_out;
                 return result == BZ_STREAM_END ? 1 : result == BZ_OK ? 0 : -1;
               });
    BZ2_bzDecompressEnd(&b);
    if (!streamEnd) break;
    p = fileEnd = streamEnd;
  }
  return fileEnd ? fileEnd - start : 0;
}

// Streams decoded by liblzma to their footer. Stream padding (zeros, in fours) belongs to
// the file only when another stream follows it.
tPos walkXz(cByteSource& s, tPos start) {
  constexpr uint64_t kMemoryLimit = 256ull << 20; // what xz -9 needs, with room
  tPos p = start, fileEnd = 0;
  for (;;) {
    const unsigned char* h = s.at(p, 6);
    if (!h || std::memcmp(h,
                          "\xFD"
                          "7zXZ\x00",
                          6) != 0)
      break;
    lzma_stream x = LZMA_STREAM_INIT;
    if (lzma_stream_decoder(&x, kMemoryLimit, 0) != LZMA_OK) return 0;
    const tPos streamEnd =
        decode(s, p,
               [&](const unsigned char* in, tPos inLength, unsigned char* out, size_t outLength,
                   size_t& used, size_t& made) {
                 x.next_in = in;
                 x.avail_in = static_cast<size_t>(inLength);
                 x.next_out = out;
                 x.avail_out = outLength;
                 const lzma_ret result = lzma_code(&x, LZMA_RUN);
                 used = static_cast<size_t>(x.next_in - in);
                 made = outLength - x.avail_out;
                 return result == LZMA_STREAM_END ? 1 : result == LZMA_OK ? 0 : -1;
               });
    lzma_end(&x);
    if (!streamEnd) break;
    fileEnd = streamEnd;
    // Padding, then perhaps another stream.
    p = streamEnd;
    for (const unsigned char* z = s.at(p, 4); z && le32(z) == 0; z = s.at(p, 4)) p += 4;
  }
  return fileEnd ? fileEnd - start : 0;
}

namespace {

// A number in a tar header field: octal digits (spaces and NULs around them), or, with
// the high bit of the first byte set, big-endian binary. False when it is neither.
bool tarNumber(const unsigned char* field, size_t n, tPos& out) {
  out = 0;
  if (field[0] & 0x80) {
    for (size_t i = 1; i < n; ++i) {
      if (out >> 55) return false;
      out = out << 8 | field[i];
    }
    return (field[0] & 0x7F) == 0;
  }
  size_t i = 0;
  while (i < n && field[i] == ' ') ++i;
  const size_t first = i;
  for (; i < n && field[i] >= '0' && field[i] <= '7'; ++i) out = out << 3 | (field[i] - '0');
  for (; i < n; ++i) {
    if (field[i] != ' ' && field[i] != 0) return false;
  }
  return i > first;
}

} // namespace

// Headers (each with a good checksum) and their data to the end-of-archive marker, two
// blocks of zeros; then the zeros that fill the last record, up to 20 blocks.
tPos walkTar(cByteSource& s, tPos start) {
  constexpr tPos kBlock = 512, kRecord = 20 * kBlock;
  unsigned char h[kBlock];
  const auto zeros = [&] {
    return std::all_of(h, h + kBlock, [](unsigned char c) { return c == 0; });
  };
  tPos p = start, members = 0;
  for (;;) {
    if (!copy(s, p, h, kBlock)) return 0;
    if (zeros()) break;
    tPos stored = 0, size = 0, sum = 8 * ' ';
    for (tPos i = 0; i < kBlock; ++i) sum += i >= 148 && i < 156 ? 0 : h[i];
    if (!tarNumber(h + 148, 8, stored) || stored != sum || !tarNumber(h + 124, 12, size)) return 0;
    p += kBlock + (size + kBlock - 1) / kBlock * kBlock;
    ++members;
  }
  if (!members || !copy(s, p + kBlock, h, kBlock) || !zeros()) return 0;
  p += 2 * kBlock;
  while ((p - start) % kRecord && copy(s, p, h, kBlock) && zeros()) p += kBlock;
  return p - start;
}

} // namespace walkers
