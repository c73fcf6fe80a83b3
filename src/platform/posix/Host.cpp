// SPDX-License-Identifier: MIT
// The screen and time stamps for log records on POSIX.
#include "platform/Host.h"

#include <ctime>

namespace kx::platform {

bool HostScreen(int32_t&, int32_t&, int32_t&) {
  return false;
}

void HostStampLocalTime(TSystemTime& Time) {
  timespec Ts{};
  clock_gettime(CLOCK_REALTIME, &Ts);
  // tzset looks at the zone file on every call; once a second is enough for a time stamp.
  thread_local time_t CachedSecond = -1;
  thread_local tm Cached{};
  if (Ts.tv_sec != CachedSecond) {
    tzset();
    localtime_r(&Ts.tv_sec, &Cached);
    CachedSecond = Ts.tv_sec;
  }
  Time.wYear = uint16_t(Cached.tm_year + 1900);
  Time.wMonth = uint16_t(Cached.tm_mon + 1);
  Time.wDayOfWeek = uint16_t(Cached.tm_wday);
  Time.wDay = uint16_t(Cached.tm_mday);
  Time.wHour = uint16_t(Cached.tm_hour);
  Time.wMinute = uint16_t(Cached.tm_min);
  Time.wSecond = uint16_t(Cached.tm_sec > 59 ? 59 : Cached.tm_sec);
  Time.wMilliseconds = uint16_t(Ts.tv_nsec / 1000000);
}

} // namespace kx::platform
