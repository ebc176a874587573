// The benchmarks' window maker: the offscreen backend, made on first use.
#pragma once

#include <cstdlib>
#include <memory>

#include "ciplatform/nswmaker.h"

inline cNSWMaker& offscreenMaker() {
  static std::unique_ptr<cWindowMaker> made = [] {
    setenv("QVRACI_PLATFORM", "offscreen", 1);
    return cWindowMaker::newWindowMaker(nullptr, nullptr, 0, 0);
  }();
  return static_cast<cNSWMaker&>(*made);
}
