// The window operation list over the offscreen backend, and the X11 key table.
#include <gtest/gtest.h>

#include <X11/keysym.h>
#include <atomic>
#include <cstdio>
#include <stdexcept>
#include <thread>
#include <vector>

#include "nslib/nsoffscreen.h"
#include "nslib/nsplatform.h"
#include "nslib/nsxlib.h"

namespace {

// Records what a window's callback was told.
struct sProbe {
  std::vector<int> codes;
  std::vector<sNSKey> keys;
  std::vector<sNSMouseButton> buttons;
  std::vector<sNSPaint> paints;
  std::thread::id wokenOn;
  long closeAnswer = 0;
  NSWND endOnKey = nullptr; // ends this window's modal run with the key's code
  static long callback(int code, void* data, void* param) {
    auto& p = *static_cast<sProbe*>(param);
    p.codes.push_back(code);
    switch (code) {
    case nseKey:
      p.keys.push_back(*static_cast<sNSKey*>(data));
      if (p.endOnKey && p.keys.back().down) nswnd_modal_result(p.endOnKey, p.keys.back().code);
      break;
    case nseMouseButton:
      p.buttons.push_back(*static_cast<sNSMouseButton*>(data));
      break;
    case nsePaint:
      p.paints.push_back(*static_cast<sNSPaint*>(data));
      break;
    case nseWake:
      p.wokenOn = std::this_thread::get_id();
      break;
    case nseClose:
      return p.closeAnswer;
    default:
      break;
    }
    return 0;
  }
};

class Offscreen : public ::testing::Test {
protected:
  void SetUp() override {
    setenv("QVRACI_PLATFORM", "offscreen", 1);
    ASSERT_TRUE(nswnd_init()) << nswnd_error();
    ASSERT_TRUE(nswnd_offscreen());
  }
  void TearDown() override {
    nsoff::setIdleHook(nullptr);
    for (const auto& w : nsoff::windows()) nswnd_destroy(w.handle);
    nsoff::runUntilIdle();
  }
  NSWND window(sProbe& probe, int w = 200, int h = 100) {
    return nswnd_create_wnd("probe", -1, -1, w, h, sProbe::callback, &probe);
  }
};

TEST_F(Offscreen, DeadHandlesAreRefused) {
  sProbe probe;
  NSWND wnd = window(probe);
  ASSERT_TRUE(nswnd_destroy(wnd));
  int w = 0, h = 0;
  EXPECT_FALSE(nswnd_client_area(wnd, w, h));
  EXPECT_FALSE(nswnd_show_floating(wnd));
  EXPECT_FALSE(nswnd_notify_action(wnd));
  EXPECT_EQ(nswnd_modal(wnd, nullptr), -1);
  EXPECT_EQ(nswnd_cgctx(nullptr), nullptr);
  EXPECT_FALSE(nswnd_destroy(nullptr));
}

TEST_F(Offscreen, WindowsAreCentredAndTheMainWindowGetsSeventyPercent) {
  sProbe probe;
  NSWND wnd = window(probe, 200, 100);
  int x = 0, y = 0, w = 0, h = 0;
  ASSERT_TRUE(nswnd_getpossize(wnd, x, y, w, h));
  EXPECT_EQ(x, (1280 - 200) / 2);
  EXPECT_EQ(y, (1024 - 100) / 2);
  ASSERT_TRUE(nswnd_main_optimal(x, y, w, h));
  EXPECT_EQ(x, -1);
  EXPECT_EQ(y, -1);
  EXPECT_EQ(w, 896);
  EXPECT_EQ(h, 716);
  EXPECT_FALSE(nswnd_setpointer(wnd, 10));
  EXPECT_FALSE(nswnd_setpointer(wnd, -1));
  EXPECT_TRUE(nswnd_setpointer(wnd, 9));
}

TEST_F(Offscreen, ShowingPaintsAndInvalidatingPaintsOnceMore) {
  sProbe probe;
  NSWND wnd = window(probe, 120, 80);
  ASSERT_TRUE(nswnd_show_floating(wnd));
  ASSERT_EQ(probe.paints.size(), 1u);
  EXPECT_EQ(probe.paints[0].w, 120);
  EXPECT_EQ(probe.paints[0].h, 80);
  EXPECT_EQ(probe.paints[0].surface, nswnd_cgctx(wnd));
  nswnd_invalidate_view(wnd, 10, 10, 5, 5);
  nswnd_invalidate_view(wnd, 30, 20, 5, 5);
  nsoff::runUntilIdle();
  ASSERT_EQ(probe.paints.size(), 2u);
  // Both areas in one pass.
  EXPECT_EQ(probe.paints[1].x, 10);
  EXPECT_EQ(probe.paints[1].y, 10);
  EXPECT_EQ(probe.paints[1].w, 25);
  EXPECT_EQ(probe.paints[1].h, 15);
}

TEST_F(Offscreen, TheDesktopPictureShowsTheWindowsWhereTheyAre) {
  sProbe probe;
  NSWND wnd = window(probe, 120, 80);
  ASSERT_TRUE(nswnd_show_floating(wnd));
  cairo_t* cr = cairo_create(nsoff::surface(wnd));
  cairo_set_source_rgb(cr, 1, 0, 0);
  cairo_paint(cr);
  cairo_destroy(cr);
  const std::string path = ::testing::TempDir() + "desktop.png";
  ASSERT_TRUE(nsoff::writeDesktopPng(path.c_str()));
  cairo_surface_t* shot = cairo_image_surface_create_from_png(path.c_str());
  ASSERT_EQ(cairo_surface_status(shot), CAIRO_STATUS_SUCCESS);
  EXPECT_EQ(cairo_image_surface_get_width(shot), 1280);
  const auto at = [shot](int x, int y) {
    const unsigned char* row =
        cairo_image_surface_get_data(shot) + y * cairo_image_surface_get_stride(shot);
    return reinterpret_cast<const unsigned*>(row)[x] & 0xFFFFFF;
  };
  const int x = (1280 - 120) / 2, y = (1024 - 80) / 2;
  EXPECT_EQ(at(x, y), 0xFF0000u);
  EXPECT_EQ(at(x + 119, y + 79), 0xFF0000u);
  EXPECT_NE(at(x - 1, y), 0xFF0000u);
  EXPECT_NE(at(x + 120, y + 79), 0xFF0000u);
  cairo_surface_destroy(shot);
  std::remove(path.c_str());
}

TEST_F(Offscreen, ModalRunsEndWithTheirResultAndStartAgainRunning) {
  sProbe owner, dialog;
  NSWND main = window(owner);
  nswnd_show_floating(main);
  NSWND box = window(dialog, 100, 50);
  dialog.endOnKey = box;
  nsoff::key(397);
  EXPECT_EQ(nswnd_modal(box, main), 397);
  EXPECT_FALSE(nsoff::windows()[1].shown); // hidden once its run ended
  nsoff::key(283);
  EXPECT_EQ(nswnd_modal(box, main), 283);
  EXPECT_TRUE(owner.keys.empty());
}

TEST_F(Offscreen, AModalRunWithNothingLeftToDoFailsLoudly) {
  sProbe probe;
  NSWND box = window(probe);
  EXPECT_THROW(nswnd_modal(box, nullptr), std::runtime_error);
  // The failed run leaves nothing behind: another one works.
  probe.endOnKey = box;
  nsoff::key(65);
  EXPECT_EQ(nswnd_modal(box, nullptr), 65);
}

TEST_F(Offscreen, TheOwnerHearsNothingWhileItsDialogRuns) {
  sProbe owner, dialog;
  NSWND main = window(owner);
  nswnd_show_floating(main);
  NSWND box = window(dialog, 100, 50);
  int step = 0;
  nsoff::setIdleHook([&] {
    int x = 0, y = 0, w = 0, h = 0;
    nswnd_getpossize(main, x, y, w, h);
    switch (step++) {
    case 0:
      nsoff::click(x + 2, y + 2); // on the owner, outside the dialog
      nsoff::closeRequest(main);
      return true;
    case 1:
      nswnd_modal_result(box, 7);
      return true;
    default:
      return false;
    }
  });
  owner.closeAnswer = 0;
  EXPECT_EQ(nswnd_modal(box, main), 7);
  EXPECT_TRUE(owner.buttons.empty());
  for (int code : owner.codes) EXPECT_NE(code, nseClose);
  EXPECT_TRUE(nsoff::windows()[0].shown);
}

TEST_F(Offscreen, PopupsTakeTheKeysAndHearPressesOutside) {
  sProbe owner, popup;
  NSWND main = window(owner);
  nswnd_show_floating(main);
  NSWND menu = nswnd_create_popup(10, 20, 50, 40, main, true, sProbe::callback, &popup);
  ASSERT_TRUE(nswnd_show_floating(menu));
  ASSERT_TRUE(nswnd_capture_mouse(menu));
  nsoff::key(283);
  nsoff::click(500, 500);
  nsoff::runUntilIdle();
  ASSERT_EQ(popup.keys.size(), 2u); // press and release
  EXPECT_EQ(popup.keys[0].code, 283);
  EXPECT_TRUE(owner.keys.empty());
  ASSERT_EQ(popup.buttons.size(), 2u);
  EXPECT_EQ(popup.buttons[0].x, 490);
  EXPECT_EQ(popup.buttons[0].y, 480);
  // A tooltip takes nothing.
  sProbe tip;
  NSWND hint = nswnd_create_popup(0, 0, 30, 10, main, false, sProbe::callback, &tip);
  nswnd_show_floating(hint);
  nswnd_cancel_capture(menu);
  nsoff::click(5, 5);
  nsoff::runUntilIdle();
  EXPECT_TRUE(tip.buttons.empty());
}

TEST_F(Offscreen, AnotherThreadWakesTheWindowOnTheGuiThread) {
  sProbe probe;
  NSWND wnd = window(probe);
  std::thread worker([wnd] { nswnd_notify_action(wnd); });
  worker.join();
  ASSERT_TRUE(nsoff::runUntil([&] { return probe.wokenOn != std::thread::id(); }));
  EXPECT_EQ(probe.wokenOn, std::this_thread::get_id());
}

TEST_F(Offscreen, ClipboardAndSleepBlocking) {
  const char text[] = "grüße";
  ASSERT_TRUE(nswg_clip_set(nsClipText, text, sizeof text - 1));
  EXPECT_TRUE(nswg_clip_has(nsClipText));
  EXPECT_FALSE(nswg_clip_has(nsClipRaw));
  std::vector<unsigned char> back;
  ASSERT_TRUE(nswg_clip_get(nsClipText, back));
  EXPECT_EQ(std::string(back.begin(), back.end()), text);
  EXPECT_FALSE(nswg_clip_get(nsClipRaw, back));
  EXPECT_FALSE(nswg_clip_set(nsClipRaw, nullptr, 3));

  ASSERT_TRUE(nswg_block_sleep("scanning"));
  EXPECT_EQ(nsoff::sleepBlockReason(), "scanning");
  nswg_unblock_sleep();
  EXPECT_EQ(nsoff::sleepBlockReason(), "");
}

TEST(XKeys, KeysymsBecomeToolkitCodes) {
  const std::vector<unsigned long> none;
  EXPECT_EQ(nsxToolkitKey('a', none), 'A');
  EXPECT_EQ(nsxToolkitKey('7', none), '7');
  EXPECT_EQ(nsxToolkitKey(XK_Return, none), 397);
  EXPECT_EQ(nsxToolkitKey(XK_KP_Enter, none), 397);
  EXPECT_EQ(nsxToolkitKey(XK_ISO_Left_Tab, none), 265);
  EXPECT_EQ(nsxToolkitKey(XK_Tab, none), 265);
  EXPECT_EQ(nsxToolkitKey(XK_BackSpace, none), 264);
  EXPECT_EQ(nsxToolkitKey(XK_Escape, none), 283);
  EXPECT_EQ(nsxToolkitKey(XK_Left, none), 337);
  EXPECT_EQ(nsxToolkitKey(XK_Delete, none), 511);
  EXPECT_EQ(nsxToolkitKey(XK_Menu, none), 359);
  EXPECT_EQ(nsxToolkitKey(XK_Num_Lock, none), 383);
  EXPECT_EQ(nsxToolkitKey(XK_KP_Home, none), 405);
  EXPECT_EQ(nsxToolkitKey(XK_KP_Divide, none), 431);
  EXPECT_EQ(nsxToolkitKey(XK_F1, none), 446);
  EXPECT_EQ(nsxToolkitKey(XK_F7, none), 452);
  EXPECT_EQ(nsxToolkitKey(XK_F8, none), 0);
  EXPECT_EQ(nsxToolkitKey(XK_F9, none), 0);
  EXPECT_EQ(nsxToolkitKey(XK_Shift_L, none), 0);
  EXPECT_EQ(nsxToolkitKey(XK_Caps_Lock, none), 0);
  // A Cyrillic letter reports the Latin cap of its key when another group has one.
  EXPECT_EQ(nsxToolkitKey(XK_Cyrillic_ef, {XK_a, 0, 0}), 'A');
  EXPECT_EQ(nsxToolkitKey(XK_Cyrillic_ef, none), 0);
}

TEST(XKeys, TextBecomesUtf16WithoutControls) {
  std::vector<unsigned short> units;
  const char text[] = "a\r\x7f\xc2\x85\xc3\xa9\xf0\x9f\x98\x80\x80\xe2\x82";
  nsTextUnits(text, sizeof text - 1, true, units);
  EXPECT_EQ(units, (std::vector<unsigned short>{'a', 0xE9, 0xD83D, 0xDE00}));
  units.clear();
  nsTextUnits(text, sizeof text - 1, false, units); // controls kept, broken bytes not
  EXPECT_EQ(units, (std::vector<unsigned short>{'a', '\r', 0x7F, 0x85, 0xE9, 0xD83D, 0xDE00}));
}

} // namespace

// Timers fire from the loop once the driver's clock reaches them, never on their own.
TEST_F(Offscreen, TimersFireOnTheDriversClockAndStop) {
  struct sCount {
    int fired = 0;
    unsigned stopAfter = 0, id = 0;
  } once, repeat, self;
  const auto count = [](void* p) {
    auto* c = static_cast<sCount*>(p);
    if (++c->fired == static_cast<int>(c->stopAfter)) nswg_timer_stop(c->id);
  };
  once.id = nswg_timer_start(100, false, count, &once);
  repeat.id = nswg_timer_start(100, true, count, &repeat);
  self.stopAfter = 2;
  self.id = nswg_timer_start(50, true, count, &self);
  ASSERT_TRUE(once.id && repeat.id && self.id);
  EXPECT_EQ(nswg_timer_start(10, false, nullptr, nullptr), 0u);
  nsoff::runUntilIdle();
  EXPECT_EQ(once.fired + repeat.fired + self.fired, 0); // the clock stood still
  for (int i = 0; i < 4; ++i) nsoff::advanceClock(100);
  EXPECT_EQ(once.fired, 1);
  EXPECT_EQ(repeat.fired, 4); // once per period, however late the loop runs
  EXPECT_EQ(self.fired, 2);   // stopped from its own callback
  nswg_timer_stop(repeat.id);
  nsoff::advanceClock(1000);
  EXPECT_EQ(repeat.fired, 4);
}
