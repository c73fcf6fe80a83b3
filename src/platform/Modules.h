// SPDX-License-Identifier: MIT
#pragma once
// What a module says about itself: its version and its manifest. Failures follow Platform.h.

#include "platform/Platform.h"

#include <vector>

namespace kx::platform {

// The version a library reports: DllGetVersion (Windows); the numbers after ".so." in the name
// of the file the library resolves to (POSIX, found as dlopen finds it). 1 found, 0 the library
// does not tell, -1 it cannot be loaded (POSIX: the error's text in LastError's message).
int32_t DllVersion(const AnsiString& Name, uint32_t& Major, uint32_t& Minor, uint32_t& Build);

// The bytes of a module's manifest resource (1, else 2); empty FileName is the running program,
// others are loaded as data only. 1 found, 0 none, -1 the module cannot be loaded. POSIX: -1
// with ERROR_NOT_SUPPORTED_.
int32_t ModuleManifest(const AnsiString& FileName, std::vector<uint8_t>& Data);

} // namespace kx::platform
