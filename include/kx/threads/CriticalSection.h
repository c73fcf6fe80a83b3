#pragma once
// A recursive critical section that can be entered with a time-out and tells which thread
// holds it.

#include <kx/classes/Object.h>
#include <kx/rtl/System.h>

#include <atomic>

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

private:
  // The slow path: waits on the semaphore for the section to be left.
  bool WaitToEnter(TThreadID Me, uint32_t Timeout);

  // 1 while a wake-up token sits in the semaphore and no waiter has taken it.
  std::atomic<int32_t> FSignalPending{1};
  int32_t FRecursionCount = 0;
  std::atomic<TThreadID> FOwnerThread{0};
  void* FSemaphore = nullptr;
};

} // namespace kx
