// qvraci-rules scan: files found (and carved) in a disk image, a device or a pipe.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "base/files.h"
#include "commands.h"
#include "describe.h"
#include "scan/identify.h"
#include "scan/scan.h"

namespace {

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

} // namespace

int scanCommand(const sArgs& a) {
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
