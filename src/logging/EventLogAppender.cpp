// SPDX-License-Identifier: MIT
// The event log appender over the platform's system log.
#include <kx/logging/EventLogAppender.h>
#include <kx/rtl/Files.h>
#include <kx/rtl/Format.h>
#include <kx/rtl/SysUtils.h>
#include <kx/windows/Environment.h>

#include "platform/EventLog.h"
#include "platform/Registry.h"

namespace kx {

KX_IMPLEMENT_CLASS(TKxEventLogAppender, TKxBaseAppender, "uKxLogAppenders")

namespace {

// Error, warning and information events.
constexpr uint32_t TypesSupported = 7;
constexpr uint32_t KeyAllAccess = 0xF003F;

struct TAppenderLock {
  TKxBaseAppender* Appender;
  explicit TAppenderLock(TKxBaseAppender* A) : Appender(A) { A->Lock(); }
  ~TAppenderLock() { Appender->Unlock(); }
};

} // namespace

TKxEventLogAppender::TKxEventLogAppender() {
  RegisterLogger(ChangeFileExt(ExtractFileName(platform::ModuleFileName()), ""));
}

TKxEventLogAppender::TKxEventLogAppender(TKxLogger* ALogger, const UnicodeString& AName)
    : TKxEventLogAppender() {
  TKxLogBase::Setup(ALogger, AName);
}

TKxEventLogAppender::~TKxEventLogAppender() {
  platform::DeregisterEventSource(FEventLog);
  for (void* Source : FPreviousSources) platform::DeregisterEventSource(Source);
}

bool TKxEventLogAppender::LevelToEvent(TKxLogLevel Level, uint16_t& EventType, uint32_t& EventId) {
  switch (Level) {
  case llInfo:
    EventType = platform::EVENTLOG_SUCCESS_;
    EventId = 1;
    return true;
  case llWarn:
    EventType = platform::EVENTLOG_WARNING_TYPE_;
    EventId = 3;
    return true;
  case llError:
  case llFatal:
    EventType = platform::EVENTLOG_ERROR_TYPE_;
    EventId = 4;
    return true;
  case llDoNotLog:
    return false;
  default:
    EventType = platform::EVENTLOG_INFORMATION_TYPE_;
    EventId = 2;
    return true;
  }
}

void TKxEventLogAppender::RegisterLogger(const AnsiString& SourceName) {
  TAppenderLock Guard(this);
  if (KxGetElevationLevel() == elFull) {
    // Registry failures are no reason not to report: the source is registered anyway.
    platform::RegKey Key = nullptr;
    bool Created = false;
    if (platform::RegCreateKey(platform::HKEY_LOCAL_MACHINE_,
                               Format(SKxEventLogSourceKey, {SourceName}), KeyAllAccess, Key,
                               Created) == 0) {
      if (Created) {
        platform::RegSetString(Key, "EventMessageFile", platform::ModuleFileName());
        platform::RegSetInteger(Key, "TypesSupported", TypesSupported);
      }
      platform::RegCloseKey(Key);
    }
  }
  // The previous source is not closed here: events already on their way through it may
  // still be reported. It goes with the appender.
  if (FEventLog) FPreviousSources.push_back(FEventLog);
  FEventLog = platform::RegisterEventSource(SourceName);
  FSourceName = SourceName;
}

bool TKxEventLogAppender::Registered() {
  TAppenderLock Guard(this);
  return FEventLog != nullptr;
}

AnsiString TKxEventLogAppender::SourceName() {
  TAppenderLock Guard(this);
  return FSourceName;
}

AnsiString TKxEventLogAppender::GetSysLogPath() {
  TAppenderLock Guard(this);
  return FSysLogPath;
}

void TKxEventLogAppender::SetSysLogPath(const AnsiString& Value) {
  TAppenderLock Guard(this);
  FSysLogPath = Value;
}

void TKxEventLogAppender::SetConfig(IKxLogConfigurator* Config) {
  TAppenderLock Guard(this);
  TKxBaseAppender::SetConfig(Config);
  if (!Config) return;
  const AnsiString Service =
      UnicodeToAnsi(VarToWideStr(Config->ReadValue(FLogName, u"ServiceName", Variant(u""))));
  if (!Service.empty()) RegisterLogger(Service);
  SetSysLogPath(UnicodeToAnsi(VarToWideStr(
      Config->ReadValue(FLogName, u"SysLogPath", Variant(AnsiToUnicode(FSysLogPath))))));
}

void KX_STDCALL TKxEventLogAppender::Write(const UnicodeString& LoggerName,
                                           const UnicodeString& OwnerName, TKxLogLevel Level,
                                           const UnicodeString& Msg, const TKxDataRec* Data,
                                           TKxLogIndent Indent) {
  TAppenderLock Guard(this);
  TKxBaseAppender::Write(LoggerName, OwnerName, Level, Msg, Data, Indent);
  uint16_t EventType = 0;
  uint32_t EventId = 0;
  if (!FLayout || !FEventLog || !LevelToEvent(Level, EventType, EventId)) return;
  // As with the file appenders, the line names the logger that owns the appender.
  const AnsiString Line = UnicodeToAnsi(FLayout->FormatLine(OwnerName, Level, Msg, Data, Indent));
  if (Line.empty()) return;
  // A lost event is not the caller's failure.
  platform::ReportEvent(FEventLog, EventType, EventId, Line, FSysLogPath);
}

} // namespace kx
