// A test over the offscreen backend with a window maker, and the centre of an element on
// the desktop (where a click at it lands).
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <vector>

#include "ciplatform/nswmaker.h"
#include "nslib/nsoffscreen.h"

class cOffscreenTest : public ::testing::Test {
protected:
  static void SetUpTestSuite() { setenv("QVRACI_PLATFORM", "offscreen", 1); }
  void SetUp() override {
    maker = cWindowMaker::newWindowMaker(nullptr, nullptr, 0, 0);
    ASSERT_NE(maker, nullptr);
  }
  void TearDown() override {
    nsoff::setIdleHook(nullptr);
    nsoff::runUntilIdle();
  }
  cNSWMaker& ns() { return static_cast<cNSWMaker&>(*maker); }

  std::unique_ptr<cWindowMaker> maker;
};

inline sPoint centreOf(cChildElement* e) {
  sPoint at;
  e->absPos(at);
  return {at.x + e->width() / 2, at.y + e->height() / 2};
}

// Hands one step to the loop each time a modal run goes idle; the run ends (or the
// backend's stall check throws) once the steps are used up. With ready, a step waits until
// it holds, the loop meanwhile waiting for other threads (a job's news).
class cScript {
public:
  explicit cScript(std::vector<std::function<void()>> steps, std::function<bool()> ready = {})
      : mySteps(std::move(steps)), myReady(std::move(ready)) {
    nsoff::setIdleHook([this] {
      if (myNext >= mySteps.size() || (myReady && !myReady())) return false;
      mySteps[myNext++]();
      return true;
    });
  }
  ~cScript() { nsoff::setIdleHook(nullptr); }
  size_t done() const { return myNext; }

private:
  std::vector<std::function<void()>> mySteps;
  std::function<bool()> myReady;
  size_t myNext = 0;
};
