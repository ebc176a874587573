#include "typeahead.h"

#include <cstring>

#include "base/buffers.h"
#include "base/str.h"

bool cTypeAhead::add(unsigned short ch, unsigned now) {
  if (now - myTypedAt > kPauseMs) myTyped.clear();
  myTypedAt = now;
  const unsigned short lower = __acp_lower(ch);
  // The same letter again steps to the next item that starts with it.
  if (myTyped.size() == 1 && myTyped[0] == lower) return false;
  myTyped.push_back(lower);
  return myTyped.size() > 1;
}

bool cTypeAhead::matches(const char* utf8) const {
  if (!utf8 || myTyped.empty()) return false;
  _typebuf<unsigned short> text;
  utf8ToUnits(utf8, static_cast<long long>(std::strlen(utf8)), text);
  if (text.count() < static_cast<long long>(myTyped.size())) return false;
  for (size_t k = 0; k < myTyped.size(); ++k) {
    if (__acp_lower(text[static_cast<long long>(k)]) != myTyped[k]) return false;
  }
  return true;
}
