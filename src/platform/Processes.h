// SPDX-License-Identifier: MIT
#pragma once
// Starting processes: with their output captured, and through the shell. Failures follow
// Platform.h (false, the code in LastError()).

#include "platform/Platform.h"

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

} // namespace kx::platform
