// The vertical scroll bar of a scrolled view: up and down arrows, at the view's right edge.
#pragma once

#include "scrollbar.h"

class cVScrollBar : public cScrollBar {
public:
  explicit cVScrollBar(std::function<void(int)> scroll) : cScrollBar(true, std::move(scroll)) {}
};
