// The editor's main form, driven offscreen by keys and clicks as a user would.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>

#include "../common/offscreen_fixture.h"
#include "../common/tempdir.h"
#include "base/files.h"
#include "nslib/nswnd.h"
#include "qvrasci-ruled/ui.h"
#include "qvrasci-ruled/uisamples.h"
#include "zorb/csigtext.h"
#include "zorb/rulesfile.h"

namespace {

using Form = cRuledMainForm;
using tItem = Form::tItem;
constexpr int kEnter = cChildElement::kKeyEnter, kEscape = cChildElement::kKeyEscape;
constexpr int kDown = cChildElement::kKeyDown, kEnd = cChildElement::kKeyEnd;

// A container without rules over a definition with its own start and end rules, over one
// that adds its own to those it inherits.
constexpr const char* kRules = R"(qvraci-rules text 1
definition "Box" mode never {
  definition "Parent" ext "par" {
    start at 0: 'PA'
    end size at 4 width 4
    definition "Child" ext "chi" {
      start at 2: 'CH'
      end after 2: 'ZZ'
    }
  }
}
)";

// The tree's names by depth, as the view shows them: "Box [Parent [Child]]".
std::string outline(const cTreeViewChild::cTreeViewItem* first) {
  std::string out;
  for (auto* i = first; i; i = i->nextItem()) {
    out += (out.empty() ? "" : " ") + i->text;
    if (i->firstItem()) out += " [" + outline(i->firstItem()) + "]";
  }
  return out;
}

std::string clipboard() {
  std::vector<unsigned char> data;
  return nswg_clip_get(nsClipText, data) ? std::string(data.begin(), data.end()) : "";
}

std::string textOf(const cCustomSignaturesTree& tree) {
  std::string text, error;
  EXPECT_TRUE(rulesToText(tree, text, error)) << error;
  return text;
}

class MainForm : public cOffscreenTest {
protected:
  void SetUp() override {
    cOffscreenTest::SetUp();
    form = std::make_unique<Form>();
    holder = cOffscreenTest::open(form.get(), 800, 600);
  }
  void TearDown() override {
    holder.reset();
    form.reset();
    cOffscreenTest::TearDown();
  }

  // A rules file in the test's folder built from the text form.
  std::string rulesFile(const char* name, const char* text) {
    cCustomSignaturesTree tree;
    sRulesTextError error;
    EXPECT_TRUE(rulesFromText(text, tree, error)) << error.message;
    const std::string path = dir / name;
    EXPECT_TRUE(saveRulesFile(path.c_str(), tree, rfBinary).ok());
    return path;
  }
  void open(const char* text = kRules) {
    ASSERT_TRUE(form->loadFile(rulesFile("in.qrrs", text).c_str(), false));
    nsoff::runUntilIdle();
  }
  cScanSignature* sig(const char* name) {
    for (cTreeItem* i = form->document().tree().first(); i; i = i->nextInOrder()) {
      auto* s = static_cast<cScanSignature*>(i);
      if (std::string(s->name.c_str()) == name) return s;
    }
    return nullptr;
  }
  tItem* item(const char* name) { return form->tree().find(sig(name)); }
  void select(const char* name) {
    ASSERT_NE(item(name), nullptr) << name;
    clickOn(item(name)->element.get());
    ASSERT_EQ(form->current(), sig(name));
  }
  void press(int section, int row) { clickOn(form->sheet().actionButton(section, row)); }
  // Selects a row by its caption, as a click on it does.
  void pick(int section, int row) {
    form->sheet().selectCapt(section, row, true);
    nsoff::runUntilIdle();
  }
  static void retype(const char* text) {
    nsoff::key('A', {.ctrl = true});
    nsoff::type(text);
    nsoff::runUntilIdle();
    nsoff::key(kEnter);
  }
  bool removable() { return form->ruleTools().button(Form::kRemove)->enabled(); }

  cTempDir dir;
  std::unique_ptr<Form> form;
  std::unique_ptr<cWindowHolder> holder;
};

TEST_F(MainForm, ADefinitionsNameAndExtensionAreStoredAsTheFileSystemTakesThem) {
  open();
  select("Child");
  // The document's rules for extensions are tested with it; here the form's way there.
  const struct { const char *typed, *stored; } cases[] = {{"a/b", "a"}, {"", "a"}};
  for (const auto& c : cases) {
    cScript edit({[&] { retype(c.typed); }, [] { nsoff::key(kEscape); }});
    press(Form::kGeneral, Form::rExtension);
    EXPECT_STREQ(sig("Child")->ext.c_str(), c.stored) << c.typed;
    EXPECT_STREQ(form->sheet().value(Form::kGeneral, Form::rExtension), c.stored);
  }
  cScript rename({[] { retype("a/b"); }});
  press(Form::kGeneral, Form::rName);
  EXPECT_STREQ(sig("a/b")->name.c_str(), "a/b"); // names are kept as typed
  EXPECT_EQ(item("a/b")->text, "a/b");
  EXPECT_FALSE(form->document().saved());
}

TEST_F(MainForm, UndoAndRedoShowWhatTheyTouchedAndTheSavedFlagFollows) {
  open(R"(qvraci-rules text 1
definition "Box" mode never {
  definition "One" mode never {
  }
  definition "Two" mode never {
  }
}
)");
  const std::string opened = textOf(form->document().tree());
  select("One");
  cScript yes({[] { nsoff::key(kEnter); }});
  nsoff::key(cChildElement::kKeyDelete);
  nsoff::runUntilIdle();
  EXPECT_EQ(form->current(), sig("Two")); // the next sibling
  cScript rename({[] { retype("Renamed"); }});
  press(Form::kGeneral, Form::rName);
  ASSERT_EQ(form->current(), sig("Renamed"));
  const std::string edited = textOf(form->document().tree());

  // Each key, and what the form shows after it: the definition the step touched.
  const struct {
    int key;
    bool shift;
    const char* shown;
    int rows;
    bool saved;
  } kSteps[] = {
      {'Z', false, "Two", 1 + 2, false},     // the rename undone
      {'Z', false, "One", 1 + 3, true},      // the delete undone: back where it was, saved
      {'Z', false, "One", 1 + 3, true},      // nothing more to undo
      {'Z', true, "Box", 1 + 2, false},      // the delete redone: where it was
      {'Y', false, "Renamed", 1 + 2, false}, // the rename redone
      {'Y', false, "Renamed", 1 + 2, false}, // nothing more to redo
  };
  for (const auto& step : kSteps) {
    nsoff::key(step.key, {.shift = step.shift, .ctrl = true});
    nsoff::runUntilIdle();
    ASSERT_NE(form->current(), nullptr) << step.shown;
    EXPECT_STREQ(form->current()->name.c_str(), step.shown);
    EXPECT_EQ(form->tree().selected(), item(step.shown)) << step.shown;
    EXPECT_STREQ(form->sheet().value(Form::kGeneral, Form::rName), step.shown);
    EXPECT_EQ(form->tree().count(), step.rows) << step.shown;
    EXPECT_EQ(form->document().saved(), step.saved) << step.shown;
  }
  EXPECT_EQ(textOf(form->document().tree()), edited);
  nsoff::key('Z', {.ctrl = true});
  nsoff::key('Z', {.ctrl = true});
  nsoff::runUntilIdle();
  EXPECT_EQ(textOf(form->document().tree()), opened);
}

TEST_F(MainForm, TheTreesKeysCopyCutPasteDuplicateAndMove) {
  open(R"(qvraci-rules text 1
definition "Box" mode never {
  definition "A" mode never {
    definition "A1" mode never {
    }
  }
  definition "B" mode never {
  }
}
)");
  constexpr int kUp = cChildElement::kKeyUp;
  const struct {
    const char* select; // null: the root; "": as it is
    int key;
    bool alt;
    const char* after;
  } kSteps[] = {
      {"A1", 'C', false, "Box [A [A1] B]"},
      {"B", 'V', false, "Box [A [A1] B [A1]]"},
      {"A", 'D', false, "Box [A [A1] A [A1] B [A1]]"}, // the copy is selected
      {"", kDown, true, "Box [A [A1] B [A1] A [A1]]"},
      {"", kDown, true, "Box [A [A1] B [A1] A [A1]]"}, // the last already
      {"", kUp, true, "Box [A [A1] A [A1] B [A1]]"},
      {"B", 'X', false, "Box [A [A1] A [A1]]"},
      {nullptr, 'V', false, "Box [A [A1] A [A1]] B [A1]"},
  };
  for (const auto& step : kSteps) {
    if (!step.select)
      clickOn(form->tree().root()->element.get());
    else if (*step.select)
      select(step.select);
    nsoff::key(step.key, {.ctrl = !step.alt, .alt = step.alt});
    nsoff::runUntilIdle();
    EXPECT_EQ(outline(form->tree().root()->firstItem()), step.after) << step.key;
    EXPECT_EQ(form->tree().selected()->data, form->current()) << step.key;
  }
  std::string b, why;
  ASSERT_TRUE(cRulesDocument::textOf(form->current(), b, why));
  EXPECT_EQ(clipboard(), b);

  // Text that is not definitions is refused with its line, and nothing changes.
  const std::string bad = "definition \"A\" {\n  start at 0: 4Z\n}\n";
  nswg_clip_set(nsClipText, bad.data(), static_cast<long long>(bad.size()));
  const std::string before = textOf(form->document().tree());
  std::string caption;
  cScript error({[&] {
    caption = nsoff::topWindow().caption;
    nsoff::key(kEnter);
  }});
  nsoff::key('V', {.ctrl = true});
  nsoff::runUntilIdle();
  EXPECT_EQ(caption, "Error");
  EXPECT_EQ(textOf(form->document().tree()), before);
}

TEST_F(MainForm, FindSelectsAsTypedAndF3GoesOn) {
  open(R"(qvraci-rules text 1
definition "Alpha" ext "one" mode never {
}
definition "Beta" ext "alp" mode never {
}
definition "Gamma" ext "two" mode never {
}
)");
  const int treeHeight = form->tree().height();
  pressKey('F', {.ctrl = true});
  cEditChild& field = form->findField();
  ASSERT_TRUE(field.visible());
  EXPECT_TRUE(field.hasFocus());
  EXPECT_LT(form->tree().height(), treeHeight); // the field stands above the tree
  const unsigned background = field.bgColor();
  constexpr int kF3 = cChildElement::kKeyF3;
  const struct {
    int key; // 0: type the text
    const char* text;
    bool shift;
    const char* shown;
    bool found;
  } kSteps[] = {
      {0, "al", false, "Alpha", true},
      {kF3, "", false, "Beta", true},  // by its extension
      {kF3, "", false, "Alpha", true}, // round the end
      {kF3, "", true, "Beta", true},   // back, round the start
      {kEnter, "", false, "Alpha", true},
      {0, "p", false, "Alpha", true}, // "alp": the selected one still matches
      {0, "x", false, "Alpha", false},
      {cChildElement::kKeyBackspace, "", false, "Alpha", true},
      {'Z', "", false, "Alpha", false}, // ctrl+Z: the field's Backspace, not the set's
  };
  for (const auto& step : kSteps) {
    if (step.key)
      pressKey(step.key, {.shift = step.shift, .ctrl = step.key == 'Z'});
    else
      typeText(step.text);
    ASSERT_NE(form->current(), nullptr);
    EXPECT_STREQ(form->current()->name.c_str(), step.shown) << field.text();
    EXPECT_EQ(field.bgColor() == background, step.found) << field.text();
    EXPECT_TRUE(field.hasFocus());
  }
  EXPECT_STREQ(field.text(), "alpx");
  EXPECT_TRUE(form->document().saved());
  pressKey(kEscape);
  EXPECT_FALSE(field.visible());
  EXPECT_EQ(form->tree().height(), treeHeight);
  EXPECT_TRUE(form->tree().selected()->element->hasFocus());
  EXPECT_EQ(form->current(), sig("Alpha"));
}

TEST_F(MainForm, AtItsSmallestTheWindowShowsEveryControl) {
  open();
  select("Child"); // the rule bar with its most buttons
  ASSERT_GT(form->minWidth(), 296);
  ASSERT_GT(form->minHeight(), 200);
  nswnd_move(nsoff::topWindow().handle, 0, 0, form->minWidth(), form->minHeight());
  nsoff::runUntilIdle();
  ASSERT_EQ(form->width(), form->minWidth());
  const struct {
    cToolBarChild& bar;
    std::vector<int> ids;
  } kBars[] = {
      {form->tools(), {Form::kNew, Form::kOpen, Form::kSave, Form::kAbout, Form::kTest}},
      {form->ruleTools(), {Form::kNewType, Form::kNewStart, Form::kNewEnd, Form::kRemove}}};
  for (const auto& bar : kBars) {
    for (const int id : bar.ids) {
      cButtonChild* button = bar.bar.button(id);
      ASSERT_TRUE(button && button->visible()) << id;
      // Within its bar, which lies within the window.
      sPoint at, barAt;
      button->absPos(at);
      bar.bar.absPos(barAt);
      EXPECT_LE(at.x + button->width(), barAt.x + bar.bar.width()) << id;
    }
  }
}

TEST_F(MainForm, ADefinitionDraggedOntoAnotherBecomesItsLastChildUndoably) {
  open();
  const sPoint from = centreOf(item("Child")->element.get());
  const sPoint to = centreOf(item("Box")->element.get());
  nsoff::button(from.x, from.y, 1, true);
  nsoff::move(to.x, to.y);
  nsoff::button(to.x, to.y, 1, false);
  nsoff::runUntilIdle();
  EXPECT_EQ(outline(form->tree().root()->firstItem()), "Box [Parent Child]");
  EXPECT_EQ(form->current(), sig("Child"));
  EXPECT_FALSE(form->document().saved());
  pressKey('Z', {.ctrl = true});
  EXPECT_EQ(outline(form->tree().root()->firstItem()), "Box [Parent [Child]]");
  EXPECT_TRUE(form->document().saved());
}

TEST_F(MainForm, SavingOverAReadOnlyFileAsksFirst) {
  open();
  const std::string path = form->document().path(), before = readFile(path);
  ASSERT_EQ(chmod(path.c_str(), 0444), 0);
  select("Child");
  cScript rename({[] { retype("Renamed"); }});
  press(Form::kGeneral, Form::rName);
  for (const int answer : {kEscape, kEnter}) { // no, then yes
    cScript ask({[answer] { nsoff::key(answer); }});
    form->saveFile(path.c_str());
    EXPECT_EQ(ask.done(), 1u);
    EXPECT_EQ(readFile(path) == before, answer == kEscape);
    EXPECT_EQ(form->document().saved(), answer == kEnter);
  }
  struct stat st {};
  ASSERT_EQ(stat(path.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0444u);
}

TEST_F(MainForm, ARightClickSelectsItsItemBeforeTheMenu) {
  open();
  select("Box");
  tItem* child = item("Child");
  cScript menu({[] { nsoff::key(kEscape); }});
  clickOn(child->element.get(), 2); // the right button
  EXPECT_EQ(menu.done(), 1u);
  EXPECT_EQ(form->current(), sig("Child"));
  EXPECT_EQ(form->tree().selected(), child);
  EXPECT_STREQ(form->sheet().value(Form::kGeneral, Form::rName), "Child");
}

TEST_F(MainForm, OnlyADefinitionWithRulesOfItsOwnCanHit) {
  open();
  std::vector<std::string> captions;
  select("Box");
  cScript always({[] {
                    nsoff::key(kEnd); // "Always (active)"
                    nsoff::key(kEnter);
                  },
                  [&] {
                    captions.push_back(nsoff::topWindow().caption);
                    nsoff::key(kEnter);
                  }});
  press(Form::kHitConditions, Form::rHitMode);
  EXPECT_EQ(always.done(), 2u); // the error was shown
  EXPECT_EQ(sig("Box")->hitMode, 0);
  EXPECT_EQ(item("Box")->image, Form::tpContainer);
  EXPECT_TRUE(form->document().saved());

  select("Parent");
  cScript passive({[] {
    nsoff::key(cChildElement::kKeyUp); // from "Always" to "If no other hits"
    nsoff::key(kEnter);
  }});
  press(Form::kHitConditions, Form::rHitMode);
  EXPECT_EQ(sig("Parent")->hitMode, 1);
  EXPECT_EQ(item("Parent")->image, Form::tpPassive);
  EXPECT_STREQ(form->sheet().value(Form::kHitConditions, Form::rHitMode),
               "If no other hits (passive)");
  EXPECT_EQ(form->document().count(1), 1);
  EXPECT_FALSE(form->document().saved());
}

TEST_F(MainForm, ContentTypeAndScopeChoicesChangeTheRulesAndTheRows) {
  open();
  select("Parent");
  cScanSignature* parent = sig("Parent");
  const int up = cChildElement::kKeyUp;
  // Each drop-down opens on the current choice; the keys move from there.
  const struct {
    int row;
    std::vector<int> keys;
    const char* typed; // into the form that follows, if any
    const char* shown; // row 1 or row 3 afterwards (null: no row 3)
  } steps[] = {
      {Form::rContentType, {up, up}, nullptr, "ASCII text"},
      {Form::rContentType, {kDown}, nullptr, "Unicode text"},
      {Form::rContentType, {kDown}, nullptr, "Binary (any content)"},
      {Form::rScope, {kDown}, "", "double-word (32bit) at 0 (multiply by 1 and add 0)"},
      {Form::rScope, {kDown}, "'MAGIC'", "advanced-hex: 'MAGIC'"},
      {Form::rScope, {up, up}, nullptr, nullptr},
  };
  std::vector<std::pair<int, int>> types; // (content, end) text rule kinds after each step
  for (const auto& step : steps) {
    std::vector<std::function<void()>> script{[&] {
      for (const int key : step.keys) nsoff::key(key);
      nsoff::key(kEnter);
    }};
    if (step.typed) script.push_back([&] { retype(step.typed); });
    cScript run(std::move(script));
    press(Form::kHitConditions, step.row);
    EXPECT_EQ(run.done(), step.typed ? 2u : 1u);
    const int shownRow = step.row == Form::rContentType ? step.row : int{Form::rScopeDetail};
    const char* shown = form->sheet().hasProp(Form::kHitConditions, shownRow)
                            ? form->sheet().value(Form::kHitConditions, shownRow)
                            : nullptr;
    EXPECT_STREQ(shown, step.shown);
    types.emplace_back(cRulesDocument::content(parent),
                       parent->first_typed_end(etAsciiTextEnd)     ? cRulesDocument::ctAscii
                       : parent->first_typed_end(etUnicodeTextEnd) ? cRulesDocument::ctUnicode
                                                                   : cRulesDocument::ctBinary);
  }
  using D = cRulesDocument;
  EXPECT_EQ(types, (std::vector<std::pair<int, int>>{{D::ctAscii, D::ctAscii},
                                                     {D::ctUnicode, D::ctUnicode},
                                                     {D::ctBinary, D::ctBinary},
                                                     {D::ctBinary, D::ctBinary},
                                                     {D::ctBinary, D::ctBinary},
                                                     {D::ctBinary, D::ctBinary}}));
  EXPECT_EQ(parent->subset, nullptr);
  EXPECT_NE(parent->getSizeEndRule(), nullptr); // the other rules stay
  EXPECT_FALSE(form->document().saved());
}

TEST_F(MainForm, InheritedRowsAreGreyAndOnlyOwnRulesCanBeRemoved) {
  open();
  select("Child");
  cPropSheetChild& sheet = form->sheet();
  // Row 1 of each rule section is the parent's, row 2 the child's own.
  for (const int section : {Form::kStartRules, Form::kEndRules}) {
    ASSERT_TRUE(sheet.hasProp(section, 2)) << section;
    EXPECT_EQ(sheet.actionButton(section, 1), nullptr);
    pick(section, 1);
    EXPECT_FALSE(removable()) << section;
    pick(section, 2);
    EXPECT_TRUE(removable()) << section;
  }
  // The selected own end rule goes after a yes, and the set is then unsaved.
  cScript yes({[] { nsoff::key(kEnter); }});
  clickOn(form->ruleTools().button(Form::kRemove));
  EXPECT_EQ(sig("Child")->first_end(), nullptr);
  EXPECT_FALSE(sheet.hasProp(Form::kEndRules, 2));
  EXPECT_FALSE(form->document().saved());
}

TEST_F(MainForm, SavingNothingDoesNothingAndAMergeShowsEverything) {
  const size_t before = nsoff::windows().size();
  clickOn(form->tools().button(Form::kSave));
  pressKey('S', {.ctrl = true});
  EXPECT_EQ(nsoff::windows().size(), before); // no dialog
  // The document's saved flag after merges is tested with it; here the view's rows.
  const std::string path = rulesFile("merge.qrrs", kRules);
  for (const int rows : {1 + 3, 1 + 6}) {
    ASSERT_TRUE(form->loadFile(path.c_str(), true));
    EXPECT_EQ(form->tree().count(), rows);
  }
}

TEST_F(MainForm, ADamagedFileKeepsWhatCouldBeRead) {
  const std::string bytes = readFile(rulesFile("whole.qrrs", kRules));
  const std::string cut = dir / "cut.qrrs";
  writeFile(cut, bytes.substr(0, bytes.size() - 10));
  std::vector<std::string> captions;
  cScript error({[&] {
    captions.push_back(nsoff::topWindow().caption);
    nsoff::key(kEnter);
  }});
  ASSERT_TRUE(form->loadFile(cut.c_str(), false));
  EXPECT_EQ(captions.size(), 1u);
  EXPECT_NE(sig("Parent"), nullptr);
  EXPECT_EQ(form->tree().count(), 1 + form->document().tree().count()); // all of it shown
  cScript missing({[] { nsoff::key(kEnter); }});
  EXPECT_FALSE(form->loadFile((dir / "none.qrrs").c_str(), false));
  EXPECT_NE(sig("Parent"), nullptr); // a file that cannot be opened changes nothing
}

TEST_F(MainForm, ADefinitionTextOpensAndSavesAsText) {
  const std::string path = dir / "rules.txt";
  writeFile(path, kRules);
  ASSERT_TRUE(form->loadFile(path.c_str(), false));
  EXPECT_EQ(form->tree().count(), 1 + 3);
  select("Child");
  cScript rename({[] { retype("Renamed"); }});
  press(Form::kGeneral, Form::rName);
  form->saveFile(path.c_str());
  const std::string saved = readFile(path);
  EXPECT_NE(saved.find("definition \"Renamed\" ext \"chi\""), std::string::npos) << saved;
  EXPECT_TRUE(form->document().saved());
  // The save dialog offers the set's form first: a name typed without an extension gets
  // the text form's.
  cScript name({[] { retype("again"); }});
  pressKey('S', {.ctrl = true});
  EXPECT_EQ(readFile(dir / "again.txt"), saved);
  EXPECT_EQ(form->document().path(), dir / "again.txt");
}

TEST_F(MainForm, ANewDefinitionWithRulesSurvivesSaveAndReload) {
  // New type on the root view, renamed, with a start rule and a size end rule.
  clickOn(form->ruleTools().button(Form::kNewType));
  cScanSignature* fresh = form->current();
  ASSERT_NE(fresh, nullptr);
  EXPECT_STREQ(fresh->name.c_str(), "Empty file type definition");
  EXPECT_STREQ(fresh->ext.c_str(), "undefined");
  cScript rename({[] { retype("Test type"); }});
  press(Form::kGeneral, Form::rName);
  cScript start({[] {
    nsoff::type("'TEST' 00");
    nsoff::runUntilIdle();
    nsoff::key(kEnter);
  }});
  clickOn(form->ruleTools().button(Form::kNewStart));
  cScript end({[] {
                 nsoff::key(kDown); // the menu opens with nothing highlighted
                 nsoff::key(kDown); // "Size defined at file start as"
                 nsoff::key(kEnter);
               },
               [] { nsoff::key(kEnter); }}); // the field form's defaults
  clickOn(form->ruleTools().button(Form::kNewEnd));
  ASSERT_NE(fresh->first_str(), nullptr);
  ASSERT_NE(fresh->getSizeEndRule(), nullptr);
  EXPECT_EQ(fresh->getSizeEndRule()->fieldBytes(), 4);
  EXPECT_TRUE(form->sheet().hasProp(Form::kStartRules, 1));
  EXPECT_TRUE(form->sheet().hasProp(Form::kEndRules, 1));
  const std::string before = textOf(form->document().tree());

  // Saved through the dialog under a new name, over nothing; then again over itself.
  const std::string path = dir / "saved.qrrs";
  cScript save({[&] { retype(path.c_str()); }});
  nsoff::key('S', {.ctrl = true});
  nsoff::runUntilIdle();
  EXPECT_EQ(save.done(), 1u);
  EXPECT_TRUE(form->document().saved());
  EXPECT_EQ(form->document().path(), path);
  EXPECT_EQ(form->lastFolder(), dir.path());

  Form reloaded;
  cCustomSignaturesTree& tree = reloaded.document().tree();
  cFileIO file;
  ASSERT_TRUE(file.open(path.c_str(), fmRead));
  ASSERT_EQ(tree.load(&file), lrOk);
  EXPECT_EQ(textOf(tree), before);
  EXPECT_NE(before.find("definition \"Test type\" ext \"undefined\" mode never"), std::string::npos)
      << before;
}

TEST_F(MainForm, ClosingAfterADeleteOrAFailedSaveAsksAndNoKeepsTheWindow) {
  open();
  select("Parent");
  cScript ask({[] { nsoff::key(kEnter); }}); // yes to the delete question
  nsoff::key(cChildElement::kKeyDelete);
  nsoff::runUntilIdle();
  EXPECT_EQ(sig("Parent"), nullptr);
  EXPECT_EQ(form->current(), sig("Box")); // it had no sibling: its parent
  EXPECT_FALSE(form->document().saved());
  EXPECT_EQ(form->tree().count(), 1 + 1);

  // A save that fails on a full disk says so, and leaves the file and the set as they were.
  const std::string path = form->document().path(), before = readFile(path);
  std::string caption;
  cScript error({[&] {
    caption = nsoff::topWindow().caption;
    nsoff::key(kEnter);
  }});
  file_replace_fail_at(rsFlush, ENOSPC);
  form->saveFile(path.c_str());
  file_replace_fail_at(rsNone, 0);
  EXPECT_EQ(caption, "Error");
  EXPECT_EQ(readFile(path), before);
  EXPECT_FALSE(form->document().saved());

  const NSWND window = nsoff::topWindow().handle;
  cScript no({[] { nsoff::key(kEscape); }});
  nsoff::closeRequest(window);
  nsoff::runUntilIdle();
  EXPECT_EQ(no.done(), 1u);
  EXPECT_EQ(nsoff::topWindow().handle, window);
}

} // namespace

// Clicks at x, y of e in the top window: a dialog's elements know their place on the desktop
// only within their window, which stands where the backend put it.
void clickInTop(cChildElement* form, cChildElement* e, int x, int y) {
  sPoint at, root;
  e->absPos(at);
  form->absPos(root);
  const nsoff::sWindowInfo top = nsoff::topWindow();
  nsoff::click(top.x + at.x - root.x + x, top.y + at.y - root.y + y);
}

// A sample of the Parent definition: 'PA', then its size at 4.
std::string parentSample(unsigned int size, const std::string& tail) {
  std::string s = "PA";
  s += tail.substr(0, 2);
  for (int i = 0; i < 4; ++i) s += static_cast<char>(size >> (8 * i));
  return s + tail.substr(std::min<size_t>(2, tail.size()));
}

TEST_F(MainForm, TheTestButtonChecksTheDefinitionsAsTheyStandOnAFolderOfSamples) {
  open();
  const std::string samples = dir / "samples";
  ASSERT_EQ(mkdir(samples.c_str(), 0777), 0);
  writeFile(samples + "/a.par", parentSample(12, "xxxxxx"));
  writeFile(samples + "/b.chi", parentSample(13, "CHxxZZ")); // one byte long
  writeFile(samples + "/c.bin", "nothing known");
  // Child goes, unsaved: its sample is then the Parent's, whose size field runs long.
  select("Child");
  cScript yes({[] { nsoff::key(kEnter); }});
  nsoff::key(cChildElement::kKeyDelete);
  nsoff::runUntilIdle();
  ASSERT_EQ(sig("Child"), nullptr);

  std::vector<std::vector<std::string>> shown;
  const auto rowY = [](cSampleTestForm* window) {
    return window->rows().headerHeight() + window->rows().rowHeight() / 2;
  };
  const auto settled = [] {
    return !cSampleTestForm::shown() || !cSampleTestForm::shown()->running();
  };
  cScript test({[&] { retype(samples.c_str()); }, // the folder dialog: Enter chooses it
                [&] {
                  cSampleTestForm* window = cSampleTestForm::shown();
                  ASSERT_NE(window, nullptr);
                  for (int i = 0; i < window->rows().count(); ++i)
                    shown.push_back(window->rows().row(i).cells);
                  EXPECT_STREQ(window->status().text(),
                               "3 samples: 1 exact, 1 with a wrong end or none, 1 unrecognised.");
                  // A double click on a.par shows its definition: the first click selects
                  // the row, the second (as the pointer gives it: the offscreen clock does
                  // not move between two clicks) activates it.
                  clickInTop(window, &window->rows(), 40, rowY(window));
                },
                [&] {
                  cSampleTestForm* window = cSampleTestForm::shown();
                  EXPECT_EQ(window->rows().selected(), 0);
                  window->rows().onMouseDoubleClick(40, rowY(window));
                },
                [] { nsoff::key(kEscape); }},
               settled);
  clickOn(form->tools().button(Form::kTest));
  EXPECT_EQ(test.done(), 4u);
  EXPECT_EQ(shown,
            (std::vector<std::vector<std::string>>{{"a.par", "Box/Parent", "exact", "12"},
                                                   {"b.chi", "Box/Parent", "long by 1 byte", "12"},
                                                   {"c.bin", "(none)", "unrecognised", "13"}}));
  EXPECT_EQ(form->current(), sig("Parent"));
  EXPECT_EQ(cSampleTestForm::shown(), nullptr);
}

// A test window whose job holds after two samples until it is cancelled, so that Cancel
// always meets a running test.
class cHeldTestForm : public cSampleTestForm {
public:
  using cSampleTestForm::cSampleTestForm;
  ~cHeldTestForm() override { onClose(); } // the job calls back into this class
  sIdentified identifySample(cIdentifier& identifier, const std::string& path,
                             const std::atomic<bool>& stop) override {
    if (++taken > 2)
      while (!stop) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return identifier.identify(path, stop);
  }
  std::atomic<int> taken{0};
};

TEST_F(MainForm, CancelStopsTheSampleTestAndAHeaderSortsWhatItFound) {
  open();
  const std::string samples = dir / "many";
  ASSERT_EQ(mkdir(samples.c_str(), 0777), 0);
  constexpr int kSamples = 10;
  for (int i = 0; i < kSamples; ++i)
    writeFile(samples + "/" + std::to_string(1000 + i) + ".par", parentSample(12, "xxxxxx"));
  cHeldTestForm window(form.get(), samples);
  ASSERT_TRUE(window.copyDefinitions());
  bool cancelled = false;
  cScript steps({[&] {
                   clickInTop(&window, window.dialogButtons().button(cSampleTestForm::kCancel), 10,
                              10);
                   cancelled = true;
                 },
                 [&] {
                   const size_t found = window.results().size();
                   EXPECT_EQ(found, 2u);
                   EXPECT_EQ(window.rows().count(), static_cast<int>(found));
                   EXPECT_FALSE(window.dialogButtons().button(cSampleTestForm::kCancel)->enabled());
                   EXPECT_EQ(std::string(window.status().text()).rfind("Stopped after ", 0), 0u)
                       << window.status().text();
                   // A click on the sorted column's header reverses the order.
                   clickInTop(&window, &window.rows(), 40, window.rows().headerHeight() / 2);
                 },
                 [&] {
                   EXPECT_EQ(window.rows().sortColumn(), cSampleTestForm::kSample);
                   EXPECT_FALSE(window.rows().sortAscending());
                   if (window.rows().count() > 1) {
                     EXPECT_GT(window.rows().row(0).cells[0], window.rows().row(1).cells[0]);
                   }
                   nsoff::key(kEscape);
                 }},
                [&] { return !cancelled || !window.running(); });
  window.modal("test", cSampleTestForm::kWidth, cSampleTestForm::kHeight, form.get(), true);
  EXPECT_EQ(steps.done(), 3u);
}
