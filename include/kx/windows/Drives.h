// SPDX-License-Identifier: MIT
// Drives of uKxWindows: free space as text, the drives and what is known of each. Linux
// answers with its mounted file systems.
#pragma once

#include <kx/rtl/Object.h>
#include <kx/rtl/StringList.h>

#include <vector>

namespace kx {

enum TKxDriveType : uint8_t {
  driveUnknown,
  driveNoRoot,
  driveRemovable,
  driveFixed,
  driveRemote,
  driveCDROM,
  driveRamDisk
};

// A size in kilobytes as text with one decimal (the locale's separator) and its unit: the unit
// steps by 1024 while the rest is above 1024 ("1024.0 KB", "1.0 MB" for 1025, "1.5 MB" for
// 1536, then GB and TB). The divisor is 32-bit, as it always was: 1025 TB and more fail with
// EZeroDivide "Division by zero".
KX_API AnsiString KxGetDriveSpace(int64_t Size);

// Fills List with the drives' roots ("C:\"; Linux: the mount points that have blocks, with a
// trailing '/').
KX_API void KxGetDriveStrings(TStrings* List);

struct KX_API TKxDriveInfo {
  AnsiString Root;
  TKxDriveType DriveType = driveUnknown;
  // Linux: the mount source ("/dev/sda1", "tmpfs").
  AnsiString VolumeName;
  AnsiString FileSystem;
  // The serial number in hexadecimal, 8 digits (Linux: from the file-system id).
  AnsiString SerialNumber;
  uint32_t SectorsPerCluster = 0, BytesPerSector = 0;
  uint64_t FreeClusters = 0, TotalClusters = 0;
  // The free (for the caller) and total space in kilobytes.
  int64_t FreeKB() const;
  int64_t TotalKB() const;
};
// What the platform tells of the drive at Root; a root that is no drive keeps driveNoRoot and
// empty texts.
KX_API TKxDriveInfo KxGetDriveInfo(const AnsiString& Root);

// The drives of the machine, read on construction; the list owns its records.
class KX_API TKxDriveInfoList : public TObject {
  KX_CLASS(TKxDriveInfoList, TObject)
public:
  TKxDriveInfoList();
  int32_t Count() const { return int32_t(FItems.size()); }
  // The index of Root, compared ignoring case and a trailing delimiter; -1 when absent.
  int32_t IndexOf(const AnsiString& Root) const;
  void Delete(int32_t Index);
  // EListError for an index out of range.
  const TKxDriveInfo& GetDriveInfo(int32_t Index) const;
  // The finders compare ignoring case and answer null when no drive matches. Linux roots have
  // no letters.
  const TKxDriveInfo* FindDriveByLetter(AnsiChar Letter) const;
  const TKxDriveInfo* FindDriveByName(const AnsiString& VolumeName) const;
  const TKxDriveInfo* FindDriveBySerial(const AnsiString& Serial) const;

private:
  std::vector<TKxDriveInfo> FItems;
};

} // namespace kx
