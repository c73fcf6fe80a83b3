// SPDX-License-Identifier: MIT
// Start-up and shut-down of uKxThreads.
#include <kx/threads/MultiReadSingleWrite.h>

#include "package/Units.h"
#include "platform/Platform.h"

#include <atomic>

namespace kx::detail {

namespace {
// Goes below 0 with each start-up and back up with each shut-down; only the start-up that
// takes it from 0 to -1 binds the operations.
std::atomic<int32_t> InitCount{0};
} // namespace

void uKxThreads_Initialize() {
  if (--InitCount != -1) return;
  TKxSRWLockFunctions& F = KxSRWLockFunctions();
  F = KxFallbackSRWLockFunctions();
  // Each OS function is taken as found, so one the OS lacks leaves its operation null.
  platform::TRWLockFunctions OS{};
  if (platform::BindRWLockFunctions(OS)) {
    F.AcquireSRWLockExclusive = OS.AcquireExclusive;
    F.TryAcquireSRWLockExclusive = OS.TryAcquireExclusive;
    F.ReleaseSRWLockExclusive = OS.ReleaseExclusive;
    F.AcquireSRWLockShared = OS.AcquireShared;
    F.TryAcquireSRWLockShared = OS.TryAcquireShared;
    F.ReleaseSRWLockShared = OS.ReleaseShared;
  }
}

// Nothing to undo: the operations stay bound for as long as the module is loaded.
void uKxThreads_Finalize() {
  ++InitCount;
}

} // namespace kx::detail
