// SPDX-License-Identifier: MIT
#pragma once
// Runs a test in the time zone a TZ value names (POSIX), putting the old value back after it.

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#if !defined(_WIN32)
namespace kxtest {

class TScopedTZ {
public:
  explicit TScopedTZ(const char* Zone) {
    if (const char* Old = std::getenv("TZ")) FSaved = Old;
    setenv("TZ", Zone, 1);
    tzset();
  }
  ~TScopedTZ() {
    if (FSaved)
      setenv("TZ", FSaved->c_str(), 1);
    else
      unsetenv("TZ");
    tzset();
  }
  TScopedTZ(const TScopedTZ&) = delete;
  TScopedTZ& operator=(const TScopedTZ&) = delete;

private:
  std::optional<std::string> FSaved;
};

// The bias (minutes, UTC = local + bias) of the present moment, from the C library.
inline int BiasOfNow() {
  const time_t Now = time(nullptr);
  tm T{};
  localtime_r(&Now, &T);
  return int(-T.tm_gmtoff / 60);
}

} // namespace kxtest
#endif
