// Finding definitions: a field above the tree (ctrl+F) that selects, as the text is typed,
// the first definition from the selected one on whose name or extension holds it; Enter
// and F3 go on to the next match, shift+F3 back; Escape closes the field.
#include "ciom/theme.h"
#include "find.h"
#include "ui.h"
#include "uitext.h"

namespace {

constexpr int kFindHeight = 28, kLabelWidth = 40, kInset = 4;
constexpr int kFormColour = 0;                 // theme colour
constexpr unsigned kNotFoundColour = 0xD8D8FF; // pale red (0xBBGGRR): nothing matches

} // namespace

void cRuledMainForm::buildFind() {
  cPanelChild* pane = mySplit.pane(0);
  pane->anchor(&myFindBar, 0, 0, -1, kFindHeight);
  myFindBar.setDefaultBackgroundColor(cCITheme::theme().getColor(kFormColour));
  myFindBar.anchor(&myFindLabel, kInset, 0, kLabelWidth, -1);
  // The field fills the band but for the label and an inset all round.
  myFindBar.anchor(&myFind, kInset + kLabelWidth, kInset, ~(2 * kInset + kLabelWidth),
                   kFindHeight - 2 * kInset);
  myFindLabel.setTransparent(true);
  myFindLabel.setText(string(txFind), -1, false);
  myFindBackground = myFind.bgColor(cEditChild::ctFocused);
  myFindBar.hide(false);
}

void cRuledMainForm::openFind() {
  if (!myFindBar.visible_child()) {
    myFindBar.show();
    mySplit.pane(0)->anchor(&myTree, 0, kFindHeight, -1, ~kFindHeight);
  }
  myFind.focus();
  myFind.selectAll();
}

void cRuledMainForm::closeFind() {
  if (!myFindBar.visible_child()) return;
  myFindBar.hide();
  mySplit.pane(0)->anchor(&myTree, 0, 0, -1, -1);
  myTree.select(myTree.selected() ? myTree.selected() : myTree.root(), true);
}

void cRuledMainForm::findNext(bool backward, bool fromCurrent) {
  const cDefinitionFinder finder(myFind.text());
  if (finder.empty()) return markFound(true);
  const cScanSignature* found = finder.next(myDoc.tree(), myCurrent, backward, fromCurrent);
  markFound(found != nullptr);
  if (found && found != myCurrent) showDefinition(found);
}

void cRuledMainForm::markFound(bool found) {
  const unsigned background = found ? myFindBackground : kNotFoundColour;
  myFind.setColors(cEditChild::ctFocused, myFind.fgColor(cEditChild::ctFocused), background);
}
