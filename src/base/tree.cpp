#include "tree.h"

// Deletes the subtree without recursion, so that no depth can overflow the stack: descend
// to a leaf, delete it, and go on with its next sibling or climb back to its parent.
cTreeItem::~cTreeItem() {
  cTreeItem* p = myFirstChild;
  while (p) {
    if (p->myFirstChild) {
      p = p->myFirstChild;
      continue;
    }
    cTreeItem* parent = p->myParent;
    cTreeItem* next = p->myNext;
    parent->myFirstChild = next;
    delete p;
    p = next ? next : (parent == this ? nullptr : parent);
  }
}

int cTreeItem::depth() const {
  int d = 0;
  for (const cTreeItem* p = myParent; p && p->myParent; p = p->myParent) ++d;
  return d;
}

cTreeItem* cTreeItem::nextInOrder(const cTreeItem* root) const {
  if (myFirstChild) return myFirstChild;
  for (const cTreeItem* p = this; p && p != root; p = p->myParent) {
    if (p->myNext) return p->myNext;
  }
  return nullptr;
}

namespace {

// The deepest last descendant of item, or item itself.
cTreeItem* deepestLast(cTreeItem* item) {
  while (item && item->lastChild()) item = item->lastChild();
  return item;
}

} // namespace

cTreeItem* cTreeItem::prevInOrder() const {
  if (myPrev) return deepestLast(myPrev);
  return parent();
}

bool cTreeItem::isWithin(const cTreeItem* ancestor) const {
  for (const cTreeItem* p = this; p; p = p->myParent) {
    if (p == ancestor) return true;
  }
  return false;
}

void cTree::link(cTreeItem* parent, cTreeItem* after, cTreeItem* item) {
  item->myParent = parent;
  item->myPrev = after;
  item->myNext = after ? after->myNext : parent->myFirstChild;
  (item->myNext ? item->myNext->myPrev : parent->myLastChild) = item;
  (after ? after->myNext : parent->myFirstChild) = item;
  ++parent->myChildCount;
}

void cTree::unlink(cTreeItem* item) {
  cTreeItem* parent = item->myParent;
  (item->myPrev ? item->myPrev->myNext : parent->myFirstChild) = item->myNext;
  (item->myNext ? item->myNext->myPrev : parent->myLastChild) = item->myPrev;
  --parent->myChildCount;
  item->myParent = item->myNext = item->myPrev = nullptr;
}

cTreeItem* cTree::add(cTreeItem* parent, std::unique_ptr<cTreeItem> owned) {
  cTreeItem* slot = parentSlot(parent);
  cTreeItem* item = owned.release();
  link(slot, slot->myLastChild, item);
  return item;
}

cTreeItem* cTree::insert(cTreeItem* parent, cTreeItem* after, std::unique_ptr<cTreeItem> owned) {
  cTreeItem* item = owned.release();
  link(parentSlot(parent), after, item);
  return item;
}

std::unique_ptr<cTreeItem> cTree::remove(cTreeItem* item) {
  if (!item || !item->myParent || !item->isWithin(&myRoot)) return nullptr;
  unlink(item);
  return std::unique_ptr<cTreeItem>(item);
}

bool cTree::move(cTreeItem* item, cTreeItem* newParent, cTreeItem* after) {
  if (!item || !item->myParent || (newParent && newParent->isWithin(item))) return false;
  if (after == item) return true; // it stays where it is
  unlink(item);
  link(parentSlot(newParent), after, item);
  return true;
}

void cTree::destroy() {
  while (cTreeItem* item = myRoot.myFirstChild) {
    unlink(item);
    delete item;
  }
}

cTreeItem* cTree::lastInOrder() const {
  return deepestLast(myRoot.myLastChild);
}

long long cTree::count() const {
  long long n = 0;
  for (const cTreeItem* p = first(); p; p = p->nextInOrder()) ++n;
  return n;
}
