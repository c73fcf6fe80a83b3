// SPDX-License-Identifier: MIT
// Start-up and shut-down of uKxSysUtils.
#include <kx/sysutils/ExceptionRegistry.h>
#include <kx/sysutils/Languages.h>

#include "package/Units.h"

namespace kx::detail {

// The language-record list is filled.
void uKxSysUtils_Initialize() {
  FillLanguages();
}

// The language records go, and the exception registry is cleared and freed.
void uKxSysUtils_Finalize() {
  ClearLanguages();
  ClearExceptionRegistry();
}

} // namespace kx::detail
