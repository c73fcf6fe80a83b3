// SPDX-License-Identifier: MIT
// The event log through the A functions: source names and texts in the process ANSI code page.
#include "platform/EventLog.h"

#include <windows.h>

#undef RegisterEventSource
#undef ReportEvent

namespace kx::platform {

int32_t SysLogPriority(uint16_t EventType) {
  switch (EventType) {
  case EVENTLOG_ERROR_TYPE_:
    return 8 + 3;
  case EVENTLOG_WARNING_TYPE_:
    return 8 + 4;
  case EVENTLOG_SUCCESS_:
    return 8 + 6;
  default:
    return 8 + 7;
  }
}

EventSource RegisterEventSource(const AnsiString& SourceName) {
  return ::RegisterEventSourceA(nullptr, SourceName.c_str());
}

bool ReportEvent(EventSource Source, uint16_t EventType, uint32_t EventId, const AnsiString& Text,
                 const AnsiString&) {
  LPCSTR Strings[1] = {Text.c_str()};
  return ::ReportEventA(Source, EventType, 0, EventId, nullptr, 1, 0, Strings, nullptr) != FALSE;
}

void DeregisterEventSource(EventSource Source) {
  if (Source) ::DeregisterEventSource(Source);
}

} // namespace kx::platform
