// SPDX-License-Identifier: MIT
// Running processes on Windows: tool-help snapshots, window messages and TerminateProcess.
#include "platform/Processes.h"

#include "platform/win32/WideNames.h"

#include <tlhelp32.h>
#include <windows.h>

namespace kx::platform {

namespace {

struct THandle {
  HANDLE H = nullptr;
  ~THandle() {
    if (H && H != INVALID_HANDLE_VALUE) ::CloseHandle(H);
  }
};

std::wstring BaseName(const std::wstring& Path) {
  const size_t Sep = Path.find_last_of(L"\\/:");
  return Sep == std::wstring::npos ? Path : Path.substr(Sep + 1);
}

// The process's top-level windows; only visible unowned ones when MainOnly.
struct TWindowSearch {
  DWORD Id;
  bool MainOnly;
  std::vector<HWND> Windows;
};

BOOL CALLBACK CollectWindow(HWND Window, LPARAM Param) {
  auto& Search = *reinterpret_cast<TWindowSearch*>(Param);
  DWORD Owner = 0;
  ::GetWindowThreadProcessId(Window, &Owner);
  if (Owner != Search.Id) return TRUE;
  if (Search.MainOnly && (!::IsWindowVisible(Window) || ::GetWindow(Window, GW_OWNER) != nullptr))
    return TRUE;
  Search.Windows.push_back(Window);
  return TRUE;
}

std::vector<HWND> ProcessWindows(DWORD Id, bool MainOnly) {
  TWindowSearch Search{Id, MainOnly, {}};
  ::EnumWindows(&CollectWindow, reinterpret_cast<LPARAM>(&Search));
  return Search.Windows;
}

// Whether the process can be reached at all: a handle for waiting on it.
bool OpenForWait(uint32_t Id, THandle& Process) {
  Process.H = ::OpenProcess(SYNCHRONIZE | PROCESS_QUERY_LIMITED_INFORMATION, FALSE, Id);
  return Process.H != nullptr;
}

} // namespace

bool FindProcesses(const AnsiString& ExeName, std::vector<uint32_t>& Ids) {
  Ids.clear();
  std::wstring Wanted;
  if (!WideName(ExeName, Wanted)) return false;
  Wanted = BaseName(Wanted);
  THandle Snapshot{::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0)};
  if (Snapshot.H == INVALID_HANDLE_VALUE) return false;
  PROCESSENTRY32W Entry{};
  Entry.dwSize = sizeof Entry;
  for (BOOL More = ::Process32FirstW(Snapshot.H, &Entry); More;
       More = ::Process32NextW(Snapshot.H, &Entry)) {
    if (::CompareStringOrdinal(BaseName(Entry.szExeFile).c_str(), -1, Wanted.c_str(), -1, TRUE) ==
        CSTR_EQUAL)
      Ids.push_back(Entry.th32ProcessID);
  }
  return true;
}

AnsiString CurrentExeName() {
  std::wstring Path(32768, L'\0');
  const DWORD N = ::GetModuleFileNameW(nullptr, Path.data(), DWORD(Path.size()));
  Path.resize(N);
  return NarrowName(BaseName(Path));
}

uint32_t CurrentProcessId() {
  return ::GetCurrentProcessId();
}

bool ProcessRunning(uint32_t Id) {
  THandle Process;
  if (!OpenForWait(Id, Process)) return false;
  return ::WaitForSingleObject(Process.H, 0) == WAIT_TIMEOUT;
}

bool WaitProcessEnd(uint32_t Id, uint32_t TimeoutMs) {
  THandle Process;
  // A process that can no longer be opened has ended.
  if (!OpenForWait(Id, Process)) return ::GetLastError() == ERROR_INVALID_PARAMETER;
  return ::WaitForSingleObject(Process.H, TimeoutMs) == WAIT_OBJECT_0;
}

bool AskProcessToEnd(uint32_t Id, bool& Asked) {
  Asked = false;
  THandle Process;
  if (!OpenForWait(Id, Process)) return false;
  for (HWND Window : ProcessWindows(Id, false)) {
    ::PostMessageW(Window, WM_CLOSE, 0, 0);
    Asked = true;
  }
  return true;
}

bool EndProcess(uint32_t Id, uint32_t, bool& Ended) {
  Ended = false;
  THandle Process{::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, Id)};
  if (!Process.H) return false;
  if (!::TerminateProcess(Process.H, 1)) {
    // A process that is already on its way out refuses with access denied.
    if (::WaitForSingleObject(Process.H, 0) != WAIT_OBJECT_0) return false;
  }
  // TerminateProcess only starts the end; the handle is signalled once it is complete.
  Ended = ::WaitForSingleObject(Process.H, 5000) == WAIT_OBJECT_0;
  return true;
}

bool BringProcessToFront(uint32_t Id, bool& Found) {
  Found = false;
  THandle Process;
  if (!OpenForWait(Id, Process)) return false;
  const std::vector<HWND> Windows = ProcessWindows(Id, true);
  if (Windows.empty()) return true;
  const HWND Window = Windows.front();
  Found = true;
  if (::IsIconic(Window)) ::ShowWindow(Window, SW_RESTORE);
  // Topmost and back again raises it above other programs' windows without keeping it there;
  // SetForegroundWindow alone is refused to a process that is not in the foreground.
  const UINT Flags = SWP_NOMOVE | SWP_NOSIZE | SWP_SHOWWINDOW;
  ::SetWindowPos(Window, HWND_TOPMOST, 0, 0, 0, 0, Flags);
  ::SetWindowPos(Window, HWND_NOTOPMOST, 0, 0, 0, 0, Flags);
  ::SetForegroundWindow(Window);
  return true;
}

} // namespace kx::platform
