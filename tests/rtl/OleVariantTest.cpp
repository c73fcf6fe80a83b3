// SPDX-License-Identifier: MIT
// Variant to and from the platform's VARIANT (Windows only).
#include <kx/rtl/InterfacedObject.h>
#include <kx/rtl/Variants.h>

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <windows.h>

#include <oleauto.h>

using namespace kx;

namespace {

struct TOle {
  VARIANT V;
  TOle() { VariantInit(&V); }
  ~TOle() { VariantClear(&V); }
};

Variant RoundTrip(const Variant& Value, VARTYPE Expected) {
  TOle Ole;
  VariantToOleVariant(Value, &Ole.V);
  EXPECT_EQ(V_VT(&Ole.V), Expected) << VarTypeAsText(VarType(Value));
  return OleVariantToVariant(&Ole.V);
}

class TCounted : public TInterfacedObject {
  KX_CLASS(TCounted, TInterfacedObject)
public:
  TCounted() = default;
};

} // namespace

KX_IMPLEMENT_CLASS(TCounted, TInterfacedObject, "OleVariantTest")

TEST(OleVariant, ScalarsKeepTypeAndValue) {
  struct TCase {
    Variant Value;
    VARTYPE Vt;
  };
  const TCase Cases[] = {{Variant(), VT_EMPTY},
                         {Null(), VT_NULL},
                         {Variant(int16_t(-2)), VT_I2},
                         {Variant(-70000), VT_I4},
                         {Variant(1.5f), VT_R4},
                         {Variant(2.25), VT_R8},
                         {Variant(Currency::FromScaled(-12345)), VT_CY},
                         {VarFromDateTime(45000.75), VT_DATE},
                         {Variant(u"w\u00e9"), VT_BSTR},
                         {VarAsError(kx::HRESULT(0x80004005)), VT_ERROR},
                         {Variant(true), VT_BOOL},
                         {Variant(int8_t(-3)), VT_I1},
                         {Variant(uint8_t(200)), VT_UI1},
                         {Variant(uint16_t(60000)), VT_UI2},
                         {Variant(4000000000u), VT_UI4},
                         {Variant(int64_t(-9000000000)), VT_I8}};
  for (const TCase& C : Cases) {
    Variant Back = RoundTrip(C.Value, C.Vt);
    EXPECT_EQ(VarType(Back), VarType(C.Value)) << VarTypeAsText(VarType(C.Value));
    if (VarType(C.Value) == varError) {
      EXPECT_EQ(Back.VError(), C.Value.VError());
    } else if (VarType(C.Value) > varNull) {
      EXPECT_TRUE(Back == C.Value) << VarTypeAsText(VarType(C.Value));
    }
  }
}

TEST(OleVariant, AnsiTextCrossesAsBSTR) {
  TOle Ole;
  VariantToOleVariant(Variant("abc"), &Ole.V);
  ASSERT_EQ(V_VT(&Ole.V), VT_BSTR);
  EXPECT_EQ(SysStringLen(V_BSTR(&Ole.V)), 3u);
  Variant Back = OleVariantToVariant(&Ole.V);
  EXPECT_EQ(VarType(Back), varOleStr);
  EXPECT_EQ(VarToStr(Back), "abc");
}

TEST(OleVariant, InterfacesAreCountedAcross) {
  auto* Obj = TCounted::Create();
  IPtr<IInterface> Ref(static_cast<IInterface*>(Obj));
  {
    TOle Ole;
    VariantToOleVariant(Variant(Ref), &Ole.V);
    EXPECT_EQ(V_VT(&Ole.V), VT_UNKNOWN);
    EXPECT_EQ(Obj->RefCount(), 2);
    Variant Back = OleVariantToVariant(&Ole.V);
    EXPECT_EQ(VarToInterface(Back).Get(), Ref.Get());
    EXPECT_EQ(Obj->RefCount(), 3);
  }
  EXPECT_EQ(Obj->RefCount(), 1);
}

TEST(OleVariant, ArraysBecomeSafeArrays) {
  Variant A = VarArrayCreate({2, 4}, varInteger);
  VarArrayPut(A, 7, 3);
  Variant Back = RoundTrip(A, VT_ARRAY | VT_I4);
  EXPECT_EQ(VarType(Back), varArray | varInteger);
  EXPECT_EQ(VarArrayLowBound(Back, 1), 2);
  EXPECT_EQ(VarArrayHighBound(Back, 1), 4);
  EXPECT_EQ(int32_t(VarArrayGet(Back, 3)), 7);

  Variant Mixed = VarArrayOf({1, "two", u"three", VarArrayOf({4.5})});
  Variant MixedBack = RoundTrip(Mixed, VT_ARRAY | VT_VARIANT);
  EXPECT_EQ(VarArrayHighBound(MixedBack, 1), 3);
  EXPECT_EQ(VarToStr(VarArrayGet(MixedBack, 1)), "two");
  EXPECT_EQ(VarToStr(VarArrayGet(MixedBack, 2)), "three");
  EXPECT_DOUBLE_EQ(double(VarArrayGet(VarArrayGet(MixedBack, 3), 0)), 4.5);

  Variant Strings = VarArrayCreate({0, 1}, varOleStr);
  VarArrayPut(Strings, u"x", 1);
  EXPECT_EQ(VarToStr(VarArrayGet(RoundTrip(Strings, VT_ARRAY | VT_BSTR), 1)), "x");
}

TEST(OleVariant, ByReferenceDecimalAndForeignTypes) {
  LONG Value = 42;
  TOle Ref;
  V_VT(&Ref.V) = VT_I4 | VT_BYREF;
  V_I4REF(&Ref.V) = &Value;
  EXPECT_EQ(int32_t(OleVariantToVariant(&Ref.V)), 42);
  V_VT(&Ref.V) = VT_EMPTY; // not ours to clear

  TOle Dec;
  V_VT(&Dec.V) = VT_R8;
  V_R8(&Dec.V) = 12.5;
  ASSERT_EQ(VariantChangeType(&Dec.V, &Dec.V, 0, VT_DECIMAL), KX_S_OK);
  Variant FromDec = OleVariantToVariant(&Dec.V);
  EXPECT_EQ(VarType(FromDec), varDouble);
  EXPECT_DOUBLE_EQ(double(FromDec), 12.5);

  TOle Record;
  V_VT(&Record.V) = VT_CLSID;
  EXPECT_THROW(OleVariantToVariant(&Record.V), EVariantBadVarTypeError);
  V_VT(&Record.V) = VT_EMPTY;
}

#endif
