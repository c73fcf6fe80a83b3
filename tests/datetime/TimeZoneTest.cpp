// SPDX-License-Identifier: MIT
#include <kx/uKxDateTimeUtils.h>

#include "datetime/TimeZoneTestUtils.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>

using namespace kx;

// Runs wherever the tests run, under Wine with the zone Wine reports: local time less the bias
// is the UTC clock.
TEST(TimeZone, LocalToUTCOfNowIsTheUTCClock) {
  const double Utc = UnixToDateTime(int64_t(time(nullptr)));
  const double Converted = KxLocalToUTC(Now());
  EXPECT_NEAR(Converted, Utc, 3.0 / SecsPerDay);
  EXPECT_NEAR(KxUTCToLocal(Utc), Now(), 3.0 / SecsPerDay);
}

#if !defined(_WIN32)

namespace {

// Two values name the same millisecond.
void ExpectSameMoment(TDateTime Expected, TDateTime Actual) {
  const TTimeStamp A = DateTimeToTimeStamp(Expected), B = DateTimeToTimeStamp(Actual);
  EXPECT_EQ(A.Date, B.Date);
  EXPECT_EQ(A.Time, B.Time);
}

} // namespace

TEST(TimeZone, BiasFollowsTZ) {
  struct {
    const char* Zone;
    int Bias;
    const char* Name;
  } const Cases[] = {
      {"UTC0", 0, "GMT"},
      {"IST-5:30", -330, "GMT +5"},
      {"NPT-5:45", -345, "GMT +5"},
      {"EST5", 300, "GMT -5"},
      {"NST3:30", 210, "GMT -3"},
      // Daylight saving all year: the daylight bias is added to the standard one.
      {"XST5XDT,J1/0,J365/25", 240, "GMT -4"},
      {"AEST-10AEDT,J1/0,J365/25", -660, "GMT +11"},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(C.Zone);
    kxtest::TScopedTZ Zone(C.Zone);
    EXPECT_EQ(detail::CurrentTimeZoneBias(), C.Bias);
    EXPECT_EQ(KxGetTimeZone(), C.Name);
    const TDateTime Local = EncodeDateTime(2024, 1, 5, 10, 0, 0, 0);
    ExpectSameMoment(IncMinute(Local, C.Bias), KxLocalToUTC(Local));
    ExpectSameMoment(IncMinute(Local, -C.Bias), KxUTCToLocal(Local));
  }
}

TEST(TimeZone, ZonesWithDaylightSavingUseTheBiasOfNow) {
  for (const char* Name : {"CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT,M3.2.0,M11.1.0",
                           "AEST-10AEDT,M10.1.0,M4.1.0/3", "Europe/Berlin", "America/New_York"}) {
    SCOPED_TRACE(Name);
    kxtest::TScopedTZ Zone(Name);
    const int Bias = kxtest::BiasOfNow();
    EXPECT_EQ(detail::CurrentTimeZoneBias(), Bias);
    // A winter and a summer date move by the same bias: that of the moment of the call.
    const TDateTime Winter = EncodeDateTime(2024, 1, 15, 12, 0, 0, 0);
    const TDateTime Summer = EncodeDateTime(2024, 7, 15, 12, 0, 0, 0);
    ExpectSameMoment(IncMinute(Winter, Bias), KxLocalToUTC(Winter));
    ExpectSameMoment(IncMinute(Summer, Bias), KxLocalToUTC(Summer));
  }
}

TEST(TimeZone, CalcTimeZoneOffsetAbsorbsTheFloatingError) {
  // The difference of two doubles is truncated to minutes, so a whole offset can come out a
  // minute short; 58 minutes and more make the next hour and fewer than 3 none.
  struct {
    const char* Zone;
    double Value;
    int32_t Total;
    uint16_t Hours, Minutes;
  } const Cases[] = {
      {"UTC0", 45000.5, 0, 0, 0},          {"<+01>-1", 45000.5, 59, 1, 0},
      {"<+01>-1", 100.75, 60, 1, 0},       {"CST-8", 100.75, 479, 8, 0},
      {"EST5", 100.75, -299, 5, 0},        {"<+0058>-0:58", 100.75, 57, 0, 57},
      {"<+0058>-0:58", 45000.5, 58, 1, 0}, {"<+0003>-0:03", 45000.5, 2, 0, 0},
      {"<+0004>-0:04", 45000.5, 4, 0, 4},  {"IST-5:30", 100.75, 330, 5, 30},
      {"IST-5:30", 45000.5, 329, 5, 29},
  };
  for (const auto& C : Cases) {
    SCOPED_TRACE(std::string(C.Zone) + " at " + std::to_string(C.Value));
    kxtest::TScopedTZ Zone(C.Zone);
    int32_t Total = -1;
    uint16_t Hours = 99, Minutes = 99;
    KxCalcTimeZoneOffset(C.Value, Total, Hours, Minutes);
    EXPECT_EQ(Total, C.Total);
    EXPECT_EQ(Hours, C.Hours);
    EXPECT_EQ(Minutes, C.Minutes);
  }
}

TEST(TimeZone, CalcTimeZoneOffsetBeforeDayZeroSubtractsThePartsApart) {
  kxtest::TScopedTZ Zone("CST-8");
  int32_t Total = 0;
  uint16_t Hours = 0, Minutes = 0;
  // -10.25 and its UTC value -10.5833: the fractions run forward from the day's start, so
  // the difference of the parts has the opposite sign of the plain difference.
  KxCalcTimeZoneOffset(-10.25, Total, Hours, Minutes);
  EXPECT_LE(Total, -479);
  EXPECT_GE(Total, -480);
  EXPECT_EQ(Hours, 8);
  EXPECT_EQ(Minutes, 0);
}

#endif
