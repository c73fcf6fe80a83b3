// SPDX-License-Identifier: MIT
// Thread-safe free notifications.
#include <kx/classes/FreeNotifies.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxFreeNotifies, TKxObject, "uKxClasses")

TKxFreeNotifies::TKxFreeNotifies(TKxFreeNotifiesOnNotify AOnNotify)
    : FOnNotify(std::move(AOnNotify)), FList(TThreadList::Create()), FOwner(FOnNotify.Data()) {}

TKxFreeNotifies::~TKxFreeNotifies() {
  FList->Free();
}

void TKxFreeNotifies::Add(TKxFreeNotifies* AFreeNotifies) {
  bool Found = false;
  TList* L = FList->LockList();
  for (int32_t I = L->Count() - 1; I >= 0 && !Found; --I) Found = L->Get(I) == AFreeNotifies;
  FList->UnlockList();
  if (Found) return;
  FList->Add(AFreeNotifies);
  AFreeNotifies->Add(this);
}

void TKxFreeNotifies::Remove(TKxFreeNotifies* AFreeNotifies) {
  FList->Remove(AFreeNotifies);
}

void TKxFreeNotifies::BeforeDestruction() {
  TKxObject::BeforeDestruction();
  TList* L = FList->LockList();
  try {
    for (int32_t I = L->Count() - 1; I >= 0; --I) {
      auto* Partner = static_cast<TKxFreeNotifies*>(L->Get(I));
      Partner->Remove(this);
      if (Partner->FOnNotify) Partner->FOnNotify(FOwner);
      L->Delete(I);
    }
  } catch (...) {
    FList->UnlockList();
    throw;
  }
  FList->UnlockList();
}

} // namespace kx
