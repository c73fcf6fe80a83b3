// SPDX-License-Identifier: MIT
// The environment on Windows: version probes, the process token, names, environment strings
// and shell folders.
#include "platform/Environment.h"

#include "platform/win32/WideNames.h"

#include <shlobj.h>
#include <windows.h>

#include <cstdlib>

// The platform layer's own names, not the A/W macros.
#undef GetEnvironmentVariable
#undef SetEnvironmentVariable
#undef ExpandEnvironmentStrings
#undef SearchPath

namespace kx::platform {

namespace {

constexpr REGSAM KeyReadAccess = 131097; // KEY_READ
constexpr const char* CurrentVersionKey = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

// A string value of HKLM's CurrentVersion key, the key opened for this one read.
AnsiString CurrentVersionValue(const char* ValueName) {
  HKEY Key = nullptr;
  if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, CurrentVersionKey, 0, KeyReadAccess, &Key) !=
      ERROR_SUCCESS)
    return AnsiString();
  char Buf[256] = {};
  DWORD Size = sizeof Buf - 1, Type = 0;
  AnsiString Result;
  if (::RegQueryValueExA(Key, ValueName, nullptr, &Type, reinterpret_cast<BYTE*>(Buf), &Size) ==
          ERROR_SUCCESS &&
      (Type == REG_SZ || Type == REG_EXPAND_SZ))
    Result = Buf;
  ::RegCloseKey(Key);
  return Result;
}

int32_t ToIntDef(const AnsiString& S, int32_t Default) {
  char* End = nullptr;
  const long V = std::strtol(S.c_str(), &End, 10);
  return (S.empty() || *End != '\0') ? Default : int32_t(V);
}

template <class F>
F Proc(HMODULE Module, const char* Name) {
  return reinterpret_cast<F>(reinterpret_cast<void*>(::GetProcAddress(Module, Name)));
}

} // namespace

int32_t WindowsVersionCode() {
  HMODULE Kernel = ::GetModuleHandleA("kernel32");
  if (!Kernel) return -1;
  auto Has = [Kernel](const char* Name) { return ::GetProcAddress(Kernel, Name) != nullptr; };
  if (!Has("GetVersionExA")) {
    // Systems older than the version query, told apart by what they export.
    if (Has("OpenThread")) return 11;
    if (Has("GetThreadPriorityBoost")) return 16;
    if (Has("IsDebuggerPresent")) return 7;
    if (Has("GetDiskFreeSpaceExA")) return 5;
    if (Has("ConnectNamedPipe")) return 14;
    if (Has("Beep")) return 3;
    return -2;
  }
  using TGetVersionExW = BOOL(WINAPI*)(OSVERSIONINFOEXW*);
  auto GetVersionEx = Proc<TGetVersionExW>(Kernel, "GetVersionExW");
  OSVERSIONINFOEXW V{};
  V.dwOSVersionInfoSize = sizeof V; // 284
  if (!GetVersionEx || !GetVersionEx(&V)) return -2;
  const bool Workstation = V.wProductType == VER_NT_WORKSTATION;
  if (V.dwMajorVersion == 5) {
    if (V.dwMinorVersion == 0) return 500;
    if (V.dwMinorVersion == 1) {
      switch (V.wServicePackMajor) {
      case 0:
        return 511;
      case 1:
        return 513;
      case 2:
        return 515;
      default:
        return 517;
      }
    }
    if (!Has("GetLargePageMinimum")) return 521;
    if (::GetSystemMetrics(89) != 0) return 523; // SM_SERVERR2
    return 520;
  }
  if (V.dwMajorVersion == 6 && V.dwMinorVersion == 0) return Workstation ? 601 : 602;
  if (V.dwMajorVersion == 6 && V.dwMinorVersion == 1) return Workstation ? 611 : 610;
  if (V.dwMajorVersion == 6 && Workstation) {
    if (ToIntDef(CurrentVersionValue("CurrentBuild"), 0) >= 22000) return 640;
    if (CurrentVersionValue("CurrentVersion") == "6.3") return 630;
    return 621;
  }
  return Workstation ? 621 : 620;
}

void GetOSInfo(TOSInfo& Info) {
  Info = TOSInfo();
  Info.Name = "Windows";
  // RtlGetVersion answers the real version; GetVersionEx answers what the manifest allows.
  using TRtlGetVersion = LONG(WINAPI*)(OSVERSIONINFOEXW*);
  OSVERSIONINFOEXW V{};
  V.dwOSVersionInfoSize = sizeof V;
  auto RtlGetVersion = Proc<TRtlGetVersion>(::GetModuleHandleA("ntdll"), "RtlGetVersion");
  if (RtlGetVersion && RtlGetVersion(&V) == 0) {
    char Buf[64];
    std::snprintf(Buf, sizeof Buf, "%lu.%lu.%lu", V.dwMajorVersion, V.dwMinorVersion,
                  V.dwBuildNumber);
    Info.Version = Buf;
    Info.Major = V.dwMajorVersion;
    Info.Minor = V.dwMinorVersion;
    Info.Build = V.dwBuildNumber;
    Info.ServicePack = NarrowName(V.szCSDVersion, ::wcslen(V.szCSDVersion));
    Info.Release = std::to_string(V.dwBuildNumber);
    if (!Info.ServicePack.empty()) Info.Release += " " + Info.ServicePack;
  }
  SYSTEM_INFO S{};
  ::GetNativeSystemInfo(&S);
  switch (S.wProcessorArchitecture) {
  case PROCESSOR_ARCHITECTURE_AMD64:
    Info.Machine = "x86_64";
    break;
  case PROCESSOR_ARCHITECTURE_INTEL:
    Info.Machine = "i686";
    break;
  case 12: // PROCESSOR_ARCHITECTURE_ARM64
    Info.Machine = "aarch64";
    break;
  default:
    Info.Machine = "unknown";
    break;
  }
}

AnsiString OSReleaseFile() {
  return AnsiString();
}

bool IsWow64Process() {
  using TIsWow64Process = BOOL(WINAPI*)(HANDLE, BOOL*);
  auto Query = Proc<TIsWow64Process>(::GetModuleHandleA("kernel32.dll"), "IsWow64Process");
  BOOL Result = FALSE;
  if (!Query || !Query(::GetCurrentProcess(), &Result)) return false;
  return Result != FALSE;
}

int32_t ElevationLevel() {
  HANDLE Token = nullptr;
  if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &Token)) return 0;
  int32_t Level = 0;
  DWORD Type = 0, Size = 0;
  if (::GetTokenInformation(Token, TOKEN_INFORMATION_CLASS(18), &Type, sizeof Type, &Size)) {
    if (Type == 2) Level = 1;
    if (Type == 3) Level = 2;
  }
  DWORD Elevated = 0;
  if (Level == 0 &&
      ::GetTokenInformation(Token, TOKEN_INFORMATION_CLASS(20), &Elevated, sizeof Elevated, &Size))
    Level = Elevated ? 1 : 2;
  ::CloseHandle(Token);
  return Level;
}

AnsiString SearchPath(const AnsiString& FileName) {
  std::wstring Wide;
  if (!WideName(FileName, Wide)) return AnsiString();
  wchar_t Buf[512] = {};
  const DWORD Len = ::SearchPathW(nullptr, Wide.c_str(), nullptr, 511, Buf, nullptr);
  if (Len == 0 || Len > 511) return AnsiString();
  return NarrowName(Buf, Len);
}

bool ComputerName(AnsiString& Name) {
  wchar_t Buf[512] = {};
  DWORD Size = 512;
  if (!::GetComputerNameW(Buf, &Size)) return false;
  Name = NarrowName(Buf, Size);
  return true;
}

bool UserName(AnsiString& Name) {
  wchar_t Buf[512] = {};
  DWORD Size = 512;
  if (!::GetUserNameW(Buf, &Size)) return false;
  // The count includes the terminator.
  Name = NarrowName(Buf, Size > 0 ? Size - 1 : 0);
  return true;
}

void AccountName(AnsiString& Name, AnsiString& Domain) {
  Name.clear();
  Domain.clear();
  HANDLE Token = nullptr;
  if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &Token)) return;
  alignas(8) unsigned char Buf[512];
  DWORD Size = 0;
  if (::GetTokenInformation(Token, TokenUser, Buf, sizeof Buf, &Size)) {
    auto* User = reinterpret_cast<TOKEN_USER*>(Buf);
    wchar_t NameBuf[200] = {}, DomainBuf[200] = {};
    DWORD NameLen = 200, DomainLen = 200;
    SID_NAME_USE Use{};
    if (::LookupAccountSidW(nullptr, User->User.Sid, NameBuf, &NameLen, DomainBuf, &DomainLen,
                            &Use)) {
      Name = NarrowName(NameBuf, ::wcslen(NameBuf));
      Domain = NarrowName(DomainBuf, ::wcslen(DomainBuf));
    }
  }
  ::CloseHandle(Token);
}

int32_t ComputerDescription(AnsiString& Description) {
  Description.clear();
  HMODULE Net = ::LoadLibraryA("netapi32.dll");
  if (!Net) return 1;
  struct TServerInfo101 {
    DWORD PlatformId;
    wchar_t* Name;
    DWORD VersionMajor, VersionMinor, Type;
    wchar_t* Comment;
  };
  using TNetServerGetInfo = DWORD(WINAPI*)(wchar_t*, DWORD, BYTE**);
  using TNetApiBufferFree = DWORD(WINAPI*)(void*);
  auto GetInfo = Proc<TNetServerGetInfo>(Net, "NetServerGetInfo");
  auto BufferFree = Proc<TNetApiBufferFree>(Net, "NetApiBufferFree");
  int32_t Result = 0;
  BYTE* Buf = nullptr;
  if (!GetInfo || !BufferFree)
    Result = 2;
  else if (GetInfo(nullptr, 101, &Buf) != 0)
    Result = 3;
  else if (Buf) {
    const wchar_t* Comment = reinterpret_cast<TServerInfo101*>(Buf)->Comment;
    if (Comment) Description = NarrowName(Comment, ::wcslen(Comment));
    BufferFree(Buf);
  }
  ::FreeLibrary(Net);
  return Result;
}

bool GetEnvironmentVariable(const AnsiString& Name, AnsiString& Value) {
  std::wstring WName;
  if (!WideName(Name, WName)) return false;
  std::wstring Buf(512, L'\0');
  for (;;) {
    ::SetLastError(0);
    const DWORD Len = ::GetEnvironmentVariableW(WName.c_str(), Buf.data(), DWORD(Buf.size()));
    if (Len == 0) {
      // An empty value is set all the same.
      if (::GetLastError() != 0) return false;
      Value.clear();
      return true;
    }
    if (Len < Buf.size()) {
      Value = NarrowName(Buf.data(), Len);
      return true;
    }
    Buf.assign(Len, L'\0');
  }
}

bool SetEnvironmentVariable(const AnsiString& Name, const AnsiString& Value) {
  std::wstring WName, WValue;
  if (!WideName(Name, WName) || !WideName(Value, WValue)) return false;
  return ::SetEnvironmentVariableW(WName.c_str(), WValue.c_str()) != FALSE;
}

bool UnsetEnvironmentVariable(const AnsiString& Name) {
  std::wstring WName;
  if (!WideName(Name, WName)) return false;
  return ::SetEnvironmentVariableW(WName.c_str(), nullptr) != FALSE;
}

AnsiString ExpandEnvironmentStrings(const AnsiString& S) {
  std::wstring Wide;
  if (!WideName(S, Wide)) return AnsiString();
  const DWORD Needed = ::ExpandEnvironmentStringsW(Wide.c_str(), nullptr, 0);
  if (Needed == 0) return AnsiString();
  std::wstring Buf(Needed, L'\0');
  const DWORD Len = ::ExpandEnvironmentStringsW(Wide.c_str(), Buf.data(), Needed);
  if (Len == 0 || Len > Needed) return AnsiString();
  // The count includes the terminator.
  return NarrowName(Buf.data(), Len - 1);
}

bool ShellFolder(int32_t Csidl, AnsiString& Path) {
  LPITEMIDLIST List = nullptr;
  const HRESULT Hr = ::SHGetSpecialFolderLocation(nullptr, Csidl, &List);
  if (FAILED(Hr) || !List) {
    ::SetLastError(DWORD(Hr));
    return false;
  }
  wchar_t Buf[MAX_PATH + 1] = {};
  const BOOL Ok = ::SHGetPathFromIDListW(List, Buf);
  ::CoTaskMemFree(List);
  if (!Ok) {
    ::SetLastError(ERROR_PATH_NOT_FOUND);
    return false;
  }
  Path = NarrowName(Buf, ::wcslen(Buf));
  return true;
}

} // namespace kx::platform
