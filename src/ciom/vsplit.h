// Two panes one above the other, pane(0) on top, with a divider dragged up and down
// (see split.h).
#pragma once

#include "split.h"

class cVSplitterChild : public cSplitterChild {
public:
  cVSplitterChild() : cSplitterChild(true) {}
};
