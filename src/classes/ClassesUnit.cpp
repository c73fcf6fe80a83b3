// SPDX-License-Identifier: MIT
// Start-up and shut-down of uKxClasses.
#include "package/Units.h"

#include <atomic>

namespace kx::detail {

// The unit only moves the package-level reference counter: start-up takes one away,
// shut-down gives it back.
std::atomic<int32_t> ClassesPackageRefCount{0};

void uKxClasses_Initialize() {
  --ClassesPackageRefCount;
}
void uKxClasses_Finalize() {
  ++ClassesPackageRefCount;
}

} // namespace kx::detail
