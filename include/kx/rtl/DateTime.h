// SPDX-License-Identifier: MIT
// The runtime's date-time value, its encoding and decoding, the clock and the calendar.
#pragma once

#include <kx/rtl/Exceptions.h>

#include <cstdint>

namespace kx {

// Days since 30 December 1899, the fraction being the time of day. Before that day the
// integer part counts the days back while the fraction still runs forward from midnight:
// -1.25 is 29 December 1899 06:00. A type of its own (not a double) so that variants and
// the type registry can tell a date from a number; it converts to and from double freely.
class TDateTime {
public:
  constexpr TDateTime() noexcept = default;
  constexpr TDateTime(double Value) noexcept : FValue(Value) {}
  constexpr operator double() const noexcept { return FValue; }
  constexpr TDateTime& operator+=(double Days) noexcept {
    FValue += Days;
    return *this;
  }
  constexpr TDateTime& operator-=(double Days) noexcept {
    FValue -= Days;
    return *this;
  }

private:
  double FValue = 0;
};

// Named kinds of date-time values: the same days, types of their own.
#define KX_DATETIME_KIND(Name)                                                                     \
  class Name : public ::kx::TDateTime {                                                            \
  public:                                                                                          \
    using TDateTime::TDateTime;                                                                    \
    constexpr Name(::kx::TDateTime Value) noexcept : TDateTime(Value) {}                           \
  };

KX_DATETIME_KIND(TDate)
KX_DATETIME_KIND(TTime)

inline constexpr int32_t HoursPerDay = 24;
inline constexpr int32_t MinsPerHour = 60;
inline constexpr int32_t SecsPerMin = 60;
inline constexpr int32_t MSecsPerSec = 1000;
inline constexpr int32_t MinsPerDay = HoursPerDay * MinsPerHour;
inline constexpr int32_t SecsPerDay = MinsPerDay * SecsPerMin;
inline constexpr int32_t MSecsPerDay = SecsPerDay * MSecsPerSec;
// The day number of 30 December 1899 when 1 January 0001 is day 1.
inline constexpr int32_t DateDelta = 693594;
// Days from 30 December 1899 to 1 January 1970.
inline constexpr int32_t UnixDateDelta = 25569;
// 1 January 0100 and 31 December 9999 23:59:59.999.
inline constexpr double MinDateTime = -657434.0;
inline constexpr double MaxDateTime = 2958465.99999999;

inline constexpr const char* SDateEncodeError = "Invalid argument to date encode";
inline constexpr const char* STimeEncodeError = "Invalid argument to time encode";
inline constexpr const char* SInvalidDateTime = "'%s' is not a valid date and time";

// A moment as milliseconds since midnight and days since 1 January 0001 plus one.
struct TTimeStamp {
  int32_t Time;
  int32_t Date;
};

// The Win32 SYSTEMTIME layout; wDayOfWeek counts from 0 = Sunday.
struct TSystemTime {
  uint16_t wYear;
  uint16_t wMonth;
  uint16_t wDayOfWeek;
  uint16_t wDay;
  uint16_t wHour;
  uint16_t wMinute;
  uint16_t wSecond;
  uint16_t wMilliseconds;
};

// The moment rounded to the millisecond (ties to even). NaN, infinities and values whose
// milliseconds do not fit 64 bits raise EInvalidOp.
KX_API TTimeStamp DateTimeToTimeStamp(TDateTime DateTime);
KX_API TDateTime TimeStampToDateTime(const TTimeStamp& TimeStamp);

// Years 1 to 9999; false (or EConvertError "Invalid argument to date encode") otherwise.
KX_API bool TryEncodeDate(uint16_t Year, uint16_t Month, uint16_t Day, TDateTime& Date);
KX_API TDateTime EncodeDate(uint16_t Year, uint16_t Month, uint16_t Day);
// Hour < 24, Min and Sec < 60, MSec < 1000; EConvertError "Invalid argument to time encode".
KX_API bool TryEncodeTime(uint16_t Hour, uint16_t Min, uint16_t Sec, uint16_t MSec,
                          TDateTime& Time);
KX_API TDateTime EncodeTime(uint16_t Hour, uint16_t Min, uint16_t Sec, uint16_t MSec);
// Both, with the time counted away from zero before 1899-12-30; EConvertError
// "'yyyy/mm/dd hh:nn:ss.zzz' is not a valid date and time".
KX_API bool TryEncodeDateTime(uint16_t Year, uint16_t Month, uint16_t Day, uint16_t Hour,
                              uint16_t Min, uint16_t Sec, uint16_t MSec, TDateTime& Value);
KX_API TDateTime EncodeDateTime(uint16_t Year, uint16_t Month, uint16_t Day, uint16_t Hour,
                                uint16_t Min, uint16_t Sec, uint16_t MSec);

// Days before 1 January 0001 decode as 0/0/0 (and day of week 0).
KX_API void DecodeDate(TDateTime Date, uint16_t& Year, uint16_t& Month, uint16_t& Day);
// Also the day of the week (1 = Sunday); the result says whether the year is a leap year.
KX_API bool DecodeDateFully(TDateTime Date, uint16_t& Year, uint16_t& Month, uint16_t& Day,
                            uint16_t& DOW);
KX_API void DecodeTime(TDateTime Time, uint16_t& Hour, uint16_t& Min, uint16_t& Sec,
                       uint16_t& MSec);
KX_API void DecodeDateTime(TDateTime Value, uint16_t& Year, uint16_t& Month, uint16_t& Day,
                           uint16_t& Hour, uint16_t& Min, uint16_t& Sec, uint16_t& MSec);

KX_API TDateTime SystemTimeToDateTime(const TSystemTime& SystemTime);
KX_API void DateTimeToSystemTime(TDateTime DateTime, TSystemTime& SystemTime);
// Seconds since 1970-01-01 00:00 (no zone conversion), and back.
KX_API int64_t DateTimeToUnix(TDateTime Value);
KX_API TDateTime UnixToDateTime(int64_t Value);

// The clock, in local time, to the millisecond.
KX_API TDateTime Now();
KX_API TDateTime Date();
KX_API TDateTime Time();
KX_API uint16_t CurrentYear();

// --- the calendar ---------------------------------------------------------------------

KX_API bool IsLeapYear(uint16_t Year);
// 0 for a month outside 1..12.
KX_API uint16_t DaysInAMonth(uint16_t Year, uint16_t Month);
KX_API uint16_t DaysInAYear(uint16_t Year);
KX_API uint16_t DaysInMonth(TDateTime Value);
KX_API uint16_t DaysInYear(TDateTime Value);
// 1 = Sunday ... 7 = Saturday.
KX_API int32_t DayOfWeek(TDateTime DateTime);
// ISO 8601: 1 = Monday ... 7 = Sunday.
KX_API uint16_t DayOfTheWeek(TDateTime Value);
// 1 for 1 January.
KX_API uint16_t DayOfTheYear(TDateTime Value);
// The ISO 8601 week (1..53), and the year that week belongs to.
KX_API uint16_t WeekOfTheYear(TDateTime Value);
KX_API uint16_t WeekOfTheYear(TDateTime Value, uint16_t& Year);
KX_API uint16_t WeeksInAYear(uint16_t Year);
// The day of ISO week Week of Year (DayOfWeek 1 = Monday); EConvertError when out of range.
KX_API bool TryEncodeDateWeek(uint16_t Year, uint16_t Week, TDateTime& Value,
                              uint16_t DayOfWeek = 1);
KX_API TDateTime EncodeDateWeek(uint16_t Year, uint16_t Week, uint16_t DayOfWeek = 1);

KX_API uint16_t YearOf(TDateTime Value);
KX_API uint16_t MonthOf(TDateTime Value);
KX_API uint16_t DayOf(TDateTime Value);
// The integer part (the day at midnight) and the fraction (the time of day, negative
// before 1899-12-30).
KX_API TDateTime DateOf(TDateTime Value);
KX_API TDateTime TimeOf(TDateTime Value);

// Midnight of the first day, and 23:59:59.999 of the last one.
KX_API TDateTime StartOfTheYear(TDateTime Value);
KX_API TDateTime EndOfTheYear(TDateTime Value);
KX_API TDateTime StartOfTheMonth(TDateTime Value);
KX_API TDateTime EndOfTheMonth(TDateTime Value);
// ISO weeks: Monday to Sunday.
KX_API TDateTime StartOfTheWeek(TDateTime Value);
KX_API TDateTime EndOfTheWeek(TDateTime Value);
KX_API TDateTime StartOfTheDay(TDateTime Value);
KX_API TDateTime EndOfTheDay(TDateTime Value);

// Months are added to the calendar month; a day the new month lacks becomes its last day,
// and the time of day stays.
KX_API void IncAMonth(uint16_t& Year, uint16_t& Month, uint16_t& Day, int32_t NumberOfMonths = 1);
KX_API TDateTime IncMonth(TDateTime DateTime, int32_t NumberOfMonths = 1);
KX_API TDateTime IncYear(TDateTime Value, int32_t NumberOfYears = 1);
// The rest move through the day and millisecond counts, so that a value before 1899-12-30
// moves the right way (adding to the double would move its time of day backwards).
KX_API TDateTime IncWeek(TDateTime Value, int32_t NumberOfWeeks = 1);
KX_API TDateTime IncDay(TDateTime Value, int32_t NumberOfDays = 1);
KX_API TDateTime IncHour(TDateTime Value, int64_t NumberOfHours = 1);
KX_API TDateTime IncMinute(TDateTime Value, int64_t NumberOfMinutes = 1);
KX_API TDateTime IncSecond(TDateTime Value, int64_t NumberOfSeconds = 1);
KX_API TDateTime IncMilliSecond(TDateTime Value, int64_t NumberOfMilliSeconds = 1);

// The date part alone replaced, or the time of day alone, as the sign convention wants.
KX_API void ReplaceDate(TDateTime& DateTime, TDateTime NewDate);
KX_API void ReplaceTime(TDateTime& DateTime, TDateTime NewTime);

} // namespace kx
