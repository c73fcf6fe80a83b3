// SPDX-License-Identifier: MIT
#pragma once
// Concurrent logging through one rolling appender, and the check that every line arrived
// exactly once and whole across the live file and its backups.

#include <kx/uKxLogAppenders.h>
#include <kx/uKxLogLayouts.h>
#include <kx/uKxLogger.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace kxtest {

// The message of a line: "T<thread> N<number> " followed by a fixed filler.
inline kx::UnicodeString LogCheckMessage(int Thread, int Number) {
  std::string S = "T" + std::to_string(Thread) + " N" + std::to_string(Number) +
                  " the quick brown fox jumps over the lazy dog";
  return kx::UnicodeString(S.begin(), S.end());
}

struct TLogCheckResult {
  size_t Lines = 0, Torn = 0, Missing = 0, Duplicates = 0, Files = 0;
};

// Reads every file of Dir whose name starts with Base and counts each thread's numbers.
inline TLogCheckResult CheckLogLines(const std::filesystem::path& Dir, const std::string& Base,
                                     int Threads, int PerThread) {
  TLogCheckResult R;
  std::vector<std::vector<uint8_t>> Seen{size_t(Threads), std::vector<uint8_t>(size_t(PerThread))};
  for (const auto& E : std::filesystem::directory_iterator(Dir)) {
    const std::string Name = E.path().filename().string();
    if (Name.rfind(Base, 0) != 0) continue;
    ++R.Files;
    std::ifstream F(E.path(), std::ios::binary);
    for (std::string Line; std::getline(F, Line);) {
      if (Line.rfind("Log started", 0) == 0 || Line.rfind("Log stopped", 0) == 0) continue;
      ++R.Lines;
      // "<time> - Info <logger> - T<t> N<n> the quick ... lazy dog\r"
      const size_t At = Line.find(" - T");
      int T = -1, N = -1;
      if (At == std::string::npos || !Line.ends_with("lazy dog\r") ||
          std::sscanf(Line.c_str() + At, " - T%d N%d ", &T, &N) != 2 || T < 0 || T >= Threads ||
          N < 0 || N >= PerThread) {
        ++R.Torn;
        continue;
      }
      if (Seen[size_t(T)][size_t(N)]++) ++R.Duplicates;
    }
  }
  for (const auto& V : Seen)
    for (uint8_t C : V) R.Missing += C == 0;
  return R;
}

} // namespace kxtest
