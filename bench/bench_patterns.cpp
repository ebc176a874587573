// Benchmarks of the pattern language and the converters.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "base/str.h"
#include "cihex/search.h"

namespace {

const char* kPatterns[] = {
    "4D5A",                                                // a plain magic
    "50 4B 03 04 ?? 00 *20* -'mimetype'",                  // zip with a case-insensitive name
    "{FF,FE} D8 FF {E0,E1} [0000/F000] 4A 46 49 46",       // masks and alternatives
    "\"Microsoft Word\" `\xC3\xA9t\xC3\xA9` *0x100* !00!", // texts and a long run
};

void CompilePattern(benchmark::State& state) {
  const char* text = kPatterns[state.range(0)];
  sHexSearchRule::_pattern pattern;
  for (auto _ : state) {
    benchmark::DoNotOptimize(sHexSearchRule::cnvAdv(pattern, text));
  }
  state.SetLabel(text);
}
BENCHMARK(CompilePattern)->DenseRange(0, 3);

// Random bytes, none of which can start the pattern, so that a search tests every offset.
std::vector<unsigned char> blockWithout(const sHexSearchRule::sByteDescr& first, size_t size) {
  int filler = 0;
  while (first.has(static_cast<unsigned char>(filler))) ++filler;
  std::mt19937 rng(1);
  std::vector<unsigned char> block(size);
  for (auto& b : block) {
    b = static_cast<unsigned char>(rng());
    if (first.has(b)) b = static_cast<unsigned char>(filler);
  }
  return block;
}

// Tests the pattern at every offset of a 1 MiB block.
void FindInBlock(benchmark::State& state) {
  sHexSearchRule::_pattern pattern;
  sHexSearchRule::cnvAdv(pattern, kPatterns[state.range(0)]);
  const auto block = blockWithout(pattern[0], 1 << 20);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        sHexSearchRule::find(pattern, block.data(), static_cast<long long>(block.size())));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * block.size()));
}
BENCHMARK(FindInBlock)->DenseRange(0, 3);

// Text of 1 MiB per class of code page: UTF-8, a single-byte page, a double-byte page,
// an ISO-2022 page.
std::string sampleText(int cp) {
  std::string unit;
  switch (cp) {
  case 65001:
    unit = "Recovery r\xC3\xA9"
           "cup\xC3\xA9ration \xE5\xBE\xA9\xE5\x85\x83 ";
    break;
  case 1251:
    unit = "\xC2\xEE\xF1\xF1\xF2\xE0\xED\xEE\xE2\xEB\xE5\xED\xE8\xE5 data ";
    break;
  case 932:
    unit = "\x83\x66\x81\x5B\x83\x5E\x95\x9C\x8C\xB3 abc ";
    break;
  default:
    unit = "\x1b$B%G!<%?I|85\x1b(B abc ";
    break;
  }
  std::string text;
  while (text.size() < (1u << 20)) text += unit;
  return text;
}

void DecodeMiB(benchmark::State& state) {
  const int cp = static_cast<int>(state.range(0));
  const std::string text = sampleText(cp);
  std::vector<unsigned short> out(text.size());
  for (auto _ : state) {
    benchmark::DoNotOptimize(__a2w(text.data(), static_cast<long long>(text.size()), out.data(),
                                   static_cast<long long>(out.size()), cp));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(DecodeMiB)->Arg(65001)->Arg(1251)->Arg(932)->Arg(50221);

void EncodeMiB(benchmark::State& state) {
  const int cp = static_cast<int>(state.range(0));
  const std::string source = sampleText(cp == 65001 ? 65001 : 1251);
  std::vector<unsigned short> units(source.size());
  units.resize(
      static_cast<size_t>(__a2w(source.data(), static_cast<long long>(source.size()), units.data(),
                                static_cast<long long>(units.size()), cp == 65001 ? 65001 : 1251)));
  std::string out(units.size() * 3, '\0');
  for (auto _ : state) {
    benchmark::DoNotOptimize(__w2a(units.data(), static_cast<long long>(units.size()), out.data(),
                                   static_cast<long long>(out.size()), cp));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * units.size() * 2));
}
BENCHMARK(EncodeMiB)->Arg(65001)->Arg(1251);

} // namespace

BENCHMARK_MAIN();
