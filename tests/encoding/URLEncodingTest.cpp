// SPDX-License-Identifier: MIT
#include <kx/rtl/SysUtils.h>
#include <kx/uKxNetEncoding.h>

#include <gtest/gtest.h>

using namespace kx;

namespace {

AnsiString Enc(const AnsiString& S, const TUnsafeChars& Unsafe = {}, TEncodeOptions Opts = {}) {
  return TKxNetEncoding::URL()->Encode(S, Unsafe, Opts);
}

} // namespace

TEST(URLEncoding, DefaultSetEscapesControlSpaceAndReserved) {
  EXPECT_EQ(Enc("a b&c%"), "a%20b%26c%");
  EXPECT_EQ(Enc("!#$&'()*+,/:;=?@[]"), "%21%23%24%26%27%28%29%2A%2B%2C%2F%3A%3B%3D%3F%40%5B%5D");
  EXPECT_EQ(Enc(AnsiString("\x00\x01\t\r\n\x1f", 6)), "%00%01%09%0D%0A%1F");
  // Everything else passes, bytes above 127 included.
  EXPECT_EQ(Enc("AZaz09-._~\"<>\\^`{|}%"), "AZaz09-._~\"<>\\^`{|}%");
  EXPECT_EQ(Enc("\x7f\x80\xe9\xff"), "\x7f\x80\xe9\xff");
  EXPECT_EQ(Enc(""), "");
  EXPECT_EQ(Enc(" "), "%20");
  EXPECT_EQ(Enc("plain"), "plain");
}

TEST(URLEncoding, CallersSetReplacesTheReservedOnes) {
  // Control bytes and the space are always in; reserved characters only when named.
  EXPECT_EQ(Enc("a b&c/d", {'/'}), "a%20b&c%2Fd");
  EXPECT_EQ(Enc("\t!", {'#'}), "%09!");
  // Members without a fixed escape are dropped, not escaped.
  EXPECT_EQ(Enc("a b&c%", {'%'}), "a%20b&c");
  EXPECT_EQ(Enc("say \"hi\"", {'"', 'h'}), "say%20i");
  EXPECT_EQ(Enc("\xe9t\xe9", {'\xe9'}), "t");
  EXPECT_EQ(Enc("%%%", {'%'}), "");
  // Control bytes in the caller's set make no difference.
  EXPECT_EQ(Enc("a\nb", {'\n'}), "a%0Ab");
}

TEST(URLEncoding, OptionsChangeNothing) {
  EXPECT_EQ(Enc("a b%", {}, {SpacesAsPlus, EncodePercent}), "a%20b%");
  EXPECT_EQ(TKxNetEncoding::URL()->Decode("a+b%41", {PlusAsSpaces}), "a+bA");
}

TEST(URLEncoding, DecodeReplacesEachEscape) {
  EXPECT_EQ(TURLEncoding::Decode("a+b%41"), "a+bA");
  EXPECT_EQ(TURLEncoding::Decode("%20%2f%2F%00x"), AnsiString(" //\0x", 5));
  EXPECT_EQ(TURLEncoding::Decode("%e9%FF"), "\xe9\xff");
  EXPECT_EQ(TURLEncoding::Decode("no escapes"), "no escapes");
  EXPECT_EQ(TURLEncoding::Decode(""), "");
  // Fewer than two characters left: what is there is the number.
  EXPECT_EQ(TURLEncoding::Decode("a%4"), "a\x04");
}

TEST(URLEncoding, MalformedEscapesRaiseTheConversionError) {
  EXPECT_THROW(TURLEncoding::Decode("%G1"), EConvertError);
  EXPECT_THROW(TURLEncoding::Decode("abc%"), EConvertError);
  EXPECT_THROW(TURLEncoding::Decode("%%41"), EConvertError);
}

TEST(URLEncoding, EncodedTextDecodesBack) {
  // Every byte but the percent sign, which the encoder leaves as it is.
  AnsiString All;
  for (int C = 0; C < 256; ++C)
    if (C != '%') All += char(C);
  EXPECT_EQ(TURLEncoding::Decode(Enc(All)), All);
}
