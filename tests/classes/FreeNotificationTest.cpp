// SPDX-License-Identifier: MIT
// Two-way free notifications: order, mutual removal and handlers that change the lists.
#include <kx/uKxClasses.h>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

using namespace kx;

namespace {

std::vector<std::string> Log;

class TPartner : public TKxObjectEx {
  KX_CLASS(TPartner, TKxObjectEx)
public:
  explicit TPartner(std::string AName = "") : FName(std::move(AName)) {}
  std::function<void(TPartner* Self, TObject* Dying)> OnDestroyed;
  void KX_STDCALL OnObjectDestroyed(TObject* AObject) override {
    auto* Dying = dynamic_cast<TPartner*>(AObject);
    Log.push_back(FName + "<-" + (Dying ? Dying->FName : "?"));
    if (OnDestroyed) OnDestroyed(this, AObject);
  }
  bool Holds(TObject* O) const { return Notifications() && Notifications()->IndexOf(O) >= 0; }
  std::string FName;
};
KX_IMPLEMENT_CLASS(TPartner, TKxObjectEx, "FreeNotificationTest")

// A partner outside the TKxObjectEx family: it takes part through the interfaces only.
class TForeign : public TInterfacedObject,
                 public IKxObjectFreeNotificationEvent,
                 public IKxObjectEx {
  KX_CLASS(TForeign, TInterfacedObject)
public:
  KX_FORWARD_IINTERFACE(TInterfacedObject)
  bool GetInterface(const TGUID& IID, void** Obj) override {
    return detail::GetInterfaceAs<IKxObjectFreeNotificationEvent>(this, IID, Obj) ||
           detail::GetInterfaceAs<IKxObjectEx>(this, IID, Obj) ||
           TInterfacedObject::GetInterface(IID, Obj);
  }
  TObject* KX_STDCALL Implementor() override { return this; }
  void KX_STDCALL OnObjectDestroyed(TObject*) override { ++Told; }
  void KX_STDCALL RemoveNotification(TObject* AObject) override { std::erase(Partners, AObject); }
  void KX_STDCALL FreeNotificationEx(IKxObjectFreeNotificationEvent* AEvent) override {
    Partners.push_back(AEvent->Implementor());
  }
  void KX_STDCALL RemoveFreeNotificationEx(IKxObject*) override {}
  std::vector<TObject*> Partners;
  int Told = 0;
};
KX_IMPLEMENT_CLASS(TForeign, TInterfacedObject, "FreeNotificationTest")

// Its Implementor is a plain object that cannot be told anything.
class TMute : public TInterfacedObject, public IKxObjectFreeNotificationEvent {
  KX_CLASS(TMute, TInterfacedObject)
public:
  explicit TMute(TObject* ATarget) : FTarget(ATarget) {}
  KX_FORWARD_IINTERFACE(TInterfacedObject)
  TObject* KX_STDCALL Implementor() override { return FTarget; }
  void KX_STDCALL OnObjectDestroyed(TObject*) override {}
  TObject* FTarget;
};
KX_IMPLEMENT_CLASS(TMute, TInterfacedObject, "FreeNotificationTest")

} // namespace

TEST(FreeNotification, EachSideHoldsTheOtherExactlyOnce) {
  auto* A = TPartner::Create("A");
  auto* B = TPartner::Create("B");
  A->FreeNotification(B);
  A->FreeNotification(B);
  B->FreeNotification(A);
  EXPECT_EQ(A->Notifications()->Count(), 1);
  EXPECT_EQ(B->Notifications()->Count(), 1);
  A->RemoveFreeNotification(B);
  EXPECT_EQ(A->Notifications(), nullptr);
  EXPECT_EQ(B->Notifications(), nullptr);
  A->Free();
  B->Free();
}

TEST(FreeNotification, PartnersAreToldInReverseOrderAndForgetTheDeadObject) {
  Log.clear();
  auto* A = TPartner::Create("A");
  auto* B = TPartner::Create("B");
  auto* C = TPartner::Create("C");
  A->FreeNotification(B);
  A->FreeNotification(C);
  A->Free();
  EXPECT_EQ(Log, (std::vector<std::string>{"C<-A", "B<-A"}));
  EXPECT_EQ(B->Notifications(), nullptr);
  EXPECT_EQ(C->Notifications(), nullptr);
  B->Free();
  C->Free();
}

TEST(FreeNotification, HandlersMayAddAndRemoveNotifications) {
  Log.clear();
  auto* A = TPartner::Create("A");
  auto* B = TPartner::Create("B");
  auto* C = TPartner::Create("C");
  auto* D = TPartner::Create("D");
  A->FreeNotification(B);
  A->FreeNotification(C);
  // C, told first, drops B from A's list and registers D instead: the loop re-reads the list.
  C->OnDestroyed = [&](TPartner*, TObject* Dying) {
    static_cast<TPartner*>(Dying)->RemoveFreeNotification(B);
    static_cast<TPartner*>(Dying)->FreeNotification(D);
  };
  A->Free();
  EXPECT_EQ(Log, (std::vector<std::string>{"C<-A", "D<-A"}));
  EXPECT_FALSE(B->Holds(A));
  EXPECT_FALSE(D->Holds(A));
  B->Free();
  C->Free();
  D->Free();
}

TEST(FreeNotification, PartnerReferencesDuringNotificationDoNotDestroyIt) {
  // B lives by its count: the interface the loop takes must not destroy it mid-way.
  auto* A = TPartner::Create("A");
  auto* B = TPartner::Create("B");
  IPtr<IKxObject> KeepB(static_cast<IKxObject*>(static_cast<TKxObject*>(B)));
  A->FreeNotification(B);
  A->Free();
  EXPECT_EQ(B->AutoDestroy(), kadTrue);
  EXPECT_EQ(B->RefCount(), 1);
  KeepB.Reset(); // destroys B
}

TEST(FreeNotification, RemovingAnAbsentObjectKeepsOrFreesTheListCorrectly) {
  auto* A = TPartner::Create("A");
  auto* B = TPartner::Create("B");
  auto* C = TPartner::Create("C");
  A->RemoveNotification(C); // no list: nothing happens
  EXPECT_EQ(A->Notifications(), nullptr);
  A->FreeNotification(B);
  A->RemoveNotification(C);
  EXPECT_EQ(A->Notifications()->Count(), 1);
  A->RemoveNotification(B);
  EXPECT_EQ(A->Notifications(), nullptr);
  EXPECT_TRUE(B->Holds(A)); // one side only
  B->RemoveNotification(A);
  A->Free();
  B->Free();
  C->Free();
}

TEST(FreeNotification, ForeignPartnersTakePartThroughInterfaces) {
  auto* A = TPartner::Create("A");
  IPtr<TForeign> F(TForeign::Create());
  A->FreeNotificationEx(F.Get());
  EXPECT_TRUE(A->Holds(F.Get()));
  ASSERT_EQ(F->Partners.size(), 1u);
  EXPECT_EQ(F->Partners[0], static_cast<TObject*>(static_cast<TKxObject*>(A)));
  A->Free();
  EXPECT_EQ(F->Told, 1);
  EXPECT_TRUE(F->Partners.empty());
}

TEST(FreeNotification, ExtendedRegistrationBetweenLibraryObjectsIsMutual) {
  auto* A = TPartner::Create("A");
  auto* B = TPartner::Create("B");
  // B stays plainly owned: handing it out through an interface would otherwise settle it
  // as self-destroying.
  B->SetAutoDestroy(false);
  A->FreeNotificationEx(static_cast<IKxObjectFreeNotificationEvent*>(B));
  EXPECT_TRUE(A->Holds(B));
  EXPECT_TRUE(B->Holds(A));
  A->RemoveFreeNotificationEx(static_cast<IKxObjectEx*>(B));
  EXPECT_FALSE(A->Holds(B));
  EXPECT_FALSE(B->Holds(A));
  A->Free();
  B->Free();
}

TEST(FreeNotification, PartnerWithoutTheEventInterfaceFailsTheAssertion) {
  if (!KxAssertionsEnabled) GTEST_SKIP() << "assertions compiled out";
  auto* A = TPartner::Create("A");
  TObject* Plain = TObject::Create();
  IPtr<TMute> M(TMute::Create(Plain));
  A->FreeNotificationEx(M.Get());
  try {
    A->Free();
    FAIL() << "no assertion";
  } catch (const EAssertionFailed& E) {
    EXPECT_EQ(
        E.Message(),
        "Assertion failed (source\\ComponentSets\\Components\\common\\uKxClasses, line 2437)");
    EXPECT_EQ(E.LineNumber(), 2437);
  }
  A->RemoveNotification(Plain);
  A->Free();
  Plain->Free();
}

TEST(KxFreeNotifies, DestructionTellsEveryPartnerWithTheBoundObject) {
  std::vector<TObject*> Told;
  TObject* OwnerA = TObject::Create();
  TObject* OwnerB = TObject::Create();
  auto* A = TKxFreeNotifies::Create(
      TKxFreeNotifiesOnNotify(OwnerA, [&](TObject* O) { Told.push_back(O); }));
  auto* B = TKxFreeNotifies::Create(
      TKxFreeNotifiesOnNotify(OwnerB, [&](TObject* O) { Told.push_back(O); }));
  A->Add(B);
  A->Add(B);
  EXPECT_EQ(A->List()->LockList()->Count(), 1);
  A->List()->UnlockList();
  EXPECT_EQ(B->List()->LockList()->Count(), 1);
  B->List()->UnlockList();
  EXPECT_EQ(A->Owner(), OwnerA);
  A->Free();
  // B's callback ran with A's owner, and B no longer lists A.
  EXPECT_EQ(Told, std::vector<TObject*>{OwnerA});
  EXPECT_EQ(B->List()->LockList()->Count(), 0);
  B->List()->UnlockList();
  B->Free();
  EXPECT_EQ(Told.size(), 1u);
  OwnerA->Free();
  OwnerB->Free();
}
