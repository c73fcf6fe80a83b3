// SPDX-License-Identifier: MIT
// Date-time values as text: FormatDateTime's pattern language, the locale's date and time
// texts, and the readers of those texts.
#pragma once

#include <kx/rtl/DateTime.h>
#include <kx/rtl/FormatSettings.h>

namespace kx {

inline constexpr const char* SInvalidDate = "'%s' is not a valid date";
inline constexpr const char* SInvalidTime = "'%s' is not a valid time";

// The pattern language, letters in either case:
//   y, yy        the year's last two digits      yyy, yyyy  the year, at least four digits
//   m, mm        the month, 1 or 2 digits        mmm, mmmm  the short and long month name
//   d, dd        the day, 1 or 2 digits          ddd, dddd  the short and long day name
//   ddddd        the short date format           dddddd     the long date format
//   aaa, aaaa    the short and long day name     c          short date, then the long time
//                                                           unless the time is midnight
//   h, hh        the hour, 1 or 2 digits (on the 12-hour clock when an am/pm specifier
//                follows before the next h)
//   n, nn        the minute; m and mm right after an hour mean the minute too
//   s, ss        the second                      z, zzz     the milliseconds, 1 or 3 digits
//   t, tt        the short and long time format
//   am/pm, a/p   the mark as written in the pattern, upper or lower case
//   ampm         the locale's TimeAMString or TimePMString
//   /, :         the locale's date and time separators
//   '...', "..." quoted text, copied as it stands
// Any other character is copied. An empty pattern is "c". Formats nest two levels deep (a
// "c" inside the short date format is not expanded again).
KX_API AnsiString FormatDateTime(const AnsiString& Format, TDateTime DateTime);
KX_API AnsiString FormatDateTime(const AnsiString& Format, TDateTime DateTime,
                                 const TFormatSettings& Settings);
KX_API void DateTimeToString(AnsiString& Result, const AnsiString& Format, TDateTime DateTime);
KX_API void DateTimeToString(AnsiString& Result, const AnsiString& Format, TDateTime DateTime,
                             const TFormatSettings& Settings);

// The short date format, the long time format, and both ("c").
KX_API AnsiString DateToStr(TDateTime Date);
KX_API AnsiString DateToStr(TDateTime Date, const TFormatSettings& Settings);
KX_API AnsiString TimeToStr(TDateTime Time);
KX_API AnsiString TimeToStr(TDateTime Time, const TFormatSettings& Settings);
KX_API AnsiString DateTimeToStr(TDateTime DateTime);
KX_API AnsiString DateTimeToStr(TDateTime DateTime, const TFormatSettings& Settings);

// Dates are two or three numbers between date separators, in the order of the short date
// format (day-month-year, month-day-year or year-month-day); two numbers are in the current
// year, and years of up to two digits fall in the settings' century window. Times are
// hours, optional minutes and seconds between time separators and milliseconds after the
// decimal separator, with the AM/PM strings (the locale's, or "AM"/"PM") before or after
// them. Spaces may stand around every part; the whole text must be used. StrToDateTime takes
// a date with an optional time after it, or a time alone. EConvertError "'<S>' is not a valid
// date" (time, date and time) otherwise.
KX_API TDateTime StrToDate(const AnsiString& S);
KX_API TDateTime StrToDate(const AnsiString& S, const TFormatSettings& Settings);
KX_API TDateTime StrToTime(const AnsiString& S);
KX_API TDateTime StrToTime(const AnsiString& S, const TFormatSettings& Settings);
KX_API TDateTime StrToDateTime(const AnsiString& S);
KX_API TDateTime StrToDateTime(const AnsiString& S, const TFormatSettings& Settings);
KX_API bool TryStrToDate(const AnsiString& S, TDateTime& Value);
KX_API bool TryStrToDate(const AnsiString& S, TDateTime& Value, const TFormatSettings& Settings);
KX_API bool TryStrToTime(const AnsiString& S, TDateTime& Value);
KX_API bool TryStrToTime(const AnsiString& S, TDateTime& Value, const TFormatSettings& Settings);
KX_API bool TryStrToDateTime(const AnsiString& S, TDateTime& Value);
KX_API bool TryStrToDateTime(const AnsiString& S, TDateTime& Value,
                             const TFormatSettings& Settings);
KX_API TDateTime StrToDateDef(const AnsiString& S, TDateTime Default);
KX_API TDateTime StrToDateTimeDef(const AnsiString& S, TDateTime Default);

} // namespace kx
