// SPDX-License-Identifier: MIT
// Runs the package's start-up when the shared object is loaded; shut-down follows when it is
// unloaded or the process ends.
#include <kx/Package.h>

namespace {
[[maybe_unused]] const int Started = kx::detail::KxStartPackage();
} // namespace
