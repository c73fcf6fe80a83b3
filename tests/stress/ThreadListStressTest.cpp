// SPDX-License-Identifier: MIT
// The thread list from many threads: adds, removes and walks under its lock lose nothing.
#include <kx/rtl/Lists.h>

#include "stress/StressUtils.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace kx;

namespace {

void* Item(intptr_t Value) {
  return reinterpret_cast<void*>(Value);
}

TEST(ThreadListStress, AddsAndRemovesFromEveryThreadAddUp) {
  constexpr int Threads = 8, Items = 300;
  TThreadList* List = TThreadList::Create();
  List->SetDuplicates(dupAccept);
  std::atomic<int> Wrong{0};

  kxtest::RunTogether(Threads, [&](int Index) {
    // Each thread owns the items Index * Items + 1 ...; it adds them all, checks and removes
    // every other one, and walks the list under the lock now and then.
    const intptr_t Base = intptr_t(Index) * Items + 1;
    for (intptr_t I = 0; I < Items; ++I) {
      List->Add(Item(Base + I));
      if (I % 50 == 0) {
        TList* L = List->LockList();
        int Mine = 0;
        for (int32_t J = 0; J < L->Count(); ++J) {
          const intptr_t V = reinterpret_cast<intptr_t>(L->Get(J));
          if (V >= Base && V < Base + Items) ++Mine;
        }
        if (Mine != I + 1) ++Wrong;
        List->UnlockList();
      }
    }
    for (intptr_t I = 0; I < Items; I += 2) List->Remove(Item(Base + I));
  });

  TList* L = List->LockList();
  EXPECT_EQ(L->Count(), Threads * Items / 2);
  for (int32_t J = 0; J < L->Count(); ++J) {
    const intptr_t V = reinterpret_cast<intptr_t>(L->Get(J));
    EXPECT_EQ((V - 1) % Items % 2, 1) << "a removed item is still there: " << V;
  }
  List->UnlockList();
  EXPECT_EQ(Wrong.load(), 0);
  List->Free();
}

} // namespace
