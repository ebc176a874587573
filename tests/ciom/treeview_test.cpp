// The tree view in an offscreen window: layout, keyboard and mouse, actions, batching,
// lazy children and the selection seen without the focus.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../common/offscreen_fixture.h"
#include "ciom/edit.h"
#include "ciom/panel.h"
#include "ciom/theme.h"
#include "ciom/treeview.h"

namespace {

using cItem = cTreeViewChild::cTreeViewItem;

// A tree that counts its lazy loads: items whose data is kLazy have children only once
// they are first opened.
class cLazyTree : public cTreeViewChild {
public:
  static inline int lazyTag = 0;
  std::vector<std::string> loads;

protected:
  bool isSub(cItem* item) override { return item->data == &lazyTag || cTreeViewChild::isSub(item); }
  void processSubRead(cItem* item) override {
    if (item->data != &lazyTag || item->firstChild()) return;
    loads.push_back(item->text);
    storeUnder(item, new cItem("loaded", nullptr));
  }
};

// A window holding the tree and an edit box to take the focus away.
class cTreeRoot : public cPanelChild {
public:
  cLazyTree tree;
  cEditChild other;
  struct sSeen {
    int code;
    std::string item;
    int x = 0, y = 0;
    std::string target; // of a drop
    int place = 0;
  };
  std::vector<sSeen> seen;

  void onConstruct() override {
    attach(&tree, 10, 10, 300, 200);
    attach(&other, 10, 220, 100, 24);
  }
  bool onAction(cChildElement* source, cChildAction* action) override {
    if (source == &tree && action->code >= 6 && action->code <= 10) {
      auto* a = static_cast<cTreeViewChild::cTreeItemAction*>(action);
      sSeen s{action->code, a->item ? a->item->text : "", 0, 0, "", 0};
      if (action->code == cTreeViewChild::kDropped) {
        auto* drop = static_cast<cTreeViewChild::cTreeDropAction*>(action);
        s.target = drop->target->text;
        s.place = drop->place;
      }
      if (action->code == cTreeViewChild::kContext) {
        s.x = static_cast<cTreeViewChild::cTreeItemCtxAction*>(action)->x;
        s.y = static_cast<cTreeViewChild::cTreeItemCtxAction*>(action)->y;
      }
      seen.push_back(s);
      return true;
    }
    return cPanelChild::onAction(source, action);
  }
  std::vector<int> codes() const {
    std::vector<int> out;
    for (const sSeen& s : seen) out.push_back(s.code);
    return out;
  }
};

class TreeView : public cOffscreenTest {
protected:
  void SetUp() override {
    cOffscreenTest::SetUp();
    window = open(&root, 400, 300);
    // a (a1 (a1x, a1y), a2), b (b1), c
    cTreeViewChild& t = root.tree;
    t.startChanges();
    a = add(nullptr, "a");
    a1 = add(a, "a1");
    a1x = add(a1, "a1x");
    a1y = add(a1, "a1y");
    a2 = add(a, "a2");
    b = add(nullptr, "b");
    b1 = add(b, "b1");
    c = add(nullptr, "c");
    t.endChanges();
    nsoff::runUntilIdle();
  }
  void TearDown() override {
    window.reset();
    cOffscreenTest::TearDown();
  }
  cItem* add(cItem* parent, const char* text) {
    auto* item = new cItem(text, nullptr);
    EXPECT_TRUE(root.tree.storeUnder(parent, item));
    return item;
  }
  std::string selectedText() const {
    return root.tree.selected() ? root.tree.selected()->text : "";
  }

  cTreeRoot root;
  std::unique_ptr<cWindowHolder> window;
  cItem *a = nullptr, *a1 = nullptr, *a1x = nullptr, *a1y = nullptr, *a2 = nullptr;
  cItem *b = nullptr, *b1 = nullptr, *c = nullptr;
};

TEST_F(TreeView, DraggedItemsDropBeforeAfterOrIntoOthersButNotIntoThemselves) {
  cTreeViewChild& t = root.tree;
  t.setDragAndDrop(true);
  using M = cTreeItemElement;
  // From the centre of an item's label to a point of another's: its top (0), its middle
  // (2) or its bottom row (4), in fifths of its height.
  const struct {
    cItem** from;
    cItem** to;
    int fifth;
    bool escape;
    M::eDropMark mark; // shown on the target while dragging
    bool drops;
  } kDrags[] = {
      {&a2, &c, 2, false, M::dmInto, true},
      {&b1, &a1, 0, false, M::dmBefore, true},
      {&b1, &c, 4, false, M::dmAfter, true},
      {&a1, &a1x, 2, false, M::dmNone, false}, // into its own subtree
      {&b, &a1, 2, true, M::dmInto, false},    // Escape cancels
      {&a, &c, 2, false, M::dmNone, false},    // the root stays
      {&c, &a, 0, false, M::dmNone, false},    // nothing beside the root
      {&c, &a, 2, false, M::dmInto, true},
  };
  for (const auto& d : kDrags) {
    root.seen.clear();
    const sPoint from = centreOf((*d.from)->element.get());
    const sRect to = rectOf((*d.to)->element.get());
    sPoint toAt;
    (*d.to)->element->absPos(toAt);
    const int y = toAt.y + to.height * d.fifth / 5 + (d.fifth == 4 ? to.height / 5 - 1 : 0);
    nsoff::button(from.x, from.y, 1, true);
    nsoff::move(from.x, from.y + 2); // not yet a drag
    nsoff::runUntilIdle();
    EXPECT_FALSE(t.dragging());
    nsoff::move(toAt.x + 5, y);
    nsoff::runUntilIdle();
    EXPECT_EQ(t.dragging(), *d.from != a) << (*d.from)->text;
    EXPECT_EQ((*d.to)->element->dropMark(), d.mark) << (*d.from)->text;
    if (d.escape) pressKey(cChildElement::kKeyEscape);
    nsoff::button(toAt.x + 5, y, 1, false);
    nsoff::runUntilIdle();
    EXPECT_FALSE(t.dragging());
    EXPECT_EQ((*d.to)->element->dropMark(), M::dmNone); // the mark goes with the drag
    auto said = [](const std::string& item, int place, const std::string& target) {
      const char* kPlaces[] = {"", " before ", " after ", " into "};
      return item + kPlaces[place] + target;
    };
    std::vector<std::string> drops, expected;
    for (const auto& seen : root.seen)
      if (seen.code == cTreeViewChild::kDropped)
        drops.push_back(said(seen.item, seen.place, seen.target));
    if (d.drops) expected.push_back(said((*d.from)->text, d.mark, (*d.to)->text));
    EXPECT_EQ(drops, expected);
  }
  // A click without a move selects, and drags nothing.
  root.seen.clear();
  clickOn(a1y->element.get());
  EXPECT_EQ(root.codes(), std::vector<int>{cTreeViewChild::kSelected});
}

TEST_F(TreeView, LaysOutRowsByDepthWithTheirExpanderKinds) {
  using eKind = cTreeViewControlElement::eCtlKind;
  struct sRow {
    cItem* item;
    int x;
    eKind kind;
  };
  const sRow rows[] = {{a, 17, eKind::ckExpanded},  {a1, 33, eKind::ckExpanded},
                       {a1x, 49, eKind::ckLeaf},    {a1y, 49, eKind::ckLastLeaf},
                       {a2, 33, eKind::ckLastLeaf}, {b, 17, eKind::ckExpanded},
                       {b1, 33, eKind::ckLastLeaf}, {c, 17, eKind::ckLastLeaf}};
  int y = 1;
  for (const sRow& row : rows) {
    SCOPED_TRACE(row.item->text);
    const sRect label = rectOf(row.item->element.get());
    const sRect sign = rectOf(row.item->control.get());
    EXPECT_EQ(label.x, row.x);
    EXPECT_EQ(label.y, y);
    EXPECT_GT(label.height, 0);
    EXPECT_EQ(sign.x, row.x - 16);
    EXPECT_EQ(sign.width, 16);
    EXPECT_EQ(sign.height, label.height);
    EXPECT_EQ(row.item->control->kind(), row.kind);
    EXPECT_EQ(row.item->control->pointer(), row.item->control->active() ? mpHand : mpArrow);
    y += label.height;
  }

  // Collapsing a hides its whole subtree and moves b up to a1's row.
  const int a1Row = rectOf(a1->element.get()).y;
  ASSERT_TRUE(root.tree.collapse(a, false));
  EXPECT_EQ(a->control->kind(), eKind::ckCollapsed);
  for (cItem* hidden : {a1, a1x, a1y, a2}) EXPECT_FALSE(hidden->element->visible_child());
  EXPECT_EQ(rectOf(b->element.get()).y, a1Row);
  EXPECT_FALSE(root.tree.collapse(a, false)); // already collapsed
  EXPECT_FALSE(root.tree.expand(c, false));   // a leaf

  // Outline, indicator width and spacing move the rows as the layout says.
  root.tree.startChanges();
  root.tree.setOutline(20);
  root.tree.setStructIndicatorWidth(10);
  root.tree.setSpacing(3);
  root.tree.endChanges();
  EXPECT_EQ(rectOf(b1->element.get()).x, 1 - 20 + 10 + 20 * 2);
  EXPECT_EQ(rectOf(b->element.get()).y, rectOf(a->element.get()).y + a->element->height() + 3);
}

TEST_F(TreeView, BatchedChangesRebuildOnce) {
  const long long before = root.tree.builds();
  root.tree.startChanges();
  for (int k = 0; k < 50; ++k) add(c, "x");
  root.tree.setSpacing(2);
  root.tree.remove(b);
  EXPECT_EQ(root.tree.builds(), before);
  root.tree.endChanges();
  EXPECT_EQ(root.tree.builds(), before + 1);
  root.tree.endChanges(); // nothing left to do
  EXPECT_EQ(root.tree.builds(), before + 1);
  add(c, "y"); // outside a batch: at once
  EXPECT_EQ(root.tree.builds(), before + 2);
}

TEST_F(TreeView, KeysWalkTheTree) {
  struct sStep {
    int key;
    bool ctrl;
    const char* expect;
  };
  using K = cChildElement::eKeys;
  const sStep steps[] = {
      {K::kKeyDown, false, "a1"}, {K::kKeyDown, false, "a1x"}, {K::kKeyDown, false, "a1y"},
      {K::kKeyDown, false, "a2"}, {K::kKeyDown, false, "b"}, // out of two levels
      {K::kKeyUp, false, "a2"},   {K::kKeyUp, false, "a1y"},   {K::kKeyUp, false, "a1x"},
      {K::kKeyUp, false, "a1"}, // from a first child: its parent
      {K::kKeyLeft, false, "a"},  {K::kKeyRight, false, "a1"}, {K::kKeyDown, true, "a2"},
      {K::kKeyUp, true, "a1"},    {K::kKeyEnd, false, "c"},    {K::kKeyUp, false, "b1"},
      {K::kKeyHome, false, "a"},  {K::kKeyDown, true, "b"},    {K::kKeyUp, false, "a2"},
  };
  // Given the focus, the tree hands it to its first row.
  root.tree.focus();
  nsoff::runUntilIdle();
  ASSERT_EQ(selectedText(), "a");
  for (const sStep& s : steps) {
    pressKey(s.key, {false, s.ctrl, false});
    EXPECT_EQ(selectedText(), s.expect) << "after key " << s.key << (s.ctrl ? " with ctrl" : "");
  }
  // Collapsed, a is one row: Up from b lands on it.
  root.tree.collapse(a, false);
  root.tree.select(b, true);
  nsoff::runUntilIdle();
  pressKey(K::kKeyUp);
  EXPECT_EQ(selectedText(), "a");
}

TEST_F(TreeView, SelectionAndActivationRaiseTheirActions) {
  nsoff::click(centreOf(a1->element.get()).x, centreOf(a1->element.get()).y);
  nsoff::runUntilIdle();
  EXPECT_EQ(root.tree.selected(), a1);
  root.tree.select(a1, true); // again: nothing new
  nsoff::runUntilIdle();
  pressKey(cChildElement::kKeyEnter);
  EXPECT_EQ(root.codes(),
            (std::vector<int>{cTreeViewChild::kSelected, cTreeViewChild::kActivated}));

  // A right click: the point is the label's place in the tree plus the click's.
  root.seen.clear();
  sPoint at;
  b->element->absPos(at);
  nsoff::click(at.x + 5, at.y + 3, 2);
  nsoff::runUntilIdle();
  ASSERT_EQ(root.seen.size(), 1u);
  const sRect label = rectOf(b->element.get());
  EXPECT_EQ(root.seen[0].code, cTreeViewChild::kContext);
  EXPECT_EQ(root.seen[0].item, "b");
  EXPECT_EQ(root.seen[0].x, label.x + 5);
  EXPECT_EQ(root.seen[0].y, label.y + 3);

  // The expander folds its item, selects it and says so; "+" on the label opens it.
  root.seen.clear();
  const sPoint sign = centreOf(a->control.get());
  nsoff::click(sign.x, sign.y);
  nsoff::runUntilIdle();
  EXPECT_TRUE(a->collapsed);
  EXPECT_EQ(root.tree.selected(), a);
  nsoff::type("+");
  nsoff::runUntilIdle();
  EXPECT_FALSE(a->collapsed);
  pressKey(cChildElement::kKeyKeypadMinus);
  EXPECT_TRUE(a->collapsed);
  // The fold is told at once, the selection once the label has the focus.
  EXPECT_EQ(root.codes(), (std::vector<int>{cTreeViewChild::kToggled, cTreeViewChild::kSelected,
                                            cTreeViewChild::kToggled, cTreeViewChild::kToggled}));
}

TEST_F(TreeView, LazyChildrenLoadBeforeTheFirstOpening) {
  cItem* lazy = add(nullptr, "lazy");
  lazy->data = &cLazyTree::lazyTag;
  lazy->collapsed = true;
  root.tree.update();
  EXPECT_EQ(lazy->control->kind(), cTreeViewControlElement::ckCollapsed);
  EXPECT_TRUE(root.tree.expand(lazy, true));
  ASSERT_NE(lazy->firstItem(), nullptr);
  EXPECT_TRUE(lazy->firstItem()->element->visible_child());
  root.tree.collapse(lazy, false);
  root.tree.expand(lazy, false);
  EXPECT_EQ(root.tree.loads, std::vector<std::string>{"lazy"});
  nsoff::runUntilIdle();
  EXPECT_EQ(root.codes(), std::vector<int>{cTreeViewChild::kToggled});
}

TEST_F(TreeView, FindsRemovesAndForgetsTheSelection) {
  int tag = 0;
  a1y->data = &tag;
  c->data = &tag;
  EXPECT_EQ(root.tree.find(&tag), a1y); // depth first
  EXPECT_EQ(root.tree.find(a2, &tag), c);
  EXPECT_EQ(root.tree.isChild(b->element.get()), b);
  EXPECT_EQ(root.tree.isCtl(b->control.get()), b);
  EXPECT_EQ(root.tree.isChild(b->control.get()), nullptr);

  root.tree.select(a1, true);
  nsoff::runUntilIdle();
  root.tree.remove(a1);
  EXPECT_EQ(root.tree.selected(), nullptr);
  EXPECT_EQ(root.tree.find(&tag), c);
  EXPECT_EQ(root.tree.count(), 5);
  root.tree.remove_under(b);
  EXPECT_EQ(b->firstChild(), nullptr);
  EXPECT_EQ(b->control->kind(), cTreeViewControlElement::ckLeaf);
  root.tree.remove_under(nullptr);
  EXPECT_EQ(root.tree.root(), nullptr);
  EXPECT_EQ(root.tree.childCount(), 0u); // every element went with its item
  EXPECT_FALSE(root.tree.storeUnder(nullptr, static_cast<cItem*>(nullptr)));
}

TEST_F(TreeView, TheSelectionStaysVisibleWithoutTheFocus) {
  const cCITheme& theme = cCITheme::theme();
  root.tree.select(b, true);
  nsoff::runUntilIdle();
  ASSERT_TRUE(b->element->hasFocus());
  root.other.focus();
  nsoff::runUntilIdle();
  EXPECT_EQ(b->element->colours(false).background, theme.getColor(18));
  EXPECT_EQ(b->element->colours(false).text, theme.getColor(4));

  // Chosen without the focus, another item takes the look; b gets its own back.
  root.tree.setUnfocusedColors(cTreeViewChild::kDefaultColour, 0x123456, 0x654321);
  root.tree.select(c, false);
  EXPECT_EQ(root.tree.selected(), c);
  EXPECT_EQ(b->element->colours(false).background, root.tree.bgColor());
  EXPECT_EQ(c->element->colours(false).background, 0x123456u);
  EXPECT_EQ(c->element->colours(false).text, theme.getColor(13)); // kept

  // Focus back on a row: the unfocused look goes.
  root.tree.select(c, true);
  nsoff::runUntilIdle();
  EXPECT_EQ(c->element->colours(false).background, root.tree.bgColor());
  EXPECT_TRUE(root.codes().empty() || root.codes().back() == cTreeViewChild::kSelected);
}

// Chosen without the focus while the tree has it, an item takes the focus too; a click on
// the label that held it before makes that item the selected one again, and says so.
TEST_F(TreeView, TheFocusFollowsTheSelection) {
  root.tree.select(a, true);
  nsoff::runUntilIdle();
  root.tree.select(b, false);
  nsoff::runUntilIdle();
  EXPECT_TRUE(b->element->hasFocus());
  EXPECT_FALSE(a->element->hasFocus());
  root.seen.clear();
  pressKey(cChildElement::kKeyDown);
  EXPECT_EQ(selectedText(), "b1");
  root.tree.select(b, false);
  nsoff::runUntilIdle();
  nsoff::click(centreOf(a->element.get()).x, centreOf(a->element.get()).y);
  nsoff::runUntilIdle();
  EXPECT_EQ(selectedText(), "a");
  EXPECT_EQ(root.codes(), (std::vector<int>{cTreeViewChild::kSelected, cTreeViewChild::kSelected}));
}

TEST_F(TreeView, TypingJumpsToARowAndStarOpensABranch) {
  root.tree.collapse(a, false);
  root.tree.select(a, true);
  nsoff::runUntilIdle();
  nsoff::type("b");
  nsoff::runUntilIdle();
  EXPECT_EQ(selectedText(), "b");
  nsoff::type("*");
  nsoff::runUntilIdle();
  root.tree.select(a, true);
  nsoff::runUntilIdle();
  nsoff::type("*");
  nsoff::runUntilIdle();
  EXPECT_FALSE(a->collapsed);
  EXPECT_TRUE(a1y->element->visible_child());
}

} // namespace
