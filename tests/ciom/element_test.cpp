// The element tree over a test double of the window: mouse routing, capture, hover, double
// clicks, keys, tab and arrow order, focus, actions across threads, anchors and repaints.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/job.h"
#include "ciom/element.h"
#include "ciom/langfile.h"
#include "ciom/theme.h"

namespace {

std::vector<std::string> gLog;

// Records what the tree asks of its window; deliveries wait in a queue that the test (the
// GUI thread) runs with deliver().
class cTestTarget : public cWindowRequestTarget {
public:
  cTestTarget(cChildElement& root, int w = 400, int h = 300) : myRoot(root) {
    root.setWinTarget(this, 0, 0, w, h);
  }
  ~cTestTarget() override { myRoot.setWinTarget(nullptr, 0, 0, 0, 0); }

  bool _rt_send_action(void* element) override { return queue(false, element); }
  bool _rt_receive_action(void* element) override { return queue(true, element); }
  void _rt_repaint(const sArea* area) override { repaints.push_back(*area); }
  bool _rt_capturepointer(bool on) override {
    captured = on;
    return true;
  }
  bool _rt_setpointer(int pointer) override {
    this->pointer = pointer;
    return true;
  }
  const cCiomLangData* _rt_getnamedlangsection(const char* name) override {
    return std::string(name) == "test.section" ? section : nullptr;
  }

  // Runs every queued delivery, as the window's message loop would.
  int deliver() {
    int n = 0;
    for (;;) {
      std::pair<bool, cChildElement*> item;
      {
        std::lock_guard guard(myLock);
        if (myQueue.empty()) return n;
        item = myQueue.front();
        myQueue.pop_front();
      }
      if (item.first)
        myRoot.processPostFirst(item.second);
      else
        myRoot.processActionFirst(item.second);
      ++n;
    }
  }
  // Waits until another thread has queued something.
  void waitQueued() {
    std::unique_lock guard(myLock);
    myQueued.wait(guard, [this] { return !myQueue.empty(); });
  }

  std::vector<sArea> repaints;
  bool captured = false;
  int pointer = -1;
  const cCiomLangData* section = nullptr;
  bool refuse = false;

private:
  bool queue(bool posted, void* element) {
    if (refuse) return false;
    std::lock_guard guard(myLock);
    myQueue.emplace_back(posted, static_cast<cChildElement*>(element));
    myQueued.notify_all();
    return true;
  }
  cChildElement& myRoot;
  std::mutex myLock;
  std::condition_variable myQueued;
  std::deque<std::pair<bool, cChildElement*>> myQueue;
};

// An element that logs its hooks as "name:event".
class cProbe : public cChildElement {
public:
  explicit cProbe(std::string name, bool tabStop = false, bool handles = false)
      : myName(std::move(name)), myTabStopWanted(tabStop), myHandles(handles) {}

  void onMouseButton(int x, int y, int button, bool down) override {
    log("button" + std::to_string(button) + (down ? "down" : "up") + "@" + std::to_string(x) + "," +
        std::to_string(y));
  }
  void onMouseMoving(int x, int y) override {
    log("move@" + std::to_string(x) + "," + std::to_string(y));
  }
  void onMouseOver() override { log("over"); }
  void onMouseLeft() override { log("left"); }
  void onMouseDoubleClick(int x, int y) override {
    log("double@" + std::to_string(x) + "," + std::to_string(y));
    cChildElement::onMouseDoubleClick(x, y);
  }
  bool onMouseWheel(int, int, bool, bool, int) override {
    log("wheel");
    return wheelTaken;
  }
  bool onKey(int key, bool, bool, bool) override {
    log("key" + std::to_string(key));
    return true;
  }
  bool onChar(unsigned short ch, bool, bool, bool) override {
    log(std::string("char") + static_cast<char>(ch));
    return true;
  }
  void onSetFocus(bool, bool) override { log("focus"); }
  void onLooseFocus(bool, bool) override { log("unfocus"); }
  bool onAction(cChildElement* source, cChildAction* action) override {
    const auto* probe = dynamic_cast<cProbe*>(source);
    log("action" + std::to_string(action->code) + "from" + (probe ? probe->myName : "?") +
        (std::this_thread::get_id() == guiThread ? "" : "offthread"));
    return myHandles || cChildElement::onAction(source, action);
  }
  void onSizeChanged() override {
    log("size" + std::to_string(width()) + "x" + std::to_string(height()));
  }
  bool wantTabStop() override { return myTabStopWanted; }
  bool wantAcceptFoucs() override { return true; }
  bool wantCaptureArrows() override { return captureArrows; }
  bool wantCyclicArrowTabStop() override { return cyclicArrows; }
  const char* wantLangResource() override { return section; }

  void log(const std::string& what) { gLog.push_back(myName + ":" + what); }

  static std::thread::id guiThread;
  bool wheelTaken = false, captureArrows = false, cyclicArrows = false;
  const char* section = nullptr;
  std::string myName;

private:
  bool myTabStopWanted, myHandles;
};
std::thread::id cProbe::guiThread = std::this_thread::get_id();

// A panel whose content is scrolled by an offset.
class cScroller : public cProbe {
public:
  using cProbe::cProbe;
  void virtualOffset(sPoint* offset) override { *offset = scroll; }
  void virtualSize(sSize* size) override { *size = content; }
  sPoint scroll;
  sSize content{1000, 1000};
};

unsigned gNow = 1000;
unsigned fakeTicks() {
  return gNow;
}

class ElementTree : public ::testing::Test {
protected:
  void SetUp() override {
    gLog.clear();
    cChildElement::setTicks(&fakeTicks);
  }
  void TearDown() override { cChildElement::setTicks(nullptr); }
};

TEST_F(ElementTree, AttachOrdersAndRefusesTwice) {
  cProbe root("root"), a("a"), b("b"), c("c");
  cTestTarget target(root);
  ASSERT_TRUE(root.attach(&a, 0, 0, 10, 10));
  ASSERT_TRUE(root.attach(&b, 0, 0, -5, 10)); // a negative size becomes 0
  EXPECT_FALSE(root.attach(&a, 5, 5, 1, 1));
  EXPECT_EQ(b.width(), 0);
  EXPECT_FALSE(a.attach(&root, 0, 0, 1, 1)); // no cycles
  ASSERT_TRUE(a.attach(&c, 1, 1, 2, 2));
  EXPECT_EQ(root.getFirstChild(), &a);
  EXPECT_EQ(root.getNextChild(&a), &b);
  EXPECT_EQ(root.getNextChild(&b), nullptr);
  EXPECT_EQ(b.getFirstChild(), nullptr);
  EXPECT_TRUE(root.isChild(&c));
  EXPECT_FALSE(root.isDirectChild(&c));
  // A detached child's order number is not reused: the next one goes last.
  ASSERT_TRUE(root.dettach(&a));
  EXPECT_EQ(a.parent(), nullptr);
  ASSERT_TRUE(root.attach(&a, 0, 0, 1, 1));
  EXPECT_EQ(root.getNextChild(&b), &a);

  // Part 0 is clamped to the minimum and maximum sizes; fixed parts are not.
  cProbe sized("sized"), fixed("fixed");
  sized.setMinSize(20, -1);
  sized.setMaxSize(-1, 30);
  fixed.setMaxSize(5, 5);
  root.attach(&sized, 0, 0, 10, 100);
  root.attach(&fixed, 0, 0, 10, 100, cptFixed);
  EXPECT_EQ(sized.width(), 20);
  EXPECT_EQ(sized.height(), 30);
  EXPECT_EQ(fixed.width(), 10);

  // A destroyed child leaves the tree, and its address is no longer an element.
  cChildElement* gone = nullptr;
  {
    cProbe brief("brief");
    root.attach(&brief, 0, 0, 10, 10);
    gone = &brief;
    EXPECT_TRUE(cChildElement::valid(gone));
  }
  EXPECT_FALSE(cChildElement::valid(gone));
  EXPECT_EQ(root.getNextChild(&fixed), nullptr);
}

TEST_F(ElementTree, MouseRoutesThroughScrollAndFixedParts) {
  cScroller root("root");
  cTestTarget target(root);
  cProbe client("client"), corner("corner"), columnHead("head"), rowHead("rowhead");
  root.attach(&client, 100, 100, 50, 50, cptClient);
  root.attach(&corner, 0, 0, 20, 20, cptFixed);
  root.attach(&columnHead, 100, 0, 50, 20, cptFixedVert); // scrolls only horizontally
  root.attach(&rowHead, 0, 100, 20, 50, cptFixedHorz);    // scrolls only vertically
  root.scroll = {60, 70};

  root.processMouseBtn(45, 35, 1, true, false, false); // 100-60, 100-70 is the client's corner
  root.processMouseBtn(5, 5, 1, false, false, false);
  root.processMouseBtn(45, 5, 1, false, false, false); // head: x scrolled, y fixed
  root.processMouseBtn(5, 35, 1, false, false, false); // row head: x fixed, y scrolled
  root.processMouseBtn(300, 250, 1, false, false, false);
  EXPECT_EQ(gLog, (std::vector<std::string>{"client:button1down@5,5", "corner:button1up@5,5",
                                            "head:button1up@5,5", "rowhead:button1up@5,5",
                                            "root:button1up@300,250"}));

  // The first child in order wins where children overlap; disabled and hidden ones are
  // passed over.
  gLog.clear();
  cProbe over("over"), under("under");
  root.scroll = {};
  root.attach(&over, 200, 200, 20, 20);
  root.attach(&under, 200, 200, 20, 20);
  root.processMouseBtn(205, 205, 1, false, false, false);
  over.disable();
  root.processMouseBtn(205, 205, 1, false, false, false);
  under.hide();
  root.processMouseBtn(205, 205, 1, false, false, false);
  EXPECT_EQ(gLog, (std::vector<std::string>{"over:button1up@5,5", "under:button1up@5,5",
                                            "root:button1up@205,205"}));
}

TEST_F(ElementTree, CaptureTakesEveryMouseEvent) {
  cProbe root("root"), panel("panel"), knob("knob"), other("other");
  cTestTarget target(root);
  root.attach(&panel, 10, 10, 100, 100);
  panel.attach(&knob, 10, 10, 10, 10);
  root.attach(&other, 200, 200, 10, 10);
  ASSERT_TRUE(knob.capturePointer(false));
  EXPECT_TRUE(target.captured);
  root.processMouseMove(205, 205); // over "other", yet the knob's
  root.processMouseBtn(0, 0, 1, false, false, false);
  ASSERT_TRUE(knob.releasePointer());
  EXPECT_FALSE(target.captured);
  root.processMouseBtn(205, 205, 1, false, false, false);
  EXPECT_EQ(gLog, (std::vector<std::string>{"knob:over", "knob:move@185,185",
                                            "knob:button1up@-20,-20", "other:button1up@5,5"}));
}

TEST_F(ElementTree, HoverEntersAndLeaves) {
  cProbe root("root"), a("a"), b("b");
  cTestTarget target(root);
  root.attach(&a, 0, 0, 50, 50);
  root.attach(&b, 50, 0, 50, 50);
  b.setPointer(mpHand);
  root.processMouseMove(10, 10);
  root.processMouseMove(20, 10); // same element: no new enter
  root.processMouseMove(60, 10);
  EXPECT_EQ(target.pointer, mpHand);
  EXPECT_TRUE(b.hot());
  EXPECT_FALSE(a.hot());
  // An element with a hover look is repainted as the pointer leaves it.
  b.setHoverLook(true);
  target.repaints.clear();
  root.processMouseMove(200, 200);
  EXPECT_FALSE(b.hot());
  EXPECT_EQ(target.repaints, (std::vector<sArea>{{50, 0, 100, 50}}));
  EXPECT_EQ(target.pointer, mpArrow);
  EXPECT_EQ(gLog,
            (std::vector<std::string>{"a:over", "a:move@10,10", "a:move@20,10", "a:left", "b:over",
                                      "b:move@10,10", "b:left", "root:over", "root:move@200,200"}));
  // A hovered element that goes away is not told later.
  gLog.clear();
  {
    cProbe brief("brief");
    root.attach(&brief, 300, 0, 10, 10);
    root.processMouseMove(305, 5);
  }
  root.processMouseMove(10, 10);
  EXPECT_EQ(gLog, (std::vector<std::string>{"root:left", "brief:over", "brief:move@5,5", "a:over",
                                            "a:move@10,10"}));
}

TEST_F(ElementTree, DoubleClickNeedsTimeAndPlace) {
  cProbe root("root");
  cTestTarget target(root);
  const auto press = [&](int x, int y) { root.processMouseBtn(x, y, 1, true, false, false); };
  const auto doubles = [] {
    int n = 0;
    for (const std::string& line : gLog) n += line.rfind("root:double", 0) == 0;
    return n;
  };
  gNow = 10000;
  press(50, 50);
  gNow += 499;
  press(52, 48); // 499 ms and 2 pixels: a double click
  EXPECT_EQ(doubles(), 1);

  gNow += 10000;
  press(50, 50);
  gNow += 500;
  press(50, 50); // 500 ms: a new first click
  EXPECT_EQ(doubles(), 1);
  gNow += 100;
  press(53, 50); // 3 pixels
  EXPECT_EQ(doubles(), 1);
  press(53, 50); // the same instant is not later than the last click
  EXPECT_EQ(doubles(), 1);

  // The double-click action only when asked for.
  root.setNotifyDoubleClick(true);
  gNow += 10;
  press(53, 50);
  target.deliver();
  EXPECT_EQ(gLog.back(), "root:action3fromroot");
}

TEST_F(ElementTree, RightReleaseRaisesContextRequestFirst) {
  cProbe root("root");
  cTestTarget target(root);
  class cRecorder : public cProbe {
  public:
    cRecorder(cTestTarget& t) : cProbe("r"), target(t) {}
    void onMouseButton(int, int, int, bool) override {
      queuedBefore = target.deliver(); // the request is already queued
    }
    cTestTarget& target;
    int queuedBefore = -1;
  } recorder(target);
  root.attach(&recorder, 0, 0, 10, 10);
  root.processMouseBtn(3, 4, 2, false, false, true);
  EXPECT_EQ(recorder.queuedBefore, 1);
  EXPECT_EQ(gLog, (std::vector<std::string>{"r:action2fromr", "root:action2fromr"}));
}

TEST_F(ElementTree, WheelBubblesOutwards) {
  cProbe root("root"), panel("panel"), list("list");
  cTestTarget target(root);
  root.attach(&panel, 0, 0, 100, 100);
  panel.attach(&list, 10, 10, 50, 50);
  panel.wheelTaken = true;
  EXPECT_TRUE(root.processMouseWheel(20, 20, false, false, 1));
  EXPECT_EQ(gLog, (std::vector<std::string>{"list:wheel", "panel:wheel"}));
  gLog.clear();
  list.wheelTaken = true;
  root.processMouseWheel(20, 20, false, false, 1);
  EXPECT_EQ(gLog, (std::vector<std::string>{"list:wheel"}));
}

// A form with two groups: [a, b] in one panel, [c] in another, and d on the form.
class cFocusTree : public ElementTree {
protected:
  void SetUp() override {
    ElementTree::SetUp();
    root.attach(&left, 0, 0, 100, 100);
    root.attach(&right, 100, 0, 100, 100);
    left.attach(&a, 0, 0, 10, 10);
    left.attach(&b, 0, 20, 10, 10);
    right.attach(&c, 0, 0, 10, 10);
    root.attach(&d, 0, 200, 10, 10);
    for (cProbe* p : {&a, &b, &c}) p->setArrowTabStop(true);
  }
  void focusOn(cChildElement& e) {
    e.focus();
    target.deliver();
    gLog.clear();
  }
  cProbe root{"root"}, left{"left"}, right{"right"};
  cProbe a{"a", true}, b{"b", true}, c{"c", true}, d{"d", true};
  cTestTarget target{root};
};

TEST_F(cFocusTree, FocusMovesDownAChain) {
  a.focus();
  EXPECT_EQ(root.getFocused(), nullptr); // a request, delivered on the GUI thread
  target.deliver();
  EXPECT_EQ(root.getFocused(), &a);
  EXPECT_TRUE(a.hasFocus());
  EXPECT_TRUE(left.focused());
  EXPECT_FALSE(right.focused());
  EXPECT_EQ(gLog, (std::vector<std::string>{"a:action4froma", "a:focus", "a:action1froma",
                                            "left:action1froma", "root:action1froma"}))
      << "the focus request, then the focus action raised by the new holder";

  gLog.clear();
  root.processFocusDirect(&c);
  target.deliver();
  EXPECT_EQ(root.getFocused(), &c);
  EXPECT_FALSE(a.hasFocus());
  EXPECT_FALSE(left.focused());
  EXPECT_EQ(gLog, (std::vector<std::string>{"a:unfocus", "c:focus", "c:action1fromc",
                                            "right:action1fromc", "root:action1fromc"}));
}

TEST_F(cFocusTree, TabWalksInOrderWrapsAndSkipsWhatCannotTakeIt) {
  focusOn(a);
  const auto tab = [&](bool back) {
    root.processKey(cChildElement::kKeyTab, back, false, false);
    target.deliver();
    return root.getFocused();
  };
  EXPECT_EQ(tab(false), &b);
  EXPECT_EQ(tab(false), &c);
  EXPECT_EQ(tab(false), &d);
  EXPECT_EQ(tab(false), &a); // round again from the first
  EXPECT_EQ(tab(true), &d);
  EXPECT_EQ(tab(true), &c);
  // Hidden and disabled elements are passed over.
  focusOn(a);
  b.hide();
  right.disable();
  EXPECT_EQ(tab(false), &d);
  EXPECT_EQ(tab(true), &a);
}

TEST_F(cFocusTree, ArrowsMoveWithinTheGroup) {
  focusOn(a);
  root.processKey(cChildElement::kKeyDown, false, false, false);
  EXPECT_EQ(root.getFocused(), &b);
  // At the end of a group that does not wrap, the arrow reaches the element itself.
  gLog.clear();
  EXPECT_TRUE(root.processKey(cChildElement::kKeyDown, false, false, false));
  EXPECT_EQ(root.getFocused(), &b);
  EXPECT_EQ(gLog, (std::vector<std::string>{"b:key340"}));
  left.cyclicArrows = true;
  root.processKey(cChildElement::kKeyRight, false, false, false);
  EXPECT_EQ(root.getFocused(), &a);
  root.processKey(cChildElement::kKeyLeft, false, false, false);
  EXPECT_EQ(root.getFocused(), &b);
  // An element that wants the arrows gets them as keys.
  b.captureArrows = true;
  gLog.clear();
  root.processKey(cChildElement::kKeyUp, false, false, false);
  EXPECT_EQ(root.getFocused(), &b);
  EXPECT_EQ(gLog, (std::vector<std::string>{"b:key338"}));
}

TEST_F(cFocusTree, KeysReachTheFocusedElementOrAreSwallowed) {
  focusOn(c);
  EXPECT_TRUE(root.processKey('A', false, false, false));
  EXPECT_TRUE(root.processChar('a', false, false, false));
  EXPECT_EQ(gLog, (std::vector<std::string>{"c:key65", "c:chara"}));
  gLog.clear();
  right.disable();
  EXPECT_TRUE(root.processKey('A', false, false, false)) << "swallowed, reported as handled";
  EXPECT_TRUE(gLog.empty());
  right.enable();
  c.hide();
  EXPECT_TRUE(root.processChar('a', false, false, false));
  EXPECT_TRUE(gLog.empty());
  // Without a focus nothing takes the key.
  cProbe lone("lone");
  cTestTarget t2(lone);
  EXPECT_FALSE(lone.processKey('A', false, false, false));
}

TEST_F(cFocusTree, MenuKeyAsksForAContextMenu) {
  focusOn(d);
  root.processKey(cChildElement::kKeyMenu, false, false, false);
  root.processKey(cChildElement::kKeyF10, true, false, false);
  root.processKey(cChildElement::kKeyF10, true, true, false); // not with ctrl
  target.deliver();
  EXPECT_EQ(gLog,
            (std::vector<std::string>{"d:key359", "d:key455", "d:key455", "d:action2fromd",
                                      "root:action2fromd", "d:action2fromd", "root:action2fromd"}));
}

TEST_F(ElementTree, ActionsBubbleToTheFirstHandler) {
  cProbe root("root", false, true), form("form", false, true), panel("panel"), button("button");
  cTestTarget target(root);
  root.attach(&form, 0, 0, 100, 100);
  form.attach(&panel, 0, 0, 100, 100);
  panel.attach(&button, 0, 0, 10, 10);
  button.notifyAction();
  EXPECT_TRUE(gLog.empty());
  EXPECT_EQ(target.deliver(), 1);
  EXPECT_EQ(gLog, (std::vector<std::string>{"button:action0frombutton", "panel:action0frombutton",
                                            "form:action0frombutton"}));
  // Posted actions go to the element alone.
  gLog.clear();
  button.postAction(new cChildAction(7));
  target.deliver();
  EXPECT_EQ(gLog, (std::vector<std::string>{"button:action7frombutton"}));
}

TEST_F(ElementTree, ActionsForADestroyedElementAreDropped) {
  cProbe root("root");
  cTestTarget target(root);
  struct cCounted : cChildAction {
    explicit cCounted(int* deleted) : cChildAction(6), deleted(deleted) {}
    ~cCounted() override { ++*deleted; }
    int* deleted;
  };
  int deleted = 0;
  auto* doomed = new cProbe("doomed");
  root.attach(doomed, 0, 0, 10, 10);
  doomed->notifyAction(new cCounted(&deleted));
  doomed->postAction(new cCounted(&deleted));
  delete doomed;
  EXPECT_EQ(deleted, 2); // deleted unread with the element
  EXPECT_EQ(target.deliver(), 2);
  EXPECT_TRUE(gLog.empty());
}

TEST_F(ElementTree, UnconnectedElementsFailQuietly) {
  cProbe lone("lone");
  EXPECT_FALSE(lone.notifyAction());
  EXPECT_EQ(lone.modal("x", 10, 10, nullptr, false), -1);
  EXPECT_EQ(lone.modal_popup(0, 0, 10, 10, nullptr), -1);
  EXPECT_EQ(lone.popup(0, 0, 10, 10, nullptr, false), nullptr);
  EXPECT_FALSE(lone.capturePointer(true));
  lone.end_modal(3);
  EXPECT_EQ(lone.requestNamedLangResource("any"), nullptr);
  // A refused sendAction does not wait and frees the action.
  EXPECT_FALSE(lone.sendAction(new cSentChildAction(6)));
}

// A job that sends an action to an element and records what sendAction answered.
class cSender : public cJob {
public:
  explicit cSender(cChildElement& to) : cJob(nullptr), myTo(to) {}
  ~cSender() override { terminate(5000); }
  int onJobRun() override {
    answer = myTo.sendAction(new cSentChildAction(9)) ? 1 : 0;
    return 0;
  }
  std::atomic<int> answer{-1};

private:
  cChildElement& myTo;
};

TEST_F(ElementTree, SendActionFromAJobIsAnsweredOnTheGuiThread) {
  cProbe root("root"), worker("worker");
  cTestTarget target(root);
  root.attach(&worker, 0, 0, 10, 10);
  cSender sender(worker);
  ASSERT_TRUE(sender.start());
  target.waitQueued();
  EXPECT_EQ(sender.answer, -1); // still waiting for the GUI thread
  EXPECT_EQ(target.deliver(), 1);
  ASSERT_TRUE(sender.terminate(5000));
  EXPECT_EQ(sender.answer, 1);
  EXPECT_EQ(gLog, (std::vector<std::string>{"worker:action9fromworker"}));
}

TEST_F(ElementTree, AnchorsFollowTheParentsSize) {
  cScroller root("root");
  cTestTarget target(root, 400, 300);
  root.content = {400, 300};
  cProbe fill("fill"), bottomBar("bar"), corner("corner");
  corner.setMinSize(30, -1);
  root.anchor(&fill, 5, 5, ~10, ~40);      // 10 narrower, 40 shorter than the parent
  root.anchor(&bottomBar, 0, ~30, ~0, 30); // the bottom 30 pixels, full width
  root.anchor(&corner, ~20, ~20, 20, 20);  // 20 from the right and bottom, min width 30
  const auto rects = [&] {
    std::vector<sRect> out(3);
    fill.childRect(&out[0]);
    bottomBar.childRect(&out[1]);
    corner.childRect(&out[2]);
    return out;
  };
  EXPECT_EQ(rects(), (std::vector<sRect>{{5, 5, 390, 260}, {0, 270, 400, 30}, {380, 280, 30, 20}}));
  gLog.clear();
  root.content = {600, 500};
  root.processSizeChanges(600, 500, false);
  EXPECT_EQ(rects(), (std::vector<sRect>{{5, 5, 590, 460}, {0, 470, 600, 30}, {580, 480, 30, 20}}));
  EXPECT_EQ(gLog,
            (std::vector<std::string>{"fill:size590x460", "bar:size600x30", "root:size600x500"}));
}

TEST_F(ElementTree, RepaintsClimbThroughScrollAndClip) {
  cScroller root("root");
  cTestTarget target(root, 200, 100);
  cProbe child("child"), fixed("fixed");
  root.attach(&child, 50, 50, 100, 100);
  root.attach(&fixed, 50, 50, 10, 10, cptFixedHorz); // part 3: keeps x, scrolls y
  root.scroll = {30, 20};
  target.repaints.clear();
  const sRect part = {0, 0, 10, 10};
  child.repaint(&part);
  fixed.repaint(&part);
  child.repaint(); // the whole child, cut to the window
  EXPECT_EQ(target.repaints,
            (std::vector<sArea>{{20, 30, 30, 40}, {50, 30, 60, 40}, {20, 30, 120, 100}}));
  // Hidden elements ask for nothing.
  target.repaints.clear();
  child.hide(false);
  child.repaint();
  EXPECT_TRUE(target.repaints.empty());
}

TEST_F(ElementTree, StringsComeFromTheNearestSection) {
  cCiomLangData section;
  cFasterTreeList<unsigned short, _guardchar<char>> strings;
  strings.insert(0)->set("zero");
  strings.insert(1)->set("one");
  ASSERT_TRUE(section.create(strings));
  cProbe root("root"), form("form"), button("button"), orphan("orphan");
  cTestTarget target(root);
  target.section = &section;
  form.section = "test.section";
  orphan.section = "no.such.section";
  root.attach(&form, 0, 0, 10, 10);
  form.attach(&button, 0, 0, 5, 5);
  form.attach(&orphan, 0, 0, 5, 5);
  EXPECT_STREQ(button.string(1), "one"); // the form's section
  EXPECT_EQ(root.string(1), nullptr);
  EXPECT_EQ(orphan.string(0), nullptr); // names its own section, which did not resolve
  EXPECT_STREQ(orphan.string(&button, 0), "zero");
}

} // namespace
