// The tree view's selection, expansion, actions and keys.
#include <algorithm>

#include "treeview.h"

// --- selection ---------------------------------------------------------------------------

void cTreeViewChild::select(cTreeViewItem* item, bool focus) {
  if (!item) return;
  // A row inside a closed branch is shown first: its ancestors open.
  bool opened = false;
  for (cTreeViewItem* p = item->parentItem(); p; p = p->parentItem()) {
    if (p->collapsed) {
      p->collapsed = false;
      opened = true;
    }
  }
  if (opened || !item->element) build();
  if (focus) {
    if (item != mySelected) {
      mySelected = item;
      myAnnounce = item; // its label's action 6 is news, though it is selected now
    }
    item->element->select();
  } else {
    mySelected = item;
    myAnnounce = nullptr;
    // While the tree holds the focus it moves to the item's label, quietly: the focus and
    // the selection never part, so keys and clicks start from the selected item.
    if (focused() && !item->element->hasFocus())
      item->element->select();
    else
      markUnfocused(item);
  }
  scrollIntoView(item);
}

void cTreeViewChild::selectRoot() {
  select(root(), true);
}

void cTreeViewChild::markUnfocused(cTreeViewItem* item) {
  cTreeViewItem* before = myUnfocusedItem;
  myUnfocusedItem = item;
  for (cTreeViewItem* p : {before, item}) {
    if (p && p->element) p->element->setColours(labelLook(p), p->element->colours(true));
  }
}

void cTreeViewChild::scrollIntoView(cTreeViewItem* item) {
  if (!item || !item->element || !item->element->visible_child()) return;
  sRect label, sign;
  item->element->childRect(&label);
  item->control->childRect(&sign);
  ensureVisible({sign.x, label.y, label.x + label.width - sign.x, label.height});
}

void cTreeViewChild::labelSelected(cTreeViewItem* item) {
  markUnfocused(nullptr); // a label has the focus: the tree has it
  scrollIntoView(item);
  if (item == mySelected && item != myAnnounce) return;
  myAnnounce = nullptr;
  mySelected = item;
  raise(kSelected, item);
}

void cTreeViewChild::processFocusLost(bool shift, bool ctrl) {
  cScrollableElement::processFocusLost(shift, ctrl);
  if (mySelected && mySelected->element) {
    markUnfocused(mySelected);
    scrollIntoView(mySelected);
  }
}

void cTreeViewChild::onSetFocusEvent(eEventOrigin origin, bool shift, bool ctrl) {
  cScrollableElement::onSetFocusEvent(origin, shift, ctrl);
  // The focus belongs on a row: the selected one, or the first.
  select(mySelected ? mySelected : root(), true);
}

// --- expansion ---------------------------------------------------------------------------

bool cTreeViewChild::expand(cTreeViewItem* item, bool notify) {
  if (!item || !item->element || !item->collapsed || !isSub(item)) return false;
  item->collapsed = false;
  if (!myBatch.open()) processSubRead(item);
  changed();
  if (notify) raise(kToggled, item);
  return true;
}

bool cTreeViewChild::collapse(cTreeViewItem* item, bool notify) {
  if (!item || !item->element || item->collapsed || !isSub(item)) return false;
  item->collapsed = true;
  changed();
  if (notify) raise(kToggled, item);
  return true;
}

void cTreeViewChild::toggle(cTreeViewItem* item) {
  processSubRead(item);
  if (!item->firstChild()) return;
  item->collapsed = !item->collapsed;
  select(item, true);
  changed();
  raise(kToggled, item);
}

void cTreeViewChild::requestExpand(cTreeViewItem* item, bool open) {
  if (item->collapsed != open) return;
  item->collapsed = !open;
  if (open) processSubRead(item);
  // The focus does not stay on a row that the branch now hides.
  if (!open && mySelected && mySelected != item && mySelected->isWithin(item)) select(item, true);
  changed();
  raise(kToggled, item);
}

void cTreeViewChild::expandAll(cTreeViewItem* item) {
  if (!item) return;
  for (cTreeItem* p = item; p; p = p->nextInOrder(item)) {
    auto* it = static_cast<cTreeViewItem*>(p);
    if (it->collapsed && isSub(it)) {
      it->collapsed = false;
      processSubRead(it); // the walk then goes on into what it loaded
    }
  }
  changed();
  raise(kToggled, item);
}

// --- actions -----------------------------------------------------------------------------

void cTreeViewChild::raise(int code, cTreeViewItem* item) {
  notifyAction(new cTreeItemAction(code, item));
}

void cTreeViewChild::contextRequest(cTreeViewItem* item, const cCtxRequestAction& request) {
  sRect label;
  item->element->childRect(&label);
  const sPoint offset = scrollOffset();
  notifyAction(
      new cTreeItemCtxAction(item, label.x - offset.x + request.x, label.y - offset.y + request.y));
}

bool cTreeViewChild::onAction(cChildElement* source, cChildAction* action) {
  if (!action || source == this) return cScrollableElement::onAction(source, action);
  if (cTreeViewItem* item = isChild(source)) {
    switch (action->code) {
    case cChildAction::acCtxRequest:
      contextRequest(item, *static_cast<cCtxRequestAction*>(action));
      return true;
    case cChildAction::acDoubleClick:
      // A double click also opens or closes the row's branch.
      if (item->firstChild()) requestExpand(item, item->collapsed);
      return true;
    case cSelectableStaticChild::kSelected:
      labelSelected(item);
      return true;
    case cSelectableStaticChild::kActivated:
      raise(kActivated, item);
      return true;
    case cSelectableStaticChild::kExpand:
    case cSelectableStaticChild::kCollapse:
      requestExpand(item, action->code == cSelectableStaticChild::kExpand);
      return true;
    default:
      break;
    }
  } else if (cTreeViewItem* item = isCtl(source); item && action->code == cChildAction::acNotify) {
    toggle(item);
    return true;
  }
  return cScrollableElement::onAction(source, action);
}

// --- keys --------------------------------------------------------------------------------

cTreeViewChild::cTreeViewItem* cTreeViewChild::lastVisible(cTreeViewItem* item) const {
  while (item && !item->collapsed && item->lastItem()) item = item->lastItem();
  return item;
}

cTreeViewChild::cTreeViewItem* cTreeViewChild::below(cTreeViewItem* item) const {
  if (!item->collapsed && item->firstItem()) return item->firstItem();
  for (cTreeViewItem* p = item; p; p = p->parentItem()) {
    if (p->nextItem()) return p->nextItem();
  }
  return nullptr;
}

cTreeViewChild::cTreeViewItem* cTreeViewChild::above(cTreeViewItem* item) const {
  return item->prevItem() ? lastVisible(item->prevItem()) : item->parentItem();
}

cTreeViewChild::cTreeViewItem* cTreeViewChild::pageTarget(bool down) {
  cTreeViewItem* item = mySelected;
  const int rows =
      std::max(1, viewSize().height / std::max(1, mySpacing + item->element->height()));
  for (int k = 1; k < rows; ++k) {
    cTreeViewItem* next = down ? below(item) : above(item);
    if (!next) break;
    item = next;
  }
  return item;
}

cTreeViewChild::cTreeViewItem* cTreeViewChild::keyTarget(int key, bool ctrl) {
  cTreeViewItem* item = mySelected;
  if (!item) return root();
  if (ctrl) {
    if (key == kKeyUp) return item->prevItem();
    if (key == kKeyDown) return item->nextItem();
    return nullptr;
  }
  switch (key) {
  case kKeyLeft:
    return item->parentItem();
  case kKeyUp:
    return above(item);
  case kKeyRight:
    if (!isSub(item)) return nullptr;
    expand(item, false);
    return item->firstItem();
  case kKeyDown:
    return below(item);
  case kKeyHome:
    return root();
  case kKeyEnd: {
    cTreeViewItem* last = root();
    while (last && last->nextItem()) last = last->nextItem();
    return lastVisible(last);
  }
  case kKeyPageUp:
  case kKeyPageDown:
    return pageTarget(key == kKeyPageDown);
  default:
    return nullptr;
  }
}

bool cTreeViewChild::processKey(int key, bool shift, bool ctrl, bool alt) {
  if (myDragging) {
    if (key == kKeyEscape) endDrag(false);
    return true; // the keyboard waits for the drop
  }
  const bool arrow = key >= kKeyLeft && key <= kKeyDown;
  const bool paging = key == kKeyHome || key == kKeyEnd || key == kKeyPageUp || key == kKeyPageDown;
  if (!shift && !alt && (arrow || (paging && !ctrl)) && focused() && enabled() && visible()) {
    if (cTreeViewItem* target = keyTarget(key, ctrl)) select(target, true);
    return true;
  }
  return cScrollableElement::processKey(key, shift, ctrl, alt);
}

bool cTreeViewChild::processChar(unsigned short ch, bool shift, bool ctrl, bool alt) {
  // "+" and "-" belong to the focused label (expand and collapse requests).
  if (ctrl || alt || ch <= 0x20 || ch == '+' || ch == '-' || !focused() || !enabled())
    return cScrollableElement::processChar(ch, shift, ctrl, alt);
  if (ch == '*') {
    expandAll(mySelected);
    return true;
  }
  // Type-ahead over the shown rows, from the selected one on and round to it.
  const bool longer = myTyped.add(ch, ticks());
  cTreeViewItem* start = mySelected ? (longer ? mySelected : below(mySelected)) : root();
  if (!start) start = root();
  for (cTreeViewItem* p = start; p;) {
    if (myTyped.matches(p->text.c_str())) {
      select(p, true);
      break;
    }
    p = below(p);
    if (!p) p = root();
    if (p == start) break;
  }
  return true;
}
