// SPDX-License-Identifier: MIT
// POSIX has no registry.
#include "platform/Registry.h"

#include <cerrno>

namespace kx::platform {

uint32_t RegOpenKey(uintptr_t, const AnsiString&, uint32_t, RegKey& Key) {
  Key = nullptr;
  errno = int(ERROR_NOT_SUPPORTED_);
  return ERROR_NOT_SUPPORTED_;
}
void RegCloseKey(RegKey) {}
uint32_t RegQueryValue(RegKey, const AnsiString&, uint32_t&, std::vector<uint8_t>&) {
  errno = int(ERROR_NOT_SUPPORTED_);
  return ERROR_NOT_SUPPORTED_;
}
bool RegQueryString(RegKey, const AnsiString&, AnsiString&) {
  errno = int(ERROR_NOT_SUPPORTED_);
  return false;
}
bool RegEnumSubKeys(RegKey, std::vector<AnsiString>&) {
  errno = int(ERROR_NOT_SUPPORTED_);
  return false;
}

uint32_t RegCreateKey(uintptr_t, const AnsiString&, uint32_t, RegKey& Key, bool& Created) {
  Key = nullptr;
  Created = false;
  errno = int(ERROR_NOT_SUPPORTED_);
  return ERROR_NOT_SUPPORTED_;
}
uint32_t RegSetString(RegKey, const AnsiString&, const AnsiString&) {
  errno = int(ERROR_NOT_SUPPORTED_);
  return ERROR_NOT_SUPPORTED_;
}
uint32_t RegSetInteger(RegKey, const AnsiString&, uint32_t) {
  errno = int(ERROR_NOT_SUPPORTED_);
  return ERROR_NOT_SUPPORTED_;
}

} // namespace kx::platform
