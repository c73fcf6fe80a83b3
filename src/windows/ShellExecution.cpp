// SPDX-License-Identifier: MIT
// Shell execution and captured processes of uKxWindows.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/SysUtils.h>
#include <kx/windows/Environment.h>
#include <kx/windows/ShellExecution.h>

#include "platform/Environment.h"
#include "platform/Processes.h"

namespace kx {

namespace {

// "runas" only where it changes something: a limited token on a system that has elevation.
bool UseRunAs(bool Requested) {
  if (!Requested || KxGetElevationLevel() != elLimited) return false;
  const int32_t Code = platform::WindowsVersionCode();
  return Code >= 601 || (Code == 0 && platform::LastError() == platform::ERROR_NOT_SUPPORTED_);
}

void Shell(const AnsiString& Verb, const AnsiString& File, const AnsiString& Parameters,
           bool Elevated, bool Wait) {
  if (!platform::ShellExecute(Verb, File, Parameters, Elevated, false, Wait)) RaiseLastOSError();
}

void AppendChunk(void* Context, const char* Data, size_t Size) {
  static_cast<AnsiString*>(Context)->append(Data, Size);
}

void CallMethod(void* Context, const char* Data, size_t Size) {
  (*static_cast<const TKxOnCmdOutputMethod*>(Context))(AnsiString(Data, Size));
}

} // namespace

void KxShellExecOpenEMail(const AnsiString& Address) {
  AnsiString A = Trim(Address);
  if (LowerCase(A).find("mailto:") == AnsiString::npos) A = "mailto:" + A;
  Shell("open", A, AnsiString(), false, false);
}

void KxShellExecOpenWebSite(const AnsiString& Address) {
  AnsiString A = Trim(Address);
  if (LowerCase(A).find("http") == AnsiString::npos) A = "http://" + A;
  Shell("open", A, AnsiString(), false, false);
}

void KxShellExecCmd(const AnsiString& Parameters, bool AsAdministrator) {
  if (!platform::ShellCommand(Parameters, UseRunAs(AsAdministrator))) RaiseLastOSError();
}

AnsiString KxShellExecParameters(const std::vector<AnsiString>& Params) {
  AnsiString Result;
  for (const AnsiString& P : Params) {
    if (!P.empty() && (P[0] == '-' || P[0] == '/'))
      Result += " " + P;
    else
      Result += " \"" + P + "\"";
  }
  return Result;
}

void KxShellExec(const AnsiString& FileName, const std::vector<AnsiString>& Params,
                 bool AsAdministrator) {
  Shell("open", FileName, KxShellExecParameters(Params), UseRunAs(AsAdministrator), false);
}

void KxShellExecRun(const AnsiString& FileName, const std::vector<AnsiString>& Params,
                    bool AsAdministrator) {
  Shell("Open", FileName, KxShellExecParameters(Params), UseRunAs(AsAdministrator), true);
}

void KxShellExecOpenFile(const AnsiString& FileName) {
  Shell("open", FileName, AnsiString(), false, false);
}

void KxShellExecOpenFile(const AnsiString& FileName, const std::vector<AnsiString>& Params) {
  Shell("open", FileName, KxShellExecParameters(Params), false, false);
}

AnsiString KxRunProcessAndCaptureOutput(const AnsiString& CommandLine,
                                        const AnsiString& Directory) {
  uint32_t ExitCode = 0;
  return KxRunProcessAndCaptureOutput(CommandLine, Directory, ExitCode);
}

AnsiString KxRunProcessAndCaptureOutput(const AnsiString& CommandLine, const AnsiString& Directory,
                                        uint32_t& ExitCode) {
  AnsiString Output;
  if (!platform::RunProcessCaptured(CommandLine, Directory, &AppendChunk, &Output, ExitCode))
    RaiseLastOSError();
  return Output;
}

uint32_t KxRunProcessAndCaptureOutput(const AnsiString& CommandLine, const AnsiString& Directory,
                                      const TKxOnCmdOutputMethod& OnOutput) {
  uint32_t ExitCode = 0;
  if (!platform::RunProcessCaptured(CommandLine, Directory, OnOutput ? &CallMethod : nullptr,
                                    const_cast<TKxOnCmdOutputMethod*>(&OnOutput), ExitCode))
    RaiseLastOSError();
  return ExitCode;
}

} // namespace kx
