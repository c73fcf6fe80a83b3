// SPDX-License-Identifier: MIT
// Variant: the OLE VARIANT tagged value with the runtime's conversion and comparison rules.
#pragma once
// A value type: copies copy the value (strings and arrays included), interfaces are counted.
// Scalars and strings up to the standard library's short-string size live in the variant
// itself, so they never touch the heap. Arrays have one dimension with any low bound.

#include <kx/rtl/DateTime.h>
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Interfaces.h>
#include <kx/rtl/Strings.h>

#include <concepts>
#include <cstring>
#include <initializer_list>
#include <new>
#include <type_traits>

#if defined(_WIN32)
struct tagVARIANT;
#endif

namespace kx {

// The platform's variant type codes.
using TVarType = uint16_t;
inline constexpr TVarType varEmpty = 0x0000;
inline constexpr TVarType varNull = 0x0001;
inline constexpr TVarType varSmallint = 0x0002;
inline constexpr TVarType varInteger = 0x0003;
inline constexpr TVarType varSingle = 0x0004;
inline constexpr TVarType varDouble = 0x0005;
inline constexpr TVarType varCurrency = 0x0006;
inline constexpr TVarType varDate = 0x0007;
inline constexpr TVarType varOleStr = 0x0008;
inline constexpr TVarType varDispatch = 0x0009;
inline constexpr TVarType varError = 0x000A;
inline constexpr TVarType varBoolean = 0x000B;
inline constexpr TVarType varVariant = 0x000C;
inline constexpr TVarType varUnknown = 0x000D;
inline constexpr TVarType varDecimal = 0x000E;
inline constexpr TVarType varShortInt = 0x0010;
inline constexpr TVarType varByte = 0x0011;
inline constexpr TVarType varWord = 0x0012;
inline constexpr TVarType varLongWord = 0x0013;
inline constexpr TVarType varInt64 = 0x0014;
inline constexpr TVarType varStrArg = 0x0048;
inline constexpr TVarType varString = 0x0100;
inline constexpr TVarType varAny = 0x0101;
inline constexpr TVarType varTypeMask = 0x0FFF;
inline constexpr TVarType varArray = 0x2000;
inline constexpr TVarType varByRef = 0x4000;

KX_DECLARE_EXCEPTION(EVariantInvalidOpError, EVariantError)
KX_DECLARE_EXCEPTION(EVariantTypeCastError, EVariantError)
KX_DECLARE_EXCEPTION(EVariantOverflowError, EVariantError)
KX_DECLARE_EXCEPTION(EVariantInvalidArgError, EVariantError)
KX_DECLARE_EXCEPTION(EVariantBadVarTypeError, EVariantError)
KX_DECLARE_EXCEPTION(EVariantBadIndexError, EVariantError)
KX_DECLARE_EXCEPTION(EVariantNotAnArrayError, EVariantError)
KX_DECLARE_EXCEPTION(EVariantArrayCreateError, EVariantError)

inline constexpr const char* SInvalidVarOp = "Invalid variant operation";
inline constexpr const char* SVarTypeCouldNotConvert =
    "Could not convert variant of type (%s) into type (%s)";
inline constexpr const char* SVarOverflow =
    "Overflow while converting variant of type (%s) into type (%s)";
inline constexpr const char* SVarInvalid = "Invalid argument";
inline constexpr const char* SVarBadType = "Invalid variant type";
inline constexpr const char* SVarArrayBounds = "Variant or safe array index out of bounds";
inline constexpr const char* SVarNotArray = "Variant is not an array";
inline constexpr const char* SVarArrayCreate = "Error creating variant or safe array";

// A fixed-point amount with four decimals, held as the amount times 10000.
class Currency {
public:
  constexpr Currency() noexcept = default;
  static constexpr Currency FromScaled(int64_t Scaled) noexcept {
    Currency C;
    C.FScaled = Scaled;
    return C;
  }
  // Rounds to four decimals, halves to even; EVariantOverflowError outside the range.
  KX_API static Currency FromDouble(double Value);
  constexpr int64_t Scaled() const noexcept { return FScaled; }
  constexpr double ToDouble() const noexcept { return double(FScaled) / 10000.0; }
  friend constexpr bool operator==(Currency A, Currency B) noexcept = default;

private:
  int64_t FScaled = 0;
};

namespace detail {
// One-dimensional variant arrays: elements of one type between a low and a high bound.
struct TVarArray;
// The runtime's own access to a variant's storage.
struct TVariantAccess;
} // namespace detail

class KX_API Variant {
public:
  Variant() noexcept {}
  Variant(const Variant& Other) : FVType(Other.FVType) {
    if (IsPlain(FVType))
      std::memcpy(&FData.Raw, &Other.FData.Raw, sizeof FData.Raw);
    else
      CopyComplex(Other);
  }
  Variant(Variant&& Other) noexcept : FVType(Other.FVType) {
    if (IsPlain(FVType))
      std::memcpy(&FData.Raw, &Other.FData.Raw, sizeof FData.Raw);
    else
      MoveComplex(Other);
  }
  ~Variant() {
    if (!IsPlain(FVType)) ClearComplex();
  }
  Variant& operator=(const Variant& Other) {
    if (this != &Other) {
      if (IsPlain(FVType) && IsPlain(Other.FVType)) {
        FVType = Other.FVType;
        std::memcpy(&FData.Raw, &Other.FData.Raw, sizeof FData.Raw);
      } else {
        Variant Copy(Other);
        *this = std::move(Copy);
      }
    }
    return *this;
  }
  Variant& operator=(Variant&& Other) noexcept {
    if (this != &Other) {
      Clear();
      FVType = Other.FVType;
      if (IsPlain(FVType))
        std::memcpy(&FData.Raw, &Other.FData.Raw, sizeof FData.Raw);
      else
        MoveComplex(Other);
    }
    return *this;
  }

  // Values take the variant type of their C++ type: bool varBoolean, 8/16/32/64-bit signed
  // integers varShortInt/varSmallint/varInteger/varInt64, unsigned ones varByte/varWord/
  // varLongWord and varInt64 (64-bit unsigned values travel as their bits), float varSingle,
  // double and long double varDouble, 8-bit text varString, 16-bit text varOleStr.
  Variant(bool Value) noexcept : FVType(varBoolean) { FData.Boolean = Value ? -1 : 0; }
  template <class T>
  requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char> &&
           !std::is_same_v<T, char16_t> && !std::is_same_v<T, char32_t> &&
           !std::is_same_v<T, wchar_t> && !std::is_same_v<T, char8_t>) Variant(T Value)
  noexcept {
    if constexpr (sizeof(T) == 1 && std::is_signed_v<T>)
      SetPlain(varShortInt, FData.ShortInt, Value);
    else if constexpr (sizeof(T) == 1)
      SetPlain(varByte, FData.Byte, Value);
    else if constexpr (sizeof(T) == 2 && std::is_signed_v<T>)
      SetPlain(varSmallint, FData.Smallint, Value);
    else if constexpr (sizeof(T) == 2)
      SetPlain(varWord, FData.Word, Value);
    else if constexpr (sizeof(T) == 4 && std::is_signed_v<T>)
      SetPlain(varInteger, FData.Integer, Value);
    else if constexpr (sizeof(T) == 4)
      SetPlain(varLongWord, FData.LongWord, Value);
    else
      SetPlain(varInt64, FData.Int64, static_cast<int64_t>(Value));
  }
  Variant(float Value) noexcept : FVType(varSingle) { FData.Single = Value; }
  Variant(double Value) noexcept : FVType(varDouble) { FData.Double = Value; }
  Variant(long double Value) noexcept : FVType(varDouble) {
    FData.Double = static_cast<double>(Value);
  }
  Variant(Currency Value) noexcept : FVType(varCurrency) { FData.Currency = Value.Scaled(); }
  // Date-time values (TDate, TTime and the other kinds too) are varDate.
  Variant(TDateTime Value) noexcept : FVType(varDate) { FData.Double = Value; }
  // A character is a one-character string, as it is when assigned to a variant.
  Variant(AnsiChar Value) : Variant(AnsiString(1, Value)) {}
  Variant(WideChar Value) : Variant(UnicodeString(1, Value)) {}
  Variant(const char* Value) : Variant(AnsiString(Value ? Value : "")) {}
  Variant(std::string_view Value) : Variant(AnsiString(Value)) {}
  Variant(const AnsiString& Value) : FVType(varString) { new (FData.Text) AnsiString(Value); }
  Variant(AnsiString&& Value) noexcept : FVType(varString) {
    new (FData.Text) AnsiString(std::move(Value));
  }
  Variant(const char16_t* Value) : Variant(UnicodeString(Value ? Value : u"")) {}
  Variant(std::u16string_view Value) : Variant(UnicodeString(Value)) {}
  Variant(const UnicodeString& Value) : FVType(varOleStr) { new (FData.Text) UnicodeString(Value); }
  Variant(UnicodeString&& Value) noexcept : FVType(varOleStr) {
    new (FData.Text) UnicodeString(std::move(Value));
  }
  // varUnknown, counted; a null interface too.
  template <class I>
  requires std::is_base_of_v<IInterface, I> Variant(const IPtr<I>& Value)
  noexcept : FVType(varUnknown) {
    FData.Unknown = Value.Get();
    if (FData.Unknown) FData.Unknown->_AddRef();
  }

  // The type code, with varArray for arrays.
  TVarType VType() const noexcept { return FVType; }
  // Back to varEmpty.
  void Clear() noexcept {
    if (!IsPlain(FVType)) ClearComplex();
    FVType = varEmpty;
  }

  // The runtime's conversions. Empty converts to 0, False, "" and 0.0; Null and the types
  // without a value of the target raise EVariantTypeCastError. Integers narrow by truncation;
  // reals round half to even, and raise EVariantOverflowError beyond the 64-bit range, as
  // numeric text beyond the target's range does. Booleans are -1 and 0 as numbers, "True"
  // and "False" as text. Text is read as an integer (the StrToInt forms) or a real.
  explicit operator bool() const { return FVType == varBoolean ? FData.Boolean != 0 : ToBool(); }
  template <class T>
  requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char> &&
           !std::is_same_v<T, char16_t> && !std::is_same_v<T, char32_t> &&
           !std::is_same_v<T, wchar_t> && !std::is_same_v<T, char8_t>) explicit
  operator T() const {
    if constexpr (sizeof(T) < 4 || (sizeof(T) == 4 && std::is_signed_v<T>))
      return static_cast<T>(FVType == varInteger ? FData.Integer : ToInteger());
    else
      return static_cast<T>(FVType == varInt64 ? FData.Int64 : ToInt64());
  }
  explicit operator double() const { return FVType == varDouble ? FData.Double : ToDouble(); }
  explicit operator float() const { return static_cast<float>(double(*this)); }
  explicit operator long double() const { return double(*this); }
  explicit operator Currency() const { return ToCurrency(); }
  explicit operator AnsiString() const { return ToAnsiString(); }
  explicit operator UnicodeString() const { return ToUnicodeString(); }

  // The conversions by name (what the operators call).
  int32_t ToInteger() const;
  int64_t ToInt64() const;
  double ToDouble() const;
  bool ToBool() const;
  Currency ToCurrency() const;
  AnsiString ToAnsiString() const;
  UnicodeString ToUnicodeString() const;
  // Date-time values are days since 1899-12-30, the fraction being the time of day.
  double ToDateTime() const;

  // Direct access for code that switched on VType already; the type must match.
  int32_t VInteger() const noexcept { return FData.Integer; }
  int64_t VInt64() const noexcept { return FData.Int64; }
  double VDouble() const noexcept { return FData.Double; }
  double VDate() const noexcept { return FData.Double; }
  bool VBoolean() const noexcept { return FData.Boolean != 0; }
  HRESULT VError() const noexcept { return FData.Error; }
  const AnsiString& VString() const noexcept { return TextAs<AnsiString>(); }
  const UnicodeString& VOleStr() const noexcept { return TextAs<UnicodeString>(); }
  IInterface* VUnknown() const noexcept { return FData.Unknown; }

  // Equality as the runtime's "=" on variants: values meet in a common type (numbers and
  // numeric text as numbers, booleans with text as text); Empty equals only Empty and Null
  // only Null; interfaces, errors and arrays raise EVariantInvalidOpError.
  friend bool operator==(const Variant& A, const Variant& B) { return Equals(A, B); }

private:
  friend struct detail::TVariantAccess;

  // Types whose value is plain bits in FData: everything below varString but the strings
  // and interfaces.
  static constexpr bool IsPlain(TVarType T) noexcept {
    return T < 0x20 &&
           ((1u << T) & ((1u << varOleStr) | (1u << varDispatch) | (1u << varUnknown))) == 0;
  }
  template <class F, class T>
  void SetPlain(TVarType Type, F& Field, T Value) noexcept {
    FVType = Type;
    Field = static_cast<F>(Value);
  }
  template <class S>
  const S& TextAs() const noexcept {
    return *std::launder(reinterpret_cast<const S*>(FData.Text));
  }
  template <class S>
  S& TextAs() noexcept {
    return *std::launder(reinterpret_cast<S*>(FData.Text));
  }
  void CopyComplex(const Variant& Other);
  void MoveComplex(Variant& Other) noexcept;
  void ClearComplex() noexcept;
  static bool Equals(const Variant& A, const Variant& B);

  static constexpr size_t TextSize = sizeof(AnsiString) > sizeof(UnicodeString)
                                         ? sizeof(AnsiString)
                                         : sizeof(UnicodeString);

  TVarType FVType = varEmpty;
  union {
    uint64_t Raw;
    int16_t Smallint;
    int32_t Integer;
    float Single;
    double Double; // varDouble and varDate
    int64_t Currency;
    int32_t Error;
    int16_t Boolean; // -1 or 0, as the platform's VARIANT_BOOL
    int8_t ShortInt;
    uint8_t Byte;
    uint16_t Word;
    uint32_t LongWord;
    int64_t Int64;
    IInterface* Unknown; // varUnknown and varDispatch
    detail::TVarArray* Array;
    alignas(AnsiString) alignas(UnicodeString) unsigned char Text[TextSize];
  } FData{};
};

// The two constants: Unassigned (varEmpty) and Null (varNull).
inline Variant Unassigned() noexcept {
  return Variant();
}
KX_API Variant Null() noexcept;
KX_API Variant VarAsError(HRESULT Code) noexcept;
KX_API Variant VarFromDateTime(double DateTime) noexcept;
// VarType is varUnknown or varDispatch; the interface is counted.
KX_API Variant VarFromInterface(IInterface* Value, TVarType VarType = varUnknown);

inline TVarType VarType(const Variant& V) noexcept {
  return V.VType();
}
inline bool VarIsEmpty(const Variant& V) noexcept {
  return V.VType() == varEmpty;
}
inline bool VarIsNull(const Variant& V) noexcept {
  return V.VType() == varNull;
}
inline bool VarIsArray(const Variant& V) noexcept {
  return (V.VType() & varArray) != 0;
}
// varString and varOleStr.
inline bool VarIsStr(const Variant& V) noexcept {
  return V.VType() == varString || V.VType() == varOleStr;
}
// The type's name in messages: "Integer", "String", "Array Variant", ...
KX_API AnsiString VarTypeAsText(TVarType VarType);

// Text of the value; Null gives the empty text where a plain conversion raises. Dates are
// written by DateTimeToStr and read by StrToDateTime with the process's format settings.
KX_API AnsiString VarToStr(const Variant& V);
KX_API UnicodeString VarToWideStr(const Variant& V);
KX_API double VarToDateTime(const Variant& V);
// Empty and null interfaces give null; other types raise EVariantTypeCastError.
KX_API IPtr<IInterface> VarToInterface(const Variant& V);
// The value converted to another type (EVariantTypeCastError when there is none).
KX_API Variant VarAsType(const Variant& V, TVarType VarType);

// Arrays. Bounds are {low, high}; high may be low - 1 for an empty array. Elements start as
// the element type's zero (Empty for varVariant). EVariantArrayCreateError for more than one
// dimension or an element type an array cannot hold.
KX_API Variant VarArrayCreate(std::initializer_list<int32_t> Bounds, TVarType VarType);
// A varVariant array with the values, from index 0.
KX_API Variant VarArrayOf(std::initializer_list<Variant> Values);
// 0 for a variant that is no array, else 1.
KX_API int32_t VarArrayDimCount(const Variant& A);
// Dim is 1; EVariantNotAnArrayError for a variant that is no array.
KX_API int32_t VarArrayLowBound(const Variant& A, int32_t Dim);
KX_API int32_t VarArrayHighBound(const Variant& A, int32_t Dim);
// EVariantBadIndexError outside the bounds. A value put is converted to the element type.
KX_API Variant VarArrayGet(const Variant& A, int32_t Index);
KX_API void VarArrayPut(Variant& A, const Variant& Value, int32_t Index);
// New high bound; added elements start as zeros.
KX_API void VarArrayRedim(Variant& A, int32_t HighBound);

#if defined(_WIN32)
// The platform's VARIANT, where a value crosses COM. Dest must be initialised (VariantInit);
// what it held is cleared first. 8-bit text becomes a BSTR, arrays SAFEARRAYs of one
// dimension. Failures of the platform raise EOleSysError.
KX_API void VariantToOleVariant(const Variant& Source, tagVARIANT* Dest);
// By-reference values are read through; decimals become doubles; other types the runtime
// has no value of raise EVariantBadVarTypeError.
KX_API Variant OleVariantToVariant(const tagVARIANT* Source);
#endif

} // namespace kx
