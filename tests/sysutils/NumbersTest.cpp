// SPDX-License-Identifier: MIT
#include <kx/uKxSysUtils.h>

#include <gtest/gtest.h>

using namespace kx;

TEST(StringIncrement, KeepsTheFieldWidth) {
  EXPECT_EQ(KxStringIncrement("INV0099", 1), "INV0100");
  EXPECT_EQ(KxStringIncrement("X99", 1), "X100");
  EXPECT_EQ(KxStringIncrement("007", 1), "008");
  EXPECT_EQ(KxStringIncrement("A9", 1), "A10");
  EXPECT_EQ(KxStringIncrement("A10", -5), "A05");
  EXPECT_EQ(KxStringIncrement("A0", -1), "A-1");
  EXPECT_EQ(KxStringIncrement("  12", 3), "  15");
  EXPECT_EQ(KxStringIncrement("v1.9", 1), "v1.10");
}

TEST(StringIncrement, BlankAndDigitlessTexts) {
  const AnsiString Year = IntToStr(int32_t(CurrentYear()));
  EXPECT_EQ(KxStringIncrement("", 1), Year + "00001");
  EXPECT_EQ(KxStringIncrement(" \t", 5), Year + "00001");
  EXPECT_THROW(KxStringIncrement("abc", 1), EConvertError);
  EXPECT_THROW(KxStringIncrement("abc1 ", 1), EConvertError);
  // More digits than an integer holds.
  EXPECT_THROW(KxStringIncrement("N99999999999", 1), EConvertError);
}

TEST(Round, HalfAwayFromZero) {
  EXPECT_EQ(KxRound(-2.5, 0), -3.0);
  EXPECT_EQ(KxRound(2.5, 0), 3.0);
  EXPECT_EQ(KxRound(2.4, 0), 2.0);
  EXPECT_EQ(KxRound(-2.4, 0), -2.0);
  EXPECT_EQ(KxRound(2.6, 0), 3.0);
  EXPECT_DOUBLE_EQ(KxRound(1.2346, 3), 1.235);
  EXPECT_DOUBLE_EQ(KxRound(0.125, 2), 0.13);
  EXPECT_DOUBLE_EQ(KxRound(-1.2344, 3), -1.234);
  EXPECT_DOUBLE_EQ(KxRound(123456.789, 1), 123456.8);
}

TEST(Round, HalvesBinaryFloatingPointCannotHold) {
  // Stored just below the half, within 15 digits of it.
  EXPECT_DOUBLE_EQ(double(KxRound(2.675L, 2)), 2.68);
  EXPECT_DOUBLE_EQ(double(KxRound(1.005L, 2)), 1.01);
  EXPECT_DOUBLE_EQ(double(KxRound(-1.005L, 2)), -1.01);
  EXPECT_DOUBLE_EQ(KxRound(1.5, 0), 2.0);
  // The doubles nearest 2.675 and 1.005 lie further below the half than 15 digits see.
  EXPECT_DOUBLE_EQ(KxRound(2.675, 2), 2.67);
  EXPECT_DOUBLE_EQ(KxRound(1.005, 2), 1.0);
}

TEST(Round, Failures) {
  EXPECT_THROW(KxRound(2.5, -1), EInvalidOp);
  EXPECT_THROW(KxRound(1e300, 2), EInvalidOp);
  EXPECT_THROW(KxRound(1.5, 19), EInvalidOp);
}

TEST(Age, CountsWholeYears) {
  const TDateTime Birth = EncodeDate(1990, 6, 15);
  EXPECT_EQ(KxAge(Birth, EncodeDate(2024, 6, 15)), 34);
  EXPECT_EQ(KxAge(Birth, EncodeDate(2024, 6, 14)), 33);
  EXPECT_EQ(KxAge(Birth, EncodeDate(2024, 5, 20)), 33);
  EXPECT_EQ(KxAge(Birth, EncodeDate(2024, 7, 1)), 34);
  EXPECT_EQ(KxAge(0.0, EncodeDate(2024, 7, 1)), 0);
  EXPECT_EQ(KxAge(-5.0, EncodeDate(2024, 7, 1)), 0);
  const TDateTime Today = Date();
  EXPECT_EQ(KxAge(IncYear(Today, -20)), 20);
  EXPECT_EQ(KxAge(IncDay(IncYear(Today, -20), 1)), 19);
}
