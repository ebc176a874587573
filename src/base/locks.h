// A recursive lock and its two scoped guards.
//
//   cCriticalSection cs;
//   { cSafeCriticalSectionAccess guard(&cs); ... }           // enter now, exit at scope end
//   cs.enter(); cSafeCriticalSectionUnlock unlock(&cs); ...   // entered by hand, exit at end
#pragma once

#include <pthread.h>

class cCriticalSection {
public:
  cCriticalSection();
  cCriticalSection(const cCriticalSection&) = delete;
  cCriticalSection& operator=(const cCriticalSection&) = delete;
  virtual ~cCriticalSection();

  void enter() { pthread_mutex_lock(&myMutex); }
  void exit() { pthread_mutex_unlock(&myMutex); }
  // True when taken, also when the platform reports that this thread would deadlock;
  // false when another thread holds it.
  bool try_enter();

private:
  pthread_mutex_t myMutex;
};

class cSafeCriticalSectionAccess {
public:
  explicit cSafeCriticalSectionAccess(cCriticalSection* cs) : myCs(cs) {
    if (myCs) myCs->enter();
  }
  ~cSafeCriticalSectionAccess() {
    if (myCs) myCs->exit();
  }
  cSafeCriticalSectionAccess(const cSafeCriticalSectionAccess&) = delete;
  cSafeCriticalSectionAccess& operator=(const cSafeCriticalSectionAccess&) = delete;

private:
  cCriticalSection* myCs;
};

class cSafeCriticalSectionUnlock {
public:
  explicit cSafeCriticalSectionUnlock(cCriticalSection* cs) : myCs(cs) {}
  ~cSafeCriticalSectionUnlock() {
    if (myCs) myCs->exit();
  }
  cSafeCriticalSectionUnlock(const cSafeCriticalSectionUnlock&) = delete;
  cSafeCriticalSectionUnlock& operator=(const cSafeCriticalSectionUnlock&) = delete;

private:
  cCriticalSection* myCs;
};
