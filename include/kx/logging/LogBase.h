// SPDX-License-Identifier: MIT
#pragma once
// The base of appenders and layouts, the per-logger appender list and the class registries.

#include <kx/classes/Component.h>
#include <kx/logging/LogIntf.h>
#include <kx/threads/CriticalSection.h>

#include <mutex>
#include <vector>

namespace kx {

inline constexpr const char* SKxClassNotFound = "Class %s not found!";
inline constexpr const char* SKxAssertionFailure = "Assertion failure";

// Class names for configuration. The two log-viewer names are reserved: no such class exists.
inline constexpr const char* cKxFileAppender = "TKxFileAppender";
inline constexpr const char* cKxRollingFileAppender = "TKxRollingFileAppender";
inline constexpr const char* cKxDailyRollingFileAppender = "TKxDailyRollingFileAppender";
inline constexpr const char* cKxLogViewerAppenderServer = "TKxLogViewerAppenderServer";
inline constexpr const char* cKxLogViewerAppenderClient = "TKxLogViewerAppenderClient";
inline constexpr const char* cKxSimpleLayout = "TKxSimpleLayout";
inline constexpr const char* cKxXmlLayout = "TKxXmlLayout";

class TKxLogger;

// The root of appenders and layouts: a component that knows the logger it serves.
class KX_API TKxLogBase : public TKxComponent, public IKxLogBase {
  KX_CLASS(TKxLogBase, TKxComponent)
public:
  TKxLogBase() = default;
  TKxLogBase(TKxLogger* ALogger, const UnicodeString& AName);
  KX_FORWARD_IINTERFACE(TKxComponent)
  bool GetInterface(const TGUID& IID, void** Obj) override;
  void AfterConstruction() override;
  void BeforeDestruction() override;

  UnicodeString KX_STDCALL GetName() override { return FLogName; }
  TComponent* KX_STDCALL Component() override { return this; }
  TKxLogger* Logger() const { return FLogger; }
  // Binds an instance made through its class reference to a logger and a name.
  virtual void Setup(TKxLogger* ALogger, const UnicodeString& AName);

protected:
  TKxLogger* FLogger = nullptr;
  UnicodeString FLogName;
};

using TKxLogBaseClass = TClass;

// Creates an instance of a registered appender or layout class for a logger.
KX_API TKxLogBase* KxCreateLogBase(TClass Cls, TKxLogger* ALogger, const UnicodeString& AName);

class KX_API TKxBaseAppender : public TKxLogBase, public IKxLogAppender {
  KX_CLASS(TKxBaseAppender, TKxLogBase)
public:
  TKxBaseAppender() = default;
  TKxBaseAppender(TKxLogger* ALogger, const UnicodeString& AName) : TKxLogBase(ALogger, AName) {}
  ~TKxBaseAppender() override;
  KX_FORWARD_IINTERFACE(TKxComponent)
  bool GetInterface(const TGUID& IID, void** Obj) override;
  void AfterConstruction() override;
  void BeforeDestruction() override;
  void Setup(TKxLogger* ALogger, const UnicodeString& AName) override;

  UnicodeString KX_STDCALL GetName() override { return FLogName; }
  TComponent* KX_STDCALL Component() override { return this; }

  virtual void Initialize();
  virtual void SetConfig(IKxLogConfigurator* Config);
  void KX_STDCALL Write(const UnicodeString& LoggerName, const UnicodeString& OwnerName,
                        TKxLogLevel Level, const UnicodeString& Msg, const TKxDataRec* Data,
                        TKxLogIndent Indent) override;
  void KX_STDCALL Close() override;
  void KX_STDCALL SetLayout(IKxLogLayout* Layout) override;
  void KX_STDCALL SetLayout(TClass LayoutClass) override;
  void KX_STDCALL SetLayout(const AnsiString& ClassName) override;

  IPtr<IKxLogLayout> Layout() const { return FLayout; }
  bool Initialized() const { return FInitialized; }
  void Lock() { FAppenderLock.lock(); }
  void Unlock() { FAppenderLock.unlock(); }

protected:
  IPtr<IKxLogLayout> FLayout;
  bool FInitialized = false;
  uint32_t FReserved = 0;
  std::recursive_mutex FAppenderLock;
};

// The appenders of one logger, each at most once, detached when an appender is freed.
class KX_API TKxLogAppenderList : public TComponent {
  KX_CLASS(TKxLogAppenderList, TComponent)
public:
  explicit TKxLogAppenderList(TKxLogger* ALogger = nullptr);
  ~TKxLogAppenderList() override;

  void Add(IKxLogAppender* Appender);
  IPtr<IKxLogAppender> Add(TClass AppenderClass);
  IPtr<IKxLogAppender> Add(const AnsiString& ClassName);
  IPtr<IKxLogAppender> Add(TClass AppenderClass, TClass LayoutClass);
  IPtr<IKxLogAppender> Add(const AnsiString& ClassName, const AnsiString& LayoutName);
  void Remove(IKxLogAppender* Appender);
  void Clear();
  int32_t Count();
  IPtr<IKxLogAppender> GetAppender(int32_t Index);
  void Lock(const UnicodeString& LockName, bool RaiseOnFailure);
  void Unlock();
  // An entry keeps the component it was added as, so a notification about a component
  // being destroyed never has to call into it.
  struct TEntry {
    IPtr<IKxLogAppender> Appender;
    TComponent* Comp;
  };
  // The entries in list order, for a dispatch that already holds the lock.
  const std::vector<TEntry>& Items() const { return FItems; }

protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;

private:
  UnicodeString LockName() const;
  TKxLogger* FOwnerLogger;
  std::vector<TEntry> FItems;
  bool FClearing = false;
  TKxCriticalSection* FLock;
};

// A registry of appender or layout classes, looked up by class name.
class KX_API TKxLogBaseClassList : public TObject {
  KX_CLASS(TKxLogBaseClassList, TObject)
public:
  TKxLogBaseClassList() = default;
  void Add(TClass Cls);
  // Without regard to case; raises EListError "Class %s not found!" for an unknown name.
  TClass GetClass(const AnsiString& Name);
  int32_t Count();
  TClass Items(int32_t Index);

private:
  std::mutex FMutex;
  std::vector<TClass> FClasses;
};

KX_API TKxLogBaseClassList* RegisteredAppenders();
KX_API TKxLogBaseClassList* RegisteredLayouts();

namespace detail {
// The module-wide list of live appenders and layouts.
void RegisterLiveLogBase(TKxLogBase* Obj);
void UnregisterLiveLogBase(TKxLogBase* Obj);
// A live appender of that name and class, so loggers that name one appender share it.
IPtr<IKxLogAppender> FindLiveAppender(const UnicodeString& Name, TClass Cls);
// Closes every live appender (footers written, files closed).
KX_API void CloseLiveAppenders();
void FreeLogRegistries();
} // namespace detail

} // namespace kx
