#include "nsxlib.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xcursor/Xcursor.h>
#include <X11/Xresource.h>
#include <X11/cursorfont.h>
#include <X11/extensions/Xrandr.h>
#include <X11/extensions/scrnsaver.h>
#include <algorithm>
#include <cairo-xlib.h>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace {

// Requests to windows that have gone (a clipboard requestor, a late focus) must not end
// the program; the error is simply dropped.
int ignoreErrors(Display*, XErrorEvent*) {
  return 0;
}

constexpr long kEventMask = ExposureMask | StructureNotifyMask | KeyPressMask | KeyReleaseMask |
                            ButtonPressMask | ButtonReleaseMask | PointerMotionMask |
                            LeaveWindowMask | FocusChangeMask | PropertyChangeMask;

} // namespace

std::unique_ptr<cNSPlatform> makeXlibPlatform(std::string& error) {
  std::setlocale(LC_CTYPE, "");
  XSetLocaleModifiers("");
  const char* name = XDisplayName(nullptr);
  Display* dpy = XOpenDisplay(nullptr);
  if (!dpy) {
    error = std::string("cannot open the X display \"") + (name ? name : "") + "\"";
    return nullptr;
  }
  return std::make_unique<cXlibPlatform>(dpy);
}

namespace {

// The desktop's scale: its font resolution (Xft.dpi in the resource database) over 96.
double desktopScale(Display* dpy) {
  const char* resources = XResourceManagerString(dpy);
  if (!resources) return 1;
  XrmInitialize();
  XrmDatabase db = XrmGetStringDatabase(resources);
  if (!db) return 1;
  char* type = nullptr;
  XrmValue value{};
  double scale = 1;
  if (XrmGetResource(db, "Xft.dpi", "Xft.Dpi", &type, &value) && value.addr) {
    const std::string text(value.addr, value.size ? value.size - 1 : 0);
    scale = nsScaleOfDpi(text.c_str());
  }
  XrmDestroyDatabase(db);
  return scale;
}

} // namespace

cXlibPlatform::cXlibPlatform(Display* dpy)
    : myDisplay(dpy), myScreen(DefaultScreen(dpy)), myRoot(RootWindow(dpy, myScreen)),
      myVisual(DefaultVisual(dpy, myScreen)), myDepth(DefaultDepth(dpy, myScreen)) {
  XSetErrorHandler(ignoreErrors);
  myScale = chosenScale(desktopScale(dpy));
  myWakeFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  Bool supported = False;
  XkbSetDetectableAutoRepeat(dpy, True, &supported);
  myIM = XOpenIM(dpy, nullptr, nullptr, nullptr);
  XSetWindowAttributes attrs{};
  attrs.event_mask = PropertyChangeMask;
  myClipWindow = XCreateWindow(dpy, myRoot, -10, -10, 1, 1, 0, CopyFromParent, InputOnly,
                               CopyFromParent, CWEventMask, &attrs);
}

cXlibPlatform::~cXlibPlatform() {
  handOverClipboard();
  for (sNSWnd* w : windows()) destroy(w);
  for (auto& [type, cursor] : myCursors) XFreeCursor(myDisplay, cursor);
  if (myIM) XCloseIM(myIM);
  if (myClipWindow) XDestroyWindow(myDisplay, myClipWindow);
  XCloseDisplay(myDisplay);
  if (myWakeFd >= 0) close(myWakeFd);
}

Atom cXlibPlatform::atom(const char* name) {
  auto found = myAtoms.find(name);
  if (found != myAtoms.end()) return found->second;
  const Atom a = XInternAtom(myDisplay, name, False);
  myAtoms.emplace(name, a);
  return a;
}

void cXlibPlatform::toDevice(sXWnd* wnd) const {
  wnd->devX = nsDeviceFloor(wnd->x, myScale), wnd->devY = nsDeviceFloor(wnd->y, myScale);
  wnd->devW = device(wnd->w), wnd->devH = device(wnd->h);
}

sXWnd* cXlibPlatform::find(Window win) const {
  for (sNSWnd* w : windows()) {
    if (static_cast<sXWnd*>(w)->win == win) return static_cast<sXWnd*>(w);
  }
  return nullptr;
}

bool cXlibPlatform::hasWindowManager() {
  if (myWM >= 0) return myWM == 1;
  myWM = 0;
  const auto supporting = [this](Window win, Window& out) {
    Atom type = 0;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    const bool ok =
        XGetWindowProperty(myDisplay, win, atom("_NET_SUPPORTING_WM_CHECK"), 0, 1, False, XA_WINDOW,
                           &type, &format, &count, &after, &data) == Success &&
        type == XA_WINDOW && format == 32 && count == 1;
    if (ok) out = static_cast<Window>(reinterpret_cast<long*>(data)[0]);
    if (data) XFree(data);
    return ok;
  };
  Window check = 0, self = 0;
  if (supporting(myRoot, check) && supporting(check, self) && self == check) myWM = 1;
  return myWM == 1;
}

void cXlibPlatform::setAtomProperty(Window win, const char* property,
                                    const std::vector<const char*>& values) {
  std::vector<long> atoms;
  for (const char* v : values) atoms.push_back(static_cast<long>(atom(v)));
  XChangeProperty(myDisplay, win, atom(property), XA_ATOM, 32, PropModeReplace,
                  reinterpret_cast<unsigned char*>(atoms.data()), static_cast<int>(atoms.size()));
}

void cXlibPlatform::setMotifHints(sXWnd* wnd) {
  // _MOTIF_WM_HINTS: flags, functions, decorations, input mode, status.
  constexpr long kFunctions = 1, kDecorations = 2;
  constexpr long kFuncMove = 4, kFuncClose = 32;
  constexpr long kDecorBorder = 2, kDecorTitle = 8, kDecorMenu = 16;
  if (wnd->resizable) {
    XDeleteProperty(myDisplay, wnd->win, atom("_MOTIF_WM_HINTS"));
    return;
  }
  const long hints[5] = {kFunctions | kDecorations, kFuncMove | kFuncClose,
                         kDecorBorder | kDecorTitle | kDecorMenu, 0, 0};
  XChangeProperty(myDisplay, wnd->win, atom("_MOTIF_WM_HINTS"), atom("_MOTIF_WM_HINTS"), 32,
                  PropModeReplace, reinterpret_cast<const unsigned char*>(hints), 5);
}

void cXlibPlatform::setHints(sXWnd* wnd) {
  XSizeHints* hints = XAllocSizeHints();
  if (!hints) return;
  hints->flags = PPosition | USPosition | PWinGravity;
  hints->x = wnd->devX, hints->y = wnd->devY;
  hints->win_gravity = StaticGravity;
  if (!wnd->resizable) {
    // Window managers offer neither resizing nor maximising to a window whose least and
    // greatest sizes are its size.
    hints->flags |= PMinSize | PMaxSize;
    hints->min_width = hints->max_width = wnd->devW;
    hints->min_height = hints->max_height = wnd->devH;
    XSetWMNormalHints(myDisplay, wnd->win, hints);
    XFree(hints);
    return;
  }
  hints->flags |= PResizeInc | PBaseSize;
  const int step = std::max(1, static_cast<int>(std::lround(5 * myScale)));
  hints->width_inc = hints->height_inc = step;
  // Increments count from the base: this keeps the first size reachable.
  hints->base_width = wnd->devW % step, hints->base_height = wnd->devH % step;
  if (wnd->minW || wnd->minH) {
    hints->flags |= PMinSize;
    hints->min_width = device(wnd->minW), hints->min_height = device(wnd->minH);
  }
  if (wnd->maxW || wnd->maxH) {
    hints->flags |= PMaxSize;
    hints->max_width = wnd->maxW ? device(wnd->maxW) : 32767;
    hints->max_height = wnd->maxH ? device(wnd->maxH) : 32767;
  }
  XSetWMNormalHints(myDisplay, wnd->win, hints);
  XFree(hints);
}

bool cXlibPlatform::realize(sNSWnd* base) {
  auto* wnd = static_cast<sXWnd*>(base);
  XSetWindowAttributes attrs{};
  attrs.event_mask = kEventMask;
  attrs.background_pixmap = None;
  attrs.bit_gravity = NorthWestGravity;
  unsigned long mask = CWEventMask | CWBackPixmap | CWBitGravity;
  if (wnd->popup) {
    attrs.override_redirect = True;
    attrs.save_under = True;
    mask |= CWOverrideRedirect | CWSaveUnder;
  }
  toDevice(wnd);
  wnd->win = XCreateWindow(myDisplay, myRoot, wnd->devX, wnd->devY,
                           static_cast<unsigned>(wnd->devW), static_cast<unsigned>(wnd->devH), 0,
                           myDepth, InputOutput, myVisual, mask, &attrs);
  if (!wnd->win) return false;
  wnd->winSurface = cairo_xlib_surface_create(myDisplay, wnd->win, myVisual, wnd->devW, wnd->devH);

  XClassHint klass{const_cast<char*>("qvraci-ruled"), const_cast<char*>("qvraci-ruled")};
  XSetClassHint(myDisplay, wnd->win, &klass);
  const long pid = getpid();
  XChangeProperty(myDisplay, wnd->win, atom("_NET_WM_PID"), XA_CARDINAL, 32, PropModeReplace,
                  reinterpret_cast<const unsigned char*>(&pid), 1);
  if (wnd->popup) {
    setAtomProperty(
        wnd->win, "_NET_WM_WINDOW_TYPE",
        {wnd->takesInput ? "_NET_WM_WINDOW_TYPE_POPUP_MENU" : "_NET_WM_WINDOW_TYPE_TOOLTIP"});
    if (auto* owner = static_cast<sXWnd*>(wnd->owner))
      XSetTransientForHint(myDisplay, wnd->win, owner->win);
    return true;
  }
  Atom protocols[] = {atom("WM_DELETE_WINDOW"), atom("_NET_WM_PING")};
  XSetWMProtocols(myDisplay, wnd->win, protocols, 2);
  setCaption(wnd);
  setHints(wnd);
  if (myIM) {
    wnd->ic = XCreateIC(myIM, XNInputStyle, XIMPreeditNothing | XIMStatusNothing, XNClientWindow,
                        wnd->win, XNFocusWindow, wnd->win, nullptr);
    long filter = 0;
    if (wnd->ic && !XGetICValues(wnd->ic, XNFilterEvents, &filter, nullptr))
      XSelectInput(myDisplay, wnd->win, kEventMask | filter);
  }
  return true;
}

void cXlibPlatform::unrealize(sNSWnd* base) {
  auto* wnd = static_cast<sXWnd*>(base);
  std::erase(myPendingMaps, wnd);
  if (wnd->ic) XDestroyIC(wnd->ic);
  dropBackBuffer(wnd);
  if (wnd->winSurface) cairo_surface_destroy(wnd->winSurface);
  if (wnd->win) XDestroyWindow(myDisplay, wnd->win);
  XFlush(myDisplay);
  wnd->ic = nullptr, wnd->winSurface = nullptr, wnd->win = 0;
}

void cXlibPlatform::map(sNSWnd* base) {
  auto* wnd = static_cast<sXWnd*>(base);
  // A popup takes no focus: it shows at once.
  if (!wnd->popup && !myHeldKeys.empty()) {
    if (std::find(myPendingMaps.begin(), myPendingMaps.end(), wnd) == myPendingMaps.end())
      myPendingMaps.push_back(wnd);
    myMapDeadline = clockMs() + kHeldKeyMapMs;
    return;
  }
  XMapRaised(myDisplay, wnd->win);
  XFlush(myDisplay);
}

void cXlibPlatform::mapPending() {
  myHeldKeys.clear(); // released, or given up on
  for (sXWnd* wnd : std::exchange(myPendingMaps, {})) XMapRaised(myDisplay, wnd->win);
  XFlush(myDisplay);
}

void cXlibPlatform::unmap(sNSWnd* base) {
  auto* wnd = static_cast<sXWnd*>(base);
  std::erase(myPendingMaps, wnd);
  if (capture() == wnd) grabPointer(wnd, false);
  XUnmapWindow(myDisplay, wnd->win);
  wnd->mapped = false;
  XFlush(myDisplay);
}

void cXlibPlatform::dropBackBuffer(sXWnd* wnd) {
  if (wnd->surface) cairo_surface_destroy(wnd->surface);
  if (wnd->backPixels) cairo_surface_destroy(wnd->backPixels);
  if (wnd->back) XFreePixmap(myDisplay, wnd->back);
  wnd->surface = wnd->backPixels = nullptr;
  wnd->back = 0;
}

void cXlibPlatform::ensureSurface(sNSWnd* base) {
  auto* wnd = static_cast<sXWnd*>(base);
  const int w = device(wnd->w), h = device(wnd->h);
  if (wnd->back && cairo_xlib_surface_get_width(wnd->backPixels) == w &&
      cairo_xlib_surface_get_height(wnd->backPixels) == h)
    return;
  dropBackBuffer(wnd);
  // A pixmap on the server like the window: painting stays there, and showing it is one
  // copy. Painters see it through a surface with the scale; showing goes through one
  // without, pixel for pixel.
  wnd->back = XCreatePixmap(myDisplay, wnd->win, static_cast<unsigned>(w), static_cast<unsigned>(h),
                            static_cast<unsigned>(myDepth));
  wnd->backPixels = cairo_xlib_surface_create(myDisplay, wnd->back, myVisual, w, h);
  wnd->surface = cairo_xlib_surface_create(myDisplay, wnd->back, myVisual, w, h);
  cairo_surface_set_device_scale(wnd->surface, myScale, myScale);
  wnd->painted = false;
}

void cXlibPlatform::present(sNSWnd* base, int x, int y, int w, int h) {
  auto* wnd = static_cast<sXWnd*>(base);
  const int x0 = nsDeviceFloor(x, myScale), y0 = nsDeviceFloor(y, myScale);
  const int x1 = nsDeviceCeil(x + w, myScale), y1 = nsDeviceCeil(y + h, myScale);
  showPixels(wnd, x0, y0, x1 - x0, y1 - y0);
}

void cXlibPlatform::showPixels(sXWnd* wnd, int x, int y, int w, int h) {
  if (!wnd->backPixels) return;
  cairo_t* cr = cairo_create(wnd->winSurface);
  cairo_set_source_surface(cr, wnd->backPixels, 0, 0);
  cairo_rectangle(cr, x, y, w, h);
  cairo_fill(cr);
  cairo_destroy(cr);
  cairo_surface_flush(wnd->winSurface);
  wnd->painted = true;
}

bool cXlibPlatform::dispatchQueued() {
  bool any = false;
  while (!myDeferred.empty()) {
    XEvent ev = myDeferred.front();
    myDeferred.pop_front();
    handle(ev);
    any = true;
  }
  while (XPending(myDisplay)) {
    XEvent ev;
    XNextEvent(myDisplay, &ev);
    any = true;
    if (XFilterEvent(&ev, None)) continue;
    handle(ev);
  }
  return any;
}

bool cXlibPlatform::waitEvents() {
  XFlush(myDisplay);
  if (XPending(myDisplay)) return true;
  pollfd fds[2] = {{ConnectionNumber(myDisplay), POLLIN, 0}, {myWakeFd, POLLIN, 0}};
  int timeout = nextTimerMs();
  if (!myPendingMaps.empty()) {
    const long long left = std::max(0LL, myMapDeadline - clockMs());
    timeout = timeout < 0 ? static_cast<int>(left) : std::min(timeout, static_cast<int>(left));
  }
  const int ready = poll(fds, 2, timeout);
  if (!myPendingMaps.empty() && clockMs() >= myMapDeadline) mapPending();
  if (ready < 0) return true; // interrupted: look again
  if (fds[1].revents & POLLIN) {
    eventfd_t value = 0;
    eventfd_read(myWakeFd, &value);
  }
  return true;
}

void cXlibPlatform::wakeUp() {
  eventfd_write(myWakeFd, 1);
}

sNSModifiers cXlibPlatform::modifiers(unsigned state) const {
  return {(state & ShiftMask) != 0, (state & ControlMask) != 0, (state & Mod1Mask) != 0,
          (state & Mod4Mask) != 0};
}

void cXlibPlatform::handle(XEvent& ev) {
  switch (ev.type) {
  case SelectionRequest:
    answerSelection(ev.xselectionrequest);
    return;
  case SelectionClear:
    if (ev.xselectionclear.window != myClipWindow) return;
    if (ev.xselectionclear.selection == atom("PRIMARY")) {
      myPrimaryOwned = false;
      myPrimaryData.clear();
    } else {
      myClipKind = -1, myClipData.clear();
    }
    return;
  case PropertyNotify:
    if (ev.xproperty.state == PropertyDelete) continueIncr(ev.xproperty);
    myLastTime = ev.xproperty.time;
    return;
  case MappingNotify:
    // The keyboard was remapped (a layout switch, or a tool that binds a character to a
    // spare key to type it): the keys that follow must be read with the new map.
    if (ev.xmapping.request != MappingPointer) {
      XRefreshKeyboardMapping(&ev.xmapping);
      // Read the new map now rather than at the next key: a tool that binds a spare key
      // for one character unbinds it right after typing it.
      XkbKeycodeToKeysym(myDisplay, static_cast<KeyCode>(ev.xmapping.first_keycode), 0, 0);
    }
    return;
  default:
    break;
  }
  sXWnd* wnd = find(ev.xany.window);
  if (!wnd) return;
  switch (ev.type) {
  case Expose:
    // The back buffer still holds the picture: show it again without a repaint.
    if (wnd->painted && wnd->surface) {
      showPixels(wnd, ev.xexpose.x, ev.xexpose.y, ev.xexpose.width, ev.xexpose.height);
    } else {
      const int x0 = nsLogicalFloor(ev.xexpose.x, myScale);
      const int y0 = nsLogicalFloor(ev.xexpose.y, myScale);
      wnd->markDirty(x0, y0, nsLogicalCeil(ev.xexpose.x + ev.xexpose.width, myScale) - x0,
                     nsLogicalCeil(ev.xexpose.y + ev.xexpose.height, myScale) - y0);
    }
    break;
  case MapNotify:
    wnd->mapped = true;
    if (wnd->wantFocus) activate(wnd);
    if (wnd->wantGrab) grabPointer(wnd, true);
    break;
  case UnmapNotify:
    wnd->mapped = false;
    break;
  case DestroyNotify:
    // Our own windows are forgotten before they are destroyed: one still known here was
    // destroyed by another client. Its modal run ends as a cancel, and it counts as closed.
    if (ev.xdestroywindow.window != wnd->win) break;
    wnd->mapped = wnd->shown = false;
    if (wnd->inModal && wnd->modalResult == kNSModalRunning) wnd->modalResult = 0;
    break;
  case ConfigureNotify: {
    Window child = 0;
    XTranslateCoordinates(myDisplay, wnd->win, myRoot, 0, 0, &wnd->devX, &wnd->devY, &child);
    // Moves by the user or the window manager arrive here too: popups and tooltips open
    // relative to where the window stands now.
    moved(wnd, nsLogicalFloor(wnd->devX, myScale), nsLogicalFloor(wnd->devY, myScale));
    if (ev.xconfigure.width != wnd->devW || ev.xconfigure.height != wnd->devH) {
      wnd->devW = ev.xconfigure.width, wnd->devH = ev.xconfigure.height;
      cairo_xlib_surface_set_size(wnd->winSurface, wnd->devW, wnd->devH);
      resized(wnd, nsLogicalCeil(wnd->devW, myScale), nsLogicalCeil(wnd->devH, myScale));
    }
    break;
  }
  case ClientMessage:
    handleClientMessage(ev.xclient);
    break;
  case ButtonPress:
  case ButtonRelease:
    myLastTime = ev.xbutton.time;
    handleButton(ev.xbutton, ev.type == ButtonPress);
    break;
  case MotionNotify: {
    myLastTime = ev.xmotion.time;
    XEvent next;
    // Only the newest position of a run of moves matters.
    while (XCheckTypedWindowEvent(myDisplay, ev.xmotion.window, MotionNotify, &next)) ev = next;
    auto* to = capture() ? static_cast<sXWnd*>(capture()) : wnd;
    sNSMouseMove e{nsLogicalFloor(ev.xmotion.x_root - to->devX, myScale),
                   nsLogicalFloor(ev.xmotion.y_root - to->devY, myScale),
                   (ev.xmotion.state & Button1Mask) != 0, (ev.xmotion.state & Button3Mask) != 0,
                   modifiers(ev.xmotion.state)};
    deliver(to, nseMouseMove, &e);
    break;
  }
  case LeaveNotify:
    if (ev.xcrossing.mode == NotifyNormal && !capture()) {
      // Hover ends when the pointer leaves the window.
      sNSMouseMove e{-1, -1, false, false, modifiers(ev.xcrossing.state)};
      deliver(wnd, nseMouseMove, &e);
    }
    break;
  case KeyPress:
  case KeyRelease:
    myLastTime = ev.xkey.time;
    handleKey(ev.xkey, ev.type == KeyPress);
    break;
  case FocusIn:
    if (ev.xfocus.detail == NotifyPointer || ev.xfocus.mode == NotifyGrab) break;
    if (wnd->ic) XSetICFocus(wnd->ic);
    myFocus = wnd;
    wnd->send(nseFocus, nullptr);
    break;
  case FocusOut:
    if (ev.xfocus.detail == NotifyPointer || ev.xfocus.mode == NotifyGrab) break;
    // Keys released in another window never tell us: none counts as held any more.
    if (myPendingMaps.empty())
      myHeldKeys.clear();
    else
      mapPending();
    if (wnd->ic) XUnsetICFocus(wnd->ic);
    wnd->send(nseFocusLost, nullptr);
    break;
  default:
    break;
  }
}

void cXlibPlatform::handleClientMessage(XClientMessageEvent& ev) {
  if (ev.message_type != atom("WM_PROTOCOLS") || ev.format != 32) return;
  const Atom what = static_cast<Atom>(ev.data.l[0]);
  if (what == atom("_NET_WM_PING")) {
    XClientMessageEvent reply = ev;
    reply.window = myRoot;
    XSendEvent(myDisplay, myRoot, False, SubstructureNotifyMask | SubstructureRedirectMask,
               reinterpret_cast<XEvent*>(&reply));
    return;
  }
  if (what == atom("WM_DELETE_WINDOW")) {
    myLastTime = static_cast<Time>(ev.data.l[1]);
    deliver(find(ev.window), nseClose, nullptr);
  }
}

void cXlibPlatform::handleButton(XButtonEvent& ev, bool down) {
  sXWnd* wnd = find(ev.window);
  auto* to = capture() ? static_cast<sXWnd*>(capture()) : wnd;
  if (!to) return;
  const int x = nsLogicalFloor(ev.x_root - to->devX, myScale);
  const int y = nsLogicalFloor(ev.y_root - to->devY, myScale);
  const sNSModifiers mods = modifiers(ev.state);
  if (ev.button >= 4 && ev.button <= 7) {
    if (!down) return;
    sNSWheel e{x, y, 0, 0, 0, mods};
    if (ev.button <= 5)
      e.dy = ev.button == 4 ? 1 : -1;
    else
      e.dx = ev.button == 6 ? 1 : -1;
    deliver(to, nseWheel, &e);
    return;
  }
  const int button = ev.button == 1 ? 1 : ev.button == 3 ? 2 : ev.button == 2 ? 3 : 0;
  if (!button) return;
  sNSMouseButton e{button, x, y, down, mods};
  deliver(to, nseMouseButton, &e);
}

void cXlibPlatform::handleKey(XKeyEvent& ev, bool down) {
  if (down) {
    myHeldKeys.insert(ev.keycode);
  } else {
    myHeldKeys.erase(ev.keycode);
    if (myHeldKeys.empty() && !myPendingMaps.empty()) mapPending();
  }
  const int group = static_cast<int>(ev.state >> 13 & 3);
  const auto code = static_cast<KeyCode>(ev.keycode);
  const KeySym sym = XkbKeycodeToKeysym(myDisplay, code, group, 0);
  std::vector<unsigned long> others;
  for (int g = 0; g < 4; ++g) {
    if (g != group) others.push_back(XkbKeycodeToKeysym(myDisplay, code, g, 0));
  }
  const int key = nsxToolkitKey(sym, others);
  const sNSModifiers mods = modifiers(ev.state);
  sNSWnd* to = keyTarget();
  if (!to) return;
  if (key) {
    sNSKey e{key, down, mods};
    deliver(to, nseKey, &e);
  }
  if (!down || mods.ctrl) return;
  char text[64];
  std::vector<char> big;
  char* buffer = text;
  KeySym typed = 0;
  int len = 0;
  auto* wnd = static_cast<sXWnd*>(find(ev.window));
  if (wnd && wnd->ic) {
    Status status = 0;
    len = Xutf8LookupString(wnd->ic, &ev, text, sizeof text, &typed, &status);
    if (status == XBufferOverflow) {
      big.resize(static_cast<size_t>(len));
      buffer = big.data();
      len = Xutf8LookupString(wnd->ic, &ev, buffer, len, &typed, &status);
    }
    if (status != XLookupChars && status != XLookupBoth) len = 0;
  } else {
    len = XLookupString(&ev, text, sizeof text, &typed, nullptr);
    // Latin-1 without an input method: widen to UTF-8.
    std::string utf8;
    for (int i = 0; i < len; ++i) {
      const auto c = static_cast<unsigned char>(text[i]);
      if (c < 0x80) {
        utf8 += static_cast<char>(c);
      } else {
        utf8 += static_cast<char>(0xC0 | c >> 6);
        utf8 += static_cast<char>(0x80 | (c & 0x3F));
      }
    }
    big.assign(utf8.begin(), utf8.end());
    buffer = big.data();
    len = static_cast<int>(big.size());
  }
  std::vector<unsigned short> units;
  nsTextUnits(buffer, len, true, units);
  for (const unsigned short unit : units) {
    if (!alive(to)) return;
    sNSChar e{unit, mods.shift, mods.alt};
    deliver(to, nseChar, &e);
  }
}

void cXlibPlatform::activate(sXWnd* wnd) {
  wnd->wantFocus = false;
  if (hasWindowManager()) {
    XEvent ev{};
    ev.xclient.type = ClientMessage;
    ev.xclient.window = wnd->win;
    ev.xclient.message_type = atom("_NET_ACTIVE_WINDOW");
    ev.xclient.format = 32;
    ev.xclient.data.l[0] = 1; // from an application
    ev.xclient.data.l[1] = static_cast<long>(myLastTime);
    XSendEvent(myDisplay, myRoot, False, SubstructureNotifyMask | SubstructureRedirectMask, &ev);
  } else {
    XRaiseWindow(myDisplay, wnd->win);
  }
  // A window raised late (its map arrived after a popup opened over it) must not cover
  // the popup.
  for (sNSWnd* other : windows()) {
    auto* x = static_cast<sXWnd*>(other);
    if (x->popup && x->shown) XRaiseWindow(myDisplay, x->win);
  }
  XSetInputFocus(myDisplay, wnd->win, RevertToParent, CurrentTime);
  XFlush(myDisplay);
}

void cXlibPlatform::focus(sNSWnd* base) {
  auto* wnd = static_cast<sXWnd*>(base);
  if (wnd->popup) return;
  myFocus = wnd;
  if (wnd->mapped)
    activate(wnd);
  else
    wnd->wantFocus = true;
}

bool cXlibPlatform::desktopSize(int& w, int& h) {
  w = nsLogicalFloor(DisplayWidth(myDisplay, myScreen), myScale);
  h = nsLogicalFloor(DisplayHeight(myDisplay, myScreen), myScale);
  return w > 0 && h > 0;
}

bool cXlibPlatform::workArea(const sNSPoint* near, int& x, int& y, int& w, int& h) {
  // In device pixels: the screen, then the monitor (the one holding near, else the
  // primary, else the one holding the pointer), then what the panels leave of it.
  sNSPoint pointer;
  if (!near) {
    Window root = 0, child = 0;
    int wx = 0, wy = 0;
    unsigned mask = 0;
    XQueryPointer(myDisplay, myRoot, &root, &child, &pointer.x, &pointer.y, &wx, &wy, &mask);
  }
  int ax = 0, ay = 0;
  int ax1 = DisplayWidth(myDisplay, myScreen), ay1 = DisplayHeight(myDisplay, myScreen);
  int count = 0;
  if (XRRMonitorInfo* monitors = XRRGetMonitors(myDisplay, myRoot, True, &count)) {
    const XRRMonitorInfo* chosen = count > 0 ? &monitors[0] : nullptr;
    const int px = near ? nsDeviceFloor(near->x, myScale) : pointer.x;
    const int py = near ? nsDeviceFloor(near->y, myScale) : pointer.y;
    for (int i = 0; i < count; ++i) {
      const XRRMonitorInfo& m = monitors[i];
      if (px >= m.x && py >= m.y && px < m.x + m.width && py < m.y + m.height) chosen = &m;
    }
    for (int i = 0; i < count && !near; ++i) {
      if (monitors[i].primary) chosen = &monitors[i];
    }
    if (chosen && chosen->width > 0 && chosen->height > 0)
      ax = chosen->x, ay = chosen->y, ax1 = ax + chosen->width, ay1 = ay + chosen->height;
    XRRFreeMonitors(monitors);
  }
  Atom type = 0;
  int format = 0;
  unsigned long items = 0, after = 0;
  unsigned char* data = nullptr;
  if (XGetWindowProperty(myDisplay, myRoot, atom("_NET_WORKAREA"), 0, 4, False, XA_CARDINAL, &type,
                         &format, &items, &after, &data) == Success &&
      type == XA_CARDINAL && format == 32 && items == 4) {
    // The work area spans every monitor: the part of it on this one.
    const long* area = reinterpret_cast<long*>(data);
    const int wx = static_cast<int>(area[0]), wy = static_cast<int>(area[1]);
    const int wx1 = std::min(ax1, wx + static_cast<int>(area[2]));
    const int wy1 = std::min(ay1, wy + static_cast<int>(area[3]));
    if (wx1 > std::max(ax, wx) && wy1 > std::max(ay, wy))
      ax = std::max(ax, wx), ay = std::max(ay, wy), ax1 = wx1, ay1 = wy1;
  }
  if (data) XFree(data);
  x = nsLogicalCeil(ax, myScale), y = nsLogicalCeil(ay, myScale);
  w = nsLogicalFloor(ax1, myScale) - x, h = nsLogicalFloor(ay1, myScale) - y;
  return w > 0 && h > 0;
}

void cXlibPlatform::setCaption(sNSWnd* base) {
  auto* wnd = static_cast<sXWnd*>(base);
  if (wnd->popup) return;
  const char* text = wnd->caption.c_str();
  Xutf8SetWMProperties(myDisplay, wnd->win, text, text, nullptr, 0, nullptr, nullptr, nullptr);
  XChangeProperty(myDisplay, wnd->win, atom("_NET_WM_NAME"), atom("UTF8_STRING"), 8,
                  PropModeReplace, reinterpret_cast<const unsigned char*>(text),
                  static_cast<int>(wnd->caption.size()));
  XFlush(myDisplay);
}

void cXlibPlatform::moveResize(sNSWnd* base) {
  auto* wnd = static_cast<sXWnd*>(base);
  toDevice(wnd);
  XMoveResizeWindow(myDisplay, wnd->win, wnd->devX, wnd->devY, static_cast<unsigned>(wnd->devW),
                    static_cast<unsigned>(wnd->devH));
  cairo_xlib_surface_set_size(wnd->winSurface, wnd->devW, wnd->devH);
  if (!wnd->popup) setHints(wnd);
  XFlush(myDisplay);
}

void cXlibPlatform::sizeLimits(sNSWnd* wnd) {
  if (wnd->popup) return;
  // Only here can a window stop (or start) being resizable.
  setMotifHints(static_cast<sXWnd*>(wnd));
  setHints(static_cast<sXWnd*>(wnd));
}

void cXlibPlatform::minimize(sNSWnd* wnd) {
  XIconifyWindow(myDisplay, static_cast<sXWnd*>(wnd)->win, myScreen);
  XFlush(myDisplay);
}

void cXlibPlatform::maximize(sNSWnd* base) {
  auto* wnd = static_cast<sXWnd*>(base);
  if (!hasWindowManager()) {
    int x = 0, y = 0, w = 0, h = 0;
    const sNSPoint centre{wnd->x + wnd->w / 2, wnd->y + wnd->h / 2};
    if (!workArea(&centre, x, y, w, h)) return;
    wnd->x = x, wnd->y = y;
    resized(wnd, w, h);
    moveResize(wnd);
    return;
  }
  if (!wnd->mapped) {
    setAtomProperty(wnd->win, "_NET_WM_STATE",
                    {"_NET_WM_STATE_MAXIMIZED_VERT", "_NET_WM_STATE_MAXIMIZED_HORZ"});
    return;
  }
  XEvent ev{};
  ev.xclient.type = ClientMessage;
  ev.xclient.window = wnd->win;
  ev.xclient.message_type = atom("_NET_WM_STATE");
  ev.xclient.format = 32;
  ev.xclient.data.l[0] = 1; // add
  ev.xclient.data.l[1] = static_cast<long>(atom("_NET_WM_STATE_MAXIMIZED_VERT"));
  ev.xclient.data.l[2] = static_cast<long>(atom("_NET_WM_STATE_MAXIMIZED_HORZ"));
  ev.xclient.data.l[3] = 1;
  XSendEvent(myDisplay, myRoot, False, SubstructureNotifyMask | SubstructureRedirectMask, &ev);
  XFlush(myDisplay);
}

Cursor cXlibPlatform::loadCursor(int type) {
  // Each shape by its names in cursor themes (the CSS name first, then the older X one),
  // and the X font cursor that stands in when no theme has it.
  struct sShape {
    const char* names[2];
    unsigned font;
  };
  static const sShape shapes[] = {{{"default", "left_ptr"}, XC_left_ptr},
                                  {{"text", "xterm"}, XC_xterm},
                                  {{"crosshair", "cross"}, XC_crosshair},
                                  {{"pointer", "hand2"}, XC_hand2},
                                  {{"ew-resize", "sb_h_double_arrow"}, XC_sb_h_double_arrow},
                                  {{"ns-resize", "sb_v_double_arrow"}, XC_sb_v_double_arrow},
                                  {{"col-resize", "sb_h_double_arrow"}, XC_sb_h_double_arrow},
                                  {{"row-resize", "sb_v_double_arrow"}, XC_sb_v_double_arrow},
                                  {{"grabbing", "fleur"}, XC_fleur},
                                  {{"grabbing", "fleur"}, XC_fleur}};
  const sShape& shape = shapes[type];
  if (!myCursorSized) {
    myCursorSized = true;
    // Libxcursor takes XCURSOR_THEME and XCURSOR_SIZE itself; a size the user set is in
    // logical pixels, like everything else, and grows with the desktop's scale.
    if (const int size = XcursorGetDefaultSize(myDisplay); size > 0 && std::getenv("XCURSOR_SIZE"))
      XcursorSetDefaultSize(myDisplay, static_cast<int>(std::lround(size * myScale)));
  }
  for (const char* name : shape.names) {
    if (const Cursor themed = XcursorLibraryLoadCursor(myDisplay, name)) return themed;
  }
  return XCreateFontCursor(myDisplay, shape.font);
}

bool cXlibPlatform::setPointer(sNSWnd* wnd, int type) {
  auto found = myCursors.find(type);
  if (found == myCursors.end()) found = myCursors.emplace(type, loadCursor(type)).first;
  XDefineCursor(myDisplay, static_cast<sXWnd*>(wnd)->win, found->second);
  XFlush(myDisplay);
  return true;
}

void cXlibPlatform::grabPointer(sNSWnd* base, bool on) {
  auto* wnd = static_cast<sXWnd*>(base);
  if (!on) {
    wnd->wantGrab = false;
    XUngrabPointer(myDisplay, CurrentTime);
    XFlush(myDisplay);
    return;
  }
  // A window that is not yet viewable cannot be grabbed: it grabs once it is mapped.
  if (!wnd->mapped) {
    wnd->wantGrab = true;
    return;
  }
  wnd->wantGrab = false;
  XGrabPointer(myDisplay, wnd->win, True, ButtonPressMask | ButtonReleaseMask | PointerMotionMask,
               GrabModeAsync, GrabModeAsync, None, None, CurrentTime);
  XFlush(myDisplay);
}

void cXlibPlatform::modalBegin(sNSWnd* base, sNSWnd* ownerBase) {
  auto* wnd = static_cast<sXWnd*>(base);
  if (wnd->popup) return; // a modal popup stays where it was opened
  // Only a window over another is a dialog: the program's own main window is a normal one,
  // which window managers list and place as such.
  setAtomProperty(wnd->win, "_NET_WM_WINDOW_TYPE",
                  {ownerBase ? "_NET_WM_WINDOW_TYPE_DIALOG" : "_NET_WM_WINDOW_TYPE_NORMAL"});
  if (!ownerBase) return;
  auto* owner = static_cast<sXWnd*>(ownerBase);
  XSetTransientForHint(myDisplay, wnd->win, owner->win);
  setAtomProperty(wnd->win, "_NET_WM_STATE", {"_NET_WM_STATE_MODAL"});
  wnd->x = owner->x + (owner->w - wnd->w) / 2;
  wnd->y = owner->y + (owner->h - wnd->h) / 2;
  // Kept on the owner's monitor.
  const sNSPoint centre{owner->x + owner->w / 2, owner->y + owner->h / 2};
  fitOnMonitor(wnd, &centre);
  toDevice(wnd);
  XMoveWindow(myDisplay, wnd->win, wnd->devX, wnd->devY);
  setHints(wnd);
}

void cXlibPlatform::modalEnd(sNSWnd*, sNSWnd*) {
  XFlush(myDisplay);
}

bool cXlibPlatform::blockSleep(const char*) {
  int event = 0, error = 0, major = 0, minor = 0;
  if (!XScreenSaverQueryExtension(myDisplay, &event, &error) ||
      !XScreenSaverQueryVersion(myDisplay, &major, &minor) || (major == 1 && minor < 1))
    return false;
  XScreenSaverSuspend(myDisplay, True);
  XFlush(myDisplay);
  mySleepBlocked = true;
  return true;
}

void cXlibPlatform::unblockSleep() {
  if (!mySleepBlocked) return;
  XScreenSaverSuspend(myDisplay, False);
  XFlush(myDisplay);
  mySleepBlocked = false;
}
