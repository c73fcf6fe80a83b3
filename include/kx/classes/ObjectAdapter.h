// SPDX-License-Identifier: MIT
#pragma once
// Wraps any object behind an interface, with a declared ownership.

#include <kx/classes/Interfaces.h>
#include <kx/rtl/InterfacedObject.h>

namespace kx {

class KX_API TKxObjectAdapter : public TInterfacedObject,
                                public IKxObjectAdapter,
                                public IKxObject {
  KX_CLASS(TKxObjectAdapter, TInterfacedObject)
public:
  TKxObjectAdapter(TObject* AObject, TKxObjectOwnership AOwnership)
      : FObject(AObject), FOwnership(AOwnership) {}
  ~TKxObjectAdapter() override;

  KX_FORWARD_IINTERFACE(TInterfacedObject)
  bool GetInterface(const TGUID& IID, void** Obj) override;
  TObject* KX_STDCALL GetObject() override { return FObject; }
  TKxObjectOwnership KX_STDCALL GetOwnership() override { return FOwnership; }
  TObject* KX_STDCALL Implementor() override { return FObject; }
  // Frees the wrapped object when the adapter owns it.
  void BeforeDestruction() override;

private:
  TObject* FObject;
  TKxObjectOwnership FOwnership;
};

} // namespace kx
