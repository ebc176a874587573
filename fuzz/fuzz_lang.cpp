// Fuzz target: language images from any bytes. An image that loads whole must save and
// load again to the same sections and strings.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "ciom/langfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 65536) return 0;
  cCiomLang lang;
  if (!loadCiomLangData(data, static_cast<int>(size), lang)) return 0;
  _typebuf<unsigned char> saved;
  // Every section that loaded has all its strings and fits the format: it must save.
  if (!saveCiomLangData("CIOMBASE", lang, saved)) __builtin_trap();
  cCiomLang again;
  if (!loadCiomLangData(saved.data(), static_cast<int>(saved.count()), again)) __builtin_trap();
  if (std::strcmp(again.code(), lang.code()) != 0) __builtin_trap();
  for (const auto& [key, section] : lang.sections()) {
    const cCiomLangData* copy = again.sections().find(key);
    if (!copy || copy->count() != section.count()) __builtin_trap();
    for (long long i = 0; i < section.count(); ++i) {
      const char* a = section.string(i);
      const char* b = copy->string(i);
      if (!a || !b || std::strcmp(a, b) != 0) __builtin_trap();
    }
  }
  return 0;
}
