// A scroll bar along one edge of a scrolled view: an arrow at each end, a track, and a
// thumb whose length shows the visible share of the content. It is not an element of its
// own: the view that owns it places it, paints it and hands it the mouse events that fall
// on it, and the bar answers with the offset the view should scroll to.
//
// A press on an arrow scrolls one step, on the track one page towards the pointer; held,
// either repeats. The thumb is dragged; the offset follows in proportion.
#pragma once

#include <functional>

#include "canvas.h"
#include "timer.h"

class cScrollBar {
public:
  enum ePart { spNone = 0, spLess, spTrackLess, spThumb, spTrackMore, spMore };
  static constexpr int kThickness = 14; // the theme's pieces are this wide
  static constexpr int kMinThumb = 16;
  static constexpr unsigned kRepeatDelayMs = 350, kRepeatMs = 50;

  // scroll receives the offset the view should move to.
  cScrollBar(bool vertical, std::function<void(int)> scroll);

  bool vertical() const { return myVertical; }
  // The bar's rectangle in the view's coordinates.
  void place(const sRect& rect) { myRect = rect; }
  const sRect& rect() const { return myRect; }
  // The content's length, the visible length, the offset and the arrows' step.
  void setValues(int content, int view, int offset, int step);
  int offset() const { return myOffset; }

  ePart partAt(int x, int y) const;
  sRect partRect(ePart part) const;
  ePart pressed() const { return myPressed; }
  ePart hot() const { return myHot; }

  // Mouse events at view coordinates; true when the bar took the event.
  bool press(int x, int y);
  void drag(int x, int y);
  void release();
  // The pointer moved over the view (x, y outside the bar clear the hot part); true when
  // the look changed.
  bool hover(int x, int y);

  void paint(cCanvas* canvas, bool enabled) const;

private:
  int along(int x, int y) const { return myVertical ? y - myRect.y : x - myRect.x; }
  int length() const { return myVertical ? myRect.height : myRect.width; }
  int range() const { return myContent > myView ? myContent - myView : 0; }
  // The thumb's start and length along the track, from the bar's start.
  void thumb(int& start, int& len) const;
  void act(ePart part);
  void repeat();
  sRect span(int start, int len) const; // a stretch along the bar, across its width

  bool myVertical;
  std::function<void(int)> myScroll;
  sRect myRect;
  int myContent = 0, myView = 0, myOffset = 0, myStep = 1;
  ePart myPressed = spNone, myHot = spNone;
  int myGrab = 0;        // the pointer's distance from the thumb's start while dragged
  int myPointer = 0;     // where along the bar the pointer was last seen
  bool myInside = false; // whether the pointer is over the pressed part
  cTimer myRepeat;
};
