// Language resources and their files.
//
// A language resource is a set of named sections, each an array of UTF-8 strings
// addressed by number. It travels in a "CIOMLAFI" image: magic, library id (8 ASCII
// characters, space-padded), language code (3 letters), display name (u8 length and
// UTF-8), then u32 U and a zlib stream that inflates to U bytes of "CIOMLANG" data:
// sections back to back, each u32 N, the name zero-padded to N (a multiple of 4), u32 D,
// and D bytes of section data (u16 n, n u16 lengths, the strings' bytes). The same image
// is built into the program and stored in "*.laci" files. Readers take any bytes and
// answer false for what they cannot use; merges done before a failure stay.
#pragma once

#include "base/btree.h"
#include "base/buffers.h"
#include "base/str.h"

constexpr unsigned int kCiomLangMaxSize = 0x400000; // largest set or file accepted

class cCiomLangData {
public:
  bool create(const void* data, int size); // replaces all strings
  bool create(cFasterTreeList<unsigned short, _guardchar<char>>& strings);
  // Fails on an empty section; a null entry is written with length 65535, which create()
  // cannot read back, so sections with holes must not be saved.
  bool raw(_typebuf<unsigned char>& out) const;
  const char* string(long long n) const; // null when missing
  long long count() const { return myStrings.count(); }
  void destroy() { myStrings.clear(); }

private:
  _classbuf<_guardchar<char>> myStrings;
};

using tCiomSections = cFasterTreeList<cStringKey, cCiomLangData>;

class cCiomLang {
public:
  // Loads data (a size field and zlib stream) into the existing sections, then sets code
  // and name.
  bool create(const char* code, const unsigned short* name, const void* data, int size);
  // Empties the sections and sets code and name.
  bool create(const char* code, const unsigned short* name);

  tCiomSections& sections() { return mySections; }
  const tCiomSections& sections() const { return mySections; }
  const cCiomLangData* section(const char* name) const;
  const char* code() const { return myCode; }
  const unsigned short* name() const { return myName.c_str(); }

private:
  void setIdentity(const char* code, const unsigned short* name);

  tCiomSections mySections;
  char myCode[4] = {0, 0, 0, 0};
  _guardchar<unsigned short> myName;
};

struct sCiomLangDescrInfo {
  char code[4] = {0, 0, 0, 0};
  _guardchar<unsigned short> name;
  _guardchar<char> path;
};

bool loadCiomLangData(const void* image, int size, cCiomLang& lang);
bool loadCiomLangFile(const char* path, cCiomLang& lang);
bool loadCiomLang(const void* data, int size, tCiomSections& sections);
bool saveCiomLang(const tCiomSections& sections, _typebuf<unsigned char>& out);
bool saveCiomLangData(const char* libraryId, const cCiomLang& lang, _typebuf<unsigned char>& out);
bool saveCiomLangFile(const char* libraryId, const char* path, const cCiomLang& lang);
bool findCiomLangFiles(const char* folder, const char* libraryId,
                       cFasterTreeList<int, sCiomLangDescrInfo>& found);
