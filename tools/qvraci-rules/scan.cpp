#include "scan.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "base/files.h"

namespace {

bool canEnd(const cScanSignature* node) {
  for (; node; node = node->parentSig()) {
    if (node->hasEndRules()) return true;
  }
  return false;
}

} // namespace

void cRawScanner::finish(unsigned long long end, const char* how,
                         const std::function<void(const sFoundFile&)>& onFile) {
  end = std::min(std::max(end, myOpen.start), mySourceSize);
  onFile({myOpen.start, end - myOpen.start, myOpen.node, how});
  myOpen = {};
}

// Asks the open file's definition chain whether the file ends here; on success reports
// it, reading the end offset back for the size field and forward for the other rules.
bool cRawScanner::checkEnd(const unsigned char* data, unsigned int size, unsigned int avail,
                           unsigned long long pos,
                           const std::function<void(const sFoundFile&)>& onFile) {
  // shouldEnd clears the start of the definition whose rule fired; remember them to tell
  // afterwards which rule it was.
  myChain.clear(); // keeps its capacity: this runs for every block of an open file
  for (cScanSignature* n = myOpen.node; n; n = n->parentSig()) myChain.push_back({n, n->startPos});
  unsigned int endOffset = 0;
  if (!myTree.shouldEnd(myOpen.node, data, size, avail, pos, endOffset)) return false;
  int kind = 0;
  for (const auto& [node, start] : myChain) {
    if (!node->hasEndRules()) continue;
    if (start == cScanSignature::kNoFile) break; // no file was open there: ends at once
    unsigned int probe = 0;
    for (cScanSigEndRule* r = node->first_end(); r && !kind; r = node->next_end(r)) {
      if (r->match(data, size, avail, pos - start, probe)) kind = r->typeOf();
    }
    if (kind) break;
  }
  if (kind == 1) {
    finish(pos >= endOffset ? pos - endOffset : 0, "size field", onFile);
  } else {
    finish(pos + endOffset, kind == 4 || kind == 5 ? "end of text" : "end rule", onFile);
  }
  return true;
}

bool cRawScanner::walkEnd(cByteSource& source,
                          const std::function<void(const sFoundFile&)>& onFile) {
  if (!myOptions.walk) return false;
  const eWalker walker = walkerFor(myOpen.node->ext.c_str());
  if (walker == eWalker::none) return false;
  const unsigned long long length = walkLength(walker, source, myOpen.start, myOptions.maxSize);
  if (length == 0) return false;
  myWalkedEnd = myOpen.start + length;
  finish(myWalkedEnd, "structure", onFile);
  return true;
}

void cRawScanner::block(cByteSource& source, const unsigned char* data, unsigned int size,
                        unsigned int avail, unsigned long long pos,
                        const std::function<void(const sFoundFile&)>& onFile) {
  if (myOpen.node) {
    if (!canEnd(myOpen.node) || !checkEnd(data, size, avail, pos, onFile)) {
      if (pos + size - myOpen.start >= myOptions.maxSize) {
        finish(myOpen.start + myOptions.maxSize, "size cap", onFile);
      }
    }
  }
  cScanSignature* found =
      myGate.mayStart(data, avail) ? myTree.find_match(data, size, avail, pos) : nullptr;
  const bool inFile = myOpen.node || pos < myWalkedEnd;
  if (!found || (inFile && found->hitMode != cScanSignature::hmActive)) return;
  if (myOpen.node) finish(pos, "next start", onFile);
  myOpen = {found, pos};
  if (walkEnd(source, onFile)) return;
  if (canEnd(found)) checkEnd(data, size, avail, pos, onFile);
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
  mySourceSize = size;
  myOpen = {};
  myWalkedEnd = 0;
  cMemorySource source(data, size);
  constexpr unsigned long long kProgressStep = 16ull << 20;
  unsigned long long pos = 0;
  for (; pos < size && !stop; pos += myOptions.block) {
    if (pos % kProgressStep == 0) onProgress(pos, size);
    const unsigned long long left = size - pos;
    block(source, data + pos,
          static_cast<unsigned int>(std::min<unsigned long long>(left, myOptions.block)),
          static_cast<unsigned int>(std::min<unsigned long long>(left, kLookahead)), pos, onFile);
  }
  if (myOpen.node) finish(std::min(pos, size), stop ? "stopped" : "source end", onFile);
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
  cFileIO source;
  if (!source.open(path, fmRead)) {
    error = std::string(path) + ": cannot be opened: " + std::strerror(errno);
    return false;
  }
  // A regular file is scanned in place through a mapping, which spares copying it.
  if (cMappedFile mapped(static_cast<int>(source.handle())); mapped.data()) {
    scanMemory(
        mapped.data(), mapped.size(), onFile,
        [&](unsigned long long done, unsigned long long total) {
          mapped.release(done);
          onProgress(done, total);
        },
        stop);
    return true;
  }
  // Block devices report no size through fstat; seeking to the end finds it.
  unsigned long long total = source.size();
  if (total == 0 && source.set_fp_end(0)) {
    total = static_cast<unsigned long long>(lseek(static_cast<int>(source.handle()), 0, SEEK_CUR));
    source.set_fp(0);
  }
  mySourceSize = total;
  myOpen = {};
  myWalkedEnd = 0;
  cFileSource walkSource(static_cast<int>(source.handle()), total);
  const size_t chunk = 8u << 20;
  std::vector<unsigned char> buffer(chunk + kLookahead);
  unsigned long long bufferPos = 0; // the source offset of buffer[0]
  size_t have = 0;
  bool atEnd = false;
  unsigned long long pos = 0;
  while (pos < total && !stop) {
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
      if (atEnd) mySourceSize = total = bufferPos + have;
      onProgress(pos, total);
    }
    const unsigned long long left = bufferPos + have - pos;
    if (left == 0) break;
    block(walkSource, buffer.data() + (pos - bufferPos),
          static_cast<unsigned int>(std::min<unsigned long long>(left, myOptions.block)),
          static_cast<unsigned int>(std::min<unsigned long long>(left, kLookahead)), pos, onFile);
    pos += myOptions.block;
  }
  if (myOpen.node) finish(std::min(pos, total), stop ? "stopped" : "source end", onFile);
  onProgress(std::min(pos, total), total);
  return true;
}
