// SPDX-License-Identifier: MIT
#include <kx/rtl/OwnedPtr.h>
#include <kx/uKxThreads.h>

#include "threads/ThreadTestUtils.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace kx;
using kxtest::OnOtherThread;

namespace {

struct ThreadSafeType : ::testing::Test {
  OwnedPtr<TKxThreadSafeType> Holder = MakeOwned<TKxThreadSafeType>(Variant(AnsiString("start")));
};

TEST_F(ThreadSafeType, HoldsACopyOfTheValueGiven) {
  Variant Given(AnsiString("a text long enough to live on the heap, not in the variant"));
  TKxThreadSafeType* Other = TKxThreadSafeType::Create(Given);
  Given = Variant(1);
  EXPECT_EQ(VarToStr(Other->GetValue()),
            "a text long enough to live on the heap, not in the variant");
  Other->Free();
  TKxThreadSafeType* Empty = TKxThreadSafeType::Create();
  EXPECT_TRUE(VarIsEmpty(Empty->GetValue()));
  Empty->Free();
}

TEST_F(ThreadSafeType, LockReturnsTheValueAndIsHeldUntilUnlocked) {
  EXPECT_FALSE(Holder->GetLocked());
  Variant V = Holder->Lock();
  EXPECT_EQ(VarToStr(V), "start");
  EXPECT_TRUE(Holder->GetLocked());
  EXPECT_TRUE(OnOtherThread([&] { return Holder->GetLocked(); }));
  EXPECT_FALSE(OnOtherThread([&] { return Holder->TryLock(0); }));
  // The owner nests.
  EXPECT_TRUE(Holder->TryLock(0));
  Holder->Unlock();
  EXPECT_TRUE(Holder->GetLocked());
  Holder->Unlock();
  EXPECT_FALSE(Holder->GetLocked());
  EXPECT_TRUE(OnOtherThread([&] {
    const bool In = Holder->TryLock(0);
    if (In) Holder->Unlock();
    return In;
  }));
}

TEST_F(ThreadSafeType, AnotherThreadReadsAndWritesWithoutWaitingForTheHolder) {
  Holder->Lock();
  const auto Start = std::chrono::steady_clock::now();
  // Both would hang for ever if they waited for the section.
  EXPECT_EQ(VarToStr(OnOtherThread([&] { return Holder->GetValue(); })), "start");
  OnOtherThread([&] {
    Holder->SetValue(Variant(42));
    return 0;
  });
  EXPECT_LT(std::chrono::steady_clock::now() - Start, std::chrono::seconds(5));
  EXPECT_TRUE(Holder->GetLocked());
  EXPECT_EQ(int32_t(Holder->GetValue()), 42);
  Holder->SetValue(Variant(43)); // the holder too, inside its bracket
  Holder->Unlock();
  EXPECT_EQ(VarType(Holder->GetValue()), varInteger);
  EXPECT_EQ(int32_t(Holder->GetValue()), 43);
  EXPECT_FALSE(Holder->GetLocked()); // GetValue and SetValue leave a free section free
}

} // namespace
