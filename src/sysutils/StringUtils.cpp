// SPDX-License-Identifier: MIT
// The text functions of uKxSysUtils.
#include <kx/sysutils/StringUtils.h>
#include <kx/sysutils/SysUtilsConsts.h>

#include "classes/StreamCodePage.h"

#include <cstring>

namespace kx {

namespace {

constexpr int32_t StringReplaceAssertLine = 1385;
// KxListToString copies from its second character with this count.
constexpr int64_t ListToStringCount = 999999;
// Code page 28591 maps every byte to one character, so the space is found in any 8-bit text:
// no code page uses byte 32 inside a multi-byte character.
constexpr uint16_t ByteScanCodePage = 28591;

bool IsBlank(AnsiChar C) {
  return uint8_t(C) <= ' ';
}

AnsiChar PadOrSpace(AnsiChar PadChar) {
  return PadChar == '\0' ? ' ' : PadChar;
}

template <class C>
bool NameDelimiter(C Ch) {
  return Ch == C(10) || Ch == C(13) || Ch == C(' ') || Ch == C(')') || Ch == C(',') || Ch == C(';');
}

template <class C>
bool Literal(C Ch) {
  return Ch == C('"') || Ch == C('\'');
}

// Whether 8-bit text survives the trip to UTF-16 and back in the system code page, so that the
// 16-bit case functions may stand in for the 8-bit ones.
bool RoundTrips(const AnsiString& S, UnicodeString& Wide) {
  Wide = AnsiToUnicode(S);
  return UnicodeToAnsi(Wide) == S;
}

// The case modes over one string type. Upper and Lower are the whole-text mappings, which are
// one character for one, so each position can pick from them.
template <class S>
S ApplyCharCase(const S& Str, TKxCharCase Mode, const S& Delimiters, S (*Upper)(const S&),
                S (*Lower)(const S&)) {
  switch (Mode) {
  case rcNormal:
    return Str;
  case rcUpperCase:
    return Upper(Str);
  case rcLowerCase:
    return Lower(Str);
  case rcTitleCase:
    return Upper(Copy(Str, 1, 1)) + Lower(Copy(Str, 2, INT32_MAX));
  case rcUpperCamelCase:
  case rcLowerCamelCase: {
    const S Up = Upper(Str), Low = Lower(Str);
    S Result = Low;
    bool AfterDelimiter = Mode == rcUpperCamelCase;
    for (size_t I = 0; I < Str.size(); ++I) {
      if (Delimiters.find(Str[I]) != S::npos) {
        AfterDelimiter = true;
      } else {
        if (AfterDelimiter) Result[I] = Up[I];
        AfterDelimiter = false;
      }
    }
    return Result;
  }
  case rcUpperCaseFirstLetter:
    return Upper(Copy(Str, 1, 1)) + Copy(Str, 2, INT32_MAX);
  case rcLowerCaseFirstLetter:
    return Lower(Copy(Str, 1, 1)) + Copy(Str, 2, INT32_MAX);
  default:
    return Str;
  }
}

} // namespace

// --- comparison and membership -------------------------------------------------------------

bool KxSameText(const AnsiString& A, const AnsiString& B) {
  return SameText(A, B);
}

bool KxSameText(const UnicodeString& A, const UnicodeString& B) {
  return SameText(UnicodeToAnsi(A), UnicodeToAnsi(B));
}

bool KxSameTrimmedText(const AnsiString& A, const AnsiString& B) {
  return KxSameText(Trim(A), Trim(B));
}

bool KxContainsText(const AnsiString& SubText, const AnsiString& Text) {
  return Pos(LowerCase(SubText), LowerCase(Text)) > 0;
}

bool KxContainsText(const UnicodeString& SubText, const UnicodeString& Text) {
  return KxContainsText(UnicodeToAnsi(SubText), UnicodeToAnsi(Text));
}

bool KxSameGuid(const TGUID& A, const TGUID& B) {
  return A.D1 == B.D1 && A.D2 == B.D2 && A.D3 == B.D3 && std::memcmp(A.D4, B.D4, 8) == 0;
}

bool KxSameVar(const Variant& A, const Variant& B) {
  return VarType(A) == VarType(B) && A == B;
}

bool KxSameArray(const Variant& A, const Variant& B) {
  const int32_t High = VarArrayHighBound(A, 1);
  for (int64_t I = VarArrayLowBound(A, 1); I <= High; ++I)
    if (!(VarArrayGet(A, int32_t(I)) == VarArrayGet(B, int32_t(I)))) return false;
  return true;
}

bool KxStrInSet(const AnsiString& S, std::span<const AnsiString> Values) {
  for (const AnsiString& V : Values)
    if (V == S) return true;
  return false;
}

bool KxCharInSet(AnsiChar C, const TKxCharSet& Set) {
  return Set.Contains(C);
}
bool KxCharInSet(WideChar C, const TKxCharSet& Set) {
  return Set.Contains(uint32_t(C));
}

bool KxIsNameDelimiter(AnsiChar C) {
  return NameDelimiter(C);
}
bool KxIsNameDelimiter(WideChar C) {
  return NameDelimiter(C);
}
bool KxIsLiteral(AnsiChar C) {
  return Literal(C);
}
bool KxIsLiteral(WideChar C) {
  return Literal(C);
}

bool KxIsUppercase(const AnsiString& S) {
  return S == UpperCase(S);
}

bool KxIsBitChecked(int32_t Value, int32_t Bit) {
  const uint32_t Mask = Bit >= 1 && Bit <= 32 ? uint32_t(1) << (Bit - 1) : 0;
  return (uint32_t(Value) & Mask) == Mask;
}

// --- extraction and simple conversion ------------------------------------------------------

int32_t KxLastPos(const AnsiString& S, AnsiChar C) {
  const char* Found = std::strrchr(S.c_str(), C);
  // strrchr also finds the terminator when C is 0; the zero-terminated text never holds it.
  if (!Found || C == '\0') return 0;
  return int32_t(Found - S.c_str()) + 1;
}

AnsiString KxLeft(const AnsiString& S, int32_t N) {
  return Copy(S, 1, N);
}

AnsiString KxRight(const AnsiString& S, int32_t N) {
  return Copy(S, int64_t(S.size()) - N + 1, N);
}

AnsiString KxAnsiCopy(const AnsiString& S, int32_t Index, int32_t Count) {
  return Copy(S, Index, Count);
}

AnsiString KxIntToAnsiStr(int32_t I) {
  return IntToStr(I);
}

AnsiString KxStripLiterals(const AnsiString& S) {
  auto Strip = [](AnsiChar C) { return IsBlank(C) || Literal(C); };
  size_t First = 0, Last = S.size();
  if (Last == 0) return S;
  while (First + 1 < Last && Strip(S[First])) ++First;
  while (Last - 1 > First && Strip(S[Last - 1])) --Last;
  return S.substr(First, Last - First);
}

// --- trimming ------------------------------------------------------------------------------

AnsiString KxTrim(const AnsiString& S) {
  return Trim(S);
}

AnsiString KxTrimLeft(const AnsiString& S) {
  size_t First = 0;
  while (First + 1 < S.size() && IsBlank(S[First])) ++First;
  return S.substr(First);
}

AnsiString KxTrimRight(const AnsiString& S) {
  size_t Last = S.size();
  while (Last > 1 && IsBlank(S[Last - 1])) --Last;
  return S.substr(0, Last);
}

// --- padding -------------------------------------------------------------------------------

AnsiString KxPadLeft(const AnsiString& S, int32_t Length, AnsiChar PadChar) {
  if (Length <= 0 || S.size() >= size_t(Length)) return S;
  return AnsiString(size_t(Length) - S.size(), PadOrSpace(PadChar)) + S;
}

AnsiString KxPadLeft(int32_t I, int32_t Length, AnsiChar PadChar) {
  return KxPadLeft(IntToStr(I), Length, PadChar);
}

AnsiString KxPadLeft(int64_t I, int32_t Length, AnsiChar PadChar) {
  return KxPadLeft(IntToStr(I), Length, PadChar);
}

AnsiString KxPadRight(const AnsiString& S, int32_t Length, AnsiChar PadChar) {
  if (Length <= 0 || S.size() >= size_t(Length)) return S;
  return S + AnsiString(size_t(Length) - S.size(), PadOrSpace(PadChar));
}

// --- splitting and joining -----------------------------------------------------------------

void KxStringToList(const AnsiString& S, const AnsiString& Delimiter, TStrings* List) {
  if (Delimiter.empty()) {
    List->Add(S);
    return;
  }
  size_t From = 0;
  for (;;) {
    const size_t At = S.find(Delimiter, From);
    if (At == AnsiString::npos) {
      List->Add(S.substr(From));
      return;
    }
    List->Add(S.substr(From, At - From));
    From = At + Delimiter.size();
  }
}

AnsiString KxListToString(TStrings* List, const AnsiString& Delimiter) {
  const int32_t Count = List->Count();
  if (Count == 0) return AnsiString();
  AnsiString Built;
  for (int32_t I = 0; I < Count; ++I) {
    Built += Delimiter;
    Built += List->Strings(I);
  }
  return Copy(Built, 2, ListToStringCount);
}

void KxTokenize(const AnsiString& S, TStrings* Tokens, const AnsiString& Delimiters,
                TStrings* DelimiterList) {
  const TKxCharSet Set(Delimiters.empty() ? std::string_view(SKxDefaultTokenDelimiters)
                                          : std::string_view(Delimiters));
  AnsiString Token;
  for (AnsiChar C : S) {
    if (!Set.Contains(C)) {
      Token += C;
      continue;
    }
    if (!Token.empty()) Tokens->Add(Token);
    if (DelimiterList) DelimiterList->Add(AnsiString(1, C));
    Token.clear();
  }
  if (!Token.empty()) Tokens->Add(Token);
}

AnsiString KxStringReplace(const AnsiString& S, std::span<const AnsiString> OldPatterns,
                           std::span<const AnsiString> NewPatterns, TReplaceFlags Flags) {
  KxAssert(OldPatterns.size() == NewPatterns.size(), SAssertionFailure, SSysUtilsUnit,
           StringReplaceAssertLine);
  AnsiString Result = S;
  for (size_t I = 0; I < OldPatterns.size(); ++I)
    Result = StringReplace(Result, OldPatterns[I],
                           I < NewPatterns.size() ? NewPatterns[I] : AnsiString(), Flags);
  return Result;
}

AnsiString KxNormalizeSpace(const AnsiString& S) {
  if (S.empty()) return S;
  AnsiString Result;
  Result.reserve(S.size() + 1);
  TKxTextParser* Parser = TKxTextParser::Create(S.data(), uint32_t(S.size()), ByteScanCodePage);
  detail::TFreeOnExit Free{Parser};
  Parser->SkipWhile(sopEq, ' ');
  while (!Parser->GetEOF()) {
    Parser->SetMark(tpMarkPos1);
    Parser->SkipWhile(sopUnEq, ' ');
    Result += ' ';
    Result += Parser->SelectedA(tpMarkPos1, tpCurPos, true);
    Parser->SkipWhile(sopEq, ' ');
  }
  return Copy(Result, 2, INT32_MAX);
}

// --- case ------------------------------------------------------------------------------------

UnicodeString KxCharCase(const UnicodeString& S, TKxCharCase Mode,
                         const UnicodeString& Delimiters) {
  UnicodeString (*Upper)(const UnicodeString&) = &AnsiUpperCase;
  UnicodeString (*Lower)(const UnicodeString&) = &AnsiLowerCase;
  return ApplyCharCase(S, Mode, Delimiters, Upper, Lower);
}

AnsiString KxCharCase(const AnsiString& S, TKxCharCase Mode, const AnsiString& Delimiters) {
  // A character of a multi-byte code page is several bytes: the modes work on characters
  // through UTF-16 when the text converts there and back unchanged.
  UnicodeString WideS, WideDelimiters;
  if (RoundTrips(S, WideS) && RoundTrips(Delimiters, WideDelimiters))
    return UnicodeToAnsi(KxCharCase(WideS, Mode, WideDelimiters));
  // Bytes that are no text of the code page: only a-z can be mapped without moving them.
  AnsiString (*Upper)(const AnsiString&) = &UpperCase;
  AnsiString (*Lower)(const AnsiString&) = &LowerCase;
  return ApplyCharCase(S, Mode, Delimiters, Upper, Lower);
}

} // namespace kx
