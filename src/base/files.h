// Files: free functions over platform handles, cFileIO, and a scoped handle.
//
// Paths are UTF-8 with "/" separators. Every operation reports failure by its result
// (false, -1 or 0) and never throws; a closed or invalid handle simply fails.
#pragma once

#include <cstdint>

#include "buffers.h"

enum eFileMode { fmRead = 1, fmWrite = 2, fmReadWrite = 3 }; // 0 counts as read-only

using tFileHandle = intptr_t; // a file descriptor in a pointer-sized value
constexpr tFileHandle file_invalid_handle = -1;

tFileHandle file_open(const char* path, int mode);             // an existing file
tFileHandle file_create(const char* path, int mode);           // created or truncated, mode 0664
unsigned long long file_size(tFileHandle h);                   // 0 when unknown
long long file_read(tFileHandle h, void* buf, unsigned int n); // bytes moved, or -1
long long file_write(tFileHandle h, const void* buf, unsigned int n);
bool file_set_fp(tFileHandle h, unsigned long long offset);     // from the start
bool file_set_fp_end(tFileHandle h, unsigned long long offset); // offset bytes before the end
bool file_set_eof(tFileHandle h, unsigned long long length);
// t1: local time in seconds since 1970, 0xFFFFFFFF when not given (then false); access
// and modification times both become t1 in UTC. t2 and t3 are not used.
bool file_set_time(tFileHandle h, unsigned long long t1, unsigned long long t2,
                   unsigned long long t3);
bool file_set_time(tFileHandle h, int year, int month, int day, int hour, int minute, int second);
bool file_close(tFileHandle h);
inline bool file_valid(tFileHandle h) {
  return h != file_invalid_handle;
}
// The platform's text for an error number, after "context: " when a context is given.
bool getOSErrorMessage(int error, _guardchar<char>& out, const char* context = nullptr);

// True when a file stands at path that the user may not write, or that is marked read-only
// for everyone (which even the superuser, who may write it, is asked about).
bool file_read_only(const char* path);

// Writing a whole file so that it is never seen half written: the bytes go to a new file
// beside path, are flushed to the disk and renamed over path, so that path holds either its
// old bytes or all the new ones, whatever happens (a full disk, a crash, a power cut). A
// symbolic link stays a link: the file it names is replaced. A replaced file keeps its
// permissions, and its owner and group where the system allows; a new one gets the
// permissions of file_create. On failure the new file is removed,
// and the result says which step failed and the error number.
enum eReplaceStep { rsNone = 0, rsCreate = 1, rsWrite = 2, rsFlush = 3, rsRename = 4 };
struct sReplaceResult {
  eReplaceStep failed = rsNone;
  int error = 0; // errno of the failed step
  bool ok() const { return failed == rsNone; }
};
sReplaceResult file_replace(const char* path, const void* data, unsigned long long size);
// Makes every later file_replace fail at step with error, as a full disk or a lost
// connection would, until it is called with rsNone; for the tests of what the callers do
// then. The failure is made where the real one would happen, so that what the caller sees
// (and what is left on the disk) is what a real failure leaves.
void file_replace_fail_at(eReplaceStep step, int error);

// A byte target: read and write move what they can; readf and writef succeed only when
// exactly the bytes asked for were moved.
class cFileIOTarget {
public:
  virtual ~cFileIOTarget() = default;
  virtual long long read(void* buf, unsigned int n) = 0;
  virtual long long write(const void* buf, unsigned int n) = 0;
  bool readf(void* buf, unsigned int n) { return read(buf, n) == static_cast<long long>(n); }
  bool writef(const void* buf, unsigned int n) {
    return write(buf, n) == static_cast<long long>(n);
  }
};

class cFileIO : public cFileIOTarget {
public:
  static constexpr int kTypeFile = 1;

  cFileIO() = default;
  cFileIO(const cFileIO&) = delete;
  cFileIO& operator=(const cFileIO&) = delete;
  ~cFileIO() override { close(); }

  virtual int typeOf() const { return kTypeFile; }
  virtual bool open(const char* path, int mode); // keeps the path on success
  virtual bool create(const char* path, int mode);
  virtual unsigned long long size();
  long long read(void* buf, unsigned int n) override;
  long long write(const void* buf, unsigned int n) override;
  virtual bool set_fp(unsigned long long offset);
  virtual bool set_fp_end(unsigned long long offset);
  virtual bool set_eof(unsigned long long length);
  virtual bool set_time(unsigned long long t1, unsigned long long t2, unsigned long long t3);
  virtual bool set_time(int year, int month, int day, int hour, int minute, int second);
  virtual void close(); // harmless when closed
  virtual bool valid() const { return file_valid(myHandle); }
  const char* path() const { return myPath.c_str(); }
  tFileHandle handle() const { return myHandle; }

  // Advisory exclusive locks on a byte range (shared with other processes, not threads):
  // lock fails at once when another process holds the range, lock_w waits for it.
  bool lock(unsigned long long offset, unsigned long long length);
  bool lock_w(unsigned long long offset, unsigned long long length);
  bool unlock(unsigned long long offset, unsigned long long length);

  static bool remove(const char* path);
  static bool move(const char* from, const char* to);

private:
  bool adopt(tFileHandle h, const char* path);
  bool setLock(int type, bool wait, unsigned long long offset, unsigned long long length);

  tFileHandle myHandle = file_invalid_handle;
  _guardchar<char> myPath;
};

// Owns one handle and closes it.
class cSafeFD {
public:
  cSafeFD() = default;
  explicit cSafeFD(tFileHandle h) : myHandle(h) {}
  cSafeFD(const cSafeFD&) = delete;
  cSafeFD& operator=(const cSafeFD&) = delete;
  ~cSafeFD() { close(); }

  void set(tFileHandle h) {
    close();
    myHandle = h;
  }
  void close() {
    if (file_valid(myHandle)) file_close(myHandle);
    myHandle = file_invalid_handle;
  }
  bool valid() const { return file_valid(myHandle); }
  tFileHandle get() const { return myHandle; }

private:
  tFileHandle myHandle = file_invalid_handle;
};
