// The text form: round trips to the same bytes, defaults, and errors that name the line.
#include <gtest/gtest.h>

#include <random>

#include "base/memtarget.h"
#include "zorb/csigtext.h"
#include "zorbtest.h"

namespace {

bytes saved(cCustomSignaturesTree& t) {
  cMemoryTarget out;
  EXPECT_EQ(t.save(&out), lrOk);
  return out.bytes();
}

std::string exported(const cCustomSignaturesTree& t) {
  std::string text, error;
  EXPECT_TRUE(rulesToText(t, text, error)) << error;
  return text;
}

// Builds text that must be good.
void build(const std::string& text, cCustomSignaturesTree& t) {
  sRulesTextError error;
  ASSERT_TRUE(rulesFromText(text, t, error)) << error.line << ": " << error.message;
}

// "LINE: message" of text that must be refused.
std::string refusal(const std::string& text) {
  cCustomSignaturesTree t;
  sRulesTextError error;
  if (rulesFromText(text, t, error)) return "accepted";
  return std::to_string(error.line) + ": " + error.message;
}

const std::string kHead = "qvraci-rules text 1\n";

TEST(RulesText, WritesEveryFieldAndReadsItBack) {
  const std::string text = kHead +
                           "definition \"Images\" ext \"\" mode never {\n"
                           "  definition \"JPEG image\" ext \"jpg\" {\n"
                           "    start at 0: FF D8 FF\n"
                           "    end after 2: FF D9\n"
                           "  }\n"
                           "  definition \"Odd \\\"x\\\"\" ext \"a\\x01b\" mode 5 match any {\n"
                           "    subset magic after 3: 'ab'\n"
                           "    start scan block 512: -'hello'\n"
                           "    start ascii-text\n"
                           "    start unicode-text\n"
                           "    start at 2147483647 block 16: [0102/0F0F]\n"
                           "    end size at 4 width 4 big-endian multiplier 2 increment 8\n"
                           "    end ascii-text\n"
                           "    end unicode-text\n"
                           "    definition \"child\" ext \"\" mode passive {\n"
                           "      subset field at 2 width u16be multiplier 1 increment 0\n"
                           "    }\n"
                           "  }\n"
                           "}\n";
  cCustomSignaturesTree t;
  build(text, t);
  EXPECT_EQ(exported(t), text);
  const cScanSignature* odd = t.firstSig()->firstChildSig()->nextSig();
  EXPECT_EQ(std::string(odd->name.c_str()), "Odd \"x\"");
  EXPECT_EQ(std::string(odd->ext.c_str()), "a\x01"
                                           "b");
  EXPECT_EQ(odd->hitMode, 5);
  EXPECT_FALSE(odd->allRules);
  const auto* scan = static_cast<const cScanSigRuleUniHexMatch*>(odd->first_str());
  EXPECT_EQ(scan->offset(), -1);
  EXPECT_EQ(scan->blockSize(), 512);
  const auto* size = odd->getSizeEndRule();
  ASSERT_NE(size, nullptr);
  EXPECT_TRUE(size->bigEndian());
  EXPECT_EQ(size->multiplier(), 2u);
  EXPECT_EQ(size->increment(), 8u);
  const auto* field = static_cast<const cFieldRelativeSubset*>(odd->firstChildSig()->subset.get());
  EXPECT_EQ(field->width(), 4);
}

TEST(RulesText, DefaultsHexNumbersCommentsAndCrLf) {
  cCustomSignaturesTree t;
  build("# leading comment\r\n\r\n" + kHead +
            "definition \"A\" {\r\n"
            "  # inside\r\n"
            "  start at 0x10 :   4D 5A   \r\n"
            "  end size at 0X3C width 4\r\n"
            "  subset magic: 'PE'\r\n"
            "}",
        t);
  const cScanSignature* a = t.firstSig();
  EXPECT_EQ(std::string(a->ext.c_str()), "");
  EXPECT_EQ(a->hitMode, cScanSignature::hmActive);
  EXPECT_TRUE(a->allRules);
  const auto* start = static_cast<const cScanSigRuleUniHexMatch*>(a->first_str());
  EXPECT_EQ(start->offset(), 16);
  EXPECT_EQ(std::string(start->text()), "4D 5A"); // the blanks around it are not pattern
  const auto* size = a->getSizeEndRule();
  EXPECT_EQ(size->fieldOffset(), 0x3Cu);
  EXPECT_EQ(size->multiplier(), 1u);
  EXPECT_EQ(size->increment(), 0u);
  EXPECT_FALSE(size->bigEndian());
  EXPECT_EQ(static_cast<const cMagicRelativeSubset*>(a->subset.get())->offset(), 0u);
}

TEST(RulesText, PatternsThatNeedEscapes) {
  const char* patterns[] = {" 4D", "4D ", "'a\tb'", "'a\\'b'", "`\x7F`", "'\\\\x'", "'a\\x41'"};
  for (const char* p : patterns) {
    cCustomSignaturesTree t;
    cScanSignature* n = t.add(nullptr, std::make_unique<cScanSignature>());
    n->create("n", "e");
    n->addStrRule(adv(p));
    n->addEndRule(made<cScanSigEndRuleUniHex>(p, 1u));
    const std::string text = exported(t);
    cCustomSignaturesTree back;
    build(text, back);
    ASSERT_TRUE(back.firstSig() && back.firstSig()->first_str()) << text;
    EXPECT_EQ(
        std::string(static_cast<cScanSigRuleUniHexMatch*>(back.firstSig()->first_str())->text()), p)
        << text;
    EXPECT_EQ(saved(back), saved(t)) << text;
  }
  cCustomSignaturesTree t;
  build(kHead + "definition \"n\" {\n  start scan escaped: \\x20'\\\\x'\\x20\n}\n", t);
  EXPECT_EQ(std::string(static_cast<cScanSigRuleUniHexMatch*>(t.firstSig()->first_str())->text()),
            " '\\x' ");
}

TEST(RulesText, RandomTreesRoundTripToTheSameBytes) {
  std::mt19937 rng(6011);
  for (int round = 0; round < 400; ++round) {
    cCustomSignaturesTree made;
    randomTree(made, rng, round % 2);
    // The tree as a rules file holds it: older kinds become patterns.
    const bytes file = saved(made);
    cCustomSignaturesTree loaded;
    cMemoryTarget in(file.data(), file.size());
    ASSERT_EQ(loaded.load(&in), lrOk) << round;

    const std::string text = exported(loaded);
    cCustomSignaturesTree built;
    build(text, built);
    EXPECT_EQ(saved(built), saved(loaded)) << round << "\n" << text;
    EXPECT_EQ(exported(built), text) << round;
  }
}

TEST(RulesText, EmptyAndDeepTrees) {
  cCustomSignaturesTree empty;
  EXPECT_EQ(exported(empty), kHead);
  cCustomSignaturesTree none;
  build(kHead, none);
  EXPECT_EQ(saved(none), saved(empty));

  auto nested = [](int levels) {
    std::string text = kHead;
    for (int i = 0; i < levels; ++i) text += "definition \"d\" {\n";
    for (int i = 0; i < levels; ++i) text += "}\n";
    return text;
  };
  cCustomSignaturesTree deep;
  build(nested(cCustomSignaturesTree::kMaxDepth), deep);
  EXPECT_EQ(deep.count(), cCustomSignaturesTree::kMaxDepth);
  cCustomSignaturesTree again;
  build(exported(deep), again);
  EXPECT_EQ(saved(again), saved(deep));
  EXPECT_EQ(refusal(nested(cCustomSignaturesTree::kMaxDepth + 1)),
            std::to_string(cCustomSignaturesTree::kMaxDepth + 2) +
                ": definitions are nested deeper than 1024 levels");
}

TEST(RulesText, OlderKindsAreNotWrittenFromMemory) {
  cCustomSignaturesTree t;
  cScanSignature* n = t.add(nullptr, std::make_unique<cScanSignature>());
  n->create("old", "x");
  n->addStrRule(made<cScanSigRuleHasStr>("abc", true));
  std::string text, error;
  EXPECT_FALSE(rulesToText(t, text, error));
  EXPECT_NE(error.find("older kind 2"), std::string::npos) << error;
}

TEST(RulesText, ErrorsNameTheLineAndTheFault) {
  const std::string d = kHead + "definition \"x\" {\n";
  const struct {
    std::string text, expected;
  } cases[] = {
      {"", "0: the text is empty: it must begin with \"qvraci-rules text 1\""},
      {"definition \"x\" {\n}\n", "1: this is not a definition text: it must begin with "
                                  "\"qvraci-rules text 1\""},
      {d + "  start at 0: FF GG\n}\n", "3: bad pattern text at column 4: GG"},
      {d + "  start scan: 'abc\n}\n", "3: bad pattern text at column 1: 'abc"},
      {d + "  start scan: + -\n}\n",
       "3: the pattern holds no bytes, only separators and case marks"},
      {d + "  start scan: *4096* *4096* *4096* *4096* *4096* *4096* *4096* *4096* *4096* "
           "*4096* *4096* *4096* *4096* *4096* *4096* *4096* 00\n}\n",
       "3: the pattern is longer than 65536 bytes"},
      {d + "  start at 0\n}\n", "3: the pattern is missing: put it after a colon"},
      {d + "  start at 0 scan: 00\n}\n", "3: a start rule is \"start at N: PATTERN\", \"start "
                                         "scan: PATTERN\", \"start ascii-text\" or \"start "
                                         "unicode-text\""},
      {d + "  start at 2147483648: 00\n}\n",
       "3: \"at\" needs a number from 0 to 2147483647, not \"2147483648\""},
      {d + "  start at -1: 00\n}\n", "3: \"at\" needs a number from 0 to 2147483647, not \"-1\""},
      {d + "  start at 0 at 1: 00\n}\n", "3: \"at\" is given twice"},
      {d + "  start ascii-text: 00\n}\n", "3: this line takes no pattern"},
      {d + "  end size at 0\n}\n", "3: a size rule needs \"at\" and \"width\""},
      {d + "  end size at 0 width 256\n}\n",
       "3: \"width\" needs a number from 0 to 255, not \"256\""},
      {d + "  end size at 0 width 4 big-endian little-endian\n}\n",
       "3: a size field is big-endian or little-endian, not both"},
      {d + "  end after 4294967296: 00\n}\n",
       "3: \"after\" needs a number from 0 to 4294967295, not \"4294967296\""},
      {d + "  end at 3: 00\n}\n", "3: unexpected \"at\""},
      {d + "  subset field at 0 width u24\n}\n",
       "3: width is u8, u16le, u32le, u64le, u16be, u32be or u64be"},
      {d + "  subset magic: 'a'\n  subset magic: 'b'\n}\n",
       "4: a definition has one subset at most"},
      {d + "  subset magic: ''\n}\n", "3: bad pattern text at column 1: ''"},
      {d + "  subset circle\n}\n", "3: a subset is \"subset field ...\" or \"subset magic ...\""},
      {d + "  frobnicate\n}\n", "3: unknown line: it begins with \"frobnicate\""},
      {d + "  start scan escaped: \\q\n}\n",
       "3: an escaped pattern has a bad escape (use \\\\ or \\xHH, not \\x00)"},
      {d + "  start scan escaped: \\x00\n}\n",
       "3: an escaped pattern has a bad escape (use \\\\ or \\xHH, not \\x00)"},
      {d + "}\n}\n", "4: \"}\" closes no definition"},
      {d + "} x\n", "3: \"}\" stands alone on its line"},
      {d, "2: definition \"x\" is not closed with \"}\""},
      {kHead + "definition \"x {\n", "2: a string is not closed"},
      {kHead + "definition \"\\n\" {\n}\n",
       "2: a string has a bad escape (use \\\", \\\\ or \\xHH, not \\x00)"},
      {kHead + "definition x {\n}\n", "2: write a definition as: definition \"NAME\" [ext "
                                      "\"EXT\"] [mode M] [match all|any] {"},
      {kHead + "definition \"x\" mode 8 {\n}\n",
       "2: mode is always, passive, never or a number from 0 to 7"},
      {kHead + "definition \"x\" match some {\n}\n", "2: match is all or any"},
      {kHead + "definition \"x\" ext jpg {\n}\n", "2: \"ext\" needs a quoted string, not \"jpg\""},
      {kHead + "definition \"" + std::string(4096, 'n') + "\" {\n}\n",
       "2: a name or extension is longer than 4095 bytes"},
      {kHead + "  start scan: 00\n", "2: \"start\" must be inside a definition, or is not a "
                                     "known word"},
      {d + "  start scan: 00" + std::string(1, '\0') + "\n}\n", "3: the line holds a zero byte"},
  };
  for (const auto& c : cases) EXPECT_EQ(refusal(c.text), c.expected) << c.text;
}

} // namespace
