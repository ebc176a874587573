#include "ruleform.h"

#include <algorithm>
#include <cstdio>

#include "cihex/search.h"
#include "ciom/langfile.h"
#include "ciom/theme.h"
#include "ciom/themeimages.h"

namespace {

constexpr int kMargin = 5;

// Texts of "ruled::sig" that explain a pattern the compiler refused.
constexpr int txNoCompile = 16, txAtCharacter = 17, txFirstFault = 18;
constexpr int txSyntax = 4;

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

unsigned long long cRuleForm::number(int row) {
  return static_cast<unsigned long long>(sheet().int_value(kSection, row));
}

bool cRuleForm::clamped(int row, unsigned long long& value) {
  value = number(row);
  if (value <= kMaxOffset) return true;
  value = kMaxOffset;
  sheet().setPropertyVal(kSection, row, value, false, 0);
  return refuse(row);
}

bool cRuleForm::refuse(int row) {
  sheet().focus(kSection, row);
  return false;
}

bool cRuleForm::patternCompiles(int row) {
  const char* text = sheet().value(kSection, row);
  sHexSearchRule::_pattern compiled;
  if (text && sHexSearchRule::cnvAdv(compiled, text) && compiled.count() > 0) return true;
  refuse(row);
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
  const char* title = string(txNoCompile);
  properties().display().setText(title ? title : "", body.c_str());
  return false;
}
