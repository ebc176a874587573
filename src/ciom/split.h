// Two panes side by side with a divider between them that the mouse drags.
//
// Each pane is a panel: attach or anchor children to pane(0) and pane(1), and they follow
// its size. The first pane takes a share of the room (40 % unless set); the share stays
// when the splitter is resized, unless one pane is set to keep its size. A drag never
// makes a pane smaller than its minimum, and raises kMovedCode when it is done.
// cVSplitterChild (vsplit.h) is the same with one pane above the other.
#pragma once

#include "panel.h"

class cSplitterChild : public cChildElement {
public:
  static constexpr int kDivider = 5; // the divider's thickness
  static constexpr int kGrip = 3;    // room on each side of it that grabs it too
  static constexpr int kMovedCode = 6;
  static constexpr double kDefaultShare = 0.4;

  cSplitterChild() : cSplitterChild(false) {}

  cPanelChild* pane(int index) { return index == 0 ? &myFirst : &mySecond; }
  bool vertical() const { return myVertical; }
  // The first pane's share of the room beside the divider, kept within 0 and 1.
  void setShare(double share);
  double share() const { return myShare; }
  // The smallest length each pane keeps (along the split); a drag stops there.
  void setMinSizes(int first, int second);
  // -1: both panes keep their share on a resize; 0 or 1: that pane keeps its length.
  void setFixedPane(int pane);
  // Where the divider starts (the first pane's length); moving it keeps the minimums.
  int position() const { return myPosition; }
  void setPosition(int position);
  // Draws the divider as a one-pixel line of that colour instead of a grip (a grid's
  // column rule); kGripLook goes back to the grip.
  static constexpr unsigned kGripLook = 0xFFFFFFFF;
  void setDividerLine(unsigned colour);

  void onConstruct() override;
  void onSizeChanged() override;
  void onPaint(cCanvas* canvas) override;
  bool processMouseBtn(int x, int y, int button, bool down, bool shift, bool ctrl) override;
  bool processMouseMove(int x, int y) override;

protected:
  explicit cSplitterChild(bool vertical);

private:
  int room() const; // the length both panes share
  int along(int x, int y) const { return myVertical ? y : x; }
  bool onDivider(int x, int y) const;
  int clampPosition(int position) const;
  void placePanes();

  bool myVertical;
  cPanelChild myFirst, mySecond;
  double myShare = kDefaultShare;
  int myMin[2] = {0, 0};
  int myFixed = -1;
  int myPosition = 0;
  int myFixedLength = -1; // the fixed pane's length, once known
  unsigned myLine = kGripLook;
  bool myDragging = false;
  int myGrab = 0; // the pointer's distance from the divider while dragged
};
