#include "scan.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "base/files.h"

namespace {

bool canEnd(const cScanSignature* node) {
  for (; node; node = node->parentSig()) {
    if (node->hasEndRules()) return true;
  }
  return false;
}

// The length of the longest pattern among the tree's end rules.
unsigned int longestEndPattern(const cCustomSignaturesTree& tree) {
  // Rules of the older string kinds are read back as patterns; a tree built in memory may
  // still hold them, and none is longer than this.
  constexpr unsigned int kOlderKinds = 256;
  unsigned int longest = 0;
  for (const cTreeItem* p = tree.first(); p; p = p->nextInOrder()) {
    const auto* n = static_cast<const cScanSignature*>(p);
    for (const cScanSigEndRule* r = n->first_end(); r; r = n->next_end(r)) {
      const int type = r->typeOf();
      if (type == etAdvHex) {
        const auto count = static_cast<const cScanSigEndRuleUniHex*>(r)->pattern().count();
        longest = std::max(longest, static_cast<unsigned int>(count));
      } else if (type == etAsciiString || type == etUnicodeString || type == etByteSequence) {
        longest = std::max(longest, kOlderKinds);
      }
    }
  }
  return longest;
}

} // namespace

cRawScanner::cRawScanner(const cCustomSignaturesTree& tree, const sScanOptions& options)
    : myOptions(options), myReady(tree.copyTo(myTree, myOrigins)), myGate(myTree),
      myEndOverlap(std::min(longestEndPattern(myTree), kLookahead / 2)) {
  // Copies keep their rules in the same order.
  for (const auto& [copy, original] : myOrigins) {
    const cScanSigEndRule* theirs = original->first_end();
    for (const cScanSigEndRule* r = copy->first_end(); r && theirs;
         r = copy->next_end(r), theirs = original->next_end(theirs))
      myRuleOrigins.emplace(r, theirs);
  }
}

const cScanSigEndRule* cRawScanner::originalRule(const cScanSigEndRule* rule) const {
  const auto at = myRuleOrigins.find(rule);
  return at == myRuleOrigins.end() ? nullptr : at->second;
}

void cRawScanner::finish(unsigned long long end, const char* how,
                         const std::function<void(const sFoundFile&)>& onFile,
                         const cScanSigEndRule* rule) {
  end = std::max(end, myOpen.start);
  const unsigned long long past = end > mySourceSize ? end - mySourceSize : 0;
  end = std::min(end, mySourceSize);
  ++myFinished;
  onFile(
      {myOpen.start, end - myOpen.start, myOrigins.at(myOpen.node), how, originalRule(rule), past});
  myOpen = {};
}

// Asks the open file's definition chain, nearest first, whether the file ends here, as
// the tree's own end check does; on success reports it, reading the end offset back for
// the size field and forward for the other rules. The range reaches past the block by the
// longest end pattern, so a footer that crosses into the next block is found; a text end
// found there is the one that the next block would have given.
bool cRawScanner::checkEnd(const unsigned char* data, unsigned int range, unsigned int avail,
                           unsigned long long pos,
                           const std::function<void(const sFoundFile&)>& onFile) {
  for (cScanSignature* n = myOpen.node; n; n = n->parentSig()) {
    if (!n->hasEndRules()) continue;
    if (n->startPos == cScanSignature::kNoFile) { // no file was open there: ends at once
      finish(pos, "end rule", onFile);
      return true;
    }
    for (cScanSigEndRule* r = n->first_end(); r; r = n->next_end(r)) {
      unsigned int endOffset = 0;
      if (!r->match(data, range, avail, pos - n->startPos, endOffset)) continue;
      const int kind = r->typeOf();
      n->startPos = cScanSignature::kNoFile;
      if (kind == etSizeField)
        finish(pos >= endOffset ? pos - endOffset : 0, "size field", onFile, r);
      else
        finish(pos + endOffset,
               kind == etAsciiTextEnd || kind == etUnicodeTextEnd ? "end of text" : "end rule",
               onFile, r);
      return true;
    }
  }
  return false;
}

bool cRawScanner::walkEnd(cByteSource& source, eWalker walker,
                          const std::function<void(const sFoundFile&)>& onFile) {
  if (!myOptions.walk || walker == eWalker::none) return false;
  // Bytes that a walk of this kind has read already are not walked again, and all walks
  // together read a bounded multiple of the source: a crafted source full of starts whose
  // structures run on to its end would otherwise be read once per start.
  unsigned long long& covered = myCovered[static_cast<size_t>(walker)];
  if (myOpen.start < covered || myWalkBudget == 0) {
    ++myWalksSkipped;
    return false;
  }
  unsigned long long reached = myOpen.start;
  const unsigned long long length =
      walkLength(walker, source, myOpen.start, myOptions.maxSize, &reached);
  // A walk that found its end covers the file (it may have looked further ahead in large
  // pieces); one that did not, all it read.
  if (length) reached = myOpen.start + length;
  if (myWalkedAhead) myWalkedAhead(myOpen.start, reached);
  covered = std::max(covered, reached);
  myWalkBudget -= std::min(myWalkBudget, reached - myOpen.start);
  if (length == 0) return false;
  myWalkedEnd = myOpen.start + length;
  myWalkedKind = walker;
  finish(myWalkedEnd, "structure", onFile);
  return true;
}

// A file still open where the source ends ends there, unless its size field (read as it
// opened, and asked only block by block) puts its end before; one that puts it beyond
// tells how far.
void cRawScanner::finishAtEnd(unsigned long long end, bool stopped,
                              const std::function<void(const sFoundFile&)>& onFile) {
  if (!myOpen.node || (myOptions.firstOnly && myFinished)) return;
  const cScanSigEndRuleMatchSize* beyond = nullptr; // the nearest size field past the end
  unsigned long long claimed = 0;
  for (const sNoted& n : myOpen.chain) {
    const cScanSigEndRuleMatchSize* size = n.node->getSizeEndRule();
    if (stopped || !size || n.startPos == cScanSignature::kNoFile) continue;
    if (n.startPos + size->fileSize() <= end) {
      finish(n.startPos + size->fileSize(), "size field", onFile, size);
      return;
    }
    if (!beyond) {
      beyond = size;
      claimed = n.startPos + size->fileSize();
    }
  }
  // The file is cut at the source's end; its size field says how much of it is missing.
  finish(beyond ? claimed : end, stopped ? "stopped" : "source end", onFile, beyond);
}

void cRawScanner::begin(unsigned long long size) {
  mySourceSize = size;
  myFinished = 0;
  myOpen = {};
  myWalkedEnd = 0;
  myWalkedKind = eWalker::none;
  myCovered.fill(0);
  myWalkBudget = kWalkBudgetFactor * size + kWalkBudgetFree;
  myWalksSkipped = 0;
}

void cRawScanner::block(cByteSource& source, const unsigned char* data, unsigned int size,
                        unsigned int avail, unsigned long long pos,
                        const std::function<void(const sFoundFile&)>& onFile) {
  if (myOpen.node) {
    if (!canEnd(myOpen.node) ||
        !checkEnd(data, std::min(avail, size + myEndOverlap), avail, pos, onFile)) {
      if (pos + size - myOpen.start >= myOptions.maxSize) {
        finish(myOpen.start + myOptions.maxSize, "size cap", onFile);
      }
    }
  }
  // The places in the block where files may start, on multiples of the alignment.
  const unsigned long long step = myOptions.align ? myOptions.align : myOptions.block;
  const unsigned long long first = (step - pos % step) % step;
  if (first >= size) return;
  myGate.candidates(data, static_cast<unsigned int>(first), size,
                    static_cast<unsigned int>(std::min<unsigned long long>(step, size)), avail,
                    myCandidates);
  for (const unsigned int q : myCandidates) {
    startAt(source, data + q, size - q, avail - q, pos + q, onFile);
  }
}

// Asks the tree whether a file starts at pos, where data holds avail bytes of which rest
// are left of the block.
void cRawScanner::startAt(cByteSource& source, const unsigned char* data, unsigned int rest,
                          unsigned int avail, unsigned long long pos,
                          const std::function<void(const sFoundFile&)>& onFile) {
  cScanSignature* found = myTree.find_match(data, std::min(myOptions.block, avail), avail, pos);
  if (!found) return;
  const bool inWalked = pos < myWalkedEnd;
  const eWalker walker = walkerOf(found);
  // Passive hits start nothing within a file; a walked file's own parts that look like a
  // file of its kind (a ZIP's local headers, a JPEG's thumbnail) are not files either.
  if (((myOpen.node || inWalked) && found->hitMode != cScanSignature::hmActive) ||
      (inWalked && walker != eWalker::none && walker == myWalkedKind)) {
    restoreOpen();
    return;
  }
  // Off the block grid, a start is a file embedded in another (or in the bytes between
  // files), or bytes that look like a start by chance, which are far more common there: it
  // is a file of its own only when its structure ends, and an open file goes on either way.
  if (pos % myOptions.block != 0) {
    const sOpen outer = std::exchange(myOpen, sOpen{found, pos, {}});
    walkEnd(source, walker, onFile);
    myOpen = outer;
    restoreOpen();
    return;
  }
  if (myOpen.node) finish(pos, "next start", onFile);
  myOpen = {found, pos, {}};
  for (cScanSignature* n = found; n; n = n->parentSig()) {
    const cScanSigEndRuleMatchSize* size = n->getSizeEndRule();
    myOpen.chain.push_back({n, n->startPos, size ? size->fileSize() : 0});
  }
  if (walkEnd(source, walker, onFile)) return;
  if (canEnd(found)) checkEnd(data, std::min(avail, rest + myEndOverlap), avail, pos, onFile);
}

// Asking the tree at a place notes a start in every definition that hit there; where no
// file started, the open file's definitions get back what they noted when it opened.
void cRawScanner::restoreOpen() {
  for (const sNoted& n : myOpen.chain) {
    n.node->startPos = n.startPos;
    if (cScanSigEndRuleMatchSize* size = n.node->getSizeEndRule()) size->setFileSize(n.fileSize);
  }
}

eWalker cRawScanner::walkerOf(const cScanSignature* node) {
  if (!myOptions.walk) return eWalker::none;
  auto [at, added] = myWalkers.try_emplace(node, eWalker::none);
  if (added) at->second = walkerFor(node->ext.c_str());
  return at->second;
}

void cRawScanner::scanBytes(const unsigned char* data, unsigned long long size,
                            const std::function<void(const sFoundFile&)>& onFile) {
  const std::atomic<bool> never{false};
  scanMemory(
      data, size, onFile, [](unsigned long long, unsigned long long) {}, never);
}

void cRawScanner::scanMemory(
    const unsigned char* data, unsigned long long size,
    const std::function<void(const sFoundFile&)>& onFile,
    const std::function<void(unsigned long long, unsigned long long)>& onProgress,
    const std::atomic<bool>& stop) {
  begin(size);
  cMemorySource source(data, size);
  constexpr unsigned long long kProgressStep = 16ull << 20;
  unsigned long long pos = 0;
  for (; pos < size && !stop && goesOn(pos); pos += myOptions.block) {
    if (pos % kProgressStep == 0) onProgress(pos, size);
    const unsigned long long left = size - pos;
    block(source, data + pos,
          static_cast<unsigned int>(std::min<unsigned long long>(left, myOptions.block)),
          static_cast<unsigned int>(std::min<unsigned long long>(left, kLookahead)), pos, onFile);
  }
  finishAtEnd(std::min(pos, size), stop, onFile);
  onProgress(std::min(pos, size), size);
}

namespace {

// A read-only mapping of a whole regular file; empty when the file cannot be mapped.
class cMappedFile {
public:
  explicit cMappedFile(int fd) {
    struct stat st;
    if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || st.st_size <= 0) return;
    void* p = mmap(nullptr, static_cast<size_t>(st.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
    if (p == MAP_FAILED) return;
    myData = static_cast<const unsigned char*>(p);
    mySize = static_cast<unsigned long long>(st.st_size);
    madvise(p, mySize, MADV_SEQUENTIAL);
  }
  ~cMappedFile() {
    if (myData) munmap(const_cast<unsigned char*>(myData), mySize);
  }
  cMappedFile(const cMappedFile&) = delete;
  cMappedFile& operator=(const cMappedFile&) = delete;

  // Drops the pages before `offset` from this process (the page cache keeps them), so
  // that resident memory stays small however large the file.
  void release(unsigned long long offset) {
    const unsigned long long page = static_cast<unsigned long long>(sysconf(_SC_PAGESIZE));
    const unsigned long long upTo = std::min(offset, mySize) / page * page;
    if (myData && upTo > myReleased) {
      madvise(const_cast<unsigned char*>(myData) + myReleased, upTo - myReleased, MADV_DONTNEED);
      myReleased = upTo;
    }
  }
  // Drops the pages wholly within [from, to) from this process too; they are read again
  // from the page cache when needed.
  void forget(unsigned long long from, unsigned long long to) {
    const unsigned long long page = static_cast<unsigned long long>(sysconf(_SC_PAGESIZE));
    from = std::max(from, myReleased);
    from = (from + page - 1) / page * page;
    to = std::min(to, mySize) / page * page;
    if (myData && to > from)
      madvise(const_cast<unsigned char*>(myData) + from, to - from, MADV_DONTNEED);
  }
  const unsigned char* data() const { return myData; }
  unsigned long long size() const { return mySize; }

private:
  const unsigned char* myData = nullptr;
  unsigned long long mySize = 0;
  unsigned long long myReleased = 0;
};

} // namespace

bool cRawScanner::scan(
    const char* path, const std::function<void(const sFoundFile&)>& onFile,
    const std::function<void(unsigned long long, unsigned long long)>& onProgress,
    const std::atomic<bool>& stop, std::string& error) {
  if (!myReady) {
    error = "the definitions could not be copied for the scan";
    return false;
  }
  cFileIO source;
  if (!source.open(path, fmRead)) {
    error = std::string(path) + ": cannot be opened: " + std::strerror(errno);
    return false;
  }
  // A regular file is scanned in place through a mapping, which spares copying it.
  if (cMappedFile mapped(static_cast<int>(source.handle())); mapped.data()) {
    // What a walk read ahead of the scan is not kept: resident memory stays small however
    // far walks look.
    myWalkedAhead = [&](unsigned long long from, unsigned long long to) {
      mapped.forget(from + 2 * kLookahead, to);
    };
    scanMemory(
        mapped.data(), mapped.size(), onFile,
        [&](unsigned long long done, unsigned long long total) {
          mapped.release(done);
          onProgress(done, total);
        },
        stop);
    myWalkedAhead = nullptr;
    return true;
  }
  // Block devices report no size through fstat; seeking to the end finds it.
  unsigned long long total = source.size();
  if (total == 0 && source.set_fp_end(0)) {
    total = static_cast<unsigned long long>(lseek(static_cast<int>(source.handle()), 0, SEEK_CUR));
    source.set_fp(0);
  }
  begin(total);
  cFileSource walkSource(static_cast<int>(source.handle()), total);
  const size_t chunk = 8u << 20;
  std::vector<unsigned char> buffer(chunk + kLookahead);
  unsigned long long bufferPos = 0; // the source offset of buffer[0]
  size_t have = 0;
  bool atEnd = false;
  unsigned long long pos = 0;
  // A pipe tells no size: it is read until it ends.
  while ((pos < total || !atEnd) && !stop && goesOn(pos)) {
    // Keep the block and its lookahead in the buffer.
    if (!atEnd && pos + myOptions.block + kLookahead > bufferPos + have) {
      const size_t keep = static_cast<size_t>(bufferPos + have - pos);
      std::memmove(buffer.data(), buffer.data() + (pos - bufferPos), keep);
      bufferPos = pos;
      have = keep;
      while (have < buffer.size()) {
        const long long n =
            source.read(buffer.data() + have, static_cast<unsigned int>(buffer.size() - have));
        if (n < 0) {
          error = std::string(path) + ": read failure at " + std::to_string(bufferPos + have);
          return false;
        }
        if (n == 0) {
          atEnd = true;
          break;
        }
        have += static_cast<size_t>(n);
      }
      total = std::max(total, bufferPos + have);
      if (atEnd) total = bufferPos + have;
      mySourceSize = total;
      onProgress(pos, total);
    }
    const unsigned long long left = bufferPos + have - pos;
    if (left == 0) break;
    block(walkSource, buffer.data() + (pos - bufferPos),
          static_cast<unsigned int>(std::min<unsigned long long>(left, myOptions.block)),
          static_cast<unsigned int>(std::min<unsigned long long>(left, kLookahead)), pos, onFile);
    pos += myOptions.block;
  }
  finishAtEnd(std::min(pos, total), stop, onFile);
  onProgress(std::min(pos, total), total);
  return true;
}
