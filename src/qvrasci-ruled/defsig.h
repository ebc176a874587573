// The two forms that ask for an Advanced/HEX pattern: a content rule (the pattern, and
// where in the block it is looked for) and a pattern with a count of bytes after it (for
// a subset found by a magic sequence, and for an end rule).
#pragma once

#include "base/buffers.h"
#include "ruleform.h"

class cDefSigRuleForm : public cRuleForm {
public:
  static constexpr unsigned kWholeBlock = 0xFFFFFFFF; // position: anywhere in the block
  struct sSigRuleDef {
    _guardchar<char> pattern;
    unsigned position = kWholeBlock;
    unsigned blockSize = 0; // 0: no sub-blocks
  };
  enum eRow { rPattern = 1, rSearchType = 2, rPosition = 3, rBlockSize = 4 };
  enum eSearchType { stScanBlock = 1, stBlockPosition = 2, stSubBlockPosition = 3 };
  static constexpr int kWidth = 450, kHeight = 300;

  // Asks over parent; on acceptance (true) def holds the new values. False at once for a
  // null parent; Cancel leaves def as it was.
  static bool defSigRule(cChildElement* parent, sSigRuleDef& def);
  explicit cDefSigRuleForm(sSigRuleDef& def);

  static eSearchType searchTypeOf(const sSigRuleDef& def);

  const char* wantLangResource() override { return "ruled::sig"; }
  bool onFormAccept() override;
  bool onAction(cChildElement* source, cChildAction* action) override;

protected:
  int okString() const override { return 1; }
  int cancelString() const override { return 2; }
  void fillRows() override;

private:
  // Rows 3 and 4 as the search type asks, keeping what they hold.
  void placeRows(int searchType);

  sSigRuleDef& myDef;
};

class cDefSigOffsetForm : public cRuleForm {
public:
  struct sSigOffsetdDef {
    _guardchar<char> pattern;
    unsigned bytesAfter = 0;
  };
  enum eRow { rPattern = 1, rBytesAfter = 2 };
  static constexpr int kWidth = 450, kHeight = 300;

  static bool defSigOffset(cChildElement* parent, sSigOffsetdDef& def);
  explicit cDefSigOffsetForm(sSigOffsetdDef& def) : myDef(def) {}

  const char* wantLangResource() override { return "ruled::sig"; }
  bool onFormAccept() override;

protected:
  int okString() const override { return 1; }
  int cancelString() const override { return 2; }
  void fillRows() override;

private:
  sSigOffsetdDef& myDef;
};
