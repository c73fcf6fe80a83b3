// SPDX-License-Identifier: MIT
// Variant storage, conversions, comparison and one-dimensional arrays.
#include <kx/rtl/DateTimeText.h>
#include <kx/rtl/SysUtils.h>
#include <kx/rtl/Variants.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <vector>

namespace kx {

KX_IMPLEMENT_EXCEPTION(EVariantInvalidOpError, EVariantError, "Variants")
KX_IMPLEMENT_EXCEPTION(EVariantTypeCastError, EVariantError, "Variants")
KX_IMPLEMENT_EXCEPTION(EVariantOverflowError, EVariantError, "Variants")
KX_IMPLEMENT_EXCEPTION(EVariantInvalidArgError, EVariantError, "Variants")
KX_IMPLEMENT_EXCEPTION(EVariantBadVarTypeError, EVariantError, "Variants")
KX_IMPLEMENT_EXCEPTION(EVariantBadIndexError, EVariantError, "Variants")
KX_IMPLEMENT_EXCEPTION(EVariantNotAnArrayError, EVariantError, "Variants")
KX_IMPLEMENT_EXCEPTION(EVariantArrayCreateError, EVariantError, "Variants")

namespace detail {

struct TVarArray {
  int32_t LowBound = 0;
  TVarType ElementType = varVariant;
  std::vector<Variant> Items;
};

struct TVariantAccess {
  static auto& Data(Variant& V) noexcept { return V.FData; }
  static const auto& Data(const Variant& V) noexcept { return V.FData; }
  // V must hold a plain value or nothing.
  static void SetVType(Variant& V, TVarType Type) noexcept { V.FVType = Type; }
  static TVarArray& Array(const Variant& V) noexcept { return *V.FData.Array; }
};

} // namespace detail

using detail::TVarArray;
using detail::TVariantAccess;

namespace {

[[noreturn]] void CastError(TVarType From, TVarType To) {
  throw EVariantTypeCastError(SVarTypeCouldNotConvert, {VarTypeAsText(From), VarTypeAsText(To)});
}

[[noreturn]] void OverflowError(TVarType From, TVarType To) {
  throw EVariantOverflowError(SVarOverflow, {VarTypeAsText(From), VarTypeAsText(To)});
}

bool IsIntegerType(TVarType T) {
  switch (T) {
  case varSmallint:
  case varInteger:
  case varShortInt:
  case varByte:
  case varWord:
  case varLongWord:
  case varInt64:
    return true;
  default:
    return false;
  }
}

// The value of an integer variant (IsIntegerType) as a 64-bit number.
int64_t IntegerValue(const Variant& V) {
  const auto& D = TVariantAccess::Data(V);
  switch (V.VType()) {
  case varSmallint:
    return D.Smallint;
  case varInteger:
    return D.Integer;
  case varShortInt:
    return D.ShortInt;
  case varByte:
    return D.Byte;
  case varWord:
    return D.Word;
  case varLongWord:
    return D.LongWord;
  default:
    return D.Int64;
  }
}

// Round half to even into 64 bits; NaN, infinities and values beyond the range overflow.
int64_t RoundReal(double Value, TVarType From, TVarType To) {
  const double R = std::nearbyint(Value);
  // 2^63 is exact in a double; every double below it converts.
  if (!(R >= -9223372036854775808.0 && R < 9223372036854775808.0)) OverflowError(From, To);
  return static_cast<int64_t>(R);
}

int64_t RoundCurrency(int64_t Scaled) {
  int64_t Q = Scaled / 10000, R = Scaled % 10000;
  if (R > 5000 || (R == 5000 && (Q & 1)))
    ++Q;
  else if (R < -5000 || (R == -5000 && (Q & 1)))
    --Q;
  return Q;
}

bool IsBlank(char C) {
  return static_cast<unsigned char>(C) <= ' ';
}

// A real in text: blanks around it, a sign, digits with a "." and an exponent; no
// hexadecimal, infinities or NaN.
bool TryTextToReal(std::string_view S, double& Value) {
  while (!S.empty() && IsBlank(S.front())) S.remove_prefix(1);
  while (!S.empty() && IsBlank(S.back())) S.remove_suffix(1);
  bool Negative = false;
  if (!S.empty() && (S.front() == '+' || S.front() == '-')) {
    Negative = S.front() == '-';
    S.remove_prefix(1);
  }
  if (S.empty() || !((S.front() >= '0' && S.front() <= '9') || S.front() == '.')) return false;
  double V;
  auto [End, Ec] = std::from_chars(S.data(), S.data() + S.size(), V, std::chars_format::general);
  if (Ec != std::errc() || End != S.data() + S.size()) return false;
  Value = Negative ? -V : V;
  return true;
}

AnsiString TextOf(const Variant& V) {
  return V.VType() == varString ? V.VString() : UnicodeToAnsi(V.VOleStr());
}

// Integer text, or real text rounded; Bits (32 or 64) limits the value.
int64_t TextToInteger(const Variant& V, int Bits, TVarType To) {
  int64_t Value;
  bool Ok = V.VType() == varString ? TryStrToInt64(V.VString(), Value)
                                   : TryStrToInt64(V.VOleStr(), Value);
  if (!Ok) {
    double Real;
    if (!TryTextToReal(TextOf(V), Real)) CastError(V.VType(), To);
    Value = RoundReal(Real, V.VType(), To);
  }
  if (Bits == 32 &&
      (Value < std::numeric_limits<int32_t>::min() || Value > std::numeric_limits<int32_t>::max()))
    OverflowError(V.VType(), To);
  return Value;
}

double TextToReal(const Variant& V, TVarType To) {
  double Value;
  if (!TryTextToReal(TextOf(V), Value)) CastError(V.VType(), To);
  return Value;
}

AnsiString RealToText(double Value, int32_t Precision) {
  return Format("%.*g", {Precision, Value});
}

AnsiString CurrencyToText(int64_t Scaled) {
  const uint64_t Magnitude = Scaled < 0 ? 0 - uint64_t(Scaled) : uint64_t(Scaled);
  AnsiString S = Scaled < 0 ? "-" : "";
  S += std::to_string(Magnitude / 10000);
  uint64_t Fraction = Magnitude % 10000;
  if (Fraction) {
    AnsiString Digits = std::to_string(Fraction + 10000).substr(1);
    while (Digits.back() == '0') Digits.pop_back();
    S.append(1, '.').append(Digits);
  }
  return S;
}

// The zero of an element type, as new array elements hold it.
Variant ZeroOf(TVarType Type) {
  switch (Type) {
  case varVariant:
    return Variant();
  case varOleStr:
    return Variant(UnicodeString());
  case varDispatch:
  case varUnknown:
    return VarFromInterface(nullptr, Type);
  case varError:
    return VarAsError(0);
  default:
    return VarAsType(Variant(int32_t(0)), Type);
  }
}

bool IsArrayElementType(TVarType T) {
  return (T >= varSmallint && T <= varUnknown) || (T >= varShortInt && T <= varInt64);
}

TVarArray& ArrayOf(const Variant& A) {
  if (!VarIsArray(A)) throw EVariantNotAnArrayError(SVarNotArray);
  return TVariantAccess::Array(A);
}

size_t ElementIndex(const TVarArray& Arr, int32_t Index) {
  const int64_t Offset = int64_t(Index) - Arr.LowBound;
  if (Offset < 0 || uint64_t(Offset) >= Arr.Items.size())
    throw EVariantBadIndexError(SVarArrayBounds);
  return size_t(Offset);
}

// Where two values meet for "=".
enum TCommon : uint8_t { ctInteger, ctBoolean, ctFloat, ctCurrency, ctDate, ctString, ctWideStr };

TCommon CommonOf(TVarType T) {
  switch (T) {
  case varSingle:
  case varDouble:
    return ctFloat;
  case varCurrency:
    return ctCurrency;
  case varDate:
    return ctDate;
  case varBoolean:
    return ctBoolean;
  case varOleStr:
    return ctWideStr;
  case varString:
    return ctString;
  default:
    return ctInteger;
  }
}

} // namespace

// --- storage ----------------------------------------------------------------------------

void Variant::CopyComplex(const Variant& Other) {
  switch (FVType) {
  case varString:
    new (FData.Text) AnsiString(Other.TextAs<AnsiString>());
    break;
  case varOleStr:
    new (FData.Text) UnicodeString(Other.TextAs<UnicodeString>());
    break;
  case varDispatch:
  case varUnknown:
    FData.Unknown = Other.FData.Unknown;
    if (FData.Unknown) FData.Unknown->_AddRef();
    break;
  default: // arrays
    FData.Array = new TVarArray(*Other.FData.Array);
    break;
  }
}

void Variant::MoveComplex(Variant& Other) noexcept {
  switch (FVType) {
  case varString:
    new (FData.Text) AnsiString(std::move(Other.TextAs<AnsiString>()));
    Other.TextAs<AnsiString>().~AnsiString();
    break;
  case varOleStr:
    new (FData.Text) UnicodeString(std::move(Other.TextAs<UnicodeString>()));
    Other.TextAs<UnicodeString>().~UnicodeString();
    break;
  case varDispatch:
  case varUnknown:
    FData.Unknown = Other.FData.Unknown;
    break;
  default:
    FData.Array = Other.FData.Array;
    break;
  }
  Other.FVType = varEmpty;
}

void Variant::ClearComplex() noexcept {
  switch (FVType) {
  case varString:
    TextAs<AnsiString>().~AnsiString();
    break;
  case varOleStr:
    TextAs<UnicodeString>().~UnicodeString();
    break;
  case varDispatch:
  case varUnknown:
    if (FData.Unknown) FData.Unknown->_Release();
    break;
  default:
    delete FData.Array;
    break;
  }
}

Variant Null() noexcept {
  Variant V;
  TVariantAccess::SetVType(V, varNull);
  return V;
}

Variant VarAsError(HRESULT Code) noexcept {
  Variant V;
  TVariantAccess::SetVType(V, varError);
  TVariantAccess::Data(V).Error = Code;
  return V;
}

Variant VarFromDateTime(double DateTime) noexcept {
  Variant V(DateTime);
  TVariantAccess::SetVType(V, varDate);
  return V;
}

Variant VarFromInterface(IInterface* Value, TVarType VarType) {
  if (VarType != varUnknown && VarType != varDispatch) throw EVariantInvalidArgError(SVarInvalid);
  Variant V;
  TVariantAccess::SetVType(V, VarType);
  TVariantAccess::Data(V).Unknown = Value;
  if (Value) Value->_AddRef();
  return V;
}

Currency Currency::FromDouble(double Value) {
  const double Scaled = std::nearbyint(Value * 10000.0);
  if (!(Scaled >= -9223372036854775808.0 && Scaled < 9223372036854775808.0))
    OverflowError(varDouble, varCurrency);
  return FromScaled(static_cast<int64_t>(Scaled));
}

AnsiString VarTypeAsText(TVarType VarType) {
  static constexpr const char* Names[] = {
      "Empty",   "Null",   "Smallint", "Integer", "Single",  "Double",   "Currency",
      "Date",    "OleStr", "Dispatch", "Error",   "Boolean", "Variant",  "Unknown",
      "Decimal", "$000F",  "ShortInt", "Byte",    "Word",    "LongWord", "Int64"};
  const TVarType Base = VarType & varTypeMask;
  AnsiString Name;
  if (Base < std::size(Names))
    Name = Names[Base];
  else if (Base == varStrArg)
    Name = "StrArg";
  else if (Base == varString)
    Name = "String";
  else if (Base == varAny)
    Name = "Any";
  else
    Name = "$" + IntToHex(int32_t(Base), 4);
  if (VarType & varArray) Name.insert(0, "Array ");
  if (VarType & varByRef) Name.insert(0, "Ref to ");
  return Name;
}

// --- conversions ---------------------------------------------------------------------------

int32_t Variant::ToInteger() const {
  switch (FVType) {
  case varEmpty:
    return 0;
  case varSingle:
    return static_cast<int32_t>(RoundReal(FData.Single, FVType, varInteger));
  case varDouble:
  case varDate:
    return static_cast<int32_t>(RoundReal(FData.Double, FVType, varInteger));
  case varCurrency:
    return static_cast<int32_t>(RoundCurrency(FData.Currency));
  case varBoolean:
    return FData.Boolean;
  case varString:
  case varOleStr:
    return static_cast<int32_t>(TextToInteger(*this, 32, varInteger));
  default:
    if (IsIntegerType(FVType)) return static_cast<int32_t>(IntegerValue(*this));
    CastError(FVType, varInteger);
  }
}

int64_t Variant::ToInt64() const {
  switch (FVType) {
  case varEmpty:
    return 0;
  case varSingle:
    return RoundReal(FData.Single, FVType, varInt64);
  case varDouble:
  case varDate:
    return RoundReal(FData.Double, FVType, varInt64);
  case varCurrency:
    return RoundCurrency(FData.Currency);
  case varBoolean:
    return FData.Boolean;
  case varString:
  case varOleStr:
    return TextToInteger(*this, 64, varInt64);
  default:
    if (IsIntegerType(FVType)) return IntegerValue(*this);
    CastError(FVType, varInt64);
  }
}

double Variant::ToDouble() const {
  switch (FVType) {
  case varEmpty:
    return 0;
  case varSingle:
    return FData.Single;
  case varDouble:
  case varDate:
    return FData.Double;
  case varCurrency:
    return Currency::FromScaled(FData.Currency).ToDouble();
  case varBoolean:
    return FData.Boolean;
  case varString:
  case varOleStr:
    return TextToReal(*this, varDouble);
  default:
    if (IsIntegerType(FVType)) return double(IntegerValue(*this));
    CastError(FVType, varDouble);
  }
}

bool Variant::ToBool() const {
  switch (FVType) {
  case varEmpty:
    return false;
  case varSingle:
    return FData.Single != 0;
  case varDouble:
  case varDate:
    return FData.Double != 0;
  case varCurrency:
    return FData.Currency != 0;
  case varBoolean:
    return FData.Boolean != 0;
  case varString:
  case varOleStr: {
    AnsiString S = TextOf(*this);
    if (SameText(S, "True")) return true;
    if (SameText(S, "False")) return false;
    return TextToReal(*this, varBoolean) != 0;
  }
  default:
    if (IsIntegerType(FVType)) return IntegerValue(*this) != 0;
    CastError(FVType, varBoolean);
  }
}

Currency Variant::ToCurrency() const {
  switch (FVType) {
  case varString:
  case varOleStr:
    return Currency::FromDouble(TextToReal(*this, varCurrency));
  case varCurrency:
    return Currency::FromScaled(FData.Currency);
  case varSingle:
  case varDouble:
  case varDate:
    return Currency::FromDouble(ToDouble());
  default: {
    if (!IsIntegerType(FVType) && FVType != varEmpty && FVType != varBoolean)
      CastError(FVType, varCurrency);
    const int64_t V = ToInt64();
    constexpr int64_t Limit = std::numeric_limits<int64_t>::max() / 10000;
    if (V > Limit || V < -Limit) OverflowError(FVType, varCurrency);
    return Currency::FromScaled(V * 10000);
  }
  }
}

double Variant::ToDateTime() const {
  switch (FVType) {
  case varDate:
    return FData.Double;
  case varString:
  case varOleStr: {
    TDateTime Value;
    if (!TryStrToDateTime(TextOf(*this), Value)) CastError(FVType, varDate);
    return Value;
  }
  default:
    try {
      return ToDouble();
    } catch (const EVariantTypeCastError&) {
      CastError(FVType, varDate);
    }
  }
}

AnsiString Variant::ToAnsiString() const {
  switch (FVType) {
  case varEmpty:
    return AnsiString();
  case varString:
    return TextAs<AnsiString>();
  case varOleStr:
    return UnicodeToAnsi(TextAs<UnicodeString>());
  case varSingle:
    return RealToText(FData.Single, 7);
  case varDouble:
    return RealToText(FData.Double, 15);
  case varCurrency:
    return CurrencyToText(FData.Currency);
  case varDate:
    return DateTimeToStr(FData.Double);
  case varBoolean:
    return FData.Boolean ? "True" : "False";
  case varLongWord:
    return IntToStr(int64_t(FData.LongWord));
  case varInt64:
    return IntToStr(FData.Int64);
  default:
    if (IsIntegerType(FVType)) return IntToStr(int32_t(IntegerValue(*this)));
    CastError(FVType, varString);
  }
}

UnicodeString Variant::ToUnicodeString() const {
  switch (FVType) {
  case varOleStr:
    return TextAs<UnicodeString>();
  case varString:
    return AnsiToUnicode(TextAs<AnsiString>());
  default:
    try {
      return AnsiToUnicode(ToAnsiString());
    } catch (const EVariantTypeCastError&) {
      CastError(FVType, varOleStr);
    }
  }
}

AnsiString VarToStr(const Variant& V) {
  return V.VType() == varNull ? AnsiString() : V.ToAnsiString();
}

UnicodeString VarToWideStr(const Variant& V) {
  return V.VType() == varNull ? UnicodeString() : V.ToUnicodeString();
}

double VarToDateTime(const Variant& V) {
  return V.ToDateTime();
}

IPtr<IInterface> VarToInterface(const Variant& V) {
  switch (V.VType()) {
  case varEmpty:
    return nullptr;
  case varUnknown:
  case varDispatch:
    return IPtr<IInterface>(V.VUnknown());
  default:
    CastError(V.VType(), varUnknown);
  }
}

Variant VarAsType(const Variant& V, TVarType VarType) {
  if (V.VType() == VarType) return V;
  if (VarType & varArray) CastError(V.VType(), VarType);
  switch (VarType) {
  case varEmpty:
    return Variant();
  case varNull:
    return Null();
  case varSmallint:
    return Variant(static_cast<int16_t>(V.ToInteger()));
  case varInteger:
    return Variant(V.ToInteger());
  case varShortInt:
    return Variant(static_cast<int8_t>(V.ToInteger()));
  case varByte:
    return Variant(static_cast<uint8_t>(V.ToInteger()));
  case varWord:
    return Variant(static_cast<uint16_t>(V.ToInteger()));
  case varLongWord:
    return Variant(static_cast<uint32_t>(V.ToInt64()));
  case varInt64:
    return Variant(V.ToInt64());
  case varSingle: {
    const double D = V.ToDouble();
    if (std::isfinite(D) && std::fabs(D) > double(std::numeric_limits<float>::max()))
      OverflowError(V.VType(), varSingle);
    return Variant(static_cast<float>(D));
  }
  case varDouble:
    return Variant(V.ToDouble());
  case varCurrency:
    return Variant(V.ToCurrency());
  case varDate:
    return VarFromDateTime(V.ToDateTime());
  case varBoolean:
    return Variant(V.ToBool());
  case varString:
    return Variant(V.ToAnsiString());
  case varOleStr:
    return Variant(V.ToUnicodeString());
  case varUnknown:
    return VarFromInterface(VarToInterface(V).Get(), varUnknown);
  case varDispatch:
    if (V.VType() != varEmpty) CastError(V.VType(), varDispatch);
    return VarFromInterface(nullptr, varDispatch);
  case varError:
    CastError(V.VType(), varError);
  default:
    throw EVariantBadVarTypeError(SVarBadType);
  }
}

// --- comparison ----------------------------------------------------------------------------

bool Variant::Equals(const Variant& A, const Variant& B) {
  const TVarType TA = A.FVType, TB = B.FVType;
  const auto Comparable = [](TVarType T) {
    return T == varEmpty || T == varNull || IsIntegerType(T) ||
           (T >= varSingle && T <= varOleStr) || T == varBoolean || T == varString;
  };
  if (!Comparable(TA) || !Comparable(TB)) {
    if (TA == varNull || TB == varNull) return TA == TB;
    throw EVariantInvalidOpError(SInvalidVarOp);
  }
  if (TA == varEmpty || TB == varEmpty) return TA == TB;
  if (TA == varNull || TB == varNull) return TA == TB;

  const TCommon CA = CommonOf(TA), CB = CommonOf(TB);
  const auto IsText = [](TCommon C) { return C == ctString || C == ctWideStr; };
  TCommon C = CA;
  if (CA == CB)
    C = CA;
  else if (CA == ctDate || CB == ctDate)
    C = ctDate;
  else if (CA == ctCurrency || CB == ctCurrency)
    C = ctCurrency;
  else if (CA == ctFloat || CB == ctFloat)
    C = ctFloat;
  else if (!IsText(CA) && !IsText(CB))
    C = ctInteger; // an integer and a boolean: -1 and 0
  else if (IsText(CA) && IsText(CB))
    C = ctWideStr;
  else if (CA == ctInteger || CB == ctInteger)
    C = ctFloat; // numeric text
  else
    C = (CA == ctWideStr || CB == ctWideStr) ? ctWideStr : ctString; // "True" / "False"

  switch (C) {
  case ctInteger:
    return A.ToInt64() == B.ToInt64();
  case ctString:
    return A.ToAnsiString() == B.ToAnsiString();
  case ctWideStr:
    return A.ToUnicodeString() == B.ToUnicodeString();
  case ctFloat:
    return A.ToDouble() == B.ToDouble();
  case ctCurrency:
    return A.ToCurrency() == B.ToCurrency();
  case ctDate:
    return A.ToDateTime() == B.ToDateTime();
  case ctBoolean:
    return A.ToBool() == B.ToBool();
  }
  return false;
}

// --- arrays --------------------------------------------------------------------------------

Variant VarArrayCreate(std::initializer_list<int32_t> Bounds, TVarType VarType) {
  if (Bounds.size() != 2 || !IsArrayElementType(VarType))
    throw EVariantArrayCreateError(SVarArrayCreate);
  const int64_t Low = Bounds.begin()[0], High = Bounds.begin()[1];
  if (High < Low - 1) throw EVariantArrayCreateError(SVarArrayCreate);
  auto* Arr = new TVarArray;
  try {
    Arr->LowBound = int32_t(Low);
    Arr->ElementType = VarType;
    Arr->Items.assign(size_t(High - Low + 1), ZeroOf(VarType));
  } catch (const std::bad_alloc&) {
    delete Arr;
    throw EVariantArrayCreateError(SVarArrayCreate);
  } catch (...) {
    delete Arr;
    throw;
  }
  Variant V;
  TVariantAccess::SetVType(V, varArray | VarType);
  TVariantAccess::Data(V).Array = Arr;
  return V;
}

Variant VarArrayOf(std::initializer_list<Variant> Values) {
  Variant V = VarArrayCreate({0, int32_t(Values.size()) - 1}, varVariant);
  std::copy(Values.begin(), Values.end(), TVariantAccess::Array(V).Items.begin());
  return V;
}

int32_t VarArrayDimCount(const Variant& A) {
  return VarIsArray(A) ? 1 : 0;
}

int32_t VarArrayLowBound(const Variant& A, int32_t Dim) {
  const TVarArray& Arr = ArrayOf(A);
  if (Dim != 1) throw EVariantInvalidArgError(SVarInvalid);
  return Arr.LowBound;
}

int32_t VarArrayHighBound(const Variant& A, int32_t Dim) {
  const TVarArray& Arr = ArrayOf(A);
  if (Dim != 1) throw EVariantInvalidArgError(SVarInvalid);
  return int32_t(int64_t(Arr.LowBound) + int64_t(Arr.Items.size()) - 1);
}

Variant VarArrayGet(const Variant& A, int32_t Index) {
  const TVarArray& Arr = ArrayOf(A);
  return Arr.Items[ElementIndex(Arr, Index)];
}

void VarArrayPut(Variant& A, const Variant& Value, int32_t Index) {
  TVarArray& Arr = ArrayOf(A);
  Variant& Item = Arr.Items[ElementIndex(Arr, Index)];
  Item = Arr.ElementType == varVariant ? Value : VarAsType(Value, Arr.ElementType);
}

void VarArrayRedim(Variant& A, int32_t HighBound) {
  TVarArray& Arr = ArrayOf(A);
  const int64_t Count = int64_t(HighBound) - Arr.LowBound + 1;
  if (Count < 0) throw EVariantInvalidArgError(SVarInvalid);
  try {
    Arr.Items.resize(size_t(Count), ZeroOf(Arr.ElementType));
  } catch (const std::bad_alloc&) {
    throw EVariantArrayCreateError(SVarArrayCreate);
  }
}

} // namespace kx
