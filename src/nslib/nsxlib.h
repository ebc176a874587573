// The X11 backend: windows over Xlib, drawn through a Cairo pixmap back buffer.
#pragma once

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "nsplatform.h"

struct sXWnd : sNSWnd {
  Window win = 0;
  XIC ic = nullptr;
  // Device pixels: where the client area lies on the root window and its size.
  int devX = 0, devY = 0, devW = 0, devH = 0;
  cairo_surface_t* winSurface = nullptr;
  // The back buffer's pixmap, and a second surface on it without the scale, for showing it.
  Pixmap back = 0;
  cairo_surface_t* backPixels = nullptr;
  bool mapped = false, painted = false;
  bool wantFocus = false, wantGrab = false;
};

// The toolkit's code for a key, from the keysym at level 0 of its group and the other
// groups' level-0 keysyms (for a Latin letter on a non-Latin layout); 0 for none.
int nsxToolkitKey(unsigned long keysym, const std::vector<unsigned long>& otherGroups);

class cXlibPlatform : public cNSPlatform {
public:
  explicit cXlibPlatform(Display* dpy);
  ~cXlibPlatform() override;

  bool offscreen() const override { return false; }
  bool framed() override { return hasWindowManager(); }
  sNSWnd* makeWindow() override { return new sXWnd; }
  bool realize(sNSWnd* wnd) override;
  void unrealize(sNSWnd* wnd) override;
  void map(sNSWnd* wnd) override;
  void unmap(sNSWnd* wnd) override;
  void ensureSurface(sNSWnd* wnd) override;
  void present(sNSWnd* wnd, int x, int y, int w, int h) override;
  bool dispatchQueued() override;
  bool waitEvents() override;
  void wakeUp() override;
  bool desktopSize(int& w, int& h) override;
  bool workArea(const sNSPoint* near, int& x, int& y, int& w, int& h) override;
  void setCaption(sNSWnd* wnd) override;
  void moveResize(sNSWnd* wnd) override;
  void sizeLimits(sNSWnd* wnd) override;
  void minimize(sNSWnd* wnd) override;
  void maximize(sNSWnd* wnd) override;
  bool setPointer(sNSWnd* wnd, int type) override;
  void grabPointer(sNSWnd* wnd, bool on) override;
  void focus(sNSWnd* wnd) override;
  unsigned long nativeId(sNSWnd* wnd) override { return static_cast<sXWnd*>(wnd)->win; }
  void modalBegin(sNSWnd* wnd, sNSWnd* owner) override;
  void modalEnd(sNSWnd* wnd, sNSWnd* owner) override;
  bool blockSleep(const char* reason) override;
  void unblockSleep() override;
  bool clipSet(eNSClipKind kind, const void* data, long long len) override;
  bool clipGet(eNSClipKind kind, std::vector<unsigned char>& data) override;
  bool clipHas(eNSClipKind kind) override;

protected:
  void stalled(sNSWnd*) override {}

private:
  // An outgoing clipboard transfer in pieces (INCR).
  struct sIncrOut {
    Window requestor = 0;
    Atom property = 0, type = 0;
    std::vector<unsigned char> data;
    size_t offset = 0;
    long started = 0; // monotonic milliseconds
  };

  Atom atom(const char* name);
  int device(double logical) const { return nsDeviceCeil(logical, myScale); }
  // Sets the device geometry from the logical one.
  void toDevice(sXWnd* wnd) const;
  void dropBackBuffer(sXWnd* wnd);
  sXWnd* find(Window win) const;
  void handle(XEvent& ev);
  void handleKey(XKeyEvent& ev, bool down);
  void handleButton(XButtonEvent& ev, bool down);
  void handleClientMessage(XClientMessageEvent& ev);
  void setHints(sXWnd* wnd);
  // What the window manager may offer: moving and closing only, for a fixed-size window.
  void setMotifHints(sXWnd* wnd);
  void showPixels(sXWnd* wnd, int x, int y, int w, int h);
  void setAtomProperty(Window win, const char* property, const std::vector<const char*>& values);
  void activate(sXWnd* wnd);
  bool hasWindowManager();
  sNSModifiers modifiers(unsigned state) const;
  // The pointer shape from the user's cursor theme, else the X font cursor.
  Cursor loadCursor(int type);
  // Clipboard.
  Time serverTime();
  void answerSelection(XSelectionRequestEvent& req);
  void continueIncr(XPropertyEvent& ev);
  bool convert(Atom selection, Atom target, std::vector<unsigned char>& out, Atom& type);
  bool readText(Atom selection, std::vector<unsigned char>& out);
  bool waitForSelection(XEvent& got);
  // At exit: gives the clipboard's contents to the desktop's clipboard manager, waiting a
  // moment at most.
  void handOverClipboard();
  bool readIncr(Atom property, std::vector<unsigned char>& out);
  bool waitForProperty(Atom property);
  // An event that arrived while waiting for another client's clipboard data.
  void whileWaiting(XEvent& ev);
  // Events that came in while waiting for the clipboard, handled by the next pass.
  void defer(const XEvent& ev) { myDeferred.push_back(ev); }
  // Windows shown while a key is down wait for its release (kHeldKeyMapMs at most), so that
  // the focus never moves between a key's press and its release: a tool that sends the
  // release to the window that had the focus would leave the key down in the server,
  // which then repeats it or swallows its next press.
  void mapPending();

  Display* myDisplay;
  int myScreen;
  Window myRoot;
  Visual* myVisual;
  int myDepth;
  int myWakeFd = -1;
  XIM myIM = nullptr;
  Time myLastTime = CurrentTime;
  std::map<int, Cursor> myCursors;
  bool myCursorSized = false;
  std::map<std::string, Atom> myAtoms;
  std::deque<XEvent> myDeferred;
  static constexpr long long kHeldKeyMapMs = 300;
  std::set<unsigned> myHeldKeys; // key codes pressed in our windows and not yet released
  std::vector<sXWnd*> myPendingMaps;
  long long myMapDeadline = 0;
  int myWM = -1; // -1 unknown, 0 none, 1 present
  bool mySleepBlocked = false;
  // Clipboard: the hidden window that owns it and what we offer.
  Window myClipWindow = 0;
  Time myClipTime = CurrentTime;
  // The PRIMARY selection while we own it: text only.
  bool myPrimaryOwned = false;
  std::vector<unsigned char> myPrimaryData;
  Time myPrimaryTime = CurrentTime;
  int myClipKind = -1;
  std::vector<unsigned char> myClipData;
  std::vector<sIncrOut> myIncr;
};
