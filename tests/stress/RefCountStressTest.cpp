// SPDX-License-Identifier: MIT
// Reference counting from many threads: objects handed out through interfaces are taken
// for the first time by several threads at once, and their last references are dropped
// at once; each object must be destroyed exactly once, and only after the last release.
#include <kx/uKxClasses.h>

#include "stress/StressUtils.h"

#include <gtest/gtest.h>

#include <memory>

using namespace kx;

namespace {

constexpr int Threads = 8, Rounds = 300;
constexpr uint32_t Alive = 0x600DF00D;

std::atomic<int> DestroyedIn[Rounds];

template <class Base>
class TCounted : public Base {
public:
  using Base::Base;
  ~TCounted() override {
    FMarker = 0;
    ++DestroyedIn[FRound];
  }
  int FRound = 0;
  uint32_t FMarker = Alive;
};

class TCountedObject : public TCounted<TKxObject> {
  KX_CLASS(TCountedObject, TKxObject)
};
KX_IMPLEMENT_CLASS(TCountedObject, TKxObject, "RefCountStressTest")

class TCountedComponent : public TCounted<TKxComponent> {
  KX_CLASS(TCountedComponent, TKxComponent)
};
KX_IMPLEMENT_CLASS(TCountedComponent, TKxComponent, "RefCountStressTest")

// Every thread takes its first reference to the round's object at the same time (the one
// that comes first settles AutoDestroy), checks the object, waits until all threads hold
// one, and drops it: the releases race for the last reference.
template <class T>
void TakeAndDropTogether() {
  std::vector<T*> Objects(Rounds);
  for (int Round = 0; Round < Rounds; ++Round) {
    DestroyedIn[Round] = 0;
    Objects[Round] = T::Create();
    Objects[Round]->FRound = Round;
  }
  auto Taken = std::make_unique<std::atomic<int>[]>(Rounds);
  std::atomic<int> Wrong{0};

  kxtest::RunTogether(Threads, [&](int) {
    for (int Round = 0; Round < Rounds; ++Round) {
      IPtr<IKxObject> Ref(static_cast<IKxObject*>(Objects[Round]));
      ++Taken[Round];
      while (Taken[Round].load() < Threads) std::this_thread::yield();
      if (static_cast<T*>(Ref->Implementor())->FMarker != Alive) ++Wrong;
      if (DestroyedIn[Round].load() != 0) ++Wrong;
    }
  });

  EXPECT_EQ(Wrong.load(), 0);
  for (int Round = 0; Round < Rounds; ++Round)
    ASSERT_EQ(DestroyedIn[Round].load(), 1) << "round " << Round;
}

TEST(RefCountStress, KxObjectIsDestroyedOnceByTheLastOfManyReleases) {
  TakeAndDropTogether<TCountedObject>();
}

TEST(RefCountStress, UnownedKxComponentIsDestroyedOnceByTheLastOfManyReleases) {
  TakeAndDropTogether<TCountedComponent>();
}

// One long-lived object shared by all threads: copies and drops of references never reach
// 0 while the owner's reference lives, so the object survives every round.
TEST(RefCountStress, SharedReferenceSurvivesConcurrentCopies) {
  DestroyedIn[0] = 0;
  auto* Object = TCountedObject::Create();
  IPtr<IKxObject> Owner(static_cast<IKxObject*>(Object));
  std::atomic<int> Wrong{0};
  kxtest::RunTogether(Threads, [&](int) {
    for (int I = 0; I < 2000; ++I) {
      IPtr<IKxObject> Copy = Owner;
      IPtr<IKxObject> Again = Copy;
      if (Object->FMarker != Alive) ++Wrong;
    }
  });
  EXPECT_EQ(Wrong.load(), 0);
  EXPECT_EQ(Object->RefCount(), 1);
  EXPECT_EQ(DestroyedIn[0].load(), 0);
  Owner.Reset();
  EXPECT_EQ(DestroyedIn[0].load(), 1);
}

} // namespace
