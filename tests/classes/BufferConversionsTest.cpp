// SPDX-License-Identifier: MIT
// Bytes between buffers, byte arrays, streams and Base64, Base64url and hexadecimal text.
#include <kx/classes/BufferConversions.h>
#include <kx/classes/MemoryStream.h>
#include <kx/rtl/OwnedPtr.h>

#include "support/ShortReadStream.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <random>

using namespace kx;

namespace {

OwnedPtr<TKxMemoryStream> StreamOf(const TBytes& Bytes) {
  OwnedPtr<TKxMemoryStream> S(TKxMemoryStream::Create(16));
  S->WriteBytes(Bytes);
  S->SetPosition(0);
  return S;
}

TBytes RandomBytes(size_t Size, unsigned Start) {
  std::mt19937 Gen(Start);
  TBytes B(Size);
  for (auto& X : B) X = uint8_t(Gen());
  return B;
}

} // namespace

TEST(KxBufferConversions, KnownValues) {
  const TBytes Man{'M', 'a', 'n'};
  EXPECT_EQ(KxBufToString(Man, beBase64), "TWFu");
  EXPECT_EQ(KxBufToString(Man.data(), 2, beBase64), "TWE=");
  EXPECT_EQ(KxBufToString(Man.data(), 2, beBase64Url), "TWE");
  EXPECT_EQ(KxBufToString(TBytes{}, beBase64), "");
  EXPECT_EQ(KxBufToHex(TBytes{0x0A, 0xFF}), "0AFF");
  EXPECT_EQ(KxHexToBuf("0aFf"), (TBytes{0x0A, 0xFF}));
  EXPECT_EQ(KxHexToBuf("ABC"), (TBytes{0xAB})) << "a final odd digit is ignored";
  EXPECT_EQ(KxStringToBuf("TWFu\r\nTWFu", beBase64), (TBytes{'M', 'a', 'n', 'M', 'a', 'n'}));
  EXPECT_THROW(KxStringToBuf("QQ==X", beBase64), Exception);
}

TEST(KxBufferConversions, RoundTripsThroughEveryForm) {
  for (size_t Size : {size_t(1), size_t(2), size_t(3), size_t(4), size_t(1000), size_t(65537)}) {
    const TBytes Data = RandomBytes(Size, unsigned(Size));
    for (TKxBinEncoding E : {beBase64, beHexEncoded, beBase64Url}) {
      SCOPED_TRACE(testing::Message() << "size " << Size << " encoding " << int(E));
      const AnsiString Text = KxBufToString(Data, E);
      EXPECT_EQ(KxBufToString(Data.data(), uint32_t(Size), E), Text);
      auto S = StreamOf(Data);
      S->SetPosition(1);
      EXPECT_EQ(KxBufToString(S.Get(), E), KxBufToString(Data.data() + 1, uint32_t(Size - 1), E))
          << "the stream from its position";
      EXPECT_EQ(S->Position(), int64_t(Size));

      EXPECT_EQ(KxStringToBuf(Text, E), Data);
      uint32_t Len = 0;
      void* Buf = KxStringToBuf(Text, E, Len);
      ASSERT_EQ(Len, Size);
      EXPECT_EQ(std::memcmp(Buf, Data.data(), Size), 0);
      std::free(Buf);

      // Written at the position of a stream that is not emptied first.
      auto Out = StreamOf({'x'});
      Out->SetPosition(1);
      EXPECT_EQ(KxStringToBuf(Text, E, Out.Get()), Out.Get());
      EXPECT_EQ(Out->Size(), int64_t(Size) + 1);
      EXPECT_EQ(Out->Memory()[0], 'x');
      EXPECT_EQ(std::memcmp(Out->Memory() + 1, Data.data(), Size), 0);
    }
    const AnsiString Hex = KxBufToHex(Data.data(), uint32_t(Size));
    EXPECT_EQ(Hex, KxBufToString(Data, beHexEncoded));
    EXPECT_EQ(KxHexToBuf(Hex), Data);
  }
}

TEST(KxBufferConversions, HexIntoStreamEmptiesItFirst) {
  auto S = StreamOf({1, 2, 3, 4, 5, 6, 7, 8});
  S->SetPosition(5);
  EXPECT_EQ(KxHexToBuf("C0FFEE", S.Get()), S.Get());
  EXPECT_EQ(S->Size(), 3);
  EXPECT_EQ(std::memcmp(S->Memory(), "\xC0\xFF\xEE", 3), 0);

  uint32_t Len = 99;
  void* Buf = KxHexToBuf("", Len);
  EXPECT_EQ(Len, 0u);
  EXPECT_EQ(Buf, nullptr);
  Buf = KxHexToBuf("00ff", Len);
  EXPECT_EQ(Len, 2u);
  EXPECT_EQ(static_cast<uint8_t*>(Buf)[1], 0xFF);
  std::free(Buf);
  if (KxAssertionsEnabled) {
    EXPECT_THROW(KxHexToBuf("00", static_cast<TStream*>(nullptr)), EAssertionFailed);
  }
}

TEST(KxBufferConversions, ByteArraysAndReversal) {
  const TBytes Data{1, 2, 3, 4, 5};
  uint32_t Size = 0;
  void* Buf = KxByteArrToBuf(Data, Size);
  ASSERT_EQ(Size, 5u);
  KxReverseBuffer(Buf, Size);
  EXPECT_EQ(KxBufToByteArr(Buf, Size), (TBytes{5, 4, 3, 2, 1}));
  KxReverseBuffer(Buf, 4);
  EXPECT_EQ(KxBufToByteArr(Buf, Size), (TBytes{2, 3, 4, 5, 1}));
  KxReverseBuffer(Buf, 0);
  std::free(Buf);
  EXPECT_EQ(KxByteArrToBuf({}, Size), nullptr);
  EXPECT_EQ(Size, 0u);
  EXPECT_TRUE(KxBufToByteArr(nullptr, 0).empty());
}

TEST(KxBufferConversions, StreamsThatGiveFewBytesPerReadAreTakenWhole) {
  const TBytes Data = RandomBytes(10000, 9);
  const std::string_view Bytes(reinterpret_cast<const char*>(Data.data()), Data.size());
  for (int32_t Most : {1, 1000}) {
    for (TKxBinEncoding E : {beBase64, beHexEncoded, beBase64Url}) {
      SCOPED_TRACE(testing::Message() << Most << " per read, encoding " << int(E));
      kxtest::TShortReadStream S(Bytes, Most);
      S.SetPosition(1);
      EXPECT_EQ(KxBufToString(&S, E), KxBufToString(Data.data() + 1, 9999, E));
      EXPECT_EQ(S.Position(), 10000);
    }
    kxtest::TShortReadStream S(Bytes, Most);
    EXPECT_EQ(KxBufToHex(&S), KxBufToHex(Data));
    EXPECT_EQ(S.Position(), 10000);
  }
}
