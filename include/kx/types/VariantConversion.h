// SPDX-License-Identifier: MIT
// Variant values to the library's scalar types: strict readers and tolerant converters.
#pragma once
// Decisions rest on the registry's kind of the variant's type code (TKxTypes::VarTypeKind,
// VarMainTypeKind). Both families raise EConvertError with their own fixed messages.
//
// Strict readers KxVar<T>(V, Default): Default for empty, null and other values without a
// kind; the value, by the runtime's conversion, for the kinds that fit T; EConvertError for
// every other kind. Accepted kinds:
//   Shortint   byte, shortint          Byte      byte
//   Smallint   byte, word, shortint, smallint, and longint up to 32767 (no lower bound:
//              a large negative integer is truncated)
//   LongInt    byte, word, longword, shortint, smallint, longint
//   Int64      every integer kind      Word      byte, word
//   Longword   byte, word, longword    Single    byte, word, shortint, smallint, single
//   Double     every integer kind but int64, single, double
//   Extended   every integer kind, single, double, currency and decimal
//   Date       date, double            Bool      boolean
//   Str/StrA/StrW  the string and character kinds
//
// Tolerant converters KxVarTo<T>(V, Default, RaiseOnError), by main kind: unknown gives
// Default; integers (and for the real and date targets reals and dates) convert; text is
// parsed (integers by StrToInt/StrToInt64, reals by KxStrToFloat, booleans by KxStrToBool,
// dates see KxVarToDate); booleans are 0 or 1. Values outside the target's range, other
// kinds and every failure inside raise when RaiseOnError, else give Default.

#include <kx/rtl/DateTime.h>
#include <kx/rtl/TypInfo.h>
#include <kx/rtl/Variants.h>

namespace kx {

inline constexpr const char* SKxInvalidShortint = "The given value is not a valid shortint value!";
inline constexpr const char* SKxInvalidSmallint = "The given value is not a valid smallint value!";
inline constexpr const char* SKxInvalidSmallintTo =
    "The given value is not a valid smalling value!";
// The long-integer and long-word readers share this text.
inline constexpr const char* SKxInvalidLongwordStrict =
    "The given value is not a valid longword value!";
inline constexpr const char* SKxInvalidLongIntTo = "The given value is not a valid LongInt value!";
inline constexpr const char* SKxInvalidInt64 = "The given value is not a valid int64 value!";
inline constexpr const char* SKxInvalidInt64To = "The given value is not a valid Int64 value!";
inline constexpr const char* SKxInvalidByte = "The given value is not a valid byte value!";
inline constexpr const char* SKxInvalidByteTo = "The given value is not a valid Byte value!";
inline constexpr const char* SKxInvalidWord = "The given value is not a valid word value!";
inline constexpr const char* SKxInvalidWordTo = "The given value is not a valid Word value!";
inline constexpr const char* SKxInvalidLongwordTo =
    "The given value is not a valid LongWord value!";
inline constexpr const char* SKxInvalidSingle = "The given value is not a valid single value!";
inline constexpr const char* SKxInvalidSingleTo = "The given value is not a valid Single value!";
inline constexpr const char* SKxInvalidDouble = "The given value is not a valid double value!";
inline constexpr const char* SKxInvalidDoubleTo = "The given value is not a valid Double value!";
inline constexpr const char* SKxInvalidExtended = "The given value is not a valid extended value!";
inline constexpr const char* SKxInvalidExtendedTo =
    "The given value is not a valid Extended value!";
inline constexpr const char* SKxInvalidDatetime = "The given value is not a valid datetime value!";
inline constexpr const char* SKxInvalidDateTo = "The given value is not a valid Date value!";
inline constexpr const char* SKxInvalidString = "The given value is not a valid string value!";
inline constexpr const char* SKxInvalidStringTo = "The given value is not a valid String value!";
inline constexpr const char* SKxInvalidAnsiStringTo =
    "The given value is not a valid AnsiString value!";
inline constexpr const char* SKxInvalidWideStringTo =
    "The given value is not a valid WideString value!";
inline constexpr const char* SKxInvalidBoolean = "The given value is not a valid boolean value!";
inline constexpr const char* SKxInvalidBooleanTo = "The given value is not a valid Boolean value!";
inline constexpr const char* SKxArrayNotToString =
    "The given array is not a to-string convertable value!";
inline constexpr const char* SKxInvalidBooleanText = "'%s' is not a valid boolean value";

// --- strict readers ----------------------------------------------------------------------

KX_API int8_t KxVarShortint(const Variant& V, int8_t Default);
KX_API int16_t KxVarSmallint(const Variant& V, int16_t Default);
KX_API int32_t KxVarLongInt(const Variant& V, int32_t Default);
KX_API int32_t KxVarInt(const Variant& V, int32_t Default);
KX_API int64_t KxVarInt64(const Variant& V, int64_t Default);
KX_API uint8_t KxVarByte(const Variant& V, uint8_t Default);
KX_API uint16_t KxVarWord(const Variant& V, uint16_t Default);
KX_API uint32_t KxVarLongword(const Variant& V, uint32_t Default);
KX_API float KxVarSingle(const Variant& V, float Default);
KX_API double KxVarDouble(const Variant& V, double Default);
KX_API Extended KxVarExtended(const Variant& V, Extended Default);
KX_API TDateTime KxVarDate(const Variant& V, TDateTime Default);
KX_API AnsiString KxVarStr(const Variant& V, const AnsiString& Default);
KX_API AnsiString KxVarStrA(const Variant& V, const AnsiString& Default);
KX_API UnicodeString KxVarStrW(const Variant& V, const UnicodeString& Default);
KX_API bool KxVarBool(const Variant& V, bool Default);

// --- tolerant converters -----------------------------------------------------------------

KX_API int8_t KxVarToShortint(const Variant& V, int8_t Default, bool RaiseOnError);
KX_API int16_t KxVarToSmallint(const Variant& V, int16_t Default, bool RaiseOnError);
KX_API int32_t KxVarToLongInt(const Variant& V, int32_t Default, bool RaiseOnError);
KX_API int32_t KxVarToInt(const Variant& V, int32_t Default, bool RaiseOnError);
KX_API int64_t KxVarToInt64(const Variant& V, int64_t Default, bool RaiseOnError);
KX_API uint8_t KxVarToByte(const Variant& V, uint8_t Default, bool RaiseOnError);
KX_API uint16_t KxVarToWord(const Variant& V, uint16_t Default, bool RaiseOnError);
KX_API uint32_t KxVarToLongword(const Variant& V, uint32_t Default, bool RaiseOnError);
KX_API float KxVarToSingle(const Variant& V, float Default, bool RaiseOnError);
KX_API double KxVarToDouble(const Variant& V, double Default, bool RaiseOnError);
KX_API Extended KxVarToExtended(const Variant& V, Extended Default, bool RaiseOnError);
// Numbers are taken as days. Text of at least 10 characters with "-" as its 5th and 8th is
// read as "yyyy-mm-dd" (with an optional time after a space) whatever the locale; other text
// by the process's date format (StrToDateTime).
KX_API TDateTime KxVarToDate(const Variant& V, TDateTime Default, bool RaiseOnError);
// Numbers, booleans and dates as VarToStr writes them; a one-dimensional array as its
// elements' texts joined by ",", unless an element has no text ("The given array is not a
// to-string convertable value!").
KX_API AnsiString KxVarToStr(const Variant& V, const AnsiString& Default, bool RaiseOnError);
KX_API AnsiString KxVarToAStr(const Variant& V, const AnsiString& Default, bool RaiseOnError);
KX_API UnicodeString KxVarToWStr(const Variant& V, const UnicodeString& Default, bool RaiseOnError);
// Integers are true unless 0; text by KxStrToBool.
KX_API bool KxVarToBool(const Variant& V, bool Default, bool RaiseOnError);

// --- helpers -----------------------------------------------------------------------------

// Numbers and dates equal to 0, text that is empty once trimmed, arrays whose high bound is
// -1, and other values that are empty or null. Booleans are never empty.
KX_API bool KxVarIsEmpty(const Variant& V);
// The elements of a one-dimensional array; 0 for a variant that is no array.
KX_API int32_t KxVarArrayCount(const Variant& V);
// "true", "t", "yes", "y", "on", "1" and "-1" are true; "false", "f", "no", "n", "off" and "0"
// false; case and surrounding blanks do not matter. Other text raises EConvertError
// "'<S>' is not a valid boolean value", or gives Default.
KX_API bool KxStrToBool(const AnsiString& S);
KX_API bool KxStrToBool(const AnsiString& S, bool Default);
// "True" or "False", as variants write booleans.
KX_API AnsiString KxBoolToStr(bool Value);
// A real with "." or "," as its decimal separator (no grouping), blanks around it allowed,
// whatever the locale; EConvertError "'<S>' is not a valid floating point value" otherwise.
KX_API double KxStrToFloat(const AnsiString& S);
KX_API double KxStrToFloatDef(const AnsiString& S, double Default);
// Null for values without a kind (empty, null, error), else the value as a varBoolean
// (KxVarToBool, raising).
KX_API Variant KxNullableBool(const Variant& V);

} // namespace kx
