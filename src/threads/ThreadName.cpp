// SPDX-License-Identifier: MIT
// Per-thread names.
#include <kx/threads/ThreadName.h>

#include "platform/Platform.h"

#include <cstring>

namespace kx {

namespace {

constexpr size_t MaxThreadNameLength = 255;

// A length byte and the characters, terminated for the debugger announcement: trivially
// destructible, so threads that never name themselves cost nothing at exit.
struct TThreadNameBuffer {
  uint8_t Length;
  char Chars[MaxThreadNameLength + 1];
};
thread_local TThreadNameBuffer ThreadName{};

} // namespace

void KxSetThreadName(const AnsiString& Name) {
  try {
    const size_t Len = Name.size() < MaxThreadNameLength ? Name.size() : MaxThreadNameLength;
    std::memcpy(ThreadName.Chars, Name.data(), Len);
    ThreadName.Chars[Len] = '\0';
    ThreadName.Length = static_cast<uint8_t>(Len);
    platform::SetOSThreadName(AnsiString(ThreadName.Chars, Len));
  } catch (...) {
    // Naming is a courtesy to debuggers; it must not disturb the caller.
  }
}

void KxSetThreadName(const UnicodeString& Name) {
  try {
    KxSetThreadName(UnicodeToAnsi(Name));
  } catch (...) {
  }
}

AnsiString KxGetThreadName() {
  return AnsiString(ThreadName.Chars, ThreadName.Length);
}

} // namespace kx
