// The element tree: every control is a cChildElement, a rectangle in its parent's
// coordinates that paints itself on a canvas and receives mouse, keyboard, focus and action
// events from its parent. Only the root is bound to a window, through a
// cWindowRequestTarget; every request that needs the window climbs to the root.
//
// The tree does not own its children: a child lives as long as its owner keeps it (forms
// and widgets hold their controls as members). Operations named process* are the dispatch
// machinery, on* are the hooks that widgets override, want* are asked once when an element
// is attached (or bound to a window) and stored. Everything runs on the GUI thread except
// notifyAction, postAction and sendAction, which any thread may call.
#pragma once

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "action.h"
#include "canvas.h"
#include "winmaker.h"
#include "wintarget.h"

class cCiomLangData;
class cHintMaster;

enum eControlPartType {
  cptClient = 0,    // scrolls with the parent's virtual offset
  cptFixed = 1,     // keeps its place in both directions
  cptFixedVert = 2, // scrolls only horizontally
  cptFixedHorz = 3, // scrolls only vertically
};

// How an element got the focus.
enum eEventOrigin { eoTab = 0, eoArrow = 1, eoDirect = 2 };

class cChildElement {
public:
  using cChildAction = ::cChildAction;

  // Key codes of the keys that the core and the widgets handle: X keysym - 0xFE00, and
  // the ASCII code for the space bar.
  enum eKeys {
    kKeySpace = 32,
    kKeyBackspace = 264,
    kKeyTab = 265,
    kKeyEscape = 283,
    kKeyHome = 336,
    kKeyLeft = 337,
    kKeyUp = 338,
    kKeyRight = 339,
    kKeyDown = 340,
    kKeyPageUp = 341,
    kKeyPageDown = 342,
    kKeyEnd = 343,
    kKeyInsert = 355,
    kKeyMenu = 359,
    kKeyEnter = 397,
    kKeyKeypadPlus = 427,
    kKeyKeypadMinus = 429,
    kKeyF3 = 448,
    kKeyF4 = 449,
    kKeyF10 = 455,
    kKeyDelete = 511,
  };
  static constexpr unsigned kDoubleClickMs = 499;
  static constexpr int kDoubleClickDistance = 2;

  cChildElement();
  cChildElement(const cChildElement&) = delete;
  cChildElement& operator=(const cChildElement&) = delete;

  virtual void notifyHover(cChildElement* element);
  virtual bool processTab(bool forward);
  // Moves the focus to the next (previous) arrow stop among the focused element's
  // siblings. The flags are the shift and ctrl state of the key.
  virtual bool processArrowTab(bool forward, bool shift, bool ctrl);
  virtual void repaintReq(const sArea* area);
  virtual bool pointerCaptureReq(cChildElement* child, bool capture);
  virtual bool focusReq(cChildElement* child, int, int);
  virtual void processPaint(cCanvas* canvas);
  virtual void processErase(cCanvas* canvas);
  virtual void processSizeChanges(int w, int h, bool force);
  virtual void processOSFocus();
  // Gives this element the focus, as arrived at by tab (0) or arrow (1) navigation.
  virtual bool processFocus(int origin, int, int, bool shift, bool ctrl);
  virtual void processFocusDirect(cChildElement* target);
  virtual bool processMouseBtn(int x, int y, int button, bool down, bool shift, bool ctrl);
  virtual bool processMouseMove(int x, int y);
  virtual bool processMouseWheel(int x, int y, bool shift, bool ctrl, int delta);
  virtual void processOSFocusLost();
  virtual void processFocusLost(bool shift, bool ctrl);
  virtual bool processChar(unsigned short ch, bool shift, bool ctrl, bool alt);
  virtual bool processKey(int key, bool shift, bool ctrl, bool alt);
  virtual bool processAction(cChildElement* source, cChildAction* action);
  virtual bool processActionFirst(cChildElement* element);
  virtual bool processPostFirst(cChildElement* element);
  virtual bool processActionNotify(cChildElement* element);
  virtual bool processPostNotify(cChildElement* element);
  // Adds this element's position, and its ancestors', to p. A root's position is its
  // window's, so the sum is a place on the desktop.
  virtual void processPosQuery(sPoint& p);
  virtual void processConstruct();
  // Asks the subtree, from the root down, whether the window may close; the first
  // refusal stops the walk.
  virtual bool processClose();
  virtual void processDettach(cChildElement* element);
  virtual void processEnableChange(bool state);
  // A transparent element's background: the first ancestor whose onBackgroundRequest
  // answers true paints, onto the element's canvas, what lies under rect (given in that
  // ancestor's coordinates) at the canvas origin.
  virtual bool requestCustomBackgroundInt(cCanvas* canvas, sRect* rect);
  virtual bool requestCustomBackground(cCanvas* canvas, sRect* rect);
  virtual bool requestOSWinFocus();
  virtual const char* text();
  virtual const char* hint();
  // Copies the text (terminated, cut to cap - 1 bytes); returns its full length.
  virtual long long text(char* out, long long cap);
  virtual bool setText(const char* text, long long len, bool repaintNow);
  virtual void wipeText();
  virtual bool setHint(const char* hint);
  virtual void virtualSize(sSize* size);
  virtual void virtualOffset(sPoint* offset);
  virtual void clientRect(sRect* rect);
  virtual void onConstruct() {}
  virtual void onErase(cCanvas*) {}
  virtual void onPaint(cCanvas*) {}
  virtual bool onBackgroundRequest(cCanvas*, sRect*) { return false; }
  virtual void onSizeChanged() {}
  virtual void onMouseButton(int, int, int, bool) {}
  virtual void onMouseMoving(int, int) {}
  virtual bool onMouseWheel(int, int, bool, bool, int) { return false; }
  virtual void onMouseOver();
  virtual void onMouseLeft();
  virtual void onMouseDoubleClick(int x, int y);
  virtual bool onChar(unsigned short, bool, bool, bool) { return false; }
  virtual bool onKey(int, bool, bool, bool) { return false; }
  virtual bool onAction(cChildElement* source, cChildAction* action);
  virtual bool onClose() { return true; } // false keeps the window open
  virtual void onEnableChanged(bool) {}
  virtual void onSetFocusEvent(eEventOrigin origin, bool shift, bool ctrl);
  virtual void onSetFocus(bool, bool) {}
  // True when the focused element has its own use now for a key that its form would
  // otherwise take first (Enter, Escape): an edit that Escape would take back.
  virtual bool claimsKey(int) { return false; }
  virtual void onLooseFocus(bool, bool) {}
  virtual void onLooseFocusChild(cChildElement*, bool, bool) {}
  virtual void onMenuActivate() {}
  virtual bool attach(cChildElement* child, int x, int y, int w, int h,
                      eControlPartType part = cptClient);
  virtual bool dettach(cChildElement* child);
  virtual bool move(int x, int y, int w, int h);
  // routeToChildren: the children under the pointer still get the events.
  virtual bool capturePointer(bool routeToChildren);
  virtual bool releasePointer();
  virtual bool canTabStop();
  virtual void setTabStop(bool on);
  virtual bool canArrowTabStop();
  virtual void setArrowTabStop(bool on);
  virtual void focus();
  virtual void setTransparent(bool on);
  bool transparent() const { return myTransparent; }
  virtual cFontObject* createFont(int kind, int size, const char* face, bool bold, bool underline,
                                  bool italic);
  virtual ~cChildElement();
  virtual bool wantDoubleBuffer() { return false; }
  virtual bool wantTabStop() { return false; }
  virtual bool wantFullRepaint() { return false; }
  virtual bool wantCaptureArrows() { return false; }
  virtual bool wantAcceptFoucs() { return false; }
  virtual bool wantCyclicArrowTabStop() { return false; }
  virtual int wantBorderWidth() { return 0; }
  virtual const char* wantLangResource() { return nullptr; }
  virtual eMousePointerTypes defaultPointer() { return mpArrow; }
  virtual bool changePointerReq(eMousePointerTypes pointer);
  virtual void onInitData() {}

  // Whether p is a live element.
  static bool valid(const cChildElement* p);
  // The clock of double clicks (milliseconds); tests replace it.
  using fTicks = unsigned (*)();
  static void setTicks(fTicks ticks);
  static unsigned ticks(); // that clock now

  int width() const { return myRect.width; }
  int height() const { return myRect.height; }
  cChildElement* parent() const { return myParent; }
  void childRect(sRect* rect) const; // own rectangle in the parent
  bool childRect(const cChildElement* child, sRect* rect) const;
  void absPos(sPoint& p); // on the desktop
  cChildElement* getFirstChild() const;
  cChildElement* getNextChild(const cChildElement* child) const;
  size_t childCount() const { return myOrderOf.size(); }
  bool isChild(const cChildElement* p) const; // at any depth
  bool isDirectChild(const cChildElement* p) const;
  bool enabled() const; // this element and every ancestor
  bool visible() const;
  bool enabled_child() const { return myEnabled; }
  bool visible_child() const { return myVisible; }
  void enable();
  void disable(bool repaintNow = true);
  void show(bool repaintNow = true);
  void hide(bool repaintNow = true);
  bool hasFocus() const { return myOwnFocus; }
  bool focused() const; // holds the focus itself or through a descendant
  cChildElement* getFocused();
  bool acceptsFocus() const { return myAcceptFocus; }
  void setAcceptFocus(bool on) { myAcceptFocus = on; }
  void setNotifyDoubleClick(bool on) { myNotifyDoubleClick = on; }
  void setDoubleBuffer(bool on) { myDoubleBuffer = on; }
  void setMinSize(int w, int h);
  void setMaxSize(int w, int h);
  int minWidth() const { return myMinSize.width; }
  int minHeight() const { return myMinSize.height; }
  bool inme(int x, int y) const;
  bool anchor(cChildElement* child, int x, int y, int w, int h);
  bool setCaption(const char* text, long long len = -1);
  void setDefaultBackgroundColor(unsigned colour) { myBackground = colour & 0xFFFFFF; }
  unsigned defaultBackgroundColor() const { return myBackground; }
  bool setPointer(eMousePointerTypes pointer);
  eMousePointerTypes pointer() const { return myPointer; }
  void repaint(const sRect* rect = nullptr);

  // Queues an action (null: a new code-0 action) for delivery on the GUI thread, bubbling
  // up from this element to the first handler. Any thread.
  bool notifyAction(cChildAction* action = nullptr);
  // Queues an action for this element's own onAction on the GUI thread. Any thread.
  bool postAction(cChildAction* action);
  // Posts and waits until the GUI thread has handled it; never call it on the GUI thread.
  bool sendAction(cSentChildAction* action);

  void setLangData(const cCiomLangData* data) { myLangData = data; }
  const cCiomLangData* langData() const { return myLangData; }
  const cCiomLangData* requestNamedLangResource(const char* section);
  const char* string(int n);
  const char* string(cChildElement* other, int n);
  cFontObject* stdFont();
  cFontObject* stdFontBold();
  cFontObject* stdFontItalic();
  cFontObject* stdFontUnderlined();
  bool sizeOf(const char* text, sSize& size, cFontObject* font);
  // The advance of each unit of a UTF-16 text (see cCanvas::textRuler), through the window.
  bool rulerOf(const unsigned short* text, long long len, int* advances, cFontObject* font);
  bool desktopSize(sSize& size);
  bool maxWinSize(sSize& size);
  int screenDPI();
  bool blockSystemSleep(const char* reason);
  void unblockSystemSleep();
  bool clipboardCopyText(const char* text, long long len);
  bool clipboardCopy(const void* data, long long len);
  bool clipboardRequestText(_typebuf<char>& out);
  bool clipboardRequestText(_guardchar<char>& out);
  bool clipboardRequest(_typebuf<unsigned char>& out);
  bool clipboardTest(bool text);
  // The selection pasted with the middle button (text, UTF-8).
  bool primaryCopyText(const char* text, long long len);
  bool primaryRequestText(_guardchar<char>& out);
  // Runs this element as a modal window over owner's (or this element's) window.
  int modal(const char* caption, int w, int h, cChildElement* owner, bool sizeable);
  cWindowHolder* popup(int x, int y, int w, int h, cChildElement* owner, bool activate);
  int modal_popup(int x, int y, int w, int h, cChildElement* owner);
  void end_modal(int result);
  // Binds a root to its window and sets its rectangle; null unbinds.
  void setWinTarget(cWindowRequestTarget* target, int x, int y, int w, int h);
  // For the window layer: a root's window now lies at x, y on the desktop.
  void setWindowPos(int x, int y);
  cWindowRequestTarget* winTarget() const { return myWinTarget; }
  cChildElement* root();
  cChildElement* hovered() const { return myHovered; }
  // Whether the pointer is over this element. An element that looks different under the
  // pointer asks for setHoverLook and is repainted as the pointer comes and goes.
  bool hot() const { return myHot; }
  void setHoverLook(bool on) { myHoverLook = on; }
  cHintMaster* hintPopup() const { return myHintPopup.get(); }

protected:
  // The target of the root above this element; null when not connected to a window.
  cWindowRequestTarget* target();
  // A child's rectangle in this element's coordinates: scrolled on its non-fixed axes.
  sRect placed(const cChildElement* child) const;
  // The same with this element's scroll offset already asked for (loops over children).
  static sRect placed(const cChildElement* child, const sPoint& offset);
  // Asks the want* operations and stores their answers.
  void loadWants();

private:
  struct sAnchor {
    int x, y, w, h;
  };

  using fTextRequest = bool (cWindowRequestTarget::*)(_typebuf<unsigned char>&);
  // Text from the window (clipboard or PRIMARY) into out, "" when there is none.
  bool requestText(fTextRequest request, _guardchar<char>& out);
  void forgetChild(cChildElement* child);
  template <class fHandle>
  static bool deliverQueue(cChildElement* element, tActionQueue cChildElement::*queue,
                           fHandle handle);
  // Where the child with that order number is (it must be there).
  std::vector<std::pair<int, cChildElement*>>::iterator childAt(int order);
  // The children in order, copied: for loops that call hooks, which may attach or detach.
  std::vector<cChildElement*> childList() const;
  void clampSize(int& w, int& h) const;
  sRect resolveAnchor(const cChildElement* child, const sAnchor& a);
  void displayHint();
  bool routeMouseToChild(int x, int y, cChildElement*& hit, int& cx, int& cy);
  void focusFrom(cChildElement* target, int origin, bool shift, bool ctrl);
  cChildElement* findTabStop(bool forward, const cChildElement* after);
  bool tabStopHere();
  void paintSelf(cCanvas* canvas);

  cChildElement* myParent = nullptr;
  std::unique_ptr<cHintMaster> myHintPopup;
  tActionQueue myNotifyQueue, myPostQueue;
  const cCiomLangData* myLangData = nullptr;
  cWindowRequestTarget* myWinTarget = nullptr;
  cChildElement* myFocusedChild = nullptr;
  bool myOwnFocus = false;
  sSize myMinSize{-1, -1}, myMaxSize{-1, -1};
  // By order number (tab and hit-test order). New children always come last, so a vector
  // stays sorted, and walking it touches contiguous memory. A detached child leaves a null
  // entry behind (so that tearing down a large tree stays linear) until attach compacts.
  std::vector<std::pair<int, cChildElement*>> myChildren;
  size_t myDetachedSlots = 0;
  std::unordered_map<const cChildElement*, int> myOrderOf;
  std::unordered_map<const cChildElement*, sAnchor> myAnchors;
  sRect myRect;
  bool myEnabled = true, myVisible = true, myNeedsLayout = false;
  bool myDoubleBuffer = false, myTabStop = false, myArrowTabStop = false;
  bool myFullRepaint = false, myAcceptFocus = false, myNotifyDoubleClick = false;
  bool myTransparent = false, myCaptureChildren = false, myNamesSection = false;
  int myBorderWidth = 0;
  cChildElement* myCapturedChild = nullptr;
  cChildElement* myHovered = nullptr; // the root's hovered element
  bool myHot = false, myHoverLook = false;
  // The pointer came or went: the flag, the look, then onMouseOver or onMouseLeft.
  void enterHover();
  void leaveHover();
  bool myFixedX = false, myFixedY = false;
  unsigned myLastClickTicks = 0;
  sPoint myLastClick{-1, -1};
  unsigned myBackground = 0xFFFFFF;
  eMousePointerTypes myPointer = mpArrow;
  _guardchar<char> myText, myHint;
};
