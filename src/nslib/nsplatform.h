// What both backends share: the window record, the registry of live windows, modal runs,
// input blocking, wake-ups from other threads, dirty areas and the painting pass. A
// backend supplies the platform's side through the virtual operations.
#pragma once

#include <atomic>
#include <cairo.h>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_set>
#include <vector>

#include "nswnd.h"

struct sNSPoint {
  int x = 0, y = 0;
};

struct sNSWnd {
  virtual ~sNSWnd();

  tNSWndCallback callback = nullptr;
  void* param = nullptr;
  bool popup = false, takesInput = true, resizable = true;
  bool shown = false;
  NSWND owner = nullptr;
  std::string caption;
  int x = 0, y = 0, w = 0, h = 0;             // desktop position of the client area, client size
  int minW = 0, minH = 0, maxW = 0, maxH = 0; // 0: no limit
  int modalResult = kNSModalRunning;
  bool inModal = false;
  // The area to repaint, empty when x0 >= x1.
  int dirtyX0 = 0, dirtyY0 = 0, dirtyX1 = 0, dirtyY1 = 0;
  // Set by nswnd_notify_action from any thread, under the registry's lock.
  bool wake = false;
  // The back buffer the window paints into, in device pixels with the platform's scale as
  // its device scale, so that painters draw in logical pixels; the backend shows it.
  cairo_surface_t* surface = nullptr;

  long send(int code, void* data) { return callback ? callback(code, data, param) : 0; }
  void markDirty(int x, int y, int w, int h);
  void markAllDirty() { markDirty(0, 0, w, h); }
};

// Logical and device pixels. Window geometry, input and painting stay in logical pixels
// everywhere above the backends; a backend multiplies by its scale where it meets the
// screen. Sizes and far edges round up, so that logical content always covers the device
// area; points round down.
int nsDeviceCeil(double logical, double scale);
int nsDeviceFloor(double logical, double scale);
int nsLogicalCeil(double device, double scale);
int nsLogicalFloor(double device, double scale);
// A scale from text ("1.5"): 1 to 4, else 0.
double nsParseScale(const char* text);
// The scale for a desktop font resolution (Xft.dpi): dpi / 96 to the nearest quarter, at
// least 1 and at most 4; 1 for a value that is not a resolution.
double nsScaleOfDpi(const char* text);

class cNSPlatform {
public:
  virtual ~cNSPlatform();

  static cNSPlatform* current();
  // Device pixels per logical pixel.
  double scale() const { return myScale; }
  // Installs the backend chosen by the environment; false (with a reason) when it fails.
  static bool open(std::string& error);

  bool alive(const sNSWnd* wnd) const;
  // Any thread.
  bool notify(sNSWnd* wnd);

  NSWND create(const char* caption, int x, int y, int w, int h, bool popup, NSWND owner,
               bool takesInput, tNSWndCallback callback, void* param);
  void destroy(sNSWnd* wnd);
  void showWindow(sNSWnd* wnd);
  int modal(sNSWnd* wnd, sNSWnd* owner);
  void msgloop();
  // Handles wake-ups, queued events and painting once; waits for more when there was
  // nothing to do and mayWait is set. False when nothing is left to do and nothing can
  // come any more.
  bool pass(bool mayWait);
  // Ends every run, now and from then on: modal runs return 0 and the message loop ends.
  // Only sets a flag and wakes the loop, so a signal handler may call it.
  static void requestEnd();
  // Timers (nswg_timer_start): kept in start order, fired by pass() once due.
  unsigned startTimer(unsigned ms, bool repeat, tNSTimerCallback fn, void* param);
  void stopTimer(unsigned id);
  // Milliseconds until the next timer is due (0 when one is), or -1 when none runs.
  int nextTimerMs() const;
  // The window holding the pointer, or null.
  sNSWnd* capture() const { return myCapture; }
  void setCapture(sNSWnd* wnd);
  void resized(sNSWnd* wnd, int w, int h);
  // Records where the window now stands; tells it when that changed.
  void moved(sNSWnd* wnd, int x, int y);
  // The innermost running modal window, or null.
  sNSWnd* modalTop() const { return myModals.empty() ? nullptr : myModals.back(); }
  // The window that takes keys: an open popup taking input, the innermost modal window,
  // else the focused window.
  sNSWnd* keyTarget() const;
  // Delivers an input or close event, unless a modal run blocks the window.
  long deliver(sNSWnd* wnd, int code, void* data);
  std::vector<sNSWnd*> windows() const;

  // --- the backend's part ---
  virtual bool offscreen() const = 0;
  virtual bool framed() { return false; }
  virtual sNSWnd* makeWindow() = 0;
  // Creates the platform window for a filled record (unshown); false when it cannot.
  virtual bool realize(sNSWnd* wnd) = 0;
  virtual void unrealize(sNSWnd* wnd) = 0;
  virtual void map(sNSWnd* wnd) = 0;
  virtual void unmap(sNSWnd* wnd) = 0;
  // Makes the back buffer match the window's size.
  virtual void ensureSurface(sNSWnd* wnd) = 0;
  // Shows the painted part of the back buffer.
  virtual void present(sNSWnd* wnd, int x, int y, int w, int h) = 0;
  // Dispatches every event that has arrived; true when there was one.
  virtual bool dispatchQueued() = 0;
  // Waits until something may have arrived; false when nothing can.
  virtual bool waitEvents() = 0;
  // Wakes waitEvents. Any thread.
  virtual void wakeUp() = 0;
  virtual bool desktopSize(int& w, int& h) = 0;
  // The usable part of a monitor in logical pixels: the one holding near (a desktop
  // point), or the primary one for null.
  virtual bool workArea(const sNSPoint* near, int& x, int& y, int& w, int& h) = 0;
  // Moves a window into the usable part of the monitor holding near, as far as it fits.
  void fitOnMonitor(sNSWnd* wnd, const sNSPoint* near);
  virtual void setCaption(sNSWnd* wnd) = 0;
  virtual void moveResize(sNSWnd* wnd) = 0;
  virtual void sizeLimits(sNSWnd* wnd) = 0;
  virtual void minimize(sNSWnd* wnd) = 0;
  virtual void maximize(sNSWnd* wnd) = 0;
  virtual bool setPointer(sNSWnd* wnd, int type) = 0;
  virtual void grabPointer(sNSWnd* wnd, bool on) = 0;
  virtual void focus(sNSWnd* wnd) = 0;
  virtual unsigned long nativeId(sNSWnd*) { return 0; }
  virtual void modalBegin(sNSWnd* wnd, sNSWnd* owner) = 0;
  virtual void modalEnd(sNSWnd* wnd, sNSWnd* owner) = 0;
  virtual bool blockSleep(const char* reason) = 0;
  virtual void unblockSleep() = 0;
  virtual bool clipSet(eNSClipKind kind, const void* data, long long len) = 0;
  virtual bool clipGet(eNSClipKind kind, std::vector<unsigned char>& data) = 0;
  virtual bool clipHas(eNSClipKind kind) = 0;

  // The timers' clock in milliseconds: steady time, or the offscreen driver's own.
  virtual long long clockMs() const;

protected:
  // Called when a modal loop has nothing to do and nothing can come (offscreen only).
  virtual void stalled(sNSWnd* wnd) = 0;
  // The scale that QVRACI_SCALE asks for, else fallback; a value that is not a scale is
  // reported once on stderr and ignored.
  static double chosenScale(double fallback);
  sNSWnd* myFocus = nullptr;
  double myScale = 1;

private:
  struct sTimer {
    unsigned id = 0;
    long long due = 0;
    unsigned period = 0; // 0: once
    tNSTimerCallback fn = nullptr;
    void* param = nullptr;
  };

  bool fireTimers();
  bool deliverWakes();
  bool paintDirty();
  bool blocked(const sNSWnd* wnd) const;

  mutable std::mutex myLock; // guards myWindows and every window's wake flag
  std::unordered_set<const sNSWnd*> myWindows;
  std::vector<sNSWnd*> myOrder; // creation order, for painting and listing
  std::vector<sNSWnd*> myModals;
  sNSWnd* myCapture = nullptr;
  std::vector<sTimer> myTimers;
  unsigned myLastTimerId = 0;
};

// Appends UTF-8 text as UTF-16 units (surrogate pairs above the BMP); malformed bytes are
// skipped. Typed text leaves out control characters (below 0x20 and 0x7F to 0x9F).
void nsTextUnits(const char* utf8, long long len, bool typed, std::vector<unsigned short>& units);

std::unique_ptr<cNSPlatform> makeOffscreenPlatform();
// Null, with the reason in error, when the display cannot be opened.
std::unique_ptr<cNSPlatform> makeXlibPlatform(std::string& error);
