// SPDX-License-Identifier: MIT
// Threads, time, errors and modules on Windows.
#include "platform/Platform.h"

#include <windows.h>

namespace kx::platform {

TThreadID CurrentThreadId() {
  return ::GetCurrentThreadId();
}
uint32_t TickCount() {
  return ::GetTickCount();
}
void Sleep(uint32_t Milliseconds) {
  ::Sleep(Milliseconds);
}

namespace {
constexpr DWORD MS_VC_EXCEPTION = 0x406D1388;

// Without a debugger nothing handles the naming exception; this handler swallows it so
// that raising it is harmless either way.
LONG CALLBACK SwallowThreadNameException(EXCEPTION_POINTERS* Info) {
  if (Info->ExceptionRecord->ExceptionCode == MS_VC_EXCEPTION) return EXCEPTION_CONTINUE_EXECUTION;
  return EXCEPTION_CONTINUE_SEARCH;
}
} // namespace

void SetOSThreadName(const AnsiString& Name) {
  // The debugger convention: THREADNAME_INFO {0x1000, name, thread (-1: this one), flags}.
  ULONG_PTR Args[4] = {0x1000, reinterpret_cast<ULONG_PTR>(Name.c_str()),
                       static_cast<ULONG_PTR>(0xFFFFFFFFu), 0};
  PVOID Handler = ::AddVectoredExceptionHandler(1, &SwallowThreadNameException);
  ::RaiseException(MS_VC_EXCEPTION, 0, 4, Args);
  if (Handler) ::RemoveVectoredExceptionHandler(Handler);

  // Windows 10 1607 and later also keep a description that tools read without a debugger.
  using TSetThreadDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
  static auto SetDescription = reinterpret_cast<TSetThreadDescription>(reinterpret_cast<void*>(
      ::GetProcAddress(::GetModuleHandleW(L"kernel32"), "SetThreadDescription")));
  if (SetDescription) {
    int Len = ::MultiByteToWideChar(CP_ACP, 0, Name.data(), int(Name.size()), nullptr, 0);
    std::wstring Wide(size_t(Len), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, Name.data(), int(Name.size()), Wide.data(), Len);
    SetDescription(::GetCurrentThread(), Wide.c_str());
  }
}

uint32_t LastError() {
  return ::GetLastError();
}
void SetLastError(uint32_t Code) {
  ::SetLastError(Code);
}

AnsiString ErrorMessage(uint32_t Code) {
  char* Buffer = nullptr;
  DWORD Len = ::FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                   FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_ARGUMENT_ARRAY,
                               nullptr, Code, 0, reinterpret_cast<char*>(&Buffer), 0, nullptr);
  AnsiString Text;
  if (Buffer) {
    Text.assign(Buffer, Len);
    ::LocalFree(Buffer);
  }
  // The system text ends with a line break (and sometimes a dot before it).
  while (!Text.empty() && (Text.back() == '\n' || Text.back() == '\r' || Text.back() == ' '))
    Text.pop_back();
  return Text;
}

void* GetModule(const char* Name) {
  return ::GetModuleHandleA(Name);
}
void* LoadModule(const char* Name) {
  return ::LoadLibraryA(Name);
}
void* GetProc(void* Module, const char* Name) {
  return Module ? reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(Module), Name))
                : nullptr;
}

} // namespace kx::platform
