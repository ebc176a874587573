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
  // The window of root, settled; the caller keeps it in a variable declared after root, so
  // that the window goes first.
  std::unique_ptr<cWindowHolder> open(cChildElement* root, int w, int h, int x = 0, int y = 0) {
    std::unique_ptr<cWindowHolder> holder(ns().asyncwnd("test", w, h, root, nullptr, true, x, y));
    EXPECT_NE(holder, nullptr);
    nsoff::runUntilIdle();
    return holder;
  }

  std::unique_ptr<cWindowMaker> maker;
};

inline sPoint centreOf(cChildElement* e) {
  sPoint at;
  e->absPos(at);
  return {at.x + e->width() / 2, at.y + e->height() / 2};
}

// A click at the centre of e, a key press or typed text, each followed by the loop's work.
inline void clickOn(cChildElement* e, int button = 1) {
  ASSERT_NE(e, nullptr);
  const sPoint p = centreOf(e);
  nsoff::click(p.x, p.y, button);
  nsoff::runUntilIdle();
}
inline void pressKey(int key, sNSModifiers mods = {}) {
  nsoff::key(key, mods);
  nsoff::runUntilIdle();
}
inline void typeText(const char* text) {
  nsoff::type(text);
  nsoff::runUntilIdle();
}

// Where e lies in its parent.
inline sRect rectOf(cChildElement* e) {
  sRect r;
  e->childRect(&r);
  return r;
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
