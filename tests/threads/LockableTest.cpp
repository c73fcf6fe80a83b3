// SPDX-License-Identifier: MIT
// The locks with the standard library's scoped holders.
#include <kx/rtl/OwnedPtr.h>
#include <kx/uKxThreads.h>

#include "threads/ThreadTestUtils.h"

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>

using namespace kx;
using namespace std::chrono_literals;
using kxtest::OnOtherThread;

namespace {

struct CriticalSectionLockable : ::testing::Test {
  OwnedPtr<TKxCriticalSection> CS = MakeOwned<TKxCriticalSection>();

  bool OtherThreadLocks() {
    return OnOtherThread([&] {
      std::unique_lock Guard(*CS, std::try_to_lock);
      return Guard.owns_lock();
    });
  }
};

struct MultiReadSingleWriteLockable : ::testing::Test {
  OwnedPtr<TKxMultiReadSingleWrite> RW = MakeOwned<TKxMultiReadSingleWrite>();

  bool OtherThreadReads() {
    return OnOtherThread([&] {
      std::shared_lock Guard(*RW, std::try_to_lock);
      return Guard.owns_lock();
    });
  }
  bool OtherThreadWrites() {
    return OnOtherThread([&] {
      std::unique_lock Guard(*RW, std::try_to_lock);
      return Guard.owns_lock();
    });
  }
};

} // namespace

TEST_F(CriticalSectionLockable, ScopedHoldersEnterAndLeaveOnEveryPath) {
  {
    std::lock_guard Guard(*CS);
    EXPECT_EQ(CS->GetLockedBy(), KxGetCurrentThreadId());
    EXPECT_FALSE(OtherThreadLocks());
    // Recursive: the owner takes it again.
    std::scoped_lock Again(*CS);
    EXPECT_TRUE(CS->IsLocked());
  }
  EXPECT_FALSE(CS->IsLocked());
  EXPECT_THROW(
      {
        std::scoped_lock Guard(*CS);
        throw std::runtime_error("leaving");
      },
      std::runtime_error);
  EXPECT_FALSE(CS->IsLocked());
  EXPECT_TRUE(OtherThreadLocks());
}

TEST_F(CriticalSectionLockable, TimedTriesWaitForAnotherOwner) {
  std::unique_lock Held(*CS);
  const bool Got = OnOtherThread([&] {
    std::unique_lock Guard(*CS, std::defer_lock);
    const auto Start = std::chrono::steady_clock::now();
    const bool Locked = Guard.try_lock_for(30ms);
    // A refused timed try has waited (the clock may round a little short).
    EXPECT_GE(std::chrono::steady_clock::now() - Start, 20ms);
    return Locked || Guard.try_lock_until(std::chrono::steady_clock::now() - 1s);
  });
  EXPECT_FALSE(Got);
  Held.unlock();
  EXPECT_TRUE(OnOtherThread([&] {
    std::unique_lock Guard(*CS, std::defer_lock);
    return Guard.try_lock_for(std::chrono::hours(24 * 365 * 200)); // beyond 32 bits of ms
  }));
}

TEST_F(MultiReadSingleWriteLockable, SharedLocksReadUniqueLocksWrite) {
  {
    std::shared_lock Reading(*RW);
    EXPECT_TRUE(OtherThreadReads());
    EXPECT_FALSE(OtherThreadWrites());
  }
  {
    std::unique_lock Writing(*RW);
    EXPECT_FALSE(OtherThreadReads());
    EXPECT_FALSE(OtherThreadWrites());
  }
  EXPECT_TRUE(OtherThreadWrites());
  // Both sides together, as std::scoped_lock takes them with another lock.
  OwnedPtr<TKxCriticalSection> CS = MakeOwned<TKxCriticalSection>();
  {
    std::scoped_lock Both(*RW, *CS);
    EXPECT_TRUE(CS->IsLocked());
    EXPECT_FALSE(OtherThreadReads());
  }
  EXPECT_FALSE(CS->IsLocked());
  EXPECT_TRUE(OtherThreadReads());
}
