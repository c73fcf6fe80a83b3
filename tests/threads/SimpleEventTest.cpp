// SPDX-License-Identifier: MIT
#include <kx/uKxThreads.h>

#include "threads/ThreadTestUtils.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace kx;

namespace {

TEST(SimpleEvent, WorksThroughItsInterface) {
  IPtr<IKxSimpleEvent> Event = TKxSimpleEvent::Create();
  ASSERT_TRUE(Event);
  EXPECT_EQ(Event->WaitFor(0), wrTimeout) << "created non-signalled";

  auto Start = std::chrono::steady_clock::now();
  EXPECT_EQ(Event->WaitFor(50), wrTimeout);
  EXPECT_GE(std::chrono::steady_clock::now() - Start, std::chrono::milliseconds(40));

  Event->SetEvent();
  // Manual reset: it stays signalled for every waiter until reset.
  EXPECT_EQ(Event->WaitFor(0), wrSignaled);
  EXPECT_EQ(Event->WaitFor(INFINITE_TIMEOUT), wrSignaled);
  Event->ResetEvent();
  EXPECT_EQ(Event->WaitFor(0), wrTimeout);
}

TEST(SimpleEvent, WakesAWaiterOnAnotherThread) {
  IPtr<IKxSimpleEvent> Event = TKxSimpleEvent::Create();
  kxtest::TGate Started;
  TWaitResult Seen = wrError;
  std::thread Waiter([&] {
    Started.Open();
    Seen = Event->WaitFor(INFINITE_TIMEOUT);
  });
  Started.Wait();
  Event->SetEvent();
  Waiter.join();
  EXPECT_EQ(Seen, wrSignaled);
}

TEST(SimpleEvent, IsFoundByGuidAndFreedWithTheLastReference) {
  TKxSimpleEvent* Obj = TKxSimpleEvent::Create();
  IPtr<IInterface> Unknown(static_cast<TInterfacedObject*>(Obj));
  EXPECT_EQ(Obj->RefCount(), 1);
  IPtr<IKxSimpleEvent> Event = Supports<IKxSimpleEvent>(Unknown);
  ASSERT_TRUE(Event);
  EXPECT_EQ(Obj->RefCount(), 2);
  EXPECT_EQ(GUIDToString(IIDOf<IKxSimpleEvent>()), "{3E6C3974-3559-4114-A07F-60B03539C614}");
  Unknown.Reset();
  Event->SetEvent();
  EXPECT_EQ(Obj->WaitFor(0), wrSignaled);
  Event.Reset(); // destroys the object; ASan reports a leak or a double free
}

} // namespace
