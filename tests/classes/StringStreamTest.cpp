// SPDX-License-Identifier: MIT
// TKxStringStream: construction, code pages, writing and appending, reading at the position,
// changing the code page, saving and loading.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/OwnedPtr.h>
#include <kx/uKxClasses.h>

#include "support/ExpectMessage.h"
#include "support/ShortReadStream.h"
#include "support/SystemCodePage.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

using namespace kx;
using kxtest::ExpectMessage;
using kxtest::TSystemCodePage;

namespace {

AnsiString Content(TKxStringStream* S) {
  return AnsiString(reinterpret_cast<const char*>(S->Memory()), size_t(S->Size()));
}

std::filesystem::path TempFile(const char* Name) {
  return std::filesystem::temp_directory_path() / Name;
}

AnsiString ReadFile(const std::filesystem::path& P) {
  std::ifstream F(P, std::ios::binary);
  return AnsiString(std::istreambuf_iterator<char>(F), std::istreambuf_iterator<char>());
}

} // namespace

TEST(StringStream, ConstructorsSetCodePageContentAndPosition) {
  OwnedPtr<TKxStringStream> Utf8(TKxStringStream::Create("abc"));
  EXPECT_EQ(Utf8->CodePage(), 65001);
  EXPECT_EQ(Utf8->Size(), 3);
  EXPECT_EQ(Utf8->Position(), 0);
  EXPECT_EQ(Utf8->GetCharCnt(), 3);

  OwnedPtr<TKxStringStream> Wide(TKxStringStream::Create(UnicodeString(u"ab")));
  EXPECT_EQ(Wide->CodePage(), 1200);
  EXPECT_EQ(Content(Wide.Get()), AnsiString("a\0b\0", 4));
  EXPECT_EQ(Wide->GetCharCnt(), 2);

  OwnedPtr<TKxStringStream> Ansi(TKxStringStream::Create(AnsiString("\xE9t\xE9"), uint16_t(1252)));
  EXPECT_EQ(Ansi->CodePage(), 1252);
  EXPECT_EQ(Ansi->GetWString(), u"\u00E9t\u00E9");
  EXPECT_EQ(Ansi->Delta(), 16u);

  OwnedPtr<TKxStringStream> Empty(TKxStringStream::Create(uint16_t(932), uint32_t(64)));
  EXPECT_EQ(Empty->Size(), 0);
  EXPECT_EQ(Empty->Delta(), 64u);
  EXPECT_EQ(Empty->GetWString(), u"");
}

TEST(StringStream, MaxCharSizeFollowsTheCodePage) {
  struct TCase {
    uint16_t CodePage, MaxCharSize;
  } Cases[] = {{1252, 1}, {437, 1},   {932, 2},   {65001, 4}, {1200, 2},
               {1201, 2}, {12000, 4}, {12001, 4}, {709, 1}};
  for (const TCase& C : Cases) {
    OwnedPtr<TKxStringStream> S(TKxStringStream::Create(C.CodePage, uint32_t(16)));
    EXPECT_EQ(S->MaxCharSize(), C.MaxCharSize) << C.CodePage;
  }
  // UTF-8 has 4 bytes from the platform; a multi-byte count makes GetCharCnt convert.
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create("\xC3\xA9\xF0\x9F\x98\x80"));
  EXPECT_EQ(S->GetCharCnt(), 3);
}

TEST(StringStream, TextIsConvertedIntoTheStreamsCodePage) {
  TSystemCodePage System(1252);
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create(uint16_t(65001), uint32_t(16)));
  // 8-bit text is system-code-page text.
  S->Write(AnsiString("\xE9"));
  S->Write(UnicodeString(u"\u20AC"));
  S->WriteChar(AnsiChar('\xE8'));
  S->WriteChar(WideChar(u'\u00E0'));
  EXPECT_EQ(Content(S.Get()), "\xC3\xA9\xE2\x82\xAC\xC3\xA8\xC3\xA0");

  // A code-page-0 stream stores 8-bit text as it is.
  OwnedPtr<TKxStringStream> Raw(TKxStringStream::Create(uint16_t(0), uint32_t(16)));
  Raw->Write(AnsiString("\xE9\x81"));
  Raw->Write(UnicodeString(u"\u00E9"));
  EXPECT_EQ(Content(Raw.Get()), "\xE9\x81\xE9");

  OwnedPtr<TKxStringStream> Utf16(TKxStringStream::Create(uint16_t(1200), uint32_t(16)));
  Utf16->Write(AnsiString("\x80"));
  Utf16->WriteChar(WideChar(u'x'));
  EXPECT_EQ(Content(Utf16.Get()), AnsiString("\xAC\x20x\0", 4));
}

TEST(StringStream, WritesGoToThePositionAndAddsToTheEnd) {
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create("abcdef", uint16_t(1252)));
  S->SetPosition(2);
  S->Write(UnicodeString(u"XY"));
  EXPECT_EQ(Content(S.Get()), "abXYef");
  EXPECT_EQ(S->Position(), 4);
  S->SetPosition(1);
  S->Add(UnicodeString(u"!"));
  EXPECT_EQ(Content(S.Get()), "abXYef!");
  EXPECT_EQ(S->Position(), 7);
  S->SetPosition(0);
  S->AddChar(WideChar(u'?'));
  S->AddChar(AnsiChar('.'));
  EXPECT_EQ(Content(S.Get()), "abXYef!?.");
  S->WriteEOF();
  EXPECT_EQ(Content(S.Get()), AnsiString("abXYef!?.\0", 10));

  OwnedPtr<TKxStringStream> W(TKxStringStream::Create(UnicodeString(u"a")));
  W->WriteEOF();
  EXPECT_EQ(W->Size(), 4);
}

TEST(StringStream, AddingTextOfAnotherCodePage) {
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create("a", uint16_t(1252)));
  // The same code page: the bytes as they are, even when they are not text of it.
  S->Add(AnsiString("\x81\x8D"), 1252);
  S->Add(AnsiString("\xC3\xA9"), 65001);
  S->Add(AnsiString("\xE4\x00", 2), 1200);
  EXPECT_EQ(Content(S.Get()), "a\x81\x8D\xE9\xE4");

  OwnedPtr<TKxStringStream> Other(TKxStringStream::Create("\xC3\xBC"));
  S->Add(Other.Get());
  EXPECT_EQ(Content(S.Get()), "a\x81\x8D\xE9\xE4\xFC");

  TSystemCodePage System(1251);
  OwnedPtr<TKxStringStream> Raw(TKxStringStream::Create(AnsiString("\xE9"), uint16_t(0)));
  S->Add(Raw.Get());
  // Code page 0 content is system-code-page text: Cyrillic short i, which 1252 lacks.
  EXPECT_EQ(Content(S.Get()), "a\x81\x8D\xE9\xE4\xFC?");
}

TEST(StringStream, AssignTakesCodePageAndContent) {
  OwnedPtr<TKxStringStream> Source(TKxStringStream::Create(UnicodeString(u"\u00E9t\u00E9")));
  OwnedPtr<TKxStringStream> Dest(TKxStringStream::Create("old", uint16_t(1252)));
  Dest->Assign(Source.Get());
  EXPECT_EQ(Dest->CodePage(), 1200);
  EXPECT_EQ(Dest->MaxCharSize(), 2);
  EXPECT_EQ(Dest->GetWString(), u"\u00E9t\u00E9");
}

TEST(StringStream, ContentAsTextWhereverThePositionIs) {
  TSystemCodePage System(1252);
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create("\xC3\xA9\xE2\x82\xAC"));
  S->SetPosition(3);
  EXPECT_EQ(S->GetWString(), u"\u00E9\u20AC");
  EXPECT_EQ(S->GetAsString(), u"\u00E9\u20AC");
  EXPECT_EQ(S->GetAString(), "\xE9\x80");
  EXPECT_EQ(S->GetAsUTF8(), "\xC3\xA9\xE2\x82\xAC");
  EXPECT_EQ(S->StringData(437), "\x82?");
  EXPECT_EQ(S->GetDataString(), "\xE9\x80");
  EXPECT_EQ(S->Position(), 3);
}

TEST(StringStream, ValueAccessorsCarryTheTextAsAVariant) {
  TSystemCodePage System(1252);
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create(uint16_t(65001), 16));
  S->SetValue(Variant(u"\u20AC1"));
  EXPECT_EQ(Content(S.Get()), "\xE2\x82\xAC"
                              "1");
  EXPECT_EQ(S->Position(), 0);
  // 8-bit text is system-code-page text.
  S->SetValue(Variant(AnsiString("\x80x")));
  EXPECT_EQ(Content(S.Get()), "\xE2\x82\xAC"
                              "x");
  Variant V = S->GetValue();
  EXPECT_EQ(VarType(V), varOleStr);
  EXPECT_EQ(V.VOleStr(), u"\u20ACx");

  for (const Variant& Wrong : {Variant(12), Variant(), Null(), VarArrayOf({"a"})}) {
    try {
      S->SetValue(Wrong);
      ADD_FAILURE() << "no exception for type " << VarType(Wrong);
    } catch (const Exception& E) {
      EXPECT_EQ(E.ClassType(), Exception::ClassInfo());
      EXPECT_EQ(E.Message(), "Unsupported type " + std::to_string(VarType(Wrong)) + "!");
    }
  }
  EXPECT_EQ(Content(S.Get()), "\xE2\x82\xAC"
                              "x"); // untouched by the refusals
}

TEST(StringStream, SettingContentEmptiesWritesAndRewinds) {
  TSystemCodePage System(1252);
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create("something long", uint16_t(1252)));
  S->SetAString("\xE9");
  EXPECT_EQ(Content(S.Get()), "\xE9");
  EXPECT_EQ(S->Position(), 0);
  S->SetWString(u"\u20AC\u20AC");
  EXPECT_EQ(Content(S.Get()), "\x80\x80");
  S->SetAsUTF8("\xC3\xBC");
  EXPECT_EQ(Content(S.Get()), "\xFC");
  EXPECT_EQ(S->Position(), 0);

  // A UTF-8 stream keeps UTF-8 bytes as they are, even broken ones.
  OwnedPtr<TKxStringStream> U(TKxStringStream::Create("x"));
  U->SetAsUTF8("\xC3");
  EXPECT_EQ(Content(U.Get()), "\xC3");
}

TEST(StringStream, ReadingCharactersAndStrings) {
  TSystemCodePage System(1252);
  OwnedPtr<TKxStringStream> Utf8(TKxStringStream::Create("a\xC3\xA9\xE2\x82\xAC"
                                                         "b"));
  EXPECT_EQ(Utf8->ReadWChar(), u'a');
  EXPECT_EQ(Utf8->Position(), 1);
  EXPECT_EQ(Utf8->ReadChar(), u'\u00E9');
  EXPECT_EQ(Utf8->Position(), 3);
  EXPECT_EQ(Utf8->ReadAChar(), '\x80');
  EXPECT_EQ(Utf8->Position(), 6);
  EXPECT_EQ(Utf8->ReadWString(5), u"b");
  // At the end: nothing, and no move.
  EXPECT_EQ(Utf8->ReadWChar(), 0);
  EXPECT_EQ(Utf8->ReadAChar(), 0);
  EXPECT_EQ(Utf8->ReadWString(3), u"");
  EXPECT_EQ(Utf8->Position(), 7);

  Utf8->SetPosition(0);
  EXPECT_EQ(Utf8->ReadString(2), u"a\u00E9");
  EXPECT_EQ(Utf8->Position(), 3);
  EXPECT_EQ(Utf8->ReadAString(2), "\x80"
                                  "b");

  OwnedPtr<TKxStringStream> Wide(TKxStringStream::Create(UnicodeString(u"x\u00E9yz")));
  EXPECT_EQ(Wide->ReadWChar(), u'x');
  EXPECT_EQ(Wide->ReadAChar(), '\xE9');
  EXPECT_EQ(Wide->ReadWString(1), u"y");
  EXPECT_EQ(Wide->ReadAString(9), "z");
  EXPECT_EQ(Wide->Position(), 8);

  OwnedPtr<TKxStringStream> Raw(TKxStringStream::Create(AnsiString("\xE9xyz"), uint16_t(0)));
  EXPECT_EQ(Raw->ReadAChar(), '\xE9');
  EXPECT_EQ(Raw->ReadAString(2), "xy");
  EXPECT_EQ(Raw->ReadWChar(), u'z');
  EXPECT_EQ(Raw->Position(), 4);

  OwnedPtr<TKxStringStream> Sjis(TKxStringStream::Create(AnsiString("\x82\xA0"
                                                                    "a\x82\xA2"),
                                                         uint16_t(932)));
  EXPECT_EQ(Sjis->ReadWString(2), u"\u3042a");
  EXPECT_EQ(Sjis->Position(), 3);
  EXPECT_EQ(Sjis->ReadWChar(), u'\u3044');
  EXPECT_EQ(Sjis->Position(), 5);
}

TEST(StringStream, ReadingStepsOverExactlyTheBytesEachCharacterTook) {
  // An invalid byte is one replacement character and one byte; what follows is kept.
  OwnedPtr<TKxStringStream> Bad(TKxStringStream::Create(AnsiString("\xFF"
                                                                   "ab")));
  EXPECT_EQ(Bad->ReadWChar(), u'\uFFFD');
  EXPECT_EQ(Bad->Position(), 1);
  EXPECT_EQ(Bad->ReadWChar(), u'a');
  EXPECT_EQ(Bad->ReadWChar(), u'b');
  EXPECT_EQ(Bad->ReadWChar(), 0);
  Bad->SetPosition(0);
  EXPECT_EQ(Bad->ReadWString(1), u"\uFFFD");
  EXPECT_EQ(Bad->ReadWString(1), u"a");
  Bad->SetPosition(0);
  EXPECT_EQ(Bad->ReadWString(9), u"\uFFFDab");
  EXPECT_EQ(Bad->Position(), 3);

  // A truncated sequence before a valid character.
  OwnedPtr<TKxStringStream> Cut(TKxStringStream::Create(AnsiString("\xE2\x82"
                                                                   "x\xC3\xA9")));
  UnicodeString Stepped;
  while (Cut->Position() < Cut->Size()) Stepped += Cut->ReadWChar();
  Cut->SetPosition(0);
  EXPECT_EQ(Cut->ReadWString(9), Stepped);
  EXPECT_EQ(Stepped.substr(Stepped.size() - 2), u"x\u00E9");

  // A supplementary character comes out as its two surrogates, one read each.
  const AnsiString Emoji = "\xF0\x9F\x98\x80"
                           "x";
  OwnedPtr<TKxStringStream> One(TKxStringStream::Create(Emoji));
  EXPECT_EQ(One->ReadWChar(), u'\xD83D');
  EXPECT_EQ(One->ReadWChar(), u'\xDE00');
  EXPECT_EQ(One->Position(), 4);
  EXPECT_EQ(One->ReadWChar(), u'x');
  EXPECT_EQ(One->Position(), 5);
  OwnedPtr<TKxStringStream> Strings(TKxStringStream::Create(Emoji));
  EXPECT_EQ(Strings->ReadWString(1), u"\xD83D");
  EXPECT_EQ(Strings->ReadWString(2), u"\xDE00x");
  EXPECT_EQ(Strings->ReadWString(1), u"");
  Strings->SetPosition(0);
  EXPECT_EQ(Strings->ReadWString(3), u"\U0001F600x");
  EXPECT_EQ(Strings->Position(), 5);
  // The last character of the content, split too.
  OwnedPtr<TKxStringStream> Last(TKxStringStream::Create(AnsiString("\xF0\x9F\x98\x80")));
  EXPECT_EQ(Last->ReadWString(1), u"\xD83D");
  EXPECT_EQ(Last->ReadWChar(), u'\xDE00');
  EXPECT_EQ(Last->ReadWChar(), 0);
}

TEST(StringStream, ChangingTheCodePage) {
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create(AnsiString("\xE9t\xE9"), uint16_t(1252)));
  ExpectMessage([&] { S->ChangeCodePage(1200, false); },
                "The current codepage cannot be changed without updating the content!");
  S->ChangeCodePage(1200, true);
  EXPECT_EQ(S->CodePage(), 1200);
  EXPECT_EQ(S->Size(), 6);
  EXPECT_EQ(S->GetWString(), u"\u00E9t\u00E9");
  ExpectMessage([&] { S->ChangeCodePage(65001, false); },
                "The current codepage cannot be changed without updating the content!");
  S->ChangeCodePage(65001, true);
  EXPECT_EQ(Content(S.Get()), "\xC3\xA9t\xC3\xA9");
  EXPECT_EQ(S->MaxCharSize(), 4);

  // Between 8-bit code pages without updating, the bytes are read anew.
  OwnedPtr<TKxStringStream> Cyr(TKxStringStream::Create(AnsiString("\xE9"), uint16_t(1252)));
  Cyr->ChangeCodePage(1251, false);
  EXPECT_EQ(Content(Cyr.Get()), "\xE9");
  EXPECT_EQ(Cyr->GetWString(), u"\u0439");
  Cyr->ChangeCodePage(1251, true);
  EXPECT_EQ(Content(Cyr.Get()), "\xE9");

  // An empty stream changes freely.
  OwnedPtr<TKxStringStream> Empty(TKxStringStream::Create(uint16_t(1252), uint32_t(16)));
  Empty->ChangeCodePage(1200, false);
  EXPECT_EQ(Empty->CodePage(), 1200);
}

TEST(StringStream, AStreamOverForeignMemoryIsNotResized) {
  char Buffer[] = {'\xE9', 't', '\xE9'};
  OwnedPtr<TKxStringStream> S(
      TKxStringStream::Create(static_cast<void*>(Buffer), uint32_t(3), uint16_t(1252)));
  EXPECT_EQ(S->GetWString(), u"\u00E9t\u00E9");
  S->Write(UnicodeString(u"E"));
  EXPECT_EQ(Buffer[0], 'E');
  ExpectMessage([&] { S->ChangeCodePage(1200, true); },
                "Updating the content is not allowed (the stream is probably using a wrapped "
                "buffer)!");
  ExpectMessage([&] { S->SetWString(u"x"); }, "It is not possible to resize the buffer!");
  S->ChangeCodePage(1251, false);
  EXPECT_EQ(S->GetWString(), u"Et\u0439");
}

TEST(StringStream, SavingWithAndWithoutMarks) {
  struct TCase {
    uint16_t CodePage;
    AnsiString Expected;
  } Cases[] = {
      {65001, "\xEF\xBB\xBF\xC3\xA9!"},
      {1200, AnsiString("\xFF\xFE\xE9\0!\0", 6)},
      {1252, "\xE9!"},
      {437, "\x82!"},
  };
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create(UnicodeString(u"\u00E9!")));
  for (const TCase& C : Cases) {
    OwnedPtr<TKxStringStream> Out(TKxStringStream::Create(uint16_t(0), uint32_t(16)));
    S->SaveToStream(Out.Get(), C.CodePage, true);
    EXPECT_EQ(Content(Out.Get()), C.Expected) << C.CodePage;
  }
  OwnedPtr<TKxStringStream> Out(TKxStringStream::Create(uint16_t(0), uint32_t(16)));
  S->SaveToStream(Out.Get(), 65001, false);
  EXPECT_EQ(Content(Out.Get()), "\xC3\xA9!");
  // The platform does not convert to UTF-16BE: only its mark gets written.
  OwnedPtr<TKxStringStream> Be(TKxStringStream::Create(uint16_t(0), uint32_t(16)));
  EXPECT_THROW(S->SaveToStream(Be.Get(), 1201, true), EOSError);
  EXPECT_EQ(Content(Be.Get()), "\xFE\xFF");
}

TEST(StringStream, FilesRoundTripThroughTheirMarks) {
  const auto Path = TempFile("kx-stringstream-test.txt");
  {
    OwnedPtr<TKxStringStream> S(TKxStringStream::Create(UnicodeString(u"\u00E9t\u00E9 \u20AC")));
    S->ChangeCodePage(65001, true);
    S->SaveToFile(Path.string());
  }
  EXPECT_EQ(ReadFile(Path), "\xEF\xBB\xBF\xC3\xA9t\xC3\xA9 \xE2\x82\xAC");
  {
    // Appended, converted from the mark's code page.
    OwnedPtr<TKxStringStream> S(TKxStringStream::Create("x", uint16_t(1252)));
    S->LoadFromFile(Path.string());
    EXPECT_EQ(Content(S.Get()), "x\xE9t\xE9 \x80");
    ExpectMessage([&] { S->LoadFromFile(Path.string(), 1252); },
                  "The specified encoding does not match the BOM of the stream!");
    // The same code page as the stream's: copied as it is.
    OwnedPtr<TKxStringStream> U(TKxStringStream::Create(uint16_t(65001), uint32_t(16)));
    U->LoadFromFile(Path.string(), 65001);
    EXPECT_EQ(Content(U.Get()), "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC");
  }
  {
    OwnedPtr<TKxStringStream> S(TKxStringStream::Create(UnicodeString(u"\u00E9")));
    S->SaveToFile(Path.string(), 1252, true);
    EXPECT_EQ(ReadFile(Path), "\xE9");
    S->SaveToFile(Path.string(), 1200, false);
    EXPECT_EQ(ReadFile(Path), AnsiString("\xE9\0", 2));
  }
  std::filesystem::remove(Path);
  const AnsiString Missing = TempFile("kx-no-such-file.txt").string();
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create(uint16_t(1252), uint32_t(16)));
  try {
    S->LoadFromFile(Missing);
    FAIL() << "no exception";
  } catch (const EFOpenError& E) {
    EXPECT_EQ(E.Message(), "File " + Missing + " not found.");
  }
  // A folder is no file either.
  const AnsiString Folder = std::filesystem::temp_directory_path().string();
  try {
    S->LoadFromFile(Folder);
    FAIL() << "no exception";
  } catch (const EFOpenError& E) {
    EXPECT_EQ(E.Message(), "File " + Folder + " not found.");
  }
}

TEST(StringStream, LoadingFromStreams) {
  OwnedPtr<TKxStringStream> Source(
      TKxStringStream::Create(AnsiString("\xFF\xFE\xE9\0", 4), uint16_t(0)));
  OwnedPtr<TKxStringStream> S(TKxStringStream::Create(uint16_t(1252), uint32_t(16)));
  S->LoadFromStream(Source.Get());
  EXPECT_EQ(Content(S.Get()), "\xE9");
  EXPECT_EQ(Source->Position(), 4);
  // Without looking for the mark, and in the stream's own code page: copied as they are.
  Source->SetPosition(0);
  OwnedPtr<TKxStringStream> Wide(TKxStringStream::Create(uint16_t(1200), uint32_t(16)));
  Wide->LoadFromStream(Source.Get(), false, 1200);
  EXPECT_EQ(Content(Wide.Get()), AnsiString("\xFF\xFE\xE9\0", 4));
  // A stream that gives a byte per read: the mark is still found and the rest taken whole.
  kxtest::TShortReadStream Slow(std::string_view("\xEF\xBB\xBF\xC3\xA9t\xC3\xA9"), 1);
  OwnedPtr<TKxStringStream> Utf16(TKxStringStream::Create(uint16_t(1200), uint32_t(16)));
  Utf16->LoadFromStream(&Slow);
  EXPECT_EQ(Utf16->GetWString(), u"\u00E9t\u00E9");
  EXPECT_EQ(Slow.Position(), 8);
  if (!KxAssertionsEnabled) GTEST_SKIP() << "assertions compiled out";
  EXPECT_THROW(S->LoadFromStream(nullptr), EAssertionFailed);
}

TEST(FileStream, WriteStringWritesTheRawBytes) {
  const auto Path = TempFile("kx-filestream-test.bin");
  {
    TKxFileStream* F = TKxFileStream::Create(AnsiString(Path.string()), fmCreate);
    F->WriteString(AnsiString("ab\xE9"));
    F->WriteString(AnsiString());
    F->WriteString(UnicodeString(u"\u20AC"));
    F->WriteString(UnicodeString());
    F->Free();
  }
  EXPECT_EQ(ReadFile(Path), "ab\xE9\xAC\x20");
  std::filesystem::remove(Path);
}
