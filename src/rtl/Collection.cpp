// SPDX-License-Identifier: MIT
// Collections and their items.
#include <kx/rtl/Collection.h>

#include <kx/rtl/Lists.h>

#include <algorithm>

namespace kx {

KX_IMPLEMENT_CLASS(TCollectionItem, TPersistent, "Classes")
KX_IMPLEMENT_CLASS(TCollection, TPersistent, "Classes")
KX_IMPLEMENT_CLASS(TOwnedCollection, TCollection, "Classes")

// --- TCollectionItem -----------------------------------------------------------------------

TCollectionItem::TCollectionItem(TCollection* ACollection) {
  if (ACollection) ACollection->InsertItem(this);
}

void TCollectionItem::BeforeDestruction() {
  SetCollection(nullptr);
  TPersistent::BeforeDestruction();
}

void TCollectionItem::SetCollection(TCollection* Value) {
  if (Value == FCollection) return;
  if (FCollection) FCollection->RemoveItem(this);
  if (Value) Value->InsertItem(this);
}

int32_t TCollectionItem::Index() const {
  if (!FCollection) return -1;
  const auto& L = FCollection->FItems;
  auto It = std::find(L.begin(), L.end(), this);
  return It == L.end() ? -1 : int32_t(It - L.begin());
}

void TCollectionItem::SetIndex(int32_t Value) {
  if (FCollection && Value != Index()) {
    FCollection->MoveItem(this, Value);
    Changed(true);
  }
}

void TCollectionItem::Changed(bool AllItems) {
  if (FCollection && FCollection->FUpdateCount == 0) FCollection->Update(AllItems ? nullptr : this);
}

TPersistent* TCollectionItem::GetOwner() {
  return FCollection;
}

AnsiString TCollectionItem::GetNamePath() {
  if (!FCollection) return ClassName();
  return Format("%s[%d]", {FCollection->GetNamePath(), Index()});
}

// --- TCollection ---------------------------------------------------------------------------

TCollection::TCollection(TClass AItemClass, TCollectionItemFactory AItemFactory)
    : FItemClass(AItemClass), FItemFactory(AItemFactory) {}

void TCollection::BeforeDestruction() {
  // No change notices while the collection goes away.
  FUpdateCount = 1;
  Clear();
  TPersistent::BeforeDestruction();
}

TCollectionItem* TCollection::Add() {
  TCollectionItem* Item = FItemFactory(this);
  // A factory that made the item outside the collection still gets it in.
  if (Item->FCollection != this) Item->SetCollection(this);
  return Item;
}

TCollectionItem* TCollection::Insert(int32_t Index) {
  TCollectionItem* Item = Add();
  Item->SetIndex(Index);
  return Item;
}

void TCollection::Delete(int32_t Index) {
  CheckIndex(Index);
  TCollectionItem* Item = FItems[size_t(Index)];
  Notify(Item, cnDeleting);
  Item->Free();
}

void TCollection::Clear() {
  if (FItems.empty()) return;
  BeginUpdate();
  try {
    while (!FItems.empty()) FItems.back()->Free();
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TCollection::Assign(TPersistent* Source) {
  auto* Other = dynamic_cast<TCollection*>(Source);
  if (!Other) {
    TPersistent::Assign(Source);
    return;
  }
  BeginUpdate();
  try {
    Clear();
    for (TCollectionItem* Item : Other->FItems) Add()->Assign(Item);
  } catch (...) {
    EndUpdate();
    throw;
  }
  EndUpdate();
}

void TCollection::BeginUpdate() {
  ++FUpdateCount;
}

void TCollection::EndUpdate() {
  --FUpdateCount;
  Changed();
}

TCollectionItem* TCollection::FindItemID(int32_t ID) const {
  for (TCollectionItem* Item : FItems)
    if (Item->FID == ID) return Item;
  return nullptr;
}

TCollectionItem* TCollection::Items(int32_t Index) const {
  CheckIndex(Index);
  return FItems[size_t(Index)];
}

AnsiString TCollection::GetNamePath() {
  TPersistent* Owner = GetOwner();
  if (!Owner) return ClassName();
  return Owner->GetNamePath();
}

void TCollection::Notify(TCollectionItem*, TCollectionNotification) {}

void TCollection::Update(TCollectionItem*) {}

void TCollection::Changed() {
  if (FUpdateCount == 0) Update(nullptr);
}

void TCollection::InsertItem(TCollectionItem* Item) {
  FItems.push_back(Item);
  Item->FCollection = this;
  Item->FID = FNextID++;
  Notify(Item, cnAdded);
  Changed();
}

void TCollection::RemoveItem(TCollectionItem* Item) {
  Notify(Item, cnExtracting);
  auto It = std::find(FItems.begin(), FItems.end(), Item);
  if (It != FItems.end()) FItems.erase(It);
  Item->FCollection = nullptr;
  Changed();
}

void TCollection::MoveItem(TCollectionItem* Item, int32_t NewIndex) {
  CheckIndex(NewIndex);
  auto It = std::find(FItems.begin(), FItems.end(), Item);
  FItems.erase(It);
  FItems.insert(FItems.begin() + NewIndex, Item);
}

void TCollection::CheckIndex(int32_t Index) const {
  if (Index < 0 || Index >= Count()) TList::Error(SListIndexError, Index);
}

} // namespace kx
