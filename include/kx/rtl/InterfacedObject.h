// SPDX-License-Identifier: MIT
#pragma once
// The runtime's reference-counted object and the helpers classes use to answer
// QueryInterface.

#include <kx/rtl/Interfaces.h>
#include <kx/rtl/Object.h>

#include <atomic>

namespace kx {

namespace detail {
// Answers IID with the interface I when it matches; Self must convert to I unambiguously,
// so callers with several IInterface bases pass the path they mean.
template <class I, class Self>
bool GetInterfaceAs(Self* Obj, const TGUID& IID, void** Out) {
  if (!(IID == IIDOf<I>())) return false;
  I* P = Obj;
  P->_AddRef();
  *Out = P;
  return true;
}
} // namespace detail

// A class that adds interface bases must name the final overriders again, so that every
// IInterface sub-object reaches the same counting.
#define KX_FORWARD_IINTERFACE(Base)                                                                \
  ::kx::HRESULT KX_STDCALL QueryInterface(const ::kx::TGUID& IID, void** Obj) override {           \
    return Base::QueryInterface(IID, Obj);                                                         \
  }                                                                                                \
  int32_t KX_STDCALL _AddRef() override {                                                          \
    return Base::_AddRef();                                                                        \
  }                                                                                                \
  int32_t KX_STDCALL _Release() override {                                                         \
    return Base::_Release();                                                                       \
  }

// Counts references from 1 during construction (so that references taken inside a
// constructor cannot destroy it) and destroys itself when the count returns to 0.
class KX_API TInterfacedObject : public TObject, public IInterface {
  KX_CLASS(TInterfacedObject, TObject)
public:
  TInterfacedObject() = default;
  HRESULT KX_STDCALL QueryInterface(const TGUID& IID, void** Obj) override;
  int32_t KX_STDCALL _AddRef() override;
  int32_t KX_STDCALL _Release() override;
  void AfterConstruction() override;
  void BeforeDestruction() override;
  bool GetInterface(const TGUID& IID, void** Obj) override;
  int32_t RefCount() const { return FRefCount.load(std::memory_order_acquire); }

protected:
  std::atomic<int32_t> FRefCount{1};
};

} // namespace kx
