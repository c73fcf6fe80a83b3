// SPDX-License-Identifier: MIT
// FloatToStr and StrToFloat: the general format's switch points, separators, and the
// grammar StrToFloat accepts.
#include <kx/rtl/FloatText.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace kx;

namespace {
TFormatSettings WithSeparator(AnsiChar Separator) {
  TFormatSettings S = TFormatSettings::Invariant();
  S.DecimalSeparator = Separator;
  return S;
}
} // namespace

TEST(FloatToStr, FifteenDigitsFixedOrScientific) {
  const TFormatSettings Dot = WithSeparator('.');
  struct {
    double Value;
    const char* Text;
  } Cases[] = {
      {0.0, "0"},
      {-0.0, "0"},
      {1, "1"},
      {5, "5"},
      {-2.5, "-2.5"},
      {0.1, "0.1"},
      {1.0 / 3, "0.333333333333333"},
      {2.0 / 3, "0.666666666666667"},
      {100, "100"},
      {123456789012345.0, "123456789012345"},
      {999999999999999.0, "999999999999999"},
      {1e15, "1E15"},
      {1234567890123456.0, "1.23456789012346E15"},
      {1234567890.123456789, "1234567890.12346"},
      {0.0001, "0.0001"},
      {0.000442615029219009, "0.000442615029219009"},
      {0.00001, "1E-5"},
      {0.0000442615029219009, "4.42615029219009E-5"},
      {-1.5e-300, "-1.5E-300"},
      {1e100, "1E100"},
      {9.9999999999999999e14, "1E15"}, // rounds up into the next decade
      {std::numeric_limits<double>::quiet_NaN(), "NAN"},
      {std::numeric_limits<double>::infinity(), "INF"},
      {-std::numeric_limits<double>::infinity(), "-INF"},
  };
  for (const auto& C : Cases) EXPECT_EQ(FloatToStr(C.Value, Dot), C.Text) << C.Value;
  EXPECT_EQ(FloatToStr(-1234.5, WithSeparator(',')), "-1234,5");
  EXPECT_EQ(FloatToStr(2.5e-7, WithSeparator(',')), "2,5E-7");
}

TEST(FloatToStr, ReadsBackWithinItsFifteenDigits) {
  std::mt19937_64 Random(20240105);
  std::uniform_real_distribution<double> Mantissa(-10, 10);
  std::uniform_int_distribution<int> Exponent(-30, 30);
  for (const TFormatSettings& S : {WithSeparator('.'), WithSeparator(',')}) {
    for (int I = 0; I < 2000; ++I) {
      const double V = Mantissa(Random) * std::pow(10.0, Exponent(Random));
      const double Back = StrToFloat(FloatToStr(V, S), S);
      ASSERT_NEAR(Back, V, std::fabs(V) * 5e-15) << FloatToStr(V, S);
    }
  }
}

TEST(StrToFloat, AcceptsTheNumberGrammarWithTheLocaleSeparator) {
  const TFormatSettings Dot = WithSeparator('.'), Comma = WithSeparator(',');
  EXPECT_EQ(StrToFloat("1.5", Dot), 1.5);
  EXPECT_EQ(StrToFloat("  -1.5  ", Dot), -1.5);
  EXPECT_EQ(StrToFloat("+2", Dot), 2.0);
  EXPECT_EQ(StrToFloat(".5", Dot), 0.5);
  EXPECT_EQ(StrToFloat("5.", Dot), 5.0);
  EXPECT_EQ(StrToFloat("1e3", Dot), 1000.0);
  EXPECT_EQ(StrToFloat("1E-2", Dot), 0.01);
  EXPECT_EQ(StrToFloat("2.5e+1", Dot), 25.0);
  EXPECT_EQ(StrToFloat("1,5", Comma), 1.5);
  EXPECT_EQ(StrToFloat(u" 1,25E1", Comma), 12.5);
  EXPECT_EQ(StrToFloat("0.1", Dot), 0.1); // correctly rounded
  EXPECT_EQ(StrToFloat("1e-310", Dot), 1e-310);
  // Too small for a double is zero, keeping the sign.
  EXPECT_EQ(StrToFloat("1e-400", Dot), 0.0);
  EXPECT_TRUE(std::signbit(StrToFloat("-0.000001e-400", Dot)));
  EXPECT_EQ(StrToFloat("0e999999999999", Dot), 0.0);
}

TEST(StrToFloat, RefusesEverythingElseWithTheConvertMessage) {
  const TFormatSettings Dot = WithSeparator('.');
  for (const char* Bad : {"", " ", "-", ".", "1.5.2", "1,5", "e5", "1e", "1e+", "--1", "1 2",
                          "0x10", "inf", "NAN", "1e400", "-1e309", "1.5x", "\t1"}) {
    double V = 7;
    EXPECT_FALSE(TryStrToFloat(AnsiString(Bad), V, Dot)) << Bad;
    EXPECT_EQ(V, 7.0);
    EXPECT_EQ(StrToFloatDef(AnsiString(Bad), -1, Dot), -1.0) << Bad;
  }
  double V;
  EXPECT_FALSE(TryStrToFloat(UnicodeString(u"1\u00B75"), V, Dot));
  try {
    StrToFloat("12a", Dot);
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "'12a' is not a valid floating point value");
  }
}
