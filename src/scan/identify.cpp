#include "identify.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

const char* verdictWord(eVerdict verdict) {
  switch (verdict) {
  case eVerdict::exact:
    return "exact";
  case eVerdict::shortBy:
    return "short";
  case eVerdict::longBy:
    return "long";
  case eVerdict::noEnd:
    return "no end";
  case eVerdict::unrecognised:
    return "unrecognised";
  case eVerdict::unreadable:
    return "unreadable";
  case eVerdict::stopped:
    return "stopped";
  }
  return "?";
}

std::string definitionPath(const cScanSignature* node) {
  std::string path;
  for (const cScanSignature* n = node; n; n = n->parentSig())
    path = std::string(n->name.c_str()) + (path.empty() ? "" : "/" + path);
  return path;
}

namespace {

sScanOptions sampleOptions(unsigned int block, unsigned long long maxSize) {
  sScanOptions options;
  options.block = block;
  options.maxSize = maxSize;
  options.firstOnly = true;
  return options;
}

void judge(sIdentified& s) {
  const sFoundFile& f = s.file;
  const unsigned long long claimed = f.length + f.past; // where its rules put the end
  if (!f.definition) {
    s.verdict = eVerdict::unrecognised;
  } else if (f.how == "stopped") {
    s.verdict = eVerdict::stopped;
  } else if (claimed > s.size && (f.past || f.how != "source end")) {
    s.verdict = eVerdict::longBy;
    s.by = claimed - s.size;
    if (f.past) s.file.how = "size field"; // which puts the end past the sample and its zeros
  } else if (f.how == "source end" || f.how == "size cap") {
    s.verdict = eVerdict::noEnd;
  } else if (claimed < s.size) {
    s.verdict = eVerdict::shortBy;
    s.by = s.size - claimed;
  } else {
    s.verdict = eVerdict::exact;
  }
  // The length its rules give, without the zeros the sample was given.
  s.file.length = s.verdict == eVerdict::longBy ? claimed : std::min(claimed, s.size);
  s.file.past = 0;
}

// The first bytes of a sample mapped read-only, followed by zeros as far as a disk's
// unused space would follow a file, so that end rules and walkers see its end as they do
// in a scan. Pages are read only as the scan touches them.
class cPaddedSample {
public:
  cPaddedSample(const std::string& path, unsigned long long size, unsigned long long limit,
                std::string& error) {
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
      error = std::strerror(errno);
      return;
    }
    const unsigned long long mapped = std::min(size, limit);
    myLength = mapped + (mapped == size ? kPadding : 0);
    void* at = mmap(nullptr, myLength, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (at != MAP_FAILED && mapped &&
        mmap(at, mapped, PROT_READ, MAP_PRIVATE | MAP_FIXED, fd, 0) == MAP_FAILED) {
      error = std::strerror(errno);
      munmap(at, myLength);
      at = MAP_FAILED;
    } else if (at == MAP_FAILED) {
      error = std::strerror(errno);
    }
    close(fd);
    if (at != MAP_FAILED) myData = static_cast<const unsigned char*>(at);
  }
  ~cPaddedSample() {
    if (myData) munmap(const_cast<unsigned char*>(myData), myLength);
  }
  cPaddedSample(const cPaddedSample&) = delete;
  cPaddedSample& operator=(const cPaddedSample&) = delete;

  const unsigned char* data() const { return myData; }
  unsigned long long length() const { return myLength; }

private:
  static constexpr unsigned long long kPadding = cRawScanner::kLookahead;
  const unsigned char* myData = nullptr;
  unsigned long long myLength = 0;
};

} // namespace

cIdentifier::cIdentifier(const cCustomSignaturesTree& tree, unsigned int block,
                         unsigned long long maxSize)
    : myScanner(tree, sampleOptions(block, maxSize)), myMaxSize(maxSize) {}

sIdentified cIdentifier::identify(const std::string& path, const std::atomic<bool>& stop) {
  sIdentified s;
  s.path = path;
  std::error_code ec;
  s.size = fs::file_size(path, ec);
  if (ec) {
    s.verdict = eVerdict::unreadable;
    s.error = ec.message();
    return s;
  }
  // Walks and blocks never reach past the cap and one look ahead.
  const cPaddedSample sample(path, s.size, myMaxSize + 2 * cRawScanner::kLookahead, s.error);
  if (!sample.data()) {
    s.verdict = eVerdict::unreadable;
    return s;
  }
  myScanner.scanMemory(
      sample.data(), sample.length(),
      [&](const sFoundFile& f) {
        if (f.offset == 0 && !s.file.definition) s.file = f;
      },
      [](unsigned long long, unsigned long long) {}, stop);
  judge(s);
  if (s.verdict == eVerdict::unrecognised && stop) s.verdict = eVerdict::stopped;
  return s;
}

namespace {

void gatherFolder(const fs::path& folder, std::vector<std::string>& out,
                  std::vector<std::string>& errors) {
  std::error_code ec;
  fs::directory_iterator it(folder, ec);
  for (; !ec && it != fs::directory_iterator(); it.increment(ec)) {
    std::error_code kind;
    if (it->symlink_status(kind).type() == fs::file_type::directory)
      gatherFolder(it->path(), out, errors);
    else if (it->is_regular_file(kind))
      out.push_back(it->path().string());
  }
  if (ec) errors.push_back(folder.string() + ": " + ec.message());
}

} // namespace

std::vector<std::string> gatherSamples(const std::vector<std::string>& paths,
                                       std::vector<std::string>& errors) {
  std::vector<std::string> out;
  for (const std::string& path : paths) {
    std::error_code ec;
    const fs::file_status status = fs::status(path, ec);
    if (ec)
      errors.push_back(path + ": " + ec.message());
    else if (fs::is_directory(status))
      gatherFolder(path, out, errors);
    else if (fs::is_regular_file(status))
      out.push_back(path);
    else
      errors.push_back(path + ": not a file or a folder");
  }
  std::sort(out.begin(), out.end());
  out.erase(std::unique(out.begin(), out.end()), out.end());
  return out;
}
