// SPDX-License-Identifier: MIT
#pragma once
// Pointer arithmetic on plain addresses. The library's interface speaks of 32-bit addresses;
// on 64-bit builds every helper works on pointer-sized values instead (intptr_t, uintptr_t),
// and KxSplitPtr/KxCombinePtr split a pointer into two 32-bit halves rather than 16-bit ones.

#include <concepts>
#include <cstdint>
#include <type_traits>

namespace kx {

inline intptr_t KxPtr2Int(const void* P) {
  return reinterpret_cast<intptr_t>(P);
}
inline uintptr_t KxPtr2UInt(const void* P) {
  return reinterpret_cast<uintptr_t>(P);
}
inline void* KxInt2Ptr(intptr_t Value) {
  return reinterpret_cast<void*>(Value);
}
inline void* KxUInt2Ptr(uintptr_t Value) {
  return reinterpret_cast<void*>(Value);
}
// A signed ordinal is sign-extended, an unsigned one zero-extended.
template <std::integral N>
void* KxOrdinal2Ptr(N Value) {
  if constexpr (std::is_signed_v<N>)
    return reinterpret_cast<void*>(intptr_t(Value));
  else
    return reinterpret_cast<void*>(uintptr_t(Value));
}

// A - B in bytes, unsigned and signed.
inline uintptr_t KxPtrDiff(const void* A, const void* B) {
  return KxPtr2UInt(A) - KxPtr2UInt(B);
}
inline intptr_t KxPtrDiffS(const void* A, const void* B) {
  return intptr_t(KxPtr2UInt(A) - KxPtr2UInt(B));
}

// Moves P by Amount bytes in place, whatever P points to; any integer width, signed or not.
template <class T, std::integral N>
void KxIncPtr(T*& P, N Amount) {
  P = reinterpret_cast<T*>(KxPtr2UInt(P) + KxPtr2UInt(KxOrdinal2Ptr(Amount)));
}
// P plus Amount bytes.
template <class T, std::integral N>
T* KxPtrAdd(T* P, N Amount) {
  return reinterpret_cast<T*>(KxPtr2UInt(P) + KxPtr2UInt(KxOrdinal2Ptr(Amount)));
}

// Half an address: 16 bits on 32-bit builds, 32 bits on 64-bit builds.
using TKxPtrHalf = std::conditional_t<sizeof(void*) == 8, uint32_t, uint16_t>;
inline constexpr unsigned KxPtrHalfBits = sizeof(TKxPtrHalf) * 8;

inline void KxSplitPtr(const void* P, TKxPtrHalf& Hi, TKxPtrHalf& Lo) {
  uintptr_t V = KxPtr2UInt(P);
  Hi = TKxPtrHalf(V >> KxPtrHalfBits);
  Lo = TKxPtrHalf(V);
}
inline void* KxCombinePtr(TKxPtrHalf Hi, TKxPtrHalf Lo) {
  return KxUInt2Ptr((uintptr_t(Hi) << KxPtrHalfBits) | uintptr_t(Lo));
}

} // namespace kx
