// SPDX-License-Identifier: MIT
#pragma once
// SHA-1 digests of buffers, strings, streams and files, as raw 20-byte blocks or as text in
// one of the binary encodings. Empty input is not hashed: see each function.

#include <kx/classes/BinEncoding.h>
#include <kx/rtl/Streams.h>

#include <cstdint>

namespace kx {

// Writes the 20-byte digest; for Length 0, 20 zero bytes instead.
KX_API void KxHashBuffer(const void* Buffer, uint32_t Length, uint8_t* Digest);
// The digest in the encoding; an empty string for Length 0.
KX_API AnsiString KxHashBuffer(const void* Buffer, uint32_t Length, TKxBinEncoding Encoding);
// Writes the digest of the string's bytes; an empty string leaves Digest untouched.
KX_API void KxHashString(const AnsiString& S, uint8_t* Digest);
// The digest of the string's bytes in the encoding; an empty string for an empty string.
KX_API AnsiString KxHashString(const AnsiString& S, TKxBinEncoding Encoding);
KX_API AnsiString KxHashStringA(const AnsiString& S, TKxBinEncoding Encoding);
// The digest of the string's UTF-16 little-endian bytes; an empty string for an empty string.
KX_API AnsiString KxHashStringW(const UnicodeString& S, TKxBinEncoding Encoding);
// Reads as many bytes as the stream's size from its position (from 0 with FromStart) and
// gives their digest in standard Base64.
KX_API AnsiString KxHashStream(TStream* Stream, bool FromStart);
// The digest of the whole file, which is opened read-only and shared; an empty string for an
// encoding outside the three.
KX_API AnsiString KxHashFile(const AnsiString& FileName, TKxBinEncoding Encoding);

} // namespace kx
