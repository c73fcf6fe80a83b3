// SPDX-License-Identifier: MIT
#include <kx/rtl/FormatSettings.h>
#include <kx/uKxDateTimeUtils.h>

#include <gtest/gtest.h>

#include <cmath>

using namespace kx;

namespace {

// Restores the process's format settings after a test changed them.
class TSettingsGuard {
public:
  TSettingsGuard() : FSaved(FormatSettings()) {}
  ~TSettingsGuard() { FormatSettings() = FSaved; }

private:
  TFormatSettings FSaved;
};

} // namespace

TEST(WorkDays, WeekendsMoveToFridayOrMonday) {
  const TDateTime Saturday = EncodeDateTime(2024, 1, 6, 15, 30, 0, 0);
  const TDateTime Sunday = EncodeDateTime(2024, 1, 7, 8, 0, 0, 0);
  EXPECT_EQ(KxDateTimeToISOStr(KxClosestWeekDay(Saturday, wdNext), false), "2024-01-08T15:30:00");
  EXPECT_EQ(KxDateTimeToISOStr(KxClosestWeekDay(Saturday, wdLast), false), "2024-01-05T15:30:00");
  EXPECT_EQ(KxDateTimeToISOStr(KxClosestWeekDay(Sunday, wdNext), false), "2024-01-08T08:00:00");
  EXPECT_EQ(KxDateTimeToISOStr(KxClosestWeekDay(Sunday, wdLast), false), "2024-01-05T08:00:00");
  for (int Day = 8; Day <= 12; ++Day) {
    const TDateTime WorkDay = EncodeDate(2024, 1, uint16_t(Day));
    EXPECT_EQ(double(KxClosestWeekDay(WorkDay, wdNext)), double(WorkDay));
    EXPECT_EQ(double(KxClosestWeekDay(WorkDay, wdLast)), double(WorkDay));
  }
  // Day zero was a Saturday; values of 0 and below are left alone.
  EXPECT_EQ(double(KxClosestWeekDay(0.0, wdNext)), 0.0);
  EXPECT_EQ(double(KxClosestWeekDay(-6.0, wdLast)), -6.0);
}

TEST(DurationText, RoundsToWholeSecondsWithTheLocaleSeparator) {
  TSettingsGuard Guard;
  FormatSettings().TimeSeparator = ':';
  EXPECT_EQ(KxTimeToStr(-90, false), "-0:01");
  EXPECT_EQ(KxTimeToStr(3599.5, true), "1:00:00");
  EXPECT_EQ(KxTimeToStr(100000, false), "27:46");
  EXPECT_EQ(KxTimeToStr(100000, true), "27:46:40");
  // Ties go to the even second.
  EXPECT_EQ(KxTimeToStr(0.5, true), "0:00:00");
  EXPECT_EQ(KxTimeToStr(1.5, true), "0:00:02");
  FormatSettings().TimeSeparator = '.';
  EXPECT_EQ(KxTimeToStr(3725, true), "1.02.05");
  EXPECT_THROW(KxTimeToStr(std::nan(""), true), EConvertError);
}

TEST(ShortDateFormatY2k, WidensTheYearToFourDigits) {
  TSettingsGuard Guard;
  FormatSettings().ShortDateFormat = "dd.MM.yy";
  EXPECT_EQ(KxShortDateFormatY2k(), "dd.MM.yyyy");
  FormatSettings().ShortDateFormat = "M/d/yyyy";
  EXPECT_EQ(KxShortDateFormatY2k(), "M/d/yyyy");
  FormatSettings().ShortDateFormat = "YY-MM-dd";
  EXPECT_EQ(KxShortDateFormatY2k(), "yyYY-MM-dd");
  FormatSettings().ShortDateFormat = "dd.MM.";
  EXPECT_EQ(KxShortDateFormatY2k(), "yyyydd.MM.");
}

TEST(LUO, BothWays) {
  const TDateTime Afternoon = EncodeDateTime(2024, 1, 5, 14, 5, 7, 45);
  EXPECT_EQ(ConvertDateTimeToLUO(Afternoon), "JAN  5 2024  2:05:07:045PM");
  EXPECT_EQ(ConvertDateTimeToLUO(EncodeDate(2024, 12, 25)), "DEC 25 2024 12:00:00:000AM");
  EXPECT_EQ(ConvertDateTimeToLUO(EncodeDateTime(999, 7, 31, 12, 59, 59, 999)),
            "JUL 31  999 12:59:59:999PM");
  EXPECT_EQ(ConvertDateTimeToLUO(EncodeDateTime(2024, 3, 1, 11, 0, 0, 0)),
            "MAR  1 2024 11:00:00:000AM");
  for (const TDateTime DT :
       {Afternoon, TDateTime(EncodeDate(2024, 12, 25)),
        EncodeDateTime(1900, 7, 31, 12, 59, 59, 999), EncodeDateTime(2024, 3, 1, 11, 0, 0, 0)}) {
    EXPECT_EQ(KxDateTimeToISOStr(ConvertLUOToDateTime(ConvertDateTimeToLUO(DT)), true),
              KxDateTimeToISOStr(DT, true));
  }
  // The month name in any case; the milliseconds field is cut to three characters.
  EXPECT_EQ(KxDateTimeToISOStr(ConvertLUOToDateTime("feb 29 2024 12:30:00:0051AM"), true),
            "2024-02-29T00:30:00.005");
  // The time is added to the day count, which before 1899-12-30 counts backwards.
  EXPECT_EQ(double(ConvertLUOToDateTime("DEC 29 1899  6:00:00:000AM")), -1.0 + 0.25);
  EXPECT_THROW(ConvertLUOToDateTime("XYZ  5 2024  2:05:07:045PM"), EConvertError);
  EXPECT_THROW(ConvertLUOToDateTime("FEB 30 2024  2:05:07:045PM"), EConvertError);
  EXPECT_THROW(ConvertLUOToDateTime("JAN  5 2024  2:65:07:045PM"), EConvertError);
  EXPECT_THROW(ConvertLUOToDateTime("JAN  5 2024"), EConvertError);
}

TEST(StrToTimeToInt, HoursMinutesAndSeconds) {
  TSettingsGuard Guard;
  FormatSettings().TimeSeparator = '.';
  EXPECT_EQ(KxStrToTimeToInt("1:30", false, trDuration, tfHourMin), 5400);
  EXPECT_EQ(KxStrToTimeToInt("1.30", false, trDuration, tfHourMin), 5400);
  EXPECT_EQ(KxStrToTimeToInt(" 2:03:04 ", false, trPointOfTime, tfHourMinSec), 7384);
  EXPECT_EQ(KxStrToTimeToInt("100:00", false, trDuration, tfNone), 360000);
  EXPECT_EQ(KxStrToTimeToInt(":45", false, trDuration, tfHourMin), 2700);
  EXPECT_EQ(KxStrToTimeToInt("", false, trDuration, tfHourMin), 0);
  EXPECT_EQ(KxStrToTimeToInt("-1:30", true, trDuration, tfHourMin), -5400);
  EXPECT_THROW(KxStrToTimeToInt("-1:30", false, trDuration, tfHourMin), EConvertError);
  EXPECT_THROW(KxStrToTimeToInt("1:30:00", false, trDuration, tfHourMin), EConvertError);
  EXPECT_THROW(KxStrToTimeToInt("1:3x", false, trDuration, tfHourMin), EConvertError);
}

TEST(StrToTimeToInt, RangesAndTheirMessages) {
  try {
    KxStrToTimeToInt("1:75", false, trDuration, tfHourMin);
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "The string '75' must contain a value between 0 and 59");
  }
  try {
    KxStrToTimeToInt("1:10:60", false, trDuration, tfHourMinSec);
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(),
              "Invalid time passed.\r\nThere are not more than 60 seconds in a minute.");
  }
  EXPECT_EQ(KxStrToTimeToInt("24:00", false, trEndTime, tfHourMin), 86400);
  EXPECT_EQ(KxStrToTimeToInt("24", false, trEndTime, tfHourMin), 86400);
  EXPECT_THROW(KxStrToTimeToInt("24:01", false, trEndTime, tfHourMin), EConvertError);
  EXPECT_THROW(KxStrToTimeToInt("24:00", false, trPointOfTime, tfHourMin), EConvertError);
  EXPECT_EQ(KxStrToTimeToInt("23:59", false, trPointOfTime, tfHourMin), 86340);
  EXPECT_EQ(KxStrToTimeToInt("48:00", false, trDuration, tfHourMin), 172800);
}

TEST(StrToTimeToInt, DecimalForms) {
  TSettingsGuard Guard;
  FormatSettings().DecimalSeparator = ',';
  EXPECT_EQ(KxStrToTimeToInt("1.25", false, trDuration, tfDecHourM2), 4500);
  EXPECT_EQ(KxStrToTimeToInt("1,5", false, trDuration, tfDecHourM2), 5400);
  EXPECT_EQ(KxStrToTimeToInt("0.001", false, trDuration, tfDecHourM3), 4);
  EXPECT_EQ(KxStrToTimeToInt("90.50", false, trDuration, tfDecMinM2), 5430);
  EXPECT_EQ(KxStrToTimeToInt("-0.5", true, trDuration, tfDecHourM2), -1800);
  EXPECT_EQ(KxStrToTimeToInt("24", false, trEndTime, tfDecHourM2), 86400);
  EXPECT_THROW(KxStrToTimeToInt("24.01", false, trEndTime, tfDecHourM2), EConvertError);
  EXPECT_THROW(KxStrToTimeToInt("1.255", false, trDuration, tfDecHourM2), EConvertError);
  EXPECT_THROW(KxStrToTimeToInt("1.2.5", false, trDuration, tfDecHourM3), EConvertError);
}

TEST(Periods, BoundsOfEachPeriod) {
  const TDateTime DT = EncodeDateTime(2024, 8, 14, 10, 0, 0, 0);
  auto Text = [](TDateTime V) { return KxDateTimeToISOStr(V, true); };
  EXPECT_EQ(Text(KxBOPeriod(DT, dpYear)), "2024-01-01T00:00:00.000");
  EXPECT_EQ(Text(KxEOPeriod(DT, dpYear)), "2024-12-31T23:59:59.999");
  EXPECT_EQ(Text(KxBOPeriod(DT, dpHalfYear)), "2024-07-01T00:00:00.000");
  EXPECT_EQ(Text(KxEOPeriod(DT, dpHalfYear)), "2024-12-31T23:59:59.999");
  EXPECT_EQ(Text(KxBOPeriod(DT, dpQuarter)), "2024-07-01T00:00:00.000");
  EXPECT_EQ(Text(KxEOPeriod(DT, dpQuarter)), "2024-09-30T23:59:59.999");
  EXPECT_EQ(Text(KxBOPeriod(DT, dpMonth)), "2024-08-01T00:00:00.000");
  EXPECT_EQ(Text(KxEOPeriod(DT, dpMonth)), "2024-08-31T23:59:59.999");
  // 14 August 2024 is in ISO week 33: the block of weeks 33 to 36.
  EXPECT_EQ(Text(KxBOPeriod(DT, dpFourWeeks)), "2024-08-12T00:00:00.000");
  EXPECT_EQ(Text(KxEOPeriod(DT, dpFourWeeks)), "2024-09-08T23:59:59.999");
  // The last block of 2020 (53 weeks) is week 53 alone.
  EXPECT_EQ(Text(KxEOPeriod(EncodeDate(2020, 12, 30), dpFourWeeks)), "2021-01-03T23:59:59.999");
  EXPECT_EQ(Text(KxBOPeriod(DT, dpWeek)), "2024-08-12T00:00:00.000");
  EXPECT_EQ(Text(KxEOPeriod(DT, dpWeek)), "2024-08-18T23:59:59.999");
  EXPECT_EQ(Text(KxBOPeriod(DT, dpDay)), "2024-08-14T00:00:00.000");
  EXPECT_EQ(Text(KxEOPeriod(DT, dpDay)), "2024-08-14T23:59:59.999");
  EXPECT_EQ(Text(KxBOPeriod(DT, dpNone)), Text(DT));
  EXPECT_EQ(Text(KxBOMonth(DT)), "2024-08-01T00:00:00.000");
  EXPECT_EQ(Text(KxEOWeek(DT)), "2024-08-18T23:59:59.999");
  EXPECT_EQ(Text(KxBOYear(DT)), "2024-01-01T00:00:00.000");
}

TEST(Weeks, IsoWeeksAndTheirYears) {
  EXPECT_EQ(KxWeekOfYear(EncodeDate(2021, 1, 3), wfYearWeek), 202053);
  EXPECT_EQ(KxWeekOfYear(EncodeDate(2021, 1, 3), wfWeek), 53);
  EXPECT_EQ(KxWeekOfYear(EncodeDate(2024, 12, 30), wfYearWeek), 202501);
  EXPECT_EQ(KxDateToISOStr(KxFirstThursdayOfYear(2024)), "2024-01-04");
  EXPECT_EQ(KxDateToISOStr(KxFirstThursdayOfYear(2026)), "2026-01-01");
  EXPECT_EQ(KxDateToISOStr(KxWeekToDate(2020, 53)), "2020-12-28");
  EXPECT_EQ(KxDateToISOStr(KxWeekToDate(2025, 1)), "2024-12-30");
  EXPECT_THROW(KxWeekToDate(2024, 53), EConvertError);
}

TEST(Calendar, PartsStepsAndComparisons) {
  const TDateTime DT = EncodeDateTime(2024, 3, 31, 22, 45, 0, 0);
  EXPECT_EQ(KxDecodeDate(DT, dtYear), 2024);
  EXPECT_EQ(KxDecodeDate(DT, dtMonth), 3);
  EXPECT_EQ(KxDecodeDate(DT, dtDayOfYear), 91);
  EXPECT_EQ(KxDecodeDate(DT, dtDayOfMonth), 31);
  EXPECT_EQ(KxDaysInMonth(DT), 31);
  EXPECT_EQ(KxDaysInYear(DT), 366);
  EXPECT_EQ(KxDayOfYear(DT), 91);
  EXPECT_EQ(KxDateTimeToISOStr(KxAddMonths(DT, 1), false), "2024-04-30T22:45:00");
  EXPECT_EQ(KxDateTimeToISOStr(KxAddYears(EncodeDate(2024, 2, 29), 1), false),
            "2025-02-28T00:00:00");
  EXPECT_EQ(KxDateTimeToISOStr(KxAddHours(DT, 2), false), "2024-04-01T00:45:00");
  EXPECT_EQ(KxDateTimeToISOStr(KxAddMSecs(DT, -1), true), "2024-03-31T22:44:59.999");
  EXPECT_EQ(KxDateTimeToISOStr(KxAddWeeks(DT, -1), false), "2024-03-24T22:45:00");
  EXPECT_EQ(KxDateCompare(DT, EncodeDate(2024, 3, 31)), 0);
  EXPECT_EQ(KxDateCompare(DT, EncodeDate(2024, 4, 1)), -1);
  EXPECT_EQ(KxDateCompare(EncodeDate(2024, 4, 1), DT), 1);
  EXPECT_EQ(KxDateTimeToISOStr(KxRoundTime(DT, 60), false), "2024-03-31T23:00:00");
  EXPECT_EQ(KxDateTimeToISOStr(KxRoundTime(EncodeDateTime(2024, 3, 31, 23, 50, 0, 0), 30), false),
            "2024-04-01T00:00:00");
  EXPECT_EQ(KxDateTimeToISOStr(KxRoundTime(DT, 0), false), "2024-03-31T22:45:00");
  EXPECT_DOUBLE_EQ(double(KxEncodeDuration(36, 30, 0, 0)), 1.5208333333333333);
  EXPECT_DOUBLE_EQ(double(KxEncodeDuration(1, -30, 0, 0)), 1.0 / 48);
}

TEST(Calendar, CalculateAge) {
  int32_t Y, M, D;
  KxCalculateAge(EncodeDate(1990, 6, 15), EncodeDate(2024, 8, 20), Y, M, D);
  EXPECT_EQ(Y * 10000 + M * 100 + D, 340205);
  KxCalculateAge(EncodeDate(1990, 6, 15), EncodeDate(2024, 6, 14), Y, M, D);
  EXPECT_EQ(Y * 10000 + M * 100 + D, 331130);
  KxCalculateAge(EncodeDate(2024, 6, 15), EncodeDate(2024, 6, 14), Y, M, D);
  EXPECT_EQ(Y * 10000 + M * 100 + D, 0);
}
