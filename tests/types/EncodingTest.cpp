// SPDX-License-Identifier: MIT
// TKxEncoding: round trips through 8-bit code pages, the flags rule, invalid input, the byte
// forms, and byte-order-mark detection on buffers and streams.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Streams.h>
#include <kx/uKxTypes.h>

#include "support/ShortReadStream.h"
#include "support/SystemCodePage.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

using namespace kx;
using kxtest::TSystemCodePage;

namespace {

constexpr uint32_t ERROR_INVALID_PARAMETER = 87;
constexpr uint32_t ERROR_INSUFFICIENT_BUFFER = 122;
constexpr uint32_t ERROR_NO_UNICODE_TRANSLATION = 1113;

// The OS error code the call raised, 0 when it raised nothing.
uint32_t OSErrorOf(const std::function<void()>& Call) {
  try {
    Call();
  } catch (const EOSError& E) {
    return E.ErrorCode;
  }
  return 0;
}

AnsiString Bytes(std::initializer_list<uint8_t> B) {
  return AnsiString(B.begin(), B.end());
}

// Sets the process code page for one test and puts the old one back.

} // namespace

TEST(Encoding, EveryByteOf1252And437RoundTrips) {
  AnsiString All;
  for (int B = 0; B < 256; ++B) All += char(B);
  for (uint16_t Cp : {1252, 437}) {
    UnicodeString Wide = TKxEncoding::ConvertA(All, Cp);
    ASSERT_EQ(Wide.size(), 256u) << Cp;
    // Controls and ASCII stay where they are, in the DOS code page too.
    for (int B = 0; B < 0x80; ++B) EXPECT_EQ(Wide[size_t(B)], char16_t(B)) << Cp << " " << B;
    EXPECT_EQ(TKxEncoding::ConvertW(Wide, Cp), All) << Cp;
  }
  EXPECT_EQ(TKxEncoding::ConvertA(Bytes({0x80, 0x81, 0x9F}), 1252), u"\u20AC\u0081\u0178");
  EXPECT_EQ(TKxEncoding::ConvertA(Bytes({0x80, 0xB0, 0xE1}), 437), u"\u00C7\u2591\u00DF");
}

TEST(Encoding, ShiftJisRoundTripsAndFailsOnInvalidBytesOnlyWithFlags) {
  const AnsiString Sjis = Bytes({0x93, 0xFA, 0x96, 0x7B, 0x8C, 0xEA, 0x20, 0x82, 0xA0, 0xB1});
  const UnicodeString Text = u"\u65E5\u672C\u8A9E \u3042\uFF71";
  EXPECT_EQ(TKxEncoding::ConvertA(Sjis, 932), Text);
  EXPECT_EQ(TKxEncoding::ConvertW(Text, 932), Sjis);

  // A lead byte without its trail byte. The string form passes no flags and substitutes;
  // the counting form passes MB_ERR_INVALID_CHARS and raises.
  const AnsiString Cut = Bytes({0x41, 0x82});
  UnicodeString Substituted = TKxEncoding::ConvertA(Cut, 932);
  ASSERT_EQ(Substituted.size(), 2u);
  EXPECT_EQ(Substituted[0], u'A');
  EXPECT_EQ(OSErrorOf([&] { TKxEncoding::ConvertA(Cut.data(), 2, nullptr, 0, 932); }),
            ERROR_NO_UNICODE_TRANSLATION);
  WideChar Out[8];
  EXPECT_EQ(TKxEncoding::ConvertA(Sjis.data(), 4, Out, 8, 932), 2);
  EXPECT_EQ(UnicodeString(Out, 2), u"\u65E5\u672C");
}

TEST(Encoding, CodePagesThatRefuseFlagsSubstituteInsteadOfFailing) {
  // 65001 gets no flags, so even the counting form replaces what is not UTF-8.
  const AnsiString Broken = Bytes({0x61, 0xC3});
  WideChar Out[4];
  ASSERT_EQ(TKxEncoding::ConvertA(Broken.data(), 2, Out, 4, 65001), 2);
  EXPECT_EQ(Out[1], u'\uFFFD');
  EXPECT_EQ(TKxEncoding::ConvertA(Broken, 65001), u"a\uFFFD");
  EXPECT_EQ(TKxEncoding::ConvertW(u"\u00E9\U0001F600", 65001),
            Bytes({0xC3, 0xA9, 0xF0, 0x9F, 0x98, 0x80}));
  // A lone surrogate becomes U+FFFD rather than an error.
  EXPECT_EQ(TKxEncoding::ConvertW(UnicodeString(1, char16_t(0xD800)), 65001),
            Bytes({0xEF, 0xBF, 0xBD}));
}

TEST(Encoding, NarrowingComposesAndPutsTheDefaultCharacter) {
  // Base + nonspacing mark becomes the precomposed character where the code page has it.
  EXPECT_EQ(TKxEncoding::ConvertW(u"e\u0301", 1252), Bytes({0xE9}));
  EXPECT_EQ(TKxEncoding::ConvertW(u"\u0438\u0306", 1251), Bytes({0xE9}));
  // Where it has not, the pair becomes one default character.
  EXPECT_EQ(TKxEncoding::ConvertW(u"\u0438\u0306", 1252), "?");
  EXPECT_EQ(TKxEncoding::ConvertW(u"A\u65E5B", 437), "A?B");
  // Each half of a surrogate pair is a character the code page lacks.
  EXPECT_EQ(TKxEncoding::ConvertW(u"\U0001F600", 1252), "??");
  EXPECT_EQ(TKxEncoding::ConvertW(u"\U0001F600", 932), "??");
  // Kana and the combining voiced mark compose in Shift-JIS too.
  EXPECT_EQ(TKxEncoding::ConvertW(u"\u304B\u3099", 932), Bytes({0x82, 0xAA}));
}

TEST(Encoding, UnicodeCodePagesAreRefusedByThePlatformPair) {
  // The platform pair converts none of the UTF-16 and UTF-32 code pages; only the byte
  // forms handle 1200, by copying.
  const AnsiString Be = Bytes({0x00, 0x41, 0x00, 0xE9});
  UnicodeString Wide;
  for (uint16_t Cp : {1200, 1201, 12000, 12001}) {
    EXPECT_EQ(OSErrorOf([&] { TKxEncoding::ConvertA(Be, Cp); }), ERROR_INVALID_PARAMETER) << Cp;
    EXPECT_EQ(OSErrorOf([&] { TKxEncoding::ConvertW(u"A", Cp); }), ERROR_INVALID_PARAMETER) << Cp;
    if (Cp == 1200) continue;
    EXPECT_EQ(OSErrorOf([&] { TKxEncoding::ConvertB(Be.data(), 4, Wide, Cp); }),
              ERROR_INVALID_PARAMETER)
        << Cp;
  }
  // An odd last byte is dropped.
  const AnsiString Le = Bytes({0x41, 0x00, 0xE9, 0x00, 0x42});
  EXPECT_EQ(TKxEncoding::ConvertB(Le.data(), 5, Wide, 1200), u"A\u00E9");
  AnsiString S;
  EXPECT_EQ(TKxEncoding::ConvertB(Le.data(), 5, S, 1252, 1200), Bytes({0x41, 0xE9}));
  // UTF-16 at an odd address reads the same.
  const AnsiString Shifted = " " + Le;
  EXPECT_EQ(TKxEncoding::ConvertB(Shifted.data() + 1, 4, S, 65001, 1200),
            Bytes({0x41, 0xC3, 0xA9}));
}

TEST(Encoding, ByteFormsCopyBetweenEqualCodePagesAndAssertOn8BitTargets) {
  AnsiString S;
  // Copied as they are, though not Shift-JIS.
  const AnsiString Invalid = Bytes({0x82, 0x82, 0xFF});
  EXPECT_EQ(TKxEncoding::ConvertB(Invalid.data(), 3, S, 932, 932), Invalid);
  EXPECT_EQ(TKxEncoding::ConvertB(TBytes{0xC3, 0xA9, 0x21}, S, 1252, 65001), Bytes({0xE9, 0x21}));
  if (!KxAssertionsEnabled) GTEST_SKIP() << "assertions compiled out";
  for (uint16_t Cp : {1200, 1201, 12000, 12001}) {
    try {
      TKxEncoding::ConvertB(Invalid.data(), 3, S, Cp, 1252);
      FAIL() << Cp;
    } catch (const EAssertionFailed& E) {
      EXPECT_EQ(
          E.Message(),
          "Assertion failed (source\\ComponentSets\\Components\\common\\uKxTypes, line 2842)");
    }
  }
}

TEST(Encoding, EmptyAndZeroTerminatedInput) {
  UnicodeString Wide = u"stale";
  EXPECT_EQ(TKxEncoding::ConvertA("", 0, Wide, 1252), u"");
  EXPECT_EQ(TKxEncoding::ConvertA(AnsiString()), u"");
  EXPECT_EQ(TKxEncoding::ConvertW(UnicodeString(), 1252), "");
  // Length -1: the platform counts the terminator, the result does not keep it.
  EXPECT_EQ(TKxEncoding::ConvertA("ab\xE9", -1, Wide, 1252), u"ab\u00E9");
  EXPECT_EQ(TKxEncoding::ConvertA("", -1, Wide, 1252), u"");
  WideChar Out[8];
  EXPECT_EQ(TKxEncoding::ConvertA("ab", -1, Out, 8, 1252), 3);
  EXPECT_EQ(TKxEncoding::ConvertA("ab", 0, Out, 8, 1252), 0);
}

TEST(Encoding, CountingFormsMeasureAndRaiseWhenTheBufferIsShort) {
  const AnsiString Utf8 = Bytes({0x61, 0xC3, 0xA9, 0xE2, 0x82, 0xAC});
  EXPECT_EQ(TKxEncoding::ConvertA(Utf8.data(), 6, nullptr, 0, 65001), 3);
  WideChar Small[2];
  EXPECT_EQ(OSErrorOf([&] { TKxEncoding::ConvertA(Utf8.data(), 6, Small, 2, 65001); }),
            ERROR_INSUFFICIENT_BUFFER);
  const UnicodeString Wide = u"a\u00E9\u20AC";
  EXPECT_EQ(TKxEncoding::ConvertW(Wide.data(), 3, nullptr, 0, 65001), 6);
  char Narrow[8];
  EXPECT_EQ(TKxEncoding::ConvertW(Wide.data(), 3, Narrow, 8, 1252), 3);
  EXPECT_EQ(AnsiString(Narrow, 3), Bytes({0x61, 0xE9, 0x80}));
  EXPECT_EQ(OSErrorOf([&] { TKxEncoding::ConvertW(Wide.data(), 3, Narrow, 2, 1252); }),
            ERROR_INSUFFICIENT_BUFFER);
}

TEST(Encoding, CodePageZeroIsTheSystemCodePage) {
  {
    TSystemCodePage Cp(1252);
    EXPECT_EQ(TKxEncoding::ConvertA(Bytes({0xE9, 0x80})), u"\u00E9\u20AC");
    EXPECT_EQ(TKxEncoding::ConvertW(u"\u00E9", 0), Bytes({0xE9}));
    AnsiString S;
    EXPECT_EQ(TKxEncoding::ConvertA("\xC3\xA9", 2, S, 0, 65001), Bytes({0xE9}));
  }
  {
    TSystemCodePage Cp(65001);
    EXPECT_EQ(TKxEncoding::ConvertA(Bytes({0xC3, 0xA9})), u"\u00E9");
    // The flags follow the code page 0 stands for: none for UTF-8.
    EXPECT_EQ(TKxEncoding::ConvertW(u"\u00E9", 0), Bytes({0xC3, 0xA9}));
    WideChar Out[2];
    EXPECT_EQ(TKxEncoding::ConvertA("\xC3", 1, Out, 2, 0), 1);
  }
}

TEST(Encoding, UnknownCodePagesRaiseTheOSError) {
  EXPECT_EQ(OSErrorOf([] { TKxEncoding::ConvertA(AnsiString("a"), 709); }),
            ERROR_INVALID_PARAMETER);
}

TEST(GetCodePage, MarksOnBuffers) {
  struct TCase {
    AnsiString Data;
    uint16_t CodePage;
  } Cases[] = {
      {Bytes({0x00, 0x00, 0xFE, 0xFF, 0x00, 0x00, 0x00, 0x41}), 12001},
      {Bytes({0xFF, 0xFE, 0x00, 0x00, 0x41, 0x00}), 12000},
      {Bytes({0xEF, 0xBB, 0xBF}), 65001},
      {Bytes({0xFE, 0xFF}), 1201},
      {Bytes({0xFF, 0xFE}), 1200},
      // The UTF-32 mark needs four bytes.
      {Bytes({0xFF, 0xFE, 0x00}), 1200},
      // Unmarked: the zero second byte of Latin text in UTF-16LE, from three bytes on.
      {Bytes({0x41, 0x00, 0x42, 0x00}), 1200},
      {Bytes({0x41, 0x00, 0x42}), 1200},
      {Bytes({0x41, 0x00}), 0},
      {Bytes({0x00, 0x41, 0x00}), 0},
      {Bytes({0xEF, 0xBB}), 0},
      {Bytes({0xFF}), 0},
      {AnsiString("abc"), 0},
      {AnsiString(), 0},
  };
  for (const TCase& C : Cases)
    EXPECT_EQ(KxGetCodePage(C.Data.data(), int64_t(C.Data.size())), C.CodePage)
        << ::testing::PrintToString(C.Data);
}

TEST(GetCodePage, MarksOnStreamsMoveThePositionBehindTheMark) {
  struct TCase {
    AnsiString Data;
    uint16_t CodePage;
    int64_t Behind;
  } Cases[] = {
      {Bytes({0x00, 0x00, 0xFE, 0xFF, 0x00}), 12001, 4},
      {Bytes({0xFF, 0xFE, 0x00, 0x00, 0x41, 0x00}), 12000, 4},
      {Bytes({0xEF, 0xBB, 0xBF}), 65001, 3},
      {Bytes({0xEF, 0xBB, 0xBF, 0x41, 0x42}), 65001, 3},
      {Bytes({0xFE, 0xFF, 0x00, 0x41}), 1201, 2},
      {Bytes({0xFF, 0xFE, 0x41, 0x00}), 1200, 2},
      // No mark: the stream stays where it was, UTF-16LE guessed or not.
      {Bytes({0x41, 0x00, 0x42, 0x00}), 1200, 0},
      {AnsiString("plain"), 0, 0},
      {AnsiString("p"), 0, 0},
      {AnsiString(), 0, 0},
  };
  for (const TCase& C : Cases) {
    // The mark is looked for at the position, not at the start.
    TMemoryStream* Stream = TMemoryStream::Create();
    Stream->WriteBuffer("xx", 2);
    if (!C.Data.empty()) Stream->WriteBuffer(C.Data.data(), int32_t(C.Data.size()));
    Stream->SetPosition(2);
    EXPECT_EQ(KxGetCodePage(Stream), C.CodePage) << ::testing::PrintToString(C.Data);
    EXPECT_EQ(Stream->Position(), 2 + C.Behind) << ::testing::PrintToString(C.Data);
    // The same through streams that give one or two bytes per read.
    for (int32_t Most : {1, 2}) {
      Stream->SetPosition(2);
      kxtest::TShortReadStream Short(Stream, Most);
      EXPECT_EQ(KxGetCodePage(&Short), C.CodePage) << Most << ::testing::PrintToString(C.Data);
      EXPECT_EQ(Short.Position(), 2 + C.Behind) << Most << ::testing::PrintToString(C.Data);
    }
    Stream->Free();
  }
}

TEST(GetCodePage, AStreamMustBeGiven) {
  if (!KxAssertionsEnabled) GTEST_SKIP() << "assertions compiled out";
  try {
    KxGetCodePage(static_cast<TStream*>(nullptr));
    FAIL() << "no assertion";
  } catch (const EAssertionFailed& E) {
    EXPECT_EQ(E.LineNumber(), 4001);
  }
}

TEST(Encoding, LongTextsConvertAsTheirPiecesDo) {
  // Texts long enough for the bulk paths, with characters of every width at every offset.
  struct TPiece {
    const char* Utf8;
    const char16_t* Wide;
    const char* Cp1252;
  } Pieces[] = {
      {"a", u"a", "a"},
      {" ", u" ", " "},
      {"\xC3\xA9", u"\u00E9", "\xE9"},
      {"\xE2\x82\xAC", u"\u20AC", "\x80"},
      {"\xF0\x9F\x98\x80", u"\U0001F600", "??"},
      {"e\xCC\x81", u"e\u0301", "\xE9"},
  };
  std::mt19937 Gen(1);
  for (int Round = 0; Round < 300; ++Round) {
    AnsiString Utf8, Cp1252;
    UnicodeString Wide;
    const size_t Count = Gen() % 80;
    for (size_t I = 0; I < Count; ++I) {
      // Mostly ASCII, so that runs start and end anywhere.
      const TPiece& P = Pieces[Gen() % 3 == 0 ? 2 + Gen() % 4 : Gen() % 2];
      Utf8 += P.Utf8;
      Wide += P.Wide;
      Cp1252 += P.Cp1252;
    }
    ASSERT_EQ(TKxEncoding::ConvertA(Utf8, 65001), Wide) << Utf8;
    ASSERT_EQ(TKxEncoding::ConvertW(Wide, 65001), Utf8) << Utf8;
    ASSERT_EQ(TKxEncoding::ConvertW(Wide, 1252), Cp1252) << Utf8;
    if (Utf8.empty()) continue;
    ASSERT_EQ(TKxEncoding::ConvertA(Utf8.data(), int32_t(Utf8.size()), nullptr, 0, 65001),
              int32_t(Wide.size()));
  }
}
