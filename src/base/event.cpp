#include "event.h"

#include <cerrno>
#include <sys/time.h>

bool cEvent::create(const unsigned short*, bool initiallySet, bool manualReset) {
  close();
  myManualReset = manualReset;
  mySignalled = initiallySet;
  pthread_mutex_init(&myMutex, nullptr);
  pthread_cond_init(&myCond, nullptr);
  myValid = true;
  return true;
}

void cEvent::close() {
  if (!myValid) return;
  pthread_cond_destroy(&myCond);
  pthread_mutex_destroy(&myMutex);
  myValid = false;
}

bool cEvent::set() {
  if (!myValid || pthread_mutex_lock(&myMutex) != 0) return false;
  mySignalled = true;
  pthread_cond_signal(&myCond);
  pthread_mutex_unlock(&myMutex);
  return true;
}

void cEvent::consume() {
  if (myManualReset) {
    pthread_cond_signal(&myCond);
  } else {
    mySignalled = false;
  }
}

int cEvent::timedWait(unsigned int ms) {
  timeval now;
  gettimeofday(&now, nullptr);
  timespec deadline;
  deadline.tv_sec = now.tv_sec + ms / 1000;
  deadline.tv_nsec = static_cast<long>(ms % 1000) * 1000000L + now.tv_usec * 1000L;
  return pthread_cond_timedwait(&myCond, &myMutex, &deadline);
}

bool cEvent::wait() {
  if (!myValid || pthread_mutex_lock(&myMutex) != 0) return false;
  int rc = 0;
  if (!mySignalled) rc = pthread_cond_wait(&myCond, &myMutex); // one wait, no loop
  consume();
  pthread_mutex_unlock(&myMutex);
  return rc == 0;
}

bool cEvent::try_wait() {
  if (!myValid || pthread_mutex_lock(&myMutex) != 0) return false;
  if (!mySignalled && timedWait(0) != 0) {
    pthread_mutex_unlock(&myMutex);
    return false;
  }
  consume();
  pthread_mutex_unlock(&myMutex);
  return true;
}

bool cEvent::reset() {
  if (!myValid || pthread_mutex_lock(&myMutex) != 0) return false;
  mySignalled = false;
  timedWait(0); // absorbs a wake-up that is under way
  pthread_mutex_unlock(&myMutex);
  return true;
}

int cEvent::wait_ms(unsigned int ms) {
  if (!myValid || pthread_mutex_lock(&myMutex) != 0) return 0;
  int result;
  if (mySignalled) {
    result = myManualReset ? 2 : 0;
    consume();
  } else {
    const int rc = timedWait(ms);
    result = rc == 0 ? 2 : rc == ETIMEDOUT ? 1 : 0;
    if (result != 0) {
      if (myManualReset) result = 2;
      consume();
    }
  }
  pthread_mutex_unlock(&myMutex);
  return result;
}
