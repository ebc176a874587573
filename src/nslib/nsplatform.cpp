#include "nsplatform.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

std::unique_ptr<cNSPlatform>& slot() {
  static std::unique_ptr<cNSPlatform> platform;
  return platform;
}

} // namespace

namespace {

// Products such as 200 × 1.1 land a hair off the whole number they mean.
constexpr double kSlack = 1e-6;

int clampInt(double v) {
  return static_cast<int>(std::clamp(v, -1e9, 1e9));
}

} // namespace

int nsDeviceCeil(double logical, double scale) {
  return clampInt(std::ceil(logical * scale - kSlack));
}

int nsDeviceFloor(double logical, double scale) {
  return clampInt(std::floor(logical * scale + kSlack));
}

int nsLogicalCeil(double device, double scale) {
  return clampInt(std::ceil(device / scale - kSlack));
}

int nsLogicalFloor(double device, double scale) {
  return clampInt(std::floor(device / scale + kSlack));
}

double nsParseScale(const char* text) {
  if (!text || !*text) return 0;
  char* end = nullptr;
  const double v = std::strtod(text, &end);
  return *end == 0 && v >= 1 && v <= 4 ? v : 0;
}

double nsScaleOfDpi(const char* text) {
  if (!text) return 1;
  char* end = nullptr;
  const double dpi = std::strtod(text, &end);
  if (end == text || !std::isfinite(dpi) || dpi <= 0) return 1;
  return std::clamp(std::round(dpi / 96 * 4) / 4, 1.0, 4.0);
}

double cNSPlatform::chosenScale(double fallback) {
  const char* asked = std::getenv("QVRACI_SCALE");
  if (!asked) return fallback;
  const double scale = nsParseScale(asked);
  if (scale > 0) return scale;
  std::fprintf(stderr, "qvraci: QVRACI_SCALE=\"%s\" is not a scale from 1 to 4; it is ignored\n",
               asked);
  return fallback;
}

sNSWnd::~sNSWnd() {
  if (surface) cairo_surface_destroy(surface);
}

void sNSWnd::markDirty(int ax, int ay, int aw, int ah) {
  const int x0 = std::max(0, ax), y0 = std::max(0, ay);
  const int x1 = std::min(w, ax + aw), y1 = std::min(h, ay + ah);
  if (x0 >= x1 || y0 >= y1) return;
  if (dirtyX0 >= dirtyX1) {
    dirtyX0 = x0, dirtyY0 = y0, dirtyX1 = x1, dirtyY1 = y1;
    return;
  }
  dirtyX0 = std::min(dirtyX0, x0), dirtyY0 = std::min(dirtyY0, y0);
  dirtyX1 = std::max(dirtyX1, x1), dirtyY1 = std::max(dirtyY1, y1);
}

cNSPlatform::~cNSPlatform() = default;

cNSPlatform* cNSPlatform::current() {
  return slot().get();
}

bool cNSPlatform::open(std::string& error) {
  if (slot()) return true;
  const char* which = std::getenv("QVRACI_PLATFORM");
  std::unique_ptr<cNSPlatform> platform = which && std::strcmp(which, "offscreen") == 0
                                              ? makeOffscreenPlatform()
                                              : makeXlibPlatform(error);
  if (!platform) return false;
  slot() = std::move(platform);
  return true;
}

bool cNSPlatform::alive(const sNSWnd* wnd) const {
  if (!wnd) return false;
  std::lock_guard<std::mutex> hold(myLock);
  return myWindows.count(wnd) != 0;
}

bool cNSPlatform::notify(sNSWnd* wnd) {
  {
    std::lock_guard<std::mutex> hold(myLock);
    if (!wnd || !myWindows.count(wnd)) return false;
    wnd->wake = true;
  }
  wakeUp();
  return true;
}

std::vector<sNSWnd*> cNSPlatform::windows() const {
  std::lock_guard<std::mutex> hold(myLock);
  return myOrder;
}

NSWND cNSPlatform::create(const char* caption, int x, int y, int w, int h, bool popup, NSWND owner,
                          bool takesInput, tNSWndCallback callback, void* param) {
  if (!alive(owner)) owner = nullptr;
  std::unique_ptr<sNSWnd> wnd(makeWindow());
  wnd->callback = callback;
  wnd->param = param;
  wnd->popup = popup;
  wnd->takesInput = takesInput;
  wnd->owner = owner;
  wnd->caption = caption ? caption : "";
  wnd->w = std::clamp(w, 1, 32767);
  wnd->h = std::clamp(h, 1, 32767);
  wnd->x = x, wnd->y = y;
  if (!popup && x == -1 && y == -1) {
    int ax = 0, ay = 0, aw = 0, ah = 0;
    // Centred; one larger than the monitor keeps its top left corner (and title) on it.
    if (workArea(nullptr, ax, ay, aw, ah))
      wnd->x = ax + std::max(0, (aw - wnd->w) / 2), wnd->y = ay + std::max(0, (ah - wnd->h) / 2);
  } else if (popup) {
    // A popup lies on the monitor where it opens, never across two.
    const sNSPoint at{x, y};
    fitOnMonitor(wnd.get(), &at);
  }
  if (!realize(wnd.get())) return nullptr;
  sNSWnd* made = wnd.release();
  {
    std::lock_guard<std::mutex> hold(myLock);
    myWindows.insert(made);
    myOrder.push_back(made);
  }
  return made;
}

void cNSPlatform::fitOnMonitor(sNSWnd* wnd, const sNSPoint* near) {
  int ax = 0, ay = 0, aw = 0, ah = 0;
  if (!workArea(near, ax, ay, aw, ah)) return;
  wnd->x = std::max(ax, std::min(wnd->x, ax + aw - wnd->w));
  wnd->y = std::max(ay, std::min(wnd->y, ay + ah - wnd->h));
}

void cNSPlatform::destroy(sNSWnd* wnd) {
  if (!alive(wnd)) return;
  {
    std::lock_guard<std::mutex> hold(myLock);
    myWindows.erase(wnd);
    myOrder.erase(std::find(myOrder.begin(), myOrder.end(), wnd));
  }
  if (myCapture == wnd) setCapture(nullptr);
  if (myFocus == wnd) myFocus = nullptr;
  std::erase(myModals, wnd);
  for (sNSWnd* other : windows()) {
    if (other->owner == wnd) other->owner = nullptr;
  }
  unrealize(wnd);
  delete wnd;
}

void cNSPlatform::showWindow(sNSWnd* wnd) {
  map(wnd);
  wnd->shown = true;
  ensureSurface(wnd);
  wnd->markAllDirty();
  if (wnd->takesInput && !wnd->popup) {
    myFocus = wnd;
    focus(wnd);
  }
  paintDirty();
}

void cNSPlatform::setCapture(sNSWnd* wnd) {
  if (myCapture == wnd) return;
  if (myCapture) grabPointer(myCapture, false);
  myCapture = wnd;
  if (wnd) grabPointer(wnd, true);
}

int cNSPlatform::modal(sNSWnd* wnd, sNSWnd* owner) {
  if (!alive(wnd)) return -1;
  if (!alive(owner) || owner == wnd) owner = nullptr;
  wnd->modalResult = kNSModalRunning;
  wnd->inModal = true;
  wnd->owner = owner;
  // Another window's capture ends; a popup may already hold the pointer itself.
  if (myCapture != wnd) setCapture(nullptr);
  modalBegin(wnd, owner);
  myModals.push_back(wnd);
  // Leaves the modal state behind whichever way the loop ends (a stalled offscreen loop
  // throws).
  struct sUnwind {
    cNSPlatform& platform;
    sNSWnd* wnd;
    sNSWnd* owner;
    ~sUnwind() {
      std::erase(platform.myModals, wnd);
      if (platform.alive(wnd)) {
        wnd->inModal = false;
        wnd->modalResult = kNSModalRunning;
        platform.unmap(wnd);
        wnd->shown = false;
        platform.modalEnd(wnd, owner);
      }
      if (platform.alive(owner)) {
        platform.myFocus = owner;
        platform.focus(owner);
      }
    }
  } unwind{*this, wnd, owner};
  showWindow(wnd);
  while (alive(wnd) && wnd->modalResult == kNSModalRunning) {
    if (!pass(true)) stalled(wnd);
  }
  return alive(wnd) ? wnd->modalResult : 0;
}

void cNSPlatform::msgloop() {
  const auto anyShown = [this] {
    for (const sNSWnd* w : windows()) {
      if (w->shown && !w->popup) return true;
    }
    return false;
  };
  while (anyShown()) {
    if (!pass(true)) break;
  }
}

namespace {

std::atomic<bool> gEndRequested{false};

} // namespace

void cNSPlatform::requestEnd() {
  gEndRequested = true;
  if (cNSPlatform* p = current()) p->wakeUp();
}

bool cNSPlatform::pass(bool mayWait) {
  if (gEndRequested) {
    // Every window counts as closed, and every modal run, started before or after, ends
    // as a cancel.
    for (sNSWnd* w : windows()) {
      if (w->inModal && w->modalResult == kNSModalRunning) w->modalResult = 0;
      w->shown = false;
    }
    return true;
  }
  bool busy = fireTimers();
  busy = deliverWakes() || busy;
  busy = dispatchQueued() || busy;
  if (busy) return true;
  if (paintDirty()) return true;
  return mayWait && waitEvents();
}

long long cNSPlatform::clockMs() const {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

unsigned cNSPlatform::startTimer(unsigned ms, bool repeat, tNSTimerCallback fn, void* param) {
  if (!fn) return 0;
  if (++myLastTimerId == 0) ++myLastTimerId; // 0 means "no timer"
  const unsigned period = std::max(1u, ms);
  myTimers.push_back({myLastTimerId, clockMs() + period, repeat ? period : 0, fn, param});
  return myLastTimerId;
}

void cNSPlatform::stopTimer(unsigned id) {
  std::erase_if(myTimers, [id](const sTimer& t) { return t.id == id; });
}

int cNSPlatform::nextTimerMs() const {
  if (myTimers.empty()) return -1;
  long long due = myTimers.front().due;
  for (const sTimer& t : myTimers) due = std::min(due, t.due);
  return static_cast<int>(std::clamp(due - clockMs(), 0LL, 1LL << 30));
}

bool cNSPlatform::fireTimers() {
  const long long now = clockMs();
  // The due timers are picked first: a callback may start or stop timers.
  std::vector<unsigned> due;
  for (const sTimer& t : myTimers) {
    if (t.due <= now) due.push_back(t.id);
  }
  for (const unsigned id : due) {
    const auto it = std::find_if(myTimers.begin(), myTimers.end(),
                                 [id](const sTimer& t) { return t.id == id; });
    if (it == myTimers.end()) continue; // stopped by an earlier callback
    const sTimer fired = *it;
    if (fired.period) {
      // A late loop does not fire a burst of repeats: the next one counts from now.
      it->due = now + fired.period;
    } else {
      myTimers.erase(it);
    }
    fired.fn(fired.param);
  }
  return !due.empty();
}

bool cNSPlatform::deliverWakes() {
  std::vector<sNSWnd*> woken;
  {
    std::lock_guard<std::mutex> hold(myLock);
    for (sNSWnd* w : myOrder) {
      if (w->wake) woken.push_back(w);
      w->wake = false;
    }
  }
  for (sNSWnd* w : woken) {
    if (alive(w)) w->send(nseWake, nullptr);
  }
  return !woken.empty();
}

bool cNSPlatform::paintDirty() {
  bool painted = false;
  for (sNSWnd* w : windows()) {
    if (!alive(w) || !w->shown || w->dirtyX0 >= w->dirtyX1) continue;
    const int x = w->dirtyX0, y = w->dirtyY0, cx = w->dirtyX1 - x, cy = w->dirtyY1 - y;
    w->dirtyX0 = w->dirtyX1 = 0;
    ensureSurface(w);
    sNSPaint paint{w->surface, x, y, cx, cy};
    w->send(nsePaint, &paint);
    if (!alive(w)) continue;
    cairo_surface_flush(w->surface);
    present(w, x, y, cx, cy);
    painted = true;
  }
  return painted;
}

void cNSPlatform::resized(sNSWnd* wnd, int w, int h) {
  if (wnd->w == w && wnd->h == h) return;
  wnd->w = std::max(1, w), wnd->h = std::max(1, h);
  ensureSurface(wnd);
  sNSSize size{wnd->w, wnd->h};
  wnd->send(nseSize, &size);
  if (alive(wnd)) wnd->markAllDirty();
}

void cNSPlatform::moved(sNSWnd* wnd, int x, int y) {
  if (wnd->x == x && wnd->y == y) return;
  wnd->x = x, wnd->y = y;
  wnd->send(nseMove, nullptr);
}

bool cNSPlatform::blocked(const sNSWnd* wnd) const {
  const sNSWnd* top = modalTop();
  return top && wnd != top && !wnd->popup;
}

sNSWnd* cNSPlatform::keyTarget() const {
  const std::vector<sNSWnd*> all = windows();
  for (auto it = all.rbegin(); it != all.rend(); ++it) {
    if ((*it)->popup && (*it)->shown && (*it)->takesInput) return *it;
  }
  if (sNSWnd* top = modalTop()) return top;
  return myFocus;
}

long cNSPlatform::deliver(sNSWnd* wnd, int code, void* data) {
  if (!alive(wnd)) return 0;
  if (blocked(wnd) || (!wnd->takesInput && code != nseClose)) return code == nseClose ? 1 : 0;
  const long answer = wnd->send(code, data);
  if (code == nseClose && answer == 0 && alive(wnd)) {
    if (wnd->inModal) {
      wnd->modalResult = 0;
    } else {
      unmap(wnd);
      wnd->shown = false;
    }
  }
  return answer;
}

void nsTextUnits(const char* utf8, long long len, bool typed, std::vector<unsigned short>& units) {
  const auto* s = reinterpret_cast<const unsigned char*>(utf8);
  const unsigned char* end = s + std::max(0LL, len);
  while (s < end) {
    unsigned c = *s++;
    if (c >= 0x80 && c < 0xC0) continue; // a stray continuation byte
    int more = c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC0 ? 1 : 0;
    if (more) c &= 0x3F >> more;
    for (; more && s < end && (*s & 0xC0) == 0x80; --more) c = c << 6 | (*s++ & 0x3F);
    if (more || c > 0x10FFFF) continue; // cut short or out of range
    if (typed && (c < 0x20 || (c >= 0x7F && c <= 0x9F))) continue;
    if (c >= 0x10000) {
      c -= 0x10000;
      units.push_back(static_cast<unsigned short>(0xD800 | c >> 10));
      units.push_back(static_cast<unsigned short>(0xDC00 | (c & 0x3FF)));
    } else {
      units.push_back(static_cast<unsigned short>(c));
    }
  }
}
