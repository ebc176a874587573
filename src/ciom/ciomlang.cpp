// The toolkit's built-in language table. The images are generated at build time by langc
// from data/lang/ciom.*.txt.
#include "langtable.h"

#define CIOM_IMAGE(CODE)                                                                           \
  extern const unsigned char kCiomImage_##CODE[];                                                  \
  extern const long long kCiomImage_##CODE##_size;

CIOM_IMAGE(ENG)
CIOM_IMAGE(RUS)
CIOM_IMAGE(UKR)
CIOM_IMAGE(DEU)
CIOM_IMAGE(FRA)
CIOM_IMAGE(JPN)
CIOM_IMAGE(KOR)
CIOM_IMAGE(CHI)
CIOM_IMAGE(TWN)

const cLibLang::sLangDef* cCIOMLang::rows() {
  static const sLangDef table[kRows] = {
      {lngEnglish, kCiomImage_ENG, kCiomImage_ENG_size},
      {lngRussian, kCiomImage_RUS, kCiomImage_RUS_size},
      {lngUkrainian, kCiomImage_UKR, kCiomImage_UKR_size},
      {lngGerman, kCiomImage_DEU, kCiomImage_DEU_size},
      {lngFrench, kCiomImage_FRA, kCiomImage_FRA_size},
      {lngJapanese, kCiomImage_JPN, kCiomImage_JPN_size},
      {lngKorean, kCiomImage_KOR, kCiomImage_KOR_size},
      {lngSimplifiedChinese, kCiomImage_CHI, kCiomImage_CHI_size},
      {lngTraditionalChinese, kCiomImage_TWN, kCiomImage_TWN_size},
  };
  return table;
}

cCIOMLang::cCIOMLang() : cStaticLangTable(rows(), kRows) {}
