// SPDX-License-Identifier: MIT
// The reference-counting object list's release rules.
#include <kx/uKxClasses.h>

#include <gtest/gtest.h>

using namespace kx;

namespace {
int Destroyed = 0;
class TCounted : public TKxObject {
  KX_CLASS(TCounted, TKxObject)
public:
  ~TCounted() override { ++Destroyed; }
};
KX_IMPLEMENT_CLASS(TCounted, TKxObject, "ObjectListTest")

class TRuntimeCounted : public TInterfacedObject {
  KX_CLASS(TRuntimeCounted, TInterfacedObject)
public:
  ~TRuntimeCounted() override { ++Destroyed; }
};
KX_IMPLEMENT_CLASS(TRuntimeCounted, TInterfacedObject, "ObjectListTest")
} // namespace

TEST(KxObjectList, AddReturnsTheObject) {
  auto* L = TKxObjectList::Create(false);
  TObject* O = TObject::Create();
  EXPECT_EQ(L->Add(O), O);
  EXPECT_EQ(L->Count(), 1);
  L->Free();
  O->Free();
}

TEST(KxObjectList, SelfDestroyingObjectIsReleasedNeverFreedEvenWhenOwned) {
  Destroyed = 0;
  auto* L = TKxObjectList::Create(true);
  auto* O = TCounted::Create();
  IPtr<IKxObject> Ref(static_cast<IKxObject*>(O)); // makes it self-destroying
  L->Add(O);
  EXPECT_EQ(O->RefCount(), 2);
  L->Delete(0);
  EXPECT_EQ(O->RefCount(), 1);
  EXPECT_EQ(Destroyed, 0);
  L->Add(O);
  Ref.Reset();
  EXPECT_EQ(Destroyed, 0); // the list's reference keeps it
  L->Free();               // the release from clearing destroys it
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxObjectList, PlainLibraryObjectsAreFreedByAnOwningList) {
  Destroyed = 0;
  auto* L = TKxObjectList::Create(true);
  auto* O = TCounted::Create();
  L->Add(O);
  EXPECT_EQ(O->RefCount(), 0); // not counted while undecided
  auto* Kept = TCounted::Create();
  L->Add(Kept);
  EXPECT_EQ(L->Extract(Kept), Kept);
  L->Free();
  EXPECT_EQ(Destroyed, 1);
  Kept->Free();
  EXPECT_EQ(Destroyed, 2);
}

TEST(KxObjectList, RuntimeInterfacedObjectsAreCountedWhileListed) {
  Destroyed = 0;
  auto* L = TKxObjectList::Create(false);
  auto* O = TRuntimeCounted::Create();
  IPtr<IInterface> Ref(static_cast<IInterface*>(O));
  L->Add(O);
  EXPECT_EQ(O->RefCount(), 2);
  L->Extract(O);
  EXPECT_EQ(O->RefCount(), 1);
  L->Add(O);
  Ref.Reset();
  EXPECT_EQ(Destroyed, 0);
  L->Delete(0); // the list held the last reference
  EXPECT_EQ(Destroyed, 1);
  L->Free();
}
