// SPDX-License-Identifier: MIT
#pragma once
// Base64 and URL-safe Base64 of streams, strings, byte arrays and buffers through the shared
// codec instances. Decoding takes either alphabet; there is one decoder.

#include <kx/rtl/Streams.h>

namespace kx {

// Encodes the rest of Input into Output.
KX_API void KxEncodeBase64(TStream* Input, TStream* Output);
// Encodes the rest of Input.
KX_API AnsiString KxEncodeBase64(TStream* Input);
KX_API AnsiString KxEncodeBase64(const AnsiString& S);
// Encodes the string's UTF-8 form.
KX_API AnsiString KxEncodeBase64(const UnicodeString& S);
KX_API AnsiString KxEncodeBase64(const TBytes& Bytes);
KX_API AnsiString KxEncodeBase64(const void* Buffer, int32_t Size);

// Without padding, "-" and "_" for the last two values.
KX_API void KxEncodeBase64Url(TStream* Input, TStream* Output);
KX_API AnsiString KxEncodeBase64Url(TStream* Input);
KX_API AnsiString KxEncodeBase64Url(const AnsiString& S);
KX_API AnsiString KxEncodeBase64Url(const UnicodeString& S);
KX_API AnsiString KxEncodeBase64Url(const TBytes& Bytes);
KX_API AnsiString KxEncodeBase64Url(const void* Buffer, int32_t Size);

// Writes the decoded bytes to Output at its position.
KX_API void KxDecodeBase64(const AnsiString& S, TStream* Output);
// Decodes the rest of Input into Output.
KX_API void KxDecodeBase64(TStream* Input, TStream* Output);
// Decodes the string's UTF-8 form.
KX_API TBytes KxDecodeBase64(const UnicodeString& S);
// The decoded bytes as an 8-bit string.
KX_API AnsiString KxDecodeBase64(const AnsiString& S);
// The decoded bytes in a block the caller frees with std::free (null when there are none),
// and their count.
KX_API void* KxDecodeBase64(const AnsiString& S, int32_t& Size);

} // namespace kx
