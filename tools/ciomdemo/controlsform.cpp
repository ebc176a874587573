#include "controlsform.h"

#include "ciom/theme.h"
#include "ciom/themeimages.h"

namespace {

constexpr int kRow = 26, kCaptionWidth = 80, kFieldHeight = 22, kListRow = 20;
constexpr int kFrameColour = 25, kWhite = 14;

} // namespace

void cDemoList::fill(int count) {
  const cPicture* file = cCITheme::theme().getPict(tiFile);
  for (int i = 0; i < count; ++i) {
    myTexts.push_back("Definition " + std::to_string(i + 1) + (i % 3 ? "" : " (container)"));
    auto label = std::make_unique<cSelectableStaticChild>();
    label->setText(myTexts.back().c_str(), -1, false);
    label->setImages(file, file, file);
    attach(label.get(), 0, i * kListRow, 260, kListRow);
    myLabels.push_back(std::move(label));
  }
  setVirtualSize(260, count * kListRow);
  setScrollSteps(5, kListRow);
}

void cDemoList::onPaint(cCanvas* canvas) {
  const cCITheme& theme = cCITheme::theme();
  const sRect all{0, 0, width(), height()};
  canvas->drawRect(&all, theme.getColor(kWhite), theme.getColor(kFrameColour));
}

void cControlsForm::field(cPanelChild* pane, cStaticChild& caption, const char* text,
                          cChildElement& control, int y, int height) {
  caption.setTransparent(true);
  caption.setText(text, -1, false);
  pane->attach(&caption, 8, y, kCaptionWidth, kFieldHeight);
  pane->anchor(&control, 8 + kCaptionWidth, y + (kFieldHeight - height) / 2, ~(kCaptionWidth + 16),
               height);
}

void cControlsForm::onConstruct() {
  cCustomForm::onConstruct();
  clientArea()->anchor(&mySplit, 0, 0, ~0, ~0);
  mySplit.setMinSizes(120, 260);
  mySplit.pane(0)->anchor(&myList, 8, 8, ~8, ~8);
  myList.fill(30);
  mySplit.pane(1)->anchor(&myRight, 0, 0, ~0, ~0);
  myRight.setFixedPane(1);
  myRight.setMinSizes(7 * kRow + 8, 40);

  cPanelChild* fields = myRight.pane(0);
  int y = 8;
  field(fields, myCaptions[0], "Name", myName, y, kFieldHeight);
  myName.setText("JPEG (EXIF)");
  field(fields, myCaptions[1], "Pattern", myPattern, y += kRow, kFieldHeight);
  myPattern.setBanner("Advanced/HEX pattern, e.g. FF D8 FF");
  field(fields, myCaptions[2], "Password", myPassword, y += kRow, kFieldHeight);
  myPassword.setPwdMode(true);
  myPassword.setText("secret");
  field(fields, myCaptions[3], "Read-only", myReadonly, y += kRow, kFieldHeight);
  myReadonly.setReadonly(true);
  myReadonly.setText("jpg");
  field(fields, myCaptions[4], "Rule hits", myHits, y += kRow, kFieldHeight);
  myHits.addItem(1, "Never (container)");
  myHits.addItem(2, "If no other hits (passive)");
  myHits.addItem(3, "Always (active)");
  myHits.setSelected(2);
  field(fields, myCaptions[5], "Progress", myProgress, y += kRow, cProgressChild::kHeight);
  myProgress.setProgress(40, 100);
  field(fields, myCaptions[6], "Busy", myBusy, y += kRow, cProgressChild::kHeight);
  myBusy.setBusy(true);
  myLink.setText("About these controls", -1, false);
  myLink.setTransparent(true);
  fields->attach(&myLink, 8 + kCaptionWidth, y + kRow, 200, kFieldHeight);

  cPanelChild* below = myRight.pane(1);
  myRight.setPosition(10000); // as low as the minimum of the lower pane lets it
  myPicture.picture().setImage(cCITheme::theme().getPict(tiIconInfo));
  myPicture.setZone(0, {0, 0, 28, 28}, "A picture with one active zone");
  myPicture.setTransparent(true);
  below->attach(&myPicture, 8, 6, 28, 28);
  myLastAnswer.setTransparent(true);
  below->anchor(&myLastAnswer, 44, 10, ~52, 20);
}

bool cControlsForm::onAfterConstruct() {
  myName.focus(); // once the window exists to take it
  return true;
}

void cControlsForm::say(const std::string& text) {
  myLastAnswer.setText(text.c_str(), -1, true);
  if (myAnswer) myAnswer(text);
}

bool cControlsForm::onAction(cChildElement* source, cChildAction* action) {
  const int code = action->code;
  if (source == &myName && code == cChildAction::acNotify &&
      static_cast<cEditChild::cEditKeyAction*>(action)->key == 397) {
    say(std::string("name: ") + myName.text());
    return true;
  }
  if (source == &myHits && code == cComboBoxChild::kChangedCode) {
    say(std::string("rule hits: ") + myHits.itemText(myHits.selected()));
    return true;
  }
  if (source == &myLink && code == cChildAction::acNotify) {
    say("link: clicked");
    return true;
  }
  if (source == &myPicture && code == cPictureZonesChild::cZoneAction::kCode) {
    say("zone: " + std::to_string(static_cast<cPictureZonesChild::cZoneAction*>(action)->zone));
    return true;
  }
  if (code == cSelectableStaticChild::kActivated && source->parent() == &myList) {
    say(std::string("label: ") + source->text());
    return true;
  }
  return cCustomForm::onAction(source, action);
}

bool cControlsForm::onFormCancel() {
  // Escape closes the form and says what the name field holds.
  say(std::string("controls closed, name: ") + myName.text());
  end_modal(0);
  return true;
}
