#include "defsig.h"

#include <string>

namespace {

using P = cPropSheetChild;

// Texts of "ruled::sig".
enum eText {
  txSearchFor = 3,
  txSyntax = 4,
  txBytesAfter = 5,
  txBytesAfterHint = 6,
  txSearchType = 7,
  txScanBlock = 8,
  txBlockPosition = 9,
  txSubBlockPosition = 10,
  txSearchTypeHint = 11,
  txPosition = 12,
  txPositionHint = 13,
  txBlockSize = 14,
  txBlockSizeHint = 15
};

} // namespace

// --- the content rule ----------------------------------------------------------------------

cDefSigRuleForm::cDefSigRuleForm(sSigRuleDef& def) : myDef(def) {}

bool cDefSigRuleForm::defSigRule(cChildElement* parent, sSigRuleDef& def) {
  if (!parent) return false;
  cDefSigRuleForm form(def);
  return run(form, parent, kWidth, kHeight);
}

cDefSigRuleForm::eSearchType cDefSigRuleForm::searchTypeOf(const sSigRuleDef& def) {
  if (def.blockSize != 0) return stSubBlockPosition;
  return def.position == kWholeBlock ? stScanBlock : stBlockPosition;
}

void cDefSigRuleForm::fillRows() {
  P& s = sheet();
  s.setProperty(kSection, rPattern, string(txSearchFor), string(txSyntax), myDef.pattern.c_str(),
                P::ptEdit);
  s.setProperty(kSection, rSearchType, string(txSearchType), string(txSearchTypeHint), nullptr,
                P::ptList);
  const int type = searchTypeOf(myDef);
  for (int t = stScanBlock; t <= stSubBlockPosition; ++t)
    s.setPropertyVal(kSection, rSearchType, t, nullptr, string(txScanBlock + t - 1), t == type);
  placeRows(type);
}

void cDefSigRuleForm::placeRows(int searchType) {
  P& s = sheet();
  s.startChanges();
  if (searchType == stScanBlock) {
    s.remove(kSection, rPosition);
  } else if (!s.hasProp(kSection, rPosition)) {
    s.setProperty(kSection, rPosition, string(txPosition), string(txPositionHint), nullptr,
                  P::ptEdit);
    s.setPropertyVal(kSection, rPosition, myDef.position == kWholeBlock ? 0 : myDef.position, false,
                     0);
  }
  if (searchType != stSubBlockPosition) {
    s.remove(kSection, rBlockSize);
  } else if (!s.hasProp(kSection, rBlockSize)) {
    s.setProperty(kSection, rBlockSize, string(txBlockSize), string(txBlockSizeHint), nullptr,
                  P::ptEdit);
    s.setPropertyVal(kSection, rBlockSize, myDef.blockSize, false, 0);
  }
  s.endChanges();
}

bool cDefSigRuleForm::onFormAccept() {
  if (!patternCompiles(rPattern)) return true;
  const int type = sheet().value_id(kSection, rSearchType);
  unsigned long long position = kWholeBlock, blockSize = 0;
  switch (type) {
  case stScanBlock:
    break;
  case stBlockPosition:
    if (!clamped(rPosition, position)) return true;
    break;
  case stSubBlockPosition:
    if (!clamped(rPosition, position) || !numberIn(rBlockSize, 1, kMaxOffset, blockSize))
      return true;
    break;
  default:
    return refuse(rSearchType), true;
  }
  myDef.pattern.set(sheet().value(kSection, rPattern));
  myDef.position = static_cast<unsigned>(position);
  myDef.blockSize = static_cast<unsigned>(blockSize);
  end_modal(1);
  return true;
}

bool cDefSigRuleForm::onAction(cChildElement* source, cChildAction* action) {
  if (source == &sheet() && action && action->code == P::kChoice &&
      static_cast<P::cPropSheetAction*>(action)->prop == rSearchType) {
    placeRows(sheet().value_id(kSection, rSearchType));
    return true;
  }
  return cRuleForm::onAction(source, action);
}

// --- the pattern with a count after it -------------------------------------------------------

bool cDefSigOffsetForm::defSigOffset(cChildElement* parent, sSigOffsetdDef& def) {
  if (!parent) return false;
  cDefSigOffsetForm form(def);
  return run(form, parent, kWidth, kHeight);
}

void cDefSigOffsetForm::fillRows() {
  P& s = sheet();
  s.setProperty(kSection, rPattern, string(txSearchFor), string(txSyntax), myDef.pattern.c_str(),
                P::ptEdit);
  s.setProperty(kSection, rBytesAfter, string(txBytesAfter), string(txBytesAfterHint), nullptr,
                P::ptEdit);
  s.setPropertyVal(kSection, rBytesAfter, myDef.bytesAfter, false, 0);
}

bool cDefSigOffsetForm::onFormAccept() {
  unsigned long long bytesAfter = 0;
  if (!patternCompiles(rPattern) || !clamped(rBytesAfter, bytesAfter)) return true;
  myDef.pattern.set(sheet().value(kSection, rPattern));
  myDef.bytesAfter = static_cast<unsigned>(bytesAfter);
  end_modal(1);
  return true;
}
