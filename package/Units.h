// SPDX-License-Identifier: MIT
#pragma once
// The initialisation and finalisation steps of the library's units, run by the package.

namespace kx::detail {

void uKxClasses_Initialize();
void uKxClasses_Finalize();
void uKxCOMObj_Initialize();
void uKxCOMObj_Finalize();
void uKxNetEncoding_Initialize();
void uKxNetEncoding_Finalize();
void uKxSysUtils_Initialize();
void uKxSysUtils_Finalize();
void uKxThreads_Initialize();
void uKxThreads_Finalize();
void uKxTypes_Finalize();
void uKxWindows_Initialize();
void uKxWindows_Finalize();
void uKxLogger_Initialize();
void uKxLogger_Finalize();
void uKxLogAppenders_Initialize();
void uKxLogAppenders_Finalize();
void uKxLogLayouts_Initialize();
void uKxLogLayouts_Finalize();
void uKxSessionEvents_Finalize();

} // namespace kx::detail
