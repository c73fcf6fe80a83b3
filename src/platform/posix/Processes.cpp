// SPDX-License-Identifier: MIT
// Processes on POSIX: posix_spawn with a pipe, xdg-open and pkexec for the shell's verbs.
#include "platform/Processes.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace kx::platform {

namespace {

// Words of a command line: blanks separate; '...' is literal; "..." and bare text take
// backslash escapes. No expansions of any kind.
bool SplitCommandLine(const AnsiString& Line, std::vector<AnsiString>& Words) {
  Words.clear();
  size_t I = 0;
  const size_t N = Line.size();
  while (I < N) {
    while (I < N && (Line[I] == ' ' || Line[I] == '\t' || Line[I] == '\n' || Line[I] == '\r')) ++I;
    if (I >= N) break;
    AnsiString Word;
    while (I < N && Line[I] != ' ' && Line[I] != '\t' && Line[I] != '\n' && Line[I] != '\r') {
      const char C = Line[I++];
      if (C == '\'') {
        const size_t Close = Line.find('\'', I);
        if (Close == AnsiString::npos) return false;
        Word.append(Line, I, Close - I);
        I = Close + 1;
      } else if (C == '"') {
        for (;;) {
          if (I >= N) return false;
          const char D = Line[I++];
          if (D == '"') break;
          if (D == '\\' && I < N &&
              (Line[I] == '"' || Line[I] == '\\' || Line[I] == '$' || Line[I] == '`'))
            Word += Line[I++];
          else
            Word += D;
        }
      } else if (C == '\\' && I < N) {
        Word += Line[I++];
      } else {
        Word += C;
      }
    }
    Words.push_back(std::move(Word));
  }
  return true;
}

// The spawn's file actions and attributes, released whatever happens.
struct TSpawnSetup {
  posix_spawn_file_actions_t Actions;
  posix_spawnattr_t Attr;
  TSpawnSetup() {
    posix_spawn_file_actions_init(&Actions);
    posix_spawnattr_init(&Attr);
    // The child starts with the default signal dispositions and an empty mask.
    sigset_t Set;
    sigemptyset(&Set);
    posix_spawnattr_setsigmask(&Attr, &Set);
    sigaddset(&Set, SIGPIPE);
    posix_spawnattr_setsigdefault(&Attr, &Set);
    posix_spawnattr_setflags(&Attr, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  }
  ~TSpawnSetup() {
    posix_spawn_file_actions_destroy(&Actions);
    posix_spawnattr_destroy(&Attr);
  }
};

bool Spawn(const std::vector<AnsiString>& Words, TSpawnSetup& Setup, pid_t& Pid) {
  if (Words.empty()) {
    errno = ENOENT;
    return false;
  }
  std::vector<char*> Argv;
  for (const auto& W : Words) Argv.push_back(const_cast<char*>(W.c_str()));
  Argv.push_back(nullptr);
  const int Rc = posix_spawnp(&Pid, Argv[0], &Setup.Actions, &Setup.Attr, Argv.data(), environ);
  if (Rc != 0) {
    errno = Rc;
    return false;
  }
  return true;
}

int WaitExit(pid_t Pid) {
  int Status = 0;
  while (waitpid(Pid, &Status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(Status)) return WEXITSTATUS(Status);
  if (WIFSIGNALED(Status)) return 128 + WTERMSIG(Status);
  return -1;
}

// A process started without waiting is reaped by a thread of its own, so none is left behind
// as a zombie.
void ReapLater(pid_t Pid) {
  std::thread([Pid] { WaitExit(Pid); }).detach();
}

struct TFd {
  int Fd = -1;
  ~TFd() {
    if (Fd >= 0) close(Fd);
  }
};

bool IsExecutableFile(const AnsiString& Name, AnsiString& Path) {
  auto Check = [](const AnsiString& P) {
    struct stat St {};
    return stat(P.c_str(), &St) == 0 && S_ISREG(St.st_mode) && access(P.c_str(), X_OK) == 0;
  };
  if (Name.find('/') != AnsiString::npos) {
    Path = Name;
    return Check(Name);
  }
  const char* Env = std::getenv("PATH");
  const AnsiString Dirs = Env ? Env : "/usr/local/bin:/usr/bin:/bin";
  size_t Start = 0;
  while (Start <= Dirs.size()) {
    size_t End = Dirs.find(':', Start);
    if (End == AnsiString::npos) End = Dirs.size();
    const AnsiString Dir = End > Start ? Dirs.substr(Start, End - Start) : ".";
    if (Check(Dir + "/" + Name)) {
      Path = Dir + "/" + Name;
      return true;
    }
    Start = End + 1;
  }
  return false;
}

bool HasDesktop() {
  const char* X = std::getenv("DISPLAY");
  const char* W = std::getenv("WAYLAND_DISPLAY");
  return (X && *X) || (W && *W);
}

// Starts Words (under pkexec when Elevated); waits when asked to.
bool Start(std::vector<AnsiString> Words, bool Elevated, bool Wait) {
  if (Elevated) Words.insert(Words.begin(), "pkexec");
  TSpawnSetup Setup;
  posix_spawn_file_actions_addopen(&Setup.Actions, 0, "/dev/null", O_RDONLY, 0);
  pid_t Pid = 0;
  if (!Spawn(Words, Setup, Pid)) return false;
  if (Wait)
    WaitExit(Pid);
  else
    ReapLater(Pid);
  return true;
}

} // namespace

bool RunProcessCaptured(const AnsiString& CommandLine, const AnsiString& Directory,
                        TProcessOutput Output, void* Context, uint32_t& ExitCode) {
  std::vector<AnsiString> Words;
  if (!SplitCommandLine(CommandLine, Words)) {
    errno = EINVAL;
    return false;
  }
  if (!Directory.empty()) {
    struct stat St {};
    if (stat(Directory.c_str(), &St) != 0) return false;
    if (!S_ISDIR(St.st_mode)) {
      errno = ENOTDIR;
      return false;
    }
  }
  int Fds[2];
  if (pipe2(Fds, O_CLOEXEC) != 0) return false;
  TFd Read{Fds[0]}, Write{Fds[1]};
  TSpawnSetup Setup;
  posix_spawn_file_actions_addopen(&Setup.Actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&Setup.Actions, Write.Fd, 1);
  posix_spawn_file_actions_adddup2(&Setup.Actions, Write.Fd, 2);
  if (!Directory.empty()) posix_spawn_file_actions_addchdir_np(&Setup.Actions, Directory.c_str());
  pid_t Pid = 0;
  if (!Spawn(Words, Setup, Pid)) return false;
  close(Write.Fd);
  Write.Fd = -1;
  try {
    char Buf[65536];
    for (;;) {
      const ssize_t Got = read(Read.Fd, Buf, sizeof Buf);
      if (Got < 0 && errno == EINTR) continue;
      if (Got <= 0) break;
      if (Output) Output(Context, Buf, size_t(Got));
    }
  } catch (...) {
    // The child sees a broken pipe at its next write; it is reaped when it ends.
    close(Read.Fd);
    Read.Fd = -1;
    ReapLater(Pid);
    throw;
  }
  ExitCode = uint32_t(WaitExit(Pid));
  return true;
}

bool ShellExecute(const AnsiString& Verb, const AnsiString& File, const AnsiString& Parameters,
                  bool Elevated, bool Hidden, bool Wait) {
  (void)Hidden;
  AnsiString Program;
  const bool Opening = Verb.empty() || Verb == "open" || Verb == "Open";
  if (IsExecutableFile(File, Program)) {
    std::vector<AnsiString> Words;
    if (!SplitCommandLine(Parameters, Words)) {
      errno = EINVAL;
      return false;
    }
    Words.insert(Words.begin(), Program);
    return Start(std::move(Words), Elevated, Wait);
  }
  if (!Opening || !HasDesktop()) {
    errno = int(ERROR_NO_ASSOCIATION_);
    return false;
  }
  return Start({"xdg-open", File}, Elevated, Wait);
}

bool ShellCommand(const AnsiString& Parameters, bool Elevated) {
  return Start({"/bin/sh", "-c", Parameters}, Elevated, false);
}

} // namespace kx::platform
