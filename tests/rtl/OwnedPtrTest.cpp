// SPDX-License-Identifier: MIT
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Object.h>
#include <kx/rtl/OwnedPtr.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

using namespace kx;

namespace {

int Destroyed = 0;

class TTracked : public TObject {
  KX_CLASS(TTracked, TObject)
public:
  explicit TTracked(int AValue = 0) : Value(AValue) {}
  ~TTracked() override { ++Destroyed; }
  int Value;
  // When set, BeforeDestruction refuses, which keeps the object alive.
  bool Refuse = false;
  void BeforeDestruction() override {
    if (Refuse) throw Exception("still in use");
  }
};
KX_IMPLEMENT_CLASS(TTracked, TObject, "OwnedPtrTest")

class TTrackedChild : public TTracked {
  KX_CLASS(TTrackedChild, TTracked)
public:
  TTrackedChild() : TTracked(7) {}
};
KX_IMPLEMENT_CLASS(TTrackedChild, TTracked, "OwnedPtrTest")

class OwnedPtrTest : public ::testing::Test {
protected:
  void SetUp() override { Destroyed = 0; }
};

} // namespace

static_assert(!std::is_copy_constructible_v<OwnedPtr<TTracked>>);
static_assert(!std::is_copy_assignable_v<OwnedPtr<TTracked>>);
static_assert(std::is_nothrow_move_constructible_v<OwnedPtr<TTracked>>);
static_assert(std::is_constructible_v<OwnedPtr<TTracked>, OwnedPtr<TTrackedChild>&&>);
static_assert(!std::is_constructible_v<OwnedPtr<TTrackedChild>, OwnedPtr<TTracked>&&>);

TEST_F(OwnedPtrTest, FreesOnScopeExitAndOnException) {
  {
    OwnedPtr<TTracked> P = MakeOwned<TTracked>(3);
    EXPECT_EQ(P->Value, 3);
    EXPECT_EQ((*P).Value, 3);
  }
  EXPECT_EQ(Destroyed, 1);
  try {
    OwnedPtr<TTracked> P = MakeOwned<TTracked>();
    throw std::runtime_error("leaving");
  } catch (const std::runtime_error&) {
  }
  EXPECT_EQ(Destroyed, 2);
}

TEST_F(OwnedPtrTest, MovesOwnershipWithoutFreeing) {
  OwnedPtr<TTracked> A = MakeOwned<TTracked>(1);
  TTracked* Raw = A.Get();
  OwnedPtr<TTracked> B = std::move(A);
  EXPECT_EQ(A, nullptr);
  EXPECT_FALSE(A);
  EXPECT_EQ(B.Get(), Raw);
  // Assigning over an owner frees what it held.
  B = MakeOwned<TTracked>(2);
  EXPECT_EQ(Destroyed, 1);
  EXPECT_EQ(B->Value, 2);
  // A derived owner converts to a base owner.
  OwnedPtr<TTracked> C = MakeOwned<TTrackedChild>();
  EXPECT_EQ(C->Value, 7);
  EXPECT_EQ(C->ClassName(), "TTrackedChild");
  B = nullptr;
  EXPECT_EQ(Destroyed, 2);
  EXPECT_EQ(B, nullptr);
}

TEST_F(OwnedPtrTest, DetachHandsTheObjectOn) {
  OwnedPtr<TTracked> P = MakeOwned<TTracked>();
  TTracked* Raw = P.Detach();
  EXPECT_EQ(P.Get(), nullptr);
  P.Reset();
  EXPECT_EQ(Destroyed, 0);
  Raw->Free();
  EXPECT_EQ(Destroyed, 1);
}

TEST_F(OwnedPtrTest, ResetKeepsAnObjectThatRefusesToGo) {
  OwnedPtr<TTracked> P = MakeOwned<TTracked>();
  P->Refuse = true;
  TTracked* Other = TTracked::Create(5);
  EXPECT_THROW(P.Reset(Other), Exception);
  // Still owned and alive; the new object was not taken.
  EXPECT_EQ(Destroyed, 0);
  ASSERT_TRUE(P);
  EXPECT_NE(P.Get(), Other);
  Other->Free();
  P->Refuse = false;
  P.Reset();
  EXPECT_EQ(Destroyed, 2);
}
