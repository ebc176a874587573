// ISO-2022-JP (50221), ISO-2022-CN (50227), EUC-JP (51932) and EUC-CN (51936).
#include <cstring>

#include "charsets.h"
#include "codec.h"
#include "tables/tables.h"

using base_codec::kReplacement;
using base_codec::sUnitSink;

namespace {

int decode94(const unsigned short* table, unsigned short* unit, const unsigned char* s,
             long long n) {
  if (n < 1) return -1;
  if (s[0] < 0x21 || s[0] > 0x7E) return 0;
  if (n < 2) return -1;
  if (s[1] < 0x21 || s[1] > 0x7E) return 0;
  const unsigned short u = table[(s[0] - 0x21) * 94 + (s[1] - 0x21)];
  if (!u) return 0;
  *unit = u;
  return 2;
}

constexpr unsigned char ESC = 0x1B, SO = 0x0E, SI = 0x0F;

// An escape sequence at s: its length when it is `seq`, 0 when it is not, -1 when the
// text ends inside what could still be `seq`.
int matchEscape(const unsigned char* s, long long n, const char* seq) {
  const long long len = static_cast<long long>(std::strlen(seq));
  for (long long k = 0; k < len; ++k) {
    if (k >= n) return -1;
    if (s[k] != static_cast<unsigned char>(seq[k])) return 0;
  }
  return static_cast<int>(len);
}

struct sEscape {
  const char* seq;
  int set;
};

// Finds which of the escapes starts at s. Returns its length and stores its set; 0 when
// none does, -1 when the text ends inside a possible escape.
int findEscape(const unsigned char* s, long long n, const sEscape* escapes, int count, int& set) {
  bool cut = false;
  for (int e = 0; e < count; ++e) {
    const int m = matchEscape(s, n, escapes[e].seq);
    if (m > 0) {
      set = escapes[e].set;
      return m;
    }
    cut = cut || m < 0;
  }
  return cut ? -1 : 0;
}

// Two bytes of a 94 x 94 set: writes the unit or U+FFFD, returns bytes used, 0 when the
// text ends before the second byte.
long long put94(int (*mbtowc)(unsigned short*, const unsigned char*, long long),
                const unsigned char* s, long long n, sUnitSink& out) {
  unsigned short u = 0;
  const int used = mbtowc(&u, s, n);
  if (used < 0) return 0;
  if (used > 0) {
    out.put(u);
    return used;
  }
  out.put(kReplacement);
  return n >= 2 && s[1] >= 0x21 && s[1] <= 0x7E ? 2 : 1;
}

enum eJpSet { JP_ASCII, JP_ROMAN, JP_KATAKANA, JP_0208, JP_0212 };

void decodeIso2022Jp(const unsigned char* s, long long n, sUnitSink& out) {
  static const sEscape escapes[] = {{"\x1b(B", JP_ASCII},    {"\x1b(J", JP_ROMAN},
                                    {"\x1b(I", JP_KATAKANA}, {"\x1b$@", JP_0208},
                                    {"\x1b$B", JP_0208},     {"\x1b$(D", JP_0212}};
  int set = JP_ASCII;
  bool shifted = false; // SO selects half-width katakana until SI
  long long i = 0;
  while (i < n && !out.full()) {
    const unsigned char b = s[i];
    if (b == ESC) {
      const int m = findEscape(s + i, n - i, escapes, 6, set);
      if (m < 0) break;
      if (m == 0) out.put(kReplacement);
      i += m > 0 ? m : 1;
    } else if (b == SO || b == SI) {
      shifted = b == SO;
      ++i;
    } else if (b < 0x21 || b == 0x7F) {
      out.put(b); // controls and space pass in every set
      ++i;
    } else if (b >= 0x80) {
      out.put(b >= 0xA1 && b <= 0xDF ? 0xFF61 + (b - 0xA1) : kReplacement);
      ++i;
    } else if (shifted || set == JP_KATAKANA) {
      out.put(b <= 0x5F ? 0xFF61 + (b - 0x21) : kReplacement);
      ++i;
    } else if (set == JP_ASCII) {
      out.put(b);
      ++i;
    } else if (set == JP_ROMAN) {
      unsigned short u = b;
      jisx0201_mbtowc(&u, s + i, 1);
      out.put(u);
      ++i;
    } else {
      const long long used =
          put94(set == JP_0208 ? jisx0208_mbtowc : jisx0212_mbtowc, s + i, n - i, out);
      if (!used) break;
      i += used;
    }
  }
}

void decodeEucJp(const unsigned char* s, long long n, sUnitSink& out) {
  long long i = 0;
  while (i < n && !out.full()) {
    const unsigned char b = s[i];
    unsigned char seven[2];
    if (b < 0x80) {
      out.put(b);
      ++i;
    } else if (b == 0x8E) { // single shift 2: half-width katakana
      if (i + 1 >= n) break;
      const unsigned char k = s[i + 1];
      const bool ok = k >= 0xA1 && k <= 0xDF;
      out.put(ok ? 0xFF61 + (k - 0xA1) : kReplacement);
      i += ok ? 2 : 1;
    } else if (b == 0x8F) { // single shift 3: JIS X 0212
      if (i + 2 >= n) break;
      unsigned short u = 0;
      const bool inRange =
          s[i + 1] >= 0xA1 && s[i + 1] <= 0xFE && s[i + 2] >= 0xA1 && s[i + 2] <= 0xFE;
      seven[0] = s[i + 1] & 0x7F;
      seven[1] = s[i + 2] & 0x7F;
      const bool mapped = inRange && jisx0212_mbtowc(&u, seven, 2) == 2;
      out.put(mapped ? u : kReplacement);
      i += inRange ? 3 : 1;
    } else if (b >= 0xA1 && b <= 0xFE) {
      if (i + 1 >= n) break;
      unsigned short u = 0;
      const bool inRange = s[i + 1] >= 0xA1 && s[i + 1] <= 0xFE;
      seven[0] = b & 0x7F;
      seven[1] = s[i + 1] & 0x7F;
      const bool mapped = inRange && jisx0208_mbtowc(&u, seven, 2) == 2;
      out.put(mapped ? u : kReplacement);
      i += inRange ? 2 : 1;
    } else {
      out.put(kReplacement);
      ++i;
    }
  }
}

void decodeEucCn(const unsigned char* s, long long n, sUnitSink& out) {
  long long i = 0;
  while (i < n && !out.full()) {
    const unsigned char b = s[i];
    if (b < 0x80) {
      out.put(b);
      ++i;
    } else if (b >= 0xA1 && b <= 0xFE) {
      if (i + 1 >= n) break;
      unsigned short u = 0;
      const bool inRange = s[i + 1] >= 0xA1 && s[i + 1] <= 0xFE;
      const unsigned char seven[2] = {static_cast<unsigned char>(b & 0x7F),
                                      static_cast<unsigned char>(s[i + 1] & 0x7F)};
      const bool mapped = inRange && gb2312_mbtowc(&u, seven, 2) == 2;
      out.put(mapped ? u : kReplacement);
      i += inRange ? 2 : 1;
    } else {
      out.put(kReplacement);
      ++i;
    }
  }
}

enum eCnSet { CN_NONE, CN_GB2312, CN_CNS1, CN_CNS2 };

void decodeIso2022Cn(const unsigned char* s, long long n, sUnitSink& out) {
  static const sEscape escapes[] = {
      {"\x1b$)A", CN_GB2312}, {"\x1b$)G", CN_CNS1}, {"\x1b$*H", CN_CNS2}, {"\x1bN", -1}};
  int g1 = CN_NONE, g2 = CN_NONE;
  bool shifted = false;
  long long i = 0;
  while (i < n && !out.full()) {
    const unsigned char b = s[i];
    if (b == ESC) {
      int set = CN_NONE;
      const int m = findEscape(s + i, n - i, escapes, 4, set);
      if (m < 0) break;
      if (m == 0) {
        out.put(kReplacement);
        ++i;
      } else if (set == -1) { // single shift 2: one character from the G2 set
        if (g2 != CN_CNS2) {
          out.put(kReplacement);
          i += m;
          continue;
        }
        const long long used = put94(cns11643_2_mbtowc, s + i + m, n - i - m, out);
        if (!used) break;
        i += m + used;
      } else {
        (set == CN_CNS2 ? g2 : g1) = set;
        i += m;
      }
    } else if (b == SO || b == SI) {
      shifted = b == SO;
      ++i;
    } else if (b == '\n' || b == '\r') {
      out.put(b); // designations and the shift end with the line
      g1 = g2 = CN_NONE;
      shifted = false;
      ++i;
    } else if (b < 0x21 || b == 0x7F || (!shifted && b < 0x80)) {
      out.put(b);
      ++i;
    } else if (b >= 0x80 || g1 == CN_NONE) {
      out.put(kReplacement);
      ++i;
    } else {
      const long long used =
          put94(g1 == CN_GB2312 ? gb2312_mbtowc : cns11643_1_mbtowc, s + i, n - i, out);
      if (!used) break;
      i += used;
    }
  }
}

} // namespace

int jisx0201_mbtowc(unsigned short* unit, const unsigned char* s, long long n) {
  if (n < 1) return -1;
  const unsigned char b = s[0];
  if (b < 0x80) {
    *unit = b == 0x5C ? 0x00A5 : b == 0x7E ? 0x203E : b; // yen sign and overline
    return 1;
  }
  if (b >= 0xA1 && b <= 0xDF) {
    *unit = static_cast<unsigned short>(0xFF61 + (b - 0xA1));
    return 1;
  }
  return 0;
}

int jisx0208_mbtowc(unsigned short* unit, const unsigned char* s, long long n) {
  return decode94(base_tables::jisx0208, unit, s, n);
}
int jisx0212_mbtowc(unsigned short* unit, const unsigned char* s, long long n) {
  return decode94(base_tables::jisx0212, unit, s, n);
}
int gb2312_mbtowc(unsigned short* unit, const unsigned char* s, long long n) {
  return decode94(base_tables::gb2312, unit, s, n);
}
int cns11643_1_mbtowc(unsigned short* unit, const unsigned char* s, long long n) {
  return decode94(base_tables::cns11643_1, unit, s, n);
}
int cns11643_2_mbtowc(unsigned short* unit, const unsigned char* s, long long n) {
  return decode94(base_tables::cns11643_2, unit, s, n);
}

namespace base_codec {

void decodeIso2022(int cp, const unsigned char* s, long long n, sUnitSink& out) {
  switch (cp) {
  case 50221:
    return decodeIso2022Jp(s, n, out);
  case 50227:
    return decodeIso2022Cn(s, n, out);
  case 51932:
    return decodeEucJp(s, n, out);
  case 51936:
    return decodeEucCn(s, n, out);
  default:
    return;
  }
}

} // namespace base_codec
