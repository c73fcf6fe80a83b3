// SPDX-License-Identifier: MIT
// Shell execution of uKxWindows: mail addresses, web sites, files and commands, and processes
// whose output is captured.
#pragma once

#include <kx/rtl/Method.h>
#include <kx/rtl/Strings.h>

#include <vector>

namespace kx {

// Receives each chunk of a process's output as it arrives.
using TKxOnCmdOutputMethod = TMethod<void(const AnsiString& AOutput)>;

// Opens a mail to Address (trimmed; "mailto:" put before it unless its lower-case form holds
// "mailto:") with the verb "open" in a normal window. EOSError when the shell cannot.
KX_API void KxShellExecOpenEMail(const AnsiString& Address);
// Opens a web site (trimmed; "http://" put before it unless its lower-case form holds "http").
KX_API void KxShellExecOpenWebSite(const AnsiString& Address);
// Runs Parameters in the command interpreter, hidden and without waiting: cmd.exe on Windows,
// /bin/sh -c on Linux. AsAdministrator asks for elevation ("runas"; Linux: pkexec) when the
// process runs with a limited token. EOSError when it cannot start.
KX_API void KxShellExecCmd(const AnsiString& Parameters, bool AsAdministrator = false);

// The parameters as a command-line tail: each after a space, in double quotes unless it starts
// with "-" or "/".
KX_API AnsiString KxShellExecParameters(const std::vector<AnsiString>& Params);
// Opens FileName with the verb "open" and Params (quoted as above), elevated when asked and the
// token is limited, without waiting. Linux runs executables directly and opens other files with
// xdg-open, which needs a desktop: EOSError (1155, no association) without one.
KX_API void KxShellExec(const AnsiString& FileName, const std::vector<AnsiString>& Params = {},
                        bool AsAdministrator = false);
// The same with the verb "Open", waiting for the program to end (Windows keeps the thread's
// messages flowing meanwhile).
KX_API void KxShellExecRun(const AnsiString& FileName, const std::vector<AnsiString>& Params = {},
                           bool AsAdministrator = false);
KX_API void KxShellExecOpenFile(const AnsiString& FileName);
KX_API void KxShellExecOpenFile(const AnsiString& FileName, const std::vector<AnsiString>& Params);

// Runs CommandLine in Directory (empty: the current folder) with standard output and error in
// one pipe, and returns everything it wrote (as the bytes came) once it has ended. Linux splits
// the line into words (quotes and backslashes as in the shell, nothing expanded) and looks the
// program up along PATH. EOSError when the process cannot be started (a missing program gives
// the OS's "not found").
KX_API AnsiString KxRunProcessAndCaptureOutput(const AnsiString& CommandLine,
                                               const AnsiString& Directory);
// The same, setting the process's exit code (Linux: 128 + the signal for a killed process).
KX_API AnsiString KxRunProcessAndCaptureOutput(const AnsiString& CommandLine,
                                               const AnsiString& Directory, uint32_t& ExitCode);
// Hands each chunk to OnOutput as it is read instead, and returns the exit code. An exception
// from OnOutput ends the capture and propagates; the process is left to end on its own.
KX_API uint32_t KxRunProcessAndCaptureOutput(const AnsiString& CommandLine,
                                             const AnsiString& Directory,
                                             const TKxOnCmdOutputMethod& OnOutput);

} // namespace kx
