// SPDX-License-Identifier: MIT
// TKxTextParser: counters, end handling, the three storage forms, marks, peeks, selections,
// in-place parsing of memory streams and chunked reading of other streams.
#include <kx/classes/MemoryStream.h>
#include <kx/classes/TextParser.h>
#include <kx/rtl/OwnedPtr.h>

#include "support/ExpectMessage.h"
#include "support/ShortReadStream.h"
#include "support/SystemCodePage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>

using namespace kx;
using kxtest::ExpectMessage;
using kxtest::TSystemCodePage;

namespace {

using Parser = OwnedPtr<TKxTextParser>;

// A parser over its own copy of Text (a memory source is parsed in place).
class Over {
public:
  Over(std::string AText, uint16_t CodePage = 1252)
      : FText(std::move(AText)),
        FParser(TKxTextParser::Create(FText.data(), uint32_t(FText.size()), CodePage)) {}
  TKxTextParser* operator->() const { return FParser.Get(); }
  TKxTextParser* get() const { return FParser.Get(); }

private:
  std::string FText;
  Parser FParser;
};

std::string Utf16(const std::u16string& W) {
  std::string Bytes(W.size() * 2, '\0');
  std::memcpy(Bytes.data(), W.data(), Bytes.size());
  return Bytes;
}

} // namespace

TEST(KxTextParser, OneCharacterThenEOF) {
  auto P = Over("a");
  EXPECT_FALSE(P->GetEOF());
  EXPECT_EQ(*P->CurrCharA(), 'a');
  P->NextChar();
  EXPECT_TRUE(P->GetEOF());
  EXPECT_EQ(*P->CurrCharA(), '\0');
  EXPECT_THROW(P->NextChar(), EKxTextParserEOF);
  ExpectMessage([&] { P->ReadCharA(); }, "Unexpected EOF");
  ExpectMessage([&] { P->CheckEOF(); }, "Unexpected EOF");
  EXPECT_EQ(P->GetCurPos(), P->BufferEnd()) << "the cursor stays at the end";
  EXPECT_EQ(P->GetPosition(), 1);
}

TEST(KxTextParser, NextCharPassesControlCharactersAndCountsLines) {
  auto P = Over("ab\ncd");
  EXPECT_EQ(P->GetLineNr(), 1);
  EXPECT_EQ(P->GetColNr(), 0);
  P->NextChar();
  P->NextChar();
  EXPECT_EQ(*P->CurrCharA(), 'c');
  EXPECT_EQ(P->GetLineNr(), 2);
  EXPECT_EQ(P->GetColNr(), 2);
  EXPECT_EQ(P->GetCharsRead(), 3);
  EXPECT_EQ(P->GetPosition(), 3);
  EXPECT_EQ(*P->PrevCharA(), '\n');

  // The space is no control character; tabs and carriage returns are.
  auto Q = Over("a\t\r\n b");
  Q->NextChar();
  EXPECT_EQ(*Q->CurrCharA(), ' ');
  Q->SkipChars(1);
  EXPECT_EQ(*Q->CurrCharA(), 'b');
  Q->SkipChars(0);
  Q->SkipChars(-3);
  EXPECT_EQ(*Q->CurrCharA(), 'b');

  P->First();
  EXPECT_EQ(*P->CurrCharA(), 'a');
  EXPECT_EQ(P->GetLineNr(), 1);
  EXPECT_EQ(P->GetColNr(), 0);
  EXPECT_EQ(P->GetPos(tpPrevPos), nullptr);
}

// Bulk skips must leave exactly the counters that single moves leave, across scan blocks,
// line feeds at block edges and the end of the text.
TEST(KxTextParser, SkipsCountLikeSingleMoves) {
  std::mt19937 Rng(7);
  std::string Text(300000, 'x');
  for (char& C : Text) {
    unsigned R = Rng() % 100;
    C = R < 4 ? '\n' : R < 6 ? '#' : R < 8 ? '\t' : char('a' + R % 26);
  }
  Text[0x10000] = '\n'; // at the edge of a scan block
  Text[0x10001] = '\n';
  for (TKxTextParserSkipOp Op : {sopUnEq, sopGt, sopNotIn}) {
    auto Fast = Over(Text);
    auto Slow = Over(Text);
    TKxCharSet Stops{'#'};
    auto Holds = [&](char X) { return Op == sopGt ? uint8_t(X) > uint8_t('\t') : X != '#'; };
    int Rounds = 0;
    while (!Fast->GetEOF()) {
      if (Op == sopNotIn)
        Fast->SkipWhile(Op, Stops);
      else
        Fast->SkipWhile(Op, Op == sopGt ? '\t' : '#');
      while (!Slow->GetEOF() && Holds(*Slow->CurrCharA())) Slow->ReadCharA();
      ASSERT_EQ(Fast->GetPosition(), Slow->GetPosition()) << "op " << int(Op);
      ASSERT_EQ(Fast->GetLineNr(), Slow->GetLineNr()) << Fast->GetPosition();
      ASSERT_EQ(Fast->GetColNr(), Slow->GetColNr()) << Fast->GetPosition();
      ASSERT_EQ(Fast->GetCharsRead(), Slow->GetCharsRead());
      ASSERT_EQ(Fast->GetEOF(), Slow->GetEOF());
      ASSERT_EQ(Fast->GetPos(tpPrevPos) - Fast->Buffer(), Slow->GetPos(tpPrevPos) - Slow->Buffer());
      if (Fast->GetEOF()) break;
      Fast->ReadCharA();
      Slow->ReadCharA();
      ++Rounds;
    }
    EXPECT_GT(Rounds, 1000);
    EXPECT_EQ(Fast->GetLineNr(), 1 + std::count(Text.begin() + 1, Text.end(), '\n'));
  }
}

TEST(KxTextParser, ComparisonSkips) {
  auto P = Over("aaab  c9");
  P->SkipWhile(sopEq, 'a');
  EXPECT_EQ(*P->CurrCharA(), 'b');
  P->SkipWhile(sopLt, 'a'); // b is not below a
  EXPECT_EQ(*P->CurrCharA(), 'b');
  P->SkipWhile(sopGtEq, 'b');
  EXPECT_EQ(*P->CurrCharA(), ' ');
  P->SkipWhile(sopLtEq, ' ');
  EXPECT_EQ(*P->CurrCharA(), 'c');
  P->SkipWhile(sopGt, '9');
  EXPECT_EQ(*P->CurrCharA(), '9');
  P->SkipWhile(sopIn, '9'); // not a comparison: nothing
  EXPECT_EQ(*P->CurrCharA(), '9');
  P->SkipWhile(sopIn, TKxCharSet("0123456789"));
  EXPECT_TRUE(P->GetEOF());
  EXPECT_NO_THROW(P->SkipWhile(sopUnEq, 'z')) << "a skip at the end does nothing";

  // Comparisons are unsigned: 0xE9 is above 'z'.
  auto Q = Over("\xE9\xE9z");
  Q->SkipWhile(sopGt, 'z');
  EXPECT_EQ(Q->GetPosition(), 2);
}

TEST(KxTextParser, OneByteTextWidensFromItsCodePage) {
  auto P = Over("\xE9\x80x", 1252);
  EXPECT_EQ(*P->CurrCharW(), u'\u00E9');
  EXPECT_EQ(uint8_t(*P->CurrCharA()), 0xE9) << "in place, unconverted";
  EXPECT_EQ(*P->PeekCharW(), u'\u20AC');
  P->SkipWhile(sopLt, u'\u0100'); // é is below U+0100, the euro sign is not
  EXPECT_EQ(P->GetPosition(), 1);
  EXPECT_EQ(P->SelectedW(tpPrevPos, tpPeekPos), u"\u00E9\u20AC");
}

TEST(KxTextParser, Utf8Moves) {
  // U+00E9, U+20AC, U+1F600, then a line feed.
  const std::string Text = "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\nz";
  auto P = Over(Text, 65001);
  EXPECT_EQ(P->CharacterSetType(), MBCS);
  EXPECT_EQ(*P->CurrCharW(), u'\u00E9');
  P->NextChar();
  EXPECT_EQ(P->GetPosition(), 2);
  EXPECT_EQ(P->GetCharsRead(), 1);
  EXPECT_EQ(*P->ReadCharW(), u'\u20AC');
  EXPECT_EQ(P->GetPosition(), 5);
  EXPECT_EQ(*P->CurrCharW(), char16_t(0xD83D)) << "the first of the surrogate pair";
  P->SkipWhile(sopGt, u'\u2000');
  EXPECT_EQ(P->GetPosition(), 9);
  EXPECT_EQ(P->GetLineNr(), 1) << "a line feed counts once it is moved over";
  P->NextChar();
  EXPECT_EQ(P->GetLineNr(), 2);
  EXPECT_EQ(P->GetColNr(), 1);
  EXPECT_EQ(*P->CurrCharA(), 'z');
  EXPECT_EQ(P->GetCharsRead(), 4);

  // A sequence cut off by the end raises while moving, and the cursor ends at the end.
  auto Q = Over("a\xC3", 65001);
  Q->NextChar();
  ExpectMessage([&] { Q->NextChar(); }, "Unexpected EOF");
  EXPECT_TRUE(Q->GetEOF());
  EXPECT_EQ(Q->GetCurPos(), Q->BufferEnd());
  auto R = Over("\xE2\x82", 65001);
  EXPECT_THROW(R->CurrCharW(), EKxTextParserEOF);

  // Sets and comparisons see decoded characters; above 255 nothing is a member.
  auto S = Over("\xC3\xA9\xC3\xA9\xE2\x82\xACx", 65001);
  TKxCharSet Latin;
  Latin.Include('\xE9');
  S->SkipWhile(sopIn, Latin);
  EXPECT_EQ(S->GetPosition(), 4);
  S->SkipWhile(sopNotIn, TKxCharSet{'x'});
  EXPECT_EQ(*S->CurrCharA(), 'x');
  EXPECT_EQ(S->SelectedW(tpPrevPos, tpCurPos), u"\u20AC");
}

TEST(KxTextParser, Utf16Moves) {
  auto P = Over(Utf16(u"ab\ncd\u00E9"), 1200);
  EXPECT_EQ(P->CharacterSetType(), DBCS);
  P->NextChar();
  P->NextChar();
  EXPECT_EQ(*P->CurrCharW(), u'c');
  EXPECT_EQ(P->GetLineNr(), 2);
  EXPECT_EQ(P->GetColNr(), 2);
  EXPECT_EQ(P->GetCharsRead(), 6) << "counted in bytes";
  EXPECT_EQ(P->GetPosition(), 6);
  P->SetMark(tpMarkPos1);
  P->SkipWhile(sopLt, 'z');
  EXPECT_EQ(*P->CurrCharW(), u'\u00E9');
  EXPECT_EQ(P->SelectedW(tpMarkPos1, tpCurPos), u"cd");
  EXPECT_EQ(P->SelectedCnt(tpMarkPos1, tpPeekPos), 6);
  {
    TSystemCodePage Cp(1252);
    EXPECT_EQ(uint8_t(*P->CurrCharA()), 0xE9);
    EXPECT_EQ(P->SelectedA(tpMarkPos1, tpPeekPos), "cd\xE9");
  }
  P->NextChar();
  EXPECT_TRUE(P->GetEOF());
  EXPECT_EQ(*P->CurrCharW(), u'\0');

  // A lone last byte is no character.
  auto Q = Over(std::string("a\0b", 3), 1200);
  Q->NextChar();
  EXPECT_EQ(*Q->CurrCharW(), u'\0');
  Q->NextChar();
  EXPECT_TRUE(Q->GetEOF());
}

// Reading the odd last byte of UTF-16 text reads nothing beyond it: the text lies in blocks
// of exactly its size, so that the address sanitizer sees any byte read past the end.
TEST(KxTextParser, TheOddLastByteOfUtf16TextIsReadAsNoCharacter) {
  for (size_t Size : {size_t(1), size_t(3)}) {
    SCOPED_TRACE(testing::Message() << Size << " bytes");
    std::unique_ptr<uint8_t[]> Text(new uint8_t[Size]);
    std::memcpy(Text.get(), "A\0B", Size);
    const uint8_t* Last = Text.get() + Size - 1;
    {
      Parser P(TKxTextParser::Create(Text.get(), uint32_t(Size), 1200));
      if (Size == 3) {
        EXPECT_EQ(*P->ReadCharA(), 'A');
      }
      EXPECT_EQ(*P->ReadCharA(), '\0');
      EXPECT_TRUE(P->GetEOF());
    }
    {
      Parser P(TKxTextParser::Create(Text.get(), uint32_t(Size), 1200));
      if (Size == 3) {
        EXPECT_EQ(*P->ReadCharW(), u'A');
      }
      const WideChar* W = P->ReadCharW();
      EXPECT_EQ(*W, u'\0');
      EXPECT_TRUE(reinterpret_cast<const uint8_t*>(W) != Last) << "no character straddles the end";
      EXPECT_EQ(*P->PrevCharW(), u'\0');
      EXPECT_EQ(*P->PrevCharA(), '\0');
    }
    // The same in place over a memory stream of exactly that size.
    TKxMemoryStream* Stream =
        TKxMemoryStream::Create(static_cast<void*>(Text.get()), uint32_t(Size));
    Parser P(TKxTextParser::Create(Stream, 1200, true));
    P->SkipChars(int64_t(Size / 2));
    EXPECT_EQ(*P->ReadCharW(), u'\0');
    EXPECT_TRUE(P->GetEOF());
  }
}

TEST(KxTextParser, PeeksLeaveTheCursorAlone) {
  auto P = Over("a\r\n b\x01");
  EXPECT_EQ(*P->PeekCharA(), ' ');
  EXPECT_EQ(P->GetPosition(), 0);
  EXPECT_EQ(P->GetColNr(), 0);
  EXPECT_EQ(P->GetLineNr(), 1);
  EXPECT_EQ(P->GetPos(tpPeekPos), nullptr);
  EXPECT_EQ(P->PeekStringA(4), "a\r\n ");
  EXPECT_EQ(P->PeekString(100), u"a\r\n b\x01");
  EXPECT_EQ(*P->CurrCharA(), 'a');
  P->SkipWhile(sopUnEq, 'b');
  EXPECT_EQ(*P->PeekCharA(), '\0') << "only a control character follows";
  EXPECT_FALSE(P->GetEOF());
  EXPECT_EQ(*P->CurrCharA(), 'b');
  EXPECT_EQ(P->GetLineNr(), 2);

  // UTF-8 peeks pass over non-ASCII characters too.
  auto Q = Over("a\xC3\xA9\n\xE2\x82\xAC"
                "b",
                65001);
  EXPECT_EQ(*Q->PeekCharW(), u'b');
  EXPECT_EQ(Q->GetPosition(), 0);
  EXPECT_EQ(Q->PeekStringW(2), u"a\u00E9");
}

TEST(KxTextParser, MarksAndSelections) {
  auto P = Over("hello world");
  P->SetMark(tpMarkPos1);
  P->SkipWhile(sopUnEq, ' ');
  P->SetMark(tpMarkPos2);
  EXPECT_EQ(P->SelectedA(tpMarkPos1, tpCurPos), "hello");
  EXPECT_EQ(P->SelectedCnt(tpMarkPos1, tpPeekPos), 6) << "includes the current character";
  EXPECT_EQ(P->SelectedA(tpMarkPos1, tpPeekPos), "hello ");
  EXPECT_EQ(P->Selected(tpCurPos, tpPeekPos), u" ");
  EXPECT_EQ(P->GetPosition(), 5);
  P->NextChar();
  EXPECT_EQ(P->SelectedA(tpMarkPos2, tpCurPos, true), " ");
  EXPECT_EQ(P->GetPos(tpMarkPos2), nullptr);
  EXPECT_NE(P->GetPos(tpMarkPos1), nullptr);
  P->SetMark(tpMarkPos3);
  P->Last();
  EXPECT_TRUE(P->GetEOF());
  EXPECT_EQ(P->SelectedA(tpMarkPos3, tpPeekPos), "world");
  EXPECT_EQ(P->SelectedA(tpMarkPos1, tpMarkPos3, true), "hello ");
  EXPECT_EQ(P->GetPos(tpMarkPos1), nullptr);
  EXPECT_EQ(P->GetPos(tpMarkPos3), nullptr);

  ExpectMessage([&] { P->SetMark(tpCurPos); }, "Invalid MarkType specified!");
  ExpectMessage([&] { P->ClearMark(tpPeekPos); }, "Invalid MarkType specified!");
  ExpectMessage([&] { P->GetPos(TKxTextParserPosType(9)); }, "Invalid TillPos specified!");
  if (KxAssertionsEnabled) {
    EXPECT_THROW(P->SelectedCnt(tpMarkPos1, tpCurPos), EAssertionFailed) << "mark 1 is unset";
  }
}

TEST(KxTextParser, CreationRules) {
  const std::string Text = "x";
  for (uint16_t Cp : {1201, 12000, 12001})
    ExpectMessage([&] { Over(Text, Cp); }, "The specified encoding is not supported!");
  EXPECT_EQ(Over(Text, 0)->CharacterSetType(), SBCS);
  EXPECT_EQ(Over(Text, 932)->CharacterSetType(), SBCS);

  OwnedPtr<TKxMemoryStream> Empty(TKxMemoryStream::Create(16));
  if (KxAssertionsEnabled) {
    ExpectMessage([&] { Parser(TKxTextParser::Create(Empty.Get(), 1252)); },
                  "It is not possible to parse empty streams! "
                  "(source\\ComponentSets\\Components\\common\\uKxClasses, line 5123)");
  }

  auto P = Over("abc", 1252);
  P->SetContentCodePage(65001);
  EXPECT_EQ(P->CharacterSetType(), MBCS);
  EXPECT_EQ(P->CodePage(), 65001);
  ExpectMessage([&] { P->SetContentCodePage(1201); }, "The specified encoding is not supported!");
}

TEST(KxTextParser, MemoryStreamsAreParsedInPlace) {
  OwnedPtr<TKxMemoryStream> S(TKxMemoryStream::Create(16));
  S->Write("..key=value", 11);
  S->SetPosition(2);
  Parser P(TKxTextParser::Create(S.Get(), 65001));
  EXPECT_EQ(P->Buffer(), S->Memory() + 2);
  EXPECT_EQ(P->BufferEnd(), S->ContentEnd());
  EXPECT_EQ(P->StartPos(), 2);
  EXPECT_EQ(S->Position(), 11) << "the stream is moved to its end";
  P->SkipWhile(sopUnEq, '=');
  EXPECT_EQ(P->SelectedA(tpPrevPos, tpCurPos), "y");
  EXPECT_FALSE(P->Chunked());

  OwnedPtr<TMemoryStream> M(TMemoryStream::Create());
  M->Write("abc", 3);
  M->SetPosition(1);
  Parser Q(TKxTextParser::Create(M.Get(), 1252));
  EXPECT_EQ(Q->Buffer(), static_cast<uint8_t*>(M->Memory()) + 1);
  EXPECT_EQ(*Q->CurrCharA(), 'b');

  // An owned stream goes with the parser.
  auto* Owned = TKxMemoryStream::Create(16);
  Owned->WriteByte('z');
  Owned->SetPosition(0);
  Parser R(TKxTextParser::Create(Owned, 1252, true));
  EXPECT_TRUE(R->OwnsStream());
  EXPECT_EQ(*R->CurrCharA(), 'z');
}

namespace {

// A 40 MiB stream that is not in memory: every byte computed from its offset. Lines of 64
// bytes, and two '#' markers far into the second chunk.
class TGeneratedStream : public TStream {
public:
  static constexpr int64_t TotalSize = int64_t(40) << 20;
  static constexpr int64_t Marker = (int64_t(36) << 20) + 5;
  static constexpr int64_t Lines = 64 * 26;

  static char ByteAt(int64_t I) {
    if (I == Marker || I == Marker + 100) return '#';
    if (I % 64 == 63) return '\n';
    return char('a' + (I / 64) % 26);
  }

  // The bytes repeat every 26 lines apart from the markers: copied from one period.
  int32_t Read(void* Buffer, int32_t Count) override {
    static const std::string Period = [] {
      std::string S(Lines, '\0');
      for (int64_t I = 0; I < Lines; ++I) S[size_t(I)] = ByteAt(I);
      return S;
    }();
    int64_t N = std::max<int64_t>(std::min<int64_t>(Count, TotalSize - FPos), 0);
    char* Out = static_cast<char*>(Buffer);
    for (int64_t Done = 0; Done < N;) {
      int64_t Offset = (FPos + Done) % Lines;
      int64_t Part = std::min(N - Done, Lines - Offset);
      std::memcpy(Out + Done, Period.data() + Offset, size_t(Part));
      Done += Part;
    }
    for (int64_t M : {Marker, Marker + 100})
      if (M >= FPos && M < FPos + N) Out[M - FPos] = '#';
    FPos += N;
    return int32_t(N);
  }
  int32_t Write(const void*, int32_t) override { return 0; }
  using TStream::Seek;
  int64_t Seek(int64_t Offset, TSeekOrigin Origin) override {
    FPos = Origin == soBeginning ? Offset
           : Origin == soCurrent ? FPos + Offset
                                 : TotalSize + Offset;
    return FPos;
  }

  int64_t FPos = 0;
};

} // namespace

TEST(KxTextParser, MarkSurvivesTheChunkReloadOfALargeStream) {
  TGeneratedStream Source;
  Parser P(TKxTextParser::Create(&Source, 1252));
  EXPECT_TRUE(P->Chunked());
  EXPECT_FALSE(P->LastChunk());
  EXPECT_EQ(P->ChunkCount(), 1u);
  EXPECT_EQ(P->BufferEnd() - P->Buffer(), int64_t(TKxTextParser::StreamChunkSize));

  P->SkipChars(3);
  P->SetMark(tpMarkPos1);
  P->SkipWhile(sopUnEq, '#');
  ASSERT_FALSE(P->GetEOF());
  EXPECT_EQ(P->ChunkCount(), 2u);
  EXPECT_TRUE(P->LastChunk());
  EXPECT_EQ(P->GetPosition(), TGeneratedStream::Marker);
  EXPECT_EQ(P->GetLineNr(), 1 + TGeneratedStream::Marker / 64);
  // The line feed itself is column 1 of its new line.
  EXPECT_EQ(P->GetColNr(), TGeneratedStream::Marker % 64 + 2);
  // The whole text from the mark on was kept, and the mark moved with it.
  EXPECT_EQ(P->GetPos(tpMarkPos1), P->Buffer());
  const int64_t Count = P->SelectedCnt(tpMarkPos1, tpCurPos);
  ASSERT_EQ(Count, TGeneratedStream::Marker - 3);
  const AnsiString Text = P->SelectedA(tpMarkPos1, tpPeekPos);
  ASSERT_EQ(int64_t(Text.size()), Count + 1);
  for (int64_t I = 0; I < int64_t(Text.size()); I += 4093)
    ASSERT_EQ(Text[size_t(I)], TGeneratedStream::ByteAt(3 + I)) << I;
  EXPECT_EQ(Text.back(), '#');
  EXPECT_EQ(P->GetPosition(), TGeneratedStream::Marker) << "selections do not move";

  P->NextChar();
  P->SkipWhile(sopUnEq, '#');
  EXPECT_EQ(P->GetPosition(), TGeneratedStream::Marker + 100);

  // The last chunk is used whole: what the stream lacked reads as zeros up to its end.
  P->SkipWhile(sopGt, '\0');
  EXPECT_EQ(P->GetPosition(), TGeneratedStream::TotalSize);
  EXPECT_FALSE(P->GetEOF());
  P->SkipWhile(sopEq, '\0');
  EXPECT_TRUE(P->GetEOF());
  EXPECT_EQ(P->GetPosition(), int64_t(2) * TKxTextParser::StreamChunkSize);

  // Back to the start reads the first chunk again.
  P->First();
  EXPECT_EQ(P->ChunkCount(), 1u);
  EXPECT_EQ(P->PeekStringA(5), "aaaaa");
}

TEST(KxTextParser, ReloadWithoutMarksKeepsOnlyThePreviousCharacter) {
  TGeneratedStream Source;
  Source.FPos = 1000; // parsing starts here
  Parser P(TKxTextParser::Create(&Source, 1252));
  P->SkipWhile(sopUnEq, '#');
  EXPECT_EQ(P->ChunkCount(), 2u);
  EXPECT_EQ(P->BufferEnd() - P->Buffer(), int64_t(TKxTextParser::StreamChunkSize) + 1);
  EXPECT_EQ(*P->PrevCharA(), TGeneratedStream::ByteAt(TGeneratedStream::Marker - 1));
  EXPECT_EQ(P->GetPosition(), TGeneratedStream::Marker - 1000);
  P->Last();
  EXPECT_TRUE(P->GetEOF());
}

// A UTF-8 character whose bytes lie on both sides of a chunk boundary is read as it is in
// place. The stream gives 1000 bytes per read, as a pipe might.
TEST(KxTextParser, Utf8CharacterAcrossTheChunkBoundary) {
  const int64_t Chunk = TKxTextParser::StreamChunkSize;
  for (const char* Character : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
    for (int64_t Before : {int64_t(1), int64_t(2), int64_t(3)}) {
      const std::string Tail = Character;
      if (Before >= int64_t(Tail.size())) continue;
      SCOPED_TRACE(testing::Message() << Tail.size() << "-byte character, " << Before
                                      << " byte(s) in the first chunk");
      std::string Text(size_t(Chunk - Before), 'a');
      Text += Tail + "z";
      const UnicodeString Expected = Over(Tail + "z", 65001)->PeekString(2);
      kxtest::TShortReadStream Source(Text, 1000);
      // The run of a is passed as one-byte text, which is quick, and the rest read as UTF-8.
      Parser P(TKxTextParser::Create(&Source, 1252));
      ASSERT_TRUE(P->Chunked());
      P->SkipWhile(sopEq, 'a');
      P->SetContentCodePage(65001);
      // The cursor stands on the lead byte, the rest of the character not loaded yet.
      EXPECT_EQ(*P->CurrCharW(), Expected[0]);
      EXPECT_EQ(P->PeekString(2), Expected);
      EXPECT_EQ(*P->ReadCharW(), Expected[0]);
      EXPECT_EQ(P->GetPosition(), int64_t(Text.size()) - 1);
      EXPECT_EQ(*P->ReadCharA(), 'z');
    }
  }
}
