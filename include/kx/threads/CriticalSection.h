// SPDX-License-Identifier: MIT
#pragma once
// A recursive critical section that can be entered with a time-out and tells which thread
// holds it.

#include <kx/classes/Object.h>
#include <kx/rtl/System.h>

#include <atomic>
#include <chrono>
#include <cstdint>

namespace kx {

class KX_API TKxCriticalSection : public TKxObject {
  KX_CLASS(TKxCriticalSection, TKxObject)
public:
  // Raises EOSError when the OS refuses the semaphore.
  TKxCriticalSection();
  ~TKxCriticalSection() override;

  // Enters, waiting at most Timeout milliseconds (INFINITE_TIMEOUT: for ever) for another
  // owner to leave. The owner enters again at once.
  bool TryEnter(uint32_t Timeout);
  void Enter();
  // Leaves once; the last Leave of the owner frees the section. Does not check that the
  // caller owns it.
  void Leave();
  // The owner's thread id, 0 when free.
  TThreadID GetLockedBy() const;
  bool IsLocked() const;

  // Lockable and TimedLockable, so that std::lock_guard, std::scoped_lock and
  // std::unique_lock hold the section for a scope and leave it on every way out.
  void lock() { Enter(); }
  bool try_lock() { return TryEnter(0); }
  void unlock() { Leave(); }
  template <class Rep, class Period>
  bool try_lock_for(const std::chrono::duration<Rep, Period>& Time) {
    return TryEnter(TimeoutOf(Time));
  }
  template <class Clock, class Duration>
  bool try_lock_until(const std::chrono::time_point<Clock, Duration>& Time) {
    return try_lock_for(Time - Clock::now());
  }

private:
  // Whole milliseconds, rounded up so that a wait is never shorter than asked; a past time is
  // no wait, and a longer one than 32 bits hold is the longest finite wait.
  template <class Rep, class Period>
  static uint32_t TimeoutOf(const std::chrono::duration<Rep, Period>& Time) {
    if (Time <= Time.zero()) return 0;
    const auto Ms = std::chrono::ceil<std::chrono::milliseconds>(Time).count();
    return Ms >= int64_t(INFINITE_TIMEOUT) ? INFINITE_TIMEOUT - 1 : uint32_t(Ms);
  }
  // The slow path: waits on the semaphore for the section to be left.
  bool WaitToEnter(TThreadID Me, uint32_t Timeout);

  // 1 while a wake-up token sits in the semaphore and no waiter has taken it.
  std::atomic<int32_t> FSignalPending{1};
  int32_t FRecursionCount = 0;
  std::atomic<TThreadID> FOwnerThread{0};
  void* FSemaphore = nullptr;
};

} // namespace kx
