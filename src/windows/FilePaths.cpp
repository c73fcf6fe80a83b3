// SPDX-License-Identifier: MIT
// Path text of uKxWindows.
#include <kx/rtl/Files.h>
#include <kx/rtl/SysUtils.h>
#include <kx/sysutils/SystemInfo.h>
#include <kx/windows/FilePaths.h>

#include "platform/Platform.h"

namespace kx {

namespace {

// GetShortPathName's buffer holds 260 characters, of which 259 are offered.
constexpr size_t ShortNameLimit = 259;
constexpr uint32_t ErrorInsufficientBuffer = 122;

bool IsSlash(AnsiChar C) {
  return C == PathDelim || C == '/';
}

bool SameDriveLetter(AnsiChar A, AnsiChar B) {
  return (A | 0x20) == (B | 0x20);
}

// Name as ExpandFileName resolves it when Folder (ending in a delimiter) is the working folder.
AnsiString ExpandFileNameIn(const AnsiString& Folder, const AnsiString& Name) {
  if (Name.empty()) return ExpandFileName(Name);
  const bool Drives = *DriveDelim != '\0';
  if (IsSlash(Name[0])) {
    // "\\server" and "//x" are absolute; a single delimiter is the root of the working drive.
    if (!Drives || (Name.size() > 1 && IsSlash(Name[1]))) return ExpandFileName(Name);
    return ExpandFileName(ExtractFileDrive(Folder) + Name);
  }
  if (Drives && Name.size() >= 2 && Name[1] == *DriveDelim) {
    if (Name.size() > 2 && IsSlash(Name[2])) return ExpandFileName(Name);
    // "D:x" is relative to D's own working folder, which only moves with a working folder on D.
    if (Folder.size() < 2 || Folder[1] != *DriveDelim || !SameDriveLetter(Folder[0], Name[0]))
      return ExpandFileName(Name);
    // A bare "D:" is the folder itself, without its trailing delimiter.
    if (Name.size() == 2) return ExpandFileName(Folder + ".");
    return ExpandFileName(Folder + Name.substr(2));
  }
  return ExpandFileName(Folder + Name);
}

} // namespace

AnsiString KxIncludeTrailingBackslash(const AnsiString& S) {
  AnsiString Result = Trim(S);
  if (!Result.empty() && Result.back() == '\\') return Result;
  if ((!Result.empty() && Result[0] == '\\') || Result.find(':') != AnsiString::npos)
    return Result + '\\';
  return Result + ":\\";
}

AnsiString KxCheckDirSlash(const AnsiString& S, bool Include) {
  if (Trim(S).empty()) return S;
  const bool Ends = S.back() == '\\';
  if (Include) return Ends ? S : S + '\\';
  return Ends ? S.substr(0, S.size() - 1) : S;
}

AnsiString KxCleanupFileName(const AnsiString& S, const TKxCharSet& Invalid) {
  static const TKxCharSet Never = TKxCharSet("\"*/:<>?\\|").Include('\0', '\x1F');
  AnsiString Result;
  Result.reserve(S.size());
  for (AnsiChar C : S)
    if (!Never.Contains(C) && !Invalid.Contains(C)) Result += C;
  return Result;
}

bool KxIsAliasedFilename(const AnsiString& S) {
  if (Trim(S).empty()) return false;
  if (S[0] == '.') return true;
  return S.find('\\') != AnsiString::npos && S.find(':') == AnsiString::npos;
}

AnsiString KxExpandFileName(const AnsiString& S) {
  const AnsiString Expanded = KxExpandEnvVarsAndStrings(S);
  const AnsiString Folder = ExtractFilePath(platform::ModuleFileName());
  // Without a known executable the working folder stays the reference, as a failed change of
  // folder would leave it.
  if (Folder.empty()) return ExpandFileName(Expanded);
  return ExpandFileNameIn(Folder, Expanded);
}

AnsiString KxGetShortFileName(const AnsiString& S) {
  const AnsiString Short = platform::GetShortPathName(S);
  if (Short.empty()) RaiseLastOSError();
  if (Short.size() > ShortNameLimit) RaiseLastOSError(ErrorInsufficientBuffer);
  return Short;
}

} // namespace kx
