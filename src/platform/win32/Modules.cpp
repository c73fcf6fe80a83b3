// SPDX-License-Identifier: MIT
// Module versions and manifests on Windows: DllGetVersion and the RT_MANIFEST resource.
#include "platform/Modules.h"

#include "platform/win32/WideNames.h"

#include <shlwapi.h>
#include <windows.h>

namespace kx::platform {

int32_t DllVersion(const AnsiString& Name, uint32_t& Major, uint32_t& Minor, uint32_t& Build) {
  Major = Minor = Build = 0;
  std::wstring WName;
  if (!WideName(Name, WName)) return -1;
  HMODULE Module = ::LoadLibraryW(WName.c_str());
  if (!Module) return -1;
  using TDllGetVersion = HRESULT(CALLBACK*)(DLLVERSIONINFO*);
  const auto Get = reinterpret_cast<TDllGetVersion>(
      reinterpret_cast<void*>(::GetProcAddress(Module, "DllGetVersion")));
  DLLVERSIONINFO Info{};
  Info.cbSize = sizeof Info;
  const bool Told = Get && SUCCEEDED(Get(&Info));
  ::FreeLibrary(Module);
  if (!Told) return 0;
  Major = Info.dwMajorVersion;
  Minor = Info.dwMinorVersion;
  Build = Info.dwBuildNumber;
  return 1;
}

int32_t ModuleManifest(const AnsiString& FileName, std::vector<uint8_t>& Data) {
  Data.clear();
  HMODULE Module = nullptr;
  bool Loaded = false;
  if (FileName.empty()) {
    Module = ::GetModuleHandleW(nullptr);
  } else {
    std::wstring WName;
    if (!WideName(FileName, WName)) return -1;
    // Resources only: nothing of the file runs, and any bitness can be read.
    Module = ::LoadLibraryExW(WName.c_str(), nullptr,
                              LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    if (!Module) return -1;
    Loaded = true;
  }
  int32_t Result = 0;
  for (WORD Id : {WORD(1), WORD(2)}) {
    HRSRC Info = ::FindResourceW(Module, MAKEINTRESOURCEW(Id), MAKEINTRESOURCEW(24));
    if (!Info) continue;
    HGLOBAL Global = ::LoadResource(Module, Info);
    const auto* P = Global ? static_cast<const uint8_t*>(::LockResource(Global)) : nullptr;
    if (!P) continue;
    Data.assign(P, P + ::SizeofResource(Module, Info));
    Result = 1;
    break;
  }
  if (Loaded) ::FreeLibrary(Module);
  return Result;
}

} // namespace kx::platform
