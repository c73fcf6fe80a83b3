// SPDX-License-Identifier: MIT
// Collections: items join and leave, indexes and identifiers, updates and notifications,
// assignment.
#include <kx/rtl/Collection.h>

#include <gtest/gtest.h>

#include <vector>

using namespace kx;

namespace {

class TNamedItem : public TCollectionItem {
  KX_CLASS(TNamedItem, TCollectionItem)
public:
  using TCollectionItem::TCollectionItem;
  AnsiString Name;

protected:
  void AssignTo(TPersistent* Dest) override {
    if (auto* D = dynamic_cast<TNamedItem*>(Dest))
      D->Name = Name;
    else
      TCollectionItem::AssignTo(Dest);
  }
};
KX_IMPLEMENT_CLASS(TNamedItem, TCollectionItem, "test")

class TWatchedCollection : public TCollection {
  KX_CLASS(TWatchedCollection, TCollection)
public:
  TWatchedCollection() : TCollection(TNamedItem::ClassInfo(), &CollectionItemFactory<TNamedItem>) {}
  std::vector<std::pair<int32_t, TCollectionNotification>> Notes;
  int32_t Updates = 0;

protected:
  void Notify(TCollectionItem* Item, TCollectionNotification Action) override {
    Notes.emplace_back(Item->ID(), Action);
  }
  void Update(TCollectionItem*) override { ++Updates; }
};
KX_IMPLEMENT_CLASS(TWatchedCollection, TCollection, "test")

TNamedItem* Named(TCollection* C, const char* Name) {
  auto* I = static_cast<TNamedItem*>(C->Add());
  I->Name = Name;
  return I;
}

} // namespace

TEST(Collection, ItemsJoinLeaveAndKeepTheirIdentifiers) {
  auto* C = TWatchedCollection::Create();
  Named(C, "a");
  TNamedItem* B = Named(C, "b");
  Named(C, "c");
  EXPECT_EQ(C->Count(), 3);
  EXPECT_EQ(B->Index(), 1);
  EXPECT_EQ(B->ID(), 1);
  EXPECT_EQ(B->Collection(), C);
  C->Delete(0);
  EXPECT_EQ(B->Index(), 0);
  // Identifiers are never reused.
  TNamedItem* D = Named(C, "d");
  EXPECT_EQ(D->ID(), 3);
  EXPECT_EQ(C->FindItemID(1), B);
  EXPECT_EQ(C->FindItemID(0), nullptr);
  D->SetIndex(0);
  EXPECT_EQ(static_cast<TNamedItem*>(C->Items(0))->Name, "d");
  TNamedItem* E = static_cast<TNamedItem*>(C->Insert(1));
  EXPECT_EQ(E->Index(), 1);
  // Freeing an item takes it out; moving it to another collection too.
  B->Free();
  EXPECT_EQ(C->Count(), 3);
  auto* Other = TWatchedCollection::Create();
  E->SetCollection(Other);
  EXPECT_EQ(C->Count(), 2);
  EXPECT_EQ(Other->Items(0), E);
  EXPECT_EQ(E->Index(), 0);
  EXPECT_THROW(C->Items(2), EListError);
  Other->Free();
  C->Free();
}

TEST(Collection, NotificationsAndUpdates) {
  auto* C = TWatchedCollection::Create();
  Named(C, "a");
  Named(C, "b");
  C->Delete(1);
  using P = std::pair<int32_t, TCollectionNotification>;
  EXPECT_EQ(C->Notes,
            (std::vector<P>{{0, cnAdded}, {1, cnAdded}, {1, cnDeleting}, {1, cnExtracting}}));
  EXPECT_EQ(C->Updates, 3);
  C->Updates = 0;
  C->BeginUpdate();
  C->BeginUpdate();
  Named(C, "x");
  Named(C, "y");
  C->EndUpdate();
  EXPECT_EQ(C->Updates, 0);
  C->EndUpdate();
  EXPECT_EQ(C->Updates, 1);
  C->Free();
}

TEST(Collection, AssignCopiesItemsAndNamePathsFollowTheOwner) {
  auto* A = TWatchedCollection::Create();
  Named(A, "one");
  Named(A, "two");
  auto* B = TWatchedCollection::Create();
  Named(B, "old");
  B->Assign(A);
  ASSERT_EQ(B->Count(), 2);
  EXPECT_EQ(static_cast<TNamedItem*>(B->Items(1))->Name, "two");
  EXPECT_NE(B->Items(0), A->Items(0));
  TCollectionItem* Loose = TCollectionItem::Create(nullptr);
  EXPECT_THROW(B->Assign(Loose), EConvertError);
  EXPECT_EQ(Loose->Index(), -1);
  Loose->Free();
  EXPECT_EQ(B->Items(1)->GetNamePath(), "TWatchedCollection[1]");
  auto* Owner = TCollection::CreateOf<TNamedItem>();
  auto* Owned =
      TOwnedCollection::Create(Owner, TNamedItem::ClassInfo(), &CollectionItemFactory<TNamedItem>);
  EXPECT_EQ(Owned->Owner(), Owner);
  EXPECT_EQ(Owned->GetNamePath(), "TCollection");
  Owned->Free();
  Owner->Free();
  B->Free();
  A->Free();
}
