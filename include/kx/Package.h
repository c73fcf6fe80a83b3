#pragma once
// The library's start-up and shut-down. Both run by themselves when the library is loaded
// and unloaded; they are counted, so extra calls in pairs are harmless.

#include <kx/KxExport.h>

namespace kx {

// Runs the units' initialisation steps in dependency order (only the first call does).
KX_API void KxInitialize();
// Runs the finalisation steps in reverse order (only the call that balances the first).
KX_API void KxFinalize();

} // namespace kx
