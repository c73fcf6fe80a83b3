// SPDX-License-Identifier: MIT
// TKxStringStream: text in one code page over the library's memory stream.
#include <kx/classes/ClassesConsts.h>
#include <kx/classes/ObjectEx.h>
#include <kx/classes/StringStream.h>
#include <kx/rtl/Files.h>
#include <kx/types/Encoding.h>

#include "classes/StreamCodePage.h"
#include "platform/Platform.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace kx {

KX_IMPLEMENT_CLASS(TKxStringStream, TKxMemoryStream, "uKxClasses")

namespace {

constexpr const char* SCodePageNeedsUpdate =
    "The current codepage cannot be changed without updating the content!";
constexpr const char* SUpdateNotAllowed =
    "Updating the content is not allowed (the stream is probably using a wrapped buffer)!";
constexpr const char* SFileNotFound = "File %s not found.";
constexpr int32_t LoadFromStreamAssertLine = 2093;

constexpr uint32_t StringBlockSize = 16;

// The byte-order mark of a code page; none for code pages without one.
std::string_view ByteOrderMark(uint16_t CodePage) {
  switch (CodePage) {
  case 65001:
    return std::string_view("\xEF\xBB\xBF", 3);
  case 1200:
    return std::string_view("\xFF\xFE", 2);
  case 1201:
    return std::string_view("\xFE\xFF", 2);
  case 12000:
    return std::string_view("\xFF\xFE\x00\x00", 4);
  case 12001:
    return std::string_view("\x00\x00\xFE\xFF", 4);
  default:
    return {};
  }
}

bool IsHighSurrogate(WideChar C) {
  return C >= 0xD800 && C <= 0xDBFF;
}

bool IsLowSurrogate(WideChar C) {
  return C >= 0xDC00 && C <= 0xDFFF;
}

UnicodeString Decode(const uint8_t* Bytes, int64_t Count, uint16_t CodePage) {
  UnicodeString W;
  return TKxEncoding::ConvertA(Bytes, int32_t(Count), W, CodePage);
}

// Whether the first Units code units of Whole, the text of Bytes[0, Count), come from the
// first At bytes: both sides of the cut then convert to their part of Whole.
bool SplitsAt(const uint8_t* Bytes, int64_t Count, std::u16string_view Whole, size_t Units,
              int64_t At, uint16_t CodePage) {
  return At > 0 && At <= Count && Decode(Bytes, At, CodePage) == Whole.substr(0, Units) &&
         Decode(Bytes + At, Count - At, CodePage) == Whole.substr(Units);
}

AnsiString NarrowToSystem(const WideChar* W, size_t Count) {
  AnsiString S;
  return TKxEncoding::ConvertW(W, int32_t(Count), S, 0);
}

} // namespace

TKxStringStream::TKxStringStream(uint16_t ACodePage, uint32_t BlockSize)
    : TKxMemoryStream(BlockSize) {
  SetCodePage(ACodePage);
}

TKxStringStream::TKxStringStream(const AnsiString& S, uint16_t ACodePage)
    : TKxMemoryStream(StringBlockSize) {
  SetCodePage(ACodePage);
  AppendBytes(S.data(), S.size());
  SetPosition(0);
}

TKxStringStream::TKxStringStream(const UnicodeString& W) : TKxMemoryStream(StringBlockSize) {
  SetCodePage(1200);
  AppendBytes(W.data(), W.size() * 2);
  SetPosition(0);
}

TKxStringStream::TKxStringStream(const AnsiString& S) : TKxStringStream(S, 65001) {}

TKxStringStream::TKxStringStream(void* Buffer, uint32_t Size, uint16_t ACodePage)
    : TKxMemoryStream(Buffer, Size) {
  SetCodePage(ACodePage);
}

void TKxStringStream::SetCodePage(uint16_t ACodePage) {
  FCodePage = ACodePage;
  const uint32_t Platform =
      platform::CodePageMaxCharSize(ACodePage == 0 ? KxSystemCodePage() : ACodePage);
  if (Platform > 0) {
    FMaxCharSize = uint16_t(Platform);
    return;
  }
  switch (ACodePage) {
  case 1200:
  case 1201:
    FMaxCharSize = 2;
    break;
  case 12000:
  case 12001:
    FMaxCharSize = 4;
    break;
  case 65001:
    FMaxCharSize = 6;
    break;
  default:
    FMaxCharSize = 1;
    break;
  }
}

int64_t TKxStringStream::Remaining() {
  return int64_t(FSize) - FPosition;
}

void TKxStringStream::AppendBytes(const void* Bytes, size_t Count) {
  Seek(int64_t(0), soEnd);
  if (Count > 0) TKxMemoryStream::Write(Bytes, int32_t(Count));
}

void TKxStringStream::WriteWide(const WideChar* W, size_t Count) {
  if (Count == 0) return;
  if (FCodePage == 1200) {
    TKxMemoryStream::Write(W, int32_t(Count * 2));
    return;
  }
  AnsiString Bytes;
  TKxEncoding::ConvertW(W, int32_t(Count), Bytes, FCodePage);
  if (!Bytes.empty()) TKxMemoryStream::Write(Bytes.data(), int32_t(Bytes.size()));
}

void TKxStringStream::Assign(TKxStringStream* Source) {
  Clear();
  SetCodePage(Source->CodePage());
  if (Source->FSize > 0) TKxMemoryStream::Write(Source->Memory(), int32_t(Source->FSize));
}

void TKxStringStream::WriteChar(AnsiChar C) {
  Write(AnsiString(1, C));
}

void TKxStringStream::WriteChar(WideChar C) {
  WriteWide(&C, 1);
}

void TKxStringStream::Write(const UnicodeString& W) {
  WriteWide(W.data(), W.size());
}

void TKxStringStream::Write(const AnsiString& S) {
  if (S.empty()) return;
  if (FCodePage == 0) {
    TKxMemoryStream::Write(S.data(), int32_t(S.size()));
    return;
  }
  // System-code-page text, through 16-bit text into the stream's code page.
  const UnicodeString W = TKxEncoding::ConvertA(S, 0);
  WriteWide(W.data(), W.size());
}

void TKxStringStream::AddChar(AnsiChar C) {
  Seek(int64_t(0), soEnd);
  WriteChar(C);
}

void TKxStringStream::AddChar(WideChar C) {
  Seek(int64_t(0), soEnd);
  WriteChar(C);
}

void TKxStringStream::Add(const UnicodeString& W) {
  Seek(int64_t(0), soEnd);
  Write(W);
}

void TKxStringStream::Add(const AnsiString& S, uint16_t ACodePage) {
  if (ACodePage == FCodePage) {
    AppendBytes(S.data(), S.size());
    return;
  }
  UnicodeString W;
  TKxEncoding::ConvertB(S.data(), int32_t(S.size()), W, ACodePage);
  Add(W);
}

void TKxStringStream::Add(TKxStringStream* Other) {
  if (Other->CodePage() != 0)
    Add(Other->GetWString());
  else
    Add(AnsiString(reinterpret_cast<const char*>(Other->Memory()), Other->FSize), 0);
}

void TKxStringStream::WriteEOF() {
  AddChar(WideChar(0));
}

UnicodeString TKxStringStream::GetWString() {
  UnicodeString W;
  return TKxEncoding::ConvertB(FMemory, int32_t(FSize), W, FCodePage);
}

AnsiString TKxStringStream::GetAString() {
  return StringData(0);
}

UTF8String TKxStringStream::GetAsUTF8() {
  return StringData(65001);
}

AnsiString TKxStringStream::StringData(uint16_t ACodePage) {
  AnsiString S;
  return TKxEncoding::ConvertB(FMemory, int32_t(FSize), S, ACodePage, FCodePage);
}

AnsiString TKxStringStream::GetDataString() {
  return UnicodeToAnsi(GetWString());
}

int64_t TKxStringStream::GetCharCnt() {
  if (FCodePage == 1200) return FSize / 2;
  if (FMaxCharSize != 1)
    return TKxEncoding::ConvertA(FMemory, int32_t(FSize), nullptr, 0, FCodePage);
  return FSize;
}

void TKxStringStream::SetAString(const AnsiString& S) {
  Clear();
  Write(S);
  SetPosition(0);
}

void TKxStringStream::SetWString(const UnicodeString& W) {
  Clear();
  Write(W);
  SetPosition(0);
}

Variant TKxStringStream::GetValue() {
  return Variant(GetWString());
}

void TKxStringStream::SetValue(const Variant& V) {
  switch (VarType(V)) {
  case varOleStr:
    SetWString(V.VOleStr());
    break;
  case varString:
    SetWString(AnsiToUnicode(V.VString()));
    break;
  default:
    throw Exception(SUnsupportedVarType, {int32_t(VarType(V))});
  }
}

void TKxStringStream::SetAsUTF8(const UTF8String& S) {
  Clear();
  if (FCodePage == 65001) {
    if (!S.empty()) TKxMemoryStream::Write(S.data(), int32_t(S.size()));
  } else {
    Write(TKxEncoding::ConvertA(S, 65001));
  }
  SetPosition(0);
}

WideChar TKxStringStream::TakePendingLow() {
  if (FPendingEnd < 0) return 0;
  const int64_t Start = FPendingStart, End = FPendingEnd;
  const WideChar Low = FPendingLow;
  FPendingStart = FPendingEnd = -1;
  FPendingLow = 0;
  if (End != FPosition || End > int64_t(FSize)) return 0;
  // The content may have been rewritten since: the character must still be there.
  const UnicodeString C = Decode(FMemory + Start, End - Start, FCodePage);
  return C.size() >= 2 && C.back() == Low && IsHighSurrogate(C[C.size() - 2]) ? Low : 0;
}

int64_t TKxStringStream::FirstCharacter(UnicodeString& C) {
  const int64_t Window = std::min<int64_t>(Remaining(), FMaxCharSize);
  const UnicodeString Whole = Decode(CurPos(), Window, FCodePage);
  // Bytes that make no character (a lone shift sequence) are stepped over one at a time.
  if (Whole.empty()) {
    C.clear();
    return 1;
  }
  const size_t Units =
      Whole.size() >= 2 && IsHighSurrogate(Whole[0]) && IsLowSurrogate(Whole[1]) ? 2 : 1;
  C = Whole.substr(0, Units);
  if (Units == Whole.size() && Window == Remaining()) return Window;
  // Valid text takes the bytes the character encodes to; invalid bytes make a replacement
  // character whose own encoding says nothing about them, so the cut is searched for.
  const int64_t Guess = TKxEncoding::ConvertW(C.data(), int32_t(Units), nullptr, 0, FCodePage);
  if (SplitsAt(CurPos(), Window, Whole, Units, Guess, FCodePage)) return Guess;
  for (int64_t At = 1; At < Window; ++At)
    if (SplitsAt(CurPos(), Window, Whole, Units, At, FCodePage)) return At;
  return Window;
}

void TKxStringStream::StepOver(const UnicodeString& C, int64_t Bytes) {
  FPosition += Bytes;
  if (C.size() == 2) {
    FPendingStart = FPosition - Bytes;
    FPendingEnd = FPosition;
    FPendingLow = C[1];
  }
}

WideChar TKxStringStream::ReadWChar() {
  if (const WideChar Low = TakePendingLow()) return Low;
  const int64_t Left = Remaining();
  if (Left <= 0) return 0;
  if (FCodePage == 1200) {
    WideChar C = 0;
    TKxMemoryStream::Read(&C, int32_t(std::min<int64_t>(Left, 2)));
    return C;
  }
  if (FMaxCharSize == 1) {
    UnicodeString W = Decode(CurPos(), 1, FCodePage);
    FPosition += 1;
    return W.empty() ? WideChar(0) : W[0];
  }
  // A supplementary character comes out as its high surrogate now and its low one next.
  UnicodeString C;
  const int64_t Bytes = FirstCharacter(C);
  StepOver(C, Bytes);
  return C.empty() ? WideChar(0) : C[0];
}

AnsiChar TKxStringStream::ReadAChar() {
  const int64_t Left = Remaining();
  if (Left <= 0) return 0;
  if (FCodePage == 0) {
    AnsiChar C = 0;
    TKxMemoryStream::Read(&C, 1);
    return C;
  }
  const WideChar C = ReadWChar();
  const AnsiString S = NarrowToSystem(&C, 1);
  return S.empty() ? AnsiChar(0) : S[0];
}

UnicodeString TKxStringStream::ReadWString(int32_t Count) {
  if (Count <= 0) return {};
  const size_t Target = size_t(Count);
  UnicodeString W;
  if (const WideChar Low = TakePendingLow()) {
    W += Low;
    if (--Count == 0) return W;
  }
  const int64_t Left = Remaining();
  if (Left <= 0) return W;
  if (FCodePage == 1200) {
    const int64_t Bytes = std::min<int64_t>(Left, int64_t(Count) * 2);
    const size_t Before = W.size();
    W.resize(Before + size_t(Bytes / 2));
    if (W.size() > Before) std::memcpy(W.data() + Before, CurPos(), (W.size() - Before) * 2);
    FPosition += Bytes;
    return W;
  }
  const int64_t Window = std::min<int64_t>(Left, int64_t(Count) * FMaxCharSize);
  const UnicodeString Whole = Decode(CurPos(), Window, FCodePage);
  if (Whole.empty()) return W;
  const size_t Kept = std::min(size_t(Count), Whole.size());
  if (FMaxCharSize == 1) {
    FPosition += int64_t(Kept);
    return W + Whole.substr(0, Kept);
  }
  // A supplementary character cut by Count is taken whole; its low surrogate waits.
  const bool Cut =
      Kept < Whole.size() && IsHighSurrogate(Whole[Kept - 1]) && IsLowSurrogate(Whole[Kept]);
  const size_t Units = Kept + (Cut ? 1 : 0);
  int64_t Bytes = -1;
  if (Units == Whole.size() && Window == Left) {
    Bytes = Window;
  } else {
    const int64_t Guess =
        TKxEncoding::ConvertW(Whole.data(), int32_t(Units), nullptr, 0, FCodePage);
    if (SplitsAt(CurPos(), Window, Whole, Units, Guess, FCodePage)) Bytes = Guess;
  }
  if (Bytes >= 0) {
    W += Whole.substr(0, Kept);
    if (Cut) {
      StepOver(Whole.substr(Kept - 1, 2), Bytes);
    } else {
      FPosition += Bytes;
    }
    return W;
  }
  // Invalid bytes somewhere: one character at a time, so each takes exactly its bytes.
  while (W.size() < Target && Remaining() > 0) {
    UnicodeString C;
    const int64_t Took = FirstCharacter(C);
    if (W.size() + C.size() > Target) {
      W += C[0];
      StepOver(C, Took);
      break;
    }
    W += C;
    FPosition += Took;
  }
  return W;
}

AnsiString TKxStringStream::ReadAString(int32_t Count) {
  const int64_t Left = Remaining();
  if (Left <= 0 || Count <= 0) return {};
  if (FCodePage == 0) {
    const int64_t Bytes = std::min<int64_t>(Left, Count);
    AnsiString S(reinterpret_cast<const char*>(CurPos()), size_t(Bytes));
    FPosition += Bytes;
    return S;
  }
  const UnicodeString W = ReadWString(Count);
  return NarrowToSystem(W.data(), W.size());
}

void TKxStringStream::ChangeCodePage(uint16_t NewCodePage, bool UpdateContent) {
  if (NewCodePage == FCodePage) return;
  if (FSize > 0) {
    if (!UpdateContent && (FCodePage == 1200 || NewCodePage == 1200))
      throw Exception(SCodePageNeedsUpdate);
    if (UpdateContent) {
      if (!FOwnsBuffer) throw Exception(SUpdateNotAllowed);
      const UnicodeString Text = GetWString();
      Clear();
      SetCodePage(NewCodePage);
      if (!Text.empty()) Add(Text);
      return;
    }
  }
  // 8-bit content is read in the new code page from now on.
  SetCodePage(NewCodePage);
}

void TKxStringStream::SaveToStream(TStream* Stream, uint16_t ACodePage, bool WriteBOM) {
  if (WriteBOM) {
    const std::string_view Mark = ByteOrderMark(ACodePage);
    if (!Mark.empty()) Stream->WriteBuffer(Mark.data(), int32_t(Mark.size()));
  }
  if (ACodePage == FCodePage) {
    if (FSize > 0) Stream->WriteBuffer(FMemory, int32_t(FSize));
    return;
  }
  const UnicodeString Text = GetWString();
  if (Text.empty()) return;
  if (ACodePage == 1200) {
    Stream->WriteBuffer(Text.data(), int32_t(Text.size() * 2));
    return;
  }
  const AnsiString Bytes = TKxEncoding::ConvertW(Text, ACodePage);
  if (!Bytes.empty()) Stream->WriteBuffer(Bytes.data(), int32_t(Bytes.size()));
}

void TKxStringStream::SaveToFile(const AnsiString& FileName, uint16_t ACodePage, bool WriteBOM) {
  TFileStream* File = TFileStream::Create(FileName, fmCreate);
  detail::TFreeOnExit Free{File};
  SaveToStream(File, ACodePage, WriteBOM);
}

void TKxStringStream::SaveToFile(const AnsiString& FileName) {
  SaveToFile(FileName, FCodePage, true);
}

void TKxStringStream::LoadFromFile(const AnsiString& FileName, int32_t SourceCodePage) {
  if (!FileExists(FileName)) throw EFOpenError(SFileNotFound, {FileName});
  TFileStream* File = TFileStream::Create(FileName, uint16_t(fmOpenRead | fmShareDenyNone));
  detail::TFreeOnExit Free{File};
  LoadFromStream(File, true, SourceCodePage);
}

void TKxStringStream::LoadFromStream(TStream* Stream, bool DetectBOM, int32_t SourceCodePage) {
  KxAssert(Stream != nullptr, SAssertionFailed, SClassesUnit, LoadFromStreamAssertLine);
  const uint16_t Source = detail::StreamSourceCodePage(Stream, DetectBOM, SourceCodePage);
  detail::TStreamRest Rest(Stream);
  if (Rest.Count == 0) return;
  if (Source == FCodePage) {
    AppendBytes(Rest.Buf, size_t(Rest.Count));
    return;
  }
  UnicodeString Text;
  TKxEncoding::ConvertB(Rest.Buf, int32_t(Rest.Count), Text, Source);
  Add(Text);
}

} // namespace kx
