// The offscreen backend and its test driver.
#include "nsoffscreen.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <map>
#include <stdexcept>

#include "nsplatform.h"

namespace {

constexpr int kStallWaitMs = 2000;
constexpr int kDesktopWidth = 1280, kDesktopHeight = 1024;

struct sOffWnd : sNSWnd {
  int pointer = 0;
};

class cOffscreenPlatform : public cNSPlatform {
public:
  std::deque<std::function<void()>> events;
  std::function<bool()> idleHook;
  std::vector<sNSWnd*> z;    // shown windows, bottom first
  sNSWnd* pressed = nullptr; // the window a held button was pressed on
  int buttons = 0;           // bit 0 left, bit 1 right
  std::string sleepReason;
  bool sleepBlocked = false;

  long long clock = 0; // the timers' clock, moved only by advanceClock

  cOffscreenPlatform() { myScale = chosenScale(1); }
  void setScale(double scale) {
    myScale = scale;
    for (sNSWnd* w : windows()) {
      ensureSurface(w);
      w->markAllDirty();
    }
  }
  // A window's client area on the desktop in device pixels.
  int deviceX(const sNSWnd* w) const { return nsDeviceFloor(w->x, myScale); }
  int deviceY(const sNSWnd* w) const { return nsDeviceFloor(w->y, myScale); }
  int deviceW(const sNSWnd* w) const { return nsDeviceCeil(w->w, myScale); }
  int deviceH(const sNSWnd* w) const { return nsDeviceCeil(w->h, myScale); }
  // A device point of the desktop in a window's logical pixels.
  int localX(const sNSWnd* w, int x) const { return nsLogicalFloor(x - deviceX(w), myScale); }
  int localY(const sNSWnd* w, int y) const { return nsLogicalFloor(y - deviceY(w), myScale); }

  bool offscreen() const override { return true; }
  long long clockMs() const override { return clock; }
  sNSWnd* makeWindow() override { return new sOffWnd; }
  bool realize(sNSWnd*) override { return true; }
  void unrealize(sNSWnd* wnd) override {
    std::erase(z, wnd);
    if (pressed == wnd) pressed = nullptr;
    if (myActive == wnd) myActive = nullptr;
  }
  void map(sNSWnd* wnd) override {
    std::erase(z, wnd);
    z.push_back(wnd);
  }
  void unmap(sNSWnd* wnd) override { std::erase(z, wnd); }
  void ensureSurface(sNSWnd* wnd) override {
    const int w = deviceW(wnd), h = deviceH(wnd);
    double scale = 0, unused = 0;
    if (wnd->surface) cairo_surface_get_device_scale(wnd->surface, &scale, &unused);
    if (wnd->surface && cairo_image_surface_get_width(wnd->surface) == w &&
        cairo_image_surface_get_height(wnd->surface) == h && scale == myScale)
      return;
    if (wnd->surface) cairo_surface_destroy(wnd->surface);
    wnd->surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h);
    cairo_surface_set_device_scale(wnd->surface, myScale, myScale);
  }
  void present(sNSWnd*, int, int, int, int) override {}

  bool dispatchQueued() override {
    // Only what is queued now: events that queue more wait for the next pass.
    size_t count = events.size();
    if (!count) return false;
    while (count-- && !events.empty()) {
      std::function<void()> event = std::move(events.front());
      events.pop_front();
      event();
    }
    return true;
  }
  bool waitEvents() override {
    if (!events.empty()) return true;
    if (idleHook && idleHook()) return true;
    std::unique_lock<std::mutex> hold(myWakeLock);
    const bool woken = myWakeSignal.wait_for(hold, std::chrono::milliseconds(kStallWaitMs),
                                             [this] { return myWoken; });
    myWoken = false;
    return woken;
  }
  void wakeUp() override {
    {
      std::lock_guard<std::mutex> hold(myWakeLock);
      myWoken = true;
    }
    myWakeSignal.notify_all();
  }
  // Drops a wake-up whose window has been served already, so that runUntilIdle does not
  // count it as work.
  void forgetWake() {
    std::lock_guard<std::mutex> hold(myWakeLock);
    myWoken = false;
  }

  bool desktopSize(int& w, int& h) override {
    w = nsLogicalFloor(kDesktopWidth, myScale), h = nsLogicalFloor(kDesktopHeight, myScale);
    return true;
  }
  bool workArea(const sNSPoint*, int& x, int& y, int& w, int& h) override {
    x = y = 0;
    return desktopSize(w, h);
  }
  void setCaption(sNSWnd*) override {}
  void moveResize(sNSWnd*) override {}
  void sizeLimits(sNSWnd*) override {}
  void minimize(sNSWnd*) override {}
  void maximize(sNSWnd* wnd) override {
    wnd->x = wnd->y = 0;
    int w = 0, h = 0;
    desktopSize(w, h);
    resized(wnd, w, h);
  }
  bool setPointer(sNSWnd* wnd, int type) override {
    static_cast<sOffWnd*>(wnd)->pointer = type;
    return true;
  }
  void grabPointer(sNSWnd*, bool) override {}
  void focus(sNSWnd* wnd) override {
    if (wnd->popup || myActive == wnd) return;
    sNSWnd* old = myActive;
    myActive = wnd;
    myFocus = wnd;
    if (old) old->send(nseFocusLost, nullptr);
    if (alive(wnd)) wnd->send(nseFocus, nullptr);
  }
  void modalBegin(sNSWnd* wnd, sNSWnd* owner) override {
    if (!owner || wnd->popup) return;
    // Centred over the owner, as a window manager places a transient dialog.
    wnd->x = owner->x + (owner->w - wnd->w) / 2;
    wnd->y = owner->y + (owner->h - wnd->h) / 2;
  }
  void modalEnd(sNSWnd*, sNSWnd*) override {}
  bool blockSleep(const char* reason) override {
    sleepBlocked = true;
    sleepReason = reason;
    return true;
  }
  void unblockSleep() override {
    sleepBlocked = false;
    sleepReason.clear();
  }
  bool clipSet(eNSClipKind kind, const void* data, long long len) override {
    const auto* bytes = static_cast<const unsigned char*>(data);
    // Text and bytes share the clipboard; PRIMARY stands apart.
    if (kind != nsClipPrimary) {
      myClip.erase(nsClipText);
      myClip.erase(nsClipRaw);
    }
    myClip[kind].assign(bytes, bytes + len);
    return true;
  }
  bool clipGet(eNSClipKind kind, std::vector<unsigned char>& data) override {
    const auto found = myClip.find(kind);
    if (found == myClip.end()) return false;
    data = found->second;
    return true;
  }
  bool clipHas(eNSClipKind kind) override { return myClip.count(kind) != 0; }

  // The shown window at a device point of the desktop, topmost first.
  sNSWnd* at(int x, int y) const {
    for (auto it = z.rbegin(); it != z.rend(); ++it) {
      const sNSWnd* w = *it;
      if (x >= deviceX(w) && y >= deviceY(w) && x < deviceX(w) + deviceW(w) &&
          y < deviceY(w) + deviceH(w))
        return *it;
    }
    return nullptr;
  }
  // Where a mouse event at a device point of the desktop goes.
  sNSWnd* mouseTarget(int x, int y) const {
    if (capture()) return capture();
    if (pressed && alive(pressed)) return pressed;
    return at(x, y);
  }

protected:
  void stalled(sNSWnd* wnd) override {
    throw std::runtime_error("offscreen: the modal run of \"" + wnd->caption +
                             "\" has nothing left to do");
  }

private:
  std::mutex myWakeLock;
  std::condition_variable myWakeSignal;
  bool myWoken = false;
  sNSWnd* myActive = nullptr;
  std::map<int, std::vector<unsigned char>> myClip;
};

cOffscreenPlatform& off() {
  if (!cNSPlatform::current()) {
    setenv("QVRACI_PLATFORM", "offscreen", 1);
    nswnd_init();
  }
  auto* platform = dynamic_cast<cOffscreenPlatform*>(cNSPlatform::current());
  if (!platform) throw std::logic_error("nsoff: the offscreen backend is not in use");
  return *platform;
}

sNSWnd* live(NSWND wnd) {
  return off().alive(wnd) ? wnd : nullptr;
}

} // namespace

std::unique_ptr<cNSPlatform> makeOffscreenPlatform() {
  return std::make_unique<cOffscreenPlatform>();
}

namespace nsoff {

std::vector<sWindowInfo> windows() {
  std::vector<sWindowInfo> out;
  const cOffscreenPlatform& p = off();
  for (sNSWnd* w : p.windows()) {
    out.push_back({w, w->caption, p.deviceX(w), p.deviceY(w), p.deviceW(w), p.deviceH(w), w->popup,
                   w->shown, w->inModal, w->takesInput, static_cast<sOffWnd*>(w)->pointer});
  }
  return out;
}

sWindowInfo topWindow() {
  const std::vector<sNSWnd*>& z = off().z;
  if (z.empty()) return {};
  for (const sWindowInfo& info : windows()) {
    if (info.handle == z.back()) return info;
  }
  return {};
}

NSWND keyTarget() {
  return off().keyTarget();
}

NSWND captured() {
  return off().capture();
}

cairo_surface_t* surface(NSWND wnd) {
  return live(wnd) ? wnd->surface : nullptr;
}

bool writePng(NSWND wnd, const char* path) {
  return live(wnd) && wnd->surface &&
         cairo_surface_write_to_png(wnd->surface, path) == CAIRO_STATUS_SUCCESS;
}

bool writeDesktopPng(const char* path) {
  cOffscreenPlatform& p = off();
  cairo_surface_t* desk =
      cairo_image_surface_create(CAIRO_FORMAT_RGB24, kDesktopWidth, kDesktopHeight);
  cairo_t* cr = cairo_create(desk);
  cairo_set_source_rgb(cr, 0.25, 0.3, 0.35); // an empty desktop
  cairo_paint(cr);
  for (sNSWnd* w : p.z) {
    if (!w->surface) continue;
    cairo_surface_flush(w->surface);
    // The window's pixels as they are, without its device scale.
    cairo_surface_t* pixels = cairo_image_surface_create_for_data(
        cairo_image_surface_get_data(w->surface), cairo_image_surface_get_format(w->surface),
        cairo_image_surface_get_width(w->surface), cairo_image_surface_get_height(w->surface),
        cairo_image_surface_get_stride(w->surface));
    cairo_set_source_surface(cr, pixels, p.deviceX(w), p.deviceY(w));
    cairo_paint(cr);
    cairo_surface_destroy(pixels);
  }
  cairo_destroy(cr);
  const bool ok = cairo_surface_write_to_png(desk, path) == CAIRO_STATUS_SUCCESS;
  cairo_surface_destroy(desk);
  return ok;
}

void move(int x, int y) {
  off().events.push_back([x, y] {
    cOffscreenPlatform& p = off();
    sNSWnd* w = p.mouseTarget(x, y);
    if (!w) return;
    sNSMouseMove e{p.localX(w, x), p.localY(w, y), (p.buttons & 1) != 0, (p.buttons & 2) != 0, {}};
    p.deliver(w, nseMouseMove, &e);
  });
}

void button(int x, int y, int which, bool down, sNSModifiers mods) {
  off().events.push_back([=] {
    cOffscreenPlatform& p = off();
    sNSWnd* w = p.mouseTarget(x, y);
    const int bit = which == 1 ? 1 : which == 2 ? 2 : 0;
    p.buttons = down ? p.buttons | bit : p.buttons & ~bit;
    p.pressed = down ? w : p.buttons ? p.pressed : nullptr;
    if (!w) return;
    sNSMouseButton e{which, p.localX(w, x), p.localY(w, y), down, mods};
    p.deliver(w, nseMouseButton, &e);
  });
}

void click(int x, int y, int which, sNSModifiers mods) {
  button(x, y, which, true, mods);
  button(x, y, which, false, mods);
}

void wheel(int x, int y, int notches, sNSModifiers mods) {
  off().events.push_back([=] {
    cOffscreenPlatform& p = off();
    sNSWnd* w = p.mouseTarget(x, y);
    if (!w) return;
    sNSWheel e{p.localX(w, x), p.localY(w, y), 0, notches, 0, mods};
    p.deliver(w, nseWheel, &e);
  });
}

void key(int code, sNSModifiers mods) {
  for (const bool down : {true, false}) {
    off().events.push_back([=] {
      cOffscreenPlatform& p = off();
      sNSKey e{code, down, mods};
      if (sNSWnd* w = p.keyTarget()) p.deliver(w, nseKey, &e);
    });
  }
}

void type(const char* utf8) {
  // As an input method would hand them over, control characters included: the layers
  // above must drop those themselves.
  std::vector<unsigned short> units;
  const std::string text = utf8 ? utf8 : "";
  nsTextUnits(text.data(), static_cast<long long>(text.size()), false, units);
  for (const unsigned short unit : units) {
    off().events.push_back([unit] {
      cOffscreenPlatform& p = off();
      sNSChar e{unit, false, false};
      if (sNSWnd* w = p.keyTarget()) p.deliver(w, nseChar, &e);
    });
  }
}

void closeRequest(NSWND wnd) {
  off().events.push_back([wnd] {
    if (live(wnd)) off().deliver(wnd, nseClose, nullptr);
  });
}

void post(std::function<void()> f) {
  off().events.push_back(std::move(f));
}

void advanceClock(int ms) {
  off().clock += std::max(0, ms);
  runUntilIdle();
}

void runUntilIdle() {
  cOffscreenPlatform& p = off();
  while (p.pass(false)) {
  }
  p.forgetWake();
}

bool runUntil(const std::function<bool()>& done, int timeoutMs) {
  cOffscreenPlatform& p = off();
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!done()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    if (!p.pass(false)) p.waitEvents();
  }
  return true;
}

void setIdleHook(std::function<bool()> hook) {
  off().idleHook = std::move(hook);
}

void setScale(double scale) {
  off().setScale(std::clamp(scale, 1.0, 4.0));
}

std::string sleepBlockReason() {
  return off().sleepBlocked ? off().sleepReason : std::string();
}

} // namespace nsoff
