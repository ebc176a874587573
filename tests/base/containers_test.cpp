#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "base/btree.h"
#include "base/list.h"
#include "base/stack.h"
#include "base/str.h"
#include "base/tree.h"

namespace {

// Counts live items so that tests see what the containers delete.
int gLive = 0;

struct sNamed : cListItem {
  explicit sNamed(int v) : value(v) { ++gLive; }
  ~sNamed() override { --gLive; }
  int value;
};

struct sBiNamed : cBiListItem {
  explicit sBiNamed(int v) : value(v) { ++gLive; }
  ~sBiNamed() override { --gLive; }
  int value;
};

struct sNode : cTreeItem {
  explicit sNode(std::string n) : name(std::move(n)) { ++gLive; }
  ~sNode() override { --gLive; }
  std::string name;
};

std::vector<int> values(const cList& l) {
  std::vector<int> v;
  for (cListItem* p = l.first(); p; p = p->next()) v.push_back(static_cast<sNamed*>(p)->value);
  return v;
}

std::vector<int> forward(const cBiList& l) {
  std::vector<int> v;
  for (cBiListItem* p = l.first(); p; p = p->next()) v.push_back(static_cast<sBiNamed*>(p)->value);
  return v;
}

std::vector<int> backward(const cBiList& l) {
  std::vector<int> v;
  for (cBiListItem* p = l.last(); p; p = p->prev()) v.push_back(static_cast<sBiNamed*>(p)->value);
  return v;
}

// The names in depth-first order, with their depth as leading dots.
std::string outline(const cTree& t) {
  std::string s;
  for (cTreeItem* p = t.first(); p; p = p->nextInOrder()) {
    s += std::string(static_cast<size_t>(p->depth()), '.') + static_cast<sNode*>(p)->name + " ";
  }
  return s;
}

TEST(FasterTreeList, KeepsKeysInOrderAndReturnsSlots) {
  cFasterTreeList<cStringKey, int> map;
  *map.insert(cStringKey("pear")) = 1;
  *map.insert(cStringKey("apple")) = 2;
  *map.insert(cStringKey("zebra")) = 3;
  *map.insert(cStringKey("apple")) += 10; // the same slot again
  EXPECT_EQ(map.count(), 3);
  ASSERT_NE(map.find(cStringKey("apple")), nullptr);
  EXPECT_EQ(*map.find(cStringKey("apple")), 12);
  EXPECT_EQ(map.find(cStringKey("plum")), nullptr);
  std::vector<std::string> order;
  for (auto& [key, value] : map) order.push_back(key.utf8().c_str());
  EXPECT_EQ(order, (std::vector<std::string>{"apple", "pear", "zebra"}));
  map.destroy();
  EXPECT_EQ(map.count(), 0);
}

TEST(List, AddsRemovesAndOwns) {
  {
    cList l;
    l.add(std::make_unique<sNamed>(2));
    l.add(std::make_unique<sNamed>(3));
    cListItem* first = l.addFirst(std::make_unique<sNamed>(1));
    EXPECT_EQ(values(l), (std::vector<int>{1, 2, 3}));
    auto last = l.remove(l.last());
    ASSERT_TRUE(last);
    EXPECT_EQ(static_cast<sNamed*>(last.get())->value, 3);
    EXPECT_EQ(l.count(), 2);
    l.add(std::move(last)); // the tail is right again after removing the old last item
    EXPECT_EQ(values(l), (std::vector<int>{1, 2, 3}));
    sNamed stranger(9);
    EXPECT_FALSE(l.remove(&stranger));
    EXPECT_EQ(l.removeFirst().get() == first, true);
    EXPECT_EQ(values(l), (std::vector<int>{2, 3}));
    EXPECT_EQ(gLive, 3); // two in the list, the stranger
  }
  EXPECT_EQ(gLive, 0);
}

TEST(BiList, LinksBothWays) {
  {
    cBiList l;
    cBiListItem* one = l.add(std::make_unique<sBiNamed>(1));
    cBiListItem* three = l.add(std::make_unique<sBiNamed>(3));
    l.insertAfter(one, std::make_unique<sBiNamed>(2));
    l.addFirst(std::make_unique<sBiNamed>(0));
    EXPECT_EQ(forward(l), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(backward(l), (std::vector<int>{3, 2, 1, 0}));
    auto removed = l.remove(three);
    EXPECT_EQ(backward(l), (std::vector<int>{2, 1, 0}));
    cBiList other;
    EXPECT_FALSE(other.remove(one)); // not in that list
    EXPECT_EQ(l.count(), 3);
  }
  EXPECT_EQ(gLive, 0);
}

TEST(StackList, LastInFirstOut) {
  cStackList s;
  EXPECT_FALSE(s.pop());
  s.push(std::make_unique<sNamed>(1));
  s.push(std::make_unique<sNamed>(2));
  EXPECT_EQ(static_cast<sNamed*>(s.top())->value, 2);
  EXPECT_EQ(static_cast<sNamed*>(s.pop().get())->value, 2);
  EXPECT_EQ(s.count(), 1);
  s.destroy();
  EXPECT_TRUE(s.empty());
  EXPECT_EQ(gLive, 0);
}

TEST(Tree, BuildsWalksMovesAndOwns) {
  {
    cTree t;
    cTreeItem* a = t.add(nullptr, std::make_unique<sNode>("a"));
    cTreeItem* b = t.add(nullptr, std::make_unique<sNode>("b"));
    cTreeItem* a1 = t.add(a, std::make_unique<sNode>("a1"));
    t.add(a1, std::make_unique<sNode>("a1x"));
    t.insert(a, a1, std::make_unique<sNode>("a2"));
    t.insert(nullptr, nullptr, std::make_unique<sNode>("z"));
    EXPECT_EQ(outline(t), "z a .a1 ..a1x .a2 b ");
    t.remove(t.first()).reset();
    EXPECT_EQ(t.count(), 5);
    EXPECT_EQ(t.topCount(), 2);
    EXPECT_EQ(a->childCount(), 2);
    EXPECT_EQ(a1->parent(), a);
    EXPECT_EQ(a->parent(), nullptr);

    EXPECT_FALSE(t.move(a, a1, nullptr)); // into its own subtree
    EXPECT_TRUE(t.move(a1, b, nullptr));
    EXPECT_EQ(outline(t), "a .a2 b .a1 ..a1x ");
    EXPECT_TRUE(t.move(b, nullptr, nullptr)); // first at the top level
    EXPECT_TRUE(t.move(b, nullptr, b));       // after itself: it stays
    EXPECT_EQ(outline(t), "b .a1 ..a1x a .a2 ");
    EXPECT_TRUE(t.move(b, nullptr, t.last()));
    EXPECT_EQ(t.last(), b);
    // Backwards, depth first, the same items in the opposite order.
    std::vector<cTreeItem*> forward, backward;
    for (cTreeItem* i = t.first(); i; i = i->nextInOrder()) forward.push_back(i);
    for (cTreeItem* i = t.lastInOrder(); i; i = i->prevInOrder())
      backward.insert(backward.begin(), i);
    EXPECT_EQ(backward, forward);
    EXPECT_EQ(cTree().lastInOrder(), nullptr);

    auto detached = t.remove(b);
    ASSERT_TRUE(detached);
    EXPECT_EQ(outline(t), "a .a2 ");
    EXPECT_EQ(gLive, 5); // the detached subtree is alive until `detached` goes
    detached.reset();
    EXPECT_EQ(gLive, 2);
  }
  EXPECT_EQ(gLive, 0);
}

TEST(Tree, SubtreeWalkStopsAtItsRoot) {
  cTree t;
  cTreeItem* a = t.add(nullptr, std::make_unique<sNode>("a"));
  cTreeItem* a1 = t.add(a, std::make_unique<sNode>("a1"));
  t.add(nullptr, std::make_unique<sNode>("b"));
  EXPECT_EQ(a1->nextInOrder(a), nullptr);
  EXPECT_NE(a1->nextInOrder(), nullptr);
}

} // namespace

namespace {

TEST(Tree, DeepTreesAreDestroyedWithoutRecursion) {
  {
    cTree t;
    cTreeItem* parent = nullptr;
    for (int i = 0; i < 200000; ++i) parent = t.add(parent, std::make_unique<sNode>("n"));
    EXPECT_EQ(parent->depth(), 199999);
  }
  EXPECT_EQ(gLive, 0);
}

} // namespace
