// SPDX-License-Identifier: MIT
// Path text of uKxWindows: trailing backslashes, file-name clean-up and expansion.
#pragma once
// The backslash functions keep their Windows text rules on every platform; the others take
// native paths.

#include <kx/classes/TextParser.h>
#include <kx/rtl/Strings.h>

namespace kx {

// Trims S and makes it end in a backslash: appends "\" when S starts with a backslash or holds
// a ":", and ":\" otherwise, so that a bare letter (and any other relative name) becomes a
// drive root: "C" gives "C:\", "temp" gives "temp:\", "" gives ":\".
KX_API AnsiString KxIncludeTrailingBackslash(const AnsiString& S);
// For a non-blank S: Include appends a backslash unless S ends in one; otherwise one trailing
// backslash is removed. A blank S comes back as it is.
KX_API AnsiString KxCheckDirSlash(const AnsiString& S, bool Include);
// S without the control characters 0 to 31, without '"', '*', '/', ':', '<', '>', '?', '\',
// '|', and without the characters of Invalid; the rest keep their order.
KX_API AnsiString KxCleanupFileName(const AnsiString& S, const TKxCharSet& Invalid);
// Relative names: false for a blank S; true when S starts with "." or holds a backslash but no
// ":"; false otherwise.
KX_API bool KxIsAliasedFilename(const AnsiString& S);
// S with its environment references expanded (KxExpandEnvVarsAndStrings), made absolute as
// ExpandFileName would with the running executable's folder as the working folder. The process's
// working folder is neither read nor changed, so other threads resolving relative names are not
// disturbed. Absolute names keep their own root; on Windows "\x" takes the executable's drive and
// a drive-relative "D:x" is resolved in that drive's own working folder unless D is the
// executable's drive.
KX_API AnsiString KxExpandFileName(const AnsiString& S);
// The short (8.3) form of an existing path (GetShortPathName into 260 characters). Linux has
// no short names: the path comes back as it is. EOSError when the path does not exist or the
// short form needs more than 259 characters.
KX_API AnsiString KxGetShortFileName(const AnsiString& S);

} // namespace kx
