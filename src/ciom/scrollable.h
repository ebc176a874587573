// An element whose content is larger than itself: the children (other than fixed parts)
// lie on a virtual area of a size the owner sets, and the element shows the part of it at
// the scroll offset. The wheel scrolls it (shift: sideways) by the scroll steps.
#pragma once

#include "element.h"

class cScrollableElement : public cChildElement {
public:
  static constexpr int kWheelSteps = 3; // steps per wheel notch

  // The content's size; never smaller than the element itself on either axis.
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

  void virtualSize(sSize* size) override;
  void virtualOffset(sPoint* offset) override;
  bool onMouseWheel(int x, int y, bool shift, bool ctrl, int delta) override;
  void onSizeChanged() override;
  // Called after the view moved; the element has been repainted already.
  virtual void onScrolled() {}

private:
  bool clampOffset();

  sSize myContent{0, 0};
  sPoint myOffset{0, 0};
  sSize mySteps{5, 5};
};
