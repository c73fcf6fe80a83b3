// SPDX-License-Identifier: MIT
#pragma once
// Runs a command-line tool as a peer for end-to-end checks: feeds it bytes on standard input
// and captures the bytes it writes to standard output. Where the tool cannot be found (no
// POSIX shell, as under Wine, or the tool is not installed) the result says so and the test
// skips.
//
//   auto R = kxtest::RunExternalTool("base64", {"-w", "0"}, Input);
//   if (R.Absent) GTEST_SKIP() << R.Message;
//   ASSERT_EQ(R.ExitCode, 0);

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace kxtest {

struct TExternalToolResult {
  // The tool could not be found; nothing ran.
  bool Absent = false;
  // The shell's status for the command: 0 when the tool succeeded.
  int ExitCode = 0;
  std::string Output;
  // Why the tool is absent, for the skip message.
  std::string Message;
};

namespace detail {

// A single-quoted word for the POSIX shell.
inline std::string ShellQuote(std::string_view S) {
  std::string R = "'";
  for (char C : S) {
    if (C == '\'')
      R += "'\\''";
    else
      R += C;
  }
  R += '\'';
  return R;
}

inline std::filesystem::path UniqueTempPath(std::string_view Stem) {
  static std::atomic<unsigned> Counter{0};
  std::random_device Rd;
  const auto Now = std::chrono::steady_clock::now().time_since_epoch().count();
  const std::string Name = std::string(Stem) + "-" + std::to_string(Rd()) + "-" +
                           std::to_string(static_cast<unsigned long long>(Now)) + "-" +
                           std::to_string(Counter.fetch_add(1));
  return std::filesystem::temp_directory_path() / Name;
}

inline bool WriteFile(const std::filesystem::path& P, std::string_view Bytes) {
  std::ofstream F(P, std::ios::binary | std::ios::trunc);
  F.write(Bytes.data(), static_cast<std::streamsize>(Bytes.size()));
  return bool(F);
}

inline std::string ReadFile(const std::filesystem::path& P) {
  std::ifstream F(P, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(F), std::istreambuf_iterator<char>());
}

// Removes the files it names when the run is over, whatever happened.
struct TTempFiles {
  std::vector<std::filesystem::path> Paths;
  ~TTempFiles() {
    std::error_code Ec;
    for (const auto& P : Paths) std::filesystem::remove(P, Ec);
  }
};

} // namespace detail

// True when a POSIX shell can find Tool. Under Windows the command interpreter does not
// know "command -v", so every tool reads as absent there.
inline bool ExternalToolPresent(const std::string& Tool) {
  if (std::system(nullptr) == 0) return false;
  const std::string Probe = "command -v " + detail::ShellQuote(Tool) + " >/dev/null 2>&1";
  return std::system(Probe.c_str()) == 0;
}

// Runs Tool with Args, Input on its standard input; returns its standard output.
inline TExternalToolResult RunExternalTool(const std::string& Tool,
                                           const std::vector<std::string>& Args,
                                           std::string_view Input) {
  TExternalToolResult R;
  if (!ExternalToolPresent(Tool)) {
    R.Absent = true;
    R.Message = "tool absent: " + Tool;
    return R;
  }
  detail::TTempFiles Files;
  const auto In = detail::UniqueTempPath("kx-tool-in");
  const auto Out = detail::UniqueTempPath("kx-tool-out");
  Files.Paths = {In, Out};
  if (!detail::WriteFile(In, Input)) {
    R.ExitCode = -1;
    R.Message = "cannot write " + In.string();
    return R;
  }
  std::string Command = detail::ShellQuote(Tool);
  for (const auto& A : Args) Command += " " + detail::ShellQuote(A);
  Command += " <" + detail::ShellQuote(In.string()) + " >" + detail::ShellQuote(Out.string());
  R.ExitCode = std::system(Command.c_str());
  R.Output = detail::ReadFile(Out);
  return R;
}

// Convenience for byte vectors.
template <class B>
TExternalToolResult RunExternalToolBytes(const std::string& Tool,
                                         const std::vector<std::string>& Args, const B& Input) {
  return RunExternalTool(
      Tool, Args, std::string_view(reinterpret_cast<const char*>(Input.data()), Input.size()));
}

} // namespace kxtest
