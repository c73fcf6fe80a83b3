// SPDX-License-Identifier: MIT
// The multi-reader/single-writer lock and its fallback routines.
#include <kx/rtl/SyncObjs.h>
#include <kx/threads/MultiReadSingleWrite.h>

#include "platform/Platform.h"

#include <atomic>
#include <cstring>

namespace kx {

static_assert(KxRWLockWordSize == platform::RWLockWordSize);

namespace {

// The runtime's synchronizer plus the last reader and writer, which the try routines look
// at (without a lock, and then block in the synchronizer anyway).
class _TMultiReadExclusiveWriteSynchronizer : public TMultiReadExclusiveWriteSynchronizer {
  KX_CLASS(_TMultiReadExclusiveWriteSynchronizer, TMultiReadExclusiveWriteSynchronizer)
public:
  _TMultiReadExclusiveWriteSynchronizer() = default;
  std::atomic<TThreadID> ReaderThread{0};
  std::atomic<TThreadID> WriterThread{0};
};

} // namespace

KX_IMPLEMENT_CLASS(_TMultiReadExclusiveWriteSynchronizer, TMultiReadExclusiveWriteSynchronizer,
                   "uKxThreads")

namespace {

_TMultiReadExclusiveWriteSynchronizer* Sync(void* Lock) {
  _TMultiReadExclusiveWriteSynchronizer* S;
  std::memcpy(&S, Lock, sizeof S);
  return S;
}

void KX_STDCALL FallbackBeginRead(void* Lock) {
  auto* S = Sync(Lock);
  S->BeginRead();
  S->ReaderThread = platform::CurrentThreadId();
}

uint8_t KX_STDCALL FallbackTryBeginRead(void* Lock) {
  auto* S = Sync(Lock);
  if (S->WriterThread != 0) return 0;
  S->BeginRead();
  S->ReaderThread = platform::CurrentThreadId();
  return 1;
}

void KX_STDCALL FallbackEndRead(void* Lock) {
  auto* S = Sync(Lock);
  S->EndRead();
  S->ReaderThread = 0;
}

void KX_STDCALL FallbackBeginWrite(void* Lock) {
  auto* S = Sync(Lock);
  S->BeginWrite();
  S->WriterThread = platform::CurrentThreadId();
}

uint8_t KX_STDCALL FallbackTryBeginWrite(void* Lock) {
  auto* S = Sync(Lock);
  if (S->WriterThread != 0 || S->ReaderThread != 0) return 0;
  S->BeginWrite();
  S->WriterThread = platform::CurrentThreadId();
  return 1;
}

void KX_STDCALL FallbackEndWrite(void* Lock) {
  auto* S = Sync(Lock);
  S->EndWrite();
  // The writer stays recorded after the end, on purpose: later try calls fail.
  S->WriterThread = platform::CurrentThreadId();
}

constexpr detail::TKxSRWLockFunctions FallbackFunctions{
    &FallbackBeginWrite, &FallbackTryBeginWrite, &FallbackEndWrite,
    &FallbackBeginRead,  &FallbackTryBeginRead,  &FallbackEndRead};

detail::TKxSRWLockFunctions Functions = FallbackFunctions;

// Fallback mode when the exclusive operation is missing or is the fallback routine.
bool UsesSynchronizer() {
  return Functions.AcquireSRWLockExclusive == nullptr ||
         Functions.AcquireSRWLockExclusive == FallbackFunctions.AcquireSRWLockExclusive;
}

} // namespace

namespace detail {
TKxSRWLockFunctions& KxSRWLockFunctions() {
  return Functions;
}
const TKxSRWLockFunctions& KxFallbackSRWLockFunctions() {
  return FallbackFunctions;
}
} // namespace detail

KX_IMPLEMENT_CLASS(TKxMultiReadSingleWrite, TKxObject, "uKxThreads")

TKxMultiReadSingleWrite::TKxMultiReadSingleWrite() {
  if (UsesSynchronizer()) {
    auto* S = _TMultiReadExclusiveWriteSynchronizer::Create();
    std::memcpy(FLock, &S, sizeof S);
  }
}

TKxMultiReadSingleWrite::~TKxMultiReadSingleWrite() {
  if (UsesSynchronizer()) {
    if (auto* S = Sync(FLock)) S->Free();
  } else {
    platform::DestroyRWLock(FLock);
  }
}

void TKxMultiReadSingleWrite::BeginRead() {
  Functions.AcquireSRWLockShared(FLock);
}
bool TKxMultiReadSingleWrite::TryBeginRead() {
  return Functions.TryAcquireSRWLockShared(FLock);
}
void TKxMultiReadSingleWrite::EndRead() {
  Functions.ReleaseSRWLockShared(FLock);
}
void TKxMultiReadSingleWrite::BeginWrite() {
  Functions.AcquireSRWLockExclusive(FLock);
}
bool TKxMultiReadSingleWrite::TryBeginWrite() {
  return Functions.TryAcquireSRWLockExclusive(FLock);
}
void TKxMultiReadSingleWrite::EndWrite() {
  Functions.ReleaseSRWLockExclusive(FLock);
}

} // namespace kx
