// Start-up and shut-down of uKxSysUtils.
#include "package/Units.h"

namespace kx::detail {

void uKxSysUtils_Initialize() {}
void uKxSysUtils_Finalize() {}

} // namespace kx::detail
