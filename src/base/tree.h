// cTree / cTreeItem: an owning intrusive tree.
//
// Each item links to its parent, its first and last child and its siblings. The tree owns
// every item in it: add() hands an item over, remove() detaches an item together with its
// subtree and hands it back, and destroying the tree deletes all items.
#pragma once

#include <memory>

class cTree;

class cTreeItem {
public:
  cTreeItem() = default;
  cTreeItem(const cTreeItem&) = delete;
  cTreeItem& operator=(const cTreeItem&) = delete;
  virtual ~cTreeItem(); // deletes the children

  // The parent item; null for a top-level or detached item.
  cTreeItem* parent() const { return myParent && myParent->myParent ? myParent : nullptr; }
  cTreeItem* firstChild() const { return myFirstChild; }
  cTreeItem* lastChild() const { return myLastChild; }
  cTreeItem* next() const { return myNext; }
  cTreeItem* prev() const { return myPrev; }
  long long childCount() const { return myChildCount; }
  int depth() const; // 0 for a top-level item
  // Depth-first, pre-order successor within `root`'s subtree (the whole tree for null).
  cTreeItem* nextInOrder(const cTreeItem* root = nullptr) const;
  // Its pre-order predecessor in the whole tree; null for the first item.
  cTreeItem* prevInOrder() const;
  // True when `ancestor` is this item or lies on its parent chain.
  bool isWithin(const cTreeItem* ancestor) const;

private:
  friend class cTree;
  cTreeItem* myParent = nullptr;
  cTreeItem* myFirstChild = nullptr;
  cTreeItem* myLastChild = nullptr;
  cTreeItem* myNext = nullptr;
  cTreeItem* myPrev = nullptr;
  long long myChildCount = 0;
};

class cTree {
public:
  cTree() = default;
  cTree(const cTree&) = delete;
  cTree& operator=(const cTree&) = delete;
  virtual ~cTree() { destroy(); }

  // Appends item as the last child of parent (a top-level item for null parent).
  cTreeItem* add(cTreeItem* parent, std::unique_ptr<cTreeItem> item);
  // Inserts item under parent (top level for null) directly after `after`, a child of
  // parent, or as the first child for null.
  cTreeItem* insert(cTreeItem* parent, cTreeItem* after, std::unique_ptr<cTreeItem> item);
  // Detaches item with its subtree.
  std::unique_ptr<cTreeItem> remove(cTreeItem* item);
  // Moves item (with its subtree) under newParent, directly after `after` (a child of
  // newParent, or null for the first place); refused (false) when newParent lies inside
  // item's own subtree.
  bool move(cTreeItem* item, cTreeItem* newParent, cTreeItem* after);
  void destroy();

  cTreeItem* first() const { return myRoot.myFirstChild; }
  cTreeItem* last() const { return myRoot.myLastChild; } // the last top-level item
  cTreeItem* lastInOrder() const; // the last item depth first; null when empty
  long long topCount() const { return myRoot.myChildCount; }
  long long count() const; // all items

private:
  cTreeItem* parentSlot(cTreeItem* parent) { return parent ? parent : &myRoot; }
  void link(cTreeItem* parent, cTreeItem* after, cTreeItem* item);
  void unlink(cTreeItem* item);

  cTreeItem myRoot; // sentinel whose children are the top-level items
};
