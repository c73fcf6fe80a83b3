// SPDX-License-Identifier: MIT
// Objects behind an interface.
#include <kx/classes/ObjectAdapter.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxObjectAdapter, TInterfacedObject, "uKxClasses")

TKxObjectAdapter::~TKxObjectAdapter() = default;

bool TKxObjectAdapter::GetInterface(const TGUID& IID, void** Obj) {
  return detail::GetInterfaceAs<IKxObjectAdapter>(this, IID, Obj) ||
         detail::GetInterfaceAs<IKxObject>(this, IID, Obj) ||
         TInterfacedObject::GetInterface(IID, Obj);
}

void TKxObjectAdapter::BeforeDestruction() {
  TInterfacedObject::BeforeDestruction();
  if (FOwnership == ooOwned) FreeAndNil(FObject);
}

} // namespace kx
