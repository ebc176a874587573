// Windows for element trees over the offscreen backend: the translator, the pending-action
// queue and the window maker.
#include <gtest/gtest.h>

#include "../common/offscreen_fixture.h"
#include "ciom/customform.h"

namespace {

// A root that records what reaches it.
class cProbeRoot : public cChildElement {
public:
  std::vector<int> keys;
  std::vector<unsigned short> chars;
  int constructs = 0, paints = 0, endOn = -1;
  bool allowClose = true;

  bool processKey(int key, bool shift, bool ctrl, bool alt) override {
    keys.push_back(key);
    return cChildElement::processKey(key, shift, ctrl, alt);
  }
  bool processChar(unsigned short ch, bool shift, bool ctrl, bool alt) override {
    chars.push_back(ch);
    return cChildElement::processChar(ch, shift, ctrl, alt);
  }
  void onConstruct() override { ++constructs; }
  void onPaint(cCanvas*) override { ++paints; }
  bool onClose() override { return allowClose; }
  bool onAction(cChildElement* source, cChildAction* action) override {
    if (endOn >= 0) end_modal(endOn);
    return cChildElement::onAction(source, action);
  }
};

// A translator that records the areas it is asked to paint.
class cPaintProbe : public cNSWTranslator {
public:
  std::vector<sRect> painted;
  void onPaint(void* context, int x, int y, int w, int h) override {
    painted.push_back({x, y, w, h});
    cNSWTranslator::onPaint(context, x, y, w, h);
  }
};

using Windows = cOffscreenTest;

TEST_F(Windows, AWindowIsBuiltBeforeItsFirstPaint) {
  cProbeRoot root;
  std::unique_ptr<cWindowHolder> holder(
      ns().asyncwnd("main", 300, 200, &root, nullptr, true, -1, -1));
  ASSERT_NE(holder, nullptr);
  EXPECT_EQ(root.constructs, 1);
  EXPECT_GE(root.paints, 1);
  EXPECT_EQ(root.width(), 300);
  sPoint at;
  root.absPos(at);
  EXPECT_EQ(at.x, (1280 - 300) / 2); // the root knows where its window is
  nsoff::runUntilIdle();
  EXPECT_EQ(root.constructs, 1);
  // Moved, it still knows: popups open relative to it.
  ASSERT_TRUE(nswnd_move(nsoff::topWindow().handle, 40, 30, 300, 200));
  root.absPos(at);
  EXPECT_EQ(at.x, 40);
  EXPECT_EQ(at.y, 30);

  // Wider than the desktop: its left edge stays on it.
  cProbeRoot wide;
  holder.reset(ns().asyncwnd("wide", 2000, 200, &wide, nullptr, true, -1, -1));
  ASSERT_NE(holder, nullptr);
  wide.absPos(at);
  EXPECT_EQ(at.x, 0);
}

TEST_F(Windows, TwoRepaintRequestsBeforeAPassBecomeOneFullRepaint) {
  cProbeRoot root;
  auto translator = std::make_unique<cPaintProbe>();
  cPaintProbe* probe = translator.get();
  translator->setRoot(&root);
  root.setWinTarget(probe, 0, 0, 160, 90);
  ASSERT_TRUE(translator->create_wnd("paint", 160, 90, false, -1, -1));
  translator->show();
  nsoff::runUntilIdle();
  probe->painted.clear();

  probe->requestRepaint(10, 10, 4, 4);
  nsoff::runUntilIdle();
  ASSERT_EQ(probe->painted.size(), 1u);
  EXPECT_EQ(probe->painted[0], (sRect{10, 10, 4, 4}));

  probe->painted.clear();
  probe->requestRepaint(10, 10, 4, 4);
  probe->requestRepaint(50, 50, 4, 4);
  nsoff::runUntilIdle();
  ASSERT_EQ(probe->painted.size(), 1u);
  EXPECT_EQ(probe->painted[0], (sRect{0, 0, 160, 90}));
  cNSWHolder holder(std::move(translator));
}

TEST_F(Windows, KeysArePressesAndCharactersArePrintable) {
  cProbeRoot root;
  std::unique_ptr<cWindowHolder> holder(
      ns().asyncwnd("keys", 100, 100, &root, nullptr, true, 0, 0));
  nsoff::key(65);
  nsoff::type("a\x1f\x7f\xc3\xa9");
  nsoff::runUntilIdle();
  EXPECT_EQ(root.keys, (std::vector<int>{65})); // the release never arrives
  EXPECT_EQ(root.chars, (std::vector<unsigned short>{'a', 0xE9}));
}

TEST_F(Windows, AModalRunEndsWithTheResultOfAPostedAction) {
  cProbeRoot owner;
  std::unique_ptr<cWindowHolder> holder(
      ns().asyncwnd("owner", 400, 300, &owner, nullptr, true, -1, -1));
  cProbeRoot dialog;
  dialog.endOn = 42;
  nsoff::setIdleHook([&dialog] { return dialog.postAction(new cChildAction(9)); });
  EXPECT_EQ(ns().modal("dialog", 120, 80, &dialog, owner.winTarget(), false), 42);
  EXPECT_EQ(dialog.winTarget(), nullptr); // unbound once its window is gone
  EXPECT_EQ(ns().modal("none", 10, 10, nullptr, owner.winTarget(), false), -1);
}

TEST_F(Windows, ARootThatRefusesKeepsItsWindowOpen) {
  cProbeRoot root;
  root.allowClose = false;
  std::unique_ptr<cWindowHolder> holder(
      ns().asyncwnd("stay", 100, 100, &root, nullptr, true, 0, 0));
  NSWND wnd = static_cast<NSWND>(root.winTarget()->_rt_rawhandle());
  nsoff::closeRequest(wnd);
  nsoff::runUntilIdle();
  EXPECT_TRUE(nsoff::windows().back().shown);
  root.allowClose = true;
  nsoff::closeRequest(wnd);
  nsoff::runUntilIdle();
  EXPECT_FALSE(nsoff::windows().back().shown);
}

} // namespace

namespace {

class cProbeForm : public cCustomForm {
public:
  int afterConstruct = 0, accepted = 0, cancelled = 0;
  bool onAfterConstruct() override {
    ++afterConstruct;
    return true;
  }
  bool onFormAccept() override {
    ++accepted;
    return true;
  }
  bool onFormCancel() override {
    ++cancelled;
    return true;
  }
};

TEST_F(Windows, AFormLaysOutItsPanelAndRunsItsHookOnce) {
  cProbeForm form;
  std::unique_ptr<cWindowHolder> holder(
      ns().asyncwnd("form", 300, 200, &form, nullptr, true, -1, -1));
  nsoff::runUntilIdle();
  EXPECT_EQ(form.afterConstruct, 1);
  EXPECT_EQ(form.topMargin(), 30);
  EXPECT_EQ(form.bottomMargin(), 40);
  cPanelChild* panel = form.clientArea();
  EXPECT_EQ(panel->width(), 290);
  EXPECT_EQ(panel->height(), 130);
  // Re-laid when the window changes size.
  NSWND wnd = static_cast<NSWND>(form.winTarget()->_rt_rawhandle());
  nswnd_move(wnd, 0, 0, 400, 300);
  nsoff::runUntilIdle();
  EXPECT_EQ(panel->width(), 390);
  EXPECT_EQ(panel->height(), 230);
  EXPECT_EQ(form.afterConstruct, 1);
}

TEST_F(Windows, EnterAndEscapeWithoutModifiersAcceptAndCancel) {
  cProbeForm form;
  std::unique_ptr<cWindowHolder> holder(
      ns().asyncwnd("keys", 200, 150, &form, nullptr, true, 0, 0));
  nsoff::key(397, {false, true, false, false}); // ctrl+Enter
  nsoff::key(397, {true, false, false, false}); // shift+Enter
  nsoff::runUntilIdle();
  EXPECT_EQ(form.accepted, 0);
  nsoff::key(397);
  nsoff::key(283);
  nsoff::runUntilIdle();
  EXPECT_EQ(form.accepted, 1);
  EXPECT_EQ(form.cancelled, 1);
}

TEST_F(Windows, TheFormsSkinShowsItsBands) {
  cProbeForm form;
  std::unique_ptr<cWindowHolder> holder(
      ns().asyncwnd("skin", 200, 150, &form, nullptr, true, 0, 0));
  nsoff::runUntilIdle();
  NSWND wnd = static_cast<NSWND>(form.winTarget()->_rt_rawhandle());
  cairo_surface_t* s = nsoff::surface(wnd);
  ASSERT_NE(s, nullptr);
  cairo_surface_flush(s);
  const auto at = [s](int x, int y) {
    const unsigned char* row =
        cairo_image_surface_get_data(s) + y * cairo_image_surface_get_stride(s);
    return reinterpret_cast<const unsigned*>(row)[x] & 0xFFFFFF;
  };
  EXPECT_EQ(at(100, 0), 0xF7F9FDu);   // the header band's light top
  EXPECT_EQ(at(100, 29), 0xC9D2E8u);  // its line
  EXPECT_EQ(at(100, 80), 0xDFE5F3u);  // the panel in theme colour 0
  EXPECT_EQ(at(100, 110), 0xB9C4E2u); // the footer's line
}

} // namespace
