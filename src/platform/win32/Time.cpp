// SPDX-License-Identifier: MIT
// The clock on Windows.
#include "platform/Platform.h"

#include <cstring>
#include <windows.h>

namespace kx::platform {

static_assert(sizeof(TSystemTime) == sizeof(SYSTEMTIME), "TSystemTime is SYSTEMTIME's layout");

void GetLocalTime(TSystemTime& Time) {
  SYSTEMTIME T;
  ::GetLocalTime(&T);
  std::memcpy(&Time, &T, sizeof T);
}

void GetSystemTime(TSystemTime& Time) {
  SYSTEMTIME T;
  ::GetSystemTime(&T);
  std::memcpy(&Time, &T, sizeof T);
}

uint32_t GetTimeZoneInformation(TTimeZoneBias& Zone) {
  TIME_ZONE_INFORMATION Info{};
  const DWORD Result = ::GetTimeZoneInformation(&Info);
  if (Result == TIME_ZONE_ID_INVALID) {
    Zone = {};
    return TIME_ZONE_ID_INVALID_;
  }
  Zone.Bias = Info.Bias;
  Zone.StandardBias = Info.StandardBias;
  Zone.DaylightBias = Info.DaylightBias;
  return Result;
}

} // namespace kx::platform
