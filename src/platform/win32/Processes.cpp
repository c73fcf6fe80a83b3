// SPDX-License-Identifier: MIT
// Processes on Windows: CreateProcess with an anonymous pipe, ShellExecuteEx for the verbs.
#include "platform/Processes.h"

#include "platform/win32/WideNames.h"

#include <shellapi.h>
#include <windows.h>

// The platform layer's own names, not the A/W macros.
#undef ShellExecute

namespace kx::platform {

namespace {

struct THandle {
  HANDLE H = nullptr;
  ~THandle() {
    if (H && H != INVALID_HANDLE_VALUE) ::CloseHandle(H);
  }
};

// Waits for the process while the thread's window messages keep flowing.
void WaitPumping(HANDLE Process) {
  for (;;) {
    const DWORD R = ::MsgWaitForMultipleObjects(1, &Process, FALSE, INFINITE, QS_ALLINPUT);
    if (R != WAIT_OBJECT_0 + 1) return;
    MSG Msg;
    while (::PeekMessageW(&Msg, nullptr, 0, 0, PM_REMOVE)) {
      ::TranslateMessage(&Msg);
      ::DispatchMessageW(&Msg);
    }
  }
}

} // namespace

bool RunProcessCaptured(const AnsiString& CommandLine, const AnsiString& Directory,
                        TProcessOutput Output, void* Context, uint32_t& ExitCode) {
  std::wstring Command, Dir;
  if (!WideName(CommandLine, Command) || !WideName(Directory, Dir)) return false;
  SECURITY_ATTRIBUTES Sa{sizeof Sa, nullptr, TRUE};
  THandle Read, Write, Null;
  if (!::CreatePipe(&Read.H, &Write.H, &Sa, 0)) return false;
  // Only the writing end goes to the child.
  ::SetHandleInformation(Read.H, HANDLE_FLAG_INHERIT, 0);
  Null.H = ::CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &Sa,
                         OPEN_EXISTING, 0, nullptr);
  STARTUPINFOW Si{};
  Si.cb = sizeof Si;
  Si.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
  Si.wShowWindow = SW_HIDE;
  Si.hStdInput = Null.H;
  Si.hStdOutput = Write.H;
  Si.hStdError = Write.H;
  PROCESS_INFORMATION Pi{};
  Command.push_back(L'\0'); // CreateProcessW may write into the line
  if (!::CreateProcessW(nullptr, Command.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                        Dir.empty() ? nullptr : Dir.c_str(), &Si, &Pi))
    return false;
  THandle Process{Pi.hProcess}, Thread{Pi.hThread};
  // The child holds its own copy; ours must go so that the pipe ends with the child.
  ::CloseHandle(Write.H);
  Write.H = nullptr;
  char Buf[65536];
  DWORD Got = 0;
  while (::ReadFile(Read.H, Buf, sizeof Buf, &Got, nullptr) && Got > 0)
    if (Output) Output(Context, Buf, Got);
  ::WaitForSingleObject(Process.H, INFINITE);
  DWORD Code = 0;
  if (!::GetExitCodeProcess(Process.H, &Code)) return false;
  ExitCode = Code;
  return true;
}

bool ShellExecute(const AnsiString& Verb, const AnsiString& File, const AnsiString& Parameters,
                  bool Elevated, bool Hidden, bool Wait) {
  std::wstring WVerb, WFile, WParams;
  if (!WideName(Elevated ? AnsiString("runas") : Verb, WVerb) || !WideName(File, WFile) ||
      !WideName(Parameters, WParams))
    return false;
  SHELLEXECUTEINFOW Info{};
  Info.cbSize = sizeof Info;
  Info.fMask = SEE_MASK_FLAG_NO_UI | (Wait ? SEE_MASK_NOCLOSEPROCESS : 0);
  Info.lpVerb = WVerb.empty() ? nullptr : WVerb.c_str();
  Info.lpFile = WFile.c_str();
  Info.lpParameters = WParams.empty() ? nullptr : WParams.c_str();
  Info.nShow = Hidden ? SW_HIDE : SW_SHOWNORMAL;
  if (!::ShellExecuteExW(&Info)) return false;
  if (Wait && Info.hProcess) {
    WaitPumping(Info.hProcess);
    ::CloseHandle(Info.hProcess);
  }
  return true;
}

bool ShellCommand(const AnsiString& Parameters, bool Elevated) {
  return ShellExecute(AnsiString(), "cmd.exe", Parameters, Elevated, true, false);
}

} // namespace kx::platform
