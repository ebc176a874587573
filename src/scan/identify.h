// Identification of sample files: which definition recognises each one at its first byte,
// and where that definition's rules (or the file's structure) end it, against the file's
// real size. Each sample is scanned alone, as a disk image holding only it and unused
// (zeroed) space after it, so the verdict is the one a scan of a disk would give for that
// file; reading stops at the end found or at the size cap, so large samples cost little.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "scan.h"

enum class eVerdict {
  exact,        // ended on the sample's last byte
  shortBy,      // ended `by` bytes before it
  longBy,       // its rules put the end `by` bytes after it
  noEnd,        // ran to the end of the sample, or to the size cap, with no end found
  unrecognised, // no definition recognises its first byte
  unreadable,   // could not be read (`error` says why)
  stopped,      // the identification was stopped
};

struct sIdentified {
  std::string path;
  unsigned long long size = 0; // the sample's real size
  sFoundFile file;             // what the scan found at the first byte
  eVerdict verdict = eVerdict::unrecognised;
  unsigned long long by = 0; // bytes short or long
  std::string error;
};

// A definition's names from the top of the tree down: "Archives/ZIP archive/EPUB book".
std::string definitionPath(const cScanSignature* node);

// "exact", "short", "long", "no end", "unrecognised", "unreadable", "stopped"
const char* verdictWord(eVerdict verdict);
// True when the verdict is a sample recognised and ended exactly.
inline bool isGood(eVerdict verdict) {
  return verdict == eVerdict::exact;
}

class cIdentifier {
public:
  // The tree is asked as a scan asks it, through a copy (see cRawScanner): it must not
  // change while the identifier lives, and results name its definitions.
  cIdentifier(const cCustomSignaturesTree& tree, unsigned int block, unsigned long long maxSize);

  sIdentified identify(const std::string& path, const std::atomic<bool>& stop);

private:
  cRawScanner myScanner;
  unsigned long long myMaxSize;
};

// The regular files among paths and, recursively, within the folders among them, in
// order of path (symbolic links to folders are not followed). What cannot be listed goes
// to errors as "PATH: reason".
std::vector<std::string> gatherSamples(const std::vector<std::string>& paths,
                                       std::vector<std::string>& errors);
