// SPDX-License-Identifier: MIT
// uKxWindows' file version information from a file's version resource.
#pragma once

#include <kx/rtl/Strings.h>

namespace kx {

struct TKxFileVersionInfo {
  AnsiString FileDescription, FileVersion, ProductVersion, CompanyName, OriginalFilename;
  // The fixed block's file version, "major.minor.release.build".
  AnsiString FileVersionNumber;
};

// The texts of the first language's string table and the fixed file version; items the file
// lacks stay empty. Linux executables carry no version resource: everything stays empty.
KX_API TKxFileVersionInfo KxFileVersionInfo(const AnsiString& FileName);

} // namespace kx
