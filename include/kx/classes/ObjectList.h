// SPDX-License-Identifier: MIT
#pragma once
// An object list that takes part in the reference counting of what it holds.

#include <kx/rtl/Lists.h>

namespace kx {

class KX_API TKxObjectList : public TObjectList {
  KX_CLASS(TKxObjectList, TObjectList)
public:
  explicit TKxObjectList(bool AOwnsObjects = true) : TObjectList(AOwnsObjects) {}

  // Returns the object added, not its index.
  TObject* Add(TObject* AObject) {
    TObjectList::Add(AObject);
    return AObject;
  }

protected:
  // Interfaced items and self-destroying library objects are counted while listed;
  // the list never frees a self-destroying library object itself.
  void Notify(void* Ptr, TListNotification Action) override;
};

} // namespace kx
