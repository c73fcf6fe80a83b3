// SPDX-License-Identifier: MIT
#pragma once
// The library's start-up and shut-down. Both run by themselves when the library is loaded
// and unloaded; they are counted, so extra calls in pairs are harmless.

#include <kx/KxExport.h>

namespace kx {

// Runs the units' initialisation steps in dependency order (only the first call does).
KX_API void KxInitialize();
// Runs the finalisation steps in reverse order (only the call that balances the first).
KX_API void KxFinalize();

namespace detail {
// Starts the package once, the first time it is called, and shuts it down when the module
// ends. The shared library calls it when it is loaded; a static library from every program
// that includes its headers (see kx/KxExport.h).
int KxStartPackage();
} // namespace detail

} // namespace kx
