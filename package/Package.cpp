// SPDX-License-Identifier: MIT
// The ordered start-up and shut-down table of the library's units.
#include <kx/Package.h>

#include "package/Units.h"

#include <atomic>
#include <iterator>

namespace kx {

namespace {

struct TUnitSteps {
  const char* Name;
  void (*Initialize)();
  void (*Finalize)();
};

// In dependency order; shut-down walks it backwards.
constexpr TUnitSteps Units[] = {
    {"uKxThreads", &detail::uKxThreads_Initialize, &detail::uKxThreads_Finalize},
    {"uKxSysUtils", &detail::uKxSysUtils_Initialize, &detail::uKxSysUtils_Finalize},
    {"uKxClasses", &detail::uKxClasses_Initialize, &detail::uKxClasses_Finalize},
    // Installs the safe-call error handler; shut-down puts the previous one back.
    {"uKxCOMObj", &detail::uKxCOMObj_Initialize, &detail::uKxCOMObj_Finalize},
    // The type registry is made on first use; shut-down frees it.
    {"uKxTypes", nullptr, &detail::uKxTypes_Finalize},
    {"uKxNetEncoding", &detail::uKxNetEncoding_Initialize, &detail::uKxNetEncoding_Finalize},
    {"uKxWindows", &detail::uKxWindows_Initialize, &detail::uKxWindows_Finalize},
    {"uKxLogger", &detail::uKxLogger_Initialize, &detail::uKxLogger_Finalize},
    {"uKxLogAppenders", &detail::uKxLogAppenders_Initialize, &detail::uKxLogAppenders_Finalize},
    {"uKxLogLayouts", &detail::uKxLogLayouts_Initialize, &detail::uKxLogLayouts_Finalize},
    // The list of live session-event components is made by the first of them.
    {"uKxSessionEvents", nullptr, &detail::uKxSessionEvents_Finalize},
};

std::atomic<int> InitCount{0};

} // namespace

void KxInitialize() {
  if (InitCount.fetch_add(1) != 0) return;
  for (const TUnitSteps& Unit : Units)
    if (Unit.Initialize) Unit.Initialize();
}

void KxFinalize() {
  if (InitCount.fetch_sub(1) != 1) return;
  for (auto It = std::rbegin(Units); It != std::rend(Units); ++It)
    if (It->Finalize) It->Finalize();
}

namespace detail {

namespace {
struct TPackageEntry {
  TPackageEntry() { KxInitialize(); }
  ~TPackageEntry() { KxFinalize(); }
};
} // namespace

int KxStartPackage() {
  // Made on the first call and destroyed with the module's other statics, in reverse order
  // of construction: after those of the program that started it first.
  static TPackageEntry Entry;
  return 1;
}

} // namespace detail

} // namespace kx
