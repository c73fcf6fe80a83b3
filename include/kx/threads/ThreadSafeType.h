// SPDX-License-Identifier: MIT
// A value holder that serialises access to one variant through a critical section.
#pragma once

#include <kx/rtl/Variants.h>
#include <kx/threads/CriticalSection.h>

#include <mutex>

namespace kx {

// Lock..Unlock brackets a read-modify-write of the value. GetValue and SetValue lock only
// when the section is free; while any thread holds it (the caller or another) they read or
// write the value at once without waiting for the holder. Each single copy of the value is
// still whole: a short internal guard covers the copy itself, never the holder's bracket.
class KX_API TKxThreadSafeType : public TKxObject {
  KX_CLASS(TKxThreadSafeType, TKxObject)
public:
  TKxThreadSafeType();
  explicit TKxThreadSafeType(const Variant& AValue);
  ~TKxThreadSafeType() override;

  // Enters the section, waiting at most Timeout milliseconds.
  bool TryLock(uint32_t Timeout);
  // Enters the section (recursively for its owner) and returns a copy of the value.
  Variant Lock();
  void Unlock();
  // Whether any thread holds the section.
  bool GetLocked() const;

  virtual Variant GetValue();
  virtual void SetValue(const Variant& AValue);

private:
  Variant Read() const;
  void Store(const Variant& AValue);

  Variant FValue;
  TKxCriticalSection* FLock;
  mutable std::mutex FCopyGuard;
};

} // namespace kx
