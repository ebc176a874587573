// Edits of the signature view's rows, each through its dialog or drop-down.
#include <algorithm>
#include <cstring>

#include "base/folders.h"
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

// An extension that a file system takes: characters that paths or shells read differently
// become harmless ones, and the text stops where its first "/" stood.
std::string safeExtension(const char* text) {
  std::string ext = text;
  const size_t slash = ext.find('/');
  constexpr std::pair<char, char> kSwaps[] = {{'"', '\''}, {'*', '@'}, {'/', '='}, {':', '_'},
                                              {'|', '_'},  {'?', '~'}, {'\\', '-'}};
  for (char& c : ext) {
    for (const auto& [from, to] : kSwaps) {
      if (c == from) {
        c = to;
        break;
      }
    }
  }
  if (slash != std::string::npos) ext.resize(slash);
  return ext;
}

// The field form's size code of a size end rule: 0..3 by its width, 4..6 big-endian.
unsigned char sizeCode(const cScanSigEndRuleMatchSize& rule) {
  unsigned char code = 0;
  while (code < 3 && (1u << code) < rule.fieldBytes()) ++code;
  // A big-endian single byte reads as a byte.
  return rule.bigEndian() && code > 0 ? code + 3 : code;
}

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
      const bool all = mySheet.value_id(section, row) == 1;
      if (all != myCurrent->allRules) changed();
      myCurrent->allRules = all;
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
  if (!cSetTextForm::setText(this, text) || !*text.c_str() ||
      std::strcmp(text.c_str(), myCurrent->ext.c_str()) == 0)
    return;
  cFolderContents::adjustPath(text);
  myCurrent->ext.set(safeExtension(text.c_str()).c_str());
  mySheet.setPropertyVal(kGeneral, rExtension, myCurrent->ext.c_str());
  changed();
}

void cRuledMainForm::editName() {
  _guardchar<char> text(myCurrent->name.c_str());
  if (!cSetTextForm::setText(this, text) || !*text.c_str() ||
      std::strcmp(text.c_str(), myCurrent->name.c_str()) == 0)
    return;
  myCurrent->name = text;
  mySheet.setPropertyVal(kGeneral, rName, myCurrent->name.c_str());
  if (tItem* item = myTree.find(myCurrent)) {
    item->text = myCurrent->name.c_str();
    myTree.update();
  }
  changed();
}

void cRuledMainForm::editHitMode() {
  const int choice = propExtend(kHitConditions, rHitMode, {txNever, txIfNoOther, txAlways},
                                myCurrent->hitMode + 1);
  if (choice < 1 || choice - 1 == myCurrent->hitMode) return;
  // A definition with nothing of its own to match cannot hit.
  if (choice > 1 && !myCurrent->hasStrRules()) {
    cMessageForm::errorbox(this, string(txNoRules), nullptr);
    return;
  }
  myCurrent->hitMode = choice - 1;
  setTreePicture(myCurrent);
  showHitMode(myCurrent);
  recalcRules();
  changed();
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
    sig->subset = std::move(subset);
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
    sig->subset = std::move(subset);
  } else if (choice == 1) {
    if (!sig->subset) return;
    sig->subset.reset();
  } else {
    return;
  }
  mySheet.startChanges();
  showScope(sig);
  mySheet.endChanges();
  changed();
}

void cRuledMainForm::editContentType() {
  cScanSignature* sig = myCurrent;
  const int current = sig->first_typed_str(rtIsUnicodeText) ? 2
                      : sig->first_typed_str(rtIsAsciiText) ? 1
                                                            : 3;
  const int choice =
      propExtend(kHitConditions, rContentType, {txAsciiText, txUnicodeText, txBinary}, current);
  if (choice < 1) return;
  // Text rules come in pairs (the block is text; the file ends where the text does): drop
  // those of the other kinds, then add the chosen pair where missing.
  const struct {
    eRuleType start;
    eEndRuleType end;
  } kPairs[] = {{rtIsAsciiText, etAsciiTextEnd}, {rtIsUnicodeText, etUnicodeTextEnd}};
  for (int i = 0; i < 2; ++i) {
    if (i + 1 == choice) continue;
    while (cScanSigRule* r = sig->first_typed_str(kPairs[i].start)) sig->remove(r);
    while (cScanSigEndRule* r = sig->first_typed_end(kPairs[i].end)) sig->remove(r);
  }
  if (choice == 1) {
    if (!sig->first_typed_str(rtIsAsciiText))
      sig->addStrRule(std::make_unique<cScanSigRuleIsStr>());
    if (!sig->first_typed_end(etAsciiTextEnd))
      sig->addEndRule(std::make_unique<cScanSigEndRuleIsStrEnd>());
  } else if (choice == 2) {
    if (!sig->first_typed_str(rtIsUnicodeText))
      sig->addStrRule(std::make_unique<cScanSigRuleIsUniStr>());
    if (!sig->first_typed_end(etUnicodeTextEnd))
      sig->addEndRule(std::make_unique<cScanSigEndRuleIsUniStrEnd>());
  }
  showContentType(sig);
  changed();
}

void cRuledMainForm::editStartRule(cScanSigRule* rule) {
  auto* hex = static_cast<cScanSigRuleUniHexMatch*>(rule);
  cDefSigRuleForm::sSigRuleDef def;
  def.pattern.set(hex->text());
  def.position = static_cast<unsigned>(hex->offset());
  def.blockSize = static_cast<unsigned>(hex->blockSize());
  const cDefSigRuleForm::sSigRuleDef old = def;
  if (!cDefSigRuleForm::defSigRule(this, def)) return;
  if (def.position == old.position && def.blockSize == old.blockSize &&
      std::strcmp(def.pattern.c_str(), old.pattern.c_str()) == 0)
    return;
  if (!hex->create(def.pattern.c_str(), def.blockSize, def.position)) return;
  for (const auto& [row, r] : myStrRows)
    if (r == rule) mySheet.setPropertyVal(kStartRules, row, describe(rule));
  changed();
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
    if (!cDefFiledForm::defField(this, def)) return;
    if (def.offset == old.offset && def.size == old.size && def.multiplier == old.multiplier &&
        def.addend == old.addend)
      return;
    const bool bigEndian = def.size >= cDefFiledForm::fsWordBE;
    const int code = bigEndian ? def.size - 3 : def.size;
    size->create(static_cast<unsigned>(def.offset), static_cast<unsigned char>(1u << code),
                 static_cast<unsigned>(def.addend), static_cast<unsigned>(def.multiplier),
                 bigEndian);
  } else {
    auto* hex = static_cast<cScanSigEndRuleUniHex*>(rule);
    cDefSigOffsetForm::sSigOffsetdDef def;
    def.pattern.set(hex->text());
    def.bytesAfter = hex->distance();
    const cDefSigOffsetForm::sSigOffsetdDef old = def;
    if (!cDefSigOffsetForm::defSigOffset(this, def)) return;
    if (def.bytesAfter == old.bytesAfter &&
        std::strcmp(def.pattern.c_str(), old.pattern.c_str()) == 0)
      return;
    if (!hex->create(def.pattern.c_str(), def.bytesAfter)) return;
  }
  mySheet.setPropertyVal(kEndRules, row, describe(rule));
  changed();
}

// --- rules added and removed ----------------------------------------------------------

void cRuledMainForm::newStr() {
  if (!myCurrent) return;
  cDefSigRuleForm::sSigRuleDef def;
  if (!cDefSigRuleForm::defSigRule(this, def)) return;
  auto rule = std::make_unique<cScanSigRuleUniHexMatch>();
  if (!rule->create(def.pattern.c_str(), def.blockSize, def.position)) return;
  myCurrent->addStrRule(std::move(rule));
  changed();
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
    // Codes 4..6 are the big-endian word, double and quad word, as when a rule is edited.
    const bool bigEndian = def.size >= cDefFiledForm::fsWordBE;
    const int code = bigEndian ? def.size - 3 : def.size;
    auto rule = std::make_unique<cScanSigEndRuleMatchSize>();
    rule->create(static_cast<unsigned>(def.offset), static_cast<unsigned char>(1u << code),
                 static_cast<unsigned>(def.addend), static_cast<unsigned>(def.multiplier),
                 bigEndian);
    myCurrent->addEndRule(std::move(rule));
  } else if (choice == 1) {
    cDefSigOffsetForm::sSigOffsetdDef def;
    if (!cDefSigOffsetForm::defSigOffset(this, def)) return;
    auto rule = std::make_unique<cScanSigEndRuleUniHex>();
    if (!rule->create(def.pattern.c_str(), def.bytesAfter)) return;
    myCurrent->addEndRule(std::move(rule));
  } else {
    return;
  }
  changed();
  activate(myCurrent);
}

void cRuledMainForm::rmRule() {
  if (!myCurrent || (!mySelStr && !mySelEnd)) return;
  if (!cMessageForm::warnconfirmbox(this, string(txDeleteQuestion), nullptr)) return;
  // Removing a rule leaves the saved flag as it was.
  if (mySelStr)
    myCurrent->remove(mySelStr);
  else
    myCurrent->remove(mySelEnd);
  activate(myCurrent);
}
