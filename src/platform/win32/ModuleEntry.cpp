// SPDX-License-Identifier: MIT
// Runs the package's start-up when the DLL is loaded and shut-down when it is unloaded.
#include <kx/Package.h>

#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD Reason, LPVOID) {
  if (Reason == DLL_PROCESS_ATTACH)
    kx::KxInitialize();
  else if (Reason == DLL_PROCESS_DETACH)
    kx::KxFinalize();
  return TRUE;
}
