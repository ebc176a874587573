// qvraci-rules run as a user runs it: arguments in, text and exit status out.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "../common/tempdir.h"
#include "zorb/csigtext.h"
#include "zorb/rulesfile.h"

namespace {

struct sRun {
  int status;
  std::string out;
};

sRun sh(const std::string& command) {
  FILE* p = popen(command.c_str(), "r");
  std::string out;
  char buf[4096];
  for (size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
  const int status = pclose(p);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
}

// Standard output, and standard error with it unless quiet.
sRun run(const std::string& args, bool quiet = false) {
  return sh(std::string(QVRACI_RULES) + " " + args + (quiet ? " 2>/dev/null" : " 2>&1"));
}

class cCliTest : public testing::Test {
protected:
  void SetUp() override {
    cCustomSignaturesTree t;
    sRulesTextError error;
    ASSERT_TRUE(rulesFromText("qvraci-rules text 1\n"
                              "definition \"JPEG image\" ext \"jpg\" {\n"
                              "  start at 0: FF D8 FF\n"
                              "  end after 2: FF D9\n"
                              "}\n"
                              "definition \"Texts\" mode never {\n"
                              "  definition \"Plain text\" ext \"txt\" mode passive {\n"
                              "    start ascii-text\n"
                              "  }\n"
                              "}\n",
                              t, error));
    ASSERT_TRUE(saveRulesFile(rules.c_str(), t, rfBinary).ok());
    std::string image(8192, '\x01');
    image.replace(1024, 4, "\xFF\xD8\xFF\xE0");
    image.replace(1024 + 600, 2, "\xFF\xD9");
    writeFile(sample, image);
  }

  cTempDir dir;
  const std::string rules = dir / "rules.qrrs", sample = dir / "image.bin";
};

TEST_F(cCliTest, ShowAndCheck) {
  const sRun shown = run("show " + rules);
  EXPECT_EQ(shown.status, 0);
  EXPECT_NE(shown.out.find("JPEG image [jpg]: Always (active), ALL own rules hit\n"
                           "    start: Advanced/HEX: FF D8 FF (at 0x0)\n"
                           "    end: Ends in 2 bytes after Adv/HEX: FF D9\n"),
            std::string::npos)
      << shown.out;
  EXPECT_NE(shown.out.find("  Plain text [txt]: If no other hits (passive)"), std::string::npos);
  EXPECT_NE(shown.out.find("Rules: 2 (active 1, passive 1, containers 1)"), std::string::npos);

  // Either form is checked; each failure names the file, the form and the reason.
  writeFile(dir / "cut.qrrs", readFile(rules).substr(0, 20));
  writeFile(dir / "text.txt", "# made by hand\n\nqvraci-rules text 1\ndefinition \"x\" {\n}\n");
  const sRun checked =
      run("check " + rules + " " + dir / "cut.qrrs " + sample + " " + dir / "text.txt");
  EXPECT_EQ(checked.status, 1);
  EXPECT_NE(checked.out.find("rules.qrrs: ok, 3 definitions (rules file)"), std::string::npos)
      << checked.out;
  EXPECT_NE(checked.out.find("cut.qrrs: rules file QVRASI01: truncated at byte 20"),
            std::string::npos);
  EXPECT_NE(
      checked.out.find("image.bin: unknown magic: neither a rules file nor a definition text"),
      std::string::npos);
  EXPECT_NE(checked.out.find("text.txt: ok, 1 definitions (definition text)"), std::string::npos);
  EXPECT_EQ(run("check " + rules).status, 0);
}

TEST_F(cCliTest, ConvertWritesTheFormAskedForAndNeverOverwrites) {
  const std::string out = dir / "out.qrrs", text = dir / "out.txt";
  EXPECT_EQ(run("convert " + rules + " " + out).status, 0);
  EXPECT_EQ(readFile(out), readFile(rules));
  const sRun again = run("convert " + rules + " " + out);
  EXPECT_EQ(again.status, 1);
  EXPECT_NE(again.out.find("exists (use --force)"), std::string::npos);
  // A replaced file keeps its permissions; a name ending in .txt asks for the text form.
  chmod(out.c_str(), 0640);
  EXPECT_EQ(run("convert " + rules + " " + out + " --force").status, 0);
  struct stat st {};
  ASSERT_EQ(stat(out.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0640u);
  EXPECT_EQ(run("convert " + out + " " + text).status, 0);
  EXPECT_EQ(readFile(text), run("export " + rules).out);
}

TEST_F(cCliTest, ExportAndBuildRoundTrip) {
  const sRun text = run("export " + rules);
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.out, "qvraci-rules text 1\n"
                      "definition \"JPEG image\" ext \"jpg\" {\n"
                      "  start at 0: FF D8 FF\n"
                      "  end after 2: FF D9\n"
                      "}\n"
                      "definition \"Texts\" ext \"\" mode never {\n"
                      "  definition \"Plain text\" ext \"txt\" mode passive {\n"
                      "    start ascii-text\n"
                      "  }\n"
                      "}\n");
  const std::string source = dir / "rules.txt", built = dir / "built.qrrs";
  writeFile(source, text.out);
  EXPECT_EQ(run("build " + source + " " + built).status, 0);
  EXPECT_EQ(readFile(built), readFile(rules));
  const sRun again = run("build " + source + " " + built);
  EXPECT_EQ(again.status, 1);
  EXPECT_NE(again.out.find("exists (use --force)"), std::string::npos);

  // A bad line names itself, and nothing is written.
  writeFile(source, "qvraci-rules text 1\ndefinition \"x\" {\n  start at 0: 4D 5Z\n}\n");
  const std::string bad = dir / "bad.qrrs";
  const sRun refused = run("build " + source + " " + bad);
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.out, "qvraci-rules: " + source +
                             ": definition text, line 3: bad pattern text at column 5: Z\n");
  EXPECT_EQ(access(bad.c_str(), F_OK), -1);
}

TEST_F(cCliTest, MatchSaysWhy) {
  EXPECT_EQ(run("match " + rules + " " + sample + " --offset 1024").out,
            "match: JPEG image [jpg]\n");
  EXPECT_EQ(run("match " + rules + " " + sample).out, "match: none\n");
  const sRun why = run("match " + rules + " " + sample + " --offset 0 --why");
  EXPECT_NE(why.out.find("  miss  Advanced/HEX: FF D8 FF (at 0x0)"), std::string::npos) << why.out;
  EXPECT_NE(why.out.find("    miss  Is ASCII string."), std::string::npos) << why.out;
  EXPECT_EQ(run("match " + rules + " " + sample + " --offset 99999").status, 1);
}

TEST_F(cCliTest, IdentifySaysWhyAndFailsOnAnyBadSample) {
  const std::string samples = dir / "samples", jpg = samples + "/a.jpg";
  ASSERT_EQ(mkdir(samples.c_str(), 0777), 0);
  EXPECT_EQ(run("identify " + rules + " " + samples).out, "qvraci-rules: no sample files there\n");
  writeFile(jpg, readFile(sample).substr(1024, 602));
  const sRun good = run("identify " + rules + " " + samples + " --why", true);
  EXPECT_EQ(good.status, 0);
  EXPECT_EQ(good.out, jpg + ": exact, JPEG image [jpg], end rule\n"
                            "  start: JPEG image: Advanced/HEX: FF D8 FF (at 0x0)\n"
                            "  end: end rule: Ends in 2 bytes after Adv/HEX: FF D9\n");
  writeFile(samples + "/b.jpg", readFile(sample).substr(1024, 700));
  const sRun bad = run("identify " + rules + " " + samples + " --report csv");
  EXPECT_EQ(bad.status, 1);
  EXPECT_NE(bad.out.find("\"" + samples +
                         "/b.jpg\",700,\"JPEG image\",\"jpg\",602,\"end "
                         "rule\",short,98\n"),
            std::string::npos)
      << bad.out;
  EXPECT_NE(bad.out.find("qvraci-rules: 2 samples: 1 exact, 1 short\n  JPEG image"),
            std::string::npos)
      << bad.out;
  EXPECT_EQ(run("identify " + rules).status, 2);
}

TEST_F(cCliTest, ScanReportsAndCarves) {
  const sRun csv = run("scan " + rules + " " + sample + " --report csv", true);
  EXPECT_EQ(csv.status, 0);
  EXPECT_EQ(csv.out, "offset,length,definition,extension,ended\n"
                     "1024,602,\"JPEG image\",\"jpg\",end rule\n");
  const sRun json = run("scan " + rules + " " + sample + " --report json");
  EXPECT_NE(json.out.find("\"definition\": \"JPEG image\""), std::string::npos) << json.out;
  // Files start on block boundaries: with 4096-byte blocks the one at 1024 is not seen.
  EXPECT_EQ(run("scan " + rules + " " + sample + " --report json --block 4096", true).out,
            "[\n]\n");
  const std::string carved = dir / "carved"; // made by the scan
  const sRun carving = run("scan " + rules + " " + sample + " --carve " + carved);
  EXPECT_EQ(carving.status, 0);
  // The summary, on standard error: files per extension and per way of ending.
  EXPECT_NE(carving.out.find("qvraci-rules: 1 files in "), std::string::npos) << carving.out;
  EXPECT_NE(carving.out.find("  jpg           1  end rule 1\n"), std::string::npos) << carving.out;
  EXPECT_EQ(readFile(carved + "/000000000400.jpg"), readFile(sample).substr(1024, 602));
  const sRun twice = run("scan " + rules + " " + sample + " --carve " + carved);
  EXPECT_EQ(twice.status, 1);
  EXPECT_NE(twice.out.find("exists (use --force)"), std::string::npos);
  EXPECT_EQ(run("scan " + rules + " " + sample + " --carve " + carved + " --force").status, 0);
}

TEST_F(cCliTest, ErrorsAreOneLineAndNonZero) {
  EXPECT_EQ(run("").status, 2);
  EXPECT_EQ(run("frobnicate").status, 2);
  EXPECT_EQ(run("scan " + rules + " " + sample + " --block 1000").status, 2);
  EXPECT_EQ(run("scan " + rules + " " + sample + " --report xml").status, 2);
  EXPECT_EQ(run("scan " + rules + " " + sample + " --bogus").status, 2);
  const sRun missing = run("scan " + rules + " /nonexistent/image");
  EXPECT_EQ(missing.status, 1);
  EXPECT_NE(missing.out.find("qvraci-rules: /nonexistent/image: cannot be opened"),
            std::string::npos);
  const sRun notRules = run("show " + sample);
  EXPECT_EQ(notRules.status, 1);
  EXPECT_EQ(notRules.out.rfind("qvraci-rules: ", 0), 0u) << notRules.out;
  EXPECT_EQ(run("scan " + rules + " " + sample + " --max-size 64Q").status, 2);
  for (const char* align : {"0", "3", "1024", "x"}) // a divisor of the block size
    EXPECT_EQ(run("scan " + rules + " " + sample + " --align " + align).status, 2) << align;
  EXPECT_EQ(run("scan " + rules + " " + sample + " --align 1").status, 0);
}

TEST_F(cCliTest, WhatAFirstTimeUserTries) {
  EXPECT_EQ(run("--version").out, "qvraci-rules 2.0\n");
  for (const char* help : {"scan --help", "scan -h", "--help", "help"}) {
    const sRun shown = run(help);
    EXPECT_EQ(shown.status, 0) << help;
    EXPECT_EQ(shown.out.rfind("usage: qvraci-rules COMMAND", 0), 0u) << help;
  }
  const std::string expected = "offset,length,definition,extension,ended\n"
                               "1024,602,\"JPEG image\",\"jpg\",end rule\n";
  // Sizes with units; a definition text where a rules file is expected; standard input.
  EXPECT_EQ(run("scan " + rules + " " + sample + " --report csv --max-size 64M", true).out,
            expected);
  const std::string text = dir / "rules.txt";
  writeFile(text, run("export " + rules, true).out);
  EXPECT_EQ(run("scan " + text + " " + sample + " --report csv", true).out, expected);
  EXPECT_EQ(run("scan " + rules + " - --report csv < " + sample, true).out, expected);
  const sRun piped =
      sh("cat " + sample + " | " + QVRACI_RULES + " scan " + rules + " - --report csv 2>&1");
  EXPECT_NE(piped.out.find(expected), std::string::npos) << piped.out;
  EXPECT_NE(piped.out.find("qvraci-rules: - is read as a stream: structures are not walked"),
            std::string::npos)
      << piped.out;
}

} // namespace
