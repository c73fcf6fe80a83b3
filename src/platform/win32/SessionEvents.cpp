// SPDX-License-Identifier: MIT
// The hidden window of TKxSessionEvents. It is a hidden top-level window rather than a
// message-only one: WM_QUERYENDSESSION, WM_ENDSESSION and WM_POWERBROADCAST are sent to
// top-level windows only, and a message-only window would never see them.
#include "platform/SessionEvents.h"

#include <windows.h>

#include <atomic>

namespace kx::platform {

namespace {

constexpr const wchar_t* WindowClass = L"TKxSessionEventsWindow";
std::atomic<TSessionMessageProc> GProc{nullptr};

LRESULT CALLBACK SessionWndProc(HWND Window, UINT Msg, WPARAM WParam, LPARAM LParam) {
  if (const TSessionMessageProc Proc = GProc.load()) return Proc(Window, Msg, WParam, LParam);
  return DefWindowProcW(Window, Msg, WParam, LParam);
}

template <class F>
F Proc(HMODULE Module, const char* Name) {
  return reinterpret_cast<F>(reinterpret_cast<void*>(::GetProcAddress(Module, Name)));
}

HINSTANCE ThisModule() {
  HMODULE Module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                         GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&SessionWndProc), &Module);
  return Module;
}

bool RegisterWindowClass() {
  static const bool Registered = [] {
    WNDCLASSW Class{};
    Class.lpfnWndProc = &DefWindowProcW;
    Class.hInstance = ThisModule();
    Class.lpszClassName = WindowClass;
    return RegisterClassW(&Class) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
  }();
  return Registered;
}

} // namespace

void* AllocateSessionWindow(TSessionMessageProc Proc) {
  if (!RegisterWindowClass()) return nullptr;
  HWND Window = CreateWindowExW(WS_EX_TOOLWINDOW, WindowClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr,
                                nullptr, ThisModule(), nullptr);
  if (!Window) return nullptr;
  GProc.store(Proc);
  // The class keeps the default procedure; each window gets the unit's, as a subclass.
  SetWindowLongPtrW(Window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&SessionWndProc));
  return Window;
}

void DestroySessionWindow(void* Window) {
  if (Window) DestroyWindow(static_cast<HWND>(Window));
}

intptr_t DefSessionWindowProc(void* Window, uint32_t Msg, uintptr_t WParam, intptr_t LParam) {
  return DefWindowProcW(static_cast<HWND>(Window), Msg, WParam, LParam);
}

TSessionRegisterResult RegisterSessionNotification(void* Window, bool AllSessions) {
  HMODULE Library = LoadLibraryW(L"Wtsapi32.dll");
  if (!Library) return srNoLibrary;
  using TRegister = BOOL(WINAPI*)(HWND, DWORD);
  const auto Register = Proc<TRegister>(Library, "WTSRegisterSessionNotification");
  if (!Register) {
    FreeLibrary(Library);
    return srNoFunction;
  }
  // NOTIFY_FOR_ALL_SESSIONS is 1, NOTIFY_FOR_THIS_SESSION 0.
  const BOOL Ok = Register(static_cast<HWND>(Window), AllSessions ? 1 : 0);
  const DWORD Error = GetLastError();
  FreeLibrary(Library);
  if (Ok) return srOK;
  SetLastError(Error);
  return srFailed;
}

void UnRegisterSessionNotification(void* Window) {
  HMODULE Library = LoadLibraryW(L"Wtsapi32.dll");
  if (!Library) return;
  using TUnRegister = BOOL(WINAPI*)(HWND);
  if (const auto UnRegister = Proc<TUnRegister>(Library, "WTSUnRegisterSessionNotification"))
    UnRegister(static_cast<HWND>(Window));
  FreeLibrary(Library);
}

uint32_t CurrentSessionId() {
  using TProcessIdToSessionId = BOOL(WINAPI*)(DWORD, DWORD*);
  const auto Lookup =
      Proc<TProcessIdToSessionId>(GetModuleHandleW(L"kernel32.dll"), "ProcessIdToSessionId");
  DWORD Session = 0;
  if (!Lookup || !Lookup(GetCurrentProcessId(), &Session)) return 0;
  return Session;
}

} // namespace kx::platform
