// SPDX-License-Identifier: MIT
// Threads, time, errors and modules on POSIX.
#include "platform/Platform.h"
#include "platform/Processes.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <pthread.h>
#include <unistd.h>

namespace kx::platform {

TThreadID CurrentThreadId() {
  // gettid is a system call each time; the id of a thread never changes. The locks ask on
  // every entry, so the cache is initial-exec (one load through %fs instead of a call to
  // __tls_get_addr) and zero-initialised (no guard).
  static thread_local TThreadID Cached [[gnu::tls_model("initial-exec")]] = 0;
  if (Cached == 0) Cached = static_cast<TThreadID>(gettid());
  return Cached;
}

uint32_t TickCount() {
  timespec Ts{};
  clock_gettime(CLOCK_MONOTONIC, &Ts);
  return static_cast<uint32_t>(uint64_t(Ts.tv_sec) * 1000u + uint64_t(Ts.tv_nsec) / 1000000u);
}

void Sleep(uint32_t Milliseconds) {
  timespec Ts{static_cast<time_t>(Milliseconds / 1000), long(Milliseconds % 1000) * 1000000L};
  while (nanosleep(&Ts, &Ts) != 0 && errno == EINTR) {
  }
}

void SetOSThreadName(const AnsiString& Name) {
  // Linux keeps 15 bytes and a terminator; cut on a UTF-8 boundary.
  size_t Len = Name.size() < 15 ? Name.size() : 15;
  while (Len > 0 && Len < Name.size() && (static_cast<unsigned char>(Name[Len]) & 0xC0) == 0x80)
    --Len;
  pthread_setname_np(pthread_self(), Name.substr(0, Len).c_str());
}

uint32_t LastError() {
  return static_cast<uint32_t>(errno);
}
void SetLastError(uint32_t Code) {
  errno = static_cast<int>(Code);
}

AnsiString ErrorMessage(uint32_t Code) {
  // The Win32 codes the library reports on POSIX too.
  switch (Code) {
  case ERROR_INVALID_PARAMETER_:
    return "The parameter is incorrect.";
  case ERROR_INSUFFICIENT_BUFFER_:
    return "The data area passed to a system call is too small.";
  case ERROR_NO_UNICODE_TRANSLATION_:
    return "No mapping for the Unicode character exists in the target multi-byte code page.";
  case ERROR_INVALID_FLAGS_:
    return "Invalid flags.";
  case ERROR_NO_ASSOCIATION_:
    return "No application is associated with the specified file for this operation.";
  default:
    break;
  }
  char Buf[256];
  // GNU strerror_r may return a static string instead of filling Buf.
  const char* Text = strerror_r(static_cast<int>(Code), Buf, sizeof Buf);
  return Text ? Text : "";
}

void* GetModule(const char* Name) {
  return dlopen(Name, RTLD_LAZY | RTLD_NOLOAD);
}
void* LoadModule(const char* Name) {
  return dlopen(Name, RTLD_LAZY);
}
void* GetProc(void* Module, const char* Name) {
  return Module ? dlsym(Module, Name) : nullptr;
}

} // namespace kx::platform
