// The edit box in a real (offscreen) window, driven by keys, typed text and the mouse.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../common/offscreen_fixture.h"
#include "ciom/customform.h"
#include "ciom/edit.h"
#include "nslib/nswnd.h"

namespace {

constexpr sNSModifiers kShift{true, false, false, false};
constexpr sNSModifiers kCtrl{false, true, false, false};
constexpr sNSModifiers kCtrlShift{true, true, false, false};

// A form with one edit box (and a second one to move the focus to), recording the
// actions the first raises.
class cEditForm : public cCustomForm {
public:
  cEditChild edit, other;
  std::vector<int> keys; // the keys of its Enter / Escape actions
  int changes = 0;
  void onConstruct() override {
    cCustomForm::onConstruct();
    clientArea()->attach(&edit, 10, 10, 200, 24);
    clientArea()->attach(&other, 10, 50, 200, 24);
  }
  bool onAction(cChildElement* source, cChildAction* action) override {
    if (source == &edit && action->code == cEditChild::kChangedCode) ++changes;
    if (source == &edit && action->code == cChildAction::acNotify)
      keys.push_back(static_cast<cEditChild::cEditKeyAction*>(action)->key);
    return cCustomForm::onAction(source, action);
  }
};

std::string clipboard() {
  std::vector<unsigned char> data;
  if (!nswg_clip_get(nsClipText, data)) return "";
  return {data.begin(), data.end()};
}

void setClipboard(const std::string& text) {
  nswg_clip_set(nsClipText, text.data(), static_cast<long long>(text.size()));
}

class Edit : public cOffscreenTest {
protected:
  void SetUp() override {
    cOffscreenTest::SetUp();
    window = open(&form, 400, 200);
    form.edit.focus();
    nsoff::runUntilIdle();
    ASSERT_TRUE(form.edit.hasFocus());
  }
  void TearDown() override {
    window.reset();
    cOffscreenTest::TearDown();
  }
  // The desktop point of caret position i in the first box.
  sPoint at(int i) {
    sPoint p;
    form.edit.absPos(p);
    return {p.x + form.edit.symbolPos(i), p.y + form.edit.height() / 2};
  }
  std::string text() { return form.edit.text(); }
  std::pair<long long, long long> sel() { return {form.edit.selFirst(), form.edit.selLast()}; }

  cEditForm form;
  std::unique_ptr<cWindowHolder> window;
};

TEST_F(Edit, TheMaximumLengthHoldsForTypingAndPasting) {
  ASSERT_TRUE(form.edit.setMaxLen(5));
  EXPECT_EQ(form.edit.maxLen(), 5);
  typeText("abcde");
  const int changes = form.changes;
  typeText("f");
  EXPECT_EQ(text(), "abcde");       // the sixth character is dropped
  EXPECT_EQ(form.changes, changes); // and nothing is reported
  pressKey(cChildElement::kKeyHome);
  typeText("X"); // a full box takes nothing, and keeps its tail
  EXPECT_EQ(text(), "abcde");

  form.edit.wipeText();
  setClipboard("abcdefgh");
  pressKey('V', kCtrl);
  EXPECT_EQ(text(), "abcde");
  // Pasted units go in first; the text after the caret keeps what still fits.
  form.edit.setText("12345");
  form.edit.setCaret(2);
  setClipboard("ab");
  pressKey(cChildElement::kKeyInsert, kShift);
  EXPECT_EQ(text(), "12ab3");
  EXPECT_EQ(form.edit.caret(), 4);

  // Line breaks become blanks; control characters are dropped.
  ASSERT_TRUE(form.edit.setMaxLen(20));
  setClipboard("a\r\nb\tc\x01");
  pressKey('V', kCtrl);
  EXPECT_EQ(text(), "a b c");
  EXPECT_FALSE(form.edit.setMaxLen(-1));
  EXPECT_FALSE(form.edit.setMaxLen(cEditChild::kMaxMaxLen + 1));
  EXPECT_EQ(text(), "a b c"); // a refused length changes nothing
}

TEST_F(Edit, NumbersAreGroupedFromTheRightAndReadBack) {
  struct sCase {
    unsigned long long value;
    bool hex;
    char separator;
    const char* shown;
  } cases[] = {
      {1234567, false, ',', "1,234,567"},
      {255, true, 0, "0xFF"},
      {static_cast<unsigned long long>(-123456LL), false, ',', "-,123,456"},
      {0x12345, true, '.', "0.x12.345"}, // the prefix counts as two characters
      {~0ULL, false, 0, "-1"},           // 2^63 and more show as negative numbers
      {999, false, ',', "999"},
  };
  for (const sCase& c : cases) {
    form.edit.setU64(c.value, c.hex, c.separator);
    EXPECT_EQ(text(), c.shown);
    EXPECT_EQ(form.edit.asU64(), c.value) << c.shown;
  }
  struct sRead {
    const char* text;
    unsigned long long value;
  } reads[] = {{"  42", 42},      {"0x1f", 31},   {"12abc", 12},
               {"", ~0ULL},       {"   ", ~0ULL}, {"99999999999999999999999", ~0ULL},
               {"-2", ~0ULL - 1}, {"0X10", 16},   {"x", 0}};
  for (const sRead& r : reads) {
    form.edit.setText(r.text);
    EXPECT_EQ(form.edit.asU64(), r.value) << r.text;
  }
}

TEST_F(Edit, PasswordsAndReadOnlyBoxesKeepTheirText) {
  form.edit.setText("secret");
  form.edit.setPwdMode(true);
  setClipboard("before");
  pressKey('A', kCtrl);
  pressKey('C', kCtrl);
  pressKey('X', kCtrl);
  pressKey(cChildElement::kKeyInsert, kCtrl);
  EXPECT_EQ(clipboard(), "before"); // a password is never copied
  EXPECT_EQ(text(), "secret");      // nor cut

  form.edit.setPwdMode(false);
  form.edit.setReadonly(true);
  form.edit.setText("fixed");
  pressKey('A', kCtrl);
  typeText("zz");
  pressKey(cChildElement::kKeyBackspace);
  pressKey(cChildElement::kKeyDelete);
  pressKey(cChildElement::kKeyDelete, kShift);
  pressKey('V', kCtrl);
  pressKey('X', kCtrl);
  EXPECT_EQ(text(), "fixed");
  EXPECT_EQ(clipboard(), "fixed"); // but a read-only box copies
  EXPECT_EQ(form.changes, 0);
}

TEST_F(Edit, ShiftWithArrowsGrowsShrinksAndReplacesTheSelection) {
  form.edit.setText("abcdef");
  pressKey(cChildElement::kKeyHome);
  pressKey(cChildElement::kKeyRight, kShift);
  pressKey(cChildElement::kKeyRight, kShift);
  EXPECT_EQ(sel(), std::make_pair(0LL, 1LL));
  pressKey(cChildElement::kKeyLeft, kShift); // shrinks from the side the caret is on
  EXPECT_EQ(sel(), std::make_pair(0LL, 0LL));
  pressKey(cChildElement::kKeyLeft, kShift); // to nothing
  EXPECT_EQ(sel(), std::make_pair(-1LL, -1LL));
  pressKey(cChildElement::kKeyEnd);
  pressKey(cChildElement::kKeyLeft, kShift);
  pressKey(cChildElement::kKeyLeft, kShift);
  EXPECT_EQ(sel(), std::make_pair(4LL, 5LL));
  pressKey(cChildElement::kKeyHome, kShift); // grows leftwards from the fixed end
  EXPECT_EQ(sel(), std::make_pair(0LL, 5LL));
  EXPECT_EQ(form.edit.caret(), 0);
  // A move that does not start at an edge replaces the selection.
  form.edit.select(1, 2);
  form.edit.processSelectKbd(5, 6);
  EXPECT_EQ(sel(), std::make_pair(5LL, 5LL));
  pressKey(cChildElement::kKeyRight); // a plain move ends the selection
  EXPECT_FALSE(form.edit.hasSelection());
}

TEST_F(Edit, CtrlArrowsMoveOverWordsAndTheBlanksNextToThem) {
  form.edit.setText("one  two three");
  pressKey(cChildElement::kKeyHome);
  const long long rights[] = {5, 9, 14, 14};
  for (const long long expected : rights) {
    pressKey(cChildElement::kKeyRight, kCtrl);
    EXPECT_EQ(form.edit.caret(), expected);
  }
  const long long lefts[] = {9, 5, 0, 0};
  for (const long long expected : lefts) {
    pressKey(cChildElement::kKeyLeft, kCtrl);
    EXPECT_EQ(form.edit.caret(), expected);
  }
  pressKey(cChildElement::kKeyRight, kCtrlShift);
  EXPECT_EQ(sel(), std::make_pair(0LL, 4LL));
}

TEST_F(Edit, TheMouseSelectsByDragShiftClickAndDoubleClick) {
  form.edit.setText("alpha beta gamma");
  // Press at position 2, drag to 8, release: 2..7 selected, caret at 8.
  const sPoint from = at(2), to = at(8);
  nsoff::button(from.x, from.y, 1, true);
  nsoff::move((from.x + to.x) / 2, from.y);
  nsoff::move(to.x, to.y);
  nsoff::button(to.x, to.y, 1, false);
  nsoff::runUntilIdle();
  EXPECT_EQ(sel(), std::make_pair(2LL, 7LL));
  EXPECT_EQ(form.edit.caret(), 8);
  EXPECT_EQ(nsoff::captured(), nullptr);
  // The selection is offered as PRIMARY, apart from the clipboard; the middle button
  // pastes it where it is pressed.
  setClipboard("clip");
  std::vector<unsigned char> primary;
  ASSERT_TRUE(nswg_clip_get(nsClipPrimary, primary));
  EXPECT_EQ(std::string(primary.begin(), primary.end()), "pha be");
  EXPECT_EQ(clipboard(), "clip");
  nsoff::click(at(0).x, at(0).y, 3);
  nsoff::runUntilIdle();
  EXPECT_EQ(text(), "pha bealpha beta gamma");
  form.edit.setText("alpha beta gamma");

  nsoff::click(at(1).x, at(1).y); // a click places the caret
  nsoff::runUntilIdle();
  EXPECT_FALSE(form.edit.hasSelection());
  EXPECT_EQ(form.edit.caret(), 1);
  nsoff::click(at(4).x, at(4).y, 1, kShift);
  nsoff::runUntilIdle();
  EXPECT_EQ(sel(), std::make_pair(1LL, 3LL));

  // A double click selects the word under the pointer and puts the caret at its end; a
  // triple click selects everything.
  static unsigned now = 10000;
  cChildElement::setTicks([] { return now += 100; });
  const sPoint word = at(8);
  nsoff::click(word.x + 2, word.y);
  nsoff::click(word.x + 2, word.y);
  nsoff::runUntilIdle();
  cChildElement::setTicks(nullptr);
  EXPECT_EQ(sel(), std::make_pair(6LL, 9LL));
  EXPECT_EQ(form.edit.caret(), 10);
  cChildElement::setTicks([] { return now += 100; });
  nsoff::click(word.x + 2, word.y); // a third press: everything
  nsoff::runUntilIdle();
  cChildElement::setTicks(nullptr);
  EXPECT_EQ(sel(), std::make_pair(0LL, 15LL));
}

TEST_F(Edit, TheCaretStaysInViewOfALongText) {
  form.edit.setMaxLen(1000);
  typeText(std::string(120, 'w').c_str());
  const int caretX = form.edit.symbolPos(static_cast<int>(form.edit.caret()));
  EXPECT_GT(form.edit.scrollX(), 0);
  EXPECT_GE(caretX, cEditChild::kPadding);
  EXPECT_LT(caretX, form.edit.width() - cEditChild::kPadding);
  pressKey(cChildElement::kKeyHome);
  EXPECT_EQ(form.edit.scrollX(), 0);
  // Dragging past the right edge follows the pointer.
  sPoint p;
  form.edit.absPos(p);
  nsoff::button(p.x + 20, p.y + 10, 1, true);
  for (int i = 0; i < 40; ++i) nsoff::move(p.x + form.edit.width() + 30, p.y + 10 + (i & 1));
  nsoff::button(p.x + form.edit.width() + 30, p.y + 10, 1, false);
  nsoff::runUntilIdle();
  EXPECT_GT(form.edit.scrollX(), 0);
  EXPECT_GT(form.edit.selLast(), 30);
}

TEST_F(Edit, ASurrogatePairIsOneCharacter) {
  typeText("a\xF0\x9F\x98\x80"
           "b"); // a, U+1F600, b
  ASSERT_EQ(form.edit.length(), 4);
  pressKey(cChildElement::kKeyLeft);
  pressKey(cChildElement::kKeyLeft);
  EXPECT_EQ(form.edit.caret(), 1); // over the pair at once
  pressKey(cChildElement::kKeyRight, kShift);
  EXPECT_EQ(sel(), std::make_pair(1LL, 2LL));
  pressKey(cChildElement::kKeyDelete);
  EXPECT_EQ(text(), "ab");
  typeText("\xF0\x9F\x98\x80");
  pressKey(cChildElement::kKeyBackspace);
  EXPECT_EQ(text(), "ab");
  form.edit.setText("\xF0\x9F\x98\x80");
  form.edit.select(0, 0); // half a pair widens to the pair
  EXPECT_EQ(sel(), std::make_pair(0LL, 1LL));
  form.edit.select(1, 1);
  EXPECT_EQ(sel(), std::make_pair(0LL, 1LL));
  pressKey('C', kCtrl);
  EXPECT_EQ(clipboard(), "\xF0\x9F\x98\x80"); // real UTF-8 on the clipboard
  // A pair that does not fit whole stays out.
  form.edit.setMaxLen(2);
  typeText("x\xF0\x9F\x98\x80");
  EXPECT_EQ(text(), "x");
  form.edit.setText("y\xF0\x9F\x98\x80");
  EXPECT_EQ(text(), "y");
}

TEST_F(Edit, EnterAndEscapeReportTheirKeyAndUndoRestores) {
  typeText("abc");
  pressKey(cChildElement::kKeyEnter);
  pressKey(cChildElement::kKeyEscape);
  EXPECT_EQ(form.keys, (std::vector<int>{cChildElement::kKeyEnter, cChildElement::kKeyEscape}));
  pressKey('A', kCtrl);
  pressKey(cChildElement::kKeyEscape); // with a selection, Escape only drops it
  EXPECT_EQ(form.keys.size(), 2u);
  EXPECT_FALSE(form.edit.hasSelection());

  typeText(" def");
  pressKey(cChildElement::kKeyBackspace);
  EXPECT_EQ(text(), "abc de");
  pressKey('Z', kCtrl);
  EXPECT_EQ(text(), "abc def");
  pressKey('Z', kCtrl); // typing is one step
  EXPECT_EQ(text(), "abc");
  pressKey('Z', kCtrlShift);
  EXPECT_EQ(text(), "abc def");
  pressKey('Y', kCtrl);
  EXPECT_EQ(text(), "abc de");
  EXPECT_GT(form.changes, 0);
}

TEST_F(Edit, FocusSelectsAllUnlessAClickPlacesTheCaret) {
  form.edit.setText("hello");
  form.other.setText("world");
  pressKey(cChildElement::kKeyTab); // to the second box
  EXPECT_TRUE(form.other.hasFocus());
  EXPECT_EQ(form.other.selFirst(), 0);
  EXPECT_EQ(form.other.selLast(), 4);
  nsoff::click(at(2).x, at(2).y);
  nsoff::runUntilIdle();
  EXPECT_TRUE(form.edit.hasFocus());
  EXPECT_FALSE(form.edit.hasSelection());
  EXPECT_EQ(form.edit.caret(), 2);

  // The caret blinks while focused and stays on after a key.
  EXPECT_TRUE(form.edit.caretShown());
  nsoff::advanceClock(cEditChild::kBlinkMs);
  EXPECT_FALSE(form.edit.caretShown());
  nsoff::advanceClock(cEditChild::kBlinkMs);
  EXPECT_TRUE(form.edit.caretShown());
  nsoff::advanceClock(cEditChild::kBlinkMs);
  pressKey(cChildElement::kKeyRight);
  EXPECT_TRUE(form.edit.caretShown());
  form.other.focus();
  nsoff::runUntilIdle();
  nsoff::advanceClock(cEditChild::kBlinkMs);
  EXPECT_FALSE(form.edit.caretShown());
}

} // namespace
