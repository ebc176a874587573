// Strings and code pages.
//
// Text lives in three forms: platform text (always UTF-8 here), UTF-16 code units
// (unsigned short), and byte strings in a code page. Code pages use the usual numbering
// (65001 UTF-8, 1252 Western European, ...); 0 stands for the system default, 65001.
//
// Length convention of every converter: -1 means the source ends at its first zero unit
// (and the output then ends with a zero too, counted in the result); an explicit length
// converts exactly that many units. Converters write at most `cap` units and return the
// number written; each has a `_require` companion that returns the size a full
// conversion needs without writing anything.
//
// Bad input never fails a conversion: UTF-8 is read leniently (a byte that does not start
// a valid two- or three-byte sequence stands for itself, as Latin-1); unmapped units become
// "?" when encoding into a single-byte page, and a byte that such a page leaves unmapped
// decodes to the unit 0; an unmapped or malformed multi-byte sequence
// decodes to U+FFFD; a multi-byte sequence cut off by the end of the source is dropped.
// All functions are thread-safe.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "buffers.h"

constexpr int __sysDefaultCP = 65001;

// ---- Code pages -----------------------------------------------------------------------

// The text-encoding list a user picks from; places are 1-based.
int __text_encoding_count();
int __text_encoding_cp(int place);        // 0 when place is outside 1..count
const char* __text_encoding_name(int cp); // "Unknown" for a page not in the list

bool isSimpleCP(int cp); // single-byte pages, and 0
bool isJIS(int cp);      // double-byte pages 932, 936, 949, 950
bool isISO2022(int cp);  // 50221, 50227, 51932, 51936 (ISO-2022 and EUC)

// Bytes in cp -> UTF-16. A null dst returns the _require size. Unknown pages give 0.
long long __a2w(const char* src, long long len, unsigned short* dst, long long cap, int cp);
long long __a2w_require(const char* src, long long len, int cp);
// UTF-16 -> bytes in cp; only UTF-8 and single-byte pages, any other page gives 0. For a
// single-byte page conversion stops at a zero unit even with an explicit length.
long long __w2a(const unsigned short* src, long long len, char* dst, long long cap, int cp);
long long __w2a_require(const unsigned short* src, long long len, int cp);
// One byte / one unit in a single-byte page; 0 when unmapped.
unsigned short __a2w(char c, int cp);
char __w2a(unsigned short u, int cp);

// UTF-8 <-> UTF-16, reporting how many source units were consumed.
long long utf82w(const char* src, long long len, unsigned short* dst, long long cap,
                 long long* consumed = nullptr);
long long utf82w_require(const char* src, long long len);
long long w2utf8(const unsigned short* src, long long len, char* dst, long long cap,
                 long long* consumed = nullptr);
long long w2utf8_require(const unsigned short* src, long long len);

// Platform text (UTF-8) <-> UTF-16. The buffer forms hold exactly the converted units
// (_typebuf: no terminator; _guardchar: terminated).
long long _pc2w(const char* src, long long len, unsigned short* dst, long long cap);
long long _pc2w_require(const char* src, long long len);
void _pc2w(const char* src, _guardchar<unsigned short>& out, long long len = -1);
void _pc2w(const char* src, _typebuf<unsigned short>& out, long long len = -1);
long long _w2pc(const unsigned short* src, long long len, char* dst, long long cap);
long long _w2pc_require(const unsigned short* src, long long len);
void _w2pc(const unsigned short* src, _guardchar<char>& out, long long len = -1);
void _w2pc(const unsigned short* src, _typebuf<char>& out, long long len = -1);

// Full Unicode between UTF-8 and UTF-16, for text that people type and exchange through
// the clipboard: unlike the converters above, characters above U+FFFF become surrogate
// pairs and pairs become one four-byte sequence. Malformed or overlong bytes and unpaired
// surrogates become U+FFFD. The buffer holds exactly the converted units / bytes
// (_guardchar: terminated).
void utf8ToUnits(const char* src, long long len, _typebuf<unsigned short>& out);
void unitsToUtf8(const unsigned short* src, long long len, _guardchar<char>& out);

// Default-code-page text <-> platform text: both are UTF-8, so the text is copied. The
// raw forms copy at most size - 1 bytes, terminate, and return the bytes copied.
long long _a2pc(const char* src, char* dst, long long size);
long long _pc2a(const char* src, char* dst, long long size);
void _a2pc(const char* src, _guardchar<char>& out);
void _pc2a(const char* src, _guardchar<char>& out);

// Text in code page cp <-> platform text, through UTF-16.
void _enc2pc(const char* src, long long len, int cp, _guardchar<char>& out);
void _pc2enc(const char* src, long long len, int cp, _guardchar<char>& out);

// Fills out with the bytes of a UTF-16 text in cp (no terminator); false when the page
// cannot encode (not UTF-8 nor single-byte) or the result is empty.
bool _w2enc(const unsigned short* src, long long len, int cp, _typebuf<unsigned char>& out);

// ---- Case, white space, composition ---------------------------------------------------

unsigned short __acp_lower(unsigned short u);
unsigned short __acp_upper(unsigned short u);
// 8-bit forms: only ASCII letters change; bytes of 0x80 and above stay as they are.
char __acp_lower(char c);
char __acp_upper(char c);
// True for tab, line feed, carriage return and space only.
bool __acp_isspace(char c);
bool __acp_isspace(unsigned short u);

// The precomposed unit for the two units at pair, or 0.
unsigned short _get_precomposed_glyph(const unsigned short* pair);
// Composes base + combining pairs of a UTF-16 text (n units, -1 up to a zero unit) into
// platform text; units below 32 become "."; swap reads big-endian units.
void _precompose_glyphs(const unsigned short* src, long long n, _guardchar<char>& out, bool swap);

// ---- Bounded string functions ---------------------------------------------------------
// Copies return 0, do nothing for null pointers, and truncate silently.

int _strcpy_s(char* dst, long long size, const char* src);
int _wcscpy_s(unsigned short* dst, long long size, const unsigned short* src);
int _strncpy_s(char* dst, long long size, const char* src, long long count);
int _wcsncpy_s(unsigned short* dst, long long size, const unsigned short* src, long long count);
int _wcscat_s(unsigned short* dst, long long size, const unsigned short* src);

// printf-style formatting into at most size units (terminator included); the result is
// truncated silently. Returns the units written, without the terminator. The UTF-16 forms
// format with the 8-bit rules: a %s argument is 8-bit platform text.
int _sprintf_s(char* dst, long long size, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
int _vsprintf_s(char* dst, long long size, const char* format, va_list args)
    __attribute__((format(printf, 3, 0)));
int _swprintf_s(unsigned short* dst, long long size, const unsigned short* format, ...);
int _vswprintf_s(unsigned short* dst, long long size, const unsigned short* format, va_list args);
// scanf-style reading; the UTF-16 forms read through UTF-8. Return the fields assigned.
int _sscanf_s(const char* text, const char* format, ...) __attribute__((format(scanf, 2, 3)));
int _swscanf_s(const unsigned short* text, const unsigned short* format, ...);
int _vswscanf_s(const unsigned short* text, const unsigned short* format, va_list args);

long long _wcslen(const unsigned short* s); // 0 for null
const unsigned short* _wcschr(const unsigned short* s, unsigned short c);
const unsigned short* _wcsrchr(const unsigned short* s, unsigned short c);
int _wcscmp(const unsigned short* a, const unsigned short* b); // 0 when either is null
// First occurrence of pattern in text (lengths -1 are measured), or null.
const unsigned short* _wcsstr(const unsigned short* text, const unsigned short* pattern,
                              long long textLength = -1, long long patternLength = -1);
const unsigned short* _wcsistr(const unsigned short* text, const unsigned short* pattern,
                               long long textLength = -1, long long patternLength = -1);

// Case-insensitive comparisons through __acp_lower: -1, 0 or 1; a null argument gives -1.
int __stricmp(const char* a, const char* b);
int __wcsicmp(const unsigned short* a, const unsigned short* b);
int __wcsicmp(const unsigned short* a, const unsigned short* b, long long length);
int __wcsnicmp(const unsigned short* a, const unsigned short* b, long long count);
int __memicmp(const void* a, const void* b, size_t count);

// ---- Keys and compact strings ---------------------------------------------------------

// A string key with a fast total order: the bytes of the UTF-8 text packed into 32-bit
// big-endian words (the last one zero-padded), compared word by word.
class cStringKey {
public:
  cStringKey() = default;
  explicit cStringKey(const char* text, long long len = -1) { set(text, len); }
  explicit cStringKey(const unsigned short* text, long long len = -1) { set(text, len); }

  void set(const char* text, long long len = -1);
  void set(const unsigned short* text, long long len = -1);

  int cmp(const cStringKey& o) const;
  bool operator==(const cStringKey& o) const { return cmp(o) == 0; }
  bool operator!=(const cStringKey& o) const { return cmp(o) != 0; }
  bool operator<(const cStringKey& o) const { return cmp(o) < 0; }
  bool operator>(const cStringKey& o) const { return cmp(o) > 0; }
  bool operator<=(const cStringKey& o) const { return cmp(o) <= 0; }
  bool operator>=(const cStringKey& o) const { return cmp(o) >= 0; }

  // The bytes again, including the zero padding of the last word.
  std::string utf8() const;
  long long words() const { return static_cast<long long>(myWords.size()); }

private:
  std::vector<uint32_t> myWords;
};

// A small string kept as UTF-8 with its length in UTF-16 units.
class cCompactStr {
public:
  // length >= 65535: the text's own length; 0, or negative as a 16-bit value: empty.
  void set(const unsigned short* text, int length = 65535);
  void set(const char* text, int length = 65535);

  const char* c_str() const { return myText.c_str(); }
  unsigned short len() const { return myLen; }

private:
  _guardchar<char> myText;
  unsigned short myLen = 0;
};
