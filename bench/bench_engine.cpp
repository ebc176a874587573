// Scanning a 64 MiB buffer block by block with a tree of common file types, as a
// recovery engine does: find_match while no file is open, shouldEnd while one is.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "zorb/customsig.h"

namespace {

// A definition the benchmark cannot build is a mistake in the benchmark itself.
void require(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "bench_engine: cannot build %s\n", what);
  std::exit(1);
}

class cTreeBuilder {
public:
  explicit cTreeBuilder(cCustomSignaturesTree& tree) : myTree(tree) {}

  cScanSignature* def(const char* name, cScanSignature* parent = nullptr) {
    auto node = std::make_unique<cScanSignature>();
    node->create(name, name);
    return myTree.add(parent, std::move(node));
  }
  void exact(cScanSignature* n, const std::string& bytes, unsigned int offset = 0) {
    auto r = std::make_unique<cScanSigRuleExactMatch>();
    r->create(reinterpret_cast<const unsigned char*>(bytes.data()),
              static_cast<unsigned int>(bytes.size()), offset);
    n->addStrRule(std::move(r));
  }
  void adv(cScanSignature* n, const char* text, int offset = -1, int block = 0) {
    auto r = std::make_unique<cScanSigRuleUniHexMatch>();
    require(r->create(text, static_cast<unsigned int>(block), static_cast<unsigned int>(offset)),
            text);
    n->addStrRule(std::move(r));
  }
  void str(cScanSignature* n, const char* text, bool sensitive) {
    auto r = std::make_unique<cScanSigRuleHasStr>();
    r->create(text, sensitive);
    n->addStrRule(std::move(r));
  }
  void mask(cScanSignature* n, unsigned long long value, unsigned char width, unsigned long long m,
            unsigned int offset) {
    auto r = std::make_unique<cScanSigRuleMaskMatch>();
    r->create(value, width, m, offset);
    n->addStrRule(std::move(r));
  }
  void endAdv(cScanSignature* n, const char* text, unsigned int distance) {
    auto r = std::make_unique<cScanSigEndRuleUniHex>();
    require(r->create(text, distance), text);
    n->addEndRule(std::move(r));
  }
  void endStr(cScanSignature* n, const char* text, unsigned int distance) {
    auto r = std::make_unique<cScanSigEndRuleHasStr>();
    r->create(text, true, distance);
    n->addEndRule(std::move(r));
  }
  void endSize(cScanSignature* n, unsigned int offset, unsigned char bytes, unsigned int inc) {
    auto r = std::make_unique<cScanSigEndRuleMatchSize>();
    r->create(offset, bytes, inc, 1, false);
    n->addEndRule(std::move(r));
  }

private:
  cCustomSignaturesTree& myTree;
};

void buildTree(cCustomSignaturesTree& t) {
  cTreeBuilder b(t);
  cScanSignature* n = b.def("jpg");
  b.adv(n, "FF D8 FF {E0,E1,DB,EE}", 0);
  b.endAdv(n, "FF D9", 2);
  n = b.def("png");
  b.exact(n, "\x89PNG\r\n\x1a\n");
  b.endAdv(n, "'IEND' ?? ?? ?? ??", 8);
  n = b.def("gif");
  b.adv(n, "'GIF8' {37,39} 61", 0);
  b.endAdv(n, "00 3B", 2);
  n = b.def("bmp");
  b.exact(n, "BM");
  b.mask(n, 0, 2, 0xFFFFFFFF, 6);
  b.endSize(n, 2, 4, 0);
  n = b.def("pdf");
  b.exact(n, "%PDF-");
  b.endStr(n, "%%EOF", 5);
  cScanSignature* zip = b.def("zip");
  b.exact(zip, std::string("PK\x03\x04", 4));
  b.endAdv(zip, "50 4B 05 06", 22);
  b.str(b.def("docx", zip), "word/", false);
  b.str(b.def("xlsx", zip), "xl/", false);
  b.str(b.def("odt", zip), "mimetypeapplication/vnd.oasis", true);
  b.exact(b.def("rar"), "Rar!\x1a\x07");
  b.exact(b.def("7z"), "7z\xbc\xaf\x27\x1c");
  b.adv(b.def("gz"), "1F 8B 08", 0);
  n = b.def("mp3");
  b.exact(n, "ID3");
  b.mask(n, 0, 0, 0xF8, 3);
  n = b.def("wav");
  b.exact(n, "RIFF");
  b.exact(n, "WAVE", 8);
  b.endSize(n, 4, 4, 8);
  n = b.def("avi");
  b.exact(n, "RIFF");
  b.exact(n, "AVI ", 8);
  b.adv(b.def("mp4"), "'ftyp' {69,6D,4D,71} {73,70,34,74}", 4);
  b.exact(b.def("mkv"), "\x1a\x45\xdf\xa3");
  b.exact(b.def("elf"), "\x7f"
                        "ELF");
  n = b.def("exe");
  b.exact(n, "MZ");
  cScanSignature* pe = b.def("pe", n);
  auto field = std::make_unique<cFieldRelativeSubset>();
  field->create(0x3C, 2);
  pe->subset = std::move(field);
  b.exact(pe, std::string("PE\0\0", 4));
  b.exact(b.def("sqlite"), std::string("SQLite format 3\0", 16));
  n = b.def("xml");
  auto magic = std::make_unique<cMagicRelativeSubset>();
  require(magic->create("'<?xml'", 0), "<?xml");
  n->subset = std::move(magic);
  b.str(n, "version", false);
  b.adv(b.def("html"), "-'<!doctype html'");
  b.exact(b.def("tif"), std::string("II*\0", 4));
  b.exact(b.def("tif-be"), std::string("MM\0*", 4));
  b.exact(b.def("psd"), "8BPS");
  b.exact(b.def("ogg"), "OggS");
  b.exact(b.def("flac"), "fLaC");
  b.exact(b.def("mid"), "MThd");
  b.mask(b.def("ico"), 0x00010000, 2, 0xFFFFFFFF, 0);
  b.adv(b.def("pem"), "'-----BEGIN '", 0, 64);
  b.exact(b.def("cab"), "MSCF");
  n = b.def("txt");
  n->hitMode = cScanSignature::hmPassive;
  n->addStrRule(std::make_unique<cScanSigRuleIsStr>());
  b.endAdv(n, "00", 0);
}

// Random bytes holding a complete file every 1 MiB: its start at a 4 KiB boundary and its
// end marker 64 KiB further on.
const std::vector<unsigned char>& disk() {
  static std::vector<unsigned char> bytes = [] {
    std::vector<unsigned char> d(64 << 20);
    std::mt19937 rng(5);
    for (auto& b : d) b = static_cast<unsigned char>(rng());
    struct sFile {
      std::string start, end;
    } files[] = {{"\xFF\xD8\xFF\xE0", "\xFF\xD9"},
                 {"%PDF-1.7", "%%EOF"},
                 {std::string("PK\x03\x04", 4), std::string("PK\x05\x06", 4)},
                 {"\x89PNG\r\n\x1a\n", "IEND\xAE\x42\x60\x82"}};
    for (size_t at = 0, i = 0; at + (64 << 10) < d.size(); at += 1 << 20, ++i) {
      const sFile& f = files[i % 4];
      std::memcpy(d.data() + at, f.start.data(), f.start.size());
      std::memcpy(d.data() + at + (64 << 10), f.end.data(), f.end.size());
    }
    return d;
  }();
  return bytes;
}

// A file stays open only while some end rule can close it; otherwise the engine goes on
// looking for starts, and the next start ends the file.
bool canEnd(const cScanSignature* node) {
  for (; node; node = node->parentSig()) {
    if (node->hasEndRules()) return true;
  }
  return false;
}

void Scan(benchmark::State& state) {
  cCustomSignaturesTree tree;
  buildTree(tree);
  const auto& d = disk();
  const unsigned int block = static_cast<unsigned int>(state.range(0));
  long files = 0;
  for (auto _ : state) {
    cScanSignature* open = nullptr;
    for (size_t at = 0; at + block <= d.size(); at += block) {
      const unsigned int avail =
          static_cast<unsigned int>(std::min<size_t>(d.size() - at, 2 * block));
      if (open) {
        unsigned int end = 0;
        if (tree.shouldEnd(open, d.data() + at, block, avail, at, end)) open = nullptr;
      } else if (cScanSignature* found = tree.find_match(d.data() + at, block, avail, at)) {
        ++files;
        open = canEnd(found) ? found : nullptr;
      }
    }
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * d.size()));
  state.counters["files"] = static_cast<double>(files) / static_cast<double>(state.iterations());
}
BENCHMARK(Scan)->Arg(512)->Arg(4096)->Unit(benchmark::kMillisecond)->MinTime(2);

} // namespace

BENCHMARK_MAIN();
