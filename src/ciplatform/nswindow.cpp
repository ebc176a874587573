#include "nswindow.h"

cNSWindow::cNSWindow() = default;

cNSWindow::~cNSWindow() {
  *myAlive = false;
  close();
}

bool cNSWindow::init() {
  return nswnd_init();
}

void cNSWindow::msgloop() {
  nswnd_msgloop();
}

bool cNSWindow::desktopSize(int& w, int& h) {
  return nswnd_desktop_size(w, h);
}

bool cNSWindow::blockSleep(const char* reason) {
  return nswg_block_sleep(reason);
}

void cNSWindow::unblockSleep() {
  nswg_unblock_sleep();
}

long cNSWindow::wndCallbackProc(int code, void* data, void* param) {
  return param ? static_cast<cNSWindow*>(param)->wndProc(code, data) : 0;
}

std::unique_ptr<cNSWindow::cActionItem> cNSWindow::fetchRemoveAction() {
  cSafeCriticalSectionAccess hold(&myQueueLock);
  if (myQueue.empty()) return nullptr;
  std::unique_ptr<cActionItem> item = std::move(myQueue.front());
  myQueue.pop_front();
  return item;
}

void cNSWindow::handle(cActionItem& item) {
  switch (item.typeOf()) {
  case 0:
    onInit();
    break;
  case 1:
    onAction(static_cast<cSentActionItem&>(item).element);
    break;
  case 2:
    onPostAction(static_cast<cPostActionItem&>(item).element);
    break;
  case 3: {
    const auto& r = static_cast<cRepaintAction&>(item);
    nswnd_invalidate_view(myWnd, r.x, r.y, r.w, r.h);
    break;
  }
  case 4:
    onFocus();
    break;
  case 5:
    onFocusLost();
    break;
  default:
    break;
  }
}

long cNSWindow::wndProc(int code, void* data) {
  const std::shared_ptr<bool> alive = myAlive;
  while (std::unique_ptr<cActionItem> item = fetchRemoveAction()) {
    handle(*item);
    if (!*alive) return 0;
  }
  switch (code) {
  case nseClose:
    return onClose() ? 0 : 1;
  case nseMouseButton: {
    const auto& e = *static_cast<sNSMouseButton*>(data);
    onMouseButton(e.x, e.y, e.button, e.down, e.mods.shift, e.mods.ctrl, e.mods.alt, e.mods.super);
    break;
  }
  case nseMouseMove: {
    const auto& e = *static_cast<sNSMouseMove*>(data);
    const int buttons = e.left ? 1 : e.right ? 2 : 0;
    onMouseMove(e.x, e.y, buttons, e.mods.shift, e.mods.ctrl, e.mods.alt, e.mods.super);
    break;
  }
  case nseWheel: {
    const auto& e = *static_cast<sNSWheel*>(data);
    onMouseWheel(e.x, e.y, e.dx, e.dy, e.dz, e.mods.shift, e.mods.ctrl, e.mods.alt, e.mods.super);
    break;
  }
  case nseKey: {
    const auto& e = *static_cast<sNSKey*>(data);
    if (e.code) onKey(e.code, e.down, e.mods.shift, e.mods.ctrl, e.mods.alt, e.mods.super);
    break;
  }
  case nseChar: {
    const auto& e = *static_cast<sNSChar*>(data);
    onChar(e.unit, e.shift, e.alt);
    break;
  }
  case nsePaint: {
    const auto& e = *static_cast<sNSPaint*>(data);
    onPaint(e.surface, e.x, e.y, e.w, e.h);
    break;
  }
  case nseSize: {
    const auto& e = *static_cast<sNSSize*>(data);
    onSize(e.w, e.h);
    break;
  }
  case nseMove:
    onMove();
    break;
  case nseFocus:
    asyncOnFocus();
    break;
  case nseFocusLost:
    asyncOnFocusLost();
    break;
  default:
    break;
  }
  return 0;
}

void cNSWindow::asyncOnFocus() {
  addAction(new cFocusAction);
  nswnd_notify_action(myWnd);
}

void cNSWindow::asyncOnFocusLost() {
  addAction(new cFocusLostAction);
  nswnd_notify_action(myWnd);
}

bool cNSWindow::create_wnd(const char* caption, int w, int h, bool sizeable, int x, int y) {
  close();
  myWnd = nswnd_create_wnd(caption, x, y, w, h, wndCallbackProc, this);
  if (!myWnd) return false;
  if (!sizeable) nswnd_setresizable(myWnd, false);
  {
    cSafeCriticalSectionAccess hold(&myQueueLock);
    myQueue.push_front(std::make_unique<cInitItem>());
  }
  nswnd_notify_action(myWnd);
  return true;
}

bool cNSWindow::create_popup(int x, int y, int w, int h, bool takesInput, cNSWindow* owner) {
  close();
  myWnd = nswnd_create_popup(x, y, w, h, owner ? owner->myWnd : nullptr, takesInput,
                             wndCallbackProc, this);
  if (!myWnd) return false;
  {
    cSafeCriticalSectionAccess hold(&myQueueLock);
    myQueue.push_front(std::make_unique<cInitItem>());
  }
  show();
  return true;
}

void cNSWindow::runInit() {
  std::unique_ptr<cActionItem> item;
  {
    cSafeCriticalSectionAccess hold(&myQueueLock);
    if (myQueue.empty() || myQueue.front()->typeOf() != 0) return;
    item = std::move(myQueue.front());
    myQueue.pop_front();
  }
  handle(*item);
}

int cNSWindow::modal(cNSWindow* owner) {
  runInit();
  return nswnd_modal(myWnd, owner ? owner->myWnd : nullptr);
}

void cNSWindow::show() {
  runInit();
  nswnd_show_floating(myWnd);
}

void cNSWindow::captureMouse() {
  nswnd_capture_mouse(myWnd);
}

void cNSWindow::cancelCaptureMouse() {
  nswnd_cancel_capture(myWnd);
}

void cNSWindow::addAction(cActionItem* item) {
  cSafeCriticalSectionAccess hold(&myQueueLock);
  myQueue.emplace_back(item);
}

void cNSWindow::notifyAction(void* element) {
  addAction(new cSentActionItem(element));
  nswnd_notify_action(myWnd);
}

void cNSWindow::notifyPostAction(void* element) {
  addAction(new cPostActionItem(element));
  nswnd_notify_action(myWnd);
}

void cNSWindow::requestRepaint(int x, int y, int w, int h) {
  {
    cSafeCriticalSectionAccess hold(&myQueueLock);
    for (auto& item : myQueue) {
      if (item->typeOf() != 3) continue;
      // A second request before the loop comes round: repaint everything once.
      auto& r = static_cast<cRepaintAction&>(*item);
      r.x = r.y = r.w = r.h = 0;
      return;
    }
    myQueue.push_back(std::make_unique<cRepaintAction>(x, y, w, h));
  }
  nswnd_notify_action(myWnd);
}

void cNSWindow::endModal(int result) {
  nswnd_modal_result(myWnd, result);
}

void cNSWindow::minimize() {
  nswnd_minimize(myWnd);
}

void cNSWindow::maximize() {
  nswnd_maximize(myWnd);
}

void cNSWindow::move(int x, int y, int w, int h) {
  nswnd_move(myWnd, x, y, w, h);
}

bool cNSWindow::setPointer(int type) {
  return nswnd_setpointer(myWnd, type);
}

void cNSWindow::setMinSize(int w, int h) {
  nswnd_setminsize(myWnd, w, h);
}

void cNSWindow::setMaxSize(int w, int h) {
  nswnd_setmaxsize(myWnd, w, h);
}

bool cNSWindow::getPosSize(int& x, int& y, int& w, int& h) {
  return nswnd_getpossize(myWnd, x, y, w, h);
}

void* cNSWindow::cgctx() {
  return nswnd_cgctx(myWnd);
}

bool cNSWindow::clientArea(int& w, int& h) {
  return nswnd_client_area(myWnd, w, h);
}

void cNSWindow::focus() {
  nswnd_focus(myWnd);
}

bool cNSWindow::setCaption(const char* text) {
  return nswnd_set_caption(myWnd, text);
}

bool cNSWindow::recommendMainWindowSize(int& x, int& y, int& w, int& h) {
  return nswnd_main_optimal(x, y, w, h);
}

void cNSWindow::close() {
  if (myWnd) nswnd_destroy(myWnd);
  myWnd = nullptr;
}
