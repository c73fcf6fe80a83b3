// SPDX-License-Identifier: MIT
// The registry through the A functions: names and values in the process ANSI code page.
#include "platform/Registry.h"

#include <windows.h>

// The platform layer's own names, not the A/W macros.
#undef RegOpenKey
#undef RegQueryValue
#undef RegCreateKey

namespace kx::platform {

uint32_t RegOpenKey(uintptr_t Root, const AnsiString& Path, uint32_t Access, RegKey& Key) {
  HKEY H = nullptr;
  const char* P = Path.c_str();
  if (*P == '\\') ++P;
  const LONG Rc = ::RegOpenKeyExA(reinterpret_cast<HKEY>(Root), P, 0, Access, &H);
  Key = Rc == ERROR_SUCCESS ? H : nullptr;
  if (Rc != ERROR_SUCCESS) ::SetLastError(DWORD(Rc));
  return uint32_t(Rc);
}

void RegCloseKey(RegKey Key) {
  if (Key) ::RegCloseKey(static_cast<HKEY>(Key));
}

uint32_t RegQueryValue(RegKey Key, const AnsiString& Name, uint32_t& Type,
                       std::vector<uint8_t>& Data) {
  DWORD T = 0, Size = 0;
  LONG Rc = ::RegQueryValueExA(static_cast<HKEY>(Key), Name.c_str(), nullptr, &T, nullptr, &Size);
  // A value can grow between the two calls.
  for (int Try = 0; Rc == ERROR_SUCCESS && Try < 4; ++Try) {
    Data.assign(Size, 0);
    DWORD Got = Size;
    Rc = ::RegQueryValueExA(static_cast<HKEY>(Key), Name.c_str(), nullptr, &T,
                            Data.empty() ? nullptr : Data.data(), &Got);
    if (Rc == ERROR_MORE_DATA) {
      Size = Got;
      Rc = ERROR_SUCCESS;
      continue;
    }
    Data.resize(Got);
    break;
  }
  if (Rc != ERROR_SUCCESS) ::SetLastError(DWORD(Rc));
  Type = T;
  return uint32_t(Rc);
}

bool RegQueryString(RegKey Key, const AnsiString& Name, AnsiString& Value) {
  uint32_t Type = 0;
  std::vector<uint8_t> Data;
  if (RegQueryValue(Key, Name, Type, Data) != ERROR_SUCCESS) return false;
  if (Type != REG_SZ && Type != REG_EXPAND_SZ) return false;
  Value.assign(reinterpret_cast<const char*>(Data.data()), Data.size());
  while (!Value.empty() && Value.back() == '\0') Value.pop_back();
  return true;
}

bool RegEnumSubKeys(RegKey Key, std::vector<AnsiString>& Names) {
  Names.clear();
  char Buf[256];
  for (DWORD I = 0;; ++I) {
    DWORD Len = sizeof Buf;
    const LONG Rc =
        ::RegEnumKeyExA(static_cast<HKEY>(Key), I, Buf, &Len, nullptr, nullptr, nullptr, nullptr);
    if (Rc == ERROR_NO_MORE_ITEMS) return true;
    if (Rc != ERROR_SUCCESS) {
      ::SetLastError(DWORD(Rc));
      return false;
    }
    Names.emplace_back(Buf, Len);
  }
}

namespace {
const char* SkipRootDelimiter(const AnsiString& Path) {
  const char* P = Path.c_str();
  return *P == '\\' ? P + 1 : P;
}
uint32_t Result(LONG Rc) {
  if (Rc != ERROR_SUCCESS) ::SetLastError(DWORD(Rc));
  return uint32_t(Rc);
}
} // namespace

uint32_t RegCreateKey(uintptr_t Root, const AnsiString& Path, uint32_t Access, RegKey& Key,
                      bool& Created) {
  HKEY H = nullptr;
  DWORD Disposition = 0;
  const LONG Rc =
      ::RegCreateKeyExA(reinterpret_cast<HKEY>(Root), SkipRootDelimiter(Path), 0, nullptr,
                        REG_OPTION_NON_VOLATILE, Access, nullptr, &H, &Disposition);
  Key = Rc == ERROR_SUCCESS ? H : nullptr;
  Created = Rc == ERROR_SUCCESS && Disposition == REG_CREATED_NEW_KEY;
  return Result(Rc);
}

uint32_t RegSetString(RegKey Key, const AnsiString& Name, const AnsiString& Value) {
  return Result(::RegSetValueExA(static_cast<HKEY>(Key), Name.c_str(), 0, REG_SZ,
                                 reinterpret_cast<const BYTE*>(Value.c_str()),
                                 DWORD(Value.size() + 1)));
}

uint32_t RegSetInteger(RegKey Key, const AnsiString& Name, uint32_t Value) {
  const DWORD V = Value;
  return Result(::RegSetValueExA(static_cast<HKEY>(Key), Name.c_str(), 0, REG_DWORD,
                                 reinterpret_cast<const BYTE*>(&V), sizeof V));
}

} // namespace kx::platform
