// What the editor's rule forms share: a modal form holding one property sheet (with a
// panel below it that describes the selected row), one unnamed section 1, and OK and
// Cancel at the bottom right. A form reads its rows on Enter or OK; a value it cannot
// take gets the focus (corrected first where a limit applies) and the form stays open.
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

protected:
  cRuleForm() = default;

  // Runs form modally over parent with the title text of its section; true for result 1.
  static bool run(cRuleForm& form, cChildElement* parent, int width, int height);

  // The texts of the buttons, by number in the form's section.
  virtual int okString() const = 0;
  virtual int cancelString() const = 0;
  // Fills the sheet's section from the record.
  virtual void fillRows() = 0;

  // A row's value as a number: the box's text read as decimal or 0x hex; an empty box
  // reads as all bits set.
  unsigned long long number(int row);
  // Whether a row's number is at most kMaxOffset; a larger one is replaced by it and the
  // row gets the focus.
  bool clamped(int row, unsigned long long& value);
  // Focuses a row and says false, for the accept steps.
  bool refuse(int row);
  // Whether the pattern in row compiles to a rule; if not, the row gets the focus and the
  // panel below says where and why.
  bool patternCompiles(int row);

private:
  cPropSheetExChild myProperties;
};
