// SPDX-License-Identifier: MIT
// The environment on POSIX: uname, the user database, the environment block, the XDG folders.
#include "platform/Environment.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <vector>

namespace kx::platform {

int32_t WindowsVersionCode() {
  errno = static_cast<int>(ERROR_NOT_SUPPORTED_);
  return 0;
}

void GetOSInfo(TOSInfo& Info) {
  Info = TOSInfo();
  utsname U{};
  if (uname(&U) == 0) {
    Info.Name = U.sysname;
    Info.Release = U.release;
    Info.Machine = U.machine;
    uint32_t* Parts[3] = {&Info.Major, &Info.Minor, &Info.Build};
    const char* P = U.release;
    for (int I = 0; I < 3 && *P; ++I) {
      while (*P >= '0' && *P <= '9') *Parts[I] = *Parts[I] * 10 + uint32_t(*P++ - '0');
      if (*P != '.') break;
      ++P;
    }
  }
}

AnsiString OSReleaseFile() {
  for (const char* Name : {"/etc/os-release", "/usr/lib/os-release"})
    if (access(Name, R_OK) == 0) return Name;
  return AnsiString();
}

bool IsWow64Process() {
  return false;
}

int32_t ElevationLevel() {
  return geteuid() == 0 ? 1 : 2;
}

namespace {

bool IsRegularFile(const AnsiString& Name) {
  struct stat St {};
  return stat(Name.c_str(), &St) == 0 && S_ISREG(St.st_mode);
}

// The effective user's passwd entry; the record's strings live in Buf.
bool EffectiveUser(passwd& Pw, std::vector<char>& Buf) {
  long Size = sysconf(_SC_GETPW_R_SIZE_MAX);
  Buf.resize(Size > 0 ? size_t(Size) : 4096);
  for (;;) {
    passwd* Found = nullptr;
    const int Rc = getpwuid_r(geteuid(), &Pw, Buf.data(), Buf.size(), &Found);
    if (Rc == ERANGE && Buf.size() < (size_t(1) << 20)) {
      Buf.resize(Buf.size() * 2);
      continue;
    }
    if (Rc != 0 || !Found) {
      errno = Rc != 0 ? Rc : ENOENT;
      return false;
    }
    return true;
  }
}

} // namespace

AnsiString SearchPath(const AnsiString& FileName) {
  if (FileName.empty()) return AnsiString();
  if (FileName.find('/') != AnsiString::npos)
    return IsRegularFile(FileName) ? FileName : AnsiString();
  const char* Path = std::getenv("PATH");
  AnsiString Dirs = Path ? Path : "/usr/local/bin:/usr/bin:/bin";
  size_t Start = 0;
  while (Start <= Dirs.size()) {
    size_t End = Dirs.find(':', Start);
    if (End == AnsiString::npos) End = Dirs.size();
    AnsiString Dir = Dirs.substr(Start, End - Start);
    if (Dir.empty()) Dir = ".";
    const AnsiString Candidate = Dir + "/" + FileName;
    if (IsRegularFile(Candidate)) return Candidate;
    Start = End + 1;
  }
  errno = ENOENT;
  return AnsiString();
}

bool ComputerName(AnsiString& Name) {
  char Buf[512] = {};
  if (gethostname(Buf, sizeof Buf - 1) != 0) return false;
  Name = Buf;
  return true;
}

bool UserName(AnsiString& Name) {
  passwd Pw{};
  std::vector<char> Buf;
  if (!EffectiveUser(Pw, Buf)) return false;
  Name = Pw.pw_name ? Pw.pw_name : "";
  return true;
}

void AccountName(AnsiString& Name, AnsiString& Domain) {
  Name.clear();
  Domain.clear();
  UserName(Name);
  // A local account's domain is the machine, as Windows reports it.
  ComputerName(Domain);
}

int32_t ComputerDescription(AnsiString& Description) {
  Description.clear();
  std::ifstream F("/etc/machine-info");
  std::string Line;
  while (std::getline(F, Line)) {
    if (Line.rfind("PRETTY_HOSTNAME=", 0) != 0) continue;
    AnsiString V = Line.substr(16);
    if (V.size() >= 2 && (V.front() == '"' || V.front() == '\'') && V.back() == V.front())
      V = V.substr(1, V.size() - 2);
    Description = V;
  }
  return 0;
}

bool GetEnvironmentVariable(const AnsiString& Name, AnsiString& Value) {
  const char* V = Name.find('\0') == AnsiString::npos ? std::getenv(Name.c_str()) : nullptr;
  if (!V) {
    errno = ENOENT;
    return false;
  }
  Value = V;
  return true;
}

bool SetEnvironmentVariable(const AnsiString& Name, const AnsiString& Value) {
  return setenv(Name.c_str(), Value.c_str(), 1) == 0;
}

bool UnsetEnvironmentVariable(const AnsiString& Name) {
  return unsetenv(Name.c_str()) == 0;
}

AnsiString ExpandEnvironmentStrings(const AnsiString& S) {
  // Windows' scan: text up to a '%' is copied; "%NAME%" of a set variable becomes its value,
  // any other "%...%" (an empty name too) is copied as it stands and the scan goes on after it.
  // A '%' without a second one is copied with the rest.
  AnsiString Result;
  size_t I = 0;
  while (I < S.size()) {
    if (S[I] != '%') {
      Result += S[I++];
      continue;
    }
    const size_t Close = S.find('%', I + 1);
    if (Close == AnsiString::npos) {
      Result.append(S, I, AnsiString::npos);
      break;
    }
    const AnsiString Name = S.substr(I + 1, Close - I - 1);
    AnsiString Value;
    if (!Name.empty() && GetEnvironmentVariable(Name, Value))
      Result += Value;
    else
      Result.append(S, I, Close - I + 1);
    I = Close + 1;
  }
  return Result;
}

namespace {

AnsiString HomeFolder() {
  AnsiString Home;
  if (GetEnvironmentVariable("HOME", Home) && !Home.empty()) return Home;
  passwd Pw{};
  std::vector<char> Buf;
  if (EffectiveUser(Pw, Buf) && Pw.pw_dir) return Pw.pw_dir;
  return AnsiString();
}

// An XDG base folder: the variable when it holds an absolute path, else the default below home.
AnsiString XdgFolder(const char* Variable, const char* Default) {
  AnsiString V;
  if (GetEnvironmentVariable(Variable, V) && !V.empty() && V[0] == '/') return V;
  const AnsiString Home = HomeFolder();
  return Home.empty() ? AnsiString() : Home + "/" + Default;
}

// A user folder from user-dirs.dirs (XDG_DOCUMENTS_DIR="$HOME/Documents"), else home + Default.
AnsiString XdgUserFolder(const char* Key, const char* Default) {
  const AnsiString Home = HomeFolder();
  AnsiString V;
  if (GetEnvironmentVariable(Key, V) && !V.empty() && V[0] == '/') return V;
  std::ifstream F(XdgFolder("XDG_CONFIG_HOME", ".config") + "/user-dirs.dirs");
  std::string Line;
  const std::string Prefix = std::string(Key) + "=\"";
  while (std::getline(F, Line)) {
    if (Line.rfind(Prefix, 0) != 0 || Line.size() < Prefix.size() + 1 || Line.back() != '"')
      continue;
    std::string P = Line.substr(Prefix.size(), Line.size() - Prefix.size() - 1);
    if (P.rfind("$HOME", 0) == 0)
      P = Home + P.substr(5);
    else if (P.empty() || P[0] != '/')
      continue;
    while (P.size() > 1 && P.back() == '/') P.pop_back();
    return P;
  }
  return Home.empty() ? AnsiString() : Home + "/" + Default;
}

} // namespace

bool ShellFolder(int32_t Csidl, AnsiString& Path) {
  switch (Csidl) {
  case 0x05: // CSIDL_PERSONAL
    Path = XdgUserFolder("XDG_DOCUMENTS_DIR", "Documents");
    break;
  case 0x10: // CSIDL_DESKTOPDIRECTORY
    Path = XdgUserFolder("XDG_DESKTOP_DIR", "Desktop");
    break;
  case 0x1A: // CSIDL_APPDATA
    Path = XdgFolder("XDG_CONFIG_HOME", ".config");
    break;
  case 0x1C: // CSIDL_LOCAL_APPDATA
    Path = XdgFolder("XDG_DATA_HOME", ".local/share");
    break;
  case 0x2E: // CSIDL_COMMON_DOCUMENTS: where programs leave their logs
    Path = XdgFolder("XDG_STATE_HOME", ".local/state");
    break;
  case 0x23: // CSIDL_COMMON_APPDATA
    Path = "/var/lib";
    break;
  case 0x24: // CSIDL_WINDOWS
  case 0x25: // CSIDL_SYSTEM
    Path = "/usr/bin";
    break;
  default:
    errno = static_cast<int>(ERROR_NOT_SUPPORTED_);
    return false;
  }
  if (Path.empty()) {
    errno = ENOENT;
    return false;
  }
  return true;
}

} // namespace kx::platform
