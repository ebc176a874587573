// The text-encoding list, the classes of code pages, and the dispatch of a conversion to
// the decoder or encoder of its page; single-byte pages are converted here.
#include <algorithm>
#include <array>
#include <memory>
#include <mutex>

#include "codec.h"
#include "str.h"
#include "tables/tables.h"

using namespace base_codec;

namespace {

struct sEncodingName {
  int cp;
  const char* name;
};

// Several names end in blanks that belong to them.
constexpr sEncodingName kEncodings[] = {
    {65001, "UTF-8 Unicode"},
    {1250, "ANSI - Central European / CP-1250"},
    {1251, "ANSI - Cyrillic / CP-1251"},
    {1252, "ANSI - Latin I / CP-1252"},
    {1254, "ANSI - Turkish / CP-1254"},
    {1255, "ANSI - Hebrew / CP-1255"},
    {850, "OEM - Multilingual Latin I / cp850"},
    {858, "OEM - Multilingual Latin I / cp858"},
    {852, "OEM - Latin II / cp852"},
    {866, "OEM - Russian / cp866"},
    {855, "OEM - Cyrillic / cp855"},
    {437, "OEM - United States"},
    {862, "OEM - Hebrew / cp862"},
    {737, "OEM - Greek / 437G"},
    {857, "OEM - Turkish / cp857"},
    {20866, "Russian - KOI8-R"},
    {21866, "Ukrainian - KOI8-U"},
    {28591, "ISO 8859-1 Latin I"},
    {28592, "ISO 8859-2 Central Europe"},
    {28593, "ISO 8859-3 Latin 3"},
    {28595, "ISO 8859-5 Cyrillic"},
    {28596, "ISO 8859-6 Arabic"},
    {28597, "ISO 8859-7 Greek"},
    {28598, "ISO 8859-8 Hebrew"},
    {28599, "ISO 8859-9 Latin 5"},
    {28605, "ISO 8859-15 Latin 9"},
    {10007, "MAC - Cyrillic"},
    {10029, "MAC - Latin II"},
    {37, "IBM EBCDIC - U.S./Canada (037)"},
    {500, "IBM EBCDIC - International (500)"},
    {870, "Multilingual/ROECE (Latin-2) (870)"},
    {932, "ANSI/OEM - Japanese, Shift-JIS "},
    {936, "ANSI/OEM - Simplified Chinese (PRC, Singapore) "},
    {949, "ANSI/OEM - Korean (Unified Hangeul Code) "},
    {950, "ANSI/OEM - Traditional Chinese (Taiwan; Hong Kong SAR, PRC)  "},
    {50221, "ISO 2022 - Japanese"},
    {50227, "ISO 2022 - Chinese"},
    {51932, "EUC - Japanese"},
    {51936, "EUC - Chinese"},
};
constexpr int kEncodingCount = static_cast<int>(std::size(kEncodings));

int simpleIndex(int cp) {
  if (cp == 0) cp = 28591; // the identity table is the default's single-byte fallback
  for (int i = 0; i < base_tables::simplePageCount; ++i) {
    if (base_tables::simplePages[i].codePage == cp) return i;
  }
  return -1;
}

// Unit -> byte for one single-byte page, built on first use. 0 means unmapped, except for
// the unit 0 itself. Where two bytes give one unit the lower byte wins.
class cReverseMaps {
public:
  const unsigned char* get(int index) {
    std::call_once(myOnce[index], [&] {
      auto map = std::make_unique<std::array<unsigned char, 65536>>();
      map->fill(0);
      const unsigned short* table = base_tables::simplePages[index].toUnit;
      for (int b = 255; b > 0; --b) {
        if (table[b]) (*map)[table[b]] = static_cast<unsigned char>(b);
      }
      myMaps[index] = std::move(map);
    });
    return myMaps[index]->data();
  }

private:
  using tMap = std::array<unsigned char, 65536>;
  const size_t myCount = static_cast<size_t>(base_tables::simplePageCount);
  std::unique_ptr<std::once_flag[]> myOnce = std::make_unique<std::once_flag[]>(myCount);
  std::unique_ptr<std::unique_ptr<tMap>[]> myMaps =
      std::make_unique<std::unique_ptr<tMap>[]>(myCount);
};

const unsigned char* reverseMap(int cp) {
  static cReverseMaps maps;
  int index = simpleIndex(cp);
  return index < 0 ? nullptr : maps.get(index);
}

long long decode(const char* src, long long len, int cp, sUnitSink& sink) {
  if (!src) return 0;
  const bool terminate = len < 0;
  const long long n = measure(src, len);
  const auto* s = reinterpret_cast<const unsigned char*>(src);
  if (cp == 0) cp = __sysDefaultCP;
  if (cp == 65001) {
    decodeUtf8(s, n, sink, nullptr);
  } else if (const unsigned short* table = simpleTable(cp)) {
    for (long long i = 0; i < n && !sink.full(); ++i) sink.put(table[s[i]]);
  } else if (isJIS(cp)) {
    decodeDbcs(cp, s, n, sink);
  } else if (isISO2022(cp)) {
    decodeIso2022(cp, s, n, sink);
  } else {
    return 0;
  }
  if (terminate && !sink.full()) sink.put(0);
  return sink.n;
}

long long encode(const unsigned short* src, long long len, int cp, sByteSink& sink) {
  if (!src) return 0;
  const bool terminate = len < 0;
  const long long n = measure(src, len);
  if (cp == 0) cp = __sysDefaultCP;
  if (cp == 65001) {
    encodeUtf8(src, n, sink, nullptr);
  } else if (const unsigned char* map = reverseMap(cp)) {
    for (long long i = 0; i < n && src[i] && sink.fits(1); ++i) {
      unsigned char b = map[src[i]];
      sink.put(b ? b : '?');
    }
  } else {
    return 0;
  }
  if (terminate && sink.fits(1)) sink.put(0);
  return sink.n;
}

} // namespace

namespace base_codec {

const unsigned short* simpleTable(int cp) {
  int index = simpleIndex(cp);
  return index < 0 ? nullptr : base_tables::simplePages[index].toUnit;
}

} // namespace base_codec

int __text_encoding_count() {
  return kEncodingCount;
}

int __text_encoding_cp(int place) {
  return place >= 1 && place <= kEncodingCount ? kEncodings[place - 1].cp : 0;
}

const char* __text_encoding_name(int cp) {
  for (const auto& e : kEncodings) {
    if (e.cp == cp) return e.name;
  }
  return "Unknown";
}

bool isSimpleCP(int cp) {
  return simpleIndex(cp) >= 0;
}
bool isJIS(int cp) {
  return cp == 932 || cp == 936 || cp == 949 || cp == 950;
}
bool isISO2022(int cp) {
  return cp == 50221 || cp == 50227 || cp == 51932 || cp == 51936;
}

long long __a2w(const char* src, long long len, unsigned short* dst, long long cap, int cp) {
  if (!dst) return __a2w_require(src, len, cp);
  sUnitSink sink{dst, cap};
  return decode(src, len, cp, sink);
}

long long __a2w_require(const char* src, long long len, int cp) {
  sUnitSink sink{nullptr, 0};
  return decode(src, len, cp, sink);
}

long long __w2a(const unsigned short* src, long long len, char* dst, long long cap, int cp) {
  if (!dst) return __w2a_require(src, len, cp);
  sByteSink sink{dst, cap};
  return encode(src, len, cp, sink);
}

long long __w2a_require(const unsigned short* src, long long len, int cp) {
  sByteSink sink{nullptr, 0};
  return encode(src, len, cp, sink);
}

unsigned short __a2w(char c, int cp) {
  const unsigned short* table = simpleTable(cp);
  return table ? table[static_cast<unsigned char>(c)] : 0;
}

char __w2a(unsigned short u, int cp) {
  const unsigned char* map = reverseMap(cp);
  return map ? static_cast<char>(map[u]) : 0;
}

bool _w2enc(const unsigned short* src, long long len, int cp, _typebuf<unsigned char>& out) {
  if (!src || len == 0) return false;
  const long long n = measure(src, len);
  const long long need = __w2a_require(src, n, cp);
  if (need <= 0) return false;
  out.set(need);
  __w2a(src, n, reinterpret_cast<char*>(out.data()), need, cp);
  return true;
}
