// The compilers of the pattern language and the small hex functions.
#include "search.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "advlexer.h"
#include "base/str.h"
#include "textforms.h"

using sByteDescr = sHexSearchRule::sByteDescr;
using namespace cihex;

namespace {

// Writes the positions of one token from `at`; never more than `room`.
class cFiller {
public:
  cFiller(sByteDescr* at, long long room) : myAt(at), myRoom(room) {}
  sByteDescr* next() { return myUsed < myRoom ? &myAt[myUsed++] : &mySpill; }
  long long used() const { return myUsed; }

private:
  sByteDescr* myAt;
  long long myRoom;
  long long myUsed = 0;
  sByteDescr mySpill{}; // absorbs writes past the room the counting pass gave
};

void fillAscii(const sAdvToken& t, cFiller& f) {
  for (char c : t.text) {
    sByteDescr* d = f.next();
    d->add(static_cast<unsigned char>(c));
    if (!t.caseSensitive) {
      d->add(static_cast<unsigned char>(__acp_lower(c)));
      d->add(static_cast<unsigned char>(__acp_upper(c)));
    }
  }
}

// A UTF-16 unit fills two positions, low byte first; insensitive, each position also
// allows the matching byte of the lower- and upper-case forms, judged independently.
void addUnit(sByteDescr& low, sByteDescr& high, unsigned short u, bool caseSensitive) {
  const unsigned short forms[3] = {u, __acp_lower(u), __acp_upper(u)};
  for (int k = 0; k < (caseSensitive ? 1 : 3); ++k) {
    low.add(static_cast<unsigned char>(forms[k] & 0xFF));
    high.add(static_cast<unsigned char>(forms[k] >> 8));
  }
}

void fillUtf16(const sAdvToken& t, cFiller& f) {
  for (unsigned short u : toUnits(t.text)) {
    sByteDescr* low = f.next();
    addUnit(*low, *f.next(), u, t.caseSensitive);
  }
}

void fillUtf8(const sAdvToken& t, cFiller& f) {
  const _typebuf<unsigned short> units = toUnits(t.text);
  if (t.caseSensitive) {
    for (char c : toUtf8(units)) f.next()->add(static_cast<unsigned char>(c));
    return;
  }
  const _typebuf<char> lower = toUtf8(mapped(units, lowerUnit)),
                       upper = toUtf8(mapped(units, upperUnit));
  for (long long i = 0; i < lower.count() && i < upper.count(); ++i) {
    sByteDescr* d = f.next();
    d->add(static_cast<unsigned char>(lower[i]));
    d->add(static_cast<unsigned char>(upper[i]));
  }
}

void fillMask(const sAdvToken& t, cFiller& f) {
  for (long long i = 0; i < t.maskValue.count(); ++i) {
    sByteDescr* d = f.next();
    for (int x = 0; x < 256; ++x) {
      if ((x & t.maskBits[i]) == t.maskValue[i]) d->add(static_cast<unsigned char>(x));
    }
  }
}

void fill(const sAdvToken& t, cFiller& f) {
  switch (t.kind) {
  case eAdvToken::Space:
  case eAdvToken::Case:
    return;
  case eAdvToken::Byte:
    return bbToRule(*f.next(), t.hi, t.lo);
  case eAdvToken::NotByte: {
    sByteDescr* d = f.next();
    d->addAll();
    return d->remove(t.value);
  }
  case eAdvToken::Alternatives:
    *f.next() = t.set;
    return;
  case eAdvToken::Mask:
    return fillMask(t, f);
  case eAdvToken::AnyRun:
    for (long long i = 0; i < t.positions; ++i) f.next()->addAll();
    return;
  case eAdvToken::AsciiText:
    return fillAscii(t, f);
  case eAdvToken::Utf16Text:
    return fillUtf16(t, f);
  case eAdvToken::Utf8Text:
    return fillUtf8(t, f);
  }
}

template <class T>
bool readHexDigits(_typebuf<unsigned char>& out, const T* text, long long length) {
  if (!text || length == 0) return false;
  long long n = length;
  if (n < 0) {
    n = 0;
    while (text[n]) ++n;
  }
  out.set(n / 2 + 1); // every byte takes at least one digit plus a separator or a pair
  long long produced = 0;
  int pending = -1; // a lone high digit waiting for its partner
  for (long long i = 0; i < n; ++i) {
    const unsigned short c = static_cast<unsigned short>(text[i]);
    const unsigned char v = c < 0x80 ? sHexSearchRule::hchar(static_cast<char>(c)) : 255;
    if (v != 255) {
      if (pending < 0) {
        pending = v;
      } else {
        out[produced++] = static_cast<unsigned char>(pending * 16 + v);
        pending = -1;
      }
    } else if (__acp_isspace(c)) {
      if (pending >= 0) out[produced++] = static_cast<unsigned char>(pending);
      pending = -1;
    } else {
      return false;
    }
  }
  if (pending >= 0) out[produced++] = static_cast<unsigned char>(pending);
  out.reset(produced);
  return true;
}

bool exactBytes(sHexSearchRule::_pattern& out, const _typebuf<unsigned char>& bytes) {
  if (bytes.empty() || bytes.count() > sHexSearchRule::kMaxPositions) return false;
  out.set(bytes.count());
  for (long long i = 0; i < bytes.count(); ++i) out[i].add(bytes[i]);
  return true;
}

// The bytes of units in cp, cut or zero-padded to `length`.
_typebuf<unsigned char> encodeTo(const _typebuf<unsigned short>& units, int cp, long long length) {
  _typebuf<unsigned char> bytes(length);
  __w2a(units.data(), units.count(), reinterpret_cast<char*>(bytes.data()), length, cp);
  return bytes;
}

} // namespace

int sHexSearchRule::sByteDescr::count() const {
  int n = 0;
  for (uint32_t w : bits) n += std::popcount(w);
  return n;
}

bool sHexSearchRule::cnvAdv(_pattern& out, const char* text) {
  long long total = 0, at = 0;
  if (countingPass(text, total, at) != afNone) return false;
  out.set(total);
  sAdvToken token;
  cAdvLexer lexer(text);
  long long index = 0;
  while (lexer.next(token)) {
    cFiller filler(out.data() + index, total - index);
    fill(token, filler);
    index += filler.used();
  }
  return !lexer.failed();
}

sHexSearchRule::eAdvFault sHexSearchRule::advFault(const char* text, long long& at) {
  long long total = 0;
  return countingPass(text, total, at);
}

// The compiler's first pass: every token checked and its positions counted into total.
// An empty pattern (only separators and case switches) is a fault too.
sHexSearchRule::eAdvFault sHexSearchRule::countingPass(const char* text, long long& total,
                                                       long long& at) {
  at = total = 0;
  if (!text || !*text) return afEmpty;
  sAdvToken token;
  cAdvLexer lexer(text);
  while (lexer.next(token)) {
    total += token.positions;
    if (total > kMaxPositions) {
      at = lexer.tokenStart() - text;
      return afTooLong;
    }
  }
  if (!lexer.failed()) {
    at = static_cast<long long>(std::strlen(text));
    return total == 0 ? afEmpty : afNone;
  }
  at = lexer.tokenStart() - text;
  switch (text[at]) {
  case '!':
    return afNotByte;
  case '{':
    return afAlternatives;
  case '[':
    return afMask;
  case '*':
    return afAnyRun;
  case '\'':
  case '"':
  case '`':
    return afText;
  default:
    return afNotHex;
  }
}

bool sHexSearchRule::cnvHex(_pattern& out, const char* text) {
  _typebuf<unsigned char> bytes;
  return cnvHexToBytes(bytes, text, -1) && exactBytes(out, bytes);
}

bool sHexSearchRule::cnvHex(_pattern& out, const unsigned short* text) {
  _typebuf<unsigned char> bytes;
  return cnvHexToBytes(bytes, text, -1) && exactBytes(out, bytes);
}

bool sHexSearchRule::cnvText(_pattern& out, const char* text, int encoding, bool caseSensitive) {
  if (!text || encoding < 0 || encoding > __text_encoding_count()) return false;
  _typebuf<unsigned short> units;
  _pc2w(text, units);
  if (units.empty()) return false;
  if (encoding == 0) { // UTF-16 little-endian
    if (2 * units.count() > kMaxPositions) return false;
    out.set(2 * units.count());
    for (long long i = 0; i < units.count(); ++i) {
      addUnit(out[2 * i], out[2 * i + 1], units[i], caseSensitive);
    }
    return true;
  }
  const int cp = __text_encoding_cp(encoding);
  _typebuf<unsigned char> bytes;
  if (!_w2enc(units.data(), units.count(), cp, bytes)) return false;
  if (caseSensitive) return exactBytes(out, bytes);
  if (bytes.count() > kMaxPositions) return false;
  const auto lower = encodeTo(mapped(units, lowerUnit), cp, bytes.count());
  const auto upper = encodeTo(mapped(units, upperUnit), cp, bytes.count());
  out.set(bytes.count());
  for (long long i = 0; i < bytes.count(); ++i) {
    out[i].add(lower[i]);
    out[i].add(upper[i]);
  }
  return true;
}

bool sHexSearchRule::cnvHexToBytes(_typebuf<unsigned char>& out, const char* text,
                                   long long length) {
  return readHexDigits(out, text, length);
}

bool sHexSearchRule::cnvHexToBytes(_typebuf<unsigned char>& out, const unsigned short* text,
                                   long long length) {
  return readHexDigits(out, text, length);
}

bool sHexSearchRule::isHex(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
}

unsigned char sHexSearchRule::hchar(char c) {
  const char l = __acp_lower(c);
  if (l >= '0' && l <= '9') return static_cast<unsigned char>(l - '0');
  if (l >= 'a' && l <= 'f') return static_cast<unsigned char>(l - 'a' + 10);
  return 255;
}

bool sHexSearchRule::good(const _pattern& pattern) {
  const long long n = pattern.count();
  if (n == 0) return false;
  long long emptyRun = 0; // empty positions ending at the current one
  for (long long i = 0; i < n; ++i) {
    emptyRun = pattern[i].empty() ? emptyRun + 1 : 0;
    if (emptyRun == 8) return false;
  }
  // A run cut by the end of the pattern counts as well: the last positions are empty.
  return emptyRun == 0;
}

long long sHexSearchRule::find(const _pattern& pattern, const unsigned char* data, long long size,
                               long long from) {
  const long long n = pattern.count();
  if (n == 0 || !data || from < 0) return -1;
  const sByteDescr* p = pattern.data();
  for (long long at = from; at + n <= size; ++at) {
    if (p[0].has(data[at]) && matchAt(p + 1, n - 1, data + at + 1)) return at;
  }
  return -1;
}
