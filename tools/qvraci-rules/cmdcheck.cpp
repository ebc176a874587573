// qvraci-rules check: whether each file loads, in either form.
#include <cstdio>
#include <string>

#include "commands.h"
#include "zorb/rulesfile.h"

int checkCommand(const sArgs& a) {
  if (a.positional.empty()) return usage("check takes one or more rules files");
  int bad = 0;
  for (const std::string& path : a.positional) {
    cCustomSignaturesTree tree;
    eRulesForm form = rfBinary;
    const sRulesFileResult loaded = loadRulesFile(path.c_str(), tree, &form);
    if (loaded.ok()) {
      std::printf("%s: ok, %lld definitions (%s)\n", path.c_str(), tree.count(),
                  form == rfText ? "definition text" : "rules file");
    } else {
      std::printf("%s\n", loaded.message.c_str());
      ++bad;
    }
  }
  return bad ? 1 : 0;
}
