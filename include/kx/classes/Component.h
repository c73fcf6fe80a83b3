// SPDX-License-Identifier: MIT
#pragma once
// TKxComponent: a component that can live by reference counting when it has no owner.

#include <kx/classes/Interfaces.h>
#include <kx/rtl/Component.h>

#include <atomic>

namespace kx {

inline constexpr const char* SKxComponentRefCountNotZero =
    "An instance of %s with the name %s is destroyed while it's refcount is not 0!";

class KX_API TKxComponent : public TComponent, public IKxComponent, public IKxObject {
  KX_CLASS(TKxComponent, TComponent)
public:
  explicit TKxComponent(TComponent* AOwner = nullptr) : TComponent(AOwner) {}

  HRESULT KX_STDCALL QueryInterface(const TGUID& IID, void** Obj) override;
  // An owned component stays undecided: its owner destroys it.
  int32_t KX_STDCALL _AddRef() override;
  int32_t KX_STDCALL _Release() override;
  bool GetInterface(const TGUID& IID, void** Obj) override;
  TObject* KX_STDCALL Implementor() override { return this; }

  bool KX_STDCALL GetAutoDestroy() override;
  void KX_STDCALL SetAutoDestroy(bool Value) override;
  TComponent* KX_STDCALL _GetOwner() override { return Owner(); }

  void AfterConstruction() override;

  int32_t RefCount() const { return FRefCount.load(std::memory_order_acquire); }
  TKxAutoDestroy AutoDestroy() const { return FAutoDestroy.load(std::memory_order_relaxed); }

protected:
  void ValidateDestruction() override;

  std::atomic<int32_t> FRefCount{1};
  std::atomic<TKxAutoDestroy> FAutoDestroy{kadComputed};
};

} // namespace kx
