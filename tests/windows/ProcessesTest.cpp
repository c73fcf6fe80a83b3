// SPDX-License-Identifier: MIT
// Running processes, found, closed and killed for real: the children are copies of the test
// program under a name of their own, so no other program's processes are ever touched.
#include <kx/rtl/Exceptions.h>
#include <kx/sysutils/SystemInfo.h>
#include <kx/uKxWindows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#if defined(_WIN32)
#include <windows.h>
#else
#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
extern char** environ;
#endif

using namespace kx;

namespace {

// With KX_TEST_LINGER="<ms>:<mode>:<ready file>" in its environment the test program stays
// alive for ms milliseconds and exits 0. Mode "ignore-term" ignores SIGTERM first;
// "kill-others" first kills the other instances of its own executable and writes the count
// into the ready file. The ready file is written once the child is set up.
const int Linger = [] {
  const char* Request = std::getenv("KX_TEST_LINGER");
  if (!Request) return 0;
  const std::string R = Request;
  const size_t A = R.find(':'), B = R.find(':', A + 1);
  if (A == std::string::npos || B == std::string::npos) std::_Exit(99);
  const int Ms = std::atoi(R.substr(0, A).c_str());
  const std::string Mode = R.substr(A + 1, B - A - 1), Ready = R.substr(B + 1);
#if !defined(_WIN32)
  if (Mode == "ignore-term") std::signal(SIGTERM, SIG_IGN);
#endif
  std::string Note = "ready";
  if (Mode == "kill-others") Note = std::to_string(KxKillRunningInstances());
  {
    std::ofstream Out(Ready + ".tmp");
    Out << Note;
  }
  std::rename((Ready + ".tmp").c_str(), Ready.c_str());
  std::this_thread::sleep_for(std::chrono::milliseconds(Ms));
  std::_Exit(0);
}();

std::filesystem::path OwnExecutable() {
#if defined(_WIN32)
  wchar_t Buf[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, Buf, MAX_PATH);
  return Buf;
#else
  return std::filesystem::read_symlink("/proc/self/exe");
#endif
}

uint32_t OwnId() {
#if defined(_WIN32)
  return ::GetCurrentProcessId();
#else
  return uint32_t(getpid());
#endif
}

// A copy of the test program beside it (so it finds its libraries), named for this test run.
class TChildProgram {
public:
  explicit TChildProgram(const std::string& Tag) {
    const std::filesystem::path Own = OwnExecutable();
    FName = "kxch" + Tag + std::to_string(OwnId()) + Own.extension().string();
    FPath = Own.parent_path() / FName;
    std::filesystem::copy_file(Own, FPath, std::filesystem::copy_options::overwrite_existing);
  }
  ~TChildProgram() {
    std::error_code Ignored;
    std::filesystem::remove(FPath, Ignored);
  }
  const std::string& Name() const { return FName; }
  const std::filesystem::path& Path() const { return FPath; }

private:
  std::string FName;
  std::filesystem::path FPath;
};

// One running child; killed and reaped at the end of the test whatever happened.
class TChild {
public:
  TChild(const TChildProgram& Program, const std::string& Mode, int Ms = 60000)
      : FReady(Program.Path().string() + "." + std::to_string(++Counter) + ".ready") {
    std::filesystem::remove(FReady);
    const std::string Request = std::to_string(Ms) + ":" + Mode + ":" + FReady;
#if defined(_WIN32)
    ::SetEnvironmentVariableA("KX_TEST_LINGER", Request.c_str());
    std::wstring Line = L"\"" + Program.Path().wstring() + L"\"";
    STARTUPINFOW Si{};
    Si.cb = sizeof Si;
    PROCESS_INFORMATION Pi{};
    const BOOL Ok = ::CreateProcessW(nullptr, Line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                     nullptr, &Si, &Pi);
    ::SetEnvironmentVariableA("KX_TEST_LINGER", nullptr);
    if (!Ok) throw std::runtime_error("CreateProcess failed");
    ::CloseHandle(Pi.hThread);
    FProcess = Pi.hProcess;
    FId = Pi.dwProcessId;
#else
    setenv("KX_TEST_LINGER", Request.c_str(), 1);
    const std::string Path = Program.Path().string();
    char* Argv[] = {const_cast<char*>(Path.c_str()), nullptr};
    pid_t Pid = 0;
    const int Rc = posix_spawn(&Pid, Path.c_str(), nullptr, nullptr, Argv, environ);
    unsetenv("KX_TEST_LINGER");
    if (Rc != 0) throw std::runtime_error("posix_spawn failed");
    FId = uint32_t(Pid);
#endif
  }
  ~TChild() {
#if defined(_WIN32)
    ::TerminateProcess(FProcess, 9);
    ::WaitForSingleObject(FProcess, 5000);
    ::CloseHandle(FProcess);
#else
    if (!FReaped) {
      kill(pid_t(FId), SIGKILL);
      waitpid(pid_t(FId), nullptr, 0);
    }
#endif
    std::error_code Ignored;
    std::filesystem::remove(FReady, Ignored);
  }
  uint32_t Id() const {
    return FId;
  }

  // Waits until the child is set up, and returns what it noted.
  std::string WaitReady() const {
    for (int I = 0; I < 400; ++I) {
      if (std::filesystem::exists(FReady)) {
        std::ifstream In(FReady);
        std::string Note;
        In >> Note;
        return Note;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(25));
    }
    return "timed out";
  }

#if defined(_WIN32)
  bool Ended() const {
    return ::WaitForSingleObject(FProcess, 0) == WAIT_OBJECT_0;
  }
  uint32_t ExitCode() const {
    DWORD Code = 0;
    ::GetExitCodeProcess(FProcess, &Code);
    return Code;
  }
#else
  // The raw wait status, reaping the child; it must have ended.
  int Reap() {
    int Status = 0;
    waitpid(pid_t(FId), &Status, 0);
    FReaped = true;
    return Status;
  }
#endif

private:
  static inline int Counter = 0;
  std::string FReady;
  uint32_t FId = 0;
#if defined(_WIN32)
  HANDLE FProcess = nullptr;
#else
  bool FReaped = false;
#endif
};

// An id no process has: beyond Linux's pid_max, and not among Windows' small ones.
constexpr uint32_t NoSuchProcess = 0x7FFFFFF0;

std::string Upper(std::string S) {
  for (char& C : S)
    if (C >= 'a' && C <= 'z') C = char(C - 'a' + 'A');
  return S;
}

} // namespace

TEST(Processes, FoundByExecutableName) {
  TChildProgram Program("f");
  EXPECT_FALSE(KxProcessExists(Program.Name()));
  EXPECT_EQ(KxGetProcessID(Program.Name()), 0u);

  TChild Child(Program, "wait");
  ASSERT_EQ(Child.WaitReady(), "ready");
  EXPECT_TRUE(KxProcessExists(Program.Name()));
  EXPECT_EQ(KxGetProcessID(Program.Name()), Child.Id());
  // Case and a folder before the name do not matter.
  EXPECT_EQ(KxGetProcessID(Upper(Program.Name())), Child.Id());
  EXPECT_EQ(KxGetProcessID(Program.Path().string()), Child.Id());
  // The whole name counts, not a prefix of it.
  EXPECT_FALSE(KxProcessExists(Program.Name().substr(0, Program.Name().size() - 1)));
}

TEST(Processes, KillEndsTheProcess) {
  TChildProgram Program("k");
  TChild Child(Program, "wait");
  ASSERT_EQ(Child.WaitReady(), "ready");
  EXPECT_TRUE(KxKillProcess(Child.Id()));
  // Ended, even before its parent has collected it.
  EXPECT_FALSE(KxProcessExists(Program.Name()));
#if defined(_WIN32)
  EXPECT_TRUE(Child.Ended());
  EXPECT_EQ(Child.ExitCode(), 1u);
#else
  const int Status = Child.Reap();
  ASSERT_TRUE(WIFSIGNALED(Status));
  EXPECT_EQ(WTERMSIG(Status), SIGTERM);
#endif
}

TEST(Processes, CloseAsksAndKillInsists) {
  TChildProgram Program("c");
#if defined(_WIN32)
  // A process without windows cannot be asked; it is left running.
  TChild Child(Program, "wait");
  ASSERT_EQ(Child.WaitReady(), "ready");
  EXPECT_FALSE(KxCloseProcess(Child.Id(), 200));
  EXPECT_FALSE(Child.Ended());
  EXPECT_FALSE(KxBringToFront(Child.Id()));
#else
  {
    TChild Polite(Program, "wait");
    ASSERT_EQ(Polite.WaitReady(), "ready");
    EXPECT_TRUE(KxCloseProcess(Polite.Id(), 5000));
    EXPECT_EQ(WTERMSIG(Polite.Reap()), SIGTERM);
  }
  // One that ignores SIGTERM outlives the request, and is killed after the grace time.
  TChild Stubborn(Program, "ignore-term");
  ASSERT_EQ(Stubborn.WaitReady(), "ready");
  EXPECT_FALSE(KxCloseProcess(Stubborn.Id(), 300));
  EXPECT_TRUE(KxProcessExists(Program.Name()));
  const auto Start = std::chrono::steady_clock::now();
  EXPECT_TRUE(KxKillProcess(Stubborn.Id(), 300));
  EXPECT_GE(std::chrono::steady_clock::now() - Start, std::chrono::milliseconds(300));
  const int Status = Stubborn.Reap();
  ASSERT_TRUE(WIFSIGNALED(Status));
  EXPECT_EQ(WTERMSIG(Status), SIGKILL);
  EXPECT_THROW(KxBringToFront(OwnId()), EKxNotSupported);
#endif
}

TEST(Processes, UnreachableProcessRaises) {
  EXPECT_THROW(KxKillProcess(NoSuchProcess), EOSError);
  EXPECT_THROW(KxCloseProcess(NoSuchProcess), EOSError);
#if defined(_WIN32)
  EXPECT_THROW(KxBringToFront(NoSuchProcess), EOSError);
#endif
}

TEST(Processes, KillRunningInstancesSparesItself) {
  TChildProgram Program("r");
  TChild First(Program, "wait"), Second(Program, "wait");
  ASSERT_EQ(First.WaitReady(), "ready");
  ASSERT_EQ(Second.WaitReady(), "ready");
  // A third instance clears the way for itself: both others end, it keeps running.
  TChild Third(Program, "kill-others");
  EXPECT_EQ(Third.WaitReady(), "2");
  EXPECT_EQ(KxGetProcessID(Program.Name()), Third.Id());
  // From outside, by name, every instance counts.
  EXPECT_EQ(KxKillRunningInstances(Program.Name()), 1);
  EXPECT_FALSE(KxProcessExists(Program.Name()));
}
