// SPDX-License-Identifier: MIT
// The clock on POSIX: local time through localtime_r, so that TZ is honoured.
#include "platform/Platform.h"

#include <ctime>

namespace kx::platform {

namespace {

void ToSystemTime(const tm& T, long NSec, TSystemTime& Time) {
  Time.wYear = uint16_t(T.tm_year + 1900);
  Time.wMonth = uint16_t(T.tm_mon + 1);
  Time.wDayOfWeek = uint16_t(T.tm_wday);
  Time.wDay = uint16_t(T.tm_mday);
  Time.wHour = uint16_t(T.tm_hour);
  Time.wMinute = uint16_t(T.tm_min);
  // A leap second is held in the last one of its minute, as Windows never shows one.
  Time.wSecond = uint16_t(T.tm_sec > 59 ? 59 : T.tm_sec);
  Time.wMilliseconds = uint16_t(NSec / 1000000);
}

} // namespace

void GetLocalTime(TSystemTime& Time) {
  timespec Ts{};
  clock_gettime(CLOCK_REALTIME, &Ts);
  // localtime_r does not look at TZ again by itself; tzset does, cheaply when it is unchanged.
  tzset();
  tm T{};
  localtime_r(&Ts.tv_sec, &T);
  ToSystemTime(T, Ts.tv_nsec, Time);
}

void GetSystemTime(TSystemTime& Time) {
  timespec Ts{};
  clock_gettime(CLOCK_REALTIME, &Ts);
  tm T{};
  gmtime_r(&Ts.tv_sec, &T);
  ToSystemTime(T, Ts.tv_nsec, Time);
}

} // namespace kx::platform
