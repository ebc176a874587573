// The signature view: the selected definition's general information, hit conditions, and
// its start and termination rules after those it inherits.
#include <algorithm>

#include "ciom/messageform.h"
#include "ui.h"
#include "uitext.h"

namespace {

using P = cPropSheetChild;

// The first content rule of a kind on the definition or, failing that, its nearest
// ancestor that has one; owner receives the node holding it.
cScanSigRule* inheritedStr(cScanSignature* sig, int type, cScanSignature*& owner) {
  for (owner = sig; owner; owner = owner->parentSig()) {
    if (cScanSigRule* rule = owner->first_typed_str(type)) return rule;
  }
  return nullptr;
}

} // namespace

std::string cRuledMainForm::format(const char* pattern, std::initializer_list<std::string> args) {
  // Only %s and %d are filled, in order; a text resource cannot make this read anything else.
  std::string out;
  auto next = args.begin();
  for (const char* p = pattern ? pattern : ""; *p; ++p) {
    if (p[0] == '%' && (p[1] == 's' || p[1] == 'd')) {
      if (next != args.end()) out += *next++;
      ++p;
    } else if (p[0] == '%' && p[1] == '%') {
      out += '%';
      ++p;
    } else {
      out += *p;
    }
  }
  return out;
}

int cRuledMainForm::fieldSizeText(int code) {
  return code <= 3 ? txByte + std::max(code, 0) : txWordBE + std::min(code, 6) - 4;
}

const char* cRuledMainForm::describe(const cScanSigRule* rule) {
  myWork[0] = 0;
  if (rule) rule->genStdName(myWork, kWorkSize);
  return myWork;
}

const char* cRuledMainForm::describe(const cScanSigEndRule* rule) {
  myWork[0] = 0;
  if (rule) rule->genStdName(myWork, kWorkSize);
  return myWork;
}

void cRuledMainForm::activate(cScanSignature* sig) {
  if (!sig) return activateMain();
  myCurrent = sig;
  clearSelection();
  mySheet.startChanges();
  mySheet.clear();
  showRuleTools({kNewType, kNewStart, kNewEnd, kRemove});
  myRuleTools.enableButton(kRemove, false);
  showGeneral(sig);
  mySheet.setSection(kHitConditions, string(txHitConditions));
  showContentType(sig);
  showScope(sig);
  showHitMode(sig);
  mySheet.setProperty(kHitConditions, rAllRules, string(txHitWhen), nullptr, nullptr, P::ptList);
  mySheet.setPropertyVal(kHitConditions, rAllRules, 1, nullptr, string(txAllRules), sig->allRules);
  mySheet.setPropertyVal(kHitConditions, rAllRules, 2, nullptr, string(txAnyRule), !sig->allRules);
  showStartRules(sig);
  showEndRules(sig);
  mySheet.endChanges();
}

void cRuledMainForm::showGeneral(cScanSignature* sig) {
  mySheet.setSection(kGeneral, string(txGeneral));
  mySheet.setProperty(kGeneral, rName, string(txName), nullptr, sig->name.c_str(),
                      P::ptReadonlyAction);
  mySheet.setProperty(kGeneral, rExtension, string(txExtension), nullptr, sig->ext.c_str(),
                      P::ptReadonlyAction);
}

void cRuledMainForm::showContentType(cScanSignature* sig) {
  cScanSignature* owner = nullptr;
  int text = txBinary;
  if (inheritedStr(sig, rtIsAsciiText, owner))
    text = txAsciiText;
  else if (inheritedStr(sig, rtIsUnicodeText, owner))
    text = txUnicodeText;
  // What an ancestor decides is shown, greyed, but changed only there.
  const bool own = text == txBinary || owner == sig;
  mySheet.remove(kHitConditions, rContentType); // its kind may change
  mySheet.setProperty(kHitConditions, rContentType, string(txContentType), nullptr, string(text),
                      own ? P::ptReadonlyAction : P::ptReadonly);
  if (!own) mySheet.setPropertyColor(kHitConditions, rContentType, kInheritedColour);
}

void cRuledMainForm::showScope(cScanSignature* sig) {
  const int kind = sig->subsetType();
  const int scope = kind == stField   ? txSubsetByOffset
                    : kind == stMagic ? txSubsetBySignature
                                      : txSameAsParent;
  if (!mySheet.hasProp(kHitConditions, rScope))
    mySheet.setProperty(kHitConditions, rScope, string(txScope), nullptr, nullptr,
                        P::ptReadonlyAction);
  mySheet.setPropertyVal(kHitConditions, rScope, string(scope));
  mySheet.remove(kHitConditions, rScopeDetail);
  if (kind == stField) {
    const auto* field = static_cast<const cFieldRelativeSubset*>(sig->subset.get());
    const std::string detail =
        format(string(txFieldFormat),
               {string(fieldSizeText(field->width())), std::to_string(field->offset()),
                std::to_string(field->multiplier()), std::to_string(field->increment())});
    mySheet.setProperty(kHitConditions, rScopeDetail, string(txScopeDefinedAs), nullptr,
                        detail.c_str(), P::ptReadonly);
  } else if (kind == stMagic) {
    const auto* magic = static_cast<const cMagicRelativeSubset*>(sig->subset.get());
    const std::string detail = format(string(txAdvHexFormat), {magic->text()});
    mySheet.setProperty(kHitConditions, rScopeDetail, string(txScopeDefinedBy), nullptr,
                        detail.c_str(), P::ptReadonly);
  }
}

void cRuledMainForm::showHitMode(cScanSignature* sig) {
  const int text = sig->hitMode == cScanSignature::hmActive    ? txAlways
                   : sig->hitMode == cScanSignature::hmPassive ? txIfNoOther
                                                               : txNever;
  if (!mySheet.hasProp(kHitConditions, rHitMode))
    mySheet.setProperty(kHitConditions, rHitMode, string(txRuleHits), nullptr, nullptr,
                        P::ptReadonlyAction);
  mySheet.setPropertyVal(kHitConditions, rHitMode, string(text));
}

void cRuledMainForm::showStartRules(cScanSignature* sig) {
  mySheet.setSection(kStartRules, string(txStartRules));
  int row = 0;
  for (cScanSignature* up = sig->parentSig(); up; up = up->parentSig()) {
    for (cScanSigRule* r = up->first_str(); r; r = up->next_str(r)) {
      if (r->typeOf() != rtAdvHex) continue;
      mySheet.setProperty(kStartRules, ++row, string(txMatchingSignature), nullptr, describe(r),
                          P::ptReadonly);
      mySheet.setPropertyColor(kStartRules, row, kInheritedColour);
    }
  }
  for (cScanSigRule* r = sig->first_str(); r; r = sig->next_str(r)) {
    if (r->typeOf() != rtAdvHex) continue;
    mySheet.setProperty(kStartRules, ++row, string(txMatchingSignature), nullptr, describe(r),
                        P::ptReadonlyAction);
    myStrRows[row] = r;
  }
}

void cRuledMainForm::showEndRules(cScanSignature* sig) {
  mySheet.setSection(kEndRules, string(txEndRules));
  auto caption = [this](const cScanSigEndRule* r) {
    return string(r->typeOf() == etAdvHex ? txAdvHexRule : txSizeField);
  };
  auto shown = [](const cScanSigEndRule* r) {
    return r->typeOf() == etAdvHex || r->typeOf() == etSizeField;
  };
  int row = 0;
  for (cScanSignature* up = sig->parentSig(); up; up = up->parentSig()) {
    for (cScanSigEndRule* r = up->first_end(); r; r = up->next_end(r)) {
      if (!shown(r)) continue;
      mySheet.setProperty(kEndRules, ++row, caption(r), nullptr, describe(r), P::ptReadonly);
      mySheet.setPropertyColor(kEndRules, row, kInheritedColour);
    }
  }
  for (cScanSigEndRule* r = sig->first_end(); r; r = sig->next_end(r)) {
    if (!shown(r)) continue;
    mySheet.setProperty(kEndRules, ++row, caption(r), nullptr, describe(r), P::ptReadonlyAction);
    myEndRows[row] = r;
  }
}

// --- definitions in the tree ------------------------------------------------------------

void cRuledMainForm::newSig(tItem* item) {
  if (!item) return;
  cScanSignature* sig =
      myDoc.addDefinition(static_cast<cScanSignature*>(item->data), string(txEmptyDefinition));
  auto* added = new tItem(sig->name.c_str(), sig, tpContainer);
  myTree.storeUnder(item, added);
  myTree.select(added, true); // a new item: its selection is announced and shows it
}

void cRuledMainForm::delSig(tItem* item) {
  auto* sig = item ? static_cast<cScanSignature*>(item->data) : nullptr;
  if (!sig) return;
  const std::string question =
      std::string(string(txDeleteQuestion)) + "\n\"" + sig->name.c_str() + "\"";
  if (cMessageForm::warnconfirmbox(this, question.c_str(), nullptr)) removeSig(item);
}

void cRuledMainForm::removeSig(tItem* item) {
  auto* sig = static_cast<cScanSignature*>(item->data);
  // The selection goes to the next sibling, else the previous, else the parent, and the
  // rows stay where they were.
  cScanSignature* next = sig->nextSig();
  if (!next) next = static_cast<cScanSignature*>(sig->prev());
  if (!next) next = sig->parentSig();
  const sPoint scroll = myTree.scrollOffset();
  // The view lets go of the item before the definition it points to goes.
  myTree.select(next ? myTree.find(next) : myTree.root(), true);
  myTree.remove(item);
  myDoc.deleteDefinition(sig);
  myTree.scrollTo(scroll.x, scroll.y);
  activate(next);
}

// --- definitions on the clipboard, as definition text ----------------------------------

void cRuledMainForm::copySig(bool cut) {
  tItem* item = myTree.selected();
  auto* sig = item ? static_cast<cScanSignature*>(item->data) : nullptr;
  if (!sig) return;
  std::string text, why;
  if (!cRulesDocument::textOf(sig, text, why)) {
    cMessageForm::errorbox(this, (std::string(string(txCannotCopy)) + "\n" + why).c_str(), nullptr);
    return;
  }
  if (clipboardCopyText(text.c_str(), static_cast<long long>(text.size())) && cut) removeSig(item);
}

void cRuledMainForm::pasteSigs() {
  _guardchar<char> text;
  if (!clipboardRequestText(text)) text.set("");
  cScanSignature* first = nullptr;
  sRulesTextError error;
  // Under the selected definition, or at the top level when the root is selected.
  if (!myDoc.paste(text.c_str(), myCurrent, first, error)) {
    std::string message = std::string(string(txCannotPaste)) + "\n";
    if (error.line > 0) message += "line " + std::to_string(error.line) + ": ";
    cMessageForm::errorbox(this, (message + error.message).c_str(), nullptr);
    return;
  }
  rebuildTree(first);
}

void cRuledMainForm::duplicateSig() {
  if (cScanSignature* copy = myCurrent ? myDoc.duplicate(myCurrent) : nullptr) rebuildTree(copy);
}

void cRuledMainForm::moveSig(bool down) {
  cScanSignature* sig = myCurrent;
  if (!sig) return;
  // Past the next sibling, or before the previous one.
  if (!(down ? sig->next() : sig->prev())) return;
  cTreeItem* after = down ? sig->next() : sig->prev()->prev();
  if (myDoc.move(sig, sig->parentSig(), static_cast<cScanSignature*>(after))) rebuildTree(sig);
}

void cRuledMainForm::moveDropped(const cTreeViewChild::cTreeDropAction& drop) {
  auto* sig = static_cast<cScanSignature*>(drop.item->data);
  auto* target = static_cast<cScanSignature*>(drop.target->data); // null: the root
  if (!sig) return;
  cScanSignature* parent = nullptr;
  cTreeItem* after = nullptr;
  if (drop.place == cTreeItemElement::dmInto) {
    // The last child of the target, or of the top level.
    parent = target;
    after = target ? target->lastChild() : myDoc.tree().last();
  } else if (target) {
    parent = target->parentSig();
    after = drop.place == cTreeItemElement::dmAfter ? target : target->prev();
  } else {
    return;
  }
  if (myDoc.move(sig, parent, static_cast<cScanSignature*>(after))) rebuildTree(sig);
}

void cRuledMainForm::contextMenu(cTreeViewChild::cTreeItemCtxAction* action) {
  tItem* item = action->item;
  if (!item) return;
  // The menu acts on the item under the pointer, which is selected and shown first.
  if (item != myTree.selected()) showDefinition(static_cast<cScanSignature*>(item->data));
  sPoint at;
  myTree.absPos(at);
  const bool root = item->data == nullptr;
  enum eCommand { kNew = 10, kMerge, kDelete, kSave, kCut, kCopy, kPaste, kDuplicate };
  const std::vector<std::pair<int, int>> rootMenu = {{kNew, txNewDefinition},
                                                     {kMerge, txMergeDefinitions},
                                                     {kPaste, txPaste},
                                                     {kSave, txSaveHint}};
  const std::vector<std::pair<int, int>> sigMenu = {{kNew, txNewSubDefinition},
                                                    {kCut, txCut},
                                                    {kCopy, txCopy},
                                                    {kPaste, txPaste},
                                                    {kDuplicate, txDuplicate},
                                                    {kDelete, txDeleteDefinition}};
  switch (menu(root ? rootMenu : sigMenu, at.x + action->x, at.y + action->y, 0, -1)) {
  case kNew:
    return newSig(item);
  case kMerge:
    return loadSigs(true);
  case kDelete:
    return delSig(item);
  case kSave:
    return saveSigs();
  case kCut:
    return copySig(true);
  case kCopy:
    return copySig(false);
  case kPaste:
    return pasteSigs();
  case kDuplicate:
    return duplicateSig();
  default:
    return;
  }
}
