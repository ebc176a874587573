// The configuration file: hand-built files, write-through, damaged and foreign files.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>
#include <vector>
#include <zlib.h>

#include "qvra/config.h"

namespace {

using bytes = std::vector<unsigned char>;

class cConfigTest : public testing::Test {
protected:
  void SetUp() override {
    char pattern[] = "/tmp/qvraci-config-XXXXXX";
    myDir = mkdtemp(pattern);
    path = myDir + "/.qvraci-ruled.hbin";
  }
  void TearDown() override {
    std::remove(path.c_str());
    rmdir(myDir.c_str());
  }
  bytes file() const {
    std::ifstream in(path, std::ios::binary);
    return bytes(std::istreambuf_iterator<char>(in), {});
  }
  void write(const bytes& b) const {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(b.data()), static_cast<std::streamsize>(b.size()));
  }

  std::string path;

private:
  std::string myDir;
};

void le32(bytes& b, unsigned v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}

bytes record(int tag, const std::string& data) {
  bytes r;
  le32(r, static_cast<unsigned>(tag));
  le32(r, static_cast<unsigned>(data.size()));
  r.insert(r.end(), data.begin(), data.end());
  return r;
}

// "QVCF", the given length, and the area compressed by zlib itself.
bytes storeFile(const bytes& area, unsigned length) {
  bytes f = {'Q', 'V', 'C', 'F'};
  le32(f, length);
  uLongf packed = compressBound(area.size());
  bytes z(packed);
  compress2(z.data(), &packed, area.data(), area.size(), 5);
  f.insert(f.end(), z.begin(), z.begin() + static_cast<long>(packed));
  return f;
}

bytes storeFile(const bytes& area) {
  return storeFile(area, static_cast<unsigned>(area.size()));
}

bytes join(std::initializer_list<bytes> parts) {
  bytes all;
  for (const bytes& p : parts) all.insert(all.end(), p.begin(), p.end());
  return all;
}

bytes inflated(const bytes& f) {
  const unsigned length = f[4] | f[5] << 8 | f[6] << 16 | static_cast<unsigned>(f[7]) << 24;
  bytes out(length);
  uLongf n = length;
  EXPECT_EQ(uncompress(out.data(), &n, f.data() + 8, f.size() - 8), Z_OK);
  return out;
}

TEST_F(cConfigTest, MissingOrForeignFilesBecomeEmptyStores) {
  const bytes empty = {'Q', 'V', 'C', 'F', 0, 0, 0, 0};
  cQVRAConfigFile a;
  ASSERT_TRUE(a.init(path.c_str()));
  EXPECT_EQ(file(), empty);
  write(bytes{'P', 'K', 3, 4, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  cQVRAConfigFile b;
  ASSERT_TRUE(b.init(path.c_str()));
  EXPECT_EQ(file(), empty);
  EXPECT_EQ(b.sizeOf(1), 0);
  write(bytes{'Q', 'V'});
  cQVRAConfigFile c;
  EXPECT_TRUE(c.init(path.c_str()));
  EXPECT_EQ(file(), empty);
}

TEST_F(cConfigTest, ValuesWriteThroughInTagOrder) {
  {
    cQVRAConfigFile c;
    ASSERT_TRUE(c.init(path.c_str()));
    EXPECT_TRUE(c.setInt(0x12345678, 3));
    EXPECT_TRUE(c.setStr("abc", -5));
    const unsigned short wide[] = {'h', 0xE9, 0};
    EXPECT_TRUE(c.setStr(wide, 1));
    EXPECT_TRUE(c.setStr(static_cast<const char*>(nullptr), 2));
  }
  EXPECT_EQ(inflated(file()),
            join({record(-5, std::string("abc\0", 4)), record(1, std::string("h\0\xE9\0\0\0", 6)),
                  record(2, ""), record(3, std::string("\x78\x56\x34\x12", 4))}));
  cQVRAConfigFile again;
  ASSERT_TRUE(again.init(path.c_str()));
  int value = 0;
  EXPECT_TRUE(again.tagInt(value, 3));
  EXPECT_EQ(value, 0x12345678);
  EXPECT_STREQ(static_cast<const char*>(again.tag(-5)), "abc");
  EXPECT_EQ(again.sizeOf(1), 6);
  EXPECT_EQ(again.sizeOf(2), 0);
  EXPECT_EQ(again.tag(99), nullptr);
  EXPECT_FALSE(again.tagInt(value, 1)); // 6 bytes, not 4
  EXPECT_TRUE(again.tagInt(value, -5)); // "abc" and its zero happen to be 4 bytes
  _typebuf<unsigned char> out(2);
  EXPECT_FALSE(again.tag(99, out));
  EXPECT_EQ(out.count(), 2); // untouched
  EXPECT_TRUE(again.tag(-5, out));
  EXPECT_EQ(out.count(), 4);
}

TEST_F(cConfigTest, UnchangedValuesDoNotWrite) {
  cQVRAConfigFile c;
  ASSERT_TRUE(c.init(path.c_str()));
  ASSERT_TRUE(c.setInt(7, 1));
  const bytes before = file();
  // Damage the file behind the store's back: an unchanged value must not repair it.
  bytes damaged = before;
  damaged.back() ^= 0xFF;
  write(damaged);
  EXPECT_TRUE(c.setInt(7, 1));
  EXPECT_EQ(file(), damaged);
  EXPECT_TRUE(c.setInt(8, 1));
  EXPECT_NE(file(), damaged);
}

TEST_F(cConfigTest, ShorterContentLeavesTheOldTailAndStillLoads) {
  cQVRAConfigFile c;
  ASSERT_TRUE(c.init(path.c_str()));
  std::string noise;
  for (int i = 0; i < 3000; ++i) noise += static_cast<char>((i * 7919) % 251);
  ASSERT_TRUE(c.setTag(5, noise.data(), static_cast<long long>(noise.size())));
  const size_t longSize = file().size();
  ASSERT_TRUE(c.setInt(1, 5));
  EXPECT_EQ(file().size(), longSize); // not truncated
  cQVRAConfigFile again;
  ASSERT_TRUE(again.init(path.c_str()));
  int value = 0;
  EXPECT_TRUE(again.tagInt(value, 5));
  EXPECT_EQ(value, 1);
}

TEST_F(cConfigTest, RecordAreaRules) {
  int value = 0;
  write(storeFile(record(4, std::string("\x01\0\0\0", 4)), 12)); // one record of 4
  cQVRAConfigFile exact;
  EXPECT_TRUE(exact.init(path.c_str()));
  EXPECT_TRUE(exact.tagInt(value, 4));

  write(storeFile(join({record(1, "a"), record(1, "b"), record(2, "c")})));
  cQVRAConfigFile twice;
  EXPECT_FALSE(twice.init(path.c_str())); // the repeated tag stops the load
  EXPECT_STREQ(std::string(static_cast<const char*>(twice.tag(1)), 1).c_str(), "a");
  EXPECT_EQ(twice.tag(2), nullptr);

  bytes overlong = record(1, "abcd");
  overlong[4] = 9; // claims 9 bytes, holds 4
  write(storeFile(overlong));
  cQVRAConfigFile longer;
  EXPECT_FALSE(longer.init(path.c_str()));

  write(storeFile(join({record(1, "ab"), bytes{1, 2, 3}}))); // 3 bytes left over
  cQVRAConfigFile leftover;
  EXPECT_FALSE(leftover.init(path.c_str()));
  EXPECT_EQ(leftover.sizeOf(1), 2); // what was read stays
}

TEST_F(cConfigTest, DamagedStreamsAndHostileLengths) {
  bytes f = storeFile(record(1, "value"));
  f[10] ^= 0x55;
  write(f);
  cQVRAConfigFile damaged;
  EXPECT_FALSE(damaged.init(path.c_str()));
  EXPECT_EQ(damaged.sizeOf(1), 0);
  EXPECT_TRUE(damaged.setInt(3, 1)); // the next write replaces it
  cQVRAConfigFile repaired;
  EXPECT_TRUE(repaired.init(path.c_str()));

  write(storeFile(record(1, "x"), 0xFFFFFFF0u)); // claims 4 GiB from a few bytes
  cQVRAConfigFile huge;
  EXPECT_FALSE(huge.init(path.c_str()));
  write(storeFile(record(1, "x"), 100)); // the stream ends before the claimed length
  cQVRAConfigFile shortStream;
  EXPECT_FALSE(shortStream.init(path.c_str()));
}

TEST_F(cConfigTest, ClosedStoreRefusesWrites) {
  cQVRAConfigFile closed;
  EXPECT_FALSE(closed.setInt(1, 1));
  EXPECT_EQ(closed.sizeOf(1), 0);
  EXPECT_FALSE(closed.init("/nonexistent/folder/file"));
}

} // namespace
