// SPDX-License-Identifier: MIT
// The syslog socket: one RFC 3164 datagram per event, from a socket each source owns.
#include "platform/EventLog.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace kx::platform {

namespace {

struct TSysLogSource {
  int Fd;
  AnsiString Ident;
};

constexpr int LogUser = 1 << 3;

} // namespace

int32_t SysLogPriority(uint16_t EventType) {
  switch (EventType) {
  case EVENTLOG_ERROR_TYPE_:
    return LogUser | 3;
  case EVENTLOG_WARNING_TYPE_:
    return LogUser | 4;
  case EVENTLOG_SUCCESS_:
    return LogUser | 6;
  default:
    return LogUser | 7;
  }
}

EventSource RegisterEventSource(const AnsiString& SourceName) {
  const int Fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (Fd < 0) return nullptr;
  return new TSysLogSource{Fd, SourceName};
}

bool ReportEvent(EventSource Source, uint16_t EventType, uint32_t, const AnsiString& Text,
                 const AnsiString& SysLogPath) {
  auto* S = static_cast<TSysLogSource*>(Source);
  if (!S) {
    errno = EINVAL;
    return false;
  }
  sockaddr_un Addr{};
  Addr.sun_family = AF_UNIX;
  if (SysLogPath.empty() || SysLogPath.size() >= sizeof Addr.sun_path) {
    errno = ENAMETOOLONG;
    return false;
  }
  std::memcpy(Addr.sun_path, SysLogPath.data(), SysLogPath.size());
  // The header as the daemons expect it from a local program: no host name, the month in
  // English whatever the locale, the day padded with a space.
  static constexpr const char* Months[12] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const time_t T = ::time(nullptr);
  tm Local{};
  ::localtime_r(&T, &Local);
  char Header[64];
  const int HeaderLen = std::snprintf(Header, sizeof Header, "<%d>%s %2d %02d:%02d:%02d ",
                                      int(SysLogPriority(EventType)), Months[Local.tm_mon],
                                      Local.tm_mday, Local.tm_hour, Local.tm_min, Local.tm_sec);
  char Pid[32];
  const int PidLen = std::snprintf(Pid, sizeof Pid, "[%ld]: ", long(::getpid()));
  AnsiString Datagram;
  Datagram.reserve(size_t(HeaderLen) + S->Ident.size() + size_t(PidLen) + Text.size());
  Datagram.append(Header, size_t(HeaderLen)).append(S->Ident).append(Pid, size_t(PidLen));
  Datagram += Text;
  const ssize_t Sent =
      ::sendto(S->Fd, Datagram.data(), Datagram.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
               reinterpret_cast<const sockaddr*>(&Addr), socklen_t(sizeof Addr));
  return Sent == ssize_t(Datagram.size());
}

void DeregisterEventSource(EventSource Source) {
  auto* S = static_cast<TSysLogSource*>(Source);
  if (!S) return;
  ::close(S->Fd);
  delete S;
}

} // namespace kx::platform
