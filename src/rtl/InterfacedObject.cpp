// SPDX-License-Identifier: MIT
// The runtime's reference-counted object.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/InterfacedObject.h>

namespace kx {

KX_IMPLEMENT_CLASS(TInterfacedObject, TObject, "System")

HRESULT KX_STDCALL TInterfacedObject::QueryInterface(const TGUID& IID, void** Obj) {
  return GetInterface(IID, Obj) ? KX_S_OK : KX_E_NOINTERFACE;
}

bool TInterfacedObject::GetInterface(const TGUID& IID, void** Obj) {
  return detail::GetInterfaceAs<IInterface>(this, IID, Obj) || TObject::GetInterface(IID, Obj);
}

int32_t KX_STDCALL TInterfacedObject::_AddRef() {
  return ++FRefCount;
}

int32_t KX_STDCALL TInterfacedObject::_Release() {
  int32_t Count = --FRefCount;
  if (Count == 0) Free();
  return Count;
}

void TInterfacedObject::AfterConstruction() {
  --FRefCount;
}

void TInterfacedObject::BeforeDestruction() {
  if (FRefCount.load() != 0) throw EInvalidPointer("Invalid pointer operation");
}

} // namespace kx
