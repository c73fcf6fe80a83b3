// SPDX-License-Identifier: MIT
#pragma once
// The platform layer: every OS call of the library goes through these functions.
// Failures return a null handle, false or 0 and leave the code in LastError(), as Win32 does.

#include <kx/rtl/DateTime.h>
#include <kx/rtl/Strings.h>
#include <kx/rtl/System.h>

namespace kx::platform {

// Threads and time.
TThreadID CurrentThreadId();
uint32_t TickCount();
void Sleep(uint32_t Milliseconds);
// Names the calling OS thread for debuggers and tools, truncated as the OS requires.
void SetOSThreadName(const AnsiString& Name);

// The clock as Win32's SYSTEMTIME, to the millisecond: local time (on POSIX in the zone TZ
// names at the moment of the call) and UTC.
void GetLocalTime(TSystemTime& Time);
void GetSystemTime(TSystemTime& Time);

// The time zone as Win32's GetTimeZoneInformation gives it: biases in minutes, UTC = local +
// bias. The result is 0 for a zone without daylight saving, 1 in standard time, 2 in daylight
// time, and 0xFFFFFFFF on failure (the biases are then 0). POSIX reads the zone TZ names at the
// moment of the call (localtime_r): Bias is the standard offset, DaylightBias the difference of
// the daylight offset, found half a year away from now when that is the zone's other half.
struct TTimeZoneBias {
  int32_t Bias = 0;
  int32_t StandardBias = 0;
  int32_t DaylightBias = 0;
};
inline constexpr uint32_t TIME_ZONE_ID_INVALID_ = 0xFFFFFFFF;
uint32_t GetTimeZoneInformation(TTimeZoneBias& Zone);

// A locale's formats as Win32's GetLocaleInfo gives them: date pictures in Win32's letters
// (d, M, y, g and 'quoted' text), the time style as the flags LOCALE_ITIME (TwelveHour is
// its 0), LOCALE_ITLZERO and LOCALE_ITIMEMARKPOSN, names with January and Sunday first.
struct TLocaleFormats {
  bool HasDates = false;   // the date and time fields and the names were found
  bool HasNumbers = false; // the number separators were found
  UnicodeString ShortDate, LongDate, DateSeparator, TimeSeparator, TimeAM, TimePM;
  bool TwelveHour = false, HourLeadingZero = false, MarkBeforeTime = false;
  UnicodeString ShortMonths[12], LongMonths[12], ShortDays[7], LongDays[7];
  UnicodeString Decimal, Thousand, List;
};
// Locales 0, 1024 (user default) and 2048 (system default) are the process's own: on POSIX
// the locale the environment names for the category (LC_ALL, LC_TIME or LC_NUMERIC, LANG),
// with its data from ICU. A non-empty Name ("de-DE", "de_DE") stands instead of the
// identifier. False when neither category was found: the C and POSIX locales, and locales the
// platform does not know.
bool GetLocaleFormats(uint32_t Locale, const AnsiString& Name, TLocaleFormats& Formats);

// Error codes: Win32 codes on Windows; errno values on POSIX, where failures the library
// reports with Win32 meaning (code-page conversions) use the Win32 code.
uint32_t LastError();
void SetLastError(uint32_t Code);
AnsiString ErrorMessage(uint32_t Code);
inline constexpr uint32_t ERROR_INVALID_PARAMETER_ = 87;
inline constexpr uint32_t ERROR_INSUFFICIENT_BUFFER_ = 122;
inline constexpr uint32_t ERROR_NO_UNICODE_TRANSLATION_ = 1113;

// Waitable objects: semaphores and events share one handle type.
using Handle = void*;
Handle CreateSemaphore(int32_t InitialCount, int32_t MaximumCount);
bool ReleaseSemaphore(Handle Semaphore, int32_t Count);
Handle CreateEvent(bool ManualReset, bool InitialState);
bool SetEvent(Handle Event);
bool ResetEvent(Handle Event);
TWaitResult WaitFor(Handle Object, uint32_t TimeoutMs);
void CloseHandle(Handle Object);

// The OS reader/writer lock behind TKxMultiReadSingleWrite. The lock word is
// RWLockWordSize bytes, zeroed before first use; the functions follow the Win32 SRW ones.
inline constexpr size_t RWLockWordSize = 64;
struct TRWLockFunctions {
  void(KX_STDCALL* AcquireExclusive)(void* Lock);
  uint8_t(KX_STDCALL* TryAcquireExclusive)(void* Lock);
  void(KX_STDCALL* ReleaseExclusive)(void* Lock);
  void(KX_STDCALL* AcquireShared)(void* Lock);
  uint8_t(KX_STDCALL* TryAcquireShared)(void* Lock);
  void(KX_STDCALL* ReleaseShared)(void* Lock);
};
// Looks the functions up (by name in kernel32 on Windows). Returns false when the module
// is not there; a function the OS lacks is left null.
bool BindRWLockFunctions(TRWLockFunctions& Functions);
// Releases whatever the OS lock holds once the lock word is no longer used.
void DestroyRWLock(void* Lock);

// Modules and exported functions, looked up at run time.
void* GetModule(const char* Name);
void* LoadModule(const char* Name);
void* GetProc(void* Module, const char* Name);

// Code pages: the OS's ANSI code page, and the MultiByteToWideChar/WideCharToMultiByte pair
// with the Win32 contract on every platform. Counts are in code units; a source length of -1
// takes a zero-terminated source together with its terminator; a 0-length destination asks for
// the size; 0 is a failure with the code in LastError(): ERROR_INSUFFICIENT_BUFFER_ when the
// destination is too small, ERROR_NO_UNICODE_TRANSLATION_ for invalid input under
// MB_ERR_INVALID_CHARS_ or WC_ERR_INVALID_CHARS_, ERROR_INVALID_FLAGS_ for flags the code page
// refuses (any flag for 42, 50220-50229, 57002-57011 and 65000; more than the invalid-characters
// flag for 65001 and 54936), ERROR_INVALID_PARAMETER_ for a code page the platform lacks and for
// 1200, 1201, 12000 and 12001, which the pair does not convert. Code page 0 is the OS's own
// ANSI code page, not the runtime's KxSystemCodePage(): callers resolve 0 themselves.
uint32_t SystemCodePage();
inline constexpr uint32_t MB_PRECOMPOSED_ = 0x01;
inline constexpr uint32_t MB_ERR_INVALID_CHARS_ = 0x08;
inline constexpr uint32_t WC_DISCARDNS_ = 0x10;
inline constexpr uint32_t WC_SEPCHARS_ = 0x20;
inline constexpr uint32_t WC_DEFAULTCHAR_ = 0x40;
inline constexpr uint32_t WC_ERR_INVALID_CHARS_ = 0x80;
inline constexpr uint32_t WC_COMPOSITECHECK_ = 0x200;
inline constexpr uint32_t WC_NO_BEST_FIT_CHARS_ = 0x400;
inline constexpr uint32_t ERROR_INVALID_FLAGS_ = 1004;
int32_t MultiByteToWide(uint32_t CodePage, uint32_t Flags, const char* Src, int32_t SrcLen,
                        char16_t* Dst, int32_t DstLen);
int32_t WideToMultiByte(uint32_t CodePage, uint32_t Flags, const char16_t* Src, int32_t SrcLen,
                        char* Dst, int32_t DstLen);
// A destination length that MultiByteToWide's result fits in, with the same failures for the
// code page, flags and arguments. Win32 measures exactly; POSIX answers from the source length
// where a byte never yields more than one code unit, so that long texts are converted once.
int32_t MultiByteToWideBound(uint32_t CodePage, uint32_t Flags, const char* Src, int32_t SrcLen);
// Whether the platform converts the code page.
bool IsValidCodePage(uint32_t CodePage);
// The longest character of the code page in bytes (GetCPInfo's MaxCharSize), 0 when the
// platform has no information on it.
uint32_t CodePageMaxCharSize(uint32_t CodePage);

// Unicode normalisation through Win32's NormalizeString (forms 1 C, 2 D, 5 KC, 6 KD), found by
// name at run time: the module is normaliz.dll on Windows; on POSIX the same name stands for a
// module built over ICU. Both return null when there is no such module or entry.
using TNormalizeStringProc = int32_t(KX_STDCALL*)(int32_t NormForm, const char16_t* Src,
                                                  int32_t SrcLen, char16_t* Dst, int32_t DstLen);
void* LoadNormalizationModule(const char* Name);
void* GetNormalizationProc(void* Module, const char* Name);

// Text: the simple case mappings (one to one, so the length never changes) and the collation
// the runtime's Ansi* comparisons use. Windows follows the user's locale (CharUpperBuffW,
// CompareStringW); POSIX uses ICU's root locale, so results do not depend on the environment.
void UpperCaseWide(char16_t* Text, size_t Length);
void LowerCaseWide(char16_t* Text, size_t Length);
// -1, 0 or 1; IgnoreCase ignores case differences but not accents.
int32_t CompareStringWide(const char16_t* S1, size_t Len1, const char16_t* S2, size_t Len2,
                          bool IgnoreCase);

// Files. A file handle is the OS's own (a HANDLE on Windows, a descriptor on POSIX); names are
// 8-bit text in the process ANSI code page (Windows opens them through the W functions).
// Mode is the runtime's access value (fmOpenRead 0, fmOpenWrite 1, fmOpenReadWrite 2) or'ed
// with a share value (fmShareCompat 0x00, fmShareExclusive 0x10, fmShareDenyWrite 0x20,
// fmShareDenyRead 0x30, fmShareDenyNone 0x40); other values fail with an invalid parameter.
// POSIX has no share modes: there an open that denies others anything takes an advisory flock
// (exclusive when it writes or denies reading, shared for a reader that denies writing), and
// an open that cannot get it fails with EWOULDBLOCK. Compat and deny-none opens take no lock
// and are never refused, where Windows refuses them beside an exclusive open.
using FileHandle = intptr_t;
inline constexpr FileHandle InvalidFileHandle = -1;
// Opens an existing file (never a directory).
FileHandle FileOpen(const AnsiString& FileName, uint32_t Mode);
// Creates a file, or empties an existing one, for reading and writing; only the share bits
// of Mode count. An existing file is left alone when the share mode refuses the open.
FileHandle FileCreate(const AnsiString& FileName, uint32_t Mode);
// Byte counts read or written, -1 on failure.
int32_t FileRead(FileHandle File, void* Buffer, int32_t Count);
int32_t FileWrite(FileHandle File, const void* Buffer, int32_t Count);
// Origin 0 from the start, 1 from the position, 2 from the end; the new position or -1.
int64_t FileSeek(FileHandle File, int64_t Offset, int32_t Origin);
// The file's size in bytes, -1 on failure.
int64_t FileSize(FileHandle File);
// Makes the position the end of the file (SetEndOfFile).
bool FileSetEnd(FileHandle File);
void FileClose(FileHandle File);

// The file system. Names are 8-bit text in the process ANSI code page, native paths ('\\' on
// Windows, '/' on POSIX). Attributes are the Win32 bits on every platform; POSIX renders them
// from the file's mode and name: read-only when the owner may not write, hidden when the name
// starts with a dot (other than "." and ".."), system for what is neither a file nor a folder,
// a reparse point for a symbolic link (whose other bits are its target's, when there is one).
inline constexpr uint32_t FILE_ATTRIBUTE_READONLY_ = 0x01;
inline constexpr uint32_t FILE_ATTRIBUTE_HIDDEN_ = 0x02;
inline constexpr uint32_t FILE_ATTRIBUTE_SYSTEM_ = 0x04;
inline constexpr uint32_t FILE_ATTRIBUTE_DIRECTORY_ = 0x10;
inline constexpr uint32_t FILE_ATTRIBUTE_ARCHIVE_ = 0x20;
inline constexpr uint32_t FILE_ATTRIBUTE_NORMAL_ = 0x80;
inline constexpr uint32_t FILE_ATTRIBUTE_REPARSE_POINT_ = 0x400;
inline constexpr uint32_t INVALID_FILE_ATTRIBUTES_ = 0xFFFFFFFF;

// A file time: 100-nanosecond intervals since 1601-01-01 UTC (Win32 FILETIME).
using FileTime = uint64_t;

// What a directory search reports of one entry (WIN32_FIND_DATA).
struct TFindData {
  uint32_t Attributes = 0;
  FileTime CreationTime = 0;
  FileTime LastAccessTime = 0;
  FileTime LastWriteTime = 0;
  uint64_t Size = 0;
  AnsiString Name;
};

// Attributes, INVALID_FILE_ATTRIBUTES_ on failure (errors 2/3 when the name does not exist).
uint32_t GetFileAttributes(const AnsiString& Name);
// Only the read-only bit can be set on POSIX, where it clears every write permission (and
// clearing it gives the owner write permission back); the other bits are ignored there.
bool SetFileAttributes(const AnsiString& Name, uint32_t Attributes);
// The entry for one name (GetFileAttributesEx): attributes, times and size; the name part of
// Data is the last part of Name.
bool GetFileData(const AnsiString& Name, TFindData& Data);

// Directory searches. Pattern is a folder and a mask of Windows wildcards ('*' any run, '?' one
// character, "*.*" everything). POSIX lists "." and ".." as Windows does and compares names
// case-sensitively. No match and a missing folder both fail with error 2 or 3.
using FindHandle = void*;
FindHandle FindFirstFile(const AnsiString& Pattern, TFindData& Data);
bool FindNextFile(FindHandle Find, TFindData& Data);
void FindClose(FindHandle Find);

bool CreateDirectory(const AnsiString& Name);
// Removes an empty folder, or a symbolic link to a folder (the link only).
bool RemoveDirectory(const AnsiString& Name);
bool DeleteFile(const AnsiString& Name);
// Renames a file or folder; fails when NewName exists (ERROR_ALREADY_EXISTS / EEXIST).
bool MoveFile(const AnsiString& OldName, const AnsiString& NewName);
// The shell's operations on a whole folder. POSIX walks the tree through descriptors and never
// follows a symbolic link: a link is removed or moved as a link. A rename across file systems
// copies the tree and removes the original.
bool RemoveTree(const AnsiString& Dir);
bool RenameTree(const AnsiString& OldName, const AnsiString& NewName);

// Empty on failure.
AnsiString GetCurrentDirectory();
bool SetCurrentDirectory(const AnsiString& Dir);
// The absolute form of Name, with "." and ".." resolved as text (links are not followed).
AnsiString GetFullPathName(const AnsiString& Name);
// The short (8.3) form of an existing path; POSIX has none and returns the path as it is.
// Empty on failure.
AnsiString GetShortPathName(const AnsiString& Name);
// The path of the running executable.
AnsiString ModuleFileName();

// The creation, last access and last write times of a file. POSIX has no settable birth time:
// a creation time that was set is kept in the user extended attribute "user.kx.created"
// ("<seconds>.<nanoseconds>" since 1970 UTC) and wins over the birth time (statx); on a file
// system without user extended attributes the modification time stands for both.
bool GetFileTimes(const AnsiString& Name, FileTime& Creation, FileTime& LastAccess,
                  FileTime& LastWrite);
bool SetFileCreationTime(const AnsiString& Name, FileTime Creation);
bool SetFileLastWriteTime(const AnsiString& Name, FileTime LastWrite);
bool GetFileHandleLastWriteTime(FileHandle File, FileTime& LastWrite);
// Between UTC and local file times with the time zone's offset of the present moment
// (FileTimeToLocalFileTime and its inverse), whatever the offset at the converted time was.
FileTime FileTimeToLocal(FileTime Utc);
FileTime LocalFileTimeToUtc(FileTime Local);
// The DOS date and time words (FileTimeToDosDateTime: years 1980 to 2107, two-second steps,
// no zone conversion), and back; false outside that range or for an impossible date.
bool FileTimeToDosDateTime(FileTime Time, uint16_t& DosDate, uint16_t& DosTime);
bool DosDateTimeToFileTime(uint16_t DosDate, uint16_t DosTime, FileTime& Time);

// Whether opening the file for reading and writing without sharing fails. POSIX opens it for
// reading and writing and looks for a conflicting advisory lock (flock, as the file streams
// take, or fcntl/OFD record locks).
bool FileIsInUse(const AnsiString& Name);

// The temporary folder with a trailing delimiter (GetTempPath; POSIX: $TMPDIR, else /tmp);
// empty on failure.
AnsiString GetTempPath();
// Creates a new empty file in Dir whose name starts with the first three characters of Prefix
// (GetTempFileName; POSIX: mkstemps, "<prefix>XXXXXX.tmp") and returns its name; empty on
// failure.
AnsiString GetTempFileName(const AnsiString& Dir, const AnsiString& Prefix);
// Creates a new folder in TempPath (which ends in a delimiter) whose name starts with Prefix:
// Windows tries GetTempFileName's numbered names from Start on, up to 65535 of them; POSIX
// uses mkdtemp. Empty on failure.
AnsiString CreateTempDirectory(const AnsiString& TempPath, const AnsiString& Prefix,
                               uint32_t Start);

// The name of a Windows locale identifier ("en-US"): LCIDToLocaleName on Windows, ICU's map of
// the identifiers on POSIX (keywords dropped, '_' as '-'). False when the platform has none.
bool LocaleName(uint16_t LocaleID, AnsiString& Name);

// A resource of a module (null: the executable): Windows resources by name or "#<id>" for
// both the name and the type. POSIX modules have none and always fail with error 2.
bool FindModuleResource(void* Module, const AnsiString& Name, const AnsiString& Type,
                        const void*& Data, uint32_t& Size);

} // namespace kx::platform
