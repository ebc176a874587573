// The operation list, forwarded to the backend chosen by nswnd_init.
#include <algorithm>
#include <csignal>
#include <string>

#include "nsplatform.h"

namespace {

std::string& lastError() {
  static std::string error;
  return error;
}

cNSPlatform* platform() {
  return cNSPlatform::current();
}

// The platform when wnd is a live window of it, else null.
cNSPlatform* owning(NSWND wnd) {
  cNSPlatform* p = platform();
  return p && p->alive(wnd) ? p : nullptr;
}

} // namespace

namespace {

void onEndSignal(int) {
  cNSPlatform::requestEnd();
}

} // namespace

bool nswg_end_on_signals() {
  struct sigaction action {};
  action.sa_handler = onEndSignal;
  sigemptyset(&action.sa_mask);
  return sigaction(SIGTERM, &action, nullptr) == 0 && sigaction(SIGINT, &action, nullptr) == 0;
}

bool nswnd_init() {
  return cNSPlatform::open(lastError());
}

const char* nswnd_error() {
  return lastError().c_str();
}

bool nswnd_offscreen() {
  return platform() && platform()->offscreen();
}

bool nswnd_framed() {
  return platform() && platform()->framed();
}

void nswnd_msgloop() {
  if (platform()) platform()->msgloop();
}

bool nswnd_desktop_size(int& w, int& h) {
  return platform() && platform()->desktopSize(w, h);
}

NSWND nswnd_create_wnd(const char* caption, int x, int y, int w, int h, tNSWndCallback callback,
                       void* param) {
  if (!platform()) return nullptr;
  return platform()->create(caption, x, y, w, h, false, nullptr, true, callback, param);
}

NSWND nswnd_create_popup(int x, int y, int w, int h, NSWND owner, bool takesInput,
                         tNSWndCallback callback, void* param) {
  if (!platform()) return nullptr;
  return platform()->create("", x, y, w, h, true, owner, takesInput, callback, param);
}

bool nswnd_destroy(NSWND wnd) {
  cNSPlatform* p = owning(wnd);
  if (p) p->destroy(wnd);
  return p;
}

bool nswnd_show_floating(NSWND wnd) {
  cNSPlatform* p = owning(wnd);
  if (p) p->showWindow(wnd);
  return p;
}

int nswnd_modal(NSWND wnd, NSWND owner) {
  cNSPlatform* p = owning(wnd);
  return p ? p->modal(wnd, owner) : -1;
}

bool nswnd_modal_result(NSWND wnd, int rc) {
  if (!owning(wnd)) return false;
  wnd->modalResult = rc;
  return true;
}

bool nswnd_capture_mouse(NSWND wnd) {
  cNSPlatform* p = owning(wnd);
  if (p) p->setCapture(wnd);
  return p;
}

bool nswnd_cancel_capture(NSWND wnd) {
  cNSPlatform* p = owning(wnd);
  if (p && p->capture() == wnd) p->setCapture(nullptr);
  return p;
}

bool nswnd_notify_action(NSWND wnd) {
  return platform() && platform()->notify(wnd);
}

bool nswnd_minimize(NSWND wnd) {
  cNSPlatform* p = owning(wnd);
  if (p) p->minimize(wnd);
  return p;
}

bool nswnd_maximize(NSWND wnd) {
  cNSPlatform* p = owning(wnd);
  if (p) p->maximize(wnd);
  return p;
}

bool nswnd_move(NSWND wnd, int x, int y, int w, int h) {
  cNSPlatform* p = owning(wnd);
  if (!p || w <= 0 || h <= 0) return false;
  p->moved(wnd, x, y);
  if (!p->alive(wnd)) return false;
  p->resized(wnd, w, h);
  p->moveResize(wnd);
  return true;
}

bool nswnd_setpointer(NSWND wnd, int type) {
  cNSPlatform* p = owning(wnd);
  return p && type >= 0 && type <= 9 && p->setPointer(wnd, type);
}

bool nswnd_setminsize(NSWND wnd, int w, int h) {
  cNSPlatform* p = owning(wnd);
  if (!p) return false;
  wnd->minW = std::max(0, w), wnd->minH = std::max(0, h);
  p->sizeLimits(wnd);
  return true;
}

bool nswnd_setresizable(NSWND wnd, bool resizable) {
  cNSPlatform* p = owning(wnd);
  if (!p) return false;
  wnd->resizable = resizable;
  p->sizeLimits(wnd);
  return true;
}

bool nswnd_setmaxsize(NSWND wnd, int w, int h) {
  cNSPlatform* p = owning(wnd);
  if (!p) return false;
  wnd->maxW = std::max(0, w), wnd->maxH = std::max(0, h);
  p->sizeLimits(wnd);
  return true;
}

bool nswnd_getpossize(NSWND wnd, int& x, int& y, int& w, int& h) {
  if (!owning(wnd)) return false;
  x = wnd->x, y = wnd->y, w = wnd->w, h = wnd->h;
  return true;
}

void* nswnd_cgctx(NSWND wnd) {
  cNSPlatform* p = owning(wnd);
  if (!p) return nullptr;
  p->ensureSurface(wnd);
  return wnd->surface;
}

bool nswnd_client_area(NSWND wnd, int& w, int& h) {
  if (!owning(wnd)) return false;
  w = wnd->w, h = wnd->h;
  return true;
}

bool nswnd_invalidate_view(NSWND wnd, int x, int y, int w, int h) {
  if (!owning(wnd)) return false;
  if (x == 0 && y == 0 && w == 0 && h == 0)
    wnd->markAllDirty();
  else
    wnd->markDirty(x, y, w, h);
  return true;
}

bool nswnd_main_optimal(int& x, int& y, int& w, int& h) {
  int ax = 0, ay = 0, aw = 0, ah = 0;
  if (!platform() || !platform()->workArea(nullptr, ax, ay, aw, ah)) {
    w = h = 0;
    return false;
  }
  x = y = -1;
  w = static_cast<int>(aw * 0.7), h = static_cast<int>(ah * 0.7);
  return true;
}

bool nswnd_focus(NSWND wnd) {
  cNSPlatform* p = owning(wnd);
  if (p) p->focus(wnd);
  return p;
}

unsigned long nswnd_xid(NSWND wnd) {
  cNSPlatform* p = owning(wnd);
  return p ? p->nativeId(wnd) : 0;
}

bool nswnd_set_caption(NSWND wnd, const char* text) {
  cNSPlatform* p = owning(wnd);
  if (!p || !text) return false;
  wnd->caption = text;
  p->setCaption(wnd);
  return true;
}

bool nswg_block_sleep(const char* reason) {
  if (!platform()) return false;
  platform()->unblockSleep();
  return platform()->blockSleep(reason ? reason : "");
}

void nswg_unblock_sleep() {
  if (platform()) platform()->unblockSleep();
}

bool nswg_clip_set(eNSClipKind kind, const void* data, long long len) {
  if (!platform() || len < 0 || (len && !data)) return false;
  return platform()->clipSet(kind, data, len);
}

bool nswg_clip_get(eNSClipKind kind, std::vector<unsigned char>& data) {
  data.clear();
  return platform() && platform()->clipGet(kind, data);
}

unsigned nswg_timer_start(unsigned ms, bool repeat, tNSTimerCallback fn, void* param) {
  return platform() ? platform()->startTimer(ms, repeat, fn, param) : 0;
}

void nswg_timer_stop(unsigned id) {
  if (platform()) platform()->stopTimer(id);
}

bool nswg_clip_has(eNSClipKind kind) {
  return platform() && platform()->clipHas(kind);
}
