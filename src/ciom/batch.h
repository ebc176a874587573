// Batched rebuilds for controls that lay out many children: between start() and end()
// a change only marks the layout stale, and end() says whether one rebuild is due.
#pragma once

#include <utility>

class cChangeBatch {
public:
  void start() { myOpen = true; }
  // True when the change may rebuild at once; false when it waits for the batch's end.
  bool now() {
    if (myOpen) myDirty = true;
    return !myOpen;
  }
  bool open() const { return myOpen; }
  // Closes the batch; true when something changed inside it.
  bool end() {
    myOpen = false;
    return std::exchange(myDirty, false);
  }
  void built() {
    myDirty = false;
    ++myBuilds;
  }
  void reset() { myOpen = myDirty = false; }
  long long builds() const { return myBuilds; }

private:
  bool myOpen = false, myDirty = false;
  long long myBuilds = 0;
};
