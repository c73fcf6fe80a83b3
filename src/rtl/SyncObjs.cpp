// SPDX-License-Identifier: MIT
// The runtime's simple event and multi-read exclusive-write synchronizer.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/SyncObjs.h>

#include "platform/Platform.h"

#include <algorithm>

namespace kx {

KX_IMPLEMENT_CLASS(TSimpleEvent, TObject, "SyncObjs")

TSimpleEvent::TSimpleEvent() {
  FHandle = platform::CreateEvent(/*ManualReset=*/true, /*InitialState=*/false);
  if (!FHandle) RaiseLastOSError();
}

TSimpleEvent::~TSimpleEvent() {
  if (FHandle) platform::CloseHandle(FHandle);
}

void TSimpleEvent::SetEvent() {
  platform::SetEvent(FHandle);
}
void TSimpleEvent::ResetEvent() {
  platform::ResetEvent(FHandle);
}
TWaitResult TSimpleEvent::WaitFor(uint32_t Timeout) {
  return platform::WaitFor(FHandle, Timeout);
}

KX_IMPLEMENT_CLASS(TMultiReadExclusiveWriteSynchronizer, TObject, "SysUtils")

std::vector<std::pair<TThreadID, int32_t>>::iterator
TMultiReadExclusiveWriteSynchronizer::FindReader(TThreadID Thread) {
  return std::find_if(FReaders.begin(), FReaders.end(),
                      [Thread](const auto& R) { return R.first == Thread; });
}

void TMultiReadExclusiveWriteSynchronizer::BeginRead() {
  const TThreadID Me = platform::CurrentThreadId();
  std::unique_lock Guard(FLock);
  if (FWriter == Me) {
    ++FWriteDepth;
    return;
  }
  if (auto It = FindReader(Me); It != FReaders.end()) {
    // Nested reads never wait: a waiting writer waits for this thread anyway.
    ++It->second;
    return;
  }
  FChanged.wait(Guard, [this] { return FWriter == 0 && FWaitingWriters == 0; });
  FReaders.emplace_back(Me, 1);
}

void TMultiReadExclusiveWriteSynchronizer::EndRead() {
  const TThreadID Me = platform::CurrentThreadId();
  std::unique_lock Guard(FLock);
  if (FWriter == Me) {
    ReleaseWriteLocked(Me);
    return;
  }
  auto It = FindReader(Me);
  if (It == FReaders.end()) return; // unbalanced: nothing to end
  if (--It->second > 0) return;
  FReaders.erase(It);
  if (FReaders.empty()) FChanged.notify_all();
}

bool TMultiReadExclusiveWriteSynchronizer::BeginWrite() {
  const TThreadID Me = platform::CurrentThreadId();
  std::unique_lock Guard(FLock);
  if (FWriter == Me) {
    ++FWriteDepth;
    return true;
  }
  const uint32_t Seen = FRevision;
  int32_t OwnReads = 0;
  if (auto It = FindReader(Me); It != FReaders.end()) {
    // A reader that asks to write gives up its reads while it waits, or two such
    // readers would wait for each other.
    OwnReads = It->second;
    FReaders.erase(It);
    if (FReaders.empty()) FChanged.notify_all();
  }
  ++FWaitingWriters;
  FChanged.wait(Guard, [this] { return FWriter == 0 && FReaders.empty(); });
  --FWaitingWriters;
  FWriter = Me;
  FWriteDepth = 1;
  FWriterSavedReads = OwnReads;
  ++FRevision;
  return FRevision == Seen + 1;
}

void TMultiReadExclusiveWriteSynchronizer::EndWrite() {
  const TThreadID Me = platform::CurrentThreadId();
  std::unique_lock Guard(FLock);
  if (FWriter == Me) ReleaseWriteLocked(Me);
}

void TMultiReadExclusiveWriteSynchronizer::ReleaseWriteLocked(TThreadID Me) {
  if (--FWriteDepth > 0) return;
  FWriter = 0;
  if (FWriterSavedReads > 0) FReaders.emplace_back(Me, std::exchange(FWriterSavedReads, 0));
  FChanged.notify_all();
}

uint32_t TMultiReadExclusiveWriteSynchronizer::RevisionLevel() const {
  std::lock_guard Guard(FLock);
  return FRevision;
}

} // namespace kx
