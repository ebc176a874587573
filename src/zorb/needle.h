// The strings that content and end rules search for.
//
// cAsciiNeedle: 8-bit text, folded to lower case (ASCII letters only) when insensitive;
// a data byte matches when it folds to the stored byte. It is searched as a compiled
// pattern, so the search can skip by its most selective byte.
// cUnicodeNeedle: 16-bit text, folded with the 16-bit lower-case mapping when
// insensitive; compared unit by unit at every byte position.
#pragma once

#include "base/buffers.h"
#include "cihex/search.h"
#include "patscan.h"

class cAsciiNeedle {
public:
  void set(const char* s, long long n, bool caseSensitive);
  // The first start p < size - length at which the text is found, or -1.
  long long find(const unsigned char* data, unsigned int size) const;

  const char* text() const { return myText.data() ? myText.data() : ""; }
  const unsigned char* bytes() const { return reinterpret_cast<const unsigned char*>(text()); }
  long long length() const { return myText.count() > 0 ? myText.count() - 1 : 0; }
  bool caseSensitive() const { return myCaseSensitive; }

private:
  _typebuf<char> myText; // the text and a terminator: count = length + 1
  bool myCaseSensitive = true;
  cPatternSearch mySearch;
};

class cUnicodeNeedle {
public:
  void set(const unsigned short* s, bool caseSensitive);
  // The first byte position p < size - 2 * length - 1 at which the text is found, or -1.
  long long find(const unsigned char* data, unsigned int size) const;

  const unsigned short* text() const;
  long long length() const { return myText.count() > 0 ? myText.count() - 1 : 0; }
  bool caseSensitive() const { return myCaseSensitive; }

private:
  _typebuf<unsigned short> myText; // count = length + 1
  bool myCaseSensitive = true;
};
