// A small raw-scan engine over the signature tree.
//
// Policy (also in the README):
// - The source is read block by block. For each block, `size` is the block (shorter at
//   the end of the source) and `avail` reaches up to kLookahead bytes past the block's
//   start, so that fixed-position rules can read header fields beyond the block.
// - An open file is asked first whether it ends in this block (shouldEnd, through the
//   definition and its ancestors). The size-field rule counts back from the block's
//   position (end = position - endOffset); every other end rule counts forward (end =
//   position + endOffset).
// - Then find_match looks for a file start at the block's start, or with an alignment below
//   the block size at every multiple of it within the block (each such place is asked as
//   the start of a block of its own; the start gate keeps this fast). An "Always (active)" hit
//   starts a new file even while one is open, which then ends here ("next start"); an "If no other
//   hits (passive)" hit starts one only when none is open. A new file is also asked at once whether
//   it ends within its first block.
// - A file that meets no end rule ends at the next start, at the size cap, or at the end
//   of the source.
// - End rules see the block and, beyond it, as many bytes as the longest end pattern, so a
//   footer that crosses into the next block, or ends on the block's last byte, is found
//   while the file is still open.
// - Before that, a file whose extension has a structure walker (walk.h) is walked from its
//   start; when the walk reaches the file's end within the size cap, the file ends there
//   ("structure") and its end rules are not asked. It is reported at once, but counts as
//   open up to its end: passive hits inside it start nothing, hits of its own kind are its
//   own parts (a ZIP's local headers, a JPEG's thumbnail) and start nothing either, and
//   other active hits start files of their own (embedded or written over it) without
//   cutting it. When the structure is broken, the end rules decide as above.
// - A start off the block grid (with an alignment below the block size) is taken for a
//   file embedded in another, or for bytes that look like a start by chance: it is
//   reported only when its structure is walked to an end, and an open file goes on.
// - Walking stays linear in the source: a start inside bytes that a walk of its kind has
//   read already is not walked, and all walks together read at most kWalkBudgetFactor
//   times the source (plus kWalkBudgetFree); past that the end rules decide.
#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "startgate.h"
#include "walk.h"
#include "zorb/customsig.h"

struct sFoundFile {
  unsigned long long offset = 0;
  unsigned long long length = 0;
  const cScanSignature* definition = nullptr; // of the tree the scanner was given
  std::string how; // "size field", "end rule", "end of text", "structure", "next start", "size
                   // cap", "source end", "stopped"
  const cScanSigEndRule* rule = nullptr; // the end rule that ended it, if one did
  unsigned long long past = 0;           // how far past the source's end its rules put the end
};

struct sScanOptions {
  unsigned int block = 512;
  unsigned long long maxSize = 256ULL << 20;
  bool walk = true;       // use the structure walkers
  unsigned int align = 0; // files start at multiples of this (0: of the block size)
  bool firstOnly = false; // only the file at the source's first byte: the scan ends with it
};

class cRawScanner {
public:
  static constexpr unsigned int kLookahead = 64 * 1024;
  // All walks of one scan together read at most this many times the source, and this much.
  static constexpr unsigned long long kWalkBudgetFactor = 4, kWalkBudgetFree = 256ull << 20;

  // The scanner matches a copy of the tree of its own and only reads the tree, here and
  // in reports, which name the tree's definitions and rules: the tree must outlive the
  // reports and not change while the scanner lives, and scanners on one tree may run on
  // several threads at once.
  cRawScanner(const cCustomSignaturesTree& tree, const sScanOptions& options);
  // When the tree cannot be copied (a rule whose pattern no longer compiles), scan() says
  // so and a scan in memory finds nothing.

  // Scans the readable file at path (a regular file or a block device). Calls onFile for
  // every file found, in order, and onProgress now and then with the bytes done. Stops
  // early, reporting what was found, when stop becomes true. False with a message when
  // the source cannot be read.
  bool
  scan(const char* path, const std::function<void(const sFoundFile&)>& onFile,
       const std::function<void(unsigned long long done, unsigned long long total)>& onProgress,
       const std::atomic<bool>& stop, std::string& error);

  // The same over bytes in memory.
  void scanBytes(const unsigned char* data, unsigned long long size,
                 const std::function<void(const sFoundFile&)>& onFile);
  // Starts whose walk was left to the end rules, as walks of their kind had read their
  // bytes already or the scan's walking budget was spent.
  unsigned long long walksSkipped() const { return myWalksSkipped; }
  void scanMemory(
      const unsigned char* data, unsigned long long size,
      const std::function<void(const sFoundFile&)>& onFile,
      const std::function<void(unsigned long long done, unsigned long long total)>& onProgress,
      const std::atomic<bool>& stop);

private:
  struct sNoted { // what a definition noted when its file opened
    cScanSignature* node = nullptr;
    unsigned long long startPos = 0, fileSize = 0;
  };
  struct sOpen {
    cScanSignature* node = nullptr;
    unsigned long long start = 0;
    std::vector<sNoted> chain; // node and its ancestors
  };
  // One block at pos of source: data holds avail bytes, of which size belong to the block.
  void block(cByteSource& source, const unsigned char* data, unsigned int size, unsigned int avail,
             unsigned long long pos, const std::function<void(const sFoundFile&)>& onFile);
  void startAt(cByteSource& source, const unsigned char* data, unsigned int rest,
               unsigned int avail, unsigned long long pos,
               const std::function<void(const sFoundFile&)>& onFile);
  eWalker walkerOf(const cScanSignature* node); // remembered per definition
  // The given tree's end rule that a rule of the copy copies.
  const cScanSigEndRule* originalRule(const cScanSigEndRule* rule) const;
  void restoreOpen();
  bool checkEnd(const unsigned char* data, unsigned int range, unsigned int avail,
                unsigned long long pos, const std::function<void(const sFoundFile&)>& onFile);
  // Ends the file that has just opened where its structure ends, if a walker finds that.
  bool walkEnd(cByteSource& source, eWalker walker,
               const std::function<void(const sFoundFile&)>& onFile);
  void begin(unsigned long long size);
  void finishAtEnd(unsigned long long end, bool stopped,
                   const std::function<void(const sFoundFile&)>& onFile);
  void finish(unsigned long long end, const char* how,
              const std::function<void(const sFoundFile&)>& onFile,
              const cScanSigEndRule* rule = nullptr);
  // False once a scan of the first file only has that file, or none starts there.
  bool goesOn(unsigned long long pos) const {
    return !myOptions.firstOnly || pos == 0 || (myOpen.node && myFinished == 0);
  }

  sScanOptions myOptions;
  cCustomSignaturesTree myTree; // the copy that matching writes into
  tNodeOrigins myOrigins;
  std::unordered_map<const cScanSigEndRule*, const cScanSigEndRule*> myRuleOrigins;
  bool myReady = false;
  cStartGate myGate;             // spares asking the tree about blocks that no definition can start
  unsigned int myEndOverlap = 0; // how far end rules look past the block
  sOpen myOpen;
  unsigned long long mySourceSize = 0;
  unsigned long long myFinished = 0;  // files reported by this scan
  unsigned long long myWalkedEnd = 0; // the end of the last file ended by its structure
  eWalker myWalkedKind = eWalker::none;
  // Per kind of walk: how far walks of that kind have read.
  std::array<unsigned long long, static_cast<size_t>(eWalker::count)> myCovered{};
  unsigned long long myWalkBudget = 0; // bytes that walks may still read
  unsigned long long myWalksSkipped = 0;
  std::unordered_map<const cScanSignature*, eWalker> myWalkers;
  std::vector<unsigned int> myCandidates; // places in the block where files may start
  // Told the bytes each walk read, from its start, while a mapped file is scanned.
  std::function<void(unsigned long long from, unsigned long long to)> myWalkedAhead;
};
