#include "list.h"

#include "stack.h"

cListItem* cList::add(std::unique_ptr<cListItem> owned) {
  cListItem* item = owned.release();
  item->myNext = nullptr;
  (myLast ? myLast->myNext : myFirst) = item;
  myLast = item;
  ++myCount;
  return item;
}

cListItem* cList::addFirst(std::unique_ptr<cListItem> owned) {
  cListItem* item = owned.release();
  item->myNext = myFirst;
  myFirst = item;
  if (!myLast) myLast = item;
  ++myCount;
  return item;
}

std::unique_ptr<cListItem> cList::remove(cListItem* item) {
  cListItem* prev = nullptr;
  for (cListItem* p = myFirst; p; prev = p, p = p->myNext) {
    if (p != item) continue;
    (prev ? prev->myNext : myFirst) = p->myNext;
    if (myLast == p) myLast = prev;
    p->myNext = nullptr;
    --myCount;
    return std::unique_ptr<cListItem>(p);
  }
  return nullptr;
}

std::unique_ptr<cListItem> cList::removeFirst() {
  return myFirst ? remove(myFirst) : nullptr;
}

void cList::destroy() {
  while (myFirst) {
    cListItem* next = myFirst->myNext;
    delete myFirst;
    myFirst = next;
  }
  myLast = nullptr;
  myCount = 0;
}

cBiListItem* cBiList::add(std::unique_ptr<cBiListItem> item) {
  return insertAfter(myLast, std::move(item));
}

cBiListItem* cBiList::addFirst(std::unique_ptr<cBiListItem> item) {
  return insertAfter(nullptr, std::move(item));
}

cBiListItem* cBiList::insertAfter(cBiListItem* where, std::unique_ptr<cBiListItem> owned) {
  cBiListItem* item = owned.release();
  item->myOwner = this;
  item->myPrev = where;
  item->myNext = where ? where->myNext : myFirst;
  (item->myNext ? item->myNext->myPrev : myLast) = item;
  (where ? where->myNext : myFirst) = item;
  ++myCount;
  return item;
}

std::unique_ptr<cBiListItem> cBiList::remove(cBiListItem* item) {
  if (!item || item->myOwner != this) return nullptr;
  (item->myPrev ? item->myPrev->myNext : myFirst) = item->myNext;
  (item->myNext ? item->myNext->myPrev : myLast) = item->myPrev;
  item->myNext = item->myPrev = nullptr;
  item->myOwner = nullptr;
  --myCount;
  return std::unique_ptr<cBiListItem>(item);
}

void cBiList::destroy() {
  while (myFirst) {
    cBiListItem* next = myFirst->myNext;
    delete myFirst;
    myFirst = next;
  }
  myLast = nullptr;
  myCount = 0;
}

cListItem* cStackList::push(std::unique_ptr<cListItem> owned) {
  cListItem* item = owned.release();
  item->myNext = myTop;
  myTop = item;
  ++myCount;
  return item;
}

std::unique_ptr<cListItem> cStackList::pop() {
  if (!myTop) return nullptr;
  cListItem* item = myTop;
  myTop = item->myNext;
  item->myNext = nullptr;
  --myCount;
  return std::unique_ptr<cListItem>(item);
}

void cStackList::destroy() {
  while (auto item = pop()) {
  }
}
