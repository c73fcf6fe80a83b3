// SPDX-License-Identifier: MIT
// The recursive critical section with time-outs.
#include <kx/rtl/Exceptions.h>
#include <kx/threads/CriticalSection.h>

#include "platform/Platform.h"

namespace kx {

KX_IMPLEMENT_CLASS(TKxCriticalSection, TKxObject, "uKxThreads")

TKxCriticalSection::TKxCriticalSection() {
  FSemaphore = platform::CreateSemaphore(1, 0x7FFFFFFF);
  if (!FSemaphore) RaiseLastOSError();
}

TKxCriticalSection::~TKxCriticalSection() {
  if (FSemaphore) platform::CloseHandle(FSemaphore);
}

namespace {
// The fast path of every entry: a free section, or one the caller already owns.
inline bool TakeOrNest(std::atomic<TThreadID>& Owner, int32_t& RecursionCount, TThreadID Me) {
  TThreadID Previous = 0;
  if (Owner.compare_exchange_strong(Previous, Me) || Previous == Me) {
    ++RecursionCount;
    return true;
  }
  return false;
}
} // namespace

bool TKxCriticalSection::TryEnter(uint32_t Timeout) {
  const TThreadID Me = platform::CurrentThreadId();
  if (TakeOrNest(FOwnerThread, FRecursionCount, Me)) return true;
  return Timeout != 0 && WaitToEnter(Me, Timeout);
}

// Enter is TryEnter without a time-out; the fast path is repeated so that the usual case
// makes no further call.
void TKxCriticalSection::Enter() {
  const TThreadID Me = platform::CurrentThreadId();
  if (!TakeOrNest(FOwnerThread, FRecursionCount, Me)) WaitToEnter(Me, INFINITE_TIMEOUT);
}

bool TKxCriticalSection::WaitToEnter(TThreadID Me, uint32_t Timeout) {
  // Every pass waits the full time-out; only a lost race after a wake-up looks at the
  // time spent so far.
  const uint32_t Start = platform::TickCount();
  for (;;) {
    switch (platform::WaitFor(FSemaphore, Timeout)) {
    case wrSignaled: {
      FSignalPending.store(0);
      TThreadID Free = 0;
      if (FOwnerThread.compare_exchange_strong(Free, Me)) {
        ++FRecursionCount;
        return true;
      }
      if (platform::TickCount() - Start > Timeout) return false;
      break;
    }
    case wrTimeout:
      return false;
    default:
      RaiseLastOSError();
    }
  }
}

void TKxCriticalSection::Leave() {
  if (--FRecursionCount > 0) return;
  // The section is freed before the token is looked at: a waiter that took the last token
  // clears SignalPending before it tries for the owner, so a waiter that lost that try is
  // always seen here and woken again. (Looking first would let such a waiter sleep on while
  // the section stands free.) Only the Leave that finds no token posts one, so at most one
  // is outstanding; the plain read keeps the usual case free of a locked instruction.
  FOwnerThread.exchange(0);
  int32_t Expected = 0;
  if (FSignalPending.load() == 0 && FSignalPending.compare_exchange_strong(Expected, 1))
    platform::ReleaseSemaphore(FSemaphore, 1);
}

TThreadID TKxCriticalSection::GetLockedBy() const {
  return FOwnerThread.load();
}

bool TKxCriticalSection::IsLocked() const {
  return FOwnerThread.load() != 0;
}

} // namespace kx
