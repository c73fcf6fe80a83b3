// SPDX-License-Identifier: MIT
#pragma once
// The logger tree: named loggers under one root, log records, payload texts.

#include <kx/classes/Object.h>
#include <kx/logging/LogIntf.h>
#include <kx/rtl/Lists.h>
#include <kx/threads/CriticalSection.h>

#include <atomic>
#include <vector>

namespace kx {

inline constexpr const char* SKxLoggerUnit = "source\\ComponentSets\\Components\\common\\uKxLogger";
inline constexpr const char* SKxLockFailed = "%s failed to get a lock";
inline constexpr const char* SKxRootLoggerQuery =
    "Do not get the IKxLogger interface from the rootlogger!";
inline constexpr const char* SKxLoggerRefCount = "The refcount of \"%s\" is not equal to 0!";
// How long a child list waits for its lock before giving up.
inline constexpr uint32_t KxLoggerListTimeout = 1000;

class TKxLogger;

// The children of one logger: plain pointers, the children keep themselves alive.
class KX_API TKxLoggerList : public TObject {
  KX_CLASS(TKxLoggerList, TObject)
public:
  explicit TKxLoggerList(TKxLogger* AOwner = nullptr);
  ~TKxLoggerList() override;
  // Waits at most KxLoggerListTimeout; raises "%s failed to get a lock" when asked to.
  bool Lock(const UnicodeString& LockName, bool RaiseOnFailure);
  void Unlock();
  void Add(TKxLogger* Logger);
  void Remove(TKxLogger* Logger);
  TKxLogger* Find(const UnicodeString& FullName);
  // The logger with a reference taken while the list is locked; none for one being freed.
  IPtr<IKxLogger> FindReferenced(const UnicodeString& FullName);
  int32_t Count();
  TKxLogger* Items(int32_t Index);
  TKxCriticalSection* CriticalSection() { return FLock; }

private:
  UnicodeString LockName() const;
  TKxLogger* FOwner;
  std::vector<TKxLogger*> FList;
  TKxCriticalSection* FLock;
  friend class TKxLogger;
};

class KX_API TKxLogger : public TKxInterfacedObject, public IKxLogger {
  KX_CLASS(TKxLogger, TKxInterfacedObject)
public:
  TKxLogger() : TKxLogger(nullptr, u"root") {}
  TKxLogger(TKxLogger* AParent, const UnicodeString& AName);
  ~TKxLogger() override;

  HRESULT KX_STDCALL QueryInterface(const TGUID& IID, void** Obj) override;
  int32_t KX_STDCALL _AddRef() override;
  int32_t KX_STDCALL _Release() override;
  bool GetInterface(const TGUID& IID, void** Obj) override;
  void AfterConstruction() override;
  void BeforeDestruction() override;

  IPtr<IKxLogger> KX_STDCALL GetParentLogger() override;
  bool KX_STDCALL GetParentLevel() override { return FParentLevel.load(std::memory_order_relaxed); }
  TKxLogLevel KX_STDCALL GetLevel() override;
  TKxLogAppenderList* KX_STDCALL GetAppenders() override { return FAppenders; }
  TKxLoggerList* KX_STDCALL GetChildLoggers() override { return FChildLoggers; }
  bool KX_STDCALL GetAdditive() override { return FAdditive.load(std::memory_order_relaxed); }
  UnicodeString KX_STDCALL GetName() override { return FName; }
  UnicodeString KX_STDCALL GetFullName() override { return FFullName; }
  void KX_STDCALL SetAdditive(bool Value) override;
  void KX_STDCALL SetParentLevel(bool Value) override;
  void KX_STDCALL SetLevel(TKxLogLevel Value) override;
  void KX_STDCALL SetConfig(IKxLogConfigurator* Config) override;
  IPtr<IKxLogger> KX_STDCALL GetLogger(const UnicodeString& Name) override;
  IPtr<IKxLogger> KX_STDCALL GetLogger(TObject* Obj) override;
  bool KX_STDCALL IsDebugEnabled() override;
  bool KX_STDCALL IsErrorEnabled() override;
  bool KX_STDCALL IsFatalEnabled() override;
  bool KX_STDCALL IsInfoEnabled() override;
  bool KX_STDCALL IsWarnEnabled() override;
  bool KX_STDCALL IsEnabledFor(TKxLogLevel Level) override;
  void KX_STDCALL Trace(const UnicodeString& Msg) override;
  void KX_STDCALL Trace(TObject* Obj, const UnicodeString& Msg) override;
  void KX_STDCALL Trace(TObject* Obj, const UnicodeString& Fmt, TVarRecs Args) override;
  void KX_STDCALL Debug(const UnicodeString& Msg) override;
  void KX_STDCALL Debug(const UnicodeString& Fmt, TVarRecs Args) override;
  void KX_STDCALL Debug(const UnicodeString& Msg, const Variant& Value) override;
  void KX_STDCALL Debug(const UnicodeString& Msg, TObject* Obj) override;
  void KX_STDCALL Debug(const UnicodeString& Msg, const Exception& E) override;
  void KX_STDCALL Info(const UnicodeString& Msg) override;
  void KX_STDCALL Warn(const UnicodeString& Msg) override;
  void KX_STDCALL Error(const UnicodeString& Msg) override;
  void Error(const UnicodeString& Msg, const Exception& E);
  void KX_STDCALL Fatal(const UnicodeString& Msg) override;
  void KX_STDCALL Fatal(const UnicodeString& Fmt, TVarRecs Args) override;
  void KX_STDCALL Fatal(const Exception& E) override;
  void KX_STDCALL Fatal(const UnicodeString& Msg, const Exception& E) override;
  void KX_STDCALL Count(const UnicodeString& Name, int32_t Value) override;
  void KX_STDCALL ClearLog() override {}
  void KX_STDCALL EnterMethod(const UnicodeString& Msg, TKxLogLevel Level) override;
  void KX_STDCALL EnterMethod(const UnicodeString& Fmt, TVarRecs Args, TKxLogLevel Level) override;
  void KX_STDCALL EnterMethod(TObject* Obj, const UnicodeString& Msg, TKxLogLevel Level) override;
  void KX_STDCALL EnterMethod(TObject* Obj, const UnicodeString& Fmt, TVarRecs Args,
                              TKxLogLevel Level) override;
  void KX_STDCALL ExitMethod(const UnicodeString& Msg, TKxLogLevel Level) override;
  void KX_STDCALL ExitMethod(const UnicodeString& Fmt, TVarRecs Args, TKxLogLevel Level) override;
  void KX_STDCALL ExitMethod(TObject* Obj, const UnicodeString& Msg, TKxLogLevel Level) override;
  void KX_STDCALL Log(TKxLogLevel Level, const UnicodeString& Msg, TKxLogIndent Indent) override;
  void KX_STDCALL Log(TKxLogLevel Level, const UnicodeString& Msg, const Variant& Value,
                      TKxLogIndent Indent) override;
  void KX_STDCALL Log(TKxLogLevel Level, const UnicodeString& Msg, TObject* Obj,
                      TKxLogIndent Indent) override;
  void KX_STDCALL Log(TKxLogLevel Level, const UnicodeString& Msg, const Exception& E,
                      TKxLogIndent Indent) override;
  void KX_STDCALL Log(IKxLogData* Data) override;
  void KX_STDCALL AddAppender(IKxLogAppender* Appender) override;
  IPtr<IKxLogAppender> KX_STDCALL AddAppender(TClass AppenderClass) override;
  void KX_STDCALL RemoveAppender(IKxLogAppender* Appender) override;
  void KX_STDCALL ClearAppenders() override;
  void KX_STDCALL LockAppenders() override;
  void KX_STDCALL UnLockAppenders() override;

  // The logger's own lock, entered without time-out.
  void Lock(const UnicodeString& LockName, bool RaiseOnFailure);
  void Unlock();
  IPtr<IKxLogConfigurator> Configurator() const { return FConfigurator; }
  TKxLogger* Parent() const { return FParent; }
  TKxLogLevel StoredLevel() const { return FLevel.load(std::memory_order_relaxed); }

protected:
  // Inline because a rejected message should cost no more than reading the levels of the
  // additive chain: no virtual call, no lock.
  void DoLog(const UnicodeString& LoggerName, TKxLogLevel Level, TKxLogIndent Indent,
             const TKxDataRec* Data, const UnicodeString& Msg) {
    for (TKxLogger* L = this; L;) {
      // Each ancestor applies its own level to its own appenders.
      if (L->EffectiveLevel() <= Level) L->WriteAppenders(LoggerName, Level, Indent, Data, Msg);
      if (!L->FAdditive.load(std::memory_order_relaxed) || !L->FParentIntf) break;
      L = L->FParent;
    }
  }
  // GetLevel without the virtual call: the parent reference is the route, walked not recursed.
  TKxLogLevel EffectiveLevel() const {
    const TKxLogger* L = this;
    while (L->FParentLevel.load(std::memory_order_relaxed) && L->FParentIntf) L = L->FParent;
    return L->FLevel.load(std::memory_order_relaxed);
  }
  void WriteAppenders(const UnicodeString& LoggerName, TKxLogLevel Level, TKxLogIndent Indent,
                      const TKxDataRec* Data, const UnicodeString& Msg);

public:
  // Drops the parent reference of every child and empties the child list, last first.
  void ClearChildren();
  // Releases the loggers this one created from its configuration.
  void ReleaseConfiguredLoggers();

private:
  UnicodeString FName;
  TKxCriticalSection* FLock;
  UnicodeString FFullName;
  TKxLogAppenderList* FAppenders = nullptr;
  TKxLogger* FParent;
  IPtr<IKxLogger> FParentIntf;
  TKxLoggerList* FChildLoggers = nullptr;
  std::atomic<bool> FParentLevel{true};
  std::atomic<TKxLogLevel> FLevel{llDebug};
  std::atomic<bool> FAdditive{true};
  IPtr<IKxLogConfigurator> FConfigurator;
  // Loggers this one created from its configuration; kept alive with it.
  std::vector<IPtr<IKxLogger>> FConfiguredLoggers;
  friend class TKxLoggerList;
};

// A log record built from a level and a message, with the environment at that moment.
class KX_API TKxLogData : public TKxInterfacedObject, public IKxLogData {
  KX_CLASS(TKxLogData, TKxInterfacedObject)
public:
  TKxLogData() : TKxLogData(llAll, u"") {}
  TKxLogData(TKxLogLevel ALevel, const UnicodeString& AMessage);
  KX_FORWARD_IINTERFACE(TKxInterfacedObject)
  bool GetInterface(const TGUID& IID, void** Obj) override;

  TKxLogLevel KX_STDCALL Level() override { return FLevel; }
  TKxLogIndent KX_STDCALL Indent() override { return FIndent; }
  UnicodeString KX_STDCALL Message() override { return FMessage; }
  TKxDataRec* KX_STDCALL Data() override { return &FData; }
  TDateTime KX_STDCALL TimeStamp() override { return FTimeStamp; }
  AnsiString KX_STDCALL ComputerName() override { return FComputerName; }
  AnsiString KX_STDCALL UserName() override { return FUserName; }
  AnsiString KX_STDCALL OSName() override { return FOSName; }
  AnsiString KX_STDCALL OSVersion() override { return FOSVersion; }
  AnsiString KX_STDCALL Screen() override { return FScreen; }
  AnsiString KX_STDCALL ActiveForm() override { return FActiveForm; }
  AnsiString KX_STDCALL ActiveControl() override { return FActiveControl; }
  void SetIndent(TKxLogIndent Value) { FIndent = Value; }

private:
  TKxLogLevel FLevel;
  TKxLogIndent FIndent = liIndentNone;
  UnicodeString FMessage;
  TKxDataRec FData;
  TDateTime FTimeStamp;
  AnsiString FComputerName, FUserName, FOSName, FOSVersion, FScreen, FActiveForm, FActiveControl;
};

// The root logger, made on first use.
KX_API IPtr<IKxLogger> Logger();
// Closes every appender of the tree, then frees the root.
KX_API void CloseRootLogger();
// The text of a payload, by its kind.
KX_API UnicodeString KxDataRecToString(const TKxDataRec* Rec);
// The operating-system name of a Windows version code.
KX_API AnsiString KxOSName(uint32_t VersionCode);

} // namespace kx
