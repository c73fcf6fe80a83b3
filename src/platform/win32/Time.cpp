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

} // namespace kx::platform
