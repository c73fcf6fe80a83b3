// SPDX-License-Identifier: MIT
// Date-time encoding and decoding, the clock and the calendar functions.
#include <kx/rtl/DateTime.h>

#include "platform/Platform.h"

#include <cmath>

namespace kx {

namespace {

constexpr uint16_t MonthDays[2][13] = {{0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31},
                                       {0, 31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31}};
// Days before each month, for ordinary and leap years.
constexpr uint16_t DaysBefore[2][13] = {{0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334},
                                        {0, 0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335}};

// A moment split as the runtime counts it: Day is the day number (1 January 0001 is day 1),
// MSec the milliseconds since that day's midnight.
struct TSplit {
  int64_t Day;
  int32_t MSec;
};

TSplit Split(double Value) {
  // Round ties to even; beyond 2^63 milliseconds (or NaN) there is no moment to round to.
  const double Scaled = Value * double(MSecsPerDay);
  if (!(std::fabs(Scaled) < 9.2e18)) throw EInvalidOp(SInvalidOp);
  const int64_t MSecs = int64_t(std::nearbyint(Scaled));
  return {DateDelta + MSecs / MSecsPerDay, int32_t((MSecs < 0 ? -MSecs : MSecs) % MSecsPerDay)};
}

// The inverse: the day's distance from 1899-12-30, the time counted away from zero.
TDateTime Join(int64_t Day, int32_t MSec) {
  int64_t MSecs;
  if (__builtin_mul_overflow(Day - DateDelta, int64_t(MSecsPerDay), &MSecs))
    throw EInvalidOp(SInvalidOp);
  MSecs += MSecs >= 0 ? MSec : -MSec;
  return double(MSecs) / MSecsPerDay;
}

bool Leap(int64_t Year) {
  return Year % 4 == 0 && (Year % 100 != 0 || Year % 400 == 0);
}

struct TCivil {
  int64_t Year;
  uint16_t Month, Day, DayOfYear;
  bool IsLeap;
};

// Day numbers above 0 to the calendar, by the 400-, 100-, 4- and 1-year cycles.
TCivil Civil(int64_t Day) {
  constexpr int64_t D1 = 365, D4 = D1 * 4 + 1, D100 = D4 * 25 - 1, D400 = D100 * 4 + 1;
  int64_t T = Day - 1;
  int64_t Y = 1 + 400 * (T / D400);
  T %= D400;
  int64_t I = T / D100;
  if (I == 4) I = 3; // the last day of a 400-year cycle
  Y += I * 100;
  T -= I * D100;
  Y += 4 * (T / D4);
  T %= D4;
  I = T / D1;
  if (I == 4) I = 3; // the last day of a leap cycle
  Y += I;
  T -= I * D1;
  TCivil C{Y, 1, 0, uint16_t(T + 1), Leap(Y)};
  const uint16_t* Days = MonthDays[C.IsLeap];
  while (T >= Days[C.Month]) T -= Days[C.Month++];
  C.Day = uint16_t(T + 1);
  return C;
}

int64_t DayNumber(int64_t Year, unsigned Month, unsigned Day) {
  const int64_t I = Year - 1;
  return I * 365 + I / 4 - I / 100 + I / 400 + DaysBefore[Leap(Year)][Month] + Day;
}

// ISO day of the week of a day number: 1 = Monday (day 1, 1 January 0001, was a Monday).
unsigned IsoDayOfWeek(int64_t Day) {
  return unsigned(((Day - 1) % 7 + 7) % 7) + 1;
}

[[noreturn]] void InvalidDateTime(uint16_t Year, uint16_t Month, uint16_t Day, uint16_t Hour,
                                  uint16_t Min, uint16_t Sec, uint16_t MSec) {
  throw EConvertError(SInvalidDateTime,
                      {Format("%d/%d/%d %d:%d:%d.%d", {Year, Month, Day, Hour, Min, Sec, MSec})});
}

int64_t MonthsShifted(int64_t Year, int64_t Month, int64_t Delta) {
  return Year * 12 + (Month - 1) + Delta;
}

TDateTime AddMonths(TDateTime Value, int64_t NumberOfMonths) {
  uint16_t Y, M, D;
  DecodeDate(Value, Y, M, D);
  if (Y == 0) throw EConvertError(SDateEncodeError);
  const int64_t Months = MonthsShifted(Y, M, NumberOfMonths);
  const int64_t NewYear = Months >= 0 ? Months / 12 : -1;
  if (NewYear < 1 || NewYear > 9999) throw EConvertError(SDateEncodeError);
  const uint16_t NewMonth = uint16_t(Months % 12 + 1);
  const uint16_t Last = MonthDays[Leap(NewYear)][NewMonth];
  TDateTime Result = EncodeDate(uint16_t(NewYear), NewMonth, D > Last ? Last : D);
  ReplaceTime(Result, Value);
  return Result;
}

struct TYmd {
  uint16_t Year, Month, Day;
};

TYmd Ymd(TDateTime Value) {
  TYmd R;
  DecodeDate(Value, R.Year, R.Month, R.Day);
  return R;
}

TDateTime AddDays(TDateTime Value, int64_t NumberOfDays) {
  const TSplit S = Split(Value);
  return Join(S.Day + NumberOfDays, S.MSec);
}

TDateTime AddMSecs(TDateTime Value, int64_t Count, int64_t Unit) {
  const TSplit S = Split(Value);
  // Split keeps the day far inside 64 bits of milliseconds; only the count can overflow.
  int64_t Total;
  if (__builtin_mul_overflow(Count, Unit, &Total) ||
      __builtin_add_overflow(Total, S.Day * MSecsPerDay + S.MSec, &Total))
    throw EInvalidOp(SInvalidOp);
  int64_t Day = Total / MSecsPerDay, MSec = Total % MSecsPerDay;
  if (MSec < 0) {
    MSec += MSecsPerDay;
    --Day;
  }
  return Join(Day, int32_t(MSec));
}

} // namespace

TTimeStamp DateTimeToTimeStamp(TDateTime DateTime) {
  const TSplit S = Split(DateTime);
  return {S.MSec, int32_t(uint32_t(S.Day))};
}

TDateTime TimeStampToDateTime(const TTimeStamp& TimeStamp) {
  return Join(TimeStamp.Date, TimeStamp.Time);
}

bool TryEncodeDate(uint16_t Year, uint16_t Month, uint16_t Day, TDateTime& Date) {
  if (Year < 1 || Year > 9999 || Month < 1 || Month > 12 || Day < 1 ||
      Day > MonthDays[Leap(Year)][Month])
    return false;
  Date = double(DayNumber(Year, Month, Day) - DateDelta);
  return true;
}

TDateTime EncodeDate(uint16_t Year, uint16_t Month, uint16_t Day) {
  TDateTime Result;
  if (!TryEncodeDate(Year, Month, Day, Result)) throw EConvertError(SDateEncodeError);
  return Result;
}

bool TryEncodeTime(uint16_t Hour, uint16_t Min, uint16_t Sec, uint16_t MSec, TDateTime& Time) {
  if (Hour >= HoursPerDay || Min >= MinsPerHour || Sec >= SecsPerMin || MSec >= MSecsPerSec)
    return false;
  Time = double(Hour * 3600000 + Min * 60000 + Sec * 1000 + MSec) / MSecsPerDay;
  return true;
}

TDateTime EncodeTime(uint16_t Hour, uint16_t Min, uint16_t Sec, uint16_t MSec) {
  TDateTime Result;
  if (!TryEncodeTime(Hour, Min, Sec, MSec, Result)) throw EConvertError(STimeEncodeError);
  return Result;
}

bool TryEncodeDateTime(uint16_t Year, uint16_t Month, uint16_t Day, uint16_t Hour, uint16_t Min,
                       uint16_t Sec, uint16_t MSec, TDateTime& Value) {
  TDateTime D, T;
  if (!TryEncodeDate(Year, Month, Day, D) || !TryEncodeTime(Hour, Min, Sec, MSec, T)) return false;
  Value = D >= 0 ? D + T : D - T;
  return true;
}

TDateTime EncodeDateTime(uint16_t Year, uint16_t Month, uint16_t Day, uint16_t Hour, uint16_t Min,
                         uint16_t Sec, uint16_t MSec) {
  TDateTime Result;
  if (!TryEncodeDateTime(Year, Month, Day, Hour, Min, Sec, MSec, Result))
    InvalidDateTime(Year, Month, Day, Hour, Min, Sec, MSec);
  return Result;
}

bool DecodeDateFully(TDateTime Date, uint16_t& Year, uint16_t& Month, uint16_t& Day,
                     uint16_t& DOW) {
  const TSplit S = Split(Date);
  if (S.Day <= 0) {
    Year = Month = Day = DOW = 0;
    return false;
  }
  const TCivil C = Civil(S.Day);
  Year = uint16_t(C.Year);
  Month = C.Month;
  Day = C.Day;
  DOW = uint16_t(S.Day % 7 + 1);
  return C.IsLeap;
}

void DecodeDate(TDateTime Date, uint16_t& Year, uint16_t& Month, uint16_t& Day) {
  uint16_t DOW;
  DecodeDateFully(Date, Year, Month, Day, DOW);
}

void DecodeTime(TDateTime Time, uint16_t& Hour, uint16_t& Min, uint16_t& Sec, uint16_t& MSec) {
  int32_t T = Split(Time).MSec;
  MSec = uint16_t(T % 1000);
  T /= 1000;
  Sec = uint16_t(T % 60);
  T /= 60;
  Min = uint16_t(T % 60);
  Hour = uint16_t(T / 60);
}

void DecodeDateTime(TDateTime Value, uint16_t& Year, uint16_t& Month, uint16_t& Day, uint16_t& Hour,
                    uint16_t& Min, uint16_t& Sec, uint16_t& MSec) {
  DecodeDate(Value, Year, Month, Day);
  DecodeTime(Value, Hour, Min, Sec, MSec);
}

TDateTime SystemTimeToDateTime(const TSystemTime& SystemTime) {
  const TDateTime D = EncodeDate(SystemTime.wYear, SystemTime.wMonth, SystemTime.wDay);
  const TDateTime T = EncodeTime(SystemTime.wHour, SystemTime.wMinute, SystemTime.wSecond,
                                 SystemTime.wMilliseconds);
  return D >= 0 ? D + T : D - T;
}

void DateTimeToSystemTime(TDateTime DateTime, TSystemTime& SystemTime) {
  DecodeDateFully(DateTime, SystemTime.wYear, SystemTime.wMonth, SystemTime.wDay,
                  SystemTime.wDayOfWeek);
  if (SystemTime.wDayOfWeek > 0) --SystemTime.wDayOfWeek;
  DecodeTime(DateTime, SystemTime.wHour, SystemTime.wMinute, SystemTime.wSecond,
             SystemTime.wMilliseconds);
}

int64_t DateTimeToUnix(TDateTime Value) {
  const TSplit S = Split(Value);
  // Whole seconds, rounded as the millisecond count was.
  const int64_t Days = S.Day - DateDelta - UnixDateDelta;
  const int64_t MSecs = Days * MSecsPerDay + S.MSec;
  return MSecs >= 0 ? (MSecs + 500) / 1000 : -((-MSecs + 499) / 1000);
}

TDateTime UnixToDateTime(int64_t Value) {
  int64_t Days = Value / SecsPerDay;
  int64_t Secs = Value % SecsPerDay;
  if (Secs < 0) {
    Secs += SecsPerDay;
    --Days;
  }
  return Join(Days + DateDelta + UnixDateDelta, int32_t(Secs * 1000));
}

TDateTime Now() {
  TSystemTime T;
  platform::GetLocalTime(T);
  return SystemTimeToDateTime(T);
}

TDateTime Date() {
  TSystemTime T;
  platform::GetLocalTime(T);
  return EncodeDate(T.wYear, T.wMonth, T.wDay);
}

TDateTime Time() {
  TSystemTime T;
  platform::GetLocalTime(T);
  return EncodeTime(T.wHour, T.wMinute, T.wSecond, T.wMilliseconds);
}

uint16_t CurrentYear() {
  TSystemTime T;
  platform::GetLocalTime(T);
  return T.wYear;
}

// --- the calendar ---------------------------------------------------------------------

bool IsLeapYear(uint16_t Year) {
  return Leap(Year);
}

uint16_t DaysInAMonth(uint16_t Year, uint16_t Month) {
  return Month >= 1 && Month <= 12 ? MonthDays[Leap(Year)][Month] : 0;
}

uint16_t DaysInAYear(uint16_t Year) {
  return Leap(Year) ? 366 : 365;
}

uint16_t DaysInMonth(TDateTime Value) {
  const TYmd D = Ymd(Value);
  return DaysInAMonth(D.Year, D.Month);
}

uint16_t DaysInYear(TDateTime Value) {
  return DaysInAYear(YearOf(Value));
}

int32_t DayOfWeek(TDateTime DateTime) {
  return int32_t(IsoDayOfWeek(Split(DateTime).Day) % 7) + 1;
}

uint16_t DayOfTheWeek(TDateTime Value) {
  return uint16_t(IsoDayOfWeek(Split(Value).Day));
}

uint16_t DayOfTheYear(TDateTime Value) {
  const TSplit S = Split(Value);
  return S.Day > 0 ? Civil(S.Day).DayOfYear : 0;
}

uint16_t WeeksInAYear(uint16_t Year) {
  // 53 weeks when the year starts on a Thursday, or on a Wednesday in a leap year.
  const unsigned Jan1 = IsoDayOfWeek(DayNumber(Year, 1, 1));
  return Jan1 == 4 || (Jan1 == 3 && Leap(Year)) ? 53 : 52;
}

uint16_t WeekOfTheYear(TDateTime Value, uint16_t& Year) {
  const TSplit S = Split(Value);
  if (S.Day <= 0) return Year = 0;
  const TCivil C = Civil(S.Day);
  int Week = (int(C.DayOfYear) - int(IsoDayOfWeek(S.Day)) + 10) / 7;
  Year = uint16_t(C.Year);
  if (Week < 1) {
    --Year;
    Week = WeeksInAYear(Year);
  } else if (Week > WeeksInAYear(Year)) {
    ++Year;
    Week = 1;
  }
  return uint16_t(Week);
}

uint16_t WeekOfTheYear(TDateTime Value) {
  uint16_t Year;
  return WeekOfTheYear(Value, Year);
}

bool TryEncodeDateWeek(uint16_t Year, uint16_t Week, TDateTime& Value, uint16_t DayOfWeek) {
  if (Year < 1 || Year > 9999 || Week < 1 || Week > WeeksInAYear(Year) || DayOfWeek < 1 ||
      DayOfWeek > 7)
    return false;
  // Week 1 is the one with 4 January in it.
  const int64_t Jan4 = DayNumber(Year, 1, 4);
  const int64_t Day = Jan4 - (IsoDayOfWeek(Jan4) - 1) + (Week - 1) * 7 + (DayOfWeek - 1);
  if (Day < 1) return false;
  Value = Join(Day, 0);
  return true;
}

TDateTime EncodeDateWeek(uint16_t Year, uint16_t Week, uint16_t DayOfWeek) {
  TDateTime Result;
  if (!TryEncodeDateWeek(Year, Week, Result, DayOfWeek)) throw EConvertError(SDateEncodeError);
  return Result;
}

uint16_t YearOf(TDateTime Value) {
  return Ymd(Value).Year;
}

uint16_t MonthOf(TDateTime Value) {
  return Ymd(Value).Month;
}

uint16_t DayOf(TDateTime Value) {
  return Ymd(Value).Day;
}

TDateTime DateOf(TDateTime Value) {
  return std::trunc(double(Value));
}

TDateTime TimeOf(TDateTime Value) {
  const double V = Value;
  return V - std::trunc(V);
}

TDateTime StartOfTheYear(TDateTime Value) {
  return EncodeDate(YearOf(Value), 1, 1);
}

TDateTime EndOfTheYear(TDateTime Value) {
  return EncodeDateTime(YearOf(Value), 12, 31, 23, 59, 59, 999);
}

TDateTime StartOfTheMonth(TDateTime Value) {
  const TYmd D = Ymd(Value);
  return EncodeDate(D.Year, D.Month, 1);
}

TDateTime EndOfTheMonth(TDateTime Value) {
  const TYmd D = Ymd(Value);
  return EncodeDateTime(D.Year, D.Month, DaysInAMonth(D.Year, D.Month), 23, 59, 59, 999);
}

TDateTime StartOfTheWeek(TDateTime Value) {
  const int64_t Day = Split(Value).Day;
  return Join(Day - (IsoDayOfWeek(Day) - 1), 0);
}

TDateTime EndOfTheWeek(TDateTime Value) {
  const int64_t Day = Split(Value).Day;
  return Join(Day + (7 - IsoDayOfWeek(Day)), MSecsPerDay - 1);
}

TDateTime StartOfTheDay(TDateTime Value) {
  return Join(Split(Value).Day, 0);
}

TDateTime EndOfTheDay(TDateTime Value) {
  return Join(Split(Value).Day, MSecsPerDay - 1);
}

void IncAMonth(uint16_t& Year, uint16_t& Month, uint16_t& Day, int32_t NumberOfMonths) {
  const int64_t Months = MonthsShifted(Year, Month, NumberOfMonths);
  const int64_t NewYear = Months >= 0 ? Months / 12 : Months / 12 - (Months % 12 != 0);
  Month = uint16_t((Months % 12 + 12) % 12 + 1);
  Year = uint16_t(NewYear);
  const uint16_t Last = MonthDays[Leap(Year)][Month];
  if (Day > Last) Day = Last;
}

TDateTime IncMonth(TDateTime DateTime, int32_t NumberOfMonths) {
  return AddMonths(DateTime, NumberOfMonths);
}

TDateTime IncYear(TDateTime Value, int32_t NumberOfYears) {
  return AddMonths(Value, int64_t(NumberOfYears) * 12);
}

TDateTime IncWeek(TDateTime Value, int32_t NumberOfWeeks) {
  return AddDays(Value, int64_t(NumberOfWeeks) * 7);
}

TDateTime IncDay(TDateTime Value, int32_t NumberOfDays) {
  return AddDays(Value, NumberOfDays);
}

TDateTime IncMilliSecond(TDateTime Value, int64_t NumberOfMilliSeconds) {
  return AddMSecs(Value, NumberOfMilliSeconds, 1);
}

TDateTime IncSecond(TDateTime Value, int64_t NumberOfSeconds) {
  return AddMSecs(Value, NumberOfSeconds, MSecsPerSec);
}

TDateTime IncMinute(TDateTime Value, int64_t NumberOfMinutes) {
  return AddMSecs(Value, NumberOfMinutes, SecsPerMin * MSecsPerSec);
}

TDateTime IncHour(TDateTime Value, int64_t NumberOfHours) {
  return AddMSecs(Value, NumberOfHours, MinsPerHour * SecsPerMin * MSecsPerSec);
}

void ReplaceTime(TDateTime& DateTime, TDateTime NewTime) {
  const double D = std::trunc(double(DateTime));
  const double T = std::fabs(double(NewTime) - std::trunc(double(NewTime)));
  DateTime = D >= 0 ? D + T : D - T;
}

void ReplaceDate(TDateTime& DateTime, TDateTime NewDate) {
  TDateTime Temp = NewDate;
  ReplaceTime(Temp, DateTime);
  DateTime = Temp;
}

} // namespace kx
