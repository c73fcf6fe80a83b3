// SPDX-License-Identifier: MIT
// Logical drives and version resources on Windows.
#include "platform/Drives.h"

#include "platform/win32/WideNames.h"

#include <windows.h>

#include <cstdio>
#include <cstring>

namespace kx::platform {

bool DriveRoots(std::vector<AnsiString>& Roots) {
  Roots.clear();
  char Buf[1024] = {};
  const DWORD Len = ::GetLogicalDriveStringsA(sizeof Buf - 1, Buf);
  if (Len == 0 || Len >= sizeof Buf) return false;
  for (const char* P = Buf; *P; P += std::strlen(P) + 1) Roots.emplace_back(P);
  return true;
}

bool DriveData(const AnsiString& Root, TDriveData& Data) {
  Data = TDriveData();
  Data.Root = Root;
  Data.DriveType = ::GetDriveTypeA(Root.c_str());
  if (Data.DriveType == DRIVE_NO_ROOT_DIR) return false;
  char Volume[MAX_PATH + 1] = {}, FileSystem[MAX_PATH + 1] = {};
  DWORD Serial = 0, MaxLen = 0, Flags = 0;
  if (::GetVolumeInformationA(Root.c_str(), Volume, sizeof Volume, &Serial, &MaxLen, &Flags,
                              FileSystem, sizeof FileSystem)) {
    Data.VolumeName = Volume;
    Data.FileSystem = FileSystem;
    Data.SerialNumber = Serial;
  }
  DWORD Spc = 0, Bps = 0, Free = 0, Total = 0;
  if (::GetDiskFreeSpaceA(Root.c_str(), &Spc, &Bps, &Free, &Total)) {
    Data.SectorsPerCluster = Spc;
    Data.BytesPerSector = Bps;
    Data.FreeClusters = Free;
    Data.TotalClusters = Total;
  }
  return true;
}

bool FileVersionData(const AnsiString& FileName, TVersionData& Data) {
  Data = TVersionData();
  // version.dll is loaded when first asked for, as few programs need it.
  using TGetSize = DWORD(WINAPI*)(const char*, DWORD*);
  using TGetInfo = BOOL(WINAPI*)(const char*, DWORD, DWORD, void*);
  using TQuery = BOOL(WINAPI*)(const void*, const char*, void**, UINT*);
  static HMODULE Version = ::LoadLibraryA("version.dll");
  if (!Version) return false;
  auto GetSize = reinterpret_cast<TGetSize>(
      reinterpret_cast<void*>(::GetProcAddress(Version, "GetFileVersionInfoSizeA")));
  auto GetInfo = reinterpret_cast<TGetInfo>(
      reinterpret_cast<void*>(::GetProcAddress(Version, "GetFileVersionInfoA")));
  auto Query = reinterpret_cast<TQuery>(
      reinterpret_cast<void*>(::GetProcAddress(Version, "VerQueryValueA")));
  if (!GetSize || !GetInfo || !Query) return false;
  DWORD Handle = 0;
  const DWORD Size = GetSize(FileName.c_str(), &Handle);
  if (Size == 0) return false;
  std::vector<char> Block(Size);
  if (!GetInfo(FileName.c_str(), 0, Size, Block.data())) return false;
  void* P = nullptr;
  UINT Len = 0;
  if (Query(Block.data(), "\\VarFileInfo\\Translation", &P, &Len) && P && Len >= 4) {
    const WORD* Pair = static_cast<const WORD*>(P);
    char Table[64];
    std::snprintf(Table, sizeof Table, "\\StringFileInfo\\%04X%04X", Pair[0], Pair[1]);
    auto Text = [&](const char* Item) {
      void* V = nullptr;
      UINT N = 0;
      if (!Query(Block.data(), (AnsiString(Table) + Item).c_str(), &V, &N) || !V || N == 0)
        return AnsiString();
      AnsiString S(static_cast<const char*>(V), N);
      while (!S.empty() && S.back() == '\0') S.pop_back();
      return S;
    };
    Data.FileDescription = Text("\\FileDescription");
    Data.FileVersion = Text("\\FileVersion");
    Data.ProductVersion = Text("\\ProductVersion");
    Data.CompanyName = Text("\\CompanyName");
    Data.OriginalFilename = Text("\\OriginalFilename");
  }
  if (Query(Block.data(), "\\", &P, &Len) && P && Len >= sizeof(VS_FIXEDFILEINFO)) {
    const auto* Fixed = static_cast<const VS_FIXEDFILEINFO*>(P);
    Data.HasFixed = true;
    Data.FileVersionMS = Fixed->dwFileVersionMS;
    Data.FileVersionLS = Fixed->dwFileVersionLS;
  }
  return true;
}

} // namespace kx::platform
