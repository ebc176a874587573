#include "job.h"

#include <cxxabi.h>
#include <signal.h>
#include <time.h>
#include <unistd.h>

cJob::cJob(cSysExceptHandler* handler) : myHandler(handler) {
  myStartEvent.create(nullptr, false, false);
}

cJob::~cJob() {
  terminate(4000);
}

int cJob::onExceptionOccured(_EXCEPTION_POINTERS* pointers, unsigned int code) {
  return myHandler ? myHandler->onException(pointers, code) : 0;
}

void* cJob::threadBody(void* arg) {
  pthread_setcanceltype(PTHREAD_CANCEL_ASYNCHRONOUS, nullptr);
  static_cast<cJob*>(arg)->run();
  return nullptr;
}

// Cancellation unwinds this frame with glibc's forced-unwind object, which carries no C++
// object: catching it by reference, as the language's idiom for letting it through does,
// looks like a null reference to the undefined-behaviour checker.
__attribute__((no_sanitize("undefined"))) void cJob::run() {
  // Marks the run finished however it ends, forced unwinding by cancellation included.
  // Clearing myAlive is the thread's last access to the job.
  struct sFinish {
    cJob* job;
    ~sFinish() {
      job->myThread = 0;
      job->myFinished = true;
      job->myAlive = false;
    }
  } finish{this};

  {
    cSafeCriticalSectionAccess guard(&mySection);
    myThread = pthread_self();
    myThreadSelf = pthread_self();
  }
  myStartEvent.set();
  onJobStart();
  unsigned long result = 0;
  try {
    result = static_cast<unsigned long>(static_cast<unsigned int>(onJobRun()));
  } catch (abi::__forced_unwind&) {
    throw; // cancellation must unwind the thread, not be swallowed
  } catch (...) {
    onExceptionOccured(nullptr, 0xFFFFFFFF);
    onJobException();
    result = 0xFFFFFFFF;
  }
  onJobEnd(result);
}

bool cJob::start() {
  if (!terminate(4000)) return false;
  {
    cSafeCriticalSectionAccess guard(&mySection);
    myStop = false;
    myFinished = false;
    myThread = 0;
    myThreadSelf = 0;
  }
  myStartEvent.reset();
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
  pthread_t thread = 0;
  myAlive = true;
  const int rc = pthread_create(&thread, &attr, threadBody, this);
  pthread_attr_destroy(&attr);
  if (rc != 0) {
    myAlive = false;
    myFinished = true;
    return false;
  }
  // The thread records its own handle before it sets the start event; wait for that, so
  // that runs() can probe the thread (a loop, since a condition may wake spuriously).
  while (!myThreadSelf && !myFinished) myStartEvent.wait_ms(10);
  return true;
}

void cJob::stop() {
  cSafeCriticalSectionAccess guard(&mySection);
  myStop = true;
  onJobStopSignal();
}

bool cJob::runs() {
  if (myFinished) return false;
  const pthread_t thread = myThread;
  if (thread && pthread_kill(thread, 0) == 0) return true;
  {
    cSafeCriticalSectionAccess guard(&mySection);
    myThread = 0;
  }
  myFinished = true;
  return false;
}

bool cJob::terminate(int ms) {
  if (!runs()) return waitGone();
  stop();
  if (ms >= 10) {
    for (int i = 0; i < ms / 10 && runs(); ++i) sleep(10);
  }
  const pthread_t thread = myThread;
  if (runs() && thread && pthread_cancel(thread) != 0) return false;
  if (!waitGone()) return false; // the cancelled thread is still unwinding
  myThread = 0;
  return true;
}

bool cJob::waitGone() {
  for (int i = 0; myAlive && i < 5000; ++i) sleep(1);
  return !myAlive;
}

void cJob::sleep(int ms) {
  if (ms <= 0) return;
  timespec t{ms / 1000, static_cast<long>(ms % 1000) * 1000000L};
  while (nanosleep(&t, &t) != 0) {
  }
}

int cJob::maxHWThreads() {
  return static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN));
}
