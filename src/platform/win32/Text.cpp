// SPDX-License-Identifier: MIT
// Case mappings and collation on Windows, in the user's locale.
#include "platform/Platform.h"

#include <kx/rtl/SysUtils.h>

#include <windows.h>

#include <climits>

namespace kx::platform {

namespace {
template <DWORD(WINAPI* Map)(LPWSTR, DWORD)>
void MapBuffer(char16_t* Text, size_t Length) {
  // The buffer functions take a 32-bit count; a surrogate pair cut at the boundary is left
  // alone by both halves, as a lone surrogate has no case.
  while (Length > 0) {
    DWORD N = Length > MAXDWORD ? MAXDWORD : DWORD(Length);
    Map(reinterpret_cast<LPWSTR>(Text), N);
    Text += N;
    Length -= N;
  }
}
} // namespace

void UpperCaseWide(char16_t* Text, size_t Length) {
  MapBuffer<::CharUpperBuffW>(Text, Length);
}
void LowerCaseWide(char16_t* Text, size_t Length) {
  MapBuffer<::CharLowerBuffW>(Text, Length);
}

int32_t CompareStringWide(const char16_t* S1, size_t Len1, const char16_t* S2, size_t Len2,
                          bool IgnoreCase) {
  if (Len1 <= size_t(INT_MAX) && Len2 <= size_t(INT_MAX)) {
    int R = ::CompareStringW(LOCALE_USER_DEFAULT, IgnoreCase ? NORM_IGNORECASE : 0,
                             reinterpret_cast<LPCWSTR>(S1), int(Len1),
                             reinterpret_cast<LPCWSTR>(S2), int(Len2));
    if (R != 0) return R - CSTR_EQUAL;
  }
  // Only invalid arguments get here; code-unit order is the best that is left.
  int R = std::u16string_view(S1, Len1).compare(std::u16string_view(S2, Len2));
  return R < 0 ? -1 : R > 0 ? 1 : 0;
}

} // namespace kx::platform

namespace kx {
// Declared with the runtime's string functions; its value is the platform's.
const char* const sLineBreak = "\r\n";
} // namespace kx
