// SPDX-License-Identifier: MIT
// Semaphores, events and the slim reader/writer lock on Windows.
#include "platform/Platform.h"

#include <windows.h>

// The layer's own names, not the A/W macros of <windows.h>.
#undef CreateEvent
#undef CreateSemaphore

namespace kx::platform {

Handle CreateSemaphore(int32_t InitialCount, int32_t MaximumCount) {
  return ::CreateSemaphoreW(nullptr, InitialCount, MaximumCount, nullptr);
}
bool ReleaseSemaphore(Handle Semaphore, int32_t Count) {
  return ::ReleaseSemaphore(Semaphore, Count, nullptr) != 0;
}
Handle CreateEvent(bool ManualReset, bool InitialState) {
  return ::CreateEventW(nullptr, ManualReset, InitialState, nullptr);
}
bool SetEvent(Handle Event) {
  return ::SetEvent(Event) != 0;
}
bool ResetEvent(Handle Event) {
  return ::ResetEvent(Event) != 0;
}

TWaitResult WaitFor(Handle Object, uint32_t TimeoutMs) {
  switch (::WaitForSingleObject(Object, TimeoutMs)) {
  case WAIT_OBJECT_0:
    return wrSignaled;
  case WAIT_TIMEOUT:
    return wrTimeout;
  case WAIT_ABANDONED:
    return wrAbandoned;
  default:
    return wrError;
  }
}

void CloseHandle(Handle Object) {
  ::CloseHandle(Object);
}

bool BindRWLockFunctions(TRWLockFunctions& Functions) {
  HMODULE Kernel = ::GetModuleHandleW(L"kernel32");
  if (!Kernel) return false;
  // Each pointer is taken as found: a missing function stays null.
  auto Bind = [Kernel](auto& Slot, const char* Name) {
    Slot = reinterpret_cast<std::remove_reference_t<decltype(Slot)>>(
        reinterpret_cast<void*>(::GetProcAddress(Kernel, Name)));
  };
  Bind(Functions.AcquireExclusive, "AcquireSRWLockExclusive");
  Bind(Functions.TryAcquireExclusive, "TryAcquireSRWLockExclusive");
  Bind(Functions.ReleaseExclusive, "ReleaseSRWLockExclusive");
  Bind(Functions.AcquireShared, "AcquireSRWLockShared");
  Bind(Functions.TryAcquireShared, "TryAcquireSRWLockShared");
  Bind(Functions.ReleaseShared, "ReleaseSRWLockShared");
  return true;
}

// An SRW lock owns no resources.
void DestroyRWLock(void*) {}

} // namespace kx::platform
