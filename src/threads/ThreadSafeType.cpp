// SPDX-License-Identifier: MIT
// The thread-safe value holder.
#include <kx/threads/ThreadSafeType.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxThreadSafeType, TKxObject, "uKxThreads")

TKxThreadSafeType::TKxThreadSafeType() : FLock(TKxCriticalSection::Create()) {}

TKxThreadSafeType::TKxThreadSafeType(const Variant& AValue)
    : FValue(AValue), FLock(TKxCriticalSection::Create()) {}

TKxThreadSafeType::~TKxThreadSafeType() {
  FLock->Free();
}

bool TKxThreadSafeType::TryLock(uint32_t Timeout) {
  return FLock->TryEnter(Timeout);
}

Variant TKxThreadSafeType::Lock() {
  FLock->Enter();
  return Read();
}

void TKxThreadSafeType::Unlock() {
  FLock->Leave();
}

bool TKxThreadSafeType::GetLocked() const {
  return FLock->IsLocked();
}

Variant TKxThreadSafeType::GetValue() {
  if (FLock->IsLocked()) return Read();
  Lock(); // the value read under the section is the one returned
  Variant Result = Read();
  Unlock();
  return Result;
}

void TKxThreadSafeType::SetValue(const Variant& AValue) {
  if (FLock->IsLocked()) return Store(AValue);
  FLock->Enter();
  Store(AValue);
  Unlock();
}

Variant TKxThreadSafeType::Read() const {
  std::lock_guard Guard(FCopyGuard);
  return FValue;
}

void TKxThreadSafeType::Store(const Variant& AValue) {
  Variant Copy(AValue); // copied outside the guard; only the swap is inside
  std::lock_guard Guard(FCopyGuard);
  std::swap(FValue, Copy);
}

} // namespace kx
