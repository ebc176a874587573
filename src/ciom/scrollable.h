// An element whose content is larger than itself: the children (other than fixed parts)
// lie on a virtual area of a size the owner sets, and the element shows the part of it at
// the scroll offset. The wheel scrolls it (shift: sideways) by the scroll steps; with the
// focus, Page Up/Down, ctrl+Home/End and the arrows do too.
//
// Scroll bars appear along the right and bottom edges while the content is larger than
// the view on their axis; the client area gives up the room they take. Subclasses that
// handle the mouse or the keys themselves call through to this class for the bars.
#pragma once

#include "element.h"
#include "hscroll.h"
#include "vscroll.h"

class cScrollableElement : public cChildElement {
public:
  static constexpr int kWheelSteps = 3; // steps per wheel notch

  cScrollableElement();

  // The content's size; never smaller than the view on either axis.
  void setVirtualSize(int w, int h);
  void setScrollSteps(int x, int y);
  // Moves the view so that the content point x, y is at its top left (kept in range);
  // true when the view moved.
  bool scrollTo(int x, int y);
  bool scrollBy(int dx, int dy);
  // Scrolls as little as possible to bring the content rectangle into view.
  bool ensureVisible(const sRect& rect);
  sPoint scrollOffset() const { return myOffset; }
  sSize scrollRange() const; // the largest offsets
  // The visible part of the content: the element less its border and shown bars.
  sSize viewSize() const;
  // Which bars may appear (both by default); a bar that may not is never shown.
  void allowScrollBars(bool vertical, bool horizontal);
  bool vBarShown() const { return myShowV; }
  bool hBarShown() const { return myShowH; }
  const cScrollBar& vBar() const { return myVBar; }
  const cScrollBar& hBar() const { return myHBar; }

  void virtualSize(sSize* size) override;
  void virtualOffset(sPoint* offset) override;
  void clientRect(sRect* rect) override;
  void processPaint(cCanvas* canvas) override;
  bool processMouseBtn(int x, int y, int button, bool down, bool shift, bool ctrl) override;
  bool processMouseMove(int x, int y) override;
  // Remembered, so that a press on a bar gives back a hold the element had (a popup holds
  // the pointer to see clicks outside it).
  bool capturePointer(bool routeToChildren) override;
  bool releasePointer() override;
  bool onMouseWheel(int x, int y, bool shift, bool ctrl, int delta) override;
  bool onKey(int key, bool shift, bool ctrl, bool alt) override;
  void onMouseLeft() override;
  void onSizeChanged() override;
  // Called after the view moved; the element has been repainted already.
  virtual void onScrolled() {}

private:
  bool clampOffset();
  void layoutBars();
  cScrollBar* barAt(int x, int y);
  // Whether the point lies where the bars are, the corner between them included.
  bool inBarStrip(int x, int y);

  sSize myContent{0, 0};
  sPoint myOffset{0, 0};
  sSize mySteps{5, 5};
  cVScrollBar myVBar;
  cHScrollBar myHBar;
  bool myAllowV = true, myAllowH = true, myShowV = false, myShowH = false;
  cScrollBar* myDragging = nullptr;               // the bar holding the pointer
  bool myHolding = false, myHoldRoute = false;    // this element's own hold
  bool myHeldBefore = false, myHeldRoute = false; // the hold a bar press interrupted
};
