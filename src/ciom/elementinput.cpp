// Input through the element tree: mouse routing with capture, hover and double clicks,
// the wheel bubbling outwards, keys to the focused element, tab and arrow navigation, and
// moving the focus.
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "base/clock.h"
#include "element.h"
#include "hint.h"

namespace {

cChildElement::fTicks gTicks = &ticks_ms;

} // namespace

void cChildElement::setTicks(fTicks ticks) {
  gTicks = ticks ? ticks : &ticks_ms;
}

unsigned cChildElement::ticks() {
  return gTicks();
}

// --- mouse ------------------------------------------------------------------------------

// The first visible, enabled child under (x, y), in order-number order, and the point in
// its coordinates. Children come after capture and only inside this element.
bool cChildElement::routeMouseToChild(int x, int y, cChildElement*& hit, int& cx, int& cy) {
  if (myCapturedChild) {
    const sRect r = placed(myCapturedChild);
    hit = myCapturedChild;
    cx = x - r.x;
    cy = y - r.y;
    return true;
  }
  if (myCaptureChildren || x < 0 || y < 0 || x >= myRect.width || y >= myRect.height) return false;
  sPoint offset;
  virtualOffset(&offset);
  for (const auto& [order, child] : myChildren) {
    if (!child || !child->myVisible || !child->myEnabled) continue;
    const sRect r = placed(child, offset);
    if (x >= r.x && y >= r.y && x < r.x + r.width && y < r.y + r.height) {
      hit = child;
      cx = x - r.x;
      cy = y - r.y;
      return true;
    }
  }
  return false;
}

bool cChildElement::processMouseBtn(int x, int y, int button, bool down, bool shift, bool ctrl) {
  if (!enabled()) return false;
  cChildElement* child = nullptr;
  int cx = 0, cy = 0;
  if (routeMouseToChild(x, y, child, cx, cy))
    return child->processMouseBtn(cx, cy, button, down, shift, ctrl);
  if (!visible()) return false;
  // A press means the user has read the tooltip; left up it would cover what the click opens.
  if (down) myHintPopup.reset();
  if (button == 2 && !down) notifyAction(new cCtxRequestAction(x, y, shift, ctrl, false));
  onMouseButton(x, y, button, down);
  if (button == 1 && down) {
    const unsigned now = gTicks();
    if (now > myLastClickTicks && now - myLastClickTicks <= kDoubleClickMs &&
        std::abs(x - myLastClick.x) <= kDoubleClickDistance &&
        std::abs(y - myLastClick.y) <= kDoubleClickDistance) {
      onMouseDoubleClick(x, y);
    } else {
      myLastClickTicks = now;
      myLastClick = {x, y};
    }
  }
  return true;
}

bool cChildElement::processMouseMove(int x, int y) {
  if (!enabled()) return false;
  cChildElement* child = nullptr;
  int cx = 0, cy = 0;
  if (routeMouseToChild(x, y, child, cx, cy)) return child->processMouseMove(cx, cy);
  if (!visible()) return false;
  changePointerReq(myPointer);
  notifyHover(this);
  onMouseMoving(x, y);
  return true;
}

bool cChildElement::processMouseWheel(int x, int y, bool shift, bool ctrl, int delta) {
  cChildElement* child = nullptr;
  int cx = 0, cy = 0;
  if (!myCapturedChild && routeMouseToChild(x, y, child, cx, cy) &&
      child->processMouseWheel(cx, cy, shift, ctrl, delta))
    return true;
  return visible() && onMouseWheel(x, y, shift, ctrl, delta);
}

void cChildElement::notifyHover(cChildElement* element) {
  if (myParent) return myParent->notifyHover(element);
  if (myHovered == element) return;
  cChildElement* was = myHovered;
  myHovered = element;
  if (was && valid(was)) was->leaveHover();
  if (element) element->enterHover();
}

void cChildElement::enterHover() {
  myHot = true;
  if (myHoverLook) repaint();
  onMouseOver();
}

void cChildElement::leaveHover() {
  myHot = false;
  if (myHoverLook) repaint();
  onMouseLeft();
}

void cChildElement::onMouseOver() {
  if (hint()) displayHint();
}

void cChildElement::displayHint() {
  auto tip = std::make_unique<cHintMaster>();
  if (!tip->show(this, hint(), nullptr, cHintMaster::kThemeColour, cHintMaster::kThemeColour))
    return;
  myHintPopup = std::move(tip);
}

void cChildElement::onMouseLeft() {
  myHintPopup.reset();
}

void cChildElement::onMouseDoubleClick(int x, int y) {
  if (myNotifyDoubleClick) notifyAction(new cDoubleClickAction(x, y));
}

bool cChildElement::capturePointer(bool routeToChildren) {
  myCaptureChildren = !routeToChildren;
  return myParent ? myParent->pointerCaptureReq(this, true)
                  : (myWinTarget && myWinTarget->_rt_capturepointer(true));
}

bool cChildElement::releasePointer() {
  myCaptureChildren = false;
  return myParent ? myParent->pointerCaptureReq(this, false)
                  : (myWinTarget && myWinTarget->_rt_capturepointer(false));
}

bool cChildElement::pointerCaptureReq(cChildElement* child, bool capture) {
  if (capture) {
    myCapturedChild = child;
  } else if (myCapturedChild == child) {
    myCapturedChild = nullptr;
  }
  if (myParent) return myParent->pointerCaptureReq(this, capture);
  return myWinTarget && myWinTarget->_rt_capturepointer(capture);
}

// --- keys -------------------------------------------------------------------------------

bool cChildElement::processKey(int key, bool shift, bool ctrl, bool alt) {
  if (!myEnabled || !myVisible) return true; // swallowed on a disabled or hidden path
  if (!myParent) {
    if (key >= kKeyLeft && key <= kKeyDown && !ctrl && !alt &&
        processArrowTab(key == kKeyRight || key == kKeyDown, shift, ctrl))
      return true;
    if (key == kKeyTab && !ctrl) {
      if (processTab(!shift)) return true;
      // Past the last stop: start again from the first.
      if (cChildElement* first = findTabStop(!shift, nullptr)) {
        first->processFocus(eoTab, 0, 0, shift, ctrl);
        return true;
      }
    }
  }
  if (myFocusedChild) return myFocusedChild->processKey(key, shift, ctrl, alt);
  if (!myOwnFocus) return false;
  if (key == kKeyMenu || (key == kKeyF10 && shift && !ctrl && !alt))
    notifyAction(new cCtxRequestAction(0, 0, shift, ctrl, alt));
  return onKey(key, shift, ctrl, alt);
}

bool cChildElement::processChar(unsigned short ch, bool shift, bool ctrl, bool alt) {
  if (!myEnabled || !myVisible) return true;
  if (myFocusedChild) return myFocusedChild->processChar(ch, shift, ctrl, alt);
  return myOwnFocus && onChar(ch, shift, ctrl, alt);
}

// --- tab and arrow navigation ------------------------------------------------------------

bool cChildElement::tabStopHere() {
  return canTabStop();
}

cChildElement* cChildElement::findTabStop(bool forward, const cChildElement* after) {
  // Every reachable element in depth-first, order-number order; hidden or disabled
  // elements hide their subtrees.
  std::vector<cChildElement*> order;
  if (!enabled() || !visible()) return nullptr;
  std::vector<cChildElement*> stack = {this};
  while (!stack.empty()) {
    cChildElement* e = stack.back();
    stack.pop_back();
    order.push_back(e);
    for (auto it = e->myChildren.rbegin(); it != e->myChildren.rend(); ++it) {
      if (it->second && it->second->myEnabled && it->second->myVisible) stack.push_back(it->second);
    }
  }
  const auto at = std::find(order.begin(), order.end(), after);
  if (forward) {
    for (auto it = at == order.end() ? order.begin() : at + 1; it != order.end(); ++it) {
      if ((*it)->tabStopHere()) return *it;
    }
  } else {
    for (auto it = at == order.end() ? order.rbegin() : std::make_reverse_iterator(at);
         it != order.rend(); ++it) {
      if ((*it)->tabStopHere()) return *it;
    }
  }
  return nullptr;
}

bool cChildElement::processTab(bool forward) {
  cChildElement* next = findTabStop(forward, getFocused());
  if (!next) return false;
  next->processFocus(eoTab, 0, 0, false, false);
  return true;
}

bool cChildElement::processArrowTab(bool forward, bool shift, bool ctrl) {
  cChildElement* holder = getFocused();
  if (!holder || holder->wantCaptureArrows() || !holder->canArrowTabStop() || !holder->myParent)
    return false;
  cChildElement* group = holder->myParent;
  std::vector<cChildElement*> stops;
  for (cChildElement* child : group->childList()) {
    if (child == holder || (child->canArrowTabStop() && child->myEnabled && child->myVisible))
      stops.push_back(child);
  }
  const auto i = static_cast<long>(std::find(stops.begin(), stops.end(), holder) - stops.begin());
  long next = forward ? i + 1 : i - 1;
  const auto n = static_cast<long>(stops.size());
  if (next < 0 || next >= n) {
    if (!group->wantCyclicArrowTabStop()) return false;
    next = (next + n) % n;
  }
  if (stops[static_cast<size_t>(next)] == holder) return false;
  stops[static_cast<size_t>(next)]->processFocus(eoArrow, 0, 0, shift, ctrl);
  return true;
}

// --- focus ------------------------------------------------------------------------------

cChildElement* cChildElement::getFocused() {
  cChildElement* e = this;
  while (e->myFocusedChild) e = e->myFocusedChild;
  return e->myOwnFocus ? e : nullptr;
}

bool cChildElement::focused() const {
  return myOwnFocus || myFocusedChild;
}

void cChildElement::focus() {
  if (myAcceptFocus) {
    focusReq(this, 0, 0);
  } else if (myParent) {
    myParent->focus();
  }
}

bool cChildElement::focusReq(cChildElement* child, int, int) {
  if (!child) return false;
  const bool queued = child->notifyAction(new cChildAction(cChildAction::acFocusRequest));
  requestOSWinFocus();
  return queued;
}

bool cChildElement::processFocus(int origin, int, int, bool shift, bool ctrl) {
  root()->focusFrom(this, origin, shift, ctrl);
  return true;
}

void cChildElement::processFocusDirect(cChildElement* target) {
  focusFrom(target, eoDirect, false, false);
}

// Runs down from this element to target, moving the focus path there; the branch that
// held the focus before is told that it lost it.
void cChildElement::focusFrom(cChildElement* target, int origin, bool shift, bool ctrl) {
  cChildElement* before = myFocusedChild;
  myFocusedChild = nullptr;
  if (target == this) {
    myOwnFocus = true;
    if (before) {
      before->processFocusLost(false, false);
      onLooseFocusChild(before, false, false);
    }
    onSetFocusEvent(static_cast<eEventOrigin>(origin), shift, ctrl);
    notifyAction(new cFocusAction(origin));
    return;
  }
  myOwnFocus = false;
  cChildElement* path = nullptr;
  if (target && isChild(target)) {
    path = target;
    while (path->myParent != this) path = path->myParent;
  }
  if (before && before != path) {
    before->processFocusLost(false, false);
    onLooseFocusChild(before, false, false);
  }
  if (!path) return;
  myFocusedChild = path;
  path->focusFrom(target, origin, shift, ctrl);
}

void cChildElement::processFocusLost(bool shift, bool ctrl) {
  cChildElement* path = myFocusedChild;
  const bool had = myOwnFocus;
  myFocusedChild = nullptr;
  myOwnFocus = false;
  if (path) {
    path->processFocusLost(shift, ctrl);
    onLooseFocusChild(path, shift, ctrl);
  }
  if (had) {
    onLooseFocus(shift, ctrl);
    repaint();
  }
}

void cChildElement::onSetFocusEvent(eEventOrigin, bool shift, bool ctrl) {
  onSetFocus(shift, ctrl);
  repaint();
}

void cChildElement::processOSFocus() {
  if (cChildElement* holder = getFocused()) {
    holder->onSetFocus(false, false);
    holder->repaint();
  }
}

void cChildElement::processOSFocusLost() {
  if (cChildElement* holder = getFocused()) {
    holder->onLooseFocus(false, false);
    holder->repaint();
  }
}
