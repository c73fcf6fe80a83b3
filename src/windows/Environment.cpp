// SPDX-License-Identifier: MIT
// The system's version, bitness, elevation and shell folders of uKxWindows.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Files.h>
#include <kx/rtl/Format.h>
#include <kx/rtl/Streams.h>
#include <kx/rtl/SysUtils.h>
#include <kx/sysutils/SystemInfo.h>
#include <kx/sysutils/TextFiles.h>
#include <kx/windows/Environment.h>

#include "platform/Environment.h"

#include <atomic>
#include <cstring>
#include <mutex>

namespace kx {

namespace {

std::mutex OSReleaseLock;
AnsiString& OSReleaseOverride() {
  static AnsiString Name;
  return Name;
}

AnsiString OSReleaseFileName() {
  std::lock_guard<std::mutex> Guard(OSReleaseLock);
  return OSReleaseOverride().empty() ? platform::OSReleaseFile() : OSReleaseOverride();
}

AnsiString ReadTextFile(const AnsiString& FileName) {
  TFileStream* F = nullptr;
  try {
    F = TFileStream::Create(FileName, uint16_t(fmOpenRead | fmShareDenyNone));
  } catch (const Exception&) {
    return AnsiString();
  }
  AnsiString Text;
  char Buf[4096];
  // os-release is a few hundred bytes; a file that keeps going is cut off.
  for (int64_t N; Text.size() < 65536 && (N = F->ReadUpTo(Buf, sizeof Buf)) > 0;)
    Text.append(Buf, size_t(N));
  F->Free();
  return Text;
}

} // namespace

uint16_t KxGetWindowsVersion() {
  const int32_t Code = platform::WindowsVersionCode();
  if (Code > 0) return uint16_t(Code);
  if (Code == -1) throw Exception(SFailedToLoadKernel32);
  if (Code == -2) throw Exception(SFailedToDetermineOS);
  throw EKxNotSupported(SNotSupportedOnPlatform, {"KxGetWindowsVersion"});
}

void KxParseOSRelease(const AnsiString& Text, TStrings* Values) {
  std::vector<std::pair<AnsiString, AnsiString>> Items;
  platform::ParseOSRelease(Text, Items);
  for (const auto& [Name, Value] : Items) Values->Add(Name + "=" + Value);
}

void KxSetOSReleaseFile(const AnsiString& FileName) {
  std::lock_guard<std::mutex> Guard(OSReleaseLock);
  OSReleaseOverride() = FileName;
}

TKxOSVersionInfo KxGetOSVersionInfo() {
  platform::TOSInfo Os;
  platform::GetOSInfo(Os);
  TKxOSVersionInfo Info;
  Info.Name = Os.Name;
  Info.Version = Os.Version;
  Info.Release = Os.Release;
  Info.Machine = Os.Machine;
  Info.Major = Os.Major;
  Info.Minor = Os.Minor;
  Info.Build = Os.Build;
  Info.ServicePack = Os.ServicePack;
  const int32_t Code = platform::WindowsVersionCode();
  if (Code > 0) Info.Name = "Windows " + IntToStr(Code);
  const AnsiString File = OSReleaseFileName();
  if (!File.empty()) {
    TStringList* Values = TStringList::Create();
    try {
      KxParseOSRelease(ReadTextFile(File), Values);
      AnsiString Pretty = Values->Values("PRETTY_NAME"), Name = Values->Values("NAME");
      if (!Pretty.empty())
        Info.Name = Pretty;
      else if (!Name.empty())
        Info.Name = Name;
      Info.Version = Values->Values("VERSION_ID");
    } catch (...) {
      Values->Free();
      throw;
    }
    Values->Free();
  }
  return Info;
}

AnsiString KxGetOSVersionText() {
  const TKxOSVersionInfo Info = KxGetOSVersionInfo();
  AnsiString Result = Info.Name;
  if (!Info.Version.empty()) Result += (Result.empty() ? "" : " ") + Info.Version;
  AnsiString Detail = Info.Release;
  if (!Info.Machine.empty()) Detail += (Detail.empty() ? "" : ", ") + Info.Machine;
  if (!Detail.empty()) Result += (Result.empty() ? "(" : " (") + Detail + ")";
  return Result;
}

bool IsCPU64() {
  return platform::IsCPU64Build();
}

bool IsWow64() {
  return platform::IsWow64Process();
}

bool IsOS64() {
  return IsCPU64() || IsWow64();
}

bool Is64BitFile(const AnsiString& FileName) {
  AnsiString Name = FileName;
  if (!FileExists(Name)) {
    const AnsiString Found = platform::SearchPath(FileName);
    if (!Found.empty()) Name = Found;
  }
  TFileStream* F = TFileStream::Create(Name, uint16_t(fmOpenRead | fmShareDenyNone));
  bool Result = false;
  try {
    unsigned char Dos[64] = {};
    const int64_t Got = F->ReadUpTo(Dos, sizeof Dos);
    auto Word = [](const unsigned char* P) { return uint16_t(P[0] | (P[1] << 8)); };
    if (Got >= 5 && std::memcmp(Dos,
                                "\x7F"
                                "ELF",
                                4) == 0) {
      Result = Dos[4] == 2; // ELFCLASS64
    } else if (Got == 64 && Word(Dos) == 23117) {
      const uint32_t Offset = uint32_t(Dos[60]) | uint32_t(Dos[61]) << 8 | uint32_t(Dos[62]) << 16 |
                              uint32_t(Dos[63]) << 24;
      unsigned char Nt[248] = {};
      if (Offset != 0 && F->Seek(int64_t(Offset), soBeginning) == int64_t(Offset) &&
          F->ReadUpTo(Nt, sizeof Nt) >= 6 && Word(Nt) == 17744)
        Result = Word(Nt + 4) != 332;
    }
  } catch (...) {
    F->Free();
    throw;
  }
  F->Free();
  return Result;
}

TKxElevationLevel KxGetElevationLevel() {
  switch (platform::ElevationLevel()) {
  case 1:
    return elFull;
  case 2:
    return elLimited;
  default:
    return elDefault;
  }
}

AnsiString KxGetShellFolder(int32_t CSIDL) {
  AnsiString Path;
  if (platform::ShellFolder(CSIDL, Path)) return Path;
  if (platform::LastError() == platform::ERROR_NOT_SUPPORTED_)
    throw EKxNotSupported(SNotSupportedOnPlatform, {"The shell folder " + IntToStr(CSIDL)});
  RaiseLastOSError();
}

AnsiString KxGetMyDocumentsFolder() {
  return KxGetShellFolder(csidlPersonal);
}

AnsiString KxGetSharedDocumentsFolder() {
  return KxGetShellFolder(csidlCommonDocuments);
}

} // namespace kx
