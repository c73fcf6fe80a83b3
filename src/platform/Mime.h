// SPDX-License-Identifier: MIT
#pragma once
// The MIME type of bytes by their content: FindMimeFromData (urlmon, loaded at run time) on
// Windows, libmagic on POSIX.

#include "platform/Platform.h"

namespace kx::platform {

// False when the platform cannot tell (or has no detector).
bool MimeTypeOfData(const void* Data, size_t Size, AnsiString& Mime);

} // namespace kx::platform
