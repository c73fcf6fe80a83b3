// Runs the package's start-up when the shared object is loaded and shut-down when unloaded.
#include <kx/Package.h>

namespace {
struct TModuleEntry {
  TModuleEntry() { kx::KxInitialize(); }
  ~TModuleEntry() { kx::KxFinalize(); }
} ModuleEntry;
} // namespace
