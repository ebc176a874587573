// Locks, events and jobs with real threads; fatal signals as exceptions; clock and calendar.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <future>
#include <random>
#include <sys/time.h>
#include <thread>
#include <vector>

#include "base/clock.h"
#include "base/event.h"
#include "base/except.h"
#include "base/job.h"
#include "base/locks.h"

namespace {

using namespace std::chrono_literals;

TEST(CriticalSection, RecursiveAndExclusive) {
  cCriticalSection cs;
  cs.enter();
  EXPECT_TRUE(cs.try_enter()); // the owner may enter again
  auto other = std::async(std::launch::async, [&] { return cs.try_enter(); });
  EXPECT_FALSE(other.get());
  cs.exit();
  cs.exit();
  EXPECT_TRUE(std::async(std::launch::async, [&] {
                bool got = cs.try_enter();
                if (got) cs.exit();
                return got;
              }).get());
  {
    cSafeCriticalSectionAccess guard(&cs);
    EXPECT_FALSE(std::async(std::launch::async, [&] { return cs.try_enter(); }).get());
  }
  cs.enter();
  { cSafeCriticalSectionUnlock unlock(&cs); }
  EXPECT_TRUE(std::async(std::launch::async, [&] {
                bool got = cs.try_enter();
                if (got) cs.exit();
                return got;
              }).get());
  cSafeCriticalSectionAccess none(nullptr); // a null section is allowed
}

TEST(Event, AutoResetCodes) {
  cEvent e;
  EXPECT_FALSE(e.set()); // not created
  EXPECT_EQ(e.wait_ms(0), 0);
  ASSERT_TRUE(e.create(nullptr, false, false));
  EXPECT_EQ(e.wait_ms(0), 1); // unsignalled: times out
  e.set();
  EXPECT_EQ(e.wait_ms(0), 0); // already set: 0, deliberately, and cleared
  EXPECT_EQ(e.wait_ms(0), 1);
  e.set();
  EXPECT_TRUE(e.try_wait());
  EXPECT_FALSE(e.try_wait());
  e.set();
  EXPECT_TRUE(e.reset());
  EXPECT_FALSE(e.try_wait());
  e.close();
  EXPECT_FALSE(e.valid());
  EXPECT_FALSE(e.wait());
}

TEST(Event, ManualResetStaysSetAndReportsTwo) {
  cEvent e;
  e.create(nullptr, true, true);
  EXPECT_EQ(e.wait_ms(0), 2);
  EXPECT_TRUE(e.wait());
  EXPECT_TRUE(e.try_wait());
  e.reset();
  EXPECT_EQ(e.wait_ms(0), 2); // a manual-reset event reports 2 even when timed out
}

TEST(Event, DeadlineNanosecondsAreNotCarried) {
  cEvent e;
  e.create(nullptr, false, false);
  // With at least 1 ms in the current second, 999 ms of nanoseconds plus the current
  // microseconds reach one second: the deadline is refused at once with 0.
  timeval now;
  do {
    gettimeofday(&now, nullptr);
  } while (now.tv_usec < 5000 || now.tv_usec > 900000);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(e.wait_ms(999), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - before, 500ms);
}

TEST(Event, SetWakesAWaiterOnAnotherThread) {
  cEvent e;
  e.create(nullptr, false, false);
  auto waiter = std::async(std::launch::async, [&] { return e.wait_ms(10000); });
  std::this_thread::sleep_for(
      20ms); // give the waiter time to block; correctness does not depend on it
  e.set();
  ASSERT_EQ(waiter.wait_for(10s), std::future_status::ready);
  EXPECT_NE(waiter.get(), 1);
}

TEST(Event, ManualResetPassesTheWakeUpOn) {
  cEvent e;
  e.create(nullptr, false, true);
  std::atomic<int> blocked{0};
  auto waitOnce = [&] {
    ++blocked;
    return e.wait();
  };
  auto first = std::async(std::launch::async, waitOnce);
  auto second = std::async(std::launch::async, waitOnce);
  while (blocked < 2) std::this_thread::yield();
  std::this_thread::sleep_for(20ms);
  e.set(); // one signal; each woken waiter wakes the next
  ASSERT_EQ(first.wait_for(10s), std::future_status::ready);
  ASSERT_EQ(second.wait_for(10s), std::future_status::ready);
  EXPECT_TRUE(first.get());
  EXPECT_TRUE(second.get());
}

class cRecordingHandler : public cSysExceptHandler {
public:
  int onException(_EXCEPTION_POINTERS* pointers, unsigned int code) override {
    sawNull = pointers == nullptr;
    lastCode = code;
    return 1;
  }
  bool sawNull = false;
  unsigned int lastCode = 0;
};

// The job has ended once its event was already set (0) or gets set while we wait (2).
bool ended(cEvent& e) {
  return e.wait_ms(10000) != 1;
}

class cTestJob : public cJob {
public:
  using cJob::cJob;
  ~cTestJob() override { terminate(4000); }

  std::function<int(cTestJob&)> body;
  std::vector<std::string> calls;
  std::atomic<unsigned long> endResult{0};
  cEvent ended;

protected:
  int onJobRun() override {
    calls.push_back("run");
    return body(*this);
  }
  void onJobStart() override { calls.push_back("start"); }
  void onJobStopSignal() override { stopSignals++; }
  void onJobEnd(unsigned long result) override {
    calls.push_back("end");
    endResult = result;
    ended.set();
  }
  void onJobException() override { calls.push_back("exception"); }

public:
  std::atomic<int> stopSignals{0};
};

TEST(Job, HooksInOrderAndTheResult) {
  cTestJob job;
  job.ended.create(nullptr, false, false);
  job.body = [](cTestJob&) { return 42; };
  EXPECT_FALSE(job.runs());
  ASSERT_TRUE(job.start());
  ASSERT_TRUE(ended(job.ended));
  EXPECT_TRUE(job.terminate(4000));
  EXPECT_EQ(job.endResult, 42u);
  EXPECT_EQ(job.calls, (std::vector<std::string>{"start", "run", "end"}));
  EXPECT_FALSE(job.runs());
  job.calls.clear();
  ASSERT_TRUE(job.start()); // a finished job starts again
  ASSERT_TRUE(ended(job.ended));
  EXPECT_TRUE(job.terminate(4000));
  EXPECT_EQ(job.calls.size(), 3u);
}

TEST(Job, AThrowingBodyIsSwallowed) {
  cRecordingHandler handler;
  cTestJob job(&handler);
  job.ended.create(nullptr, false, false);
  job.body = [](cTestJob&) -> int { throw std::runtime_error("body failed"); };
  ASSERT_TRUE(job.start());
  ASSERT_TRUE(ended(job.ended));
  job.terminate(4000);
  EXPECT_EQ(job.endResult, 0xFFFFFFFFu);
  EXPECT_EQ(job.calls, (std::vector<std::string>{"start", "run", "exception", "end"}));
  EXPECT_TRUE(handler.sawNull);
  EXPECT_EQ(handler.lastCode, 0xFFFFFFFFu);
}

TEST(Job, StopIsPolledByTheBody) {
  cTestJob job;
  job.ended.create(nullptr, false, false);
  job.body = [](cTestJob& self) {
    while (!self.haveToStop()) cJob::sleep(1);
    return 7;
  };
  ASSERT_TRUE(job.start());
  EXPECT_TRUE(job.runs());
  EXPECT_TRUE(job.terminate(10000)); // asks, and the body honours it while polled
  EXPECT_TRUE(ended(job.ended));
  EXPECT_EQ(job.endResult, 7u);
  EXPECT_EQ(job.stopSignals, 1);
  EXPECT_FALSE(job.runs());
}

TEST(Job, NameHandlerAndProcessors) {
  cJob::sleep(0);
  EXPECT_GE(cJob::maxHWThreads(), 1);
  cTestJob job;
  const unsigned short name[] = {'s', 'c', 'a', 'n', 0};
  job.setJobName(name);
  EXPECT_EQ(job.getName()[3], 'n');
  cRecordingHandler handler;
  job.setExceptionHandler(&handler);
  EXPECT_EQ(job.exceptionHandler(), &handler);
}

// Faults on purpose; the sanitizers must not report the null access first.
__attribute__((no_sanitize("undefined", "address"), noinline)) int readThrough(volatile int* p) {
  return *p;
}

__attribute__((no_sanitize("undefined"), noinline)) int divide(int a, int b) {
  volatile int divisor = b;
  volatile int quotient = a / divisor; // kept: an unused quotient may be optimised away
  return quotient;
}

TEST(SignalTranslator, FaultsBecomeExceptions) {
  cException::init();
  volatile int* nothing = nullptr;
  for (int round = 0; round < 2; ++round) { // the signal stays deliverable after a catch
    try {
      volatile int sink = readThrough(nothing);
      ADD_FAILURE() << "no fault " << sink;
    } catch (const cException& e) {
      EXPECT_EQ(e.code(), 11u);
      EXPECT_STREQ(e.message(), "Signal received");
      EXPECT_STREQ(e.file(), "src/base/except");
      EXPECT_EQ(e.line(), 6u);
    }
  }
  try {
    volatile int sink = divide(1, 0);
    ADD_FAILURE() << "no fault " << sink;
  } catch (const cException& e) {
    EXPECT_EQ(e.code(), static_cast<unsigned int>(SIGFPE));
  }
  EXPECT_EQ(std::signal(SIGPIPE, SIG_IGN), SIG_IGN);
  EXPECT_EQ(std::signal(SIGHUP, SIG_IGN), SIG_IGN);
}

sTimestamp stamp(int y, int mo, int d, int h = 0, int mi = 0, int s = 0) {
  return {static_cast<uint16_t>(y), static_cast<uint8_t>(mo), static_cast<uint8_t>(d),
          static_cast<uint8_t>(h),  static_cast<uint8_t>(mi), static_cast<uint8_t>(s)};
}

TEST(Clock, TicksStartAtZero) {
  EXPECT_EQ(ticks_ms(), 0u); // the first call in this program
  const unsigned long long us = ticks_us();
  EXPECT_NEAR(static_cast<double>(us / 1000000ULL), static_cast<double>(time(nullptr)), 2.0);
}

TEST(Calendar, BoundaryDates) {
  EXPECT_EQ(toUnix(stamp(2000, 2, 29)), 951782400u);
  EXPECT_EQ(toUnix(stamp(1969, 12, 31, 23, 59, 59)), 0u);
  EXPECT_EQ(toUnix(stamp(1970, 1, 1)), 0u);
  EXPECT_EQ(toUnix(stamp(1972, 3, 1)), 68256000u);
  EXPECT_EQ(toUnix(stamp(2001, 1, 1)), 978307200u);
  // Every century is given 36524 days: from 2401 on the result is a day short.
  const sTimestamp late = stamp(2401, 1, 1);
  tm fields = {};
  fields.tm_year = 2401 - 1900;
  fields.tm_mday = 1;
  EXPECT_EQ(toUnix(late), static_cast<unsigned long long>(timegm(&fields)) - 86400);
}

TEST(Calendar, SpreadOfDatesAgreesWithTheCLibrary) {
  std::mt19937 rng(3);
  for (int i = 0; i < 20000; ++i) {
    tm fields = {};
    fields.tm_year = 70 + static_cast<int>(rng() % 430); // 1970 .. 2399
    fields.tm_mon = static_cast<int>(rng() % 12);
    fields.tm_mday = 1 + static_cast<int>(rng() % 28);
    fields.tm_hour = static_cast<int>(rng() % 24);
    fields.tm_min = static_cast<int>(rng() % 60);
    fields.tm_sec = static_cast<int>(rng() % 60);
    const sTimestamp s = stamp(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday,
                               fields.tm_hour, fields.tm_min, fields.tm_sec);
    ASSERT_EQ(toUnix(s), static_cast<unsigned long long>(timegm(&fields)))
        << fields.tm_year + 1900 << "-" << fields.tm_mon + 1 << "-" << fields.tm_mday;
  }
}

TEST(Calendar, WindowsTimeAndText) {
  EXPECT_EQ(toWinTime(stamp(1970, 1, 1)), kWinEpochTicks);
  EXPECT_EQ(toWinTime(86400u, 0), kWinEpochTicks + 86400ULL * 10000000ULL);
  EXPECT_EQ(toUnixTime(toWinTime(stamp(2024, 2, 29, 12))), toUnix(stamp(2024, 2, 29, 12)));
  EXPECT_EQ(toUnixBigTime(5), 0u);
  sTimestamp s;
  winToTimestamp(toWinTime(stamp(2031, 7, 4, 5, 6, 7)), s);
  EXPECT_EQ(s.year, 2031);
  EXPECT_EQ(s.second, 7);
  unixToTimestamp(951782400u, s);
  EXPECT_EQ(s.month, 2);
  EXPECT_EQ(s.day, 29);

  char text[32];
  EXPECT_TRUE(unixToStr(0, text, sizeof text));
  EXPECT_STREQ(text, "-");
  EXPECT_TRUE(unixToStr(0xFFFFFFFF, text, sizeof text));
  EXPECT_STREQ(text, "-");
  EXPECT_TRUE(unixToStr(86400, text, sizeof text));
  EXPECT_STREQ(text, "02.01.1970 00:00:00");
  EXPECT_FALSE(unixToStr(86400, nullptr, 32));
  EXPECT_FALSE(unixToStr(86400, text, 0));
  getCurrTimestamp(s);
  EXPECT_GE(s.year, 2024);
}

// Runs f with TZ set to zone, restoring the old zone afterwards.
template <class F> void inZone(const char* zone, F f) {
  const char* old = std::getenv("TZ");
  const std::string saved = old ? old : "";
  setenv("TZ", zone, 1);
  base_detail::resetClockCaches();
  f();
  if (old)
    setenv("TZ", saved.c_str(), 1);
  else
    unsetenv("TZ");
  base_detail::resetClockCaches();
}

TEST(Clock, ZoneOffsetIsComputedOnce) {
  inZone("UTC-3", [] {
    EXPECT_EQ(timeZoneMin(), 180);
    EXPECT_EQ(utcToLocal(1000), 1000 + 10800);
    EXPECT_EQ(localToUTC(1000), 1000 - 10800);
    setenv("TZ", "UTC+5", 1);
    tzset();
    EXPECT_EQ(timeZoneMin(), 180);          // cached
    EXPECT_EQ(localTimeFixDLT(5000), 5000); // no daylight saving in this zone
  });
}

} // namespace
