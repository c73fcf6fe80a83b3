// SPDX-License-Identifier: MIT
// Whole text files of uKxSysUtils: a file read into a string and strings saved as files.
#pragma once

#include <kx/rtl/Streams.h>

namespace kx {

// The whole file as 8-bit text in the system code page: opened with the file stream in Mode,
// its byte-order mark (if any) telling the code page of the bytes.
KX_API AnsiString KxLoadStringFromFile(const AnsiString& FileName,
                                       uint16_t Mode = fmOpenRead | fmShareDenyWrite);
// Text (8-bit text is system-code-page text) written to FileName, created or emptied, in
// CodePage, after that code page's byte-order mark when WriteBOM.
KX_API void KxSaveString(const AnsiString& FileName, const AnsiString& Text, uint16_t CodePage,
                         bool WriteBOM);
KX_API void KxSaveString(const AnsiString& FileName, const UnicodeString& Text, uint16_t CodePage,
                         bool WriteBOM);
// UTF-8 with its byte-order mark, the library's file format.
KX_API void KxSaveString(const AnsiString& FileName, const AnsiString& Text);

} // namespace kx
