// SPDX-License-Identifier: MIT
#pragma once
// The system log as an event source. Windows: the event log (RegisterEventSource, ReportEvent).
// POSIX: the syslog socket, written RFC 3164 datagrams over a socket the source owns, so
// every source keeps its own identity (syslog(3) has one per process).

#include "platform/Platform.h"

namespace kx::platform {

using EventSource = void*;

// The event log's event types.
inline constexpr uint16_t EVENTLOG_SUCCESS_ = 0;
inline constexpr uint16_t EVENTLOG_ERROR_TYPE_ = 1;
inline constexpr uint16_t EVENTLOG_WARNING_TYPE_ = 2;
inline constexpr uint16_t EVENTLOG_INFORMATION_TYPE_ = 4;

// The syslog priority an event type is sent with on POSIX: facility user (the applications'
// log), severity error, warning, info (success) or debug (information).
int32_t SysLogPriority(uint16_t EventType);

// A source of that name on the local computer; null on failure. POSIX: an unbound datagram
// socket (close-on-exec) and the name as the messages' identity.
EventSource RegisterEventSource(const AnsiString& SourceName);
// One event: category 0, no user, Text as its one string, no data. SysLogPath is where a
// POSIX source sends its datagram ("<PRI>Mmm dd hh:mm:ss ident[pid]: text", local time),
// without waiting: a full or missing log drops the event. Windows reports to the local
// event log and ignores SysLogPath. False when the event was not handed over.
bool ReportEvent(EventSource Source, uint16_t EventType, uint32_t EventId, const AnsiString& Text,
                 const AnsiString& SysLogPath);
void DeregisterEventSource(EventSource Source);

} // namespace kx::platform
