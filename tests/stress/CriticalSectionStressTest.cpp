// SPDX-License-Identifier: MIT
// The critical section from many threads: recursion, time-outs and plain entries mixed.
#include <kx/uKxThreads.h>

#include "stress/StressUtils.h"

#include <gtest/gtest.h>

using namespace kx;

namespace {

TEST(CriticalSectionStress, OneOwnerAtATimeWhateverTheEntry) {
  constexpr int Threads = 8, Rounds = 1500;
  TKxCriticalSection* CS = TKxCriticalSection::Create();
  int64_t Guarded = 0; // touched only inside the section
  std::atomic<int> Inside{0}, Overlaps{0}, WrongOwner{0}, Entered{0}, TimedOut{0};

  kxtest::RunTogether(Threads, [&](int Index) {
    kxtest::TRandom Random(Index);
    const TThreadID Me = KxGetCurrentThreadId();
    for (int Round = 0; Round < Rounds; ++Round) {
      // Time-outs of 0, short and long, and Enter, so every path of the wait is taken.
      bool In;
      switch (Random.Next(4)) {
      case 0:
        In = CS->TryEnter(0);
        break;
      case 1:
        In = CS->TryEnter(1);
        break;
      case 2:
        In = CS->TryEnter(50);
        break;
      default:
        CS->Enter();
        In = true;
      }
      if (!In) {
        ++TimedOut;
        continue;
      }
      ++Entered;
      if (++Inside != 1) ++Overlaps;
      const int Depth = 1 + int(Random.Next(3));
      for (int I = 1; I < Depth; ++I) {
        if (I % 2 ? !CS->TryEnter(0) : !CS->TryEnter(INFINITE_TIMEOUT)) ++WrongOwner;
      }
      if (CS->GetLockedBy() != Me) ++WrongOwner;
      ++Guarded;
      --Inside;
      for (int I = 0; I < Depth; ++I) CS->Leave();
    }
  });

  EXPECT_EQ(Overlaps.load(), 0);
  EXPECT_EQ(WrongOwner.load(), 0);
  EXPECT_EQ(Guarded, Entered.load());
  EXPECT_EQ(Entered + TimedOut, Threads * Rounds);
  EXPECT_GT(Entered.load(), Threads * Rounds / 4); // Enter alone is a quarter
  EXPECT_FALSE(CS->IsLocked());
  EXPECT_TRUE(CS->TryEnter(0)) << "the section is left free";
  CS->Leave();
  CS->Free();
}

} // namespace
