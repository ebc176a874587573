// The scanner on hostile images: every 512-byte block starts a file whose structure runs on
// to the end of the image. Walking each start to the end would make the scan quadratic;
// the bytes per second must stay the same as the image grows.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "scan/scan.h"

namespace {

constexpr size_t kBlock = 512;

cCustomSignaturesTree& tree() {
  static cCustomSignaturesTree made;
  if (made.firstSig()) return made;
  {
    for (const auto& [name, pattern] :
         {std::pair{"gif", "'GIF89a'"}, std::pair{"gz", "1F 8B 08 00"}}) {
      cScanSignature* n = made.add(nullptr, std::make_unique<cScanSignature>());
      n->create(name, name);
      n->hitMode = cScanSignature::hmActive;
      auto r = std::make_unique<cScanSigRuleUniHexMatch>();
      r->create(pattern, 0, 0);
      n->addStrRule(std::move(r));
      n->ext.set(name);
    }
  }
  return made;
}

// GIF: a header and an image descriptor in each block, then two sub-blocks of 255 bytes
// that hold the next block's header, so that the chain of every start runs to the end.
std::vector<unsigned char> gifChains(size_t size) {
  static const char kHead[] = "GIF89a\x01\x00\x01\x00\x00\x00\x00\x2c\x00\x00\x00\x00\x01\x00"
                              "\x01\x00\x00\x02";
  constexpr size_t kHeadSize = sizeof kHead - 1;
  std::vector<unsigned char> image(size, 0x01);
  for (size_t at = 0; at + kBlock <= size; at += kBlock) {
    std::memcpy(image.data() + at, kHead, kHeadSize);
    image[at + kHeadSize] = 255;
    if (at + kHeadSize + 256 < size) image[at + kHeadSize + 256] = 255;
  }
  return image;
}

// gzip: each block a member header and a stored deflate block that holds the next block's
// header, so that the deflate data of every start runs on through all later blocks.
std::vector<unsigned char> gzipChains(size_t size) {
  static const unsigned char kHead[10] = {0x1F, 0x8B, 8, 0, 0, 0, 0, 0, 0, 3};
  std::vector<unsigned char> image(size, 'z');
  constexpr unsigned int kStored = kBlock; // from after the stored header to the same place
  for (size_t at = 0; at + kBlock <= size; at += kBlock) {
    std::memcpy(image.data() + at, kHead, sizeof kHead);
    unsigned char* stored = image.data() + at + 10;
    stored[0] = 0; // not final, stored
    stored[1] = static_cast<unsigned char>((kStored - 5) & 0xFF);
    stored[2] = static_cast<unsigned char>((kStored - 5) >> 8);
    stored[3] = static_cast<unsigned char>(~stored[1]);
    stored[4] = static_cast<unsigned char>(~stored[2]);
  }
  return image;
}

template <std::vector<unsigned char> (*tMake)(size_t)> void Hostile(benchmark::State& state) {
  const size_t size = static_cast<size_t>(state.range(0)) << 20;
  const std::vector<unsigned char> image = tMake(size);
  long files = 0;
  for (auto _ : state) {
    cRawScanner scanner(tree(), {kBlock, 256ull << 20, true});
    scanner.scanBytes(image.data(), image.size(), [&](const sFoundFile&) { ++files; });
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
  state.counters["files"] = static_cast<double>(files) / static_cast<double>(state.iterations());
}

BENCHMARK(Hostile<gifChains>)
    ->Name("GifChains")
    ->Arg(8)
    ->Arg(32)
    ->Arg(128)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Hostile<gzipChains>)
    ->Name("GzipChains")
    ->Arg(8)
    ->Arg(32)
    ->Arg(128)
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
