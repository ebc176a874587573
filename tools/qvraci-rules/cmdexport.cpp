// qvraci-rules export: the definitions as text, on standard output.
#include <cstdio>
#include <string>

#include "commands.h"
#include "describe.h"
#include "zorb/rulesfile.h"

int exportCommand(const sArgs& a) {
  if (a.positional.size() != 1) return usage("export takes one rules file");
  cCustomSignaturesTree tree;
  if (!loadRules(a.positional[0].c_str(), tree)) return 1;
  std::string text, error;
  if (!rulesBytes(tree, rfText, text, error)) return fail(a.positional[0] + ": " + error);
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    return fail("cannot write to standard output");
  return 0;
}
