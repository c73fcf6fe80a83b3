// SPDX-License-Identifier: MIT
// Everyday text functions of uKxSysUtils.
#pragma once
// Comparison, character classes, trimming, padding, splitting and joining, tokenizing,
// replacing, space normalisation, case modes and the conditional value. Positions are 1-based
// and copies clip as the runtime's Copy does.

#include <kx/classes/TextParser.h>
#include <kx/rtl/Interfaces.h>
#include <kx/rtl/StringList.h>
#include <kx/rtl/SysUtils.h>
#include <kx/rtl/Variants.h>

#include <concepts>
#include <initializer_list>
#include <span>

namespace kx {

enum TKxCharCase : uint8_t {
  rcNormal,
  rcUpperCase,
  rcLowerCase,
  rcTitleCase,
  rcUpperCamelCase,
  rcLowerCamelCase,
  rcUpperCaseFirstLetter,
  rcLowerCaseFirstLetter
};

enum TKxBitness : uint8_t { bit32, bit64 };

// The delimiters KxTokenize uses when it is given none.
inline constexpr const char* SKxDefaultTokenDelimiters = " ~!@#$%^&*()-=+\\|]}[{'\";:/?.>,<";

// --- comparison and membership -------------------------------------------------------------

// Equal ignoring case (a-z only). The 16-bit form compares the texts in the system code page.
KX_API bool KxSameText(const AnsiString& A, const AnsiString& B);
KX_API bool KxSameText(const UnicodeString& A, const UnicodeString& B);
// Both sides trimmed of characters up to the space first.
KX_API bool KxSameTrimmedText(const AnsiString& A, const AnsiString& B);
// Whether SubText (the first argument) occurs in Text, a-z folded; an empty SubText never
// does. The 16-bit form searches the texts in the system code page.
KX_API bool KxContainsText(const AnsiString& SubText, const AnsiString& Text);
KX_API bool KxContainsText(const UnicodeString& SubText, const UnicodeString& Text);
KX_API bool KxSameGuid(const TGUID& A, const TGUID& B);
// Same type code and equal by the runtime's variant "=" (which raises for arrays and
// interfaces): 1 and 1.0 are not the same.
KX_API bool KxSameVar(const Variant& A, const Variant& B);
// The elements of A's bounds compared pairwise with the variant "=", stopping at the first
// difference; B's bounds are not checked (an index B lacks raises EVariantBadIndexError). An
// empty A is the same as anything.
KX_API bool KxSameArray(const Variant& A, const Variant& B);
// Whether S equals one of Values exactly (byte-wise).
KX_API bool KxStrInSet(const AnsiString& S, std::span<const AnsiString> Values);
inline bool KxStrInSet(const AnsiString& S, std::initializer_list<AnsiString> Values) {
  return KxStrInSet(S, std::span<const AnsiString>(Values.begin(), Values.size()));
}
// A 16-bit character of 256 or more is never in a set of 8-bit characters.
KX_API bool KxCharInSet(AnsiChar C, const TKxCharSet& Set);
KX_API bool KxCharInSet(WideChar C, const TKxCharSet& Set);
// Line feed, carriage return, space, ')', ',' and ';'.
KX_API bool KxIsNameDelimiter(AnsiChar C);
KX_API bool KxIsNameDelimiter(WideChar C);
// The double and the single quote.
KX_API bool KxIsLiteral(AnsiChar C);
KX_API bool KxIsLiteral(WideChar C);
// S equals UpperCase(S); text without letters counts as upper case.
KX_API bool KxIsUppercase(const AnsiString& S);
// Bit is 1-based; true when every bit of the mask 2^(Bit-1) is set in Value. The mask is the
// low 32 bits of that power, so a Bit below 1 or above 32 has an empty mask and is always set.
KX_API bool KxIsBitChecked(int32_t Value, int32_t Bit);

// --- extraction and simple conversion ------------------------------------------------------

// The last position of C in S, 0 when absent; an embedded zero character ends the search.
KX_API int32_t KxLastPos(const AnsiString& S, AnsiChar C);
KX_API AnsiString KxLeft(const AnsiString& S, int32_t N);
// The last N characters; all of S when N exceeds its length.
KX_API AnsiString KxRight(const AnsiString& S, int32_t N);
KX_API AnsiString KxAnsiCopy(const AnsiString& S, int32_t Index, int32_t Count);
KX_API AnsiString KxIntToAnsiStr(int32_t I);
// S without quotes and characters up to the space at either end; the last character is never
// scanned past, so a text of two quotes keeps one.
KX_API AnsiString KxStripLiterals(const AnsiString& S);

// --- trimming: blanks are characters up to the space -----------------------------------------

KX_API AnsiString KxTrim(const AnsiString& S);
// Keeps the last character even when it is blank: three spaces give one space.
KX_API AnsiString KxTrimLeft(const AnsiString& S);
// Keeps the first character even when it is blank.
KX_API AnsiString KxTrimRight(const AnsiString& S);

// --- padding: a pad character #0 pads with spaces --------------------------------------------

// Prefixes PadChar until the text is at least Length long. Numbers are padded in front of
// their sign: -5 to 4 with '0' gives "00-5".
KX_API AnsiString KxPadLeft(const AnsiString& S, int32_t Length, AnsiChar PadChar);
KX_API AnsiString KxPadLeft(int32_t I, int32_t Length, AnsiChar PadChar);
KX_API AnsiString KxPadLeft(int64_t I, int32_t Length, AnsiChar PadChar);
KX_API AnsiString KxPadRight(const AnsiString& S, int32_t Length, AnsiChar PadChar);

// --- splitting and joining -------------------------------------------------------------------

// Adds the pieces of S between the Delimiter texts to List (which is not cleared), the last
// piece even when empty. An empty Delimiter adds S whole.
KX_API void KxStringToList(const AnsiString& S, const AnsiString& Delimiter, TStrings* List);
// Delimiter + item for every item, less the first character of the whole: made for a
// one-character delimiter, and cut at 999999 characters.
KX_API AnsiString KxListToString(TStrings* List, const AnsiString& Delimiter);
// Splits S at every character of Delimiters (SKxDefaultTokenDelimiters when empty). Tokens
// receives the non-empty pieces, DelimiterList (optional) every delimiter character met.
// Neither list is cleared.
KX_API void KxTokenize(const AnsiString& S, TStrings* Tokens, const AnsiString& Delimiters,
                       TStrings* DelimiterList);
// Runs StringReplace for each pair of patterns in turn, each on the previous result. Arrays
// of different lengths fail the assertion "Assertion failure"; without assertions the first
// array's length counts and a missing new pattern replaces with nothing.
KX_API AnsiString KxStringReplace(const AnsiString& S, std::span<const AnsiString> OldPatterns,
                                  std::span<const AnsiString> NewPatterns, TReplaceFlags Flags);
inline AnsiString KxStringReplace(const AnsiString& S,
                                  std::initializer_list<AnsiString> OldPatterns,
                                  std::initializer_list<AnsiString> NewPatterns,
                                  TReplaceFlags Flags) {
  return KxStringReplace(S, std::span<const AnsiString>(OldPatterns.begin(), OldPatterns.size()),
                         std::span<const AnsiString>(NewPatterns.begin(), NewPatterns.size()),
                         Flags);
}
// Runs of spaces become one space, and leading and trailing spaces go; only the space
// character counts (tabs and line breaks are ordinary characters).
KX_API AnsiString KxNormalizeSpace(const AnsiString& S);

// --- conditional value: both values are evaluated by the caller ------------------------------

inline AnsiChar KxIf(bool Condition, AnsiChar TrueValue, AnsiChar FalseValue) {
  return Condition ? TrueValue : FalseValue;
}
inline AnsiString KxIf(bool Condition, const AnsiString& TrueValue, const AnsiString& FalseValue) {
  return Condition ? TrueValue : FalseValue;
}
inline int32_t KxIf(bool Condition, int32_t TrueValue, int32_t FalseValue) {
  return Condition ? TrueValue : FalseValue;
}
inline double KxIf(bool Condition, double TrueValue, double FalseValue) {
  return Condition ? TrueValue : FalseValue;
}
// Boolean values only: a string literal must not convert to bool and land here.
template <std::same_as<bool> B>
B KxIf(bool Condition, B TrueValue, B FalseValue) {
  return Condition ? TrueValue : FalseValue;
}
// Variants only (a copy of the chosen one): values that convert to a variant keep their own
// overloads above.
template <std::same_as<Variant> V>
V KxIf(bool Condition, const V& TrueValue, const V& FalseValue) {
  return Condition ? TrueValue : FalseValue;
}

// --- case ------------------------------------------------------------------------------------

// Converts S by Mode with the locale's case mappings; the camel-case modes raise the character
// after each character of Delimiters (and, in rcUpperCamelCase, the first one) and lower all
// others, delimiters included. A Mode outside the enumeration leaves S as it is.
KX_API AnsiString KxCharCase(const AnsiString& S, TKxCharCase Mode, const AnsiString& Delimiters);
KX_API UnicodeString KxCharCase(const UnicodeString& S, TKxCharCase Mode,
                                const UnicodeString& Delimiters);

} // namespace kx
