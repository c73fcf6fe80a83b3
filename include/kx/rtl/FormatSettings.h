// SPDX-License-Identifier: MIT
// TFormatSettings: a locale's separators, date and time formats and names, which the
// formatting and parsing functions read.
#pragma once

#include <kx/rtl/Strings.h>

#include <cstddef>

namespace kx {

// A Win32 locale identifier.
using TLocaleID = uint32_t;
inline constexpr TLocaleID LocaleUserDefault = 0x400;
inline constexpr TLocaleID LocaleSystemDefault = 0x800;
inline constexpr TLocaleID LocaleInvariant = 0x7F;

// Names indexed from 1, as month and day numbers count.
template <size_t N>
class TLocaleNames {
public:
  AnsiString& operator[](size_t Index) { return FNames[Index - 1]; }
  const AnsiString& operator[](size_t Index) const { return FNames[Index - 1]; }
  static constexpr size_t Count() { return N; }

private:
  AnsiString FNames[N];
};

struct KX_API TFormatSettings {
  // Separators and names are 8-bit text in the process code page.
  AnsiChar DateSeparator = '/';
  AnsiChar TimeSeparator = ':';
  AnsiChar ListSeparator = ',';
  AnsiChar ThousandSeparator = ',';
  AnsiChar DecimalSeparator = '.';
  // Formats in FormatDateTime's pattern language.
  AnsiString ShortDateFormat;
  AnsiString LongDateFormat;
  AnsiString ShortTimeFormat;
  AnsiString LongTimeFormat;
  AnsiString TimeAMString;
  AnsiString TimePMString;
  TLocaleNames<12> ShortMonthNames;
  TLocaleNames<12> LongMonthNames;
  // 1 = Sunday, as DayOfWeek counts.
  TLocaleNames<7> ShortDayNames;
  TLocaleNames<7> LongDayNames;
  // Two-digit years read by StrToDate fall in the hundred years that start this many years
  // before the current one; 0 keeps them in the current century.
  uint16_t TwoDigitYearCenturyWindow = 50;

  // The process's locale: the user's locale on Windows; on POSIX the locale the
  // environment names (LC_ALL, then LC_TIME for dates and times and LC_NUMERIC for numbers,
  // then LANG), whose data comes from ICU. The C and POSIX locales, and locales the
  // platform does not know, give Invariant().
  static TFormatSettings Create();
  // 1024 (user default), 2048 (system default) and 0 are the process's locale, 127 the
  // invariant one; any other identifier is looked up (on POSIX through ICU's table).
  static TFormatSettings Create(TLocaleID Locale);
  // A locale name, "de-DE" or "de_DE".
  static TFormatSettings Create(const AnsiString& LocaleName);
  // Fixed values: "MM/dd/yyyy", "dddd, dd mmmm yyyy", "HH:mm", "HH:mm:ss", "AM"/"PM",
  // '/', ':', ',', ',' and '.', English names.
  static TFormatSettings Invariant();
};

// The settings used where none is passed: the process's locale, read on first use. Changing
// them is not synchronised with threads that format at the same time.
KX_API TFormatSettings& FormatSettings();

} // namespace kx
