// SPDX-License-Identifier: MIT
// Free notifications between library objects.
#include <kx/classes/ObjectEx.h>
#include <kx/rtl/Persistent.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxObjectEx, TKxObject, "uKxClasses")

namespace {
// The line the unit's assertion for a partner without the notification interface reports.
constexpr int32_t PartnerAssertLine = 2437;
} // namespace

TKxObjectEx::~TKxObjectEx() {
  // Normally emptied by BeforeDestruction; only the storage is left here.
  if (FNotifications) FNotifications->Free();
}

bool TKxObjectEx::GetInterface(const TGUID& IID, void** Obj) {
  return detail::GetInterfaceAs<IKxObjectEx>(this, IID, Obj) ||
         detail::GetInterfaceAs<IKxObjectFreeNotificationEvent>(this, IID, Obj) ||
         TKxObject::GetInterface(IID, Obj);
}

void TKxObjectEx::BeforeDestruction() {
  TKxObject::BeforeDestruction();
  while (FNotifications && FNotifications->Count() > 0) {
    auto* X = static_cast<TObject*>(FNotifications->Last());
    // Dropping the interface below must not destroy X in the middle of the notification.
    auto* KxX = dynamic_cast<TKxObject*>(X);
    TKxAutoDestroy Saved = kadComputed;
    if (KxX) {
      Saved = KxX->FAutoDestroy;
      KxX->FAutoDestroy = kadFalse;
    }
    IPtr<IKxObjectFreeNotificationEvent> Event = Supports<IKxObjectFreeNotificationEvent>(X);
    KxAssert(bool(Event), SAssertionFailed, SClassesUnit, PartnerAssertLine);
    Event->OnObjectDestroyed(this);
    RemoveFreeNotificationEx(Event.Get());
    Event.Reset();
    if (KxX) KxX->FAutoDestroy = Saved;
  }
  FreeAndNil(FNotifications);
}

void KX_STDCALL TKxObjectEx::OnObjectDestroyed(TObject*) {}

void TKxObjectEx::DefineProperties(TObject*) {}

void TKxObjectEx::Assign(TKxObjectEx* Source) {
  if (!Source)
    AssignError(nullptr);
  else
    Source->AssignTo(this);
}

void TKxObjectEx::AssignTo(TKxObjectEx* Dest) {
  Dest->AssignError(this);
}

void TKxObjectEx::AssignError(TKxObjectEx* Source) {
  AnsiString SourceName = Source ? Source->ClassName() : AnsiString("nil");
  throw EConvertError(Format(SAssignError, {SourceName, ClassName()}));
}

AnsiString TKxObjectEx::GetNamePath() {
  AnsiString Result = ClassName();
  if (TKxObjectEx* Owner = GetOwner()) {
    AnsiString OwnerPath = Owner->GetNamePath();
    if (!OwnerPath.empty()) Result = OwnerPath + "." + Result;
  }
  return Result;
}

void TKxObjectEx::FreeNotification(TKxObjectEx* AObject) {
  if (!FNotifications) FNotifications = TList::Create();
  if (FNotifications->IndexOf(static_cast<TObject*>(AObject)) >= 0) return;
  FNotifications->Add(static_cast<TObject*>(AObject));
  // The partner's call finds this object present and ends the recursion.
  AObject->FreeNotification(this);
}

void KX_STDCALL TKxObjectEx::FreeNotificationEx(IKxObjectFreeNotificationEvent* AEvent) {
  TObject* Partner = AEvent->Implementor();
  if (auto* PartnerEx = dynamic_cast<TKxObjectEx*>(Partner)) {
    FreeNotification(PartnerEx);
    return;
  }
  if (!FNotifications) FNotifications = TList::Create();
  if (FNotifications->IndexOf(Partner) >= 0) return;
  FNotifications->Add(Partner);
  if (IPtr<IKxObjectEx> PartnerIntf = Supports<IKxObjectEx>(AEvent))
    PartnerIntf->FreeNotificationEx(static_cast<IKxObjectFreeNotificationEvent*>(this));
}

void KX_STDCALL TKxObjectEx::RemoveNotification(TObject* AObject) {
  if (!FNotifications || FNotifications->Count() == 0) {
    FreeAndNil(FNotifications);
    return;
  }
  // The partner being destroyed is usually the last one registered.
  int32_t Last = FNotifications->Count() - 1;
  if (FNotifications->Get(Last) == AObject)
    FNotifications->Delete(Last);
  else
    FNotifications->Remove(AObject);
  if (FNotifications->Count() == 0) FreeAndNil(FNotifications);
}

void TKxObjectEx::RemoveFreeNotification(TKxObjectEx* AObject) {
  RemoveNotification(AObject);
  AObject->RemoveNotification(this);
}

void KX_STDCALL TKxObjectEx::RemoveFreeNotificationEx(IKxObject* AObject) {
  RemoveNotification(AObject->Implementor());
  if (IPtr<IKxObjectEx> Partner = Supports<IKxObjectEx>(AObject)) Partner->RemoveNotification(this);
}

} // namespace kx
