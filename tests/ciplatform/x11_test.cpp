// The X11 backend against a real X server (./test.sh starts a private Xvfb): windows,
// painting, closing, modal runs, the clipboard, typed keys, a tree walked by a user and a
// file chosen in the file dialog.
#include <gtest/gtest.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "ciom/customform.h"
#include "ciom/edit.h"
#include "ciom/treeview.h"
#include "ciplatform/cairocanvas.h"
#include "ciplatform/nswmaker.h"

namespace {

// Runs a shell command and returns its output.
std::string run(const std::string& command) {
  std::string out;
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return out;
  char buffer[256];
  while (size_t n = fread(buffer, 1, sizeof buffer, pipe)) out.append(buffer, n);
  pclose(pipe);
  return out;
}

// A root that fills itself with one colour and records keys, characters and actions.
class cXRoot : public cChildElement {
public:
  unsigned colour = 0x0000FF; // red on screen
  std::vector<int> keys;
  std::vector<unsigned short> chars;
  int endOn = -1;
  std::function<void()> onIdle;

  void onPaint(cCanvas* canvas) override {
    const sRect all{0, 0, width(), height()};
    canvas->drawRect(&all, colour, colour);
  }
  bool processKey(int key, bool shift, bool ctrl, bool alt) override {
    keys.push_back(key);
    return cChildElement::processKey(key, shift, ctrl, alt);
  }
  bool processChar(unsigned short ch, bool shift, bool ctrl, bool alt) override {
    chars.push_back(ch);
    if (ch == 'q') end_modal(1);
    return cChildElement::processChar(ch, shift, ctrl, alt);
  }
  bool onAction(cChildElement* source, cChildAction* action) override {
    if (action->code == 9 && endOn >= 0) end_modal(endOn);
    return cChildElement::onAction(source, action);
  }
};

// Posts a code-9 action to root after a delay, unless stop is set first: a modal run's
// way out, and a watchdog.
std::thread later(cXRoot& root, int ms, const std::atomic<bool>& stop) {
  return std::thread([&root, ms, &stop] {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (!stop && std::chrono::steady_clock::now() < end)
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (!stop) root.postAction(new cChildAction(9));
  });
}

class X11 : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    unsetenv("QVRACI_PLATFORM");
    if (getenv("DISPLAY")) maker() = cWindowMaker::newWindowMaker(nullptr, nullptr, 0, 0);
  }
  static void TearDownTestSuite() { maker().reset(); }
  void SetUp() override {
    if (!maker()) GTEST_SKIP() << "no X display: ./test.sh runs these under Xvfb";
    other = XOpenDisplay(nullptr);
    ASSERT_NE(other, nullptr);
  }
  void TearDown() override {
    if (other) XCloseDisplay(other);
  }
  static std::unique_ptr<cWindowMaker>& maker() {
    static std::unique_ptr<cWindowMaker> m;
    return m;
  }
  cNSWMaker& ns() { return static_cast<cNSWMaker&>(*maker()); }
  static unsigned long xid(cChildElement& root) {
    return nswnd_xid(static_cast<NSWND>(root.winTarget()->_rt_rawhandle()));
  }
  // The pixel at x, y of a window as the server holds it, as 0xRRGGBB.
  unsigned long pixel(unsigned long win, int x, int y) {
    XSync(other, False);
    XImage* image = XGetImage(other, win, x, y, 1, 1, AllPlanes, ZPixmap);
    if (!image) return 0xFFFFFFFF;
    const unsigned long p = XGetPixel(image, 0, 0) & 0xFFFFFF;
    XDestroyImage(image);
    return p;
  }
  Display* other = nullptr;
};

TEST_F(X11, AWindowOpensPaintsAndClosesThroughDeleteWindow) {
  cXRoot root;
  std::unique_ptr<cWindowHolder> holder(
      ns().asyncwnd("close me", 160, 120, &root, nullptr, true, 40, 40));
  ASSERT_NE(holder, nullptr);
  const unsigned long win = xid(root);
  ASSERT_NE(win, 0u);
  // The window must be mapped and painted before it can be asked to close; the close
  // request comes from another client, as a window manager sends it.
  std::thread closer([win] {
    Display* dpy = XOpenDisplay(nullptr);
    for (int i = 0; i < 100; ++i) {
      XWindowAttributes a;
      if (XGetWindowAttributes(dpy, win, &a) && a.map_state == IsViewable) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    XEvent ev{};
    ev.xclient.type = ClientMessage;
    ev.xclient.window = win;
    ev.xclient.message_type = XInternAtom(dpy, "WM_PROTOCOLS", False);
    ev.xclient.format = 32;
    ev.xclient.data.l[0] = static_cast<long>(XInternAtom(dpy, "WM_DELETE_WINDOW", False));
    ev.xclient.data.l[1] = CurrentTime;
    XSendEvent(dpy, win, False, NoEventMask, &ev);
    XCloseDisplay(dpy);
  });
  // The loop ends when no window is shown any more: the close did that.
  ns().msgloop();
  closer.join();
  XWindowAttributes a;
  ASSERT_TRUE(XGetWindowAttributes(other, win, &a));
  EXPECT_NE(a.map_state, IsViewable);
}

TEST_F(X11, AModalWindowDestroyedByAnotherClientEndsItsRunAsACancel) {
  cXRoot root;
  root.endOn = 7; // the watchdog's answer, had the destruction not ended the run
  std::atomic<bool> ended{false};
  std::thread destroyer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const unsigned long win = xid(root);
    for (int i = 0; i < 100; ++i) {
      XWindowAttributes a;
      if (XGetWindowAttributes(other, win, &a) && a.map_state == IsViewable) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    XDestroyWindow(other, win); // as xdotool windowclose, or a window manager gone wrong
    XFlush(other);
  });
  std::thread watchdog = later(root, 8000, ended);
  EXPECT_EQ(ns().modal("destroyed", 160, 120, &root, nullptr, false), 0);
  ended = true;
  destroyer.join();
  watchdog.join();
}

TEST_F(X11, PaintingReachesTheScreen) {
  cXRoot dialog;
  dialog.colour = 0x00FF00; // green
  dialog.endOn = 5;
  unsigned long seen = 0;
  const std::atomic<bool> never{false};
  std::thread watcher = later(dialog, 700, never);
  // A modal run that ends from a posted action; meanwhile the window is on screen.
  std::thread looker([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    Display* dpy = XOpenDisplay(nullptr);
    Window rootWin = DefaultRootWindow(dpy);
    XImage* image = XGetImage(dpy, rootWin, 640, 512, 1, 1, AllPlanes, ZPixmap);
    if (image) {
      seen = XGetPixel(image, 0, 0) & 0xFFFFFF;
      XDestroyImage(image);
    }
    XCloseDisplay(dpy);
  });
  EXPECT_EQ(ns().modal("modal", 200, 100, &dialog, nullptr, false), 5);
  watcher.join();
  looker.join();
  EXPECT_EQ(seen, 0x00FF00u); // the centre of the screen shows the dialog's green
}

TEST_F(X11, TextGoesToAndComesFromTheClipboard) {
  cXRoot root;
  std::unique_ptr<cWindowHolder> holder(
      ns().asyncwnd("clip", 100, 100, &root, nullptr, true, 0, 0));
  const char text[] = "Zorbex \xc3\xbc\xe2\x82\xac";
  ASSERT_TRUE(root.winTarget()->_rt_copy_text(text, sizeof text - 1));
  // xclip asks while a modal run keeps our loop answering; the reader ends the run.
  cXRoot dialog;
  dialog.endOn = 0;
  std::string read;
  std::thread reader([&] {
    read = run("xclip -o -selection clipboard 2>&1");
    dialog.postAction(new cChildAction(9));
  });
  ns().modal("wait", 50, 50, &dialog, nullptr, false);
  reader.join();
  EXPECT_EQ(read, text);

  // xclip hands the text to a child of its own, which takes the selection a moment later.
  const Atom clipboard = XInternAtom(other, "CLIPBOARD", False);
  const Window ours = XGetSelectionOwner(other, clipboard);
  // Its output goes nowhere: the child would otherwise hold the test's output open.
  ASSERT_EQ(std::system("printf 'from xclip' | xclip -selection clipboard -i >/dev/null 2>&1"), 0);
  for (int i = 0; i < 150 && XGetSelectionOwner(other, clipboard) == ours; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  _typebuf<unsigned char> got;
  ASSERT_TRUE(root.winTarget()->_rt_request_copied_text(got));
  EXPECT_EQ(std::string(got.begin(), got.end()), "from xclip");
  EXPECT_TRUE(root.winTarget()->_rt_request_has_copied(true));
  EXPECT_FALSE(root.winTarget()->_rt_request_has_copied(false));
  // Taking the selection back ends xclip's child.
  EXPECT_TRUE(root.winTarget()->_rt_copy_text("x", 1));
}

TEST_F(X11, KeysTypedWithXdotoolArriveAsCodesAndCharacters) {
  cXRoot dialog;
  dialog.endOn = 0; // the watchdog's way out
  std::thread typist([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(400));
    run("xdotool key a Return F9 Escape ctrl+b q");
  });
  std::atomic<bool> ended{false};
  std::thread watchdog = later(dialog, 8000, ended);
  EXPECT_EQ(ns().modal("keys", 200, 100, &dialog, nullptr, false), 1);
  ended = true;
  typist.join();
  watchdog.join();
  EXPECT_EQ(dialog.keys, (std::vector<int>{'A', 397, 283, 'B', 'Q'}));
  // No character for Enter, Escape or the ctrl combination.
  EXPECT_EQ(dialog.chars, (std::vector<unsigned short>{'a', 'q'}));
}

// The window type a window carries, as a window manager reads it; "" for none.
std::string windowType(Display* dpy, unsigned long win) {
  Atom type = None;
  int format = 0;
  unsigned long count = 0, after = 0;
  unsigned char* data = nullptr;
  std::string name;
  if (XGetWindowProperty(dpy, win, XInternAtom(dpy, "_NET_WM_WINDOW_TYPE", False), 0, 1, False,
                         XA_ATOM, &type, &format, &count, &after, &data) == Success &&
      data && count == 1) {
    char* atom = XGetAtomName(dpy, *reinterpret_cast<Atom*>(data));
    if (atom) name = atom;
    XFree(atom);
  }
  if (data) XFree(data);
  return name;
}

// A window that a key's press opens over the main one shows once the key is released, or
// after a moment when no release comes: the focus never moves between the two, so a tool
// that releases the key into the window that had the focus leaves no key down.
TEST_F(X11, AWindowOpenedByAKeyShowsOnceTheKeyIsReleased) {
  // The dialog's window, known once it is drawn (into its buffer, mapped or not).
  struct cPainted : cXRoot {
    std::atomic<unsigned long> window{0};
    void onPaint(cCanvas* canvas) override {
      window = nswnd_xid(static_cast<NSWND>(winTarget()->_rt_rawhandle()));
      cXRoot::onPaint(canvas);
    }
  };
  struct cOpener : cXRoot {
    cNSWMaker* maker = nullptr;
    cPainted* dialog = nullptr;
    std::atomic<bool> pressed{false};
    bool processKey(int key, bool shift, bool ctrl, bool alt) override {
      if (key != 'S' || pressed) return cXRoot::processKey(key, shift, ctrl, alt);
      pressed = true;
      maker->modal("opened", 120, 80, dialog, winTarget(), false);
      return true;
    }
  };
  const KeyCode s = XKeysymToKeycode(other, 's');
  for (const bool released : {true, false}) {
    SCOPED_TRACE(released ? "released" : "never released");
    cPainted dialog;
    dialog.endOn = 0;
    cOpener main;
    main.endOn = 0;
    main.maker = &ns();
    main.dialog = &dialog;
    std::atomic<bool> held{false}, shown{false};
    std::string types; // the main window's and the dialog's
    std::thread typist([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(400));
      const unsigned long win = xid(main);
      auto send = [&](int type) {
        XEvent ev{};
        ev.xkey.type = type;
        ev.xkey.display = other;
        ev.xkey.window = win;
        ev.xkey.root = DefaultRootWindow(other);
        ev.xkey.keycode = s;
        ev.xkey.same_screen = True;
        XSendEvent(other, win, True, type == KeyPress ? KeyPressMask : KeyReleaseMask, &ev);
        XFlush(other);
      };
      auto mapped = [&] {
        XWindowAttributes a{};
        return dialog.window && XGetWindowAttributes(other, dialog.window, &a) &&
               a.map_state != IsUnmapped;
      };
      send(KeyPress);
      for (int i = 0; i < 200 && !dialog.window; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      held = dialog.window && !mapped(); // within the moment a held key holds it back
      if (released) send(KeyRelease);
      for (int i = 0; i < 200 && !mapped(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      shown = mapped();
      types = windowType(other, win) + " " + windowType(other, dialog.window);
      dialog.postAction(new cChildAction(9));
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      main.postAction(new cChildAction(9));
    });
    std::atomic<bool> ended{false};
    std::thread watchdog = later(main, 8000, ended);
    ns().modal("main", 200, 100, &main, nullptr, false);
    ended = true;
    typist.join();
    watchdog.join();
    EXPECT_TRUE(main.pressed);
    EXPECT_TRUE(held);
    EXPECT_TRUE(shown);
    // Only the window over another is a dialog.
    EXPECT_EQ(types, "_NET_WM_WINDOW_TYPE_NORMAL _NET_WM_WINDOW_TYPE_DIALOG");
  }
}

// A form with one focused edit box; a code-9 action ends its modal run.
class cEditDialog : public cCustomForm {
public:
  cEditChild edit;
  void onConstruct() override {
    cCustomForm::onConstruct();
    clientArea()->attach(&edit, 10, 10, 260, 24);
    edit.focus();
  }
  bool onAction(cChildElement* source, cChildAction* action) override {
    if (action->code == 9) end_modal(0);
    return cCustomForm::onAction(source, action);
  }
};

TEST_F(X11, TheEditBoxTakesTypedTextAndTheClipboard) {
  cEditDialog dialog;
  std::string copied, selected;
  std::thread user([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    // Accents and CJK through the input method, then copied out with ctrl+C. xdotool reads
    // its argument in the locale, which must be a UTF-8 one whatever ours is.
    // xdotool lends each such character a spare key and takes it back as it ends; the
    // blank after them, erased again, gives a slow reader time for the last one.
    run("LC_ALL=C.UTF-8 xdotool type --delay 100 'x\xc3\xa9\xe6\x97\xa5\xe6\x9c\xac '");
    run("xdotool key BackSpace ctrl+a ctrl+c");
    copied = run("xclip -o -selection clipboard 2>&1");
    selected = run("xclip -o -selection primary 2>&1"); // the selection, offered as PRIMARY
    // Text another program put on the clipboard, pasted with ctrl+V at the end.
    std::system("printf ' pasted' | xclip -selection clipboard -i >/dev/null 2>&1");
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    run("xdotool key End ctrl+v");
    // Another program's PRIMARY, pasted by the middle button at the start of the box.
    std::system("printf 'mid' | xclip -selection primary -i >/dev/null 2>&1");
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    sPoint at;
    dialog.edit.absPos(at);
    run("xdotool mousemove " + std::to_string(at.x + 2) + " " + std::to_string(at.y + 12) +
        " click 2");
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    // Taking both selections back ends xclip's children.
    run("xdotool key ctrl+a ctrl+c");
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    dialog.postAction(new cChildAction(9));
  });
  ns().modal("edit", 280, 100, &dialog, nullptr, false);
  user.join();
  EXPECT_EQ(copied, "x\xc3\xa9\xe6\x97\xa5\xe6\x9c\xac");
  EXPECT_EQ(selected, copied);
  EXPECT_STREQ(dialog.edit.text(), "midx\xc3\xa9\xe6\x97\xa5\xe6\x9c\xac pasted");
}

// A form with a tree: a (a1, a2) collapsed, b (b1 (b1x) collapsed, b2). It records the
// selected items; a posted kEnd action ends its modal run.
class cTreeDialog : public cCustomForm {
public:
  using cItem = cTreeViewChild::cTreeViewItem;
  cTreeViewChild tree;
  std::vector<std::string> selected;
  cItem *a = nullptr, *b1 = nullptr;
  static constexpr int kEnd = 100;

  void onConstruct() override {
    cCustomForm::onConstruct();
    clientArea()->attach(&tree, 10, 10, 260, 200);
    a = add(nullptr, "a");
    add(a, "a1");
    add(a, "a2");
    cItem* b = add(nullptr, "b");
    b1 = add(b, "b1");
    add(b1, "b1x");
    add(b, "b2");
    a->collapsed = b1->collapsed = true;
    tree.build();
  }
  cItem* add(cItem* parent, const char* text) {
    auto* item = new cItem(text, nullptr);
    tree.storeUnder(parent, item);
    return item;
  }
  bool onAction(cChildElement* source, cChildAction* action) override {
    if (source == &tree && action->code == cTreeViewChild::kSelected)
      selected.push_back(static_cast<cTreeViewChild::cTreeItemAction*>(action)->item->text);
    if (source == this && action->code == kEnd) end_modal(0);
    return cCustomForm::onAction(source, action);
  }
};

TEST_F(X11, ATreeIsWalkedWithTheMouseAndTheArrows) {
  cTreeDialog dialog;
  std::thread user([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const auto clickOn = [](cChildElement* e) {
      sPoint at;
      e->absPos(at); // on the screen
      run("xdotool mousemove " + std::to_string(at.x + 4) + " " +
          std::to_string(at.y + e->height() / 2) + " click 1");
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
    };
    clickOn(dialog.b1->parentItem()->element.get()); // b
    // Down to b1, Right opens it and goes in, Left goes back out, "-" closes it.
    run("xdotool key --delay 80 Down Right Left minus");
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    clickOn(dialog.a->control.get()); // a's expander opens it and selects it
    dialog.postAction(new cChildAction(cTreeDialog::kEnd));
  });
  ns().modal("tree", 280, 240, &dialog, nullptr, false);
  user.join();
  EXPECT_EQ(dialog.selected, (std::vector<std::string>{"b", "b1", "b1x", "b1", "a"}));
  EXPECT_FALSE(dialog.a->collapsed);
  EXPECT_TRUE(dialog.b1->collapsed);
}

} // namespace
