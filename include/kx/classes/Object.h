// SPDX-License-Identifier: MIT
#pragma once
// TKxObject: usable through interfaces (then it destroys itself with the last reference)
// or as a plainly owned object (then reference counting never destroys it).

#include <kx/classes/Interfaces.h>
#include <kx/rtl/InterfacedObject.h>

#include <atomic>

namespace kx {

inline constexpr const char* SKxObjectRefCountNotZero =
    "An instance of %s is destroyed while it's refcount is not 0!";

class KX_API TKxObject : public TObject, public IKxObject {
  KX_CLASS(TKxObject, TObject)
public:
  // The count is 1 while the constructors run, so references taken inside them cannot
  // destroy the half-built object; AfterConstruction takes it back to 0.
  TKxObject() = default;

  HRESULT KX_STDCALL QueryInterface(const TGUID& IID, void** Obj) override;
  int32_t KX_STDCALL _AddRef() override;
  int32_t KX_STDCALL _Release() override;
  TObject* KX_STDCALL Implementor() override { return this; }
  bool GetInterface(const TGUID& IID, void** Obj) override;

  virtual bool GetAutoDestroy();
  void SetAutoDestroy(bool Value);
  void AfterConstruction() override;
  // Marks the object as destroying, then refuses (with the object left alive) while
  // interface references are still counted.
  void BeforeDestruction() override;

  int32_t RefCount() const { return FRefCount.load(std::memory_order_acquire); }
  TKxAutoDestroy AutoDestroy() const { return FAutoDestroy.load(std::memory_order_relaxed); }
  bool Destroying() const { return FDestroying.load(std::memory_order_relaxed); }

protected:
  // Atomic, as the count is: references are taken and dropped from any thread, and the first
  // of them settles FAutoDestroy.
  std::atomic<int32_t> FRefCount{1};
  std::atomic<TKxAutoDestroy> FAutoDestroy{kadComputed};
  std::atomic<bool> FDestroying{false};

  friend class TKxObjectEx;
};

// The runtime's interfaced object under the library's root name.
class KX_API TKxInterfacedObject : public TInterfacedObject {
  KX_CLASS(TKxInterfacedObject, TInterfacedObject)
public:
  TKxInterfacedObject() = default;
};

} // namespace kx
