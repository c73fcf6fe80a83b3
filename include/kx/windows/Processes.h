// SPDX-License-Identifier: MIT
// Running processes of uKxWindows: found by executable name, asked to close, killed, and their
// window brought to the front.
#pragma once

#include <kx/rtl/Strings.h>

#include <cstdint>

namespace kx {

// Whether a process of that executable runs. ExeName is the file name ("notepad.exe"; on Linux
// "bash"), a folder before it is ignored, and case is ignored (a-z). Linux reads /proc: the
// name of the process's executable, or for processes of other users, whose executable cannot
// be read, their 15-character comm name. Processes that have ended count no longer.
KX_API bool KxProcessExists(const AnsiString& ExeName);
// The id of the first process of that executable; 0 when there is none.
KX_API uint32_t KxGetProcessID(const AnsiString& ExeName);

// Asks the process to end as its user would: WM_CLOSE to each of its top-level windows
// (Windows), SIGTERM (Linux). Waits up to TimeoutMs and tells whether it has ended; false at once
// for a Windows process without windows. EOSError when the process cannot be reached (it does
// not exist, access is denied).
KX_API bool KxCloseProcess(uint32_t ProcessID, uint32_t TimeoutMs = 5000);
// Ends the process and tells whether it has ended: TerminateProcess with exit code 1 on Windows;
// on Linux SIGTERM, so it can clean up, and SIGKILL when it is still running after GraceMs.
// EOSError when the process cannot be reached.
KX_API bool KxKillProcess(uint32_t ProcessID, uint32_t GraceMs = 2000);
// Kills every other process of the executable (default: the current program's, so a program
// that must run once can clear the way) and returns how many ended. Processes that cannot be
// killed (another user's, or ended meanwhile) are passed over.
KX_API int32_t KxKillRunningInstances(const AnsiString& ExeName = AnsiString());

// Brings the process's first visible top-level window to the front (restored when minimised);
// false when the process has no such window. EOSError when the process cannot be reached;
// EKxNotSupported on Linux, where the library has no window system to ask.
KX_API bool KxBringToFront(uint32_t ProcessID);

} // namespace kx
