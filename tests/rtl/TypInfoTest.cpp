// SPDX-License-Identifier: MIT
// Run-time type information: built-in records, classes, and the macros for a user's types.
#include <kx/rtl/Component.h>
#include <kx/rtl/TypInfo.h>
#include <kx/rtl/Variants.h>

#include <gtest/gtest.h>

#include <thread>

namespace app {
enum TShade : uint8_t { shLight, shDark, shDeep };
struct TPoint {
  int32_t X, Y;
};
struct IGreeter : kx::IInterface {};
} // namespace app

KX_TYPEINFO_ENUM(app::TShade, "uShades", shLight, shDark, shDeep)
KX_TYPEINFO_RECORD(app::TPoint, "uGeometry")
KX_TYPEINFO_INTERFACE(app::IGreeter, "uGreeting")

using namespace kx;

TEST(TypInfo, BuiltinTypesHaveTheLanguagesNamesAndKinds) {
  struct TCase {
    PTypeInfo Info;
    TTypeKind Kind;
    const char* Name;
  };
  const TCase Cases[] = {{TypeInfo<uint8_t>(), tkInteger, "Byte"},
                         {TypeInfo<uint16_t>(), tkInteger, "Word"},
                         {TypeInfo<uint32_t>(), tkInteger, "Cardinal"},
                         {TypeInfo<uint64_t>(), tkInt64, "UInt64"},
                         {TypeInfo<int8_t>(), tkInteger, "ShortInt"},
                         {TypeInfo<int16_t>(), tkInteger, "SmallInt"},
                         {TypeInfo<int32_t>(), tkInteger, "Integer"},
                         {TypeInfo<int64_t>(), tkInt64, "Int64"},
                         {TypeInfo<long long>(), tkInt64, "Int64"},
                         {TypeInfo<float>(), tkFloat, "Single"},
                         {TypeInfo<double>(), tkFloat, "Double"},
                         {TypeInfo<Extended>(), tkFloat, "Extended"},
                         {TypeInfo<Currency>(), tkFloat, "Currency"},
                         {TypeInfo<bool>(), tkEnumeration, "Boolean"},
                         {TypeInfo<WordBool>(), tkEnumeration, "WordBool"},
                         {TypeInfo<char>(), tkChar, "Char"},
                         {TypeInfo<char16_t>(), tkWChar, "WideChar"},
                         {TypeInfo<AnsiString>(), tkLString, "String"},
                         {TypeInfo<UnicodeString>(), tkWString, "WideString"},
                         {TypeInfo<Variant>(), tkVariant, "Variant"},
                         {TypeInfo<TStringDynArray>(), tkDynArray, "TStringDynArray"},
                         {TypeInfo<TIntegerDynArray>(), tkDynArray, "TIntegerDynArray"},
                         {TypeInfo<TBooleanDynArray>(), tkDynArray, "TBooleanDynArray"}};
  for (const TCase& C : Cases) {
    ASSERT_NE(C.Info, nullptr) << C.Name;
    EXPECT_EQ(C.Info->Kind, C.Kind) << C.Name;
    EXPECT_STREQ(C.Info->Name, C.Name);
    if (C.Kind != tkDynArray) {
      EXPECT_EQ(C.Info->QualifiedName(), C.Name) << "the language's types are not qualified";
    }
  }
  EXPECT_EQ(TypeInfo<int32_t>(), TypeInfo<const int32_t>()) << "one handle per type";
  EXPECT_EQ(TypeInfo<TStringDynArray>()->QualifiedName(), "Types.TStringDynArray");
  EXPECT_EQ(GetEnumName(TypeInfo<bool>(), 1), "True");
}

TEST(TypInfo, ClassesComeFromTheirClassReference) {
  PTypeInfo Info = TypeInfo<TComponent>();
  ASSERT_NE(Info, nullptr);
  EXPECT_EQ(Info->Kind, tkClass);
  EXPECT_STREQ(Info->Name, "TComponent");
  EXPECT_EQ(Info->QualifiedName(), "Classes.TComponent");
  EXPECT_EQ(Info->ClassType, TComponent::ClassInfo());
  EXPECT_EQ(Info, GetClassTypeInfo(TComponent::ClassInfo()));
  // The parent chain runs up to TObject, one handle per class.
  std::vector<AnsiString> Chain;
  for (PTypeInfo P = Info; P; P = P->ParentInfo()) Chain.push_back(P->Name);
  ASSERT_GE(Chain.size(), 2u);
  EXPECT_EQ(Chain.back(), "TObject");
  EXPECT_EQ(Info->ParentInfo(), GetClassTypeInfo(TComponent::ClassInfo()->Parent));
  EXPECT_EQ(TypeInfo<EConvertError>()->Kind, tkClass);
  EXPECT_EQ(TypeInfo<EConvertError>()->ParentInfo(), TypeInfo<Exception>());
  EXPECT_EQ(GetClassTypeInfo(nullptr), nullptr);
}

TEST(TypInfo, ClassRecordsAreSharedAcrossThreads) {
  std::vector<PTypeInfo> Seen(8);
  std::vector<std::thread> Threads;
  for (size_t I = 0; I < Seen.size(); ++I)
    Threads.emplace_back([&Seen, I] { Seen[I] = TypeInfo<EListError>(); });
  for (auto& T : Threads) T.join();
  for (PTypeInfo P : Seen) EXPECT_EQ(P, Seen[0]);
}

TEST(TypInfo, UserEnumerationsRecordsAndInterfaces) {
  PTypeInfo Shade = TypeInfo<app::TShade>();
  EXPECT_EQ(Shade->Kind, tkEnumeration);
  EXPECT_STREQ(Shade->Name, "TShade");
  EXPECT_EQ(Shade->QualifiedName(), "uShades.TShade");
  EXPECT_EQ(Shade->EnumCount, 3);
  EXPECT_EQ(GetEnumName(Shade, app::shDeep), "shDeep");
  EXPECT_EQ(GetEnumName(Shade, 3), "");
  EXPECT_EQ(GetEnumName(Shade, -1), "");
  EXPECT_EQ(GetEnumValue(Shade, "SHDARK"), app::shDark);
  EXPECT_EQ(GetEnumValue(Shade, "shDim"), -1);
  EXPECT_EQ(TypeInfo<app::TShade>(), Shade);

  EXPECT_EQ(TypeInfo<app::TPoint>()->Kind, tkRecord);
  EXPECT_EQ(TypeInfo<app::TPoint>()->QualifiedName(), "uGeometry.TPoint");
  EXPECT_EQ(TypeInfo<app::TPoint>()->ParentInfo(), nullptr);
  EXPECT_EQ(TypeInfo<app::IGreeter>()->Kind, tkInterface);
  EXPECT_STREQ(TypeInfo<app::IGreeter>()->Name, "IGreeter");
}
