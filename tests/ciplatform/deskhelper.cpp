// What a desktop provides around a program, for the desktop X11 test:
//
//   deskhelper keep-clipboard   a clipboard manager: owns CLIPBOARD_MANAGER, and when a
//                               program asks it to SAVE_TARGETS, reads the clipboard's text
//                               and serves it from then on. Prints "ready" once it owns
//                               the manager's selection; runs until killed.
//   deskhelper cursor           prints the size of the pointer's current shape ("32x32").
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/Xfixes.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

int cursorSize(Display* dpy) {
  XFixesCursorImage* image = XFixesGetCursorImage(dpy);
  if (!image) return 1;
  std::printf("%dx%d\n", image->width, image->height);
  XFree(image);
  return 0;
}

class cKeeper {
public:
  explicit cKeeper(Display* dpy)
      : myDpy(dpy), myWin(XCreateSimpleWindow(dpy, DefaultRootWindow(dpy), 0, 0, 1, 1, 0, 0, 0)) {
    XSelectInput(dpy, myWin, PropertyChangeMask);
  }

  int run() {
    XSetSelectionOwner(myDpy, atom("CLIPBOARD_MANAGER"), myWin, CurrentTime);
    if (XGetSelectionOwner(myDpy, atom("CLIPBOARD_MANAGER")) != myWin) return 1;
    std::printf("ready\n");
    std::fflush(stdout);
    for (;;) {
      XEvent ev;
      XNextEvent(myDpy, &ev);
      if (ev.type == SelectionRequest) answer(ev.xselectionrequest);
    }
  }

private:
  Atom atom(const char* name) { return XInternAtom(myDpy, name, False); }

  // Reads the clipboard's text from its owner into myText.
  bool save() {
    XConvertSelection(myDpy, atom("CLIPBOARD"), atom("UTF8_STRING"), atom("KEPT"), myWin,
                      CurrentTime);
    for (;;) {
      XEvent ev;
      XNextEvent(myDpy, &ev);
      if (ev.type == SelectionRequest) {
        answer(ev.xselectionrequest);
        continue;
      }
      if (ev.type != SelectionNotify) continue;
      if (ev.xselection.property == None) return false;
      Atom type = 0;
      int format = 0;
      unsigned long count = 0, after = 0;
      unsigned char* data = nullptr;
      XGetWindowProperty(myDpy, myWin, atom("KEPT"), 0, 1 << 20, True, AnyPropertyType, &type,
                         &format, &count, &after, &data);
      myText.assign(reinterpret_cast<char*>(data), count);
      if (data) XFree(data);
      return true;
    }
  }

  void answer(XSelectionRequestEvent& req) {
    XSelectionEvent reply{};
    reply.type = SelectionNotify;
    reply.requestor = req.requestor;
    reply.selection = req.selection;
    reply.target = req.target;
    reply.time = req.time;
    reply.property = None;
    if (req.selection == atom("CLIPBOARD_MANAGER") && req.target == atom("SAVE_TARGETS")) {
      if (save()) {
        XSetSelectionOwner(myDpy, atom("CLIPBOARD"), myWin, CurrentTime);
        reply.property = req.property;
      }
    } else if (req.selection == atom("CLIPBOARD") && req.target == atom("TARGETS")) {
      const Atom targets[] = {atom("TARGETS"), atom("UTF8_STRING")};
      XChangeProperty(myDpy, req.requestor, req.property, XA_ATOM, 32, PropModeReplace,
                      reinterpret_cast<const unsigned char*>(targets), 2);
      reply.property = req.property;
    } else if (req.selection == atom("CLIPBOARD") && req.target == atom("UTF8_STRING")) {
      XChangeProperty(myDpy, req.requestor, req.property, req.target, 8, PropModeReplace,
                      reinterpret_cast<const unsigned char*>(myText.data()),
                      static_cast<int>(myText.size()));
      reply.property = req.property;
    }
    XSendEvent(myDpy, req.requestor, False, NoEventMask, reinterpret_cast<XEvent*>(&reply));
    XFlush(myDpy);
  }

  Display* myDpy;
  Window myWin;
  std::string myText;
};

} // namespace

int main(int argc, char** argv) {
  Display* dpy = XOpenDisplay(nullptr);
  if (!dpy || argc != 2) {
    std::fprintf(stderr, "usage: deskhelper keep-clipboard|cursor (with an X display)\n");
    return 2;
  }
  if (std::strcmp(argv[1], "cursor") == 0) return cursorSize(dpy);
  if (std::strcmp(argv[1], "keep-clipboard") == 0) return cKeeper(dpy).run();
  return 2;
}
