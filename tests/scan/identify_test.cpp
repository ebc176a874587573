// Sample identification: verdicts against the sample's real size, and gathering samples.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "scan/identify.h"

namespace fs = std::filesystem;

namespace {

class cSampleFolder {
public:
  cSampleFolder() : myPath(fs::temp_directory_path() / ("identify-" + std::to_string(getpid()))) {
    fs::remove_all(myPath);
    fs::create_directories(myPath);
  }
  ~cSampleFolder() { fs::remove_all(myPath); }
  std::string write(const std::string& name, const std::string& bytes) const {
    const fs::path p = myPath / name;
    fs::create_directories(p.parent_path());
    std::ofstream(p, std::ios::binary) << bytes;
    return p.string();
  }
  const fs::path& path() const { return myPath; }

private:
  fs::path myPath;
};

cScanSignature* define(cCustomSignaturesTree& t, const char* name, const char* pattern) {
  cScanSignature* n = t.add(nullptr, std::make_unique<cScanSignature>());
  n->create(name, name);
  n->hitMode = cScanSignature::hmActive;
  auto r = std::make_unique<cScanSigRuleUniHexMatch>();
  EXPECT_TRUE(r->create(pattern, 0, 0));
  n->addStrRule(std::move(r));
  return n;
}

std::string sized(unsigned int total, unsigned int field) {
  std::string s = "SZ" + std::string(4, '\0') + std::string(total - 6, 'x');
  for (int i = 0; i < 4; ++i) s[2 + i] = static_cast<char>(field >> (8 * i));
  return s;
}

} // namespace

TEST(Identify, VerdictsAgainstTheRealSize) {
  cCustomSignaturesTree t;
  auto size = std::make_unique<cScanSigEndRuleMatchSize>();
  size->create(2, 4, 0, 1, false);
  define(t, "sized", "'SZ'")->addEndRule(std::move(size));
  auto footer = std::make_unique<cScanSigEndRuleUniHex>();
  ASSERT_TRUE(footer->create("'END!'", 4));
  define(t, "footed", "'FT'")->addEndRule(std::move(footer));
  define(t, "open", "'OP'"); // no end rules at all
  const cSampleFolder folder;
  const std::string body(3000, 'y');
  struct {
    const char* name;
    std::string bytes;
    eVerdict verdict;
    unsigned long long by;
  } cases[] = {
      {"exact-size", sized(1500, 1500), eVerdict::exact, 0},
      {"field-says-more", sized(1500, 1700), eVerdict::longBy, 200},
      {"field-says-far-more", sized(700, 1u << 30), eVerdict::longBy, (1u << 30) - 700},
      {"field-says-less", sized(1500, 1000), eVerdict::shortBy, 500},
      {"footer-last", "FT" + body + "END!", eVerdict::exact, 0},
      {"footer-across-a-block", "FT" + body.substr(0, 508) + "END!", eVerdict::exact, 0},
      {"junk-after-footer", "FT" + body + "END!junk", eVerdict::shortBy, 4},
      {"footer-cut", "FT" + body + "EN", eVerdict::noEnd, 0},
      {"no-end-rules", "OP" + body, eVerdict::noEnd, 0},
      {"unknown", body, eVerdict::unrecognised, 0},
      {"empty", "", eVerdict::unrecognised, 0},
  };
  cIdentifier identifier(t, 512, 1 << 20);
  const std::atomic<bool> go{false};
  for (const auto& c : cases) {
    const sIdentified s = identifier.identify(folder.write(c.name, c.bytes), go);
    EXPECT_EQ(s.verdict, c.verdict) << c.name << ": " << verdictWord(s.verdict);
    EXPECT_EQ(s.by, c.by) << c.name;
    EXPECT_EQ(s.size, c.bytes.size()) << c.name;
    if (s.file.definition) {
      const int sign = c.verdict == eVerdict::longBy ? 1 : c.verdict == eVerdict::shortBy ? -1 : 0;
      EXPECT_EQ(s.file.length, c.bytes.size() + sign * c.by) << c.name;
    }
  }
  // A sample past the cap is read no further than the cap: no end.
  cIdentifier capped(t, 512, 4096);
  EXPECT_EQ(capped.identify(folder.write("big", "OP" + std::string(1 << 20, 'z')), go).verdict,
            eVerdict::noEnd);
  const sIdentified gone = identifier.identify((folder.path() / "missing").string(), go);
  EXPECT_EQ(gone.verdict, eVerdict::unreadable);
  EXPECT_FALSE(gone.error.empty());
  const std::atomic<bool> stop{true};
  EXPECT_EQ(identifier.identify(folder.write("stopped", "OP" + body), stop).verdict,
            eVerdict::stopped);
}

TEST(Identify, GathersFilesOfFoldersInPathOrderWithoutFollowingLinkedFolders) {
  const cSampleFolder folder;
  const std::string b = folder.write("top/b.bin", "b"), a = folder.write("top/sub/a.bin", "a"),
                    c = folder.write("c.bin", "c");
  fs::create_directory_symlink(folder.path() / "top", folder.path() / "top/loop");
  std::vector<std::string> errors;
  const std::vector<std::string> found = gatherSamples(
      {(folder.path() / "top").string(), c, b, (folder.path() / "none").string()}, errors);
  EXPECT_EQ(found, (std::vector<std::string>{c, b, a}));
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_NE(errors[0].find("none"), std::string::npos);
}
