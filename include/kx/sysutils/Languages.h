// SPDX-License-Identifier: MIT
// The language records of uKxSysUtils, keyed by Windows locale identifier.
#pragma once
// 233 built-in locale identifiers; each record's name comes from the platform (Windows:
// LCIDToLocaleName; Linux: ICU's uloc_getLocaleForLCID), which give the same names for all of
// them. The list is filled when the library starts.

#include <kx/rtl/Strings.h>

#include <cstdint>

namespace kx {

inline constexpr const char* SNoLanguage = "There is no language \"%s\"!";
inline constexpr const char* SNoLanguageRegion = "There is no language \"%s-%s\"!";
inline constexpr const char* SNoLanguageForLocale = "There is no language for Locale \"%d\"!";
inline constexpr int32_t KxLanguageCount = 233;

struct TKxLanguage {
  // The Windows locale identifier (LCID).
  uint16_t LocaleID = 0;
  // The BCP 47 name: "en-US", "sr-Latn-RS".
  AnsiString Name;
  // Its first part, the ISO 639 language: "en", "sr".
  AnsiString Language;
  // Its last part, the ISO 3166 country: "US", "RS".
  AnsiString Region;
};

// The record of a locale identifier; Exception "There is no language for Locale "<id>"!".
KX_API TKxLanguage KxGetLanguage(uint16_t LocaleID);
// The record of a name ("de-AT", case and '-'/'_' as they come), or of a bare language ("de":
// its primary record, the one of sub-language 1 where there is one); Exception
// "There is no language "<Name>"!".
KX_API TKxLanguage KxGetLanguage(const AnsiString& Name);
// The record of a language in a country ("de", "AT"), ignoring case; Exception
// "There is no language "<Language>-<Region>"!".
KX_API TKxLanguage KxGetLanguage(const AnsiString& Language, const AnsiString& Region);
// The records in locale identifier order; Index from 0 to KxGetLanguageCount() - 1.
KX_API int32_t KxGetLanguageCount();
KX_API TKxLanguage KxGetLanguageByIndex(int32_t Index);

namespace detail {
// The unit's start-up and shut-down steps for the list.
KX_API void FillLanguages();
KX_API void ClearLanguages();
} // namespace detail

} // namespace kx
