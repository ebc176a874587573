// Fonts: one cached object per distinct (kind, size, face, bold, underline, italic), made
// by the platform and kept for the life of the program, since every paint asks for them.
// The global standard and fixed faces and the line factor of wrapped text live here too.
// Used from the GUI thread only.
#pragma once

#include <memory>

#include "base/buffers.h"

class cFontObject {
public:
  using fMaker = std::unique_ptr<cFontObject> (*)();

  virtual ~cFontObject() = default;

  // The cached font; made through the platform's maker on first request. Null when no
  // maker is registered or the platform cannot make that font.
  static cFontObject* get(int kind, int size, const char* face, bool bold, bool underline,
                          bool italic);
  static void setMaker(fMaker maker);
  // How many fonts the cache holds.
  static size_t cached();

  // Takes the six values; a platform font also finds its face, and fails without one.
  virtual bool define(int kind, int size, const char* face, bool bold, bool underline, bool italic);
  bool eq(int kind, int size, const char* face, bool bold, bool underline, bool italic) const;

  // The font's height in pixels as drawn: size − ((size − 11) × 0.25 + 1.5), so that 13
  // gives 11 and 11 gives 9.5.
  static double pixelSize(int size) { return size - ((size - 11) * 0.25 + 1.5); }

  int kind() const { return myKind; }
  int size() const { return mySize; }
  const char* face() const { return myFace.c_str(); }
  bool bold() const { return myBold; }
  bool underline() const { return myUnderline; }
  bool italic() const { return myItalic; }

private:
  int myKind = 0;
  int mySize = 0;
  _guardchar<char> myFace;
  bool myBold = false, myUnderline = false, myItalic = false;
};

// The standard face ("Tahoma" until set) and the fixed-pitch face ("Courier" until set).
const char* _glbalStdFont();
void setGlobalStdFont(const char* face);
const char* _glbalFixedFont();
void setGlobalFixedFont(const char* face);
// The line-height factor of wrapped text: 1.2, or 1.07 with an East Asian standard face.
double textWrapYFactor();

// Chooses the standard face for the applied language: Meiryo (Japanese), Malgun Gothic
// (Korean), Microsoft YaHei (simplified Chinese) or Microsoft JhengHei (traditional
// Chinese) when that font really exists, else Tahoma. out, when given, becomes 0 for one of
// those four faces and 3 otherwise.
void setDefaultPlatformFont(int* out);
