// The window maker: one per process, made by the platform. It creates windows for root
// elements and owns the lock that guards every element's action queues, which other
// threads append to.
#pragma once

#include <deque>
#include <memory>

#include "action.h"
#include "geometry.h"

class cCanvas;

using tActionQueue = std::deque<std::unique_ptr<cChildAction>>;

class cWindowMaker {
public:
  virtual cCanvas* offscreen(int w, int h) = 0;
  virtual bool recommendMainWindowSize(sRect& rect) = 0;
  virtual bool desktopSize(sSize& size) = 0;
  virtual ~cWindowMaker() = default;

  // Opens the platform's window maker (the platform library supplies it); null when there
  // is no display. The first success registers the toolkit's language table and applies
  // the last applied language, or the default one when none was.
  static std::unique_ptr<cWindowMaker> newWindowMaker(void* arg1, void* arg2, unsigned flags, int);

  // Appends to a queue / moves a whole queue out, under the process-wide action lock.
  static void gaSyncAdd(tActionQueue& queue, std::unique_ptr<cChildAction> action);
  static void gaSyncMove(tActionQueue& from, tActionQueue& to);
  // Takes one action back out of a queue (a post that was refused); null when it is gone.
  static std::unique_ptr<cChildAction> gaSyncTake(tActionQueue& queue, const cChildAction* action);
};
