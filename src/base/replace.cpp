// file_replace: a whole file written beside its target and renamed over it.
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "files.h"

namespace {

// The step made to fail, and its error (file_replace_fail_at).
std::atomic<int> gFailStep{rsNone}, gFailError{0};

// Whether step is made to fail; errno then holds the error it fails with.
bool madeToFail(eReplaceStep step) {
  if (gFailStep.load() != step) return false;
  errno = gFailError.load();
  return true;
}

// The file a save replaces: a link's target, so the link stays a link.
std::string replacedFile(const char* path) {
  char resolved[PATH_MAX];
  return ::realpath(path, resolved) ? std::string(resolved) : std::string(path);
}

std::string folderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash ? slash : 1);
}

bool writeAll(int fd, const unsigned char* p, unsigned long long n) {
  while (n > 0) {
    const ssize_t done = ::write(fd, p, n > (1u << 30) ? (1u << 30) : static_cast<size_t>(n));
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) {
      if (done == 0) errno = EIO;
      return false;
    }
    p += done;
    n -= static_cast<unsigned long long>(done);
  }
  return true;
}

} // namespace

sReplaceResult file_replace(const char* path, const void* data, unsigned long long size) {
  if (!path || !*path) return {rsCreate, ENOENT};
  const std::string target = replacedFile(path);
  // A name of its own beside the target, so that no other file is touched and two saves
  // never share one.
  std::string part = target + ".saving-XXXXXX";
  const int fd = madeToFail(rsCreate) ? -1 : ::mkostemp(part.data(), O_CLOEXEC);
  if (fd < 0) return {rsCreate, errno};
  struct stat old {};
  const bool replacing = ::stat(target.c_str(), &old) == 0;
  // The owner first: changing it may clear the set-id bits, which the mode then restores.
  // Only the superuser may give a file away; anyone else keeps their own.
  if (replacing && ::fchown(fd, old.st_uid, old.st_gid) != 0 &&
      ::fchown(fd, static_cast<uid_t>(-1), old.st_gid) != 0) {
    // Neither is ours to give: the new file stays the user's.
  }
  ::fchmod(fd, replacing ? old.st_mode & 07777 : 0664);
  sReplaceResult result;
  if (!writeAll(fd, static_cast<const unsigned char*>(data), size) || madeToFail(rsWrite))
    result = {rsWrite, errno};
  else if (::fsync(fd) != 0 || madeToFail(rsFlush))
    result = {rsFlush, errno};
  if (::close(fd) != 0 && result.ok()) result = {rsFlush, errno};
  if (result.ok() && (madeToFail(rsRename) || ::rename(part.c_str(), target.c_str()) != 0))
    result = {rsRename, errno};
  if (!result.ok()) {
    ::unlink(part.c_str());
    return result;
  }
  // The rename itself reaches the disk with its folder; the new bytes are in place either
  // way, so a folder that cannot be flushed is not a failure.
  const int folder = ::open(folderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0) {
    ::fsync(folder);
    ::close(folder);
  }
  return result;
}

void file_replace_fail_at(eReplaceStep step, int error) {
  gFailError = error;
  gFailStep = step;
}
