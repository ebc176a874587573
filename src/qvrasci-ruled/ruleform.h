// What the editor's rule forms share: a modal form holding one property sheet (with a
// panel below it that describes the selected row), one unnamed section 1, and OK and
// Cancel at the bottom right. A form reads its rows on Enter or OK; a value it cannot
// take gets the focus (corrected first where a limit applies), the panel says why, and the
// form stays open.
#pragma once

#include <string>

#include "ciom/customform.h"
#include "ciom/propssheetex.h"

class cRuleForm : public cCustomForm {
public:
  static constexpr int kSection = 1;
  static constexpr unsigned long long kMaxOffset = 0x400000; // positions and byte counts

  cPropSheetExChild& properties() { return myProperties; }
  cPropSheetChild& sheet() { return myProperties.sheet(); }

  void onConstruct() override;
  bool onAfterConstruct() override;
  bool onAction(cChildElement* source, cChildAction* action) override;

protected:
  cRuleForm() = default;

  // Runs form modally over parent with the title text of its section; true for result 1.
  static bool run(cRuleForm& form, cChildElement* parent, int width, int height);

  // The texts of the buttons, by number in the form's section.
  virtual int okString() const = 0;
  virtual int cancelString() const = 0;
  // Fills the sheet's section from the record.
  virtual void fillRows() = 0;

  // Whether a row holds a whole number (decimal or 0x hex) from lo to hi. Text that is not
  // one, or a number below lo, is refused; one above hi is replaced by hi and refused.
  bool numberIn(int row, unsigned long long lo, unsigned long long hi, unsigned long long& value);
  // Whether a row's number is at most kMaxOffset, as numberIn.
  bool clamped(int row, unsigned long long& value) { return numberIn(row, 0, kMaxOffset, value); }
  // Focuses a row and says false, for the accept steps.
  bool refuse(int row);
  // Refuses a row with the reason in the panel, where it stays when the focus moving to the
  // row would show the row's description instead.
  bool explain(int row, const char* title, const std::string& body);
  // Whether the pattern in row compiles to a rule; if not, the row gets the focus and the
  // panel below says where and why.
  bool patternCompiles(int row);

private:
  // A text of the section the rule forms share.
  const char* sharedText(int number);

  cPropSheetExChild myProperties;
  int myExplained = 0; // the row whose refusal the panel shows until it is selected
  std::string myReasonTitle, myReason;
};
