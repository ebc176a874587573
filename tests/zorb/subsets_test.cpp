// Subsets: field-relative widths and bounds, magic-relative searches.
#include <gtest/gtest.h>

#include "zorbtest.h"

namespace {

unsigned int at(cScanSigSubset& s, const bytes& b, long long size = -1) {
  return s.subset(b.data(), static_cast<unsigned int>(size < 0 ? b.size() : size));
}

TEST(FieldRelative, EveryWidthCode) {
  bytes b(64, 0);
  for (int i = 0; i < 8; ++i)
    b[static_cast<size_t>(i)] = static_cast<unsigned char>(0x11 * (i + 1));
  const unsigned int expected[] = {0x11,   0x2211,     0x44332211, 0x44332211,
                                   0x1122, 0x11223344, 0x55667788};
  for (unsigned char code = 0; code <= 6; ++code) {
    cFieldRelativeSubset s;
    s.create(0, code);
    EXPECT_EQ(at(s, b), expected[code]) << int(code);
  }
  cFieldRelativeSubset clamped;
  clamped.create(0, 9, 2, 1);
  EXPECT_EQ(clamped.width(), 6);
  EXPECT_EQ(at(clamped, b), 0x55667788u * 2 + 1);
}

TEST(FieldRelative, BoundsUseOneShiftedByTheCode) {
  cFieldRelativeSubset be16;
  be16.create(2, 4); // a big-endian 16-bit field still needs 16 bytes
  bytes b(18, 0);
  b[2] = 0x01;
  EXPECT_EQ(at(be16, b), 0x0100u);
  EXPECT_EQ(at(be16, b, 17), cScanSigSubset::kNotFound);
  cFieldRelativeSubset byte;
  byte.create(5, 0, 3, 0xFFFFFFFF); // 32-bit arithmetic wraps
  bytes c(6, 0);
  c[5] = 2;
  EXPECT_EQ(at(byte, c), 5u);
  EXPECT_EQ(at(byte, c, 5), cScanSigSubset::kNotFound);
  auto copy = byte.clone();
  EXPECT_EQ(at(*copy, c), 5u);
}

TEST(MagicRelative, BeginsAfterTheFirstOccurrence) {
  cMagicRelativeSubset s;
  ASSERT_TRUE(s.create("'PK'", 2));
  EXPECT_EQ(at(s, block("..PK..PK..")), 2u + 2 + 2);
  EXPECT_EQ(at(s, block("PK..")), 0u + 2 + 2);
  EXPECT_EQ(at(s, block("..PK")), cScanSigSubset::kNotFound); // searches stop one short
  EXPECT_EQ(at(s, block("PK")), cScanSigSubset::kNotFound);   // L equal to size
  EXPECT_EQ(at(s, block("P")), cScanSigSubset::kNotFound);
  EXPECT_FALSE(s.create("'", 0));
  auto copy = s.clone();
  ASSERT_TRUE(copy);
  EXPECT_EQ(at(*copy, block(".PK...")), 1u + 2 + 2);
}

} // namespace
