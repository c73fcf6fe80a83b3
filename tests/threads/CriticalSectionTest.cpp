// SPDX-License-Identifier: MIT
#include <kx/rtl/OwnedPtr.h>
#include <kx/uKxThreads.h>

#include "threads/ThreadTestUtils.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <vector>

using namespace kx;
using kxtest::OnOtherThread;
using kxtest::TGate;

namespace {

struct CriticalSection : ::testing::Test {
  OwnedPtr<TKxCriticalSection> CS = MakeOwned<TKxCriticalSection>();

  // Whether another thread gets in within Timeout; it leaves again when it does.
  bool OtherThreadEnters(uint32_t Timeout) {
    return OnOtherThread([&] {
      if (!CS->TryEnter(Timeout)) return false;
      CS->Leave();
      return true;
    });
  }
};

TEST_F(CriticalSection, RecursionMustBeLeftAsOftenAsEntered) {
  EXPECT_FALSE(CS->IsLocked());
  EXPECT_EQ(CS->GetLockedBy(), 0u);
  CS->Enter();
  EXPECT_TRUE(CS->TryEnter(0));
  EXPECT_TRUE(CS->TryEnter(INFINITE_TIMEOUT));
  EXPECT_EQ(CS->GetLockedBy(), KxGetCurrentThreadId());
  for (int Held = 3; Held > 0; --Held) {
    EXPECT_TRUE(CS->IsLocked());
    EXPECT_FALSE(OtherThreadEnters(0)) << "held " << Held << " deep";
    CS->Leave();
  }
  EXPECT_FALSE(CS->IsLocked());
  EXPECT_TRUE(OtherThreadEnters(0));
  EXPECT_FALSE(CS->IsLocked());
}

TEST_F(CriticalSection, ReportsTheOwningThread) {
  TGate Entered, Release;
  TThreadID Owner = 0;
  std::thread T([&] {
    Owner = KxGetCurrentThreadId();
    CS->Enter();
    Entered.Open();
    Release.Wait();
    CS->Leave();
  });
  Entered.Wait();
  EXPECT_NE(Owner, KxGetCurrentThreadId());
  EXPECT_EQ(CS->GetLockedBy(), Owner);
  EXPECT_TRUE(CS->IsLocked());
  EXPECT_FALSE(CS->TryEnter(0));
  Release.Open();
  T.join();
  EXPECT_FALSE(CS->IsLocked());
  EXPECT_TRUE(CS->TryEnter(0));
  EXPECT_EQ(CS->GetLockedBy(), KxGetCurrentThreadId());
  CS->Leave();
}

TEST_F(CriticalSection, TimedTryEnterGivesUpAfterTheTimeout) {
  CS->Enter();
  auto Start = std::chrono::steady_clock::now();
  EXPECT_FALSE(OtherThreadEnters(100));
  EXPECT_GE(std::chrono::steady_clock::now() - Start, std::chrono::milliseconds(90));
  // A second timed attempt finds no stale wake-up either.
  EXPECT_FALSE(OtherThreadEnters(20));
  CS->Leave();
  EXPECT_TRUE(OtherThreadEnters(100));
}

TEST_F(CriticalSection, TimedTryEnterSucceedsWhenTheOwnerLeavesInTime) {
  TGate Entered, Release;
  std::thread Owner([&] {
    CS->Enter();
    Entered.Open();
    Release.Wait();
    CS->Leave();
  });
  Entered.Wait();
  // Whether the owner leaves before or during the wait, the section must be had.
  Release.Open();
  EXPECT_TRUE(CS->TryEnter(10000));
  EXPECT_EQ(CS->GetLockedBy(), KxGetCurrentThreadId());
  CS->Leave();
  Owner.join();
}

TEST_F(CriticalSection, OfTwoWaitersOneGetsInAndTheOtherWaitsForIt) {
  std::atomic<int> Inside{0}, MostInside{0}, Entries{0};
  std::atomic<TThreadID> FirstIn{0};
  TGate Started[2], ReleaseFirst;
  TGate FirstEntered;

  CS->Enter();
  auto Waiter = [&](int I) {
    Started[I].Open();
    CS->Enter();
    int Now = ++Inside;
    MostInside = std::max(MostInside.load(), Now);
    if (++Entries == 1) {
      FirstIn = KxGetCurrentThreadId();
      FirstEntered.Open();
      ReleaseFirst.Wait();
    }
    --Inside;
    CS->Leave();
  };
  std::thread A(Waiter, 0), B(Waiter, 1);
  Started[0].Wait();
  Started[1].Wait();
  // Give both a chance to block in the semaphore; the outcome does not depend on it.
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  CS->Leave();

  FirstEntered.Wait();
  EXPECT_EQ(CS->GetLockedBy(), FirstIn.load());
  EXPECT_EQ(Entries.load(), 1);
  ReleaseFirst.Open();
  A.join();
  B.join();
  EXPECT_EQ(Entries.load(), 2);
  EXPECT_EQ(MostInside.load(), 1);
  EXPECT_FALSE(CS->IsLocked());
}

TEST_F(CriticalSection, KeepsThreadsApartUnderContention) {
  constexpr int Threads = 4, Rounds = 3000;
  int64_t Counter = 0; // guarded by CS only
  std::atomic<int> TimedOut{0};
  std::vector<std::thread> Pool;
  for (int T = 0; T < Threads; ++T)
    Pool.emplace_back([&, T] {
      for (int I = 0; I < Rounds; ++I) {
        // Mix plain, nested and timed entries; a timed one may give up.
        if (T == 3 && I % 2 == 0) {
          if (!CS->TryEnter(1)) {
            ++TimedOut;
            continue;
          }
        } else {
          CS->Enter();
        }
        if (I % 3 == 0) CS->Enter();
        ++Counter;
        if (I % 3 == 0) CS->Leave();
        CS->Leave();
      }
    });
  for (auto& T : Pool) T.join();
  EXPECT_EQ(Counter, int64_t(Threads) * Rounds - TimedOut);
  EXPECT_FALSE(CS->IsLocked());
  EXPECT_TRUE(OtherThreadEnters(0));
}

} // namespace
