// The structure walkers on files built byte by byte.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <unistd.h>

#include "qvraci-rules/walk.h"

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

// ---- Choosing a walker, reading through a file ------------------------------------------------

TEST(Walkers, ChosenByExtension) {
  EXPECT_EQ(walkerFor("gif"), eWalker::gif);
  EXPECT_EQ(walkerFor("GIF"), eWalker::gif);
  EXPECT_EQ(walkerFor("mov"), eWalker::isoMedia);
  EXPECT_EQ(walkerFor("m4a"), eWalker::isoMedia);
  EXPECT_EQ(walkerFor("mpeg"), eWalker::mpegProgram);
  EXPECT_EQ(walkerFor("jpg"), eWalker::none);
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
