// Rules files on disk, in either form: the binary rules file ("QVRASI01", and "QVRASI00"
// read) and the definition text (csigtext.h). Everything that opens or saves definitions
// goes through these two functions.
#pragma once

#include <string>
#include <string_view>

#include "customsig.h"

enum eRulesForm { rfBinary = 0, rfText = 1 };

// What a load or save came to. message names the file, the form tried and the reason:
// "rules.qrrs: rules file QVRASI01: truncated at byte 1290",
// "rules.txt: definition text, line 12: unknown line: it begins with \"stat\"".
struct sRulesFileResult {
  enum eOutcome {
    roOk,
    roCannotOpen,   // not opened or read (or too large): nothing changed
    roDamaged,      // not definitions, or broken: the tree holds what was read before
    roCannotCreate, // the new file could not be made: nothing changed on disk
    roCannotWrite,  // written, flushed or renamed in part: the old file is whole
  };
  eOutcome outcome = roOk;
  std::string message;
  bool ok() const { return outcome == roOk; }
};

// Larger files are refused as not being definitions: the largest real sets are a few MiB.
constexpr unsigned long long kMaxRulesFile = 256ull << 20;

// Loads the definitions of the file at path, in either form, after the tree's top-level
// nodes (so a load into a tree that has nodes merges). form, when given, receives the form
// the file is in.
sRulesFileResult loadRulesFile(const char* path, cCustomSignaturesTree& tree,
                               eRulesForm* form = nullptr);
// The same for a file's bytes already in memory; name is the file's, for messages.
sRulesFileResult loadRulesBytes(const char* name, std::string_view bytes,
                                cCustomSignaturesTree& tree, eRulesForm* form = nullptr);

// The tree's bytes in that form. False with a reason when the text form cannot hold the
// tree (rules of the older kinds, which only a tree built in memory holds).
bool rulesBytes(const cCustomSignaturesTree& tree, eRulesForm form, std::string& out,
                std::string& why);
// Saves the tree to path in that form through file_replace: on any failure the old file is
// whole.
sRulesFileResult saveRulesFile(const char* path, const cCustomSignaturesTree& tree,
                               eRulesForm form);

// The form a file of that name is saved in: the text form for ".txt", else binary.
eRulesForm rulesFormOf(const char* path);
