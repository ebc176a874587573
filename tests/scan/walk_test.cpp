// The structure walkers on files built byte by byte.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <unistd.h>

#include <bzlib.h>
#include <lzma.h>
#include <vector>
#include <zlib.h>

#include "scan/walk.h"

namespace {

using namespace std::string_literals;

unsigned long long walk(eWalker w, const std::string& bytes, unsigned long long start = 0,
                        unsigned long long limit = 1 << 20) {
  cMemorySource source(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  return walkLength(w, source, start, limit);
}

std::string be32(unsigned long long v) {
  return {static_cast<char>(v >> 24), static_cast<char>(v >> 16), static_cast<char>(v >> 8),
          static_cast<char>(v)};
}

// ---- GIF ---------------------------------------------------------------------------------

// A GIF with a two-colour global table, a graphic control extension and one image whose
// data holds the bytes of a trailer (00 3B) inside a sub-block.
std::string gif() {
  return "GIF89a"s + "\x02\x00\x02\x00\x80\x00\x00"s + "\x00\x00\x00\xff\xff\xff"s +
         "\x21\xf9\x04\x00\x00\x00\x00\x00"s + "\x2c\x00\x00\x00\x00\x02\x00\x02\x00\x00"s +
         "\x02" + "\x04\x00\x3b\x00\x3b"s + "\x01\x3b"s + "\x00"s + "\x3b";
}

TEST(WalkGif, EndsAtTheTrailerAfterTheLastImage) {
  const std::string file = gif();
  EXPECT_EQ(walk(eWalker::gif, file + "\x3b\x00 trailing filler"s), file.size());
  EXPECT_EQ(walk(eWalker::gif, "junk"s + file + "more", 4), file.size());
  // A local colour table of four colours after the descriptor.
  std::string local = file;
  local.replace(27, 10, "\x2c\x00\x00\x00\x00\x02\x00\x02\x00\x81"s + std::string(12, '\x7f'));
  EXPECT_EQ(walk(eWalker::gif, local + "xx"), local.size());
}

TEST(WalkGif, BrokenOrCutShortGivesNoLength) {
  const std::string file = gif();
  EXPECT_EQ(walk(eWalker::gif, file.substr(0, file.size() - 1)), 0u); // no trailer
  EXPECT_EQ(walk(eWalker::gif, file.substr(0, 20)), 0u);
  EXPECT_EQ(walk(eWalker::gif, file, 0, file.size() - 1), 0u); // longer than allowed
  EXPECT_EQ(walk(eWalker::gif, file, 0, file.size()), file.size());
  std::string bad = file;
  bad[27] = '\x2d'; // neither extension nor image nor trailer
  EXPECT_EQ(walk(eWalker::gif, bad), 0u);
  EXPECT_EQ(walk(eWalker::gif, "GIF89a"s + "\x02\x00\x02\x00\x00\x00\x00\x3b"s), 0u); // no image
  bad = file;
  bad[37] = '\x00'; // an LZW code size of zero
  EXPECT_EQ(walk(eWalker::gif, bad), 0u);
  EXPECT_EQ(walk(eWalker::gif, "GIF90a" + file.substr(6)), 0u);
  EXPECT_EQ(walk(eWalker::gif, ""), 0u);
}

// ---- ISO media (MP4, QuickTime) ------------------------------------------------------------

std::string box(const std::string& type, const std::string& body) {
  return be32(8 + body.size()) + type + body;
}

std::string mp4() {
  return box("ftyp", "isom\0\0\2\0isommp41"s) + box("free", "") +
         box("mdat", std::string(300, '\x55')) + box("moov", box("mvhd", std::string(100, 0)));
}

TEST(WalkIsoMedia, EndsAfterTheLastTopLevelBox) {
  const std::string file = mp4();
  EXPECT_EQ(walk(eWalker::isoMedia, file + "random \x01\x02 filler"s), file.size());
  EXPECT_EQ(walk(eWalker::isoMedia, file), file.size()); // at the end of the source
  // A second movie right behind the first is not part of it.
  EXPECT_EQ(walk(eWalker::isoMedia, file + file), file.size());
  // The 64-bit size form.
  const std::string large = box("ftyp", "qt  \0\0\0\0"s) + be32(1) + "mdat" + std::string(4, '\0') +
                            be32(16 + 40) + std::string(40, 'x') + box("moov", "");
  EXPECT_EQ(walk(eWalker::isoMedia, large + "\xff\xff"s), large.size());
}

TEST(WalkIsoMedia, IncompleteMoviesGiveNoLength) {
  const std::string file = mp4();
  EXPECT_EQ(walk(eWalker::isoMedia, box("free", "") + file), 0u);           // ftyp must come first
  EXPECT_EQ(walk(eWalker::isoMedia, file.substr(0, file.size() - 10)), 0u); // cut short
  EXPECT_EQ(walk(eWalker::isoMedia, file, 0, file.size() - 1), 0u);         // over the limit
  EXPECT_EQ(walk(eWalker::isoMedia, box("ftyp", "isom") + box("mdat", "x")), 0u); // no moov
  // A box of size 0 runs to the end of a file we cannot see.
  EXPECT_EQ(walk(eWalker::isoMedia, box("ftyp", "isom") + box("moov", "") + be32(0) + "mdat"), 0u);
}

// ---- MPEG program streams ----------------------------------------------------------------

// An MPEG-1 pack header with that clock.
std::string pack1(unsigned long long clock) {
  return "\x00\x00\x01\xba"s + static_cast<char>(0x21 | (clock >> 29 & 0x0E)) +
         static_cast<char>(clock >> 22) + static_cast<char>(clock >> 14 | 1) +
         static_cast<char>(clock >> 7) + static_cast<char>(clock << 1 | 1) + "\x80\x00\x01"s;
}

// An MPEG-2 pack header with that clock and two stuffing bytes.
std::string pack2(unsigned long long clock) {
  return "\x00\x00\x01\xba"s + static_cast<char>(0x44 | (clock >> 27 & 0x38) | (clock >> 28 & 3)) +
         static_cast<char>(clock >> 20) +
         static_cast<char>((clock >> 12 & 0xF8) | 4 | (clock >> 13 & 3)) +
         static_cast<char>(clock >> 5) + static_cast<char>((clock << 3 & 0xF8) | 4) +
         "\x01\x01\x89\xc3\xfa\xff\xff"s;
}

std::string packet(unsigned char id, size_t length) {
  return "\x00\x00\x01"s + static_cast<char>(id) + static_cast<char>(length >> 8) +
         static_cast<char>(length) + std::string(length, '\x47');
}

std::string mpeg(unsigned long long clock) {
  return pack1(clock) + packet(0xbb, 12) + packet(0xe0, 2000) + pack1(clock + 9000) +
         packet(0xc0, 700) + packet(0xbe, 30);
}

TEST(WalkMpegProgram, EndsBeforeWhatIsNotAPacketOrWhereTheClockGoesBack) {
  const std::string file = mpeg(3600);
  EXPECT_EQ(walk(eWalker::mpegProgram, file + std::string(1000, '\0')), file.size());
  EXPECT_EQ(walk(eWalker::mpegProgram, file), file.size());
  EXPECT_EQ(walk(eWalker::mpegProgram, file + mpeg(100)), file.size());
  const std::string later = file + mpeg(1ull << 32); // the clock runs on: one stream
  EXPECT_EQ(walk(eWalker::mpegProgram, later + "text"), later.size());
  const std::string ended = file + "\x00\x00\x01\xb9"s;
  EXPECT_EQ(walk(eWalker::mpegProgram, ended + mpeg(1ull << 32)), ended.size());
  EXPECT_EQ(walk(eWalker::mpegProgram, ended, 0, ended.size() - 1), file.size());
  const std::string two = pack2(5000) + packet(0xe0, 100) + pack2(4999);
  EXPECT_EQ(walk(eWalker::mpegProgram, two), two.size() - pack2(0).size());
  // A packet cut short by the end of the source is left out.
  EXPECT_EQ(walk(eWalker::mpegProgram, file + packet(0xe0, 100).substr(0, 50)), file.size());
}

TEST(WalkMpegProgram, MustOpenWithAPack) {
  EXPECT_EQ(walk(eWalker::mpegProgram, packet(0xe0, 10) + mpeg(0)), 0u);
  EXPECT_EQ(walk(eWalker::mpegProgram, "\x00\x00\x01\xba\x00\x00\x00\x00\x00\x00\x00\x00"s), 0u);
  EXPECT_EQ(walk(eWalker::mpegProgram, "\x00\x00\x01"s), 0u);
}

// ---- JPEG, PNG, TIFF ------------------------------------------------------------------------

std::string be16(unsigned v) {
  return {static_cast<char>(v >> 8), static_cast<char>(v)};
}
std::string le16(unsigned v) {
  return {static_cast<char>(v), static_cast<char>(v >> 8)};
}
std::string le32(unsigned long long v) {
  return le16(v & 0xFFFF) + le16(v >> 16);
}
std::string segment(unsigned char marker, const std::string& body) {
  return "\xff"s + static_cast<char>(marker) + be16(body.size() + 2) + body;
}

// An Exif segment holding a thumbnail (with its own end marker), a frame, and scan data
// with a stuffed FF, a restart marker and fill bytes before the end marker.
std::string jpeg() {
  const std::string thumb = "\xff\xd8"s + segment(0xc0, "thumb") + "\xff\xd9"s;
  return "\xff\xd8"s + segment(0xe1, "Exif\0\0"s + thumb) + segment(0xdb, std::string(65, 1)) +
         segment(0xc0, "\x08\x00\x10\x00\x10\x01\x01\x11\x00"s) + segment(0xda, "\x01\x01\x00"s) +
         "\x12\xff\x00\x34\xff\xd0\x56\xff\xff\xff\xd9"s;
}

TEST(WalkImages, JpegEndsAtItsOwnEndMarker) {
  const std::string file = jpeg();
  EXPECT_EQ(walk(eWalker::jpeg, file + "\xff\xd9 junk"s), file.size());
  EXPECT_EQ(walk(eWalker::jpeg, "pad"s + file, 3), file.size());
  EXPECT_EQ(walk(eWalker::jpeg, file.substr(0, file.size() - 1)), 0u); // cut short
  EXPECT_EQ(walk(eWalker::jpeg, file, 0, file.size() - 1), 0u);        // over the limit
  // Without a frame header, or with a broken segment chain, nothing.
  EXPECT_EQ(walk(eWalker::jpeg, "\xff\xd8"s + segment(0xe0, "JFIF") + "\xff\xd9"s), 0u);
  std::string broken = file;
  broken[4] = '\x7f'; // the Exif segment's length points past the end
  EXPECT_EQ(walk(eWalker::jpeg, broken + std::string(1000, 'x')), 0u);
}

std::string chunk(const std::string& type, const std::string& data) {
  return be32(data.size()) + type + data + "CRC!";
}

TEST(WalkImages, PngRunsFromIhdrToIend) {
  const std::string file = "\x89PNG\r\n\x1a\n"s + chunk("IHDR", std::string(13, 1)) +
                           chunk("IDAT", "IEND inside the data") + chunk("IEND", "");
  EXPECT_EQ(walk(eWalker::png, file + "IEND"), file.size());
  EXPECT_EQ(walk(eWalker::png, file.substr(0, file.size() - 1)), 0u);
  EXPECT_EQ(walk(eWalker::png, file.substr(0, 33) + chunk("ID4T", "") + chunk("IEND", "")), 0u);
  EXPECT_EQ(walk(eWalker::png, file.substr(0, 33) + be32(0x80000000) + "IDAT"), 0u);
}

// A TIFF of either byte order: an IFD with two strips, a second IFD pointing to an Exif
// IFD, and the strips' data placed last so that they decide the end.
std::string tiff(bool big) {
  const auto u16 = [&](unsigned v) { return big ? be16(v) : le16(v); };
  const auto u32 = [&](unsigned long long v) { return big ? be32(v) : le32(v); };
  const auto entry = [&](unsigned tag, unsigned type, unsigned count, unsigned long long value) {
    return u16(tag) + u16(type) + u32(count) +
           (type == 3 && count == 1 ? u16(value) + "\0\0"s : u32(value));
  };
  std::string f = (big ? "MM\x00\x2a"s : "II\x2a\x00"s) + u32(8);
  // IFD 0 at 8: 3 entries, ends at 8 + 2 + 36 + 4 = 50; strip tables at 50 and 58.
  f += u16(3) + entry(256, 3, 1, 16) + entry(273, 4, 2, 50) + entry(279, 4, 2, 58) + u32(66);
  f += u32(200) + u32(300) + u32(100) + u32(50); // strips 200+100 and 300+50: end 350
  // IFD 1 at 66: an Exif pointer, then the Exif IFD at 84.
  f += u16(1) + entry(34665, 4, 1, 84) + u32(0);
  f += u16(1) + entry(36864, 7, 4, 0x30323230) + u32(0);
  f.resize(350, '\x77');
  return f;
}

TEST(WalkImages, TiffEndsAtItsFurthestPartInBothByteOrders) {
  for (const bool big : {false, true}) {
    const std::string file = tiff(big);
    EXPECT_EQ(walk(eWalker::tiff, file + "after"), file.size()) << big;
    EXPECT_EQ(walk(eWalker::tiff, file.substr(0, 349)), 0u) << big; // a strip cut short
    std::string looped = file;
    looped.replace(80, 4, big ? be32(66) : le32(66)); // the Exif IFD points back at IFD 1
    EXPECT_EQ(walk(eWalker::tiff, looped), file.size()) << big;
  }
  EXPECT_EQ(walk(eWalker::tiff, "II\x2a\x00"s + le32(4) + std::string(40, 0)), 0u);
}

// ---- ZIP, 7z, gzip, bzip2, xz -------------------------------------------------------------

// A stored ZIP of one file with a data descriptor, and a comment after the end record.
std::string zip(const std::string& comment) {
  const std::string name = "a.txt", data = "hello PK\x05\x06 world";
  std::string local = "PK\x03\x04"s + le16(20) + le16(8) + le16(0) + std::string(8, 0) + le32(0) +
                      le32(0) + le16(name.size()) + le16(0) + name + data + "PK\x07\x08"s +
                      std::string(12, 0);
  std::string central =
      "PK\x01\x02"s + std::string(24, 0) + le16(name.size()) + std::string(12, 0) + le32(0) + name;
  return local + central + "PK\x05\x06"s + std::string(4, 0) + le16(1) + le16(1) +
         le32(central.size()) + le32(local.size()) + le16(comment.size()) + comment;
}

TEST(WalkArchives, ZipEndsAfterTheEndRecordsComment) {
  for (const std::string& comment : {""s, "a comment"s}) {
    const std::string file = zip(comment);
    EXPECT_EQ(walk(eWalker::zip, file + "PK\x05\x06 trailing"s), file.size());
    EXPECT_EQ(walk(eWalker::zip, file.substr(0, file.size() - 1)), 0u);
  }
  // From a local header inside the archive the directory does not add up.
  EXPECT_EQ(walk(eWalker::zip, "PK\x03\x04"s + zip("")), 0u);
}

TEST(WalkArchives, SevenZipEndsAfterItsNextHeader) {
  std::string tail = le32(100) + std::string(4, 0) + le32(20) + std::string(4, 0) + le32(0);
  const unsigned long crc = crc32(0, reinterpret_cast<const Bytef*>(tail.data()), 20);
  const std::string file = "7z\xbc\xaf\x27\x1c\x00\x04"s + le32(crc) + tail + std::string(120, 5);
  EXPECT_EQ(walk(eWalker::sevenZip, file + "more"), 152u);
  EXPECT_EQ(walk(eWalker::sevenZip, file.substr(0, 151)), 0u);
  std::string bad = file;
  bad[12] = 101; // the header's CRC no longer fits
  EXPECT_EQ(walk(eWalker::sevenZip, bad), 0u);
}

std::string gzipped(const std::string& text) {
  z_stream z{};
  EXPECT_EQ(deflateInit2(&z, 9, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY), Z_OK);
  std::string out(deflateBound(&z, text.size()) + 32, '\0');
  z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  z.avail_in = static_cast<uInt>(text.size());
  z.next_out = reinterpret_cast<Bytef*>(out.data());
  z.avail_out = static_cast<uInt>(out.size());
  EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
  out.resize(z.total_out);
  deflateEnd(&z);
  return out;
}

std::string bzipped(const std::string& text) {
  std::vector<char> out(text.size() + text.size() / 100 + 600);
  auto length = static_cast<unsigned int>(out.size());
  EXPECT_EQ(BZ2_bzBuffToBuffCompress(out.data(), &length, const_cast<char*>(text.data()),
                                     static_cast<unsigned int>(text.size()), 9, 0, 0),
            BZ_OK);
  return {out.data(), length};
}

std::string xzed(const std::string& text) {
  std::vector<uint8_t> out(text.size() + 1024);
  size_t length = 0;
  EXPECT_EQ(lzma_easy_buffer_encode(6, LZMA_CHECK_CRC64, nullptr,
                                    reinterpret_cast<const uint8_t*>(text.data()), text.size(),
                                    out.data(), &length, out.size()),
            LZMA_OK);
  return {reinterpret_cast<char*>(out.data()), length};
}

std::string someText(int n) {
  std::string text;
  for (int i = 0; i < n; ++i) text += "line " + std::to_string(i * 7919 % 1000) + " of text\n";
  return text;
}

TEST(WalkArchives, CompressedStreamsEndWhereTheirDecoderSays) {
  const std::string text = someText(3000);
  const struct {
    eWalker walker;
    std::string one, two;
  } cases[] = {{eWalker::gzip, gzipped(text), gzipped("second member")},
               {eWalker::bzip2, bzipped(text), bzipped("second stream")},
               {eWalker::xz, xzed(text), std::string(8, '\0') + xzed("second stream")}};
  for (const auto& c : cases) {
    const auto w = static_cast<int>(c.walker);
    EXPECT_EQ(walk(c.walker, c.one + "\x1f\x8b garbage BZh9"s), c.one.size()) << w;
    EXPECT_EQ(walk(c.walker, c.one + c.two + "junk"), c.one.size() + c.two.size()) << w;
    EXPECT_EQ(walk(c.walker, c.one.substr(0, c.one.size() - 1)), 0u) << w;
    EXPECT_EQ(walk(c.walker, c.one, 0, c.one.size() - 1), 0u) << w;
    std::string bad = c.one;
    bad[bad.size() / 2] ^= 0x55;
    EXPECT_EQ(walk(c.walker, bad + std::string(4096, 'x')), 0u) << w;
  }
  // xz padding after the last stream is the disk's, not the file's.
  const std::string x = xzed(text);
  EXPECT_EQ(walk(eWalker::xz, x + std::string(8, '\0')), x.size());
}

// ---- PDF, ELF, fonts, SQLite ----------------------------------------------------------------

TEST(WalkDocuments, PdfRunsToItsLastEndMarkerAndLineEnd) {
  const std::string body = "%PDF-1.4\n1 0 obj\n<<>>\nendobj\ntrailer\n<<>>\n%%EOF";
  const std::string update = "2 0 obj\n<<>>\nendobj\nxref\n0 1\n%%EOF";
  for (const std::string& end : {""s, "\n"s, "\r"s, "\r\n"s}) {
    EXPECT_EQ(walk(eWalker::pdf, body + end + "\x01binary"s), body.size() + end.size());
    const std::string both = body + end + update + end;
    EXPECT_EQ(walk(eWalker::pdf, both + "%PDF-1.4 next"), both.size());
  }
  EXPECT_EQ(walk(eWalker::pdf, body.substr(0, body.size() - 1)), 0u);
}

TEST(WalkDocuments, MarkupEndsAtItsLastTagAndLineEnd) {
  const std::string page = "<?xml version=\"1.0\"?>\n<svg>\n <g/>\n</svg>";
  for (const std::string& end : {""s, "\n"s, "\r\n"s}) {
    // Text that follows in the same run (a sector's slack, say) is not the page's.
    EXPECT_EQ(walk(eWalker::markup, page + end + "slack \x01 <x>"), page.size() + end.size());
  }
  // The root's closing tag ends it, whatever tags the slack after it holds.
  const std::string html = "<!DOCTYPE html>\n<!-- a > b -->\n<HTML><p>x</p></html >\n";
  EXPECT_EQ(walk(eWalker::markup, html + "a<b>c\x01"), html.size());
  EXPECT_EQ(walk(eWalker::markup, "no tag\x01"s), 0u);
  EXPECT_EQ(walk(eWalker::markup, "<b no end"s), 0u);                  // text to the end
  EXPECT_EQ(walk(eWalker::markup, page + "\x01", 0, page.size()), 0u); // and to the limit
}

TEST(WalkDocuments, ElfEndsAtItsFurthestTableOrPart) {
  std::string self;
  if (FILE* f = std::fopen("/proc/self/exe", "rb")) {
    char buffer[1 << 16];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, f)) > 0;) self.append(buffer, n);
    std::fclose(f);
  }
  ASSERT_GT(self.size(), 64u);
  EXPECT_EQ(walk(eWalker::elf, self + "trailing", 0, 1ull << 30), self.size());
  EXPECT_EQ(walk(eWalker::elf, self.substr(0, self.size() - 1), 0, 1ull << 30), 0u);
  EXPECT_EQ(walk(eWalker::elf, self.substr(0, 64)), 0u);
}

// A font of two tables, the last one not a multiple of four long.
std::string font(const std::string& version) {
  return version + be16(2) + std::string(6, 0) + "head" + be32(0) + be32(44) + be32(8) + "name" +
         be32(0) + be32(52) + be32(6) + "headhead" + "name!!";
}

TEST(WalkDocuments, FontsEndAtTheirFurthestTable) {
  for (const std::string& version : {"\x00\x01\x00\x00"s, "OTTO"s, "true"s}) {
    const std::string file = font(version);
    EXPECT_EQ(walk(eWalker::font, file + "\x00\x00XYZ"s), 60u); // padding, when it is there
    EXPECT_EQ(walk(eWalker::font, file + "XYZW"), 58u);
    EXPECT_EQ(walk(eWalker::font, file.substr(0, 57)), 0u);
  }
  EXPECT_EQ(walk(eWalker::font, font("wOFF")), 0u);
}

TEST(WalkDocuments, SqliteIsItsPagesTimesThePageSize) {
  std::string header = "SQLite format 3\0"s + be16(1024) + std::string(6, 1) + be32(7) + be32(3);
  header.resize(92, '\0');
  header += be32(7);
  const std::string file = header + std::string(3 * 1024 - header.size(), 's');
  EXPECT_EQ(walk(eWalker::sqlite, file + "more"), 3072u);
  EXPECT_EQ(walk(eWalker::sqlite, file.substr(0, 3071)), 0u);
  std::string stale = file;
  stale[95] = 8; // the count is not valid for this change
  EXPECT_EQ(walk(eWalker::sqlite, stale), 0u);
}

// ---- Choosing a walker, reading through a file ------------------------------------------------

std::string oggPage(unsigned char type, unsigned serial, const std::string& body) {
  return "OggS\x00"s + static_cast<char>(type) + std::string(8, '\0') + le32(serial) +
         std::string(8, '\0') + "\x01"s + static_cast<char>(body.size()) + body;
}

TEST(WalkStreams, OggEndsWhenEveryStreamHasEnded) {
  // Two streams, begun together; the second ends last.
  const std::string ogg = oggPage(2, 1, "a") + oggPage(2, 2, "bb") + oggPage(0, 1, "ccc") +
                          oggPage(4, 1, "d") + oggPage(4, 2, "e");
  EXPECT_EQ(walk(eWalker::ogg, ogg + oggPage(2, 3, "next")), ogg.size());
  EXPECT_EQ(walk(eWalker::ogg, ogg.substr(0, ogg.size() - 1)), 0u);           // cut short
  EXPECT_EQ(walk(eWalker::ogg, oggPage(0, 1, "a") + oggPage(4, 1, "b")), 0u); // no beginning
  EXPECT_EQ(walk(eWalker::ogg, oggPage(2, 1, "a") + "junk"s), 0u);
}

std::string ebml(const std::string& id, const std::string& data, bool unknown = false) {
  return id +
         (unknown ? "\x01\xff\xff\xff\xff\xff\xff\xff"s
                  : "\x40"s + static_cast<char>(data.size())) +
         data;
}

TEST(WalkStreams, MatroskaIsItsHeaderAndSegment) {
  const std::string head = ebml("\x1a\x45\xdf\xa3"s, "\x42\x82\x84webm"s);
  const std::string info = ebml("\x15\x49\xa9\x66"s, "ii"),
                    cluster = ebml("\x1f\x43\xb6\x75"s, "cccc");
  const std::string sized = head + ebml("\x18\x53\x80\x67"s, info + cluster);
  EXPECT_EQ(walk(eWalker::matroska, sized + "\x1a\x45\xdf\xa3"s), sized.size());
  EXPECT_EQ(walk(eWalker::matroska, sized.substr(0, sized.size() - 1)), 0u);
  // A live recording leaves the segment's size unknown: its children tell where it ends.
  const std::string live = head + ebml("\x18\x53\x80\x67"s, "", true) + info + cluster;
  EXPECT_EQ(walk(eWalker::matroska, live + "\x00junk"s), live.size());
  EXPECT_EQ(walk(eWalker::matroska, head + "\x00junk"s), 0u);
}

std::string flvTag(unsigned char type, const std::string& data) {
  return static_cast<char>(type) + be32(data.size()).substr(1) + std::string(7, '\0') + data +
         be32(11 + data.size());
}

TEST(WalkStreams, FlvRunsOverItsTags) {
  const std::string flv = "FLV\x01\x05"s + be32(9) + be32(0) + flvTag(18, "meta") +
                          flvTag(9, "video") + flvTag(8, "audio");
  EXPECT_EQ(walk(eWalker::flv, flv + "FLV\x01"s + std::string(20, '\0')), flv.size());
  EXPECT_EQ(walk(eWalker::flv, flv + "\x09\x00"s), 0u); // a tag cut short
  EXPECT_EQ(walk(eWalker::flv, "FLV\x01\x05"s + be32(9) + be32(0) + "\x07"s), 0u);
}

TEST(WalkStreams, Mp3IsItsTagsAndFramesOfOneStream) {
  // MPEG-1 layer III, 128 kbit/s at 44.1 kHz: 417 bytes a frame without padding.
  const std::string frame = "\xff\xfb\x90\x00"s + std::string(413, '\x55');
  const std::string id3 = "ID3\x03\x00\x00\x00\x00\x00\x05"s + "abcde" + "\0\0"s;
  const std::string mp3 = id3 + frame + frame + frame, v1 = "TAG"s + std::string(125, 't');
  EXPECT_EQ(walk(eWalker::mp3, mp3 + "\x01junk"s), mp3.size());
  EXPECT_EQ(walk(eWalker::mp3, mp3 + v1 + "junk"), mp3.size() + v1.size());
  // A frame of another sample rate is another stream.
  EXPECT_EQ(walk(eWalker::mp3, mp3 + "\xff\xfb\x94\x00"s + frame), mp3.size());
  EXPECT_EQ(walk(eWalker::mp3, id3 + frame + "junk"), 0u); // one frame is no stream
}

std::string tarHeader(const std::string& name, size_t size) {
  std::string h(512, '\0');
  h.replace(0, name.size(), name);
  char field[13];
  std::snprintf(field, sizeof field, "%011zo", size);
  h.replace(124, 11, field);
  h.replace(148, 8, std::string(8, ' '));
  unsigned sum = 0;
  for (unsigned char c : h) sum += c;
  std::snprintf(field, sizeof field, "%06o", sum);
  h.replace(148, 7, field, 7);
  return h;
}

TEST(WalkArchives, TarEndsAfterItsEndMarkerAndRecord) {
  const std::string members = tarHeader("a", 600) + std::string(1024, 'a') + tarHeader("b", 0);
  const std::string zeros(1024, '\0'), record(10240 - members.size() - 1024, '\0');
  EXPECT_EQ(walk(eWalker::tar, members + zeros + record + "next"), 10240u);
  EXPECT_EQ(walk(eWalker::tar, members + zeros + "\x01"), members.size() + 1024);
  std::string bad = members;
  bad[0] = 'x'; // the checksum no longer holds
  EXPECT_EQ(walk(eWalker::tar, bad + zeros), 0u);
  EXPECT_EQ(walk(eWalker::tar, members + std::string(512, '\0') + "\x01"), 0u); // no marker
}

std::string riff(const std::string& form, const std::string& chunks) {
  return "RIFF"s + le32(4 + chunks.size()) + form + chunks;
}

TEST(WalkContainers, RiffAsfAndBmpEndWhereTheirHeadersSay) {
  const std::string wav =
      riff("WAVE", "fmt "s + le32(16) + std::string(16, 'f') + "data"s + le32(5) + "12345\0"s);
  EXPECT_EQ(walk(eWalker::riff, wav + "RIFF"), wav.size());
  std::string uneven = wav;
  uneven[16] = 17; // the chunks no longer add up to the form
  EXPECT_EQ(walk(eWalker::riff, uneven + std::string(64, '\0')), 0u);
  // An AVI past its first gigabyte goes on in AVIX forms.
  const std::string avi = riff("AVI ", "LIST"s + le32(4) + "movi") + riff("AVIX", "");
  EXPECT_EQ(walk(eWalker::riff, avi + riff("WAVE", "")), avi.size());

  const std::string guid = "\x26\xb2\x75\x8e\x66\xcf\x11\xa6\xd9\x00\xaa\x00\x62\xce\x6c"s;
  const auto object = [](const std::string& id, size_t body) {
    return id + le32(24 + body) + le32(0) + std::string(body, 'o');
  };
  const std::string asf = object("\x30"s + guid, 10) + object("\x36"s + guid, 50);
  EXPECT_EQ(walk(eWalker::asf, asf + "\x30"s + guid), asf.size());
  EXPECT_EQ(walk(eWalker::asf, object("\x30"s + guid, 10) + std::string(30, 'x')), 0u); // no data

  // 3 by 2 pixels of 24 bits: rows of 12 bytes.
  const auto bmp = [](unsigned size, unsigned planes) {
    return "BM"s + le32(size) + le32(0) + le32(54) + le32(40) + le32(3) + le32(2) + le16(planes) +
           le16(24) + le32(0) + std::string(20, '\0') + std::string(24, 'p');
  };
  EXPECT_EQ(walk(eWalker::bmp, bmp(78, 1) + "junk"), 78u);
  EXPECT_EQ(walk(eWalker::bmp, bmp(0, 1) + "junk"), 78u); // no size: the end of the pixels
  EXPECT_EQ(walk(eWalker::bmp, bmp(78, 2) + "junk"), 0u);
  EXPECT_EQ(walk(eWalker::bmp, bmp(60, 1) + "junk"), 0u); // pixels beyond the size
}

TEST(Walkers, ChosenByExtension) {
  EXPECT_EQ(walkerFor("gif"), eWalker::gif);
  EXPECT_EQ(walkerFor("GIF"), eWalker::gif);
  EXPECT_EQ(walkerFor("mov"), eWalker::isoMedia);
  EXPECT_EQ(walkerFor("m4a"), eWalker::isoMedia);
  EXPECT_EQ(walkerFor("mpeg"), eWalker::mpegProgram);
  EXPECT_EQ(walkerFor("JPG"), eWalker::jpeg);
  EXPECT_EQ(walkerFor("docx"), eWalker::zip);
  EXPECT_EQ(walkerFor("WAV"), eWalker::riff);
  EXPECT_EQ(walkerFor("exe"), eWalker::none);
  EXPECT_EQ(walkerFor(""), eWalker::none);
  EXPECT_EQ(walk(eWalker::none, gif()), 0u);
}

TEST(Walkers, ReadThroughAFileWindow) {
  // Far apart boxes make the window move forwards and back.
  const std::string file = box("ftyp", "isom") + box("mdat", std::string(200000, 'm')) +
                           box("free", "") + box("moov", "");
  char path[] = "/tmp/qvraci-walk-XXXXXX";
  const int fd = mkstemp(path);
  ASSERT_GE(fd, 0);
  const std::string image = std::string(1000, 'f') + file + "tail";
  ASSERT_EQ(write(fd, image.data(), image.size()), static_cast<ssize_t>(image.size()));
  cFileSource source(fd, image.size());
  EXPECT_EQ(walkLength(eWalker::isoMedia, source, 1000, 1 << 20), file.size());
  ASSERT_NE(source.at(0, 4), nullptr);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(source.at(1004, 4)), 4), "ftyp");
  EXPECT_EQ(source.at(image.size() - 4, 5), nullptr);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(source.at(image.size() - 4, 4)), 4), "tail");
  cFileSource shorter(fd, image.size() + 10); // claims more than the file holds
  EXPECT_EQ(shorter.at(image.size() - 2, 8), nullptr);
  close(fd);
  std::remove(path);
}

} // namespace
