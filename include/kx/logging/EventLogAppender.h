// SPDX-License-Identifier: MIT
#pragma once
// The event log appender: each formatted line becomes one event of the system log, its type
// and identifier chosen by the level. Windows reports to the application event log; POSIX
// sends RFC 3164 datagrams to the syslog socket ("/dev/log", read by journald and rsyslog)
// from a socket of the appender's own, with the source name as the identity.

#include <kx/logging/LogBase.h>

#include <vector>

namespace kx {

inline constexpr const char* cKxEventLogAppender = "TKxEventLogAppender";
inline constexpr const char* SKxEventLogSourceKey =
    "SYSTEM\\CurrentControlSet\\Services\\Eventlog\\Application\\%s";
inline constexpr const char* cKxDefaultSysLogPath = "/dev/log";

class KX_API TKxEventLogAppender : public TKxBaseAppender {
  KX_CLASS(TKxEventLogAppender, TKxBaseAppender)
public:
  // Registers the program's file name (no folder, no extension) as the source.
  TKxEventLogAppender();
  TKxEventLogAppender(TKxLogger* ALogger, const UnicodeString& AName);
  ~TKxEventLogAppender() override;

  // Keys: the base's, then "ServiceName" (a non-empty value is registered as the source) and
  // "SysLogPath".
  void SetConfig(IKxLogConfigurator* Config) override;
  void KX_STDCALL Write(const UnicodeString& LoggerName, const UnicodeString& OwnerName,
                        TKxLogLevel Level, const UnicodeString& Msg, const TKxDataRec* Data,
                        TKxLogIndent Indent) override;

  // When the process is elevated, creates the source's key with "EventMessageFile" (this
  // executable) and "TypesSupported" = 7 unless it exists; then registers the source. A
  // previous source stays registered until the appender goes away.
  void RegisterLogger(const AnsiString& SourceName);
  bool Registered();
  AnsiString SourceName();
  // Where POSIX sends the datagrams; Windows ignores it.
  AnsiString GetSysLogPath();
  void SetSysLogPath(const AnsiString& Value);

  // The event type and identifier a level is reported with; false for llDoNotLog.
  static bool LevelToEvent(TKxLogLevel Level, uint16_t& EventType, uint32_t& EventId);

private:
  void* FEventLog = nullptr;
  std::vector<void*> FPreviousSources;
  AnsiString FSourceName;
  AnsiString FSysLogPath = cKxDefaultSysLogPath;
};

} // namespace kx
