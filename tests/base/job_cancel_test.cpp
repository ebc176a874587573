// Forcible cancellation of a job that ignores stop. It unwinds the thread from a signal,
// which AddressSanitizer cannot follow, so this runs in a program of its own built
// without the sanitizers.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "base/job.h"

namespace {

class cHungJob : public cJob {
public:
  ~cHungJob() override { terminate(4000); }
  std::atomic<bool> sleeping{false};
  std::atomic<bool> ended{false};

protected:
  int onJobRun() override {
    sleeping = true;
    for (;;) cJob::sleep(1); // never polls haveToStop
  }
  void onJobEnd(unsigned long) override { ended = true; }
};

TEST(JobCancel, TerminateBelowTenMillisecondsCancelsAtOnce) {
  for (int round = 0; round < 20; ++round) {
    cHungJob job;
    ASSERT_TRUE(job.start());
    while (!job.sleeping) cJob::sleep(1);
    EXPECT_TRUE(job.runs());
    const auto before = std::chrono::steady_clock::now();
    EXPECT_TRUE(job.terminate(5)); // no polling: stop, then cancel
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
    EXPECT_FALSE(job.runs());
    EXPECT_TRUE(job.haveToStop());
    EXPECT_FALSE(job.ended); // cancelled bodies do not reach onJobEnd
  }
}

TEST(JobCancel, PollsBeforeCancelling) {
  cHungJob job;
  ASSERT_TRUE(job.start());
  while (!job.sleeping) cJob::sleep(1);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_TRUE(job.terminate(50)); // five polls of 10 ms, then cancelled
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(40));
  EXPECT_FALSE(job.runs());
  ASSERT_TRUE(job.start()); // and it can run again
  while (!job.sleeping) cJob::sleep(1);
  EXPECT_TRUE(job.runs());
}

} // namespace
