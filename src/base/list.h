// Intrusive lists.
//
//   cList    singly linked list of cListItem: append, prepend, unlink.
//   cBiList  doubly linked list of cBiListItem: constant-time unlink and insertion.
//
// A list owns its items: adding hands an item over, remove() hands it back, and the
// list's destructor deletes what is left. An item is in at most one list at a time.
#pragma once

#include <memory>
#include <utility>

class cBiList;

class cListItem {
public:
  virtual ~cListItem() = default;
  cListItem* next() const { return myNext; }

private:
  friend class cList;
  friend class cStackList;
  cListItem* myNext = nullptr;
};

class cList {
public:
  cList() = default;
  cList(const cList&) = delete;
  cList& operator=(const cList&) = delete;
  ~cList() { destroy(); }

  cListItem* add(std::unique_ptr<cListItem> item);      // at the end
  cListItem* addFirst(std::unique_ptr<cListItem> item); // at the start
  std::unique_ptr<cListItem> remove(cListItem* item);   // null if not in this list
  std::unique_ptr<cListItem> removeFirst();
  void destroy(); // deletes every item
  void swap(cList& other) noexcept {
    std::swap(myFirst, other.myFirst);
    std::swap(myLast, other.myLast);
    std::swap(myCount, other.myCount);
  }

  cListItem* first() const { return myFirst; }
  cListItem* last() const { return myLast; }
  long long count() const { return myCount; }
  bool empty() const { return myCount == 0; }

private:
  cListItem* myFirst = nullptr;
  cListItem* myLast = nullptr;
  long long myCount = 0;
};

class cBiListItem {
public:
  virtual ~cBiListItem() = default;
  cBiListItem* next() const { return myNext; }
  cBiListItem* prev() const { return myPrev; }

private:
  friend class cBiList;
  cBiListItem* myNext = nullptr;
  cBiListItem* myPrev = nullptr;
  const cBiList* myOwner = nullptr;
};

class cBiList {
public:
  cBiList() = default;
  cBiList(const cBiList&) = delete;
  cBiList& operator=(const cBiList&) = delete;
  ~cBiList() { destroy(); }

  cBiListItem* add(std::unique_ptr<cBiListItem> item);
  cBiListItem* addFirst(std::unique_ptr<cBiListItem> item);
  // Inserts after `where`, which must be in this list (null inserts at the start).
  cBiListItem* insertAfter(cBiListItem* where, std::unique_ptr<cBiListItem> item);
  std::unique_ptr<cBiListItem> remove(cBiListItem* item); // null if not in this list
  void destroy();

  cBiListItem* first() const { return myFirst; }
  cBiListItem* last() const { return myLast; }
  long long count() const { return myCount; }
  bool empty() const { return myCount == 0; }

private:
  cBiListItem* myFirst = nullptr;
  cBiListItem* myLast = nullptr;
  long long myCount = 0;
};
