// The tokenizer of Advanced/HEX patterns. Both passes of the compiler read the text
// through it, so they see the same tokens; it validates each token completely, so the
// first pass fails exactly where the text is bad.
#pragma once

#include <string>

#include "base/buffers.h"
#include "search.h"

enum class eAdvToken {
  Space,        // a separator
  Case,         // `+` or `-`; the mode is carried by the text tokens that follow
  Byte,         // one or two nibbles
  NotByte,      // !hh!
  Alternatives, // { ... }, already evaluated into `set`
  Mask,         // [value/mask]
  AnyRun,       // *n*
  AsciiText,    // '...'
  Utf16Text,    // "..."
  Utf8Text,     // `...`
};

struct sAdvToken {
  eAdvToken kind = eAdvToken::Space;
  unsigned char hi = 0, lo = 0; // Byte: nibbles, a value above 15 is a wildcard
  unsigned char value = 0;      // NotByte
  sHexSearchRule::sByteDescr set{};
  long long positions = 0; // what the counting pass counts for this token
  _typebuf<unsigned char> maskValue, maskBits;
  std::string text;          // quoted text with escaped quotes unescaped
  long long rawLength = 0;   // bytes between the quotes, as written
  int escapes = 0;           // escaped quote characters in the text
  bool caseSensitive = true; // the case mode for a quoted text
};

class cAdvLexer {
public:
  explicit cAdvLexer(const char* text) : myPos(text) {}

  // The next token; false at the end of the text, or on bad text (then failed() is true).
  bool next(sAdvToken& token);
  bool failed() const { return myFailed; }
  // Where the last token read (or the one that failed) begins.
  const char* tokenStart() const { return myTokenStart; }

private:
  bool fail() {
    myFailed = true;
    return false;
  }
  bool lexByte(sAdvToken& t);
  bool lexNotByte(sAdvToken& t);
  bool lexAlternatives(sAdvToken& t);
  bool lexMask(sAdvToken& t);
  bool lexAnyRun(sAdvToken& t);
  bool lexText(sAdvToken& t, char quote);

  const char* myPos;
  const char* myTokenStart = myPos;
  bool myFailed = false;
  bool myCaseSensitive = true;
};

// Why cnvAdv refuses a text, as a phrase ("the pattern is empty", "bad text at column
// 4: ..."), or "" when it compiles.
std::string advTextProblem(const char* text);

// Adds to d the values of a byte written as two nibbles (above 15: a wildcard nibble).
void bbToRule(sHexSearchRule::sByteDescr& d, unsigned char hi, unsigned char lo);
