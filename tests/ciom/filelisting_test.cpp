// The file dialog's model without a window: name order, size texts and typed paths.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "ciom/filelisting.h"

namespace {

TEST(FileListing, NamesOrderNaturallyWithCaseIgnored) {
  struct sCase {
    std::u16string a, b;
    int expected;
  };
  const sCase cases[] = {{u"file9", u"file10", -1}, {u"file010", u"file10", 0}, {u"a", u"b", -1},
                         {u"ab", u"a", 1},          {u"x2y", u"x2z", -1},       {u"", u"", 0},
                         {u"10", u"9a", 1}};
  for (const sCase& c : cases) {
    EXPECT_EQ(cFileListing::naturalCompare(c.a, c.b), c.expected);
    EXPECT_EQ(cFileListing::naturalCompare(c.b, c.a), -c.expected);
  }
}

TEST(FileListing, SizesReadAsPeopleWriteThem) {
  const std::pair<unsigned long long, const char*> cases[] = {
      {0, "0 bytes"},   {1, "1 byte"},      {999, "999 bytes"},  {1000, "1.0 kB"},
      {1234, "1.2 kB"}, {999999, "1.0 MB"}, {3400000, "3.4 MB"}, {~0ULL, "18.4 EB"}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(cFileListing::sizeText(bytes), text) << bytes;
}

TEST(FileListing, TypedPathsAreMadeWhole) {
  const char* before = std::getenv("HOME");
  const std::string home = before ? before : "";
  setenv("HOME", "/home/u", 1);
  const std::pair<const char*, const char*> cases[] = {{"a.qrrs", "/data/x/a.qrrs"},
                                                       {"../b", "/data/b"},
                                                       {"/etc//./hosts", "/etc/hosts"},
                                                       {"~", "/home/u"},
                                                       {"~/r/../s", "/home/u/s"},
                                                       {"../../../..", "/"},
                                                       {"", "/data/x"},
                                                       {"~user", "/data/x/~user"}};
  for (const auto& [typed, whole] : cases) EXPECT_EQ(wholePath(typed, "/data/x"), whole) << typed;
  EXPECT_EQ(parentFolder("/"), "/");
  EXPECT_EQ(parentFolder("/a/b"), "/a");
  EXPECT_EQ(baseName("/a/b/"), "b");
  EXPECT_EQ(cFileListing::validUtf8("ok\xff"), "ok\xef\xbf\xbd");
  before ? setenv("HOME", home.c_str(), 1) : unsetenv("HOME");
}

} // namespace
