// The editor's document without a window: files in both forms, and each edit's effect on
// the tree and on the saved flag.
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>

#include "../common/tempdir.h"
#include "base/files.h"
#include "qvrasci-ruled/document.h"
#include "qvrasci-ruled/find.h"
#include "zorb/csigtext.h"

namespace {

// As the text form writes it, so that a save can be compared with it.
constexpr const char* kRules = R"(qvraci-rules text 1
definition "Box" ext "" mode never {
  definition "Parent" ext "par" {
    start at 0: 'PA'
    end size at 4 width 4 little-endian multiplier 1 increment 0
  }
}
)";

class Document : public ::testing::Test {
protected:
  void SetUp() override { writeFile(dir / "rules.txt", kRules); }
  static std::string textOf(const cCustomSignaturesTree& tree) {
    std::string text, error;
    EXPECT_TRUE(rulesToText(tree, text, error)) << error;
    return text;
  }
  cScanSignature* find(const char* name) {
    for (cTreeItem* i = doc.tree().first(); i; i = i->nextInOrder()) {
      auto* s = static_cast<cScanSignature*>(i);
      if (std::string(s->name.c_str()) == name) return s;
    }
    return nullptr;
  }

  cTempDir dir;
  cRulesDocument doc;
};

TEST_F(Document, OpensEitherFormAndSavesTheFormItCameIn) {
  int told = 0;
  doc.setListener([&] { ++told; });
  ASSERT_TRUE(doc.open((dir / "rules.txt").c_str()).ok());
  EXPECT_EQ(doc.form(), rfText);
  EXPECT_EQ(doc.path(), dir / "rules.txt");
  EXPECT_TRUE(doc.saved());
  EXPECT_EQ(told, 1); // the path
  EXPECT_EQ(doc.count(cScanSignature::hmNever), 1);
  EXPECT_EQ(doc.count(cScanSignature::hmActive), 1);

  // Saved under another name the set keeps its form; a .txt name always asks for text.
  ASSERT_TRUE(doc.save((dir / "copy.qrrs").c_str()).ok());
  EXPECT_EQ(readFile(dir / "copy.qrrs"), kRules);
  EXPECT_EQ(doc.path(), dir / "copy.qrrs");

  cRulesDocument binary;
  cCustomSignaturesTree tree;
  sRulesTextError error;
  ASSERT_TRUE(rulesFromText(kRules, tree, error));
  ASSERT_TRUE(saveRulesFile((dir / "rules.qrrs").c_str(), tree, rfBinary).ok());
  ASSERT_TRUE(binary.open((dir / "rules.qrrs").c_str()).ok());
  EXPECT_EQ(binary.form(), rfBinary);
  ASSERT_TRUE(binary.save((dir / "again.qrrs").c_str()).ok());
  EXPECT_EQ(readFile(dir / "again.qrrs"), readFile(dir / "rules.qrrs"));
  ASSERT_TRUE(binary.save((dir / "again.txt").c_str()).ok());
  EXPECT_EQ(readFile(dir / "again.txt"), kRules);
  EXPECT_EQ(binary.form(), rfText);
}

TEST_F(Document, FilesThatFailLeaveWhatTheyShould) {
  ASSERT_TRUE(doc.open((dir / "rules.txt").c_str()).ok());
  doc.rename(find("Parent"), "Renamed");

  // Not there: nothing changes.
  EXPECT_EQ(doc.open((dir / "missing.qrrs").c_str()).outcome, sRulesFileResult::roCannotOpen);
  EXPECT_TRUE(find("Renamed"));
  EXPECT_FALSE(doc.saved());

  // A folder that does not exist: nothing written, still unsaved.
  const sRulesFileResult created = doc.save((dir / "none/x.qrrs").c_str());
  EXPECT_EQ(created.outcome, sRulesFileResult::roCannotCreate);
  EXPECT_NE(created.message.find("cannot be created: No such file or directory"), std::string::npos)
      << created.message;
  EXPECT_FALSE(doc.saved());

  // Any step of a save that fails leaves the set unsaved under its name, and the file whole.
  for (const eReplaceStep step : {rsCreate, rsWrite, rsFlush, rsRename}) {
    file_replace_fail_at(step, ENOSPC);
    const sRulesFileResult failed = doc.save((dir / "rules.txt").c_str());
    file_replace_fail_at(rsNone, 0);
    EXPECT_FALSE(failed.ok()) << step;
    EXPECT_NE(failed.message.find("No space left on device"), std::string::npos) << failed.message;
    EXPECT_FALSE(doc.saved()) << step;
    EXPECT_EQ(doc.path(), dir / "rules.txt");
    EXPECT_EQ(readFile(dir / "rules.txt"), kRules) << step;
  }
  ASSERT_TRUE(doc.save((dir / "rules.txt").c_str()).ok());
  EXPECT_TRUE(doc.saved());

  // Damaged: what was read stays, unsaved and without the file's name, so that a save
  // cannot put the part over the whole.
  const std::string rules = kRules;
  writeFile(dir / "cut.txt", rules.substr(0, rules.find("  definition")));
  const sRulesFileResult cut = doc.open((dir / "cut.txt").c_str());
  EXPECT_EQ(cut.outcome, sRulesFileResult::roDamaged);
  EXPECT_NE(cut.message.find("cut.txt: definition text, line 2: definition \"Box\" is not closed"),
            std::string::npos)
      << cut.message;
  EXPECT_TRUE(find("Box"));
  EXPECT_FALSE(find("Renamed"));
  EXPECT_EQ(doc.path(), "");
  EXPECT_FALSE(doc.saved());
  // Merged, the part leaves the set unsaved even when it was empty.
  doc.clear();
  EXPECT_EQ(doc.merge((dir / "cut.txt").c_str()).outcome, sRulesFileResult::roDamaged);
  EXPECT_FALSE(doc.saved());
}

TEST_F(Document, AMergeKeepsTheSetSavedOnlyWhenItWasEmpty) {
  ASSERT_TRUE(doc.merge((dir / "rules.txt").c_str()).ok());
  EXPECT_TRUE(doc.saved());
  EXPECT_TRUE(doc.path().empty());
  ASSERT_TRUE(doc.merge((dir / "rules.txt").c_str()).ok());
  EXPECT_FALSE(doc.saved());
  EXPECT_EQ(doc.tree().count(), 4);
  doc.clear();
  EXPECT_TRUE(doc.empty());
  EXPECT_TRUE(doc.saved());
}

// Each edit, done on a freshly opened set: whether it changed something, the set's saved
// flag after it, and that it is one step, undone back to the saved set and redone.
TEST_F(Document, EditsTheSavedFlagAndUndo) {
  struct sCase {
    const char* what;
    std::function<bool(cRulesDocument&, cScanSignature* box, cScanSignature* parent)> edit;
    bool changes;
  };
  auto adv = [](const char* pattern) {
    auto r = std::make_unique<cScanSigRuleUniHexMatch>();
    EXPECT_TRUE(r->create(pattern, 0, 0));
    return r;
  };
  const sCase cases[] = {
      {"new definition", [](auto& d, auto* box, auto*) { return d.addDefinition(box, "New"); },
       true},
      {"delete", [](auto& d, auto*, auto* p) { return d.deleteDefinition(p), true; }, true},
      {"rename", [](auto& d, auto*, auto* p) { return d.rename(p, "PNG"); }, true},
      {"rename to the same", [](auto& d, auto*, auto* p) { return d.rename(p, "Parent"); }, false},
      {"rename to nothing", [](auto& d, auto*, auto* p) { return d.rename(p, ""); }, false},
      {"extension", [](auto& d, auto*, auto* p) { return d.setExtension(p, "png"); }, true},
      {"container to active",
       [](auto& d, auto* box, auto*) { return d.setHitMode(box, 2) == cRulesDocument::mcChanged; },
       false},
      {"active to passive",
       [](auto& d, auto*, auto* p) { return d.setHitMode(p, 1) == cRulesDocument::mcChanged; },
       true},
      {"any rule", [](auto& d, auto*, auto* p) { return d.setAllRules(p, false), true; }, true},
      {"all rules again", [](auto& d, auto*, auto* p) { return d.setAllRules(p, true), true; },
       false},
      {"subset",
       [](auto& d, auto*, auto* p) {
         auto s = std::make_unique<cFieldRelativeSubset>();
         s->create(4, 1);
         return d.setSubset(p, std::move(s)), true;
       },
       true},
      {"no subset, none before", [](auto& d, auto*, auto* p) { return d.setSubset(p, {}), true; },
       false},
      {"ascii text",
       [](auto& d, auto*, auto* p) { return d.setContent(p, cRulesDocument::ctAscii), true; },
       true},
      {"start rule", [&](auto& d, auto*, auto* p) { return d.addStartRule(p, adv("'X'")); }, true},
      {"start rule changed",
       [](auto& d, auto*, auto* p) {
         return d.setStartRule(p, static_cast<cScanSigRuleUniHexMatch*>(p->first_str()), "'PB'", 0,
                               0);
       },
       true},
      {"start rule as it was",
       [](auto& d, auto*, auto* p) {
         return d.setStartRule(p, static_cast<cScanSigRuleUniHexMatch*>(p->first_str()), "'PA'", 0,
                               0);
       },
       false},
      {"start rule that does not compile",
       [](auto& d, auto*, auto* p) {
         return d.setStartRule(p, static_cast<cScanSigRuleUniHexMatch*>(p->first_str()), "4Z", 0,
                               0);
       },
       false},
      {"size rule",
       [](auto& d, auto*, auto* p) {
         return d.setSizeRule(p, p->getSizeEndRule(), 4, 4, 0, 2, false);
       },
       true},
      {"rule removed",
       [](auto& d, auto*, auto* p) { return d.removeRule(p, p->first_str()), true; }, true},
      {"end rule removed",
       [](auto& d, auto*, auto* p) { return d.removeRule(p, p->first_end()), true; }, true},
      {"moved to the top", [](auto& d, auto* box, auto* p) { return d.move(p, nullptr, box); },
       true},
      {"moved into itself", [](auto& d, auto* box, auto* p) { return d.move(box, p, nullptr); },
       false},
      {"moved where it is", [](auto& d, auto* box, auto* p) { return d.move(p, box, nullptr); },
       false},
      {"duplicated", [](auto& d, auto* box, auto*) { return d.duplicate(box) != nullptr; }, true},
      {"pasted",
       [](auto& d, auto*, auto* p) {
         cScanSignature* first = nullptr;
         sRulesTextError error;
         return d.paste("definition \"A\" {\n}\ndefinition \"B\" {\n}\n", p, first, error) &&
                std::string(first->name.c_str()) == "A";
       },
       true},
      {"merged", [&](auto& d, auto*, auto*) { return d.merge((dir / "rules.txt").c_str()).ok(); },
       true},
  };
  for (const sCase& c : cases) {
    doc.open((dir / "rules.txt").c_str());
    const std::string before = textOf(doc.tree());
    const bool changed = c.edit(doc, find("Box"), find("Parent"));
    EXPECT_EQ(!doc.saved(), c.changes) << c.what;
    EXPECT_EQ(doc.canUndo(), c.changes) << c.what;
    if (!c.changes) continue;
    EXPECT_TRUE(changed) << c.what;
    const std::string after = textOf(doc.tree());
    EXPECT_NE(after, before) << c.what;
    cScanSignature* touched = nullptr;
    for (int round = 0; round < 2; ++round) {
      ASSERT_TRUE(doc.undo(touched)) << c.what;
      EXPECT_EQ(textOf(doc.tree()), before) << c.what;
      EXPECT_TRUE(doc.saved()) << c.what;
      EXPECT_FALSE(doc.canUndo()) << c.what;
      ASSERT_TRUE(doc.redo(touched)) << c.what;
      EXPECT_EQ(textOf(doc.tree()), after) << c.what;
      EXPECT_FALSE(doc.saved()) << c.what;
      EXPECT_FALSE(doc.redo(touched)) << c.what;
    }
  }
}

TEST_F(Document, TheHistoryFollowsTheSavedStateAndKeepsItsSteps) {
  ASSERT_TRUE(doc.open((dir / "rules.txt").c_str()).ok());
  int told = 0;
  doc.setListener([&] { ++told; });
  cScanSignature* p = find("Parent");
  cScanSignature* touched = nullptr;
  doc.rename(p, "One");
  ASSERT_TRUE(doc.save((dir / "saved.txt").c_str()).ok());
  doc.rename(p, "Two");
  EXPECT_FALSE(doc.saved());
  ASSERT_TRUE(doc.undo(touched));
  EXPECT_EQ(touched, p);
  EXPECT_TRUE(doc.saved()); // back at the save
  ASSERT_TRUE(doc.undo(touched));
  EXPECT_FALSE(doc.saved()); // before it
  EXPECT_STREQ(p->name.c_str(), "Parent");
  // A new edit where "One" could be redone: the saved state can no longer be reached.
  doc.rename(p, "Three");
  EXPECT_FALSE(doc.canRedo());
  while (doc.undo(touched)) EXPECT_FALSE(doc.saved());
  EXPECT_EQ(told, 6); // each change of the flag, and the save's new path

  // A deleted definition comes back in its place with what was under it; an undone
  // insertion shows where it was.
  cScanSignature* box = find("Box");
  doc.deleteDefinition(box);
  EXPECT_TRUE(doc.empty());
  ASSERT_TRUE(doc.undo(touched));
  EXPECT_EQ(touched, box);
  EXPECT_EQ(doc.tree().firstSig(), box);
  EXPECT_EQ(box->firstChildSig(), p);
  doc.addDefinition(box, "New");
  ASSERT_TRUE(doc.undo(touched));
  EXPECT_EQ(touched, box);

  // The oldest steps go beyond the limit; all the others undo.
  for (size_t i = 0; i < cEditHistory::kSteps + 5; ++i) doc.rename(p, std::to_string(i).c_str());
  size_t undone = 0;
  while (doc.undo(touched)) ++undone;
  EXPECT_EQ(undone, cEditHistory::kSteps);
  EXPECT_STREQ(p->name.c_str(), "4");
}

TEST_F(Document, DefinitionsAsTextCopyAndPaste) {
  ASSERT_TRUE(doc.open((dir / "rules.txt").c_str()).ok());
  std::string text, why;
  ASSERT_TRUE(cRulesDocument::textOf(find("Box"), text, why)) << why;
  EXPECT_EQ(text, kRules);
  cScanSignature* first = nullptr;
  sRulesTextError error;
  ASSERT_TRUE(doc.paste(text, nullptr, first, error)) << error.message;
  EXPECT_EQ(doc.tree().topCount(), 2);
  ASSERT_TRUE(cRulesDocument::textOf(first, text, why));
  EXPECT_EQ(text, kRules);

  // Text that is not definitions changes nothing and names its line, counted in what was
  // given with or without the header.
  const struct {
    const char* text;
    int line;
    const char* says;
  } kRefused[] = {
      {"hello", 1, "not a known word"},
      {"definition \"A\" {\n  start at 0: 4Z\n}\n", 2, ""},
      {"qvraci-rules text 1\ndefinition \"A\" {\n", 2, "not closed"},
      {"", 0, "no definitions"},
      {"qvraci-rules text 1\n# only a comment\n", 0, "no definitions"},
  };
  const std::string whole = [&] {
    std::string t, w;
    rulesToText(doc.tree(), t, w);
    return t;
  }();
  for (const auto& c : kRefused) {
    EXPECT_FALSE(doc.paste(c.text, nullptr, first, error)) << c.text;
    EXPECT_EQ(error.line, c.line) << c.text << ": " << error.message;
    EXPECT_NE(error.message.find(c.says), std::string::npos) << error.message;
    EXPECT_EQ(textOf(doc.tree()), whole);
  }
}

TEST(Find, GoesRoundTheTreeByNameOrExtensionIgnoringCase) {
  cCustomSignaturesTree tree;
  sRulesTextError error;
  ASSERT_TRUE(rulesFromText(R"(qvraci-rules text 1
definition "Top" mode never {
  definition "Parent" ext "par" {
    definition "ÄRGER" ext "x" {
    }
  }
  definition "Second" ext "PARX" {
  }
}
)",
                            tree, error));
  auto named = [&](const char* name) -> const cScanSignature* {
    for (const cTreeItem* i = tree.first(); i; i = i->nextInOrder())
      if (std::string(static_cast<const cScanSignature*>(i)->name.c_str()) == name)
        return static_cast<const cScanSignature*>(i);
    return nullptr;
  };
  const struct {
    const char* text;
    const char* from; // null: no selection
    bool backward, includeFrom;
    const char* found; // null: none
  } kCases[] = {
      {"par", nullptr, false, false, "Parent"},
      {"par", "Parent", false, true, "Parent"},  // as typed: the selected one still matches
      {"par", "Parent", false, false, "Second"}, // F3: by its extension
      {"par", "Second", false, false, "Parent"}, // round the end
      {"par", "Parent", true, false, "Second"},  // shift+F3, round the start
      {"PAR", "Second", true, false, "Parent"},
      {"ärg", "Top", false, false, "ÄRGER"}, // case rules beyond ASCII
      {"x", "ÄRGER", false, false, "Second"},
      {"x", "Second", false, false, "ÄRGER"},
      {"none", "Top", false, true, nullptr},
      {"", "Top", false, true, nullptr},
  };
  for (const auto& c : kCases) {
    const cScanSignature* found = cDefinitionFinder(c.text).next(
        tree, c.from ? named(c.from) : nullptr, c.backward, c.includeFrom);
    EXPECT_EQ(found, c.found ? named(c.found) : nullptr)
        << c.text << " from " << (c.from ? c.from : "-") << (c.backward ? " back" : "");
  }
}

TEST_F(Document, TheExtensionAndTheTextRulesFollowTheirRules) {
  ASSERT_TRUE(doc.open((dir / "rules.txt").c_str()).ok());
  cScanSignature* p = find("Parent");
  const std::pair<const char*, const char*> kExtensions[] = {
      {"a/b", "a"}, {"*?", "@~"}, {"x:y|z\\\"", "x_y_z-'"}};
  for (const auto& [typed, stored] : kExtensions) {
    EXPECT_TRUE(doc.setExtension(p, typed));
    EXPECT_STREQ(p->ext.c_str(), stored);
  }
  EXPECT_EQ(doc.setHitMode(find("Box"), 1), cRulesDocument::mcNoRules);
  EXPECT_EQ(find("Box")->hitMode, cScanSignature::hmNever);

  // Text rules come in pairs: a start check and the end where the text ends.
  EXPECT_EQ(cRulesDocument::content(p), cRulesDocument::ctBinary);
  doc.setContent(p, cRulesDocument::ctUnicode);
  doc.setContent(p, cRulesDocument::ctAscii);
  EXPECT_EQ(cRulesDocument::content(p), cRulesDocument::ctAscii);
  EXPECT_TRUE(p->first_typed_end(etAsciiTextEnd));
  EXPECT_FALSE(p->first_typed_str(rtIsUnicodeText));
  EXPECT_FALSE(p->first_typed_end(etUnicodeTextEnd));
  doc.setContent(p, cRulesDocument::ctBinary);
  EXPECT_FALSE(p->first_typed_str(rtIsAsciiText));
  EXPECT_FALSE(p->first_typed_end(etAsciiTextEnd));
  EXPECT_TRUE(p->first_typed_str(rtAdvHex)); // its own pattern stays
}

} // namespace
