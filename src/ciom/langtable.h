// Language tables: each library registers the built-in images it carries, one per
// language; applying a language loads, from every registered table, that language's
// image (or the table's default) into the one process-wide cCiomLang.
#pragma once

#include "base/buffers.h"
#include "langfile.h"

enum eCIOMStdLangs : int {
  lngEnglish = 0,
  lngRussian = 1,
  lngGerman = 2,
  lngJapanese = 3,
  lngKorean = 4,
  lngFrench = 5,
  lngUkrainian = 6,
  lngSimplifiedChinese = 8,
  lngTraditionalChinese = 9,
  lngNone = 10, // nothing applied yet
};

class cLibLang {
public:
  struct sLangDef {
    int lang;
    const void* data;
    long long size;
  };

  cLibLang(); // registers this table, once, after those registered before it
  cLibLang(const cLibLang&) = delete;
  cLibLang& operator=(const cLibLang&) = delete;

  virtual bool defines(eCIOMStdLangs lang) const = 0;
  virtual long long sizeOf(eCIOMStdLangs lang) const = 0;
  virtual const void* langData(eCIOMStdLangs lang) const = 0;
  virtual eCIOMStdLangs defaltLang() const = 0;
  virtual ~cLibLang(); // unregisters

  // The first row of a table with that id: false, 0 or null when absent.
  static bool defines(eCIOMStdLangs lang, const sLangDef* table, long long count);
  static long long sizeOf(eCIOMStdLangs lang, const sLangDef* table, long long count);
  static const void* langData(eCIOMStdLangs lang, const sLangDef* table, long long count);

  // Loads lang from every table (or the table's default); false when some table has
  // neither or its image does not load. The language is recorded either way.
  static bool applyLang(eCIOMStdLangs lang);
  static bool applyDefaultLang(); // the first registered table's default
  static eCIOMStdLangs appliedLang();
  static cCiomLang& gCiomLang(); // receives every text
};

// A run-time table of images (copied in), keyed by ids 0..10, with a default.
class cLangContainer : public cLibLang {
public:
  static constexpr int kNoDefault = 11;

  bool addDef(int lang, const unsigned char* data, long long& size, bool makeDefault);
  bool getLang(int lang, const unsigned char*& data, long long& size) const;
  bool defines(int lang) const { return lang >= 0 && lang <= 10 && !myImages[lang].empty(); }

  bool defines(eCIOMStdLangs lang) const override { return defines(static_cast<int>(lang)); }
  long long sizeOf(eCIOMStdLangs lang) const override;
  const void* langData(eCIOMStdLangs lang) const override;
  eCIOMStdLangs defaltLang() const override { return static_cast<eCIOMStdLangs>(myDefault); }

private:
  _typebuf<unsigned char> myImages[11];
  int myDefault = kNoDefault;
};

// A table over rows compiled into the program.
class cStaticLangTable : public cLibLang {
public:
  cStaticLangTable(const sLangDef* rows, long long count) : myRows(rows), myCount(count) {}
  bool defines(eCIOMStdLangs lang) const override {
    return cLibLang::defines(lang, myRows, myCount);
  }
  long long sizeOf(eCIOMStdLangs lang) const override {
    return cLibLang::sizeOf(lang, myRows, myCount);
  }
  const void* langData(eCIOMStdLangs lang) const override {
    return cLibLang::langData(lang, myRows, myCount);
  }
  eCIOMStdLangs defaltLang() const override {
    return myCount > 0 ? static_cast<eCIOMStdLangs>(myRows[0].lang) : lngEnglish;
  }

private:
  const sLangDef* myRows;
  long long myCount;
};

// The toolkit's table: nine languages in the order ENG, RUS, UKR, DEU, FRA, JPN, KOR,
// CHI, TWN; English is the default.
class cCIOMLang : public cStaticLangTable {
public:
  cCIOMLang();
  static const sLangDef* rows();
  static constexpr long long kRows = 9;
};
