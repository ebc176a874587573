// The editor's rule forms, the text form and the About popup, driven offscreen by keys and
// clicks as a user would.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "../common/offscreen_fixture.h"
#include "qvrasci-ruled/about.h"
#include "qvrasci-ruled/deffield.h"
#include "qvrasci-ruled/defsig.h"

namespace {

constexpr int kEnter = cChildElement::kKeyEnter, kEscape = cChildElement::kKeyEscape;
constexpr int kSection = cRuleForm::kSection;
using Sig = cDefSigRuleForm;
using Field = cDefFiledForm;

class RuleForms : public cOffscreenTest {
protected:
  void SetUp() override {
    cOffscreenTest::SetUp();
    owner = std::make_unique<cCustomForm>();
    holder = open(owner.get(), 801, 600);
  }
  void TearDown() override {
    holder.reset();
    owner.reset();
    cOffscreenTest::TearDown();
  }
  // The focused row's number in the form's sheet (0: none).
  static int focusedRow(cRuleForm& form) {
    for (int row = 1; row <= 4; ++row) {
      cChildElement* box = form.sheet().editControl(kSection, row);
      if (box && box->hasFocus()) return row;
    }
    return 0;
  }
  // Types text into a row's box in place of what it holds.
  static void retype(cRuleForm& form, int row, const char* text) {
    form.sheet().focus(kSection, row);
    if (auto* box = dynamic_cast<cEditChild*>(form.sheet().editControl(kSection, row))) {
      box->selectAll();
      nsoff::runUntilIdle();
      nsoff::type(text);
      nsoff::runUntilIdle(); // the characters land before the focus moves on
    }
  }

  std::unique_ptr<cCustomForm> owner;
  std::unique_ptr<cWindowHolder> holder;
};

// With QVRACI_SHOTS set, a picture of the desktop into that folder.
void shot(const char* name) {
  if (const char* shots = std::getenv("QVRACI_SHOTS"))
    nsoff::writeDesktopPng((std::string(shots) + "/ruled-" + name + ".png").c_str());
}

// Runs a form as its entry function does; true when it was accepted.
bool accepted(cRuleForm& form, cChildElement* owner, int w, int h) {
  return form.modal("", w, h, owner, false) == 1;
}

TEST_F(RuleForms, TheSignatureFormClampsRefusesAndRebuildsItsRows) {
  Sig::sSigRuleDef untouched;
  EXPECT_FALSE(Sig::defSigRule(nullptr, untouched)); // no parent: no form
  const auto chooseType = [](Sig& f, int key) {
    f.sheet().focus(kSection, Sig::rSearchType);
    nsoff::runUntilIdle();
    nsoff::key(key);
  };
  struct sCase {
    const char* name;
    std::function<void(Sig&)> act; // on the open form, before Enter
    int stays;                     // the row focused after Enter, 0 when accepted
    unsigned position, blockSize;  // the record when accepted
    const char* says = "";         // how the panel's text begins when refused
  };
  const sCase cases[] = {
      {"past the limit", [](Sig& f) { retype(f, Sig::rPosition, "4194305"); }, Sig::rPosition, 0, 0,
       "4194305 is out of range. Type a whole number from 0 to 4194304."},
      {"not a number", [](Sig& f) { retype(f, Sig::rPosition, "abc"); }, Sig::rPosition, 0, 0,
       "\"abc\" is not a whole number."},
      {"no sub-block size",
       [&](Sig& f) {
         chooseType(f, cChildElement::kKeyDown); // fixed sub-block position
         nsoff::runUntilIdle();
         retype(f, Sig::rBlockSize, "0");
       },
       Sig::rBlockSize, 0, 0, "0 is out of range. Type a whole number from 1 to"},
      {"bad pattern", [](Sig& f) { retype(f, Sig::rPattern, "4D [5A"); }, Sig::rPattern, 0, 0,
       "At character 4: [value/mask]"},
      {"bad pattern, OK from another row",
       [](Sig& f) {
         retype(f, Sig::rPattern, "4Z 5A");
         f.sheet().focus(kSection, Sig::rPosition);
         nsoff::runUntilIdle();
       },
       Sig::rPattern, 0, 0, "At character 2:"},
      {"sub-blocks",
       [&](Sig& f) {
         chooseType(f, cChildElement::kKeyDown);
         nsoff::runUntilIdle();
         retype(f, Sig::rBlockSize, "512");
       },
       0, 16, 512},
      {"scan the block", [&](Sig& f) { chooseType(f, cChildElement::kKeyUp); }, 0, Sig::kWholeBlock,
       0}};
  for (const sCase& c : cases) {
    SCOPED_TRACE(c.name);
    Sig::sSigRuleDef def;
    def.pattern.set("4D5A");
    def.position = 16;
    Sig form(def);
    std::string reason, shown;
    int stays = 0;
    bool rows[5] = {};
    cScript script({[&] { c.act(form); },
                    [&] {
                      for (int row = 1; row <= 4; ++row)
                        rows[row] = form.sheet().hasProp(kSection, row);
                      nsoff::key(kEnter);
                    },
                    [&] {
                      stays = focusedRow(form);
                      reason = form.properties().display().body();
                      if (stays) shown = form.sheet().value(kSection, stays);
                      if (stays == Sig::rPattern) shot("sig-pattern");
                      nsoff::key(kEscape);
                    }});
    const bool ok = accepted(form, owner.get(), Sig::kWidth, Sig::kHeight);
    EXPECT_EQ(ok, c.stays == 0);
    EXPECT_EQ(stays, c.stays);
    EXPECT_EQ(rows[Sig::rPosition], c.position != Sig::kWholeBlock);
    EXPECT_EQ(rows[Sig::rBlockSize], c.blockSize != 0 || c.stays == Sig::rBlockSize);
    EXPECT_EQ(def.position, ok ? c.position : 16u); // Escape leaves the record alone
    EXPECT_EQ(def.blockSize, c.blockSize);
    if (c.stays == Sig::rPosition && std::string(c.name) == "past the limit") {
      EXPECT_EQ(shown, "4194304");
    }
    EXPECT_EQ(reason.rfind(c.says, 0), 0u) << reason;
  }
  // The entry function: the record as it stands is accepted with Enter.
  Sig::sSigRuleDef def;
  def.pattern.set("'GIF8'");
  cScript enter({[] { nsoff::key(kEnter); }});
  EXPECT_TRUE(Sig::defSigRule(owner.get(), def));
  EXPECT_EQ(def.position, Sig::kWholeBlock);
}

TEST_F(RuleForms, TheFieldFormChecksOffsetAndMultiplier) {
  Field::sFieldDef def;
  def.offset = 8;
  def.multiplier = 4;
  def.size = Field::fsWordBE;
  Field form(def);
  std::vector<int> focused;
  std::string clampedOffset, reason;
  cScript script({[&] {
                    retype(form, Field::rOffset, "0x400001");
                    nsoff::key(kEnter);
                  },
                  [&] {
                    focused.push_back(focusedRow(form));
                    clampedOffset = form.sheet().value(kSection, Field::rOffset);
                    retype(form, Field::rMultiplier, "0");
                    nsoff::key(kEnter);
                  },
                  [&] {
                    focused.push_back(focusedRow(form));
                    retype(form, Field::rMultiplier, "abc");
                    nsoff::key(kEnter);
                  },
                  [&] {
                    focused.push_back(focusedRow(form));
                    reason = form.properties().display().body();
                    shot("field");
                    retype(form, Field::rMultiplier, "3");
                    retype(form, Field::rAddend, "12");

                    nsoff::key(kEnter);
                  }});
  ASSERT_TRUE(accepted(form, owner.get(), Field::kWidth, Field::kHeight));
  EXPECT_EQ(focused, (std::vector<int>{Field::rOffset, Field::rMultiplier, Field::rMultiplier}));
  EXPECT_EQ(
      reason,
      "\"abc\" is not a whole number. Type one from 1 to 4294967295, in decimal or as 0x hex.");
  EXPECT_EQ(clampedOffset, "4194304");
  EXPECT_EQ(def.offset, 0x400000u);
  EXPECT_EQ(def.multiplier, 3u);
  EXPECT_EQ(def.addend, 12u);
  EXPECT_EQ(def.size, Field::fsWordBE);
  EXPECT_FALSE(Field::defField(nullptr, def));
}

TEST_F(RuleForms, TheOffsetAndTextFormsAcceptOnlyWhatTheyCanUse) {
  cDefSigOffsetForm::sSigOffsetdDef offset;
  offset.pattern.set("'PK'");
  cDefSigOffsetForm form(offset);
  int stays = 0;
  cScript first({[&] {
                   retype(form, cDefSigOffsetForm::rBytesAfter, "5000000");
                   nsoff::key(kEnter);
                 },
                 [&] {
                   stays = focusedRow(form);
                   nsoff::key(kEscape);
                 }});
  EXPECT_FALSE(accepted(form, owner.get(), cDefSigOffsetForm::kWidth, cDefSigOffsetForm::kHeight));
  EXPECT_EQ(stays, cDefSigOffsetForm::rBytesAfter);
  EXPECT_EQ(offset.bytesAfter, 0u);

  _guardchar<char> text;
  std::vector<std::string> captions;
  std::string banner;
  cSetTextForm asked;
  cScript second({[&] {
                    captions.push_back(nsoff::topWindow().caption);
                    nsoff::key(kEnter); // empty: refused, and the box says why
                  },
                  [&] {
                    captions.push_back(nsoff::topWindow().caption);
                    banner = asked.edit().banner();
                    nsoff::type("GIF image");
                    nsoff::key(kEnter);
                  }});
  EXPECT_TRUE(cNewFolderNameReqForm::reqNewFolderName(owner.get(), text, &asked));
  EXPECT_EQ(captions, (std::vector<std::string>{"Specify text value", "Specify text value"}));
  EXPECT_EQ(banner, "A value is needed here");
  EXPECT_STREQ(text.c_str(), "GIF image");
}

TEST_F(RuleForms, TheAboutPopupStandsCentredAndEndsByEscapeOrItsCloseMark) {
  EXPECT_EQ(cAboutPopupUI::runAbout(nullptr), -1);
  // Halvings round toward zero, also for a parent narrower than the popup.
  const sPoint wide = cAboutPopupUI::placeOver({10, 20, 801, 600});
  const sPoint narrow = cAboutPopupUI::placeOver({10, 20, 400, 101});
  EXPECT_EQ(wide.x, 10 + 163);
  EXPECT_EQ(narrow.x, 10 - 37);
  EXPECT_EQ(narrow.y, 20 - 78);

  sPoint ownerAt;
  owner->absPos(ownerAt);
  std::vector<sPoint> places;
  const auto place = [&] {
    const nsoff::sWindowInfo w = nsoff::topWindow();
    places.push_back({w.x, w.y});
  };
  cScript escape({[&] {
    place();
    nsoff::key(kEscape);
  }});
  EXPECT_EQ(cAboutPopupUI::runAbout(owner.get()), 0);
  cScript closeMark({[&] {
    place();
    nsoff::click(places.back().x + 451 + 8, places.back().y + 6 + 8);
  }});
  EXPECT_EQ(cAboutPopupUI::runAbout(owner.get()), 0);
  ASSERT_EQ(places.size(), 2u);
  EXPECT_EQ(places[0].x, ownerAt.x + (801 - 475) / 2);
  EXPECT_EQ(places[0].y, ownerAt.y + (600 - 258) / 2);
}

} // namespace
