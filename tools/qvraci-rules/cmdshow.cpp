// qvraci-rules show: the definitions of a rules file, their rules and counts.
#include <cstdio>
#include <string>

#include "commands.h"
#include "describe.h"

int showCommand(const sArgs& a) {
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
