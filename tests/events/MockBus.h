// SPDX-License-Identifier: MIT
// The private system bus of the event tests (POSIX): tests/events/mockbus.py started once per
// test program, with logind, UPower and NetworkManager played by python-dbusmock. Its
// address goes into DBUS_SYSTEM_BUS_ADDRESS before any component opens the bus; Run sends
// one line of Python to the harness and returns its answer.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace kxtest {

class TMockBus {
public:
  static TMockBus& Get() {
    static TMockBus Bus;
    return Bus;
  }

  bool Available() const { return FPid > 0 && !FAddress.empty(); }
  const std::string& Why() const { return FWhy; }
  const std::string& Address() const { return FAddress; }

  // "ok <value>" or "error <message>".
  std::string Run(const std::string& Python) {
    std::lock_guard<std::mutex> Guard(FLock);
    if (!Available()) return "error no bus";
    const std::string Line = Python + "\n";
    if (write(FIn, Line.data(), Line.size()) != ssize_t(Line.size())) return "error write";
    return ReadLine();
  }

  ~TMockBus() {
    if (FIn >= 0) close(FIn);
    if (FPid > 0) waitpid(FPid, nullptr, 0);
    if (FOut) fclose(FOut);
  }

private:
  TMockBus() {
    const std::filesystem::path Script = ScriptPath();
    if (access("/usr/bin/python3", X_OK) != 0 || !std::filesystem::exists(Script)) {
      FWhy = "python3 or " + Script.string() + " is missing";
      return;
    }
    int ToChild[2], FromChild[2];
    if (pipe(ToChild) != 0 || pipe(FromChild) != 0) {
      FWhy = "no pipes";
      return;
    }
    FPid = fork();
    if (FPid == 0) {
      dup2(ToChild[0], 0);
      dup2(FromChild[1], 1);
      close(ToChild[1]);
      close(FromChild[0]);
      execl("/usr/bin/python3", "/usr/bin/python3", Script.c_str(), static_cast<char*>(nullptr));
      _exit(127);
    }
    close(ToChild[0]);
    close(FromChild[1]);
    FIn = ToChild[1];
    FOut = fdopen(FromChild[0], "r");
    FAddress = ReadLine();
    if (FAddress.rfind("unix:", 0) != 0) {
      FWhy = "the mock bus did not start: " + FAddress;
      FAddress.clear();
      return;
    }
    setenv("DBUS_SYSTEM_BUS_ADDRESS", FAddress.c_str(), 1);
  }

  static std::filesystem::path ScriptPath() {
    if (const char* Source = std::getenv("KX_TEST_SOURCE_DIR"))
      return std::filesystem::path(Source) / "tests" / "events" / "mockbus.py";
    return std::filesystem::path(__FILE__).parent_path() / "mockbus.py";
  }

  std::string ReadLine() {
    std::string R;
    int C;
    while (FOut && (C = fgetc(FOut)) != EOF && C != '\n') R += char(C);
    return R;
  }

  std::mutex FLock;
  pid_t FPid = -1;
  int FIn = -1;
  FILE* FOut = nullptr;
  std::string FAddress;
  std::string FWhy;
};

// What handlers on another thread saw, one line per call, with a wait for the next lines.
class TEventLog {
public:
  void Add(std::string Line) {
    {
      std::lock_guard<std::mutex> Guard(FLock);
      FLines.push_back(std::move(Line));
    }
    FChanged.notify_all();
  }
  // The lines once there are at least Count of them, or those there are after the wait.
  std::vector<std::string>
  WaitFor(size_t Count, std::chrono::milliseconds Timeout = std::chrono::milliseconds(5000)) {
    std::unique_lock<std::mutex> Guard(FLock);
    FChanged.wait_for(Guard, Timeout, [&] { return FLines.size() >= Count; });
    return FLines;
  }
  std::vector<std::string> Lines() {
    std::lock_guard<std::mutex> Guard(FLock);
    return FLines;
  }

private:
  std::mutex FLock;
  std::condition_variable FChanged;
  std::vector<std::string> FLines;
};

// make test installs dbus-daemon and python3-dbusmock, so a bus that does not start fails.
#define KX_REQUIRE_MOCK_BUS()                                                                      \
  ASSERT_TRUE(::kxtest::TMockBus::Get().Available())                                               \
      << "no private bus: " << ::kxtest::TMockBus::Get().Why()

} // namespace kxtest
