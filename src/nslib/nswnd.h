// The platform window layer: a flat list of operations over opaque window handles.
//
// Two backends implement the list: Xlib for real use and an in-memory one for tests
// (nsoffscreen.h drives it). nswnd_init picks one: the offscreen backend when the
// environment variable QVRACI_PLATFORM is "offscreen", else X11 on $DISPLAY.
//
// Every operation that takes a handle returns false (or null, or does nothing) for a null
// handle or one that has been destroyed. Everything runs on the GUI thread except
// nswnd_notify_action, which any thread may call.
//
// A window reports to its callback with an event code and a pointer to the event's data:
//   0 close request (no data): answer 0 to allow closing, 1 to refuse
//   1 mouse button (sNSMouseButton)    2 mouse move (sNSMouseMove)    3 wheel (sNSWheel)
//   6 key press or release (sNSKey)    7 character (sNSChar)          8 paint (sNSPaint)
//   9 resize (sNSSize)                 10 moved on the desktop (no data)
//   11 focus gained, 12 focus lost (no data)
//   13 wake-up after nswnd_notify_action (no data)
// Mouse coordinates are in the window's client area, top-left origin; a press outside a
// popup holding the pointer arrives with coordinates outside its area.
#pragma once

#include <vector>

struct sNSWnd;
using NSWND = sNSWnd*;

// Returns what the event code's table above says; 0 for events that ask nothing.
using tNSWndCallback = long (*)(int code, void* data, void* param);

enum eNSEvent {
  nseClose = 0,
  nseMouseButton = 1,
  nseMouseMove = 2,
  nseWheel = 3,
  nseKey = 6,
  nseChar = 7,
  nsePaint = 8,
  nseSize = 9,
  nseMove = 10,
  nseFocus = 11,
  nseFocusLost = 12,
  nseWake = 13,
};

struct sNSModifiers {
  bool shift = false, ctrl = false, alt = false, super = false;
};

struct sNSMouseButton {
  int button = 0; // 1 left, 2 right, 3 middle
  int x = 0, y = 0;
  bool down = false;
  sNSModifiers mods;
};

struct sNSMouseMove {
  int x = 0, y = 0;
  bool left = false, right = false;
  sNSModifiers mods;
};

struct sNSWheel {
  int x = 0, y = 0;
  int dx = 0, dy = 0, dz = 0; // one notch is 1; dy > 0 scrolls up
  sNSModifiers mods;
};

// A key in the toolkit's codes: upper-case ASCII for character keys, keysym - 0xFE00 for
// the others (Enter 397, Escape 283, ...). Keys without a code are not reported.
struct sNSKey {
  int code = 0;
  bool down = false;
  sNSModifiers mods;
};

// One UTF-16 unit of typed text; never for text typed with ctrl.
struct sNSChar {
  unsigned short unit = 0;
  bool shift = false, alt = false;
};

// surface is the window's cairo_surface_t (its back buffer): paint the rectangle into it.
struct sNSPaint {
  void* surface = nullptr;
  int x = 0, y = 0, w = 0, h = 0;
};

struct sNSSize {
  int w = 0, h = 0;
};

// The modal result of a window whose modal run has not ended.
constexpr int kNSModalRunning = static_cast<int>(0x80000001u);

// Chooses and opens the backend once; later calls answer as the first did. On failure
// nswnd_error() says why (for X11: the display it tried).
bool nswnd_init();
const char* nswnd_error();
// True when the offscreen backend is in use.
bool nswnd_offscreen();
// True when a window manager runs and draws the title bars of top-level windows.
bool nswnd_framed();
// Dispatches events until no top-level window is shown any more.
void nswnd_msgloop();
bool nswnd_desktop_size(int& w, int& h);

// A resizable top-level window with a client area of w × h, not yet shown. x and y both -1
// centre it on the screen. Resizes in steps of 5 × 5 pixels; caption in UTF-8.
NSWND nswnd_create_wnd(const char* caption, int x, int y, int w, int h, tNSWndCallback callback,
                       void* param);
// A borderless window above the others at x, y on the desktop, not yet shown. With
// takesInput false (a tooltip) it never receives input. owner may be null.
NSWND nswnd_create_popup(int x, int y, int w, int h, NSWND owner, bool takesInput,
                         tNSWndCallback callback, void* param);
bool nswnd_destroy(NSWND wnd);
// Shows the window in front of the others and paints it at once.
bool nswnd_show_floating(NSWND wnd);
// Runs wnd modally over owner (which may be null) until nswnd_modal_result; returns the
// result and leaves wnd ready for another run. Input to other windows is ignored meanwhile.
int nswnd_modal(NSWND wnd, NSWND owner);
bool nswnd_modal_result(NSWND wnd, int rc);
bool nswnd_capture_mouse(NSWND wnd);
bool nswnd_cancel_capture(NSWND wnd);
// Wakes the GUI thread, which then calls wnd's callback with nseWake. Any thread.
bool nswnd_notify_action(NSWND wnd);
bool nswnd_minimize(NSWND wnd);
bool nswnd_maximize(NSWND wnd);
bool nswnd_move(NSWND wnd, int x, int y, int w, int h);
// Pointer shapes: 0 arrow, 1 I-beam, 2 crosshair, 3 hand, 4 and 6 left-right, 5 and 7
// up-down, 8 and 9 closed hand; other values are refused.
bool nswnd_setpointer(NSWND wnd, int type);
bool nswnd_setminsize(NSWND wnd, int w, int h);
// A window the user cannot resize: window managers then offer only moving and closing it.
bool nswnd_setresizable(NSWND wnd, bool resizable);
bool nswnd_setmaxsize(NSWND wnd, int w, int h);
bool nswnd_getpossize(NSWND wnd, int& x, int& y, int& w, int& h);
// The window's cairo_surface_t, for offscreen canvases made like it.
void* nswnd_cgctx(NSWND wnd);
bool nswnd_client_area(NSWND wnd, int& w, int& h);
// All four zero: the whole client area.
bool nswnd_invalidate_view(NSWND wnd, int x, int y, int w, int h);
// x = y = -1 (centred), w and h 70 % of the screen's usable area; false without a screen.
bool nswnd_main_optimal(int& x, int& y, int& w, int& h);
bool nswnd_focus(NSWND wnd);
// The X window's id (0 offscreen), for tools that drive windows from outside.
unsigned long nswnd_xid(NSWND wnd);
bool nswnd_set_caption(NSWND wnd, const char* text);

// From now on SIGTERM and SIGINT end every window's run at once, as a cancel, instead of
// killing the process: modal runs return 0 and the message loop ends, so the program ends
// as it does when its last window closes. False when the handlers cannot be installed.
bool nswg_end_on_signals();

// Keeps the display awake until nswg_unblock_sleep; one request per process.
bool nswg_block_sleep(const char* reason);
void nswg_unblock_sleep();

// Timers: fn(param) runs on the GUI thread, from the message loop, ms milliseconds after
// the start (at least 1) and, with repeat, every ms milliseconds after that until stopped.
// Returns the timer's id, never 0; 0 when no backend is open or fn is null. A timer may
// stop itself, or others, from its callback. The offscreen backend's clock stands still
// until the test driver moves it (nsoff::advanceClock), so its timers fire only then.
using tNSTimerCallback = void (*)(void* param);
unsigned nswg_timer_start(unsigned ms, bool repeat, tNSTimerCallback fn, void* param);
void nswg_timer_stop(unsigned id);

// The clipboard: text (UTF-8) or raw bytes. Reading waits a few seconds at most for the
// owner to answer.
// nsClipPrimary is text in X's PRIMARY selection: what the user selected last, pasted with
// the middle button. It lives beside the clipboard and does not touch it.
enum eNSClipKind { nsClipText = 0, nsClipRaw = 1, nsClipPrimary = 2 };
bool nswg_clip_set(eNSClipKind kind, const void* data, long long len);
bool nswg_clip_get(eNSClipKind kind, std::vector<unsigned char>& data);
bool nswg_clip_has(eNSClipKind kind);
