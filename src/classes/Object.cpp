// SPDX-License-Identifier: MIT
// The library's root reference-counted object.
#include <kx/classes/Object.h>
#include <kx/rtl/Exceptions.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxObject, TObject, "uKxClasses")
KX_IMPLEMENT_CLASS(TKxInterfacedObject, TInterfacedObject, "uKxClasses")

HRESULT KX_STDCALL TKxObject::QueryInterface(const TGUID& IID, void** Obj) {
  return GetInterface(IID, Obj) ? KX_S_OK : KX_E_NOINTERFACE;
}

bool TKxObject::GetInterface(const TGUID& IID, void** Obj) {
  IKxObject* Self = this;
  return detail::GetInterfaceAs<IKxObject>(Self, IID, Obj) ||
         detail::GetInterfaceAs<IInterface>(Self, IID, Obj) || TObject::GetInterface(IID, Obj);
}

int32_t KX_STDCALL TKxObject::_AddRef() {
  int32_t Count = FRefCount.fetch_add(1, std::memory_order_relaxed) + 1;
  // The first interface reference decides: handed out through an interface, the object
  // now lives by its count.
  TKxAutoDestroy Undecided = kadComputed;
  if (FAutoDestroy.load(std::memory_order_relaxed) == kadComputed)
    FAutoDestroy.compare_exchange_strong(Undecided, kadTrue, std::memory_order_relaxed);
  return Count;
}

int32_t KX_STDCALL TKxObject::_Release() {
  // Everything the decision needs is read before the decrement: once the count is down,
  // another thread's release may already have freed the object.
  const bool AutoDestroy = FAutoDestroy.load(std::memory_order_relaxed) == kadTrue;
  const bool Destroying = FDestroying.load(std::memory_order_relaxed);
  int32_t Count = FRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (AutoDestroy && Count == 0 && !Destroying) Free();
  return Count;
}

bool TKxObject::GetAutoDestroy() {
  return FAutoDestroy.load(std::memory_order_relaxed) == kadTrue;
}

void TKxObject::SetAutoDestroy(bool Value) {
  FAutoDestroy.store(Value ? kadTrue : kadFalse, std::memory_order_relaxed);
}

void TKxObject::AfterConstruction() {
  TObject::AfterConstruction();
  FRefCount.fetch_sub(1, std::memory_order_release);
}

void TKxObject::BeforeDestruction() {
  FDestroying = true;
  if (FRefCount.load(std::memory_order_acquire) != 0)
    throw Exception(Format(SKxObjectRefCountNotZero, {ClassName()}));
  TObject::BeforeDestruction();
}

} // namespace kx
