// SPDX-License-Identifier: MIT
// Life cycle and reference counting of the root classes.
#include <kx/uKxClasses.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace kx;

namespace {

std::atomic<int> Destroyed{0};

class TProbe : public TKxObject {
  KX_CLASS(TProbe, TKxObject)
public:
  ~TProbe() override { ++Destroyed; }
};
KX_IMPLEMENT_CLASS(TProbe, TKxObject, "ObjectTest")

class TSelfReferencing : public TProbe {
  KX_CLASS(TSelfReferencing, TProbe)
public:
  TSelfReferencing() {
    // A reference taken and dropped while constructing must not destroy the object.
    IPtr<IKxObject> Self(static_cast<IKxObject*>(this));
  }
};
KX_IMPLEMENT_CLASS(TSelfReferencing, TProbe, "ObjectTest")

class TProbeComponent : public TKxComponent {
  KX_CLASS(TProbeComponent, TKxComponent)
public:
  using TKxComponent::TKxComponent;
  ~TProbeComponent() override { ++Destroyed; }
};
KX_IMPLEMENT_CLASS(TProbeComponent, TKxComponent, "ObjectTest")

} // namespace

TEST(KxObject, PlainUseNeverCountsAndFreesCleanly) {
  Destroyed = 0;
  TProbe* P = TProbe::Create();
  EXPECT_EQ(P->RefCount(), 0);
  EXPECT_EQ(P->AutoDestroy(), kadComputed);
  EXPECT_FALSE(P->GetAutoDestroy());
  P->Free();
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxObject, FirstInterfaceReferenceMakesItSelfDestroying) {
  Destroyed = 0;
  TProbe* P = TProbe::Create();
  {
    IPtr<IKxObject> Ref(static_cast<IKxObject*>(P));
    EXPECT_EQ(P->AutoDestroy(), kadTrue);
    EXPECT_EQ(Ref->Implementor(), static_cast<TObject*>(P));
    EXPECT_EQ(P->RefCount(), 1);
  }
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxObject, ReferenceTakenInTheConstructorDoesNotDestroyIt) {
  Destroyed = 0;
  auto* P = TSelfReferencing::Create();
  EXPECT_EQ(Destroyed, 0);
  EXPECT_EQ(P->RefCount(), 0);
  EXPECT_EQ(P->AutoDestroy(), kadTrue); // settled by that first reference
  P->Free();
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxObject, SetAutoDestroyFalseKeepsItAliveAtZero) {
  Destroyed = 0;
  TProbe* P = TProbe::Create();
  P->SetAutoDestroy(false);
  { IPtr<IKxObject> Ref(static_cast<IKxObject*>(P)); }
  EXPECT_EQ(Destroyed, 0);
  EXPECT_EQ(P->RefCount(), 0);
  EXPECT_EQ(P->AutoDestroy(), kadFalse);
  P->SetAutoDestroy(true);
  EXPECT_TRUE(P->GetAutoDestroy());
  P->Free();
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxObject, FreeWithLiveReferenceRaisesAndLeavesItAlive) {
  Destroyed = 0;
  TProbe* P = TProbe::Create();
  P->SetAutoDestroy(false);
  IPtr<IKxObject> Ref(static_cast<IKxObject*>(P));
  try {
    P->Free();
    FAIL() << "no exception";
  } catch (const Exception& E) {
    EXPECT_EQ(E.ClassType(), Exception::ClassInfo());
    EXPECT_EQ(E.Message(), "An instance of TProbe is destroyed while it's refcount is not 0!");
  }
  EXPECT_EQ(Destroyed, 0);
  EXPECT_TRUE(P->Destroying());
  // Destroying stays set, so the last release no longer destroys either.
  P->SetAutoDestroy(true);
  Ref.Reset();
  EXPECT_EQ(Destroyed, 0);
  P->Free();
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxObject, InterfacesAreFoundByGuid) {
  TKxObjectEx* X = TKxObjectEx::Create();
  IPtr<IKxObject> Base(static_cast<IKxObject*>(static_cast<TKxObject*>(X)));
  EXPECT_TRUE(Supports<IKxObjectEx>(Base));
  EXPECT_TRUE(Supports<IKxObjectFreeNotificationEvent>(Base));
  EXPECT_TRUE(Supports<IInterface>(Base));
  EXPECT_FALSE(Supports<IKxComponent>(Base));
  void* Obj = reinterpret_cast<void*>(1);
  EXPECT_EQ(Base->QueryInterface(IIDOf<IKxObjectAdapter>(), &Obj), KX_E_NOINTERFACE);
  EXPECT_EQ(Obj, nullptr);
  EXPECT_EQ(GUIDToString(IIDOf<IKxObject>()), "{0417F540-9CCC-4DE6-B2C4-1063D0508346}");
  EXPECT_TRUE(StringToGUID("{66d757f3-6274-47ec-95a9-39b144271ea9}") == IIDOf<IKxObjectEx>());
  EXPECT_THROW(StringToGUID("{66D757F3-6274-47EC-95A9-39B144271EAX}"), EConvertError);
}

TEST(KxObject, CountsFromManyThreads) {
  Destroyed = 0;
  TProbe* P = TProbe::Create();
  IPtr<IKxObject> Keep(static_cast<IKxObject*>(P));
  std::vector<std::thread> Threads;
  for (int T = 0; T < 4; ++T)
    Threads.emplace_back([&] {
      for (int I = 0; I < 20000; ++I) IPtr<IKxObject> Local(Keep);
    });
  for (auto& T : Threads) T.join();
  EXPECT_EQ(P->RefCount(), 1);
  EXPECT_EQ(Destroyed, 0);
  Keep.Reset();
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxObject, ClassReferencesKnowNamesParentsAndFactories) {
  TClass C = TProbe::ClassInfo();
  EXPECT_EQ(C->ClassName(), "TProbe");
  EXPECT_TRUE(C->InheritsFrom(TKxObject::ClassInfo()));
  EXPECT_TRUE(C->InheritsFrom(TObject::ClassInfo()));
  EXPECT_FALSE(TKxObject::ClassInfo()->InheritsFrom(C));
  Destroyed = 0;
  TObject* Made = C->CreateInstance();
  EXPECT_EQ(Made->ClassType(), C);
  Made->Free();
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxComponent, OwnedComponentIsNotDestroyedByItsCount) {
  Destroyed = 0;
  TComponent* Owner = TComponent::Create(nullptr);
  auto* C = TProbeComponent::Create(Owner);
  C->SetName("Child");
  {
    IPtr<IKxComponent> Ref(static_cast<IKxComponent*>(C));
    EXPECT_EQ(Ref->_GetOwner(), Owner);
  }
  EXPECT_EQ(Destroyed, 0);
  EXPECT_EQ(C->AutoDestroy(), kadComputed);
  EXPECT_EQ(Owner->FindComponent("child"), C);
  Owner->Free();
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxComponent, UnownedComponentLivesByItsCount) {
  Destroyed = 0;
  auto* C = TProbeComponent::Create(nullptr);
  { IPtr<IKxObject> Ref(static_cast<IKxObject*>(C)); }
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxComponent, FreeWithLiveReferenceNamesTheComponent) {
  auto* C = TProbeComponent::Create(nullptr);
  C->SetName("Alpha");
  C->SetAutoDestroy(false);
  IPtr<IKxComponent> Ref(static_cast<IKxComponent*>(C));
  try {
    C->Free();
    FAIL() << "no exception";
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(),
              "An instance of TProbeComponent with the name Alpha is destroyed while it's "
              "refcount is not 0!");
  }
  Ref.Reset();
  C->Free();
}

TEST(KxComponent, FreeingTheOwnerOfAReferencedComponentRaisesToTheCaller) {
  Destroyed = 0;
  TComponent* Owner = TComponent::Create(nullptr);
  TComponent* Middle = TComponent::Create(Owner);
  auto* Leaf = TProbeComponent::Create(Middle);
  Leaf->SetName("Leaf");
  IPtr<IKxComponent> Ref(static_cast<IKxComponent*>(Leaf));
  try {
    Owner->Free();
    FAIL() << "no exception";
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(),
              "An instance of TProbeComponent with the name Leaf is destroyed while it's "
              "refcount is not 0!");
  }
  // Nothing was destroyed or marked: the tree is as it was before the call.
  EXPECT_EQ(Destroyed, 0);
  EXPECT_EQ(Middle->FindComponent("leaf"), Leaf);
  EXPECT_EQ(Leaf->Owner(), Middle);
  EXPECT_EQ(Middle->Owner(), Owner);
  for (TComponent* C : {Owner, Middle, static_cast<TComponent*>(Leaf)})
    EXPECT_FALSE(C->ComponentState().Contains(csDestroying));
  Ref.Reset();
  EXPECT_EQ(Destroyed, 0); // owned: its count does not destroy it
  Owner->Free();
  EXPECT_EQ(Destroyed, 1);
}

TEST(KxObjectAdapter, FreesTheWrappedObjectOnlyWhenOwned) {
  Destroyed = 0;
  TProbe* Owned = TProbe::Create();
  TProbe* Referenced = TProbe::Create();
  {
    IPtr<IKxObjectAdapter> A(TKxObjectAdapter::Create(Owned, ooOwned));
    IPtr<IKxObjectAdapter> B(TKxObjectAdapter::Create(Referenced, ooReference));
    EXPECT_EQ(A->GetObject(), static_cast<TObject*>(Owned));
    EXPECT_EQ(B->GetOwnership(), ooReference);
    EXPECT_EQ(Supports<IKxObject>(A)->Implementor(), static_cast<TObject*>(Owned));
  }
  EXPECT_EQ(Destroyed, 1);
  Referenced->Free();
}

TEST(KxObjectEx, AssignBetweenUnrelatedObjectsRaisesConvertError) {
  TKxObjectEx* A = TKxObjectEx::Create();
  TKxObjectEx* B = TKxObjectEx::Create();
  try {
    A->Assign(B);
    FAIL() << "no exception";
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "Cannot assign a TKxObjectEx to a TKxObjectEx");
  }
  try {
    A->Assign(nullptr);
    FAIL() << "no exception";
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "Cannot assign a nil to a TKxObjectEx");
  }
  EXPECT_EQ(A->GetNamePath(), "TKxObjectEx");
  A->Free();
  B->Free();
}
