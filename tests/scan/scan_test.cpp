// The raw-scan engine's policy, on images built in memory.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "scan/scan.h"

using namespace std::string_literals;

namespace {

using bytes = std::vector<unsigned char>;

cScanSignature* def(cCustomSignaturesTree& t, const char* name, const char* pattern, int hitMode,
                    cScanSignature* parent = nullptr) {
  cScanSignature* n = t.add(parent, std::make_unique<cScanSignature>());
  n->create(name, name);
  n->hitMode = hitMode;
  auto r = std::make_unique<cScanSigRuleUniHexMatch>();
  EXPECT_TRUE(r->create(pattern, 0, 0));
  n->addStrRule(std::move(r));
  return n;
}

void endAfter(cScanSignature* n, const char* pattern, unsigned distance) {
  auto r = std::make_unique<cScanSigEndRuleUniHex>();
  EXPECT_TRUE(r->create(pattern, distance));
  n->addEndRule(std::move(r));
}

void sizeField(cScanSignature* n, unsigned offset, unsigned char width, unsigned increment) {
  auto r = std::make_unique<cScanSigEndRuleMatchSize>();
  r->create(offset, width, increment, 1, false);
  n->addEndRule(std::move(r));
}

void put(bytes& image, size_t at, const std::string& s) {
  std::copy(s.begin(), s.end(), image.begin() + static_cast<long>(at));
}

std::vector<std::string> scanned(const cCustomSignaturesTree& t, const bytes& image,
                                 unsigned block = 512, unsigned long long cap = 1 << 20,
                                 bool walk = true, unsigned align = 0) {
  std::vector<std::string> out;
  cRawScanner scanner(t, {block, cap, walk, align});
  scanner.scanBytes(image.data(), image.size(), [&](const sFoundFile& f) {
    out.push_back(std::to_string(f.offset) + "+" + std::to_string(f.length) + " " +
                  f.definition->name.c_str() + " " + f.how);
  });
  return out;
}

TEST(ScanPolicy, EndRulesCountForwardAndTheSizeFieldBack) {
  cCustomSignaturesTree t;
  endAfter(def(t, "jpg", "FF D8 FF", 2), "FF D9", 2);
  sizeField(def(t, "sized", "'SZ'", 2), 2, 4, 0);
  bytes image(8192, 0x11);
  put(image, 512, "\xFF\xD8\xFF\xE0");
  put(image, 512 + 700, "\xFF\xD9");                      // ends in the next block
  put(image, 2048, std::string("SZ\x00\x06\x00\x00", 6)); // 0x600 = 1536 bytes
  EXPECT_EQ(scanned(t, image),
            (std::vector<std::string>{"512+702 jpg end rule", "2048+1536 sized size field"}));
}

TEST(ScanPolicy, FootersAcrossOrAtTheEndOfABlockAreFound) {
  cCustomSignaturesTree t;
  endAfter(def(t, "png", "89 'PNG'", 2), "'IEND' AE 42 60 82", 8);
  for (const unsigned block : {512u, 4096u}) {
    // The footer's last byte: the block's last, then two bytes into the next block.
    for (const unsigned last : {2 * block - 1, 2 * block + 1}) {
      bytes image(4 * block, 0x11);
      put(image, 0, "\x89PNG");
      put(image, last + 1 - 8, std::string("IEND\xAE\x42\x60\x82", 8));
      put(image, 3 * block, "\x89PNG"); // not cut by the next start
      EXPECT_EQ(scanned(t, image, block).front(), "0+" + std::to_string(last + 1) + " png end rule")
          << block << " " << last;
    }
  }
}

TEST(ScanPolicy, AFileMayEndInItsFirstBlock) {
  cCustomSignaturesTree t;
  endAfter(def(t, "jpg", "FF D8 FF", 2), "FF D9", 2);
  bytes image(2048, 0x11);
  put(image, 1024, "\xFF\xD8\xFF\xE0..\xFF\xD9");
  EXPECT_EQ(scanned(t, image), (std::vector<std::string>{"1024+8 jpg end rule"}));
}

TEST(ScanPolicy, ActiveHitsCutOpenFilesPassiveOnesWait) {
  cCustomSignaturesTree t;
  def(t, "active", "'AA'", 2);
  def(t, "passive", "'PP'", 1);
  bytes image(4096, 0x11);
  put(image, 0, "AA");
  put(image, 1024, "PP"); // a file is open: ignored
  put(image, 2048, "AA"); // cuts the first one
  EXPECT_EQ(scanned(t, image),
            (std::vector<std::string>{"0+2048 active next start", "2048+2048 active source end"}));
  bytes quiet(2048, 0x11);
  put(quiet, 512, "PP");
  EXPECT_EQ(scanned(t, quiet), (std::vector<std::string>{"512+1536 passive source end"}));
}

TEST(ScanPolicy, CapsAndContainers) {
  cCustomSignaturesTree t;
  endAfter(def(t, "never ends", "'NE'", 2), "'nothing here'", 0);
  def(t, "container", "'CC'", 0);
  bytes image(8192, 0x11);
  put(image, 0, "NE");
  put(image, 4096, "CC"); // containers are never files
  EXPECT_EQ(scanned(t, image, 512, 3000), (std::vector<std::string>{"0+3000 never ends size cap"}));
  EXPECT_EQ(scanned(t, image, 4096, 3000),
            (std::vector<std::string>{"0+3000 never ends size cap"}));
}

TEST(ScanPolicy, InheritedEndRulesAndLookahead) {
  cCustomSignaturesTree t;
  cScanSignature* zip = def(t, "zip", "'PK' 03 04", 2);
  endAfter(zip, "'PK' 05 06", 22);
  def(t, "docx", "'PK' 03 04 *26* 'word/'", 2, zip);
  // A field far beyond the first block is still readable through avail.
  sizeField(def(t, "far", "'FAR!'", 2), 4000, 4, 0);
  bytes image(16384, 0x11);
  put(image, 0, std::string("PK\x03\x04", 4) + std::string(26, '\0') + "word/");
  put(image, 1500, std::string("PK\x05\x06", 4));
  put(image, 8192, "FAR!");
  put(image, 8192 + 4000, std::string("\x00\x02\x00\x00", 4)); // 512 bytes
  EXPECT_EQ(scanned(t, image),
            (std::vector<std::string>{"0+1522 docx end rule", "8192+512 far size field"}));
}

TEST(ScanPolicy, StructureWalkersEndWhatRulesCannot) {
  cCustomSignaturesTree t;
  def(t, "gif", "'GIF8'", 2);
  // One image whose data holds the trailer's bytes, 00 3B, before the real trailer.
  const std::string gif("GIF89a\x01\x00\x01\x00\x00\x00\x00"
                        "\x2c\x00\x00\x00\x00\x01\x00\x01\x00\x00"
                        "\x02\x03\x00\x3b\x01\x00\x3b",
                        30);
  bytes image(8192, 0x11);
  put(image, 1024, gif);
  put(image, 4096, gif.substr(0, 20)); // broken: the rules decide
  EXPECT_EQ(scanned(t, image),
            (std::vector<std::string>{"1024+30 gif structure", "4096+4096 gif source end"}));
  EXPECT_EQ(scanned(t, image, 512, 1 << 20, false),
            (std::vector<std::string>{"1024+3072 gif next start", "4096+4096 gif source end"}));
  // A walk longer than the cap is not taken.
  EXPECT_EQ(scanned(t, image, 512, 29),
            (std::vector<std::string>{"1024+29 gif size cap", "4096+29 gif size cap"}));
}

TEST(ScanPolicy, AWalkedFileCountsAsOpenUpToItsEnd) {
  cCustomSignaturesTree t;
  def(t, "gif", "'GIF8'", 2);
  def(t, "passive", "'PP'", 1);
  def(t, "active", "'AA'", 2);
  // 1306 bytes: five full sub-blocks of image data.
  std::string gif("GIF89a\x01\x00\x01\x00\x00\x00\x00"
                  "\x2c\x00\x00\x00\x00\x01\x00\x01\x00\x00\x02",
                  24);
  for (int i = 0; i < 5; ++i) gif += "\xff" + std::string(255, '\x11');
  gif += std::string("\x00\x3b", 2);
  bytes image(4096, 0x11);
  put(image, 0, gif);
  put(image, 512, "PP");  // inside the GIF's data: nothing
  put(image, 1536, "PP"); // after its end
  EXPECT_EQ(scanned(t, image),
            (std::vector<std::string>{"0+1306 gif structure", "1536+2560 passive source end"}));
  put(image, 1024, "AA"); // an active hit inside starts a file of its own
  put(image, 1536, "..");
  EXPECT_EQ(scanned(t, image),
            (std::vector<std::string>{"0+1306 gif structure", "1024+3072 active source end"}));
}

TEST(ScanPolicy, AnAlignmentOfOneFindsFilesEmbeddedAtAnyOffset) {
  cCustomSignaturesTree t;
  def(t, "gif", "'GIF8'", 2)->ext.set("gif");
  def(t, "jpg", "FF D8 FF", 2)->ext.set("jpg");
  // A GIF of five full sub-blocks, the fourth of which holds a JPEG at an odd offset.
  std::string gif("GIF89a\x01\x00\x01\x00\x00\x00\x00"
                  "\x2c\x00\x00\x00\x00\x01\x00\x01\x00\x00\x02",
                  24);
  for (int i = 0; i < 5; ++i) gif += "\xff" + std::string(255, '\x11');
  gif += "\x00\x3b"s;
  const std::string jpeg = "\xff\xd8\xff\xc0\x00\x0b"s + std::string(9, '\x01') +
                           "\xff\xda\x00\x08"s + std::string(6, '\x01') + std::string(40, '\x11') +
                           "\xff\xd9"s;
  bytes image(4096, 0x11);
  put(image, 0, gif);
  put(image, 801, jpeg);
  EXPECT_EQ(scanned(t, image), std::vector<std::string>{"0+1306 gif structure"});
  // Any divisor of the block: 801 is no multiple of 2, 802 is.
  EXPECT_EQ(scanned(t, image, 512, 1 << 20, true, 2).size(), 1u);
  bytes shifted(image);
  put(shifted, 801, "\x11" + jpeg);
  EXPECT_EQ(scanned(t, shifted, 512, 1 << 20, true, 2).size(), 2u);
  // Off the grid inside a file that is not walked, starts that are no structure (its own
  // header again, a broken JPEG) neither cut it nor change the size it read.
  sizeField(def(t, "sized", "'SZ'", 2), 2, 4, 0);
  image.resize(8192, 0x11);
  put(image, 4096, std::string("SZ\x00\x06\x00\x00", 6));
  put(image, 4096 + 301, std::string("SZ\x00\x01\x00\x00", 6));
  put(image, 4096 + 555, "\xff\xd8\xff\xe0");
  put(image, 6000, std::string("SZ\x00\x01\x00\x00", 6)); // off the grid, no walk: none
  for (unsigned block : {512u, 4096u}) {
    EXPECT_EQ(scanned(t, image, block, 1 << 20, true, 1),
              (std::vector<std::string>{"0+1306 gif structure", "801+67 jpg structure",
                                        "4096+1536 sized size field"}));
  }
}

TEST(ScanPolicy, AWalkedFilesOwnPartsAreNotFiles) {
  cCustomSignaturesTree t;
  cScanSignature* zip = def(t, "zip", "'PK' 03 04", 2);
  zip->ext.set("zip");
  // A stored archive whose second local header falls on a block boundary.
  const std::string name = "a", data(600, 'd');
  const auto local = [&](size_t n) { // stored: n bytes packed and unpacked
    std::string sizes;
    for (int i = 0; i < 8; ++i) sizes += static_cast<char>(n >> (8 * (i % 4)) & 0xFF);
    return "PK\x03\x04"s + std::string(10, '\0') + std::string(4, '\0') + sizes +
           "\x01\x00\x00\x00"s + name;
  };
  std::string archive = local(512 - 31) + std::string(512 - 31, 'd') + local(600) + data;
  const std::string central = "PK\x01\x02"s + std::string(42, '\0');
  const size_t cd = archive.size();
  archive += central + "PK\x05\x06"s + std::string(6, '\0') + "\x01\x00"s +
             static_cast<char>(central.size()) + std::string(3, '\0') +
             static_cast<char>(cd & 0xFF) + static_cast<char>(cd >> 8) + std::string(2, '\0') +
             std::string(2, '\0');
  bytes image(4096, 0x11);
  put(image, 0, archive);
  EXPECT_EQ(scanned(t, image),
            (std::vector<std::string>{"0+" + std::to_string(archive.size()) + " zip structure"}));
}

TEST(ScanPolicy, WalksAreNotRepeatedOverBytesAWalkOfTheirKindRead) {
  // Every block starts a GIF whose sub-blocks run on to the end of the source: the first
  // walk reads it all and fails; the later starts are left to the end rules.
  cCustomSignaturesTree t;
  cScanSignature* gif = def(t, "gif", "'GIF8'", 2);
  gif->ext.set("gif");
  // Two sub-blocks of 255 bytes per block hold the next block's header.
  const std::string head =
      "GIF89a\x01\x00\x01\x00\x00\x00\x00\x2c\x00\x00\x00\x00\x01\x00\x01\x00\x00\x02"s;
  bytes image(64 * 512, 0x01);
  for (size_t at = 0; at < image.size(); at += 512) {
    put(image, at, head);
    image[at + head.size()] = image[at + head.size() + 256] = 255;
  }
  cRawScanner scanner(t, {512, 1 << 20, true});
  std::vector<std::string> ends;
  scanner.scanBytes(image.data(), image.size(),
                    [&](const sFoundFile& f) { ends.push_back(f.how); });
  std::vector<std::string> expected(63, "next start");
  expected.push_back("source end");
  EXPECT_EQ(ends, expected);
  EXPECT_EQ(scanner.walksSkipped(), 63u);
}

// Scanners read their tree and match copies of their own: several scan one tree at once,
// with the same reports, which name the tree's own definitions and end rules.
TEST(ScanPolicy, ScannersShareATreeThatTheyOnlyRead) {
  cCustomSignaturesTree t;
  cScanSignature* jpg = def(t, "jpg", "FF D8 FF", 2);
  endAfter(jpg, "FF D9", 2);
  sizeField(def(t, "sized", "'SZ'", 2), 2, 4, 0);
  bytes image(1 << 20, 0x11);
  for (size_t at = 0; at + 4096 <= image.size(); at += 4096) {
    put(image, at, at % 8192 ? "\xFF\xD8\xFF\xE0"s : "SZ\x00\x03\x00\x00"s);
    put(image, at + 1000, "\xFF\xD9");
  }
  const std::vector<std::string> alone = scanned(t, image);
  ASSERT_EQ(alone.size(), 256u);
  std::vector<std::vector<std::string>> reports(4);
  std::vector<std::thread> threads;
  for (auto& r : reports) threads.emplace_back([&] { r = scanned(t, image); });
  for (std::thread& th : threads) th.join();
  for (const auto& r : reports) EXPECT_EQ(r, alone);
  EXPECT_EQ(jpg->startPos, cScanSignature::kNoFile); // the tree itself saw nothing

  cRawScanner scanner(t, {});
  std::vector<sFoundFile> found;
  scanner.scanBytes(image.data(), 8192, [&](const sFoundFile& f) { found.push_back(f); });
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[1].definition, jpg);
  EXPECT_EQ(found[1].rule, jpg->first_end());
}

} // namespace
