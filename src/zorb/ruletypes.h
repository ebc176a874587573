// The kinds of rules and subsets, by the codes that their typeOf() answers and that the
// rules file stores as record tags, and the results of loading a rules file.
#pragma once

// Content (start) rules. A loaded tree holds only the text checks and Advanced/HEX rules:
// the other kinds are read back as Advanced/HEX patterns.
enum eRuleType {
  rtExactBytes = 1,
  rtAsciiString = 2,
  rtUnicodeString = 3,
  rtIsAsciiText = 4,
  rtIsUnicodeText = 5,
  rtMaskedValue = 6,
  rtAdvHex = 7,
};

// End rules. A loaded tree holds only size fields, text ends and Advanced/HEX rules.
enum eEndRuleType {
  etSizeField = 1,
  etAsciiString = 2,
  etUnicodeString = 3,
  etAsciiTextEnd = 4,
  etUnicodeTextEnd = 5,
  etByteSequence = 6,
  etAdvHex = 7,
};

// Subsets; none is 0 in a node's flags.
enum eSubsetType {
  stNone = 0,
  stField = 1,
  stMagic = 2,
};

// The results of cCustomSignaturesTree::load (save answers lrOk or lrIo).
enum eLoadResult {
  lrOk = 0,
  lrIo = 1,    // a read failed, or the file is too short
  lrMagic = 2, // not a rules file
  lrValue = 3, // a value too long, or a rule that cannot be built
  lrType = 4,  // an unknown rule type
};

// The result as a phrase: "ok", "read failure or file too short", "unknown magic: not a
// rules file", "a value too long or a rule that cannot be built", "unknown rule type".
const char* loadResultText(int result);
