#include "needle.h"

#include "base/str.h"
#include "textbytes.h"

void cAsciiNeedle::set(const char* s, long long n, bool caseSensitive) {
  myCaseSensitive = caseSensitive;
  myText.set(n + 1);
  for (long long i = 0; i < n; ++i) myText[i] = caseSensitive ? s[i] : __acp_lower(s[i]);
  // Each position allows exactly the data bytes that compare equal to the stored byte.
  sHexSearchRule::_pattern pattern(n);
  for (long long i = 0; i < n; ++i) {
    for (int b = 0; b < 256; ++b) {
      const char c = static_cast<char>(b);
      if ((caseSensitive ? c : __acp_lower(c)) == myText[i]) {
        pattern[i].add(static_cast<unsigned char>(b));
      }
    }
  }
  mySearch.assign(std::move(pattern));
}

long long cAsciiNeedle::find(const unsigned char* data, unsigned int size) const {
  const long long starts = static_cast<long long>(size) - length();
  if (starts <= 0) return -1;
  return mySearch.find(data, 0, starts);
}

void cUnicodeNeedle::set(const unsigned short* s, bool caseSensitive) {
  myCaseSensitive = caseSensitive;
  const long long n = _wcslen(s);
  myText.set(n + 1);
  for (long long i = 0; i < n; ++i) myText[i] = caseSensitive ? s[i] : __acp_lower(s[i]);
}

const unsigned short* cUnicodeNeedle::text() const {
  static const unsigned short none[1] = {0};
  return myText.data() ? myText.data() : none;
}

long long cUnicodeNeedle::find(const unsigned char* data, unsigned int size) const {
  const long long n = length();
  const long long starts = static_cast<long long>(size) - 2 * n - 1;
  const unsigned short* t = text();
  for (long long p = 0; p < starts; ++p) {
    long long k = 0;
    if (myCaseSensitive) {
      while (k < n && zorb::unitAt(data + p + 2 * k) == t[k]) ++k;
    } else {
      while (k < n && __acp_lower(zorb::unitAt(data + p + 2 * k)) == t[k]) ++k;
    }
    if (k == n) return p;
  }
  return -1;
}
