// Files, locks between processes, folders, wild cards and safe names.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "../common/tempdir.h"
#include "base/clock.h"
#include "base/files.h"
#include "base/folders.h"

namespace {

TEST(FileIO, WriteReadSeekTruncate) {
  cTempDir dir;
  const std::string path = dir / "data.bin";
  cFileIO f;
  ASSERT_TRUE(f.create(path.c_str(), fmReadWrite));
  EXPECT_STREQ(f.path(), path.c_str());
  EXPECT_TRUE(f.writef("0123456789", 10));
  EXPECT_EQ(f.size(), 10u);
  EXPECT_TRUE(f.set_fp(4));
  char buf[8] = {};
  EXPECT_TRUE(f.readf(buf, 3));
  EXPECT_EQ(std::string(buf, 3), "456");
  EXPECT_FALSE(f.readf(buf, 8)); // only three bytes are left: a short read fails
  EXPECT_TRUE(f.set_fp_end(2));
  EXPECT_TRUE(f.readf(buf, 2));
  EXPECT_EQ(std::string(buf, 2), "89");
  EXPECT_TRUE(f.set_eof(4));
  EXPECT_EQ(f.size(), 4u);
  EXPECT_TRUE(f.set_eof(4096)); // extends
  EXPECT_EQ(f.size(), 4096u);
  f.close();
  f.close(); // harmless
  EXPECT_FALSE(f.valid());
  EXPECT_EQ(f.read(buf, 1), -1);
  EXPECT_FALSE(f.set_fp(0));
  EXPECT_FALSE(f.lock(0, 1));
}

TEST(FileIO, FailuresKeepNothing) {
  cFileIO f;
  EXPECT_FALSE(f.open("/nonexistent/qvraci/file", fmRead));
  EXPECT_FALSE(f.valid());
  EXPECT_STREQ(f.path(), "");
  EXPECT_FALSE(f.open(nullptr, fmRead));
  EXPECT_EQ(file_open(nullptr, fmRead), file_invalid_handle);
  EXPECT_EQ(file_size(file_invalid_handle), 0u);
  EXPECT_FALSE(file_close(file_invalid_handle));
  EXPECT_EQ(file_write(file_invalid_handle, "x", 1), -1);
  EXPECT_FALSE(cFileIO::remove("/nonexistent/qvraci/file"));
  EXPECT_FALSE(cFileIO::move(nullptr, "x"));
  _guardchar<char> text;
  EXPECT_TRUE(getOSErrorMessage(ENOENT, text, "open"));
  EXPECT_STREQ(text.c_str(), "open: No such file or directory");
}

TEST(FileIO, CreatedFilesAre0664WhateverTheMask) {
  cTempDir dir;
  const mode_t old = umask(077);
  cFileIO f;
  ASSERT_TRUE(f.create((dir / "perm").c_str(), fmWrite));
  umask(old);
  struct stat st;
  ASSERT_EQ(stat((dir / "perm").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0664u);
  EXPECT_TRUE(cFileIO::move((dir / "perm").c_str(), (dir / "moved").c_str()));
  EXPECT_TRUE(cFileIO::remove((dir / "moved").c_str()));
}

// A replaced file keeps its permissions and a link its target; a failed step leaves the old
// file whole and nothing beside it.
TEST(FileIO, ReplaceWritesAWholeFileOrNone) {
  cTempDir dir;
  const std::string target = dir / "rules", link = dir / "link";
  ASSERT_TRUE(file_replace(target.c_str(), "first", 5).ok());
  EXPECT_EQ(readFile(target), "first");
  ASSERT_EQ(chmod(target.c_str(), 0600), 0);
  ASSERT_EQ(symlink(target.c_str(), link.c_str()), 0);
  ASSERT_TRUE(file_replace(link.c_str(), "second", 6).ok());
  EXPECT_EQ(readFile(target), "second");
  struct stat st;
  ASSERT_EQ(lstat(link.c_str(), &st), 0);
  EXPECT_TRUE(S_ISLNK(st.st_mode));
  ASSERT_EQ(stat(target.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0600u);

  // A folder in the file's place cannot be renamed over; a missing folder takes nothing.
  const std::string folder = dir / "folder";
  ASSERT_EQ(mkdir(folder.c_str(), 0755), 0);
  const sReplaceResult renamed = file_replace(folder.c_str(), "x", 1);
  EXPECT_EQ(renamed.failed, rsRename);
  EXPECT_NE(renamed.error, 0);
  EXPECT_EQ(file_replace((dir / "none/rules").c_str(), "x", 1).failed, rsCreate);
  EXPECT_EQ(std::system(("test $(ls '" + std::string(dir.c_str()) + "' | wc -l) = 3").c_str()), 0)
      << "a partial file was left behind";

  // Each step made to fail says so with its error, and leaves the old bytes and nothing else.
  for (const eReplaceStep step : {rsCreate, rsWrite, rsFlush, rsRename}) {
    file_replace_fail_at(step, ENOSPC);
    const sReplaceResult failed = file_replace(target.c_str(), "third", 5);
    file_replace_fail_at(rsNone, 0);
    EXPECT_EQ(failed.failed, step);
    EXPECT_EQ(failed.error, ENOSPC);
    EXPECT_EQ(readFile(target), "second") << step;
    EXPECT_EQ(std::system(("test $(ls '" + std::string(dir.c_str()) + "' | wc -l) = 3").c_str()), 0)
        << step;
  }
  EXPECT_TRUE(file_replace(target.c_str(), "third", 5).ok());

  // A read-only file is told apart (also from the superuser, who may write it), and a
  // replaced one keeps its mode and, where the system allows, its owner and group.
  const struct {
    const char* name;
    mode_t mode; // 0: none there
    bool readOnly;
  } kFiles[] = {{"none", 0, false}, {"rw", 0644, false}, {"ro", 0444, true}, {"wo", 0200, false}};
  for (const auto& f : kFiles) {
    const std::string path = dir / f.name;
    if (f.mode) {
      writeFile(path, "x");
      ASSERT_EQ(chmod(path.c_str(), f.mode), 0);
    }
    EXPECT_EQ(file_read_only(path.c_str()), f.readOnly) << f.name;
  }
  EXPECT_FALSE(file_read_only(folder.c_str()));
  const std::string ro = dir / "ro";
  const bool root = geteuid() == 0;
  if (root) {
    ASSERT_EQ(chown(ro.c_str(), 1, 1), 0);
  }
  ASSERT_TRUE(file_replace(ro.c_str(), "new", 3).ok());
  EXPECT_EQ(readFile(ro), "new");
  ASSERT_EQ(stat(ro.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0444u);
  EXPECT_EQ(st.st_uid, root ? 1u : geteuid());
}

TEST(FileIO, SetTimeTakesLocalTime) {
  cTempDir dir;
  const char* old = std::getenv("TZ");
  const std::string saved = old ? old : "";
  setenv("TZ", "UTC-2", 1);
  base_detail::resetClockCaches();
  cFileIO f;
  ASSERT_TRUE(f.create((dir / "t").c_str(), fmWrite));
  EXPECT_FALSE(f.set_time(0xFFFFFFFF, 0, 0)); // not given
  const unsigned long long local = 1700000000;
  ASSERT_TRUE(f.set_time(local, 0xFFFFFFFF, 0xFFFFFFFF));
  struct stat st;
  fstat(static_cast<int>(f.handle()), &st);
  EXPECT_EQ(st.st_mtime, static_cast<time_t>(local - 7200));
  EXPECT_EQ(st.st_atime, static_cast<time_t>(local - 7200));
  ASSERT_TRUE(f.set_time(2024, 2, 29, 12, 0, 0));
  fstat(static_cast<int>(f.handle()), &st);
  EXPECT_EQ(st.st_mtime, static_cast<time_t>(1709208000 - 7200));
  if (old)
    setenv("TZ", saved.c_str(), 1);
  else
    unsetenv("TZ");
  base_detail::resetClockCaches();
}

TEST(FileIO, SafeFDClosesItsHandle) {
  cTempDir dir;
  tFileHandle h = file_create((dir / "fd").c_str(), fmWrite);
  {
    cSafeFD fd(h);
    EXPECT_TRUE(fd.valid());
  }
  EXPECT_EQ(fcntl(static_cast<int>(h), F_GETFD), -1); // closed
  cSafeFD empty;
  empty.set(file_open((dir / "fd").c_str(), fmRead));
  EXPECT_TRUE(empty.valid());
  empty.close();
  EXPECT_FALSE(empty.valid());
}

TEST(FileLocks, AnotherProcessHoldsTheRange) {
  cTempDir dir;
  const std::string path = dir / "locked";
  cFileIO f;
  ASSERT_TRUE(f.create(path.c_str(), fmReadWrite));
  f.set_eof(100);
  int ready[2], release[2];
  ASSERT_EQ(pipe(ready), 0);
  ASSERT_EQ(pipe(release), 0);
  const pid_t child = fork();
  if (child == 0) { // holds bytes 0..9 until told, then exits (which releases the lock)
    cFileIO mine;
    const bool locked = mine.open(path.c_str(), fmReadWrite) && mine.lock(0, 10);
    char c = locked ? 'L' : 'F';
    if (write(ready[1], &c, 1) != 1 || read(release[0], &c, 1) != 1) _exit(2);
    usleep(100000);
    _exit(0);
  }
  char c = 0;
  ASSERT_EQ(read(ready[0], &c, 1), 1);
  ASSERT_EQ(c, 'L');
  EXPECT_FALSE(f.lock(5, 10)); // overlaps: refused at once
  EXPECT_TRUE(f.lock(20, 5));  // elsewhere: free
  EXPECT_TRUE(f.unlock(20, 5));
  ASSERT_EQ(write(release[1], "x", 1), 1);
  EXPECT_TRUE(f.lock_w(0, 10)); // waits until the child is gone
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_TRUE(f.unlock(0, 10));
  for (int fd : {ready[0], ready[1], release[0], release[1]}) close(fd);
}

TEST(Folders, ListsFilesFoldersAndLinks) {
  cTempDir dir;
  cFileIO f;
  ASSERT_TRUE(f.create((dir / "a.txt").c_str(), fmWrite));
  f.writef("hello", 5);
  f.close();
  ASSERT_TRUE(cFolderContents::mkdir((dir / "sub").c_str()));
  ASSERT_TRUE(f.create((dir / ".hidden").c_str(), fmWrite));
  f.close();
  ASSERT_EQ(symlink("a.txt", (dir / "link").c_str()), 0);
  ASSERT_EQ(symlink("missing", (dir / "broken").c_str()), 0); // its status cannot be read
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);

  cFolderContents list;
  ASSERT_TRUE(list.init(dir.c_str(), false));
  std::set<std::string> names;
  for (int i = 0; i < list.count(); ++i) {
    const sFolderItemInfo* item = list.info(i);
    ASSERT_NE(item, nullptr);
    names.insert(item->name.c_str());
    const std::string name = item->name.c_str();
    if (name == "a.txt" || name == "link") {
      EXPECT_EQ(item->type, fotFile);
      EXPECT_EQ(item->size, 5u);
    }
    if (name == "sub") {
      EXPECT_EQ(item->type, fotFolder);
    }
    if (name == "fifo") {
      EXPECT_EQ(item->type, fotOther);
    }
    EXPECT_EQ(item->hidden, name[0] == '.');
    EXPECT_GE(item->modified.year, 2024);
  }
  EXPECT_EQ(names, (std::set<std::string>{"a.txt", "sub", ".hidden", "link", "fifo"}));
  _guardchar<char> path;
  ASSERT_TRUE(list.path(0, path));
  EXPECT_EQ(std::string(path.c_str()).rfind(dir.c_str(), 0), 0u);
  sFsObjExtInfo ext;
  EXPECT_TRUE(list.getExtInfo(0, ext));
  EXPECT_FALSE(list.getExtInfo(99, ext));
  EXPECT_EQ(list.info(99), nullptr);

  ASSERT_TRUE(list.init(dir.c_str(), true)); // files and folders only: no fifo
  EXPECT_EQ(list.count(), 4);
  EXPECT_FALSE(list.init((dir / "a.txt").c_str(), false)); // a file is no folder
  EXPECT_EQ(list.count(), 0);
  EXPECT_FALSE(list.init(nullptr, false));
}

TEST(Folders, QueriesAndConfigFolders) {
  cTempDir dir;
  const std::string sub = dir / "x";
  EXPECT_TRUE(cFolderContents::mkdir(sub.c_str()));
  EXPECT_TRUE(cFolderContents::isDirEmpty(sub.c_str()));
  EXPECT_EQ(cFolderContents::objtype(sub.c_str()), fotFolder);
  EXPECT_EQ(cFolderContents::objtype((dir / "none").c_str()), fotNone);
  EXPECT_TRUE(cFolderContents::setPermissions(sub.c_str(), 0700));
  EXPECT_TRUE(cFolderContents::canRead(sub.c_str()));
  EXPECT_EQ(cFolderContents::getEffectivePermissions((dir / "none").c_str()), 0u);
  unsigned long long total = 0, free = 0;
  EXPECT_TRUE(cFolderContents::getVolInfo(dir.c_str(), total, free));
  EXPECT_GT(total, 0u);
  EXPECT_LE(free, total);
  EXPECT_TRUE(cFolderContents::removeDir(sub.c_str()));
  EXPECT_FALSE(cFolderContents::isDirEmpty(sub.c_str()));

  const char* old = std::getenv("HOME");
  const std::string saved = old ? old : "";
  setenv("HOME", dir.c_str(), 1);
  _guardchar<char> out;
  EXPECT_TRUE(cFolderContents::getHome(out));
  EXPECT_STREQ(out.c_str(), dir.c_str());
  ASSERT_TRUE(cFolderContents::getConfigFolder(out, "qvraci-ruled"));
  EXPECT_EQ(std::string(out.c_str()), dir / ".qvraci-ruled");
  EXPECT_EQ(cFolderContents::objtype(out.c_str()), fotFolder);
  EXPECT_TRUE(cFolderContents::getConfigFolder(out, "qvraci-ruled")); // exists already

  cFolderContents locations;
  ASSERT_TRUE(locations.enumSpecialLocations());
  ASSERT_GE(locations.count(), 2);
  EXPECT_STREQ(locations.info(0)->name.c_str(), "Home folder");
  EXPECT_STREQ(locations.info(0)->path.c_str(), dir.c_str());
  EXPECT_STREQ(locations.info(1)->name.c_str(), "File system");
  EXPECT_STREQ(locations.info(1)->path.c_str(), "/");
  EXPECT_EQ(locations.info(1)->type, fotLocation);
  unsetenv("HOME");
  EXPECT_FALSE(cFolderContents::getHome(out));
  EXPECT_FALSE(cFolderContents::getConfigFolder(out, "qvraci-ruled"));
  ASSERT_TRUE(locations.enumSpecialLocations());
  EXPECT_STREQ(locations.info(0)->name.c_str(), "File system");
  if (old) setenv("HOME", saved.c_str(), 1);
  EXPECT_TRUE(cFolderContents::getTempFolder(out));
  EXPECT_STREQ(out.c_str(), "/tmp");
}

TEST(WildCards, MatchWholeNames) {
  using f = cFolderContents;
  EXPECT_TRUE(f::wcmatch("abc", "a*"));
  EXPECT_TRUE(f::wcmatch("abc", "*c"));
  EXPECT_FALSE(f::wcmatch("abc", "a?"));
  EXPECT_TRUE(f::wcmatch("abc", "a?c"));
  EXPECT_TRUE(f::wcmatch("", "*"));
  EXPECT_FALSE(f::wcmatch("abxc", "*x?")); // after a star "?" is a plain character
  EXPECT_TRUE(f::wcmatch("abx?", "*x?"));
  EXPECT_TRUE(f::wcmatch("rules.qrrs", "*.qrrs"));
  EXPECT_FALSE(f::wcmatch("rules.qrrs.bak", "*.qrrs"));
  EXPECT_TRUE(f::wcmatch("ab", "ab**"));
  EXPECT_FALSE(f::wcmatch("ab", "abc"));
  EXPECT_FALSE(f::wcmatch("abc", "ab"));
  EXPECT_TRUE(f::wcmatch("anything", nullptr));
  EXPECT_TRUE(f::wcmatch("anything", ""));
  EXPECT_FALSE(f::wcmatch(nullptr, "*"));
  EXPECT_TRUE(f::wcmmatch("a.txt", "*.qrrs;*.txt"));
  EXPECT_FALSE(f::wcmmatch("a.doc", "*.qrrs;*.txt"));
  EXPECT_TRUE(f::wcmmatch("a.doc", nullptr));
}

TEST(SafeName, ReplacesAndTrims) {
  char out[64];
  EXPECT_EQ(cFolderContents::safeName("  a/b:c?  ", out, 64), 6);
  EXPECT_STREQ(out, "a=b_c~");
  // The last control character becomes a blank, and trailing blanks are removed.
  EXPECT_EQ(cFolderContents::safeName("\t\x01 \"x*y|z\"\x02", out, 64), 7);
  EXPECT_STREQ(out, "'x@y_z'");
  EXPECT_EQ(cFolderContents::safeName("a\x01"
                                      "b",
                                      out, 64),
            3);
  EXPECT_STREQ(out, "a b");
  EXPECT_EQ(cFolderContents::safeName("abcdef", out, 4), 3);
  EXPECT_STREQ(out, "abc");
  EXPECT_EQ(cFolderContents::safeName("   ", out, 64), 0);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(cFolderContents::safeName(nullptr, out, 64), 0);
  EXPECT_EQ(cFolderContents::safeName("x", nullptr, 64), 0);
}

} // namespace

#include "base/zpack.h"

namespace {

TEST(ZPack, OneStreamFilledExactly) {
  const std::string text = "language images and the configuration file are zlib streams";
  std::vector<unsigned char> packed;
  ASSERT_TRUE(zpackOnce(reinterpret_cast<const unsigned char*>(text.data()), text.size(), packed));
  std::string back(text.size(), '\0');
  auto* out = reinterpret_cast<unsigned char*>(back.data());
  ASSERT_TRUE(zunpackExactly(packed.data(), packed.size(), out, back.size()));
  EXPECT_EQ(back, text);
  packed.push_back(0x99); // bytes after the stream are ignored
  EXPECT_TRUE(zunpackExactly(packed.data(), packed.size(), out, back.size()));
  EXPECT_FALSE(zunpackExactly(packed.data(), packed.size(), out, back.size() - 1)); // too small
  std::string larger(text.size() + 1, '\0');
  EXPECT_FALSE(zunpackExactly(packed.data(), packed.size(),
                              reinterpret_cast<unsigned char*>(larger.data()), larger.size()));
  EXPECT_FALSE(zunpackExactly(packed.data(), packed.size() / 2, out, back.size())); // cut
  EXPECT_FALSE(zpackOnce(nullptr, 0, packed)); // no room for an empty input's stream
}

} // namespace
