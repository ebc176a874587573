#include "deffield.h"

namespace {

using P = cPropSheetChild;

// Texts of "ruled::field".
enum eText {
  txOffset = 1,
  txOffsetHint = 2,
  txSize = 3,
  txSizeHint = 4,
  txByte = 5,
  txMultiplier = 9,
  txMultiplierHint = 10,
  txAddend = 11,
  txAddendHint = 12,
  txWordBE = 15
};

// The text of a size code: bytes to quad-words little-endian, then the big-endian ones.
int sizeText(int code) {
  return code <= cDefFiledForm::fsQWord ? txByte + code : txWordBE + code - cDefFiledForm::fsWordBE;
}

} // namespace

bool cDefFiledForm::defField(cChildElement* parent, sFieldDef& def) {
  if (!parent) return false;
  cDefFiledForm form(def);
  return run(form, parent, kWidth, kHeight);
}

void cDefFiledForm::fillRows() {
  P& s = sheet();
  s.setProperty(kSection, rOffset, string(txOffset), string(txOffsetHint), nullptr, P::ptEdit);
  s.setPropertyVal(kSection, rOffset, myDef.offset, false, 0);
  s.setProperty(kSection, rSize, string(txSize), string(txSizeHint), nullptr, P::ptList);
  for (int code = fsByte; code < kFieldSizes; ++code)
    s.setPropertyVal(kSection, rSize, code, nullptr, string(sizeText(code)), code == myDef.size);
  s.setProperty(kSection, rMultiplier, string(txMultiplier), string(txMultiplierHint), nullptr,
                P::ptEdit);
  s.setPropertyVal(kSection, rMultiplier, myDef.multiplier, false, 0);
  s.setProperty(kSection, rAddend, string(txAddend), string(txAddendHint), nullptr, P::ptEdit);
  s.setPropertyVal(kSection, rAddend, myDef.addend, false, 0);
}

bool cDefFiledForm::onFormAccept() {
  unsigned long long offset = 0;
  if (!clamped(rOffset, offset)) return true;
  const int size = sheet().value_id(kSection, rSize);
  if (size < 0 || size >= kFieldSizes) return refuse(rSize), true;
  unsigned long long multiplier = 1, addend = 0;
  if (!numberIn(rMultiplier, 1, kMaxMultiplier, multiplier) ||
      !numberIn(rAddend, 0, kMaxAddend, addend))
    return true;
  myDef.offset = offset;
  myDef.size = static_cast<unsigned char>(size);
  myDef.multiplier = multiplier;
  myDef.addend = addend;
  end_modal(1);
  return true;
}

bool cSetTextForm::setText(cChildElement* parent, _guardchar<char>& text) {
  cSetTextForm form;
  return reqNewFolderName(parent, text, &form);
}
