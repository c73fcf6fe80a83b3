// SPDX-License-Identifier: MIT
// Components: ownership, names and free notifications.
#include <kx/rtl/Component.h>
#include <kx/rtl/InterfacedObject.h>
#include <kx/rtl/SysUtils.h>

namespace kx {

KX_IMPLEMENT_CLASS(TComponent, TPersistent, "Classes")

namespace {
bool IsValidIdent(const AnsiString& S) {
  auto Alpha = [](char C) { return (C >= 'a' && C <= 'z') || (C >= 'A' && C <= 'Z') || C == '_'; };
  if (S.empty() || !Alpha(S[0])) return false;
  for (char C : S)
    if (!Alpha(C) && !(C >= '0' && C <= '9')) return false;
  return true;
}
} // namespace

TComponent::TComponent(TComponent* AOwner) {
  if (AOwner) AOwner->InsertComponent(this);
}

void TComponent::BeforeDestruction() {
  if (FComponentState.Contains(csDestroying)) {
    // Freed by its owner, which asked the whole tree already; asked again in case a
    // destructor that ran since took a reference.
    ValidateDestruction();
  } else {
    ValidateTreeDestruction();
    Destroying();
  }
  TPersistent::BeforeDestruction();
}

void TComponent::ValidateTreeDestruction() {
  ValidateDestruction();
  for (int32_t I = 0; I < ComponentCount(); ++I) Components(I)->ValidateTreeDestruction();
}

TComponent::~TComponent() {
  Destroying();
  // Partners are told last-registered first; one of them may clear the whole list.
  if (FFreeNotifies) {
    for (int32_t I = FFreeNotifies->Count() - 1; I >= 0; --I) {
      if (I >= FFreeNotifies->Count()) continue;
      static_cast<TComponent*>(FFreeNotifies->Get(I))->Notification(this, opRemove);
      if (!FFreeNotifies) break;
    }
    FreeAndNil(FFreeNotifies);
  }
  DestroyComponents();
  if (FOwner) FOwner->RemoveComponent(this);
}

HRESULT KX_STDCALL TComponent::QueryInterface(const TGUID& IID, void** Obj) {
  return GetInterface(IID, Obj) ? KX_S_OK : KX_E_NOINTERFACE;
}

bool TComponent::GetInterface(const TGUID& IID, void** Obj) {
  return detail::GetInterfaceAs<IInterface>(this, IID, Obj) || TPersistent::GetInterface(IID, Obj);
}

TComponent* TComponent::Components(int32_t Index) const {
  if (!FComponents) TList::Error(SListIndexError, Index);
  return static_cast<TComponent*>(FComponents->Get(Index));
}

int32_t TComponent::ComponentIndex() const {
  return FOwner && FOwner->FComponents ? FOwner->FComponents->IndexOf(const_cast<TComponent*>(this))
                                       : -1;
}

TComponent* TComponent::FindComponent(const AnsiString& AName) const {
  if (AName.empty() || !FComponents) return nullptr;
  for (int32_t I = 0; I < FComponents->Count(); ++I) {
    auto* C = static_cast<TComponent*>(FComponents->Get(I));
    if (SameText(C->FName, AName)) return C;
  }
  return nullptr;
}

void TComponent::SetName(const AnsiString& NewName) {
  if (FName == NewName) return;
  if (!NewName.empty() && !IsValidIdent(NewName))
    throw EComponentError(Format(SInvalidName, {NewName}));
  if (FOwner)
    FOwner->ValidateRename(this, FName, NewName);
  else
    ValidateRename(nullptr, FName, NewName);
  FName = NewName;
}

void TComponent::ValidateRename(TComponent* AComponent, const AnsiString& CurName,
                                const AnsiString& NewName) {
  if (AComponent && !SameText(CurName, NewName)) {
    TComponent* Existing = FindComponent(NewName);
    if (Existing && Existing != AComponent)
      throw EComponentError(Format(SDuplicateName, {NewName}));
  }
}

void TComponent::InsertComponent(TComponent* AComponent) {
  if (!AComponent->FName.empty()) ValidateRename(AComponent, "", AComponent->FName);
  Insert(AComponent);
  Notification(AComponent, opInsert);
}

void TComponent::RemoveComponent(TComponent* AComponent) {
  Notification(AComponent, opRemove);
  Remove(AComponent);
}

void TComponent::Insert(TComponent* AComponent) {
  if (!FComponents) FComponents = TList::Create();
  FComponents->Add(AComponent);
  AComponent->FOwner = this;
}

void TComponent::Remove(TComponent* AComponent) {
  AComponent->FOwner = nullptr;
  FComponents->Remove(AComponent);
  if (FComponents->Count() == 0) FreeAndNil(FComponents);
}

void TComponent::DestroyComponents() {
  // Each owned component removes itself from the list while it is destroyed.
  while (FComponents) {
    auto* C = static_cast<TComponent*>(FComponents->Last());
    Remove(C);
    C->Free();
  }
}

void TComponent::Destroying() {
  if (FComponentState.Contains(csDestroying)) return;
  FComponentState.Include(csDestroying);
  for (int32_t I = 0; I < ComponentCount(); ++I) Components(I)->Destroying();
}

void TComponent::FreeNotification(TComponent* AComponent) {
  if (!AComponent || AComponent == this) return;
  if (!FFreeNotifies) FFreeNotifies = TList::Create();
  if (FFreeNotifies->IndexOf(AComponent) < 0) {
    FFreeNotifies->Add(AComponent);
    AComponent->FreeNotification(this);
  }
  FComponentState.Include(csFreeNotification);
}

void TComponent::RemoveNotification(TComponent* AComponent) {
  if (!FFreeNotifies) return;
  FFreeNotifies->Remove(AComponent);
  if (FFreeNotifies->Count() == 0) {
    FreeAndNil(FFreeNotifies);
    FComponentState.Exclude(csFreeNotification);
  }
}

void TComponent::RemoveFreeNotification(TComponent* AComponent) {
  RemoveNotification(AComponent);
  AComponent->RemoveNotification(this);
}

void TComponent::Notification(TComponent* AComponent, TOperation Operation) {
  if (Operation == opRemove && AComponent) RemoveFreeNotification(AComponent);
  for (int32_t I = ComponentCount() - 1; I >= 0; --I) {
    if (I >= ComponentCount()) continue;
    Components(I)->Notification(AComponent, Operation);
  }
}

AnsiString TComponent::GetNamePath() {
  return FName;
}

} // namespace kx
