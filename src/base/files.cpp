#include "files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "clock.h"
#include "str.h"

namespace {

int fd(tFileHandle h) {
  return static_cast<int>(h);
}

int accessFlags(int mode) {
  const bool r = mode & fmRead, w = mode & fmWrite;
  return r && w ? O_RDWR : w ? O_WRONLY : O_RDONLY;
}

} // namespace

tFileHandle file_open(const char* path, int mode) {
  if (!path) return file_invalid_handle;
  return ::open(path, accessFlags(mode) | O_CLOEXEC);
}

tFileHandle file_create(const char* path, int mode) {
  if (!path) return file_invalid_handle;
  const int h = ::open(path, accessFlags(mode) | O_CREAT | O_TRUNC | O_CLOEXEC, 0664);
  if (h >= 0) fchmod(h, 0664); // the process's permission mask must not narrow them
  return h;
}

unsigned long long file_size(tFileHandle h) {
  struct stat st;
  if (!file_valid(h) || fstat(fd(h), &st) != 0) return 0;
  return static_cast<unsigned long long>(st.st_size);
}

long long file_read(tFileHandle h, void* buf, unsigned int n) {
  if (!file_valid(h) || (!buf && n)) return -1;
  return ::read(fd(h), buf, n);
}

long long file_write(tFileHandle h, const void* buf, unsigned int n) {
  if (!file_valid(h) || (!buf && n)) return -1;
  return ::write(fd(h), buf, n);
}

bool file_set_fp(tFileHandle h, unsigned long long offset) {
  if (!file_valid(h)) return false;
  return lseek(fd(h), static_cast<off_t>(offset), SEEK_SET) == static_cast<off_t>(offset);
}

bool file_set_fp_end(tFileHandle h, unsigned long long offset) {
  if (file_valid(h)) lseek(fd(h), -static_cast<off_t>(offset), SEEK_END);
  return true;
}

bool file_set_eof(tFileHandle h, unsigned long long length) {
  return file_valid(h) && ftruncate(fd(h), static_cast<off_t>(length)) == 0;
}

bool file_set_time(tFileHandle h, unsigned long long t1, unsigned long long, unsigned long long) {
  if (!file_valid(h) || t1 == 0xFFFFFFFF) return false;
  const timespec utc = {static_cast<time_t>(localToUTC(static_cast<long long>(t1))), 0};
  const timespec times[2] = {utc, utc};
  return futimens(fd(h), times) == 0;
}

bool file_set_time(tFileHandle h, int year, int month, int day, int hour, int minute, int second) {
  sTimestamp t;
  t.year = static_cast<uint16_t>(year);
  t.month = static_cast<uint8_t>(month);
  t.day = static_cast<uint8_t>(day);
  t.hour = static_cast<uint8_t>(hour);
  t.minute = static_cast<uint8_t>(minute);
  t.second = static_cast<uint8_t>(second);
  return file_set_time(h, toUnix(t), 0xFFFFFFFF, 0xFFFFFFFF);
}

bool file_close(tFileHandle h) {
  return file_valid(h) && ::close(fd(h)) == 0;
}

bool getOSErrorMessage(int error, _guardchar<char>& out, const char* context) {
  char text[256];
  const char* message = strerror_r(error, text, sizeof text);
  char line[512];
  if (context && *context) {
    _sprintf_s(line, sizeof line, "%s: %s", context, message);
  } else {
    _strcpy_s(line, sizeof line, message);
  }
  out.set(line);
  return true;
}

bool cFileIO::adopt(tFileHandle h, const char* path) {
  if (!file_valid(h)) return false;
  myHandle = h;
  myPath.set(path);
  return true;
}

bool cFileIO::open(const char* path, int mode) {
  close();
  return adopt(file_open(path, mode), path);
}

bool cFileIO::create(const char* path, int mode) {
  close();
  return adopt(file_create(path, mode), path);
}

unsigned long long cFileIO::size() {
  return file_size(myHandle);
}
long long cFileIO::read(void* buf, unsigned int n) {
  return file_read(myHandle, buf, n);
}
long long cFileIO::write(const void* buf, unsigned int n) {
  return file_write(myHandle, buf, n);
}
bool cFileIO::set_fp(unsigned long long offset) {
  return file_set_fp(myHandle, offset);
}
bool cFileIO::set_fp_end(unsigned long long offset) {
  return file_set_fp_end(myHandle, offset);
}
bool cFileIO::set_eof(unsigned long long length) {
  return file_set_eof(myHandle, length);
}

bool cFileIO::set_time(unsigned long long t1, unsigned long long t2, unsigned long long t3) {
  return file_set_time(myHandle, t1, t2, t3);
}

bool cFileIO::set_time(int year, int month, int day, int hour, int minute, int second) {
  return file_set_time(myHandle, year, month, day, hour, minute, second);
}

void cFileIO::close() {
  if (file_valid(myHandle)) file_close(myHandle);
  myHandle = file_invalid_handle;
  myPath.clear();
}

bool cFileIO::setLock(int type, bool wait, unsigned long long offset, unsigned long long length) {
  if (!valid()) return false;
  struct flock range = {};
  range.l_type = static_cast<short>(type);
  range.l_whence = SEEK_SET;
  range.l_start = static_cast<off_t>(offset);
  range.l_len = static_cast<off_t>(length);
  int rc;
  do {
    rc = fcntl(fd(myHandle), wait ? F_SETLKW : F_SETLK, &range);
  } while (rc != 0 && wait && errno == EINTR);
  return rc == 0;
}

bool cFileIO::lock(unsigned long long offset, unsigned long long length) {
  return setLock(F_WRLCK, false, offset, length);
}

bool cFileIO::lock_w(unsigned long long offset, unsigned long long length) {
  return setLock(F_WRLCK, true, offset, length);
}

bool cFileIO::unlock(unsigned long long offset, unsigned long long length) {
  return setLock(F_UNLCK, false, offset, length);
}

bool cFileIO::remove(const char* path) {
  return path && ::unlink(path) == 0;
}

bool cFileIO::move(const char* from, const char* to) {
  return from && to && ::rename(from, to) == 0;
}

bool file_read_only(const char* path) {
  struct stat st {};
  if (!path || ::stat(path, &st) != 0 || !S_ISREG(st.st_mode)) return false;
  return ::access(path, W_OK) != 0 || (st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}
