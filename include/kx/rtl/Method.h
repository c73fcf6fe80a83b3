// SPDX-License-Identifier: MIT
#pragma once
// A method pointer: a callback together with the object it is bound to.

#include <kx/rtl/Object.h>

#include <functional>

namespace kx {

template <class Sig>
class TMethod;

template <class R, class... A>
class TMethod<R(A...)> {
public:
  TMethod() = default;
  TMethod(TObject* AData, std::function<R(A...)> ACode) : FData(AData), FCode(std::move(ACode)) {}
  template <class C>
  TMethod(C* AObject, R (C::*AMethod)(A...))
      : FData(AObject),
        FCode([AObject, AMethod](A... Args) { return (AObject->*AMethod)(Args...); }) {}

  TObject* Data() const { return FData; }
  explicit operator bool() const { return bool(FCode); }
  R operator()(A... Args) const { return FCode(Args...); }

private:
  TObject* FData = nullptr;
  std::function<R(A...)> FCode;
};

} // namespace kx
