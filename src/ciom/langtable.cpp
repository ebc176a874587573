#include "langtable.h"

#include <algorithm>
#include <vector>

namespace {

std::vector<cLibLang*>& gLangLoadersPtr() {
  static std::vector<cLibLang*> tables;
  return tables;
}

eCIOMStdLangs glastAppliedLang = lngNone;

const cLibLang::sLangDef* findRow(eCIOMStdLangs lang, const cLibLang::sLangDef* table,
                                  long long count) {
  if (!table || count < 1) return nullptr;
  for (long long i = 0; i < count; ++i) {
    if (table[i].lang == lang) return &table[i];
  }
  return nullptr;
}

} // namespace

cLibLang::cLibLang() {
  auto& tables = gLangLoadersPtr();
  if (std::find(tables.begin(), tables.end(), this) == tables.end()) tables.push_back(this);
}

cLibLang::~cLibLang() {
  auto& tables = gLangLoadersPtr();
  tables.erase(std::remove(tables.begin(), tables.end(), this), tables.end());
}

bool cLibLang::defines(eCIOMStdLangs lang, const sLangDef* table, long long count) {
  return findRow(lang, table, count) != nullptr;
}

long long cLibLang::sizeOf(eCIOMStdLangs lang, const sLangDef* table, long long count) {
  const sLangDef* row = findRow(lang, table, count);
  return row ? row->size : 0;
}

const void* cLibLang::langData(eCIOMStdLangs lang, const sLangDef* table, long long count) {
  const sLangDef* row = findRow(lang, table, count);
  return row ? row->data : nullptr;
}

cCiomLang& cLibLang::gCiomLang() {
  static cCiomLang lang;
  return lang;
}

bool cLibLang::applyLang(eCIOMStdLangs lang) {
  bool result = true;
  for (cLibLang* table : gLangLoadersPtr()) {
    eCIOMStdLangs id = lang;
    if (!table->defines(id)) {
      id = table->defaltLang();
      if (!table->defines(id)) {
        result = false;
        continue;
      }
    }
    const long long size = table->sizeOf(id);
    if (size > kCiomLangMaxSize ||
        !loadCiomLangData(table->langData(id), static_cast<int>(size), gCiomLang()))
      result = false;
  }
  glastAppliedLang = lang;
  return result;
}

bool cLibLang::applyDefaultLang() {
  const auto& tables = gLangLoadersPtr();
  if (tables.empty()) return false;
  return applyLang(tables.front()->defaltLang());
}

eCIOMStdLangs cLibLang::appliedLang() {
  return glastAppliedLang;
}

bool cLangContainer::addDef(int lang, const unsigned char* data, long long& size,
                            bool makeDefault) {
  if (!data || size <= 0 || lang < 0 || lang > 10) return false;
  myImages[lang].assign(data, size);
  if (makeDefault || myDefault == kNoDefault) myDefault = lang;
  return true;
}

bool cLangContainer::getLang(int lang, const unsigned char*& data, long long& size) const {
  if (!defines(lang)) return false;
  data = myImages[lang].data();
  size = myImages[lang].count();
  return true;
}

long long cLangContainer::sizeOf(eCIOMStdLangs lang) const {
  return defines(static_cast<int>(lang)) ? myImages[lang].count() : 0;
}

const void* cLangContainer::langData(eCIOMStdLangs lang) const {
  return defines(static_cast<int>(lang)) ? myImages[lang].data() : nullptr;
}
