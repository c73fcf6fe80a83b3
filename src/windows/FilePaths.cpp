// SPDX-License-Identifier: MIT
// Path text of uKxWindows.
#include <kx/rtl/Files.h>
#include <kx/rtl/SysUtils.h>
#include <kx/windows/FilePaths.h>

#include "platform/Platform.h"

namespace kx {

namespace {

// GetShortPathName's buffer holds 260 characters, of which 259 are offered.
constexpr size_t ShortNameLimit = 259;
constexpr uint32_t ErrorInsufficientBuffer = 122;

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

AnsiString KxGetShortFileName(const AnsiString& S) {
  const AnsiString Short = platform::GetShortPathName(S);
  if (Short.empty()) RaiseLastOSError();
  if (Short.size() > ShortNameLimit) RaiseLastOSError(ErrorInsufficientBuffer);
  return Short;
}

} // namespace kx
