// SPDX-License-Identifier: MIT
#pragma once
// The runtime's simple event and multi-read exclusive-write synchronizer.

#include <kx/rtl/Object.h>
#include <kx/rtl/System.h>

#include <condition_variable>
#include <mutex>
#include <utility>
#include <vector>

namespace kx {

// A manual-reset event, created non-signalled.
class KX_API TSimpleEvent : public TObject {
  KX_CLASS(TSimpleEvent, TObject)
public:
  // Raises EOSError when the OS refuses the event.
  TSimpleEvent();
  ~TSimpleEvent() override;

  void SetEvent();
  void ResetEvent();
  TWaitResult WaitFor(uint32_t Timeout = INFINITE_TIMEOUT);

private:
  void* FHandle = nullptr;
};

// Many readers or one writer. The writer may enter again and may read while it writes;
// a reader may read again, even while a writer waits (writers are otherwise preferred,
// so a stream of readers cannot starve them); a reader may ask to write, and then holds
// its reads again after the last EndWrite.
//
// Written on a mutex and a condition variable rather than std::shared_mutex, which has no
// notion of the owning thread and so can neither nest nor let the writer read.
class KX_API TMultiReadExclusiveWriteSynchronizer : public TObject {
  KX_CLASS(TMultiReadExclusiveWriteSynchronizer, TObject)
public:
  TMultiReadExclusiveWriteSynchronizer() = default;

  void BeginRead();
  void EndRead();
  // True when no other thread wrote between the call and the moment the lock was
  // granted; false tells a reader that asked to write that what it read may have changed.
  bool BeginWrite();
  void EndWrite();

  // How many times the write lock has been granted so far.
  uint32_t RevisionLevel() const;

private:
  void ReleaseWriteLocked(TThreadID Me);
  std::vector<std::pair<TThreadID, int32_t>>::iterator FindReader(TThreadID Thread);

  mutable std::mutex FLock;
  std::condition_variable FChanged;
  // Threads that hold read locks, with their nesting depth.
  std::vector<std::pair<TThreadID, int32_t>> FReaders;
  TThreadID FWriter = 0;
  // BeginWrite and BeginRead calls of the writer not yet ended.
  int32_t FWriteDepth = 0;
  // Reads the writer held before it asked to write; given back with the write lock.
  int32_t FWriterSavedReads = 0;
  int32_t FWaitingWriters = 0;
  uint32_t FRevision = 0;
};

} // namespace kx
