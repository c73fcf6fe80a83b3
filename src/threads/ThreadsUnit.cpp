// Start-up and shut-down of uKxThreads.
#include "package/Units.h"

namespace kx::detail {

void uKxThreads_Initialize() {}
void uKxThreads_Finalize() {}

} // namespace kx::detail
