// The CLIPBOARD and PRIMARY selections of the X11 backend: owned by a hidden window, text
// offered as UTF8_STRING and text/plain;charset=utf-8, bytes (CLIPBOARD only) as
// application/octet-stream; large data in pieces (INCR) both ways.
#include <X11/Xatom.h>
#include <algorithm>
#include <chrono>
#include <climits>
#include <functional>
#include <poll.h>

#include "nsxlib.h"

namespace {

constexpr int kWaitMs = 3000;
// How long an exiting program waits for the clipboard manager to take the clipboard.
constexpr int kHandOverMs = 1000;
constexpr long kIncrGiveUpMs = 10000;
constexpr char kProperty[] = "QVRACI_SELECTION";

long nowMs() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

} // namespace

Time cXlibPlatform::serverTime() {
  // A zero-length append makes the server report its time in a PropertyNotify. The
  // property is used for nothing else, so the event found is this call's.
  const Atom stamp = atom("QVRACI_TIMESTAMP");
  XChangeProperty(myDisplay, myClipWindow, stamp, XA_STRING, 8, PropModeAppend, nullptr, 0);
  struct sMatch {
    Window win;
    Atom atom;
  } match{myClipWindow, stamp};
  XEvent ev;
  XIfEvent(
      myDisplay, &ev,
      [](Display*, XEvent* e, XPointer arg) -> Bool {
        const auto* m = reinterpret_cast<sMatch*>(arg);
        return e->type == PropertyNotify && e->xproperty.window == m->win &&
               e->xproperty.atom == m->atom;
      },
      reinterpret_cast<XPointer>(&match));
  myLastTime = ev.xproperty.time;
  return myLastTime;
}

bool cXlibPlatform::clipSet(eNSClipKind kind, const void* data, long long len) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  if (kind == nsClipPrimary) {
    myPrimaryData.assign(bytes, bytes + len);
    myPrimaryTime = serverTime();
    XSetSelectionOwner(myDisplay, XA_PRIMARY, myClipWindow, myPrimaryTime);
    myPrimaryOwned = XGetSelectionOwner(myDisplay, XA_PRIMARY) == myClipWindow;
    if (!myPrimaryOwned) myPrimaryData.clear();
    return myPrimaryOwned;
  }
  myClipData.assign(bytes, bytes + len);
  myClipKind = kind;
  // A fresh time: an older one loses to the current owner's, and the server ignores it.
  myClipTime = serverTime();
  XSetSelectionOwner(myDisplay, atom("CLIPBOARD"), myClipWindow, myClipTime);
  const bool owned = XGetSelectionOwner(myDisplay, atom("CLIPBOARD")) == myClipWindow;
  if (!owned) myClipKind = -1, myClipData.clear();
  return owned;
}

void cXlibPlatform::answerSelection(XSelectionRequestEvent& req) {
  XSelectionEvent reply{};
  reply.type = SelectionNotify;
  reply.requestor = req.requestor;
  reply.selection = req.selection;
  reply.target = req.target;
  reply.time = req.time;
  reply.property = None;
  // Old clients may name no property: the target then serves as one.
  const Atom property = req.property ? req.property : req.target;
  // What the selection asked for holds: PRIMARY only ever text.
  const bool primary = req.selection == XA_PRIMARY;
  const std::vector<unsigned char>& held = primary ? myPrimaryData : myClipData;
  const Time heldSince = primary ? myPrimaryTime : myClipTime;
  const bool text = primary ? myPrimaryOwned : myClipKind == nsClipText;
  const bool raw = !primary && myClipKind == nsClipRaw;
  const Atom utf8 = atom("UTF8_STRING"), plain = atom("text/plain;charset=utf-8");
  const Atom octets = atom("application/octet-stream");
  const auto maxChunk =
      static_cast<size_t>(std::min(XMaxRequestSize(myDisplay) * 4 - 256, 262144L));
  const bool ours = primary || req.selection == atom("CLIPBOARD");
  if (ours && req.owner == myClipWindow && (text || raw)) {
    if (req.target == atom("TARGETS")) {
      std::vector<long> targets{static_cast<long>(atom("TARGETS")),
                                static_cast<long>(atom("TIMESTAMP"))};
      if (text) targets.insert(targets.end(), {static_cast<long>(utf8), static_cast<long>(plain)});
      if (raw) targets.push_back(static_cast<long>(octets));
      XChangeProperty(myDisplay, req.requestor, property, XA_ATOM, 32, PropModeReplace,
                      reinterpret_cast<unsigned char*>(targets.data()),
                      static_cast<int>(targets.size()));
      reply.property = property;
    } else if (req.target == atom("TIMESTAMP")) {
      const long time = static_cast<long>(heldSince);
      XChangeProperty(myDisplay, req.requestor, property, XA_INTEGER, 32, PropModeReplace,
                      reinterpret_cast<const unsigned char*>(&time), 1);
      reply.property = property;
    } else if ((text && (req.target == utf8 || req.target == plain)) ||
               (raw && req.target == octets)) {
      if (held.size() > maxChunk) {
        // Too big for one request: the requestor deletes the property for every piece.
        XSelectInput(myDisplay, req.requestor, PropertyChangeMask);
        const long size = static_cast<long>(held.size());
        XChangeProperty(myDisplay, req.requestor, property, atom("INCR"), 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(&size), 1);
        myIncr.push_back({req.requestor, property, req.target, held, 0, nowMs()});
      } else {
        XChangeProperty(myDisplay, req.requestor, property, req.target, 8, PropModeReplace,
                        held.data(), static_cast<int>(held.size()));
      }
      reply.property = property;
    }
  }
  XSendEvent(myDisplay, req.requestor, False, 0, reinterpret_cast<XEvent*>(&reply));
  XFlush(myDisplay);
}

void cXlibPlatform::continueIncr(XPropertyEvent& ev) {
  const long now = nowMs();
  std::erase_if(myIncr, [now](const sIncrOut& t) { return now - t.started > kIncrGiveUpMs; });
  const auto t = std::find_if(myIncr.begin(), myIncr.end(), [&ev](const sIncrOut& t) {
    return t.requestor == ev.window && t.property == ev.atom;
  });
  if (t == myIncr.end()) return;
  const auto maxChunk =
      static_cast<size_t>(std::min(XMaxRequestSize(myDisplay) * 4 - 256, 262144L));
  const size_t n = std::min(maxChunk, t->data.size() - t->offset);
  XChangeProperty(myDisplay, t->requestor, t->property, t->type, 8, PropModeReplace,
                  t->data.data() + t->offset, static_cast<int>(n));
  t->offset += n;
  // The zero-length piece ends the transfer.
  if (n == 0) {
    XSelectInput(myDisplay, t->requestor, NoEventMask);
    myIncr.erase(t);
  }
  XFlush(myDisplay);
}

namespace {

// Waits for an event that `wanted` accepts, serving selection requests meanwhile and
// setting other events aside; false after the time limit.
bool waitFor(Display* dpy, const std::function<bool(const XEvent&)>& wanted,
             const std::function<void(XEvent&)>& other, XEvent& got, long waitMs = kWaitMs) {
  const long end = nowMs() + waitMs;
  XFlush(dpy);
  for (;;) {
    while (XPending(dpy)) {
      XEvent ev;
      XNextEvent(dpy, &ev);
      if (wanted(ev)) {
        got = ev;
        return true;
      }
      other(ev);
    }
    const long left = end - nowMs();
    if (left <= 0) return false;
    pollfd fd{ConnectionNumber(dpy), POLLIN, 0};
    poll(&fd, 1, static_cast<int>(left));
  }
}

} // namespace

void cXlibPlatform::whileWaiting(XEvent& ev) {
  if (XFilterEvent(&ev, None)) return;
  // Other clients' requests are served at once; our own window's property changes belong
  // to transfers already dealt with; everything else waits for the next pass.
  if (ev.type == SelectionRequest || ev.type == SelectionClear ||
      (ev.type == PropertyNotify && ev.xproperty.window != myClipWindow))
    handle(ev);
  else if (ev.type != PropertyNotify)
    defer(ev);
}

bool cXlibPlatform::waitForSelection(XEvent& got) {
  return waitFor(
      myDisplay,
      [this](const XEvent& ev) {
        return ev.type == SelectionNotify && ev.xselection.requestor == myClipWindow;
      },
      [this](XEvent& ev) { whileWaiting(ev); }, got);
}

void cXlibPlatform::handOverClipboard() {
  // Desktops keep the clipboard of programs that exit in a clipboard manager: asked to
  // SAVE_TARGETS, it reads what we offer (served while we wait) and owns it from then on.
  if (myClipKind < 0 || XGetSelectionOwner(myDisplay, atom("CLIPBOARD")) != myClipWindow ||
      XGetSelectionOwner(myDisplay, atom("CLIPBOARD_MANAGER")) == None)
    return;
  XConvertSelection(myDisplay, atom("CLIPBOARD_MANAGER"), atom("SAVE_TARGETS"),
                    atom("QVRACI_SAVED"), myClipWindow, myLastTime);
  XEvent got;
  waitFor(
      myDisplay,
      [this](const XEvent& ev) {
        return ev.type == SelectionNotify && ev.xselection.requestor == myClipWindow &&
               ev.xselection.target == atom("SAVE_TARGETS");
      },
      [this](XEvent& ev) {
        if (ev.type == SelectionRequest) answerSelection(ev.xselectionrequest);
        if (ev.type == PropertyNotify && ev.xproperty.state == PropertyDelete)
          continueIncr(ev.xproperty);
      },
      got, kHandOverMs);
}

bool cXlibPlatform::waitForProperty(Atom property) {
  XEvent got;
  return waitFor(
      myDisplay,
      [this, property](const XEvent& ev) {
        return ev.type == PropertyNotify && ev.xproperty.window == myClipWindow &&
               ev.xproperty.atom == property && ev.xproperty.state == PropertyNewValue;
      },
      [this](XEvent& ev) { whileWaiting(ev); }, got);
}

namespace {

// Reads and deletes a whole property; format-32 items come out as longs.
bool takeProperty(Display* dpy, Window win, Atom property, std::vector<unsigned char>& out,
                  Atom& type, int& format) {
  unsigned long count = 0, after = 0;
  unsigned char* data = nullptr;
  if (XGetWindowProperty(dpy, win, property, 0, LONG_MAX / 4, True, AnyPropertyType, &type, &format,
                         &count, &after, &data) != Success)
    return false;
  const size_t unit = format == 32 ? sizeof(long) : format == 16 ? sizeof(short) : 1;
  if (data) out.assign(data, data + count * unit);
  if (data) XFree(data);
  return true;
}

} // namespace

bool cXlibPlatform::readIncr(Atom property, std::vector<unsigned char>& out) {
  out.clear();
  for (;;) {
    if (!waitForProperty(property)) return false;
    std::vector<unsigned char> piece;
    Atom type = 0;
    int format = 0;
    if (!takeProperty(myDisplay, myClipWindow, property, piece, type, format)) return false;
    if (piece.empty()) return true;
    out.insert(out.end(), piece.begin(), piece.end());
  }
}

bool cXlibPlatform::convert(Atom selection, Atom target, std::vector<unsigned char>& out,
                            Atom& type) {
  const Atom property = atom(kProperty);
  XDeleteProperty(myDisplay, myClipWindow, property);
  XConvertSelection(myDisplay, selection, target, property, myClipWindow, myLastTime);
  XEvent got;
  if (!waitForSelection(got) || got.xselection.property == None) return false;
  int format = 0;
  if (!takeProperty(myDisplay, myClipWindow, property, out, type, format)) return false;
  if (type == atom("INCR")) return readIncr(property, out);
  return true;
}

bool cXlibPlatform::clipGet(eNSClipKind kind, std::vector<unsigned char>& data) {
  const Atom selection = kind == nsClipPrimary ? XA_PRIMARY : atom("CLIPBOARD");
  const Window owner = XGetSelectionOwner(myDisplay, selection);
  if (owner == myClipWindow) {
    if (kind == nsClipPrimary) {
      data = myPrimaryData;
      return myPrimaryOwned;
    }
    if (myClipKind != kind) return false;
    data = myClipData;
    return true;
  }
  if (owner == None) return false;
  Atom type = 0;
  if (kind == nsClipRaw) return convert(selection, atom("application/octet-stream"), data, type);
  return readText(selection, data);
}

bool cXlibPlatform::readText(Atom selection, std::vector<unsigned char>& data) {
  Atom type = 0;
  if (convert(selection, atom("UTF8_STRING"), data, type) ||
      convert(selection, atom("text/plain;charset=utf-8"), data, type))
    return true;
  // Last, Latin-1 text, widened to UTF-8.
  std::vector<unsigned char> latin;
  if (!convert(selection, XA_STRING, latin, type)) return false;
  data.clear();
  for (const unsigned char c : latin) {
    if (c < 0x80) {
      data.push_back(c);
    } else {
      data.push_back(static_cast<unsigned char>(0xC0 | c >> 6));
      data.push_back(static_cast<unsigned char>(0x80 | (c & 0x3F)));
    }
  }
  return true;
}

bool cXlibPlatform::clipHas(eNSClipKind kind) {
  const Atom selection = kind == nsClipPrimary ? XA_PRIMARY : atom("CLIPBOARD");
  const Window owner = XGetSelectionOwner(myDisplay, selection);
  if (owner == myClipWindow) return kind == nsClipPrimary ? myPrimaryOwned : myClipKind == kind;
  if (owner == None) return false;
  std::vector<unsigned char> list;
  Atom type = 0;
  if (!convert(selection, atom("TARGETS"), list, type)) return false;
  std::vector<Atom> wanted;
  if (kind != nsClipRaw)
    wanted = {atom("UTF8_STRING"), atom("text/plain;charset=utf-8"), XA_STRING};
  else
    wanted = {atom("application/octet-stream")};
  for (size_t i = 0; i + sizeof(long) <= list.size(); i += sizeof(long)) {
    long item = 0;
    std::copy_n(list.data() + i, sizeof(long), reinterpret_cast<unsigned char*>(&item));
    if (std::count(wanted.begin(), wanted.end(), static_cast<Atom>(item))) return true;
  }
  return false;
}
