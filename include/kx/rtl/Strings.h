// SPDX-License-Identifier: MIT
#pragma once
// The runtime's string types and the 1-based helpers the library is written with.

#include <kx/KxExport.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kx {

// 8-bit text in the process ANSI code page unless a function says otherwise.
using AnsiString = std::string;
using RawByteString = std::string;
using UTF8String = std::string;
// 16-bit text, UTF-16 on every platform.
using UnicodeString = std::u16string;
using WideString = std::u16string;
using AnsiChar = char;
using WideChar = char16_t;
using TBytes = std::vector<uint8_t>;

// The process ANSI code page; 0 passed anywhere as a code page means this one.
KX_API uint32_t KxSystemCodePage();
// Overrides the code page for the whole process (tests and ports that expect one).
KX_API void KxSetSystemCodePage(uint32_t CodePage);

// 1-based, clipping copies and searches, as the library's callers expect.
KX_API AnsiString Copy(const AnsiString& S, int64_t Index, int64_t Count);
KX_API UnicodeString Copy(const UnicodeString& S, int64_t Index, int64_t Count);
// Position (1-based) of Sub in S from Offset on, 0 when absent.
KX_API int64_t Pos(const AnsiString& Sub, const AnsiString& S, int64_t Offset = 1);
KX_API int64_t Pos(const UnicodeString& Sub, const UnicodeString& S, int64_t Offset = 1);

// Conversions between the two string types through a code page (0: the process one).
KX_API UnicodeString AnsiToUnicode(std::string_view S, uint32_t CodePage = 0);
KX_API AnsiString UnicodeToAnsi(std::u16string_view S, uint32_t CodePage = 0);
KX_API UnicodeString UTF8Decode(std::string_view S);
KX_API UTF8String UTF8Encode(std::u16string_view S);

} // namespace kx
