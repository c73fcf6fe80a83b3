// SPDX-License-Identifier: MIT
// Captured processes (large output, exit codes, chunks, failures) and the shell's verbs, run
// for real: the test program doubles as the child that writes the output.
#include <kx/rtl/Files.h>
#include <kx/uKxWindows.h>

#include "support/ExternalTool.h"
#include "support/ScopedEnv.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

using namespace kx;
using kxtest::TScopedEnv;

namespace {

// With KX_TEST_EMIT="<count>:<exit code>" in its environment the test program writes count
// bytes of a pattern to standard output and one line to standard error, and exits.
const int Emitter = [] {
  const char* Request = std::getenv("KX_TEST_EMIT");
  if (!Request) return 0;
  unsigned long long Count = 0;
  int Code = 0;
  if (std::sscanf(Request, "%llu:%d", &Count, &Code) != 2) std::_Exit(99);
#if defined(_WIN32)
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
#endif
  std::string Block(65536, '\0');
  for (size_t I = 0; I < Block.size(); ++I) Block[I] = char('a' + I % 26);
  for (unsigned long long Done = 0; Done < Count;) {
    const size_t N = size_t(std::min<unsigned long long>(Block.size(), Count - Done));
    std::fwrite(Block.data(), 1, N, stdout);
    Done += N;
  }
  std::fflush(stdout);
  std::fputs("to stderr\n", stderr);
  std::fflush(stderr);
  std::_Exit(Code);
}();

std::string OwnExecutable() {
#if defined(_WIN32)
  char Buf[MAX_PATH] = {};
  ::GetModuleFileNameA(nullptr, Buf, MAX_PATH);
  return Buf;
#else
  char Buf[4096] = {};
  const ssize_t N = readlink("/proc/self/exe", Buf, sizeof Buf - 1);
  return N > 0 ? std::string(Buf, size_t(N)) : std::string();
#endif
}

std::string Pattern(size_t Count) {
  std::string S(Count, '\0');
  for (size_t I = 0; I < Count; ++I) S[I] = char('a' + (I % 65536) % 26);
  return S;
}

bool OnLinux() {
  return kxtest::ExternalToolPresent("uname");
}

// Waits up to five seconds for a file that a process started without waiting will write.
bool AppearsSoon(const std::string& Name) {
  for (int I = 0; I < 100; ++I) {
    if (std::filesystem::exists(Name) && std::filesystem::file_size(Name) > 0) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return false;
}

class TChunks : public TObject {
public:
  std::string All;
  int Count = 0;
  void Add(const AnsiString& AOutput) {
    All += AOutput;
    ++Count;
  }
};

} // namespace

TEST(CaptureOutput, LargeOutputWithExitCode) {
  const size_t Size = 10u << 20;
  TScopedEnv Emit("KX_TEST_EMIT", std::to_string(Size) + ":7");
  uint32_t ExitCode = 0;
  const AnsiString Out = KxRunProcessAndCaptureOutput("\"" + OwnExecutable() + "\"", "", ExitCode);
  EXPECT_EQ(ExitCode, 7u);
  ASSERT_GE(Out.size(), Size);
  EXPECT_TRUE(Out.compare(0, Size, Pattern(Size)) == 0);
  // Standard error goes to the same pipe, after the flushed output.
  EXPECT_EQ(Out.substr(Size), "to stderr\n");
}

TEST(CaptureOutput, ChunksGoToTheCallback) {
  TScopedEnv Emit("KX_TEST_EMIT", "300000:0");
  TChunks* Chunks = new TChunks;
  const uint32_t Code = KxRunProcessAndCaptureOutput("\"" + OwnExecutable() + "\"", "",
                                                     TKxOnCmdOutputMethod(Chunks, &TChunks::Add));
  EXPECT_EQ(Code, 0u);
  // Compared as a truth value: a difference would print megabytes.
  EXPECT_TRUE(Chunks->All == Pattern(300000) + "to stderr\n") << Chunks->All.size();
  EXPECT_GE(Chunks->Count, 1);

  // An exception from the callback ends the capture and reaches the caller.
  TKxOnCmdOutputMethod Throwing(nullptr, [](const AnsiString&) { throw EAbort("stop"); });
  EXPECT_THROW(KxRunProcessAndCaptureOutput("\"" + OwnExecutable() + "\"", "", Throwing), EAbort);
  delete Chunks;
}

TEST(CaptureOutput, MissingProgramAndFolder) {
  try {
    KxRunProcessAndCaptureOutput("kx-no-such-program-here --x", "");
    FAIL() << "no exception";
  } catch (const EOSError& E) {
    EXPECT_EQ(E.ErrorCode, 2u) << E.Message(); // ENOENT / ERROR_FILE_NOT_FOUND
  }
  kxtest::TTempFolder Dir;
  EXPECT_THROW(KxRunProcessAndCaptureOutput("\"" + OwnExecutable() + "\"", Dir.Name("missing")),
               EOSError);
}

TEST(CaptureOutput, RunsInTheFolderGiven) {
  kxtest::TTempFolder Dir;
  const std::string Line = OnLinux() ? "pwd" : "cmd.exe /c cd";
  AnsiString Out = KxRunProcessAndCaptureOutput(Line, Dir.Name());
  while (!Out.empty() && (Out.back() == '\n' || Out.back() == '\r')) Out.pop_back();
  EXPECT_TRUE(SameText(Out, std::filesystem::canonical(Dir.Path()).string())) << Out;
}

TEST(CaptureOutput, LinuxSplitsTheLineAsTheShellQuotes) {
  if (!OnLinux()) GTEST_SKIP() << "Windows hands the line to the program";
  EXPECT_EQ(KxRunProcessAndCaptureOutput("printf '%s|' 'a b' \"c\\\"d\" e\\ f '$HOME' \"\"", ""),
            "a b|c\"d|e f|$HOME||");
  uint32_t Code = 0;
  KxRunProcessAndCaptureOutput("sh -c 'kill -TERM $$'", "", Code);
  EXPECT_EQ(Code, 128u + 15u);
  EXPECT_THROW(KxRunProcessAndCaptureOutput("echo 'open", ""), EOSError);
}

TEST(ShellExec, ParametersAreQuotedUnlessSwitches) {
  EXPECT_EQ(KxShellExecParameters({}), "");
  EXPECT_EQ(KxShellExecParameters({"-v", "/c", "two words", ""}), " -v /c \"two words\" \"\"");
}

TEST(ShellExec, CommandRunsInTheInterpreter) {
  kxtest::TTempFolder Dir;
  const std::string File = Dir.Name("cmd-out.txt");
  KxShellExecCmd(OnLinux() ? "echo ran > '" + File + "'" : "/c echo ran>\"" + File + "\"");
  ASSERT_TRUE(AppearsSoon(File));
  EXPECT_EQ(kxtest::TTempFolder::ReadFile(File).substr(0, 3), "ran");
}

TEST(ShellExec, RunWaitsForTheProgram) {
  kxtest::TTempFolder Dir;
  const std::string File = Dir.Name("run-out.txt");
  if (OnLinux())
    KxShellExecRun("/bin/sh", {"-c", "sleep 0.2; echo waited > \"$0\"", File});
  else
    KxShellExecRun("cmd.exe", {"/c", "ping -n 1 127.0.0.1 >nul & echo waited>" + File});
  EXPECT_EQ(kxtest::TTempFolder::ReadFile(File).substr(0, 6), "waited");
}

TEST(ShellExec, LinuxOpensThroughXdgOpen) {
  if (!OnLinux()) GTEST_SKIP() << "Windows opens through its shell";
  kxtest::TTempFolder Dir;
  const std::string Log = Dir.Name("opened.txt");
  std::filesystem::create_directory(Dir.Path() / "bin");
  const std::string Fake =
      Dir.WriteFile("bin/xdg-open", "#!/bin/sh\necho \"$1\" >> '" + Log + "'\n");
  std::filesystem::permissions(Fake, std::filesystem::perms::owner_all);
  const std::string Document = Dir.WriteFile("doc.txt", "text");
  TScopedEnv Path("PATH", Dir.Name("bin") + ":" + kxtest::GetEnv("PATH").value_or(""));
  TScopedEnv Wayland("WAYLAND_DISPLAY", std::nullopt);
  {
    TScopedEnv NoDisplay("DISPLAY", std::nullopt);
    try {
      KxShellExecOpenFile(Document);
      FAIL() << "no exception";
    } catch (const EOSError& E) {
      EXPECT_EQ(E.ErrorCode, 1155u);
    }
  }
  TScopedEnv Display("DISPLAY", ":99");
  KxShellExecOpenEMail("  someone@example.org ");
  KxShellExecOpenWebSite("example.org");
  KxShellExecOpenWebSite("HTTPS://x");
  KxShellExecOpenEMail("MAILTO:a@b");
  KxShellExecOpenFile(Document);
  const std::string Expected = "mailto:someone@example.org\nhttp://example.org\nHTTPS://x\n"
                               "MAILTO:a@b\n" +
                               Document + "\n";
  for (int I = 0; I < 100 && kxtest::TTempFolder::ReadFile(Log).size() < Expected.size(); ++I)
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  // The openers run side by side; their order is not fixed.
  std::string Got = kxtest::TTempFolder::ReadFile(Log);
  for (const char* Line :
       {"mailto:someone@example.org\n", "http://example.org\n", "HTTPS://x\n", "MAILTO:a@b\n"})
    EXPECT_NE(Got.find(Line), std::string::npos) << Line;
  EXPECT_NE(Got.find(Document + "\n"), std::string::npos);
  EXPECT_EQ(Got.size(), Expected.size());
}
