// SPDX-License-Identifier: MIT
// The simple value holder and the null type.
#include <kx/types/SimpleType.h>
#include <kx/types/TypeRegistry.h>
#include <kx/types/VariantConversion.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxCustomSimpleType, TKxObject, "uKxTypes")
KX_IMPLEMENT_CLASS(TKxNilType, TKxCustomSimpleType, "uKxTypes")
KX_IMPLEMENT_CLASS(TKxSimpleType, TKxCustomSimpleType, "uKxTypes")

TKxSimpleType::TKxSimpleType(const Variant& AValue) {
  SetValue(AValue);
}

void TKxSimpleType::SetValue(const Variant& AValue) {
  FValue = AValue;
  FSimpleTypeInfo = KxTypes()->VarTypeInfo(FValue);
  FIsNull = false;
}

void TKxSimpleType::Clear() {
  FValue.Clear();
  FIsNull = true;
}

void TKxSimpleType::Assign(const TKxSimpleType* Source) {
  if (!Source || Source == this) return;
  FValue = Source->FValue;
  FSimpleTypeInfo = Source->FSimpleTypeInfo;
  FIsNull = Source->FIsNull;
}

bool TKxSimpleType::GetAsBoolean() const {
  return KxVarToBool(FValue, false, true);
}
int32_t TKxSimpleType::GetAsInteger() const {
  return KxVarToInt(FValue, 0, true);
}
int64_t TKxSimpleType::GetAsInt64() const {
  return KxVarToInt64(FValue, 0, true);
}
uint32_t TKxSimpleType::GetAsLongWord() const {
  return KxVarToLongword(FValue, 0, true);
}
float TKxSimpleType::GetAsSingle() const {
  return KxVarToSingle(FValue, 0, true);
}
double TKxSimpleType::GetAsFloat() const {
  return KxVarToDouble(FValue, 0, true);
}
Extended TKxSimpleType::GetAsExtended() const {
  return KxVarToExtended(FValue, 0, true);
}
TDateTime TKxSimpleType::GetAsDateTime() const {
  return KxVarToDate(FValue, 0, true);
}
AnsiString TKxSimpleType::GetAsString() const {
  return KxVarToStr(FValue, AnsiString(), true);
}
AnsiString TKxSimpleType::GetAsAnsiString() const {
  return KxVarToAStr(FValue, AnsiString(), true);
}
UnicodeString TKxSimpleType::GetAsWideString() const {
  return KxVarToWStr(FValue, UnicodeString(), true);
}

} // namespace kx
