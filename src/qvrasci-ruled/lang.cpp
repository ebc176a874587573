#include "lang.h"

// Generated at build time by langc from data/lang/ruled.eng.txt.
extern const unsigned char kRuledImage_ENG[];
extern const long long kRuledImage_ENG_size;

const cLibLang::sLangDef* cRuledLang::rows() {
  static const sLangDef table[kRows] = {{lngEnglish, kRuledImage_ENG, kRuledImage_ENG_size}};
  return table;
}

cRuledLang::cRuledLang() : cStaticLangTable(rows(), kRows) {}

cRuledLang gRuledLang;
