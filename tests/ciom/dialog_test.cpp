// Message boxes and popup lists, run modally over the offscreen backend and answered by
// input that a script queues whenever the run has nothing left to do.
#include <gtest/gtest.h>

#include <functional>

#include "../common/offscreen_fixture.h"
#include "ciom/messageform.h"
#include "ciom/popup.h"
#include "ciom/theme.h"

namespace {

constexpr int kEnter = 397, kEscape = 283, kTab = 265, kDown = 340, kUp = 338;

// A form that counts its accept and cancel keys.
class cOwnerForm : public cCustomForm {
public:
  int accepted = 0, cancelled = 0;
  bool onFormAccept() override { return ++accepted; }
  bool onFormCancel() override { return ++cancelled; }
};

class Dialogs : public cOffscreenTest {
protected:
  void SetUp() override {
    cOffscreenTest::SetUp();
    owner = std::make_unique<cOwnerForm>();
    holder = open(owner.get(), 600, 400, -1, -1);
  }
  void TearDown() override {
    nsoff::setIdleHook(nullptr);
    holder.reset();
    owner.reset();
    cOffscreenTest::TearDown();
  }
  std::unique_ptr<cOwnerForm> owner;
  std::unique_ptr<cWindowHolder> holder;
};

// --- message boxes ----------------------------------------------------------------------

TEST(MessageSize, FollowsTheLineRule) {
  EXPECT_EQ(cMessageForm::clientSize(50, 13, 1).height, 134); // trunc(19.5) + 115
  EXPECT_EQ(cMessageForm::clientSize(50, 13, 1).width, 80);
  EXPECT_EQ(cMessageForm::clientSize(50, 13, 3).height, 173); // trunc(58.5) + 115
  EXPECT_EQ(cMessageForm::clientSize(0, 13, 0).height, 105);
  EXPECT_EQ(cMessageForm::clientSize(0, 0, 0).width, 30);
}

TEST_F(Dialogs, NothingIsShownWithoutParentOrText) {
  cScript none({});
  EXPECT_FALSE(cMessageForm::doDialog(nullptr, "text", "c", 3, 0, 0));
  EXPECT_FALSE(cMessageForm::doDialog(owner.get(), nullptr, "c", 3, 0, 0));
  EXPECT_EQ(nsoff::windows().size(), 1u);
}

// Each box: its caption, modal over the form, and the answer each way of closing it gives.
TEST_F(Dialogs, EachBoxHasItsCaptionAndAnswersEnterEscapeAndClose) {
  cChildElement* o = owner.get();
  const auto enter = [] { nsoff::key(kEnter); };
  const auto escape = [] { nsoff::key(kEscape); };
  const auto info = [o](void (*box)(cChildElement*, const char*, const char*)) {
    return std::function<bool()>([o, box] { return box(o, "Line one\nLine two", nullptr), true; });
  };
  const struct {
    std::function<bool()> box;
    std::vector<std::function<void()>> steps;
    bool answer;
    const char* caption;
  } cases[] = {
      {[o] { return cMessageForm::confirmbox(o, "Delete it?", nullptr); },
       {enter},
       true,
       "Confirm"}, // string 6 of the messages section
      {[o] { return cMessageForm::warnconfirmbox(o, "Really?", nullptr); },
       {escape},
       false,
       nullptr},
      {[o] { return cMessageForm::confirmbox(o, "Closed?", "Own caption"); },
       {[] { nsoff::closeRequest(nsoff::topWindow().handle); }},
       false,
       "Own caption"},
      // Ctrl+Enter is not an answer; the Escape after it is.
      {[o] { return cMessageForm::confirmbox(o, "Ctrl?", nullptr); },
       {[] {
          nsoff::key(kEnter, {false, true, false, false});
        },
        escape},
       false,
       nullptr},
      {info(&cMessageForm::infobox), {enter}, true, "Information"},
      {info(&cMessageForm::warningbox), {enter}, true, "Warning"},
      {info(&cMessageForm::errorbox), {enter}, true, "Error"},
  };
  for (const auto& c : cases) {
    nsoff::sWindowInfo shown;
    std::vector<std::function<void()>> steps = {[&] { shown = nsoff::topWindow(); }};
    steps.insert(steps.end(), c.steps.begin(), c.steps.end());
    cScript s(steps);
    EXPECT_EQ(c.box(), c.answer);
    EXPECT_EQ(s.done(), steps.size());
    EXPECT_TRUE(shown.modal);
    if (c.caption) {
      EXPECT_EQ(shown.caption, c.caption);
    }
  }
  // The keys went to the boxes, never to the form below them.
  EXPECT_EQ(owner->accepted, 0);
  EXPECT_EQ(owner->cancelled, 0);
}

TEST_F(Dialogs, AMessageTallerThanTheScreenIsCutToIt) {
  std::string text = "Many lines";
  for (int i = 0; i < 200; ++i) text += "\nline";
  nsoff::sWindowInfo shown;
  cScript s({[&] { shown = nsoff::topWindow(); }, [] { nsoff::key(kEnter); }});
  cMessageForm::infobox(owner.get(), text.c_str(), nullptr);
  EXPECT_EQ(shown.h, 1024); // the offscreen desktop's height
}

TEST_F(Dialogs, AQuestionIsAnsweredByItsButtonsOrEnterOnTheFocusedOne) {
  // A click on Yes, a click on No, and Tab from Yes (the default, focused at first) to No
  // with Enter.
  for (const int way : {0, 1, 2}) {
    cMessageForm form("Question?", cMessageForm::ikQuestion, cMessageForm::bsYesNo);
    ASSERT_TRUE(form.measure(owner.get()));
    const sSize size = cMessageForm::clientSize(form.widest(), form.lineHeight(), 1);
    std::string texts;
    cScript s({[&] {
                 auto* yes = form.dialogButtons().button(cMessageForm::kAcceptButton);
                 auto* no = form.dialogButtons().button(cMessageForm::kCancelButton);
                 texts = std::string(yes->text()) + "/" + no->text();
                 EXPECT_TRUE(yes->hasFocus());
                 const sPoint at = centreOf(way == 0 ? yes : no);
                 way == 2 ? nsoff::key(kTab) : nsoff::click(at.x, at.y);
               },
               [] { nsoff::key(kEnter); }});
    EXPECT_EQ(form.modal("q", size.width, size.height, owner.get(), false), way == 0 ? 1 : 0);
    EXPECT_EQ(texts, "Yes/No"); // strings 1 and 2 of the messages section
  }
}

TEST_F(Dialogs, TheBoxIsLaidOutByTheRule) {
  cMessageForm form("Heading\nA second, longer line of text", cMessageForm::ikWarning,
                    cMessageForm::bsOk);
  ASSERT_TRUE(form.measure(owner.get()));
  sSize heading, body;
  ASSERT_TRUE(owner->sizeOf("Heading", heading, owner->stdFontBold()));
  ASSERT_TRUE(owner->sizeOf("A second, longer line of text", body, owner->stdFont()));
  EXPECT_EQ(form.widest(), std::max(heading.width + 37, body.width));
  EXPECT_EQ(form.lineHeight(), std::max(heading.height, body.height));
  EXPECT_EQ(form.lineCount(), 2u);

  const sSize size = cMessageForm::clientSize(form.widest(), form.lineHeight(), 2);
  nsoff::sWindowInfo shown;
  sRect ok{};
  cScript s({[&] {
               shown = nsoff::topWindow();
               form.dialogButtons().childRect(&ok);
             },
             [] { nsoff::key(kEnter); }});
  EXPECT_EQ(form.modal("layout", size.width, size.height, owner.get(), false), 1);
  EXPECT_EQ(shown.w, size.width);
  EXPECT_EQ(shown.h, size.height);
  // One button, right-aligned inside the footer band.
  EXPECT_EQ(ok.x + ok.width, size.width - 10);
  EXPECT_GE(ok.y, size.height - 40);
  EXPECT_LE(ok.y + ok.height, size.height);
  EXPECT_GE(ok.width, 75);
}

// Without a window manager the header band carries the caption.
TEST_F(Dialogs, TheIconHeadingAndCaptionAreDrawn) {
  cMessageForm form("Error heading", cMessageForm::ikError, cMessageForm::bsOk);
  ASSERT_TRUE(form.measure(owner.get()));
  const unsigned ground = cCITheme::theme().getColor(0);
  int iconInk = 0, headingInk = 0, captionInk = 0;
  cScript s({[&] {
               cairo_surface_t* surface = nsoff::surface(nsoff::topWindow().handle);
               cairo_surface_flush(surface);
               const auto* data = cairo_image_surface_get_data(surface);
               const int stride = cairo_image_surface_get_stride(surface);
               const auto at = [&](int x, int y) {
                 return reinterpret_cast<const unsigned*>(data + y * stride)[x] & 0xFFFFFF;
               };
               // In the device's 0xRRGGBB order: the theme stores 0xBBGGRR.
               const unsigned rgb = ((ground & 0xFF) << 16) | (ground & 0xFF00) | (ground >> 16);
               // The panel starts at 5, 30; the icon at 5, 0 in it, the heading at 42.
               for (int y = 30; y < 59; ++y) {
                 for (int x = 10; x < 43; ++x) iconInk += at(x, y) != rgb;
                 for (int x = 47; x < 100; ++x) headingInk += at(x, y) != rgb;
               }
               for (int y = 0; y < 28; ++y)
                 for (int x = 0; x < 200; ++x) captionInk += (at(x, y) & 0x808080) == 0;
             },
             [] { nsoff::key(kEscape); }});
  form.modal("drawn", 200, 134, owner.get(), false);
  EXPECT_GT(iconInk, 200);
  EXPECT_GT(headingInk, 30);
  EXPECT_GT(captionInk, 20);
}

// --- popup lists ------------------------------------------------------------------------

tActiveElementItems threeItems() {
  tActiveElementItems items;
  const char* names[] = {"Open", "Disabled", "Close"};
  for (int id = 10; id < 13; ++id) {
    sActiveElementItem* item = items.insert(id);
    item->id = id;
    item->text.set(names[id - 10]);
    item->enabled = id != 11;
  }
  return items;
}

TEST(PopupPlacement, FitsTheDesktop) {
  const sSize desk{1000, 800};
  const auto same = [](const sRect& a, const sRect& b) {
    return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
  };
  EXPECT_TRUE(same(cPopupMaster::place(desk, 10, 20, 100, 200), {10, 20, 100, 200}));
  EXPECT_TRUE(same(cPopupMaster::place(desk, 950, 20, 100, 200), {900, 20, 100, 200}));
  EXPECT_TRUE(same(cPopupMaster::place(desk, 10, 20, 1200, 50), {0, 20, 1200, 50}));
  // Near the bottom with more room above: upwards, ending where it was asked to start.
  EXPECT_TRUE(same(cPopupMaster::place(desk, 10, 700, 100, 200), {10, 500, 100, 200}));
  // Taller than the room above too: as much as there is.
  EXPECT_TRUE(same(cPopupMaster::place(desk, 10, 500, 100, 700), {10, 0, 100, 500}));
  // More room below than above: cut to it.
  EXPECT_TRUE(same(cPopupMaster::place(desk, 10, 300, 100, 600), {10, 300, 100, 500}));
}

TEST_F(Dialogs, APopupNearTheBottomOpensUpwards) {
  const tActiveElementItems items = threeItems();
  nsoff::sWindowInfo shown;
  cScript s({[&] { shown = nsoff::topWindow(); }, [] { nsoff::key(kEscape); }});
  EXPECT_EQ(cPopupMaster::simplePopup(owner.get(), items, 100, 1000), -1);
  EXPECT_TRUE(shown.popup);
  const int rows = 3 * cPopupMaster::itemHeight(owner.get(), nullptr);
  EXPECT_EQ(shown.h, rows + 2);
  EXPECT_EQ(shown.y, 1000 - rows);
  EXPECT_EQ(shown.x, 100);
}

// Each way a popup list ends: what the user does in it, and what it returns.
TEST_F(Dialogs, APopupListEndsByItsItemsOrNothing) {
  const tActiveElementItems items = threeItems();
  const int row = cPopupMaster::itemHeight(owner.get(), nullptr);
  const int second = 50 + 1 + row + row / 2; // the disabled item
  const struct {
    const char* what;
    std::vector<std::function<void()>> steps;
    int chosen;
  } cases[] = {
      {"Escape", {[] { nsoff::key(kEscape); }}, -1},
      {"a click on Close", {[&] { nsoff::click(60, second + row); }}, 12},
      // A release without its press (the click that opened a popup) is ignored.
      {"a disabled item, a stray release",
       {[&] { nsoff::click(60, second); }, [&] { nsoff::button(60, second + row, 1, false); },
        [] { nsoff::key(kEscape); }},
       -1},
      {"a press outside",
       {[] {
         EXPECT_NE(nsoff::captured(), nullptr); // the popup holds the pointer
         nsoff::click(500, 300);
       }},
       -1},
      // Down to Open, past Disabled to Close, around to Open, Up back to Close.
      {"arrows",
       {[] {
         for (const int key : {kDown, kDown, kDown, kUp, kEnter}) nsoff::key(key);
       }},
       12},
  };
  for (const auto& c : cases) {
    cScript s(c.steps);
    EXPECT_EQ(cPopupMaster::simplePopup(owner.get(), items, 50, 50), c.chosen) << c.what;
    EXPECT_EQ(s.done(), c.steps.size()) << c.what;
    nsoff::runUntilIdle();
    EXPECT_EQ(nsoff::windows().size(), 1u) << c.what; // the popup window is gone
    EXPECT_EQ(nsoff::captured(), nullptr) << c.what;  // and with it the pointer grab
  }
  EXPECT_EQ(owner->accepted + owner->cancelled, 0); // nothing reached the form below
  cScript none({});
  EXPECT_EQ(cPopupMaster::simplePopup(owner.get(), tActiveElementItems{}, 50, 50), -1);
  EXPECT_EQ(cPopupMaster::simplePopup(nullptr, items, 50, 50), -1);
}

TEST_F(Dialogs, TheConfigurationSetsWidthAndColours) {
  const tActiveElementItems items = threeItems();
  cPopupMaster::sPopupConfig config;
  EXPECT_EQ(config.width, -1);
  EXPECT_EQ(config.textColour, cCITheme::theme().getColor(14));
  EXPECT_EQ(config.background, cCITheme::theme().getColor(4));
  EXPECT_EQ(config.highlight, cCITheme::theme().getColor(21));
  config.width = 333;
  config.background = 0x0000FF; // red
  nsoff::sWindowInfo shown;
  unsigned inside = 0;
  cScript s({[&] {
               shown = nsoff::topWindow();
               cairo_surface_t* surface = nsoff::surface(shown.handle);
               cairo_surface_flush(surface);
               const auto* row = cairo_image_surface_get_data(surface) +
                                 (shown.h - 3) * cairo_image_surface_get_stride(surface);
               inside = reinterpret_cast<const unsigned*>(row)[shown.w - 3] & 0xFFFFFF;
             },
             [] { nsoff::key(kEscape); }});
  cPopupMaster::simplePopup(owner.get(), items, 50, 50, &config);
  EXPECT_EQ(shown.w, 333);
  EXPECT_EQ(inside, 0xFF0000u); // device order 0xRRGGBB
}

} // namespace
