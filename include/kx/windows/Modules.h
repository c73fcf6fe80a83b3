// SPDX-License-Identifier: MIT
// Modules of uKxWindows: the version a library reports, the functions an executable file
// exports, and a program's manifest.
#pragma once

#include <kx/rtl/Streams.h>
#include <kx/rtl/StringList.h>
#include <kx/rtl/Strings.h>

#include <cstdint>

namespace kx {

inline constexpr const char* SUnsupportedManifestFormat =
    "The manifest is encoded in an unsupported format!";
inline constexpr const char* SInvalidExecutableImage = "Not a valid executable image!";

struct TKxDllVersion {
  uint32_t Major = 0, Minor = 0, Build = 0;
};
// The version a library reports of itself. Windows: DllGetVersion of the library, loaded by
// name as LoadLibrary finds it. Linux: the numbers after ".so." in the name of the file the
// library resolves to, loaded as dlopen finds it ("libz.so.1" is "libz.so.1.2.13": 1.2.13).
// False when the library does not tell (no DllGetVersion, no numbers in the name). EOSError
// (Linux: with dlopen's text) when it cannot be loaded.
KX_API bool KxGetDllVersion(const AnsiString& DllName, TKxDllVersion& Version);

// The names of the functions an executable file exports, in the order of its table, into List
// (cleared first). PE files: the named entries of the export directory (entries exported by
// ordinal only have no name). ELF files: the defined global and weak functions of the dynamic
// symbol table with default or protected visibility. The file is read, not loaded, so images
// of either platform and bitness can be listed. Exception "Not a valid executable image!" for
// anything else or a damaged image; EFOpenError when the file cannot be opened.
KX_API void KxGetExportedFunctionNames(const AnsiString& FileName, TStrings* List);
// The same for an image held in a stream, read from its beginning.
KX_API void KxGetExportedFunctionNames(TStream* Stream, TStrings* List);

// The application manifest of a module (empty: the running program) as text: its manifest
// resource 1 (programs), else 2 (libraries). UTF-8 with or without a byte-order mark and
// UTF-16 with one are read; any other encoding raises "The manifest is encoded in an
// unsupported format!". Empty when the module has none. EOSError when the file cannot be
// loaded; EKxNotSupported on Linux, whose executables carry no manifest.
KX_API UnicodeString KxGetManifest(const AnsiString& FileName = AnsiString());

} // namespace kx
