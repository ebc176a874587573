// cJob: background work on a thread of its own.
//
// Derive, implement onJobRun (the body; it polls haveToStop()), and start(). The hooks
// run on the job's thread in this order: onJobStart, onJobRun, onJobEnd; a body that
// throws calls onExceptionOccured(null, 0xFFFFFFFF) and onJobException and ends with
// 0xFFFFFFFF, never taking the process down. stop() only asks; terminate(ms) asks, polls
// every 10 ms for up to ms, then cancels the thread forcibly (asynchronous cancellation).
//
// A derived class must call terminate() in its own destructor: the base destructor runs
// after the derived hooks are gone.
//
// Forcible cancellation unwinds the job's stack from wherever the thread is. That is safe
// inside calls (I/O, waits, sleeps, library code); a body that spins in pure arithmetic,
// compiled with optimisation, may leave no unwind record for the interrupted instruction,
// and its cancellation then ends the process. Bodies should poll haveToStop() instead.
#pragma once

#include <atomic>
#include <pthread.h>

#include "buffers.h"
#include "event.h"
#include "locks.h"

struct _EXCEPTION_POINTERS; // opaque: no such record exists on this platform

class cSysExceptHandler {
public:
  virtual ~cSysExceptHandler() = default;
  virtual int onException(_EXCEPTION_POINTERS* pointers, unsigned int code) = 0;
};

class cJob {
public:
  explicit cJob(cSysExceptHandler* handler = nullptr);
  cJob(const cJob&) = delete;
  cJob& operator=(const cJob&) = delete;

protected:
  virtual int onJobRun() = 0;
  virtual void onJobStart() {}
  virtual void onJobStopSignal() {}
  virtual void onJobEnd(unsigned long /*result*/) {}
  virtual void onJobException() {}
  virtual int onExceptionOccured(_EXCEPTION_POINTERS* pointers, unsigned int code);

public:
  virtual ~cJob();

  bool start();
  void stop();
  bool haveToStop() const { return myStop; }
  bool runs();
  bool terminate(int ms);
  static void sleep(int ms);

  void setJobName(const unsigned short* name) { myName.set(name); }
  const unsigned short* getName() const { return myName.c_str(); }
  void setExceptionHandler(cSysExceptHandler* handler) { myHandler = handler; }
  cSysExceptHandler* exceptionHandler() const { return myHandler; }
  static int maxHWThreads();

private:
  static void* threadBody(void* job);
  void run();
  // Waits (bounded) until the thread has made its last access to this job.
  bool waitGone();

  cSysExceptHandler* myHandler;
  std::atomic<bool> myStop{false};
  std::atomic<bool> myFinished{true};
  _guardchar<unsigned short> myName;
  cCriticalSection mySection;
  std::atomic<pthread_t> myThread{0};
  cEvent myStartEvent;
  std::atomic<pthread_t> myThreadSelf{0};
  // True from start() until the thread's last access to this job, however it ends.
  std::atomic<bool> myAlive{false};
};
