// SPDX-License-Identifier: MIT
#pragma once
// Thread-safe two-way free notifications between TKxFreeNotifies objects: when one is
// destroyed, each partner's callback is told which object the dying one was bound to.

#include <kx/classes/Object.h>
#include <kx/rtl/Lists.h>
#include <kx/rtl/Method.h>

namespace kx {

using TKxFreeNotifiesOnNotify = TMethod<void(TObject* AObjectToBeDestroyed)>;

class KX_API TKxFreeNotifies : public TKxObject {
  KX_CLASS(TKxFreeNotifies, TKxObject)
public:
  explicit TKxFreeNotifies(TKxFreeNotifiesOnNotify AOnNotify);
  ~TKxFreeNotifies() override;

  // Mutual: the partner adds this one too.
  void Add(TKxFreeNotifies* AFreeNotifies);
  // One side only.
  void Remove(TKxFreeNotifies* AFreeNotifies);
  // Holds the list's lock while the partners' callbacks run.
  void BeforeDestruction() override;

  TObject* Owner() const { return FOwner; }
  TThreadList* List() const { return FList; }
  const TKxFreeNotifiesOnNotify& OnNotify() const { return FOnNotify; }

private:
  TKxFreeNotifiesOnNotify FOnNotify;
  TThreadList* FList;
  TObject* FOwner;
};

} // namespace kx
