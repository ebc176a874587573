// A test over the offscreen backend with a window maker, and the centre of an element on
// the desktop (where a click at it lands).
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

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
