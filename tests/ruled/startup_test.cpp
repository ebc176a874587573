// The editor's start: where it runs from, its configuration file and its language.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "../common/tempdir.h"
#include "qvrasci-ruled/config.h"
#include "qvrasci-ruled/mainci.h"

namespace {

// What the command line answers before any window opens: its exit status (-1: the editor
// runs), the file it opens, and the start of what it writes to stdout and stderr.
TEST(Startup, TheCommandLineAnswersHelpVersionAndMistakes) {
  const struct {
    std::vector<const char*> args;
    int status;
    const char *file, *out, *err;
  } cases[] = {
      {{}, -1, "", "", ""},
      {{"rules.qrrs"}, -1, "rules.qrrs", "", ""},
      {{"--", "-dash.qrrs"}, -1, "-dash.qrrs", "", ""},
      {{"--help"}, 0, "", "Usage: qvraci-ruled [RULES]\n", ""},
      {{"rules.qrrs", "-h"}, 0, "rules.qrrs", "Usage:", ""},
      {{"--version"}, 0, "", "qvraci-ruled 2.0\n", ""},
      {{"--bogus"}, 2, "", "", "qvraci-ruled: unknown option --bogus (try --help)\n"},
      {{"a.qrrs", "b.qrrs"}, 2, "a.qrrs", "", "qvraci-ruled: one rules file at a time"},
  };
  for (const auto& c : cases) {
    std::vector<char*> argv{const_cast<char*>("qvraci-ruled")};
    for (const char* a : c.args) argv.push_back(const_cast<char*>(a));
    char *outText = nullptr, *errText = nullptr;
    size_t outSize = 0, errSize = 0;
    std::FILE* out = open_memstream(&outText, &outSize);
    std::FILE* err = open_memstream(&errText, &errSize);
    std::string file;
    const int status =
        editorCommandLine(static_cast<int>(argv.size()), argv.data(), file, out, err);
    std::fclose(out);
    std::fclose(err);
    const std::string what = c.args.empty() ? "(none)" : c.args[0];
    EXPECT_EQ(status, c.status) << what;
    EXPECT_EQ(file, c.file) << what;
    EXPECT_EQ(std::string(outText).rfind(c.out, 0), 0u) << what << ": " << outText;
    EXPECT_EQ(std::string(errText).rfind(c.err, 0), 0u) << what << ": " << errText;
    EXPECT_EQ(*c.out == 0, outSize == 0) << what;
    std::free(outText);
    std::free(errText);
  }
}

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

TEST_F(Config, FoldersAreKeptAsOneStringOrNotAtAll) {
  ASSERT_TRUE(initConfig());
  EXPECT_EQ(configFolder(ctRulesFolder), "");
  setConfigFolder(ctRulesFolder, "/home/u/rules");
  ASSERT_TRUE(initConfig()); // read back from the file
  EXPECT_EQ(configFolder(ctRulesFolder), "/home/u/rules");
  EXPECT_EQ(configFolder(ctSampleFolder), "");
  const std::string kBad[] = {std::string("no zero"), std::string("a\0b\0", 4), ""};
  for (const std::string& bad : kBad) {
    ASSERT_TRUE(gAppConf.setTag(ctSampleFolder, bad.data(), static_cast<long long>(bad.size())));
    EXPECT_EQ(configFolder(ctSampleFolder), "") << bad;
  }
}

TEST_F(Config, WithoutAConfigurationFolderTheFileLiesInTheProgramPath) {
  // A home folder that cannot hold the configuration folder: a file stands in its way.
  writeFile(dir / ".qvraci-ruled", "x");
  setAppPath((dir / "program").c_str());
  EXPECT_EQ(configFileName(), dir / "program/.qvraci-ruled.hbin");
}

} // namespace
