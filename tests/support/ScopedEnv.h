// SPDX-License-Identifier: MIT
// Sets (or removes) an environment variable of the process for one test and restores it.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace kxtest {

inline std::optional<std::string> GetEnv(const std::string& Name) {
#if defined(_WIN32)
  char Buf[32768];
  const DWORD Len = ::GetEnvironmentVariableA(Name.c_str(), Buf, sizeof Buf);
  if (Len == 0 && ::GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
  return std::string(Buf, Len < sizeof Buf ? Len : 0);
#else
  const char* V = std::getenv(Name.c_str());
  if (!V) return std::nullopt;
  return std::string(V);
#endif
}

inline void SetEnv(const std::string& Name, const std::optional<std::string>& Value) {
#if defined(_WIN32)
  ::SetEnvironmentVariableA(Name.c_str(), Value ? Value->c_str() : nullptr);
#else
  if (Value)
    setenv(Name.c_str(), Value->c_str(), 1);
  else
    unsetenv(Name.c_str());
#endif
}

class TScopedEnv {
public:
  TScopedEnv(std::string Name, std::optional<std::string> Value)
      : FName(std::move(Name)), FOld(GetEnv(FName)) {
    SetEnv(FName, Value);
  }
  ~TScopedEnv() { SetEnv(FName, FOld); }
  TScopedEnv(const TScopedEnv&) = delete;
  TScopedEnv& operator=(const TScopedEnv&) = delete;

private:
  std::string FName;
  std::optional<std::string> FOld;
};

} // namespace kxtest
