// SPDX-License-Identifier: MIT
// Machine and process facts for log records on POSIX.
#include "platform/Host.h"
#include "platform/Environment.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <pwd.h>
#include <string>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

namespace kx::platform {

AnsiString HostComputerName() {
  char Buffer[256] = {};
  if (gethostname(Buffer, sizeof Buffer - 1) != 0) return AnsiString();
  return AnsiString(Buffer);
}

AnsiString HostUserName() {
  passwd Entry{};
  passwd* Found = nullptr;
  std::vector<char> Buffer(4096);
  if (getpwuid_r(geteuid(), &Entry, Buffer.data(), Buffer.size(), &Found) == 0 && Found)
    return AnsiString(Found->pw_name);
  if (const char* User = std::getenv("USER")) return AnsiString(User);
  return AnsiString();
}

uint32_t HostProcessId() {
  return static_cast<uint32_t>(getpid());
}

THostOSVersion HostOSVersion() {
  THostOSVersion Result;
  utsname Uts{};
  if (uname(&Uts) == 0) {
    // The kernel release: "6.1.0-13-amd64" gives 6, 1 and build 0.
    unsigned Parts[3] = {0, 0, 0};
    const char* P = Uts.release;
    for (int I = 0; I < 3 && *P; ++I) {
      while (*P >= '0' && *P <= '9') Parts[I] = Parts[I] * 10 + unsigned(*P++ - '0');
      if (*P != '.') break;
      ++P;
    }
    Result.Major = Parts[0];
    Result.Minor = Parts[1];
    Result.Build = Parts[2];
    Result.Name = Uts.sysname;
  }
  // The same file and reading as the environment functions, so that a log names the system as
  // they do.
  const AnsiString File = OSReleaseFile();
  if (!File.empty()) {
    std::ifstream Release(File.c_str(), std::ios::binary);
    std::string Text(65536, '\0');
    Release.read(Text.data(), std::streamsize(Text.size()));
    Text.resize(size_t(Release.gcount()));
    std::vector<std::pair<AnsiString, AnsiString>> Items;
    ParseOSRelease(Text, Items);
    AnsiString Name = OSReleaseValue(Items, "PRETTY_NAME");
    if (Name.empty()) Name = OSReleaseValue(Items, "NAME");
    if (!Name.empty()) Result.Name = Name;
  }
  return Result;
}

bool HostScreen(int32_t&, int32_t&, int32_t&) {
  return false;
}

AnsiString HostSharedDocumentsFolder() {
  if (const char* State = std::getenv("XDG_STATE_HOME"); State && State[0] == '/')
    return AnsiString(State);
  if (const char* Home = std::getenv("HOME"); Home && Home[0])
    return AnsiString(Home) + "/.local/state";
  passwd Entry{};
  passwd* Found = nullptr;
  std::vector<char> Buffer(4096);
  if (getpwuid_r(geteuid(), &Entry, Buffer.data(), Buffer.size(), &Found) == 0 && Found)
    return AnsiString(Found->pw_dir) + "/.local/state";
  return AnsiString("/tmp");
}

void HostStampLocalTime(TSystemTime& Time) {
  timespec Ts{};
  clock_gettime(CLOCK_REALTIME, &Ts);
  // tzset looks at the zone file on every call; once a second is enough for a time stamp.
  thread_local time_t CachedSecond = -1;
  thread_local tm Cached{};
  if (Ts.tv_sec != CachedSecond) {
    tzset();
    localtime_r(&Ts.tv_sec, &Cached);
    CachedSecond = Ts.tv_sec;
  }
  Time.wYear = uint16_t(Cached.tm_year + 1900);
  Time.wMonth = uint16_t(Cached.tm_mon + 1);
  Time.wDayOfWeek = uint16_t(Cached.tm_wday);
  Time.wDay = uint16_t(Cached.tm_mday);
  Time.wHour = uint16_t(Cached.tm_hour);
  Time.wMinute = uint16_t(Cached.tm_min);
  Time.wSecond = uint16_t(Cached.tm_sec > 59 ? 59 : Cached.tm_sec);
  Time.wMilliseconds = uint16_t(Ts.tv_nsec / 1000000);
}

} // namespace kx::platform
