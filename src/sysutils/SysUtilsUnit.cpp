// Start-up and shut-down of uKxSysUtils.
#include <kx/sysutils/ExceptionRegistry.h>

#include "package/Units.h"

namespace kx::detail {

void uKxSysUtils_Initialize() {}

// The exception registry is cleared and freed.
void uKxSysUtils_Finalize() {
  ClearExceptionRegistry();
}

} // namespace kx::detail
