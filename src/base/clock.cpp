#include "clock.h"

#include <atomic>
#include <chrono>
#include <ctime>
#include <sys/time.h>

#include "str.h"

namespace {

constexpr int kNoZone = 780; // no real offset: nothing computed yet
std::atomic<int> gZoneMin{kNoZone};
std::atomic<long long> gDltShift{-1};

long long gmtOffset(time_t t) {
  tm local;
  localtime_r(&t, &local);
  return local.tm_gmtoff;
}

bool isDst(time_t t) {
  tm local;
  localtime_r(&t, &local);
  return local.tm_isdst > 0;
}

// Offset now less the standard (smaller) offset of this year: the daylight-saving shift
// in force now, 0 in winter or where there is none.
long long currentDltShift() {
  const time_t now = time(nullptr);
  tm date;
  localtime_r(&now, &date);
  date.tm_mon = 0;
  date.tm_mday = 1;
  date.tm_hour = 12;
  date.tm_isdst = -1;
  const long long january = gmtOffset(mktime(&date));
  date.tm_mon = 6;
  date.tm_isdst = -1;
  const long long july = gmtOffset(mktime(&date));
  const long long standard = january < july ? january : july;
  return gmtOffset(now) - standard;
}

bool isLeap(unsigned int y) {
  return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

unsigned long long yearStart(unsigned int y) {
  if (y <= 1972) return (y - 1970) * 365ULL;
  if (y <= 2000) return 1096 + 1461ULL * ((y - 1973) / 4) + 365ULL * ((y - 1973) % 4);
  const unsigned int inCentury = (y - 2001) % 100;
  return 11323 + 36524ULL * ((y - 2001) / 100) + 1461ULL * (inCentury / 4) +
         365ULL * (inCentury % 4);
}

void fromTm(const tm& t, sTimestamp& out) {
  out.year = static_cast<uint16_t>(t.tm_year + 1900);
  out.month = static_cast<uint8_t>(t.tm_mon + 1);
  out.day = static_cast<uint8_t>(t.tm_mday);
  out.hour = static_cast<uint8_t>(t.tm_hour);
  out.minute = static_cast<uint8_t>(t.tm_min);
  out.second = static_cast<uint8_t>(t.tm_sec);
}

void utcFields(long long t, sTimestamp& out) {
  const time_t tt = static_cast<time_t>(t);
  tm fields;
  gmtime_r(&tt, &fields);
  fromTm(fields, out);
}

} // namespace

unsigned int ticks_ms() {
  static const auto origin = std::chrono::steady_clock::now();
  return static_cast<unsigned int>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                       std::chrono::steady_clock::now() - origin)
                                       .count());
}

unsigned long long ticks_us() {
  timeval now;
  gettimeofday(&now, nullptr);
  return static_cast<unsigned long long>(now.tv_sec) * 1000000ULL +
         static_cast<unsigned long long>(now.tv_usec);
}

int timeZoneMin() {
  int zone = gZoneMin;
  if (zone == kNoZone) {
    zone = static_cast<int>(gmtOffset(time(nullptr)) / 60);
    gZoneMin = zone;
  }
  return zone;
}

long long utcToLocal(long long t) {
  return t + timeZoneMin() * 60LL;
}
long long localToUTC(long long t) {
  return t - timeZoneMin() * 60LL;
}

long long localTimeFixDLT(long long t) {
  long long shift = gDltShift;
  if (shift < 0) {
    shift = currentDltShift();
    gDltShift = shift;
  }
  return isDst(static_cast<time_t>(localToUTC(t))) ? t : t - shift;
}

unsigned long long getCurrUnixTime() {
  return static_cast<unsigned long long>(time(nullptr));
}

unsigned long long toUnix(const sTimestamp& t) {
  if (t.year < 1970) return 0;
  static const unsigned int before[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  const unsigned int month = t.month < 1 ? 1 : t.month > 12 ? 12 : t.month;
  unsigned long long days = yearStart(t.year) + before[month - 1];
  if (month > 2 && isLeap(t.year)) ++days;
  const unsigned long long day = t.day > 0 ? t.day - 1u : 0u;
  return (days + day) * 86400ULL + t.hour * 3600ULL + t.minute * 60ULL + t.second;
}

unsigned long long toWinTime(const sTimestamp& t) {
  return kWinEpochTicks + toUnix(t) * 10000000ULL;
}

unsigned long long toWinTime(unsigned int low, int high) {
  const unsigned long long seconds =
      (static_cast<unsigned long long>(static_cast<unsigned int>(high)) << 32) | low;
  return kWinEpochTicks + seconds * 10000000ULL;
}

unsigned long long toUnixBigTime(unsigned long long winTime) {
  return winTime < kWinEpochTicks ? 0 : (winTime - kWinEpochTicks) / 10000000ULL;
}

unsigned int toUnixTime(unsigned long long winTime) {
  return static_cast<unsigned int>(toUnixBigTime(winTime));
}

void unixToTimestamp(unsigned int t, sTimestamp& out) {
  utcFields(t, out);
}

void winToTimestamp(unsigned long long winTime, sTimestamp& out) {
  utcFields(static_cast<long long>(toUnixBigTime(winTime)), out);
}

void getCurrTimestamp(sTimestamp& out) {
  const time_t now = time(nullptr);
  tm local;
  localtime_r(&now, &local);
  fromTm(local, out);
}

bool unixToStr(unsigned int t, char* out, long long size) {
  if (!out || size <= 0) return false;
  if (t == 0 || t == 0xFFFFFFFF) {
    _strcpy_s(out, size, "-");
    return true;
  }
  sTimestamp s;
  unixToTimestamp(t, s);
  _sprintf_s(out, size, "%02d.%02d.%04d %02d:%02d:%02d", s.day, s.month, s.year, s.hour, s.minute,
             s.second);
  return true;
}

void base_detail::resetClockCaches() {
  tzset();
  gZoneMin = kNoZone;
  gDltShift = -1;
}
