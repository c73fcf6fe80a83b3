// SPDX-License-Identifier: MIT
#pragma once
// Helpers shared by the codec tests.

#include <kx/rtl/Strings.h>

#include <random>

namespace kxtest {

// Random bytes from a fixed generator start, so that a failure reproduces.
inline kx::TBytes RandomBytes(size_t Count, uint32_t Start = 4711) {
  std::mt19937 Gen(Start);
  std::uniform_int_distribution<int> Byte(0, 255);
  kx::TBytes R(Count);
  for (auto& B : R) B = uint8_t(Byte(Gen));
  return R;
}

inline kx::AnsiString AsString(const kx::TBytes& B) {
  return kx::AnsiString(B.begin(), B.end());
}

inline kx::TBytes AsBytes(const kx::AnsiString& S) {
  return kx::TBytes(S.begin(), S.end());
}

} // namespace kxtest
