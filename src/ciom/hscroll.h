// The horizontal scroll bar of a scrolled view: left and right arrows, along its bottom.
#pragma once

#include "scrollbar.h"

class cHScrollBar : public cScrollBar {
public:
  explicit cHScrollBar(std::function<void(int)> scroll) : cScrollBar(false, std::move(scroll)) {}
};
