// Dragging an item of the tree view to another place: the press, the drag with its drop
// mark on the label under the pointer, and the drop, which the owner carries out.
#include <cstdlib>

#include "treeview.h"

namespace {

constexpr int kMarkThickness = 2;

} // namespace

// --- the label's drop mark -----------------------------------------------------------------

void cTreeItemElement::setDropMark(eDropMark mark, unsigned colour) {
  if (mark == myDropMark && colour == myDropColour) return;
  myDropMark = mark;
  myDropColour = colour;
  repaint();
}

void cTreeItemElement::onPaint(cCanvas* canvas) {
  cSelectableStaticChild::onPaint(canvas);
  if (!canvas || myDropMark == dmNone) return;
  const int w = width(), h = height();
  const int t = kMarkThickness;
  const sRect top{0, 0, w, t}, bottom{0, h - t, w, t}, left{0, 0, t, h}, right{w - t, 0, t, h};
  // Before or after: a line along the top or the bottom; into: a frame all round.
  const unsigned c = myDropColour;
  if (myDropMark != dmAfter) canvas->drawRect(&top, c, c);
  if (myDropMark != dmBefore) canvas->drawRect(&bottom, c, c);
  if (myDropMark == dmInto) {
    canvas->drawRect(&left, c, c);
    canvas->drawRect(&right, c, c);
  }
}

// --- the drag ------------------------------------------------------------------------------

cTreeViewChild::cTreeViewItem* cTreeViewChild::rowAt(int y, cTreeItemElement::eDropMark& zone) {
  sPoint origin;
  absPos(origin);
  for (cTreeViewItem* item = root(); item; item = below(item)) {
    if (!item->element) continue;
    sPoint at;
    item->element->absPos(at);
    const int top = at.y - origin.y, h = std::max(1, item->element->height());
    if (y >= top + h + mySpacing) continue;
    // The upper and lower quarters of a row place before and after it; its middle, into it.
    const int within = y - top;
    zone = within < h / 4        ? cTreeItemElement::dmBefore
           : within >= h - h / 4 ? cTreeItemElement::dmAfter
                                 : cTreeItemElement::dmInto;
    return item;
  }
  return nullptr;
}

bool cTreeViewChild::aim(int y) {
  cTreeItemElement::eDropMark place = cTreeItemElement::dmNone;
  cTreeViewItem* target = rowAt(y, place);
  // Not into itself or below itself; the root takes items only into it.
  if (target &&
      (target->isWithin(myDragged) || (target == root() && place != cTreeItemElement::dmInto)))
    target = nullptr;
  if (!target) place = cTreeItemElement::dmNone;
  if (myDropTarget && myDropTarget->element && myDropTarget != target)
    myDropTarget->element->setDropMark(cTreeItemElement::dmNone, 0);
  myDropTarget = target;
  myDropPlace = place;
  // In the selection's colour, which stands out on any row.
  if (target) target->element->setDropMark(place, target->element->colours(true).background);
  return target != nullptr;
}

void cTreeViewChild::endDrag(bool drop) {
  cTreeViewItem* dragged = myDragged;
  cTreeViewItem* target = myDropTarget;
  const cTreeItemElement::eDropMark place = myDropPlace;
  if (target && target->element) target->element->setDropMark(cTreeItemElement::dmNone, 0);
  const bool wasDragging = myDragging;
  myDragging = false;
  myDragged = myDropTarget = nullptr;
  myDropPlace = cTreeItemElement::dmNone;
  if (!wasDragging) return;
  releasePointer();
  if (drop && target) notifyAction(new cTreeDropAction(dragged, target, place));
}

bool cTreeViewChild::processMouseBtn(int x, int y, int button, bool down, bool shift, bool ctrl) {
  if (myDragging) {
    if (button == 1 && !down) endDrag(true);
    return true; // other buttons do nothing while dragging
  }
  if (button == 1 && !down) myDragged = nullptr;
  const bool handled = cScrollableElement::processMouseBtn(x, y, button, down, shift, ctrl);
  // A press on a label other than the root's may become a drag.
  if (myDragAndDrop && button == 1 && down && !shift && !ctrl) {
    cTreeItemElement::eDropMark zone = cTreeItemElement::dmNone;
    cTreeViewItem* item = rowAt(y, zone);
    sPoint origin, at;
    absPos(origin);
    if (item && item != root() && item->element) item->element->absPos(at);
    const bool onLabel = item && item != root() && item->element && x >= at.x - origin.x &&
                         x < at.x - origin.x + item->element->width();
    myDragged = onLabel ? item : nullptr;
    myPressedAt = {x, y};
  }
  return handled;
}

bool cTreeViewChild::processMouseMove(int x, int y) {
  if (myDragged && !myDragging &&
      std::abs(x - myPressedAt.x) + std::abs(y - myPressedAt.y) >= kDragDistance) {
    myDragging = true;
    capturePointer(false);
  }
  if (!myDragging) return cScrollableElement::processMouseMove(x, y);
  // Near an edge the rows scroll towards the pointer.
  const int step = std::max(1, myMinRow);
  if (y < step)
    scrollBy(0, -step);
  else if (y > height() - step)
    scrollBy(0, step);
  aim(y);
  return true;
}
