// The property sheet in an offscreen window: sections and rows, values of every kind, the
// actions, folding, batching, and the description panel of the extended sheet.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../common/offscreen_fixture.h"
#include "ciom/panel.h"
#include "ciom/propssheetex.h"

namespace {

using P = cPropSheetChild;

class cSheetRoot : public cPanelChild {
public:
  cPropSheetExChild ex;
  std::vector<std::vector<int>> seen; // code, section, property

  void onConstruct() override { attach(&ex, 0, 0, 400, 360); }
  bool onAction(cChildElement* source, cChildAction* action) override {
    if (source == &ex.sheet() && action->code >= P::kSelected && action->code <= P::kChoice) {
      const auto* a = static_cast<P::cPropSheetAction*>(action);
      seen.push_back({action->code, a->section, a->prop});
      return true;
    }
    return cPanelChild::onAction(source, action);
  }
};

class PropSheet : public cOffscreenTest {
protected:
  void SetUp() override {
    cOffscreenTest::SetUp();
    window = open(&root, 420, 380);
    P& s = sheet();
    s.startChanges();
    ASSERT_TRUE(s.setSection(1, "General"));
    ASSERT_TRUE(s.setSection(2, "Rules"));
    const char* names[] = {"text", "text+", "link", "edit", "ro+", "ro", "list"};
    for (int kind = P::ptText; kind <= P::ptList; ++kind)
      ASSERT_TRUE(s.setProperty(1, kind + 1, names[kind], "about it", "v",
                                static_cast<P::ePropTypes>(kind)));
    ASSERT_TRUE(
        s.setProperty(2, 1, "Matching signature", "A start rule", "FF D8", P::ptReadonlyAction));
    s.endChanges();
    nsoff::runUntilIdle();
  }
  void TearDown() override {
    window.reset();
    cOffscreenTest::TearDown();
  }
  P& sheet() { return root.ex.sheet(); }

  cSheetRoot root;
  std::unique_ptr<cWindowHolder> window;
};

TEST_F(PropSheet, RowsTakeTheirKindsHeightsAndColumns) {
  P& s = sheet();
  P::cSectionChild* general = s.sectionOf(1);
  ASSERT_NE(general, nullptr);
  int y = 0;
  for (auto& [id, p] : general->props()) {
    SCOPED_TRACE(id);
    const sRect caption = rectOf(p.caption.get()), value = rectOf(p.value.get());
    const int pane = general->split().pane(1)->width();
    const int fixed = p.kind == P::ptList ? P::kListRow : p.kind >= P::ptEdit ? P::kBoxRow : 0;
    if (fixed) {
      EXPECT_EQ(caption.height, fixed);
    }
    EXPECT_EQ(caption.y, y);
    EXPECT_EQ(caption.width, general->split().pane(0)->width());
    const bool button = p.kind == P::ptTextAction || p.kind == P::ptReadonlyAction;
    EXPECT_EQ(button, p.button != nullptr);
    EXPECT_EQ(value.x + value.width, pane - (button ? P::kButtonRoom : 1));
    if (button) {
      EXPECT_EQ(rectOf(p.button.get()).width, P::kButtonWidth);
    }
    y += caption.height + P::kRowGap;
  }
  EXPECT_EQ(general->height(), 18 + y); // the header, then the rows

  // A taken id is refused and the old row stays; so are unknown sections and kinds.
  EXPECT_FALSE(s.setProperty(1, 4, "again", "", "w", P::ptText));
  EXPECT_STREQ(s.propName(1, 4), "edit");
  EXPECT_FALSE(s.setProperty(9, 1, "x", "", "", P::ptText));
  EXPECT_FALSE(s.setProperty(1, 50, "x", "", "", static_cast<P::ePropTypes>(7)));
  EXPECT_FALSE(s.setSection(3, nullptr));
}

TEST_F(PropSheet, ValuesAreWrittenAndReadByKind) {
  P& s = sheet();
  struct sCase {
    int prop;
    unsigned long long value;
    bool hex;
    const char* shown;
  };
  const sCase cases[] = {{1, 255, true, "0xFF"},
                         {1, 255, false, "255"},
                         {3, 16, true, "0x10"},
                         {4, 4096, false, "4096"},
                         {6, 255, true, "0xFF"}};
  for (const sCase& c : cases) {
    ASSERT_TRUE(s.setPropertyVal(1, c.prop, c.value, c.hex, 0));
    EXPECT_STREQ(s.value(1, c.prop), c.shown) << c.prop;
  }
  EXPECT_EQ(s.int_value(1, 4), 4096);
  EXPECT_EQ(s.int_value(1, 1), 0);   // plain text is not a number field
  EXPECT_EQ(s.int_value(1, 99), -1); // missing

  // The list: items by id, chosen or not; value_id by kind.
  EXPECT_TRUE(s.setPropertyVal(1, 7, 1, nullptr, "ALL own rules hit", false));
  int tag = 0;
  EXPECT_TRUE(s.setPropertyVal(1, 7, 2, &tag, "ANY of own rules hits", true));
  EXPECT_FALSE(s.setPropertyVal(1, 4, 1, nullptr, "no list", true));
  EXPECT_EQ(s.value_id(1, 7), 2);
  EXPECT_EQ(s.value_assoc(1, 7), &tag);
  EXPECT_STREQ(s.value(1, 7), "ANY of own rules hits");
  EXPECT_EQ(s.value_id(1, 4), -1);
  EXPECT_EQ(s.value_id(1, 99), 0);
  EXPECT_TRUE(s.clearPropertyVals(1, 7));
  EXPECT_EQ(s.value_id(1, 7), -1);

  EXPECT_TRUE(s.setPropertyVal(1, 2, "new text"));
  EXPECT_STREQ(s.value(1, 2), "new text");
  EXPECT_TRUE(s.wipeVal(1, 2));
  EXPECT_STREQ(s.value(1, 2), "");
  EXPECT_TRUE(s.setPropertyAssoc(1, 2, &tag));
  EXPECT_EQ(s.assoc(1, 2), &tag);
  EXPECT_EQ(s.value(3, 1), nullptr);
}

TEST_F(PropSheet, UserActionsRaiseTheirCodes) {
  P& s = sheet();
  s.setPropertyVal(1, 7, 1, nullptr, "one", true);
  s.setPropertyVal(1, 7, 2, nullptr, "two", false);
  const auto clickAt = [](cChildElement* e) {
    const sPoint at = centreOf(e);
    nsoff::click(at.x, at.y);
    nsoff::runUntilIdle();
  };
  clickAt(s.sectionOf(2)->prop(1)->caption.get());
  clickAt(s.actionButton(1, 2));
  clickAt(s.editControl(1, 3));
  s.editControl(1, 7)->focus();
  nsoff::runUntilIdle();
  nsoff::key(cChildElement::kKeyDown);
  nsoff::runUntilIdle();
  EXPECT_EQ(s.value_id(1, 7), 2);
  const std::vector<std::vector<int>> expect = {{P::kSelected, 2, 1}, {P::kSelected, 1, 2},
                                                {P::kButton, 1, 2},   {P::kLink, 1, 3},
                                                {P::kSelected, 1, 7}, {P::kChoice, 1, 7}};
  EXPECT_EQ(root.seen, expect);
  // The panel below follows the selected row (here the list, selected by its focus).
  EXPECT_EQ(root.ex.display().title(), "list");
  EXPECT_EQ(root.ex.display().body(), "about it");
}

TEST_F(PropSheet, EscapeRestoresTheCommittedValueAndCutValuesShowThemWhole) {
  P& s = sheet();
  cChildElement* box = s.editControl(1, 4);
  box->focus();
  nsoff::runUntilIdle();
  const auto typeThen = [](const char* text, int key) {
    nsoff::key(cChildElement::kKeyEnd);
    nsoff::type(text);
    if (key) nsoff::key(key);
    nsoff::runUntilIdle();
  };
  typeThen("1", cChildElement::kKeyEnter); // committed
  typeThen("2", 0);
  // The box claims Escape before its form while it has an edit to take back.
  EXPECT_TRUE(box->claimsKey(cChildElement::kKeyEscape));
  nsoff::key(cChildElement::kKeyEscape);
  nsoff::runUntilIdle();
  EXPECT_STREQ(s.value(1, 4), "v1");
  EXPECT_FALSE(box->claimsKey(cChildElement::kKeyEscape));

  // A value wider than its column offers itself whole as the tooltip; one that fits does
  // not. Boxes and plain text alike.
  const std::string longText(200, 'W');
  for (int prop : {1, 6}) {
    SCOPED_TRACE(prop);
    cChildElement* value = P::textElement(*s.sectionOf(1)->prop(prop));
    EXPECT_EQ(value->hint(), nullptr);
    s.setPropertyVal(1, prop, longText.c_str());
    ASSERT_NE(value->hint(), nullptr);
    EXPECT_EQ(value->hint(), longText);
  }
}

TEST_F(PropSheet, FoldingHidesRowsQuietlyAndBatchesRebuildOnce) {
  P& s = sheet();
  P::cSectionChild* general = s.sectionOf(1);
  const int rulesAt = rectOf(s.sectionOf(2)).y;
  const sPoint header = centreOf(&general->header());
  nsoff::click(header.x, header.y);
  nsoff::runUntilIdle();
  EXPECT_TRUE(general->collapsed());
  EXPECT_FALSE(general->prop(1)->caption->visible_child());
  EXPECT_LT(rectOf(s.sectionOf(2)).y, rulesAt);
  EXPECT_TRUE(root.seen.empty());

  const long long builds = s.builds();
  s.startChanges();
  for (int k = 10; k < 40; ++k) s.setProperty(2, k, "row", "", "", P::ptReadonly);
  s.remove(2, 1);
  EXPECT_EQ(s.builds(), builds);
  s.endChanges();
  EXPECT_EQ(s.builds(), builds + 1);
  EXPECT_FALSE(s.hasProp(2, 1));
  EXPECT_TRUE(s.remove(1));
  EXPECT_FALSE(s.hasSection(1));
  root.ex.clear();
  EXPECT_FALSE(s.hasSection(2));
  EXPECT_EQ(root.ex.display().title(), "");
}

} // namespace
