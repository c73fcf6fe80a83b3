// SPDX-License-Identifier: MIT
// Mounted file systems as drives on POSIX.
#include "platform/Drives.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

namespace kx::platform {

namespace {

struct TMount {
  AnsiString Source, Target, Type;
};

// /proc/self/mounts writes blanks and backslashes in names as octal escapes.
AnsiString Unescape(const std::string& S) {
  AnsiString R;
  for (size_t I = 0; I < S.size(); ++I) {
    if (S[I] == '\\' && I + 3 < S.size() && S[I + 1] >= '0' && S[I + 1] <= '3' && S[I + 2] >= '0' &&
        S[I + 2] <= '7' && S[I + 3] >= '0' && S[I + 3] <= '7') {
      R += char((S[I + 1] - '0') * 64 + (S[I + 2] - '0') * 8 + (S[I + 3] - '0'));
      I += 3;
    } else {
      R += S[I];
    }
  }
  return R;
}

std::vector<TMount> Mounts() {
  std::vector<TMount> Result;
  std::ifstream F("/proc/self/mounts");
  std::string Line;
  while (std::getline(F, Line)) {
    std::istringstream L(Line);
    std::string Source, Target, Type;
    if (L >> Source >> Target >> Type) Result.push_back({Unescape(Source), Unescape(Target), Type});
  }
  return Result;
}

bool HasBlocks(const AnsiString& Path, struct statvfs& Vfs) {
  return statvfs(Path.c_str(), &Vfs) == 0 && Vfs.f_blocks > 0;
}

AnsiString WithSlash(const AnsiString& P) {
  return (!P.empty() && P.back() == '/') ? P : P + "/";
}

// The whole disk a block device belongs to, for its removable flag.
bool IsRemovable(const AnsiString& Source) {
  struct stat St {};
  if (Source.rfind("/dev/", 0) != 0 || stat(Source.c_str(), &St) != 0 || !S_ISBLK(St.st_mode))
    return false;
  char Link[64];
  std::snprintf(Link, sizeof Link, "/sys/dev/block/%u:%u", major(St.st_rdev), minor(St.st_rdev));
  for (const char* Tail : {"/removable", "/../removable"}) {
    std::ifstream R(std::string(Link) + Tail);
    int V = 0;
    if (R >> V) return V == 1;
  }
  return false;
}

uint32_t DriveTypeOf(const TMount& M) {
  static const char* const Remote[] = {"nfs",        "nfs4", "cifs", "smb3", "smbfs",    "sshfs",
                                       "fuse.sshfs", "9p",   "afs",  "ceph", "glusterfs"};
  for (const char* T : Remote)
    if (M.Type == T) return 4;
  if (M.Type == "iso9660" || M.Type == "udf") return 5;
  if (M.Type == "tmpfs" || M.Type == "ramfs") return 6;
  if (IsRemovable(M.Source)) return 2;
  if (M.Source.rfind("/dev/", 0) == 0) return 3;
  return 0;
}

} // namespace

bool DriveRoots(std::vector<AnsiString>& Roots) {
  Roots.clear();
  for (const TMount& M : Mounts()) {
    struct statvfs Vfs {};
    const AnsiString Root = WithSlash(M.Target);
    bool Seen = false;
    for (const AnsiString& R : Roots) Seen = Seen || R == Root;
    if (!Seen && HasBlocks(M.Target, Vfs)) Roots.push_back(Root);
  }
  return true;
}

bool DriveData(const AnsiString& Root, TDriveData& Data) {
  Data = TDriveData();
  AnsiString Target = Root;
  while (Target.size() > 1 && Target.back() == '/') Target.pop_back();
  // The last mount on a point is the one in view.
  const TMount* Found = nullptr;
  const std::vector<TMount> All = Mounts();
  for (const TMount& M : All)
    if (M.Target == Target) Found = &M;
  struct statvfs Vfs {};
  if (!Found || statvfs(Target.c_str(), &Vfs) != 0) {
    if (!Found) errno = ENOENT;
    return false;
  }
  Data.Root = WithSlash(Target);
  Data.DriveType = DriveTypeOf(*Found);
  Data.VolumeName = Found->Source;
  Data.FileSystem = Found->Type;
  Data.SerialNumber = uint32_t(Vfs.f_fsid ^ (uint64_t(Vfs.f_fsid) >> 32));
  // A cluster is one fragment; its size fits in the sector field.
  Data.SectorsPerCluster = 1;
  Data.BytesPerSector = uint32_t(Vfs.f_frsize ? Vfs.f_frsize : Vfs.f_bsize);
  Data.FreeClusters = Vfs.f_bavail;
  Data.TotalClusters = Vfs.f_blocks;
  return true;
}

bool FileVersionData(const AnsiString& FileName, TVersionData& Data) {
  Data = TVersionData();
  struct stat St {};
  if (stat(FileName.c_str(), &St) != 0) return false;
  errno = ENODATA;
  return false;
}

} // namespace kx::platform
