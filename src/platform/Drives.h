// SPDX-License-Identifier: MIT
#pragma once
// Drives and mounted file systems, and the version resource of files.

#include "platform/Platform.h"

#include <vector>

namespace kx::platform {

// One drive: Windows' logical drives (GetDriveType, GetVolumeInformation, GetDiskFreeSpace);
// on POSIX one mounted file system of /proc/self/mounts that has blocks (statvfs): the mount
// point as the root, the type from the file-system type and /sys/block/*/removable, the mount
// source as the volume name, the file-system id as the serial number.
struct TDriveData {
  AnsiString Root;
  uint32_t DriveType = 0; // 0 unknown ... 6 RAM disk, as GetDriveType
  AnsiString VolumeName, FileSystem;
  uint32_t SerialNumber = 0;
  uint32_t SectorsPerCluster = 0, BytesPerSector = 0;
  uint64_t FreeClusters = 0, TotalClusters = 0;
};
// The roots of the drives (GetLogicalDriveStrings: "C:\"; POSIX: the mount points with a
// trailing '/').
bool DriveRoots(std::vector<AnsiString>& Roots);
// What can be found about one root; false when it is no drive or mount point.
bool DriveData(const AnsiString& Root, TDriveData& Data);

// The version resource of a file: the texts of the first translation's string table and the
// fixed block's file version. False when the file has none (always on POSIX, whose executables
// carry no such resource).
struct TVersionData {
  AnsiString FileDescription, FileVersion, ProductVersion, CompanyName, OriginalFilename;
  bool HasFixed = false;
  uint32_t FileVersionMS = 0, FileVersionLS = 0;
};
bool FileVersionData(const AnsiString& FileName, TVersionData& Data);

} // namespace kx::platform
