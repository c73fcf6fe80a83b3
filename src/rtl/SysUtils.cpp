// SPDX-License-Identifier: MIT
// The runtime's string and number functions.
#include <kx/rtl/SysUtils.h>

#include "platform/Platform.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace kx {

namespace {

// --- numbers ---------------------------------------------------------------------------

// Val's grammar. Bits is 32 or 64; hexadecimal digits may fill all of them (the value then
// wraps), decimal ones must fit the signed range.
template <class C>
bool ParseInteger(std::basic_string_view<C> S, int Bits, int64_t& Value) {
  size_t I = 0, Len = S.size();
  while (I < Len && S[I] == C(' ')) ++I;
  bool Negative = false;
  if (I < Len && (S[I] == C('-') || S[I] == C('+'))) Negative = S[I++] == C('-');
  bool Hex = false;
  if (I < Len && (S[I] == C('$') || S[I] == C('x') || S[I] == C('X'))) {
    Hex = true;
    ++I;
  } else if (I + 1 < Len && S[I] == C('0') && (S[I + 1] == C('x') || S[I + 1] == C('X'))) {
    Hex = true;
    I += 2;
  }
  if (I >= Len) return false;

  const uint64_t AllBits = Bits == 64 ? ~uint64_t(0) : 0xFFFFFFFFull;
  const uint64_t Limit = Hex        ? AllBits
                         : Negative ? (AllBits >> 1) + 1 // one more below zero
                                    : AllBits >> 1;
  const uint64_t Base = Hex ? 16 : 10;
  uint64_t Magnitude = 0;
  for (; I < Len; ++I) {
    auto Ch = static_cast<std::make_unsigned_t<C>>(S[I]);
    uint64_t Digit;
    if (Ch >= '0' && Ch <= '9')
      Digit = Ch - '0';
    else if (Hex && Ch >= 'A' && Ch <= 'F')
      Digit = Ch - 'A' + 10;
    else if (Hex && Ch >= 'a' && Ch <= 'f')
      Digit = Ch - 'a' + 10;
    else
      return false;
    if (Magnitude > (Limit - Digit) / Base) return false;
    Magnitude = Magnitude * Base + Digit;
  }
  if (Negative) Magnitude = uint64_t(0) - Magnitude;
  Value = Bits == 64 ? int64_t(Magnitude) : int64_t(int32_t(uint32_t(Magnitude)));
  return true;
}

template <class S>
bool TryInt32(const S& Str, int32_t& Value) {
  int64_t V;
  if (!ParseInteger<typename S::value_type>(Str, 32, V)) return false;
  Value = int32_t(V);
  return true;
}

template <class S>
bool TryInt64(const S& Str, int64_t& Value) {
  return ParseInteger<typename S::value_type>(Str, 64, Value);
}

[[noreturn]] void InvalidInteger(const AnsiString& S) {
  throw EConvertError(SInvalidInteger, {S});
}
[[noreturn]] void InvalidInteger(const UnicodeString& S) {
  throw EConvertError(SInvalidInteger, {S});
}

// --- characters and cases --------------------------------------------------------------

template <class C>
bool IsBlank(C Ch) {
  return static_cast<std::make_unsigned_t<C>>(Ch) <= ' ';
}

template <class C>
C UpperAscii(C Ch) {
  return Ch >= C('a') && Ch <= C('z') ? C(Ch - ('a' - 'A')) : Ch;
}
template <class C>
C LowerAscii(C Ch) {
  return Ch >= C('A') && Ch <= C('Z') ? C(Ch + ('a' - 'A')) : Ch;
}

bool IsAscii(const AnsiString& S) {
  return std::all_of(S.begin(), S.end(), [](char Ch) { return (Ch & 0x80) == 0; });
}

UnicodeString MapWide(UnicodeString S, bool Upper) {
  if (!S.empty()) (Upper ? platform::UpperCaseWide : platform::LowerCaseWide)(S.data(), S.size());
  return S;
}

// 8-bit text through UTF-16; pure ASCII needs only a-z, as every locale maps those alike
// (Turkish dotted i aside, which the root mapping does not do either).
AnsiString MapAnsi(const AnsiString& S, bool Upper) {
  if (IsAscii(S)) {
    AnsiString R = S;
    for (char& Ch : R) Ch = Upper ? UpperAscii(Ch) : LowerAscii(Ch);
    return R;
  }
  return UnicodeToAnsi(MapWide(AnsiToUnicode(S), Upper));
}

template <class S>
int32_t OrdinalCompare(const S& S1, const S& S2, bool FoldCase) {
  using U = std::make_unsigned_t<typename S::value_type>;
  size_t N = std::min(S1.size(), S2.size());
  for (size_t I = 0; I < N; ++I) {
    U A = U(S1[I]), B = U(S2[I]);
    if (FoldCase) A = UpperAscii(A), B = UpperAscii(B);
    if (A != B) return int32_t(A) - int32_t(B);
  }
  return int32_t(int64_t(S1.size()) - int64_t(S2.size()));
}

int32_t Collate(const UnicodeString& S1, const UnicodeString& S2, bool IgnoreCase) {
  return platform::CompareStringWide(S1.data(), S1.size(), S2.data(), S2.size(), IgnoreCase);
}

// 8-bit text in UTF-16 for the collation. Every ANSI code page maps ASCII to the same code
// units, so short ASCII text (what sorted lists mostly hold) is widened in place, without the
// converter and without an allocation.
class TWidened {
public:
  explicit TWidened(const AnsiString& S) {
    if (S.size() <= std::size(FBuffer) && IsAscii(S)) {
      std::copy(S.begin(), S.end(), FBuffer);
      FText = std::u16string_view(FBuffer, S.size());
    } else {
      FHeap = AnsiToUnicode(S);
      FText = FHeap;
    }
  }
  TWidened(const TWidened&) = delete;
  TWidened& operator=(const TWidened&) = delete;
  std::u16string_view Text() const { return FText; }

private:
  char16_t FBuffer[128];
  UnicodeString FHeap;
  std::u16string_view FText;
};

int32_t Collate(const AnsiString& S1, const AnsiString& S2, bool IgnoreCase) {
  TWidened W1(S1), W2(S2);
  return platform::CompareStringWide(W1.Text().data(), W1.Text().size(), W2.Text().data(),
                                     W2.Text().size(), IgnoreCase);
}

// --- quoting ---------------------------------------------------------------------------

template <class S>
S Quote(const S& Str, typename S::value_type Q) {
  S R;
  R.reserve(Str.size() + 2);
  R += Q;
  for (auto Ch : Str) {
    if (Ch == Q) R += Q;
    R += Ch;
  }
  R += Q;
  return R;
}

template <class C>
const C* ScanFor(const C* P, C Ch) {
  for (; *P; ++P)
    if (*P == Ch) return P;
  return nullptr;
}

template <class C>
const C* EndOf(const C* P) {
  while (*P) ++P;
  return P;
}

template <class C>
std::basic_string<C> ExtractQuoted(const C*& Src, C Q) {
  std::basic_string<C> Result;
  if (!Src || *Src != Q) return Result;
  ++Src;
  const C* P = Src;
  // Up to the first quote that is not doubled.
  const C* Q1 = ScanFor(Src, Q);
  while (Q1) {
    ++Q1;
    if (*Q1 != Q) break;
    Q1 = ScanFor(Q1 + 1, Q);
  }
  const C* End = Q1 ? Q1 : EndOf(P);
  Src = End;
  // The text runs to the character before End: the closing quote, or the last character
  // when there is none.
  if (End - P <= 1) return Result;
  for (const C* X = P; X < End - 1; ++X) {
    Result += *X;
    if (*X == Q) ++X; // the second quote of a pair
  }
  return Result;
}

template <class S>
S Dequoted(const S& Str, typename S::value_type Q) {
  const typename S::value_type* P = Str.c_str();
  S Result = ExtractQuoted(P, Q);
  return Result.empty() ? Str : Result;
}

// --- replacing -------------------------------------------------------------------------

// Replaces in S, finding OldPattern's matches in Search (S or a same-length case mapping of it).
template <class S>
S ReplaceMatches(const S& Str, const S& Search, const S& Pattern, const S& NewPattern, bool All) {
  if (Pattern.empty()) return Str;
  S Result;
  size_t From = 0;
  for (;;) {
    size_t At = Search.find(Pattern, From);
    if (At == S::npos) break;
    Result.append(Str, From, At - From);
    Result += NewPattern;
    From = At + Pattern.size();
    if (!All) break;
  }
  Result.append(Str, From, S::npos);
  return Result;
}

} // namespace

// --- numbers ---------------------------------------------------------------------------

bool TryStrToInt(const AnsiString& S, int32_t& Value) {
  return TryInt32(S, Value);
}
bool TryStrToInt(const UnicodeString& S, int32_t& Value) {
  return TryInt32(S, Value);
}
bool TryStrToInt64(const AnsiString& S, int64_t& Value) {
  return TryInt64(S, Value);
}
bool TryStrToInt64(const UnicodeString& S, int64_t& Value) {
  return TryInt64(S, Value);
}

int32_t StrToInt(const AnsiString& S) {
  int32_t V;
  if (!TryStrToInt(S, V)) InvalidInteger(S);
  return V;
}
int32_t StrToInt(const UnicodeString& S) {
  int32_t V;
  if (!TryStrToInt(S, V)) InvalidInteger(S);
  return V;
}
int32_t StrToIntDef(const AnsiString& S, int32_t Default) {
  int32_t V;
  return TryStrToInt(S, V) ? V : Default;
}
int32_t StrToIntDef(const UnicodeString& S, int32_t Default) {
  int32_t V;
  return TryStrToInt(S, V) ? V : Default;
}

int64_t StrToInt64(const AnsiString& S) {
  int64_t V;
  if (!TryStrToInt64(S, V)) InvalidInteger(S);
  return V;
}
int64_t StrToInt64(const UnicodeString& S) {
  int64_t V;
  if (!TryStrToInt64(S, V)) InvalidInteger(S);
  return V;
}
int64_t StrToInt64Def(const AnsiString& S, int64_t Default) {
  int64_t V;
  return TryStrToInt64(S, V) ? V : Default;
}
int64_t StrToInt64Def(const UnicodeString& S, int64_t Default) {
  int64_t V;
  return TryStrToInt64(S, V) ? V : Default;
}

AnsiString IntToStr(int32_t Value) {
  return std::to_string(Value);
}
AnsiString IntToStr(int64_t Value) {
  return std::to_string(Value);
}

AnsiString IntToHex(int32_t Value, int32_t Digits) {
  return Format("%.*x", {Digits, Value});
}
AnsiString IntToHex(int64_t Value, int32_t Digits) {
  return Format("%.*x", {Digits, Value});
}

// --- trimming and cases ----------------------------------------------------------------

namespace {
template <class S>
S TrimImpl(const S& Str, bool Left, bool Right) {
  size_t B = 0, E = Str.size();
  if (Left)
    while (B < E && IsBlank(Str[B])) ++B;
  if (Right)
    while (E > B && IsBlank(Str[E - 1])) --E;
  return Str.substr(B, E - B);
}
template <class S>
S AsciiCase(S Str, bool Upper) {
  for (auto& Ch : Str) Ch = Upper ? UpperAscii(Ch) : LowerAscii(Ch);
  return Str;
}
} // namespace

AnsiString Trim(const AnsiString& S) {
  return TrimImpl(S, true, true);
}
UnicodeString Trim(const UnicodeString& S) {
  return TrimImpl(S, true, true);
}
AnsiString TrimLeft(const AnsiString& S) {
  return TrimImpl(S, true, false);
}
UnicodeString TrimLeft(const UnicodeString& S) {
  return TrimImpl(S, true, false);
}
AnsiString TrimRight(const AnsiString& S) {
  return TrimImpl(S, false, true);
}
UnicodeString TrimRight(const UnicodeString& S) {
  return TrimImpl(S, false, true);
}

AnsiString UpperCase(const AnsiString& S) {
  return AsciiCase(S, true);
}
UnicodeString UpperCase(const UnicodeString& S) {
  return AsciiCase(S, true);
}
AnsiString LowerCase(const AnsiString& S) {
  return AsciiCase(S, false);
}
UnicodeString LowerCase(const UnicodeString& S) {
  return AsciiCase(S, false);
}

AnsiString AnsiUpperCase(const AnsiString& S) {
  return MapAnsi(S, true);
}
UnicodeString AnsiUpperCase(const UnicodeString& S) {
  return MapWide(S, true);
}
AnsiString AnsiLowerCase(const AnsiString& S) {
  return MapAnsi(S, false);
}
UnicodeString AnsiLowerCase(const UnicodeString& S) {
  return MapWide(S, false);
}

// --- comparisons -----------------------------------------------------------------------

int32_t CompareStr(const AnsiString& S1, const AnsiString& S2) {
  return OrdinalCompare(S1, S2, false);
}
int32_t CompareStr(const UnicodeString& S1, const UnicodeString& S2) {
  return OrdinalCompare(S1, S2, false);
}
int32_t CompareText(const AnsiString& S1, const AnsiString& S2) {
  return OrdinalCompare(S1, S2, true);
}
int32_t CompareText(const UnicodeString& S1, const UnicodeString& S2) {
  return OrdinalCompare(S1, S2, true);
}
bool SameText(const AnsiString& S1, const AnsiString& S2) {
  return S1.size() == S2.size() && CompareText(S1, S2) == 0;
}
bool SameText(const UnicodeString& S1, const UnicodeString& S2) {
  return S1.size() == S2.size() && CompareText(S1, S2) == 0;
}

int32_t AnsiCompareStr(const AnsiString& S1, const AnsiString& S2) {
  return Collate(S1, S2, false);
}
int32_t AnsiCompareStr(const UnicodeString& S1, const UnicodeString& S2) {
  return Collate(S1, S2, false);
}
int32_t AnsiCompareText(const AnsiString& S1, const AnsiString& S2) {
  return Collate(S1, S2, true);
}
int32_t AnsiCompareText(const UnicodeString& S1, const UnicodeString& S2) {
  return Collate(S1, S2, true);
}
bool AnsiSameText(const AnsiString& S1, const AnsiString& S2) {
  return AnsiCompareText(S1, S2) == 0;
}
bool AnsiSameText(const UnicodeString& S1, const UnicodeString& S2) {
  return AnsiCompareText(S1, S2) == 0;
}

// --- quoting ---------------------------------------------------------------------------

AnsiString QuotedStr(const AnsiString& S) {
  return Quote(S, '\'');
}
UnicodeString QuotedStr(const UnicodeString& S) {
  return Quote(S, u'\'');
}
// Byte by byte: the quote characters in use never occur as trail bytes of a code page.
AnsiString AnsiQuotedStr(const AnsiString& S, AnsiChar Q) {
  return Quote(S, Q);
}
UnicodeString AnsiQuotedStr(const UnicodeString& S, WideChar Q) {
  return Quote(S, Q);
}
AnsiString AnsiExtractQuotedStr(const AnsiChar*& Src, AnsiChar Q) {
  return ExtractQuoted(Src, Q);
}
UnicodeString AnsiExtractQuotedStr(const WideChar*& Src, WideChar Q) {
  return ExtractQuoted(Src, Q);
}
AnsiString AnsiDequotedStr(const AnsiString& S, AnsiChar Q) {
  return Dequoted(S, Q);
}
UnicodeString AnsiDequotedStr(const UnicodeString& S, WideChar Q) {
  return Dequoted(S, Q);
}

// --- replacing -------------------------------------------------------------------------

UnicodeString StringReplace(const UnicodeString& S, const UnicodeString& OldPattern,
                            const UnicodeString& NewPattern, TReplaceFlags Flags) {
  bool All = Flags.Contains(rfReplaceAll);
  if (!Flags.Contains(rfIgnoreCase)) return ReplaceMatches(S, S, OldPattern, NewPattern, All);
  // The simple case mapping keeps every position where it was.
  return ReplaceMatches(S, AnsiUpperCase(S), AnsiUpperCase(OldPattern), NewPattern, All);
}

AnsiString StringReplace(const AnsiString& S, const AnsiString& OldPattern,
                         const AnsiString& NewPattern, TReplaceFlags Flags) {
  bool All = Flags.Contains(rfReplaceAll);
  if (!Flags.Contains(rfIgnoreCase)) return ReplaceMatches(S, S, OldPattern, NewPattern, All);
  if (IsAscii(S) && IsAscii(OldPattern))
    return ReplaceMatches(S, UpperCase(S), UpperCase(OldPattern), NewPattern, All);
  // Case mappings may change byte lengths in a multi-byte code page, so the search runs on
  // UTF-16 when the text survives the trip there and back; otherwise only a-z are folded.
  UnicodeString W = AnsiToUnicode(S);
  if (UnicodeToAnsi(W) != S)
    return ReplaceMatches(S, UpperCase(S), UpperCase(OldPattern), NewPattern, All);
  return UnicodeToAnsi(
      StringReplace(W, AnsiToUnicode(OldPattern), AnsiToUnicode(NewPattern), Flags));
}

} // namespace kx
