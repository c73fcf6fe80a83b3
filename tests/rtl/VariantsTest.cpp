// SPDX-License-Identifier: MIT
// Variant: type codes, copies, conversions by the runtime's rules, equality and arrays.
#include <kx/rtl/DateTimeText.h>
#include <kx/rtl/InterfacedObject.h>
#include <kx/rtl/Variants.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace kx;

namespace {

template <class E, class F>
AnsiString MessageOf(F&& Call) {
  try {
    Call();
  } catch (const E& Ex) {
    return Ex.Message();
  }
  return "(nothing raised)";
}

// Counts its references, so that a test can see what a variant holds on to.
class TCounted : public TInterfacedObject {
  KX_CLASS(TCounted, TInterfacedObject)
public:
  TCounted() = default;
};

} // namespace

KX_IMPLEMENT_CLASS(TCounted, TInterfacedObject, "VariantsTest")

TEST(Variant, TypeCodesAreThePlatformsOwn) {
  EXPECT_EQ(varEmpty, 0);
  EXPECT_EQ(varNull, 1);
  EXPECT_EQ(varSmallint, 2);
  EXPECT_EQ(varInteger, 3);
  EXPECT_EQ(varSingle, 4);
  EXPECT_EQ(varDouble, 5);
  EXPECT_EQ(varCurrency, 6);
  EXPECT_EQ(varDate, 7);
  EXPECT_EQ(varOleStr, 8);
  EXPECT_EQ(varDispatch, 9);
  EXPECT_EQ(varError, 10);
  EXPECT_EQ(varBoolean, 11);
  EXPECT_EQ(varVariant, 12);
  EXPECT_EQ(varUnknown, 13);
  EXPECT_EQ(varShortInt, 16);
  EXPECT_EQ(varByte, 17);
  EXPECT_EQ(varWord, 18);
  EXPECT_EQ(varLongWord, 19);
  EXPECT_EQ(varInt64, 20);
  EXPECT_EQ(varStrArg, 72);
  EXPECT_EQ(varString, 256);
  EXPECT_EQ(varAny, 257);
  EXPECT_EQ(varArray, 0x2000);
}

TEST(Variant, ValuesTakeTheTypeOfTheirCppType) {
  EXPECT_EQ(VarType(Variant()), varEmpty);
  EXPECT_EQ(VarType(Null()), varNull);
  EXPECT_EQ(VarType(Variant(true)), varBoolean);
  EXPECT_EQ(VarType(Variant(int8_t(-1))), varShortInt);
  EXPECT_EQ(VarType(Variant(uint8_t(1))), varByte);
  EXPECT_EQ(VarType(Variant(int16_t(1))), varSmallint);
  EXPECT_EQ(VarType(Variant(uint16_t(1))), varWord);
  EXPECT_EQ(VarType(Variant(1)), varInteger);
  EXPECT_EQ(VarType(Variant(1u)), varLongWord);
  EXPECT_EQ(VarType(Variant(int64_t(1))), varInt64);
  EXPECT_EQ(VarType(Variant(1ll)), varInt64);
  EXPECT_EQ(VarType(Variant(1.5f)), varSingle);
  EXPECT_EQ(VarType(Variant(1.5)), varDouble);
  EXPECT_EQ(VarType(Variant(1.5L)), varDouble);
  EXPECT_EQ(VarType(Variant(Currency::FromScaled(15000))), varCurrency);
  EXPECT_EQ(VarType(VarFromDateTime(45000.5)), varDate);
  EXPECT_EQ(VarType(Variant("abc")), varString);
  EXPECT_EQ(VarType(Variant('a')), varString);
  EXPECT_EQ(VarType(Variant(u"abc")), varOleStr);
  EXPECT_EQ(VarType(Variant(u'a')), varOleStr);
  EXPECT_EQ(VarType(VarAsError(5)), varError);
  EXPECT_EQ(VarType(Variant(IPtr<IInterface>())), varUnknown);
  // Unsigned 64-bit values travel as their bits.
  EXPECT_EQ(uint64_t(Variant(~uint64_t(0))), ~uint64_t(0));
  EXPECT_TRUE(VarIsEmpty(Unassigned()));
  EXPECT_TRUE(VarIsNull(Null()));
  EXPECT_TRUE(VarIsStr(Variant(u"x")));
  EXPECT_FALSE(VarIsStr(Variant(1)));
}

TEST(Variant, CopiesAreValuesAndMovesEmptyTheSource) {
  const AnsiString Long(100, 'x'); // beyond any short-string buffer
  Variant A(Long);
  Variant B = A;
  EXPECT_EQ(VarToStr(B), Long);
  B = Variant(u"other");
  EXPECT_EQ(VarToStr(A), Long) << "the copy does not share the text";
  Variant C = std::move(A);
  EXPECT_EQ(VarType(A), varEmpty);
  EXPECT_EQ(VarToStr(C), Long);
  C = C; // self-assignment keeps the value
  EXPECT_EQ(VarToStr(C), Long);
  C = 42;
  EXPECT_EQ(VarType(C), varInteger);
  EXPECT_EQ(int32_t(C), 42);
  C.Clear();
  EXPECT_TRUE(VarIsEmpty(C));
}

TEST(Variant, InterfacesAreCounted) {
  auto* Obj = TCounted::Create();
  IPtr<IInterface> Ref(static_cast<IInterface*>(Obj));
  EXPECT_EQ(Obj->RefCount(), 1);
  {
    Variant V(Ref);
    EXPECT_EQ(Obj->RefCount(), 2);
    Variant W = V;
    EXPECT_EQ(Obj->RefCount(), 3);
    Variant M = std::move(W);
    EXPECT_EQ(Obj->RefCount(), 3);
    EXPECT_EQ(VarToInterface(M).Get(), Ref.Get());
    M = 1;
    EXPECT_EQ(Obj->RefCount(), 2);
  }
  EXPECT_EQ(Obj->RefCount(), 1);
  EXPECT_EQ(VarToInterface(Variant()).Get(), nullptr);
  EXPECT_THROW(VarToInterface(Variant(1)), EVariantTypeCastError);
}

TEST(VariantConversion, TextToNumbersFollowsTheRuntime) {
  EXPECT_EQ(int32_t(Variant("12")), 12);
  EXPECT_EQ(int32_t(Variant(u" -12")), -12);
  EXPECT_EQ(int32_t(Variant("$FF")), 255);
  EXPECT_EQ(int64_t(Variant("9000000000")), 9000000000);
  // Real text rounds, halves to even.
  EXPECT_EQ(int32_t(Variant("2.5")), 2);
  EXPECT_EQ(int32_t(Variant("3.5")), 4);
  EXPECT_EQ(int32_t(Variant("1e3")), 1000);
  EXPECT_DOUBLE_EQ(double(Variant("1.25")), 1.25);
  EXPECT_DOUBLE_EQ(double(Variant(u" -2.5E-1 ")), -0.25);
  EXPECT_EQ(MessageOf<EVariantTypeCastError>([] { (void)int32_t(Variant("abc")); }),
            "Could not convert variant of type (String) into type (Integer)");
  EXPECT_EQ(MessageOf<EVariantTypeCastError>([] { (void)double(Variant(u"1,5")); }),
            "Could not convert variant of type (OleStr) into type (Double)");
  for (const char* Bad : {"", " ", "inf", "nan", "0x1p3", "1e", "--1", "1 2"})
    EXPECT_THROW((void)double(Variant(Bad)), EVariantTypeCastError) << Bad;
  EXPECT_EQ(MessageOf<EVariantOverflowError>([] { (void)int32_t(Variant("9000000000")); }),
            "Overflow while converting variant of type (String) into type (Integer)");
  EXPECT_THROW((void)int64_t(Variant("1e300")), EVariantOverflowError);
}

TEST(VariantConversion, NumbersNarrowAndRoundAsTheRuntimeDoes) {
  EXPECT_EQ(int32_t(Variant(int64_t(0x1'0000'0005))), 5); // truncated
  EXPECT_EQ(int16_t(Variant(-40000)), int16_t(-40000));
  EXPECT_EQ(uint32_t(Variant(4000000000u)), 4000000000u);
  EXPECT_EQ(int64_t(Variant(4000000000u)), 4000000000);
  EXPECT_EQ(int32_t(Variant(2.5)), 2);
  EXPECT_EQ(int32_t(Variant(-2.5)), -2);
  EXPECT_EQ(int32_t(Variant(2.5000001)), 3);
  EXPECT_EQ(int32_t(Variant(Currency::FromScaled(25000))), 2);
  EXPECT_EQ(int32_t(Variant(Currency::FromScaled(35000))), 4);
  EXPECT_EQ(int32_t(Variant(Currency::FromScaled(-25001))), -3);
  EXPECT_THROW((void)int32_t(Variant(std::nan(""))), EVariantOverflowError);
  EXPECT_THROW((void)int64_t(Variant(9.3e18)), EVariantOverflowError);
  EXPECT_THROW((void)int64_t(Variant(std::numeric_limits<double>::infinity())),
               EVariantOverflowError);
  EXPECT_EQ(int32_t(Variant()), 0);
  EXPECT_DOUBLE_EQ(double(Variant()), 0.0);
  EXPECT_DOUBLE_EQ(double(Variant(Currency::FromScaled(12345))), 1.2345);
  EXPECT_EQ(Currency(Variant(1.23456)).Scaled(), 12346);
  EXPECT_EQ(Currency(Variant(7)).Scaled(), 70000);
  EXPECT_THROW((void)Currency(Variant(int64_t(1) << 62)), EVariantOverflowError);
}

TEST(VariantConversion, Booleans) {
  EXPECT_EQ(int32_t(Variant(true)), -1);
  EXPECT_EQ(int32_t(Variant(false)), 0);
  EXPECT_DOUBLE_EQ(double(Variant(true)), -1.0);
  EXPECT_EQ(VarToStr(Variant(true)), "True");
  EXPECT_EQ(VarToStr(Variant(false)), "False");
  EXPECT_TRUE(bool(Variant("true")));
  EXPECT_FALSE(bool(Variant(u"FALSE")));
  EXPECT_TRUE(bool(Variant("2")));
  EXPECT_FALSE(bool(Variant("0.0")));
  EXPECT_TRUE(bool(Variant(0.5)));
  EXPECT_FALSE(bool(Variant()));
  EXPECT_TRUE(bool(Variant(uint8_t(3))));
  EXPECT_THROW((void)bool(Variant("yes")), EVariantTypeCastError);
}

TEST(VariantConversion, Text) {
  EXPECT_EQ(VarToStr(Variant()), "");
  EXPECT_EQ(VarToStr(Null()), "");
  EXPECT_EQ(MessageOf<EVariantTypeCastError>([] { (void)AnsiString(Null()); }),
            "Could not convert variant of type (Null) into type (String)");
  EXPECT_EQ(VarToStr(Variant(-7)), "-7");
  EXPECT_EQ(VarToStr(Variant(4000000000u)), "4000000000");
  EXPECT_EQ(VarToStr(Variant(int64_t(-9000000000))), "-9000000000");
  EXPECT_EQ(VarToStr(Variant(uint8_t(200))), "200");
  EXPECT_EQ(VarToStr(Variant(1.5)), "1.5");
  EXPECT_EQ(VarToStr(Variant(0.1)), "0.1");
  EXPECT_EQ(VarToStr(Variant(0.1f)), "0.1"); // a single keeps its own 7 digits
  EXPECT_EQ(VarToStr(Variant(Currency::FromScaled(-12345000))), "-1234.5");
  EXPECT_EQ(VarToStr(Variant(Currency::FromScaled(30000))), "3");
  EXPECT_EQ(VarToStr(Variant(Currency::FromScaled(1))), "0.0001");
  EXPECT_EQ(VarToWideStr(Variant("abc")), u"abc");
  EXPECT_EQ(VarToWideStr(Variant(12)), u"12");
  EXPECT_EQ(VarToStr(Variant(u"abc")), "abc");
  EXPECT_EQ(MessageOf<EVariantTypeCastError>([] { (void)VarToStr(VarAsError(1)); }),
            "Could not convert variant of type (Error) into type (String)");
  EXPECT_THROW(VarToWideStr(VarArrayOf({1})), EVariantTypeCastError);
}

TEST(VariantConversion, DatesAsTextFollowTheProcessFormatSettings) {
  TFormatSettings& FS = FormatSettings();
  const TFormatSettings Saved = FS;
  FS.ShortDateFormat = "dd.mm.yyyy";
  FS.DateSeparator = '.';
  FS.LongTimeFormat = "hh:nn:ss";
  FS.TimeSeparator = ':';
  const TDateTime Noon = EncodeDate(2024, 2, 29) + EncodeTime(12, 30, 0, 0);
  EXPECT_EQ(VarType(Variant(Noon)), varDate);
  EXPECT_EQ(VarType(Variant(TDate(EncodeDate(2024, 2, 29)))), varDate);
  EXPECT_EQ(VarToStr(Variant(Noon)), "29.02.2024 12:30:00");
  EXPECT_EQ(VarToStr(Variant(TDate(EncodeDate(2024, 2, 29)))), "29.02.2024");
  EXPECT_DOUBLE_EQ(VarToDateTime(Variant("29.02.2024 12:30")), double(Noon));
  EXPECT_DOUBLE_EQ(VarToDateTime(Variant(u"29.02.2024")), double(EncodeDate(2024, 2, 29)));
  EXPECT_EQ(MessageOf<EVariantTypeCastError>([] { (void)VarToDateTime(Variant("30.02.2024")); }),
            "Could not convert variant of type (String) into type (Date)");
  // "=" of a date and a text meets as dates.
  EXPECT_TRUE(Variant(Noon) == Variant("29.02.2024 12:30"));
  FS.ShortDateFormat = "MM/dd/yyyy";
  FS.DateSeparator = '/';
  EXPECT_EQ(VarToStr(Variant(Noon)), "02/29/2024 12:30:00");
  EXPECT_THROW(VarToDateTime(Variant("29.02.2024")), EVariantTypeCastError);
  FS = Saved;
}

TEST(VariantConversion, VarAsTypeMakesTheRequestedType) {
  EXPECT_EQ(VarType(VarAsType(Variant("12"), varInteger)), varInteger);
  EXPECT_EQ(int32_t(VarAsType(Variant("12"), varSmallint)), 12);
  EXPECT_EQ(VarType(VarAsType(Variant(12), varOleStr)), varOleStr);
  EXPECT_EQ(VarType(VarAsType(Variant(12), varDate)), varDate);
  EXPECT_DOUBLE_EQ(VarToDateTime(VarAsType(Variant(12), varDate)), 12.0);
  EXPECT_EQ(VarType(VarAsType(Variant(1), varBoolean)), varBoolean);
  EXPECT_EQ(VarType(VarAsType(Variant(1), varNull)), varNull);
  EXPECT_THROW(VarAsType(Variant(1e300), varSingle), EVariantOverflowError);
  EXPECT_THROW(VarAsType(Variant(1), varUnknown), EVariantTypeCastError);
  EXPECT_THROW(VarAsType(Variant(1), varAny), EVariantBadVarTypeError);
  EXPECT_THROW(VarAsType(Variant(1), varArray | varInteger), EVariantTypeCastError);
}

TEST(VariantEquality, ValuesMeetInACommonType) {
  EXPECT_TRUE(Variant(12) == Variant("12"));
  EXPECT_TRUE(Variant("12.0") == Variant(12));
  EXPECT_TRUE(Variant(12) == Variant(int64_t(12)));
  EXPECT_TRUE(Variant(uint8_t(12)) == Variant(12.0));
  EXPECT_TRUE(Variant(0.5f) == Variant(0.5));
  EXPECT_TRUE(Variant("abc") == Variant(u"abc"));
  EXPECT_FALSE(Variant("abc") == Variant("ABC"));
  EXPECT_TRUE(Variant(true) == Variant(-1));
  EXPECT_FALSE(Variant(true) == Variant(1));
  EXPECT_TRUE(Variant(true) == Variant("True"));
  EXPECT_FALSE(Variant(true) == Variant("true"));
  EXPECT_TRUE(Variant(Currency::FromScaled(15000)) == Variant(1.5));
  EXPECT_TRUE(VarFromDateTime(2.5) == Variant(2.5));
  EXPECT_TRUE(Variant(12) != Variant(13));
  EXPECT_THROW((void)(Variant(12) == Variant("abc")), EVariantTypeCastError);
}

TEST(VariantEquality, EmptyNullAndWhatCannotBeCompared) {
  EXPECT_TRUE(Variant() == Variant());
  EXPECT_FALSE(Variant() == Variant(0));
  EXPECT_FALSE(Variant("") == Variant());
  EXPECT_TRUE(Null() == Null());
  EXPECT_FALSE(Null() == Variant(0));
  EXPECT_FALSE(Null() == Variant());
  EXPECT_FALSE(Null() == VarArrayOf({1}));
  EXPECT_EQ(MessageOf<EVariantInvalidOpError>([] { (void)(VarArrayOf({1}) == VarArrayOf({1})); }),
            "Invalid variant operation");
  EXPECT_THROW((void)(Variant() == VarAsError(1)), EVariantInvalidOpError);
  EXPECT_THROW((void)(Variant(IPtr<IInterface>()) == Variant(IPtr<IInterface>())),
               EVariantInvalidOpError);
}

TEST(VariantArray, BoundsElementsAndCopies) {
  Variant A = VarArrayCreate({1, 3}, varInteger);
  EXPECT_EQ(VarType(A), varArray | varInteger);
  EXPECT_TRUE(VarIsArray(A));
  EXPECT_EQ(VarArrayDimCount(A), 1);
  EXPECT_EQ(VarArrayLowBound(A, 1), 1);
  EXPECT_EQ(VarArrayHighBound(A, 1), 3);
  EXPECT_EQ(VarType(VarArrayGet(A, 2)), varInteger);
  EXPECT_EQ(int32_t(VarArrayGet(A, 2)), 0);
  VarArrayPut(A, Variant("7"), 2); // converted to the element type
  EXPECT_EQ(VarType(VarArrayGet(A, 2)), varInteger);
  EXPECT_EQ(int32_t(VarArrayGet(A, 2)), 7);
  Variant Copy = A;
  VarArrayPut(Copy, 9, 2);
  EXPECT_EQ(int32_t(VarArrayGet(A, 2)), 7) << "copying an array copies its elements";
  EXPECT_EQ(MessageOf<EVariantBadIndexError>([&] { (void)VarArrayGet(A, 4); }),
            "Variant or safe array index out of bounds");
  EXPECT_THROW(VarArrayGet(A, 0), EVariantBadIndexError);
  EXPECT_THROW(VarArrayPut(A, "x", 1), EVariantTypeCastError);
  EXPECT_THROW(VarArrayLowBound(A, 2), EVariantInvalidArgError);
  EXPECT_EQ(MessageOf<EVariantNotAnArrayError>([] { (void)VarArrayHighBound(Variant(1), 1); }),
            "Variant is not an array");
  EXPECT_EQ(VarArrayDimCount(Variant(1)), 0);
  VarArrayRedim(A, 5);
  EXPECT_EQ(VarArrayHighBound(A, 1), 5);
  EXPECT_EQ(int32_t(VarArrayGet(A, 5)), 0);
  EXPECT_EQ(VarTypeAsText(VarType(A)), "Array Integer");
}

TEST(VariantArray, VariantElementsEmptyArraysAndRefusedShapes) {
  Variant A = VarArrayOf({1, "two", VarArrayOf({3.5})});
  EXPECT_EQ(VarType(A), varArray | varVariant);
  EXPECT_EQ(VarArrayLowBound(A, 1), 0);
  EXPECT_EQ(VarArrayHighBound(A, 1), 2);
  EXPECT_EQ(VarType(VarArrayGet(A, 1)), varString);
  EXPECT_DOUBLE_EQ(double(VarArrayGet(VarArrayGet(A, 2), 0)), 3.5);
  Variant Empty = VarArrayCreate({0, -1}, varVariant);
  EXPECT_EQ(VarArrayHighBound(Empty, 1), -1);
  EXPECT_EQ(VarType(VarArrayGet(VarArrayCreate({0, 0}, varOleStr), 0)), varOleStr);
  EXPECT_EQ(VarType(VarArrayGet(VarArrayCreate({0, 0}, varVariant), 0)), varEmpty);
  EXPECT_EQ(MessageOf<EVariantArrayCreateError>([] {
              (void)VarArrayCreate({0, 1, 0, 1}, varInteger);
            }),
            "Error creating variant or safe array");
  EXPECT_THROW(VarArrayCreate({0, -2}, varInteger), EVariantArrayCreateError);
  EXPECT_THROW(VarArrayCreate({0, 1}, varString), EVariantArrayCreateError);
  EXPECT_THROW(VarArrayCreate({0, 1}, varNull), EVariantArrayCreateError);
  Variant Wide = VarArrayCreate(
      {std::numeric_limits<int32_t>::max() - 1, std::numeric_limits<int32_t>::max()}, varByte);
  EXPECT_EQ(VarArrayHighBound(Wide, 1), std::numeric_limits<int32_t>::max());
}

TEST(Variant, TypeNames) {
  EXPECT_EQ(VarTypeAsText(varEmpty), "Empty");
  EXPECT_EQ(VarTypeAsText(varOleStr), "OleStr");
  EXPECT_EQ(VarTypeAsText(varLongWord), "LongWord");
  EXPECT_EQ(VarTypeAsText(varString), "String");
  EXPECT_EQ(VarTypeAsText(varAny), "Any");
  EXPECT_EQ(VarTypeAsText(0x0FFF), "$0FFF");
  EXPECT_EQ(VarTypeAsText(varArray | varVariant), "Array Variant");
}
