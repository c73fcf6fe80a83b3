// SPDX-License-Identifier: MIT
// Reference-counted components.
#include <kx/classes/Component.h>
#include <kx/rtl/InterfacedObject.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxComponent, TComponent, "uKxClasses")

HRESULT KX_STDCALL TKxComponent::QueryInterface(const TGUID& IID, void** Obj) {
  return GetInterface(IID, Obj) ? KX_S_OK : KX_E_NOINTERFACE;
}

bool TKxComponent::GetInterface(const TGUID& IID, void** Obj) {
  return detail::GetInterfaceAs<IKxComponent>(this, IID, Obj) ||
         detail::GetInterfaceAs<IKxObject>(this, IID, Obj) || TComponent::GetInterface(IID, Obj);
}

int32_t KX_STDCALL TKxComponent::_AddRef() {
  int32_t Count = FRefCount.fetch_add(1, std::memory_order_relaxed) + 1;
  TKxAutoDestroy Undecided = kadComputed;
  if (FAutoDestroy.load(std::memory_order_relaxed) == kadComputed && !Owner())
    FAutoDestroy.compare_exchange_strong(Undecided, kadTrue, std::memory_order_relaxed);
  return Count;
}

int32_t KX_STDCALL TKxComponent::_Release() {
  // Read before the decrement, after which another thread may have freed the component.
  // No destroying guard here, unlike TKxObject.
  const bool AutoDestroy = FAutoDestroy.load(std::memory_order_relaxed) == kadTrue;
  int32_t Count = FRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (AutoDestroy && Count == 0) Free();
  return Count;
}

bool KX_STDCALL TKxComponent::GetAutoDestroy() {
  return FAutoDestroy.load(std::memory_order_relaxed) == kadTrue;
}

void KX_STDCALL TKxComponent::SetAutoDestroy(bool Value) {
  FAutoDestroy.store(Value ? kadTrue : kadFalse, std::memory_order_relaxed);
}

void TKxComponent::AfterConstruction() {
  TComponent::AfterConstruction();
  FRefCount.fetch_sub(1, std::memory_order_release);
}

void TKxComponent::ValidateDestruction() {
  if (FRefCount.load(std::memory_order_acquire) != 0)
    throw Exception(Format(SKxComponentRefCountNotZero, {ClassName(), Name()}));
}

} // namespace kx
