// The small widgets in real (offscreen) windows: tool bars and their buttons, scrolled
// content, and tooltips shown in popup windows.
#include <gtest/gtest.h>

#include <cmath>

#include "../common/offscreen_fixture.h"
#include "ciom/combo.h"
#include "ciom/customform.h"
#include "ciom/hint.h"
#include "ciom/link.h"
#include "ciom/listview.h"
#include "ciom/pictzones.h"
#include "ciom/popup.h"
#include "ciom/progress.h"
#include "ciom/scrollable.h"
#include "ciom/scrollbar.h"
#include "ciom/selstatic.h"
#include "ciom/static.h"
#include "ciom/theme.h"
#include "ciom/toolbar.h"
#include "ciom/vsplit.h"

namespace {

constexpr int kSpace = 32;

// A form with a tool bar that records the ids of the tool bar actions reaching it.
class cBarForm : public cCustomForm {
public:
  explicit cBarForm(cButtonChild::eLook look = cButtonChild::lkFlat) : bar(look) {}
  cToolBarChild bar;
  std::vector<int> pressed;
  void onConstruct() override {
    cCustomForm::onConstruct();
    clientArea()->attach(&bar, 10, 10, 300, 24);
    bar.addButton(1, "One");
    bar.addButton(2, "Two", "The second button");
    bar.addButton(3, "Three");
  }
  bool onAction(cChildElement* source, cChildAction* action) override {
    if (source == &bar && action->code == cToolBarAction::kCode)
      pressed.push_back(static_cast<cToolBarAction*>(action)->id);
    return cCustomForm::onAction(source, action);
  }
};

using Widgets = cOffscreenTest;

TEST_F(Widgets, AToolBarLaysOutItsVisibleButtons) {
  cBarForm form;
  const auto window = open(&form, 400, 200);
  cButtonChild* one = form.bar.button(1);
  cButtonChild* two = form.bar.button(2);
  cButtonChild* three = form.bar.button(3);
  ASSERT_TRUE(one && two && three);
  sRect r1, r2, r3;
  one->childRect(&r1);
  two->childRect(&r2);
  three->childRect(&r3);
  EXPECT_EQ(r1.x, 0);
  EXPECT_EQ(r2.x, r1.width + cToolBarChild::kGap);
  EXPECT_EQ(r3.x, r2.x + r2.width + cToolBarChild::kGap);
  EXPECT_EQ(form.bar.wantedWidth(), r3.x + r3.width);
  sSize text;
  ASSERT_TRUE(form.sizeOf("Three", text, nullptr));
  EXPECT_EQ(r3.width, text.width + 2 * cButtonChild::kPadding);

  // A hidden button leaves no gap; the one after it moves up.
  form.bar.showButton(2, false);
  three->childRect(&r3);
  EXPECT_EQ(r3.x, r1.width + cToolBarChild::kGap);
  EXPECT_EQ(form.bar.wantedWidth(), r3.x + r3.width);
  EXPECT_FALSE(form.bar.addButton(3, "Again")); // ids are unique
  EXPECT_TRUE(form.bar.removeButton(3));
  EXPECT_EQ(form.bar.button(3), nullptr);
}

TEST_F(Widgets, APressedButtonRaisesItsIdUnlessDisabledOrLeft) {
  cBarForm form;
  const auto window = open(&form, 400, 200);
  const sPoint two = centreOf(form.bar.button(2));
  nsoff::click(two.x, two.y);
  nsoff::runUntilIdle();
  EXPECT_EQ(form.pressed, std::vector<int>{2});

  // Pressed, dragged off and released outside: no press.
  nsoff::button(two.x, two.y, 1, true);
  nsoff::move(two.x, two.y + 100);
  nsoff::button(two.x, two.y + 100, 1, false);
  nsoff::runUntilIdle();
  EXPECT_EQ(form.pressed.size(), 1u);

  form.bar.enableButton(2, false);
  nsoff::click(two.x, two.y);
  nsoff::runUntilIdle();
  EXPECT_EQ(form.pressed.size(), 1u);
  EXPECT_EQ(nsoff::captured(), nullptr); // no press left the pointer held
}

TEST_F(Widgets, APushButtonAnswersTheSpaceBarWhenFocused) {
  cBarForm form(cButtonChild::lkPush);
  const auto window = open(&form, 400, 200);
  form.bar.button(3)->focus();
  nsoff::runUntilIdle();
  ASSERT_TRUE(form.bar.button(3)->hasFocus());
  nsoff::key(kSpace);
  nsoff::runUntilIdle();
  EXPECT_EQ(form.pressed, std::vector<int>{3});
}

// A scrolled list of 50 rows of 20 pixels; each row counts its clicks.
class cRow : public cChildElement {
public:
  int clicks = 0;
  void onMouseButton(int, int, int button, bool down) override { clicks += button == 1 && down; }
};

class cRows : public cScrollableElement {
public:
  cRow rows[50];
  int scrolled = 0;
  void onConstruct() override {
    for (int i = 0; i < 50; ++i) attach(&rows[i], 0, i * 20, 180, 20);
    setVirtualSize(180, 1000); // narrower than the view beside its vertical bar
    setScrollSteps(1, 20);
  }
  void onScrolled() override { ++scrolled; }
};

TEST_F(Widgets, ScrolledContentIsHitWhereItIsShown) {
  cRows list;
  const auto window = open(&list, 200, 100);
  EXPECT_EQ(list.scrollRange().height, 900);
  // One notch down: three steps of one row.
  nsoff::wheel(50, 50, -1);
  nsoff::runUntilIdle();
  EXPECT_EQ(list.scrollOffset().y, 60);
  EXPECT_EQ(list.scrolled, 1);
  nsoff::click(50, 10); // the first row shown is row 3
  nsoff::runUntilIdle();
  EXPECT_EQ(list.rows[3].clicks, 1);
  EXPECT_EQ(list.rows[0].clicks, 0);

  EXPECT_TRUE(list.scrollTo(0, 5000)); // kept in range
  EXPECT_EQ(list.scrollOffset().y, 900);
  EXPECT_FALSE(list.scrollTo(0, 900));
  EXPECT_TRUE(list.ensureVisible({0, 200, 200, 20}));
  EXPECT_EQ(list.scrollOffset().y, 200);
  EXPECT_TRUE(list.ensureVisible({0, 380, 200, 20})); // below: scrolled just enough
  EXPECT_EQ(list.scrollOffset().y, 300);
  // Growing the window shrinks the range and pulls the view back.
  nswnd_move(static_cast<NSWND>(list.winTarget()->_rt_rawhandle()), 0, 0, 200, 800);
  nsoff::runUntilIdle();
  EXPECT_EQ(list.scrollOffset().y, 200);
  // A wheel at the top end scrolls nothing, and is left to the parents.
  list.scrollTo(0, 0);
  EXPECT_FALSE(list.onMouseWheel(0, 0, false, false, 1));
}

TEST_F(Widgets, ScrollBarsShowWhenNeededAndMoveTheContent) {
  cRows list;
  const auto window = open(&list, 200, 100);
  ASSERT_TRUE(list.vBarShown());
  EXPECT_FALSE(list.hBarShown()); // the content fits beside the vertical bar
  EXPECT_EQ(list.viewSize(), (sSize{200 - cScrollBar::kThickness, 100}));
  const cScrollBar& bar = list.vBar();
  const auto centre = [&](cScrollBar::ePart part) {
    const sRect r = bar.partRect(part);
    return sPoint{r.x + r.width / 2, r.y + r.height / 2};
  };

  // The thumb shows the visible share (100 of 1000 is under the minimum length).
  EXPECT_EQ(bar.partRect(cScrollBar::spThumb).height, cScrollBar::kMinThumb);
  // Dragging the thumb half the free track scrolls half the range.
  const sPoint thumb = centre(cScrollBar::spThumb);
  const int free = 100 - 2 * cScrollBar::kThickness - cScrollBar::kMinThumb;
  nsoff::button(thumb.x, thumb.y, 1, true);
  nsoff::move(thumb.x, thumb.y + free / 2);
  nsoff::move(thumb.x + 80, thumb.y + free / 2); // sideways off the bar: still held
  nsoff::button(thumb.x + 80, thumb.y + free / 2, 1, false);
  nsoff::runUntilIdle();
  EXPECT_NEAR(list.scrollOffset().y, 900 * (free / 2) / free, 900 / free);
  EXPECT_EQ(nsoff::captured(), nullptr);
  EXPECT_EQ(list.rows[0].clicks + list.rows[1].clicks, 0); // the bar kept its clicks

  // An arrow scrolls one step, the track a page; held, the arrow repeats.
  list.scrollTo(0, 0);
  const sPoint down = centre(cScrollBar::spMore);
  nsoff::click(down.x, down.y);
  nsoff::runUntilIdle();
  EXPECT_EQ(list.scrollOffset().y, 20);
  const sPoint track = centre(cScrollBar::spTrackMore);
  nsoff::click(track.x, track.y);
  nsoff::runUntilIdle();
  EXPECT_EQ(list.scrollOffset().y, 20 + 80);
  nsoff::button(down.x, down.y, 1, true);
  nsoff::runUntilIdle();
  nsoff::advanceClock(cScrollBar::kRepeatDelayMs);
  nsoff::advanceClock(cScrollBar::kRepeatMs);
  nsoff::button(down.x, down.y, 1, false);
  nsoff::runUntilIdle();
  nsoff::advanceClock(1000); // released: no more repeats
  EXPECT_EQ(list.scrollOffset().y, 100 + 3 * 20);

  // Content that fits shows no bar, and a bar that is not allowed never shows.
  list.setVirtualSize(100, 50);
  EXPECT_FALSE(list.vBarShown());
  EXPECT_EQ(list.scrollOffset().y, 0);
  list.setVirtualSize(600, 1000);
  EXPECT_TRUE(list.vBarShown() && list.hBarShown());
  list.allowScrollBars(true, false);
  EXPECT_FALSE(list.hBarShown());
}

// A form with one element that has a hint.
class cHintForm : public cCustomForm {
public:
  cStaticChild label;
  void onConstruct() override {
    cCustomForm::onConstruct();
    label.setText("Point at me", -1, false);
    label.setHint("First line\nSecond, longer line");
    clientArea()->attach(&label, 20, 20, 120, 20);
  }
};

TEST_F(Widgets, TheHintShowsInAPopupBelowItsElement) {
  cHintForm form;
  const auto window = open(&form, 300, 200);
  const size_t before = nsoff::windows().size();
  const sPoint at = centreOf(&form.label);
  nsoff::move(at.x, at.y);
  nsoff::runUntilIdle();
  ASSERT_EQ(nsoff::windows().size(), before + 1);
  const nsoff::sWindowInfo tip = nsoff::windows().back();
  EXPECT_TRUE(tip.popup);
  EXPECT_TRUE(tip.shown);
  EXPECT_FALSE(tip.takesInput); // the pointer and keys stay with the form
  sPoint label;
  form.label.absPos(label);
  EXPECT_EQ(tip.x, label.x + 2);
  EXPECT_EQ(tip.y, label.y + form.label.height() + 2);
  sSize wide;
  ASSERT_TRUE(form.sizeOf("Second, longer line", wide, nullptr));
  const cHintMaster* hint = form.label.hintPopup();
  ASSERT_NE(hint, nullptr);
  EXPECT_EQ(tip.w, wide.width + 8);
  EXPECT_EQ(tip.h, 2 * hint->lineHeight() + 4);
  EXPECT_EQ(hint->background(), cCITheme::theme().getColor(cHintMaster::kBackgroundColour));

  // The theme's tooltip background, inside the frame (device order 0xRRGGBB).
  cairo_surface_t* s = nsoff::surface(tip.handle);
  cairo_surface_flush(s);
  const unsigned bg = cCITheme::theme().getColor(cHintMaster::kBackgroundColour);
  const unsigned rgb = ((bg & 0xFF) << 16) | (bg & 0xFF00) | (bg >> 16);
  const auto* row =
      cairo_image_surface_get_data(s) + (tip.h - 2) * cairo_image_surface_get_stride(s);
  EXPECT_EQ(reinterpret_cast<const unsigned*>(row)[tip.w - 2] & 0xFFFFFF, rgb);

  // Leaving the label ends it, and so does a press on it.
  for (const bool press : {false, true}) {
    press ? nsoff::button(at.x, at.y, 1, true) : nsoff::move(at.x + 200, at.y + 100);
    nsoff::runUntilIdle();
    EXPECT_EQ(nsoff::windows().size(), before) << press;
    EXPECT_EQ(form.label.hintPopup(), nullptr);
    nsoff::button(at.x, at.y, 1, false);
    nsoff::move(at.x + 200, at.y + 100);
    nsoff::move(at.x, at.y);
    nsoff::runUntilIdle();
  }
  // The tooltip's own closing action ends it too.
  ASSERT_NE(form.label.hintPopup(), nullptr);
  form.label.postAction(new cChildAction(cChildAction::acHintClosed));
  nsoff::runUntilIdle();
  EXPECT_EQ(form.label.hintPopup(), nullptr);
}

} // namespace

namespace {

// A splitter filling its window, with a child anchored to fill each pane.
template <class tSplitter> class cSplitRoot : public tSplitter {
public:
  cPanelChild inFirst, inSecond;
  int moved = 0;
  void onConstruct() override {
    tSplitter::onConstruct();
    this->pane(0)->anchor(&inFirst, 2, 2, ~4, ~4);
    this->pane(1)->anchor(&inSecond, 2, 2, ~4, ~4);
  }
  bool onAction(cChildElement* source, cChildAction* action) override {
    moved += source == this && action->code == cSplitterChild::kMovedCode;
    return tSplitter::onAction(source, action);
  }
};

} // namespace

TEST_F(Widgets, ASplitterDividerDragsWithinTheMinimumsAndKeepsItsShare) {
  cSplitRoot<cSplitterChild> split;
  const auto window = open(&split, 405, 200);
  const int room = 405 - cSplitterChild::kDivider;
  EXPECT_EQ(split.position(), 160); // 40 % of 400
  EXPECT_EQ(split.inFirst.width(), 160 - 4);
  EXPECT_EQ(split.inSecond.width(), 405 - 165 - 4);
  split.setMinSizes(100, 120);

  // The divider is grabbed a little beside it too; the drag stops at a minimum.
  sPoint at;
  split.absPos(at);
  const int y = at.y + 100, x = at.x + 160 - 2;
  nsoff::move(x, y);
  nsoff::runUntilIdle();
  EXPECT_EQ(nsoff::topWindow().pointer, mpSizeWE);
  nsoff::button(x, y, 1, true);
  nsoff::move(x + 500, y);
  nsoff::runUntilIdle();
  EXPECT_EQ(split.position(), room - 120);
  nsoff::move(x - 500, y);
  nsoff::button(x - 500, y, 1, false);
  nsoff::runUntilIdle();
  EXPECT_EQ(split.position(), 100);
  EXPECT_EQ(split.moved, 1);
  EXPECT_EQ(nsoff::captured(), nullptr);
  EXPECT_EQ(split.inFirst.width(), 100 - 4);

  // A resize keeps the share; the children follow their panes.
  split.setPosition(200);
  nswnd_move(static_cast<NSWND>(split.winTarget()->_rt_rawhandle()), 0, 0, 805, 200);
  nsoff::runUntilIdle();
  EXPECT_EQ(split.position(), 400);
  EXPECT_EQ(split.inSecond.width(), 805 - 405 - 4);
}

TEST_F(Widgets, AVerticalSplitterCanKeepItsLowerPane) {
  cSplitRoot<cVSplitterChild> split;
  const auto window = open(&split, 200, 305);
  split.setFixedPane(1);
  split.setPosition(200);
  EXPECT_EQ(split.inSecond.height(), 100 - 4);
  nswnd_move(static_cast<NSWND>(split.winTarget()->_rt_rawhandle()), 0, 0, 200, 505);
  nsoff::runUntilIdle();
  EXPECT_EQ(split.position(), 400);
  EXPECT_EQ(split.inSecond.height(), 100 - 4);
  split.setShare(std::nan(""));
  EXPECT_EQ(split.share(), cSplitterChild::kDefaultShare); // nonsense gives the default
}

namespace {

// A form with a drop-down list of fruit near its top, recording the choices it reports.
class cComboForm : public cCustomForm {
public:
  cComboBoxChild combo;
  std::vector<int> changes;
  void onConstruct() override {
    cCustomForm::onConstruct();
    clientArea()->attach(&combo, 10, 10, 160, 22);
    const char* names[] = {"Apple", "Banana", "Blueberry", "Cherry", "Date"};
    for (int i = 0; i < 5; ++i) combo.addItem(10 * (i + 1), names[i]);
    combo.setSelected(20);
  }
  bool onAction(cChildElement* source, cChildAction* action) override {
    if (source == &combo && action->code == cComboBoxChild::kChangedCode)
      changes.push_back(combo.selected());
    return cCustomForm::onAction(source, action);
  }
};

constexpr sNSModifiers kAlt{false, false, true, false};
constexpr int kF4 = 449, kEnterKey = 397, kEscapeKey = 283, kDownKey = 340, kUpKey = 338;

} // namespace

TEST_F(Widgets, AComboBoxChoosesByKeysInAndOutOfItsList) {
  cComboForm form;
  const auto window = open(&form, 300, 200);
  form.combo.focus();
  nsoff::runUntilIdle();
  EXPECT_STREQ(form.combo.edit()->text(), "Banana");
  // Closed, the arrows choose directly.
  nsoff::key(kDownKey);
  nsoff::key(kDownKey);
  nsoff::key(kUpKey);
  nsoff::runUntilIdle();
  EXPECT_EQ(form.changes, (std::vector<int>{30, 40, 30}));

  struct sCase {
    int openKey;
    sNSModifiers mods;
    std::vector<std::function<void()>> steps;
    int expected;
  } cases[] = {
      // The list opens on the chosen item; Down and Enter take the next one.
      {kDownKey, kAlt, {[] { nsoff::key(kDownKey); }, [] { nsoff::key(kEnterKey); }}, 40},
      // Typed letters jump to the items that start with them; Escape changes nothing.
      {kF4, {}, {[] { nsoff::type("b"); }, [] { nsoff::key(kEscapeKey); }}, 40},
      {' ', {}, {[] { nsoff::type("bl"); }, [] { nsoff::key(kEnterKey); }}, 30},
      {kF4, {}, {[] { nsoff::type("a"); }, [] { nsoff::key(kEnterKey); }}, 10},
  };
  for (const sCase& c : cases) {
    cScript script(c.steps);
    nsoff::key(c.openKey, c.mods);
    nsoff::runUntilIdle();
    EXPECT_EQ(script.done(), c.steps.size());
    EXPECT_FALSE(form.combo.listOpen());
    EXPECT_EQ(form.combo.selected(), c.expected);
  }
  EXPECT_EQ(form.changes.back(), 10);
  EXPECT_EQ(form.changes.size(), 6u); // Escape raised nothing
}

TEST_F(Widgets, AComboBoxListOpensBelowOrAboveAndTakesAClick) {
  cComboForm form;
  const auto window = open(&form, 300, 200);
  sPoint at;
  form.combo.absPos(at);
  const sPoint field = centreOf(&form.combo);
  nsoff::sWindowInfo list;
  int pickY = 0;
  {
    cScript script({[&] {
      list = nsoff::topWindow();
      // The last item (Date) is the fifth row of the list.
      const int row = (list.h - 2) / 5;
      pickY = list.y + 1 + 4 * row + row / 2;
      nsoff::click(list.x + 20, pickY);
    }});
    nsoff::click(field.x, field.y);
    nsoff::runUntilIdle();
  }
  EXPECT_TRUE(list.popup);
  EXPECT_EQ(list.x, at.x);
  EXPECT_EQ(list.y, at.y + form.combo.height());
  EXPECT_GE(list.w, form.combo.width());
  EXPECT_EQ(form.combo.selected(), 50);
  EXPECT_EQ(form.changes, std::vector<int>{50});

  // Near the bottom of the desktop the list opens upwards; a click outside closes it.
  nswnd_move(static_cast<NSWND>(form.winTarget()->_rt_rawhandle()), 100, 1024 - 120, 300, 100);
  nsoff::runUntilIdle();
  form.combo.absPos(at);
  {
    cScript script({[&] {
      list = nsoff::topWindow();
      nsoff::click(5, 5);
    }});
    const sPoint again = centreOf(&form.combo);
    nsoff::click(again.x, again.y);
    nsoff::runUntilIdle();
  }
  EXPECT_EQ(list.y + list.h, at.y);
  EXPECT_EQ(form.combo.selected(), 50);
  EXPECT_EQ(nsoff::captured(), nullptr);
  EXPECT_FALSE(form.combo.setSelected(99)); // not listed
  form.combo.removeItem(50);
  EXPECT_EQ(form.combo.selected(), -1);
  EXPECT_STREQ(form.combo.edit()->text(), "");
}

namespace {

// A form with one of each small element, recording (element, code) of their actions.
class cSmallForm : public cCustomForm {
public:
  cSelectableStaticChild label;
  cLinkChild link;
  cPictureZonesChild picture;
  cProgressChild progress;
  std::vector<std::pair<cChildElement*, int>> got;
  int zone = -1;
  void onConstruct() override {
    cCustomForm::onConstruct();
    label.setText("Label", -1, false);
    link.setText("A link", -1, false);
    clientArea()->attach(&label, 10, 10, 100, 20);
    clientArea()->attach(&link, 10, 40, 100, 20);
    clientArea()->attach(&picture, 150, 10, 100, 60);
    clientArea()->attach(&progress, 10, 100, 200, 16);
    picture.setZone(3, {80, 0, 20, 20}, "Close");
  }
  bool onAction(cChildElement* source, cChildAction* action) override {
    if (source == &label || source == &link || source == &picture) {
      if (action->code != cChildAction::acFocus && action->code != cChildAction::acFocusRequest)
        got.emplace_back(source, action->code);
      if (source == &picture && action->code == cPictureZonesChild::cZoneAction::kCode)
        zone = static_cast<cPictureZonesChild::cZoneAction*>(action)->zone;
    }
    return cCustomForm::onAction(source, action);
  }
};

} // namespace

TEST_F(Widgets, TheSmallElementsRaiseTheirActions) {
  cSmallForm form;
  const auto window = open(&form, 300, 200);
  using tGot = std::vector<std::pair<cChildElement*, int>>;
  cChildElement* label = &form.label;

  // A label: selected by a press (a press on it once selected raises nothing), activated by a
  // double click or Enter, + and - (the keypad's once, though its character follows the key), the
  // context request.
  static unsigned now = 50000;
  cChildElement::setTicks([] { return now += 100; });
  const sPoint at = centreOf(label);
  nsoff::click(at.x, at.y);
  nsoff::click(at.x, at.y);
  nsoff::runUntilIdle();
  cChildElement::setTicks(nullptr);
  nsoff::key(397);
  nsoff::type("+-");
  nsoff::key(427);
  nsoff::type("+");
  nsoff::click(at.x, at.y, 2);
  nsoff::runUntilIdle();
  EXPECT_EQ(
      form.got,
      (tGot{{label, 6}, {label, 7}, {label, 7}, {label, 8}, {label, 9}, {label, 8}, {label, 2}}));
  EXPECT_TRUE(form.label.hasFocus());

  // A link: a click and Enter; a press dragged off it is no click; the hand pointer.
  form.got.clear();
  const sPoint link = centreOf(&form.link);
  nsoff::move(link.x, link.y);
  nsoff::runUntilIdle();
  EXPECT_EQ(nsoff::topWindow().pointer, mpHand);
  nsoff::click(link.x, link.y);
  nsoff::button(link.x, link.y, 1, true);
  nsoff::move(link.x, link.y + 40);
  nsoff::button(link.x, link.y + 40, 1, false);
  nsoff::runUntilIdle();
  form.link.focus();
  nsoff::runUntilIdle();
  nsoff::key(397);
  nsoff::runUntilIdle();
  EXPECT_EQ(form.got, (tGot{{&form.link, 0}, {&form.link, 0}}));

  // A picture: a click in its zone raises the zone's id; elsewhere nothing.
  form.got.clear();
  sPoint pic;
  form.picture.absPos(pic);
  nsoff::click(pic.x + 5, pic.y + 5);
  nsoff::move(pic.x + 90, pic.y + 10);
  nsoff::runUntilIdle();
  const auto handle = static_cast<NSWND>(form.winTarget()->_rt_rawhandle());
  int pointer = -1;
  for (const nsoff::sWindowInfo& w : nsoff::windows()) {
    if (w.handle == handle) pointer = w.pointer;
  }
  EXPECT_EQ(pointer, mpHand);
  EXPECT_STREQ(form.picture.hint(), "Close"); // the zone's hint shows
  nsoff::click(pic.x + 90, pic.y + 10);
  nsoff::runUntilIdle();
  EXPECT_EQ(form.got, (tGot{{&form.picture, 6}}));
  EXPECT_EQ(form.zone, 3);
}

TEST_F(Widgets, AListViewMovesByKeysAndTypingAndItsColumnsDrag) {
  cCustomForm form;
  cListViewChild list;
  const auto window = open(&form, 400, 300);
  form.clientArea()->attach(&list, 10, 10, 300, 200);
  list.setColumns({{"Name", 120, false}, {"Size", 60, true}});
  std::vector<cListViewChild::sRow> rows;
  for (const char* name : {"apple", "banana", "berry", "cherry"}) rows.push_back({{name, "1"}});
  for (int i = 0; i < 60; ++i) rows.push_back({{"item " + std::to_string(i), "2"}});
  list.setRows(std::move(rows));
  list.focus();
  nsoff::runUntilIdle();
  const int page = (list.height() - 2 - list.headerHeight()) / list.rowHeight();

  static unsigned now = 0; // each case a pause after the last, its letters quick
  cChildElement::setTicks([] { return now += 10; });
  struct sCase {
    int key; // a key, or 0 for the text below
    const char* text;
    int selected;
  };
  const sCase cases[] = {{cChildElement::kKeyDown, nullptr, 0},
                         {cChildElement::kKeyEnd, nullptr, 63},
                         {cChildElement::kKeyHome, nullptr, 0},
                         {cChildElement::kKeyPageDown, nullptr, page},
                         {cChildElement::kKeyPageUp, nullptr, 0},
                         {0, "bb", 2}, // the same letter again: the next one
                         {0, "b", 1},  // after a pause: the next one, round the end
                         {0, "CH", 3},
                         {cChildElement::kKeyUp, nullptr, 2}};
  for (const sCase& c : cases) {
    now += cTypeAhead::kPauseMs + 1;
    c.key ? nsoff::key(c.key) : nsoff::type(c.text);
    nsoff::runUntilIdle();
    EXPECT_EQ(list.selected(), c.selected) << (c.text ? c.text : std::to_string(c.key));
  }

  // The first column's right edge dragged wider, then past its minimum.
  sPoint at;
  list.absPos(at);
  const int edge = at.x + 1 + 120, y = at.y + 10;
  std::vector<int> widths;
  for (const int to : {edge + 40, edge - 500}) {
    const int from = at.x + 1 + list.columns()[0].width;
    nsoff::button(from, y, 1, true);
    nsoff::move(to, y);
    nsoff::button(to, y, 1, false);
    nsoff::runUntilIdle();
    widths.push_back(list.columns()[0].width);
  }
  EXPECT_EQ(widths, (std::vector<int>{160, cListViewChild::kMinColumn}));
  cChildElement::setTicks(nullptr);

  // Fitted: the columns fill the room beside the vertical bar, the first taking what the
  // second does not need; a cell too wide for the room widens its column, and the rows
  // then scroll sideways.
  list.fitColumns(0);
  ASSERT_TRUE(list.vBarShown());
  const auto total = [&] { return list.columns()[0].width + list.columns()[1].width; };
  EXPECT_EQ(total(), list.viewSize().width);
  EXPECT_LT(list.columns()[1].width, list.columns()[0].width);
  EXPECT_FALSE(list.hBarShown());
  std::vector<cListViewChild::sRow> wide;
  const std::string size(80, '8');
  wide.push_back({{"apple", size}});
  for (int i = 0; i < 60; ++i) wide.push_back({{"item", "1"}});
  list.setRows(std::move(wide));
  nsoff::runUntilIdle();
  sSize text;
  ASSERT_TRUE(list.sizeOf(size.c_str(), text, nullptr));
  EXPECT_GT(list.columns()[1].width, text.width);
  EXPECT_GT(total(), list.viewSize().width);
  EXPECT_TRUE(list.hBarShown());
}

TEST_F(Widgets, AProgressBarFillsItsShareOrRunsBusy) {
  cSmallForm form;
  const auto window = open(&form, 300, 200);
  cProgressChild& bar = form.progress;
  const struct {
    long long done, total;
    int filled;
  } cases[] = {{30, 120, 50}, {-5, 100, 0}, {500, 100, 200}, {7, 0, 200}, {1, 3, 66}};
  for (const auto& c : cases) {
    bar.setProgress(c.done, c.total);
    EXPECT_EQ(bar.filledWidth(), c.filled) << c.done << "/" << c.total;
  }
  bar.setBusy(true);
  const int start = bar.stripeOffset();
  nsoff::advanceClock(cProgressChild::kStripeMs);
  nsoff::advanceClock(cProgressChild::kStripeMs);
  EXPECT_EQ(bar.stripeOffset(), (start + 2) % 16);
  bar.setBusy(false);
  nsoff::advanceClock(10 * cProgressChild::kStripeMs);
  EXPECT_EQ(bar.stripeOffset(), (start + 2) % 16);
}

TEST_F(Widgets, ALongComboListScrollsByItsBarAndStillClosesOnAClickOutside) {
  cComboForm form;
  const auto window = open(&form, 300, 200);
  for (int i = 0; i < 30; ++i) form.combo.addItem(100 + i, ("More " + std::to_string(i)).c_str());
  nsoff::sWindowInfo list;
  {
    cScript script({[&] {
                      list = nsoff::topWindow();
                      // The list's scroll bar lies along its right edge; its lower arrow is
                      // at the bottom.
                      nsoff::click(list.x + list.w - 8, list.y + list.h - 8);
                    },
                    [] { nsoff::click(5, 5); }});
    const sPoint field = centreOf(&form.combo);
    nsoff::click(field.x, field.y);
    nsoff::runUntilIdle();
    EXPECT_EQ(script.done(), 2u);
  }
  EXPECT_TRUE(list.popup);
  // Twelve rows show, and the list is wider by its scroll bar.
  EXPECT_EQ(list.h,
            cComboBoxChild::kMaxVisibleItems * cPopupMaster::itemHeight(&form, nullptr) + 2);
  EXPECT_GE(list.w, form.combo.width() + cScrollBar::kThickness);
  EXPECT_FALSE(form.combo.listOpen());  // the click outside closed it
  EXPECT_EQ(form.combo.selected(), 20); // and chose nothing
  EXPECT_EQ(nsoff::captured(), nullptr);
}
