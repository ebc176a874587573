// qvraci-rules: checks rules files and tests them against real data.
#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "base/files.h"
#include "base/memtarget.h"
#include "cli.h"
#include "commands.h"
#include "describe.h"
#include "identify.h"
#include "scan.h"
#include "zorb/csigtext.h"

namespace {

// ---- show -----------------------------------------------------------------------------

int show(const sArgs& a) {
  if (a.positional.size() != 1) return usage("show takes one rules file");
  cCustomSignaturesTree tree;
  if (!loadRules(a.positional[0].c_str(), tree)) return 1;
  int counts[3] = {0, 0, 0};
  for (const cTreeItem* p = tree.first(); p; p = p->nextInOrder()) {
    const auto* n = static_cast<const cScanSignature*>(p);
    const std::string indent(2 * static_cast<size_t>(n->depth()), ' ');
    std::printf("%s%s [%s]: %s, %s\n", indent.c_str(), n->name.c_str(), n->ext.c_str(),
                hitModeText(n->hitMode).c_str(), combinationText(n->allRules).c_str());
    if (n->subset)
      std::printf("%s    scope: %s\n", indent.c_str(), subsetText(n->subset.get()).c_str());
    for (const cScanSigRule* r = n->first_str(); r; r = n->next_str(r)) {
      std::printf("%s    start: %s\n", indent.c_str(), ruleText(*r).c_str());
    }
    for (const cScanSigEndRule* r = n->first_end(); r; r = n->next_end(r)) {
      std::printf("%s    end: %s\n", indent.c_str(), ruleText(*r).c_str());
    }
    if (n->hitMode >= 0 && n->hitMode <= 2) ++counts[n->hitMode];
  }
  std::printf("Rules: %u (active %d, passive %d, containers %d)\n", tree.numRules(), counts[2],
              counts[1], counts[0]);
  return 0;
}

// ---- check, convert ---------------------------------------------------------------------

int check(const sArgs& a) {
  if (a.positional.empty()) return usage("check takes one or more rules files");
  int bad = 0;
  for (const std::string& path : a.positional) {
    cCustomSignaturesTree tree;
    cFileIO file;
    if (!file.open(path.c_str(), fmRead)) {
      std::printf("%s: cannot be opened: %s\n", path.c_str(), std::strerror(errno));
      ++bad;
      continue;
    }
    const int result = tree.load(&file);
    if (result == 0) {
      std::printf("%s: ok, %lld definitions\n", path.c_str(), tree.count());
    } else {
      std::printf("%s: %s\n", path.c_str(), loadResultText(result));
      ++bad;
    }
  }
  return bad ? 1 : 0;
}

int convert(const sArgs& a) {
  if (a.positional.size() != 2) return usage("convert takes an input and an output file");
  const char* out = a.positional[1].c_str();
  if (exists(out) && !a.has("--force")) return fail(std::string(out) + ": exists (use --force)");
  cCustomSignaturesTree tree;
  if (!loadRules(a.positional[0].c_str(), tree)) return 1;
  cFileIO file;
  if (!file.create(out, fmWrite))
    return fail(std::string(out) + ": cannot be created: " + std::strerror(errno));
  if (tree.save(&file) != 0) return fail(std::string(out) + ": write failure");
  return 0;
}

// ---- export, build ---------------------------------------------------------------------

int exportText(const sArgs& a) {
  if (a.positional.size() != 1) return usage("export takes one rules file");
  cCustomSignaturesTree tree;
  if (!loadRules(a.positional[0].c_str(), tree)) return 1;
  std::string text, error;
  if (!rulesToText(tree, text, error)) return fail(a.positional[0] + ": " + error);
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    return fail("cannot write to standard output");
  return 0;
}

int build(const sArgs& a) {
  if (a.positional.size() != 2) return usage("build takes a text file and an output file");
  const std::string& source = a.positional[0];
  const char* out = a.positional[1].c_str();
  if (exists(out) && !a.has("--force")) return fail(std::string(out) + ": exists (use --force)");
  cFileIO text;
  if (!text.open(source.c_str(), fmRead))
    return fail(source + ": cannot be opened: " + std::strerror(errno));
  cCustomSignaturesTree tree;
  if (!buildRulesText(source.c_str(), text, tree)) return 1;
  cMemoryTarget bytes;
  if (tree.save(&bytes) != 0) return fail("the tree could not be saved");
  cFileIO file;
  if (!file.create(out, fmWrite))
    return fail(std::string(out) + ": cannot be created: " + std::strerror(errno));
  const std::vector<unsigned char>& data = bytes.bytes();
  if (!file.writef(data.data(), static_cast<unsigned int>(data.size())))
    return fail(std::string(out) + ": write failure");
  return 0;
}

// ---- match ------------------------------------------------------------------------------

// Walks the tree as find_match does and says what each definition's rules made of the
// block.
void explain(cScanSignature* first, const unsigned char* data, unsigned int size,
             unsigned int avail, int depth) {
  for (cScanSignature* n = first; n; n = n->nextSig()) {
    const std::string indent(2 * static_cast<size_t>(depth), ' ');
    const unsigned char* d = data;
    unsigned int s = size, a = avail;
    std::string scope = "whole range";
    if (n->subset) {
      const unsigned int at = n->subset->subset(d, a);
      if (at == cScanSigSubset::kNotFound) {
        scope = "subset not found: whole range";
      } else if (at >= s || at >= a) {
        std::printf("%s%s: skipped, its subset starts at %u, past the range\n", indent.c_str(),
                    n->name.c_str(), at);
        continue;
      } else {
        scope = "subset from " + std::to_string(at);
        d += at;
        s -= at;
        a -= at;
      }
    }
    std::printf("%s%s (%s, %s):\n", indent.c_str(), n->name.c_str(),
                hitModeText(n->hitMode).c_str(), scope.c_str());
    if (!n->hasStrRules()) std::printf("%s  no start rules\n", indent.c_str());
    for (cScanSigRule* r = n->first_str(); r; r = n->next_str(r)) {
      std::printf("%s  %s  %s\n", indent.c_str(), r->match(d, s, a) ? "hit " : "miss",
                  ruleText(*r).c_str());
    }
    if (n->firstChildSig()) explain(n->firstChildSig(), d, s, a, depth + 1);
  }
}

int match(const sArgs& a) {
  if (a.positional.size() != 2) return usage("match takes a rules file and a sample file");
  unsigned long long offset = 0, block = 512;
  if (a.value("--offset") && !parseNumber(a.value("--offset"), offset))
    return usage("bad --offset");
  if (a.value("--block") &&
      (!parseNumber(a.value("--block"), block) || block == 0 || block > (64u << 20)))
    return usage("bad --block");
  cCustomSignaturesTree tree;
  if (!loadRules(a.positional[0].c_str(), tree)) return 1;
  cFileIO sample;
  const char* path = a.positional[1].c_str();
  if (!sample.open(path, fmRead))
    return fail(std::string(path) + ": cannot be opened: " + std::strerror(errno));
  if (offset >= sample.size()) return fail(std::string(path) + ": the offset is past the end");
  const unsigned long long avail = std::min<unsigned long long>(
      sample.size() - offset, std::max<unsigned long long>(block, cRawScanner::kLookahead));
  std::vector<unsigned char> bytes(static_cast<size_t>(avail));
  if (!sample.set_fp(offset) || !sample.readf(bytes.data(), static_cast<unsigned int>(avail)))
    return fail(std::string(path) + ": read failure");
  const auto size = static_cast<unsigned int>(std::min(block, avail));
  if (a.has("--why"))
    explain(tree.firstSig(), bytes.data(), size, static_cast<unsigned int>(avail), 0);
  const cScanSignature* found =
      tree.find_match(bytes.data(), size, static_cast<unsigned int>(avail), offset);
  if (found)
    std::printf("match: %s [%s]\n", definitionPath(found).c_str(), found->ext.c_str());
  else
    std::printf("match: none\n");
  return 0;
}

// ---- scan -------------------------------------------------------------------------------

// Copies length bytes from offset of in to out: inside the kernel where it can, and
// through a buffer for what it cannot (another file system, a device).
bool copyRange(cFileIO& in, cFileIO& out, unsigned long long offset, unsigned long long length) {
  const int from = static_cast<int>(in.handle()), to = static_cast<int>(out.handle());
  auto at = static_cast<off64_t>(offset);
  unsigned long long left = length;
  while (left > 0) {
    const ssize_t n =
        copy_file_range(from, &at, to, nullptr, std::min<unsigned long long>(left, 1ull << 30), 0);
    if (n <= 0) break;
    left -= static_cast<unsigned long long>(n);
  }
  if (left == 0) return true;
  if (!in.set_fp(static_cast<unsigned long long>(at))) return false;
  std::vector<unsigned char> buffer(std::min<unsigned long long>(left, 1 << 20));
  while (left > 0) {
    const auto n = static_cast<unsigned int>(std::min<unsigned long long>(left, buffer.size()));
    if (!in.readf(buffer.data(), n) || !out.writef(buffer.data(), n)) return false;
    left -= n;
  }
  return true;
}

bool carve(const char* image, const char* dir, const sFoundFile& f, bool force,
           std::string& error) {
  char name[64];
  std::snprintf(name, sizeof name, "/%012llx.", f.offset);
  const std::string path = std::string(dir) + name + f.definition->ext.c_str();
  if (exists(path.c_str()) && !force) {
    error = path + ": exists (use --force)";
    return false;
  }
  cFileIO in, out;
  if (!in.open(image, fmRead)) {
    error = std::string(image) + ": cannot be read for carving";
    return false;
  }
  if (!out.create(path.c_str(), fmWrite)) {
    error = path + ": cannot be created: " + std::strerror(errno);
    return false;
  }
  if (!copyRange(in, out, f.offset, f.length)) {
    error = path + ": carving failed: " + std::strerror(errno);
    return false;
  }
  return true;
}

// Files found per extension and per way of ending, on stderr.
void summarise(const std::vector<sFoundFile>& found, unsigned long long walksSkipped,
               double seconds) {
  std::map<std::string, std::map<std::string, size_t>> byExtension;
  for (const sFoundFile& f : found) ++byExtension[f.definition->ext.c_str()][f.how];
  std::fprintf(stderr, "qvraci-rules: %zu files in %.1f s\n", found.size(), seconds);
  for (const auto& [extension, hows] : byExtension) {
    size_t total = 0;
    std::string ways;
    for (const auto& [how, count] : hows) {
      total += count;
      ways += (ways.empty() ? "" : ", ") + how + " " + std::to_string(count);
    }
    std::fprintf(stderr, "  %-8s %6zu  %s\n", extension.c_str(), total, ways.c_str());
  }
  if (walksSkipped)
    std::fprintf(stderr, "  %llu starts lay in bytes already walked: their rules ended them\n",
                 walksSkipped);
}

int scan(const sArgs& a) {
  if (a.positional.size() != 2) return usage("scan takes a rules file and an image");
  sScanOptions options;
  unsigned long long number = 0;
  if (const char* b = a.value("--block")) {
    if (!parseNumber(b, number) || (number != 512 && number != 4096))
      return usage("--block is 512 or 4096");
    options.block = static_cast<unsigned int>(number);
  }
  if (const char* n = a.value("--align")) {
    if (!parseNumber(n, number) || number == 0 || number > options.block ||
        options.block % number != 0)
      return usage("--align is a divisor of the block size (1 for any byte)");
    options.align = static_cast<unsigned int>(number);
  }
  if (const char* m = a.value("--max-size")) {
    if (!parseSize(m, number) || number == 0) return usage("bad --max-size (a size: 64M, 1G)");
    options.maxSize = number;
  }
  const std::string report = a.value("--report") ? a.value("--report") : "text";
  if (report != "text" && report != "csv" && report != "json")
    return usage("--report is csv or json");
  options.walk = !a.has("--no-walk");
  const char* dir = a.value("--carve");
  if (dir && !exists(dir) && mkdir(dir, 0777) != 0)
    return fail(std::string(dir) + ": cannot be made: " + std::strerror(errno));

  cCustomSignaturesTree tree;
  if (!loadRules(a.positional[0].c_str(), tree)) return 1;
  const char* image = a.positional[1] == "-" ? "/dev/stdin" : a.positional[1].c_str();
  // A pipe cannot be read again at a structure's parts: its files end by their rules.
  struct stat st;
  if (options.walk && stat(image, &st) == 0 && !S_ISREG(st.st_mode) && !S_ISBLK(st.st_mode)) {
    std::fprintf(stderr,
                 "qvraci-rules: %s is read as a stream: structures are not walked, files "
                 "end by their rules\n",
                 a.positional[1].c_str());
    options.walk = false;
  }
  if (dir && a.positional[1] == "-")
    return fail("--carve needs an image that can be read again, not standard input");
  std::signal(SIGINT, onInterrupt);
  const bool showProgress = isatty(2);
  const auto started = std::chrono::steady_clock::now();
  auto lastShown = started;
  std::vector<sFoundFile> found;
  std::string error;
  bool carveFailed = false;
  if (report == "csv") std::printf("offset,length,definition,extension,ended\n");
  if (report == "json") std::printf("[");
  auto onFile = [&](const sFoundFile& f) {
    found.push_back(f);
    const std::string path = definitionPath(f.definition);
    if (report == "csv") {
      std::printf("%llu,%llu,%s,%s,%s\n", f.offset, f.length, csvText(path).c_str(),
                  csvText(f.definition->ext.c_str()).c_str(), f.how.c_str());
    } else if (report == "json") {
      std::printf("%s\n {\"offset\": %llu, \"length\": %llu, \"definition\": \"%s\", "
                  "\"extension\": \"%s\", "
                  "\"ended\": \"%s\"}",
                  found.size() > 1 ? "," : "", f.offset, f.length, jsonText(path).c_str(),
                  jsonText(f.definition->ext.c_str()).c_str(), f.how.c_str());
    } else {
      std::printf("%12llu %12llu  %-40s %-6s %s\n", f.offset, f.length, path.c_str(),
                  f.definition->ext.c_str(), f.how.c_str());
    }
    std::string why;
    if (dir && !carve(image, dir, f, a.has("--force"), why)) {
      std::fprintf(stderr, "qvraci-rules: %s\n", why.c_str());
      carveFailed = true;
    }
  };
  auto onProgress = [&](unsigned long long done, unsigned long long total) {
    if (!showProgress) return;
    const auto now = std::chrono::steady_clock::now();
    if (now - lastShown < std::chrono::milliseconds(200) && done < total) return;
    lastShown = now;
    const double seconds = std::chrono::duration<double>(now - started).count();
    std::fprintf(stderr, "\r%5.1f%%  %7.1f MB/s  %zu files ", total ? 100.0 * done / total : 100.0,
                 seconds > 0 ? done / seconds / 1e6 : 0.0, found.size());
  };
  cRawScanner scanner(tree, options);
  const bool ok = scanner.scan(image, onFile, onProgress, gStop, error);
  if (showProgress) std::fprintf(stderr, "\n");
  if (report == "json") std::printf("\n]\n");
  if (!ok) return fail(error);
  summarise(found, scanner.walksSkipped(),
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
  if (gStop) std::fprintf(stderr, "qvraci-rules: stopped; %zu files found so far\n", found.size());
  return carveFailed || gStop ? 1 : 0;
}

} // namespace

int main(int argc, char** argv) {
  if (argc < 2) return usage("no command");
  const std::string command = argv[1];
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--version") {
      std::printf("%s\n", kVersion);
      return 0;
    }
    if (arg == "--help" || arg == "-h" || (i == 1 && arg == "help")) {
      std::printf("%s", kUsage);
      return 0;
    }
  }
  const sArgs a =
      parseArgs(argc, argv, 2, {"--why", "--force", "--no-walk", "--commented"},
                {"--offset", "--block", "--carve", "--report", "--max-size", "--align"});
  if (!a.error.empty()) return usage(a.error.c_str());
  if (command == "show") return show(a);
  if (command == "check") return check(a);
  if (command == "convert") return convert(a);
  if (command == "export") return exportText(a);
  if (command == "build") return build(a);
  if (command == "match") return match(a);
  if (command == "identify") return identifyCommand(a);
  if (command == "import") return importCommand(a);
  if (command == "scan") return scan(a);
  return usage(("unknown command " + command).c_str());
}
