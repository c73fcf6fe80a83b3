// SPDX-License-Identifier: MIT
#include <kx/uKxNetEncoding.h>

#include "encoding/EncodingTestUtils.h"

#include <gtest/gtest.h>

using namespace kx;
using kxtest::AsBytes;
using kxtest::AsString;
using kxtest::RandomBytes;

namespace {

TKxHexEncoding* Hex() {
  return TKxNetEncoding::Hex();
}

} // namespace

TEST(HexEncoding, TwoUpperCaseDigitsPerByte) {
  EXPECT_EQ(Hex()->EncodeBytesToString(TBytes{0x0A, 0xFF}), "0AFF");
  EXPECT_EQ(Hex()->Encode(AnsiString("\x01\xab\x7f", 3)), "01AB7F");
  EXPECT_EQ(Hex()->Encode(AnsiString()), "");
  TBytes All(256);
  for (int I = 0; I < 256; ++I) All[I] = uint8_t(I);
  const AnsiString Text = Hex()->EncodeBytesToString(All);
  ASSERT_EQ(Text.size(), 512u);
  EXPECT_EQ(Text.substr(0, 8), "00010203");
  EXPECT_EQ(Text.substr(2 * 0x9E, 6), "9E9FA0");
  EXPECT_EQ(Text.substr(504), "FCFDFEFF");
}

TEST(HexEncoding, DecodingIsLenient) {
  EXPECT_EQ(Hex()->DecodeStringToBytes("0aFf"), (TBytes{0x0A, 0xFF}));
  // Not a digit: 0, no error.
  EXPECT_EQ(Hex()->DecodeStringToBytes("0G"), TBytes{0x00});
  EXPECT_EQ(Hex()->DecodeStringToBytes("G1"), TBytes{0x01});
  EXPECT_EQ(Hex()->DecodeStringToBytes("  "), TBytes{0x00});
  // A final odd character is ignored.
  EXPECT_EQ(Hex()->DecodeStringToBytes("ABC"), TBytes{0xAB});
  EXPECT_TRUE(Hex()->DecodeStringToBytes("A").empty());
  EXPECT_EQ(Hex()->Decode(AnsiString("4d616E")), "Man");
}

TEST(HexEncoding, LongInputTakesTheSameRules) {
  // Long enough for the whole-word paths, with every digit and non-digit in both places.
  AnsiString Text;
  TBytes Want;
  const char* Chars = "0123456789abcdefABCDEFgG:@`/ \xff";
  const auto Value = [](char C) {
    if (C >= '0' && C <= '9') return C - '0';
    if (C >= 'a' && C <= 'f') return C - 'a' + 10;
    if (C >= 'A' && C <= 'F') return C - 'A' + 10;
    return 0;
  };
  for (const char* H = Chars; *H; ++H)
    for (const char* L = Chars; *L; ++L) {
      Text += *H;
      Text += *L;
      Want.push_back(uint8_t(Value(*H) * 16 + Value(*L)));
    }
  EXPECT_EQ(Hex()->DecodeStringToBytes(Text), Want);
  EXPECT_EQ(Hex()->DecodeStringToBytes(Text + "F"), Want);
}

TEST(HexEncoding, RandomDataRoundTrips) {
  for (size_t N = 0; N <= 40; ++N) {
    const TBytes In = RandomBytes(N, uint32_t(N));
    EXPECT_EQ(Hex()->Decode(Hex()->Encode(In)), In) << N;
  }
  const TBytes Big = RandomBytes(65537);
  const AnsiString Text = Hex()->EncodeBytesToString(Big);
  EXPECT_EQ(Hex()->DecodeStringToBytes(Text), Big);
  // Lower case decodes the same.
  AnsiString Lower = Text;
  for (char& C : Lower) C = char(std::tolower(uint8_t(C)));
  EXPECT_EQ(Hex()->Decode(AsBytes(Lower)), Big);
}

TEST(HexEncoding, StreamDecodingEnlargesTheOutputFirst) {
  TBytesStream In(AsBytes("xAbCd"));
  In.SetPosition(1);
  TMemoryStream Out;
  Out.WriteBuffer("1234", 4);
  Out.SetPosition(1);
  // Two bytes: the stream grows by 2 and they are written at its position, over what was
  // there.
  EXPECT_EQ(Hex()->Decode(&In, &Out), 2);
  EXPECT_EQ(Out.Size(), 6);
  EXPECT_EQ(Out.Position(), 3);
  EXPECT_EQ(AnsiString(static_cast<const char*>(Out.Memory()), 4), "1\xAB\xCD"
                                                                   "4");
}

TEST(HexEncoding, LargeStreamsGoThroughWhole) {
  const TBytes Big = RandomBytes(200000, 7);
  TBytesStream Plain(Big);
  TMemoryStream Text;
  EXPECT_EQ(Hex()->Encode(&Plain, &Text), 400000);
  Text.SetPosition(0);
  TMemoryStream Back;
  EXPECT_EQ(Hex()->Decode(&Text, &Back), 200000);
  ASSERT_EQ(Back.Size(), 200000);
  EXPECT_EQ(
      TBytes(static_cast<uint8_t*>(Back.Memory()), static_cast<uint8_t*>(Back.Memory()) + 200000),
      Big);
  Text.SetPosition(0);
  EXPECT_EQ(Hex()->Decode(static_cast<TStream*>(&Text)), Big);
}
