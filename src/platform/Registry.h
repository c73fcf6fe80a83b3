// SPDX-License-Identifier: MIT
#pragma once
// The Windows registry. Keys are opened by root and path; values come back as the registry
// holds them. POSIX has no registry: every call fails with ERROR_NOT_SUPPORTED_.

#include "platform/Environment.h"

#include <vector>

namespace kx::platform {

inline constexpr uintptr_t HKEY_CLASSES_ROOT_ = 0x80000000u;
inline constexpr uintptr_t HKEY_CURRENT_USER_ = 0x80000001u;
inline constexpr uintptr_t HKEY_LOCAL_MACHINE_ = 0x80000002u;
inline constexpr uintptr_t HKEY_USERS_ = 0x80000003u;
inline constexpr uint32_t KEY_READ_ = 0x20019;
inline constexpr uint32_t KEY_WOW64_64KEY_ = 0x0100;
inline constexpr uint32_t KEY_WOW64_32KEY_ = 0x0200;

using RegKey = void*;
// RegOpenKeyEx; a leading backslash of Path is ignored. Returns the Win32 result (0 = done).
uint32_t RegOpenKey(uintptr_t Root, const AnsiString& Path, uint32_t Access, RegKey& Key);
void RegCloseKey(RegKey Key);
// A value's type and raw data (RegQueryValueEx, asked for its size first); the result as above.
uint32_t RegQueryValue(RegKey Key, const AnsiString& Name, uint32_t& Type,
                       std::vector<uint8_t>& Data);
// A string value (REG_SZ or REG_EXPAND_SZ, without its terminator); false for other types.
bool RegQueryString(RegKey Key, const AnsiString& Name, AnsiString& Value);
// The names of the key's subkeys, in the registry's order.
bool RegEnumSubKeys(RegKey Key, std::vector<AnsiString>& Names);
// RegCreateKeyEx (a lasting key); Created tells whether it is new. The result as above.
uint32_t RegCreateKey(uintptr_t Root, const AnsiString& Path, uint32_t Access, RegKey& Key,
                      bool& Created);
// RegSetValueEx with a REG_SZ (terminator included) or a REG_DWORD; the result as above.
uint32_t RegSetString(RegKey Key, const AnsiString& Name, const AnsiString& Value);
uint32_t RegSetInteger(RegKey Key, const AnsiString& Name, uint32_t Value);

} // namespace kx::platform
