// cStackList: an owning intrusive stack of cListItem (last in, first out).
#pragma once

#include <memory>

#include "list.h"

class cStackList {
public:
  cStackList() = default;
  cStackList(const cStackList&) = delete;
  cStackList& operator=(const cStackList&) = delete;
  ~cStackList() { destroy(); }

  cListItem* push(std::unique_ptr<cListItem> item);
  std::unique_ptr<cListItem> pop(); // null when empty
  cListItem* top() const { return myTop; }
  long long count() const { return myCount; }
  bool empty() const { return myCount == 0; }
  void destroy();

private:
  cListItem* myTop = nullptr;
  long long myCount = 0;
};
