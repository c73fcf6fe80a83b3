// SPDX-License-Identifier: MIT
// uKxWindows' MIME type by content: FindMimeFromData on Windows, libmagic on Linux.
#pragma once

#include <kx/rtl/Strings.h>

namespace kx {

// The MIME type the platform sees in the bytes; empty when it cannot tell.
KX_API AnsiString KxGetMimeType(const void* Buffer, int64_t Size);

// uKxWindows has a namesake of uKxSysUtils' KxGetFileMimeType that looks at the content; the
// nested namespace stands for the unit's name: kx::uKxWindows::KxGetFileMimeType.
namespace uKxWindows {
// The MIME type of the file's first 4096 bytes (KxGetMimeType). EFOpenError when the file
// cannot be opened.
KX_API AnsiString KxGetFileMimeType(const AnsiString& FileName);
} // namespace uKxWindows

} // namespace kx
