// qvraci-rules match: which definition recognises one block of a sample, and why.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "base/files.h"
#include "commands.h"
#include "describe.h"
#include "scan/identify.h"
#include "scan/scan.h"

namespace {

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

} // namespace

int matchCommand(const sArgs& a) {
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
