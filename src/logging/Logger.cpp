// SPDX-License-Identifier: MIT
// The logger tree, dispatch up the tree, log records and payload texts.
#include <kx/logging/LogBase.h>
#include <kx/logging/Logger.h>
#include <kx/rtl/Component.h>
#include <kx/rtl/DateTimeText.h>
#include <kx/rtl/SysUtils.h>
#include <kx/sysutils/SystemInfo.h>
#include <kx/types/VariantConversion.h>
#include <kx/windows/Environment.h>

#include "platform/Host.h"
#include "platform/Platform.h"

#include <mutex>

namespace kx {

KX_IMPLEMENT_CLASS(TKxLoggerList, TObject, "uKxLogger")
KX_IMPLEMENT_CLASS(TKxLogger, TKxInterfacedObject, "uKxLogger")
KX_IMPLEMENT_CLASS(TKxLogData, TKxInterfacedObject, "uKxLogger")

const char16_t* const KxLogLevelNames[8] = {u"All",  u"Trace", u"Debug", u"Info",
                                            u"Warn", u"Error", u"Fatal", u"Disabled"};

namespace {

// The root, made on first use and forgotten when it is freed.
std::atomic<TKxLogger*> RootLogger{nullptr};
std::mutex& RootMutex() {
  static std::mutex M;
  return M;
}

constexpr int32_t AssertLine = 0;

[[noreturn]] void RaiseLockFailed(const UnicodeString& LockName) {
  throw Exception(Format(SKxLockFailed, {UnicodeToAnsi(LockName)}));
}

} // namespace

// --- payloads --------------------------------------------------------------------------------

TKxDataRec TKxDataRec::FromVariant(const Variant& V) {
  TKxDataRec R;
  R.Kind = rtkVariant;
  R.Var = V;
  return R;
}

TKxDataRec TKxDataRec::FromObject(TObject* O) {
  TKxDataRec R;
  R.Kind = rtkClass;
  R.Obj = O;
  return R;
}

TKxDataRec TKxDataRec::FromException(const Exception& E) {
  TKxDataRec R;
  R.Kind = rtkException;
  R.Exc = &E;
  return R;
}

namespace {

void DumpObject(UnicodeString& Out, TObject* Obj, const UnicodeString& Indent) {
  const UnicodeString LineBreak = AnsiToUnicode(sLineBreak);
  Out += LineBreak;
  Out += Indent;
  TKxPublishedProperties Props;
  if (auto* Comp = dynamic_cast<TComponent*>(Obj)) {
    Out += u"object " + AnsiToUnicode(Comp->Name()) + u": " + AnsiToUnicode(Obj->ClassName());
    Props.push_back({"Name", TKxPublishedProperty::ppValue, AnsiToUnicode(Comp->Name()), nullptr});
  } else {
    Out += u"object : " + AnsiToUnicode(Obj->ClassName());
  }
  if (auto* Source = dynamic_cast<IKxPublishedProperties*>(Obj))
    Source->GetPublishedProperties(Props);
  const UnicodeString Deeper = Indent + u"  ";
  for (const TKxPublishedProperty& P : Props) {
    if (P.Kind == TKxPublishedProperty::ppEvent) continue;
    Out += LineBreak;
    Out += Deeper;
    Out += AnsiToUnicode(P.Name);
    Out += u" = ";
    if (P.Kind == TKxPublishedProperty::ppObject) {
      if (P.Object) DumpObject(Out, P.Object, Deeper + u"  ");
    } else {
      Out += P.Value;
    }
  }
}

UnicodeString Widen(const AnsiString& S) {
  return AnsiToUnicode(S);
}

} // namespace

UnicodeString KxDataRecToString(const TKxDataRec* Rec) {
  if (!Rec) return UnicodeString();
  switch (Rec->Kind) {
  case rtkByte:
  case rtkWord:
  case rtkShortInt:
  case rtkSmallInt:
  case rtkLongInt:
  case rtkInt64:
    return Widen(IntToStr(Rec->Int));
  case rtkLongWord:
    return Widen(std::to_string(static_cast<uint64_t>(static_cast<uint32_t>(Rec->Int))));
  case rtkSingle:
  case rtkDouble:
  case rtkExtended:
    return Format(u"%f", {Rec->Float});
  case rtkChar:
  case rtkAChar:
  case rtkWChar:
    return UnicodeString(1, Rec->Char);
  case rtkString:
  case rtkAString:
  case rtkWString:
    return Rec->Str;
  case rtkBoolean:
    return Rec->Int ? u"True" : u"False";
  case rtkEnumeration:
  case rtkSet:
    return Widen(IntToStr(Rec->Int));
  case rtkDate:
    return Widen(DateToStr(TDateTime(Rec->Float)));
  case rtkTime:
    return Widen(TimeToStr(TDateTime(Rec->Float)));
  case rtkDatetime:
    return Widen(DateTimeToStr(TDateTime(Rec->Float)));
  case rtkVariant:
    return KxVarToWStr(Rec->Var, UnicodeString(), false);
  case rtkArray:
    return u"Array";
  case rtkDynArray:
    return u"DynArray";
  case rtkRecord:
    return u"Record";
  case rtkMethod:
    return u"Method";
  case rtkProcedure:
    return u"Procedure";
  case rtkClass: {
    if (!Rec->Obj) return UnicodeString();
    UnicodeString Out;
    DumpObject(Out, Rec->Obj, UnicodeString());
    return Out;
  }
  case rtkInterface:
  case rtkPointer:
    return Widen(IntToHex(static_cast<int64_t>(reinterpret_cast<uintptr_t>(Rec->Ptr)), 8));
  case rtkException:
    return Rec->Exc ? Widen(Rec->Exc->ClassName()) + u":" + Widen(Rec->Exc->Message())
                    : UnicodeString();
  case rtkClassRef:
    return Rec->Cls ? Widen(Rec->Cls->ClassName()) : UnicodeString();
  default:
    return u"unknown";
  }
}

AnsiString KxOSName(uint32_t VersionCode) {
  switch (VersionCode) {
  case 1:
    return "Win 3.1";
  case 3:
    return "Windows 95";
  case 5:
    return "Windows 95 OSR2";
  case 7:
    return "Windows 98";
  case 9:
    return "Windows 98 SE";
  case 11:
    return "Windows Milennium";
  case 12:
    return "Windows NT";
  case 14:
    return "Windows NT 3.0";
  case 16:
    return "Windows NT 4.0";
  case 500:
    return "Windows 2000";
  case 511:
    return "Windows XP";
  case 520:
    return "Windows Server 2003";
  case 601:
    return "Vista";
  case 611:
    return "Windows 7";
  case 621:
    return "Windows 8";
  default:
    return "Unidentified OS";
  }
}

// --- TKxLoggerList ---------------------------------------------------------------------------

TKxLoggerList::TKxLoggerList(TKxLogger* AOwner)
    : FOwner(AOwner), FLock(TKxCriticalSection::Create()) {}

TKxLoggerList::~TKxLoggerList() {
  FreeAndNil(FLock);
}

UnicodeString TKxLoggerList::LockName() const {
  // Every operation shares this label, the add and the search included.
  return (FOwner ? FOwner->FFullName : UnicodeString()) + u".LoggerList.Remove";
}

bool TKxLoggerList::Lock(const UnicodeString& Name, bool RaiseOnFailure) {
  if (FLock->TryEnter(KxLoggerListTimeout)) return true;
  if (RaiseOnFailure) RaiseLockFailed(Name);
  return false;
}

void TKxLoggerList::Unlock() {
  FLock->Leave();
}

void TKxLoggerList::Add(TKxLogger* Logger) {
  Lock(LockName(), true);
  FList.push_back(Logger);
  Unlock();
}

void TKxLoggerList::Remove(TKxLogger* Logger) {
  Lock(LockName(), true);
  for (size_t I = FList.size(); I-- > 0;)
    if (FList[I] == Logger) FList.erase(FList.begin() + std::ptrdiff_t(I));
  Unlock();
}

TKxLogger* TKxLoggerList::Find(const UnicodeString& FullName) {
  Lock(LockName(), true);
  TKxLogger* Found = nullptr;
  for (TKxLogger* L : FList)
    if (L->FFullName == FullName) {
      Found = L;
      break;
    }
  Unlock();
  return Found;
}

IPtr<IKxLogger> TKxLoggerList::FindReferenced(const UnicodeString& FullName) {
  Lock(LockName(), true);
  IPtr<IKxLogger> Found;
  for (TKxLogger* L : FList) {
    if (L->FFullName != FullName) continue;
    // A logger whose count reached 0 is on its way out (it leaves the list under this lock):
    // it is passed over rather than revived.
    int32_t Count = L->FRefCount.load();
    while (Count > 0 && !L->FRefCount.compare_exchange_weak(Count, Count + 1)) {
    }
    if (Count > 0) {
      Found = IPtr<IKxLogger>::Attach(static_cast<IKxLogger*>(L));
      break;
    }
  }
  Unlock();
  return Found;
}

int32_t TKxLoggerList::Count() {
  Lock(LockName(), true);
  const auto N = static_cast<int32_t>(FList.size());
  Unlock();
  return N;
}

TKxLogger* TKxLoggerList::Items(int32_t Index) {
  Lock(LockName(), true);
  TKxLogger* L = Index >= 0 && size_t(Index) < FList.size() ? FList[size_t(Index)] : nullptr;
  Unlock();
  if (!L) TList::Error(SListIndexError, Index);
  return L;
}

// --- TKxLogger -------------------------------------------------------------------------------

TKxLogger::TKxLogger(TKxLogger* AParent, const UnicodeString& AName)
    : FName(AName), FLock(TKxCriticalSection::Create()),
      FFullName(AParent ? AParent->FFullName + u"." + AName : UnicodeString(u"root")),
      FParent(AParent) {
  if (!AParent) FName = u"root";
  FAppenders = TKxLogAppenderList::Create(this);
  if (AParent) FParentIntf = static_cast<IKxLogger*>(AParent);
  FChildLoggers = TKxLoggerList::Create(this);
}

TKxLogger::~TKxLogger() {
  FParentIntf.Reset();
  if (FAppenders) FAppenders->Free();
  FreeAndNil(FChildLoggers);
  FreeAndNil(FLock);
}

void TKxLogger::AfterConstruction() {
  TKxInterfacedObject::AfterConstruction();
  if (FParent) {
    Lock(FFullName + u".AfterConstruction", true);
    FParent->FChildLoggers->Add(this);
    Unlock();
  }
}

void TKxLogger::BeforeDestruction() {
  Lock(FFullName + u".BeforeDestruction", true);
  try {
    // Configured children die with their parent; their references are the parent's.
    ReleaseConfiguredLoggers();
    if (FParent && FParentIntf) FParent->FChildLoggers->Remove(this);
    ClearChildren();
    FConfigurator.Reset();
  } catch (...) {
    Unlock();
    throw;
  }
  Unlock();
  if (FRefCount.load() != 0)
    KxAssertFailed(UnicodeToAnsi(Format(AnsiToUnicode(SKxLoggerRefCount), {FFullName})),
                   SKxLoggerUnit, AssertLine);
  TKxLogger* Self = this;
  RootLogger.compare_exchange_strong(Self, nullptr);
}

void TKxLogger::ReleaseConfiguredLoggers() {
  Lock(FFullName + u".ReleaseConfiguredLoggers", true);
  std::vector<IPtr<IKxLogger>> Configured;
  Configured.swap(FConfiguredLoggers);
  Unlock();
  Configured.clear();
}

void TKxLogger::ClearChildren() {
  TKxLoggerList* List = FChildLoggers;
  List->Lock(List->LockName(), true);
  std::vector<TKxLogger*> Children;
  Children.swap(List->FList);
  List->Unlock();
  for (size_t I = Children.size(); I-- > 0;) {
    TKxLogger* Child = Children[I];
    Child->FParent = nullptr;
    // The last reference of the child to this logger; this logger is being destroyed.
    IKxLogger* Parent = Child->FParentIntf.Detach();
    if (Parent) --FRefCount;
  }
}

HRESULT KX_STDCALL TKxLogger::QueryInterface(const TGUID& IID, void** Obj) {
  if (!FParent && !FParentIntf && RootLogger.load() == this)
    KxAssertFailed(SKxRootLoggerQuery, SKxLoggerUnit, AssertLine);
  return GetInterface(IID, Obj) ? KX_S_OK : KX_E_NOINTERFACE;
}

bool TKxLogger::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IIDOf<IKxLogger>() || IID == IIDOf<IInterface>()) {
    IKxLogger* P = this;
    P->_AddRef();
    *Obj = P;
    return true;
  }
  return TObject::GetInterface(IID, Obj);
}

int32_t KX_STDCALL TKxLogger::_AddRef() {
  return ++FRefCount;
}

int32_t KX_STDCALL TKxLogger::_Release() {
  const int32_t Count = --FRefCount;
  // The root (no parent reference) is freed only by CloseRootLogger.
  if (Count == 0 && FParentIntf) Free();
  return Count;
}

void TKxLogger::Lock(const UnicodeString& LockName, bool RaiseOnFailure) {
  if (!FLock->TryEnter(INFINITE_TIMEOUT) && RaiseOnFailure) RaiseLockFailed(LockName);
}

void TKxLogger::Unlock() {
  FLock->Leave();
}

IPtr<IKxLogger> KX_STDCALL TKxLogger::GetParentLogger() {
  return FParentIntf;
}

TKxLogLevel KX_STDCALL TKxLogger::GetLevel() {
  return EffectiveLevel();
}

void KX_STDCALL TKxLogger::SetAdditive(bool Value) {
  FAdditive.store(Value, std::memory_order_relaxed);
}

void KX_STDCALL TKxLogger::SetParentLevel(bool Value) {
  FParentLevel.store(Value, std::memory_order_relaxed);
}

void KX_STDCALL TKxLogger::SetLevel(TKxLogLevel Value) {
  FLevel.store(Value, std::memory_order_relaxed);
  FParentLevel.store(false, std::memory_order_relaxed);
}

namespace {

// A level from configuration: its number, or its display name.
bool LevelFromVariant(const Variant& V, TKxLogLevel& Level) {
  if (VarIsEmpty(V) || VarType(V) == varNull) return false;
  const UnicodeString Text = Trim(VarToWideStr(V));
  for (int I = 0; I < 8; ++I)
    if (SameText(Text, UnicodeString(KxLogLevelNames[I]))) {
      Level = TKxLogLevel(I);
      return true;
    }
  const int32_t N = V.ToInteger();
  if (N < 0 || N > llDoNotLog) throw EConvertError(Format("'%d' is not a valid log level", {N}));
  Level = TKxLogLevel(N);
  return true;
}

std::vector<UnicodeString> NamesFromVariant(const Variant& V) {
  std::vector<UnicodeString> Names;
  auto AddText = [&Names](const UnicodeString& Text) {
    size_t Start = 0;
    for (size_t I = 0; I <= Text.size(); ++I)
      if (I == Text.size() || Text[I] == u',' || Text[I] == u';') {
        UnicodeString Name = Trim(Text.substr(Start, I - Start));
        if (!Name.empty()) Names.push_back(Name);
        Start = I + 1;
      }
  };
  if (VarIsArray(V)) {
    for (int32_t I = VarArrayLowBound(V, 1); I <= VarArrayHighBound(V, 1); ++I)
      AddText(VarToWideStr(VarArrayGet(V, I)));
  } else if (!VarIsEmpty(V) && VarType(V) != varNull) {
    AddText(VarToWideStr(V));
  }
  return Names;
}

} // namespace

void KX_STDCALL TKxLogger::SetConfig(IKxLogConfigurator* Config) {
  Lock(FFullName + u".SetConfig", true);
  try {
    FConfigurator = Config;
    if (Config) {
      TKxLogLevel NewLevel;
      if (LevelFromVariant(Config->ReadValue(FName, u"Level", Variant()), NewLevel))
        SetLevel(NewLevel);
      const Variant Additive = Config->ReadValue(FName, u"Additive", Variant(GetAdditive()));
      SetAdditive(bool(Additive));
      for (const UnicodeString& AppenderName :
           NamesFromVariant(Config->ReadValue(FName, u"Appenders", Variant()))) {
        const AnsiString ClassName =
            UnicodeToAnsi(VarToWideStr(Config->ReadValue(AppenderName, u"class", Variant())));
        TClass Cls = RegisteredAppenders()->GetClass(ClassName);
        IPtr<IKxLogAppender> Appender = detail::FindLiveAppender(AppenderName, Cls);
        if (!Appender) {
          TKxLogBase* Obj = KxCreateLogBase(Cls, this, AppenderName);
          Appender = Supports<IKxLogAppender>(static_cast<TObject*>(Obj));
        }
        FAppenders->Add(Appender.Get());
      }
      for (const UnicodeString& ChildName :
           NamesFromVariant(Config->ReadValue(FName, u"Loggers", Variant())))
        FConfiguredLoggers.push_back(GetLogger(ChildName));
    }
  } catch (...) {
    Unlock();
    throw;
  }
  Unlock();
}

IPtr<IKxLogger> KX_STDCALL TKxLogger::GetLogger(const UnicodeString& Name) {
  Lock(FFullName + u".GetLogger", true);
  TKxLogger* Current = this;
  IPtr<IKxLogger> Result;
  try {
    IPtr<IKxLogConfigurator> RootConfig;
    if (TKxLogger* Root = RootLogger.load()) RootConfig = Root->FConfigurator;
    // The current node stays referenced while the walk goes on below it.
    IPtr<IKxLogger> CurrentRef;
    size_t Start = 0;
    for (size_t I = 0; I <= Name.size(); ++I) {
      if (I < Name.size() && Name[I] != u'.') continue;
      const UnicodeString Segment = Name.substr(Start, I - Start);
      Start = I + 1;
      if (Segment.empty()) continue;
      // The key is formed from this logger, not the current node: a.b asked twice makes two
      // children named b.
      IPtr<IKxLogger> ChildRef = Current->FChildLoggers->FindReferenced(FFullName + u"." + Segment);
      TKxLogger* Child = static_cast<TKxLogger*>(ChildRef.Get());
      if (!Child) {
        Child = TKxLogger::Create(Current, Segment);
        ChildRef = static_cast<IKxLogger*>(Child);
        Child->SetConfig(RootConfig.Get());
      }
      Current = Child;
      CurrentRef = ChildRef;
    }
    Result = CurrentRef ? CurrentRef : IPtr<IKxLogger>(static_cast<IKxLogger*>(Current));
  } catch (...) {
    Unlock();
    throw;
  }
  Unlock();
  return Result;
}

IPtr<IKxLogger> KX_STDCALL TKxLogger::GetLogger(TObject* Obj) {
  return GetLogger(Obj ? AnsiToUnicode(Obj->ClassName()) : UnicodeString());
}

bool KX_STDCALL TKxLogger::IsDebugEnabled() {
  const TKxLogLevel L = StoredLevel();
  return L >= llDebug || L == llAll;
}
bool KX_STDCALL TKxLogger::IsErrorEnabled() {
  const TKxLogLevel L = StoredLevel();
  return L >= llError || L == llAll;
}
bool KX_STDCALL TKxLogger::IsFatalEnabled() {
  const TKxLogLevel L = StoredLevel();
  return L >= llFatal || L == llAll;
}
bool KX_STDCALL TKxLogger::IsInfoEnabled() {
  const TKxLogLevel L = StoredLevel();
  return L >= llInfo || L == llAll;
}
bool KX_STDCALL TKxLogger::IsWarnEnabled() {
  const TKxLogLevel L = StoredLevel();
  return L >= llWarn || L == llAll;
}
bool KX_STDCALL TKxLogger::IsEnabledFor(TKxLogLevel Level) {
  return StoredLevel() >= Level;
}

void TKxLogger::WriteAppenders(const UnicodeString& LoggerName, TKxLogLevel Level,
                               TKxLogIndent Indent, const TKxDataRec* Data,
                               const UnicodeString& Msg) {
  TKxLogAppenderList* List = FAppenders;
  List->Lock(UnicodeString(), false);
  try {
    for (const TKxLogAppenderList::TEntry& E : List->Items())
      E.Appender->Write(LoggerName, FFullName, Level, Msg, Data, Indent);
  } catch (...) {
    List->Unlock();
    throw;
  }
  List->Unlock();
}

void KX_STDCALL TKxLogger::Trace(const UnicodeString& Msg) {
  DoLog(FFullName, llTrace, liIndentNone, nullptr, Msg);
}

void KX_STDCALL TKxLogger::Trace(TObject* Obj, const UnicodeString& Msg) {
  DoLog(FFullName, llTrace, liIndentNone, nullptr,
        Format(u"%s($%p).%s", {Obj ? AnsiToUnicode(Obj->ClassName()) : UnicodeString(),
                               static_cast<const void*>(Obj), Msg}));
}

void KX_STDCALL TKxLogger::Trace(TObject* Obj, const UnicodeString& Fmt, TVarRecs Args) {
  Trace(Obj, Format(std::u16string_view(Fmt), Args));
}

void KX_STDCALL TKxLogger::Debug(const UnicodeString& Msg) {
  DoLog(FFullName, llDebug, liIndentNone, nullptr, Msg);
}

void KX_STDCALL TKxLogger::Debug(const UnicodeString& Fmt, TVarRecs Args) {
  DoLog(FFullName, llDebug, liIndentNone, nullptr, Format(std::u16string_view(Fmt), Args));
}

void KX_STDCALL TKxLogger::Debug(const UnicodeString& Msg, const Variant& Value) {
  const TKxDataRec Rec = TKxDataRec::FromVariant(Value);
  DoLog(FFullName, llDebug, liIndentNone, &Rec, Msg);
}

void KX_STDCALL TKxLogger::Debug(const UnicodeString& Msg, TObject* Obj) {
  const TKxDataRec Rec = TKxDataRec::FromObject(Obj);
  DoLog(FFullName, llDebug, liIndentNone, &Rec, Msg);
}

void KX_STDCALL TKxLogger::Debug(const UnicodeString& Msg, const Exception& E) {
  const TKxDataRec Rec = TKxDataRec::FromException(E);
  DoLog(FFullName, llDebug, liIndentNone, &Rec, Msg);
}

void KX_STDCALL TKxLogger::Info(const UnicodeString& Msg) {
  DoLog(FFullName, llInfo, liIndentNone, nullptr, Msg);
}

void KX_STDCALL TKxLogger::Warn(const UnicodeString& Msg) {
  DoLog(FFullName, llWarn, liIndentNone, nullptr, Msg);
}

void KX_STDCALL TKxLogger::Error(const UnicodeString& Msg) {
  DoLog(FFullName, llError, liIndentNone, nullptr, Msg);
}

void TKxLogger::Error(const UnicodeString& Msg, const Exception& E) {
  const TKxDataRec Rec = TKxDataRec::FromException(E);
  DoLog(FFullName, llError, liIndentNone, &Rec, Msg);
}

void KX_STDCALL TKxLogger::Fatal(const UnicodeString& Msg) {
  DoLog(FFullName, llFatal, liIndentNone, nullptr, Msg);
}

void KX_STDCALL TKxLogger::Fatal(const UnicodeString& Fmt, TVarRecs Args) {
  DoLog(FFullName, llFatal, liIndentNone, nullptr, Format(std::u16string_view(Fmt), Args));
}

void KX_STDCALL TKxLogger::Fatal(const Exception& E) {
  const TKxDataRec Rec = TKxDataRec::FromException(E);
  DoLog(FFullName, llFatal, liIndentNone, &Rec, AnsiToUnicode(E.Message()));
}

void KX_STDCALL TKxLogger::Fatal(const UnicodeString& Msg, const Exception& E) {
  const TKxDataRec Rec = TKxDataRec::FromException(E);
  DoLog(FFullName, llFatal, liIndentNone, &Rec, Msg);
}

void KX_STDCALL TKxLogger::Count(const UnicodeString& Name, int32_t Value) {
  const TKxDataRec Rec = TKxDataRec::FromVariant(Variant(Value));
  DoLog(FFullName, llDebug, liIndentNone, &Rec, u"#counter::" + Name + u"#");
}

void KX_STDCALL TKxLogger::EnterMethod(const UnicodeString& Msg, TKxLogLevel Level) {
  DoLog(FFullName, Level, liIndentIncrease, nullptr, Msg);
}

void KX_STDCALL TKxLogger::EnterMethod(const UnicodeString& Fmt, TVarRecs Args, TKxLogLevel Level) {
  DoLog(FFullName, Level, liIndentIncrease, nullptr, Format(std::u16string_view(Fmt), Args));
}

void KX_STDCALL TKxLogger::EnterMethod(TObject* Obj, const UnicodeString& Msg, TKxLogLevel Level) {
  DoLog(FFullName, Level, liIndentIncrease, nullptr,
        (Obj ? AnsiToUnicode(Obj->ClassName()) : UnicodeString()) + u"." + Msg);
}

void KX_STDCALL TKxLogger::EnterMethod(TObject* Obj, const UnicodeString& Fmt, TVarRecs Args,
                                       TKxLogLevel Level) {
  EnterMethod(Obj, Format(std::u16string_view(Fmt), Args), Level);
}

void KX_STDCALL TKxLogger::ExitMethod(const UnicodeString& Msg, TKxLogLevel Level) {
  DoLog(FFullName, Level, liIndentDecrease, nullptr, Msg);
}

void KX_STDCALL TKxLogger::ExitMethod(const UnicodeString& Fmt, TVarRecs Args, TKxLogLevel Level) {
  DoLog(FFullName, Level, liIndentDecrease, nullptr, Format(std::u16string_view(Fmt), Args));
}

void KX_STDCALL TKxLogger::ExitMethod(TObject* Obj, const UnicodeString& Msg, TKxLogLevel Level) {
  DoLog(FFullName, Level, liIndentDecrease, nullptr,
        (Obj ? AnsiToUnicode(Obj->ClassName()) : UnicodeString()) + u"." + Msg);
}

void KX_STDCALL TKxLogger::Log(TKxLogLevel Level, const UnicodeString& Msg, TKxLogIndent Indent) {
  DoLog(FFullName, Level, Indent, nullptr, Msg);
}

void KX_STDCALL TKxLogger::Log(TKxLogLevel Level, const UnicodeString& Msg, const Variant& Value,
                               TKxLogIndent Indent) {
  const TKxDataRec Rec = TKxDataRec::FromVariant(Value);
  DoLog(FFullName, Level, Indent, &Rec, Msg);
}

void KX_STDCALL TKxLogger::Log(TKxLogLevel Level, const UnicodeString& Msg, TObject* Obj,
                               TKxLogIndent Indent) {
  const TKxDataRec Rec = TKxDataRec::FromObject(Obj);
  DoLog(FFullName, Level, Indent, &Rec, Msg);
}

void KX_STDCALL TKxLogger::Log(TKxLogLevel Level, const UnicodeString& Msg, const Exception& E,
                               TKxLogIndent Indent) {
  const TKxDataRec Rec = TKxDataRec::FromException(E);
  DoLog(FFullName, Level, Indent, &Rec, Msg);
}

void KX_STDCALL TKxLogger::Log(IKxLogData* Data) {
  if (!Data) return;
  DoLog(FFullName, Data->Level(), Data->Indent(), Data->Data(), Data->Message());
}

void KX_STDCALL TKxLogger::AddAppender(IKxLogAppender* Appender) {
  FAppenders->Add(Appender);
}

IPtr<IKxLogAppender> KX_STDCALL TKxLogger::AddAppender(TClass AppenderClass) {
  return FAppenders->Add(AppenderClass);
}

void KX_STDCALL TKxLogger::RemoveAppender(IKxLogAppender* Appender) {
  FAppenders->Remove(Appender);
}

void KX_STDCALL TKxLogger::ClearAppenders() {
  FAppenders->Clear();
}

void KX_STDCALL TKxLogger::LockAppenders() {
  FAppenders->Lock(FFullName + u".AppenderList.Remove", true);
}

void KX_STDCALL TKxLogger::UnLockAppenders() {
  FAppenders->Unlock();
}

// --- TKxLogData ------------------------------------------------------------------------------

namespace {

// The Windows version code; 0 on systems that have none.
uint16_t WindowsVersionCode() {
  try {
    return KxGetWindowsVersion();
  } catch (const Exception&) {
    return 0;
  }
}

} // namespace

TKxLogData::TKxLogData(TKxLogLevel ALevel, const UnicodeString& AMessage)
    : FLevel(ALevel), FMessage(AMessage), FTimeStamp(Now()) {
  FComputerName = KxGetComputerName();
  FUserName = KxGetUserName();
  const TKxOSVersionInfo Version = KxGetOSVersionInfo();
  const uint16_t Code = WindowsVersionCode();
  // Systems without a version code are named by themselves ("Debian GNU/Linux 12 (bookworm)").
  FOSName = Code != 0 || Version.Name.empty() ? KxOSName(Code) : Version.Name;
  FOSVersion = Format("%d.%d", {Version.Major, Version.Minor}) +
               Format("; Build: %x, \"%s\"", {Version.Build, Version.ServicePack});
  int32_t Width = 0, Height = 0, Bpp = 0;
  FScreen = platform::HostScreen(Width, Height, Bpp)
                ? Format("%dx%d pixels, %d bpp", {Width, Height, Bpp})
                : AnsiString("n.a.");
  // The library has no forms of its own to ask for.
  FActiveForm = "n.a.";
  FActiveControl = "n.a.";
}

bool TKxLogData::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IIDOf<IKxLogData>()) {
    IKxLogData* P = this;
    P->_AddRef();
    *Obj = P;
    return true;
  }
  return TKxInterfacedObject::GetInterface(IID, Obj);
}

// --- the root --------------------------------------------------------------------------------

IPtr<IKxLogger> Logger() {
  TKxLogger* Root = RootLogger.load(std::memory_order_acquire);
  if (!Root) {
    std::lock_guard<std::mutex> Guard(RootMutex());
    Root = RootLogger.load();
    if (!Root) {
      Root = TKxLogger::Create(nullptr, u"root");
      Root->SetLevel(llDebug);
      RootLogger.store(Root, std::memory_order_release);
    }
  }
  return IPtr<IKxLogger>(static_cast<IKxLogger*>(Root));
}

void CloseRootLogger() {
  std::lock_guard<std::mutex> Guard(RootMutex());
  TKxLogger* Root = RootLogger.load();
  if (!Root) return;
  // Appenders shared with loggers outside the tree are closed too: nothing stays unwritten.
  detail::CloseLiveAppenders();
  Root->ReleaseConfiguredLoggers();
  Root->ClearChildren();
  Root->ClearAppenders();
  Root->Free();
  RootLogger.store(nullptr);
}

} // namespace kx
