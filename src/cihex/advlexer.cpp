#include "advlexer.h"

#include <cstring>

#include "base/str.h"
#include "textforms.h"

namespace {

constexpr unsigned char kWildcard = 255;
constexpr int kNoNibble = -1;

int nibble(char c) {
  if (c == '?') return kWildcard;
  const unsigned char v = sHexSearchRule::hchar(c);
  return v == 255 ? kNoNibble : v;
}

// Reads "!h!" or "!hh!" at p (p points at the first '!'); advances past the closing mark.
bool readBang(const char*& p, unsigned char& value) {
  const char* close = std::strchr(p + 1, '!');
  if (!close) return false;
  const long long digits = close - (p + 1);
  if (digits < 1 || digits > 2) return false;
  int v = 0;
  for (const char* d = p + 1; d < close; ++d) {
    const unsigned char h = sHexSearchRule::hchar(*d);
    if (h == 255) return false;
    v = v * 16 + h;
  }
  value = static_cast<unsigned char>(v);
  p = close + 1;
  return true;
}

// Reads the number of "*n*": decimal, or hexadecimal after "0x".
long long readCount(const char* s, long long n) {
  constexpr long long kBad = 1LL << 40;
  const bool hex = n > 2 && s[0] == '0' && s[1] == 'x';
  long long value = 0;
  for (long long i = hex ? 2 : 0; i < n; ++i) {
    const int d =
        hex ? sHexSearchRule::hchar(s[i]) : (s[i] >= '0' && s[i] <= '9' ? s[i] - '0' : 255);
    if (d == 255) return kBad;
    value = value * (hex ? 16 : 10) + d;
  }
  return value;
}

// The UTF-8 length of a text after caseMap (none when caseSensitive).
long long utf8Length(const std::string& text, bool caseSensitive, cihex::tCaseMap caseMap) {
  return cihex::toUtf8(cihex::mapped(cihex::toUnits(text), caseSensitive ? nullptr : caseMap))
      .count();
}

} // namespace

void bbToRule(sHexSearchRule::sByteDescr& d, unsigned char hi, unsigned char lo) {
  const bool anyHi = hi > 15, anyLo = lo > 15;
  for (int x = 0; x < 16; ++x) {
    for (int y = 0; y < 16; ++y) {
      if ((anyHi || x == hi) && (anyLo || y == lo)) d.add(static_cast<unsigned char>(x * 16 + y));
    }
  }
}

bool cAdvLexer::next(sAdvToken& t) {
  if (myFailed || !*myPos) return false;
  myTokenStart = myPos;
  const char c = *myPos;
  t.caseSensitive = myCaseSensitive;
  t.positions = 0;
  if (nibble(c) != kNoNibble) return lexByte(t);
  switch (c) {
  case ' ':
    t.kind = eAdvToken::Space;
    ++myPos;
    return true;
  case '+':
  case '-':
    myCaseSensitive = c == '+';
    t.kind = eAdvToken::Case;
    ++myPos;
    return true;
  case '!':
    return lexNotByte(t);
  case '{':
    return lexAlternatives(t);
  case '[':
    return lexMask(t);
  case '*':
    return lexAnyRun(t);
  case '\'':
  case '"':
  case '`':
    return lexText(t, c);
  default:
    return fail();
  }
}

bool cAdvLexer::lexByte(sAdvToken& t) {
  t.kind = eAdvToken::Byte;
  t.positions = 1;
  const int first = nibble(*myPos++);
  const int second = nibble(*myPos);
  if (second == kNoNibble) { // a lone nibble is a byte with high nibble 0
    t.hi = 0;
    t.lo = static_cast<unsigned char>(first);
  } else {
    t.hi = static_cast<unsigned char>(first);
    t.lo = static_cast<unsigned char>(second);
    ++myPos;
  }
  return true;
}

bool cAdvLexer::lexNotByte(sAdvToken& t) {
  t.kind = eAdvToken::NotByte;
  t.positions = 1;
  return readBang(myPos, t.value) || fail();
}

// Items are applied in order: nibbles add their values, !hh! removes one value.
bool cAdvLexer::lexAlternatives(sAdvToken& t) {
  t.kind = eAdvToken::Alternatives;
  t.positions = 1;
  t.set = {};
  const char* p = myPos + 1;
  int digits = 0;
  unsigned char nibbles[2] = {0, 0};
  bool closed = false;  // a space or !hh! ended the item; only a comma may follow
  bool content = false; // the current item has something in it
  auto finishItem = [&] {
    if (digits == 1) bbToRule(t.set, 0, nibbles[0]);
    if (digits == 2) bbToRule(t.set, nibbles[0], nibbles[1]);
    digits = 0;
    closed = content = false;
  };
  for (;; ++p) {
    const char c = *p;
    if (c == '}') break;
    if (c == ' ') {
      closed = closed || digits > 0;
    } else if (c == ',') {
      if (!content) return fail(); // a leading comma, or two in a row
      finishItem();
    } else if (nibble(c) != kNoNibble) {
      if (closed || digits == 2) return fail();
      nibbles[digits++] = static_cast<unsigned char>(nibble(c));
      content = true;
    } else if (c == '!') {
      unsigned char value = 0;
      if (digits > 0 || closed || !readBang(p, value)) return fail();
      t.set.remove(value);
      --p; // the loop steps past the closing mark
      closed = content = true;
    } else {
      return fail(); // any other character, the end of the text included
    }
  }
  finishItem();
  myPos = p + 1;
  return true;
}

bool cAdvLexer::lexMask(sAdvToken& t) {
  t.kind = eAdvToken::Mask;
  const char* close = std::strchr(myPos, ']');
  if (!close) return fail();
  const char* slash = static_cast<const char*>(std::memchr(myPos, '/', close - myPos));
  if (!slash) return fail();
  const char* value = myPos + 1;
  if (!sHexSearchRule::cnvHexToBytes(t.maskValue, value, slash - value) ||
      !sHexSearchRule::cnvHexToBytes(t.maskBits, slash + 1, close - (slash + 1)))
    return fail();
  const long long n = t.maskValue.count();
  if (n == 0 || n != t.maskBits.count()) return fail();
  for (long long i = 0; i < n; ++i) {
    if (t.maskValue[i] & ~t.maskBits[i]) return fail(); // no byte could match
  }
  t.positions = n;
  myPos = close + 1;
  return true;
}

bool cAdvLexer::lexAnyRun(sAdvToken& t) {
  t.kind = eAdvToken::AnyRun;
  const char* close = std::strchr(myPos + 1, '*');
  if (!close) return fail();
  const long long n = close - (myPos + 1);
  if (n < 1 || n > 5) return fail();
  t.positions = readCount(myPos + 1, n);
  if (t.positions < 1 || t.positions > 4096) return fail();
  myPos = close + 1;
  return true;
}

// The text ends at the next quote character not preceded by a backslash; a backslash
// right before a quote character is dropped, every other backslash is text.
bool cAdvLexer::lexText(sAdvToken& t, char quote) {
  t.kind = quote == '\''  ? eAdvToken::AsciiText
           : quote == '"' ? eAdvToken::Utf16Text
                          : eAdvToken::Utf8Text;
  const char* start = myPos + 1;
  const char* p = start;
  const char* copied = start; // text before this point is already in t.text
  t.text.clear();
  t.escapes = 0;
  for (;; ++p) {
    if (!*p) return fail();
    if (*p != quote) continue;
    if (p[-1] != '\\') break;
    t.text.append(copied, p - 1); // drop the backslash; the quote goes with the next piece
    copied = p;
    ++t.escapes;
  }
  t.text.append(copied, p);
  t.rawLength = p - start;
  if (t.rawLength == 0) return fail();
  if (t.kind == eAdvToken::AsciiText) {
    for (const char* q = start; q < p; ++q) {
      if (static_cast<unsigned char>(*q) > 0x80) return fail();
    }
  }
  const long long unescaped = t.rawLength - t.escapes;
  if (t.kind == eAdvToken::AsciiText) t.positions = unescaped;
  // Two positions per byte written, although text outside ASCII fills fewer.
  if (t.kind == eAdvToken::Utf16Text) t.positions = 2 * unescaped;
  if (t.kind == eAdvToken::Utf8Text) {
    if (!t.caseSensitive &&
        utf8Length(t.text, false, cihex::lowerUnit) != utf8Length(t.text, false, cihex::upperUnit))
      return fail();
    // Counted with the escaping backslashes, which the filling pass drops: such a
    // pattern ends in one empty position per escaped backtick.
    t.positions = utf8Length(std::string(start, p), t.caseSensitive, cihex::lowerUnit);
  }
  myPos = p + 1;
  return true;
}

std::string advTextProblem(const char* text) {
  if (!text || !*text) return "the pattern is empty";
  cAdvLexer lexer(text);
  sAdvToken token;
  long long total = 0;
  while (lexer.next(token)) total += token.positions;
  if (lexer.failed()) {
    const char* at = lexer.tokenStart();
    const std::string shown(at, strnlen(at, 16));
    return "bad pattern text at column " + std::to_string(at - text + 1) + ": " + shown;
  }
  if (total == 0) return "the pattern holds no bytes, only separators and case marks";
  if (total > sHexSearchRule::kMaxPositions)
    return "the pattern is longer than " + std::to_string(sHexSearchRule::kMaxPositions) + " bytes";
  sHexSearchRule::_pattern pattern;
  return sHexSearchRule::cnvAdv(pattern, text) ? "" : "the pattern does not compile";
}
