// A top-level window as the toolkit sees it: the platform handle, the event callback that
// turns platform events into virtual calls, and the pending-action queue that other
// threads fill.
#pragma once

#include <deque>
#include <memory>

#include "base/locks.h"
#include "nslib/nswnd.h"

class cNSWindow {
public:
  // A pending action; typeOf() says how the GUI thread handles it.
  class cActionItem {
  public:
    virtual ~cActionItem() = default;
    virtual int typeOf() const = 0;
  };
  class cInitItem : public cActionItem {
  public:
    int typeOf() const override { return 0; }
  };
  class cSentActionItem : public cActionItem {
  public:
    explicit cSentActionItem(void* element) : element(element) {}
    int typeOf() const override { return 1; }
    void* element;
  };
  class cPostActionItem : public cActionItem {
  public:
    explicit cPostActionItem(void* element) : element(element) {}
    int typeOf() const override { return 2; }
    void* element;
  };
  // All four zero: the whole window.
  class cRepaintAction : public cActionItem {
  public:
    cRepaintAction(int x, int y, int w, int h) : x(x), y(y), w(w), h(h) {}
    int typeOf() const override { return 3; }
    int x, y, w, h;
  };
  class cFocusAction : public cActionItem {
  public:
    int typeOf() const override { return 4; }
  };
  class cFocusLostAction : public cActionItem {
  public:
    int typeOf() const override { return 5; }
  };

  cNSWindow();
  cNSWindow(const cNSWindow&) = delete;
  cNSWindow& operator=(const cNSWindow&) = delete;
  virtual ~cNSWindow();

  virtual void onInit() {}
  virtual bool onClose() { return true; } // true allows closing
  virtual void onSize(int, int) {}
  virtual void onMove() {}
  virtual void onMouseButton(int, int, int, bool, bool, bool, bool, bool) {}
  virtual void onMouseMove(int, int, int, bool, bool, bool, bool) {}
  virtual void onMouseWheel(int, int, int, int, int, bool, bool, bool, bool) {}
  virtual void onKey(int, bool, bool, bool, bool, bool) {}
  virtual void onChar(unsigned short, bool, bool) {}
  virtual void onAction(void*) {}
  virtual void onPostAction(void*) {}
  virtual void onPaint(void*, int, int, int, int) {}
  virtual void onFocus() {}
  virtual void onFocusLost() {}

  static bool init();
  static void msgloop();
  static bool desktopSize(int& w, int& h);
  static bool blockSleep(const char* reason);
  static void unblockSleep();
  static long wndCallbackProc(int code, void* data, void* param);
  long wndProc(int code, void* data);
  std::unique_ptr<cActionItem> fetchRemoveAction();
  void asyncOnFocus();
  void asyncOnFocusLost();
  bool create_wnd(const char* caption, int w, int h, bool sizeable, int x, int y);
  bool create_popup(int x, int y, int w, int h, bool takesInput, cNSWindow* owner);
  int modal(cNSWindow* owner);
  void show();
  void captureMouse();
  void cancelCaptureMouse();
  void notifyAction(void* element);
  void addAction(cActionItem* item); // takes ownership; any thread
  void notifyPostAction(void* element);
  void requestRepaint(int x, int y, int w, int h);
  void endModal(int result);
  void minimize();
  void maximize();
  void move(int x, int y, int w, int h);
  bool setPointer(int type);
  void setMinSize(int w, int h);
  void setMaxSize(int w, int h);
  bool getPosSize(int& x, int& y, int& w, int& h);
  void* cgctx();
  bool clientArea(int& w, int& h);
  void focus();
  bool setCaption(const char* text);
  static bool recommendMainWindowSize(int& x, int& y, int& w, int& h);
  void close();

  NSWND handle() const { return myWnd; }

private:
  // Runs the initialisation item if it still waits, so that a window is built before it
  // is first shown and painted.
  void runInit();
  void handle(cActionItem& item);

  NSWND myWnd = nullptr;
  cCriticalSection myQueueLock;
  std::deque<std::unique_ptr<cActionItem>> myQueue;
  // Cleared when the window object dies, so that an event handler that deleted it stops.
  std::shared_ptr<bool> myAlive = std::make_shared<bool>(true);
};
