// SPDX-License-Identifier: MIT
#include <kx/classes/Object.h>
#include <kx/rtl/OwnedPtr.h>
#include <kx/uKxDateTimeUtils.h>
#include <kx/uKxTypes.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

using namespace kx;

namespace regtest {

class TShape : public TKxObject {
  KX_CLASS(TShape, TKxObject)
public:
  TShape() = default;
};
class TCircle : public TShape {
  KX_CLASS(TCircle, TShape)
public:
  TCircle() = default;
};
class TRing : public TCircle {
  KX_CLASS(TRing, TCircle)
public:
  TRing() = default;
};
KX_IMPLEMENT_CLASS(TShape, TKxObject, "uShapes")
KX_IMPLEMENT_CLASS(TCircle, TShape, "uShapes")
KX_IMPLEMENT_CLASS(TRing, TCircle, "uShapes")

enum TShade : uint8_t { shLight, shDark };
struct TPoint {
  int32_t X, Y;
};
struct TUnder_Score {
  int32_t A;
};

} // namespace regtest

KX_TYPEINFO_ENUM(regtest::TShade, "uShades", shLight, shDark)
KX_TYPEINFO_RECORD(regtest::TPoint, "uGeometry")
KX_TYPEINFO_RECORD(regtest::TUnder_Score, "uGeometry")

namespace {

using namespace regtest;

// Each test gets a registry of its own, so registrations do not leak between tests.
struct Registry : ::testing::Test {
  OwnedPtr<TKxTypes> Types = MakeOwned<TKxTypes>();

  // A serializer block the registry will own.
  static void* Block(const char* Tag) {
    char* P = static_cast<char*>(std::malloc(16));
    std::strncpy(P, Tag, 15);
    P[15] = 0;
    return P;
  }
  static const char* Tag(void* Block) { return static_cast<const char*>(Block); }
};

TEST_F(Registry, DefaultTableInOrder) {
  struct TRow {
    const char* Name;
    TKxTypeKind Kind;
    TKxSchemaDataType SchemaType;
    TVarType VarType;
    std::vector<AnsiString> SchemaNames;
  };
  const TRow Rows[] = {
      {"Byte", rtkByte, xsdUnsignedByte, 17, {"unsignedByte"}},
      {"Word", rtkWord, xsdUnsignedShort, 18, {"unsignedShort"}},
      {"Cardinal", rtkLongWord, xsdUnsignedInt, 19, {"unsignedInt", "nonnegativeinteger"}},
      {"UInt64", rtkUInt64, xsdUnsignedLong, 20, {"unsignedLong"}},
      {"ShortInt", rtkShortInt, xsdByte, 16, {"byte"}},
      {"SmallInt", rtkSmallInt, xsdShort, 2, {"short"}},
      {"Integer", rtkLongInt, xsdInt, 3, {"int"}},
      {"Int64", rtkInt64, xsdLong, 20, {"long"}},
      {"Single", rtkSingle, xsdFloat, 5, {"float"}},
      {"Double", rtkDouble, xsdDouble, 5, {"double"}},
      {"Extended", rtkExtended, xsdDecimal, 5, {"decimal"}},
      {"Boolean", rtkBoolean, xsdBoolean, 11, {"boolean"}},
      {"WordBool", rtkBoolean, xsdBoolean, 11, {"boolean"}},
      {"String", rtkString, xsdString, 256, {"string", "any", "anyuri"}},
      {"WideString", rtkWString, xsdString, 8, {"string"}},
      {"WideChar", rtkWChar, xsdString, 8, {"string"}},
      {"Char", rtkAChar, xsdString, 256, {"string"}},
      {"TDate", rtkDate, xsdDate, 7, {"date"}},
      {"TTime", rtkTime, xsdTime, 7, {"time"}},
      {"TDateTime", rtkDatetime, xsdDateTime, 7, {"dateTime"}},
      {"TKxUTCDate", rtkDate, xsdDate, 7, {"date"}},
      {"TKxUTCTime", rtkTime, xsdTime, 7, {"time"}},
      {"TKxUTCDateTime", rtkDatetime, xsdDateTime, 7, {"dateTime"}},
      {"TStringDynArray",
       rtkDynArray,
       xsdArrayOfSimpleType,
       8192,
       {"ArrayOfString", "StringArray"}},
      {"TIntegerDynArray", rtkDynArray, xsdArrayOfSimpleType, 8192, {"ArrayOfInt", "IntArray"}},
      {"TBooleanDynArray", rtkDynArray, xsdArrayOfSimpleType, 8192, {"ArrayOfBoolean"}},
      {"TDateTimeDynArray", rtkDynArray, xsdArrayOfSimpleType, 8192, {"ArrayOfDateTime"}},
  };
  for (const TRow& Row : Rows) {
    SCOPED_TRACE(Row.Name);
    TKxTypeInfo* Info = Types->GetTypeInfo(Row.Name, tntTypeName, true, mtkUnknown);
    ASSERT_NE(Info, nullptr);
    EXPECT_EQ(Info->Kind(), Row.Kind);
    EXPECT_EQ(Info->SchemaDataType(), Row.SchemaType);
    EXPECT_EQ(Info->VarType(), Row.VarType);
    EXPECT_EQ(Info->SchemaNames(), Row.SchemaNames);
    EXPECT_FALSE(Info->NeedsPrefix());
  }
  // The handles of the language's types find the same records.
  EXPECT_EQ(Types->GetTypeInfo(TypeInfo<int32_t>())->Name(), "Integer");
  EXPECT_EQ(Types->GetTypeInfo(TypeInfo<uint64_t>())->Kind(), rtkUInt64);
  EXPECT_EQ(Types->GetTypeInfo(TypeInfo<TDate>())->SchemaName(), "date");
  EXPECT_EQ(Types->GetTypeInfo(TypeInfo<TKxUTCDateTime>())->Name(), "TKxUTCDateTime");
  EXPECT_EQ(Types->GetTypeInfo(TypeInfo<TKxUTCTime>())->Kind(), rtkTime);
  EXPECT_EQ(Types->GetTypeInfo(TypeInfo<TDateTimeDynArray>())->SchemaName(), "ArrayOfDateTime");
  // Buckets are searched in run-time kind order, each oldest first: "string" is Char (the
  // char bucket comes before the long strings), "boolean" Boolean, "date" TDate before
  // TKxUTCDate.
  EXPECT_EQ(Types->GetTypeInfo("string", tntSchemaName, false, mtkUnknown)->Name(), "Char");
  EXPECT_EQ(Types->FindBySchemaName("string", std::initializer_list<TTypeKind>{tkLString, tkChar})
                ->Name(),
            "String");
  EXPECT_EQ(Types->GetTypeInfo("boolean", tntSchemaName, false, mtkUnknown)->Name(), "Boolean");
  EXPECT_EQ(Types->GetTypeInfo("date", tntSchemaName, false, mtkUnknown)->Name(), "TDate");
  // Aliases match, names fold case, and a prefix is ignored.
  EXPECT_EQ(Types->GetTypeInfo("xsd:anyURI", tntSchemaName, false, mtkUnknown)->Name(), "String");
  EXPECT_EQ(Types->GetTypeInfo("NonNegativeInteger", tntSchemaName, false, mtkUnknown)->Name(),
            "Cardinal");
  EXPECT_EQ(Types->GetTypeInfo(rtkLongInt)->Name(), "Integer");
  EXPECT_EQ(Types->GetTypeInfo(rtkBoolean)->Name(), "Boolean");
  EXPECT_EQ(Types->GetTypeInfo(rtkClass), nullptr);
  EXPECT_EQ(Types->GetTypeKind("long", tntSchemaName, rtkUnknown), rtkInt64);
  EXPECT_EQ(Types->GetVarType("nothing", tntSchemaName, 99), 99);
}

TEST_F(Registry, MainKindsRestrictTheBucketsSearched) {
  EXPECT_NE(Types->GetTypeInfo("int", tntSchemaName, false, mtkInteger), nullptr);
  EXPECT_EQ(Types->GetTypeInfo("int", tntSchemaName, false, mtkString), nullptr);
  // Boolean is an enumeration at run time; Single a float.
  EXPECT_NE(Types->GetTypeInfo("Boolean", tntTypeName, false, mtkBoolean), nullptr);
  EXPECT_NE(Types->GetTypeInfo("Single", tntTypeName, false, mtkDateTime), nullptr);
  EXPECT_EQ(Types->GetTypeInfo("Single", tntTypeName, false, mtkArray), nullptr);
  EXPECT_NE(Types->GetTypeInfo("ArrayOfInt", tntSchemaName, false, mtkArray), nullptr);
  // Qualified names of the library's own types carry their unit.
  EXPECT_NE(Types->GetTypeInfo("uKxDateTimeUtils.TKxUTCDate", tntQualifiedName, false, mtkUnknown),
            nullptr);
  EXPECT_EQ(Types->GetTypeInfo("TKxUTCDate", tntQualifiedName, false, mtkUnknown), nullptr);
}

TEST_F(Registry, MissingNamesRaiseOnlyWhenAsked) {
  EXPECT_EQ(Types->GetTypeInfo("", tntTypeName, false, mtkUnknown), nullptr);
  try {
    Types->GetTypeInfo("", tntTypeName, true, mtkUnknown);
    FAIL();
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(), "KxFindQType: Failed to get the KxTypeInfo. No Name specified!");
  }
  EXPECT_EQ(Types->GetTypeInfo("NoSuchType", tntTypeName, false, mtkUnknown), nullptr);
  try {
    Types->GetTypeInfo("NoSuchType", tntSchemaName, true, mtkUnknown);
    FAIL();
  } catch (const Exception& E) {
    EXPECT_EQ(E.ClassType(), Exception::ClassInfo());
    EXPECT_EQ(E.Message(), "KxFindQType: Failed to get the KxTypeInfo for NoSuchType!");
  }
}

TEST_F(Registry, RegistrationIsIdempotent) {
  TKxTypeRec* First = Types->AddTypeInfoTypeRec(TypeInfo<TPoint>(), rtkRecord, varEmpty,
                                                xsdComplexType, {"Point", "Pt"});
  TKxTypeRec* Second =
      Types->AddTypeInfoTypeRec(TypeInfo<TPoint>(), rtkClass, varInteger, xsdString, {"Other"});
  EXPECT_EQ(First, Second);
  TKxTypeInfo* Info = TKxTypes::TypeRecPtrToTypeInfo(First);
  EXPECT_EQ(Info->Kind(), rtkRecord);
  EXPECT_EQ(Info->SchemaNames(), (std::vector<AnsiString>{"Point", "Pt"}));
  EXPECT_EQ(Info->FullName(), "uGeometry.TPoint");
  EXPECT_EQ(Info->Name(), "TPoint");
  EXPECT_EQ(Info->RunTimeKind(), tkRecord);
  EXPECT_EQ(Info->TypeRec(), First);
  // The same full name under another handle is the same type.
  TKxTypeRec* ByName = Types->AddTypeRec(nullptr, "uGeometry.TPoint", "TPoint", rtkUnknown, 0,
                                         xsdComplexType, {"x"}, tkRecord, nullptr);
  EXPECT_EQ(ByName, First);
  // ... but only within its run-time kind.
  TKxTypeRec* OtherKind = Types->AddTypeRec(nullptr, "uGeometry.TPoint", "TPoint", rtkUnknown, 0,
                                            xsdComplexType, {"x"}, tkClass, nullptr);
  EXPECT_NE(OtherKind, First);
  EXPECT_EQ(Types->FindTypeRec(TypeInfo<TPoint>()), First);
}

TEST_F(Registry, UnknownTypesAreRegisteredWithTheirCalculatedNames) {
  TKxTypeInfo* Circle = Types->GetTypeInfo(TypeInfo<TCircle>());
  ASSERT_NE(Circle, nullptr);
  EXPECT_EQ(Circle->Kind(), rtkUnknown);
  EXPECT_EQ(Circle->SchemaName(), "uShapes_Circle");
  EXPECT_TRUE(Circle->NeedsPrefix());
  EXPECT_EQ(Circle->SchemaName("ns1"), "ns1:uShapes_Circle");
  EXPECT_EQ(Types->GetTypeInfo(TCircle::ClassInfo()), Circle);
  EXPECT_EQ(Types->GetTypeInfo("uShapes_Circle", tntSchemaName, false, mtkStructure), Circle);
  EXPECT_EQ(Types->GetTypeInfo(PTypeInfo(nullptr)), nullptr);
  EXPECT_EQ(Types->GetTypeInfo(TypeInfo<TShade>())->SchemaName(), "uShades_Shade");
  // A caller-given name stays plain.
  TKxTypeInfo* Point = TKxTypes::TypeRecPtrToTypeInfo(Types->AddTypeInfoTypeRec(
      TypeInfo<TPoint>(), rtkRecord, varEmpty, xsdComplexType, {"Point"}));
  EXPECT_EQ(Point->SchemaName("ns1"), "Point");
}

TEST_F(Registry, SchemaNameCalculation) {
  EXPECT_EQ(Types->CalculateSchemaName(nullptr, "uKxTypes.TFoo"), "uKxTypes_Foo");
  EXPECT_EQ(Types->CalculateSchemaName(nullptr, "TList<Integer>"), "List_int");
  EXPECT_EQ(Types->CalculateSchemaName(nullptr, "IGreeter"), "Greeter");
  EXPECT_EQ(Types->CalculateSchemaName(nullptr, "Foo"), "Foo");
  // Only the last part loses its letter; unknown arguments are calculated in turn.
  EXPECT_EQ(Types->CalculateSchemaName(nullptr, "Generics.Collections.TDictionary<String,"
                                                "uShapes.TCircle>"),
            "Generics_Collections_Dictionary_string_uShapes_Circle");
  EXPECT_EQ(Types->CalculateSchemaName(nullptr, "TPair<Int64, TList<Boolean>>"),
            "Pair_long_List_boolean");
  // An argument takes the schema name its type has now, aliases included.
  Types->RegisterTypeAlias(TypeInfo<int32_t>(), "Int32");
  EXPECT_EQ(Types->CalculateSchemaName(nullptr, "TList<Integer>"), "List_Int32");
  // A name with the separator keeps the type's own name, and without type information
  // cannot be turned into a schema name at all.
  EXPECT_EQ(Types->CalculateSchemaName(TypeInfo<TUnder_Score>(), "uGeometry.TUnder_Score"),
            "TUnder_Score");
  try {
    Types->CalculateSchemaName(nullptr, "My_Type");
    FAIL();
  } catch (const EAssertionFailed& E) {
    EXPECT_EQ(AnsiString(E.Message())
                  .rfind("The Q-Seperator character may not be used in the "
                         "typename (My_Type) (source\\ComponentSets\\"
                         "Components\\common\\uKxTypes, line ",
                         0),
              0u)
        << E.Message();
  }
  EXPECT_EQ(Types->GetTypeInfo(TypeInfo<TUnder_Score>())->SchemaName(), "TUnder_Score");
  // A generic full name marks the type.
  TKxTypeRec* Generic = Types->AddTypeRec(nullptr, "uLists.TList<Integer>", "TList<Integer>",
                                          rtkClass, 0, xsdComplexType, {}, tkClass, nullptr);
  EXPECT_TRUE(Generic->Info->IsGeneric());
  EXPECT_EQ(Generic->Info->SchemaName(), "uLists_List_Int32");
}

TEST_F(Registry, AliasesAndDefaultSchemaNames) {
  Types->AddTypeInfoTypeRec(TypeInfo<TPoint>(), rtkRecord, varEmpty, xsdComplexType, {});
  TKxTypeInfo* Point = Types->GetTypeInfo(TypeInfo<TPoint>());
  EXPECT_EQ(Point->SchemaNames(), std::vector<AnsiString>{"uGeometry_Point"});
  Types->RegisterTypeAlias(TypeInfo<TPoint>(), "a.b");
  EXPECT_EQ(Point->SchemaNames(), (std::vector<AnsiString>{"a_b", "uGeometry_Point"}));
  EXPECT_TRUE(Point->DefaultSchemaNameSet());
  // A default schema name set: the prefix is no longer added.
  EXPECT_EQ(Point->SchemaName("ns"), "a_b");
  Types->RegisterTypeAlias(TypeInfo<TPoint>(), {"x", "uGeometry_Point"});
  EXPECT_EQ(Point->SchemaNames(), (std::vector<AnsiString>{"x", "uGeometry_Point", "a_b"}));
  Point->SetDefaultSchemaName("a_b");
  EXPECT_EQ(Point->SchemaNames(), (std::vector<AnsiString>{"a_b", "x", "uGeometry_Point"}));
  Point->SetDefaultSchemaName("new");
  EXPECT_EQ(Point->SchemaName(), "new");
  // Every name finds the type; old ones too.
  for (const char* Name : {"new", "a_b", "x", "uGeometry_Point"})
    EXPECT_EQ(Types->GetTypeInfo(Name, tntSchemaName, false, mtkStructure), Point) << Name;
  // Aliasing a type that is not registered yet registers it.
  Types->RegisterTypeAlias(TypeInfo<TRing>(), "Ring");
  EXPECT_EQ(Types->GetTypeInfo(TypeInfo<TRing>())->SchemaNames(),
            (std::vector<AnsiString>{"Ring", "uShapes_Ring"}));
}

TEST_F(Registry, RedirectedTypesAnswerWithTheTargetsName) {
  TKxTypeRec* Target =
      Types->AddTypeInfoTypeRec(TypeInfo<TPoint>(), rtkRecord, varEmpty, xsdComplexType, {"Point"});
  TKxTypeRec* Alias = Types->AddTypeRec(nullptr, "uGeometry.TPointAlias", "TPointAlias", rtkRecord,
                                        varEmpty, xsdComplexType, {"PointAlias"}, tkRecord, Target);
  EXPECT_TRUE(Alias->Info->IsRedirected());
  EXPECT_EQ(Alias->Info->TypeRec(), Target);
  EXPECT_EQ(Alias->Info->SchemaName(), "Point");
  Types->RegisterTypeAlias(TypeInfo<TPoint>(), "Punkt");
  EXPECT_EQ(Alias->Info->SchemaName("ns"), "Punkt");
}

TEST_F(Registry, SerializersUpTheClassChainAndTheNilFallback) {
  // Nothing anywhere yet.
  EXPECT_EQ(Types->FindSerializers(Types->GetTypeInfo(TypeInfo<TRing>()), JSON), nullptr);
  EXPECT_EQ(Types->FindSerializers(nullptr, JSON), nullptr);

  Types->RegisterTypeSerializers(nullptr, JSON, Block("nil-json"));
  Types->RegisterTypeSerializers(nullptr, XML, Block("nil-xml"));
  Types->RegisterTypeSerializers(TypeInfo<TShape>(), JSON, Block("shape-json"));
  Types->RegisterTypeSerializers(TypeInfo<TShape>(), MIDAS, nullptr); // changes nothing
  TKxTypeInfo* Ring = Types->GetTypeInfo(TypeInfo<TRing>());
  TKxTypeInfo* Shape = Types->GetTypeInfo(TypeInfo<TShape>());
  EXPECT_STREQ(Tag(Types->FindSerializers(Ring, JSON)), "shape-json");
  EXPECT_STREQ(Tag(Types->FindSerializers(Ring, XML)), "nil-xml");
  EXPECT_EQ(Types->FindSerializers(Ring, MIDAS), nullptr);
  EXPECT_STREQ(Tag(Types->FindSerializers(Types->GetTypeInfo(TypeInfo<TPoint>()), JSON)),
               "nil-json");
  // The nearest ancestor wins; replacing a block frees the old one (the sanitizers see it).
  Types->RegisterTypeSerializers(TypeInfo<TCircle>(), JSON, Block("circle-json"));
  EXPECT_STREQ(Tag(Types->FindSerializers(Ring, JSON)), "circle-json");
  EXPECT_STREQ(Tag(Types->FindSerializers(Shape, JSON)), "shape-json");
  Types->RegisterTypeSerializers(TypeInfo<TCircle>(), JSON, Block("circle-json-2"));
  EXPECT_STREQ(Tag(Types->FindSerializers(Ring, JSON)), "circle-json-2");
  // The nil type itself has no fallback beyond its own slots.
  TKxTypeInfo* Nil = Types->GetTypeInfo(TypeInfo<TKxNilType>());
  EXPECT_EQ(Nil->Name(), "TKxNilType");
  EXPECT_EQ(Types->FindSerializers(Nil, CUSTOM1), nullptr);
  EXPECT_STREQ(Tag(Types->FindSerializers(Nil, XML)), "nil-xml");
}

TEST_F(Registry, VirtualTypesStandForSchemaTypesWithoutALanguageType) {
  Types->AddTypeInfoTypeRec(TypeInfo<TPoint>(), rtkRecord, varEmpty, xsdComplexType, {"Point"});
  TKxTypeInfo* Point = Types->GetTypeInfo(TypeInfo<TPoint>());
  TKxTypeInfo* AsText = Point->VirtualType(xsdHexBinary);
  ASSERT_NE(AsText, Point);
  EXPECT_EQ(AsText->TypeInfo(), nullptr);
  EXPECT_EQ(AsText->FullName(), "uGeometry.TPoint");
  EXPECT_EQ(AsText->RunTimeKind(), tkLString);
  EXPECT_EQ(AsText->Kind(), rtkAString);
  EXPECT_EQ(AsText->VarType(), varString);
  EXPECT_EQ(AsText->SchemaDataType(), xsdHexBinary);
  EXPECT_EQ(AsText->SchemaName(), "Point");
  // Found again by name within its kind; the schema data type is stored each time.
  EXPECT_EQ(Point->VirtualType(xsdBase64Binary), AsText);
  EXPECT_EQ(AsText->SchemaDataType(), xsdBase64Binary);
  TKxTypeInfo* AsNumber = Point->VirtualType(xsdUnsignedLong);
  EXPECT_EQ(AsNumber->RunTimeKind(), tkInt64);
  EXPECT_EQ(AsNumber->Kind(), rtkInt64);
  // A class asked for a complex type is in that bucket itself: it takes the schema data type.
  TKxTypeInfo* Circle = Types->GetTypeInfo(TypeInfo<TCircle>());
  EXPECT_EQ(Circle->VirtualType(xsdDuration), Circle);
  EXPECT_EQ(Circle->SchemaDataType(), xsdDuration);
}

TEST(TypeConversions, KindsOfRunTimeKindsAndVariantTypes) {
  EXPECT_EQ(TKxTypes::ToTypeKind(tkInteger), rtkLongInt);
  EXPECT_EQ(TKxTypes::ToTypeKind(tkFloat), rtkExtended);
  EXPECT_EQ(TKxTypes::ToTypeKind(tkString), rtkString);
  EXPECT_EQ(TKxTypes::ToTypeKind(tkLString), rtkAString);
  EXPECT_EQ(TKxTypes::ToTypeKind(tkDynArray), rtkDynArray);
  try {
    TKxTypes::ToTypeKind(TTypeKind(40));
    FAIL();
  } catch (const EAssertionFailed& E) {
    EXPECT_EQ(
        AnsiString(E.Message()).rfind("The type 40 cannot be converted to a TKxTypeKind! (", 0),
        0u);
  }
  const std::pair<TVarType, TKxTypeKind> ByVarType[] = {{varArray | varInteger, rtkDynArray},
                                                        {varSmallint, rtkSmallInt},
                                                        {varInteger, rtkLongInt},
                                                        {varSingle, rtkSingle},
                                                        {varDouble, rtkDouble},
                                                        {varCurrency, rtkExtended},
                                                        {varDate, rtkDatetime},
                                                        {varOleStr, rtkWString},
                                                        {varDispatch, rtkInterface},
                                                        {varUnknown, rtkInterface},
                                                        {varBoolean, rtkBoolean},
                                                        {varVariant, rtkVariant},
                                                        {varAny, rtkVariant},
                                                        {varDecimal, rtkDouble},
                                                        {varShortInt, rtkShortInt},
                                                        {varByte, rtkByte},
                                                        {varWord, rtkWord},
                                                        {varLongWord, rtkLongWord},
                                                        {varInt64, rtkInt64},
                                                        {varStrArg, rtkWString},
                                                        {varString, rtkString},
                                                        {varEmpty, rtkUnknown},
                                                        {varNull, rtkUnknown},
                                                        {varError, rtkUnknown},
                                                        {0x15, rtkUnknown}};
  for (auto [VT, Kind] : ByVarType) EXPECT_EQ(TKxTypes::ToTypeKind(VT), Kind) << VT;
  EXPECT_EQ(TKxTypes::ToMainTypeKind(varDate), mtkDateTime);
  EXPECT_EQ(TKxTypes::ToMainTypeKind(varOleStr), mtkString);
  EXPECT_EQ(TKxTypes::ToMainTypeKind(varArray | varVariant), mtkArray);
  EXPECT_EQ(TKxTypes::ToMainTypeKind(varUnknown), mtkStructure);
  EXPECT_EQ(TKxTypes::ToMainTypeKind(varNull), mtkUnknown);
  EXPECT_EQ(TKxTypes::ToMainTypeKind(tkEnumeration), mtkOther);
  EXPECT_TRUE(TKxTypes::IsSimpleTypeKind(varCurrency));
  EXPECT_FALSE(TKxTypes::IsSimpleTypeKind(tkRecord));
  EXPECT_EQ(TKxTypes::ToVarType(rtkUInt64), varInt64);
  EXPECT_EQ(TKxTypes::ToVarType(tkWString), varOleStr);
  EXPECT_EQ(TKxTypes::VarTypeKind(Variant(uint16_t(1))), rtkWord);
  EXPECT_EQ(TKxTypes::VarMainTypeKind(Variant("x")), mtkString);
}

TEST(TypeConversions, SchemaTypesOfKinds) {
  TKxSchemaDataType T = xsdDuration;
  EXPECT_EQ(TKxTypes::ToSchemaType(rtkExtended, &T), "decmimal");
  EXPECT_EQ(T, xsdDecimal);
  EXPECT_EQ(TKxTypes::ToSchemaType(rtkAString, &T), "base64Binary");
  EXPECT_EQ(T, xsdBase64Binary);
  EXPECT_EQ(TKxTypes::ToSchemaType(rtkAChar, &T), "string");
  EXPECT_EQ(TKxTypes::ToSchemaType(rtkUInt64, &T), "unsignedLong");
  EXPECT_EQ(TKxTypes::ToSchemaType(rtkTime, &T), "time");
  EXPECT_EQ(TKxTypes::ToSchemaType(rtkRecord, &T), "any");
  EXPECT_EQ(T, xsdComplexType);
  EXPECT_EQ(TKxTypes::ToSchemaType(rtkShortInt), "byte");
}

TEST(TypeConversions, SchemaTypesOfVariantTypes) {
  TKxSchemaDataType T = xsdDuration;
  EXPECT_EQ(TKxTypes::ToSchemaType(TVarType(varArray | varInteger), &T), "ArrayOfInt");
  EXPECT_EQ(T, xsdArrayOfSimpleType);
  EXPECT_EQ(TKxTypes::ToSchemaType(TVarType(varArray | varOleStr)), "ArrayOfString");
  EXPECT_EQ(TKxTypes::ToSchemaType(TVarType(varArray | varByte)), "ArrayOfByte");
  EXPECT_EQ(TKxTypes::ToSchemaType(TVarType(varArray | varWord)), "ArrayOfUnsignedShort");
  EXPECT_EQ(TKxTypes::ToSchemaType(varCurrency, &T), "double");
  EXPECT_EQ(TKxTypes::ToSchemaType(varByte, &T), "byte");
  EXPECT_EQ(T, xsdByte);
  EXPECT_EQ(TKxTypes::ToSchemaType(varNull, &T), "any");
  EXPECT_EQ(T, xsdComplexType);
  EXPECT_EQ(TKxTypes::VarSchemaType(Variant(int64_t(1))), "long");
  for (TVarType Wrong :
       {varEmpty, varError, varVariant, varUnknown, TVarType(varArray | varVariant)}) {
    try {
      TKxTypes::ToSchemaType(Wrong);
      ADD_FAILURE() << Wrong;
    } catch (const Exception& E) {
      const int32_t Shown = Wrong & ~varArray;
      EXPECT_EQ(E.Message(), "The given TVarType \"" + std::to_string(Shown) +
                                 "\" could not be converted to a valid SchemaType!");
    }
  }
}

TEST(TypeConversions, SerializationFormatsByName) {
  EXPECT_EQ(GetDataSerializationFormat("json"), JSON);
  EXPECT_EQ(GetDataSerializationFormat("Xml"), XML);
  EXPECT_EQ(GetDataSerializationFormat("MIDAS"), MIDAS);
  EXPECT_EQ(GetDataSerializationFormat("custom2"), CUSTOM2);
  try {
    GetDataSerializationFormat("YAML");
    FAIL();
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(), "The format YAML is not supported!!");
  }
}

TEST(TypeRegistrySingleton, MadeOnceOnFirstUse) {
  TKxTypes* Types = KxTypes();
  ASSERT_NE(Types, nullptr);
  EXPECT_EQ(KxTypes(), Types);
  EXPECT_EQ(Types->GetTypeInfo("int", tntSchemaName, true, mtkInteger)->Name(), "Integer");
  // Another registry made meanwhile does not replace it.
  TKxTypes* Other = TKxTypes::Create();
  EXPECT_EQ(KxTypes(), Types);
  Other->Free();
  EXPECT_EQ(KxTypes(), Types);
}

} // namespace
