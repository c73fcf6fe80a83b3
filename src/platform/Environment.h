// SPDX-License-Identifier: MIT
#pragma once
// The platform's environment: which system runs, who runs the process, its environment
// strings and the well-known folders. Failures follow Platform.h (false or empty, the code in
// LastError()); what only Windows has fails with ERROR_NOT_SUPPORTED_ elsewhere.

#include "platform/Platform.h"

#include <string_view>
#include <utility>
#include <vector>

namespace kx::platform {

inline constexpr uint32_t ERROR_NOT_SUPPORTED_ = 50;

// The Windows version code (the probes of kernel32, GetVersionEx, the CurrentVersion key).
// Windows: the code, -1 when kernel32 cannot be found, -2 when no probed function exists.
// POSIX: 0 with ERROR_NOT_SUPPORTED_.
int32_t WindowsVersionCode();

// What the kernel says about the system. Windows: "Windows", the version numbers of
// RtlGetVersion ("10.0.19045", never the compatibility answer of GetVersionEx), the build with
// its service pack, the native processor architecture ("x86_64", "i686", "aarch64"). POSIX:
// uname's system name, no version, the kernel release and the machine.
struct TOSInfo {
  AnsiString Name, Version, Release, Machine;
  // Windows: the version numbers and the service pack. POSIX: the first three numbers of the
  // kernel release ("6.1.0-13-amd64" gives 6, 1, 0), no service pack.
  uint32_t Major = 0, Minor = 0, Build = 0;
  AnsiString ServicePack;
};
void GetOSInfo(TOSInfo& Info);
// The os-release file of the system (/etc/os-release, else /usr/lib/os-release); empty where
// there is none, as on Windows.
AnsiString OSReleaseFile();
// os-release text as NAME/value pairs in the order written: comments, lines that are no
// NAME=value and values with unbalanced quotes are skipped; '...' is taken as written, "..."
// and bare values lose the backslashes of the shell's escapes.
void ParseOSRelease(const AnsiString& Text, std::vector<std::pair<AnsiString, AnsiString>>& Items);
// The first value of Name among Items; empty when there is none.
AnsiString OSReleaseValue(const std::vector<std::pair<AnsiString, AnsiString>>& Items,
                          std::string_view Name);

// IsWow64Process for the current process, looked up at run time; false on POSIX.
bool IsWow64Process();
// Whether the library is built for a 64-bit processor.
constexpr bool IsCPU64Build() {
  return sizeof(void*) == 8;
}

// The elevation of the process token: 0 default, 1 full, 2 limited (token elevation type, then
// the elevation flag). POSIX: full for effective uid 0, limited otherwise.
int32_t ElevationLevel();

// The first file of that name along the system search path (SearchPath; POSIX: the folders
// of PATH). Empty when not found.
AnsiString SearchPath(const AnsiString& FileName);

// GetComputerNameA (512 characters); POSIX: gethostname.
bool ComputerName(AnsiString& Name);
// GetUserNameA (512 characters); POSIX: the effective user's login name.
bool UserName(AnsiString& Name);
// The account of the process token and its domain (LookupAccountSid, 200 characters each);
// POSIX: the effective user's name, the domain being the host name.
void AccountName(AnsiString& Name, AnsiString& Domain);
// The server comment of the local machine (NetServerGetInfo level 101, netapi32 loaded at run
// time). 0 done, 1 no netapi32, 2 a function missing, 3 the call failed. POSIX: the pretty
// host name of /etc/machine-info (empty when there is none), always 0.
int32_t ComputerDescription(AnsiString& Description);

// An environment variable (any length); false when it is not set.
bool GetEnvironmentVariable(const AnsiString& Name, AnsiString& Value);
bool SetEnvironmentVariable(const AnsiString& Name, const AnsiString& Value);
bool UnsetEnvironmentVariable(const AnsiString& Name);
// ExpandEnvironmentStrings: each %NAME% of a set variable becomes its value, names of unset
// ones stay as they are. POSIX renders Windows' rules (names ignore case there, not here).
AnsiString ExpandEnvironmentStrings(const AnsiString& S);

// A shell folder by its CSIDL number (SHGetSpecialFolderLocation); no trailing delimiter.
// POSIX maps the common ones to the XDG folders; others fail with ERROR_NOT_SUPPORTED_.
bool ShellFolder(int32_t Csidl, AnsiString& Path);

} // namespace kx::platform
