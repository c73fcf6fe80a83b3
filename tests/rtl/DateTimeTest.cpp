// SPDX-License-Identifier: MIT
// Date-time encoding, decoding, the calendar and the clock, checked against std::chrono's
// proleptic Gregorian calendar.
#include <kx/rtl/DateTime.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>

using namespace kx;
namespace chr = std::chrono;

namespace {

// 30 December 1899 as std::chrono counts days.
const chr::sys_days Epoch = chr::sys_days(chr::year(1899) / chr::December / 30);

int64_t ChronoSerial(int Y, unsigned M, unsigned D) {
  return (chr::sys_days(chr::year(Y) / chr::month(M) / chr::day(D)) - Epoch).count();
}

struct TFields {
  uint16_t Y, M, D, H, N, S, Z;
};

TFields Decoded(TDateTime V) {
  TFields F;
  DecodeDateTime(V, F.Y, F.M, F.D, F.H, F.N, F.S, F.Z);
  return F;
}

void ExpectFields(TDateTime V, TFields E) {
  TFields F = Decoded(V);
  EXPECT_EQ(F.Y, E.Y) << double(V);
  EXPECT_EQ(F.M, E.M) << double(V);
  EXPECT_EQ(F.D, E.D) << double(V);
  EXPECT_EQ(F.H, E.H) << double(V);
  EXPECT_EQ(F.N, E.N) << double(V);
  EXPECT_EQ(F.S, E.S) << double(V);
  EXPECT_EQ(F.Z, E.Z) << double(V);
}

// Every day of a span, then every 37th day over the rest of years 1 to 9999.
template <class F>
void ForDays(F Check) {
  auto Visit = [&](chr::sys_days Day) {
    chr::year_month_day Ymd(Day);
    Check(int(Ymd.year()), unsigned(Ymd.month()), unsigned(Ymd.day()), Day);
  };
  const chr::sys_days First = chr::sys_days(chr::year(1) / 1 / 1);
  const chr::sys_days Last = chr::sys_days(chr::year(9999) / 12 / 31);
  const chr::sys_days DenseFrom = chr::sys_days(chr::year(1895) / 1 / 1);
  const chr::sys_days DenseTo = chr::sys_days(chr::year(2105) / 1 / 1);
  for (chr::sys_days D = First; D <= Last; D += chr::days(D >= DenseFrom && D < DenseTo ? 1 : 37))
    Visit(D);
  Visit(Last);
}

} // namespace

TEST(DateTimeEncoding, DaysAgreeWithTheGregorianCalendar) {
  ForDays([](int Y, unsigned M, unsigned D, chr::sys_days Day) {
    const int64_t Serial = (Day - Epoch).count();
    TDateTime V;
    ASSERT_TRUE(TryEncodeDate(uint16_t(Y), uint16_t(M), uint16_t(D), V)) << Y << "-" << M;
    ASSERT_EQ(double(V), double(Serial)) << Y << "-" << M << "-" << D;
    uint16_t DY, DM, DD, DOW;
    const bool Leap = DecodeDateFully(V, DY, DM, DD, DOW);
    ASSERT_EQ(DY, Y);
    ASSERT_EQ(DM, M);
    ASSERT_EQ(DD, D);
    ASSERT_EQ(Leap, chr::year(Y).is_leap());
    // 1 = Sunday for DayOfWeek, 1 = Monday for the ISO day.
    const unsigned Weekday = chr::weekday(Day).c_encoding();
    ASSERT_EQ(DOW, Weekday + 1);
    ASSERT_EQ(DayOfWeek(V), int32_t(Weekday + 1));
    ASSERT_EQ(DayOfTheWeek(V), chr::weekday(Day).iso_encoding());
    ASSERT_EQ(DayOfTheYear(V), (Day - chr::sys_days(chr::year(Y) / 1 / 1)).count() + 1);
  });
}

TEST(DateTimeEncoding, KnownDaysAndTimes) {
  EXPECT_EQ(double(EncodeDate(1899, 12, 30)), 0.0);
  EXPECT_EQ(double(EncodeDate(1900, 1, 1)), 2.0);
  EXPECT_EQ(double(EncodeDate(2024, 1, 5)), 45296.0);
  EXPECT_EQ(double(EncodeDate(1, 1, 1)), -693593.0);
  EXPECT_EQ(double(EncodeTime(12, 0, 0, 0)), 0.5);
  EXPECT_EQ(double(EncodeTime(6, 0, 0, 0)), 0.25);
  ExpectFields(EncodeDateTime(2024, 1, 5, 9, 3, 7, 45), {2024, 1, 5, 9, 3, 7, 45});
  ExpectFields(EncodeDateTime(9999, 12, 31, 23, 59, 59, 999), {9999, 12, 31, 23, 59, 59, 999});
  EXPECT_EQ(ChronoSerial(2024, 1, 5), 45296);
}

TEST(DateTimeEncoding, BeforeTheEpochTheTimeRunsForwardFromTheDay) {
  EXPECT_EQ(double(EncodeDateTime(1899, 12, 29, 6, 0, 0, 0)), -1.25);
  ExpectFields(-1.25, {1899, 12, 29, 6, 0, 0, 0});
  // The day of a value in (-1, 0) is the epoch itself.
  ExpectFields(-0.5, {1899, 12, 30, 12, 0, 0, 0});
  ExpectFields(-693593.75, {1, 1, 1, 18, 0, 0, 0});
  TSystemTime St{1800, 7, 0, 14, 17, 30, 15, 250};
  ExpectFields(SystemTimeToDateTime(St), {1800, 7, 14, 17, 30, 15, 250});
  TSystemTime Back{};
  DateTimeToSystemTime(SystemTimeToDateTime(St), Back);
  EXPECT_EQ(Back.wDayOfWeek, 1); // a Monday, counted from 0 = Sunday
  EXPECT_EQ(Back.wMilliseconds, 250);
  // Before 1 January 0001 there is no date.
  ExpectFields(-693594.5, {0, 0, 0, 12, 0, 0, 0});
}

TEST(DateTimeEncoding, ImpossibleComponentsAreRefused) {
  TDateTime V = 7;
  struct {
    uint16_t Y, M, D;
  } BadDates[] = {{2023, 2, 29}, {1900, 2, 29}, {0, 1, 1},     {10000, 1, 1},
                  {2024, 0, 1},  {2024, 13, 1}, {2024, 4, 31}, {2024, 1, 0}};
  for (auto B : BadDates) {
    EXPECT_FALSE(TryEncodeDate(B.Y, B.M, B.D, V)) << B.Y << "-" << B.M << "-" << B.D;
    EXPECT_EQ(double(V), 7.0);
    try {
      EncodeDate(B.Y, B.M, B.D);
      ADD_FAILURE() << B.Y;
    } catch (const EConvertError& E) {
      EXPECT_EQ(E.Message(), "Invalid argument to date encode");
    }
  }
  EXPECT_TRUE(TryEncodeDate(2000, 2, 29, V));
  struct {
    uint16_t H, N, S, Z;
  } BadTimes[] = {{24, 0, 0, 0}, {0, 60, 0, 0}, {0, 0, 60, 0}, {0, 0, 0, 1000}, {65535, 0, 0, 0}};
  for (auto B : BadTimes) {
    EXPECT_FALSE(TryEncodeTime(B.H, B.N, B.S, B.Z, V));
    EXPECT_THROW(EncodeTime(B.H, B.N, B.S, B.Z), EConvertError);
  }
  try {
    EncodeDateTime(2024, 13, 1, 10, 0, 0, 0);
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "'2024/13/1 10:0:0.0' is not a valid date and time");
  }
}

TEST(DateTimeDecoding, RoundsToTheNearestMillisecondAcrossMidnight) {
  const double OneMs = 1.0 / MSecsPerDay;
  const TDateTime Last = EncodeDateTime(2024, 12, 31, 23, 59, 59, 999);
  ExpectFields(Last + 0.4 * OneMs, {2024, 12, 31, 23, 59, 59, 999});
  ExpectFields(Last + 0.6 * OneMs, {2025, 1, 1, 0, 0, 0, 0});
  ExpectFields(EncodeDate(2024, 3, 1) - 0.3 * OneMs, {2024, 3, 1, 0, 0, 0, 0});
  // Every millisecond of a day survives the trip through the double.
  for (int32_t Ms = 0; Ms < MSecsPerDay; Ms += 997) {
    TTimeStamp Ts = DateTimeToTimeStamp(EncodeDate(2024, 5, 6) + double(Ms) / MSecsPerDay);
    ASSERT_EQ(Ts.Time, Ms);
    ASSERT_EQ(Ts.Date, 739012); // days since 0001-01-01, plus one
  }
}

TEST(DateTimeDecoding, NonNumbersAreInvalidOperations) {
  uint16_t Y, M, D;
  for (double Bad : {std::numeric_limits<double>::quiet_NaN(),
                     std::numeric_limits<double>::infinity(), -1e300, 2e14}) {
    EXPECT_THROW(DecodeDate(Bad, Y, M, D), EInvalidOp) << Bad;
    EXPECT_THROW(DayOfWeek(Bad), EInvalidOp) << Bad;
  }
  EXPECT_THROW(IncDay(1.06e11, 2000000000), EInvalidOp);
  EXPECT_THROW(IncMilliSecond(45000, std::numeric_limits<int64_t>::max()), EInvalidOp);
  EXPECT_THROW(IncHour(45000, std::numeric_limits<int64_t>::max() / 1000), EInvalidOp);
}

TEST(Calendar, LeapYearsAndMonthLengths) {
  EXPECT_TRUE(IsLeapYear(2000));
  EXPECT_TRUE(IsLeapYear(2024));
  EXPECT_FALSE(IsLeapYear(1900));
  EXPECT_FALSE(IsLeapYear(2023));
  EXPECT_EQ(DaysInAMonth(2024, 2), 29);
  EXPECT_EQ(DaysInAMonth(2100, 2), 28);
  EXPECT_EQ(DaysInAMonth(2024, 13), 0);
  EXPECT_EQ(DaysInAYear(2024), 366);
  EXPECT_EQ(DaysInMonth(EncodeDate(2023, 4, 10)), 30);
  EXPECT_EQ(DaysInYear(EncodeDate(1900, 6, 1)), 365);
}

TEST(Calendar, IsoWeeks) {
  uint16_t Year;
  EXPECT_EQ(WeekOfTheYear(EncodeDate(2021, 1, 3), Year), 53);
  EXPECT_EQ(Year, 2020);
  EXPECT_EQ(WeekOfTheYear(EncodeDate(2024, 12, 30), Year), 1);
  EXPECT_EQ(Year, 2025);
  EXPECT_EQ(WeekOfTheYear(EncodeDate(2026, 12, 31), Year), 53);
  EXPECT_EQ(Year, 2026);
  EXPECT_EQ(WeekOfTheYear(EncodeDate(2024, 1, 1)), 1);
  EXPECT_EQ(WeeksInAYear(2020), 53); // a leap year starting on a Wednesday
  EXPECT_EQ(WeeksInAYear(2021), 52);
  // Every day of every week comes back to its week and year.
  for (uint16_t Y = 1990; Y <= 2040; ++Y) {
    for (uint16_t W = 1; W <= WeeksInAYear(Y); ++W) {
      for (uint16_t Dow = 1; Dow <= 7; ++Dow) {
        const TDateTime V = EncodeDateWeek(Y, W, Dow);
        ASSERT_EQ(WeekOfTheYear(V, Year), W);
        ASSERT_EQ(Year, Y);
        ASSERT_EQ(DayOfTheWeek(V), Dow);
      }
    }
    EXPECT_THROW(EncodeDateWeek(Y, uint16_t(WeeksInAYear(Y) + 1)), EConvertError);
  }
}

TEST(Calendar, PeriodBoundaries) {
  const TDateTime V = EncodeDateTime(2024, 2, 14, 15, 30, 0, 0); // a Wednesday
  ExpectFields(StartOfTheYear(V), {2024, 1, 1, 0, 0, 0, 0});
  ExpectFields(EndOfTheYear(V), {2024, 12, 31, 23, 59, 59, 999});
  ExpectFields(StartOfTheMonth(V), {2024, 2, 1, 0, 0, 0, 0});
  ExpectFields(EndOfTheMonth(V), {2024, 2, 29, 23, 59, 59, 999});
  ExpectFields(StartOfTheWeek(V), {2024, 2, 12, 0, 0, 0, 0});
  ExpectFields(EndOfTheWeek(V), {2024, 2, 18, 23, 59, 59, 999});
  ExpectFields(StartOfTheDay(V), {2024, 2, 14, 0, 0, 0, 0});
  ExpectFields(EndOfTheDay(V), {2024, 2, 14, 23, 59, 59, 999});
  // Before the epoch too.
  ExpectFields(EndOfTheDay(-1.25), {1899, 12, 29, 23, 59, 59, 999});
  ExpectFields(StartOfTheWeek(-1.25), {1899, 12, 25, 0, 0, 0, 0});
  EXPECT_EQ(YearOf(V), 2024);
  EXPECT_EQ(MonthOf(V), 2);
  EXPECT_EQ(DayOf(V), 14);
  EXPECT_EQ(double(DateOf(V)), double(EncodeDate(2024, 2, 14)));
  EXPECT_NEAR(double(TimeOf(V)), 15.5 / 24, 1e-9);
}

TEST(Calendar, MonthsKeepTheDayWhereTheMonthHasIt) {
  const TDateTime Jan31 = EncodeDateTime(2024, 1, 31, 8, 15, 0, 0);
  ExpectFields(IncMonth(Jan31), {2024, 2, 29, 8, 15, 0, 0});
  ExpectFields(IncMonth(Jan31, 13), {2025, 2, 28, 8, 15, 0, 0});
  ExpectFields(IncMonth(Jan31, -1), {2023, 12, 31, 8, 15, 0, 0});
  ExpectFields(IncMonth(Jan31, -14), {2022, 11, 30, 8, 15, 0, 0});
  ExpectFields(IncYear(EncodeDate(2024, 2, 29)), {2025, 2, 28, 0, 0, 0, 0});
  ExpectFields(IncMonth(-1.25, 1), {1900, 1, 29, 6, 0, 0, 0});
  EXPECT_THROW(IncMonth(EncodeDate(9999, 12, 1)), EConvertError);
  EXPECT_THROW(IncYear(EncodeDate(1, 1, 1), -1), EConvertError);
  EXPECT_THROW(IncYear(Jan31, std::numeric_limits<int32_t>::max()), EConvertError);
  uint16_t Y = 2024, M = 3, D = 31;
  IncAMonth(Y, M, D, -1);
  EXPECT_EQ(Y, 2024);
  EXPECT_EQ(M, 2);
  EXPECT_EQ(D, 29);
  IncAMonth(Y, M, D, -26);
  EXPECT_EQ(Y, 2021);
  EXPECT_EQ(M, 12);
  EXPECT_EQ(D, 29);
}

TEST(Calendar, SmallerStepsMoveTheRightWayBeforeTheEpoch) {
  // 29 December 1899 06:00 is -1.25; adding to the double would turn the time backwards.
  ExpectFields(IncHour(-1.25, 20), {1899, 12, 30, 2, 0, 0, 0});
  ExpectFields(IncDay(-1.25, 2), {1899, 12, 31, 6, 0, 0, 0});
  ExpectFields(IncMinute(-1.25, -361), {1899, 12, 28, 23, 59, 0, 0});
  ExpectFields(IncSecond(EncodeDate(2024, 1, 1), -1), {2023, 12, 31, 23, 59, 59, 0});
  ExpectFields(IncMilliSecond(EncodeDate(2024, 1, 1), 86400001), {2024, 1, 2, 0, 0, 0, 1});
  ExpectFields(IncWeek(EncodeDate(2024, 12, 30), -1), {2024, 12, 23, 0, 0, 0, 0});
  TDateTime V = EncodeDateTime(2024, 1, 5, 10, 0, 0, 0);
  ReplaceTime(V, EncodeTime(18, 30, 0, 0));
  ExpectFields(V, {2024, 1, 5, 18, 30, 0, 0});
  ReplaceDate(V, EncodeDate(1899, 12, 1));
  ExpectFields(V, {1899, 12, 1, 18, 30, 0, 0});
}

TEST(Calendar, UnixSecondsFollowTheCalendar) {
  EXPECT_EQ(double(UnixToDateTime(0)), double(UnixDateDelta));
  EXPECT_EQ(DateTimeToUnix(EncodeDate(1970, 1, 1)), 0);
  EXPECT_EQ(DateTimeToUnix(EncodeDateTime(2024, 1, 5, 9, 3, 7, 0)), 1704445387);
  ExpectFields(UnixToDateTime(-int64_t(UnixDateDelta + 1) * SecsPerDay + 6 * 3600),
               {1899, 12, 29, 6, 0, 0, 0});
  for (int64_t S : {int64_t(-62135596800), int64_t(-2209161601), int64_t(-1), int64_t(951782399),
                    int64_t(253402300799)})
    EXPECT_EQ(DateTimeToUnix(UnixToDateTime(S)), S) << S;
}

TEST(Clock, NowIsTodayPlusTheTimeOfDay) {
  // Retried when the calls straddle a millisecond or midnight.
  for (int Try = 0; Try < 5; ++Try) {
    const TDateTime D = Date(), N = Now(), T = Time();
    if (double(D) != std::floor(double(N))) continue;
    EXPECT_GE(double(T), double(N) - double(D) - 1e-9);
    EXPECT_LT(double(T) - (double(N) - double(D)), 1.0 / SecsPerDay);
    EXPECT_EQ(CurrentYear(), YearOf(N));
    return;
  }
  FAIL() << "the clock never stood still long enough";
}
