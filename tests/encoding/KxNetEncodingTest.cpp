// SPDX-License-Identifier: MIT
#include <kx/classes/MemoryStream.h>
#include <kx/uKxNetEncoding.h>

#include "encoding/EncodingTestUtils.h"
#include "support/ShortReadStream.h"

#include <gtest/gtest.h>

using namespace kx;

TEST(KxNetEncoding, SharedInstancesAreMadeOnceAndKept) {
  TKxBase64Encoding* B = TKxNetEncoding::Base64Ex();
  ASSERT_NE(B, nullptr);
  EXPECT_EQ(TKxNetEncoding::Base64Ex(), B);
  EXPECT_EQ(TKxNetEncoding::Base64Url(), TKxNetEncoding::Base64Url());
  EXPECT_EQ(TKxNetEncoding::Hex(), TKxNetEncoding::Hex());
  EXPECT_EQ(TKxNetEncoding::URL(), TKxNetEncoding::URL());
  EXPECT_TRUE(TKxNetEncoding::Base64Url()->InheritsFrom(TKxBase64Encoding::ClassInfo()));
  EXPECT_FALSE(TKxNetEncoding::URL()->InheritsFrom(TNetEncoding::ClassInfo()));
}

TEST(KxNetEncoding, GetEncodingMapsEachBinaryEncoding) {
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beBase64), TKxNetEncoding::Base64Ex());
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beHexEncoded), TKxNetEncoding::Hex());
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beBase64Url), TKxNetEncoding::Base64Url());
  const TBytes B{0xFB, 0xFF};
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beBase64)->EncodeBytesToString(B), "+/8=");
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beBase64Url)->EncodeBytesToString(B), "-_8");
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beHexEncoded)->EncodeBytesToString(B), "FBFF");
}

TEST(KxNetEncoding, GetEncodingRejectsOtherValues) {
  try {
    TKxNetEncoding::GetEncoding(TKxBinEncoding(3));
    FAIL() << "nothing raised";
  } catch (const Exception& E) {
    EXPECT_EQ(E.ClassType(), Exception::ClassInfo());
    EXPECT_EQ(E.Message(), "The specified NetEncoding is not supported!");
  }
}

// Streams that move fewer bytes per call than asked (pipes, sockets, adapters) are read to
// their end and written whole, and give what memory streams give.
TEST(KxNetEncoding, EveryCodecTakesStreamsThatMoveFewBytesPerCall) {
  const TBytes Data = kxtest::RandomBytes(10000);
  const AnsiString Plain = kxtest::AsString(Data);
  for (TKxBinEncoding E : {beBase64, beHexEncoded, beBase64Url}) {
    TNetEncodingEx* Codec = TKxNetEncoding::GetEncoding(E);
    const AnsiString Text = Codec->EncodeBytesToString(Data);
    for (int32_t Most : {1, 1000}) {
      SCOPED_TRACE(testing::Message() << "encoding " << int(E) << ", " << Most << " per call");
      kxtest::TShortReadStream In(Plain, Most);
      TMemoryStream Sink;
      kxtest::TShortReadStream Out(&Sink, Most);
      EXPECT_EQ(Codec->Encode(&In, &Out), int32_t(Text.size()));
      EXPECT_EQ(In.Position(), 10000) << "the input ends at its end";
      EXPECT_EQ(AnsiString(static_cast<const char*>(Sink.Memory()), size_t(Sink.Size())), Text);

      kxtest::TShortReadStream TextIn(Text, Most);
      TMemoryStream Back;
      EXPECT_EQ(Codec->Decode(&TextIn, &Back), 10000);
      EXPECT_EQ(TextIn.Position(), int64_t(Text.size()));
      EXPECT_EQ(AnsiString(static_cast<const char*>(Back.Memory()), size_t(Back.Size())), Plain);

      kxtest::TShortReadStream Again(Text, Most);
      EXPECT_EQ(Codec->Decode(static_cast<TStream*>(&Again)), Data);
    }
  }
}
