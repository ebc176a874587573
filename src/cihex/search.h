// The Advanced/HEX pattern language.
//
// A pattern describes a run of bytes position by position; each position compiles to the
// set of byte values allowed there (sByteDescr). A compiled pattern of n positions matches
// data at p when every byte p[i] is in the set of position i.
//
//   sHexSearchRule::_pattern pattern;
//   if (sHexSearchRule::cnvAdv(pattern, "4D5A ?? *2* {50,51} -'pe'"))
//     bool hit = sHexSearchRule::matchAt(pattern.data(), pattern.count(), block);
//
// Syntax of cnvAdv (hex letters in either case):
//   4D        a byte from two nibbles; `?` is a wildcard nibble (4? ?4 ??)
//   5         a lone nibble is a byte with high nibble 0; space separates
//   !hh!      any byte but hh (one or two digits)
//   {a,b,..}  alternatives for one byte: nibble pairs add, !hh! removes, in order
//   [v/m]     masked bytes: position i allows x with (x & m[i]) == v[i]
//   *n*       n any-byte positions, n in 1..4096, decimal or 0x-hex
//   'text'    ASCII bytes; "text" UTF-16LE; `text` UTF-8; \ before the quote escapes it
//   + / -     case-sensitive (default) / insensitive for the quoted texts that follow
//
// Every compiler returns true when the text was accepted and the output filled; false for
// any bad text, with the output in an unspecified state. Nothing throws on bad text, and a
// pattern is at most kMaxPositions long. Matching allocates nothing. All members are
// static and thread-safe.
#pragma once

#include <cstdint>

#include "base/buffers.h"

struct sHexSearchRule {
  // The set of byte values allowed at one position: value v is bit v % 32 of word v / 32.
  struct sByteDescr {
    uint32_t bits[8];

    bool has(unsigned char v) const { return (bits[v >> 5] >> (v & 31)) & 1u; }
    void add(unsigned char v) { bits[v >> 5] |= 1u << (v & 31); }
    void remove(unsigned char v) { bits[v >> 5] &= ~(1u << (v & 31)); }
    void addAll() {
      for (uint32_t& w : bits) w = 0xFFFFFFFFu;
    }
    bool empty() const {
      uint32_t any = 0;
      for (uint32_t w : bits) any |= w;
      return any == 0;
    }
    int count() const; // how many values are allowed
    bool operator==(const sByteDescr&) const = default;
  };
  using _pattern = _typebuf<sByteDescr>;

  static constexpr long long kMaxPositions = 65536;

  static bool cnvAdv(_pattern& out, const char* text);
  // Why cnvAdv refuses a text, for people writing patterns: afNone when it compiles; else
  // the fault, with `at` the offset in the text of the token that is wrong (or the end).
  enum eAdvFault {
    afNone = 0,
    afEmpty,        // no positions at all
    afTooLong,      // beyond kMaxPositions
    afNotHex,       // a character that starts no token, or a bad digit
    afNotByte,      // !hh! malformed
    afAlternatives, // {..} malformed
    afMask,         // [v/m] malformed
    afAnyRun,       // *n* malformed or n out of 1..4096
    afText,         // a quoted text without its closing quote
  };
  static eAdvFault advFault(const char* text, long long& at);
  // Plain hex text, read by cnvHexToBytes: one exact byte per position.
  static bool cnvHex(_pattern& out, const char* text);
  static bool cnvHex(_pattern& out, const unsigned short* text);
  // A UTF-8 text in an encoding: 0 is UTF-16LE, 1..N a place of the text-encoding list.
  static bool cnvText(_pattern& out, const char* text, int encoding, bool caseSensitive);

  // Hex digits into bytes (-1: up to the terminator). Spaces are skipped and close a lone
  // digit as a byte of its own; any other non-hex character fails.
  static bool cnvHexToBytes(_typebuf<unsigned char>& out, const char* text, long long length);
  static bool cnvHexToBytes(_typebuf<unsigned char>& out, const unsigned short* text,
                            long long length);

  static bool isHex(char c);          // 0-9 and a-f only
  static unsigned char hchar(char c); // 0-15 for a hex digit in either case, else 255
  // False for an empty pattern, or when some run of eight positions (cut at the end of the
  // pattern) allows nothing at all.
  static bool good(const _pattern& pattern);

  // True when data[0..n) matches the n positions of pattern.
  static bool matchAt(const sByteDescr* pattern, long long n, const unsigned char* data) {
    for (long long i = 0; i < n; ++i) {
      if (!pattern[i].has(data[i])) return false;
    }
    return true;
  }
  // First offset >= from where the pattern matches inside data[0..size), or -1.
  static long long find(const _pattern& pattern, const unsigned char* data, long long size,
                        long long from = 0);

private:
  static eAdvFault countingPass(const char* text, long long& total, long long& at);
};
