// SPDX-License-Identifier: MIT
#pragma once
// The owner of one object released by Free(): it frees the object when it goes, so an object
// made with Create is released on every way out of a scope, exceptions included.
//
//   kx::OwnedPtr<TKxMemoryStream> S = kx::MakeOwned<TKxMemoryStream>(1024);
//   S->Write(...);                 // freed at the end of the scope
//   Consumer.Take(S.Detach());     // or handed on, no longer owned
//
// Free() may raise (an object whose BeforeDestruction raises stays alive). Reset() lets that
// exception through and keeps the object; the destructor cannot, so an object that may refuse
// to go is freed with Reset() first.

#include <cstddef>
#include <type_traits>
#include <utility>

namespace kx {

template <class T>
class OwnedPtr {
public:
  OwnedPtr() noexcept = default;
  OwnedPtr(std::nullptr_t) noexcept {}
  explicit OwnedPtr(T* Obj) noexcept : FObj(Obj) {}
  OwnedPtr(const OwnedPtr&) = delete;
  OwnedPtr& operator=(const OwnedPtr&) = delete;
  OwnedPtr(OwnedPtr&& Other) noexcept : FObj(Other.Detach()) {}
  template <class U>
  requires std::is_convertible_v<U*, T*> OwnedPtr(OwnedPtr<U>&& Other)
  noexcept : FObj(Other.Detach()) {}
  ~OwnedPtr() { Reset(); }

  // Frees the object held now and takes over Other's.
  OwnedPtr& operator=(OwnedPtr&& Other) {
    if (this != &Other) Reset(Other.Detach());
    return *this;
  }
  OwnedPtr& operator=(std::nullptr_t) {
    Reset();
    return *this;
  }

  // Frees the object held (if any), then holds Obj. When Free() raises, the old object is
  // still held and Obj is not taken.
  void Reset(T* Obj = nullptr) {
    if (FObj) FObj->Free();
    FObj = Obj;
  }
  // Gives the object up without freeing it.
  T* Detach() noexcept { return std::exchange(FObj, nullptr); }

  T* Get() const noexcept { return FObj; }
  T* operator->() const noexcept { return FObj; }
  T& operator*() const noexcept { return *FObj; }
  explicit operator bool() const noexcept { return FObj != nullptr; }
  friend bool operator==(const OwnedPtr& A, std::nullptr_t) noexcept { return A.FObj == nullptr; }

private:
  T* FObj = nullptr;
};

// T::Create(Args...) in an owner.
template <class T, class... A>
OwnedPtr<T> MakeOwned(A&&... Args) {
  return OwnedPtr<T>(T::Create(std::forward<A>(Args)...));
}

} // namespace kx
