// Folders: listings, start locations, configuration folders, wild cards, file-system
// queries. Failures are results (false, 0); nothing throws.
#pragma once

#include "btree.h"
#include "buffers.h"
#include "clock.h"

// Type codes of listed entries.
enum eFsObjType {
  fotNone = 0,
  fotFile = 1,
  fotFolder = 2,
  fotLink = 3,
  fotBlockDevice = 4,
  fotCharDevice = 5,
  fotSocket = 6,
  fotOther = 7,
  fotLocation = 9,
};

struct sFolderItemInfo {
  _guardchar<char> name;
  _guardchar<char> path; // set for start locations
  unsigned long long size = 0;
  int type = fotNone;
  sTimestamp modified; // local time
  bool hidden = false; // the name begins with "."
};

// What a listing keeps beyond sFolderItemInfo, from the entry's status.
struct sFsObjExtInfo {
  unsigned int mode = 0; // permission bits
  unsigned int uid = 0, gid = 0;
  unsigned long long inode = 0, device = 0, links = 0;
};

class cFolderContents {
public:
  // Lists path (every entry but "." and "..", status following links, in reading order);
  // false, with an empty listing, when path is not a folder that can be read.
  bool init(const char* path, bool filesAndFoldersOnly);
  // Home folder, file system, then the mounted volumes under /media, /run/media and /mnt,
  // each device once; all of type fotLocation.
  bool enumSpecialLocations();

  int count() const { return static_cast<int>(myItems.count()); }
  const sFolderItemInfo* info(int index) const;
  bool path(int index, _guardchar<char>& out) const; // "folder/name", or a location's path
  bool getExtInfo(int index, sFsObjExtInfo& out) const;
  const char* folder() const { return myFolder.c_str(); }

  static bool getHome(_guardchar<char>& out);
  static bool getTempFolder(_guardchar<char>& out);
  static bool getConfigFolder(_guardchar<char>& out, const char* name);    // ~/.name, made
  static bool getSysConfigFolder(_guardchar<char>& out, const char* name); // /etc/tkmcfg/name

  static bool mkdir(const char* path);
  static bool removeDir(const char* path);
  static bool isDirEmpty(const char* path);
  static int objtype(const char* path); // the type code, following links; fotNone if absent
  static bool getVolInfo(const char* path, unsigned long long& total, unsigned long long& free);
  static bool setTime(const char* path, unsigned long long localTime);
  static bool setPermissions(const char* path, unsigned int mode);
  static unsigned int getEffectivePermissions(const char* path); // 4 read, 2 write, 1 execute
  static bool canRead(const char* path);
  static bool canWrite(const char* path);
  static bool canExecute(const char* path);
  static bool pathCaseSensetive(const char* path) { return path != nullptr; }
  static void adjustPath(_guardchar<char>&) {} // paths need no adjusting here

  // Wild-card match of a whole name, case-sensitive: "?" one character, "*" any run. After
  // a star the rest of the pattern is matched against each non-empty tail of the name with
  // the two swapped, so the pattern's wild cards then count as plain characters.
  static bool wcmatch(const char* name, const char* pattern);
  // The same against a list of patterns separated by ";": true when any matches.
  static bool wcmmatch(const char* name, const char* patterns);
  // A usable file name from any text; returns its length.
  static long long safeName(const char* in, char* out, long long size);

private:
  void addLocation(const char* name, const char* path);

  _guardchar<char> myFolder;
  cFasterTreeList<int, sFolderItemInfo> myItems;
  cFasterTreeList<int, sFsObjExtInfo> myExt;
};
