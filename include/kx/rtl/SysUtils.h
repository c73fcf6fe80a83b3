// SPDX-License-Identifier: MIT
#pragma once
// The runtime's string and number functions, with the semantics their callers expect:
// StrToInt reads "$FF" and "0xFF", UpperCase and CompareText fold a-z only, the Ansi* forms
// follow the locale.

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Set.h>
#include <kx/rtl/Strings.h>

#include <type_traits>

namespace kx {

// The line break of text files and of TStrings.Text: CR LF on Windows, LF elsewhere.
extern KX_API const char* const sLineBreak;

inline constexpr const char* SInvalidInteger = "'%s' is not a valid integer value";

enum TReplaceFlag : uint8_t { rfReplaceAll, rfIgnoreCase };
using TReplaceFlags = TSet<TReplaceFlag>;

// Integers from text: leading spaces, an optional sign, then decimal digits or hexadecimal
// ones after "$", "x" or "0x" (which may fill all bits: "$FFFFFFFF" is -1). Nothing may
// follow the digits. EConvertError "'<S>' is not a valid integer value" otherwise.
KX_API int32_t StrToInt(const AnsiString& S);
KX_API int32_t StrToInt(const UnicodeString& S);
KX_API int32_t StrToIntDef(const AnsiString& S, int32_t Default);
KX_API int32_t StrToIntDef(const UnicodeString& S, int32_t Default);
KX_API bool TryStrToInt(const AnsiString& S, int32_t& Value);
KX_API bool TryStrToInt(const UnicodeString& S, int32_t& Value);
KX_API int64_t StrToInt64(const AnsiString& S);
KX_API int64_t StrToInt64(const UnicodeString& S);
KX_API int64_t StrToInt64Def(const AnsiString& S, int64_t Default);
KX_API int64_t StrToInt64Def(const UnicodeString& S, int64_t Default);
KX_API bool TryStrToInt64(const AnsiString& S, int64_t& Value);
KX_API bool TryStrToInt64(const UnicodeString& S, int64_t& Value);

KX_API AnsiString IntToStr(int32_t Value);
KX_API AnsiString IntToStr(int64_t Value);
// Uppercase hexadecimal, at least Digits digits; a 32-bit value shows its 32 bits.
KX_API AnsiString IntToHex(int32_t Value, int32_t Digits);
KX_API AnsiString IntToHex(int64_t Value, int32_t Digits);

// Other integer types go to the 32-bit form when they fit it, else to the 64-bit one.
template <class T>
requires(std::is_integral_v<T> && !std::is_same_v<T, bool>) AnsiString IntToStr(T Value) {
  if constexpr (sizeof(T) < 4 || (sizeof(T) == 4 && std::is_signed_v<T>))
    return IntToStr(int32_t(Value));
  else
    return IntToStr(int64_t(Value));
}
template <class T>
requires(std::is_integral_v<T> && !std::is_same_v<T, bool>) AnsiString
    IntToHex(T Value, int32_t Digits) {
  if constexpr (sizeof(T) <= 4)
    return IntToHex(int32_t(Value), Digits);
  else
    return IntToHex(int64_t(Value), Digits);
}

// Remove characters up to and including the space (controls too) from either end.
KX_API AnsiString Trim(const AnsiString& S);
KX_API UnicodeString Trim(const UnicodeString& S);
KX_API AnsiString TrimLeft(const AnsiString& S);
KX_API UnicodeString TrimLeft(const UnicodeString& S);
KX_API AnsiString TrimRight(const AnsiString& S);
KX_API UnicodeString TrimRight(const UnicodeString& S);

// a-z / A-Z only; every other character stays.
KX_API AnsiString UpperCase(const AnsiString& S);
KX_API UnicodeString UpperCase(const UnicodeString& S);
KX_API AnsiString LowerCase(const AnsiString& S);
KX_API UnicodeString LowerCase(const UnicodeString& S);
// Every letter the locale knows, one character for one (8-bit text goes through UTF-16).
KX_API AnsiString AnsiUpperCase(const AnsiString& S);
KX_API UnicodeString AnsiUpperCase(const UnicodeString& S);
KX_API AnsiString AnsiLowerCase(const AnsiString& S);
KX_API UnicodeString AnsiLowerCase(const UnicodeString& S);

// Ordinal comparisons: the difference of the first differing characters (a-z folded to A-Z
// for CompareText), else of the lengths.
KX_API int32_t CompareStr(const AnsiString& S1, const AnsiString& S2);
KX_API int32_t CompareStr(const UnicodeString& S1, const UnicodeString& S2);
KX_API int32_t CompareText(const AnsiString& S1, const AnsiString& S2);
KX_API int32_t CompareText(const UnicodeString& S1, const UnicodeString& S2);
KX_API bool SameText(const AnsiString& S1, const AnsiString& S2);
KX_API bool SameText(const UnicodeString& S1, const UnicodeString& S2);
// The locale's collation: -1, 0 or 1.
KX_API int32_t AnsiCompareStr(const AnsiString& S1, const AnsiString& S2);
KX_API int32_t AnsiCompareStr(const UnicodeString& S1, const UnicodeString& S2);
KX_API int32_t AnsiCompareText(const AnsiString& S1, const AnsiString& S2);
KX_API int32_t AnsiCompareText(const UnicodeString& S1, const UnicodeString& S2);
KX_API bool AnsiSameText(const AnsiString& S1, const AnsiString& S2);
KX_API bool AnsiSameText(const UnicodeString& S1, const UnicodeString& S2);

// S between quotes, each quote inside doubled: QuotedStr uses the apostrophe.
KX_API AnsiString QuotedStr(const AnsiString& S);
KX_API UnicodeString QuotedStr(const UnicodeString& S);
KX_API AnsiString AnsiQuotedStr(const AnsiString& S, AnsiChar Quote);
KX_API UnicodeString AnsiQuotedStr(const UnicodeString& S, WideChar Quote);
// Reads a quoted string at Src (which must start with Quote), undoubling quotes, and leaves
// Src behind the closing quote. Without a closing quote the text runs to the end, less its
// last character. Empty when Src does not start with Quote. Src is zero-terminated.
KX_API AnsiString AnsiExtractQuotedStr(const AnsiChar*& Src, AnsiChar Quote);
KX_API UnicodeString AnsiExtractQuotedStr(const WideChar*& Src, WideChar Quote);
// The quoted string at the start of S, or S itself when that comes out empty.
KX_API AnsiString AnsiDequotedStr(const AnsiString& S, AnsiChar Quote);
KX_API UnicodeString AnsiDequotedStr(const UnicodeString& S, WideChar Quote);

// Replaces the first (or every, with rfReplaceAll) occurrence of OldPattern, left to right;
// rfIgnoreCase compares as AnsiUpperCase does.
KX_API AnsiString StringReplace(const AnsiString& S, const AnsiString& OldPattern,
                                const AnsiString& NewPattern, TReplaceFlags Flags);
KX_API UnicodeString StringReplace(const UnicodeString& S, const UnicodeString& OldPattern,
                                   const UnicodeString& NewPattern, TReplaceFlags Flags);

} // namespace kx
