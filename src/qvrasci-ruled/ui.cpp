#include "ui.h"

#include <algorithm>
#include <unordered_set>

#include "about.h"
#include "ciom/messageform.h"
#include "ciom/theme.h"
#include "config.h"
#include "img_res.h"
#include "uisamples.h"
#include "uitext.h"

namespace {

using P = cPropSheetChild;

// Theme dimensions of the top tool bar: its place and height.
constexpr int kToolsYDim = 3, kToolsXDim = 4, kToolsHeightDim = 6;
constexpr int kTopMargin = 50, kToolMinWidth = 70, kRuleBarHeight = 24;
constexpr int kStatusInset = 10, kStatusHeight = 16, kUnsavedWidth = 200;
constexpr int kFormColour = 0;
// The smallest window: the tree's least width, the splitter's bar and the frame's borders
// beside the rule bar, and a height that leaves the tree and the sheet a few rows.
constexpr int kTreeMinWidth = 120, kSplitterRoom = 8, kFrameRoom = 4, kMinHeight = 320;

struct sPictureRes {
  int id;
  const sRuledPicture& picture;
};

void fill(cPicturesList& list, std::initializer_list<sPictureRes> pictures) {
  for (const sPictureRes& p : pictures) {
    auto picture = std::make_unique<cPicture>();
    if (loadRuledPicture(p.picture, *picture)) list.storeImage(p.id, std::move(picture));
  }
}

} // namespace

cPicturesList cRuledMainForm::myToolImages;
cPicturesList cRuledMainForm::myTreeImages;
cPicturesList cRuledMainForm::myCtbImages;
cPicturesList cRuledMainForm::myCtbImagesAct;
cPicturesList cRuledMainForm::myCtbImagesDsb;

void cRuledMainForm::loadPictures() {
  if (myToolImages.count()) return;
  fill(myToolImages, {{1, kToolNewPicture},
                      {2, kToolOpenPicture},
                      {3, kToolSavePicture},
                      {4, kToolAboutPicture},
                      {5, kToolTestPicture}});
  fill(myTreeImages, {{tpRoot, kTreeRootPicture},
                      {tpContainer, kTreeContainerPicture},
                      {tpPassive, kTreePassivePicture},
                      {tpActive, kTreeActivePicture}});
  fill(myCtbImages, {{1, kRuleTypePicture},
                     {2, kRuleOkPicture},
                     {3, kRuleCancelPicture},
                     {4, kRuleStartPicture},
                     {5, kRuleEndPicture}});
  myCtbImages.mkActive(myCtbImagesAct);
  myCtbImages.mkDisabled(myCtbImagesDsb);
}

void cRuledMainForm::onConstruct() {
  cCustomForm::onConstruct();
  loadPictures();
  const cCITheme& theme = cCITheme::theme();
  setTopMargin(kTopMargin);
  const int x = theme.getDimension(kToolsXDim, 0);
  anchor(&myTools, x, theme.getDimension(kToolsYDim, 0), ~(2 * x),
         theme.getDimension(kToolsHeightDim, 0));

  clientArea()->anchor(&mySplit, 0, 0, -1, -1);
  mySplit.setShare(0.4);
  buildFind(); // above the tree, hidden until asked for
  mySplit.pane(0)->anchor(&myTree, 0, 0, -1, -1);
  mySplit.pane(1)->anchor(&myRight, 0, 0, -1, -1);
  myRight.anchor(&myRuleTools, 0, 0, -1, kRuleBarHeight);
  myRight.anchor(&mySheet, 0, kRuleBarHeight, -1, -25); // the rest below the rule bar
  myRight.setDefaultBackgroundColor(theme.getColor(kFormColour));
  buildTools();
  // The footer band: the file's path on the left, whether it has unsaved changes on the
  // right, centred in the band.
  const int fromBottom = bottomMargin() - (bottomMargin() - kStatusHeight) / 2;
  anchor(&myFile, kStatusInset, ~fromBottom, ~(kStatusInset + kUnsavedWidth), kStatusHeight);
  anchor(&myUnsaved, ~(kUnsavedWidth + kStatusInset), ~fromBottom, kUnsavedWidth, kStatusHeight);
  myFile.setTransparent(true);
  myFile.setElideMiddle(true); // a long path keeps its file name
  myUnsaved.setTransparent(true);
  myUnsaved.setAlign(cCanvas::taRight);
  myDoc.setListener([this] { showState(); });
  myLastFolder = configFolder(ctRulesFolder);
  mySampleFolder = configFolder(ctSampleFolder);
  showState();

  myTree.setImageLists(&myTreeImages, &myTreeImages, &myTreeImages);
  myTree.setDragAndDrop(true);
  myTree.storeUnder(nullptr, new tItem(string(txDefinition), nullptr, tpRoot));
  activateMain();
}

void cRuledMainForm::buildTools() {
  myTools.setPictures(&myToolImages);
  myTools.addButton(kNew, string(txNew), string(txNewHint), 1, kToolMinWidth);
  myTools.addButton(kOpen, string(txOpen), string(txOpenHint), 2, kToolMinWidth);
  myTools.addButton(kSave, string(txSave), string(txSaveHint), 3, kToolMinWidth);
  myTools.addButton(kAbout, string(txAbout), string(txAboutHint), 4, kToolMinWidth);
  myTools.addButton(kTest, string(txTest), string(txTestHint), 5, kToolMinWidth);

  myRuleTools.setPictures(&myCtbImages, &myCtbImagesAct, &myCtbImagesDsb);
  myRuleTools.addButton(kNewType, string(txNewType), string(txNewDefinition), 1);
  myRuleTools.addButton(kMerge, string(txMergeFrom), string(txMergeDefinitions), 2);
  myRuleTools.addButton(kNewStart, string(txStart), string(txStartHint), 4);
  myRuleTools.addButton(kNewEnd, string(txTermination), string(txTerminationHint), 5);
  myRuleTools.addButton(kRemove, string(txRemove), string(txRemoveHint), 3);
}

bool cRuledMainForm::onAfterConstruct() {
  setMinimumSize();
  myTree.select(myTree.root(), true);
  if (!myStartFile.empty()) loadFile(myStartFile.c_str(), false);
  return true;
}

void cRuledMainForm::setMinimumSize() {
  // Every control keeps its place: the whole tool bar, and beside the tree at its smallest
  // the rule bar with the most buttons it shows (a definition's).
  showRuleTools({kNewType, kNewStart, kNewEnd, kRemove});
  const int rules = myRuleTools.wantedWidth();
  showRuleTools({kNewType, kMerge});
  mySplit.setMinSizes(kTreeMinWidth, rules + kFrameRoom);
  const int x = cCITheme::theme().getDimension(kToolsXDim, 0);
  const int tools = myTools.wantedWidth() + 2 * x;
  const int sides = kTreeMinWidth + kSplitterRoom + rules + 2 * kFrameRoom;
  setMinSize(std::max(tools, sides), kMinHeight);
}

void cRuledMainForm::showRuleTools(std::initializer_list<int> ids) {
  for (const int id : {kNewType, kMerge, kNewStart, kNewEnd, kRemove}) {
    myRuleTools.showButton(id, std::find(ids.begin(), ids.end(), id) != ids.end());
    myRuleTools.enableButton(id, true);
  }
}

bool cRuledMainForm::mayDiscard() {
  return myDoc.saved() || cMessageForm::warnconfirmbox(this, string(txCloseQuestion), nullptr);
}

void cRuledMainForm::showState() {
  const std::string& path = myDoc.path();
  myFile.setText(path.empty() ? myFile.string(cStatusLine::txNoFile) : path.c_str(), -1, true);
  myUnsaved.setText(myDoc.saved() ? "" : myUnsaved.string(cStatusLine::txUnsaved), -1, true);
}

bool cRuledMainForm::onClose() {
  return mayDiscard();
}

void cRuledMainForm::onTool(int id) {
  switch (id) {
  case kNew:
    if (!mayDiscard()) return;
    myDoc.clear();
    redrawRules();
    return;
  case kOpen:
    if (mayDiscard()) loadSigs(false);
    return;
  case kSave:
    saveSigs(); // nothing for an empty set
    return;
  case kAbout:
    cAboutPopupUI::runAbout(this);
    return;
  case kTest:
    testSamples();
    return;
  }
}

void cRuledMainForm::testSamples() {
  const std::string start = mySampleFolder.empty() ? myLastFolder : mySampleFolder;
  const std::optional<std::string> folder =
      cFileChooseDialog::chooseFolder(this, string(txTestFolder), start.c_str());
  if (!folder) return;
  mySampleFolder = *folder;
  setConfigFolder(ctSampleFolder, mySampleFolder);
  cSampleTestForm::run(this, *folder);
  // The focus goes back to the tree, on the definition a row may have shown.
  if (myTree.selected()) myTree.select(myTree.selected(), true);
}

void cRuledMainForm::showDefinition(const cScanSignature* sig) {
  tItem* item = sig ? myTree.find(sig) : myTree.root();
  if (!item) return;
  myTree.select(item, false); // opens its parents
  activate(static_cast<cScanSignature*>(item->data));
}

void cRuledMainForm::onRuleTool(int id) {
  switch (id) {
  case kNewType:
    newSig(myCurrent ? myTree.find(myCurrent) : myTree.root());
    return;
  case kMerge:
    loadSigs(true);
    return;
  case kNewStart:
    newStr();
    return;
  case kNewEnd:
    newEnd();
    return;
  case kRemove:
    rmRule();
    return;
  }
}

bool cRuledMainForm::processKey(int key, bool shift, bool ctrl, bool alt) {
  if (findKey(key, shift, ctrl, alt)) return true;
  if (ctrl && !shift && !alt) {
    const int command = key == 'N' ? kNew : key == 'O' ? kOpen : key == 'S' ? kSave : 0;
    if (command) {
      onTool(command);
      return true;
    }
  }
  // In the find field these undo its typing.
  if (ctrl && !alt && (key == 'Z' || (key == 'Y' && !shift)) && !myFind.hasFocus()) {
    undo(key == 'Y' || shift);
    return true;
  }
  if (treeFocused() && treeKey(key, shift, ctrl, alt)) return true;
  return cCustomForm::processKey(key, shift, ctrl, alt);
}

bool cRuledMainForm::findKey(int key, bool shift, bool ctrl, bool alt) {
  if (ctrl && !shift && !alt && key == 'F') {
    openFind();
    return true;
  }
  if (key == kKeyF3 && !ctrl && !alt) {
    if (myFind.text()[0])
      findNext(shift, false);
    else
      openFind();
    return true;
  }
  if (!myFind.hasFocus() || shift || ctrl || alt) return false;
  if (key == kKeyEnter)
    findNext(false, false);
  else if (key == kKeyEscape)
    closeFind();
  else
    return false;
  return true;
}

bool cRuledMainForm::treeFocused() {
  return getFocused() == &myTree || myTree.isChild(getFocused());
}

bool cRuledMainForm::treeKey(int key, bool shift, bool ctrl, bool alt) {
  if (ctrl && !shift && !alt) {
    if (key == 'C' || key == 'X')
      copySig(key == 'X');
    else if (key == 'V')
      pasteSigs();
    else if (key == 'D')
      duplicateSig();
    else
      return false;
    return true;
  }
  if (alt && !ctrl && !shift && (key == kKeyUp || key == kKeyDown)) {
    moveSig(key == kKeyDown);
    return true;
  }
  // Delete on a selected definition asks, as its menu's Delete does.
  if (key == kKeyDelete && !shift && !ctrl && !alt && myTree.selected() &&
      myTree.selected()->data) {
    delSig(myTree.selected());
    return true;
  }
  return false;
}

bool cRuledMainForm::onAction(cChildElement* source, cChildAction* action) {
  if (!action) return cCustomForm::onAction(source, action);
  const int code = action->code;
  if (code == cToolBarAction::kCode && (source == &myTools || source == &myRuleTools)) {
    const int id = static_cast<cToolBarAction*>(action)->id;
    if (source == &myTools)
      onTool(id);
    else
      onRuleTool(id);
    return true;
  }
  if (source == &myTree && code == cTreeViewChild::kDropped) {
    moveDropped(*static_cast<cTreeViewChild::cTreeDropAction*>(action));
    return true;
  }
  if (source == &myTree && code >= cTreeViewChild::kActivated && code <= cTreeViewChild::kContext) {
    if (code == cTreeViewChild::kContext)
      contextMenu(static_cast<cTreeViewChild::cTreeItemCtxAction*>(action));
    else
      onTreeAction(static_cast<cTreeViewChild::cTreeItemAction*>(action));
    return true;
  }
  if (source == &myFind && code == cEditChild::kChangedCode) {
    findNext(false, true);
    return true;
  }
  if (source == &mySheet && (code == P::kSelected || code == P::kButton || code == P::kChoice)) {
    processPropAction(static_cast<P::cPropSheetAction*>(action));
    return true;
  }
  return cCustomForm::onAction(source, action);
}

void cRuledMainForm::onTreeAction(cTreeViewChild::cTreeItemAction* action) {
  auto* sig = action->item ? static_cast<cScanSignature*>(action->item->data) : nullptr;
  if (sig)
    activate(sig);
  else
    activateMain();
}

// --- the root view --------------------------------------------------------------------

void cRuledMainForm::clearSelection() {
  mySelStr = nullptr;
  mySelEnd = nullptr;
  myStrRows.clear();
  myEndRows.clear();
}

void cRuledMainForm::activateMain() {
  myCurrent = nullptr;
  clearSelection();
  mySheet.startChanges();
  mySheet.clear();
  showRuleTools({kNewType, kMerge});
  mySheet.setSection(kStatistics, string(txStatistics));
  const int rows[][2] = {{rActive, cScanSignature::hmActive},
                         {rPassive, cScanSignature::hmPassive},
                         {rContainers, cScanSignature::hmNever}};
  for (const auto& [row, mode] : rows) {
    mySheet.setProperty(kStatistics, row, string(txActiveRules + row - 1), nullptr, nullptr,
                        P::ptText);
    mySheet.setPropertyVal(kStatistics, row, static_cast<unsigned long long>(myDoc.count(mode)),
                           false, 0);
  }
  mySheet.endChanges();
}

int cRuledMainForm::treePicture(const cScanSignature* sig) {
  switch (sig->hitMode) {
  case cScanSignature::hmActive:
    return tpActive;
  case cScanSignature::hmPassive:
    return tpPassive;
  default:
    return tpContainer;
  }
}

namespace {

using tCollapsed = std::unordered_set<const void*>;

void addItems(cTreeViewChild& tree, cTreeViewChild::cTreeViewItem* under, cScanSignature* first,
              const tCollapsed& collapsed) {
  for (cScanSignature* sig = first; sig; sig = sig->nextSig()) {
    auto* item =
        new cTreeViewChild::cTreeViewItem(sig->name.c_str(), sig, cRuledMainForm::treePicture(sig));
    item->collapsed = collapsed.count(sig) != 0;
    tree.storeUnder(under, item);
    addItems(tree, item, sig->firstChildSig(), collapsed);
  }
}

} // namespace

void cRuledMainForm::redrawRules() {
  myTree.startChanges();
  myTree.remove_under(myTree.root());
  addItems(myTree, myTree.root(), myDoc.tree().firstSig(), {});
  myTree.endChanges();
  myTree.select(myTree.root(), false);
  activateMain();
}

void cRuledMainForm::rebuildTree(const cScanSignature* show) {
  // Built anew from the document: branches that were closed stay closed (their nodes keep
  // their identity through edits) and the rows stay where they were on the screen.
  tCollapsed collapsed;
  for (cTreeItem* i = myTree.root()->firstChild(); i; i = i->nextInOrder(myTree.root())) {
    const auto* item = static_cast<const tItem*>(i);
    if (item->collapsed) collapsed.insert(item->data);
  }
  const sPoint scroll = myTree.scrollOffset();
  const bool focused = treeFocused();
  myTree.startChanges();
  myTree.remove_under(myTree.root());
  addItems(myTree, myTree.root(), myDoc.tree().firstSig(), collapsed);
  myTree.endChanges();
  myTree.scrollTo(scroll.x, scroll.y);
  showDefinition(show);
  // The focused label went with the old rows: the new selected one takes the focus.
  if (focused && myTree.selected()) myTree.select(myTree.selected(), true);
}

void cRuledMainForm::undo(bool redo) {
  cScanSignature* touched = nullptr;
  if (redo ? myDoc.redo(touched) : myDoc.undo(touched)) rebuildTree(touched);
}

void cRuledMainForm::setTreePicture(cScanSignature* sig) {
  tItem* item = myTree.find(sig);
  if (!item) return;
  item->image = treePicture(sig);
  myTree.update();
}
