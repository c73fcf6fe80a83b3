// SPDX-License-Identifier: MIT
// Descriptor helpers shared by the POSIX platform files.
#pragma once

#include <cerrno>
#include <unistd.h>

namespace kx::platform {

// Closes without letting close() change the error being reported.
inline void CloseKeepingError(int Fd) {
  const int Saved = errno;
  close(Fd);
  errno = Saved;
}

} // namespace kx::platform
