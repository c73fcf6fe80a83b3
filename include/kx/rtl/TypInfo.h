// SPDX-License-Identifier: MIT
// Run-time type information: one record per type, with its kind, names, parent class and
// enumeration member names, and a handle comparable by identity.
#pragma once
// Built-in types get their records from the library, a class from its class reference
// (TypeInfo<TMyClass>()), and enumerations, records and interfaces from one macro each:
//
//   KX_TYPEINFO_ENUM(TMyColor, "uMyUnit", mcRed, mcGreen, mcBlue)
//   KX_TYPEINFO_RECORD(TMyPoint, "uMyUnit")
//   KX_TYPEINFO_INTERFACE(IMyService, "uMyUnit")
//
// written at global scope, after the type. There is no general reflection: published
// properties stay TPersistent's hook.

#include <kx/rtl/DateTime.h>
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Object.h>
#include <kx/rtl/Strings.h>

#include <array>
#include <string_view>
#include <type_traits>
#include <vector>

namespace kx {

class Variant;
class Currency;

// The language runtime's 18 type kinds, in its order.
enum TTypeKind : uint8_t {
  tkUnknown,
  tkInteger,
  tkChar,
  tkEnumeration,
  tkFloat,
  tkString,
  tkSet,
  tkClass,
  tkMethod,
  tkWChar,
  tkLString,
  tkWString,
  tkVariant,
  tkArray,
  tkRecord,
  tkInterface,
  tkInt64,
  tkDynArray
};

struct TTypeInfo;
using PTypeInfo = const TTypeInfo*;

struct TTypeInfo {
  TTypeKind Kind;
  // The short name ("Integer", "TKxObject").
  const char* Name;
  // The unit that declares the type; empty for the language's own types.
  const char* UnitName;
  // Classes: the class reference (which knows the parent).
  TClass ClassType;
  // Enumerations: the member names by ordinal.
  const std::string_view* EnumNames;
  int32_t EnumCount;

  // "Unit.Name", or the short name for the language's own types.
  KX_API AnsiString QualifiedName() const;
  // Classes: the record of the parent class; null for TObject and for other kinds.
  KX_API PTypeInfo ParentInfo() const;
};

// The record of a class, the same handle for every call.
KX_API PTypeInfo GetClassTypeInfo(TClass AClass);
// An enumeration's member name, "" outside its range.
KX_API AnsiString GetEnumName(PTypeInfo TypeInfo, int32_t Value);
// The ordinal of a member (names compared ignoring case), -1 when there is none.
KX_API int32_t GetEnumValue(PTypeInfo TypeInfo, std::string_view Name);

// The language's 16-bit boolean, kept apart from bool for its type information.
struct WordBool {
  int16_t Value = 0;
  constexpr WordBool() = default;
  constexpr WordBool(bool B) : Value(B ? -1 : 0) {}
  constexpr operator bool() const { return Value != 0; }
};
// The extended-precision real.
using Extended = long double;
// The runtime's dynamic arrays of the type registry.
using TStringDynArray = std::vector<AnsiString>;
using TIntegerDynArray = std::vector<int32_t>;
using TBooleanDynArray = std::vector<bool>;
using TDateTimeDynArray = std::vector<TDateTime>;

// Where TypeInfo<T> finds the record of types that are neither classes nor integers;
// specialised by the macros above and by the library for its own types.
template <class T>
struct TTypeInfoOf;

namespace detail {

// The library's records of the language's types.
enum TBuiltinType : uint8_t {
  btByte,
  btWord,
  btCardinal,
  btUInt64,
  btShortInt,
  btSmallInt,
  btInteger,
  btInt64,
  btSingle,
  btDouble,
  btExtended,
  btCurrency,
  btBoolean,
  btWordBool,
  btChar,
  btWideChar,
  btString,
  btWideString,
  btVariant,
  btTDateTime,
  btTDate,
  btTTime,
  btTKxUTCDate,
  btTKxUTCTime,
  btTKxUTCDateTime,
  btTStringDynArray,
  btTIntegerDynArray,
  btTBooleanDynArray,
  btTDateTimeDynArray
};
KX_API PTypeInfo BuiltinTypeInfo(TBuiltinType Type);

// The name after the last "::" of a stringified type.
constexpr const char* ShortTypeName(const char* Name) {
  const char* Short = Name;
  for (const char* P = Name; *P; ++P)
    if (P[0] == ':' && P[1] == ':') Short = P + 2;
  return Short;
}

constexpr size_t CountEnumNames(std::string_view List) {
  size_t N = 1;
  for (char C : List) N += C == ',';
  return N;
}

// The member names of an enumeration, cut at compile time from its stringified member list.
template <size_t N>
struct TEnumNames {
  std::array<std::string_view, N> Names{};
  constexpr explicit TEnumNames(std::string_view List) {
    for (size_t I = 0; I < N; ++I) {
      size_t Comma = List.find(',');
      std::string_view Item = List.substr(0, Comma);
      while (!Item.empty() && Item.front() == ' ') Item.remove_prefix(1);
      while (!Item.empty() && Item.back() == ' ') Item.remove_suffix(1);
      Names[I] = Item;
      List = Comma == std::string_view::npos ? std::string_view() : List.substr(Comma + 1);
    }
  }
};

template <TBuiltinType B>
struct TBuiltinTypeInfo {
  static PTypeInfo Get() { return BuiltinTypeInfo(B); }
};

} // namespace detail

template <>
struct TTypeInfoOf<bool> : detail::TBuiltinTypeInfo<detail::btBoolean> {};
template <>
struct TTypeInfoOf<WordBool> : detail::TBuiltinTypeInfo<detail::btWordBool> {};
template <>
struct TTypeInfoOf<char> : detail::TBuiltinTypeInfo<detail::btChar> {};
template <>
struct TTypeInfoOf<char16_t> : detail::TBuiltinTypeInfo<detail::btWideChar> {};
template <>
struct TTypeInfoOf<float> : detail::TBuiltinTypeInfo<detail::btSingle> {};
template <>
struct TTypeInfoOf<double> : detail::TBuiltinTypeInfo<detail::btDouble> {};
template <>
struct TTypeInfoOf<long double> : detail::TBuiltinTypeInfo<detail::btExtended> {};
template <>
struct TTypeInfoOf<Currency> : detail::TBuiltinTypeInfo<detail::btCurrency> {};
template <>
struct TTypeInfoOf<AnsiString> : detail::TBuiltinTypeInfo<detail::btString> {};
template <>
struct TTypeInfoOf<UnicodeString> : detail::TBuiltinTypeInfo<detail::btWideString> {};
template <>
struct TTypeInfoOf<Variant> : detail::TBuiltinTypeInfo<detail::btVariant> {};
template <>
struct TTypeInfoOf<TStringDynArray> : detail::TBuiltinTypeInfo<detail::btTStringDynArray> {};
template <>
struct TTypeInfoOf<TIntegerDynArray> : detail::TBuiltinTypeInfo<detail::btTIntegerDynArray> {};
template <>
struct TTypeInfoOf<TBooleanDynArray> : detail::TBuiltinTypeInfo<detail::btTBooleanDynArray> {};
template <>
struct TTypeInfoOf<TDateTimeDynArray> : detail::TBuiltinTypeInfo<detail::btTDateTimeDynArray> {};
template <>
struct TTypeInfoOf<TDateTime> : detail::TBuiltinTypeInfo<detail::btTDateTime> {};
template <>
struct TTypeInfoOf<TDate> : detail::TBuiltinTypeInfo<detail::btTDate> {};
template <>
struct TTypeInfoOf<TTime> : detail::TBuiltinTypeInfo<detail::btTTime> {};

// The record of T: integers by width and sign (Byte, Word, Cardinal, UInt64, ShortInt,
// SmallInt, Integer, Int64), classes and exceptions through their class reference, every
// other type through its TTypeInfoOf specialisation.
template <class T>
PTypeInfo TypeInfo() {
  using U = std::remove_cv_t<T>;
  if constexpr (std::is_integral_v<U> && !std::is_same_v<U, bool> && !std::is_same_v<U, char> &&
                !std::is_same_v<U, char16_t>) {
    using detail::BuiltinTypeInfo;
    constexpr bool S = std::is_signed_v<U>;
    if constexpr (sizeof(U) == 1)
      return BuiltinTypeInfo(S ? detail::btShortInt : detail::btByte);
    else if constexpr (sizeof(U) == 2)
      return BuiltinTypeInfo(S ? detail::btSmallInt : detail::btWord);
    else if constexpr (sizeof(U) == 4)
      return BuiltinTypeInfo(S ? detail::btInteger : detail::btCardinal);
    else
      return BuiltinTypeInfo(S ? detail::btInt64 : detail::btUInt64);
  } else if constexpr (std::is_base_of_v<TObject, U> || std::is_base_of_v<Exception, U>) {
    return GetClassTypeInfo(U::ClassInfo());
  } else {
    return TTypeInfoOf<U>::Get();
  }
}

} // namespace kx

#define KX_TYPEINFO_DEFINE_(Type, Kind, Unit, Names, Count)                                        \
  static ::kx::PTypeInfo Get() {                                                                   \
    static const ::kx::TTypeInfo Info{                                                             \
        Kind, ::kx::detail::ShortTypeName(#Type), Unit, nullptr, Names, Count};                    \
    return &Info;                                                                                  \
  }

// An enumeration whose members run from 0 in the order given.
#define KX_TYPEINFO_ENUM(Type, Unit, ...)                                                          \
  template <>                                                                                      \
  struct kx::TTypeInfoOf<Type> {                                                                   \
    static constexpr ::kx::detail::TEnumNames<::kx::detail::CountEnumNames(#__VA_ARGS__)> Names{   \
        std::string_view(#__VA_ARGS__)};                                                           \
    KX_TYPEINFO_DEFINE_(Type, ::kx::tkEnumeration, Unit, Names.Names.data(),                       \
                        int32_t(Names.Names.size()))                                               \
  };

#define KX_TYPEINFO_RECORD(Type, Unit)                                                             \
  template <>                                                                                      \
  struct kx::TTypeInfoOf<Type> {                                                                   \
    KX_TYPEINFO_DEFINE_(Type, ::kx::tkRecord, Unit, nullptr, 0)                                    \
  };

#define KX_TYPEINFO_INTERFACE(Type, Unit)                                                          \
  template <>                                                                                      \
  struct kx::TTypeInfoOf<Type> {                                                                   \
    KX_TYPEINFO_DEFINE_(Type, ::kx::tkInterface, Unit, nullptr, 0)                                 \
  };

KX_TYPEINFO_ENUM(kx::TTypeKind, "TypInfo", tkUnknown, tkInteger, tkChar, tkEnumeration, tkFloat,
                 tkString, tkSet, tkClass, tkMethod, tkWChar, tkLString, tkWString, tkVariant,
                 tkArray, tkRecord, tkInterface, tkInt64, tkDynArray)
