// Text in the forms the pattern compiler needs, shared by the lexer and the compiler:
// UTF-8 to UTF-16 units, a case mapping over units, and units back to UTF-8.
#pragma once

#include <string>

#include "base/buffers.h"
#include "base/str.h"

namespace cihex {

using tCaseMap = unsigned short (*)(unsigned short);

inline unsigned short lowerUnit(unsigned short u) {
  return __acp_lower(u);
}
inline unsigned short upperUnit(unsigned short u) {
  return __acp_upper(u);
}

inline _typebuf<unsigned short> toUnits(const std::string& text) {
  _typebuf<unsigned short> units;
  _pc2w(text.c_str(), units, static_cast<long long>(text.size()));
  return units;
}

// The units with caseMap applied to each (unchanged for a null map).
inline _typebuf<unsigned short> mapped(_typebuf<unsigned short> units, tCaseMap caseMap) {
  if (caseMap) {
    for (unsigned short& u : units) u = caseMap(u);
  }
  return units;
}

inline _typebuf<char> toUtf8(const _typebuf<unsigned short>& units) {
  _typebuf<char> bytes;
  bytes.set(w2utf8_require(units.data(), units.count()));
  w2utf8(units.data(), units.count(), bytes.data(), bytes.count());
  return bytes;
}

} // namespace cihex
