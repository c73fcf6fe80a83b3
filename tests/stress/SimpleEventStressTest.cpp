// SPDX-License-Identifier: MIT
// The simple event from many threads: what was written before SetEvent is seen by every
// thread its WaitFor lets through.
#include <kx/uKxThreads.h>

#include "stress/StressUtils.h"

#include <gtest/gtest.h>

using namespace kx;

namespace {

TEST(SimpleEventStress, WaitersSeeWhatWasWrittenBeforeTheSignal) {
  constexpr int Waiters = 8, Rounds = 200;
  // Two events used in turn, so one can be reset while the waiters already wait on the other.
  IPtr<IKxSimpleEvent> Events[2] = {IPtr<IKxSimpleEvent>(TKxSimpleEvent::Create()),
                                    IPtr<IKxSimpleEvent>(TKxSimpleEvent::Create())};
  int Published[Rounds] = {}; // written before the round's SetEvent, plainly
  std::atomic<int> Passed{0}, Wrong{0}, Early{0};

  kxtest::RunTogether(Waiters + 1, [&](int Index) {
    if (Index == Waiters) { // the signaller
      for (int Round = 0; Round < Rounds; ++Round) {
        if (Events[Round % 2]->WaitFor(0) != wrTimeout) ++Early;
        Published[Round] = Round + 1;
        Events[Round % 2]->SetEvent();
        // Every waiter through this round before its event is reset for round + 2.
        while (Passed.load() < (Round + 1) * Waiters) std::this_thread::yield();
        Events[Round % 2]->ResetEvent();
      }
      return;
    }
    for (int Round = 0; Round < Rounds; ++Round) {
      if (Events[Round % 2]->WaitFor(INFINITE_TIMEOUT) != wrSignaled) ++Wrong;
      if (Published[Round] != Round + 1) ++Wrong;
      ++Passed;
      // Nobody may pass the next round early: the signaller has not written it yet.
      while (Passed.load() < (Round + 1) * Waiters) std::this_thread::yield();
    }
  });

  EXPECT_EQ(Wrong.load(), 0);
  EXPECT_EQ(Early.load(), 0);
  EXPECT_EQ(Passed.load(), Waiters * Rounds);
}

} // namespace
