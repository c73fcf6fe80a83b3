// SPDX-License-Identifier: MIT
// Whole streams as text with their byte-order-mark rules, the UTF-8 stream functions and the
// UTF-8 adapter's decoding and its faults.
#include <kx/rtl/Exceptions.h>
#include <kx/uKxClasses.h>

#include "support/ExpectMessage.h"
#include "support/ShortReadStream.h"
#include "support/SystemCodePage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

using namespace kx;
using kxtest::ExpectMessage;
using kxtest::TSystemCodePage;

namespace {

// A memory stream that tells when it is freed and records the sizes written to it.
class TProbeStream : public TKxMemoryStream {
public:
  explicit TProbeStream(const AnsiString& Bytes, bool* Freed = nullptr)
      : TKxMemoryStream(16), FFreed(Freed) {
    if (!Bytes.empty()) TKxMemoryStream::Write(Bytes.data(), int32_t(Bytes.size()));
    SetPosition(0);
  }
  ~TProbeStream() override {
    if (FFreed) *FFreed = true;
  }
  using TKxMemoryStream::Write;
  int32_t Write(const void* Buffer, int32_t Count) override {
    Writes.push_back(Count);
    return TKxMemoryStream::Write(Buffer, Count);
  }
  AnsiString Content() const {
    return AnsiString(reinterpret_cast<const char*>(Memory()), size_t(FSize));
  }
  std::vector<int32_t> Writes;

private:
  bool* FFreed;
};

struct TProbe {
  TProbeStream* S;
  explicit TProbe(const AnsiString& Bytes = {}) : S(new TProbeStream(Bytes)) {}
  ~TProbe() { S->Free(); }
  TProbeStream* operator->() const { return S; }
  operator TProbeStream*() const { return S; }
};

const AnsiString Utf8Bom = "\xEF\xBB\xBF";
constexpr const char* SMismatch = "The specified encoding does not match the BOM of the stream!";

UnicodeString Decode(const AnsiString& Utf8, int32_t Count = 64) {
  TProbe Source(Utf8);
  TKxUTF8StreamAdapter* A = TKxUTF8StreamAdapter::Create(static_cast<TStream*>(Source), false);
  std::vector<char> Buf(size_t(Count) + 2, '\x55');
  int32_t N;
  try {
    N = A->Read(Buf.data(), Count);
  } catch (...) {
    A->Free();
    throw;
  }
  A->Free();
  UnicodeString W(size_t(N / 2), u'\0');
  std::memcpy(W.data(), Buf.data(), W.size() * 2);
  return W;
}

} // namespace

TEST(StreamToString, TheMarkOrTheGivenCodePageDecides) {
  TSystemCodePage System(1252);
  TProbe Utf8(Utf8Bom + "\xC3\xA9t\xC3\xA9");
  EXPECT_EQ(KxStreamToWideString(Utf8), u"\u00E9t\u00E9");
  EXPECT_EQ(Utf8->Position(), 8);
  EXPECT_EQ(KxStreamToString(Utf8, false, true, true, 65001), u"\u00E9t\u00E9");
  ExpectMessage([&] { KxStreamToWideString(Utf8, false, true, true, 1252); }, SMismatch);
  // Not looking for the mark: it is text of the code page given.
  EXPECT_EQ(KxStreamToWideString(Utf8, false, true, false, 65001), u"\uFEFF\u00E9t\u00E9");

  TProbe Utf16(AnsiString("\xFF\xFE\xE9\0t\0", 6));
  EXPECT_EQ(KxStreamToWideString(Utf16), u"\u00E9t");
  // Unmarked UTF-16LE is recognised by its zero bytes, and read from the start.
  TProbe Bare(AnsiString("a\0b\0", 4));
  EXPECT_EQ(KxStreamToWideString(Bare), u"ab");
  ExpectMessage([&] { KxStreamToWideString(Bare, false, true, true, 1252); }, SMismatch);

  // No mark, no code page: code page 0.
  TProbe Ansi("\xE9t\xE9");
  EXPECT_EQ(KxStreamToWideString(Ansi), u"\u00E9t\u00E9");
  // From the position rather than the start.
  Ansi->SetPosition(1);
  EXPECT_EQ(KxStreamToWideString(Ansi, false, false), u"t\u00E9");

  // UTF-16BE is recognised but, as on Windows, not converted.
  TProbe Be(AnsiString("\xFE\xFF\0a", 4));
  EXPECT_THROW(KxStreamToWideString(Be), EOSError);
}

TEST(StreamToString, EightBitTextInTheDestinationCodePage) {
  TProbe Utf8(Utf8Bom + "\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(KxStreamToAnsiString(Utf8, false, true, true, -1, 1252), "\xE9\x80");
  EXPECT_EQ(KxStreamToAnsiString(Utf8, false, true, true, 65001, 437), "\x82?");
  ExpectMessage([&] { KxStreamToAnsiString(Utf8, false, true, true, 1252, 1252); }, SMismatch);
  for (uint16_t Cp : {1200, 1201, 12000, 12001})
    ExpectMessage([&] { KxStreamToAnsiString(Utf8, false, true, true, -1, Cp); },
                  "The specified encoding is not supported!");
  // The destination is the given code page: no conversion, and the result is as long as the
  // whole stream, though it was read from behind the mark.
  EXPECT_EQ(KxStreamToAnsiString(Utf8, false, true, true, 65001, 65001),
            AnsiString("\xC3\xA9\xE2\x82\xAC\0\0\0", 8));
  TProbe Plain("abc");
  EXPECT_EQ(KxStreamToAnsiString(Plain, false, true, false, 1252, 1252), "abc");

  TProbe Utf16(AnsiString("\xFF\xFE\xE9\0", 4));
  EXPECT_EQ(KxStreamToAnsiString(Utf16, false, true, true, -1, 1252), "\xE9");
}

// Streams that give a byte (or a few) per read are read to their end all the same.
TEST(StreamToString, StreamsThatGiveFewBytesPerReadAreReadWhole) {
  TSystemCodePage System(1252);
  const AnsiString Long = Utf8Bom + AnsiString(3000, 'x') + "\xC3\xA9";
  const UnicodeString LongText = UnicodeString(3000, u'x') + u"\u00E9";
  for (int32_t Most : {1, 1000}) {
    SCOPED_TRACE(testing::Message() << Most << " per read");
    kxtest::TShortReadStream Wide(Long, Most);
    EXPECT_EQ(KxStreamToWideString(&Wide), LongText);
    EXPECT_EQ(Wide.Position(), int64_t(Long.size()));
    kxtest::TShortReadStream Ansi(Long, Most);
    EXPECT_EQ(KxStreamToAnsiString(&Ansi, false, true, true, -1, 1252),
              AnsiString(3000, 'x') + "\xE9");
    // No conversion: the bytes behind the mark, in a result as long as the whole stream.
    kxtest::TShortReadStream Raw(Long, Most);
    EXPECT_EQ(KxStreamToAnsiString(&Raw, false, true, true, 65001, 65001),
              Long.substr(3) + AnsiString(3, '\0'));
    kxtest::TShortReadStream Utf16(AnsiString("\xFF\xFE\xE9\0t\0", 6), Most);
    EXPECT_EQ(KxStreamToWideString(&Utf16), u"\u00E9t");
  }
}

TEST(StreamToString, TheStreamIsFreedWhenAskedEvenWhenTheReadFails) {
  bool Freed = false;
  KxStreamToWideString(new TProbeStream("abc", &Freed), true);
  EXPECT_TRUE(Freed);
  Freed = false;
  EXPECT_THROW(KxStreamToWideString(new TProbeStream(Utf8Bom, &Freed), true, true, true, 1252),
               Exception);
  EXPECT_TRUE(Freed);
  Freed = false;
  KxStreamToAnsiString(new TProbeStream("abc", &Freed), true);
  EXPECT_TRUE(Freed);
  TProbeStream* Kept = new TProbeStream("abc", &Freed);
  Freed = false;
  KxStreamToAnsiString(Kept, false);
  EXPECT_FALSE(Freed);
  Kept->Free();
}

TEST(Utf8Streams, EncodeTakesTheRestAsUtf16) {
  TProbe Source(AnsiString("\xE9\0\xAC\x20!", 5));
  TProbe Dest;
  KxUTF8EncodeStream(Source, Dest, true);
  EXPECT_EQ(Dest->Content(), Utf8Bom + "\xC3\xA9\xE2\x82\xAC");
  Source->SetPosition(2);
  TProbe Bare;
  KxUTF8EncodeStream(Source, Bare, false);
  EXPECT_EQ(Bare->Content(), "\xE2\x82\xAC");
}

TEST(Utf8Streams, StreamsThatMoveABytePerCallAreEncodedAndDecodedWhole) {
  const UnicodeString Text = UnicodeString(700, u'a') + u"\u00E9\u20AC";
  const AnsiString Utf16(reinterpret_cast<const char*>(Text.data()), Text.size() * 2);
  const AnsiString Utf8 = AnsiString(700, 'a') + "\xC3\xA9\xE2\x82\xAC";
  kxtest::TShortReadStream Source(Utf16, 1);
  TProbe Sink;
  kxtest::TShortReadStream Dest(Sink.S, 1);
  KxUTF8EncodeStream(&Source, &Dest, true);
  EXPECT_EQ(Sink->Content(), Utf8Bom + Utf8);
  EXPECT_EQ(Source.Position(), int64_t(Utf16.size()));

  kxtest::TShortReadStream Marked(Utf8Bom + Utf8, 1);
  TProbe Out;
  kxtest::TShortReadStream Narrow(Out.S, 1);
  KxUTF8DecodeStream(&Marked, &Narrow);
  EXPECT_EQ(Out->Content(), Utf16) << "the mark read a byte at a time is still the mark";
}

TEST(Utf8Streams, DecodeReadsBlocksUntilAShortOne) {
  TProbe Source(AnsiString(1024, 'a'));
  TProbe Dest;
  KxUTF8DecodeStream(Source, Dest);
  EXPECT_EQ(Dest->Writes, (std::vector<int32_t>{1024, 1024, 0}));
  EXPECT_EQ(Dest->Size(), 2048);

  TProbe Marked(Utf8Bom + "\xC3\xA9x");
  TProbe Out;
  KxUTF8DecodeStream(Marked, Out);
  EXPECT_EQ(Out->Content(), AnsiString("\xE9\0x\0", 4));
}

TEST(Utf8Streams, DecodeToTextNeedsUtf8OrNoMark) {
  TProbe Marked(Utf8Bom + "\xC3\xA9");
  EXPECT_EQ(KxUTF8Decode(Marked), u"\u00E9");
  TProbe Bare("plain");
  EXPECT_EQ(KxUTF8Decode(Bare), u"plain");
  TProbe Utf16(AnsiString("\xFF\xFE"
                          "a\0",
                          4));
  try {
    KxUTF8Decode(Utf16);
    FAIL() << "no exception";
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "The sourcestream does not contain unicode data!");
  }
}

TEST(Utf8Streams, DecodeToTextSkipsOneMarkOnly) {
  // A U+FEFF of the text behind the mark is text.
  TProbe Twice(Utf8Bom + Utf8Bom + "a");
  EXPECT_EQ(KxUTF8Decode(Twice), u"\uFEFFa");
  TProbe Once(Utf8Bom + "a");
  EXPECT_EQ(KxUTF8Decode(Once), u"a");
}

TEST(Utf8Adapter, DecodesOneTwoAndThreeByteSequences) {
  EXPECT_EQ(Decode("\xC3\xA9"), u"\u00E9");
  EXPECT_EQ(Decode("a\xE2\x82\xAC\xDF\xBF"), u"a\u20AC\u07FF");
  // Continuation bytes are taken as they come, and four-byte leads as three-byte ones.
  EXPECT_EQ(Decode("\xC3\x41"), u"\u00C1");
  EXPECT_EQ(Decode("\xF0\x9F\x98"), u"\u07D8");
  // At most Count div 2 characters; the wrapped stream stops behind the last one.
  TProbe Source("ab\xC3\xA9"
                "cd");
  TKxUTF8StreamAdapter* A = TKxUTF8StreamAdapter::Create(static_cast<TStream*>(Source), false);
  char16_t Buf[4] = {};
  EXPECT_EQ(A->Read(Buf, 7), 6);
  EXPECT_EQ(UnicodeString(Buf, 3), u"ab\u00E9");
  EXPECT_EQ(Source->Position(), 4);
  EXPECT_EQ(A->Read(Buf, 8), 4);
  EXPECT_EQ(A->Read(Buf, 8), 0);
  A->Free();
}

TEST(Utf8Adapter, MalformedInputRaises) {
  const AnsiString Invalid = "The stream does not contain valid UTF-8 code!";
  ExpectMessage([] { Decode("\x80"); }, Invalid);
  ExpectMessage([] { Decode("ab\xBF"); }, Invalid);
  ExpectMessage([] { Decode("\xF0\x9F\x98\x80"); }, Invalid);
  ExpectMessage([] { Decode("\xE2\x82"); }, Invalid + "\r\nThere is 1 byte missing!");
  ExpectMessage([] { Decode("\xC3"); }, Invalid + "\r\nThere are 1 or 2 bytes missing!");
  ExpectMessage([] { Decode("x\xE2"); }, Invalid + "\r\nThere are 1 or 2 bytes missing!");
}

TEST(Utf8Adapter, WritesUtf8AfterOneMark) {
  TProbe Dest;
  TKxUTF8StreamAdapter* A = TKxUTF8StreamAdapter::Create(static_cast<TStream*>(Dest), false);
  EXPECT_TRUE(A->WriteBOM());
  const UnicodeString Text = u"\u00E9\u20AC";
  EXPECT_EQ(A->Write(Text.data(), 4), 4);
  EXPECT_FALSE(A->WriteBOM());
  EXPECT_EQ(A->Write(u"!", 2), 2);
  EXPECT_EQ(Dest->Content(), Utf8Bom + "\xC3\xA9\xE2\x82\xAC!");
  A->Free();

  TProbe Plain;
  A = TKxUTF8StreamAdapter::Create(static_cast<TStream*>(Plain), false, false);
  A->Write(u"x", 2);
  EXPECT_EQ(Plain->Content(), "x");
  A->Free();
}

TEST(Utf8Adapter, SeeksInHalfAndOwnsWhenAsked) {
  bool Freed = false;
  TKxUTF8StreamAdapter* A =
      TKxUTF8StreamAdapter::Create(new TProbeStream("0123456789", &Freed), true);
  EXPECT_EQ(A->Seek(int64_t(10), soBeginning), 10);
  EXPECT_EQ(A->Stream()->Position(), 5);
  EXPECT_EQ(A->Seek(int64_t(3), soBeginning), 2);
  EXPECT_EQ(A->Seek(int64_t(4), soCurrent), 6);
  EXPECT_EQ(A->Stream()->Position(), 3);
  A->Free();
  EXPECT_TRUE(Freed);
}
