// SPDX-License-Identifier: MIT
// The process-wide registry of serialisable types: names, kinds, variant types, XML-Schema
// names and aliases, and per-format serializer blocks.
#pragma once
// The registry is made on first use of KxTypes() with the language's types registered; a
// class, record or interface is registered on the spot the first time it is asked for
// (GetTypeInfo(TypeInfo<T>())), so asking never fails. Registrations take the write side of
// the registry's multi-reader/single-writer lock, lookups the read side. Records are never
// removed before the unit's shut-down, so the pointers handed out stay valid until then.

#include <kx/rtl/TypInfo.h>
#include <kx/rtl/Variants.h>

#include <atomic>
#include <initializer_list>
#include <memory>
#include <span>
#include <vector>

namespace kx {

class TKxMultiReadSingleWrite;

enum TKxTypeKind : uint8_t {
  rtkUnknown,
  rtkByte,
  rtkWord,
  rtkLongWord,
  rtkUInt64,
  rtkShortInt,
  rtkSmallInt,
  rtkLongInt,
  rtkInt64,
  rtkSingle,
  rtkDouble,
  rtkExtended,
  rtkChar,
  rtkAChar,
  rtkWChar,
  rtkString,
  rtkAString,
  rtkWString,
  rtkBoolean,
  rtkEnumeration,
  rtkSet,
  rtkDate,
  rtkTime,
  rtkDatetime,
  rtkVariant,
  rtkArray,
  rtkDynArray,
  rtkRecord,
  rtkClass,
  rtkInterface,
  rtkPointer,
  rtkMethod,
  rtkProcedure,
  rtkException,
  rtkClassRef
};

enum TKxSchemaDataType : uint8_t {
  xsdComplexType,
  xsdArrayOfSimpleType,
  xsdArrayOfComplexType,
  xsdByte,
  xsdShort,
  xsdInt,
  xsdLong,
  xsdUnsignedByte,
  xsdUnsignedShort,
  xsdUnsignedInt,
  xsdUnsignedLong,
  xsdFloat,
  xsdDouble,
  xsdDecimal,
  xsdString,
  xsdBase64Binary,
  xsdHexBinary,
  xsdBoolean,
  xsdDate,
  xsdTime,
  xsdDateTime,
  xsdDuration
};

enum TKxMainTypeKind : uint8_t {
  mtkUnknown,
  mtkInteger,
  mtkFloat,
  mtkString,
  mtkBoolean,
  mtkDateTime,
  mtkArray,
  mtkStructure,
  mtkOther
};

enum TKxTypeNameType : uint8_t { tntTypeName, tntQualifiedName, tntSchemaName };

enum TKxDataSerializationFormatType : uint8_t { JSON, XML, MIDAS, CUSTOM1, CUSTOM2 };
inline constexpr int KxDataSerializationFormatCount = 5;

inline constexpr const char* SKxFindQTypeNoName =
    "KxFindQType: Failed to get the KxTypeInfo. No Name specified!";
inline constexpr const char* SKxFindQTypeMissing =
    "KxFindQType: Failed to get the KxTypeInfo for %s!";
inline constexpr const char* SKxQSeparatorInTypeName =
    "The Q-Seperator character may not be used in the typename (";
inline constexpr const char* SKxNoTypeKind = "The type %s cannot be converted to a TKxTypeKind!";
inline constexpr const char* SKxNoSchemaType =
    "The given TVarType \"%d\" could not be converted to a valid SchemaType!";
inline constexpr const char* SKxFormatNotSupported = "The format %s is not supported!!";

// The character that joins the parts of a schema name.
inline constexpr char KxQSeparator = '_';

class TKxTypeInfo;
class TKxTypes;

// One registered type. Serializer blocks are the registry's: each is memory from
// std::malloc, freed with std::free when replaced or at shut-down.
struct TKxTypeRec {
  TKxTypeRec* Next = nullptr;
  TKxTypeInfo* Info = nullptr;
  TKxTypeRec* Parent = nullptr;
  std::atomic<void*> Serializers[KxDataSerializationFormatCount] = {};
  // Registration order across all buckets: name lookups answer the oldest record.
  uint32_t Sequence = 0;
};

// What the registry knows of one type. The names, kinds and links are fixed at
// registration; the schema names, the schema data type and the flags may change later and
// are read under the registry's lock.
class KX_API TKxTypeInfo : public TObject {
  KX_CLASS(TKxTypeInfo, TObject)
public:
  // Null for a virtual type.
  PTypeInfo TypeInfo() const { return FTypeInfo; }
  const AnsiString& Name() const { return FName; }
  // The qualified name, also the key of name matches.
  const AnsiString& FullName() const { return FFullName; }
  // Element 0 is the primary schema name, the rest are aliases.
  std::vector<AnsiString> SchemaNames() const;
  TKxTypeKind Kind() const { return FKind; }
  TVarType VarType() const { return FVarType; }
  TKxSchemaDataType SchemaDataType() const {
    return FSchemaDataType.load(std::memory_order_relaxed);
  }
  bool IsRedirected() const { return FIsRedirected; }
  bool IsGeneric() const { return FIsGeneric; }
  // Whether SchemaName qualifies the primary name with a namespace prefix. Set for types
  // whose schema names were calculated from their names; caller-given names stay plain.
  bool NeedsPrefix() const { return FNeedsPrefix.load(std::memory_order_relaxed); }
  void SetNeedsPrefix(bool Value) { FNeedsPrefix.store(Value, std::memory_order_relaxed); }
  bool DefaultSchemaNameSet() const {
    return FDefaultSchemaNameSet.load(std::memory_order_relaxed);
  }
  // The record that owns this info, or the redirect target.
  TKxTypeRec* TypeRec() const { return FTypeRec; }
  TTypeKind RunTimeKind() const { return FRunTimeKind; }

  // The redirect target's schema name; else Prefix:primary when a prefix is given, the
  // type needs one and no default schema name was set; else the primary name.
  AnsiString SchemaName(const AnsiString& Prefix = AnsiString()) const;
  // Name becomes the primary schema name, the previous ones follow in their order.
  void SetDefaultSchemaName(const AnsiString& Name);
  // The entry, named after this type, that stands for SchemaDataType where no language type
  // does; made without type information on first request.
  TKxTypeInfo* VirtualType(TKxSchemaDataType ASchemaDataType);
  bool IsSimpleType() const;
  TKxMainTypeKind MainTypeKind() const;

private:
  friend class TKxTypes;
  TKxTypeInfo() = default;

  TKxTypes* FOwner = nullptr;
  PTypeInfo FTypeInfo = nullptr;
  AnsiString FName;
  AnsiString FFullName;
  std::vector<AnsiString> FSchemaNames;
  TKxTypeKind FKind = rtkUnknown;
  TVarType FVarType = varEmpty;
  std::atomic<TKxSchemaDataType> FSchemaDataType{xsdComplexType};
  bool FIsRedirected = false;
  bool FIsGeneric = false;
  std::atomic<bool> FNeedsPrefix{false};
  std::atomic<bool> FDefaultSchemaNameSet{false};
  TKxTypeRec* FTypeRec = nullptr;
  TTypeKind FRunTimeKind = tkUnknown;
  // The record that owns this info, whatever TypeRec says.
  TKxTypeRec* FOwnRec = nullptr;
};

using TTypeKinds = std::span<const TTypeKind>;

class KX_API TKxTypes : public TObject {
  KX_CLASS(TKxTypes, TObject)
public:
  // Registers the language's types; the first registry made becomes KxTypes().
  TKxTypes();
  ~TKxTypes() override;

  // Registers a type from its type information (names from the record) unless it is known.
  TKxTypeRec* AddTypeInfoTypeRec(PTypeInfo ATypeInfo, TKxTypeKind Kind, TVarType VarType,
                                 TKxSchemaDataType SchemaDataType,
                                 std::vector<AnsiString> SchemaNames);
  // The record whose handle is ATypeInfo, or else whose full name is FullName, within the
  // bucket of RunTimeKind; a new one when there is none. Empty SchemaNames are calculated.
  TKxTypeRec* AddTypeRec(PTypeInfo ATypeInfo, const AnsiString& FullName, const AnsiString& Name,
                         TKxTypeKind Kind, TVarType VarType, TKxSchemaDataType SchemaDataType,
                         std::vector<AnsiString> SchemaNames, TTypeKind RunTimeKind,
                         TKxTypeRec* TargetRec);
  TKxTypeRec* FindTypeRec(PTypeInfo ATypeInfo);
  static TKxTypeInfo* TypeRecPtrToTypeInfo(TKxTypeRec* Rec) { return Rec ? Rec->Info : nullptr; }

  // Names compare ignoring case (a-z); Kinds restricts the buckets searched, in its order.
  TKxTypeInfo* FindByShortName(const AnsiString& Name, TTypeKinds Kinds);
  TKxTypeInfo* FindByFullName(const AnsiString& Name, TTypeKinds Kinds);
  // "prefix:local" is matched on its local part.
  TKxTypeInfo* FindBySchemaName(const AnsiString& Name, TTypeKinds Kinds);

  // The first type registered with that kind.
  TKxTypeInfo* GetTypeInfo(TKxTypeKind Kind);
  TKxTypeInfo* GetTypeInfo(TClass AClass);
  // Null for null; an unknown type is registered on the spot with its calculated name.
  TKxTypeInfo* GetTypeInfo(PTypeInfo ATypeInfo);
  TKxTypeInfo* GetTypeInfo(const AnsiString& Name, TKxTypeNameType NameType, bool RaiseIfMissing,
                           TKxMainTypeKind MainKind);
  TKxTypeKind GetTypeKind(const AnsiString& Name, TKxTypeNameType NameType, TKxTypeKind Default);
  TVarType GetVarType(const AnsiString& Name, TKxTypeNameType NameType, TVarType Default);

  static TKxMainTypeKind ToMainTypeKind(TTypeKind Kind);
  static TKxMainTypeKind ToMainTypeKind(TVarType VarType);
  static TKxMainTypeKind ToMainTypeKind(TKxTypeKind Kind);
  static TKxTypeKind ToTypeKind(TTypeKind Kind);
  static TKxTypeKind ToTypeKind(TVarType VarType);
  static TVarType ToVarType(TTypeKind Kind);
  static TVarType ToVarType(TKxTypeKind Kind);
  static AnsiString ToSchemaType(TVarType VarType, TKxSchemaDataType* SchemaDataType = nullptr);
  static AnsiString ToSchemaType(TKxTypeKind Kind, TKxSchemaDataType* SchemaDataType = nullptr);
  static bool IsSimpleTypeKind(TTypeKind Kind);
  static bool IsSimpleTypeKind(TVarType VarType);
  static bool IsSimpleTypeKind(TKxTypeKind Kind);

  static TKxTypeKind VarTypeKind(const Variant& V);
  static TKxMainTypeKind VarMainTypeKind(const Variant& V);
  static AnsiString VarSchemaType(const Variant& V, TKxSchemaDataType* SchemaDataType = nullptr);
  TKxTypeInfo* VarTypeInfo(const Variant& V);

  // The aliases, with "." turned into "_", become the first schema names; the previous
  // names not among them follow.
  void RegisterTypeAlias(PTypeInfo ATypeInfo, const AnsiString& Alias);
  void RegisterTypeAlias(PTypeInfo ATypeInfo, std::span<const AnsiString> Aliases);
  void RegisterTypeAlias(PTypeInfo ATypeInfo, std::initializer_list<AnsiString> Aliases) {
    RegisterTypeAlias(ATypeInfo, std::span<const AnsiString>(Aliases.begin(), Aliases.size()));
  }
  // Stores a block (std::malloc memory, owned from now on) in the type's slot of Format,
  // freeing the previous one; a null ATypeInfo means TKxNilType, a null block changes
  // nothing. Meant for start-up: a block replaced while another thread reads it is gone.
  void RegisterTypeSerializers(PTypeInfo ATypeInfo, TKxDataSerializationFormatType Format,
                               void* Serializers);
  // The block of the type, else of its nearest ancestor, else TKxNilType's.
  void* FindSerializers(TKxTypeInfo* Info, TKxDataSerializationFormatType Format);

  // The schema name of a type name: generic arguments resolved and joined with "_", the
  // unit's dots turned into "_", a leading T or I of the last part dropped.
  AnsiString CalculateSchemaName(PTypeInfo ATypeInfo, const AnsiString& Name);

private:
  friend class TKxTypeInfo;
  struct TIndex;

  TKxTypeRec* FindInBucket(PTypeInfo ATypeInfo, const AnsiString& FullName, TTypeKind Kind) const;
  TKxTypeInfo* FindByName(int Which, const AnsiString& Name, TTypeKinds Kinds);
  void IndexSchemaNames(TKxTypeRec* Rec, const std::vector<AnsiString>& Names);
  void SetSchemaNames(TKxTypeInfo* Info, std::vector<AnsiString> Names);
  TKxTypeInfo* VirtualType(TKxTypeInfo* Info, TKxSchemaDataType ASchemaDataType);

  TKxMultiReadSingleWrite* FLock;
  TKxTypeRec* FHeads[tkDynArray + 1] = {};
  TKxTypeRec* FTails[tkDynArray + 1] = {};
  std::unique_ptr<TIndex> FIndex;
};

// The registry, made on first use.
KX_API TKxTypes* KxTypes();

// "JSON", "XML", "MIDAS", "CUSTOM1" or "CUSTOM2" in any case; otherwise raises "The format %s
// is not supported!!".
KX_API TKxDataSerializationFormatType GetDataSerializationFormat(const AnsiString& Name);

} // namespace kx

KX_TYPEINFO_ENUM(kx::TKxTypeKind, "uKxTypes", rtkUnknown, rtkByte, rtkWord, rtkLongWord, rtkUInt64,
                 rtkShortInt, rtkSmallInt, rtkLongInt, rtkInt64, rtkSingle, rtkDouble, rtkExtended,
                 rtkChar, rtkAChar, rtkWChar, rtkString, rtkAString, rtkWString, rtkBoolean,
                 rtkEnumeration, rtkSet, rtkDate, rtkTime, rtkDatetime, rtkVariant, rtkArray,
                 rtkDynArray, rtkRecord, rtkClass, rtkInterface, rtkPointer, rtkMethod,
                 rtkProcedure, rtkException, rtkClassRef)
