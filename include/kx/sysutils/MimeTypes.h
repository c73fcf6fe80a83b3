// SPDX-License-Identifier: MIT
// uKxSysUtils' MIME type of a file by its name: the system's tables first, then the built-in
// table of 385 extensions, then a type made from the extension.
#pragma once

#include <kx/rtl/Strings.h>

namespace kx {

// The MIME type for FileName's extension (lowered a-z only), from the first source that knows
// it:
// 1. Windows: HKEY_CLASSES_ROOT\<ext> "Content Type". Linux: the mime.types file (a setting,
//    /etc/mime.types by default).
// 2. Windows: the first subkey of HKEY_CLASSES_ROOT\MIME\Database\Content Type whose
//    "Extension" equals the extension (AnsiSameText; subkeys without one never match). Linux:
//    shared-mime-info's mime/globs2 under $XDG_DATA_HOME (~/.local/share), then under each
//    folder of $XDG_DATA_DIRS (/usr/local/share:/usr/share), the heaviest "*<ext>" pattern of
//    the first file that has one.
// 3. The built-in table, first row first (SameText); rows repeated later never win.
// 4. "application/" + the extension without its dot: '.foo' gives 'application/foo', a name
//    without an extension "application/".
// Sources that cannot be read are skipped; nothing is raised.
KX_API AnsiString KxGetFileMimeType(const AnsiString& FileName);
// The mime.types file of step 1 on Linux; an empty name restores /etc/mime.types.
KX_API void KxSetMimeTypesFile(const AnsiString& FileName);
// The two Linux sources over their text, for an extension with its dot as it stands in the
// file name; empty when the text names none. mime.types: "type ext ext ..." lines, the first
// line listing the extension wins (SameText). globs2: "weight:type:*<ext>[:flags]" lines, the
// heaviest pattern wins, the first of equal weight; "cs" in the flags compares with case.
KX_API AnsiString KxMimeTypeFromMimeTypesText(const AnsiString& Text, const AnsiString& Ext);
KX_API AnsiString KxMimeTypeFromGlobs2Text(const AnsiString& Text, const AnsiString& Ext);
// The built-in table alone (steps 3 and 4) for an extension with its dot.
KX_API AnsiString KxGetBuiltInMimeType(const AnsiString& Ext);

} // namespace kx
