// SPDX-License-Identifier: MIT
#pragma once
// What a log record says about the machine and the process it was written on.

#include <kx/rtl/DateTime.h>
#include <kx/rtl/Strings.h>

#include <cstdint>

namespace kx::platform {

AnsiString HostComputerName();
AnsiString HostUserName();
uint32_t HostProcessId();

struct THostOSVersion {
  uint32_t Major = 0, Minor = 0, Build = 0;
  AnsiString ServicePack;
  // The Windows version code (601 Vista, 611 Windows 7, ...); 0 where there is none.
  uint16_t Code = 0;
  // The system's own name where it has no version code ("Debian GNU/Linux 12 (bookworm)").
  AnsiString Name;
};
THostOSVersion HostOSVersion();

// Width, height and colour depth of the primary screen; false where there is none.
bool HostScreen(int32_t& Width, int32_t& Height, int32_t& BitsPerPixel);

// The folder shared by all users' documents (Windows), the user's state folder elsewhere.
AnsiString HostSharedDocumentsFolder();

// The local time for time stamps written many times a second: the zone is looked at again
// when the second changes, not on every call.
void HostStampLocalTime(TSystemTime& Time);

} // namespace kx::platform
