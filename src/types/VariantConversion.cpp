// SPDX-License-Identifier: MIT
// Strict readers and tolerant converters of variant values.
#include <kx/rtl/DateTimeText.h>
#include <kx/rtl/FloatText.h>
#include <kx/rtl/SysUtils.h>
#include <kx/types/TypeRegistry.h>
#include <kx/types/VariantConversion.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace kx {

namespace {

using Kinds = std::initializer_list<TKxTypeKind>;

constexpr Kinds IntegerKinds = {rtkByte,     rtkWord,     rtkLongWord, rtkUInt64,
                                rtkShortInt, rtkSmallInt, rtkLongInt,  rtkInt64};
constexpr Kinds TextKinds = {rtkChar, rtkAChar, rtkWChar, rtkString, rtkAString, rtkWString};

bool In(TKxTypeKind K, Kinds Accepted) {
  return std::find(Accepted.begin(), Accepted.end(), K) != Accepted.end();
}

// The strict pattern: Default without a kind, the conversion for an accepted kind.
template <class T, class F>
T Strict(const Variant& V, T Default, Kinds Accepted, const char* Msg, F Convert) {
  const TKxTypeKind K = TKxTypes::VarTypeKind(V);
  if (K == rtkUnknown) return Default;
  if (!In(K, Accepted)) throw EConvertError(Msg);
  return Convert();
}

// Runs Convert; any exception goes on when RaiseOnError and becomes Default otherwise.
template <class T, class F>
T Guarded(T Default, bool RaiseOnError, F Convert) {
  try {
    return Convert();
  } catch (...) {
    if (RaiseOnError) throw;
    return Default;
  }
}

AnsiString TextOf(const Variant& V) {
  return VarToStr(V);
}

template <class T>
T ToInteger(const Variant& V, T Default, bool RaiseOnError, const char* Msg) {
  return Guarded(Default, RaiseOnError, [&]() -> T {
    int64_t Value;
    switch (TKxTypes::VarMainTypeKind(V)) {
    case mtkUnknown:
      return Default;
    case mtkInteger:
      Value = V.ToInt64();
      break;
    case mtkString:
      Value = sizeof(T) < 4 || (sizeof(T) == 4 && std::is_signed_v<T>) ? StrToInt(TextOf(V))
                                                                       : StrToInt64(TextOf(V));
      break;
    case mtkBoolean:
      Value = KxVarBool(V, false) ? 1 : 0;
      break;
    default:
      throw EConvertError(Msg);
    }
    if (sizeof(T) < 8 && (Value < int64_t(std::numeric_limits<T>::min()) ||
                          Value > int64_t(std::numeric_limits<T>::max())))
      throw EConvertError(Msg);
    return static_cast<T>(Value);
  });
}

template <class T>
T ToReal(const Variant& V, T Default, bool RaiseOnError, const char* Msg) {
  return Guarded(Default, RaiseOnError, [&]() -> T {
    double Value;
    switch (TKxTypes::VarMainTypeKind(V)) {
    case mtkUnknown:
      return Default;
    case mtkInteger:
    case mtkFloat:
    case mtkDateTime:
      Value = V.ToDouble();
      break;
    case mtkString:
      Value = KxStrToFloat(TextOf(V));
      break;
    case mtkBoolean:
      Value = KxVarBool(V, false) ? 1 : 0;
      break;
    default:
      throw EConvertError(Msg);
    }
    if (sizeof(T) == sizeof(float) && std::isfinite(Value) &&
        std::fabs(Value) > double(std::numeric_limits<float>::max()))
      throw EConvertError(Msg);
    return static_cast<T>(Value);
  });
}

// Text of an array of values that have text; empty when the array holds one that has none.
template <class S, class F>
bool ArrayText(const Variant& V, S& Result, F ElementText) {
  Result.clear();
  const int32_t High = VarArrayHighBound(V, 1);
  for (int64_t I = VarArrayLowBound(V, 1); I <= High; ++I) {
    const Variant E = VarArrayGet(V, int32_t(I));
    switch (TKxTypes::VarMainTypeKind(E)) {
    case mtkArray:
    case mtkStructure:
    case mtkOther:
      return false;
    default:
      if (I > VarArrayLowBound(V, 1)) Result += typename S::value_type(',');
      Result += ElementText(E);
    }
  }
  return true;
}

template <class S, class F>
S ToText(const Variant& V, const S& Default, bool RaiseOnError, const char* Msg, F Text) {
  return Guarded(Default, RaiseOnError, [&]() -> S {
    switch (TKxTypes::VarMainTypeKind(V)) {
    case mtkUnknown:
      return Default;
    case mtkArray: {
      S Result;
      if (!ArrayText(V, Result, Text)) throw EConvertError(SKxArrayNotToString);
      return Result;
    }
    case mtkStructure:
    case mtkOther:
      throw EConvertError(Msg);
    default:
      return Text(V);
    }
  });
}

AnsiString Lowered(const AnsiString& S) {
  return LowerCase(Trim(S));
}

} // namespace

// --- strict readers ----------------------------------------------------------------------

int8_t KxVarShortint(const Variant& V, int8_t Default) {
  return Strict(V, Default, {rtkByte, rtkShortInt}, SKxInvalidShortint,
                [&] { return static_cast<int8_t>(V.ToInteger()); });
}

int16_t KxVarSmallint(const Variant& V, int16_t Default) {
  // An integer is checked against the upper bound only.
  if (TKxTypes::VarTypeKind(V) == rtkLongInt && V.VInteger() > 32767)
    throw EConvertError(SKxInvalidSmallint);
  return Strict(V, Default, {rtkByte, rtkWord, rtkShortInt, rtkSmallInt, rtkLongInt},
                SKxInvalidSmallint, [&] { return static_cast<int16_t>(V.ToInteger()); });
}

int32_t KxVarLongInt(const Variant& V, int32_t Default) {
  return Strict(V, Default, {rtkByte, rtkWord, rtkLongWord, rtkShortInt, rtkSmallInt, rtkLongInt},
                SKxInvalidLongwordStrict, [&] { return V.ToInteger(); });
}

int32_t KxVarInt(const Variant& V, int32_t Default) {
  return KxVarLongInt(V, Default);
}

int64_t KxVarInt64(const Variant& V, int64_t Default) {
  return Strict(V, Default, IntegerKinds, SKxInvalidInt64, [&] { return V.ToInt64(); });
}

uint8_t KxVarByte(const Variant& V, uint8_t Default) {
  return Strict(V, Default, {rtkByte}, SKxInvalidByte,
                [&] { return static_cast<uint8_t>(V.ToInteger()); });
}

uint16_t KxVarWord(const Variant& V, uint16_t Default) {
  return Strict(V, Default, {rtkByte, rtkWord}, SKxInvalidWord,
                [&] { return static_cast<uint16_t>(V.ToInteger()); });
}

uint32_t KxVarLongword(const Variant& V, uint32_t Default) {
  return Strict(V, Default, {rtkByte, rtkWord, rtkLongWord}, SKxInvalidLongwordStrict,
                [&] { return static_cast<uint32_t>(V.ToInt64()); });
}

float KxVarSingle(const Variant& V, float Default) {
  return Strict(V, Default, {rtkByte, rtkWord, rtkShortInt, rtkSmallInt, rtkSingle},
                SKxInvalidSingle, [&] { return static_cast<float>(V.ToDouble()); });
}

double KxVarDouble(const Variant& V, double Default) {
  return Strict(
      V, Default,
      {rtkByte, rtkWord, rtkLongWord, rtkShortInt, rtkSmallInt, rtkLongInt, rtkSingle, rtkDouble},
      SKxInvalidDouble, [&] { return V.ToDouble(); });
}

Extended KxVarExtended(const Variant& V, Extended Default) {
  return Strict(V, Default,
                {rtkByte, rtkWord, rtkLongWord, rtkUInt64, rtkShortInt, rtkSmallInt, rtkLongInt,
                 rtkInt64, rtkSingle, rtkDouble, rtkExtended},
                SKxInvalidExtended, [&]() -> Extended {
                  // 64-bit integers keep every digit where the extended type has them.
                  if (TKxTypes::ToMainTypeKind(VarType(V)) == mtkInteger)
                    return Extended(V.ToInt64());
                  return V.ToDouble();
                });
}

TDateTime KxVarDate(const Variant& V, TDateTime Default) {
  return Strict(V, Default, {rtkDatetime, rtkDouble}, SKxInvalidDatetime,
                [&] { return TDateTime(V.ToDateTime()); });
}

AnsiString KxVarStr(const Variant& V, const AnsiString& Default) {
  return Strict(V, Default, TextKinds, SKxInvalidString, [&] { return V.ToAnsiString(); });
}

AnsiString KxVarStrA(const Variant& V, const AnsiString& Default) {
  return KxVarStr(V, Default);
}

UnicodeString KxVarStrW(const Variant& V, const UnicodeString& Default) {
  return Strict(V, Default, TextKinds, SKxInvalidString, [&] { return V.ToUnicodeString(); });
}

bool KxVarBool(const Variant& V, bool Default) {
  return Strict(V, Default, {rtkBoolean}, SKxInvalidBoolean, [&] { return V.ToBool(); });
}

// --- tolerant converters -----------------------------------------------------------------

int8_t KxVarToShortint(const Variant& V, int8_t Default, bool RaiseOnError) {
  return ToInteger(V, Default, RaiseOnError, SKxInvalidShortint);
}

int16_t KxVarToSmallint(const Variant& V, int16_t Default, bool RaiseOnError) {
  return ToInteger(V, Default, RaiseOnError, SKxInvalidSmallintTo);
}

int32_t KxVarToLongInt(const Variant& V, int32_t Default, bool RaiseOnError) {
  return ToInteger(V, Default, RaiseOnError, SKxInvalidLongIntTo);
}

int32_t KxVarToInt(const Variant& V, int32_t Default, bool RaiseOnError) {
  return KxVarToLongInt(V, Default, RaiseOnError);
}

int64_t KxVarToInt64(const Variant& V, int64_t Default, bool RaiseOnError) {
  return ToInteger(V, Default, RaiseOnError, SKxInvalidInt64To);
}

uint8_t KxVarToByte(const Variant& V, uint8_t Default, bool RaiseOnError) {
  return ToInteger(V, Default, RaiseOnError, SKxInvalidByteTo);
}

uint16_t KxVarToWord(const Variant& V, uint16_t Default, bool RaiseOnError) {
  return ToInteger(V, Default, RaiseOnError, SKxInvalidWordTo);
}

uint32_t KxVarToLongword(const Variant& V, uint32_t Default, bool RaiseOnError) {
  return ToInteger(V, Default, RaiseOnError, SKxInvalidLongwordTo);
}

float KxVarToSingle(const Variant& V, float Default, bool RaiseOnError) {
  return ToReal(V, Default, RaiseOnError, SKxInvalidSingleTo);
}

double KxVarToDouble(const Variant& V, double Default, bool RaiseOnError) {
  return ToReal(V, Default, RaiseOnError, SKxInvalidDoubleTo);
}

Extended KxVarToExtended(const Variant& V, Extended Default, bool RaiseOnError) {
  return ToReal(V, Default, RaiseOnError, SKxInvalidExtendedTo);
}

TDateTime KxVarToDate(const Variant& V, TDateTime Default, bool RaiseOnError) {
  return Guarded(Default, RaiseOnError, [&]() -> TDateTime {
    switch (TKxTypes::VarMainTypeKind(V)) {
    case mtkUnknown:
      return Default;
    case mtkInteger:
    case mtkFloat:
    case mtkDateTime:
      return V.ToDouble();
    case mtkString: {
      const AnsiString S = TextOf(V);
      if (S.size() >= 10 && S[4] == '-' && S[7] == '-') {
        TFormatSettings Iso = FormatSettings();
        Iso.ShortDateFormat = "yyyy-mm-dd";
        Iso.DateSeparator = '-';
        return StrToDateTime(S, Iso);
      }
      return StrToDateTime(S);
    }
    default:
      throw EConvertError(SKxInvalidDateTo);
    }
  });
}

AnsiString KxVarToStr(const Variant& V, const AnsiString& Default, bool RaiseOnError) {
  return ToText(V, Default, RaiseOnError, SKxInvalidStringTo,
                [](const Variant& E) { return VarToStr(E); });
}

AnsiString KxVarToAStr(const Variant& V, const AnsiString& Default, bool RaiseOnError) {
  return ToText(V, Default, RaiseOnError, SKxInvalidAnsiStringTo,
                [](const Variant& E) { return VarToStr(E); });
}

UnicodeString KxVarToWStr(const Variant& V, const UnicodeString& Default, bool RaiseOnError) {
  return ToText(V, Default, RaiseOnError, SKxInvalidWideStringTo,
                [](const Variant& E) { return VarToWideStr(E); });
}

bool KxVarToBool(const Variant& V, bool Default, bool RaiseOnError) {
  return Guarded(Default, RaiseOnError, [&]() -> bool {
    switch (TKxTypes::VarMainTypeKind(V)) {
    case mtkUnknown:
      return Default;
    case mtkBoolean:
      return V.ToBool();
    case mtkInteger:
      return V.ToInt64() != 0;
    case mtkString:
      return KxStrToBool(TextOf(V));
    default:
      throw EConvertError(SKxInvalidBooleanTo);
    }
  });
}

// --- helpers -----------------------------------------------------------------------------

bool KxVarIsEmpty(const Variant& V) {
  switch (TKxTypes::VarMainTypeKind(V)) {
  case mtkInteger:
    return V.ToInt64() == 0;
  case mtkFloat:
  case mtkDateTime:
    return V.ToDouble() == 0;
  case mtkString:
    return Trim(TextOf(V)).empty();
  case mtkBoolean:
    return false;
  case mtkArray:
    return VarArrayHighBound(V, 1) == -1;
  default:
    return VarIsEmpty(V) || VarIsNull(V);
  }
}

int32_t KxVarArrayCount(const Variant& V) {
  if (!VarIsArray(V)) return 0;
  return int32_t(int64_t(VarArrayHighBound(V, 1)) - VarArrayLowBound(V, 1) + 1);
}

bool KxStrToBool(const AnsiString& S) {
  const AnsiString L = Lowered(S);
  for (const char* T : {"true", "t", "yes", "y", "on", "1", "-1"})
    if (L == T) return true;
  for (const char* F : {"false", "f", "no", "n", "off", "0"})
    if (L == F) return false;
  throw EConvertError(SKxInvalidBooleanText, {S});
}

bool KxStrToBool(const AnsiString& S, bool Default) {
  try {
    return KxStrToBool(S);
  } catch (const EConvertError&) {
    return Default;
  }
}

AnsiString KxBoolToStr(bool Value) {
  return Value ? "True" : "False";
}

double KxStrToFloat(const AnsiString& S) {
  TFormatSettings Settings = TFormatSettings::Invariant();
  // One kind of separator only: "1,5" is one and a half, "1,000.5" is no number.
  if (S.find(',') != AnsiString::npos && S.find('.') == AnsiString::npos)
    Settings.DecimalSeparator = ',';
  double Value;
  if (!TryStrToFloat(S, Value, Settings)) throw EConvertError(SInvalidFloat, {S});
  return Value;
}

double KxStrToFloatDef(const AnsiString& S, double Default) {
  try {
    return KxStrToFloat(S);
  } catch (const EConvertError&) {
    return Default;
  }
}

Variant KxNullableBool(const Variant& V) {
  if (TKxTypes::VarTypeKind(V) == rtkUnknown) return Null();
  return Variant(KxVarToBool(V, false, true));
}

} // namespace kx
