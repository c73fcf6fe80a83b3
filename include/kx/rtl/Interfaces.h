// SPDX-License-Identifier: MIT
#pragma once
// GUIDs, the base interface (binary-compatible with COM's IUnknown), GUID binding and the
// one smart pointer for interface references.

#include <kx/rtl/Strings.h>

#include <compare>
#include <cstdint>
#include <cstring>
#include <utility>

namespace kx {

using HRESULT = int32_t;
inline constexpr HRESULT KX_S_OK = 0;
inline constexpr HRESULT KX_E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);

struct TGUID {
  uint32_t D1;
  uint16_t D2;
  uint16_t D3;
  uint8_t D4[8];

  friend constexpr bool operator==(const TGUID& A, const TGUID& B) {
    if (A.D1 != B.D1 || A.D2 != B.D2 || A.D3 != B.D3) return false;
    for (int I = 0; I < 8; ++I)
      if (A.D4[I] != B.D4[I]) return false;
    return true;
  }
};
static_assert(sizeof(TGUID) == 16);

namespace detail {
constexpr uint32_t HexValue(char C) {
  return C >= '0' && C <= '9'   ? uint32_t(C - '0')
         : C >= 'a' && C <= 'f' ? uint32_t(C - 'a' + 10)
         : C >= 'A' && C <= 'F' ? uint32_t(C - 'A' + 10)
                                : throw "invalid GUID digit";
}
constexpr uint32_t HexField(const char* S, int Digits) {
  uint32_t V = 0;
  for (int I = 0; I < Digits; ++I) V = V * 16 + HexValue(S[I]);
  return V;
}
} // namespace detail

// Parses "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" at compile time.
consteval TGUID GuidLiteral(const char (&S)[39]) {
  if (S[0] != '{' || S[9] != '-' || S[14] != '-' || S[19] != '-' || S[24] != '-' || S[37] != '}')
    throw "invalid GUID literal";
  TGUID G{detail::HexField(S + 1, 8),
          uint16_t(detail::HexField(S + 10, 4)),
          uint16_t(detail::HexField(S + 15, 4)),
          {}};
  G.D4[0] = uint8_t(detail::HexField(S + 20, 2));
  G.D4[1] = uint8_t(detail::HexField(S + 22, 2));
  for (int I = 0; I < 6; ++I) G.D4[2 + I] = uint8_t(detail::HexField(S + 25 + 2 * I, 2));
  return G;
}

// Run-time parsing and formatting of the braced form; StringToGUID raises EConvertError.
KX_API TGUID StringToGUID(std::string_view S);
KX_API AnsiString GUIDToString(const TGUID& Guid);

// Binds a GUID to an interface type: KX_INTERFACE_GUID(IKxObject, "{...}").
template <class I>
struct TInterfaceId;
#define KX_INTERFACE_GUID(Intf, Literal)                                                           \
  template <>                                                                                      \
  struct kx::TInterfaceId<Intf> {                                                                  \
    static constexpr ::kx::TGUID Value = ::kx::GuidLiteral(Literal);                               \
  };
template <class I>
constexpr const TGUID& IIDOf() {
  return TInterfaceId<I>::Value;
}

// The base interface. No destructor, and the methods in this order, so the vtable is
// IUnknown's.
struct IInterface {
  virtual HRESULT KX_STDCALL QueryInterface(const TGUID& IID, void** Obj) = 0;
  virtual int32_t KX_STDCALL _AddRef() = 0;
  virtual int32_t KX_STDCALL _Release() = 0;
};

// A counted reference to an interface: copy adds a reference, destruction releases one.
template <class I>
class IPtr {
public:
  IPtr() noexcept = default;
  IPtr(std::nullptr_t) noexcept {}
  IPtr(I* P) noexcept : FPtr(P) {
    if (FPtr) FPtr->_AddRef();
  }
  IPtr(const IPtr& Other) noexcept : IPtr(Other.FPtr) {}
  IPtr(IPtr&& Other) noexcept : FPtr(std::exchange(Other.FPtr, nullptr)) {}
  template <class J>
  requires std::is_convertible_v<J*, I*> IPtr(const IPtr<J>& Other)
  noexcept : IPtr(static_cast<I*>(Other.Get())) {}
  ~IPtr() { Reset(); }

  IPtr& operator=(IPtr Other) noexcept {
    std::swap(FPtr, Other.FPtr);
    return *this;
  }
  // Releases the reference now; the object may destroy itself here.
  void Reset() noexcept {
    if (I* P = std::exchange(FPtr, nullptr)) P->_Release();
  }
  // Takes over a reference that the caller already counted (as QueryInterface returns).
  static IPtr Attach(I* P) noexcept {
    IPtr R;
    R.FPtr = P;
    return R;
  }
  I* Detach() noexcept { return std::exchange(FPtr, nullptr); }

  I* Get() const noexcept { return FPtr; }
  I* operator->() const noexcept { return FPtr; }
  I& operator*() const noexcept { return *FPtr; }
  explicit operator bool() const noexcept { return FPtr != nullptr; }
  friend bool operator==(const IPtr& A, const IPtr& B) noexcept { return A.FPtr == B.FPtr; }
  friend bool operator==(const IPtr& A, std::nullptr_t) noexcept { return A.FPtr == nullptr; }

private:
  I* FPtr = nullptr;
};

// Asks an interface (or an object that implements IInterface) for another by GUID.
template <class I, class J>
requires requires(J* S, void** O) {
  S->QueryInterface(IIDOf<I>(), O);
}
IPtr<I> Supports(J* Source) {
  void* Obj = nullptr;
  if (Source && Source->QueryInterface(IIDOf<I>(), &Obj) == KX_S_OK)
    return IPtr<I>::Attach(static_cast<I*>(Obj));
  return nullptr;
}
template <class I, class J>
IPtr<I> Supports(const IPtr<J>& Source) {
  return Supports<I>(Source.Get());
}

} // namespace kx

KX_INTERFACE_GUID(kx::IInterface, "{00000000-0000-0000-C000-000000000046}")
