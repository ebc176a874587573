#include "filelisting.h"

#include <algorithm>
#include <cctype>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <locale.h>
#include <tuple>

#include "base/folders.h"
#include "base/str.h"

namespace {

std::u16string lowerKey(const std::string& utf8) {
  _typebuf<unsigned short> units;
  utf8ToUnits(utf8.c_str(), static_cast<long long>(utf8.size()), units);
  std::u16string key(static_cast<size_t>(units.count()), u'\0');
  for (long long i = 0; i < units.count(); ++i)
    key[static_cast<size_t>(i)] = static_cast<char16_t>(__acp_lower(units[i]));
  return key;
}

std::string lowerAscii(std::string s) {
  for (char& c : s) c = __acp_lower(c);
  return s;
}

bool isDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

std::string extensionOf(const std::string& name) {
  const size_t dot = name.rfind('.');
  if (dot == std::string::npos || dot == 0 || dot + 1 == name.size()) return {};
  return name.substr(dot + 1);
}

std::string home() {
  _guardchar<char> h;
  return cFolderContents::getHome(h) ? std::string(h.c_str()) : std::string("/");
}

bool isFolder(const std::string& path) {
  return cFolderContents::objtype(path.c_str()) == fotFolder;
}

// "%41" and the like in a bookmark's file URL.
std::string percentDecoded(const std::string& s) {
  std::string out;
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '%' && i + 2 < s.size() && std::isxdigit(static_cast<unsigned char>(s[i + 1])) &&
        std::isxdigit(static_cast<unsigned char>(s[i + 2]))) {
      out += static_cast<char>(std::strtol(s.substr(i + 1, 2).c_str(), nullptr, 16));
      i += 2;
    } else {
      out += s[i];
    }
  }
  return out;
}

// XDG_DOCUMENTS_DIR="$HOME/Documents" and so on, in the file's order.
void addUserDirs(const std::string& homeDir, std::vector<sPlace>& out) {
  std::ifstream in(homeDir + "/.config/user-dirs.dirs");
  std::string line;
  while (std::getline(in, line)) {
    const size_t eq = line.find('=');
    if (line.empty() || line[0] == '#' || eq == std::string::npos) continue;
    std::string value = line.substr(eq + 1);
    if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
      value = value.substr(1, value.size() - 2);
    if (value.rfind("$HOME", 0) == 0) value = homeDir + value.substr(5);
    if (value.empty() || value[0] != '/' || value == homeDir || !isFolder(value)) continue;
    out.push_back({baseName(value), value, false});
  }
}

// "file:///path/to/folder Optional label" per line.
void addBookmarks(const std::string& homeDir, std::vector<sPlace>& out) {
  std::ifstream in(homeDir + "/.config/gtk-3.0/bookmarks");
  std::string line;
  while (std::getline(in, line)) {
    if (line.rfind("file://", 0) != 0) continue;
    const size_t blank = line.find(' ');
    const std::string path = percentDecoded(line.substr(7, blank - 7));
    if (path.empty() || !isFolder(path)) continue;
    const std::string label = blank == std::string::npos ? baseName(path) : line.substr(blank + 1);
    out.push_back({label, path, false});
  }
}

} // namespace

// --- the listing -------------------------------------------------------------------------

std::string cFileListing::validUtf8(const std::string& bytes) {
  _typebuf<unsigned short> units;
  utf8ToUnits(bytes.c_str(), static_cast<long long>(bytes.size()), units);
  _guardchar<char> out;
  unitsToUtf8(units.count() ? units.data() : nullptr, units.count(), out);
  return out.c_str();
}

bool cFileListing::read(const std::string& folder) {
  cFolderContents contents;
  if (!contents.init(folder.c_str(), true)) return false;
  myFolder = folder;
  myEntries.clear();
  myEntries.reserve(static_cast<size_t>(contents.count()));
  for (int i = 0; i < contents.count(); ++i) {
    const sFolderItemInfo* info = contents.info(i);
    if (!info) continue;
    sFileEntry e;
    e.name = info->name.c_str();
    e.shown = validUtf8(e.name);
    e.key = lowerKey(e.shown);
    e.type = lowerAscii(extensionOf(e.name));
    e.size = info->size;
    e.modified = info->modified;
    e.folder = info->type == fotFolder;
    e.hidden = info->hidden;
    myEntries.push_back(std::move(e));
  }
  return true;
}

int cFileListing::naturalCompare(const std::u16string& a, const std::u16string& b) {
  size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (isDigit(a[i]) && isDigit(b[j])) {
      // Numbers: fewer significant digits is smaller; then digit by digit.
      while (i < a.size() && a[i] == u'0') ++i;
      while (j < b.size() && b[j] == u'0') ++j;
      size_t ei = i, ej = j;
      while (ei < a.size() && isDigit(a[ei])) ++ei;
      while (ej < b.size() && isDigit(b[ej])) ++ej;
      if (ei - i != ej - j) return ei - i < ej - j ? -1 : 1;
      for (; i < ei; ++i, ++j) {
        if (a[i] != b[j]) return a[i] < b[j] ? -1 : 1;
      }
      continue;
    }
    if (a[i] != b[j]) return a[i] < b[j] ? -1 : 1;
    ++i;
    ++j;
  }
  if (i < a.size()) return 1;
  if (j < b.size()) return -1;
  return 0;
}

std::vector<int> cFileListing::shown(const std::string& patterns, bool showHidden, eFileSort sort,
                                     bool ascending) const {
  const std::string lowered = lowerAscii(patterns);
  std::vector<int> out;
  out.reserve(myEntries.size());
  for (size_t i = 0; i < myEntries.size(); ++i) {
    const sFileEntry& e = myEntries[i];
    if (e.hidden && !showHidden) continue;
    if (!e.folder && !lowered.empty() &&
        !cFolderContents::wcmmatch(lowerAscii(e.name).c_str(), lowered.c_str()))
      continue;
    out.push_back(static_cast<int>(i));
  }
  const auto byName = [&](const sFileEntry& a, const sFileEntry& b) {
    const int c = naturalCompare(a.key, b.key);
    return c != 0 ? c : a.name.compare(b.name);
  };
  const auto compare = [&](const sFileEntry& a, const sFileEntry& b) {
    switch (sort) {
    case fsSize:
      if (!a.folder && a.size != b.size) return a.size < b.size ? -1 : 1;
      break;
    case fsType:
      if (int c = a.type.compare(b.type)) return c;
      break;
    case fsModified: {
      const auto stamp = [](const sTimestamp& t) {
        return std::make_tuple(t.year, t.month, t.day, t.hour, t.minute, t.second);
      };
      if (stamp(a.modified) != stamp(b.modified))
        return stamp(a.modified) < stamp(b.modified) ? -1 : 1;
      break;
    }
    case fsName:
      break;
    }
    return byName(a, b);
  };
  std::sort(out.begin(), out.end(), [&](int x, int y) {
    const sFileEntry &a = myEntries[static_cast<size_t>(x)], &b = myEntries[static_cast<size_t>(y)];
    if (a.folder != b.folder) return a.folder; // folders first, whichever the direction
    const int c = compare(a, b);
    return ascending ? c < 0 : c > 0;
  });
  return out;
}

std::string cFileListing::sizeText(unsigned long long bytes) {
  if (bytes < 1000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
  const char* units[] = {"kB", "MB", "GB", "TB", "PB", "EB"};
  double value = static_cast<double>(bytes) / 1000;
  int unit = 0;
  while (value >= 999.95 && unit < 5) {
    value /= 1000;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, "%.1f %s", value, units[unit]);
  return text;
}

std::string cFileListing::typeText(const sFileEntry& e) {
  std::string ext = extensionOf(e.shown);
  for (char& c : ext) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return ext;
}

std::string cFileListing::dateText(const sTimestamp& t) {
  if (t.year == 0) return {};
  std::tm tm{};
  tm.tm_year = t.year - 1900;
  tm.tm_mon = t.month - 1;
  tm.tm_mday = t.day;
  tm.tm_hour = t.hour;
  tm.tm_min = t.minute;
  // The user's date order, without touching the process's own locale.
  static const locale_t user = newlocale(LC_TIME_MASK, "", static_cast<locale_t>(nullptr));
  char text[64];
  const size_t n = user ? strftime_l(text, sizeof text, "%x %H:%M", &tm, user)
                        : std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &tm);
  return std::string(text, n);
}

// --- places and paths --------------------------------------------------------------------

std::vector<sPlace> filePlaces() {
  const std::string homeDir = home();
  std::vector<sPlace> out;
  cFolderContents locations;
  locations.enumSpecialLocations();
  // Home first, then the user's folders and bookmarks, then the file system and volumes.
  std::vector<sPlace> drives;
  for (int i = 0; i < locations.count(); ++i) {
    const sFolderItemInfo* info = locations.info(i);
    if (!info) continue;
    sPlace p{cFileListing::validUtf8(info->name.c_str()), info->path.c_str(), false};
    if (p.path == homeDir || p.path == homeDir + "/") {
      out.push_back(p);
    } else {
      p.volume = true;
      drives.push_back(p);
    }
  }
  addUserDirs(homeDir, out);
  addBookmarks(homeDir, out);
  out.insert(out.end(), drives.begin(), drives.end());
  return out;
}

std::string wholePath(const std::string& typed, const std::string& folder) {
  std::string path;
  if (typed == "~" || typed.rfind("~/", 0) == 0)
    path = home() + typed.substr(1);
  else if (!typed.empty() && typed[0] == '/')
    path = typed;
  else
    path = folder + "/" + typed;
  std::vector<std::string> parts;
  size_t at = 0;
  while (at <= path.size()) {
    const size_t slash = std::min(path.find('/', at), path.size());
    const std::string part = path.substr(at, slash - at);
    if (part == "..") {
      if (!parts.empty()) parts.pop_back();
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
    at = slash + 1;
  }
  std::string out;
  for (const std::string& p : parts) out += "/" + p;
  return out.empty() ? "/" : out;
}

std::string parentFolder(const std::string& folder) {
  return wholePath("..", folder);
}

std::string baseName(const std::string& path) {
  size_t end = path.size();
  while (end > 1 && path[end - 1] == '/') --end;
  const size_t slash = path.rfind('/', end - 1);
  return slash == std::string::npos ? path.substr(0, end) : path.substr(slash + 1, end - slash - 1);
}
