// The editor's start: where it runs from, its configuration file and its language.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <iterator>
#include <string>

#include "../common/tempdir.h"
#include "qvrasci-ruled/config.h"
#include "qvrasci-ruled/mainci.h"

namespace {

TEST(Startup, TheProgramFolderComesFromArgvZero) {
  const struct {
    const char* argv0;
    const char* folder;
  } cases[] = {{"qvraci-ruled", "./"},
               {"/opt/q/bin/qvraci-ruled", "/opt/q/bin"},
               {"./qvraci-ruled", "."},
               {nullptr, "./"}};
  for (const auto& c : cases) {
    setAppPath(c.argv0);
    EXPECT_STREQ(gAppFolder.c_str(), c.folder) << (c.argv0 ? c.argv0 : "null");
    EXPECT_STREQ(gAppPath.c_str(), c.argv0 ? c.argv0 : "");
  }
}

class Config : public ::testing::Test {
protected:
  void SetUp() override {
    if (const char* h = std::getenv("HOME")) home = h;
    setenv("HOME", dir.c_str(), 1);
  }
  void TearDown() override { home ? setenv("HOME", home->c_str(), 1) : unsetenv("HOME"); }
  cTempDir dir;
  const std::string file = dir / ".qvraci-ruled/.qvraci-ruled.hbin";
  std::optional<std::string> home;
};

TEST_F(Config, TheFirstStartWritesTheIdentityAndLaterOnesNothing) {
  EXPECT_EQ(configFileName(), file);
  ASSERT_TRUE(initConfig());
  const std::string written = readFile(file);
  EXPECT_EQ(written.substr(0, 4), "QVCF");
  EXPECT_STREQ(static_cast<const char*>(gAppConf.tag(ctBuild)), "0");
  EXPECT_STREQ(static_cast<const char*>(gAppConf.tag(ctTitle)), "Zorbex rules editor");
  EXPECT_STREQ(static_cast<const char*>(gAppConf.tag(ctVersion)), "2.0 (64 bit)");
  EXPECT_EQ(gAppConf.sizeOf(ctVersion), 13);

  // A later start finds the same tags and leaves the file alone.
  struct stat before {
  }, after{};
  ASSERT_EQ(stat(file.c_str(), &before), 0);
  ASSERT_TRUE(initConfig());
  ASSERT_EQ(stat(file.c_str(), &after), 0);
  EXPECT_EQ(readFile(file), written);
  EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
  EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
}

TEST_F(Config, TheLanguageIsEnglishUnlessTagSixteenSaysOtherwise) {
  ASSERT_TRUE(initConfig());
  EXPECT_EQ(currLangID(), lngEnglish); // no tag
  const struct {
    int value;
    long long size;
    int expected;
  } cases[] = {{4, 4, lngKorean}, {9, 4, 9}, {12, 4, lngEnglish}, {4, 2, lngEnglish}, {-3, 4, -3}};
  for (const auto& c : cases) {
    ASSERT_TRUE(gAppConf.setTag(ctLanguage, &c.value, c.size));
    EXPECT_EQ(static_cast<int>(currLangID()), c.expected) << c.value << "/" << c.size;
  }
}

TEST_F(Config, WithoutAConfigurationFolderTheFileLiesInTheProgramPath) {
  // A home folder that cannot hold the configuration folder: a file stands in its way.
  writeFile(dir / ".qvraci-ruled", "x");
  setAppPath((dir / "program").c_str());
  EXPECT_EQ(configFileName(), dir / "program/.qvraci-ruled.hbin");
}

} // namespace
