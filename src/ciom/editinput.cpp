// The edit box's input: typed characters, the key table, caret moves and keyboard
// selection, the mouse, focus and the blinking caret.
#include <algorithm>
#include <cstdlib>

#include "base/str.h"
#include "edit.h"

// --- caret and selection -----------------------------------------------------------------

long long cEditChild::nextPos(long long i) const {
  if (i >= myLength) return myLength;
  return i +
         (isHighSurrogate(myText[i]) && i + 1 < myLength && isLowSurrogate(myText[i + 1]) ? 2 : 1);
}

long long cEditChild::prevPos(long long i) const {
  if (i <= 0) return 0;
  return i - (i >= 2 && isLowSurrogate(myText[i - 1]) && isHighSurrogate(myText[i - 2]) ? 2 : 1);
}

bool cEditChild::blankAt(long long i) const {
  return __acp_isspace(myText[i]);
}

long long cEditChild::wordRight(long long i) const {
  while (i < myLength && !blankAt(i)) ++i;
  while (i < myLength && blankAt(i)) ++i;
  return i;
}

long long cEditChild::wordLeft(long long i) const {
  while (i > 0 && blankAt(i - 1)) --i;
  while (i > 0 && !blankAt(i - 1)) --i;
  return i;
}

void cEditChild::setCaret(long long index) {
  index = std::clamp<long long>(index, 0, myLength);
  if (index > 0 && index < myLength && isLowSurrogate(myText[index])) --index;
  myCaret = index;
  mySelFirst = mySelLast = -1;
  myLastEdit = ekOther;
  if (!myLayoutDirty) keepCaretVisible();
  restartBlink();
  repaint();
}

void cEditChild::select(long long first, long long last) {
  first = std::max(0LL, first);
  last = std::min(myLength - 1, last);
  if (first > last) {
    cancelSelection();
    return;
  }
  if (first > 0 && isLowSurrogate(myText[first])) --first;
  if (last + 1 < myLength && isLowSurrogate(myText[last + 1])) ++last;
  mySelFirst = first;
  mySelLast = last;
  myCaret = last + 1;
  myLastEdit = ekOther;
  if (!myLayoutDirty) keepCaretVisible();
  repaint();
}

void cEditChild::selectAll() {
  select(0, myLength - 1);
  myCaret = myLength;
}

void cEditChild::cancelSelection() {
  if (!hasSelection()) return;
  mySelFirst = mySelLast = -1;
  repaint();
}

void cEditChild::processSelectKbd(long long from, long long to) {
  if (myReadonly && !myCursorForRO) return;
  // The fixed end: the selection's other edge when the move starts at one of its edges,
  // else where the move starts (the old selection is replaced).
  long long anchor = from;
  if (hasSelection()) {
    if (from == mySelLast + 1) anchor = mySelFirst;
    if (from == mySelFirst) anchor = mySelLast + 1;
  }
  if (anchor == to) {
    mySelFirst = mySelLast = -1;
  } else {
    mySelFirst = std::min(anchor, to);
    mySelLast = std::max(anchor, to) - 1;
  }
  repaint();
}

void cEditChild::moveCaret(long long to, bool shift) {
  const long long from = myCaret;
  if (shift) {
    processSelectKbd(from, to);
  } else {
    cancelSelection();
  }
  myCaret = to;
  if (shift) offerPrimary();
  myLastEdit = ekOther;
  if (!myLayoutDirty) keepCaretVisible();
  restartBlink();
  repaint();
}

void cEditChild::restartBlink() {
  myCaretOn = true;
  if (hasFocus() && myActive) {
    myBlink.start(kBlinkMs);
  } else {
    myBlink.stop();
  }
}

// --- typing and keys ---------------------------------------------------------------------

bool cEditChild::onChar(unsigned short unit, bool, bool ctrl, bool) {
  if (ctrl || myReadonly) return false;
  if (unit < 0x20 || (unit >= 0x7F && unit <= 0x9F)) return false;
  if (isHighSurrogate(unit)) {
    myPendingHigh = unit; // the character is complete with its second half
    return true;
  }
  unsigned short units[2] = {unit, 0};
  long long n = 1;
  if (isLowSurrogate(unit)) {
    if (!myPendingHigh) return true; // half a character: dropped
    units[0] = myPendingHigh;
    units[1] = unit;
    n = 2;
  }
  myPendingHigh = 0;
  // A full box takes nothing more (the tail is never pushed out by typing); a selection
  // goes first all the same.
  const long long selected = hasSelection() ? mySelLast - mySelFirst + 1 : 0;
  const bool fits = myLength - selected + n <= maxLen();
  if (!fits && !selected) return true;
  remember(ekTyping);
  if (selected) deleteRange(mySelFirst, mySelLast + 1);
  if (fits) replace(myCaret, 0, units, n);
  changed(ekTyping);
  return true;
}

bool cEditChild::onKey(int key, bool shift, bool ctrl, bool alt) {
  if (alt) return false;
  switch (key) {
  case kKeyDelete:
    if (myReadonly) return true;
    if (shift) {
      cb_cut();
    } else if (!deleteSelection() && myCaret < myLength) {
      remember(ekOther);
      deleteRange(myCaret, nextPos(myCaret));
      changed(ekOther);
    }
    return true;
  case kKeyBackspace:
    if (myReadonly) return true;
    if (!deleteSelection() && myCaret > 0) {
      remember(ekOther);
      deleteRange(prevPos(myCaret), myCaret);
      changed(ekOther);
    }
    return true;
  case kKeyEnter:
    notifyAction(new cEditKeyAction(kKeyEnter));
    return true;
  case kKeyEscape:
    if (hasSelection()) {
      cancelSelection();
    } else {
      notifyAction(new cEditKeyAction(kKeyEscape));
    }
    return true;
  case kKeyInsert:
    if (!ctrl && !shift) return false;
    if (ctrl) {
      cb_copy();
    } else {
      cb_paste();
    }
    return true;
  case kKeyHome:
  case kKeyUp:
    moveCaret(0, shift);
    return true;
  case kKeyEnd:
  case kKeyDown:
    moveCaret(myLength, shift);
    return true;
  case kKeyLeft:
    moveCaret(ctrl ? wordLeft(myCaret) : prevPos(myCaret), shift);
    return true;
  case kKeyRight:
    moveCaret(ctrl ? wordRight(myCaret) : nextPos(myCaret), shift);
    return true;
  default:
    break;
  }
  if (!ctrl) return false;
  switch (key) {
  case 'A':
    selectAll();
    offerPrimary();
    return true;
  case 'C':
    cb_copy();
    return true;
  case 'V':
    cb_paste();
    return true;
  case 'X':
    if (myReadonly) {
      cb_copy();
    } else {
      cb_cut();
    }
    return true;
  case 'Z':
    if (shift) {
      redo();
    } else {
      undo();
    }
    return true;
  case 'Y':
    redo();
    return true;
  default:
    return false;
  }
}

// --- mouse -------------------------------------------------------------------------------

bool cEditChild::processMouseBtn(int x, int y, int button, bool down, bool shift, bool ctrl) {
  myClickShift = shift;
  return cChildElement::processMouseBtn(x, y, button, down, shift, ctrl);
}

void cEditChild::onMouseButton(int x, int, int button, bool down) {
  if (button == 3 && down) {
    if (!hasFocus()) {
      myFocusByMouse = true;
      focus();
    }
    pastePrimary(indexAt(x));
    return;
  }
  if (button != 1) return;
  if (!down) {
    if (myDragging) {
      releasePointer();
      offerPrimary();
    }
    myDragging = false;
    return;
  }
  if (!hasFocus()) {
    myFocusByMouse = true; // the press places the caret: no select-on-focus
    focus();
  }
  // A third press soon after a double click, at the same place, selects everything.
  myTripleClick = false;
  const unsigned now = ticks();
  if (now > myDoubleClickAt && now - myDoubleClickAt <= kDoubleClickMs &&
      std::abs(x - myDoubleClickX) <= kDoubleClickDistance) {
    myDoubleClickAt = 0;
    myTripleClick = true; // the core may take this press for another double click
    selectAll();
    offerPrimary();
    return;
  }
  const long long at = indexAt(x);
  if (myClickShift) {
    // Extends from the end of the selection the caret is not at.
    if (!hasSelection()) {
      myAnchor = myCaret;
    } else {
      myAnchor = myCaret == mySelFirst ? mySelLast + 1 : mySelFirst;
    }
  } else {
    myAnchor = at;
  }
  selectBetween(myAnchor, at);
  myDragging = true;
  capturePointer(false);
}

void cEditChild::selectBetween(long long anchor, long long at) {
  if (anchor == at) {
    mySelFirst = mySelLast = -1;
  } else {
    mySelFirst = std::min(anchor, at);
    mySelLast = std::max(anchor, at) - 1;
  }
  myCaret = at;
  myLastEdit = ekOther;
  if (!myLayoutDirty) keepCaretVisible();
  restartBlink();
  repaint();
}

void cEditChild::onMouseMoving(int x, int) {
  if (myDragging) selectBetween(myAnchor, indexAt(x));
}

void cEditChild::onMouseDoubleClick(int x, int) {
  if (myTripleClick) {
    myTripleClick = false;
    return;
  }
  if (myDragging) releasePointer();
  myDragging = false;
  myDoubleClickAt = ticks();
  myDoubleClickX = x;
  if (myLength == 0 || !layout(nullptr)) return;
  // The unit under the pointer, and the run of units like it (blank or not).
  const int target = x - kPadding + myScrollX;
  long long unit =
      std::upper_bound(myPos.data(), myPos.data() + myLength + 1, target) - myPos.data() - 1;
  unit = std::clamp<long long>(unit, 0, myLength - 1);
  const bool blank = blankAt(unit);
  long long first = unit, end = unit + 1;
  while (first > 0 && blankAt(first - 1) == blank) --first;
  while (end < myLength && blankAt(end) == blank) ++end;
  select(first, end - 1);
  offerPrimary();
}

// --- focus -------------------------------------------------------------------------------

void cEditChild::onSetFocusEvent(eEventOrigin origin, bool shift, bool ctrl) {
  if (mySelectOnFocus && !myReadonly && !myFocusByMouse) selectAll();
  myFocusByMouse = false;
  cChildElement::onSetFocusEvent(origin, shift, ctrl);
}

void cEditChild::onSetFocus(bool, bool) {
  myActive = true;
  restartBlink();
  repaint();
}

void cEditChild::onLooseFocus(bool, bool) {
  myActive = false;
  myPendingHigh = 0;
  myFocusByMouse = false;
  if (myDragging) releasePointer();
  myDragging = false;
  myBlink.stop();
  myCaretOn = false;
  repaint();
}

void cEditChild::onEnableChanged(bool) {
  repaint();
}
