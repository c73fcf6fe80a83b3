// SPDX-License-Identifier: MIT
// Locale names on Windows.
#include "platform/Platform.h"
#include "platform/win32/WideNames.h"

#include <windows.h>

namespace kx::platform {

bool LocaleName(uint16_t LocaleID, AnsiString& Name) {
  wchar_t Buffer[LOCALE_NAME_MAX_LENGTH];
  const int Len =
      ::LCIDToLocaleName(MAKELCID(LocaleID, SORT_DEFAULT), Buffer, LOCALE_NAME_MAX_LENGTH, 0);
  if (Len <= 1) return false;
  Name = NarrowName(Buffer, size_t(Len - 1));
  return true;
}

} // namespace kx::platform
