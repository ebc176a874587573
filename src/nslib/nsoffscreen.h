// The test driver of the offscreen backend (QVRACI_PLATFORM=offscreen).
//
// Windows live in memory as Cairo image surfaces on a desktop of 1280 × 1024 device
// pixels, drawn at the scale that QVRACI_SCALE or setScale asks for (1 by default); a
// shown window takes the focus, popups and newer windows lie above older ones. Input is
// queued here and delivered by the message loop in order, each event going where the X11
// backend would send it: mouse events to the window under the point (or to the window
// holding the pointer, with coordinates outside it when the point is), keys and text to
// the open popup, the running modal window or the focused window.
//
// A modal run that has nothing left to do asks the idle hook for more; when the hook has
// none and no other thread wakes the loop within two seconds, the run throws
// std::runtime_error rather than hang.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <cairo.h>

#include "nswnd.h"

namespace nsoff {

struct sWindowInfo {
  NSWND handle = nullptr;
  std::string caption;
  int x = 0, y = 0, w = 0, h = 0; // client area on the desktop, in device pixels
  bool popup = false, shown = false, modal = false, takesInput = true;
  int pointer = 0;
};

// Every live window, oldest first.
std::vector<sWindowInfo> windows();
// The newest shown window, or a null handle.
sWindowInfo topWindow();
// The window that keys go to, or null.
NSWND keyTarget();
NSWND captured();
cairo_surface_t* surface(NSWND wnd);
bool writePng(NSWND wnd, const char* path);
// The whole desktop with every shown window in its stacking order.
bool writeDesktopPng(const char* path);

// Device pixels per logical pixel, 1 to 4. Windows keep their logical size: a new scale
// remakes their surfaces and repaints them.
void setScale(double scale);

// Queued input, at device coordinates of the desktop, as a user's pointer gives them.
void move(int x, int y);
void button(int x, int y, int button, bool down, sNSModifiers mods = {});
void click(int x, int y, int button = 1, sNSModifiers mods = {});
void wheel(int x, int y, int notches, sNSModifiers mods = {});
// A key pressed and released (toolkit codes).
void key(int code, sNSModifiers mods = {});
// Text as an input method delivers it: UTF-16 units, no key events.
void type(const char* utf8);
void closeRequest(NSWND wnd);
// Runs f on the GUI thread as the next queued event.
void post(std::function<void()> f);

// Moves the timers' clock on by ms and runs the loop until idle, so that every timer due
// by then fires (a repeating one once per call at most).
void advanceClock(int ms);

// Runs the loop until nothing is left to do (no queued input, wake-up or repaint).
void runUntilIdle();
// Runs the loop until done() holds, waiting for other threads up to timeoutMs in all;
// false on timeout.
bool runUntil(const std::function<bool()>& done, int timeoutMs = 5000);
// Asked when a modal run has nothing to do; returns false when it has nothing to add.
void setIdleHook(std::function<bool()> hook);

std::string sleepBlockReason(); // empty when the display may sleep

} // namespace nsoff
