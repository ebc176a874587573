#include "cli.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <sys/stat.h>

const char kUsage[] =
    "usage: qvraci-rules COMMAND ...\n"
    "  show FILE.qrrs                     the definitions and their rules\n"
    "  check FILE...                      load each file and say whether it is good\n"
    "  convert IN OUT [--force]           load either version, save QVRASI01\n"
    "  export FILE.qrrs                   the definitions as text, on standard output\n"
    "  build TEXT OUT.qrrs [--force]      a rules file from that text\n"
    "  match FILE.qrrs SAMPLE [--offset N] [--block N] [--why]\n"
    "                                     which definition recognises that block\n"
    "  identify FILE.qrrs PATH... [--why] [--report csv|json] [--block N] [--max-size N]\n"
    "                                     which definition recognises each sample file\n"
    "                                     (folders: every file within) and whether it\n"
    "                                     ends the file exactly\n"
    "  import foremost|scalpel|photorec CONFIG OUT.txt [--commented] [--force]\n"
    "                                     another carver's file types as a definition\n"
    "                                     text (build it with build)\n"
    "  scan FILE.qrrs IMAGE [--block 512|4096] [--carve DIR] [--report csv|json]\n"
    "                       [--align N] [--max-size N] [--no-walk] [--force]\n"
    "                                     find files in a disk image, a device, or\n"
    "                                     standard input (IMAGE -)\n"
    "\n"
    "Where a rules file is expected, a definition text (see export) is built in memory.\n"
    "scan reports one line per file: offset, length, definition path, extension and how\n"
    "the file ended; --report csv has a header row. Sizes take K, M, G (KiB, MiB, GiB):\n"
    "--max-size 64M (default 256M). --carve DIR writes each file to DIR (made when\n"
    "missing). --align N: files start at multiples of N bytes (default: the block size;\n"
    "1 finds files embedded at any offset in others). A summary per extension goes to\n"
    "standard error.\n"
    "identify scans each sample alone and says: exact, short by N, long by N, no end (it\n"
    "ran to the sample's end or to --max-size), unrecognised or unreadable; a summary per\n"
    "definition goes to standard error, and the exit status is 1 unless all are exact.\n"
    "import writes one definition per line of the configuration and names each line it\n"
    "leaves out, and why; --commented also takes definitions behind a '#', as the\n"
    "packaged foremost.conf and scalpel.conf ship them.\n"
    "qvraci-rules --version, qvraci-rules COMMAND --help\n";

const char kVersion[] = "qvraci-rules 2.0";

int usage(const char* what) {
  std::fprintf(stderr, "qvraci-rules: %s\n%s", what, kUsage);
  return 2;
}

int fail(const std::string& what) {
  std::fprintf(stderr, "qvraci-rules: %s\n", what.c_str());
  return 1;
}

bool exists(const char* path) {
  struct stat st;
  return stat(path, &st) == 0;
}

bool parseSize(const char* text, unsigned long long& out) {
  if (!text || !*text || text[0] == '-') return false;
  char* end = nullptr;
  errno = 0;
  out = std::strtoull(text, &end, 10);
  if (errno != 0 || end == text) return false;
  const std::string unit(end);
  int shift = 0;
  if (!unit.empty()) {
    const std::string units = "KMGT";
    const size_t at =
        units.find(static_cast<char>(std::toupper(static_cast<unsigned char>(unit[0]))));
    const std::string rest = unit.substr(1);
    if (at == std::string::npos || !(rest.empty() || rest == "B" || rest == "iB")) return false;
    shift = 10 * static_cast<int>(at + 1);
  }
  if (shift && out > (~0ULL >> shift)) return false;
  out <<= shift;
  return true;
}

bool parseNumber(const char* text, unsigned long long& out) {
  if (!text || !*text) return false;
  char* end = nullptr;
  errno = 0;
  out = std::strtoull(text, &end, 0);
  return errno == 0 && *end == 0 && text[0] != '-';
}

sArgs parseArgs(int argc, char** argv, int from, const std::vector<std::string>& flags,
                const std::vector<std::string>& valued) {
  sArgs a;
  for (int i = from; i < argc; ++i) {
    const std::string s = argv[i];
    if (s.rfind("--", 0) != 0) {
      a.positional.push_back(s);
    } else if (std::find(flags.begin(), flags.end(), s) != flags.end()) {
      a.options.push_back({s, ""});
    } else if (std::find(valued.begin(), valued.end(), s) != valued.end()) {
      if (i + 1 >= argc)
        a.error = s + " needs a value";
      else
        a.options.push_back({s, argv[++i]});
    } else {
      a.error = "unknown option " + s;
    }
  }
  return a;
}

std::atomic<bool> gStop{false};

void onInterrupt(int) {
  gStop = true;
}

std::string jsonText(const std::string& s) {
  std::string out;
  for (char c : s) {
    if (c == '"' || c == '\\') out += '\\';
    if (static_cast<unsigned char>(c) < 0x20) {
      char esc[8];
      std::snprintf(esc, sizeof esc, "\\u%04x", c);
      out += esc;
      continue;
    }
    out += c;
  }
  return out;
}

std::string csvText(const std::string& s) {
  std::string out = "\"";
  for (char c : s) out += c == '"' ? std::string("\"\"") : std::string(1, c);
  return out + "\"";
}
