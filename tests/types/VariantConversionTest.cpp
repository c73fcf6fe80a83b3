// SPDX-License-Identifier: MIT
#include <kx/rtl/DateTimeText.h>
#include <kx/uKxTypes.h>

#include <gtest/gtest.h>

#include <functional>

using namespace kx;

namespace {

AnsiString ConvertErrorOf(const std::function<void()>& Fn) {
  try {
    Fn();
  } catch (const EConvertError& E) {
    return E.Message();
  } catch (const std::exception& E) {
    return AnsiString("other exception: ") + E.what();
  }
  return "no exception";
}

// The process's format settings for one test.
struct TDateFormat {
  TFormatSettings Saved = FormatSettings();
  TDateFormat(const char* ShortDate, char Separator) {
    FormatSettings().ShortDateFormat = ShortDate;
    FormatSettings().DateSeparator = Separator;
  }
  ~TDateFormat() { FormatSettings() = Saved; }
};

const Variant Word(uint16_t(7));

TEST(StrictReaders, EmptyAndNullGiveTheDefault) {
  for (const Variant& Nothing : {Variant(), Null(), VarAsError(5)}) {
    EXPECT_EQ(KxVarShortint(Nothing, 9), 9);
    EXPECT_EQ(KxVarInt64(Nothing, -1), -1);
    EXPECT_EQ(KxVarStr(Nothing, "d"), "d");
    EXPECT_EQ(KxVarBool(Nothing, true), true);
    EXPECT_EQ(double(KxVarDate(Nothing, 3.0)), 3.0);
  }
}

TEST(StrictReaders, OnlyTheKindsThatFitAndTheirExactMessages) {
  EXPECT_EQ(KxVarShortint(Variant(uint8_t(200)), 0), int8_t(200)); // a byte is taken as it is
  EXPECT_EQ(ConvertErrorOf([] { KxVarShortint(Word, 0); }),
            "The given value is not a valid shortint value!");
  EXPECT_EQ(KxVarSmallint(Variant(int16_t(-5)), 0), -5);
  EXPECT_EQ(KxVarSmallint(Variant(32767), 0), 32767);
  EXPECT_EQ(ConvertErrorOf([] { KxVarSmallint(Variant(40000), 0); }),
            "The given value is not a valid smallint value!");
  // No lower bound: a large negative integer passes, truncated.
  EXPECT_EQ(KxVarSmallint(Variant(-40000), 0), int16_t(-40000));
  EXPECT_EQ(ConvertErrorOf([] { KxVarSmallint(Variant(uint32_t(1)), 0); }),
            "The given value is not a valid smallint value!");
  EXPECT_EQ(KxVarInt(Variant(uint32_t(7)), 0), 7);
  EXPECT_EQ(ConvertErrorOf([] { KxVarLongInt(Variant(int64_t(1)), 0); }),
            "The given value is not a valid longword value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarInt(Variant("12"), 0); }),
            "The given value is not a valid longword value!");
  EXPECT_EQ(KxVarInt64(Variant(int64_t(1) << 40), 0), int64_t(1) << 40);
  EXPECT_EQ(ConvertErrorOf([] { KxVarInt64(Variant(1.0), 0); }),
            "The given value is not a valid int64 value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarByte(Word, 0); }),
            "The given value is not a valid byte value!");
  EXPECT_EQ(KxVarWord(Word, 0), 7);
  EXPECT_EQ(ConvertErrorOf([] { KxVarWord(Variant(int8_t(1)), 0); }),
            "The given value is not a valid word value!");
  EXPECT_EQ(KxVarLongword(Variant(4000000000u), 0), 4000000000u);
  EXPECT_EQ(ConvertErrorOf([] { KxVarLongword(Variant(1), 0); }),
            "The given value is not a valid longword value!");
  EXPECT_FLOAT_EQ(KxVarSingle(Variant(1.5f), 0), 1.5f);
  EXPECT_EQ(ConvertErrorOf([] { KxVarSingle(Variant(1.5), 0); }),
            "The given value is not a valid single value!");
  EXPECT_EQ(KxVarDouble(Variant(3), 0), 3.0);
  EXPECT_EQ(ConvertErrorOf([] { KxVarDouble(Variant(Currency::FromScaled(1)), 0); }),
            "The given value is not a valid double value!");
  EXPECT_EQ(KxVarExtended(Variant(Currency::FromScaled(15000)), 0), 1.5L);
  EXPECT_EQ(KxVarExtended(Variant(int64_t(9007199254740993)), 0), 9007199254740993.0L);
  EXPECT_EQ(ConvertErrorOf([] { KxVarExtended(Variant("1"), 0); }),
            "The given value is not a valid extended value!");
  EXPECT_EQ(double(KxVarDate(Variant(TDateTime(45000.25)), 0)), 45000.25);
  EXPECT_EQ(ConvertErrorOf([] { KxVarDate(Variant("2024-01-01"), 0); }),
            "The given value is not a valid datetime value!");
  EXPECT_EQ(KxVarStr(Variant(u"w"), ""), "w");
  EXPECT_EQ(KxVarStrW(Variant("a"), u""), u"a");
  EXPECT_EQ(ConvertErrorOf([] { KxVarStr(Variant(1), ""); }),
            "The given value is not a valid string value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarStrW(Variant(true), u""); }),
            "The given value is not a valid string value!");
  EXPECT_TRUE(KxVarBool(Variant(true), false));
  EXPECT_EQ(ConvertErrorOf([] { KxVarBool(Variant(1), false); }),
            "The given value is not a valid boolean value!");
}

TEST(TolerantConverters, TextIsParsedAndFailuresGiveTheDefaultOrRaise) {
  EXPECT_EQ(KxVarToInt(Variant("12"), 0, true), 12);
  EXPECT_EQ(KxVarToInt(Variant(u" $1F"), 0, true), 31);
  EXPECT_EQ(KxVarToInt(Variant("abc"), 5, false), 5);
  // The text's own conversion error goes on when asked to raise.
  EXPECT_EQ(ConvertErrorOf([] { KxVarToInt(Variant("abc"), 5, true); }),
            "'abc' is not a valid integer value");
  EXPECT_EQ(KxVarToInt(Variant(true), 9, true), 1);
  EXPECT_EQ(KxVarToInt(Variant(false), 9, true), 0);
  EXPECT_EQ(KxVarToInt(Variant(), 9, true), 9);
  EXPECT_EQ(KxVarToInt(Null(), 9, true), 9);
  EXPECT_EQ(KxVarToInt64(Variant("9000000000"), 0, true), 9000000000);
  EXPECT_EQ(KxVarToLongword(Variant("4000000000"), 0, true), 4000000000u);
  // Reals are no integers.
  EXPECT_EQ(KxVarToInt(Variant(1.5), 4, false), 4);
  EXPECT_EQ(ConvertErrorOf([] { KxVarToInt(Variant(1.5), 4, true); }),
            "The given value is not a valid LongInt value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToShortint(Variant(1.5), 0, true); }),
            "The given value is not a valid shortint value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToSmallint(VarArrayOf({1}), 0, true); }),
            "The given value is not a valid smalling value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToInt64(Variant(1.5), 0, true); }),
            "The given value is not a valid Int64 value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToByte(Variant(1.5), 0, true); }),
            "The given value is not a valid Byte value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToWord(Variant(1.5), 0, true); }),
            "The given value is not a valid Word value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToLongword(Variant(1.5), 0, true); }),
            "The given value is not a valid LongWord value!");
  // Values beyond the target's range fail like any other.
  EXPECT_EQ(KxVarToByte(Variant(300), 1, false), 1);
  EXPECT_EQ(ConvertErrorOf([] { KxVarToShortint(Variant("200"), 0, true); }),
            "The given value is not a valid shortint value!");
  EXPECT_EQ(KxVarToLongword(Variant(-1), 3, false), 3u);
  EXPECT_EQ(KxVarToWord(Variant(uint16_t(65535)), 0, true), 65535);
}

TEST(TolerantConverters, RealsBooleansAndText) {
  EXPECT_EQ(KxVarToDouble(Variant("1.25"), 0, true), 1.25);
  EXPECT_EQ(KxVarToDouble(Variant("1,25"), 0, true), 1.25);
  EXPECT_EQ(KxVarToDouble(Variant(7), 0, true), 7.0);
  EXPECT_EQ(KxVarToDouble(Variant(TDateTime(2.5)), 0, true), 2.5);
  EXPECT_EQ(KxVarToExtended(Variant(true), 0, true), 1.0L);
  EXPECT_EQ(KxVarToDouble(Variant("x"), -1, false), -1.0);
  EXPECT_EQ(ConvertErrorOf([] { KxVarToSingle(Variant(1e300), 0, true); }),
            "The given value is not a valid Single value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToDouble(VarArrayOf({1}), 0, true); }),
            "The given value is not a valid Double value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToExtended(VarArrayOf({1}), 0, true); }),
            "The given value is not a valid Extended value!");

  EXPECT_TRUE(KxVarToBool(Variant("Yes"), false, true));
  EXPECT_FALSE(KxVarToBool(Variant(u"0"), true, true));
  EXPECT_TRUE(KxVarToBool(Variant(-3), false, true));
  EXPECT_TRUE(KxVarToBool(Variant("maybe"), true, false));
  EXPECT_EQ(ConvertErrorOf([] { KxVarToBool(Variant(1.0), false, true); }),
            "The given value is not a valid Boolean value!");

  EXPECT_EQ(KxVarToStr(Variant(12), "", true), "12");
  EXPECT_EQ(KxVarToStr(Variant(true), "", true), "True");
  EXPECT_EQ(KxVarToStr(Variant(), "d", true), "d");
  EXPECT_EQ(KxVarToStr(VarArrayOf({1, "a", true}), "", true), "1,a,True");
  EXPECT_EQ(KxVarToWStr(VarArrayOf({u"\u20AC", 2}), u"", true), u"\u20AC,2");
  EXPECT_EQ(ConvertErrorOf([] {
              KxVarToStr(VarArrayOf({1, VarArrayOf({2})}), "", true);
            }),
            "The given array is not a to-string convertable value!");
  EXPECT_EQ(KxVarToStr(VarArrayOf({VarArrayOf({2})}), "d", false), "d");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToStr(VarFromInterface(nullptr), "", true); }),
            "The given value is not a valid String value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToAStr(VarFromInterface(nullptr), "", true); }),
            "The given value is not a valid AnsiString value!");
  EXPECT_EQ(ConvertErrorOf([] { KxVarToWStr(VarFromInterface(nullptr), u"", true); }),
            "The given value is not a valid WideString value!");
}

TEST(TolerantConverters, DatesReadIsoTextWhateverTheLocale) {
  const double Leap = EncodeDate(2024, 2, 29);
  {
    TDateFormat German("dd.mm.yyyy", '.');
    EXPECT_EQ(double(KxVarToDate(Variant("2024-02-29"), 0, true)), Leap);
    EXPECT_EQ(double(KxVarToDate(Variant("29.02.2024"), 0, true)), Leap);
    EXPECT_EQ(double(KxVarToDate(Variant(u"2024-02-29 06:00"), 0, true)), Leap + 0.25);
    EXPECT_EQ(double(KxVarToDate(Variant("02/29/2024"), 1, false)), 1.0);
  }
  {
    TDateFormat American("MM/dd/yyyy", '/');
    EXPECT_EQ(double(KxVarToDate(Variant("2024-02-29"), 0, true)), Leap);
    EXPECT_EQ(double(KxVarToDate(Variant("02/29/2024"), 0, true)), Leap);
    EXPECT_EQ(double(KxVarToDate(Variant("29.02.2024"), 1, false)), 1.0);
    EXPECT_THROW(KxVarToDate(Variant("29.02.2024"), 1, true), EConvertError);
  }
  // ISO text is checked too: there is no 30 February.
  EXPECT_EQ(double(KxVarToDate(Variant("2024-02-30"), 2, false)), 2.0);
  EXPECT_EQ(double(KxVarToDate(Variant(45000), 0, true)), 45000.0);
  EXPECT_EQ(double(KxVarToDate(Variant(1.5), 0, true)), 1.5);
  EXPECT_EQ(double(KxVarToDate(Null(), 7, true)), 7.0);
  EXPECT_EQ(ConvertErrorOf([] { KxVarToDate(Variant(true), 0, true); }),
            "The given value is not a valid Date value!");
}

TEST(VariantHelpers, EmptinessByMainKind) {
  EXPECT_TRUE(KxVarIsEmpty(Variant()));
  EXPECT_TRUE(KxVarIsEmpty(Null()));
  EXPECT_TRUE(KxVarIsEmpty(Variant(0)));
  EXPECT_FALSE(KxVarIsEmpty(Variant(int64_t(1))));
  EXPECT_TRUE(KxVarIsEmpty(Variant(0.0)));
  EXPECT_TRUE(KxVarIsEmpty(Variant(TDateTime(0))));
  EXPECT_TRUE(KxVarIsEmpty(Variant(" \t ")));
  EXPECT_FALSE(KxVarIsEmpty(Variant(u" x ")));
  EXPECT_FALSE(KxVarIsEmpty(Variant(false)));
  EXPECT_TRUE(KxVarIsEmpty(VarArrayCreate({0, -1}, varVariant)));
  EXPECT_FALSE(KxVarIsEmpty(VarArrayOf({0})));
  // An empty array whose bounds start elsewhere is not "high bound -1".
  EXPECT_FALSE(KxVarIsEmpty(VarArrayCreate({5, 4}, varVariant)));
  EXPECT_FALSE(KxVarIsEmpty(VarFromInterface(nullptr)));

  EXPECT_EQ(KxVarArrayCount(VarArrayOf({1, 2, 3})), 3);
  EXPECT_EQ(KxVarArrayCount(VarArrayCreate({5, 4}, varInteger)), 0);
  EXPECT_EQ(KxVarArrayCount(VarArrayCreate({-2, 2}, varInteger)), 5);
  EXPECT_EQ(KxVarArrayCount(Variant(1)), 0);
}

TEST(VariantHelpers, BooleanAndRealText) {
  for (const char* T : {"true", "TRUE", " yes ", "y", "On", "t", "1", "-1"})
    EXPECT_TRUE(KxStrToBool(T)) << T;
  for (const char* F : {"false", "No", "n", "off", "F", "0"}) EXPECT_FALSE(KxStrToBool(F)) << F;
  EXPECT_EQ(ConvertErrorOf([] { KxStrToBool("2"); }), "'2' is not a valid boolean value");
  EXPECT_EQ(ConvertErrorOf([] { KxStrToBool(""); }), "'' is not a valid boolean value");
  EXPECT_TRUE(KxStrToBool("nope", true));
  EXPECT_EQ(KxBoolToStr(true), "True");
  EXPECT_EQ(KxBoolToStr(false), "False");
  EXPECT_TRUE(KxStrToBool(KxBoolToStr(true)));

  EXPECT_EQ(KxStrToFloat(" -1.5e2 "), -150.0);
  EXPECT_EQ(KxStrToFloat("2,5"), 2.5);
  EXPECT_EQ(ConvertErrorOf([] { KxStrToFloat("1,000.5"); }),
            "'1,000.5' is not a valid floating point value");
  EXPECT_EQ(ConvertErrorOf([] { KxStrToFloat("1,0,0"); }),
            "'1,0,0' is not a valid floating point value");
  EXPECT_EQ(KxStrToFloatDef("abc", 4.5), 4.5);
  EXPECT_EQ(KxStrToFloatDef("", 4.5), 4.5);

  EXPECT_TRUE(VarIsNull(KxNullableBool(Variant())));
  EXPECT_TRUE(VarIsNull(KxNullableBool(Null())));
  EXPECT_EQ(VarType(KxNullableBool(Variant("yes"))), varBoolean);
  EXPECT_TRUE(bool(KxNullableBool(Variant(1))));
  EXPECT_THROW(KxNullableBool(Variant("perhaps")), EConvertError);
}

TEST(SimpleType, HoldsOneTypedValue) {
  TKxSimpleType* S = TKxSimpleType::Create();
  EXPECT_TRUE(S->IsNull());
  EXPECT_EQ(S->SimpleTypeInfo(), nullptr);
  S->SetAsInteger(42);
  EXPECT_FALSE(S->IsNull());
  EXPECT_EQ(VarType(S->Value()), varInteger);
  EXPECT_EQ(S->SimpleTypeInfo()->Name(), "Integer");
  EXPECT_EQ(S->GetAsString(), "42");
  EXPECT_EQ(S->GetAsInt64(), 42);
  EXPECT_EQ(S->GetAsFloat(), 42.0);
  S->SetAsString("2024-02-29");
  EXPECT_EQ(S->SimpleTypeInfo()->Name(), "String");
  EXPECT_EQ(double(S->GetAsDateTime()), double(EncodeDate(2024, 2, 29)));
  EXPECT_THROW(S->GetAsInteger(), EConvertError);
  S->SetAsWideString(u"true");
  EXPECT_EQ(S->SimpleTypeInfo()->Name(), "WideString");
  EXPECT_TRUE(S->GetAsBoolean());
  S->SetAsDateTime(TDateTime(1.5));
  EXPECT_EQ(VarType(S->Value()), varDate);
  EXPECT_EQ(S->SimpleTypeInfo()->Name(), "TDateTime");

  TKxSimpleType* Copy = TKxSimpleType::Create(Variant(uint8_t(7)));
  EXPECT_EQ(Copy->SimpleTypeInfo()->Name(), "Byte");
  Copy->Assign(S);
  EXPECT_EQ(Copy->GetAsFloat(), 1.5);
  EXPECT_EQ(Copy->SimpleTypeInfo(), S->SimpleTypeInfo());
  S->Clear();
  EXPECT_TRUE(S->IsNull());
  EXPECT_TRUE(VarIsEmpty(S->Value()));
  EXPECT_EQ(S->GetAsInteger(), 0); // empty: the default
  S->Free();
  Copy->Free();
}

} // namespace
