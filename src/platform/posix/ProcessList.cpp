// SPDX-License-Identifier: MIT
// Running processes on POSIX, over /proc: lookup by executable name, signals to end them.
#include "platform/Environment.h"
#include "platform/Processes.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <thread>
#include <unistd.h>

namespace kx::platform {

namespace {

// The kernel keeps this many characters of a process's name in comm.
constexpr size_t CommLength = 15;

bool SameNameAscii(const AnsiString& A, const AnsiString& B) {
  if (A.size() != B.size()) return false;
  for (size_t I = 0; I < A.size(); ++I) {
    char X = A[I], Y = B[I];
    if (X >= 'A' && X <= 'Z') X = char(X - 'A' + 'a');
    if (Y >= 'A' && Y <= 'Z') Y = char(Y - 'A' + 'a');
    if (X != Y) return false;
  }
  return true;
}

AnsiString BaseName(const AnsiString& Path) {
  const size_t Slash = Path.rfind('/');
  return Slash == AnsiString::npos ? Path : Path.substr(Slash + 1);
}

// A small /proc file whole; false when it cannot be read.
bool ReadProcFile(const AnsiString& Path, AnsiString& Text) {
  Text.clear();
  const int Fd = open(Path.c_str(), O_RDONLY | O_CLOEXEC);
  if (Fd < 0) return false;
  char Buf[1024];
  for (;;) {
    const ssize_t Got = read(Fd, Buf, sizeof Buf);
    if (Got < 0 && errno == EINTR) continue;
    if (Got <= 0) break;
    Text.append(Buf, size_t(Got));
  }
  close(Fd);
  return true;
}

// The state letter of /proc/PID/stat: the field after the name, which may itself hold blanks
// and parentheses, so it is found from the last ')'. 0 when the process is not there.
char ProcessState(uint32_t Id) {
  AnsiString Stat;
  if (!ReadProcFile("/proc/" + std::to_string(Id) + "/stat", Stat)) return 0;
  const size_t Close = Stat.rfind(')');
  if (Close == AnsiString::npos || Close + 2 >= Stat.size()) return 0;
  return Stat[Close + 2];
}

// The executable's name of a process, and whether it is only comm's shortened one.
bool ProcessExeName(const AnsiString& Dir, AnsiString& Name, bool& FromComm) {
  char Buf[4096];
  const ssize_t N = readlink((Dir + "/exe").c_str(), Buf, sizeof Buf - 1);
  if (N > 0) {
    AnsiString Target(Buf, size_t(N));
    // A replaced or removed executable still runs; the link says so after its name.
    static const AnsiString Deleted = " (deleted)";
    if (Target.size() > Deleted.size() &&
        Target.compare(Target.size() - Deleted.size(), Deleted.size(), Deleted) == 0)
      Target.resize(Target.size() - Deleted.size());
    Name = BaseName(Target);
    FromComm = false;
    return true;
  }
  if (!ReadProcFile(Dir + "/comm", Name)) return false;
  while (!Name.empty() && Name.back() == '\n') Name.pop_back();
  FromComm = true;
  return !Name.empty();
}

bool Signal(uint32_t Id, int Sig) {
  if (Id == 0 || Id > uint32_t(INT32_MAX)) {
    errno = ESRCH;
    return false;
  }
  return kill(pid_t(Id), Sig) == 0;
}

} // namespace

bool FindProcesses(const AnsiString& ExeName, std::vector<uint32_t>& Ids) {
  Ids.clear();
  const AnsiString Wanted = BaseName(ExeName);
  DIR* Proc = opendir("/proc");
  if (!Proc) return false;
  while (const dirent* E = readdir(Proc)) {
    char* End = nullptr;
    const unsigned long Id = std::strtoul(E->d_name, &End, 10);
    if (*End != '\0' || Id == 0 || Id > INT32_MAX) continue;
    const AnsiString Dir = AnsiString("/proc/") + E->d_name;
    AnsiString Name;
    bool FromComm = false;
    if (!ProcessExeName(Dir, Name, FromComm)) continue;
    const bool Match =
        SameNameAscii(Name, Wanted) || (FromComm && Wanted.size() > CommLength &&
                                        SameNameAscii(Name, Wanted.substr(0, CommLength)));
    if (!Match) continue;
    const char State = ProcessState(uint32_t(Id));
    if (State == 0 || State == 'Z' || State == 'X') continue;
    Ids.push_back(uint32_t(Id));
  }
  closedir(Proc);
  return true;
}

AnsiString CurrentExeName() {
  AnsiString Name;
  bool FromComm = false;
  ProcessExeName("/proc/self", Name, FromComm);
  return Name;
}

uint32_t CurrentProcessId() {
  return uint32_t(getpid());
}

bool ProcessRunning(uint32_t Id) {
  const char State = ProcessState(Id);
  return State != 0 && State != 'Z' && State != 'X';
}

bool WaitProcessEnd(uint32_t Id, uint32_t TimeoutMs) {
  // Another program's process cannot be waited for: its end is watched in /proc.
  const auto Deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(TimeoutMs);
  for (;;) {
    if (!ProcessRunning(Id)) return true;
    if (std::chrono::steady_clock::now() >= Deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

bool AskProcessToEnd(uint32_t Id, bool& Asked) {
  Asked = false;
  if (!Signal(Id, SIGTERM)) return false;
  Asked = true;
  return true;
}

bool EndProcess(uint32_t Id, uint32_t GraceMs, bool& Ended) {
  Ended = false;
  if (!Signal(Id, SIGTERM)) return false;
  if (!WaitProcessEnd(Id, GraceMs)) {
    // It ignores or handles SIGTERM and has not finished: SIGKILL cannot be refused.
    if (!Signal(Id, SIGKILL) && errno != ESRCH) return false;
    if (!WaitProcessEnd(Id, 5000)) return true;
  }
  Ended = true;
  return true;
}

bool BringProcessToFront(uint32_t, bool& Found) {
  Found = false;
  errno = int(ERROR_NOT_SUPPORTED_);
  return false;
}

} // namespace kx::platform
