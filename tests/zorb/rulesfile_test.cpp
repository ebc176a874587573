// The rules file: hand-built bytes of both versions, conversions of older rule kinds,
// every error result, the depth limit, and round trips over random trees.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "base/memtarget.h"
#include "zorb/rulesfile.h"
#include "zorbtest.h"

namespace {

// Builds file bytes by hand, field by field.
class cBytes {
public:
  cBytes& raw(const std::string& s) {
    b.insert(b.end(), s.begin(), s.end());
    return *this;
  }
  cBytes& u8(unsigned v) {
    b.push_back(static_cast<unsigned char>(v));
    return *this;
  }
  cBytes& u16(unsigned v) { return u8(v & 0xFF).u8(v >> 8 & 0xFF); }
  cBytes& u32(unsigned v) { return u16(v & 0xFFFF).u16(v >> 16); }
  cBytes& str01(const std::string& s) { return u16(static_cast<unsigned>(s.size())).raw(s); }
  cBytes& str00(const std::u16string& s) {
    u32(static_cast<unsigned>(s.size()));
    for (char16_t c : s) u16(c);
    return *this;
  }
  bytes b;
};

int load(cCustomSignaturesTree& t, const bytes& file) {
  cMemoryTarget in(file.data(), file.size());
  return t.load(&in);
}

bytes save(cCustomSignaturesTree& t) {
  cMemoryTarget out;
  EXPECT_EQ(t.save(&out), lrOk);
  return out.bytes();
}

// One node, no subset, named "n" / "e", with the given content and end rule bytes.
bytes oneNode(const bytes& content, const bytes& ends = {0}) {
  cBytes f;
  f.raw("QVRASI01").u8(1).u8(2).str01("n").str01("e");
  f.b.insert(f.b.end(), content.begin(), content.end());
  f.b.insert(f.b.end(), ends.begin(), ends.end());
  f.u8(0).u8(0); // no children; end of the top level
  return f.b;
}

std::string firstContent(cCustomSignaturesTree& t) {
  return t.firstSig() && t.firstSig()->first_str() ? named(*t.firstSig()->first_str()) : "none";
}

TEST(RulesFile, EmptyTreeIsNineBytes) {
  cCustomSignaturesTree t;
  const bytes file = save(t);
  EXPECT_EQ(file, (cBytes().raw("QVRASI01").u8(0).b));
  cCustomSignaturesTree back;
  EXPECT_EQ(load(back, file), lrOk);
  EXPECT_EQ(back.firstSig(), nullptr);
}

TEST(RulesFile, WritesTheExactLayout) {
  cCustomSignaturesTree t;
  cScanSignature* zip = t.add(nullptr, std::make_unique<cScanSignature>());
  zip->create("ZIP", "zip");
  zip->allRules = false;
  auto field = std::make_unique<cFieldRelativeSubset>();
  field->create(0x3C, 2, 1, 4);
  zip->subset = std::move(field);
  zip->addStrRule(adv("504B0304", 0));
  zip->addStrRule(std::make_unique<cScanSigRuleIsStr>());
  auto size = std::make_unique<cScanSigEndRuleMatchSize>();
  size->create(18, 4, 22, 1, true);
  zip->addEndRule(std::move(size));
  zip->addEndRule(made<cScanSigEndRuleUniHex>("'PK'", 7u));
  cScanSignature* child = t.add(zip, std::make_unique<cScanSignature>());
  child->create("c", "");
  child->hitMode = 1;

  cBytes f;
  f.raw("QVRASI01");
  f.u8(1).u8(2 | 8 | 1 << 4).u32(0x3C).u8(2).u32(1).u32(4).str01("ZIP").str01("zip");
  f.u8(7).str01("504B0304").u32(0).u32(0).u8(4).u8(0);
  f.u8(1).u8(1).u8(4).u32(18).u32(22).u32(1).u8(7).str01("'PK'").u32(7).u8(0);
  f.u8(1).u8(1).str01("c").str01("").u8(0).u8(0).u8(0); // the child, its empty level
  f.u8(0);                                              // zip's children end
  f.u8(0);                                              // the top level ends
  EXPECT_EQ(save(t), f.b);

  cCustomSignaturesTree back;
  ASSERT_EQ(load(back, f.b), lrOk);
  EXPECT_EQ(save(back), f.b);
  EXPECT_FALSE(back.firstSig()->allRules);
  EXPECT_EQ(back.firstSig()->firstChildSig()->hitMode, 1);
}

TEST(RulesFile, OlderKindsBecomeAdvancedHex) {
  cCustomSignaturesTree t;
  ASSERT_EQ(load(t, oneNode(cBytes().u8(2).u8(1).u32(4).raw("it's").u8(0).b)), lrOk);
  EXPECT_EQ(firstContent(t), "Advanced/HEX: +'it\\'s' (scan for)");

  cCustomSignaturesTree mask;
  ASSERT_EQ(load(mask, oneNode(cBytes().u8(6).u8(1).u16(0x1234).u16(0xFFFF).u32(8).u8(0).b)), lrOk);
  EXPECT_EQ(firstContent(mask), "Advanced/HEX: [3412/FFFF] (at 0x8)");

  cCustomSignaturesTree exact;
  ASSERT_EQ(load(exact,
                 oneNode(cBytes().u8(1).u32(2).u32(3).raw(std::string("\x4D\x5A\x00", 3)).u8(0).b)),
            0);
  EXPECT_EQ(firstContent(exact), "Advanced/HEX: 4D5A00 (at 0x2)");

  cCustomSignaturesTree uni;
  cBytes u;
  u.u8(3).u8(0).u32(3).u16('a').u16('"').u16(0xE9).u8(0);
  ASSERT_EQ(load(uni, oneNode(u.b)), lrOk);
  EXPECT_EQ(firstContent(uni), "Advanced/HEX: -\"a\\\"\xC3\xA9\" (scan for)");

  cCustomSignaturesTree ends;
  cBytes e;
  e.u8(2).u8(0).u32(5).u32(3).raw("eof");
  e.u8(3).u8(1).u32(6).u32(1).u16('Z');
  e.u8(6).u32(2).u32(2).raw("\xFF\xD9").u8(0);
  ASSERT_EQ(load(ends, oneNode({0}, e.b)), lrOk);
  const cScanSignature* n = ends.firstSig();
  const cScanSigEndRule* r = n->first_end();
  EXPECT_EQ(named(*r), "Ends in 5 bytes after Adv/HEX: -'eof'");
  EXPECT_EQ(named(*(r = n->next_end(r))), "Ends in 6 bytes after Adv/HEX: +\"Z\"");
  EXPECT_EQ(named(*(r = n->next_end(r))), "Ends in 2 bytes after Adv/HEX: FFD9");
  for (r = n->first_end(); r; r = n->next_end(r)) EXPECT_EQ(r->typeOf(), etAdvHex);
}

TEST(RulesFile, OldFormatTwinLoadsTheSameTree) {
  auto build = [](bool old) {
    cBytes f;
    f.raw(old ? "QVRASI00" : "QVRASI01");
    f.u8(1).u8(2 | 2 << 4).u32(4).raw("'MZ'").u32(0);
    old ? f.str00(u"Ex\u00E9") : f.str01("Ex\xC3\xA9");
    old ? f.str00(u"exe") : f.str01("exe");
    f.u8(5).u8(0).u8(4).u8(0);
    f.u8(1).u8(0);
    old ? f.str00(u"") : f.str01("");
    old ? f.str00(u"x") : f.str01("x");
    f.u8(0).u8(0).u8(0); // child: no rules, no children
    f.u8(0).u8(0);
    return f.b;
  };
  cCustomSignaturesTree current, older;
  ASSERT_EQ(load(current, build(false)), lrOk);
  ASSERT_EQ(load(older, build(true)), lrOk);
  EXPECT_STREQ(older.firstSig()->name.c_str(), "Ex\xC3\xA9");
  EXPECT_EQ(save(older), build(false)); // saving always writes the current version
  EXPECT_EQ(save(current), build(false));
}

TEST(RulesFile, ErrorResults) {
  cCustomSignaturesTree t;
  EXPECT_EQ(load(t, cBytes().raw("QVRASI0").b), lrIo);
  EXPECT_EQ(load(t, cBytes().raw("QVRASI02").u8(0).b), lrMagic);
  EXPECT_EQ(load(t, oneNode(cBytes().u8(8).b)), lrType);
  EXPECT_EQ(load(t, oneNode({0}, cBytes().u8(9).b)), lrType);
  std::string longName(4096, 'n');
  EXPECT_EQ(load(t, cBytes().raw("QVRASI01").u8(1).u8(2).str01(longName).b), lrValue);
  EXPECT_EQ(load(t, cBytes().raw("QVRASI00").u8(1).u8(2).u32(4096).b), lrValue);
  // Stored rules whose converted pattern does not compile.
  EXPECT_EQ(load(t, oneNode(cBytes().u8(2).u8(1).u32(0).b)), lrValue);  // empty
  EXPECT_EQ(load(t, oneNode(cBytes().u8(1).u32(0).u32(0).b)), lrValue); // empty bytes
  EXPECT_EQ(load(t, oneNode(cBytes().u8(6).u8(0).u8(0x41).u8(0x0F).u32(0).b)), lrValue); // bit 0x40
  EXPECT_EQ(load(t, oneNode(cBytes().u8(2).u8(1).u32(1).raw("\xE9").b)), lrValue); // non-ASCII
  EXPECT_EQ(load(t, oneNode(cBytes().u8(6).u8(4).b)), lrValue);                    // width 4
  EXPECT_EQ(load(t, oneNode(cBytes().u8(2).u8(1).u32(4093).b)), lrValue);          // too long
  EXPECT_EQ(load(t, oneNode(cBytes().u8(7).str01("41").u32(0).u32(0xFFFFFFFE).b)), lrValue);
  EXPECT_EQ(load(t, cBytes().raw("QVRASI01").u8(1).u8(2 << 4).u32(70000).b), lrValue); // magic text
}

TEST(RulesFile, EveryCutIsAReadFailure) {
  cCustomSignaturesTree t;
  t.add(nullptr, std::make_unique<cScanSignature>())->create("a", "b");
  t.firstSig()->addStrRule(adv("41 42", 3));
  t.firstSig()->addEndRule(std::make_unique<cScanSigEndRuleIsStrEnd>());
  const bytes file = save(t);
  for (size_t n = 0; n < file.size(); ++n) {
    cCustomSignaturesTree cut;
    EXPECT_EQ(load(cut, bytes(file.begin(), file.begin() + static_cast<long>(n))), lrIo) << n;
  }
  cCustomSignaturesTree trailing; // bytes after the top level's end are not read
  bytes longer = file;
  longer.push_back(0x77);
  EXPECT_EQ(load(trailing, longer), lrOk);
}

TEST(RulesFile, HalfLoadedTreeStays) {
  cCustomSignaturesTree t;
  cBytes f;
  f.raw("QVRASI01").u8(1).u8(2).str01("first").str01("").u8(4).u8(0).u8(0).u8(0);
  f.u8(1).u8(2).str01("second").str01("").u8(5).u8(8); // an unknown type after one rule
  EXPECT_EQ(load(t, f.b), lrType);
  ASSERT_NE(t.firstSig(), nullptr);
  const cScanSignature* second = t.firstSig()->nextSig();
  ASSERT_NE(second, nullptr);
  EXPECT_STREQ(second->name.c_str(), "second");
  EXPECT_EQ(second->first_str()->typeOf(), rtIsUnicodeText);

  cCustomSignaturesTree noSubset; // subset type 3 is no subset
  ASSERT_EQ(load(noSubset, cBytes()
                               .raw("QVRASI01")
                               .u8(1)
                               .u8(3 << 4 | 2)
                               .str01("")
                               .str01("")
                               .u8(0)
                               .u8(0)
                               .u8(0)
                               .u8(0)
                               .b),
            0);
  EXPECT_FALSE(noSubset.firstSig()->subset);
}

TEST(RulesFile, NestingIsLimited) {
  auto nested = [](int levels) {
    cBytes f;
    f.raw("QVRASI01");
    for (int i = 0; i < levels; ++i) f.u8(1).u8(0).str01("").str01("").u8(0).u8(0);
    for (int i = 0; i <= levels; ++i) f.u8(0);
    return f.b;
  };
  cCustomSignaturesTree deep;
  EXPECT_EQ(load(deep, nested(cCustomSignaturesTree::kMaxDepth)), lrOk);
  EXPECT_EQ(save(deep), nested(cCustomSignaturesTree::kMaxDepth));
  cCustomSignaturesTree deeper;
  EXPECT_EQ(load(deeper, nested(cCustomSignaturesTree::kMaxDepth + 1)), lrValue);
}

// ---- Round trips ------------------------------------------------------------------------

TEST(RulesFile, RoundTripsAreStable) {
  std::mt19937 rng(1303);
  for (int round = 0; round < 300; ++round) {
    const bool current = round % 2;
    cCustomSignaturesTree t;
    randomTree(t, rng, current);
    const bytes first = save(t);
    cCustomSignaturesTree once, twice;
    ASSERT_EQ(load(once, first), lrOk) << round;
    const bytes second = save(once);
    ASSERT_EQ(load(twice, second), lrOk) << round;
    EXPECT_EQ(save(twice), second) << round; // stable once older kinds are converted
    if (current) {
      EXPECT_EQ(second, first) << round;
    }
    EXPECT_EQ(once.count(), t.count());
  }
}

// The one loader: either form, found by its first bytes, and every failure with the file,
// the form tried and the reason.
TEST(RulesFile, TheLoaderSaysWhereAndWhy) {
  const std::string text = "\r\n# a comment\r\nqvraci-rules text 1\r\ndefinition \"a\" {\r\n}\r\n";
  cCustomSignaturesTree good;
  eRulesForm form = rfBinary;
  ASSERT_TRUE(loadRulesBytes("t.txt", text, good, &form).ok());
  EXPECT_EQ(form, rfText);
  EXPECT_EQ(good.count(), 1);
  const bytes binary = save(good);
  ASSERT_TRUE(loadRulesBytes("t.qrrs",
                             {reinterpret_cast<const char*>(binary.data()), binary.size()}, good,
                             &form)
                  .ok());
  EXPECT_EQ(form, rfBinary);
  EXPECT_EQ(good.count(), 2); // appended: a merge

  const auto asText = [](const bytes& b) { return std::string(b.begin(), b.end()); };
  const struct {
    std::string bytes;
    const char* message;
  } kCases[] = {
      {"", "x: rules file QVRASI01: truncated at byte 0"},
      {"QVRASI01\x01\x02", "x: rules file QVRASI01: truncated at byte 10"},
      {"QVRASI02", "x: unknown magic: neither a rules file nor a definition text"},
      {"\x89PNG\r\n", "x: unknown magic: neither a rules file nor a definition text"},
      {asText(oneNode(cBytes().u8(9).b)),
       "x: rules file QVRASI01: an unknown rule type at byte 16"},
      {asText(cBytes().raw("QVRASI00").u8(1).u8(2).u32(4096).b),
       "x: rules file QVRASI00: a value too long or a rule that cannot be built, by byte 14"},
      {"qvraci-rules text 2\n", "x: definition text, line 1: this is not a definition text"},
      {"qvraci-rules text 1\ndefinition \"a\" {\n  start at 0: 4Z\n}\n",
       "x: definition text, line 3: bad pattern text"},
  };
  for (const auto& c : kCases) {
    cCustomSignaturesTree t;
    const sRulesFileResult r = loadRulesBytes("x", c.bytes, t);
    EXPECT_EQ(r.outcome, sRulesFileResult::roDamaged) << c.message;
    EXPECT_EQ(r.message.rfind(c.message, 0), 0u) << r.message;
  }
  cCustomSignaturesTree none;
  const sRulesFileResult missing = loadRulesFile("/nonexistent/rules.qrrs", none);
  EXPECT_EQ(missing.outcome, sRulesFileResult::roCannotOpen);
  EXPECT_EQ(missing.message,
            "/nonexistent/rules.qrrs: cannot be opened: No such file or directory");
}

} // namespace
