// qvraci-rules convert and build: definitions from a file in either form, saved in the form
// that the output's name asks for (".txt": the text form; else a QVRASI01 rules file).
#include <string>

#include "commands.h"
#include "describe.h"
#include "zorb/rulesfile.h"

int convertCommand(const sArgs& a) {
  if (a.positional.size() != 2) return usage("convert takes an input and an output file");
  const char* out = a.positional[1].c_str();
  if (exists(out) && !a.has("--force")) return fail(std::string(out) + ": exists (use --force)");
  cCustomSignaturesTree tree;
  if (!loadRules(a.positional[0].c_str(), tree)) return 1;
  const sRulesFileResult saved = saveRulesFile(out, tree, rulesFormOf(out));
  return saved.ok() ? 0 : fail(saved.message);
}
