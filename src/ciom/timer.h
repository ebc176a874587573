// A timer of the GUI thread: calls its function from the message loop after a number of
// milliseconds, once or repeatedly. An element keeps its timers as members; a timer stops
// when it is destroyed, so it never calls into an element that is gone.
//
// The platform supplies the clock and the loop (setDriver); without a driver start()
// fails and nothing ever fires, which is what an element without a window gets.
#pragma once

#include <functional>

class cTimer {
public:
  // The platform's side: start returns a non-zero id, or 0 when it cannot.
  struct sDriver {
    unsigned (*start)(unsigned ms, bool repeat, void (*fn)(void*), void* param) = nullptr;
    void (*stop)(unsigned id) = nullptr;
  };
  static void setDriver(const sDriver* driver);

  explicit cTimer(std::function<void()> fire) : myFire(std::move(fire)) {}
  cTimer(const cTimer&) = delete;
  cTimer& operator=(const cTimer&) = delete;
  ~cTimer() { stop(); }

  // (Re)starts the timer: the first call comes ms milliseconds from now. False when no
  // platform runs timers.
  bool start(unsigned ms, bool repeat = true);
  void stop();
  bool running() const { return myId != 0; }

private:
  static void fired(void* self);

  std::function<void()> myFire;
  unsigned myId = 0;
  bool myRepeat = false;
};
