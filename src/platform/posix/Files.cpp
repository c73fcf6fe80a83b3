// SPDX-License-Identifier: MIT
// Files on POSIX: descriptors, with share modes as advisory flock locks.
#include "platform/Platform.h"
#include "platform/posix/Descriptors.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kx::platform {

namespace {

constexpr uint32_t AccessMask = 0x03;
constexpr uint32_t ShareMask = 0xF0;
constexpr uint32_t ShareCompat = 0x00;
constexpr uint32_t ShareExclusive = 0x10;
constexpr uint32_t ShareDenyWrite = 0x20;
constexpr uint32_t ShareDenyRead = 0x30;
constexpr uint32_t ShareDenyNone = 0x40;
// rw-rw-rw- less the umask, as files made by other programs.
constexpr mode_t CreateRights = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;

bool ValidShare(uint32_t Mode) {
  return (Mode & ShareMask) <= ShareDenyNone;
}

// The flock operation standing in for the share mode, 0 for none.
int LockFor(uint32_t Access, uint32_t Share) {
  switch (Share) {
  case ShareExclusive:
  case ShareDenyRead:
    return LOCK_EX;
  case ShareDenyWrite:
    // Readers that deny writing may share; a writer that does excludes everybody else.
    return Access == 0 ? LOCK_SH : LOCK_EX;
  case ShareCompat:
  case ShareDenyNone:
  default:
    return 0;
  }
}

bool Lock(int Fd, int Operation) {
  if (Operation == 0) return true;
  int Rc;
  while ((Rc = flock(Fd, Operation | LOCK_NB)) != 0 && errno == EINTR) {
  }
  return Rc == 0;
}

int OpenRetrying(const char* Name, int Flags, mode_t Rights) {
  int Fd;
  while ((Fd = open(Name, Flags | O_CLOEXEC, Rights)) < 0 && errno == EINTR) {
  }
  return Fd;
}

} // namespace

FileHandle FileOpen(const AnsiString& FileName, uint32_t Mode) {
  static constexpr int Flags[3] = {O_RDONLY, O_WRONLY, O_RDWR};
  uint32_t Access = Mode & AccessMask;
  if (Access > 2 || !ValidShare(Mode)) {
    errno = EINVAL;
    return InvalidFileHandle;
  }
  int Fd = OpenRetrying(FileName.c_str(), Flags[Access], 0);
  if (Fd < 0) return InvalidFileHandle;
  struct stat St {};
  if (fstat(Fd, &St) != 0) {
    CloseKeepingError(Fd);
    return InvalidFileHandle;
  }
  // Windows refuses to open a directory as a file; so do we.
  if (S_ISDIR(St.st_mode)) {
    close(Fd);
    errno = EISDIR;
    return InvalidFileHandle;
  }
  if (!Lock(Fd, LockFor(Access, Mode & ShareMask))) {
    CloseKeepingError(Fd);
    return InvalidFileHandle;
  }
  return Fd;
}

FileHandle FileCreate(const AnsiString& FileName, uint32_t Mode) {
  if (!ValidShare(Mode)) {
    errno = EINVAL;
    return InvalidFileHandle;
  }
  // Truncate only once the lock is ours, so a refused create leaves the file as it was.
  int Fd = OpenRetrying(FileName.c_str(), O_RDWR | O_CREAT, CreateRights);
  if (Fd < 0) return InvalidFileHandle;
  if (!Lock(Fd, LockFor(2, Mode & ShareMask)) || ftruncate(Fd, 0) != 0) {
    CloseKeepingError(Fd);
    return InvalidFileHandle;
  }
  return Fd;
}

int32_t FileRead(FileHandle File, void* Buffer, int32_t Count) {
  if (Count < 0) {
    errno = EINVAL;
    return -1;
  }
  ssize_t N;
  while ((N = read(int(File), Buffer, size_t(Count))) < 0 && errno == EINTR) {
  }
  return N < 0 ? -1 : int32_t(N);
}

int32_t FileWrite(FileHandle File, const void* Buffer, int32_t Count) {
  if (Count < 0) {
    errno = EINVAL;
    return -1;
  }
  // write() may stop short (signals, pipes); WriteFile on a file writes everything.
  const char* P = static_cast<const char*>(Buffer);
  int32_t Done = 0;
  while (Done < Count) {
    ssize_t N = write(int(File), P + Done, size_t(Count - Done));
    if (N < 0) {
      if (errno == EINTR) continue;
      return Done > 0 ? Done : -1;
    }
    if (N == 0) break;
    Done += int32_t(N);
  }
  return Done;
}

int64_t FileSeek(FileHandle File, int64_t Offset, int32_t Origin) {
  static constexpr int Whence[3] = {SEEK_SET, SEEK_CUR, SEEK_END};
  if (Origin < 0 || Origin > 2) {
    errno = EINVAL;
    return -1;
  }
  off_t R = lseek(int(File), off_t(Offset), Whence[Origin]);
  return R < 0 ? -1 : int64_t(R);
}

int64_t FileSize(FileHandle File) {
  struct stat St {};
  if (fstat(int(File), &St) != 0) return -1;
  return int64_t(St.st_size);
}

bool FileSetEnd(FileHandle File) {
  off_t Pos = lseek(int(File), 0, SEEK_CUR);
  if (Pos < 0) return false;
  int Rc;
  while ((Rc = ftruncate(int(File), Pos)) != 0 && errno == EINTR) {
  }
  return Rc == 0;
}

void FileClose(FileHandle File) {
  if (File >= 0) close(int(File));
}

} // namespace kx::platform
