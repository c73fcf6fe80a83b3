// SPDX-License-Identifier: MIT
// Appenders' and layouts' base, the appender lists and the class registries.
#include <kx/logging/LogBase.h>
#include <kx/logging/Logger.h>
#include <kx/rtl/SysUtils.h>

#include <atomic>

namespace kx {

KX_IMPLEMENT_CLASS(TKxLogBase, TKxComponent, "uKxLogger")
KX_IMPLEMENT_CLASS(TKxBaseAppender, TKxLogBase, "uKxLogger")
KX_IMPLEMENT_CLASS(TKxLogAppenderList, TComponent, "uKxLogger")
KX_IMPLEMENT_CLASS(TKxLogBaseClassList, TObject, "uKxLogger")

namespace {

constexpr int32_t AddAssertLine = 0;

struct TLiveList {
  std::mutex Mutex;
  std::vector<TKxLogBase*> Items;
};
TLiveList& Live() {
  static TLiveList List;
  return List;
}

std::mutex& RegistryMutex() {
  static std::mutex M;
  return M;
}
std::atomic<TKxLogBaseClassList*> Appenders{nullptr};
std::atomic<TKxLogBaseClassList*> Layouts{nullptr};

TKxLogBaseClassList* Registry(std::atomic<TKxLogBaseClassList*>& Slot) {
  TKxLogBaseClassList* List = Slot.load(std::memory_order_acquire);
  if (List) return List;
  std::lock_guard<std::mutex> Guard(RegistryMutex());
  List = Slot.load();
  if (!List) {
    List = TKxLogBaseClassList::Create();
    Slot.store(List, std::memory_order_release);
  }
  return List;
}

} // namespace

namespace detail {

void RegisterLiveLogBase(TKxLogBase* Obj) {
  std::lock_guard<std::mutex> Guard(Live().Mutex);
  Live().Items.push_back(Obj);
}

void UnregisterLiveLogBase(TKxLogBase* Obj) {
  std::lock_guard<std::mutex> Guard(Live().Mutex);
  auto& Items = Live().Items;
  for (size_t I = Items.size(); I-- > 0;)
    if (Items[I] == Obj) Items.erase(Items.begin() + std::ptrdiff_t(I));
}

IPtr<IKxLogAppender> FindLiveAppender(const UnicodeString& Name, TClass Cls) {
  std::lock_guard<std::mutex> Guard(Live().Mutex);
  for (TKxLogBase* Obj : Live().Items)
    if (Obj->ClassType() == Cls && Obj->GetName() == Name)
      if (auto* Appender = dynamic_cast<TKxBaseAppender*>(Obj))
        return IPtr<IKxLogAppender>(static_cast<IKxLogAppender*>(Appender));
  return nullptr;
}

void CloseLiveAppenders() {
  std::lock_guard<std::mutex> Guard(Live().Mutex);
  for (TKxLogBase* Obj : Live().Items)
    if (auto* Appender = dynamic_cast<TKxBaseAppender*>(Obj)) {
      try {
        Appender->Close();
      } catch (const std::exception&) {
        // Shut-down goes on: the other appenders still get their footers.
      }
    }
}

void FreeLogRegistries() {
  if (TKxLogBaseClassList* List = Appenders.exchange(nullptr)) List->Free();
  if (TKxLogBaseClassList* List = Layouts.exchange(nullptr)) List->Free();
}

} // namespace detail

TKxLogBaseClassList* RegisteredAppenders() {
  return Registry(Appenders);
}

TKxLogBaseClassList* RegisteredLayouts() {
  return Registry(Layouts);
}

// --- TKxLogBase ------------------------------------------------------------------------------

TKxLogBase::TKxLogBase(TKxLogger* ALogger, const UnicodeString& AName) {
  TKxLogBase::Setup(ALogger, AName);
}

void TKxLogBase::Setup(TKxLogger* ALogger, const UnicodeString& AName) {
  FLogger = ALogger;
  FLogName = AName;
  // Only names that start like identifiers become the component's name.
  const AnsiString Name = UnicodeToAnsi(AName);
  if (!Name.empty() && ((Name[0] >= 'a' && Name[0] <= 'z') || (Name[0] >= 'A' && Name[0] <= 'Z') ||
                        Name[0] == '_')) {
    try {
      SetName(Name);
    } catch (const Exception&) {
      // Characters a component name cannot hold: the log name stays the only name.
    }
  }
}

bool TKxLogBase::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IIDOf<IKxLogBase>()) {
    IKxLogBase* P = this;
    P->_AddRef();
    *Obj = P;
    return true;
  }
  return TKxComponent::GetInterface(IID, Obj);
}

void TKxLogBase::AfterConstruction() {
  TKxComponent::AfterConstruction();
  detail::RegisterLiveLogBase(this);
}

void TKxLogBase::BeforeDestruction() {
  TKxComponent::BeforeDestruction();
  detail::UnregisterLiveLogBase(this);
}

TKxLogBase* KxCreateLogBase(TClass Cls, TKxLogger* ALogger, const UnicodeString& AName) {
  TObject* Obj = Cls && Cls->CreateInstance ? Cls->CreateInstance() : nullptr;
  auto* Base = dynamic_cast<TKxLogBase*>(Obj);
  if (!Base) {
    if (Obj) Obj->Free();
    throw EListError(Format(SKxClassNotFound, {Cls ? Cls->ClassName() : AnsiString()}));
  }
  try {
    Base->Setup(ALogger, AName);
  } catch (...) {
    Base->Free();
    throw;
  }
  return Base;
}

// --- TKxBaseAppender -------------------------------------------------------------------------

TKxBaseAppender::~TKxBaseAppender() = default;

bool TKxBaseAppender::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IIDOf<IKxLogAppender>()) {
    IKxLogAppender* P = this;
    P->_AddRef();
    *Obj = P;
    return true;
  }
  return TKxLogBase::GetInterface(IID, Obj);
}

void TKxBaseAppender::AfterConstruction() {
  TKxLogBase::AfterConstruction();
  if (FLogger)
    if (IPtr<IKxLogConfigurator> Config = FLogger->Configurator()) SetConfig(Config.Get());
}

void TKxBaseAppender::Setup(TKxLogger* ALogger, const UnicodeString& AName) {
  TKxLogBase::Setup(ALogger, AName);
  if (FLogger)
    if (IPtr<IKxLogConfigurator> Config = FLogger->Configurator()) SetConfig(Config.Get());
}

void TKxBaseAppender::BeforeDestruction() {
  Close();
  TKxLogBase::BeforeDestruction();
}

void TKxBaseAppender::Initialize() {
  FInitialized = true;
}

void TKxBaseAppender::SetConfig(IKxLogConfigurator* Config) {
  if (!Config) return;
  const AnsiString LayoutName =
      Trim(UnicodeToAnsi(VarToWideStr(Config->ReadValue(FLogName, u"Layout", Variant(u"")))));
  if (!LayoutName.empty()) SetLayout(LayoutName);
}

void KX_STDCALL TKxBaseAppender::Write(const UnicodeString&, const UnicodeString&, TKxLogLevel,
                                       const UnicodeString&, const TKxDataRec*, TKxLogIndent) {
  if (!FInitialized) Initialize();
}

void KX_STDCALL TKxBaseAppender::Close() {
  FInitialized = false;
}

void KX_STDCALL TKxBaseAppender::SetLayout(IKxLogLayout* Layout) {
  FLayout = Layout;
  if (IPtr<IKxLogLayoutEx> Ex = Supports<IKxLogLayoutEx>(Layout)) Ex->Initialize(this);
}

void KX_STDCALL TKxBaseAppender::SetLayout(TClass LayoutClass) {
  TKxLogBase* Obj = KxCreateLogBase(LayoutClass, FLogger, AnsiToUnicode(LayoutClass->ClassName()));
  IPtr<IKxLogLayout> Layout = Supports<IKxLogLayout>(static_cast<TObject*>(Obj));
  if (!Layout) {
    Obj->Free();
    throw EListError(Format(SKxClassNotFound, {LayoutClass->ClassName()}));
  }
  SetLayout(Layout.Get());
}

void KX_STDCALL TKxBaseAppender::SetLayout(const AnsiString& ClassName) {
  SetLayout(RegisteredLayouts()->GetClass(ClassName));
}

// --- TKxLogAppenderList ----------------------------------------------------------------------

TKxLogAppenderList::TKxLogAppenderList(TKxLogger* ALogger)
    : FOwnerLogger(ALogger), FLock(TKxCriticalSection::Create()) {}

TKxLogAppenderList::~TKxLogAppenderList() {
  Destroying();
  FClearing = true;
  std::vector<TEntry> Items;
  Items.swap(FItems);
  Items.clear();
  FreeAndNil(FLock);
}

UnicodeString TKxLogAppenderList::LockName() const {
  // Every list operation shares this label.
  return (FOwnerLogger ? FOwnerLogger->GetFullName() : UnicodeString()) + u".AppenderList.Remove";
}

void TKxLogAppenderList::Lock(const UnicodeString&, bool) {
  // A dispatch holds the lock for one line's write: spinning that long is cheaper than
  // sleeping on the section's semaphore and being woken.
  for (int Spin = 0; Spin < 4000; ++Spin) {
    if (FLock->TryEnter(0)) return;
    if (FLock->GetLockedBy() == 0) continue;
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
  }
  FLock->Enter();
}

void TKxLogAppenderList::Unlock() {
  FLock->Leave();
}

void TKxLogAppenderList::Add(IKxLogAppender* Appender) {
  KxAssert(Appender != nullptr, SKxAssertionFailure, SKxLoggerUnit, AddAssertLine);
  if (!Appender) return;
  TComponent* Comp = Appender->Component();
  Lock(LockName(), true);
  try {
    bool Present = false;
    for (const TEntry& E : FItems)
      if (E.Comp == Comp) Present = true;
    if (!Present) {
      FItems.push_back({IPtr<IKxLogAppender>(Appender), Comp});
      if (Comp) Comp->FreeNotification(this);
    }
  } catch (...) {
    Unlock();
    throw;
  }
  Unlock();
}

IPtr<IKxLogAppender> TKxLogAppenderList::Add(TClass AppenderClass) {
  TKxLogBase* Obj =
      KxCreateLogBase(AppenderClass, FOwnerLogger, AnsiToUnicode(AppenderClass->ClassName()));
  IPtr<IKxLogAppender> Appender = Supports<IKxLogAppender>(static_cast<TObject*>(Obj));
  if (!Appender) {
    Obj->Free();
    throw EListError(Format(SKxClassNotFound, {AppenderClass->ClassName()}));
  }
  Add(Appender.Get());
  return Appender;
}

IPtr<IKxLogAppender> TKxLogAppenderList::Add(const AnsiString& ClassName) {
  return Add(RegisteredAppenders()->GetClass(ClassName));
}

IPtr<IKxLogAppender> TKxLogAppenderList::Add(TClass AppenderClass, TClass LayoutClass) {
  IPtr<IKxLogAppender> Appender = Add(AppenderClass);
  Appender->SetLayout(LayoutClass);
  return Appender;
}

IPtr<IKxLogAppender> TKxLogAppenderList::Add(const AnsiString& ClassName,
                                             const AnsiString& LayoutName) {
  IPtr<IKxLogAppender> Appender = Add(ClassName);
  Appender->SetLayout(LayoutName);
  return Appender;
}

void TKxLogAppenderList::Remove(IKxLogAppender* Appender) {
  if (!Appender) return;
  TComponent* Comp = Appender->Component();
  std::vector<TEntry> Removed;
  Lock(LockName(), true);
  for (size_t I = FItems.size(); I-- > 0;)
    if (FItems[I].Comp == Comp) {
      Removed.push_back(std::move(FItems[I]));
      FItems.erase(FItems.begin() + std::ptrdiff_t(I));
    }
  Unlock();
  // Released outside the lock: the last release frees the appender, which notifies us.
}

void TKxLogAppenderList::Clear() {
  Lock(LockName(), true);
  FClearing = true;
  std::vector<TEntry> Items;
  Items.swap(FItems);
  try {
    Items.clear();
  } catch (...) {
    FClearing = false;
    Unlock();
    throw;
  }
  FClearing = false;
  Unlock();
}

int32_t TKxLogAppenderList::Count() {
  Lock(LockName(), true);
  const auto N = static_cast<int32_t>(FItems.size());
  Unlock();
  return N;
}

IPtr<IKxLogAppender> TKxLogAppenderList::GetAppender(int32_t Index) {
  Lock(LockName(), true);
  IPtr<IKxLogAppender> A;
  const bool Valid = Index >= 0 && size_t(Index) < FItems.size();
  if (Valid) A = FItems[size_t(Index)].Appender;
  Unlock();
  if (!Valid) TList::Error(SListIndexError, Index);
  return A;
}

void TKxLogAppenderList::Notification(TComponent* AComponent, TOperation Operation) {
  TComponent::Notification(AComponent, Operation);
  if (Operation != opRemove || FClearing || ComponentState().Contains(csDestroying)) return;
  Lock(LockName(), true);
  for (size_t I = FItems.size(); I-- > 0;)
    if (FItems[I].Comp == AComponent) {
      // The component is going away: its reference is dropped without a release.
      FItems[I].Appender.Detach();
      FItems.erase(FItems.begin() + std::ptrdiff_t(I));
    }
  Unlock();
}

// --- TKxLogBaseClassList ---------------------------------------------------------------------

void TKxLogBaseClassList::Add(TClass Cls) {
  std::lock_guard<std::mutex> Guard(FMutex);
  for (TClass C : FClasses)
    if (C == Cls) return;
  FClasses.push_back(Cls);
  KxRegisterClass(Cls);
}

TClass TKxLogBaseClassList::GetClass(const AnsiString& Name) {
  {
    std::lock_guard<std::mutex> Guard(FMutex);
    for (TClass C : FClasses)
      if (SameText(C->ClassName(), Name)) return C;
  }
  throw EListError(Format(SKxClassNotFound, {Name}));
}

int32_t TKxLogBaseClassList::Count() {
  std::lock_guard<std::mutex> Guard(FMutex);
  return static_cast<int32_t>(FClasses.size());
}

TClass TKxLogBaseClassList::Items(int32_t Index) {
  std::lock_guard<std::mutex> Guard(FMutex);
  if (Index < 0 || size_t(Index) >= FClasses.size()) TList::Error(SListIndexError, Index);
  return FClasses[size_t(Index)];
}

} // namespace kx
