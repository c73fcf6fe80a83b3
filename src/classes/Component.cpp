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
  int32_t Count = ++FRefCount;
  if (FAutoDestroy == kadComputed && !Owner()) FAutoDestroy = kadTrue;
  return Count;
}

int32_t KX_STDCALL TKxComponent::_Release() {
  int32_t Count = --FRefCount;
  // No destroying guard here, unlike TKxObject.
  if (FAutoDestroy == kadTrue && Count == 0) Free();
  return Count;
}

bool KX_STDCALL TKxComponent::GetAutoDestroy() {
  return FAutoDestroy == kadTrue;
}

void KX_STDCALL TKxComponent::SetAutoDestroy(bool Value) {
  FAutoDestroy = Value ? kadTrue : kadFalse;
}

void TKxComponent::AfterConstruction() {
  TComponent::AfterConstruction();
  --FRefCount;
}

void TKxComponent::BeforeDestruction() {
  if (FRefCount.load() != 0)
    throw Exception(Format(SKxComponentRefCountNotZero, {ClassName(), Name()}));
  TComponent::BeforeDestruction();
}

} // namespace kx
