// SPDX-License-Identifier: MIT
// The runtime's Variant to and from the platform's VARIANT (oleaut32), where values cross COM.
#include <kx/rtl/Variants.h>

#include <windows.h>

#include <oleauto.h>

namespace kx {

namespace {

void Check(HRESULT Result) {
  if (FAILED(Result)) throw EOleSysError(SysErrorMessage(uint32_t(Result)), Result);
}

// Closes a VARIANT that this unit filled, whatever happens in between.
struct TOleTemp {
  VARIANT V;
  TOleTemp() { VariantInit(&V); }
  ~TOleTemp() { VariantClear(&V); }
  TOleTemp(const TOleTemp&) = delete;
  TOleTemp& operator=(const TOleTemp&) = delete;
};

VARTYPE OleTypeOf(TVarType T) {
  switch (T) {
  case varString:
    return VT_BSTR;
  case varVariant:
    return VT_VARIANT;
  case varShortInt:
    return VT_I1;
  case varByte:
    return VT_UI1;
  case varWord:
    return VT_UI2;
  case varLongWord:
    return VT_UI4;
  case varInt64:
    return VT_I8;
  default: // the codes below varShortInt are the platform's own
    return VARTYPE(T);
  }
}

BSTR AllocBSTR(const UnicodeString& S) {
  BSTR B = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(S.data()), UINT(S.size()));
  if (!B) Check(E_OUTOFMEMORY);
  return B;
}

void ToOle(const Variant& Source, VARIANT* Dest);

SAFEARRAY* ArrayToOle(const Variant& Source) {
  const TVarType Element = VarType(Source) & varTypeMask;
  const VARTYPE Vt = OleTypeOf(Element);
  const LONG Low = VarArrayLowBound(Source, 1), High = VarArrayHighBound(Source, 1);
  SAFEARRAY* Array = SafeArrayCreateVector(Vt, Low, ULONG(int64_t(High) - Low + 1));
  if (!Array) Check(E_OUTOFMEMORY);
  try {
    for (int64_t Index = Low; Index <= High; ++Index) {
      LONG I = LONG(Index);
      TOleTemp Item;
      ToOle(VarArrayGet(Source, I), &Item.V);
      // Interfaces and strings go in by value, the rest through a pointer to the value.
      void* Data = Vt == VT_VARIANT                        ? static_cast<void*>(&Item.V)
                   : Vt == VT_BSTR                         ? static_cast<void*>(V_BSTR(&Item.V))
                   : Vt == VT_UNKNOWN || Vt == VT_DISPATCH ? static_cast<void*>(V_UNKNOWN(&Item.V))
                                                           : static_cast<void*>(&V_UI1(&Item.V));
      Check(SafeArrayPutElement(Array, &I, Data));
    }
  } catch (...) {
    SafeArrayDestroy(Array);
    throw;
  }
  return Array;
}

void ToOle(const Variant& Source, VARIANT* Dest) {
  Check(VariantClear(Dest));
  const TVarType T = VarType(Source);
  if (T & varArray) {
    V_ARRAY(Dest) = ArrayToOle(Source);
    V_VT(Dest) = VT_ARRAY | OleTypeOf(T & varTypeMask);
    return;
  }
  switch (T) {
  case varEmpty:
  case varNull:
    break;
  case varSmallint:
    V_I2(Dest) = int16_t(Source);
    break;
  case varInteger:
    V_I4(Dest) = Source.VInteger();
    break;
  case varSingle:
    V_R4(Dest) = float(Source);
    break;
  case varDouble:
    V_R8(Dest) = Source.VDouble();
    break;
  case varCurrency:
    V_CY(Dest).int64 = Currency(Source).Scaled();
    break;
  case varDate:
    V_DATE(Dest) = Source.VDate();
    break;
  case varOleStr:
    V_BSTR(Dest) = AllocBSTR(Source.VOleStr());
    break;
  case varString:
    V_BSTR(Dest) = AllocBSTR(VarToWideStr(Source));
    break;
  case varDispatch:
  case varUnknown:
    // The runtime's interfaces have IUnknown's layout.
    V_UNKNOWN(Dest) = reinterpret_cast<IUnknown*>(Source.VUnknown());
    if (V_UNKNOWN(Dest)) V_UNKNOWN(Dest)->AddRef();
    break;
  case varError:
    V_ERROR(Dest) = Source.VError();
    break;
  case varBoolean:
    V_BOOL(Dest) = Source.VBoolean() ? VARIANT_TRUE : VARIANT_FALSE;
    break;
  case varShortInt:
    V_I1(Dest) = CHAR(int8_t(Source));
    break;
  case varByte:
    V_UI1(Dest) = uint8_t(Source);
    break;
  case varWord:
    V_UI2(Dest) = uint16_t(Source);
    break;
  case varLongWord:
    V_UI4(Dest) = uint32_t(Source);
    break;
  case varInt64:
    V_I8(Dest) = Source.VInt64();
    break;
  default:
    throw EVariantBadVarTypeError(SVarBadType);
  }
  V_VT(Dest) = OleTypeOf(T);
}

TVarType RuntimeTypeOf(VARTYPE Vt) {
  switch (Vt) {
  case VT_VARIANT:
    return varVariant;
  case VT_I1:
    return varShortInt;
  case VT_UI1:
    return varByte;
  case VT_UI2:
    return varWord;
  case VT_UI4:
  case VT_UINT:
    return varLongWord;
  case VT_I8:
  case VT_UI8:
    return varInt64;
  case VT_INT:
    return varInteger;
  case VT_DECIMAL:
    return varDouble;
  default:
    return TVarType(Vt);
  }
}

Variant FromOle(const VARIANT* Source);

Variant ArrayFromOle(SAFEARRAY* Array, VARTYPE Vt) {
  if (!Array) return VarArrayCreate({0, -1}, RuntimeTypeOf(Vt));
  if (SafeArrayGetDim(Array) != 1) throw EVariantArrayCreateError(SVarArrayCreate);
  LONG Low, High;
  Check(SafeArrayGetLBound(Array, 1, &Low));
  Check(SafeArrayGetUBound(Array, 1, &High));
  Variant Result = VarArrayCreate({int32_t(Low), int32_t(High)}, RuntimeTypeOf(Vt));
  for (int64_t Index = Low; Index <= High; ++Index) {
    LONG I = LONG(Index);
    TOleTemp Item;
    // Each element lands in a VARIANT of the element type and is converted from there.
    void* Data = Vt == VT_VARIANT ? static_cast<void*>(&Item.V) : &V_UI1(&Item.V);
    Check(SafeArrayGetElement(Array, &I, Data));
    if (Vt != VT_VARIANT) V_VT(&Item.V) = Vt;
    VarArrayPut(Result, FromOle(&Item.V), I);
  }
  return Result;
}

Variant FromOle(const VARIANT* Source) {
  const VARTYPE Vt = V_VT(Source);
  if (Vt & VT_BYREF) {
    TOleTemp Direct;
    Check(VariantCopyInd(&Direct.V, const_cast<VARIANT*>(Source)));
    return FromOle(&Direct.V);
  }
  if (Vt & VT_ARRAY) return ArrayFromOle(V_ARRAY(Source), Vt & VT_TYPEMASK);
  switch (Vt) {
  case VT_EMPTY:
    return Variant();
  case VT_NULL:
    return Null();
  case VT_I2:
    return Variant(int16_t(V_I2(Source)));
  case VT_I4:
  case VT_INT:
    return Variant(int32_t(V_I4(Source)));
  case VT_R4:
    return Variant(V_R4(Source));
  case VT_R8:
    return Variant(V_R8(Source));
  case VT_CY:
    return Variant(Currency::FromScaled(V_CY(Source).int64));
  case VT_DATE:
    return VarFromDateTime(V_DATE(Source));
  case VT_BSTR: {
    const BSTR B = V_BSTR(Source);
    return Variant(UnicodeString(reinterpret_cast<const char16_t*>(B), B ? SysStringLen(B) : 0));
  }
  case VT_DISPATCH:
  case VT_UNKNOWN:
    return VarFromInterface(reinterpret_cast<IInterface*>(V_UNKNOWN(Source)),
                            Vt == VT_DISPATCH ? varDispatch : varUnknown);
  case VT_ERROR:
    return VarAsError(V_ERROR(Source));
  case VT_BOOL:
    return Variant(V_BOOL(Source) != VARIANT_FALSE);
  case VT_DECIMAL: {
    double D;
    DECIMAL Dec = V_DECIMAL(Source);
    Check(VarR8FromDec(&Dec, &D));
    return Variant(D);
  }
  case VT_I1:
    return Variant(int8_t(V_I1(Source)));
  case VT_UI1:
    return Variant(uint8_t(V_UI1(Source)));
  case VT_UI2:
    return Variant(uint16_t(V_UI2(Source)));
  case VT_UI4:
  case VT_UINT:
    return Variant(uint32_t(V_UI4(Source)));
  case VT_I8:
    return Variant(int64_t(V_I8(Source)));
  case VT_UI8:
    return Variant(uint64_t(V_UI8(Source)));
  default:
    throw EVariantBadVarTypeError(SVarBadType);
  }
}

} // namespace

void VariantToOleVariant(const Variant& Source, tagVARIANT* Dest) {
  ToOle(Source, Dest);
}

Variant OleVariantToVariant(const tagVARIANT* Source) {
  return FromOle(Source);
}

} // namespace kx
