// SPDX-License-Identifier: MIT
// The free Base64 functions: every overload gives the codec's result, wide strings go
// through UTF-8, and one decoder takes both alphabets.
#include <kx/uKxBase64.h>

#include "encoding/EncodingTestUtils.h"
#include "support/ShortReadStream.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace kx;

TEST(KxBase64, EveryEncodingOverloadAgrees) {
  const TBytes B = kxtest::RandomBytes(1000, 11);
  const AnsiString S = kxtest::AsString(B);
  const AnsiString Want = KxEncodeBase64(S);
  EXPECT_EQ(Want.size(), 1336u);
  EXPECT_EQ(KxEncodeBase64(B), Want);
  EXPECT_EQ(KxEncodeBase64(B.data(), int32_t(B.size())), Want);
  auto* In = kxtest::TShortReadStream::Create(std::string_view(S), 5);
  EXPECT_EQ(KxEncodeBase64(In), Want);
  In->SetPosition(0);
  TMemoryStream* Out = TMemoryStream::Create();
  KxEncodeBase64(In, Out);
  EXPECT_EQ(AnsiString(static_cast<char*>(Out->Memory()), size_t(Out->Size())), Want);
  In->SetPosition(0);
  Out->Clear();
  KxEncodeBase64Url(In, Out);
  const AnsiString Url = KxEncodeBase64Url(S);
  EXPECT_EQ(AnsiString(static_cast<char*>(Out->Memory()), size_t(Out->Size())), Url);
  EXPECT_EQ(Url.find_first_of("+/="), AnsiString::npos);
  EXPECT_EQ(KxEncodeBase64Url(B), Url);
  EXPECT_EQ(KxEncodeBase64Url(B.data(), int32_t(B.size())), Url);
  Out->Free();
  In->Free();
  EXPECT_EQ(KxEncodeBase64("M"), "TQ==");
  EXPECT_EQ(KxEncodeBase64Url("M"), "TQ");
}

TEST(KxBase64, WideStringsGoThroughUTF8) {
  const UnicodeString W = u"\u00fcber \u20ac";
  EXPECT_EQ(KxEncodeBase64(W), KxEncodeBase64(AnsiString("\xC3\xBC"
                                                         "ber \xE2\x82\xAC")));
  EXPECT_EQ(KxEncodeBase64Url(W), KxEncodeBase64Url(AnsiString("\xC3\xBC"
                                                               "ber \xE2\x82\xAC")));
  const TBytes Back = KxDecodeBase64(UnicodeString(u"w7xiZXIg4oKs"));
  EXPECT_EQ(kxtest::AsString(Back), "\xC3\xBC"
                                    "ber \xE2\x82\xAC");
}

TEST(KxBase64, EveryDecodingOverloadTakesBothAlphabets) {
  const AnsiString Bytes = "\xfb\xff\xbf";
  EXPECT_EQ(KxEncodeBase64(Bytes), "+/+/");
  for (const char* Text : {"+/+/", "-_-_", "+_-/"}) {
    EXPECT_EQ(KxDecodeBase64(AnsiString(Text)), Bytes);
    int32_t Size = -1;
    void* P = KxDecodeBase64(AnsiString(Text), Size);
    ASSERT_EQ(Size, 3);
    EXPECT_EQ(AnsiString(static_cast<char*>(P), 3), Bytes);
    std::free(P);
    TMemoryStream* Out = TMemoryStream::Create();
    KxDecodeBase64(AnsiString(Text), Out);
    EXPECT_EQ(Out->Size(), 3);
    auto* In = kxtest::TShortReadStream::Create(std::string_view(Text), 1);
    Out->Clear();
    KxDecodeBase64(In, Out);
    EXPECT_EQ(AnsiString(static_cast<char*>(Out->Memory()), size_t(Out->Size())), Bytes);
    In->Free();
    Out->Free();
  }
  int32_t Size = -1;
  EXPECT_EQ(KxDecodeBase64(AnsiString(), Size), nullptr);
  EXPECT_EQ(Size, 0);
  try {
    KxDecodeBase64(AnsiString("QQ==X"));
    ADD_FAILURE();
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(), "Invalid Base64 data!");
  }
}
