// SPDX-License-Identifier: MIT
// File attributes, use, sizes and times, and temporary names of uKxWindows.
#include <kx/rtl/SysUtils.h>
#include <kx/windows/FileState.h>

#include "platform/Platform.h"

namespace kx {

namespace {

// GetTempPath's buffer holds 261 characters; a longer path is refused.
constexpr size_t TempPathLimit = 260;

bool HasAttribute(const AnsiString& FileName, int32_t Attribute) {
  const int32_t Attr = FileGetAttr(FileName);
  return Attr != -1 && (Attr & Attribute) != 0;
}

TDateTime DosDateTimeToDateTime(uint16_t DosDate, uint16_t DosTime) {
  TDateTime Date, Time;
  if (!TryEncodeDate(uint16_t(1980 + (DosDate >> 9)), uint16_t((DosDate >> 5) & 15),
                     uint16_t(DosDate & 31), Date) ||
      !TryEncodeTime(uint16_t(DosTime >> 11), uint16_t((DosTime >> 5) & 63),
                     uint16_t((DosTime & 31) * 2), 0, Time))
    return 0.0;
  return double(Date) + double(Time);
}

// A UTC file time as local time in the DOS form's two-second steps.
TDateTime LocalDosTime(platform::FileTime Utc) {
  uint16_t DosDate, DosTime;
  if (!platform::FileTimeToDosDateTime(platform::FileTimeToLocal(Utc), DosDate, DosTime))
    return 0.0;
  return DosDateTimeToDateTime(DosDate, DosTime);
}

// 100-nanosecond ticks from 1601-01-01 to 1899-12-30.
constexpr int64_t TicksPerDay = int64_t(MSecsPerDay) * 10000;
constexpr int64_t DayZeroTicks = int64_t(109205) * TicksPerDay;

} // namespace

bool KxFileIsReadOnly(const AnsiString& FileName) {
  return HasAttribute(FileName, faReadOnly);
}

bool KxFileIsHidden(const AnsiString& FileName) {
  return HasAttribute(FileName, faHidden);
}

bool KxFileIsInUse(const AnsiString& FileName) {
  if (!FileExists(FileName)) return false;
  return platform::FileIsInUse(FileName);
}

int64_t KxGetFileSize(const AnsiString& FileName) {
  TSearchRec SR;
  if (FindFirst(FileName, faAnyFile, SR) != 0) return -1;
  const int64_t Size = SR.Size;
  FindClose(SR);
  return Size;
}

TDateTime KxGetFileCreated(const AnsiString& FileName) {
  platform::FileTime Created, Accessed, Written;
  if (!platform::GetFileTimes(FileName, Created, Accessed, Written)) return 0.0;
  return LocalDosTime(Created);
}

TDateTime KxGetFileLastModified(const AnsiString& FileName) {
  platform::FileTime Created, Accessed, Written;
  if (!platform::GetFileTimes(FileName, Created, Accessed, Written)) return 0.0;
  return LocalDosTime(Written);
}

void KxSetFileCreated(const AnsiString& FileName, TDateTime DT) {
  // DT is local time, as KxGetFileCreated answers it; the file keeps UTC.
  const TFileTime Local = KxDateTimeToFileTime(DT);
  const platform::FileTime Utc = platform::LocalFileTimeToUtc(
      (platform::FileTime(Local.dwHighDateTime) << 32) | Local.dwLowDateTime);
  if (!platform::SetFileCreationTime(FileName, Utc)) RaiseLastOSError();
}

TDateTime KxFileTimeToDateTime(const TFileTime& FileTime) {
  const int64_t Ticks = int64_t((uint64_t(FileTime.dwHighDateTime) << 32) | FileTime.dwLowDateTime);
  // Through whole milliseconds, as the system-time form holds them.
  const int64_t MSecs = (Ticks - DayZeroTicks) / 10000;
  return IncMilliSecond(0.0, MSecs);
}

TFileTime KxDateTimeToFileTime(TDateTime DT) {
  const TTimeStamp Stamp = DateTimeToTimeStamp(DT);
  const int64_t Days = int64_t(Stamp.Date) - DateDelta;
  const int64_t Ticks = DayZeroTicks + Days * TicksPerDay + int64_t(Stamp.Time) * 10000;
  TFileTime Result;
  Result.dwLowDateTime = uint32_t(uint64_t(Ticks));
  Result.dwHighDateTime = uint32_t(uint64_t(Ticks) >> 32);
  return Result;
}

AnsiString KxGetTempFilename(const AnsiString& Dir, const AnsiString& Prefix) {
  const AnsiString Name = platform::GetTempFileName(Dir.empty() ? AnsiString(".") : Dir, Prefix);
  if (Name.empty()) RaiseLastOSError();
  return Name;
}

AnsiString KxGetTempDirectory() {
  const AnsiString Path = platform::GetTempPath();
  if (Path.empty() || Path.size() > TempPathLimit) throw Exception(SKxTempDirUnknown);
  return Path;
}

AnsiString KxCreateTempDirectory() {
  const AnsiString Path = KxGetTempDirectory();
  uint16_t Hour, Min, Sec, MSec;
  DecodeTime(Now(), Hour, Min, Sec, MSec);
  const AnsiString Dir = platform::CreateTempDirectory(Path, SKxTempDirPrefix, MSec);
  if (Dir.empty()) throw Exception(SKxTempDirNotCreated);
  return Dir;
}

} // namespace kx
