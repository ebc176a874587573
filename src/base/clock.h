// Clock and calendar.
//
// Times are seconds since 1 January 1970 unless named otherwise; "Windows time" counts
// 100-nanosecond ticks since 1601. toUnix uses its own calendar arithmetic, which gives
// every century from 2001 on 36524 days (2400 included).
#pragma once

#include <cstdint>

struct sTimestamp {
  uint16_t year = 0; // full year
  uint8_t month = 0; // 1-12
  uint8_t day = 0;   // 1-31
  uint8_t hour = 0;
  uint8_t minute = 0;
  uint8_t second = 0;
};

constexpr unsigned long long kWinEpochTicks = 116444736000000000ULL; // 1970 in 1601 ticks

unsigned int ticks_ms();       // ms since the first call (which returns 0)
unsigned long long ticks_us(); // wall-clock microseconds since 1970

int timeZoneMin(); // local minus UTC in minutes, computed once
long long utcToLocal(long long t);
long long localToUTC(long long t);
// A local time computed with the current offset, corrected when t itself is not in
// daylight-saving time while now is (the shift is measured once).
long long localTimeFixDLT(long long t);

unsigned long long getCurrUnixTime();
unsigned long long toUnix(const sTimestamp& t); // t taken as UTC; years before 1970 give 0
unsigned long long toWinTime(const sTimestamp& t);
unsigned long long toWinTime(unsigned int low, int high); // seconds as two halves
unsigned int toUnixTime(unsigned long long winTime);
unsigned long long toUnixBigTime(unsigned long long winTime);
void unixToTimestamp(unsigned int t, sTimestamp& out); // UTC fields
void winToTimestamp(unsigned long long winTime, sTimestamp& out);
void getCurrTimestamp(sTimestamp& out); // local time now
// "dd.mm.yyyy hh:mm:ss" in UTC, or "-" for 0 and 0xFFFFFFFF; false for a null or empty out.
bool unixToStr(unsigned int t, char* out, long long size);

namespace base_detail {
// For tests: forget the cached zone offset and daylight-saving shift (after changing TZ).
void resetClockCaches();
} // namespace base_detail
