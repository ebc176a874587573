#include "ui.h"

#include "about.h"

namespace {

// Texts of "ruled::main".
constexpr int txAbout = 6, txAboutHint = 7;
constexpr int kToolsHeight = 26, kMargin = 4;

} // namespace

cPicturesList cRuledMainForm::myToolImages;
cPicturesList cRuledMainForm::myTreeImages;
cPicturesList cRuledMainForm::myCtbImages;
cPicturesList cRuledMainForm::myCtbImagesAct;
cPicturesList cRuledMainForm::myCtbImagesDsb;

void cRuledMainForm::onConstruct() {
  cCustomForm::onConstruct();
  myTools.setTransparent(true);
  clientArea()->attach(&myTools, kMargin, kMargin, 0, kToolsHeight);
  myTools.addButton(kAbout, string(txAbout), string(txAboutHint));
  clientArea()->anchor(&myTools, kMargin, kMargin, myTools.wantedWidth(), kToolsHeight);
}

bool cRuledMainForm::onAction(cChildElement* source, cChildAction* action) {
  if (source == &myTools && action && action->code == cToolBarAction::kCode &&
      static_cast<cToolBarAction*>(action)->id == kAbout) {
    cAboutPopupUI::runAbout(this);
    return true;
  }
  return cCustomForm::onAction(source, action);
}
