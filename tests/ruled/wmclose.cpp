// wmclose WINDOW: asks an X window to close as a window manager does (WM_DELETE_WINDOW),
// for tests that run without one.
#include <X11/Xlib.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: wmclose WINDOW\n");
    return 2;
  }
  Display* dpy = XOpenDisplay(nullptr);
  if (!dpy) return 1;
  const Window win = std::strtoul(argv[1], nullptr, 0);
  XEvent ev{};
  ev.xclient.type = ClientMessage;
  ev.xclient.window = win;
  ev.xclient.message_type = XInternAtom(dpy, "WM_PROTOCOLS", False);
  ev.xclient.format = 32;
  ev.xclient.data.l[0] = static_cast<long>(XInternAtom(dpy, "WM_DELETE_WINDOW", False));
  ev.xclient.data.l[1] = CurrentTime;
  const bool sent = XSendEvent(dpy, win, False, NoEventMask, &ev) != 0;
  XCloseDisplay(dpy);
  return sent ? 0 : 1;
}
