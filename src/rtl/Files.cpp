// SPDX-License-Identifier: MIT
// The runtime's file, folder and path functions.
#include <kx/rtl/Files.h>

#include "platform/Platform.h"

#include <cstring>

namespace kx {

KX_IMPLEMENT_EXCEPTION(EInOutError, Exception, "SysUtils")

namespace {

// The folder searches report these; the rest of faAnyFile never excludes an entry.
constexpr int32_t faSpecial = faHidden | faSysFile | faVolumeID | faDirectory;

AnsiString PathAndDrive() {
  return AnsiString(1, PathDelim) + DriveDelim;
}

void SplitFileTime(platform::FileTime T, TFileTime& F) {
  F.dwLowDateTime = uint32_t(T & 0xFFFFFFFFu);
  F.dwHighDateTime = uint32_t(T >> 32);
}

// The last write time as a local DOS date-time; 0 outside the DOS range.
int32_t DosTimeOf(platform::FileTime LastWrite) {
  uint16_t Date = 0, Time = 0;
  if (!platform::FileTimeToDosDateTime(platform::FileTimeToLocal(LastWrite), Date, Time)) return 0;
  return int32_t((uint32_t(Date) << 16) | Time);
}

void FillSearchRec(const platform::TFindData& Data, TSearchRec& F) {
  F.Time = DosTimeOf(Data.LastWriteTime);
  F.Size = int64_t(Data.Size);
  F.Attr = int32_t(Data.Attributes);
  F.Name = Data.Name;
  TWin32FindData& D = F.FindData;
  D.dwFileAttributes = Data.Attributes;
  SplitFileTime(Data.CreationTime, D.ftCreationTime);
  SplitFileTime(Data.LastAccessTime, D.ftLastAccessTime);
  SplitFileTime(Data.LastWriteTime, D.ftLastWriteTime);
  D.nFileSizeHigh = uint32_t(Data.Size >> 32);
  D.nFileSizeLow = uint32_t(Data.Size & 0xFFFFFFFFu);
  D.cFileName = Data.Name;
}

// Moves on to the first entry the search asked for, starting with the one in Data.
int32_t FindMatching(TSearchRec& F, platform::TFindData& Data) {
  while ((int32_t(Data.Attributes) & F.ExcludeAttr) != 0)
    if (!platform::FindNextFile(F.FindHandle, Data)) return int32_t(platform::LastError());
  FillSearchRec(Data, F);
  return 0;
}

} // namespace

// --- path text -----------------------------------------------------------------------------

int32_t LastDelimiter(const AnsiString& Delimiters, const AnsiString& S) {
  const size_t At = S.find_last_of(Delimiters);
  return At == AnsiString::npos ? 0 : int32_t(At) + 1;
}

bool IsDelimiter(const AnsiString& Delimiters, const AnsiString& S, int32_t Index) {
  if (Index < 1 || size_t(Index) > S.size()) return false;
  return Delimiters.find(S[size_t(Index) - 1]) != AnsiString::npos;
}

bool IsPathDelimiter(const AnsiString& S, int32_t Index) {
  return Index >= 1 && size_t(Index) <= S.size() && S[size_t(Index) - 1] == PathDelim;
}

AnsiString IncludeTrailingPathDelimiter(const AnsiString& S) {
  return IsPathDelimiter(S, int32_t(S.size())) ? S : S + PathDelim;
}

AnsiString ExcludeTrailingPathDelimiter(const AnsiString& S) {
  return IsPathDelimiter(S, int32_t(S.size())) ? S.substr(0, S.size() - 1) : S;
}

AnsiString ExtractFilePath(const AnsiString& FileName) {
  return Copy(FileName, 1, LastDelimiter(PathAndDrive(), FileName));
}

AnsiString ExtractFileDir(const AnsiString& FileName) {
  const AnsiString Delimiters = PathAndDrive();
  int32_t I = LastDelimiter(Delimiters, FileName);
  // "dir\" loses its delimiter, a root ("C:\", "\", "/") keeps it.
  if (I > 1 && FileName[size_t(I) - 1] == PathDelim && !IsDelimiter(Delimiters, FileName, I - 1))
    --I;
  return Copy(FileName, 1, I);
}

AnsiString ExtractFileName(const AnsiString& FileName) {
  return Copy(FileName, int64_t(LastDelimiter(PathAndDrive(), FileName)) + 1, INT32_MAX);
}

AnsiString ExtractFileExt(const AnsiString& FileName) {
  const int32_t I = LastDelimiter("." + PathAndDrive(), FileName);
  if (I > 0 && FileName[size_t(I) - 1] == '.') return Copy(FileName, I, INT32_MAX);
  return AnsiString();
}

AnsiString ExtractFileDrive(const AnsiString& FileName) {
  if (*DriveDelim == '\0') return AnsiString();
  if (FileName.size() >= 2 && FileName[1] == *DriveDelim) return FileName.substr(0, 2);
  // "\\server\share": up to the delimiter after the share, or the end.
  if (FileName.size() >= 2 && FileName[0] == PathDelim && FileName[1] == PathDelim) {
    size_t At = FileName.find(PathDelim, 2);
    if (At == AnsiString::npos) return FileName;
    At = FileName.find(PathDelim, At + 1);
    return At == AnsiString::npos ? FileName : FileName.substr(0, At);
  }
  return AnsiString();
}

AnsiString ChangeFileExt(const AnsiString& FileName, const AnsiString& Extension) {
  int32_t I = LastDelimiter("." + PathAndDrive(), FileName);
  if (I == 0 || FileName[size_t(I) - 1] != '.') I = int32_t(FileName.size()) + 1;
  return Copy(FileName, 1, I - 1) + Extension;
}

AnsiString ExpandFileName(const AnsiString& FileName) {
  return platform::GetFullPathName(FileName);
}

// --- files and folders ---------------------------------------------------------------------

bool FileExists(const AnsiString& FileName) {
  const uint32_t Attr = platform::GetFileAttributes(FileName);
  return Attr != platform::INVALID_FILE_ATTRIBUTES_ &&
         (Attr & platform::FILE_ATTRIBUTE_DIRECTORY_) == 0;
}

bool DirectoryExists(const AnsiString& Directory) {
  const uint32_t Attr = platform::GetFileAttributes(Directory);
  return Attr != platform::INVALID_FILE_ATTRIBUTES_ &&
         (Attr & platform::FILE_ATTRIBUTE_DIRECTORY_) != 0;
}

bool CreateDir(const AnsiString& Dir) {
  return platform::CreateDirectory(Dir);
}

bool RemoveDir(const AnsiString& Dir) {
  return platform::RemoveDirectory(Dir);
}

bool ForceDirectories(const AnsiString& Dir) {
  if (Dir.empty()) throw EInOutError(SCannotCreateDir);
  const AnsiString Folder = ExcludeTrailingPathDelimiter(Dir);
  // The root, a drive ("C:") and existing folders are there already.
  if (Folder.empty() || DirectoryExists(Folder)) return true;
  const AnsiString Parent = ExtractFilePath(Folder);
  if (Parent == Folder) return true;
  if (!Parent.empty() && !ForceDirectories(Parent)) return false;
  // Another thread or process may have made it meanwhile.
  return CreateDir(Folder) || DirectoryExists(Folder);
}

bool DeleteFile(const AnsiString& FileName) {
  return platform::DeleteFile(FileName);
}

bool RenameFile(const AnsiString& OldName, const AnsiString& NewName) {
  return platform::MoveFile(OldName, NewName);
}

AnsiString GetCurrentDir() {
  return platform::GetCurrentDirectory();
}

bool SetCurrentDir(const AnsiString& Dir) {
  return platform::SetCurrentDirectory(Dir);
}

int32_t FileGetAttr(const AnsiString& FileName) {
  return int32_t(platform::GetFileAttributes(FileName));
}

int32_t FileSetAttr(const AnsiString& FileName, int32_t Attr) {
  return platform::SetFileAttributes(FileName, uint32_t(Attr)) ? 0 : int32_t(platform::LastError());
}

int32_t FindFirst(const AnsiString& Path, int32_t Attr, TSearchRec& F) {
  F.ExcludeAttr = ~Attr & faSpecial;
  platform::TFindData Data;
  F.FindHandle = platform::FindFirstFile(Path, Data);
  if (!F.FindHandle) return int32_t(platform::LastError());
  const int32_t Result = FindMatching(F, Data);
  if (Result != 0) FindClose(F);
  return Result;
}

int32_t FindNext(TSearchRec& F) {
  platform::TFindData Data;
  if (!platform::FindNextFile(F.FindHandle, Data)) return int32_t(platform::LastError());
  return FindMatching(F, Data);
}

void FindClose(TSearchRec& F) {
  if (!F.FindHandle) return;
  platform::FindClose(F.FindHandle);
  F.FindHandle = nullptr;
}

} // namespace kx
