// Other carvers' configurations as definitions: what each line becomes, and which lines are
// left out with a note.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "scan/importconf.h"
#include "zorb/csigtext.h"

namespace {

struct sResult {
  std::string text;
  std::vector<int> noted; // line numbers
  int lines = 0;
  std::string notes;
};

sResult imported(eCarverFormat format, const std::string& config, bool commented = false) {
  cCustomSignaturesTree tree;
  const sImported r = importCarverConfig(format, config, "conf", commented, tree);
  sResult out;
  std::string error;
  EXPECT_TRUE(rulesToText(tree, out.text, error)) << error;
  // The text builds back into a tree.
  cCustomSignaturesTree built;
  sRulesTextError bad;
  EXPECT_TRUE(rulesFromText(out.text, built, bad)) << bad.line << ": " << bad.message;
  out.lines = r.lines;
  for (const sImportNote& n : r.notes) {
    out.noted.push_back(n.line);
    out.notes += n.message + "\n";
  }
  return out;
}

} // namespace

TEST(ImportCarvers, ForemostAndScalpelLines) {
  const sResult r =
      imported(eCarverFormat::scalpel, "# a comment\n"
                                       "jpg\ty\t200\t\\xff\\xd8\\xff\t\\xff\\xd9\n"
                                       "htm n 50000 <html </html> FORWARD_NEXT\n"
                                       "doc y 100 \\xd0\\xcf\\x11 \\xd0\\xcf\\x11 NEXT\n"
                                       "x y 10 a\\sb?c\\x3f \n"
                                       "NONE y 10 \\101\\102\\I\n"
                                       "wildcard *\n"
                                       "y y 10 A*B\r\n"
                                       "jpg y 5242880 \\xff\\xd8\\xff???Exif \\xff\\xd9 REVERSE\n"
                                       "cpp y 20000 #include #include ASCII\n"
                                       "mp3 y 8000000 \\x57\\x41\\x56\\45\n"
                                       "mp3 y 8000000 \\x49\\x44\\x33\\\n"
                                       "big y 5000000000 BIG\n"
                                       "any y 10 ****\n"
                                       "hello world\n"
                                       "many y 10 A B NEXT C\n");
  EXPECT_EQ(r.text, "qvraci-rules text 1\n"
                    "definition \"conf\" ext \"\" mode never {\n"
                    "  definition \"jpg (line 2)\" ext \"jpg\" {\n"
                    "    start at 0: FF D8 FF\n"
                    "    end after 2: FF D9\n"
                    "    end size at 0 width 1 little-endian multiplier 0 increment 200\n"
                    "  }\n"
                    "  definition \"htm (line 3)\" ext \"htm\" {\n"
                    "    start at 0: -'<html'\n"
                    "    end after 7: -'</html>'\n"
                    "    end size at 0 width 1 little-endian multiplier 0 increment 50000\n"
                    "  }\n"
                    "  definition \"doc (line 4)\" ext \"doc\" {\n"
                    "    start at 0: D0 CF 11\n"
                    "    end after 0: D0 CF 11\n"
                    "    end size at 0 width 1 little-endian multiplier 0 increment 100\n"
                    "  }\n"
                    "  definition \"x (line 5)\" ext \"x\" {\n"
                    "    start at 0: 'a b' ?? 'c' ??\n"
                    "    end size at 0 width 1 little-endian multiplier 0 increment 10\n"
                    "  }\n"
                    "  definition \"no extension (line 6)\" ext \"\" {\n"
                    "    start at 0: 'ABI'\n"
                    "    end size at 0 width 1 little-endian multiplier 0 increment 10\n"
                    "  }\n"
                    "  definition \"y (line 8)\" ext \"y\" {\n"
                    "    start at 0: 'A' ?? 'B'\n"
                    "    end size at 0 width 1 little-endian multiplier 0 increment 10\n"
                    "  }\n"
                    "}\n");
  EXPECT_EQ(r.noted, (std::vector<int>{9, 10, 11, 12, 13, 14, 15, 16})) << r.notes;
  EXPECT_EQ(r.lines, 14);
  EXPECT_NE(r.notes.find("REVERSE"), std::string::npos);
  EXPECT_NE(r.notes.find("\\4, neither a hex nor a three-digit octal escape"), std::string::npos);
}

TEST(ImportCarvers, CommentedDefinitionsOnlyWhenAsked) {
  const std::string config = "#\tgif\ty\t155000000\tGIF89a\t\\x00\\x3b\n"
                             "# GIF and JPG files (very common)\n"
                             "#\tcase\tsize\theader\tfooter\n";
  EXPECT_EQ(imported(eCarverFormat::foremost, config).lines, 0);
  const sResult r = imported(eCarverFormat::foremost, config, true);
  EXPECT_EQ(r.lines, 1);
  EXPECT_NE(r.text.find("  definition \"gif (line 1)\" ext \"gif\" {\n"
                        "    start at 0: 'GIF89a'\n"
                        "    end after 2: 00 ';'\n"),
            std::string::npos)
      << r.text;
}

TEST(ImportCarvers, PhotorecSignatures) {
  const sResult r = imported(eCarverFormat::photorec, "pfi 0 \"PhotoFiltre\", 0x20, \"Image\"\n"
                                                      "abc 8 0x1234 \"x\\n\\0\"\n"
                                                      "\n"
                                                      "odd 0 0x123\n"
                                                      "esc 0 \"a\\q\"\n"
                                                      "open 0 \"abc\n"
                                                      "far 70000 \"abc\"\n"
                                                      "nosig 0\n"
                                                      "word 0 abc\n");
  EXPECT_EQ(r.text, "qvraci-rules text 1\n"
                    "definition \"conf\" ext \"\" mode never {\n"
                    "  definition \"pfi (line 1)\" ext \"pfi\" {\n"
                    "    start at 0: 'PhotoFiltre Image'\n"
                    "  }\n"
                    "  definition \"abc (line 2)\" ext \"abc\" {\n"
                    "    start at 8: 12 '4x' 0A 00\n"
                    "  }\n"
                    "}\n");
  EXPECT_EQ(r.noted, (std::vector<int>{4, 5, 6, 7, 8, 9})) << r.notes;
}
