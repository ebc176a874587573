// qvraci-rules import: the configurations of other carvers as a definition text.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "base/files.h"
#include "commands.h"
#include "scan/importconf.h"
#include "zorb/csigtext.h"

namespace {

constexpr unsigned long long kMaxConfig = 16ull << 20; // far more than any carver's file

bool readConfig(const std::string& path, std::string& out) {
  cFileIO file;
  if (!file.open(path.c_str(), fmRead)) {
    fail(path + ": cannot be opened: " + std::strerror(errno));
    return false;
  }
  if (file.size() > kMaxConfig) {
    fail(path + ": larger than 16 MiB: not a carver's configuration");
    return false;
  }
  out.resize(static_cast<size_t>(file.size()));
  if (!out.empty() && !file.readf(out.data(), static_cast<unsigned int>(out.size()))) {
    fail(path + ": read failure");
    return false;
  }
  return true;
}

std::string baseName(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

} // namespace

int importCommand(const sArgs& a) {
  if (a.positional.size() != 3)
    return usage("import takes a format (foremost, scalpel, photorec), a configuration "
                 "and an output text");
  const std::string& format = a.positional[0];
  eCarverFormat kind;
  if (format == "foremost")
    kind = eCarverFormat::foremost;
  else if (format == "scalpel")
    kind = eCarverFormat::scalpel;
  else if (format == "photorec")
    kind = eCarverFormat::photorec;
  else
    return usage(("unknown format " + format + " (foremost, scalpel, photorec)").c_str());
  const std::string& source = a.positional[1];
  const char* out = a.positional[2].c_str();
  if (exists(out) && !a.has("--force")) return fail(std::string(out) + ": exists (use --force)");
  std::string config;
  if (!readConfig(source, config)) return 1;

  cCustomSignaturesTree tree;
  const bool commented = a.has("--commented");
  const sImported imported = importCarverConfig(kind, config, baseName(source), commented, tree);
  for (const sImportNote& n : imported.notes)
    std::fprintf(stderr, "qvraci-rules: %s:%d: %s: left out\n", source.c_str(), n.line,
                 n.message.c_str());
  const long long definitions = tree.count() - 1; // under the one container
  if (definitions == 0) {
    cCustomSignaturesTree probe;
    const bool hidden = !commented && importCarverConfig(kind, config, "", true, probe).lines > 0;
    return fail(source + ": no definitions to import" +
                (hidden ? " (they are commented out: --commented takes them)" : ""));
  }
  std::string text, error;
  if (!rulesToText(tree, text, error)) return fail(error);
  // A comment after the header says where the definitions came from.
  const size_t header = text.find('\n') + 1;
  text.insert(header, "# imported by qvraci-rules import " + format + " from " + source + "\n");
  if (const sReplaceResult written = file_replace(out, text.data(), text.size()); !written.ok())
    return fail(std::string(out) + ": cannot be written: " + std::strerror(written.error));
  std::fprintf(stderr, "qvraci-rules: %lld definitions from %d lines; %zu left out\n", definitions,
               imported.lines, imported.notes.size());
  return 0;
}
