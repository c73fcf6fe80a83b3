// SPDX-License-Identifier: MIT
#pragma once
// Moving bytes between raw buffers, byte arrays, streams and their textual forms (Base64,
// Base64url, hexadecimal) through the net encoders. Buffers handed out are from std::malloc;
// the caller frees them with std::free.

#include <kx/classes/BinEncoding.h>
#include <kx/rtl/Streams.h>

namespace kx {

KX_API TBytes KxBufToByteArr(const void* Buf, uint32_t Size);
// A new copy of Bytes (null when it is empty) and its size.
KX_API void* KxByteArrToBuf(const TBytes& Bytes, uint32_t& Size);
// Reverses the bytes in place.
KX_API void KxReverseBuffer(void* Buf, uint32_t Size);

// Upper-case hexadecimal, two digits per byte; the stream form from its position to its end.
KX_API AnsiString KxBufToHex(const void* Buf, uint32_t Size);
KX_API AnsiString KxBufToHex(const TBytes& Bytes);
KX_API AnsiString KxBufToHex(TStream* Stream);
// Decodes hexadecimal leniently (a non-digit counts as 0, a final odd digit is ignored).
KX_API void* KxHexToBuf(const AnsiString& Text, uint32_t& Size);
KX_API TBytes KxHexToBuf(const AnsiString& Text);
// Empties Stream, writes the decoded bytes and returns it.
KX_API TStream* KxHexToBuf(const AnsiString& Text, TStream* Stream);

// The bytes as text in the given encoding; the stream form from its position to its end.
KX_API AnsiString KxBufToString(const void* Buf, uint32_t Size, TKxBinEncoding Encoding);
KX_API AnsiString KxBufToString(const TBytes& Bytes, TKxBinEncoding Encoding);
KX_API AnsiString KxBufToString(TStream* Stream, TKxBinEncoding Encoding);
KX_API TBytes KxStringToBuf(const AnsiString& Text, TKxBinEncoding Encoding);
KX_API void* KxStringToBuf(const AnsiString& Text, TKxBinEncoding Encoding, uint32_t& Size);
// Writes the decoded bytes at Stream's position (the stream is not emptied first) and
// returns it.
KX_API TStream* KxStringToBuf(const AnsiString& Text, TKxBinEncoding Encoding, TStream* Stream);

} // namespace kx
