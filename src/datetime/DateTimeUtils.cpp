// SPDX-License-Identifier: MIT
// Work days, durations as text, the LUO layout, time texts as seconds, periods and weeks.
#include <kx/datetime/DateTimeUtils.h>
#include <kx/rtl/Format.h>
#include <kx/rtl/FormatSettings.h>
#include <kx/rtl/SysUtils.h>

#include <cmath>
#include <cstdio>

namespace kx {

namespace {

// Days to add, by the runtime's day of the week (1 = Sunday).
constexpr int32_t LastWorkDayOffset[8] = {0, -2, 0, 0, 0, 0, 0, -1};
constexpr int32_t NextWorkDayOffset[8] = {0, 1, 0, 0, 0, 0, 0, 2};

[[noreturn]] void TimeTextError() {
  throw EConvertError(SKxStrToTimeError);
}

bool IsDigits(const AnsiString& S) {
  for (char C : S)
    if (C < '0' || C > '9') return false;
  return true;
}

// A part of a time text: empty is 0, otherwise decimal digits only, at most nine of them.
int64_t TimePart(const AnsiString& Part) {
  if (Part.empty()) return 0;
  if (Part.size() > 9 || !IsDigits(Part)) TimeTextError();
  return std::stoll(Part);
}

bool IsTimeSeparator(char C) {
  return C == ':' || C == FormatSettings().TimeSeparator;
}

bool IsDecimalSeparator(char C) {
  return C == '.' || C == FormatSettings().DecimalSeparator;
}

// The text of a decimal number as thousandths (Decimals digits at most after the separator).
int64_t DecimalThousandths(const AnsiString& S, int Decimals) {
  size_t Sep = 0;
  while (Sep < S.size() && !IsDecimalSeparator(S[Sep])) ++Sep;
  const AnsiString Whole = S.substr(0, Sep);
  const AnsiString Fraction = Sep < S.size() ? S.substr(Sep + 1) : AnsiString();
  if (int(Fraction.size()) > Decimals || !IsDigits(Fraction)) TimeTextError();
  int64_t Thousandths = TimePart(Whole) * 1000;
  int64_t Scale = 100;
  for (char C : Fraction) {
    Thousandths += (C - '0') * Scale;
    Scale /= 10;
  }
  return Thousandths;
}

TDateTime PeriodStart(TDateTime DT, TKxDatePeriod Period) {
  uint16_t Year, Month, Day;
  DecodeDate(DT, Year, Month, Day);
  switch (Period) {
  case dpYear:
    return StartOfTheYear(DT);
  case dpHalfYear:
    return EncodeDate(Year, Month <= 6 ? 1 : 7, 1);
  case dpQuarter:
    return EncodeDate(Year, uint16_t((Month - 1) / 3 * 3 + 1), 1);
  case dpFourWeeks: {
    uint16_t WeekYear;
    const uint16_t Week = WeekOfTheYear(DT, WeekYear);
    return EncodeDateWeek(WeekYear, uint16_t((Week - 1) / 4 * 4 + 1));
  }
  case dpMonth:
    return StartOfTheMonth(DT);
  case dpWeek:
    return StartOfTheWeek(DT);
  case dpDay:
    return StartOfTheDay(DT);
  default:
    return DT;
  }
}

} // namespace

TDateTime KxClosestWeekDay(TDateTime DT, TKxWorkDayAdjustment Adjustment) {
  if (double(DT) <= 0) return DT;
  const int32_t Dow = DayOfWeek(DT);
  const int32_t Offset = Adjustment == wdNext ? NextWorkDayOffset[Dow] : LastWorkDayOffset[Dow];
  return TDateTime(double(DT) + Offset);
}

AnsiString KxTimeToStr(double Seconds, bool WithSeconds) {
  // nearbyint rounds halves to even in the default rounding mode.
  const double Rounded = std::nearbyint(std::fabs(Seconds));
  if (!(Rounded < 9.2e18)) throw EConvertError(SKxDecodeTimeError);
  const int64_t S = int64_t(Rounded);
  const char Sep = FormatSettings().TimeSeparator;
  char Buffer[48];
  const int N =
      WithSeconds
          ? std::snprintf(Buffer, sizeof Buffer, "%s%lld%c%02d%c%02d", Seconds < 0 ? "-" : "",
                          (long long)(S / 3600), Sep, int(S % 3600 / 60), Sep, int(S % 60))
          : std::snprintf(Buffer, sizeof Buffer, "%s%lld%c%02d", Seconds < 0 ? "-" : "",
                          (long long)(S / 3600), Sep, int(S % 3600 / 60));
  return AnsiString(Buffer, size_t(N));
}

AnsiString KxShortDateFormatY2k() {
  AnsiString Format = FormatSettings().ShortDateFormat;
  while (LowerCase(Format).find("yyyy") == AnsiString::npos) {
    const size_t First = LowerCase(Format).find('y');
    Format.insert(First == AnsiString::npos ? 0 : First, 1, 'y');
  }
  return Format;
}

AnsiString ConvertDateTimeToLUO(TDateTime DT) {
  uint16_t Year, Month, Day, Hour, Min, Sec, MSec;
  DecodeDateTime(DT, Year, Month, Day, Hour, Min, Sec, MSec);
  const AnsiString Name = Copy(AnsiString(SKxMonthNames), 3 * int64_t(Month) - 2, 3);
  const unsigned Hour12 = Hour == 0 ? 12 : Hour > 12 ? Hour - 12 : Hour;
  char Buffer[64];
  const int N = std::snprintf(Buffer, sizeof Buffer, "%s %2u %4u %2u:%02u:%02u:%03u%s",
                              Name.c_str(), unsigned(Day), unsigned(Year), Hour12, unsigned(Min),
                              unsigned(Sec), unsigned(MSec), Hour >= 12 ? "PM" : "AM");
  return AnsiString(Buffer, size_t(N));
}

TDateTime ConvertLUOToDateTime(const AnsiString& S) {
  const int64_t NamePos = Pos(UpperCase(Copy(S, 1, 3)), AnsiString(SKxMonthNames));
  const int32_t Month = int32_t((NamePos + 2) / 3);
  const int32_t Day = StrToInt(Trim(Copy(S, 5, 2)));
  const int32_t Year = StrToInt(Trim(Copy(S, 8, 4)));
  int32_t Hour = StrToInt(Trim(Copy(S, 13, 2)));
  const int32_t Min = StrToInt(Copy(S, 16, 2));
  const int32_t Sec = StrToInt(Copy(S, 19, 2));
  const int32_t MSec = StrToInt(Copy(S, 22, 3));
  // The mark stands directly behind the milliseconds, the text's last two characters.
  const AnsiString Mark = UpperCase(Copy(S, int64_t(S.size()) - 1, 2));
  if (Hour == 12 && Mark == "AM")
    Hour = 0;
  else if (Hour != 12 && Mark == "PM")
    Hour += 12;
  // The encoders take 16-bit fields: a value outside them must fail, not wrap into range.
  auto Field = [](int32_t V) { return V < 0 || V > 0xFFFF ? uint16_t(0xFFFF) : uint16_t(V); };
  const double Date = EncodeDate(Field(Year), Field(Month), Field(Day));
  return Date + double(EncodeTime(Field(Hour), Field(Min), Field(Sec), Field(MSec)));
}

int32_t KxStrToTimeToInt(const AnsiString& S, bool AllowNegative, TKxTimeRange Range,
                         TKxTimeFormat Format) {
  if (Format > tfDecMinM2 || Range > trEndTime) throw EConvertError(SKxDecodeTimeError);
  AnsiString Text = Trim(S);
  const bool Negative = !Text.empty() && Text[0] == '-';
  if (Negative) {
    if (!AllowNegative) TimeTextError();
    Text = Trim(Text.substr(1));
  }
  int64_t Seconds = 0;
  int64_t Hours = 0;
  bool EndOfDay = false;
  if (Format == tfDecHourM2 || Format == tfDecHourM3 || Format == tfDecMinM2) {
    const int64_t Thousandths = DecimalThousandths(Text, Format == tfDecHourM3 ? 3 : 2);
    const int64_t Unit = Format == tfDecMinM2 ? SecsPerMin : SecsPerMin * MinsPerHour;
    // Whole seconds, halves up.
    Seconds = (Thousandths * Unit + 500) / 1000;
    Hours = Seconds / 3600;
    EndOfDay = Seconds == SecsPerDay;
  } else {
    AnsiString Parts[3];
    int Count = 0;
    size_t Start = 0;
    for (size_t I = 0; I <= Text.size(); ++I) {
      if (I < Text.size() && !IsTimeSeparator(Text[I])) continue;
      const int MaxParts = Format == tfHourMin ? 2 : 3;
      if (Count == MaxParts) TimeTextError();
      Parts[Count++] = Text.substr(Start, I - Start);
      Start = I + 1;
    }
    Hours = TimePart(Parts[0]);
    const int64_t Minutes = TimePart(Parts[1]);
    const int64_t Secs = TimePart(Parts[2]);
    if (Minutes > 59) throw EConvertError(kx::Format(SKxValueBetween0And59, {Parts[1]}));
    if (Secs > 59) throw EConvertError(SKxInvalidSeconds);
    Seconds = Hours * 3600 + Minutes * 60 + Secs;
    EndOfDay = Hours == 24 && Minutes == 0 && Secs == 0;
  }
  switch (Range) {
  case trPointOfTime:
    if (Hours > 23) TimeTextError();
    break;
  case trEndTime:
    // "24" is the end of the day, and nothing may follow it.
    if (Hours > 24 || (Hours == 24 && !EndOfDay)) TimeTextError();
    break;
  default:
    if (Seconds > INT32_MAX) TimeTextError();
    break;
  }
  return int32_t(Negative ? -Seconds : Seconds);
}

// --- periods, weeks and steps ------------------------------------------------------------

TDateTime KxBOMonth(TDateTime DT) {
  return StartOfTheMonth(DT);
}
TDateTime KxEOMonth(TDateTime DT) {
  return EndOfTheMonth(DT);
}
TDateTime KxBOWeek(TDateTime DT) {
  return StartOfTheWeek(DT);
}
TDateTime KxEOWeek(TDateTime DT) {
  return EndOfTheWeek(DT);
}
TDateTime KxBOYear(TDateTime DT) {
  return StartOfTheYear(DT);
}
TDateTime KxEOYear(TDateTime DT) {
  return EndOfTheYear(DT);
}

TDateTime KxBOPeriod(TDateTime DT, TKxDatePeriod Period) {
  return PeriodStart(DT, Period);
}

TDateTime KxEOPeriod(TDateTime DT, TKxDatePeriod Period) {
  const TDateTime Start = PeriodStart(DT, Period);
  switch (Period) {
  case dpYear:
    return EndOfTheYear(DT);
  case dpHalfYear:
    return IncMilliSecond(IncMonth(Start, 6), -1);
  case dpQuarter:
    return IncMilliSecond(IncMonth(Start, 3), -1);
  case dpFourWeeks: {
    // The last block of a week-year may be shorter: it ends with the year's last week.
    uint16_t WeekYear;
    WeekOfTheYear(DT, WeekYear);
    const TDateTime Next = IncWeek(Start, 4);
    const TDateTime YearEnd = EncodeDateWeek(WeekYear, WeeksInAYear(WeekYear), 7);
    return std::min(double(IncMilliSecond(Next, -1)), double(EndOfTheDay(YearEnd)));
  }
  case dpMonth:
    return EndOfTheMonth(DT);
  case dpWeek:
    return EndOfTheWeek(DT);
  case dpDay:
    return EndOfTheDay(DT);
  default:
    return DT;
  }
}

TDateTime KxAddYears(TDateTime DT, int32_t Years) {
  return IncYear(DT, Years);
}
TDateTime KxAddMonths(TDateTime DT, int32_t Months) {
  return IncMonth(DT, Months);
}
TDateTime KxAddWeeks(TDateTime DT, int32_t Weeks) {
  return IncWeek(DT, Weeks);
}
TDateTime KxAddDays(TDateTime DT, int32_t Days) {
  return IncDay(DT, Days);
}
TDateTime KxAddHours(TDateTime DT, int64_t Hours) {
  return IncHour(DT, Hours);
}
TDateTime KxAddMinutes(TDateTime DT, int64_t Minutes) {
  return IncMinute(DT, Minutes);
}
TDateTime KxAddSecs(TDateTime DT, int64_t Seconds) {
  return IncSecond(DT, Seconds);
}
TDateTime KxAddMSecs(TDateTime DT, int64_t MSecs) {
  return IncMilliSecond(DT, MSecs);
}

uint16_t KxDaysInMonth(TDateTime DT) {
  return DaysInMonth(DT);
}
uint16_t KxDaysInYear(TDateTime DT) {
  return DaysInYear(DT);
}
uint16_t KxDayOfYear(TDateTime DT) {
  return DayOfTheYear(DT);
}

int32_t KxWeekOfYear(TDateTime DT, TKxWeekFormat Format) {
  uint16_t WeekYear;
  const uint16_t Week = WeekOfTheYear(DT, WeekYear);
  return Format == wfYearWeek ? int32_t(WeekYear) * 100 + Week : Week;
}

TDateTime KxFirstThursdayOfYear(uint16_t Year) {
  const TDateTime First = EncodeDate(Year, 1, 1);
  // DayOfTheWeek: 1 = Monday, so Thursday is 4.
  return TDateTime(double(First) + (4 - DayOfTheWeek(First) + 7) % 7);
}

TDateTime KxWeekToDate(uint16_t Year, uint16_t Week) {
  return EncodeDateWeek(Year, Week, 1);
}

int32_t KxDecodeDate(TDateTime DT, TKxDecodeType DecodeType) {
  uint16_t Year, Month, Day;
  DecodeDate(DT, Year, Month, Day);
  switch (DecodeType) {
  case dtYear:
    return Year;
  case dtMonth:
    return Month;
  case dtDayOfYear:
    return DayOfTheYear(DT);
  default:
    return Day;
  }
}

int32_t KxDateCompare(TDateTime A, TDateTime B) {
  const TTimeStamp SA = DateTimeToTimeStamp(A), SB = DateTimeToTimeStamp(B);
  return SA.Date < SB.Date ? -1 : SA.Date > SB.Date ? 1 : 0;
}

TDateTime KxRoundTime(TDateTime DT, int32_t Minutes) {
  if (Minutes <= 0) return DT;
  const TTimeStamp S = DateTimeToTimeStamp(DT);
  const int64_t Step = int64_t(Minutes) * SecsPerMin * MSecsPerSec;
  const int64_t Rounded = (int64_t(S.Time) + Step / 2) / Step * Step;
  // A rounding past midnight moves to the next day.
  return IncMilliSecond(TimeStampToDateTime({0, S.Date}), Rounded);
}

void KxCalculateAge(TDateTime BirthDate, TDateTime ADate, int32_t& Years, int32_t& Months,
                    int32_t& Days) {
  Years = Months = Days = 0;
  uint16_t BY, BM, BD, AY, AM, AD;
  DecodeDate(BirthDate, BY, BM, BD);
  DecodeDate(ADate, AY, AM, AD);
  int32_t TotalMonths = (int32_t(AY) - BY) * 12 + (int32_t(AM) - BM);
  int32_t DayDiff = int32_t(AD) - BD;
  if (DayDiff < 0) {
    // Borrow the month before ADate's month.
    --TotalMonths;
    const uint16_t PrevMonth = AM == 1 ? 12 : uint16_t(AM - 1);
    const uint16_t PrevYear = AM == 1 ? uint16_t(AY - 1) : AY;
    DayDiff += std::max<int32_t>(DaysInAMonth(PrevYear, PrevMonth), BD);
  }
  if (TotalMonths < 0) return;
  Years = TotalMonths / 12;
  Months = TotalMonths % 12;
  Days = DayDiff;
}

TDateTime KxEncodeDuration(int32_t Hours, int32_t Minutes, int32_t Seconds, int32_t MSecs) {
  const int64_t Total =
      ((int64_t(Hours) * MinsPerHour + Minutes) * SecsPerMin + Seconds) * MSecsPerSec + MSecs;
  return TDateTime(double(Total) / MSecsPerDay);
}

} // namespace kx
