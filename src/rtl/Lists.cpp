// SPDX-License-Identifier: MIT
// The runtime's lists.
#include <kx/rtl/Lists.h>

#include <algorithm>

namespace kx {

KX_IMPLEMENT_CLASS(TList, TObject, "Classes")
KX_IMPLEMENT_CLASS(TObjectList, TList, "Contnrs")
KX_IMPLEMENT_CLASS(TThreadList, TObject, "Classes")

TList::~TList() = default;

void TList::BeforeDestruction() {
  TObject::BeforeDestruction();
  Clear();
}

void TList::Error(const char* Msg, int64_t Data) {
  throw EListError(Format(Msg, {Data}));
}

int32_t TList::Add(void* Item) {
  int32_t Index = Count();
  FList.push_back(Item);
  if (Item) Notify(Item, lnAdded);
  return Index;
}

void TList::Insert(int32_t Index, void* Item) {
  if (Index < 0 || Index > Count()) Error(SListIndexError, Index);
  FList.insert(FList.begin() + Index, Item);
  if (Item) Notify(Item, lnAdded);
}

void TList::Delete(int32_t Index) {
  if (Index < 0 || Index >= Count()) Error(SListIndexError, Index);
  void* Item = FList[size_t(Index)];
  FList.erase(FList.begin() + Index);
  if (Item) Notify(Item, lnDeleted);
}

int32_t TList::Remove(void* Item) {
  int32_t Index = IndexOf(Item);
  if (Index >= 0) Delete(Index);
  return Index;
}

void* TList::Extract(void* Item) {
  int32_t Index = IndexOf(Item);
  if (Index < 0) return nullptr;
  FList.erase(FList.begin() + Index);
  Notify(Item, lnExtracted);
  return Item;
}

void TList::Clear() {
  SetCount(0);
  FList.shrink_to_fit();
}

int32_t TList::IndexOf(void* Item) const {
  auto It = std::find(FList.begin(), FList.end(), Item);
  return It == FList.end() ? -1 : int32_t(It - FList.begin());
}

void TList::Exchange(int32_t Index1, int32_t Index2) {
  if (Index1 < 0 || Index1 >= Count()) Error(SListIndexError, Index1);
  if (Index2 < 0 || Index2 >= Count()) Error(SListIndexError, Index2);
  std::swap(FList[size_t(Index1)], FList[size_t(Index2)]);
}

void TList::Move(int32_t CurIndex, int32_t NewIndex) {
  if (CurIndex == NewIndex) return;
  if (NewIndex < 0 || NewIndex >= Count()) Error(SListIndexError, NewIndex);
  void* Item = Get(CurIndex);
  FList.erase(FList.begin() + CurIndex);
  FList.insert(FList.begin() + NewIndex, Item);
}

void TList::Sort(TListSortCompare Compare) {
  std::stable_sort(FList.begin(), FList.end(),
                   [Compare](void* A, void* B) { return Compare(A, B) < 0; });
}

void TList::SetCount(int32_t NewCount) {
  if (NewCount < 0) Error(SListCapacityError, NewCount);
  // Shrinking deletes from the end, one notification each.
  while (Count() > NewCount) Delete(Count() - 1);
  FList.resize(size_t(NewCount), nullptr);
}

void TList::SetCapacity(int32_t NewCapacity) {
  if (NewCapacity < Count()) Error(SListCapacityError, NewCapacity);
  FList.reserve(size_t(NewCapacity));
}

void* TList::Get(int32_t Index) const {
  if (Index < 0 || Index >= Count()) Error(SListIndexError, Index);
  return FList[size_t(Index)];
}

void TList::Put(int32_t Index, void* Item) {
  if (Index < 0 || Index >= Count()) Error(SListIndexError, Index);
  void* Old = FList[size_t(Index)];
  if (Old == Item) return;
  FList[size_t(Index)] = Item;
  if (Old) Notify(Old, lnDeleted);
  if (Item) Notify(Item, lnAdded);
}

void TList::Notify(void*, TListNotification) {}

void TObjectList::Notify(void* Ptr, TListNotification Action) {
  if (FOwnsObjects && Action == lnDeleted) static_cast<TObject*>(Ptr)->Free();
  TList::Notify(Ptr, Action);
}

TThreadList::TThreadList() : FList(TList::Create()) {}

TThreadList::~TThreadList() {
  std::lock_guard Guard(FLock);
  FList->Free();
}

void TThreadList::Add(void* Item) {
  std::lock_guard Guard(FLock);
  if (FDuplicates == dupAccept || FList->IndexOf(Item) == -1)
    FList->Add(Item);
  else if (FDuplicates == dupError)
    TList::Error(SDuplicateItem, int64_t(reinterpret_cast<uintptr_t>(Item)));
}

void TThreadList::Remove(void* Item) {
  std::lock_guard Guard(FLock);
  FList->Remove(Item);
}

void TThreadList::Clear() {
  std::lock_guard Guard(FLock);
  FList->Clear();
}

TList* TThreadList::LockList() {
  FLock.lock();
  return FList;
}

void TThreadList::UnlockList() {
  FLock.unlock();
}

} // namespace kx
