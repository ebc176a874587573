#include "ruleform.h"

#include <algorithm>
#include <cstdio>

#include "base/hex.h"
#include "cihex/search.h"
#include "ciom/langfile.h"
#include "ciom/theme.h"
#include "ciom/themeimages.h"
#include "ui.h"

namespace {

constexpr int kMargin = 5;

// Texts of "ruled::sig" that explain a pattern the compiler refused.
constexpr int txNoCompile = 16, txAtCharacter = 17, txFirstFault = 18;
constexpr int txSyntax = 4;

// Texts of "ruled::rule", which the rule forms share.
constexpr int txNotNumber = 0, txNotNumberWhy = 1, txOutOfRange = 2, txOutOfRangeWhy = 3;

// A whole number in decimal or 0x hex, blanks around it allowed; a number too large for
// 64 bits reads as the largest.
bool parseNumber(const char* text, unsigned long long& value) {
  std::string_view s = text ? text : "";
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return readWholeNumber(s, value);
}

// The number, from 1, of the character (not byte) at offset `at` of a UTF-8 text.
long long characterNumber(const char* text, long long at) {
  long long n = 1;
  for (long long i = 0; i < at && text[i]; ++i)
    if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) ++n;
  return n;
}

} // namespace

bool cRuleForm::run(cRuleForm& form, cChildElement* parent, int width, int height) {
  if (!parent) return false;
  // The form is not in the tree yet: its title comes from its section through the parent.
  const cCiomLangData* section = parent->requestNamedLangResource(form.wantLangResource());
  const char* title = section ? section->string(0) : nullptr;
  return form.modal(title ? title : "", width, height, parent, false) == 1;
}

void cRuleForm::onConstruct() {
  cCustomForm::onConstruct();
  clientArea()->anchor(&myProperties, kMargin, kMargin, -2 * kMargin, -2 * kMargin);
  sheet().showSections(false);
  sheet().setSection(kSection, "");

  addDialogButtons(string(okString()), string(cancelString()), true);

  sheet().startChanges();
  fillRows();
  sheet().endChanges();
}

bool cRuleForm::onAfterConstruct() {
  sheet().focus(kSection, 1);
  return true;
}

const char* cRuleForm::sharedText(int number) {
  const cCiomLangData* section = requestNamedLangResource("ruled::rule");
  const char* text = section ? section->string(number) : nullptr;
  return text ? text : "";
}

bool cRuleForm::numberIn(int row, unsigned long long lo, unsigned long long hi,
                         unsigned long long& value) {
  const char* text = sheet().value(kSection, row);
  const std::string typed = text ? text : "";
  const std::string range[] = {std::to_string(lo), std::to_string(hi)};
  if (!parseNumber(text, value))
    return explain(row, sharedText(txNotNumber),
                   cRuledMainForm::format(sharedText(txNotNumberWhy), {typed, range[0], range[1]}));
  if (value >= lo && value <= hi) return true;
  if (value > hi) {
    value = hi; // corrected where the limit is: OK again takes it
    sheet().setPropertyVal(kSection, row, value, false, 0);
  }
  return explain(row, sharedText(txOutOfRange),
                 cRuledMainForm::format(sharedText(txOutOfRangeWhy), {typed, range[0], range[1]}));
}

bool cRuleForm::refuse(int row) {
  sheet().focus(kSection, row);
  return false;
}

bool cRuleForm::explain(int row, const char* title, const std::string& body) {
  myExplained = row;
  myReasonTitle = title ? title : "";
  myReason = body;
  properties().display().setText(myReasonTitle.c_str(), myReason.c_str());
  return refuse(row);
}

bool cRuleForm::onAction(cChildElement* source, cChildAction* action) {
  // The panel has just shown the selected row's description; a refusal of that row that
  // moved the focus there is shown instead.
  if (source == &sheet() && action && action->code == cPropSheetChild::kSelected && myExplained) {
    const int row = static_cast<cPropSheetChild::cPropSheetAction*>(action)->prop;
    if (row == myExplained) properties().display().setText(myReasonTitle.c_str(), myReason.c_str());
    myExplained = 0;
  }
  return cCustomForm::onAction(source, action);
}

bool cRuleForm::patternCompiles(int row) {
  const char* text = sheet().value(kSection, row);
  sHexSearchRule::_pattern compiled;
  if (text && sHexSearchRule::cnvAdv(compiled, text) && compiled.count() > 0) return true;
  // Where and why, then the syntax, in the panel under the sheet.
  long long at = 0;
  const int fault = sHexSearchRule::advFault(text, at);
  const long long character = characterNumber(text ? text : "", at);
  // The caret stands where the pattern goes wrong.
  if (auto* box = dynamic_cast<cEditChild*>(sheet().editControl(kSection, row)))
    box->setCaret(character - 1);
  const char* format = string(txAtCharacter);
  const char* reason = string(txFirstFault + std::max(0, fault - 1));
  char where[64] = "";
  if (format) std::snprintf(where, sizeof where, format, character);
  std::string body = std::string(where) + (reason ? reason : "");
  if (const char* syntax = string(txSyntax)) body += std::string("\n\n") + syntax;
  return explain(row, string(txNoCompile), body);
}
