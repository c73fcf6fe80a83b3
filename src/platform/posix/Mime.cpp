// SPDX-License-Identifier: MIT
// Content sniffing through libmagic.
#include "platform/Mime.h"

#include <magic.h>

#include <mutex>

namespace kx::platform {

namespace {

// One cookie for the process: loading the database costs milliseconds, and a cookie may not be
// used by two threads at once.
std::mutex MagicLock;
magic_t MagicCookie = nullptr;
bool MagicTried = false;

} // namespace

bool MimeTypeOfData(const void* Data, size_t Size, AnsiString& Mime) {
  std::lock_guard<std::mutex> Guard(MagicLock);
  if (!MagicTried) {
    MagicTried = true;
    MagicCookie = magic_open(MAGIC_MIME_TYPE | MAGIC_ERROR);
    if (MagicCookie && magic_load(MagicCookie, nullptr) != 0) {
      magic_close(MagicCookie);
      MagicCookie = nullptr;
    }
  }
  if (!MagicCookie) return false;
  const char* Type = magic_buffer(MagicCookie, Data, Size);
  if (!Type) return false;
  Mime = Type;
  return true;
}

} // namespace kx::platform
