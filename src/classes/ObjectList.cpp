// SPDX-License-Identifier: MIT
// Reference-counting object list.
#include <kx/classes/Object.h>
#include <kx/classes/ObjectList.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxObjectList, TObjectList, "uKxClasses")

void TKxObjectList::Notify(void* Ptr, TListNotification Action) {
  auto* Item = static_cast<TObject*>(Ptr);
  auto* Interfaced = dynamic_cast<TInterfacedObject*>(Item);
  auto* KxObject = Interfaced ? nullptr : dynamic_cast<TKxObject*>(Item);
  if (Action == lnAdded) {
    if (Interfaced)
      Interfaced->_AddRef();
    else if (KxObject && KxObject->GetAutoDestroy())
      KxObject->_AddRef();
    TObjectList::Notify(Ptr, Action);
    return;
  }
  if (Interfaced) {
    // Kept in this order although a release that reaches 0 has already destroyed the item.
    Interfaced->_Release();
    if (OwnsObjects() && Action == lnDeleted) TObjectList::Notify(Ptr, Action);
    return;
  }
  if (KxObject && KxObject->GetAutoDestroy()) {
    KxObject->_Release();
    return;
  }
  TObjectList::Notify(Ptr, Action);
}

} // namespace kx
