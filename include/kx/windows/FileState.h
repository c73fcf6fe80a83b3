// SPDX-License-Identifier: MIT
// Files of uKxWindows: attributes, use by others, sizes and times, and temporary names and
// folders.
#pragma once
// Names are native paths. Linux renders the Windows notions: read-only is the owner's missing
// write permission, hidden a name with a leading dot, in use a conflicting advisory lock, and
// the creation time the birth time, or the time last set by KxSetFileCreated (kept in the
// user extended attribute "user.kx.created"; where the file system has none, the modification
// time stands for both).

#include <kx/rtl/DateTime.h>
#include <kx/rtl/Files.h>

namespace kx {

inline constexpr const char* SKxTempDirUnknown = "Can't determine name temp directory";
inline constexpr const char* SKxTempDirNotCreated = "Failed to create a temporary directory!";
// The prefix of the folders KxCreateTempDirectory makes.
inline constexpr const char* SKxTempDirPrefix = "Ast";

// False when the file does not exist; otherwise its read-only or hidden attribute.
KX_API bool KxFileIsReadOnly(const AnsiString& FileName);
KX_API bool KxFileIsHidden(const AnsiString& FileName);
// False when the file does not exist; true when opening it for reading and writing without
// sharing fails (Linux: another holder of an advisory lock on it). Never raises.
KX_API bool KxFileIsInUse(const AnsiString& FileName);
// The size the folder search reports (the file is not opened); -1 when there is no such file.
KX_API int64_t KxGetFileSize(const AnsiString& FileName);
// Local times with the two-second resolution of the DOS form; 0 when there is no such file or
// the time is outside 1980 to 2107.
KX_API TDateTime KxGetFileCreated(const AnsiString& FileName);
KX_API TDateTime KxGetFileLastModified(const AnsiString& FileName);
// Sets the creation time to local time DT, so that KxGetFileCreated reads it back (to its two
// seconds); EOSError when the file cannot be changed.
KX_API void KxSetFileCreated(const AnsiString& FileName, TDateTime DT);
// Between a file time and a date-time as the same wall-clock reading (no zone conversion).
KX_API TDateTime KxFileTimeToDateTime(const TFileTime& FileTime);
KX_API TFileTime KxDateTimeToFileTime(TDateTime DT);

// Creates a new empty file in Dir ("." when empty) whose name starts with the first three
// characters of Prefix and returns its name (Linux: "<prefix>XXXXXX.tmp"); EOSError on
// failure.
KX_API AnsiString KxGetTempFilename(const AnsiString& Dir, const AnsiString& Prefix);
// The temporary folder with a trailing delimiter (Linux: $TMPDIR, else /tmp); Exception
// "Can't determine name temp directory" when there is none or it is longer than 260
// characters.
KX_API AnsiString KxGetTempDirectory();
// Creates a new folder "Ast..." in the temporary folder and returns its name; Exception
// "Failed to create a temporary directory!" when none can be made.
KX_API AnsiString KxCreateTempDirectory();

} // namespace kx
