// SPDX-License-Identifier: MIT
// The file system on Windows: the W functions, names widened from the process ANSI code page.
#include "platform/Platform.h"
#include "platform/win32/WideNames.h"

#include <kx/rtl/Files.h>

#include <windows.h>

#include <shellapi.h>

#include <vector>

// The platform layer's own names, not the A/W macros of the Windows headers.
#undef CreateDirectory
#undef DeleteFile
#undef FindFirstFile
#undef FindNextFile
#undef GetCurrentDirectory
#undef GetFileAttributes
#undef GetFullPathName
#undef GetShortPathName
#undef GetTempFileName
#undef GetTempPath
#undef MoveFile
#undef RemoveDirectory
#undef SetCurrentDirectory
#undef SetFileAttributes

namespace kx::platform {

namespace {

FileTime FromFILETIME(const FILETIME& T) {
  return (FileTime(T.dwHighDateTime) << 32) | T.dwLowDateTime;
}

FILETIME ToFILETIME(FileTime T) {
  FILETIME R;
  R.dwLowDateTime = DWORD(T & 0xFFFFFFFFu);
  R.dwHighDateTime = DWORD(T >> 32);
  return R;
}

void FillData(const WIN32_FIND_DATAW& W, TFindData& Data) {
  Data.Attributes = W.dwFileAttributes;
  Data.CreationTime = FromFILETIME(W.ftCreationTime);
  Data.LastAccessTime = FromFILETIME(W.ftLastAccessTime);
  Data.LastWriteTime = FromFILETIME(W.ftLastWriteTime);
  Data.Size = (uint64_t(W.nFileSizeHigh) << 32) | W.nFileSizeLow;
  Data.Name = NarrowName(W.cFileName, wcslen(W.cFileName));
}

// A name for the shell's file operations: fully qualified and ending in two zero characters.
bool ShellName(const AnsiString& Name, std::wstring& Wide) {
  std::wstring Given;
  if (!WideName(Name, Given)) return false;
  const DWORD Len = ::GetFullPathNameW(Given.c_str(), 0, nullptr, nullptr);
  if (Len == 0) return false;
  Wide.assign(size_t(Len) + 1, L'\0');
  const DWORD Got = ::GetFullPathNameW(Given.c_str(), Len, Wide.data(), nullptr);
  if (Got == 0 || Got >= Len) return false;
  Wide.resize(size_t(Got) + 2, L'\0');
  return true;
}

bool ShellOperation(UINT Func, const AnsiString& From, const AnsiString& To) {
  std::wstring WFrom, WTo;
  if (!ShellName(From, WFrom)) return false;
  if (Func == FO_RENAME && !ShellName(To, WTo)) return false;
  SHFILEOPSTRUCTW Op{};
  // The window of the calling thread that is active, if any, owns whatever the shell shows.
  Op.hwnd = ::GetActiveWindow();
  Op.wFunc = Func;
  Op.pFrom = WFrom.c_str();
  Op.pTo = Func == FO_RENAME ? WTo.c_str() : nullptr;
  Op.fFlags = FOF_NOCONFIRMATION | FOF_SILENT | FOF_NOERRORUI | FOF_NOCONFIRMMKDIR;
  const int Rc = ::SHFileOperationW(&Op);
  if (Rc != 0) {
    ::SetLastError(DWORD(Rc));
    return false;
  }
  if (Op.fAnyOperationsAborted) {
    ::SetLastError(ERROR_CANCELLED);
    return false;
  }
  return true;
}

// A W function that fills a buffer and returns the length, or the size it needs.
template <class F>
AnsiString QueryText(F&& Query) {
  std::vector<wchar_t> Buffer(MAX_PATH + 1);
  for (;;) {
    const DWORD Len = Query(Buffer.data(), DWORD(Buffer.size()));
    if (Len == 0) return AnsiString();
    if (Len < Buffer.size()) return NarrowName(Buffer.data(), Len);
    Buffer.resize(size_t(Len) + 1);
  }
}

// "#123" names a resource by number.
LPCWSTR ResourceId(const std::wstring& Name) {
  if (Name.size() > 1 && Name[0] == L'#') {
    wchar_t* End = nullptr;
    const unsigned long Id = wcstoul(Name.c_str() + 1, &End, 10);
    if (*End == L'\0' && Id <= 0xFFFF) return MAKEINTRESOURCEW(Id);
  }
  return Name.c_str();
}

} // namespace

uint32_t GetFileAttributes(const AnsiString& Name) {
  std::wstring W;
  if (!WideName(Name, W)) return INVALID_FILE_ATTRIBUTES_;
  return ::GetFileAttributesW(W.c_str());
}

bool SetFileAttributes(const AnsiString& Name, uint32_t Attributes) {
  std::wstring W;
  return WideName(Name, W) && ::SetFileAttributesW(W.c_str(), Attributes);
}

bool GetFileData(const AnsiString& Name, TFindData& Data) {
  std::wstring W;
  WIN32_FILE_ATTRIBUTE_DATA A;
  if (!WideName(Name, W) || !::GetFileAttributesExW(W.c_str(), GetFileExInfoStandard, &A))
    return false;
  Data.Attributes = A.dwFileAttributes;
  Data.CreationTime = FromFILETIME(A.ftCreationTime);
  Data.LastAccessTime = FromFILETIME(A.ftLastAccessTime);
  Data.LastWriteTime = FromFILETIME(A.ftLastWriteTime);
  Data.Size = (uint64_t(A.nFileSizeHigh) << 32) | A.nFileSizeLow;
  const size_t Slash = Name.find_last_of("\\/:");
  Data.Name = Slash == AnsiString::npos ? Name : Name.substr(Slash + 1);
  return true;
}

FindHandle FindFirstFile(const AnsiString& Pattern, TFindData& Data) {
  std::wstring W;
  if (!WideName(Pattern, W)) return nullptr;
  WIN32_FIND_DATAW F;
  HANDLE H = ::FindFirstFileW(W.c_str(), &F);
  if (H == INVALID_HANDLE_VALUE) return nullptr;
  FillData(F, Data);
  return H;
}

bool FindNextFile(FindHandle Find, TFindData& Data) {
  WIN32_FIND_DATAW F;
  if (!::FindNextFileW(Find, &F)) return false;
  FillData(F, Data);
  return true;
}

void FindClose(FindHandle Find) {
  if (Find) ::FindClose(Find);
}

bool CreateDirectory(const AnsiString& Name) {
  std::wstring W;
  return WideName(Name, W) && ::CreateDirectoryW(W.c_str(), nullptr);
}

bool RemoveDirectory(const AnsiString& Name) {
  std::wstring W;
  return WideName(Name, W) && ::RemoveDirectoryW(W.c_str());
}

bool DeleteFile(const AnsiString& Name) {
  std::wstring W;
  return WideName(Name, W) && ::DeleteFileW(W.c_str());
}

bool MoveFile(const AnsiString& OldName, const AnsiString& NewName) {
  std::wstring O, N;
  return WideName(OldName, O) && WideName(NewName, N) && ::MoveFileW(O.c_str(), N.c_str());
}

bool RemoveTree(const AnsiString& Dir) {
  return ShellOperation(FO_DELETE, Dir, AnsiString());
}

bool RenameTree(const AnsiString& OldName, const AnsiString& NewName) {
  return ShellOperation(FO_RENAME, OldName, NewName);
}

AnsiString GetCurrentDirectory() {
  return QueryText([](wchar_t* Buf, DWORD Size) { return ::GetCurrentDirectoryW(Size, Buf); });
}

bool SetCurrentDirectory(const AnsiString& Dir) {
  std::wstring W;
  return WideName(Dir, W) && ::SetCurrentDirectoryW(W.c_str());
}

AnsiString GetFullPathName(const AnsiString& Name) {
  std::wstring W;
  if (!WideName(Name, W)) return AnsiString();
  return QueryText(
      [&](wchar_t* Buf, DWORD Size) { return ::GetFullPathNameW(W.c_str(), Size, Buf, nullptr); });
}

AnsiString GetShortPathName(const AnsiString& Name) {
  std::wstring W;
  if (!WideName(Name, W)) return AnsiString();
  return QueryText(
      [&](wchar_t* Buf, DWORD Size) { return ::GetShortPathNameW(W.c_str(), Buf, Size); });
}

AnsiString ModuleFileName() {
  std::vector<wchar_t> Buffer(MAX_PATH + 1);
  for (;;) {
    const DWORD Len = ::GetModuleFileNameW(nullptr, Buffer.data(), DWORD(Buffer.size()));
    if (Len == 0) return AnsiString();
    if (Len < Buffer.size()) return NarrowName(Buffer.data(), Len);
    Buffer.resize(Buffer.size() * 2);
  }
}

bool GetFileTimes(const AnsiString& Name, FileTime& Creation, FileTime& LastAccess,
                  FileTime& LastWrite) {
  TFindData Data;
  if (!GetFileData(Name, Data)) return false;
  Creation = Data.CreationTime;
  LastAccess = Data.LastAccessTime;
  LastWrite = Data.LastWriteTime;
  return true;
}

namespace {
// Sets one or both of the times through a handle that may write attributes only.
bool SetTimes(const AnsiString& Name, const FileTime* Creation, const FileTime* LastWrite) {
  std::wstring W;
  if (!WideName(Name, W)) return false;
  HANDLE H = ::CreateFileW(W.c_str(), FILE_WRITE_ATTRIBUTES,
                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (H == INVALID_HANDLE_VALUE) return false;
  FILETIME C{}, L{};
  if (Creation) C = ToFILETIME(*Creation);
  if (LastWrite) L = ToFILETIME(*LastWrite);
  const BOOL Ok = ::SetFileTime(H, Creation ? &C : nullptr, nullptr, LastWrite ? &L : nullptr);
  const DWORD Error = ::GetLastError();
  ::CloseHandle(H);
  ::SetLastError(Error);
  return Ok != 0;
}
} // namespace

bool SetFileCreationTime(const AnsiString& Name, FileTime Creation) {
  return SetTimes(Name, &Creation, nullptr);
}

bool SetFileLastWriteTime(const AnsiString& Name, FileTime LastWrite) {
  return SetTimes(Name, nullptr, &LastWrite);
}

bool GetFileHandleLastWriteTime(FileHandle File, FileTime& LastWrite) {
  FILETIME W;
  if (!::GetFileTime(reinterpret_cast<HANDLE>(File), nullptr, nullptr, &W)) return false;
  LastWrite = FromFILETIME(W);
  return true;
}

FileTime FileTimeToLocal(FileTime Utc) {
  const FILETIME U = ToFILETIME(Utc);
  FILETIME L;
  return ::FileTimeToLocalFileTime(&U, &L) ? FromFILETIME(L) : Utc;
}

FileTime LocalFileTimeToUtc(FileTime Local) {
  const FILETIME L = ToFILETIME(Local);
  FILETIME U;
  return ::LocalFileTimeToFileTime(&L, &U) ? FromFILETIME(U) : Local;
}

bool FileTimeToDosDateTime(FileTime Time, uint16_t& DosDate, uint16_t& DosTime) {
  const FILETIME T = ToFILETIME(Time);
  WORD D = 0, W = 0;
  if (!::FileTimeToDosDateTime(&T, &D, &W)) return false;
  DosDate = D;
  DosTime = W;
  return true;
}

bool DosDateTimeToFileTime(uint16_t DosDate, uint16_t DosTime, FileTime& Time) {
  FILETIME T;
  if (!::DosDateTimeToFileTime(DosDate, DosTime, &T)) return false;
  Time = FromFILETIME(T);
  return true;
}

bool FileIsInUse(const AnsiString& Name) {
  std::wstring W;
  if (!WideName(Name, W)) return false;
  HANDLE H = ::CreateFileW(W.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
  if (H == INVALID_HANDLE_VALUE) return true;
  ::CloseHandle(H);
  return false;
}

AnsiString GetTempPath() {
  return QueryText([](wchar_t* Buf, DWORD Size) { return ::GetTempPathW(Size, Buf); });
}

AnsiString GetTempFileName(const AnsiString& Dir, const AnsiString& Prefix) {
  std::wstring WDir, WPrefix;
  if (!WideName(Dir, WDir) || !WideName(Prefix, WPrefix)) return AnsiString();
  wchar_t Buffer[MAX_PATH];
  if (::GetTempFileNameW(WDir.c_str(), WPrefix.c_str(), 0, Buffer) == 0) return AnsiString();
  return NarrowName(Buffer, wcslen(Buffer));
}

AnsiString CreateTempDirectory(const AnsiString& TempPath, const AnsiString& Prefix,
                               uint32_t Start) {
  // GetTempFileName only forms the name when given a number; the number space is 1 to 65535.
  constexpr uint32_t Numbers = 65535;
  std::wstring WDir, WPrefix;
  if (!WideName(TempPath, WDir) || !WideName(Prefix, WPrefix)) return AnsiString();
  wchar_t Buffer[MAX_PATH];
  for (uint32_t I = 0; I < Numbers; ++I) {
    const UINT Unique = UINT((Start + I) % Numbers + 1);
    if (::GetTempFileNameW(WDir.c_str(), WPrefix.c_str(), Unique, Buffer) == 0) break;
    if (::CreateDirectoryW(Buffer, nullptr)) return NarrowName(Buffer, wcslen(Buffer));
    const DWORD Error = ::GetLastError();
    if (Error != ERROR_ALREADY_EXISTS && Error != ERROR_FILE_EXISTS) break;
  }
  return AnsiString();
}

bool FindModuleResource(void* Module, const AnsiString& Name, const AnsiString& Type,
                        const void*& Data, uint32_t& Size) {
  Data = nullptr;
  Size = 0;
  std::wstring WName, WType;
  if (!WideName(Name, WName) || !WideName(Type, WType)) return false;
  HMODULE M = Module ? static_cast<HMODULE>(Module) : ::GetModuleHandleW(nullptr);
  HRSRC Info = ::FindResourceW(M, ResourceId(WName), ResourceId(WType));
  if (!Info) return false;
  HGLOBAL Global = ::LoadResource(M, Info);
  if (!Global) return false;
  Data = ::LockResource(Global);
  Size = ::SizeofResource(M, Info);
  return Data != nullptr;
}

} // namespace kx::platform

namespace kx {
// Declared with the runtime's file functions; their values are the platform's.
const AnsiChar PathDelim = '\\';
const char* const DriveDelim = ":";
const AnsiChar PathSep = ';';
} // namespace kx
