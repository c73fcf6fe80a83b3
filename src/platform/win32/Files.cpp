// SPDX-License-Identifier: MIT
// Files on Windows: CreateFileW and friends, names widened from the process ANSI code page.
#include "platform/Platform.h"
#include "platform/win32/WideNames.h"

#include <windows.h>

namespace kx::platform {

namespace {

constexpr DWORD AccessModes[3] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE};
// Compat and exclusive share nothing; deny-write lets others read, deny-read lets them write.
constexpr DWORD ShareModes[5] = {0, 0, FILE_SHARE_READ, FILE_SHARE_WRITE,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE};

FileHandle Open(const AnsiString& FileName, DWORD Access, uint32_t Mode, DWORD Disposition) {
  uint32_t Share = (Mode & 0xF0) >> 4;
  if (Share > 4) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return InvalidFileHandle;
  }
  std::wstring Wide;
  if (!WideName(FileName, Wide)) return InvalidFileHandle;
  HANDLE H = ::CreateFileW(Wide.c_str(), Access, ShareModes[Share], nullptr, Disposition,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
  return H == INVALID_HANDLE_VALUE ? InvalidFileHandle : reinterpret_cast<FileHandle>(H);
}

HANDLE AsHandle(FileHandle File) {
  return reinterpret_cast<HANDLE>(File);
}

} // namespace

FileHandle FileOpen(const AnsiString& FileName, uint32_t Mode) {
  uint32_t Access = Mode & 0x03;
  if (Access > 2) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return InvalidFileHandle;
  }
  return Open(FileName, AccessModes[Access], Mode, OPEN_EXISTING);
}

FileHandle FileCreate(const AnsiString& FileName, uint32_t Mode) {
  return Open(FileName, GENERIC_READ | GENERIC_WRITE, Mode, CREATE_ALWAYS);
}

int32_t FileRead(FileHandle File, void* Buffer, int32_t Count) {
  if (Count < 0) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return -1;
  }
  DWORD Done = 0;
  if (!::ReadFile(AsHandle(File), Buffer, DWORD(Count), &Done, nullptr)) return -1;
  return int32_t(Done);
}

int32_t FileWrite(FileHandle File, const void* Buffer, int32_t Count) {
  if (Count < 0) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return -1;
  }
  DWORD Done = 0;
  if (!::WriteFile(AsHandle(File), Buffer, DWORD(Count), &Done, nullptr)) return -1;
  return int32_t(Done);
}

int64_t FileSeek(FileHandle File, int64_t Offset, int32_t Origin) {
  static constexpr DWORD Methods[3] = {FILE_BEGIN, FILE_CURRENT, FILE_END};
  if (Origin < 0 || Origin > 2) {
    ::SetLastError(ERROR_INVALID_PARAMETER);
    return -1;
  }
  LARGE_INTEGER Distance, NewPos;
  Distance.QuadPart = Offset;
  if (!::SetFilePointerEx(AsHandle(File), Distance, &NewPos, Methods[Origin])) return -1;
  return NewPos.QuadPart;
}

int64_t FileSize(FileHandle File) {
  LARGE_INTEGER Size;
  if (!::GetFileSizeEx(AsHandle(File), &Size)) return -1;
  return Size.QuadPart;
}

bool FileSetEnd(FileHandle File) {
  return ::SetEndOfFile(AsHandle(File)) != 0;
}

void FileClose(FileHandle File) {
  if (File != InvalidFileHandle) ::CloseHandle(AsHandle(File));
}

} // namespace kx::platform
