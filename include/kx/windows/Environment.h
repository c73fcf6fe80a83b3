// SPDX-License-Identifier: MIT
// uKxWindows' questions about the system: the Windows version code, the system's name and
// version on every platform, bitness of the process and of files, the elevation of the process
// and the shell folders.
#pragma once

#include <kx/rtl/StringList.h>
#include <kx/rtl/Strings.h>
#include <kx/sysutils/StringUtils.h>

namespace kx {

enum TKxElevationLevel : uint8_t { elDefault, elFull, elLimited };

inline constexpr const char* SFailedToLoadKernel32 = "Failed to load Kernel32.dll!";
inline constexpr const char* SFailedToDetermineOS = "Failed to determine the version of the OS!";

// The Windows version code: 500 2000, 511-517 XP by service pack, 520/521/523 Server 2003,
// 601/602 Vista/Server 2008, 611/610 7/Server 2008 R2, 621 8, 630 8.1, 640 11, 620 servers
// after 2008 R2, 3-16 the systems before the version query. GetVersionEx answers 6.2 to
// programs that declare no later Windows in their manifest, so Windows 10 reads as 621 or 630
// there. Raises "Failed to load Kernel32.dll!" or "Failed to determine the version of the OS!";
// EKxNotSupported on other platforms, whose programs ask KxGetOSVersionInfo instead.
KX_API uint16_t KxGetWindowsVersion();

// What a log or a support report says about the system, on every platform.
struct TKxOSVersionInfo {
  // Windows: "Windows <code>" ("Windows 611"). Linux: PRETTY_NAME of os-release, else its NAME,
  // else the kernel's name ("Linux").
  AnsiString Name;
  // Windows: the real version numbers ("6.1.7601"). Linux: VERSION_ID of os-release.
  AnsiString Version;
  // Windows: the build, with the service pack when there is one ("7601 Service Pack 1").
  // Linux: the kernel release (uname -r).
  AnsiString Release;
  // The processor architecture: "x86_64", "i686", "aarch64" (uname -m).
  AnsiString Machine;
  // Windows: the real version numbers (6, 1, 7601). Linux: the kernel release's first three
  // numbers ("6.1.0-13-amd64" gives 6, 1, 0).
  uint32_t Major = 0, Minor = 0, Build = 0;
  // Windows: the service pack ("Service Pack 1"), empty without one; empty on Linux.
  AnsiString ServicePack;
};
KX_API TKxOSVersionInfo KxGetOSVersionInfo();
// One line of it: "<Name> <Version> (<Release>, <Machine>)", parts that are empty left out.
KX_API AnsiString KxGetOSVersionText();
// The os-release file KxGetOSVersionInfo reads (default: /etc/os-release, else
// /usr/lib/os-release; none on Windows). An empty name restores the default.
KX_API void KxSetOSReleaseFile(const AnsiString& FileName);
// Reads os-release text into Values as NAME=value items: comments and malformed lines are
// skipped, values are unquoted ('...' taken as written; "..." and bare values with the
// backslash escapes of the shell).
KX_API void KxParseOSRelease(const AnsiString& Text, TStrings* Values);

// Whether the library is built for a 64-bit processor: true in the x86_64 build, false in the
// i686 one.
KX_API bool IsCPU64();
// Whether this 32-bit process runs on 64-bit Windows (IsWow64Process, looked up at run time);
// false where the function is missing or fails, and always on Linux.
KX_API bool IsWow64();
// IsCPU64 or IsWow64.
KX_API bool IsOS64();
// Whether an executable file is built for a 64-bit processor: a PE file whose machine is not
// i386, or an ELF file of class 64. A name that does not exist is searched along the system
// search path (Linux: PATH). EFOpenError when it cannot be opened; false for anything else.
KX_API bool Is64BitFile(const AnsiString& FileName);

// The elevation of the process token: elFull when elevated, elLimited when not (on Linux: for
// effective uid 0 and for any other user), elDefault only when Windows answers neither query.
KX_API TKxElevationLevel KxGetElevationLevel();

// Shell folders by their Windows identifier. Linux has the XDG counterparts: personal documents
// $XDG_DOCUMENTS_DIR (user-dirs.dirs, else ~/Documents), desktop $XDG_DESKTOP_DIR, application
// data $XDG_CONFIG_HOME (~/.config), local application data $XDG_DATA_HOME (~/.local/share),
// the shared documents (where programs keep their logs) $XDG_STATE_HOME (~/.local/state),
// shared application data /var/lib, the Windows and system folders /usr/bin.
inline constexpr int32_t csidlPersonal = 0x05;
inline constexpr int32_t csidlDesktopDirectory = 0x10;
inline constexpr int32_t csidlAppData = 0x1A;
inline constexpr int32_t csidlLocalAppData = 0x1C;
inline constexpr int32_t csidlCommonAppData = 0x23;
inline constexpr int32_t csidlWindows = 0x24;
inline constexpr int32_t csidlSystem = 0x25;
inline constexpr int32_t csidlCommonDocuments = 0x2E;
// The folder's path without a trailing delimiter. EOSError when the shell has no such folder;
// EKxNotSupported on Linux for an identifier without a counterpart.
KX_API AnsiString KxGetShellFolder(int32_t CSIDL);
KX_API AnsiString KxGetMyDocumentsFolder();
// The shared documents folder (CSIDL_COMMON_DOCUMENTS; Linux: $XDG_STATE_HOME).
KX_API AnsiString KxGetSharedDocumentsFolder();

} // namespace kx
