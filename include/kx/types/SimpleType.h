// SPDX-License-Identifier: MIT
// One scalar value in a small object that serialisers can hold.
#pragma once

#include <kx/classes/Object.h>
#include <kx/rtl/TypInfo.h>
#include <kx/rtl/Variants.h>

namespace kx {

class TKxTypeInfo;

// The base of simple types, the library's and callers' own.
class KX_API TKxCustomSimpleType : public TKxObject {
  KX_CLASS(TKxCustomSimpleType, TKxObject)
public:
  TKxCustomSimpleType() = default;
};

// The type of no value: the registry keeps the fallback serializers of every format on it.
class KX_API TKxNilType : public TKxCustomSimpleType {
  KX_CLASS(TKxNilType, TKxCustomSimpleType)
public:
  TKxNilType() = default;
};

// A variant value with its registry type and a null flag. The typed readers are the tolerant
// converters (KxVarTo...) with their defaults, raising on failure; the writers make a variant
// of the matching type and pass it to SetValue.
class KX_API TKxSimpleType : public TKxCustomSimpleType {
  KX_CLASS(TKxSimpleType, TKxCustomSimpleType)
public:
  // Null, without a type.
  TKxSimpleType() = default;
  // The value, typed by its variant type.
  explicit TKxSimpleType(const Variant& AValue);

  const Variant& Value() const { return FValue; }
  // Copies the value in, types it by its variant type and clears the null flag.
  virtual void SetValue(const Variant& AValue);
  // The registry's information for the value's type (null until a value is set).
  TKxTypeInfo* SimpleTypeInfo() const { return FSimpleTypeInfo; }
  bool IsNull() const { return FIsNull; }
  // Empties the value and sets the null flag.
  void Clear();
  // Value, type and null flag of Source.
  virtual void Assign(const TKxSimpleType* Source);

  bool GetAsBoolean() const;
  int32_t GetAsInteger() const;
  int64_t GetAsInt64() const;
  uint32_t GetAsLongWord() const;
  float GetAsSingle() const;
  double GetAsFloat() const;
  Extended GetAsExtended() const;
  TDateTime GetAsDateTime() const;
  AnsiString GetAsString() const;
  AnsiString GetAsAnsiString() const;
  UnicodeString GetAsWideString() const;

  void SetAsBoolean(bool V) { SetValue(Variant(V)); }
  void SetAsInteger(int32_t V) { SetValue(Variant(V)); }
  void SetAsInt64(int64_t V) { SetValue(Variant(V)); }
  void SetAsLongWord(uint32_t V) { SetValue(Variant(V)); }
  void SetAsSingle(float V) { SetValue(Variant(V)); }
  void SetAsFloat(double V) { SetValue(Variant(V)); }
  void SetAsExtended(Extended V) { SetValue(Variant(V)); }
  void SetAsDateTime(TDateTime V) { SetValue(Variant(V)); }
  void SetAsString(const AnsiString& V) { SetValue(Variant(V)); }
  void SetAsAnsiString(const AnsiString& V) { SetValue(Variant(V)); }
  void SetAsWideString(const UnicodeString& V) { SetValue(Variant(V)); }

private:
  Variant FValue;
  TKxTypeInfo* FSimpleTypeInfo = nullptr;
  bool FIsNull = true;
};

} // namespace kx
