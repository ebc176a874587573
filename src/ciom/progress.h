// A progress bar: a track filled to the share done, or, while the end is unknown (busy),
// stripes that run along a full bar. An optional text stands in the middle.
#pragma once

#include "element.h"
#include "timer.h"

class cProgressChild : public cChildElement {
public:
  static constexpr unsigned kStripeMs = 60; // one step of the busy stripes
  static constexpr int kHeight = 14;        // the theme's pieces are this high

  cProgressChild();

  // Done so far of total; both kept sane (total at least 1, done within 0 and total).
  void setProgress(long long done, long long total);
  long long done() const { return myDone; }
  long long total() const { return myTotal; }
  // The width of the filled part for the current values.
  int filledWidth() const;
  // Busy: the stripes run until it is turned off.
  void setBusy(bool on);
  bool busy() const { return myBusy; }
  int stripeOffset() const { return myStripe; }

  void onPaint(cCanvas* canvas) override;

private:
  long long myDone = 0, myTotal = 1;
  bool myBusy = false;
  int myStripe = 0;
  cTimer myTimer;
};
