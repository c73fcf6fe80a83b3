// SPDX-License-Identifier: MIT
// The type registry: buckets per run-time kind, name indexes, schema names and serializers.
#include <kx/rtl/SysUtils.h>
#include <kx/threads/MultiReadSingleWrite.h>
#include <kx/types/SimpleType.h>
#include <kx/types/TypeRegistry.h>
#include <kx/types/TypesConsts.h>

#include "package/Units.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <unordered_map>

namespace kx {

KX_IMPLEMENT_CLASS(TKxTypeInfo, TObject, "uKxTypes")
KX_IMPLEMENT_CLASS(TKxTypes, TObject, "uKxTypes")

namespace {

constexpr int32_t QSeparatorAssertLine = 1517;
constexpr int32_t ToTypeKindAssertLine = 1893;

std::atomic<TKxTypes*> GTypes{nullptr};

std::mutex& CreateLock() {
  static std::mutex Lock; // trivially destructible in practice; never used at shut-down
  return Lock;
}

class TReadLock {
public:
  explicit TReadLock(TKxMultiReadSingleWrite* L) : FLock(L) { FLock->BeginRead(); }
  ~TReadLock() { FLock->EndRead(); }
  TReadLock(const TReadLock&) = delete;
  TReadLock& operator=(const TReadLock&) = delete;

private:
  TKxMultiReadSingleWrite* FLock;
};

class TWriteLock {
public:
  explicit TWriteLock(TKxMultiReadSingleWrite* L) : FLock(L) { FLock->BeginWrite(); }
  ~TWriteLock() { FLock->EndWrite(); }
  TWriteLock(const TWriteLock&) = delete;
  TWriteLock& operator=(const TWriteLock&) = delete;

private:
  TKxMultiReadSingleWrite* FLock;
};

// Index keys: names fold a-z, as the language's identifiers do. Keys are stored folded;
// a lookup folds its name into a buffer on the stack (when it has capitals at all), so the
// table hashes and compares plain bytes.
inline char Folded(char C) {
  return C >= 'A' && C <= 'Z' ? char(C + ('a' - 'A')) : C;
}

AnsiString FoldedKey(std::string_view Name) {
  AnsiString K(Name);
  for (char& C : K) C = Folded(C);
  return K;
}

class TFoldedName {
public:
  explicit TFoldedName(std::string_view Name) : FView(Name) {
    if (std::none_of(Name.begin(), Name.end(), [](char C) { return C >= 'A' && C <= 'Z'; })) return;
    char* Out = FBuffer;
    if (Name.size() > sizeof FBuffer) {
      FLong.resize(Name.size());
      Out = FLong.data();
    }
    for (size_t I = 0; I < Name.size(); ++I) Out[I] = Folded(Name[I]);
    FView = std::string_view(Out, Name.size());
  }
  std::string_view View() const { return FView; }

private:
  std::string_view FView;
  char FBuffer[64];
  AnsiString FLong;
};

struct TKeyHash {
  using is_transparent = void;
  size_t operator()(std::string_view S) const noexcept { return std::hash<std::string_view>()(S); }
};

bool Contains(const AnsiString& S, char C) {
  return S.find(C) != AnsiString::npos;
}

AnsiString Trimmed(std::string_view S) {
  while (!S.empty() && static_cast<unsigned char>(S.front()) <= ' ') S.remove_prefix(1);
  while (!S.empty() && static_cast<unsigned char>(S.back()) <= ' ') S.remove_suffix(1);
  return AnsiString(S);
}

constexpr TTypeKind AllKinds[] = {tkInteger, tkChar,    tkEnumeration, tkFloat,  tkString,
                                  tkSet,     tkClass,   tkMethod,      tkWChar,  tkLString,
                                  tkWString, tkVariant, tkArray,       tkRecord, tkInterface,
                                  tkInt64,   tkDynArray};
constexpr TTypeKind IntegerKinds[] = {tkInteger, tkInt64, tkEnumeration, tkSet, tkVariant};
constexpr TTypeKind FloatKinds[] = {tkFloat, tkVariant};
constexpr TTypeKind StringKinds[] = {tkChar, tkString, tkWChar, tkLString, tkWString, tkVariant};
constexpr TTypeKind BooleanKinds[] = {tkEnumeration, tkVariant};
constexpr TTypeKind DateTimeKinds[] = {tkFloat};
constexpr TTypeKind ArrayKinds[] = {tkArray, tkDynArray};
constexpr TTypeKind StructureKinds[] = {tkClass, tkRecord, tkInterface, tkVariant};
constexpr TTypeKind OtherKinds[] = {tkMethod};

TTypeKinds KindsOf(TKxMainTypeKind MainKind) {
  switch (MainKind) {
  case mtkInteger:
    return IntegerKinds;
  case mtkFloat:
    return FloatKinds;
  case mtkString:
    return StringKinds;
  case mtkBoolean:
    return BooleanKinds;
  case mtkDateTime:
    return DateTimeKinds;
  case mtkArray:
    return ArrayKinds;
  case mtkStructure:
    return StructureKinds;
  case mtkOther:
    return OtherKinds;
  default:
    return AllKinds;
  }
}

enum TNameIndex { niShort, niFull, niSchema };

} // namespace

// The records that bear one name, in registration order, with the set of their run-time
// kinds so that a lookup skips the kinds the name has no record of.
struct TNameEntry {
  uint32_t Kinds = 0;
  std::vector<TKxTypeRec*> Recs;

  TKxTypeRec* First(TTypeKind Kind) const {
    if (Kind > tkDynArray || !(Kinds & (1u << Kind))) return nullptr;
    for (TKxTypeRec* Rec : Recs)
      if (Rec->Info->RunTimeKind() == Kind) return Rec;
    return nullptr;
  }
};

struct TKxTypes::TIndex {
  std::unordered_map<PTypeInfo, TKxTypeRec*> ByHandle;
  std::unordered_map<AnsiString, TNameEntry, TKeyHash, std::equal_to<>> ByName[3];
  // Every record in registration order, and the first of each TKxTypeKind.
  std::vector<TKxTypeRec*> All;
  TKxTypeRec* FirstOfKind[rtkClassRef + 1] = {};

  void Add(TNameIndex Which, const AnsiString& Name, TKxTypeRec* Rec) {
    TNameEntry& Entry = ByName[Which][FoldedKey(Name)];
    std::vector<TKxTypeRec*>& List = Entry.Recs;
    if (std::find(List.begin(), List.end(), Rec) != List.end()) return;
    const auto At = std::upper_bound(List.begin(), List.end(), Rec,
                                     [](auto* A, auto* B) { return A->Sequence < B->Sequence; });
    List.insert(At, Rec);
    Entry.Kinds |= 1u << Rec->Info->RunTimeKind();
  }
  const TNameEntry* Find(TNameIndex Which, std::string_view Name) const {
    const auto It = ByName[Which].find(TFoldedName(Name).View());
    return It == ByName[Which].end() ? nullptr : &It->second;
  }
};

// --- TKxTypeInfo -------------------------------------------------------------------------

std::vector<AnsiString> TKxTypeInfo::SchemaNames() const {
  TReadLock Read(FOwner->FLock);
  return FSchemaNames;
}

AnsiString TKxTypeInfo::SchemaName(const AnsiString& Prefix) const {
  TReadLock Read(FOwner->FLock);
  const TKxTypeInfo* Info = this;
  // Redirects may chain; a cycle cannot be built, but the walk is bounded all the same.
  for (int Hops = 0;
       Info->FIsRedirected && Info->FTypeRec && Info->FTypeRec->Info != Info && Hops < 64; ++Hops)
    Info = Info->FTypeRec->Info;
  const AnsiString Primary = Info->FSchemaNames.empty() ? AnsiString() : Info->FSchemaNames[0];
  if (!Info->DefaultSchemaNameSet() && !Prefix.empty() && Info->NeedsPrefix())
    return Prefix + ":" + Primary;
  return Primary;
}

void TKxTypeInfo::SetDefaultSchemaName(const AnsiString& Name) {
  TWriteLock Write(FOwner->FLock);
  std::vector<AnsiString> Names{Name};
  for (const AnsiString& Old : FSchemaNames)
    if (Old != Name) Names.push_back(Old);
  FOwner->SetSchemaNames(this, std::move(Names));
}

TKxTypeInfo* TKxTypeInfo::VirtualType(TKxSchemaDataType ASchemaDataType) {
  return FOwner->VirtualType(this, ASchemaDataType);
}

bool TKxTypeInfo::IsSimpleType() const {
  return TKxTypes::IsSimpleTypeKind(FKind);
}

TKxMainTypeKind TKxTypeInfo::MainTypeKind() const {
  return TKxTypes::ToMainTypeKind(FKind);
}

// --- TKxTypes: registration ----------------------------------------------------------------

TKxTypes::TKxTypes() : FLock(TKxMultiReadSingleWrite::Create()), FIndex(new TIndex) {
  using namespace detail;
  struct TDefault {
    TBuiltinType Type;
    TKxTypeKind Kind;
    TKxSchemaDataType SchemaDataType;
    TVarType VarType;
    const char* Names[3];
  };
  const TDefault Defaults[] = {
      {btByte, rtkByte, xsdUnsignedByte, varByte, {"unsignedByte"}},
      {btWord, rtkWord, xsdUnsignedShort, varWord, {"unsignedShort"}},
      {btCardinal, rtkLongWord, xsdUnsignedInt, varLongWord, {"unsignedInt", "nonnegativeinteger"}},
      // Unsigned 64-bit values travel as varInt64, singles as doubles.
      {btUInt64, rtkUInt64, xsdUnsignedLong, varInt64, {"unsignedLong"}},
      {btShortInt, rtkShortInt, xsdByte, varShortInt, {"byte"}},
      {btSmallInt, rtkSmallInt, xsdShort, varSmallint, {"short"}},
      {btInteger, rtkLongInt, xsdInt, varInteger, {"int"}},
      {btInt64, rtkInt64, xsdLong, varInt64, {"long"}},
      {btSingle, rtkSingle, xsdFloat, varDouble, {"float"}},
      {btDouble, rtkDouble, xsdDouble, varDouble, {"double"}},
      {btExtended, rtkExtended, xsdDecimal, varDouble, {"decimal"}},
      {btBoolean, rtkBoolean, xsdBoolean, varBoolean, {"boolean"}},
      {btWordBool, rtkBoolean, xsdBoolean, varBoolean, {"boolean"}},
      {btString, rtkString, xsdString, varString, {"string", "any", "anyuri"}},
      {btWideString, rtkWString, xsdString, varOleStr, {"string"}},
      {btWideChar, rtkWChar, xsdString, varOleStr, {"string"}},
      {btChar, rtkAChar, xsdString, varString, {"string"}},
      {btTDate, rtkDate, xsdDate, varDate, {"date"}},
      {btTTime, rtkTime, xsdTime, varDate, {"time"}},
      {btTDateTime, rtkDatetime, xsdDateTime, varDate, {"dateTime"}},
      {btTKxUTCDate, rtkDate, xsdDate, varDate, {"date"}},
      {btTKxUTCTime, rtkTime, xsdTime, varDate, {"time"}},
      {btTKxUTCDateTime, rtkDatetime, xsdDateTime, varDate, {"dateTime"}},
      {btTStringDynArray,
       rtkDynArray,
       xsdArrayOfSimpleType,
       varArray,
       {"ArrayOfString", "StringArray"}},
      {btTIntegerDynArray, rtkDynArray, xsdArrayOfSimpleType, varArray, {"ArrayOfInt", "IntArray"}},
      {btTBooleanDynArray, rtkDynArray, xsdArrayOfSimpleType, varArray, {"ArrayOfBoolean"}},
      {btTDateTimeDynArray, rtkDynArray, xsdArrayOfSimpleType, varArray, {"ArrayOfDateTime"}},
  };
  for (const TDefault& D : Defaults)
    AddTypeInfoTypeRec(
        BuiltinTypeInfo(D.Type), D.Kind, D.VarType, D.SchemaDataType,
        std::vector<AnsiString>(std::begin(D.Names),
                                std::find(std::begin(D.Names), std::end(D.Names), nullptr)));
  TKxTypes* Expected = nullptr;
  GTypes.compare_exchange_strong(Expected, this);
}

TKxTypes::~TKxTypes() {
  TKxTypes* Self = this;
  GTypes.compare_exchange_strong(Self, nullptr);
  for (TKxTypeRec* Rec : FIndex->All) {
    for (auto& Slot : Rec->Serializers) std::free(Slot.load());
    Rec->Info->Free();
    delete Rec;
  }
  FLock->Free();
}

TKxTypeRec* TKxTypes::AddTypeInfoTypeRec(PTypeInfo ATypeInfo, TKxTypeKind Kind, TVarType VarType,
                                         TKxSchemaDataType SchemaDataType,
                                         std::vector<AnsiString> SchemaNames) {
  if (!ATypeInfo) return nullptr;
  return AddTypeRec(ATypeInfo, ATypeInfo->QualifiedName(), ATypeInfo->Name, Kind, VarType,
                    SchemaDataType, std::move(SchemaNames), ATypeInfo->Kind, nullptr);
}

TKxTypeRec* TKxTypes::FindInBucket(PTypeInfo ATypeInfo, const AnsiString& FullName,
                                   TTypeKind Kind) const {
  if (ATypeInfo) {
    const auto It = FIndex->ByHandle.find(ATypeInfo);
    if (It != FIndex->ByHandle.end() && It->second->Info->FRunTimeKind == Kind) return It->second;
  }
  const TNameEntry* Entry = FIndex->Find(niFull, FullName);
  return Entry ? Entry->First(Kind) : nullptr;
}

TKxTypeRec* TKxTypes::AddTypeRec(PTypeInfo ATypeInfo, const AnsiString& FullName,
                                 const AnsiString& Name, TKxTypeKind Kind, TVarType VarType,
                                 TKxSchemaDataType SchemaDataType,
                                 std::vector<AnsiString> SchemaNames, TTypeKind RunTimeKind,
                                 TKxTypeRec* TargetRec) {
  if (RunTimeKind > tkDynArray) RunTimeKind = tkUnknown;
  {
    TReadLock Read(FLock);
    if (TKxTypeRec* Rec = FindInBucket(ATypeInfo, FullName, RunTimeKind)) return Rec;
  }
  // Names and the parent are resolved before the write lock: both may look types up, or
  // register the ancestors of a class.
  const bool Calculated = SchemaNames.empty();
  if (Calculated) SchemaNames.push_back(CalculateSchemaName(ATypeInfo, FullName));
  TKxTypeRec* Parent = nullptr;
  if (ATypeInfo && ATypeInfo->Kind == tkClass)
    if (PTypeInfo ParentInfo = ATypeInfo->ParentInfo())
      if (TKxTypeInfo* P = GetTypeInfo(ParentInfo)) Parent = P->FOwnRec;

  TWriteLock Write(FLock);
  if (TKxTypeRec* Rec = FindInBucket(ATypeInfo, FullName, RunTimeKind)) return Rec;
  auto* Rec = new TKxTypeRec;
  auto* Info = new TKxTypeInfo;
  Rec->Info = Info;
  Rec->Parent = Parent;
  Info->FOwner = this;
  Info->FTypeInfo = ATypeInfo;
  Info->FName = Name;
  Info->FFullName = FullName;
  Info->FSchemaNames = std::move(SchemaNames);
  Info->FSchemaDataType = SchemaDataType;
  Info->FKind = Kind;
  Info->FVarType = VarType;
  Info->FRunTimeKind = RunTimeKind;
  Info->FIsGeneric = Contains(FullName, '<');
  Info->FIsRedirected = TargetRec != nullptr;
  Info->FTypeRec = TargetRec ? TargetRec : Rec;
  Info->FOwnRec = Rec;
  Info->FNeedsPrefix = Calculated;
  Rec->Sequence = uint32_t(FIndex->All.size());

  FIndex->All.push_back(Rec);
  if (!FHeads[RunTimeKind]) FHeads[RunTimeKind] = Rec;
  if (FTails[RunTimeKind]) FTails[RunTimeKind]->Next = Rec;
  FTails[RunTimeKind] = Rec;
  if (ATypeInfo) FIndex->ByHandle.emplace(ATypeInfo, Rec);
  FIndex->Add(niShort, Name, Rec);
  FIndex->Add(niFull, FullName, Rec);
  IndexSchemaNames(Rec, Info->FSchemaNames);
  if (Kind <= rtkClassRef && !FIndex->FirstOfKind[Kind]) FIndex->FirstOfKind[Kind] = Rec;
  return Rec;
}

void TKxTypes::IndexSchemaNames(TKxTypeRec* Rec, const std::vector<AnsiString>& Names) {
  for (const AnsiString& N : Names) FIndex->Add(niSchema, N, Rec);
}

void TKxTypes::SetSchemaNames(TKxTypeInfo* Info, std::vector<AnsiString> Names) {
  Info->FSchemaNames = std::move(Names);
  Info->FDefaultSchemaNameSet = true;
  IndexSchemaNames(Info->FOwnRec, Info->FSchemaNames);
}

void TKxTypes::RegisterTypeAlias(PTypeInfo ATypeInfo, const AnsiString& Alias) {
  RegisterTypeAlias(ATypeInfo, std::span<const AnsiString>(&Alias, 1));
}

void TKxTypes::RegisterTypeAlias(PTypeInfo ATypeInfo, std::span<const AnsiString> Aliases) {
  TKxTypeInfo* Info = GetTypeInfo(ATypeInfo);
  if (!Info) return;
  TWriteLock Write(FLock);
  std::vector<AnsiString> Names;
  for (AnsiString A : Aliases) {
    std::replace(A.begin(), A.end(), '.', KxQSeparator);
    Names.push_back(std::move(A));
  }
  for (const AnsiString& Old : Info->FSchemaNames)
    if (std::find(Names.begin(), Names.end(), Old) == Names.end()) Names.push_back(Old);
  SetSchemaNames(Info, std::move(Names));
}

void TKxTypes::RegisterTypeSerializers(PTypeInfo ATypeInfo, TKxDataSerializationFormatType Format,
                                       void* Serializers) {
  if (!ATypeInfo) ATypeInfo = TypeInfo<TKxNilType>();
  TKxTypeRec* Rec = FindTypeRec(ATypeInfo);
  if (!Rec) Rec = AddTypeInfoTypeRec(ATypeInfo, rtkUnknown, varEmpty, xsdComplexType, {});
  if (!Serializers || Format >= KxDataSerializationFormatCount) return;
  std::free(Rec->Serializers[Format].exchange(Serializers));
}

void* TKxTypes::FindSerializers(TKxTypeInfo* Info, TKxDataSerializationFormatType Format) {
  if (!Info || Format >= KxDataSerializationFormatCount) return nullptr;
  // Parents are fixed at registration, so the walk needs no lock.
  for (TKxTypeRec* Rec = Info->FTypeRec; Rec; Rec = Rec->Parent)
    if (void* Found = Rec->Serializers[Format].load()) return Found;
  if (Info->FName == "TKxNilType") return nullptr;
  return FindSerializers(GetTypeInfo(TypeInfo<TKxNilType>()), Format);
}

TKxTypeInfo* TKxTypes::VirtualType(TKxTypeInfo* Info, TKxSchemaDataType ASchemaDataType) {
  TTypeKind Kind;
  switch (ASchemaDataType) {
  case xsdArrayOfSimpleType:
  case xsdArrayOfComplexType:
    Kind = tkDynArray;
    break;
  case xsdByte:
  case xsdShort:
  case xsdInt:
  case xsdUnsignedByte:
  case xsdUnsignedShort:
  case xsdUnsignedInt:
    Kind = tkInteger;
    break;
  case xsdLong:
  case xsdUnsignedLong:
    Kind = tkInt64;
    break;
  case xsdFloat:
  case xsdDouble:
  case xsdDecimal:
  case xsdDate:
  case xsdTime:
  case xsdDateTime:
    Kind = tkFloat;
    break;
  case xsdString:
    Kind = tkString;
    break;
  case xsdBase64Binary:
  case xsdHexBinary:
    Kind = tkLString;
    break;
  case xsdBoolean:
    Kind = tkEnumeration;
    break;
  default:
    Kind = tkClass;
  }
  TKxTypeRec* Rec;
  {
    TReadLock Read(FLock);
    Rec = FindInBucket(nullptr, Info->FFullName, Kind);
  }
  if (!Rec)
    Rec = AddTypeRec(nullptr, Info->FFullName, Info->FName, ToTypeKind(Kind), ToVarType(Kind),
                     ASchemaDataType, Info->SchemaNames(), Kind, nullptr);
  Rec->Info->FSchemaDataType = ASchemaDataType;
  return Rec->Info;
}

// --- TKxTypes: lookups ---------------------------------------------------------------------

TKxTypeRec* TKxTypes::FindTypeRec(PTypeInfo ATypeInfo) {
  if (!ATypeInfo) return nullptr;
  TReadLock Read(FLock);
  const auto It = FIndex->ByHandle.find(ATypeInfo);
  if (It != FIndex->ByHandle.end()) return It->second;
  // The same type seen through another module's record.
  return FindInBucket(nullptr, ATypeInfo->QualifiedName(), ATypeInfo->Kind);
}

TKxTypeInfo* TKxTypes::FindByName(int Which, const AnsiString& Name, TTypeKinds Kinds) {
  std::string_view N = Name;
  if (Which == niSchema)
    if (const size_t Colon = N.find(':'); Colon != std::string_view::npos)
      N.remove_prefix(Colon + 1);
  TReadLock Read(FLock);
  const TNameEntry* Entry = FIndex->Find(TNameIndex(Which), N);
  if (!Entry) return nullptr;
  uint32_t Asked = 0;
  for (TTypeKind Kind : Kinds)
    if (Kind <= tkDynArray) Asked |= 1u << Kind;
  const uint32_t Hit = Entry->Kinds & Asked;
  if (!Hit) return nullptr;
  // Mostly a name has records of one kind only; then the order of Kinds does not matter.
  if (!(Hit & (Hit - 1))) return Entry->First(TTypeKind(std::countr_zero(Hit)))->Info;
  for (TTypeKind Kind : Kinds)
    if (TKxTypeRec* Rec = Entry->First(Kind)) return Rec->Info;
  return nullptr;
}

TKxTypeInfo* TKxTypes::FindByShortName(const AnsiString& Name, TTypeKinds Kinds) {
  return FindByName(niShort, Name, Kinds);
}

TKxTypeInfo* TKxTypes::FindByFullName(const AnsiString& Name, TTypeKinds Kinds) {
  return FindByName(niFull, Name, Kinds);
}

TKxTypeInfo* TKxTypes::FindBySchemaName(const AnsiString& Name, TTypeKinds Kinds) {
  return FindByName(niSchema, Name, Kinds);
}

TKxTypeInfo* TKxTypes::GetTypeInfo(TKxTypeKind Kind) {
  if (Kind > rtkClassRef) return nullptr;
  TReadLock Read(FLock);
  return TypeRecPtrToTypeInfo(FIndex->FirstOfKind[Kind]);
}

TKxTypeInfo* TKxTypes::GetTypeInfo(TClass AClass) {
  return GetTypeInfo(GetClassTypeInfo(AClass));
}

TKxTypeInfo* TKxTypes::GetTypeInfo(PTypeInfo ATypeInfo) {
  if (!ATypeInfo) return nullptr;
  if (TKxTypeRec* Rec = FindTypeRec(ATypeInfo)) return Rec->Info;
  return TypeRecPtrToTypeInfo(
      AddTypeInfoTypeRec(ATypeInfo, rtkUnknown, varEmpty, xsdComplexType, {}));
}

TKxTypeInfo* TKxTypes::GetTypeInfo(const AnsiString& Name, TKxTypeNameType NameType,
                                   bool RaiseIfMissing, TKxMainTypeKind MainKind) {
  if (Name.empty()) {
    if (RaiseIfMissing) throw Exception(SKxFindQTypeNoName);
    return nullptr;
  }
  const TTypeKinds Kinds = KindsOf(MainKind);
  TKxTypeInfo* Info = NameType == tntTypeName        ? FindByShortName(Name, Kinds)
                      : NameType == tntQualifiedName ? FindByFullName(Name, Kinds)
                                                     : FindBySchemaName(Name, Kinds);
  if (!Info && RaiseIfMissing) throw Exception(SKxFindQTypeMissing, {Name});
  return Info;
}

TKxTypeKind TKxTypes::GetTypeKind(const AnsiString& Name, TKxTypeNameType NameType,
                                  TKxTypeKind Default) {
  TKxTypeInfo* Info = GetTypeInfo(Name, NameType, false, mtkUnknown);
  return Info ? Info->Kind() : Default;
}

TVarType TKxTypes::GetVarType(const AnsiString& Name, TKxTypeNameType NameType, TVarType Default) {
  TKxTypeInfo* Info = GetTypeInfo(Name, NameType, false, mtkUnknown);
  return Info ? Info->VarType() : Default;
}

// --- schema names --------------------------------------------------------------------------

AnsiString TKxTypes::CalculateSchemaName(PTypeInfo ATypeInfo, const AnsiString& Name) {
  if (Contains(Name, KxQSeparator)) {
    if (!ATypeInfo)
      KxAssert(false, AnsiString(SKxQSeparatorInTypeName) + Name + ")", STypesUnit,
               QSeparatorAssertLine);
    return ATypeInfo ? AnsiString(ATypeInfo->Name) : AnsiString();
  }
  AnsiString Base = Name, Suffix;
  if (Contains(Name, '<')) {
    std::vector<AnsiString> Pieces(1);
    for (char C : Name)
      if (C == '<' || C == ',')
        Pieces.emplace_back();
      else
        Pieces.back() += C;
    Base = Pieces[0];
    for (size_t I = 1; I < Pieces.size(); ++I) {
      AnsiString Piece = Pieces[I];
      Piece.erase(std::remove(Piece.begin(), Piece.end(), '>'), Piece.end());
      Piece = Trimmed(Piece);
      TKxTypeInfo* Known = GetTypeInfo(Piece, tntQualifiedName, false, mtkUnknown);
      const AnsiString Resolved =
          Known ? Known->SchemaName(AnsiString()) : CalculateSchemaName(ATypeInfo, Piece);
      if (I > 1) Suffix += KxQSeparator;
      Suffix += Resolved;
    }
  }
  std::vector<AnsiString> Segments(1);
  for (char C : Base)
    if (C == '.')
      Segments.emplace_back();
    else
      Segments.back() += C;
  AnsiString& Last = Segments.back();
  if (!Last.empty() && (Last[0] == 'T' || Last[0] == 'I')) Last.erase(0, 1);
  AnsiString Result;
  for (size_t I = 0; I < Segments.size(); ++I) {
    if (I) Result += KxQSeparator;
    Result += Segments[I];
  }
  if (!Suffix.empty()) Result.append(1, KxQSeparator).append(Suffix);
  return Result;
}

// --- conversions ---------------------------------------------------------------------------

TKxTypeKind TKxTypes::ToTypeKind(TTypeKind Kind) {
  static constexpr TKxTypeKind Map[] = {
      rtkUnknown, rtkLongInt, rtkChar,   rtkEnumeration, rtkExtended, rtkString,
      rtkSet,     rtkClass,   rtkMethod, rtkWChar,       rtkAString,  rtkWString,
      rtkVariant, rtkArray,   rtkRecord, rtkInterface,   rtkInt64,    rtkDynArray};
  if (Kind < std::size(Map)) return Map[Kind];
  AnsiString KindName = GetEnumName(TypeInfo<TTypeKind>(), Kind);
  if (KindName.empty()) KindName = IntToStr(int32_t(Kind));
  KxAssert(false, Format(SKxNoTypeKind, {KindName}), STypesUnit, ToTypeKindAssertLine);
  return rtkUnknown;
}

TKxTypeKind TKxTypes::ToTypeKind(TVarType VarType) {
  if (VarType & varArray) return rtkDynArray;
  switch (VarType) {
  case varSmallint:
    return rtkSmallInt;
  case varInteger:
    return rtkLongInt;
  case varSingle:
    return rtkSingle;
  case varDouble:
    return rtkDouble;
  case varCurrency:
    return rtkExtended;
  case varDate:
    return rtkDatetime;
  case varOleStr:
  case varStrArg:
    return rtkWString;
  case varDispatch:
  case varUnknown:
    return rtkInterface;
  case varBoolean:
    return rtkBoolean;
  case varVariant:
  case varAny:
    return rtkVariant;
  case varDecimal:
    return rtkDouble;
  case varShortInt:
    return rtkShortInt;
  case varByte:
    return rtkByte;
  case varWord:
    return rtkWord;
  case varLongWord:
    return rtkLongWord;
  case varInt64:
    return rtkInt64;
  case varString:
    return rtkString;
  default:
    return rtkUnknown;
  }
}

TKxMainTypeKind TKxTypes::ToMainTypeKind(TKxTypeKind Kind) {
  switch (Kind) {
  case rtkUnknown:
    return mtkUnknown;
  case rtkByte:
  case rtkWord:
  case rtkLongWord:
  case rtkUInt64:
  case rtkShortInt:
  case rtkSmallInt:
  case rtkLongInt:
  case rtkInt64:
    return mtkInteger;
  case rtkSingle:
  case rtkDouble:
  case rtkExtended:
    return mtkFloat;
  case rtkChar:
  case rtkAChar:
  case rtkWChar:
  case rtkString:
  case rtkAString:
  case rtkWString:
    return mtkString;
  case rtkBoolean:
    return mtkBoolean;
  case rtkDate:
  case rtkTime:
  case rtkDatetime:
    return mtkDateTime;
  case rtkArray:
  case rtkDynArray:
    return mtkArray;
  case rtkRecord:
  case rtkClass:
  case rtkInterface:
  case rtkException:
    return mtkStructure;
  default:
    return mtkOther;
  }
}

TKxMainTypeKind TKxTypes::ToMainTypeKind(TTypeKind Kind) {
  return ToMainTypeKind(ToTypeKind(Kind));
}

TKxMainTypeKind TKxTypes::ToMainTypeKind(TVarType VarType) {
  return ToMainTypeKind(ToTypeKind(VarType));
}

TVarType TKxTypes::ToVarType(TKxTypeKind Kind) {
  switch (Kind) {
  case rtkByte:
    return varByte;
  case rtkWord:
    return varWord;
  case rtkLongWord:
    return varLongWord;
  case rtkUInt64:
  case rtkInt64:
    return varInt64;
  case rtkShortInt:
    return varShortInt;
  case rtkSmallInt:
    return varSmallint;
  case rtkLongInt:
  case rtkEnumeration:
  case rtkSet:
    return varInteger;
  case rtkSingle:
  case rtkDouble:
  case rtkExtended:
    return varDouble;
  case rtkChar:
  case rtkAChar:
  case rtkString:
  case rtkAString:
    return varString;
  case rtkWChar:
  case rtkWString:
    return varOleStr;
  case rtkBoolean:
    return varBoolean;
  case rtkDate:
  case rtkTime:
  case rtkDatetime:
    return varDate;
  case rtkVariant:
    return varVariant;
  case rtkArray:
  case rtkDynArray:
    return varArray;
  case rtkInterface:
    return varUnknown;
  default:
    return varEmpty;
  }
}

TVarType TKxTypes::ToVarType(TTypeKind Kind) {
  return ToVarType(ToTypeKind(Kind));
}

AnsiString TKxTypes::ToSchemaType(TKxTypeKind Kind, TKxSchemaDataType* SchemaDataType) {
  const auto Answer = [&](const char* Name, TKxSchemaDataType Type) {
    if (SchemaDataType) *SchemaDataType = Type;
    return AnsiString(Name);
  };
  switch (Kind) {
  case rtkByte:
    return Answer("unsignedByte", xsdUnsignedByte);
  case rtkWord:
    return Answer("unsignedShort", xsdUnsignedShort);
  case rtkLongWord:
    return Answer("unsignedInt", xsdUnsignedInt);
  case rtkUInt64:
    return Answer("unsignedLong", xsdUnsignedLong);
  case rtkShortInt:
    return Answer("byte", xsdByte);
  case rtkSmallInt:
    return Answer("short", xsdShort);
  case rtkLongInt:
    return Answer("int", xsdInt);
  case rtkInt64:
    return Answer("long", xsdLong);
  case rtkSingle:
    return Answer("float", xsdFloat);
  case rtkDouble:
    return Answer("double", xsdDouble);
  case rtkExtended:
    return Answer("decmimal", xsdDecimal); // the registry itself says "decimal"
  case rtkChar:
  case rtkAChar:
  case rtkWChar:
  case rtkString:
  case rtkWString:
    return Answer("string", xsdString);
  case rtkAString:
    return Answer("base64Binary", xsdBase64Binary);
  case rtkBoolean:
    return Answer("boolean", xsdBoolean);
  case rtkDate:
    return Answer("date", xsdDate);
  case rtkTime:
    return Answer("time", xsdTime);
  case rtkDatetime:
    return Answer("dateTime", xsdDateTime);
  default:
    return Answer("any", xsdComplexType);
  }
}

AnsiString TKxTypes::ToSchemaType(TVarType VarType, TKxSchemaDataType* SchemaDataType) {
  if (VarType & varArray) {
    AnsiString Element = ToSchemaType(TVarType(VarType - varArray), nullptr);
    if (!Element.empty() && Element[0] >= 'a' && Element[0] <= 'z')
      Element[0] = char(Element[0] - 32);
    if (SchemaDataType) *SchemaDataType = xsdArrayOfSimpleType;
    return "ArrayOf" + Element;
  }
  const auto Answer = [&](const char* Name, TKxSchemaDataType Type) {
    if (SchemaDataType) *SchemaDataType = Type;
    return AnsiString(Name);
  };
  switch (VarType) {
  case varNull:
  case varAny:
    return Answer("any", xsdComplexType);
  case varSmallint:
    return Answer("short", xsdShort);
  case varInteger:
    return Answer("int", xsdInt);
  case varSingle:
    return Answer("float", xsdFloat);
  case varDouble:
  case varCurrency:
    return Answer("double", xsdDouble);
  case varDate:
    return Answer("dateTime", xsdDateTime);
  case varOleStr:
  case varString:
    return Answer("string", xsdString);
  case varBoolean:
    return Answer("boolean", xsdBoolean);
  case varShortInt:
  case varByte:
    return Answer("byte", xsdByte);
  case varWord:
    return Answer("unsignedShort", xsdUnsignedShort);
  case varLongWord:
    return Answer("unsignedInt", xsdUnsignedInt);
  case varInt64:
    return Answer("long", xsdLong);
  default:
    throw Exception(SKxNoSchemaType, {int32_t(VarType)});
  }
}

bool TKxTypes::IsSimpleTypeKind(TKxTypeKind Kind) {
  switch (ToMainTypeKind(Kind)) {
  case mtkInteger:
  case mtkFloat:
  case mtkString:
  case mtkBoolean:
  case mtkDateTime:
    return true;
  default:
    return false;
  }
}

bool TKxTypes::IsSimpleTypeKind(TTypeKind Kind) {
  return IsSimpleTypeKind(ToTypeKind(Kind));
}

bool TKxTypes::IsSimpleTypeKind(TVarType VarType) {
  return IsSimpleTypeKind(ToTypeKind(VarType));
}

TKxTypeKind TKxTypes::VarTypeKind(const Variant& V) {
  return ToTypeKind(kx::VarType(V));
}

TKxMainTypeKind TKxTypes::VarMainTypeKind(const Variant& V) {
  return ToMainTypeKind(kx::VarType(V));
}

AnsiString TKxTypes::VarSchemaType(const Variant& V, TKxSchemaDataType* SchemaDataType) {
  return ToSchemaType(kx::VarType(V), SchemaDataType);
}

TKxTypeInfo* TKxTypes::VarTypeInfo(const Variant& V) {
  return GetTypeInfo(VarTypeKind(V));
}

// --- the singleton and the formats ---------------------------------------------------------

TKxTypes* KxTypes() {
  if (TKxTypes* Types = GTypes.load(std::memory_order_acquire)) return Types;
  std::lock_guard Guard(CreateLock());
  if (TKxTypes* Types = GTypes.load(std::memory_order_acquire)) return Types;
  TKxTypes* Made = TKxTypes::Create(); // publishes itself
  TKxTypes* Types = GTypes.load(std::memory_order_acquire);
  if (Types != Made) Made->Free();
  return Types;
}

TKxDataSerializationFormatType GetDataSerializationFormat(const AnsiString& Name) {
  static constexpr const char* Names[] = {"JSON", "XML", "MIDAS", "CUSTOM1", "CUSTOM2"};
  for (int I = 0; I < KxDataSerializationFormatCount; ++I)
    if (SameText(Name, Names[I])) return TKxDataSerializationFormatType(I);
  throw Exception(SKxFormatNotSupported, {Name});
}

namespace detail {

void uKxTypes_Finalize() {
  if (TKxTypes* Types = GTypes.exchange(nullptr)) Types->Free();
}

} // namespace detail

} // namespace kx
