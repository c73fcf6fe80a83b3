// SPDX-License-Identifier: MIT
#include <kx/rtl/Rtl.h>

#include <gtest/gtest.h>

using namespace kx;

TEST(Format, IntegersWidthPrecisionAndIndex) {
  EXPECT_EQ(Format("%d|%5d|%-5d|%.4d|%.3d", {42, 42, 42, -42, 12345}),
            "42|   42|42   |-0042|12345");
  EXPECT_EQ(Format("%u %x %.4x", {-1, 255, 10}), "4294967295 FF 000A");
  EXPECT_EQ(Format("%x", {int64_t(-1)}), "FFFFFFFFFFFFFFFF");
  EXPECT_EQ(Format("%1:s %0:s %s", {"a", "b"}), "b a b");
  EXPECT_EQ(Format("%*d|%-*.*d", {4, 7, 5, 3, 9}), "   7|009  ");
  EXPECT_EQ(Format("100%%", {}), "100%");
}

TEST(Format, FloatsFollowTheRuntimeDefaults) {
  EXPECT_EQ(Format("%f", {1.5}), "1.50");
  EXPECT_EQ(Format("%.3f", {-2.0}), "-2.000");
  EXPECT_EQ(Format("%e", {1234.5}), "1.23450000000000E+003");
  EXPECT_EQ(Format("%.3e", {-0.00125}), "-1.25E-003");
  EXPECT_EQ(Format("%g", {0.5}), "0.5");
  EXPECT_EQ(Format("%g", {1234567.0}), "1234567");
  EXPECT_EQ(Format("%n", {1234567.891}), "1,234,567.89");
  EXPECT_EQ(Format("%m", {-1234.5}), "-$1,234.50");
}

TEST(Format, StringsCharsAndPointers) {
  EXPECT_EQ(Format("[%s] [%.2s] [%6s]", {"abc", AnsiString("xyz"), u"wide"}),
            "[abc] [xy] [  wide]");
  EXPECT_EQ(Format("%s%s", {'c', char16_t(u'd')}), "cd");
  const void* P = reinterpret_cast<const void*>(uintptr_t(0xBEEF));
  EXPECT_EQ(Format("%p", {P}), sizeof(void*) == 8 ? "000000000000BEEF" : "0000BEEF");
  EXPECT_EQ(Format(u"%s=%d", {u"n", 3}), u"n=3");
}

TEST(Format, MismatchedOrMissingArgumentsRaiseConvertError) {
  try {
    Format("%d", {"text"});
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "Format '%d' invalid or incompatible with argument");
  }
  EXPECT_THROW(Format("%s", {1}), EConvertError);
  EXPECT_THROW(Format("%f", {1}), EConvertError);
  EXPECT_THROW(Format("%q", {1}), EConvertError);
  try {
    Format("%d %d", {1});
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "No argument for format '%d %d'");
  }
}

TEST(Format, FieldsBeyondTheBoundRaiseInsteadOfOverflowing) {
  for (const char* Fmt : {"%99999999999d", "%.2000000000d", "%2147483648s", "%-1048577d"})
    EXPECT_THROW(Format(Fmt, {1}), EConvertError) << Fmt;
  EXPECT_THROW(Format("%*d", {2000000000, 1}), EConvertError);
  EXPECT_THROW(Format("%.*d", {1048577, 1}), EConvertError);
  EXPECT_THROW(Format(u"%99999999999d", {1}), EConvertError);
  // Up to the bound a field is still honoured.
  EXPECT_EQ(Format("%1048576d", {1}).size(), 1048576u);
  EXPECT_EQ(Format(u"%.5000d", {1}).size(), 5000u);
}

TEST(Format, WideDirectiveLettersAreWholeCharacters) {
  // U+0144 and U+0158 have the low bytes of 'D' and 'X'.
  EXPECT_THROW(Format(u"%\u0144", {5}), EConvertError);
  EXPECT_THROW(Format(u"%\u0158", {255}), EConvertError);
  EXPECT_THROW(Format(u"%\uFF44", {5}), EConvertError);
  EXPECT_EQ(Format(u"%d %x \u0144", {5, 255}), u"5 FF \u0144");
}
