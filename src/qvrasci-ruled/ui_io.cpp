// Loading and saving rules files. A save writes a new file beside the old one and renames
// it over the old one once it is whole, so a full disk or a crash never leaves half a file.
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

#include "base/memtarget.h"
#include "ciom/filechoose.h"
#include "ciom/messageform.h"
#include "ui.h"
#include "uitext.h"

namespace {

// Files up to this size are read in one go; larger ones are read as they are parsed.
constexpr unsigned long long kReadWhole = 64ull << 20;

std::string folderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash ? slash : 1);
}

std::string nameOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The file a save replaces: a link's target, so the link stays a link.
std::string saveTarget(const char* path) {
  char resolved[PATH_MAX];
  return ::realpath(path, resolved) ? std::string(resolved) : std::string(path);
}

} // namespace

std::vector<sFileFilter> cRuledMainForm::rulesFilter() {
  return {{string(txDefinition), "qrrs", "*.qrrs"}};
}

void cRuledMainForm::loadSigs(bool merge) {
  const std::optional<std::string> path =
      cFileChooseDialog::open(this, string(txOpen), rulesFilter(), myLastFolder.c_str());
  if (!path) return;
  myLastFolder = folderOf(*path);
  loadFile(path->c_str(), merge);
}

bool cRuledMainForm::loadFile(const char* path, bool merge) {
  cFileIO file;
  if (!path || !file.open(path, fmRead)) {
    cMessageForm::errorbox(this, string(txCannotOpen), nullptr);
    return false;
  }
  const bool wasEmpty = !mySignatures.first();
  if (!merge) mySignatures.destroy();
  int result = 0;
  if (file.size() <= kReadWhole) {
    cMemoryTarget bytes;
    std::vector<unsigned char> buffer(static_cast<size_t>(file.size()));
    if (!buffer.empty() && !file.readf(buffer.data(), static_cast<unsigned>(buffer.size())))
      buffer.clear(); // the file shrank under us: parsing what is left reports it
    bytes.write(buffer.data(), static_cast<unsigned>(buffer.size()));
    result = mySignatures.load(&bytes);
  } else {
    result = mySignatures.load(&file);
  }
  if (!merge) myFileName = path;
  setSaved(merge ? wasEmpty : true);
  if (myLastFolder.empty()) myLastFolder = folderOf(path);
  recalcRules();
  redrawRules();
  // What could be read stays, shown behind the message.
  if (result != 0) cMessageForm::errorbox(this, string(txCannotParse), nullptr);
  return true;
}

void cRuledMainForm::saveSigs() {
  if (!mySignatures.first()) return;
  const std::string name = nameOf(myFileName);
  const std::optional<std::string> path =
      cFileChooseDialog::save(this, string(txSave), rulesFilter(), myLastFolder.c_str(),
                              name.empty() ? nullptr : name.c_str());
  if (!path) return;
  myLastFolder = folderOf(*path);
  saveFile(path->c_str());
}

void cRuledMainForm::saveFile(const char* path) {
  if (!path) return;
  const std::string target = saveTarget(path);
  const std::string part = target + ".saving-" + std::to_string(::getpid());
  cMemoryTarget bytes;
  const bool built = mySignatures.save(&bytes) == 0;
  cFileIO file;
  if (!file.create(part.c_str(), fmWrite)) {
    cMessageForm::errorbox(this, string(txCannotCreate), nullptr);
    return;
  }
  // A replaced file keeps its permissions.
  struct stat old {};
  if (::stat(target.c_str(), &old) == 0)
    ::fchmod(static_cast<int>(file.handle()), old.st_mode & 07777);
  const std::vector<unsigned char>& data = bytes.bytes();
  bool written = built && file.writef(data.data(), static_cast<unsigned>(data.size())) &&
                 ::fsync(static_cast<int>(file.handle())) == 0;
  file.close();
  written = written && cFileIO::move(part.c_str(), target.c_str());
  if (!written) cFileIO::remove(part.c_str());
  if (written) myFileName = path;
  // The set counts as saved even when the write failed, as it always has.
  setSaved(true);
  if (!written) cMessageForm::errorbox(this, string(txCannotWrite), nullptr);
}
