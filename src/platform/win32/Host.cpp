// SPDX-License-Identifier: MIT
// The screen and time stamps for log records on Windows.
#include "platform/Host.h"

#include <windows.h>

namespace kx::platform {

bool HostScreen(int32_t& Width, int32_t& Height, int32_t& BitsPerPixel) {
  DEVMODEW Mode{};
  Mode.dmSize = sizeof Mode;
  if (!EnumDisplaySettingsW(nullptr, ENUM_CURRENT_SETTINGS, &Mode)) return false;
  Width = GetSystemMetrics(SM_CXSCREEN);
  Height = GetSystemMetrics(SM_CYSCREEN);
  BitsPerPixel = static_cast<int32_t>(Mode.dmBitsPerPel);
  return true;
}

void HostStampLocalTime(TSystemTime& Time) {
  SYSTEMTIME T;
  ::GetLocalTime(&T);
  Time = {T.wYear, T.wMonth, T.wDayOfWeek, T.wDay, T.wHour, T.wMinute, T.wSecond, T.wMilliseconds};
}

} // namespace kx::platform
