// SPDX-License-Identifier: MIT
// The clock on POSIX: local time through localtime_r, so that TZ is honoured.
#include "platform/Platform.h"

#include <cerrno>
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

uint32_t GetTimeZoneInformation(TTimeZoneBias& Zone) {
  Zone = {};
  tzset();
  const time_t Now = time(nullptr);
  tm T{};
  if (!localtime_r(&Now, &T)) {
    SetLastError(uint32_t(errno));
    return TIME_ZONE_ID_INVALID_;
  }
  const bool InDaylight = T.tm_isdst > 0;
  // The offset of the zone's other half, when it has one: half a year away in either direction
  // covers both hemispheres.
  constexpr time_t HalfYear = 182 * 24 * 3600;
  bool HasOther = false;
  long Other = 0;
  for (const time_t Probe : {Now + HalfYear, Now - HalfYear}) {
    tm P{};
    if (localtime_r(&Probe, &P) && (P.tm_isdst > 0) != InDaylight) {
      HasOther = true;
      Other = P.tm_gmtoff;
      break;
    }
  }
  // Whole minutes, as Windows keeps them; the sum of the two biases is the offset of now.
  const int32_t Current = int32_t(-T.tm_gmtoff / 60);
  if (InDaylight) {
    // Without a standard half in reach, the zone's own standard offset (seconds west).
    Zone.Bias = int32_t(HasOther ? -Other / 60 : ::timezone / 60);
    Zone.DaylightBias = Current - Zone.Bias;
    return 2;
  }
  Zone.Bias = Current;
  if (!HasOther) return 0;
  Zone.DaylightBias = int32_t(-Other / 60) - Current;
  return 1;
}

} // namespace kx::platform
