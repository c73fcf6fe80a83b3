// SPDX-License-Identifier: MIT
// The records of the language's types and of classes, and enumeration names.
#include <kx/rtl/SysUtils.h>
#include <kx/rtl/TypInfo.h>

#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace kx {

namespace {

constexpr std::string_view BooleanNames[] = {"False", "True"};

// In the order of detail::TBuiltinType.
constexpr TTypeInfo Builtins[] = {
    {tkInteger, "Byte", "", nullptr, nullptr, 0},
    {tkInteger, "Word", "", nullptr, nullptr, 0},
    {tkInteger, "Cardinal", "", nullptr, nullptr, 0},
    {tkInt64, "UInt64", "", nullptr, nullptr, 0},
    {tkInteger, "ShortInt", "", nullptr, nullptr, 0},
    {tkInteger, "SmallInt", "", nullptr, nullptr, 0},
    {tkInteger, "Integer", "", nullptr, nullptr, 0},
    {tkInt64, "Int64", "", nullptr, nullptr, 0},
    {tkFloat, "Single", "", nullptr, nullptr, 0},
    {tkFloat, "Double", "", nullptr, nullptr, 0},
    {tkFloat, "Extended", "", nullptr, nullptr, 0},
    {tkFloat, "Currency", "", nullptr, nullptr, 0},
    {tkEnumeration, "Boolean", "", nullptr, BooleanNames, 2},
    {tkEnumeration, "WordBool", "", nullptr, BooleanNames, 2},
    {tkChar, "Char", "", nullptr, nullptr, 0},
    {tkWChar, "WideChar", "", nullptr, nullptr, 0},
    {tkLString, "String", "", nullptr, nullptr, 0},
    {tkWString, "WideString", "", nullptr, nullptr, 0},
    {tkVariant, "Variant", "", nullptr, nullptr, 0},
    {tkFloat, "TDateTime", "", nullptr, nullptr, 0},
    {tkFloat, "TDate", "", nullptr, nullptr, 0},
    {tkFloat, "TTime", "", nullptr, nullptr, 0},
    {tkFloat, "TKxUTCDate", "uKxDateTimeUtils", nullptr, nullptr, 0},
    {tkFloat, "TKxUTCTime", "uKxDateTimeUtils", nullptr, nullptr, 0},
    {tkFloat, "TKxUTCDateTime", "uKxDateTimeUtils", nullptr, nullptr, 0},
    {tkDynArray, "TStringDynArray", "Types", nullptr, nullptr, 0},
    {tkDynArray, "TIntegerDynArray", "Types", nullptr, nullptr, 0},
    {tkDynArray, "TBooleanDynArray", "Types", nullptr, nullptr, 0},
    {tkDynArray, "TDateTimeDynArray", "Types", nullptr, nullptr, 0},
};

// One record per class, made on first request and kept for the life of the process: the
// handles are compared by identity, so they may never move or go away.
struct TClassRecords {
  std::shared_mutex Lock;
  std::unordered_map<TClass, std::unique_ptr<TTypeInfo>> Records;
};

TClassRecords& ClassRecords() {
  // Never destroyed: records may be asked for during static destruction.
  static TClassRecords* Records = new TClassRecords;
  return *Records;
}

} // namespace

PTypeInfo detail::BuiltinTypeInfo(TBuiltinType Type) {
  return &Builtins[Type];
}

AnsiString TTypeInfo::QualifiedName() const {
  AnsiString Result = UnitName && *UnitName ? AnsiString(UnitName) + "." : AnsiString();
  return Result.append(Name);
}

PTypeInfo TTypeInfo::ParentInfo() const {
  return Kind == tkClass && ClassType && ClassType->Parent ? GetClassTypeInfo(ClassType->Parent)
                                                           : nullptr;
}

PTypeInfo GetClassTypeInfo(TClass AClass) {
  if (!AClass) return nullptr;
  TClassRecords& R = ClassRecords();
  {
    std::shared_lock Read(R.Lock);
    auto It = R.Records.find(AClass);
    if (It != R.Records.end()) return It->second.get();
  }
  std::unique_lock Write(R.Lock);
  auto& Slot = R.Records[AClass];
  if (!Slot)
    Slot = std::make_unique<TTypeInfo>(
        TTypeInfo{tkClass, AClass->Name, AClass->UnitName, AClass, nullptr, 0});
  return Slot.get();
}

AnsiString GetEnumName(PTypeInfo TypeInfo, int32_t Value) {
  if (!TypeInfo || !TypeInfo->EnumNames || Value < 0 || Value >= TypeInfo->EnumCount) return "";
  return AnsiString(TypeInfo->EnumNames[Value]);
}

int32_t GetEnumValue(PTypeInfo TypeInfo, std::string_view Name) {
  if (!TypeInfo || !TypeInfo->EnumNames) return -1;
  for (int32_t I = 0; I < TypeInfo->EnumCount; ++I)
    if (SameText(AnsiString(TypeInfo->EnumNames[I]), AnsiString(Name))) return I;
  return -1;
}

} // namespace kx
