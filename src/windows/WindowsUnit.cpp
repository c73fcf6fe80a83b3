// SPDX-License-Identifier: MIT
// Start-up and shut-down of uKxWindows.
#include <kx/windows/Resources.h>

#include "package/Units.h"

namespace kx::detail {

void uKxWindows_Initialize() {}

// The registered resources are forgotten.
void uKxWindows_Finalize() {
  ClearRegisteredResources();
}

} // namespace kx::detail
