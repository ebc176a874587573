// qvraci-rules identify: sample files against a rules file, for writing definitions and
// for checking a rules file in CI against a folder of known files.
#include <csignal>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "base/files.h"
#include "cli.h"
#include "commands.h"
#include "describe.h"
#include "scan/identify.h"

namespace {

std::string verdictText(const sIdentified& s) {
  std::string text = verdictWord(s.verdict);
  if (s.verdict == eVerdict::shortBy || s.verdict == eVerdict::longBy)
    text += " by " + std::to_string(s.by);
  return text;
}

// The start rules of the definition and its ancestors that hit at the sample's first
// byte, each seen through the subsets above it as the tree sees them.
void explainStart(const sIdentified& s, unsigned int block) {
  cFileIO file;
  std::vector<unsigned char> bytes(
      static_cast<size_t>(std::min<unsigned long long>(s.size, cRawScanner::kLookahead)));
  if (!file.open(s.path.c_str(), fmRead) ||
      !file.readf(bytes.data(), static_cast<unsigned int>(bytes.size())))
    return;
  std::vector<cScanSignature*> chain;
  for (auto* n = const_cast<cScanSignature*>(s.file.definition); n; n = n->parentSig())
    chain.insert(chain.begin(), n);
  const unsigned char* d = bytes.data();
  auto a = static_cast<unsigned int>(bytes.size());
  unsigned int size = std::min(block, a);
  for (cScanSignature* n : chain) {
    if (n->subset) {
      const unsigned int at = n->subset->subset(d, a);
      if (at != cScanSigSubset::kNotFound && at < size) {
        d += at;
        size -= at;
        a -= at;
      }
    }
    for (cScanSigRule* r = n->first_str(); r; r = n->next_str(r)) {
      if (r->match(d, size, a))
        std::printf("  start: %s: %s\n", n->name.c_str(), ruleText(*r).c_str());
    }
  }
}

void explainEnd(const sIdentified& s) {
  const sFoundFile& f = s.file;
  if (f.rule)
    std::printf("  end: %s: %s\n", f.how.c_str(), ruleText(*f.rule).c_str());
  else if (f.how == "structure")
    std::printf("  end: its structure, walked to its end\n");
  else if (f.how == "next start")
    std::printf("  end: another file starts at %llu\n", f.length);
  else
    std::printf("  end: %s: no end rule hit and no structure was walked to an end\n",
                f.how.c_str());
}

void printText(const sIdentified& s, bool why, unsigned int block) {
  if (s.verdict == eVerdict::unreadable) {
    std::printf("%s: unreadable: %s\n", s.path.c_str(), s.error.c_str());
  } else if (!s.file.definition) {
    std::printf("%s: %s\n", s.path.c_str(), verdictWord(s.verdict));
    if (why) std::printf("  no definition's rules hit at its first byte (see match --why)\n");
  } else {
    std::printf("%s: %s, %s [%s], %s\n", s.path.c_str(), verdictText(s).c_str(),
                definitionPath(s.file.definition).c_str(), s.file.definition->ext.c_str(),
                s.file.how.c_str());
    if (why) {
      explainStart(s, block);
      explainEnd(s);
    }
  }
}

void printRow(const sIdentified& s, const std::string& report, bool first) {
  const std::string path = s.file.definition ? definitionPath(s.file.definition) : "";
  const std::string ext = s.file.definition ? s.file.definition->ext.c_str() : "";
  const std::string how = s.verdict == eVerdict::unreadable ? s.error : s.file.how;
  if (report == "csv") {
    std::printf("%s,%llu,%s,%s,%llu,%s,%s,%llu\n", csvText(s.path).c_str(), s.size,
                csvText(path).c_str(), csvText(ext).c_str(), s.file.length, csvText(how).c_str(),
                verdictWord(s.verdict), s.by);
  } else {
    std::printf("%s\n {\"path\": \"%s\", \"size\": %llu, \"definition\": \"%s\", "
                "\"extension\": \"%s\", \"length\": %llu, \"ended\": \"%s\", "
                "\"verdict\": \"%s\", \"by\": %llu}",
                first ? "" : ",", jsonText(s.path).c_str(), s.size, jsonText(path).c_str(),
                jsonText(ext).c_str(), s.file.length, jsonText(how).c_str(), verdictWord(s.verdict),
                s.by);
  }
}

struct sTally {
  size_t recognised = 0, exact = 0;
};

void summarise(const std::vector<sIdentified>& results) {
  std::map<eVerdict, size_t> verdicts;
  std::map<std::string, sTally> byDefinition;
  for (const sIdentified& s : results) {
    ++verdicts[s.verdict];
    if (!s.file.definition) continue;
    sTally& t = byDefinition[definitionPath(s.file.definition)];
    ++t.recognised;
    t.exact += s.verdict == eVerdict::exact;
  }
  std::string counts;
  for (const auto& [verdict, count] : verdicts)
    counts += (counts.empty() ? "" : ", ") + std::to_string(count) + " " + verdictWord(verdict);
  std::fprintf(stderr, "qvraci-rules: %zu sample%s: %s\n", results.size(),
               results.size() == 1 ? "" : "s", counts.empty() ? "none" : counts.c_str());
  for (const auto& [definition, t] : byDefinition)
    std::fprintf(stderr, "  %-48s %5zu recognised, %5zu exact\n", definition.c_str(), t.recognised,
                 t.exact);
}

} // namespace

int identifyCommand(const sArgs& a) {
  if (a.positional.size() < 2) return usage("identify takes a rules file and samples");
  unsigned long long block = 512, maxSize = sScanOptions{}.maxSize;
  if (a.value("--block") &&
      (!parseNumber(a.value("--block"), block) || (block != 512 && block != 4096)))
    return usage("--block is 512 or 4096");
  if (a.value("--max-size") && (!parseSize(a.value("--max-size"), maxSize) || maxSize == 0))
    return usage("bad --max-size (a size: 64M, 1G)");
  const std::string report = a.value("--report") ? a.value("--report") : "text";
  if (report != "text" && report != "csv" && report != "json")
    return usage("--report is csv or json");
  cCustomSignaturesTree tree;
  if (!loadRules(a.positional[0].c_str(), tree)) return 1;
  std::vector<std::string> errors;
  const std::vector<std::string> samples =
      gatherSamples({a.positional.begin() + 1, a.positional.end()}, errors);
  for (const std::string& e : errors) std::fprintf(stderr, "qvraci-rules: %s\n", e.c_str());
  if (samples.empty()) return fail("no sample files there");

  std::signal(SIGINT, onInterrupt);
  cIdentifier identifier(tree, static_cast<unsigned int>(block), maxSize);
  std::vector<sIdentified> results;
  if (report == "csv") std::printf("path,size,definition,extension,length,ended,verdict,by\n");
  if (report == "json") std::printf("[");
  for (const std::string& path : samples) {
    if (gStop) break;
    results.push_back(identifier.identify(path, gStop));
    if (report == "text")
      printText(results.back(), a.has("--why"), static_cast<unsigned int>(block));
    else
      printRow(results.back(), report, results.size() == 1);
  }
  if (report == "json") std::printf("\n]\n");
  std::fflush(stdout); // the report before the summary, when both go to one place
  summarise(results);
  if (gStop) std::fprintf(stderr, "qvraci-rules: stopped\n");
  bool good = errors.empty() && !gStop;
  for (const sIdentified& s : results) good = good && isGood(s.verdict);
  return good ? 0 : 1;
}
