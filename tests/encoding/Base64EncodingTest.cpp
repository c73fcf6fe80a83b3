// SPDX-License-Identifier: MIT
#include <kx/classes/MemoryStream.h>
#include <kx/uKxNetEncoding.h>

#include "encoding/EncodingTestUtils.h"

#include <gtest/gtest.h>

using namespace kx;
using kxtest::AsBytes;
using kxtest::AsString;
using kxtest::RandomBytes;

namespace {

TKxBase64Encoding* Std() {
  return TKxNetEncoding::Base64Ex();
}
TKxBase64UrlEncoding* Url() {
  return TKxNetEncoding::Base64Url();
}

// The message of the general exception F raises; the class must be the general one.
template <class F>
std::string GeneralErrorOf(F Call) {
  try {
    Call();
  } catch (const Exception& E) {
    EXPECT_EQ(E.ClassType(), Exception::ClassInfo()) << E.ClassName();
    return E.Message();
  }
  return "<nothing raised>";
}

// Inserts Junk after every Step characters.
AnsiString Sprinkle(const AnsiString& S, size_t Step, const AnsiString& Junk) {
  AnsiString R;
  for (size_t I = 0; I < S.size(); I += Step) R += S.substr(I, Step) + Junk;
  return R;
}

} // namespace

TEST(Base64Encoding, PaddingAndLengthOfTheLastGroup) {
  EXPECT_EQ(Std()->Encode(AnsiString("M")), "TQ==");
  EXPECT_EQ(Std()->Encode(AnsiString("Ma")), "TWE=");
  EXPECT_EQ(Std()->Encode(AnsiString("Man")), "TWFu");
  EXPECT_EQ(Url()->Encode(AnsiString("M")), "TQ");
  EXPECT_EQ(Url()->Encode(AnsiString("Ma")), "TWE");
  EXPECT_EQ(Url()->Encode(AnsiString("Man")), "TWFu");
  EXPECT_EQ(Std()->Encode(AnsiString()), "");
  EXPECT_TRUE(Url()->Encode(TBytes{}).empty());
}

TEST(Base64Encoding, AlphabetsDifferInTheLastTwoValues) {
  const TBytes B{0xFB, 0xFF, 0xBF};
  EXPECT_EQ(Std()->EncodeBytesToString(B), "+/+/");
  EXPECT_EQ(Url()->EncodeBytesToString(B), "-_-_");
  EXPECT_EQ(Std()->EncodeBytesToString(B.data(), 2), "+/8=");
  EXPECT_EQ(Url()->EncodeA(B.data(), 2), "-_8");
}

TEST(Base64Encoding, LongInputIsOneUnbrokenRun) {
  const TBytes In = RandomBytes(1000);
  const AnsiString Out = Std()->EncodeBytesToString(In);
  EXPECT_EQ(Out.size(), (1000u + 2) / 3 * 4);
  EXPECT_EQ(Out.find_first_of("\r\n"), AnsiString::npos);
}

TEST(Base64Encoding, ShortInputsDecodeByTheLengthRule) {
  EXPECT_EQ(Std()->DecodeStringToBytes("QQ"), TBytes{0x41});
  EXPECT_EQ(Std()->DecodeStringToBytes("QQ="), TBytes{0x41});
  EXPECT_EQ(Std()->DecodeStringToBytes("QQ=="), TBytes{0x41});
  EXPECT_EQ(Std()->Decode(AnsiString("TWE")), "Ma");
  EXPECT_EQ(Std()->Decode(AnsiString("")), "");
  EXPECT_TRUE(Url()->Decode(TBytes{}).empty());
}

TEST(Base64Encoding, LengthOneModFourIsRejectedBeforeAnythingIsSkipped) {
  EXPECT_EQ(GeneralErrorOf([] { Std()->DecodeStringToBytes("QQ==X"); }), SInvalidBase64Data);
  EXPECT_EQ(GeneralErrorOf([] { Std()->DecodeStringToBytes("A"); }), "Invalid Base64 data!");
  // Only two characters are in the alphabet, but the raw length is 5.
  EXPECT_EQ(GeneralErrorOf([] { Url()->Decode(AnsiString("QQ\r\n=")); }), SInvalidBase64Data);
  EXPECT_EQ(GeneralErrorOf([] {
              Url()->Decode(TBytes{'Q', 'Q', 'Q', 'Q', 'Q'});
            }),
            SInvalidBase64Data);
}

TEST(Base64Encoding, BytesOutsideTheAlphabetAreSkipped) {
  // Length 10 (mod 4 = 2): accepted, and the line break is passed over.
  EXPECT_EQ(Std()->Decode(AnsiString("TWFu\r\nTWFu")), "ManMan");
  EXPECT_EQ(Std()->Decode(AnsiString(" T W F u ! ")), "Man");
  // Padding is skipped like any other byte, so it does not end the data.
  EXPECT_EQ(Std()->DecodeStringToBytes("QQ==QQ=="), (TBytes{0x41, 0x04, 0x10}));
  // A single value left over at the end is dropped.
  EXPECT_EQ(Std()->Decode(AnsiString("TWFuT===")), "Man");
  EXPECT_TRUE(Std()->DecodeStringToBytes("====").empty());
}

TEST(Base64Encoding, EitherDecoderTakesEitherAlphabetAndMixedInput) {
  const TBytes B{0xFB, 0xFF, 0xBF};
  EXPECT_EQ(Std()->DecodeStringToBytes("-_-_"), B);
  EXPECT_EQ(Url()->DecodeStringToBytes("+/+/"), B);
  EXPECT_EQ(Url()->DecodeStringToBytes("+_-/"), B);
  EXPECT_EQ(Std()->DecodeStringToBytes("-_8"), (TBytes{0xFB, 0xFF}));
}

TEST(Base64Encoding, LongMixedAlphabetInput) {
  const TBytes In = RandomBytes(3000, 5);
  AnsiString Text = Std()->EncodeBytesToString(In);
  bool Swap = false;
  for (char& C : Text) {
    if (C == '+' || C == '/') {
      if (Swap) C = C == '+' ? '-' : '_';
      Swap = !Swap;
    }
  }
  ASSERT_NE(Text.find('-'), AnsiString::npos);
  ASSERT_NE(Text.find('_'), AnsiString::npos);
  EXPECT_EQ(Std()->DecodeStringToBytes(Text), In);
  EXPECT_EQ(Url()->DecodeStringToBytes(Text), In);
}

TEST(Base64Encoding, RandomDataRoundTrips) {
  // Every length up to a few whole-group rounds, so that each way into and out of the
  // whole-group paths is taken.
  for (size_t N = 0; N <= 80; ++N) {
    const TBytes In = RandomBytes(N, uint32_t(N));
    EXPECT_EQ(Std()->Decode(Std()->Encode(In)), In) << N;
    EXPECT_EQ(Url()->Decode(Url()->Encode(In)), In) << N;
  }
  const TBytes Big = RandomBytes(100000);
  EXPECT_EQ(Std()->DecodeStringToBytes(Std()->EncodeBytesToString(Big)), Big);
  EXPECT_EQ(Url()->DecodeStringToBytes(Url()->EncodeBytesToString(Big)), Big);
}

TEST(Base64Encoding, SkippedBytesAnywhereInLongInput) {
  const TBytes In = RandomBytes(3000, 99);
  const AnsiString Clean = Std()->EncodeBytesToString(In);
  // Breaks at every spacing from 1 to 40 characters land in every place of a group and of a
  // whole-group round. Pad the junk so that the length rule still accepts the text.
  for (size_t Step = 1; Step <= 40; ++Step) {
    for (const AnsiString Junk : {"\r\n", "\n", " \t=", "*"}) {
      AnsiString Text = Sprinkle(Clean, Step, Junk);
      if (Text.size() % 4 == 1) Text += '\n';
      ASSERT_EQ(Std()->DecodeStringToBytes(Text), In) << Step << " " << Junk.size();
    }
  }
}

TEST(Base64Encoding, StreamsAreReadFromTheirPositionToTheEnd) {
  const TBytes Data = AsBytes("xxMan is");
  TBytesStream In(Data);
  In.SetPosition(2);
  TMemoryStream Out;
  Out.WriteBuffer("ab", 2);
  EXPECT_EQ(Std()->Encode(&In, &Out), 8);
  EXPECT_EQ(In.Position(), In.Size());
  EXPECT_EQ(Out.Size(), 10);
  EXPECT_EQ(Out.Position(), 10);
  EXPECT_EQ(AnsiString(static_cast<const char*>(Out.Memory()), 10), "abTWFuIGlz");

  TBytesStream Text(AsBytes("TWFu\r\nIGlz"));
  TMemoryStream Plain;
  EXPECT_EQ(Std()->Decode(&Text, &Plain), 6);
  EXPECT_EQ(AnsiString(static_cast<const char*>(Plain.Memory()), 6), "Man is");

  TBytesStream Five(AsBytes("QQ==X"));
  TMemoryStream Unused;
  EXPECT_EQ(GeneralErrorOf([&] { Std()->Decode(&Five, &Unused); }), SInvalidBase64Data);
}

TEST(Base64Encoding, StreamConveniences) {
  TBytesStream In(AsBytes("Many"));
  In.SetPosition(1);
  EXPECT_EQ(Std()->EncodeBytesToString(&In), "YW55");
  In.SetPosition(0);
  EXPECT_EQ(Url()->Encode(static_cast<TStream*>(&In)), AsBytes("TWFueQ"));
  In.SetPosition(0);
  EXPECT_EQ(Std()->EncodeA(AsBytes("Many").data(), 4), "TWFueQ==");

  TMemoryStream Out;
  EXPECT_EQ(Std()->Decode(AnsiString("TWFu"), &Out), 3);
  EXPECT_EQ(Std()->Decode(AsBytes("IGlz"), &Out), 3);
  EXPECT_EQ(Std()->DecodeStringToStream("IQ", &Out), 1);
  EXPECT_EQ(AnsiString(static_cast<const char*>(Out.Memory()), size_t(Out.Size())), "Man is!");
  EXPECT_EQ(Std()->Decode(AnsiString("SGk").data(), 3), AsBytes("Hi"));
  TBytesStream Text(AsBytes("SGk="));
  EXPECT_EQ(Std()->Decode(static_cast<TStream*>(&Text)), AsBytes("Hi"));
}

TEST(Base64Encoding, MemoryStreamsAreWorkedInPlace) {
  TKxMemoryStream* In = TKxMemoryStream::Create(16);
  TKxMemoryStream* Out = TKxMemoryStream::Create(16);
  In->WriteBuffer("--Man is", 8);
  In->Seek(int64_t(2), soBeginning);
  Out->WriteBuffer("abcdefghijklmnop", 16);
  Out->Seek(int64_t(2), soBeginning);
  // Written at the position; the stream then ends after what was written.
  EXPECT_EQ(Url()->Encode(In, Out), 8);
  EXPECT_EQ(In->Position(), 8);
  EXPECT_EQ(Out->Size(), 10);
  EXPECT_EQ(Out->Position(), 10);
  EXPECT_EQ(AnsiString(reinterpret_cast<char*>(Out->Memory()), 10), "abTWFuIGlz");

  Out->Seek(int64_t(2), soBeginning);
  TKxMemoryStream* Plain = TKxMemoryStream::Create(4);
  EXPECT_EQ(Std()->Decode(Out, Plain), 6);
  EXPECT_EQ(Plain->Size(), 6);
  EXPECT_EQ(AnsiString(reinterpret_cast<char*>(Plain->Memory()), 6), "Man is");
  In->Free();
  Out->Free();
  Plain->Free();

  // A stream over the caller's memory cannot make room for the output.
  char Fixed[4] = {};
  TKxMemoryStream* Foreign = TKxMemoryStream::Create(static_cast<void*>(Fixed), uint32_t(4));
  EXPECT_THROW(Std()->Decode(AnsiString("TWFuTWFu"), Foreign), Exception);
  EXPECT_EQ(Foreign->Size(), 4);
  Foreign->Free();
}
