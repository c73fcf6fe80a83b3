// SPDX-License-Identifier: MIT
// Memos by code.
#include <kx/classes/MemoList.h>

#include <kx/rtl/SysUtils.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxMemoListItem, TCollectionItem, "uKxClasses")
KX_IMPLEMENT_CLASS(TKxMemoListItems, TOwnedCollection, "uKxClasses")
KX_IMPLEMENT_CLASS(TKxMemoList, TKxComponent, "uKxClasses")

// --- TKxMemoListItem -----------------------------------------------------------------------

TKxMemoListItem::TKxMemoListItem(TCollection* ACollection)
    : TCollectionItem(ACollection), FMemo(TStringList::Create()) {}

TKxMemoListItem::~TKxMemoListItem() {
  FMemo->Free();
}

void TKxMemoListItem::AssignTo(TPersistent* Dest) {
  if (auto* Other = dynamic_cast<TKxMemoListItem*>(Dest)) {
    Other->FCode = FCode;
    Other->FMemo->Assign(FMemo);
  } else {
    TCollectionItem::AssignTo(Dest);
  }
}

// --- TKxMemoListItems ----------------------------------------------------------------------

TKxMemoListItems::TKxMemoListItems(TKxMemoList* AMemoList)
    : TOwnedCollection(AMemoList, TKxMemoListItem::ClassInfo(),
                       &CollectionItemFactory<TKxMemoListItem>),
      FMemoList(AMemoList) {}

TKxMemoListItem* TKxMemoListItems::GetItem(int32_t Index) const {
  return static_cast<TKxMemoListItem*>(Items(Index));
}

void TKxMemoListItems::SetItem(int32_t Index, TKxMemoListItem* Item) {
  GetItem(Index)->Assign(Item);
}

AnsiString TKxMemoListItems::GetCode(int32_t Index) const {
  return GetItem(Index)->Code();
}

void TKxMemoListItems::SetCode(int32_t Index, const AnsiString& Code) {
  GetItem(Index)->SetCode(Code);
}

int32_t TKxMemoListItems::IndexOf(const AnsiString& Code) const {
  for (int32_t I = 0; I < Count(); ++I)
    if (SameText(GetItem(I)->Code(), Code)) return I;
  return -1;
}

int32_t TKxMemoListItems::IndexOf(TKxMemoListItem* Item) const {
  for (int32_t I = 0; I < Count(); ++I)
    if (GetItem(I) == Item) return I;
  return -1;
}

TKxMemoListItem* TKxMemoListItems::Find(const AnsiString& Code) const {
  const int32_t I = IndexOf(Code);
  return I < 0 ? nullptr : GetItem(I);
}

TKxMemoListItem* TKxMemoListItems::Add(const AnsiString& Code, TStrings* Memo) {
  if (Find(Code)) throw EListError(Format(SKxMemoCodeExists, {Code}));
  auto* Item = static_cast<TKxMemoListItem*>(TCollection::Add());
  Item->SetCode(Code);
  if (Memo) Item->SetMemo(Memo);
  return Item;
}

void TKxMemoListItems::Remove(const AnsiString& Code) {
  if (TKxMemoListItem* Item = Find(Code)) Remove(Item);
}

void TKxMemoListItems::Remove(TKxMemoListItem* Item) {
  const int32_t I = IndexOf(Item);
  if (I >= 0) Delete(I);
}

void TKxMemoListItems::Remove(int32_t Index) {
  Delete(Index);
}

void TKxMemoListItems::AssignTo(TPersistent* Dest) {
  auto* Other = dynamic_cast<TKxMemoListItems*>(Dest);
  if (!Other) {
    TOwnedCollection::AssignTo(Dest);
    return;
  }
  Other->BeginUpdate();
  try {
    Other->Clear();
    for (int32_t I = 0; I < Count(); ++I) Other->Add(GetItem(I)->Code())->Assign(GetItem(I));
  } catch (...) {
    Other->EndUpdate();
    throw;
  }
  Other->EndUpdate();
}

// --- TKxMemoList ---------------------------------------------------------------------------

TKxMemoList::TKxMemoList(TComponent* AOwner)
    : TKxComponent(AOwner), FItems(TKxMemoListItems::Create(this)) {}

TKxMemoList::~TKxMemoList() {
  FItems->Free();
}

TStringList* TKxMemoList::MemoByCode(const AnsiString& Code) const {
  TKxMemoListItem* Item = FItems->Find(Code);
  if (!Item) throw Exception(Format(SKxMemoCodeNotFound, {Code}));
  return Item->Memo();
}

} // namespace kx
