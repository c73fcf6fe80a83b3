// SPDX-License-Identifier: MIT
// Machine and process facts for log records on Windows.
#include "platform/Host.h"

#include <windows.h>

#include <shlobj.h>

namespace kx::platform {

AnsiString HostComputerName() {
  char Buffer[512];
  DWORD Size = sizeof Buffer;
  if (!GetComputerNameA(Buffer, &Size)) return AnsiString();
  return AnsiString(Buffer, Size);
}

AnsiString HostUserName() {
  char Buffer[512];
  DWORD Size = sizeof Buffer;
  // The count includes the terminator.
  if (!GetUserNameA(Buffer, &Size) || Size == 0) return AnsiString();
  return AnsiString(Buffer, Size - 1);
}

uint32_t HostProcessId() {
  return GetCurrentProcessId();
}

THostOSVersion HostOSVersion() {
  THostOSVersion Result;
  // RtlGetVersion reports the real version whatever the program's manifest says.
  OSVERSIONINFOEXW Info{};
  Info.dwOSVersionInfoSize = sizeof Info;
  using TRtlGetVersion = LONG(WINAPI*)(OSVERSIONINFOEXW*);
  HMODULE Ntdll = GetModuleHandleW(L"ntdll.dll");
  auto RtlGetVersion = Ntdll ? reinterpret_cast<TRtlGetVersion>(
                                   reinterpret_cast<void*>(GetProcAddress(Ntdll, "RtlGetVersion")))
                             : nullptr;
  if (!RtlGetVersion || RtlGetVersion(&Info) != 0) return Result;
  Result.Major = Info.dwMajorVersion;
  Result.Minor = Info.dwMinorVersion;
  Result.Build = Info.dwBuildNumber;
  for (const wchar_t* P = Info.szCSDVersion; *P; ++P)
    Result.ServicePack += static_cast<char>(*P < 128 ? *P : '?');
  const bool Workstation = Info.wProductType == VER_NT_WORKSTATION;
  if (Info.dwMajorVersion == 5)
    Result.Code =
        Info.dwMinorVersion == 0 ? 500
        : Info.dwMinorVersion == 1
            ? uint16_t(511 + 2 * (Info.wServicePackMajor < 3 ? Info.wServicePackMajor : 3))
            : 520;
  else if (Info.dwMajorVersion == 6 && Info.dwMinorVersion == 0)
    Result.Code = Workstation ? 601 : 602;
  else if (Info.dwMajorVersion == 6 && Info.dwMinorVersion == 1)
    Result.Code = Workstation ? 611 : 610;
  else
    Result.Code = Workstation ? 621 : 620;
  return Result;
}

bool HostScreen(int32_t& Width, int32_t& Height, int32_t& BitsPerPixel) {
  DEVMODEW Mode{};
  Mode.dmSize = sizeof Mode;
  if (!EnumDisplaySettingsW(nullptr, ENUM_CURRENT_SETTINGS, &Mode)) return false;
  Width = GetSystemMetrics(SM_CXSCREEN);
  Height = GetSystemMetrics(SM_CYSCREEN);
  BitsPerPixel = static_cast<int32_t>(Mode.dmBitsPerPel);
  return true;
}

AnsiString HostSharedDocumentsFolder() {
  char Path[MAX_PATH] = {};
  if (SHGetFolderPathA(nullptr, CSIDL_COMMON_DOCUMENTS, nullptr, 0, Path) != S_OK)
    return AnsiString();
  return AnsiString(Path);
}

void HostStampLocalTime(TSystemTime& Time) {
  SYSTEMTIME T;
  ::GetLocalTime(&T);
  Time = {T.wYear, T.wMonth, T.wDayOfWeek, T.wDay, T.wHour, T.wMinute, T.wSecond, T.wMilliseconds};
}

} // namespace kx::platform
