// SPDX-License-Identifier: MIT
// Date-time utilities of uKxDateTimeUtils: work days, durations as text, the LUO layout, a
// four-digit-year short date format, time texts as seconds, and periods and weeks.
#pragma once

#include <kx/rtl/DateTime.h>
#include <kx/rtl/Strings.h>

namespace kx {

enum TKxWorkDayAdjustment : uint8_t {
  wdLast, // back to the previous work day
  wdNext  // on to the next one
};
enum TKxTimeRange : uint8_t { trDuration, trPointOfTime, trEndTime };
enum TKxTimeFormat : uint8_t {
  tfNone,
  tfHourMin,
  tfHourMinSec,
  tfDecHourM2,
  tfDecHourM3,
  tfDecMinM2
};
// What KxDecodeDate answers of a date.
enum TKxDecodeType : uint8_t { dtYear, dtMonth, dtDayOfYear, dtDayOfMonth };
enum TKxWeekFormat : uint8_t { wfYearWeek, wfWeek };
enum TKxDatePeriod : uint8_t {
  dpNone,
  dpYear,
  dpHalfYear,
  dpQuarter,
  dpFourWeeks,
  dpMonth,
  dpWeek,
  dpDay
};

inline constexpr const char* SKxMonthNames = "JANFEBMARAPRMAYJUNJULAUGSEPOCTNOVDEC";
inline constexpr const char* SKxInvalidSeconds =
    "Invalid time passed.\r\nThere are not more than 60 seconds in a minute.";
inline constexpr const char* SKxValueBetween0And59 =
    "The string '%s' must contain a value between 0 and 59";
inline constexpr const char* SKxStrToTimeError =
    "An error has occurred while converting a string to a time format.";
inline constexpr const char* SKxDecodeTimeError =
    "An error has occurred while decoding a time parameter";

// A Saturday or Sunday moved to the Friday before (wdLast) or the Monday after (wdNext), the
// time of day kept; work days, and values of 0 and below, come back unchanged.
KX_API TDateTime KxClosestWeekDay(TDateTime DT, TKxWorkDayAdjustment Adjustment);
// Seconds as "h:mm" or "h:mm:ss" with the locale's time separator: rounded to whole seconds
// (ties to even), hours not limited to 24, "-" in front of a negative value.
KX_API AnsiString KxTimeToStr(double Seconds, bool WithSeconds);
// The locale's short date format with a four-digit year: "y" inserted at the first "y" until
// "yyyy" is there ("dd.MM.yy" gives "dd.MM.yyyy"; a format without a year gets "yyyy" in
// front).
KX_API AnsiString KxShortDateFormatY2k();

// "MMM dd yyyy hh:nn:ss:zzzAM": the month's three letters, day, year and 12-hour clock hour
// padded with spaces, "JAN  5 2024  2:05:07:045PM".
KX_API AnsiString ConvertDateTimeToLUO(TDateTime DT);
// The inverse over the same fixed places; EConvertError for fields that are no number and for
// impossible dates and times.
KX_API TDateTime ConvertLUOToDateTime(const AnsiString& S);

// A time text as seconds. A leading "-" negates (EConvertError unless AllowNegative). Spaces
// around the text are ignored, an empty text and an empty part count as 0. The forms, with the
// locale's time separator or ':', and the locale's decimal separator or '.':
//   tfNone        "h", "h:mm" or "h:mm:ss"
//   tfHourMin     "h:mm", or "h" alone       tfHourMinSec  "h:mm:ss", or fewer parts
//   tfDecHourM2   hours with up to 2 decimals ("1.25" is 4500)
//   tfDecHourM3   hours with up to 3 decimals
//   tfDecMinM2    minutes with up to 2 decimals ("90.5" is 5430)
// Minutes outside 0..59 raise "The string '<part>' must contain a value between 0 and 59",
// seconds outside it "Invalid time passed. There are not more than 60 seconds in a minute.".
// trPointOfTime takes hours 0..23; trEndTime also "24" with nothing after it, the end of the
// day; trDuration any number of hours. Anything else raises "An error has occurred while
// converting a string to a time format.".
KX_API int32_t KxStrToTimeToInt(const AnsiString& S, bool AllowNegative, TKxTimeRange Range,
                                TKxTimeFormat Format);

// --- periods, weeks and steps over the runtime's calendar -----------------------------------

// Midnight of the first day, and 23:59:59.999 of the last one.
KX_API TDateTime KxBOMonth(TDateTime DT);
KX_API TDateTime KxEOMonth(TDateTime DT);
// ISO weeks, Monday to Sunday.
KX_API TDateTime KxBOWeek(TDateTime DT);
KX_API TDateTime KxEOWeek(TDateTime DT);
KX_API TDateTime KxBOYear(TDateTime DT);
KX_API TDateTime KxEOYear(TDateTime DT);
// The period of DT: half years from January and July, quarters from January, April, July and
// October, four weeks counted from the first ISO week of DT's week-year. dpNone is DT itself.
KX_API TDateTime KxBOPeriod(TDateTime DT, TKxDatePeriod Period);
KX_API TDateTime KxEOPeriod(TDateTime DT, TKxDatePeriod Period);

// Calendar steps; months and years end on the new month's last day when it lacks DT's day.
KX_API TDateTime KxAddYears(TDateTime DT, int32_t Years);
KX_API TDateTime KxAddMonths(TDateTime DT, int32_t Months);
KX_API TDateTime KxAddWeeks(TDateTime DT, int32_t Weeks);
KX_API TDateTime KxAddDays(TDateTime DT, int32_t Days);
KX_API TDateTime KxAddHours(TDateTime DT, int64_t Hours);
KX_API TDateTime KxAddMinutes(TDateTime DT, int64_t Minutes);
KX_API TDateTime KxAddSecs(TDateTime DT, int64_t Seconds);
KX_API TDateTime KxAddMSecs(TDateTime DT, int64_t MSecs);

KX_API uint16_t KxDaysInMonth(TDateTime DT);
KX_API uint16_t KxDaysInYear(TDateTime DT);
KX_API uint16_t KxDayOfYear(TDateTime DT);
// The ISO week; wfYearWeek answers week-year * 100 + week (202401), wfWeek the week alone.
KX_API int32_t KxWeekOfYear(TDateTime DT, TKxWeekFormat Format);
// The first Thursday of Year, the day that puts a week into the year's first ISO week.
KX_API TDateTime KxFirstThursdayOfYear(uint16_t Year);
// The Monday of ISO week Week of Year; EConvertError for a week the year does not have.
KX_API TDateTime KxWeekToDate(uint16_t Year, uint16_t Week);
// One part of a date: year, month, day of the year or day of the month.
KX_API int32_t KxDecodeDate(TDateTime DT, TKxDecodeType DecodeType);
// -1, 0 or 1 by the calendar day alone (times are ignored).
KX_API int32_t KxDateCompare(TDateTime A, TDateTime B);
// DT rounded to the nearest multiple of Minutes (ties up); Minutes of 0 or less leave DT.
KX_API TDateTime KxRoundTime(TDateTime DT, int32_t Minutes);
// Whole years, months and days from BirthDate to ADate (0 for all when ADate is before it).
KX_API void KxCalculateAge(TDateTime BirthDate, TDateTime ADate, int32_t& Years, int32_t& Months,
                           int32_t& Days);
// A duration as days; hours are not limited to 24 and negative parts subtract.
KX_API TDateTime KxEncodeDuration(int32_t Hours, int32_t Minutes, int32_t Seconds, int32_t MSecs);

} // namespace kx
