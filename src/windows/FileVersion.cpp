// SPDX-License-Identifier: MIT
// File version information of uKxWindows.
#include <kx/rtl/Format.h>
#include <kx/windows/FileVersion.h>

#include "platform/Drives.h"

namespace kx {

TKxFileVersionInfo KxFileVersionInfo(const AnsiString& FileName) {
  platform::TVersionData D;
  TKxFileVersionInfo Info;
  if (!platform::FileVersionData(FileName, D)) return Info;
  Info.FileDescription = D.FileDescription;
  Info.FileVersion = D.FileVersion;
  Info.ProductVersion = D.ProductVersion;
  Info.CompanyName = D.CompanyName;
  Info.OriginalFilename = D.OriginalFilename;
  if (D.HasFixed)
    Info.FileVersionNumber =
        Format("%d.%d.%d.%d", {int32_t(D.FileVersionMS >> 16), int32_t(D.FileVersionMS & 0xFFFF),
                               int32_t(D.FileVersionLS >> 16), int32_t(D.FileVersionLS & 0xFFFF)});
  return Info;
}

} // namespace kx
