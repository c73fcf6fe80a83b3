// SPDX-License-Identifier: MIT
#pragma once
// Starting processes: with their output captured, and through the shell. Failures follow
// Platform.h (false, the code in LastError()).

#include "platform/Platform.h"

#include <vector>

namespace kx::platform {

// No program is associated with the file for the operation (Windows' code; POSIX answers it
// where no desktop is there to open a file).
inline constexpr uint32_t ERROR_NO_ASSOCIATION_ = 1155;

// Receives each chunk of output as it is read; it may throw, which ends the capture (the pipe
// is closed and the process left to end on its own).
using TProcessOutput = void (*)(void* Context, const char* Data, size_t Size);

// Runs CommandLine in Directory (empty: the current folder) with standard output and standard
// error in one pipe, reads the pipe until every writer has closed it, then waits for the
// process and sets its exit code. Standard input is the null device. Windows: CreateProcess's
// command line. POSIX: the line is split into words (blanks separate; '...' literal, "..." and
// bare text with backslash escapes, no expansions), the program found along PATH, and a process
// ended by a signal answers 128 + the signal. False when the process cannot be started.
bool RunProcessCaptured(const AnsiString& CommandLine, const AnsiString& Directory,
                        TProcessOutput Output, void* Context, uint32_t& ExitCode);

// Opens or runs File with Parameters (a command-line tail) through the shell. Verb "open" or
// empty; Elevated asks for "runas" (POSIX: pkexec). Hidden starts without a window. Wait
// waits for the started process, keeping the thread's messages flowing on Windows. POSIX runs
// an executable File directly with the parameters split into words, and hands anything else to
// xdg-open, which needs a desktop (DISPLAY or WAYLAND_DISPLAY): without one it fails with
// ERROR_NO_ASSOCIATION_.
bool ShellExecute(const AnsiString& Verb, const AnsiString& File, const AnsiString& Parameters,
                  bool Elevated, bool Hidden, bool Wait);
// Runs a command in the system's command interpreter without waiting: cmd.exe with
// Parameters on Windows, /bin/sh -c Parameters on POSIX (under pkexec when Elevated).
bool ShellCommand(const AnsiString& Parameters, bool Elevated);

// Running processes by executable name: the name without its folder, compared ignoring case
// (a-z). Windows: the tool-help snapshot's executable names. POSIX: the name of /proc/PID/exe,
// or /proc/PID/comm where exe cannot be read (other users' processes; comm keeps only the first
// 15 characters, so a longer name is matched on those). Processes that have ended but are not
// yet reaped are not listed. False when the list cannot be read.
bool FindProcesses(const AnsiString& ExeName, std::vector<uint32_t>& Ids);
// The executable name of the current process, without its folder.
AnsiString CurrentExeName();
uint32_t CurrentProcessId();
// Whether the process runs (and has not merely ended unreaped).
bool ProcessRunning(uint32_t Id);
// Waits up to TimeoutMs for the process to end; true when it has.
bool WaitProcessEnd(uint32_t Id, uint32_t TimeoutMs);

// Asks a process to end as a user would: WM_CLOSE to each of its top-level windows (Windows),
// SIGTERM (POSIX). Sets Asked to false when there was nothing to ask (a Windows process without
// windows). False when the process cannot be reached (gone, access denied).
bool AskProcessToEnd(uint32_t Id, bool& Asked);
// Ends a process: TerminateProcess with exit code 1 (Windows); SIGTERM, then SIGKILL when it is
// still running after GraceMs (POSIX, so it gets a chance to clean up). Waits until it has
// ended, up to a few seconds, and sets Ended. False when it cannot be reached.
bool EndProcess(uint32_t Id, uint32_t GraceMs, bool& Ended);
// Brings the first visible top-level window of the process to the front. Sets Found to false
// when it has none. POSIX: false with ERROR_NOT_SUPPORTED_ (no window system here).
bool BringProcessToFront(uint32_t Id, bool& Found);

} // namespace kx::platform
