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
  int32_t Count = ++FRefCount;
  // The first interface reference decides: handed out through an interface, the object
  // now lives by its count.
  if (FAutoDestroy == kadComputed) FAutoDestroy = kadTrue;
  return Count;
}

int32_t KX_STDCALL TKxObject::_Release() {
  int32_t Count = --FRefCount;
  if (FAutoDestroy == kadTrue && Count == 0 && !FDestroying) Free();
  return Count;
}

bool TKxObject::GetAutoDestroy() {
  return FAutoDestroy == kadTrue;
}

void TKxObject::SetAutoDestroy(bool Value) {
  FAutoDestroy = Value ? kadTrue : kadFalse;
}

void TKxObject::AfterConstruction() {
  TObject::AfterConstruction();
  --FRefCount;
}

void TKxObject::BeforeDestruction() {
  FDestroying = true;
  if (FRefCount.load() != 0) throw Exception(Format(SKxObjectRefCountNotZero, {ClassName()}));
  TObject::BeforeDestruction();
}

} // namespace kx
