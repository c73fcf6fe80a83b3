// SPDX-License-Identifier: MIT
// The file system on POSIX: attributes, searches, folders, times, temporary names.
#include "platform/Platform.h"
#include "platform/posix/Descriptors.h"

#include <kx/rtl/Files.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <memory>
#include <string_view>
#include <vector>

namespace kx::platform {

namespace {

// Where a creation time that was set is kept, as "<seconds>.<nanoseconds>" since 1970 UTC.
constexpr const char* CreatedAttribute = "user.kx.created";
// 1601-01-01 to 1970-01-01 in seconds, and file-time units per second.
constexpr int64_t EpochDelta = 11644473600LL;
constexpr int64_t TicksPerSecond = 10000000LL;
// Permissions of folders made here, less the umask.
constexpr mode_t FolderRights = S_IRWXU | S_IRWXG | S_IRWXO;
// The three characters of a temporary name's prefix that Windows keeps too.
constexpr size_t TempPrefixLength = 3;
constexpr std::string_view TempSuffix = ".tmp";
// The first year of the DOS date form.
constexpr int DosFirstYear = 1980;
// The block a file is copied in when a folder moves to another file system.
constexpr size_t CopyBlockSize = 1 << 16;

FileTime ToFileTime(int64_t Seconds, int64_t Nanoseconds) {
  return FileTime((Seconds + EpochDelta) * TicksPerSecond + Nanoseconds / 100);
}

timespec FromFileTime(FileTime Time) {
  const int64_t Ticks = int64_t(Time);
  int64_t Seconds = Ticks / TicksPerSecond - EpochDelta;
  int64_t Rest = Ticks % TicksPerSecond;
  timespec Ts{};
  Ts.tv_sec = time_t(Seconds);
  Ts.tv_nsec = long(Rest * 100);
  return Ts;
}

FileTime ToFileTime(const statx_timestamp& T) {
  return ToFileTime(T.tv_sec, T.tv_nsec);
}

std::string_view LastPart(std::string_view Name) {
  while (Name.size() > 1 && Name.back() == '/') Name.remove_suffix(1);
  const size_t Slash = Name.rfind('/');
  return Slash == std::string_view::npos ? Name : Name.substr(Slash + 1);
}

bool IsHiddenName(std::string_view Name) {
  return Name.size() > 0 && Name[0] == '.' && Name != "." && Name != "..";
}

uint32_t AttributesOf(mode_t Mode, bool Link, bool HasTarget, std::string_view Name) {
  uint32_t Attr = 0;
  if (HasTarget) {
    if (S_ISDIR(Mode))
      Attr |= FILE_ATTRIBUTE_DIRECTORY_;
    else if (!S_ISREG(Mode))
      Attr |= FILE_ATTRIBUTE_SYSTEM_;
    if ((Mode & S_IWUSR) == 0) Attr |= FILE_ATTRIBUTE_READONLY_;
  }
  if (Link) Attr |= FILE_ATTRIBUTE_REPARSE_POINT_;
  if (IsHiddenName(LastPart(Name))) Attr |= FILE_ATTRIBUTE_HIDDEN_;
  return Attr == 0 ? FILE_ATTRIBUTE_NORMAL_ : Attr;
}

int StatxRetrying(const char* Name, int Flags, struct statx& St) {
  int Rc;
  while ((Rc = statx(AT_FDCWD, Name, Flags, STATX_BASIC_STATS | STATX_BTIME, &St)) != 0 &&
         errno == EINTR) {
  }
  return Rc;
}

bool ParseCreated(const char* Text, FileTime& Time) {
  char* End = nullptr;
  errno = 0;
  const long long Seconds = std::strtoll(Text, &End, 10);
  if (errno != 0 || End == Text || *End != '.') return false;
  const char* Frac = End + 1;
  const long long Nanos = std::strtoll(Frac, &End, 10);
  if (errno != 0 || End == Frac || *End != '\0' || Nanos < 0 || Nanos > 999999999) return false;
  if (Seconds < -EpochDelta || Seconds > INT64_MAX / TicksPerSecond - EpochDelta) return false;
  Time = ToFileTime(Seconds, Nanos);
  return true;
}

// The creation time: one that was set, else the birth time, else the modification time.
FileTime CreationOf(const char* Name, const struct statx& St) {
  char Text[64];
  const ssize_t Len = getxattr(Name, CreatedAttribute, Text, sizeof Text - 1);
  if (Len > 0) {
    Text[Len] = '\0';
    FileTime Set;
    if (ParseCreated(Text, Set)) return Set;
  }
  // Where user attributes cannot be kept, setting a creation time moves the modification
  // time, so that is what must be read back.
  const bool NoAttributes = Len < 0 && (errno == ENOTSUP || errno == EOPNOTSUPP);
  if (!NoAttributes && (St.stx_mask & STATX_BTIME)) return ToFileTime(St.stx_btime);
  return ToFileTime(St.stx_mtime);
}

bool FillData(const char* Name, std::string_view EntryName, TFindData& Data) {
  struct statx Link {};
  if (StatxRetrying(Name, AT_SYMLINK_NOFOLLOW, Link) != 0) return false;
  const bool IsLink = S_ISLNK(Link.stx_mode);
  struct statx Target {};
  const bool HasTarget = !IsLink || StatxRetrying(Name, 0, Target) == 0;
  const struct statx& St = IsLink && HasTarget ? Target : Link;
  Data.Attributes = AttributesOf(St.stx_mode, IsLink, HasTarget, EntryName);
  Data.CreationTime = CreationOf(Name, St);
  Data.LastAccessTime = ToFileTime(St.stx_atime);
  Data.LastWriteTime = ToFileTime(St.stx_mtime);
  Data.Size = S_ISDIR(St.stx_mode) ? 0 : uint64_t(St.stx_size);
  Data.Name = AnsiString(EntryName);
  return true;
}

// Windows wildcards: '*' any run of characters, '?' one character.
bool Matches(std::string_view Name, std::string_view Mask) {
  size_t N = 0, M = 0, StarM = std::string_view::npos, StarN = 0;
  while (N < Name.size()) {
    if (M < Mask.size() && (Mask[M] == '?' || Mask[M] == Name[N])) {
      ++N, ++M;
    } else if (M < Mask.size() && Mask[M] == '*') {
      StarM = M++;
      StarN = N;
    } else if (StarM != std::string_view::npos) {
      M = StarM + 1;
      N = ++StarN;
    } else {
      return false;
    }
  }
  while (M < Mask.size() && Mask[M] == '*') ++M;
  return M == Mask.size();
}

// As Windows does, a mask ending in ".*" also takes names without that extension, so "*.*"
// lists everything.
bool MatchesMask(std::string_view Name, std::string_view Mask) {
  if (Matches(Name, Mask)) return true;
  return Mask.size() >= 2 && Mask.substr(Mask.size() - 2) == ".*" &&
         Matches(Name, Mask.substr(0, Mask.size() - 2));
}

struct TFind {
  DIR* Dir = nullptr;
  AnsiString Folder; // with a trailing '/', empty for the current folder
  AnsiString Mask;
};

// The next entry matching the mask; false (error 2) at the end.
bool NextMatch(TFind& Find, TFindData& Data) {
  for (;;) {
    errno = 0;
    const dirent* Entry = readdir(Find.Dir);
    if (!Entry) {
      if (errno == 0) errno = ENOENT;
      return false;
    }
    const std::string_view Name(Entry->d_name);
    if (!MatchesMask(Name, Find.Mask)) continue;
    const AnsiString Path = Find.Folder + AnsiString(Name);
    // An entry removed since it was listed is passed over.
    if (FillData(Path.c_str(), Name, Data)) return true;
  }
}

int OpenDirAt(int Parent, const char* Name) {
  int Fd;
  while ((Fd = openat(Parent, Name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)) < 0 &&
         errno == EINTR) {
  }
  return Fd;
}

struct TDirCloser {
  void operator()(DIR* D) const { closedir(D); }
};
using TDirPtr = std::unique_ptr<DIR, TDirCloser>;

// The entry names of an open folder, without "." and "..".
bool ListEntries(int Fd, std::vector<AnsiString>& Names, TDirPtr& Dir) {
  Dir.reset(fdopendir(Fd));
  if (!Dir) {
    CloseKeepingError(Fd);
    return false;
  }
  for (;;) {
    errno = 0;
    const dirent* Entry = readdir(Dir.get());
    if (!Entry) return errno == 0;
    const std::string_view Name(Entry->d_name);
    if (Name != "." && Name != "..") Names.emplace_back(Name);
  }
}

// Removes Name under Parent: a folder with everything in it, anything else (links included)
// as one entry. Folders are opened without following links, so nothing outside is reached.
bool RemoveAt(int Parent, const char* Name) {
  const int Fd = OpenDirAt(Parent, Name);
  if (Fd < 0) {
    if (errno != ENOTDIR && errno != ELOOP) return false;
    return unlinkat(Parent, Name, 0) == 0;
  }
  std::vector<AnsiString> Names;
  TDirPtr Dir;
  if (!ListEntries(Fd, Names, Dir)) return false;
  for (const AnsiString& Entry : Names)
    if (!RemoveAt(dirfd(Dir.get()), Entry.c_str())) return false;
  Dir.reset();
  return unlinkat(Parent, Name, AT_REMOVEDIR) == 0;
}

bool CopyFileAt(int FromDir, const char* FromName, int ToDir, const char* ToName,
                const struct stat& St, bool& Made) {
  int In = openat(FromDir, FromName, O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  if (In < 0) return false;
  int Out = openat(ToDir, ToName, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, St.st_mode & 07777);
  if (Out < 0) {
    CloseKeepingError(In);
    return false;
  }
  Made = true;
  std::vector<char> Buffer(CopyBlockSize);
  bool Ok = true;
  while (Ok) {
    const ssize_t N = read(In, Buffer.data(), Buffer.size());
    if (N < 0 && errno == EINTR) continue;
    if (N <= 0) {
      Ok = N == 0;
      break;
    }
    for (ssize_t Done = 0; Ok && Done < N;) {
      const ssize_t W = write(Out, Buffer.data() + Done, size_t(N - Done));
      if (W < 0 && errno == EINTR) continue;
      if (W <= 0)
        Ok = false;
      else
        Done += W;
    }
  }
  const timespec Times[2] = {St.st_atim, St.st_mtim};
  if (Ok) Ok = futimens(Out, Times) == 0;
  CloseKeepingError(In);
  if (close(Out) != 0) Ok = false;
  return Ok;
}

// Copies FromName under FromDir to ToName under ToDir: folders with their content, links as
// links, files byte for byte with their permissions and times. Made tells whether ToName was
// created, so that a failed copy removes only what it made.
bool CopyAt(int FromDir, const char* FromName, int ToDir, const char* ToName, bool& Made) {
  Made = false;
  struct stat St {};
  if (fstatat(FromDir, FromName, &St, AT_SYMLINK_NOFOLLOW) != 0) return false;
  if (S_ISLNK(St.st_mode)) {
    std::vector<char> Target(size_t(St.st_size > 0 ? St.st_size : 255) + 1);
    const ssize_t Len = readlinkat(FromDir, FromName, Target.data(), Target.size() - 1);
    if (Len < 0) return false;
    Target[size_t(Len)] = '\0';
    Made = symlinkat(Target.data(), ToDir, ToName) == 0;
    return Made;
  }
  if (S_ISREG(St.st_mode)) return CopyFileAt(FromDir, FromName, ToDir, ToName, St, Made);
  if (!S_ISDIR(St.st_mode)) {
    errno = ENOTSUP; // devices, pipes and sockets are not moved
    return false;
  }
  if (mkdirat(ToDir, ToName, S_IRWXU) != 0) return false;
  Made = true;
  const int From = OpenDirAt(FromDir, FromName);
  if (From < 0) return false;
  const int To = OpenDirAt(ToDir, ToName);
  if (To < 0) {
    CloseKeepingError(From);
    return false;
  }
  std::vector<AnsiString> Names;
  TDirPtr Dir;
  bool Ok = ListEntries(From, Names, Dir);
  for (size_t I = 0; Ok && I < Names.size(); ++I) {
    bool Inner = false;
    Ok = CopyAt(dirfd(Dir.get()), Names[I].c_str(), To, Names[I].c_str(), Inner);
  }
  // The permissions last, so that a folder without write permission could be filled.
  if (Ok) Ok = fchmod(To, St.st_mode & 07777) == 0;
  CloseKeepingError(To);
  return Ok;
}

// Opens the folder that holds Name and sets Last to Name's last part.
int OpenParent(AnsiString Name, AnsiString& Last) {
  while (Name.size() > 1 && Name.back() == '/') Name.pop_back();
  const size_t Slash = Name.find_last_of('/');
  const AnsiString Parent = Slash == AnsiString::npos ? AnsiString(".")
                            : Slash == 0              ? AnsiString("/")
                                                      : Name.substr(0, Slash);
  Last = Slash == AnsiString::npos ? Name : Name.substr(Slash + 1);
  return open(Parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

bool RenameNoReplace(const char* OldName, const char* NewName) {
  if (renameat2(AT_FDCWD, OldName, AT_FDCWD, NewName, RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // File systems without the no-replace flag: look first.
  struct stat St {};
  if (lstat(NewName, &St) == 0) {
    errno = EEXIST;
    return false;
  }
  return rename(OldName, NewName) == 0;
}

bool Conflicting(int Fd) {
  if (flock(Fd, LOCK_EX | LOCK_NB) != 0) return true;
  struct flock Probe {};
  Probe.l_type = F_WRLCK;
  Probe.l_whence = SEEK_SET;
  Probe.l_start = 0;
  Probe.l_len = 0;
  if (fcntl(Fd, F_OFD_GETLK, &Probe) == 0 && Probe.l_type != F_UNLCK) return true;
  Probe = {};
  Probe.l_type = F_WRLCK;
  Probe.l_whence = SEEK_SET;
  // Classic record locks of other processes; our own would not show, and we hold none.
  return fcntl(Fd, F_GETLK, &Probe) == 0 && Probe.l_type != F_UNLCK;
}

int64_t UtcOffsetNow() {
  const time_t Now = time(nullptr);
  tm Local{};
  if (!localtime_r(&Now, &Local)) return 0;
  return int64_t(Local.tm_gmtoff);
}

} // namespace

uint32_t GetFileAttributes(const AnsiString& Name) {
  TFindData Data;
  if (Name.empty()) {
    errno = ENOENT;
    return INVALID_FILE_ATTRIBUTES_;
  }
  if (!FillData(Name.c_str(), LastPart(Name), Data)) return INVALID_FILE_ATTRIBUTES_;
  return Data.Attributes;
}

bool SetFileAttributes(const AnsiString& Name, uint32_t Attributes) {
  struct stat St {};
  if (stat(Name.c_str(), &St) != 0) return false;
  mode_t Mode = St.st_mode & 07777;
  if (Attributes & FILE_ATTRIBUTE_READONLY_)
    Mode &= mode_t(~(S_IWUSR | S_IWGRP | S_IWOTH));
  else
    Mode |= S_IWUSR;
  return Mode == (St.st_mode & 07777) || chmod(Name.c_str(), Mode) == 0;
}

bool GetFileData(const AnsiString& Name, TFindData& Data) {
  if (Name.empty()) {
    errno = ENOENT;
    return false;
  }
  return FillData(Name.c_str(), LastPart(Name), Data);
}

FindHandle FindFirstFile(const AnsiString& Pattern, TFindData& Data) {
  auto Find = std::make_unique<TFind>();
  const size_t Slash = Pattern.find_last_of('/');
  AnsiString OpenName = ".";
  if (Slash != AnsiString::npos) {
    Find->Folder = Pattern.substr(0, Slash + 1);
    OpenName = Find->Folder;
  }
  Find->Mask = Slash == AnsiString::npos ? Pattern : Pattern.substr(Slash + 1);
  if (Find->Mask.empty()) {
    errno = ENOENT;
    return nullptr;
  }
  Find->Dir = opendir(OpenName.c_str());
  if (!Find->Dir) return nullptr;
  if (!NextMatch(*Find, Data)) {
    const int Saved = errno;
    closedir(Find->Dir);
    errno = Saved;
    return nullptr;
  }
  return Find.release();
}

bool FindNextFile(FindHandle Find, TFindData& Data) {
  return Find && NextMatch(*static_cast<TFind*>(Find), Data);
}

void FindClose(FindHandle Find) {
  if (!Find) return;
  auto* F = static_cast<TFind*>(Find);
  closedir(F->Dir);
  delete F;
}

bool CreateDirectory(const AnsiString& Name) {
  return mkdir(Name.c_str(), FolderRights) == 0;
}

bool RemoveDirectory(const AnsiString& Name) {
  struct stat St {};
  if (lstat(Name.c_str(), &St) != 0) return false;
  if (S_ISLNK(St.st_mode)) {
    struct stat Target {};
    if (stat(Name.c_str(), &Target) != 0 || !S_ISDIR(Target.st_mode)) {
      errno = ENOTDIR;
      return false;
    }
    return unlink(Name.c_str()) == 0;
  }
  return rmdir(Name.c_str()) == 0;
}

bool DeleteFile(const AnsiString& Name) {
  struct stat St {};
  if (lstat(Name.c_str(), &St) != 0) return false;
  if (S_ISDIR(St.st_mode)) {
    errno = EISDIR;
    return false;
  }
  return unlink(Name.c_str()) == 0;
}

bool MoveFile(const AnsiString& OldName, const AnsiString& NewName) {
  return RenameNoReplace(OldName.c_str(), NewName.c_str());
}

bool RemoveTree(const AnsiString& Dir) {
  if (Dir.empty()) {
    errno = ENOENT;
    return false;
  }
  return RemoveAt(AT_FDCWD, Dir.c_str());
}

bool RenameTree(const AnsiString& OldName, const AnsiString& NewName) {
  if (RenameNoReplace(OldName.c_str(), NewName.c_str())) return true;
  if (errno != EXDEV) return false;
  // Another file system: copy everything over, then remove the original.
  AnsiString FromLast, ToLast;
  const int FromParent = OpenParent(OldName, FromLast);
  if (FromParent < 0) return false;
  const int ToParent = OpenParent(NewName, ToLast);
  if (ToParent < 0) {
    CloseKeepingError(FromParent);
    return false;
  }
  bool Made = false;
  bool Ok = CopyAt(FromParent, FromLast.c_str(), ToParent, ToLast.c_str(), Made);
  if (Ok) {
    Ok = RemoveAt(FromParent, FromLast.c_str());
  } else if (Made) {
    const int Saved = errno;
    RemoveAt(ToParent, ToLast.c_str());
    errno = Saved;
  }
  CloseKeepingError(FromParent);
  CloseKeepingError(ToParent);
  return Ok;
}

AnsiString GetCurrentDirectory() {
  std::vector<char> Buffer(256);
  for (;;) {
    if (getcwd(Buffer.data(), Buffer.size())) return AnsiString(Buffer.data());
    if (errno != ERANGE) return AnsiString();
    Buffer.resize(Buffer.size() * 2);
  }
}

bool SetCurrentDirectory(const AnsiString& Dir) {
  return chdir(Dir.c_str()) == 0;
}

AnsiString GetFullPathName(const AnsiString& Name) {
  if (Name.empty()) {
    errno = ENOENT;
    return AnsiString();
  }
  AnsiString Full = Name;
  if (Name[0] != '/') {
    const AnsiString Cwd = GetCurrentDirectory();
    if (Cwd.empty()) return AnsiString();
    Full = Cwd + "/" + Name;
  }
  std::vector<std::string_view> Parts;
  std::string_view Rest(Full);
  while (!Rest.empty()) {
    const size_t Slash = Rest.find('/');
    const std::string_view Part = Rest.substr(0, Slash);
    Rest = Slash == std::string_view::npos ? std::string_view() : Rest.substr(Slash + 1);
    if (Part.empty() || Part == ".") continue;
    if (Part == "..") {
      if (!Parts.empty()) Parts.pop_back();
      continue;
    }
    Parts.push_back(Part);
  }
  AnsiString Result;
  for (std::string_view Part : Parts) (Result += '/') += Part;
  // A name that ends in a delimiter, or in a "." or ".." part, names a folder: it keeps its
  // trailing delimiter, as GetFullPathName keeps it.
  const std::string_view Last = LastPart(Name);
  const bool Folder = Name.back() == '/' || Last == "." || Last == "..";
  if (Result.empty() || Folder) Result += '/';
  return Result;
}

AnsiString GetShortPathName(const AnsiString& Name) {
  struct stat St {};
  if (Name.empty() || lstat(Name.c_str(), &St) != 0) {
    if (Name.empty()) errno = ENOENT;
    return AnsiString();
  }
  return Name;
}

AnsiString ModuleFileName() {
  std::vector<char> Buffer(256);
  for (;;) {
    const ssize_t Len = readlink("/proc/self/exe", Buffer.data(), Buffer.size());
    if (Len < 0) return AnsiString();
    if (size_t(Len) < Buffer.size()) return AnsiString(Buffer.data(), size_t(Len));
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

bool SetFileCreationTime(const AnsiString& Name, FileTime Creation) {
  const timespec Ts = FromFileTime(Creation);
  char Text[64];
  const int Len =
      std::snprintf(Text, sizeof Text, "%lld.%09ld", static_cast<long long>(Ts.tv_sec), Ts.tv_nsec);
  if (setxattr(Name.c_str(), CreatedAttribute, Text, size_t(Len), 0) == 0) return true;
  if (errno != ENOTSUP && errno != EOPNOTSUPP) return false;
  return SetFileLastWriteTime(Name, Creation);
}

bool SetFileLastWriteTime(const AnsiString& Name, FileTime LastWrite) {
  const timespec Times[2] = {{0, UTIME_OMIT}, FromFileTime(LastWrite)};
  return utimensat(AT_FDCWD, Name.c_str(), Times, 0) == 0;
}

bool GetFileHandleLastWriteTime(FileHandle File, FileTime& LastWrite) {
  struct stat St {};
  if (fstat(int(File), &St) != 0) return false;
  LastWrite = ToFileTime(St.st_mtim.tv_sec, St.st_mtim.tv_nsec);
  return true;
}

FileTime FileTimeToLocal(FileTime Utc) {
  return FileTime(int64_t(Utc) + UtcOffsetNow() * TicksPerSecond);
}

FileTime LocalFileTimeToUtc(FileTime Local) {
  return FileTime(int64_t(Local) - UtcOffsetNow() * TicksPerSecond);
}

bool FileTimeToDosDateTime(FileTime Time, uint16_t& DosDate, uint16_t& DosTime) {
  const time_t Seconds = time_t(int64_t(Time / TicksPerSecond) - EpochDelta);
  tm T{};
  if (!gmtime_r(&Seconds, &T) || T.tm_year < DosFirstYear - 1900 ||
      T.tm_year > DosFirstYear - 1900 + 127)
    return false;
  DosDate = uint16_t(((T.tm_year + 1900 - DosFirstYear) << 9) | ((T.tm_mon + 1) << 5) | T.tm_mday);
  DosTime = uint16_t((T.tm_hour << 11) | (T.tm_min << 5) | (T.tm_sec / 2));
  return true;
}

bool DosDateTimeToFileTime(uint16_t DosDate, uint16_t DosTime, FileTime& Time) {
  tm T{};
  T.tm_year = (DosDate >> 9) + DosFirstYear - 1900;
  T.tm_mon = ((DosDate >> 5) & 15) - 1;
  T.tm_mday = DosDate & 31;
  T.tm_hour = DosTime >> 11;
  T.tm_min = (DosTime >> 5) & 63;
  T.tm_sec = (DosTime & 31) * 2;
  const tm Given = T;
  const time_t Seconds = timegm(&T);
  // timegm carries an impossible field into the next; Windows refuses it instead.
  if (T.tm_year != Given.tm_year || T.tm_mon != Given.tm_mon || T.tm_mday != Given.tm_mday ||
      T.tm_hour != Given.tm_hour || T.tm_min != Given.tm_min || T.tm_sec != Given.tm_sec) {
    errno = EINVAL;
    return false;
  }
  Time = ToFileTime(int64_t(Seconds), 0);
  return true;
}

bool FileIsInUse(const AnsiString& Name) {
  int Fd;
  while ((Fd = open(Name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) < 0 &&
         errno == EINTR) {
  }
  if (Fd < 0) return true;
  const bool InUse = Conflicting(Fd);
  close(Fd);
  return InUse;
}

AnsiString GetTempPath() {
  const char* Dir = std::getenv("TMPDIR");
  AnsiString Path = Dir && *Dir ? Dir : "/tmp";
  if (Path.back() != '/') Path += '/';
  return Path;
}

AnsiString GetTempFileName(const AnsiString& Dir, const AnsiString& Prefix) {
  AnsiString Template = Dir;
  if (!Template.empty() && Template.back() != '/') Template += '/';
  Template += Prefix.substr(0, TempPrefixLength);
  Template += "XXXXXX";
  Template += TempSuffix;
  const int Fd = mkstemps(Template.data(), int(TempSuffix.size()));
  if (Fd < 0) return AnsiString();
  close(Fd);
  return Template;
}

AnsiString CreateTempDirectory(const AnsiString& TempPath, const AnsiString& Prefix,
                               uint32_t /*Start: mkdtemp picks its own*/) {
  AnsiString Template = TempPath + Prefix + "XXXXXX";
  if (!mkdtemp(Template.data())) return AnsiString();
  return Template;
}

bool FindModuleResource(void*, const AnsiString&, const AnsiString&, const void*& Data,
                        uint32_t& Size) {
  Data = nullptr;
  Size = 0;
  errno = ENOENT;
  return false;
}

} // namespace kx::platform

namespace kx {
// Declared with the runtime's file functions; their values are the platform's.
const AnsiChar PathDelim = '/';
const char* const DriveDelim = "";
const AnsiChar PathSep = ':';
} // namespace kx
