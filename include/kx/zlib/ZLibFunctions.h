// SPDX-License-Identifier: MIT
#pragma once
// Whole streams and strings through the compression streams.

#include <kx/zlib/ZLibStream.h>

namespace kx {

// Compresses the rest of Source (all of it with FromStart) into Dest in zlib framing.
KX_API void ZlCompressStream(TStream* Source, TStream* Dest,
                             TKxZLibCompressionLevel Level = clDefault, bool FromStart = false);
// Decompresses Source into Dest: zlib framing when the first byte is "x", raw deflate
// otherwise. An empty Source raises EKxZLibDecompressionError "Stream end".
KX_API void ZlDecompressStream(TStream* Source, TStream* Dest, bool FromStart = false);
// The same with the caller's window bits and no look at the first byte.
KX_API void ZlDecompressStream(TStream* Source, TStream* Dest, int32_t WindowBits, bool FromStart);
KX_API void ZlStringToCompressedStream(const AnsiString& S, TStream* Dest,
                                       TKxZLibCompressionLevel Level = clDefault);
// The decompressed bytes (the first byte sniffed as above) as an 8-bit string.
KX_API AnsiString ZlDecompressStreamToString(TStream* Source, bool FromStart = false);
KX_API AnsiString ZlDecompressStreamToAnsiString(TStream* Source, bool FromStart = false);
// The decompressed bytes taken as UTF-16 code units; an odd last byte is dropped.
KX_API UnicodeString ZlDecompressStreamToWideString(TStream* Source, bool FromStart = false);

} // namespace kx
