// SPDX-License-Identifier: MIT
// Semaphores, events and the reader/writer lock on POSIX.
#include "platform/Platform.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>

namespace kx::platform {

namespace {

timespec Deadline(uint32_t TimeoutMs) {
  timespec Ts{};
  clock_gettime(CLOCK_MONOTONIC, &Ts);
  Ts.tv_sec += TimeoutMs / 1000;
  Ts.tv_nsec += long(TimeoutMs % 1000) * 1000000L;
  if (Ts.tv_nsec >= 1000000000L) {
    Ts.tv_sec += 1;
    Ts.tv_nsec -= 1000000000L;
  }
  return Ts;
}

struct TWaitable {
  virtual ~TWaitable() = default;
  virtual TWaitResult Wait(uint32_t TimeoutMs) = 0;
};

struct TSemaphore final : TWaitable {
  sem_t Sem;
  int32_t Maximum;
  TWaitResult Wait(uint32_t TimeoutMs) override {
    int Rc;
    if (TimeoutMs == INFINITE_TIMEOUT) {
      while ((Rc = sem_wait(&Sem)) != 0 && errno == EINTR) {
      }
    } else if (TimeoutMs == 0) {
      Rc = sem_trywait(&Sem);
      if (Rc != 0 && errno == EAGAIN) return wrTimeout;
    } else {
      timespec Ts = Deadline(TimeoutMs);
      while ((Rc = sem_clockwait(&Sem, CLOCK_MONOTONIC, &Ts)) != 0 && errno == EINTR) {
      }
      if (Rc != 0 && errno == ETIMEDOUT) return wrTimeout;
    }
    return Rc == 0 ? wrSignaled : wrError;
  }
};

struct TEvent final : TWaitable {
  pthread_mutex_t Mutex;
  pthread_cond_t Cond;
  bool ManualReset;
  bool Signaled;
  TWaitResult Wait(uint32_t TimeoutMs) override {
    timespec Ts = Deadline(TimeoutMs == INFINITE_TIMEOUT ? 0 : TimeoutMs);
    pthread_mutex_lock(&Mutex);
    int Rc = 0;
    while (!Signaled && Rc == 0) {
      if (TimeoutMs == INFINITE_TIMEOUT)
        Rc = pthread_cond_wait(&Cond, &Mutex);
      else if (TimeoutMs == 0)
        Rc = ETIMEDOUT;
      else
        Rc = pthread_cond_timedwait(&Cond, &Mutex, &Ts);
    }
    bool Got = Signaled;
    if (Got && !ManualReset) Signaled = false;
    pthread_mutex_unlock(&Mutex);
    if (Got) return wrSignaled;
    return Rc == ETIMEDOUT ? wrTimeout : wrError;
  }
};

} // namespace

Handle CreateSemaphore(int32_t InitialCount, int32_t MaximumCount) {
  if (InitialCount < 0 || MaximumCount <= 0 || InitialCount > MaximumCount) {
    SetLastError(ERROR_INVALID_PARAMETER_);
    return nullptr;
  }
  auto* S = new (std::nothrow) TSemaphore;
  if (!S) {
    SetLastError(ENOMEM);
    return nullptr;
  }
  S->Maximum = MaximumCount;
  if (sem_init(&S->Sem, 0, static_cast<unsigned>(InitialCount)) != 0) {
    int Err = errno;
    delete S;
    SetLastError(static_cast<uint32_t>(Err));
    return nullptr;
  }
  return static_cast<TWaitable*>(S);
}

bool ReleaseSemaphore(Handle Semaphore, int32_t Count) {
  auto* S = dynamic_cast<TSemaphore*>(static_cast<TWaitable*>(Semaphore));
  if (!S || Count <= 0) {
    SetLastError(ERROR_INVALID_PARAMETER_);
    return false;
  }
  int Value = 0;
  sem_getvalue(&S->Sem, &Value);
  if (int64_t(Value) + Count > S->Maximum) {
    SetLastError(298); // ERROR_TOO_MANY_POSTS, as Win32 reports it
    return false;
  }
  for (int32_t I = 0; I < Count; ++I)
    if (sem_post(&S->Sem) != 0) return false;
  return true;
}

Handle CreateEvent(bool ManualReset, bool InitialState) {
  auto* E = new (std::nothrow) TEvent;
  if (!E) {
    SetLastError(ENOMEM);
    return nullptr;
  }
  pthread_condattr_t Attr;
  pthread_condattr_init(&Attr);
  pthread_condattr_setclock(&Attr, CLOCK_MONOTONIC);
  pthread_cond_init(&E->Cond, &Attr);
  pthread_condattr_destroy(&Attr);
  pthread_mutex_init(&E->Mutex, nullptr);
  E->ManualReset = ManualReset;
  E->Signaled = InitialState;
  return static_cast<TWaitable*>(E);
}

static TEvent* AsEvent(Handle H) {
  return dynamic_cast<TEvent*>(static_cast<TWaitable*>(H));
}

bool SetEvent(Handle Event) {
  TEvent* E = AsEvent(Event);
  if (!E) return SetLastError(ERROR_INVALID_PARAMETER_), false;
  pthread_mutex_lock(&E->Mutex);
  E->Signaled = true;
  if (E->ManualReset)
    pthread_cond_broadcast(&E->Cond);
  else
    pthread_cond_signal(&E->Cond);
  pthread_mutex_unlock(&E->Mutex);
  return true;
}

bool ResetEvent(Handle Event) {
  TEvent* E = AsEvent(Event);
  if (!E) return SetLastError(ERROR_INVALID_PARAMETER_), false;
  pthread_mutex_lock(&E->Mutex);
  E->Signaled = false;
  pthread_mutex_unlock(&E->Mutex);
  return true;
}

TWaitResult WaitFor(Handle Object, uint32_t TimeoutMs) {
  if (!Object) return SetLastError(ERROR_INVALID_PARAMETER_), wrError;
  return static_cast<TWaitable*>(Object)->Wait(TimeoutMs);
}

void CloseHandle(Handle Object) {
  auto* W = static_cast<TWaitable*>(Object);
  if (auto* S = dynamic_cast<TSemaphore*>(W)) sem_destroy(&S->Sem);
  if (auto* E = AsEvent(W)) {
    pthread_cond_destroy(&E->Cond);
    pthread_mutex_destroy(&E->Mutex);
  }
  delete W;
}

// --- reader/writer lock --------------------------------------------------------------

namespace {

// The lock word: glibc's reader/writer lock, and the writer with its depth, which the lock
// needs to let its writer read and write again without letting go, as the synchronizer does.
// Only the writer changes Depth, and only while it holds the lock.
struct TRWLock {
  pthread_rwlock_t Lock;
  std::atomic<TThreadID> Writer;
  int32_t Depth;
};
static_assert(sizeof(TRWLock) <= RWLockWordSize);
static_assert(std::atomic<TThreadID>::is_always_lock_free);

TRWLock* RW(void* Lock) {
  return static_cast<TRWLock*>(Lock);
}

// glibc answers nothing else for a valid lock word, so another answer means the word is
// corrupt, and going on would hand the lock to two writers.
[[noreturn]] void LockFailed(const char* Call, int Rc) {
  std::fprintf(stderr, "kxcommon: %s failed with error %d on a reader/writer lock\n", Call, Rc);
  std::abort();
}

// A zeroed word is PTHREAD_RWLOCK_INITIALIZER in glibc (readers first, so a nested read never
// waits for a waiting writer), as a zeroed SRW lock is free.
void AcquireExclusive(void* Lock) {
  TRWLock* L = RW(Lock);
  const int Rc = pthread_rwlock_wrlock(&L->Lock);
  if (Rc == EDEADLK) { // the caller writes already
    ++L->Depth;
    return;
  }
  if (Rc != 0) LockFailed("pthread_rwlock_wrlock", Rc);
  L->Writer.store(CurrentThreadId(), std::memory_order_relaxed);
  L->Depth = 1;
}

// The try operations never nest: a held lock refuses them, whoever holds it.
uint8_t TryAcquireExclusive(void* Lock) {
  TRWLock* L = RW(Lock);
  const int Rc = pthread_rwlock_trywrlock(&L->Lock);
  if (Rc == EBUSY) return 0;
  if (Rc != 0) LockFailed("pthread_rwlock_trywrlock", Rc);
  L->Writer.store(CurrentThreadId(), std::memory_order_relaxed);
  L->Depth = 1;
  return 1;
}

// Ends one level of the writer's writes and nested reads; from any other thread it does
// nothing, as the synchronizer ignores an end that is not the writer's.
void ReleaseExclusive(void* Lock) {
  TRWLock* L = RW(Lock);
  if (L->Writer.load(std::memory_order_relaxed) != CurrentThreadId()) return;
  if (--L->Depth > 0) return;
  L->Writer.store(0, std::memory_order_relaxed);
  const int Rc = pthread_rwlock_unlock(&L->Lock);
  if (Rc != 0) LockFailed("pthread_rwlock_unlock", Rc);
}

void AcquireShared(void* Lock) {
  TRWLock* L = RW(Lock);
  for (;;) {
    const int Rc = pthread_rwlock_rdlock(&L->Lock);
    if (Rc == 0) return;
    if (Rc == EDEADLK) { // the writer reads: one level more of its write
      ++L->Depth;
      return;
    }
    if (Rc != EAGAIN) LockFailed("pthread_rwlock_rdlock", Rc);
    sched_yield(); // as many readers as glibc counts: wait for one to go
  }
}

uint8_t TryAcquireShared(void* Lock) {
  const int Rc = pthread_rwlock_tryrdlock(&RW(Lock)->Lock);
  if (Rc == EBUSY || Rc == EAGAIN) return 0;
  if (Rc != 0) LockFailed("pthread_rwlock_tryrdlock", Rc);
  return 1;
}

void ReleaseShared(void* Lock) {
  TRWLock* L = RW(Lock);
  // While a reader holds the lock no writer does, so a recorded writer is the caller, ending
  // a read it began while writing.
  if (L->Writer.load(std::memory_order_relaxed) != 0) return ReleaseExclusive(Lock);
  const int Rc = pthread_rwlock_unlock(&L->Lock);
  if (Rc != 0) LockFailed("pthread_rwlock_unlock", Rc);
}

} // namespace

bool BindRWLockFunctions(TRWLockFunctions& Functions) {
  Functions = {&AcquireExclusive, &TryAcquireExclusive, &ReleaseExclusive,
               &AcquireShared,    &TryAcquireShared,    &ReleaseShared};
  return true;
}

void DestroyRWLock(void* Lock) {
  pthread_rwlock_destroy(&RW(Lock)->Lock);
}

} // namespace kx::platform
