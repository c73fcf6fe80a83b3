// SPDX-License-Identifier: MIT
// Components: ownership, names, free notifications and the destroying state.
#include <kx/rtl/Rtl.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace kx;

namespace {
std::vector<std::string> Events;

class TWatcher : public TComponent {
  KX_CLASS(TWatcher, TComponent)
public:
  using TComponent::TComponent;
  ~TWatcher() override { Events.push_back("free " + Name()); }
  bool SawDestroying = false;

protected:
  void Notification(TComponent* AComponent, TOperation Operation) override {
    TComponent::Notification(AComponent, Operation);
    if (Operation == opRemove) {
      Events.push_back(Name() + " sees " + AComponent->Name() + " go");
      SawDestroying = AComponent->ComponentState().Contains(csDestroying);
    }
  }
};
KX_IMPLEMENT_CLASS(TWatcher, TComponent, "ComponentTest")
} // namespace

TEST(Component, OwnerFreesWhatItOwnsAndNamesAreUniqueAmongSiblings) {
  Events.clear();
  auto* Owner = TWatcher::Create(nullptr);
  Owner->SetName("Owner");
  auto* A = TWatcher::Create(Owner);
  A->SetName("A");
  auto* B = TWatcher::Create(Owner);
  EXPECT_EQ(Owner->ComponentCount(), 2);
  EXPECT_EQ(B->ComponentIndex(), 1);
  EXPECT_THROW(B->SetName("a"), EComponentError); // names compare without case
  try {
    B->SetName("1B");
    FAIL() << "no exception";
  } catch (const EComponentError& E) {
    EXPECT_EQ(E.Message(), "''1B'' is not a valid component name");
  }
  B->SetName("B");
  EXPECT_EQ(Owner->FindComponent("b"), B);
  Owner->Free();
  // The owner's own destructor runs first; then its components go, last inserted first,
  // taken out of the list without telling the owner.
  EXPECT_EQ(Events, (std::vector<std::string>{"free Owner", "free B", "free A"}));
}

TEST(Component, AnOwnedComponentFreedAloneTellsItsOwner) {
  Events.clear();
  auto* Owner = TWatcher::Create(nullptr);
  Owner->SetName("Owner");
  auto* A = TWatcher::Create(Owner);
  A->SetName("A");
  A->Free();
  EXPECT_EQ(Events, (std::vector<std::string>{"free A", "Owner sees A go"}));
  EXPECT_EQ(Owner->ComponentCount(), 0);
  Owner->Free();
}

TEST(Component, FreeNotificationIsTwoWayAndRemovable) {
  Events.clear();
  auto* A = TWatcher::Create(nullptr);
  A->SetName("A");
  auto* B = TWatcher::Create(nullptr);
  B->SetName("B");
  auto* C = TWatcher::Create(nullptr);
  C->SetName("C");
  A->FreeNotification(B);
  A->FreeNotification(C);
  A->RemoveFreeNotification(C);
  C->Free();
  EXPECT_EQ(Events, (std::vector<std::string>{"free C"}));
  Events.clear();
  A->Free();
  EXPECT_EQ(Events, (std::vector<std::string>{"free A", "B sees A go"}));
  EXPECT_TRUE(B->SawDestroying);
  Events.clear();
  B->Free(); // no longer linked to A
  EXPECT_EQ(Events, (std::vector<std::string>{"free B"}));
}

TEST(Component, ComponentsAnswerIInterfaceWithoutCounting) {
  auto* C = TComponent::Create(nullptr);
  IPtr<IInterface> Ref = Supports<IInterface>(static_cast<TObject*>(C));
  ASSERT_TRUE(Ref);
  EXPECT_EQ(Ref->_AddRef(), -1);
  EXPECT_EQ(Ref->_Release(), -1);
  Ref.Reset();
  C->Free();
}

TEST(Persistent, AssignWithoutSupportRaisesTheCannotAssignError) {
  auto* A = TPersistent::Create();
  auto* C = TComponent::Create(nullptr);
  try {
    A->Assign(C);
    FAIL() << "no exception";
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "Cannot assign a TComponent to a TPersistent");
  }
  EXPECT_THROW(A->Assign(nullptr), EConvertError);
  A->Free();
  C->Free();
}
