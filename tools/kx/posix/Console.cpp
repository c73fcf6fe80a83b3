// SPDX-License-Identifier: MIT
// The standard streams as descriptors.
#include "Tool.h"

#include <unistd.h>

namespace kxtool {

kx::THandle StdHandle(int Which) {
  return kx::THandle(Which);
}

bool StdErrIsTerminal() {
  return isatty(2) == 1;
}

} // namespace kxtool
