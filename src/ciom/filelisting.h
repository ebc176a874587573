// What a file dialog shows: a folder's entries with the texts of their columns, filtered
// and ordered; the places beside them; and typed paths made whole. No GUI here.
#pragma once

#include <string>
#include <vector>

#include "base/clock.h"

struct sFileEntry {
  std::string name;   // the bytes on disk
  std::string shown;  // the name as valid UTF-8: bytes that are not become U+FFFD
  std::u16string key; // the shown name in lower case, for ordering
  std::string type;   // the extension in lower case, for ordering by type
  unsigned long long size = 0;
  sTimestamp modified;
  bool folder = false, hidden = false;
};

enum eFileSort { fsName = 0, fsSize = 1, fsType = 2, fsModified = 3 };

class cFileListing {
public:
  // Reads a folder (links followed; entries whose status cannot be read, as in a link
  // loop, left out). False, with the listing unchanged, when it cannot be opened.
  bool read(const std::string& folder);
  const std::string& folder() const { return myFolder; }
  int count() const { return static_cast<int>(myEntries.size()); }
  const sFileEntry& entry(int index) const { return myEntries[static_cast<size_t>(index)]; }

  // The entries to show, in order: folders first, then files whose name matches one of
  // the ";"-separated patterns (case ignored; empty: all), hidden ones only when asked.
  std::vector<int> shown(const std::string& patterns, bool showHidden, eFileSort sort,
                         bool ascending) const;

  // Case-insensitive order with runs of digits compared as numbers ("file9" < "file10").
  static int naturalCompare(const std::u16string& a, const std::u16string& b);
  static std::string sizeText(unsigned long long bytes); // "512 bytes", "1.2 kB", "3.4 MB"
  static std::string typeText(const sFileEntry& e);      // the extension in capitals
  static std::string dateText(const sTimestamp& t);      // the user's date order, hh:mm
  static std::string validUtf8(const std::string& bytes);

private:
  std::string myFolder;
  std::vector<sFileEntry> myEntries;
};

struct sPlace {
  std::string name, path;
  bool volume = false; // a drive rather than a folder
};

// Home, the user's folders (~/.config/user-dirs.dirs) and bookmarks
// (~/.config/gtk-3.0/bookmarks) that exist, the file system and the mounted volumes.
std::vector<sPlace> filePlaces();
// A typed path made whole: "~" and "~/..." from the home folder, a relative path from
// folder; "." and ".." resolved and doubled slashes dropped, without touching the disk.
std::string wholePath(const std::string& typed, const std::string& folder);
// The folder above ("/" stays "/").
std::string parentFolder(const std::string& folder);
// The last part of a path.
std::string baseName(const std::string& path);
