#include "folders.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "str.h"

namespace {

int typeOf(mode_t mode) {
  if (S_ISREG(mode)) return fotFile;
  if (S_ISDIR(mode)) return fotFolder;
  if (S_ISLNK(mode)) return fotLink;
  if (S_ISBLK(mode)) return fotBlockDevice;
  if (S_ISCHR(mode)) return fotCharDevice;
  if (S_ISSOCK(mode)) return fotSocket;
  return fotOther;
}

bool isFolder(const char* path) {
  struct stat st;
  return path && stat(path, &st) == 0 && S_ISDIR(st.st_mode);
}

bool ensureFolder(const std::string& path) {
  return isFolder(path.c_str()) || ::mkdir(path.c_str(), 0755) == 0;
}

// /proc/self/mounts writes blanks and a few other characters as \ooo (octal).
std::string unescapeMount(const std::string& s) {
  auto octal = [&](size_t i) { return i < s.size() && s[i] >= '0' && s[i] <= '7'; };
  std::string out;
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '\\' && octal(i + 1) && octal(i + 2) && octal(i + 3)) {
      out.push_back(
          static_cast<char>((s[i + 1] - '0') * 64 + (s[i + 2] - '0') * 8 + (s[i + 3] - '0')));
      i += 3;
    } else {
      out.push_back(s[i]);
    }
  }
  return out;
}

bool underVolumeRoot(const std::string& mountPoint) {
  for (const char* root : {"/media/", "/run/media/", "/mnt/"}) {
    if (mountPoint.rfind(root, 0) == 0 && mountPoint.size() > std::strlen(root)) return true;
  }
  return false;
}

} // namespace

bool cFolderContents::init(const char* path, bool filesAndFoldersOnly) {
  myItems.destroy();
  myExt.destroy();
  myFolder.set(path);
  if (!isFolder(path)) return false;
  std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir(path), closedir);
  if (!dir) return false;
  int index = 0;
  while (dirent* entry = readdir(dir.get())) {
    if (!std::strcmp(entry->d_name, ".") || !std::strcmp(entry->d_name, "..")) continue;
    char full[4096];
    _sprintf_s(full, sizeof full, "%s/%s", path, entry->d_name);
    struct stat st;
    if (stat(full, &st) != 0) continue; // unreadable, or a link to nothing
    const int type = typeOf(st.st_mode);
    if (filesAndFoldersOnly && type != fotFile && type != fotFolder) continue;
    sFolderItemInfo* item = myItems.insert(index);
    item->name.set(entry->d_name);
    item->size = static_cast<unsigned long long>(st.st_size);
    item->type = type;
    item->hidden = entry->d_name[0] == '.';
    tm local;
    localtime_r(&st.st_mtime, &local);
    item->modified = {
        static_cast<uint16_t>(local.tm_year + 1900), static_cast<uint8_t>(local.tm_mon + 1),
        static_cast<uint8_t>(local.tm_mday),         static_cast<uint8_t>(local.tm_hour),
        static_cast<uint8_t>(local.tm_min),          static_cast<uint8_t>(local.tm_sec)};
    *myExt.insert(index) = {st.st_mode & 07777u,
                            st.st_uid,
                            st.st_gid,
                            static_cast<unsigned long long>(st.st_ino),
                            static_cast<unsigned long long>(st.st_dev),
                            static_cast<unsigned long long>(st.st_nlink)};
    ++index;
  }
  return true;
}

void cFolderContents::addLocation(const char* name, const char* path) {
  sFolderItemInfo* item = myItems.insert(count());
  item->name.set(name);
  item->path.set(path);
  item->type = fotLocation;
}

bool cFolderContents::enumSpecialLocations() {
  myItems.destroy();
  myExt.destroy();
  myFolder.clear();
  std::set<dev_t> devices; // a device is listed once
  auto seen = [&](const char* path) {
    struct stat st;
    return stat(path, &st) == 0 && !devices.insert(st.st_dev).second;
  };
  if (const char* home = std::getenv("HOME")) addLocation("Home folder", home);
  addLocation("File system", "/");
  seen("/");
  std::ifstream mounts("/proc/self/mounts");
  std::string device, where, rest;
  while (mounts >> device >> where && std::getline(mounts, rest)) {
    const std::string point = unescapeMount(where);
    if (!underVolumeRoot(point) || seen(point.c_str())) continue;
    addLocation(point.substr(point.rfind('/') + 1).c_str(), (point + "/").c_str());
  }
  return true;
}

const sFolderItemInfo* cFolderContents::info(int index) const {
  return myItems.find(index);
}

bool cFolderContents::path(int index, _guardchar<char>& out) const {
  const sFolderItemInfo* item = info(index);
  if (!item) return false;
  if (item->type == fotLocation) {
    out = item->path;
    return true;
  }
  char full[4096];
  _sprintf_s(full, sizeof full, "%s/%s", myFolder.c_str(), item->name.c_str());
  out.set(full);
  return true;
}

bool cFolderContents::getExtInfo(int index, sFsObjExtInfo& out) const {
  const sFsObjExtInfo* ext = myExt.find(index);
  if (!ext) return false;
  out = *ext;
  return true;
}

bool cFolderContents::getHome(_guardchar<char>& out) {
  const char* home = std::getenv("HOME");
  if (!home) return false;
  out.set(home);
  return true;
}

bool cFolderContents::getTempFolder(_guardchar<char>& out) {
  out.set("/tmp");
  return true;
}

bool cFolderContents::getConfigFolder(_guardchar<char>& out, const char* name) {
  _guardchar<char> home;
  if (!name || !getHome(home)) return false;
  const std::string folder = std::string(home.c_str()) + "/." + name;
  if (!ensureFolder(folder)) return false;
  out.set(folder.c_str());
  return true;
}

bool cFolderContents::getSysConfigFolder(_guardchar<char>& out, const char* name) {
  if (!name || !isFolder("/etc") || !ensureFolder("/etc/tkmcfg")) return false;
  const std::string folder = std::string("/etc/tkmcfg/") + name;
  if (!ensureFolder(folder)) return false;
  out.set(folder.c_str());
  return true;
}

bool cFolderContents::mkdir(const char* path) {
  return path && ::mkdir(path, 0755) == 0;
}
bool cFolderContents::removeDir(const char* path) {
  return path && ::rmdir(path) == 0;
}

bool cFolderContents::isDirEmpty(const char* path) {
  if (!isFolder(path)) return false;
  std::unique_ptr<DIR, int (*)(DIR*)> dir(opendir(path), closedir);
  if (!dir) return false;
  while (dirent* entry = readdir(dir.get())) {
    if (std::strcmp(entry->d_name, ".") && std::strcmp(entry->d_name, "..")) return false;
  }
  return true;
}

int cFolderContents::objtype(const char* path) {
  struct stat st;
  return path && stat(path, &st) == 0 ? typeOf(st.st_mode) : fotNone;
}

bool cFolderContents::getVolInfo(const char* path, unsigned long long& total,
                                 unsigned long long& free) {
  struct statvfs vfs;
  if (!path || statvfs(path, &vfs) != 0) return false;
  total = static_cast<unsigned long long>(vfs.f_blocks) * vfs.f_frsize;
  free = static_cast<unsigned long long>(vfs.f_bavail) * vfs.f_frsize;
  return true;
}

bool cFolderContents::setTime(const char* path, unsigned long long localTime) {
  if (!path) return false;
  const timespec utc = {static_cast<time_t>(localToUTC(static_cast<long long>(localTime))), 0};
  const timespec times[2] = {utc, utc};
  return utimensat(AT_FDCWD, path, times, 0) == 0;
}

bool cFolderContents::setPermissions(const char* path, unsigned int mode) {
  return path && chmod(path, mode & 07777u) == 0;
}

unsigned int cFolderContents::getEffectivePermissions(const char* path) {
  if (!path) return 0;
  return (access(path, R_OK) == 0 ? 4u : 0u) | (access(path, W_OK) == 0 ? 2u : 0u) |
         (access(path, X_OK) == 0 ? 1u : 0u);
}

bool cFolderContents::canRead(const char* path) {
  return getEffectivePermissions(path) & 4;
}
bool cFolderContents::canWrite(const char* path) {
  return getEffectivePermissions(path) & 2;
}
bool cFolderContents::canExecute(const char* path) {
  return getEffectivePermissions(path) & 1;
}

bool cFolderContents::wcmatch(const char* name, const char* pattern) {
  if (!pattern || !*pattern) return true;
  if (!name) return false;
  for (;;) {
    if (*pattern == '*') {
      while (*pattern == '*') ++pattern;
      if (!*pattern) return true;
      if (!*name) return false;
      // The empty tail is not tried: "abxc" must not match "*x?".
      for (const char* tail = name; *tail; ++tail) {
        if (wcmatch(pattern, tail)) return true; // swapped on purpose
      }
      return false;
    }
    if (!*pattern) return !*name;
    if (!*name) {
      while (*pattern == '*') ++pattern;
      return !*pattern;
    }
    if (*pattern != '?' && *pattern != *name) return false;
    ++pattern;
    ++name;
  }
}

bool cFolderContents::wcmmatch(const char* name, const char* patterns) {
  if (!patterns || !*patterns) return true;
  const std::string list = patterns;
  size_t start = 0;
  for (;;) {
    const size_t end = list.find(';', start);
    const std::string one = list.substr(start, end == std::string::npos ? end : end - start);
    if (!one.empty() && wcmatch(name, one.c_str())) return true;
    if (end == std::string::npos) return false;
    start = end + 1;
  }
}

long long cFolderContents::safeName(const char* in, char* out, long long size) {
  if (!out || size <= 0) return 0;
  out[0] = 0;
  if (!in) return 0;
  auto blank = [](unsigned char c) { return c < 0x20 || c == ' '; };
  while (*in && blank(static_cast<unsigned char>(*in))) ++in;
  long long n = 0;
  for (; *in && n < size - 1; ++in) {
    char c = *in;
    switch (c) {
    case '"':
      c = '\'';
      break;
    case '*':
      c = '@';
      break;
    case '/':
      c = '=';
      break;
    case ':':
    case '|':
      c = '_';
      break;
    case '?':
      c = '~';
      break;
    default:
      if (static_cast<unsigned char>(c) < 0x20) c = ' ';
    }
    out[n++] = c;
  }
  while (n > 0 && __acp_isspace(out[n - 1])) --n;
  out[n] = 0;
  return n;
}
