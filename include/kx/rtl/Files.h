// SPDX-License-Identifier: MIT
// The runtime's file, folder and path functions.
#pragma once
// Names are native paths in the process ANSI code page: PathDelim is '\' on Windows and '/'
// elsewhere, where there are no drives (DriveDelim is empty). The text functions split at
// these delimiters byte by byte.

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Streams.h>

namespace kx {

extern KX_API const AnsiChar PathDelim;
extern KX_API const char* const DriveDelim;
// Between the folders of a search path: ';' on Windows, ':' elsewhere.
extern KX_API const AnsiChar PathSep;

// File attributes: the Win32 bits. Elsewhere read-only means the owner may not write, hidden a
// name that starts with a dot, faSysFile what is neither a file nor a folder, faSymLink a
// symbolic link (its other bits are those of its target).
inline constexpr int32_t faReadOnly = 0x01;
inline constexpr int32_t faHidden = 0x02;
inline constexpr int32_t faSysFile = 0x04;
inline constexpr int32_t faVolumeID = 0x08;
inline constexpr int32_t faDirectory = 0x10;
inline constexpr int32_t faArchive = 0x20;
inline constexpr int32_t faNormal = 0x80;
inline constexpr int32_t faSymLink = 0x400;
inline constexpr int32_t faAnyFile = 0x1FF;

// An I/O failure with its code.
class KX_API EInOutError : public Exception {
  KX_EXCEPTION_CLASS(EInOutError, Exception)
public:
  int32_t ErrorCode = 0;
};
inline constexpr const char* SCannotCreateDir = "Unable to create directory";

// A file time: 100-nanosecond intervals since 1601-01-01 UTC (the Win32 FILETIME layout).
struct TFileTime {
  uint32_t dwLowDateTime = 0;
  uint32_t dwHighDateTime = 0;
};

// What a directory search found (the Win32 find data).
struct TWin32FindData {
  uint32_t dwFileAttributes = 0;
  TFileTime ftCreationTime;
  TFileTime ftLastAccessTime;
  TFileTime ftLastWriteTime;
  uint32_t nFileSizeHigh = 0;
  uint32_t nFileSizeLow = 0;
  AnsiString cFileName;
};

struct TSearchRec {
  // The last write time in local DOS date-time form (0 outside 1980 to 2107).
  int32_t Time = 0;
  int64_t Size = 0;
  int32_t Attr = 0;
  AnsiString Name;
  // Of faHidden, faSysFile, faVolumeID and faDirectory, the ones not asked for.
  int32_t ExcludeAttr = 0;
  void* FindHandle = nullptr;
  TWin32FindData FindData;
};

// --- path text -----------------------------------------------------------------------------

// The last position (1-based) in S of any character of Delimiters, 0 when none.
KX_API int32_t LastDelimiter(const AnsiString& Delimiters, const AnsiString& S);
// Whether S[Index] (1-based) is one of Delimiters.
KX_API bool IsDelimiter(const AnsiString& Delimiters, const AnsiString& S, int32_t Index);
KX_API bool IsPathDelimiter(const AnsiString& S, int32_t Index);
KX_API AnsiString IncludeTrailingPathDelimiter(const AnsiString& S);
KX_API AnsiString ExcludeTrailingPathDelimiter(const AnsiString& S);
// The folder part with its trailing delimiter ("dir/" of "dir/a.txt"), or "" for a bare name.
KX_API AnsiString ExtractFilePath(const AnsiString& FileName);
// The folder part without the trailing delimiter, unless that is the root's.
KX_API AnsiString ExtractFileDir(const AnsiString& FileName);
KX_API AnsiString ExtractFileName(const AnsiString& FileName);
// The extension with its dot, "" when the name has none.
KX_API AnsiString ExtractFileExt(const AnsiString& FileName);
// "C:" or "\\server\share" on Windows; always "" elsewhere.
KX_API AnsiString ExtractFileDrive(const AnsiString& FileName);
// Replaces the extension (or appends Extension when there is none); Extension has its dot.
KX_API AnsiString ChangeFileExt(const AnsiString& FileName, const AnsiString& Extension);
// The absolute name, "." and ".." resolved (GetFullPathName); "" when that fails.
KX_API AnsiString ExpandFileName(const AnsiString& FileName);

// --- files and folders ---------------------------------------------------------------------

// A name that exists and is not a folder (a symbolic link counts as what it points to; a
// dangling one as a file).
KX_API bool FileExists(const AnsiString& FileName);
KX_API bool DirectoryExists(const AnsiString& Directory);
KX_API bool CreateDir(const AnsiString& Dir);
KX_API bool RemoveDir(const AnsiString& Dir);
// Creates Dir with every missing parent; true when it exists afterwards. EInOutError "Unable to
// create directory" for an empty name.
KX_API bool ForceDirectories(const AnsiString& Dir);
KX_API bool DeleteFile(const AnsiString& FileName);
// False when NewName exists already, on every platform.
KX_API bool RenameFile(const AnsiString& OldName, const AnsiString& NewName);
KX_API AnsiString GetCurrentDir();
KX_API bool SetCurrentDir(const AnsiString& Dir);
// The attributes, -1 when the name does not exist.
KX_API int32_t FileGetAttr(const AnsiString& FileName);
// 0, or the OS error code. Only faReadOnly has an effect outside Windows.
KX_API int32_t FileSetAttr(const AnsiString& FileName, int32_t Attr);

// Searches Path (a folder and a mask of '*' and '?' wildcards) for entries whose attributes
// hold no more of faHidden, faSysFile, faVolumeID and faDirectory than Attr: 0 when one is
// found (in F), else the OS error code. FindClose must follow a successful FindFirst.
KX_API int32_t FindFirst(const AnsiString& Path, int32_t Attr, TSearchRec& F);
KX_API int32_t FindNext(TSearchRec& F);
KX_API void FindClose(TSearchRec& F);

} // namespace kx
