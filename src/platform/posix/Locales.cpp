// SPDX-License-Identifier: MIT
// Locale names on POSIX: ICU's map of Windows locale identifiers.
#include "platform/Platform.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <cerrno>

namespace kx::platform {

bool LocaleName(uint16_t LocaleID, AnsiString& Name) {
  char Buffer[ULOC_FULLNAME_CAPACITY];
  UErrorCode Status = U_ZERO_ERROR;
  const int32_t Len = uloc_getLocaleForLCID(LocaleID, Buffer, int32_t(sizeof Buffer), &Status);
  if (U_FAILURE(Status) || Status == U_STRING_NOT_TERMINATED_WARNING || Len <= 0) {
    errno = EINVAL;
    return false;
  }
  // "es_ES@collation=traditional": the keywords are no part of the name.
  Name.assign(Buffer, size_t(Len));
  Name = Name.substr(0, Name.find('@'));
  std::replace(Name.begin(), Name.end(), '_', '-');
  return true;
}

} // namespace kx::platform
