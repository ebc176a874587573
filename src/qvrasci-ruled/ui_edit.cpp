// Edits of the signature view's rows, each through its dialog or drop-down.
#include <algorithm>
#include <cstring>

#include "ciom/messageform.h"
#include "ciom/popup.h"
#include "ciom/theme.h"
#include "deffield.h"
#include "defsig.h"
#include "ui.h"
#include "uitext.h"

namespace {

using P = cPropSheetChild;

constexpr int kFormColour = 0, kInkColour = 4; // theme colours

// The field form's size code of a size end rule: 0..3 by its width, 4..6 big-endian.
unsigned char sizeCode(const cScanSigEndRuleMatchSize& rule) {
  unsigned char code = 0;
  while (code < 3 && (1u << code) < rule.fieldBytes()) ++code;
  // A big-endian single byte reads as a byte.
  return rule.bigEndian() && code > 0 ? code + 3 : code;
}

// A size rule's values from the field form: codes 4..6 are the big-endian word, double and
// quad word.
struct sSizeField {
  explicit sSizeField(const cDefFiledForm::sFieldDef& def)
      : offset(static_cast<unsigned>(def.offset)), increment(static_cast<unsigned>(def.addend)),
        multiplier(static_cast<unsigned>(def.multiplier)),
        bigEndian(def.size >= cDefFiledForm::fsWordBE) {
    bytes = static_cast<unsigned char>(1u << (bigEndian ? def.size - 3 : def.size));
  }
  unsigned int offset, increment, multiplier;
  bool bigEndian;
  unsigned char bytes = 1;
};

} // namespace

int cRuledMainForm::menu(const std::vector<std::pair<int, int>>& choices, int x, int y, int width,
                         int hot) {
  tActiveElementItems items;
  for (const auto& [id, text] : choices) {
    sActiveElementItem* item = items.insert(id);
    item->id = id;
    item->text.set(string(text));
  }
  // On the form's own colour, so dark ink.
  const cCITheme& theme = cCITheme::theme();
  cPopupMaster::sPopupConfig config;
  config.background = theme.getColor(kFormColour);
  config.textColour = config.highlightText = theme.getColor(kInkColour);
  config.hotId = hot;
  // A context menu (width 0) leaves its text some air.
  config.width =
      width > 0 ? std::max(width, cPopupMaster::autoWidth(this, items, nullptr, nullptr))
                : static_cast<int>(1.1 * cPopupMaster::autoWidth(this, items, nullptr, nullptr));
  return cPopupMaster::simplePopup(this, items, x, y, &config);
}

int cRuledMainForm::propExtend(int section, int row, std::initializer_list<int> texts,
                               int current) {
  cChildElement* value = mySheet.editControl(section, row);
  if (!value) return -1;
  sPoint at;
  value->absPos(at);
  std::vector<std::pair<int, int>> choices;
  int id = 0;
  for (const int text : texts) choices.emplace_back(++id, text);
  // As wide as the box and its button, like a drop-down list.
  return menu(choices, at.x, at.y + value->height(), value->width() + P::kButtonRoom, current);
}

void cRuledMainForm::processPropAction(P::cPropSheetAction* action) {
  if (!myCurrent || !action) return;
  const int section = action->section, row = action->prop;
  switch (action->code) {
  case P::kSelected: {
    const auto str = myStrRows.find(row);
    const auto end = myEndRows.find(row);
    mySelStr = section == kStartRules && str != myStrRows.end() ? str->second : nullptr;
    mySelEnd = section == kEndRules && end != myEndRows.end() ? end->second : nullptr;
    myRuleTools.enableButton(kRemove, mySelStr || mySelEnd);
    return;
  }
  case P::kChoice:
    if (section == kHitConditions && row == rAllRules) {
      myDoc.setAllRules(myCurrent, mySheet.value_id(section, row) == 1);
    }
    return;
  case P::kButton:
    break;
  default:
    return;
  }
  if (section == kGeneral && row == rExtension) return editExtension();
  if (section == kGeneral && row == rName) return editName();
  if (section == kHitConditions && row == rHitMode) return editHitMode();
  if (section == kHitConditions && row == rScope) return editScope();
  if (section == kHitConditions && row == rContentType) return editContentType();
  if (section == kStartRules && myStrRows.count(row)) return editStartRule(myStrRows[row]);
  if (section == kEndRules && myEndRows.count(row)) return editEndRule(myEndRows[row]);
}

void cRuledMainForm::editExtension() {
  _guardchar<char> text(myCurrent->ext.c_str());
  if (!cSetTextForm::setText(this, text) || !myDoc.setExtension(myCurrent, text.c_str())) return;
  mySheet.setPropertyVal(kGeneral, rExtension, myCurrent->ext.c_str());
}

void cRuledMainForm::editName() {
  _guardchar<char> text(myCurrent->name.c_str());
  if (!cSetTextForm::setText(this, text) || !myDoc.rename(myCurrent, text.c_str())) return;
  mySheet.setPropertyVal(kGeneral, rName, myCurrent->name.c_str());
  if (tItem* item = myTree.find(myCurrent)) {
    item->text = myCurrent->name.c_str();
    myTree.update();
  }
}

void cRuledMainForm::editHitMode() {
  const int choice = propExtend(kHitConditions, rHitMode, {txNever, txIfNoOther, txAlways},
                                myCurrent->hitMode + 1);
  if (choice < 1) return;
  switch (myDoc.setHitMode(myCurrent, choice - 1)) {
  case cRulesDocument::mcNoRules: // nothing of its own to match: it cannot hit
    cMessageForm::errorbox(this, string(txNoRules), nullptr);
    return;
  case cRulesDocument::mcChanged:
    setTreePicture(myCurrent);
    showHitMode(myCurrent);
    return;
  case cRulesDocument::mcUnchanged:
    return;
  }
}

void cRuledMainForm::editScope() {
  cScanSignature* sig = myCurrent;
  const int kind = sig->subsetType();
  const int choice = propExtend(kHitConditions, rScope,
                                {txSameAsParent, txSubsetByOffset, txSubsetBySignature}, kind + 1);
  if (choice == 3) {
    const auto* old =
        kind == stMagic ? static_cast<cMagicRelativeSubset*>(sig->subset.get()) : nullptr;
    cDefSigOffsetForm::sSigOffsetdDef def;
    if (old) {
      def.pattern.set(old->text());
      def.bytesAfter = old->offset();
    }
    if (!cDefSigOffsetForm::defSigOffset(this, def)) return;
    if (old && def.bytesAfter == old->offset() &&
        std::strcmp(def.pattern.c_str(), old->text()) == 0)
      return;
    auto subset = std::make_unique<cMagicRelativeSubset>();
    if (!subset->create(def.pattern.c_str(), def.bytesAfter)) return;
    myDoc.setSubset(sig, std::move(subset));
  } else if (choice == 2) {
    const auto* old =
        kind == stField ? static_cast<cFieldRelativeSubset*>(sig->subset.get()) : nullptr;
    cDefFiledForm::sFieldDef def;
    if (old) {
      def.offset = old->offset();
      def.size = old->width();
      def.multiplier = old->multiplier();
      def.addend = old->increment();
    }
    if (!cDefFiledForm::defField(this, def)) return;
    auto subset = std::make_unique<cFieldRelativeSubset>();
    subset->create(static_cast<unsigned>(def.offset), def.size,
                   static_cast<unsigned>(def.multiplier), static_cast<unsigned>(def.addend));
    myDoc.setSubset(sig, std::move(subset));
  } else if (choice == 1) {
    if (!sig->subset) return;
    myDoc.setSubset(sig, nullptr);
  } else {
    return;
  }
  mySheet.startChanges();
  showScope(sig);
  mySheet.endChanges();
}

void cRuledMainForm::editContentType() {
  cScanSignature* sig = myCurrent;
  // The drop-down's ids are the document's content kinds.
  const int choice =
      propExtend(kHitConditions, rContentType, {txAsciiText, txUnicodeText, txBinary},
                 cRulesDocument::content(sig));
  if (choice < 1) return;
  myDoc.setContent(sig, static_cast<cRulesDocument::eContent>(choice));
  showContentType(sig);
}

void cRuledMainForm::editStartRule(cScanSigRule* rule) {
  auto* hex = static_cast<cScanSigRuleUniHexMatch*>(rule);
  cDefSigRuleForm::sSigRuleDef def;
  def.pattern.set(hex->text());
  def.position = static_cast<unsigned>(hex->offset());
  def.blockSize = static_cast<unsigned>(hex->blockSize());
  if (!cDefSigRuleForm::defSigRule(this, def)) return;
  if (!myDoc.setStartRule(myCurrent, hex, def.pattern.c_str(), def.blockSize, def.position)) return;
  for (const auto& [row, r] : myStrRows)
    if (r == rule) mySheet.setPropertyVal(kStartRules, row, describe(rule));
}

void cRuledMainForm::editEndRule(cScanSigEndRule* rule) {
  const int row = [&] {
    for (const auto& [n, r] : myEndRows)
      if (r == rule) return n;
    return 0;
  }();
  if (rule->typeOf() == etSizeField) {
    auto* size = static_cast<cScanSigEndRuleMatchSize*>(rule);
    cDefFiledForm::sFieldDef def;
    def.offset = size->fieldOffset();
    def.size = sizeCode(*size);
    def.multiplier = size->multiplier();
    def.addend = size->increment();
    const cDefFiledForm::sFieldDef old = def;
    // What the form shows unchanged stays as it is (a big-endian byte shows as a byte).
    if (!cDefFiledForm::defField(this, def) ||
        (def.offset == old.offset && def.size == old.size && def.multiplier == old.multiplier &&
         def.addend == old.addend))
      return;
    const sSizeField field(def);
    if (!myDoc.setSizeRule(myCurrent, size, field.offset, field.bytes, field.increment,
                           field.multiplier, field.bigEndian))
      return;
  } else {
    auto* hex = static_cast<cScanSigEndRuleUniHex*>(rule);
    cDefSigOffsetForm::sSigOffsetdDef def;
    def.pattern.set(hex->text());
    def.bytesAfter = hex->distance();
    if (!cDefSigOffsetForm::defSigOffset(this, def) ||
        !myDoc.setEndRule(myCurrent, hex, def.pattern.c_str(), def.bytesAfter))
      return;
  }
  mySheet.setPropertyVal(kEndRules, row, describe(rule));
}

// --- rules added and removed ----------------------------------------------------------

void cRuledMainForm::newStr() {
  if (!myCurrent) return;
  cDefSigRuleForm::sSigRuleDef def;
  if (!cDefSigRuleForm::defSigRule(this, def)) return;
  auto rule = std::make_unique<cScanSigRuleUniHexMatch>();
  if (!rule->create(def.pattern.c_str(), def.blockSize, def.position)) return;
  myDoc.addStartRule(myCurrent, std::move(rule));
  activate(myCurrent);
}

void cRuledMainForm::newEnd() {
  if (!myCurrent) return;
  int choice = 1;
  // A definition has one size rule at most; without one, ask which kind.
  if (!myCurrent->getSizeEndRule()) {
    cButtonChild* button = myRuleTools.button(kNewEnd);
    if (!button) return;
    sPoint at;
    button->absPos(at);
    sPoint bar;
    myRuleTools.absPos(bar);
    choice = menu({{1, txMatchingSignature}, {2, txSizeField}}, at.x, bar.y + myRuleTools.height(),
                  0, -1);
  }
  if (choice == 2) {
    cDefFiledForm::sFieldDef def;
    if (!cDefFiledForm::defField(this, def)) return;
    const sSizeField field(def);
    auto rule = std::make_unique<cScanSigEndRuleMatchSize>();
    rule->create(field.offset, field.bytes, field.increment, field.multiplier, field.bigEndian);
    myDoc.addEndRule(myCurrent, std::move(rule));
  } else if (choice == 1) {
    cDefSigOffsetForm::sSigOffsetdDef def;
    if (!cDefSigOffsetForm::defSigOffset(this, def)) return;
    auto rule = std::make_unique<cScanSigEndRuleUniHex>();
    if (!rule->create(def.pattern.c_str(), def.bytesAfter)) return;
    myDoc.addEndRule(myCurrent, std::move(rule));
  } else {
    return;
  }
  activate(myCurrent);
}

void cRuledMainForm::rmRule() {
  if (!myCurrent || (!mySelStr && !mySelEnd)) return;
  // The question names the rule as its row describes it.
  const std::string question = std::string(string(txDeleteRuleQuestion)) + "\n" +
                               (mySelStr ? describe(mySelStr) : describe(mySelEnd));
  if (!cMessageForm::warnconfirmbox(this, question.c_str(), nullptr)) return;
  if (mySelStr)
    myDoc.removeRule(myCurrent, mySelStr);
  else
    myDoc.removeRule(myCurrent, mySelEnd);
  activate(myCurrent);
}
