// SPDX-License-Identifier: MIT
#include <kx/classes/TextParser.h>
#include <kx/uKxDateTimeUtils.h>

#include "datetime/TimeZoneTestUtils.h"
#include "support/ExternalTool.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>

using namespace kx;

namespace {

void ExpectSameMoment(TDateTime Expected, TDateTime Actual) {
  const TTimeStamp A = DateTimeToTimeStamp(Expected), B = DateTimeToTimeStamp(Actual);
  EXPECT_EQ(A.Date, B.Date) << double(Expected) << " " << double(Actual);
  EXPECT_EQ(A.Time, B.Time) << double(Expected) << " " << double(Actual);
}

struct TFields {
  bool HasDate;
  uint16_t Year, Month, Day;
  bool HasTime;
  uint16_t Hour, Minute, Second, MSec;
  bool Negative;
  TKxTimeZoneFormat TimeZone;
  int16_t OffsetMinutes;
};

void ExpectRecord(const TFields& E, const TKxISODateTime& R) {
  EXPECT_EQ(R.HasDate, E.HasDate);
  EXPECT_EQ(R.Year, E.Year);
  EXPECT_EQ(R.Month, E.Month);
  EXPECT_EQ(R.Day, E.Day);
  EXPECT_EQ(R.HasTime, E.HasTime);
  EXPECT_EQ(R.Hour, E.Hour);
  EXPECT_EQ(R.Minute, E.Minute);
  EXPECT_EQ(R.Second, E.Second);
  EXPECT_EQ(R.MSec, E.MSec);
  EXPECT_EQ(R.Negative, E.Negative);
  EXPECT_EQ(R.TimeZone, E.TimeZone);
  EXPECT_EQ(R.OffsetMinutes, E.OffsetMinutes);
}

} // namespace

// --- writing -----------------------------------------------------------------------------------

TEST(ISOWrite, DateTimeWithAndWithoutMilliseconds) {
  const TDateTime DT = EncodeDateTime(2024, 1, 5, 9, 3, 7, 45);
  EXPECT_EQ(KxDateToISOStr(DT), "2024-01-05");
  EXPECT_EQ(KxDateTimeToISOStr(DT, true), "2024-01-05T09:03:07.045");
  EXPECT_EQ(KxDateTimeToISOStr(DT, false), "2024-01-05T09:03:07");
  EXPECT_EQ(KxDateTimeToISOStr(EncodeDateTime(99, 12, 31, 23, 59, 59, 999), true),
            "0099-12-31T23:59:59.999");
  EXPECT_EQ(KxDateTimeToISOStr(EncodeDate(9999, 12, 31), false), "9999-12-31T00:00:00");
  // Half a millisecond before midnight is the next day, date and time alike.
  EXPECT_EQ(KxDateTimeToISOStr(EncodeDate(2024, 2, 28) + 0.999999995, true),
            "2024-02-29T00:00:00.000");
  // Before day zero the fraction still runs forward from midnight.
  EXPECT_EQ(KxDateTimeToISOStr(-1.25, false), "1899-12-29T06:00:00");
}

TEST(ISOWrite, TimeAlwaysCarriesDayZero) {
  EXPECT_EQ(KxTimeToISOStr(0.5, false), "1899-12-30T12:00:00");
  EXPECT_EQ(KxTimeToISOStr(EncodeDateTime(2024, 1, 5, 9, 3, 7, 45), true),
            "1899-12-30T09:03:07.045");
}

// --- the structured decoder ----------------------------------------------------------------------

TEST(ISODecode, ComponentsAndZones) {
  ExpectRecord({true, 2024, 1, 5, true, 10, 20, 30, 500, false, tzfOffset, 120},
               KxDecodeISODateTime("2024-01-05T10:20:30.5+02:00"));
  ExpectRecord({false, 0, 0, 0, true, 10, 20, 0, 0, false, tzfNA, 0}, KxDecodeISODateTime("10:20"));
  ExpectRecord({true, 2024, 1, 5, false, 0, 0, 0, 0, true, tzfNA, 0},
               KxDecodeISODateTime("-2024-01-05"));
  ExpectRecord({true, 2024, 1, 5, true, 10, 20, 30, 0, false, tzfUTC, 0},
               KxDecodeISODateTime("20240105T10:20:30Z"));
  ExpectRecord({true, 2024, 12, 31, true, 23, 59, 58, 123, false, tzfOffset, -330},
               KxDecodeISODateTime("2024-12-31T23:59:58,123456-05:30"));
  ExpectRecord({true, 2024, 1, 5, false, 0, 0, 0, 0, false, tzfUTC, 0},
               KxDecodeISODateTime("2024-01-05Z"));
  ExpectRecord({true, 2024, 1, 5, true, 8, 0, 0, 0, false, tzfOffset, 60},
               KxDecodeISODateTime("2024-01-05T08:00+01:00"));
  EXPECT_EQ(KxDecodeISODateTime("10:20:30.25").MSec, 250);
  // Seconds and fractions are digit runs.
  EXPECT_EQ(KxDecodeISODateTime("10:20:5").Second, 5);
  EXPECT_EQ(KxDecodeISODateTime("10:20:").Second, 0);
}

TEST(ISODecode, WhatIsNotChecked) {
  // A "Z" straight after the minutes is taken for the seconds' separator.
  ExpectRecord({true, 2024, 1, 5, true, 10, 20, 0, 0, false, tzfNA, 0},
               KxDecodeISODateTime("2024-01-05T10:20Z"));
  // A separator is stepped over whatever it is, so a compact time is misread.
  ExpectRecord({true, 2024, 1, 5, true, 10, 3, 0, 0, false, tzfNA, 0},
               KxDecodeISODateTime("20240105T102030"));
  // Any character separates, fields are not range-checked, trailing text is ignored.
  ExpectRecord({true, 2024, 13, 45, true, 25, 61, 0, 0, false, tzfUTC, 0},
               KxDecodeISODateTime("2024-13-45T25x61:00Z and more"));
  // A move steps over control characters, as the text parser's moves do.
  EXPECT_EQ(KxDecodeISODateTime("2024-01-05T10:\t20").Minute, 20);
  EXPECT_EQ(KxDecodeISODateTime("").HasDate, false);
}

TEST(ISODecode, Failures) {
  EXPECT_THROW(KxDecodeISODateTime("2024-xx-05"), EConvertError);
  EXPECT_THROW(KxDecodeISODateTime("T10:20"), EConvertError);
  EXPECT_THROW(KxDecodeISODateTime("2024-01-05T1a:00"), EConvertError);
  // Text that ends inside a fixed-width field.
  EXPECT_THROW(KxDecodeISODateTime("2024"), EKxTextParserEOF);
  EXPECT_THROW(KxDecodeISODateTime("10:2"), EKxTextParserEOF);
  EXPECT_THROW(KxDecodeISODateTime("2024-01-05T10:20:30+02"), EKxTextParserEOF);
  EXPECT_THROW(KxDecodeISODateTime("-"), EKxTextParserEOF);
}

TEST(ISODecode, DefaultTellsTheFallbackByItsFlags) {
  const TDateTime Default = EncodeDateTime(2001, 2, 3, 4, 5, 6, 7);
  ExpectRecord({false, 2001, 2, 3, false, 4, 5, 6, 7, false, tzfNA, 0},
               KxDecodeISODateTimeDef("2024-xx-05T10:00Z", Default));
  ExpectRecord({false, 2001, 2, 3, false, 4, 5, 6, 7, false, tzfNA, 0},
               KxDecodeISODateTimeDef("-2024", Default));
  ExpectRecord({true, 2024, 1, 5, true, 10, 0, 0, 0, false, tzfUTC, 0},
               KxDecodeISODateTimeDef("2024-01-05T10:00:00Z", Default));
}

// --- the simple readers -------------------------------------------------------------------------

TEST(ISORead, TheTwoReadersTakeFractionsDifferently) {
  // '.5': 5 ms to the simple reader, half a second to the decoder.
  EXPECT_EQ(KxDateTimeToISOStr(KxISOStrToTime("10:20:30.5"), true), "1899-12-30T10:20:30.005");
  EXPECT_EQ(KxDecodeISODateTime("10:20:30.5").MSec, 500);
  EXPECT_EQ(KxDateTimeToISOStr(KxISOStrToTime("10:20:30.500"), true), "1899-12-30T10:20:30.500");
  EXPECT_EQ(KxDecodeISODateTime("10:20:30.500").MSec, 500);
  // More than three digits: the decoder cuts, the simple reader's time encoder refuses.
  EXPECT_EQ(KxDecodeISODateTime("10:20:30.1234").MSec, 123);
  EXPECT_THROW(KxISOStrToTime("10:20:30.1234"), EConvertError);
  EXPECT_THROW(KxISOStrToTime("10:20:30.70000"), EConvertError);
}

TEST(ISORead, Dates) {
  ExpectSameMoment(EncodeDate(2024, 1, 5), KxISOStrToDate("2024-01-05"));
  ExpectSameMoment(EncodeDate(2024, 1, 5), KxISOStrToDate("20240105"));
  ExpectSameMoment(EncodeDate(2024, 1, 5), KxISOStrToDate("2024-01-05T10:00:00"));
  EXPECT_EQ(double(KxISOStrToDate("")), 0.0);
  EXPECT_EQ(double(KxISOStrToDate("0000-00-00")), 0.0);
  EXPECT_THROW(KxISOStrToDate("2024-13-01"), EConvertError);
  EXPECT_THROW(KxISOStrToDate("2023-02-29"), EConvertError);
  EXPECT_THROW(KxISOStrToDate("2024-1"), EConvertError);
  EXPECT_THROW(KxISOStrToDate("abcd-01-01"), EConvertError);
}

TEST(ISORead, Times) {
  ExpectSameMoment(EncodeTime(10, 20, 30, 0), KxISOStrToTime("10:20:30"));
  ExpectSameMoment(EncodeTime(10, 20, 30, 12), KxISOStrToTime("2024-01-05T10:20:30.12+01:00"));
  // An offset is ignored; a final "Z" converts to local time.
  ExpectSameMoment(EncodeTime(10, 20, 30, 0), KxISOStrToTime("10:20:30+05:00"));
  ExpectSameMoment(KxUTCToLocal(EncodeTime(10, 20, 30, 0)), KxISOStrToTime("10:20:30Z"));
  EXPECT_EQ(double(KxISOStrToTime("")), 0.0);
  EXPECT_THROW(KxISOStrToTime("24:00:00"), EConvertError);
  EXPECT_THROW(KxISOStrToTime("10:20"), EConvertError);
}

TEST(ISORead, DateTimesWithZonesComeBackAsLocalTime) {
  const TDateTime Nine = EncodeDateTime(2024, 1, 5, 9, 0, 0, 0);
  ExpectSameMoment(KxUTCToLocal(Nine), KxISOStrToDateTime("2024-01-05T10:00:00+01:00"));
  ExpectSameMoment(KxUTCToLocal(Nine), KxISOStrToDateTime("2024-01-05T04:00:00-05:00"));
  ExpectSameMoment(KxUTCToLocal(Nine), KxISOStrToDateTime("2024-01-05T09:00:00Z"));
  ExpectSameMoment(KxUTCToLocal(IncMilliSecond(Nine, 250)),
                   KxISOStrToDateTime("2024-01-05T09:00:00.250Z"));
  ExpectSameMoment(Nine, KxISOStrToDateTime("2024-01-05T09:00:00"));
  ExpectSameMoment(KxUTCToLocal(EncodeDate(2024, 1, 5)), KxISOStrToDateTime("2024-01-05Z"));
  ExpectSameMoment(EncodeDate(2024, 1, 5), KxISOStrToDateTime("20240105"));
  EXPECT_EQ(double(KxISOStrToDateTime("")), 0.0);
  EXPECT_EQ(double(KxISOStrToDateTime("0")), 0.0);
  EXPECT_THROW(KxISOStrToDateTime("2024-01-05T10:00:00+0x:00"), EConvertError);
  EXPECT_THROW(KxISOStrToDateTime("10:00:00"), EConvertError);
}

TEST(ISORead, StrToDateTimeReadsDayMonthYear) {
  ExpectSameMoment(EncodeDate(2024, 1, 5), KxStrToDateTime("05-01-2024"));
  ExpectSameMoment(EncodeDateTime(2024, 1, 5, 10, 20, 30, 0),
                   KxStrToDateTime("05-01-2024 10:20:30"));
  EXPECT_THROW(KxStrToDateTime("2024-01-05"), EConvertError);
}

#if !defined(_WIN32)

TEST(ISORead, OffsetsMoveByTheBiasOfNow) {
  kxtest::TScopedTZ Zone("IST-5:30");
  ExpectSameMoment(EncodeDateTime(2024, 1, 5, 14, 30, 0, 0),
                   KxISOStrToDateTime("2024-01-05T10:00:00+01:00"));
  ExpectSameMoment(EncodeDateTime(2024, 1, 5, 5, 30, 0, 0), KxISOStrToDateTime("2024-01-05Z"));
  ExpectSameMoment(EncodeTime(15, 50, 30, 0), KxISOStrToTime("10:20:30Z"));
}

// GNU date as the peer: a few hundred random instants written, and texts with offsets read.
TEST(ISOPeer, AgreesWithGnuDate) {
  kxtest::TScopedTZ Zone("UTC0");
  std::mt19937_64 Random(20240105);
  std::uniform_int_distribution<int64_t> Seconds(-2208988800LL, 4102444799LL); // 1900..2099
  std::uniform_int_distribution<int> Offset(-14 * 4, 14 * 4);
  std::vector<int64_t> Instants;
  std::ostringstream Epochs, Texts;
  std::vector<AnsiString> Written;
  for (int I = 0; I < 300; ++I) {
    const int64_t E = Seconds(Random);
    Instants.push_back(E);
    Epochs << '@' << E << '\n';
    // The same instant as local time in a zone of whole quarter hours.
    const int Minutes = Offset(Random) * 15;
    const TDateTime Local = IncMinute(UnixToDateTime(E), Minutes);
    char Sign = Minutes < 0 ? '-' : '+';
    char Zone[16];
    std::snprintf(Zone, sizeof Zone, "%c%02d:%02d", Sign, std::abs(Minutes) / 60,
                  std::abs(Minutes) % 60);
    Written.push_back(KxDateTimeToISOStr(Local, false) + Zone);
    Texts << Written.back() << '\n';
  }
  const auto Formatted = kxtest::RunExternalTool("date", {"-u", "-f", "-", "+%FT%T"}, Epochs.str());
  if (Formatted.Absent) GTEST_SKIP() << Formatted.Message;
  ASSERT_EQ(Formatted.ExitCode, 0);
  std::istringstream Lines(Formatted.Output);
  std::string Line;
  for (int64_t E : Instants) {
    ASSERT_TRUE(std::getline(Lines, Line));
    EXPECT_EQ(KxDateTimeToISOStr(UnixToDateTime(E), false), Line) << E;
  }
  const auto Parsed = kxtest::RunExternalTool("date", {"-u", "-f", "-", "+%s"}, Texts.str());
  ASSERT_EQ(Parsed.ExitCode, 0);
  std::istringstream Epoch(Parsed.Output);
  for (size_t I = 0; I < Written.size(); ++I) {
    ASSERT_TRUE(std::getline(Epoch, Line));
    const int64_t Expected = std::stoll(Line);
    EXPECT_EQ(Expected, Instants[I]) << Written[I];
    EXPECT_EQ(DateTimeToUnix(KxISOStrToDateTime(Written[I])), Expected) << Written[I];
    const TKxISODateTime R = KxDecodeISODateTime(Written[I]);
    const TDateTime Wall = EncodeDateTime(R.Year, R.Month, R.Day, R.Hour, R.Minute, R.Second, 0);
    EXPECT_EQ(DateTimeToUnix(Wall) - R.OffsetMinutes * 60, Expected) << Written[I];
  }
}

#endif
