// cEvent: a manual- or auto-reset event over a condition variable.
//
// The return codes are deliberately narrow (see each operation). A manual-reset event
// passes a wake-up from waiter to waiter instead of waking all at once. Operations on an
// event that is not created fail quietly (false or 0).
#pragma once

#include <pthread.h>

class cEvent {
public:
  cEvent() = default;
  cEvent(const cEvent&) = delete;
  cEvent& operator=(const cEvent&) = delete;
  ~cEvent() { close(); }

  // The name is accepted and ignored. Always true.
  bool create(const unsigned short* name, bool initiallySet, bool manualReset);
  bool set();
  // Waits once unless signalled; an auto-reset event then clears itself.
  bool wait();
  // Like wait, with a deadline of now.
  bool try_wait();
  bool reset();
  // 0: invalid, failed, or an auto-reset event found already set (which it clears);
  // 1: timed out; 2: woken, or any outcome of a manual-reset event. A deadline whose
  // nanoseconds, built without a carry, reach one second is refused: 0.
  int wait_ms(unsigned int ms);
  bool valid() const { return myValid; }
  void close();

private:
  // Consumes a signal: a manual-reset event wakes one more waiter, an auto-reset one clears.
  void consume();
  // pthread_cond_timedwait until now + ms, the nanoseconds summed without a carry.
  int timedWait(unsigned int ms);

  bool myManualReset = false;
  bool mySignalled = false;
  pthread_cond_t myCond;
  pthread_mutex_t myMutex;
  bool myValid = false;
};
