// The forms that ask for a number field in the file (for a subset found through a header
// field, and for a size end rule) and for one line of text.
#pragma once

#include "base/buffers.h"
#include "ciom/newfolder.h"
#include "ruleform.h"

class cDefFiledForm : public cRuleForm {
public:
  // Size codes of the field.
  enum eFieldSize {
    fsByte = 0,
    fsWord,
    fsDWord,
    fsQWord,
    fsWordBE,
    fsDWordBE,
    fsQWordBE,
    kFieldSizes
  };
  struct sFieldDef {
    unsigned long long offset = 0;
    unsigned long long multiplier = 1;
    unsigned long long addend = 0;
    unsigned char size = fsDWord;
  };
  enum eRow { rOffset = 1, rSize = 2, rMultiplier = 3, rAddend = 4 };
  static constexpr int kWidth = 450, kHeight = 250;
  static constexpr unsigned long long kMaxMultiplier = 0xFFFFFFFF;
  static constexpr unsigned long long kMaxAddend = 0xFFFFFFFF;

  // Asks over parent; on acceptance (true) def holds the new values. False at once for a
  // null parent; Cancel leaves def as it was.
  static bool defField(cChildElement* parent, sFieldDef& def);
  explicit cDefFiledForm(sFieldDef& def) : myDef(def) {}

  const char* wantLangResource() override { return "ruled::field"; }
  bool onFormAccept() override;

protected:
  int okString() const override { return 13; }
  int cancelString() const override { return 14; }
  void fillRows() override;

private:
  sFieldDef& myDef;
};

// One line of text: the folder name request with the editor's texts.
class cSetTextForm : public cNewFolderNameReqForm {
public:
  static constexpr int kWidth = 250, kHeight = 100;

  // Asks over parent with text prefilled; on acceptance (true) text holds the new line.
  static bool setText(cChildElement* parent, _guardchar<char>& text);

  const char* wantLangResource() override { return "ruled::txt"; }

protected:
  int titleString() const override { return 3; }
  int bannerString() const override { return 0; }
  const char* okText() override { return string(1); }
  const char* cancelText() override { return string(2); }
  const char* emptyText() override { return string(4); }
  sSize formSize() const override { return {kWidth, kHeight}; }
};
