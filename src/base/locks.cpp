#include "locks.h"

#include <cerrno>

cCriticalSection::cCriticalSection() {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&myMutex, &attr);
  pthread_mutexattr_destroy(&attr);
}

cCriticalSection::~cCriticalSection() {
  pthread_mutex_destroy(&myMutex);
}

bool cCriticalSection::try_enter() {
  const int rc = pthread_mutex_trylock(&myMutex);
  return rc == 0 || rc == EDEADLK;
}
