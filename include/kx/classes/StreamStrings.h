// SPDX-License-Identifier: MIT
#pragma once
// Whole streams as text, with byte-order-mark handling, and the UTF-8 stream functions.
//
// Each reader takes the stream, whether to free it afterwards (also when it raises), whether
// to read from position 0 rather than from the current position, whether to look for a
// byte-order mark, and the code page of the bytes (-1: none given). When a mark is found and
// a code page is given, the two must agree ("The specified encoding does not match the BOM of
// the stream!"); the bytes are read in the given code page, else the mark's, else in 0.

#include <kx/rtl/Streams.h>

namespace kx {

// 8-bit text in DestCodePage, which must be an 8-bit code page ("The specified encoding is
// not supported!"). When DestCodePage is the given source code page nothing is converted: the
// result is as long as the whole stream and holds one read from the position.
KX_API AnsiString KxStreamToAnsiString(TStream* Stream, bool FreeStream = false,
                                       bool FromStart = true, bool DetectBOM = true,
                                       int32_t SourceCodePage = -1, uint16_t DestCodePage = 0);
KX_API UnicodeString KxStreamToWideString(TStream* Stream, bool FreeStream = false,
                                          bool FromStart = true, bool DetectBOM = true,
                                          int32_t SourceCodePage = -1);
// The library's default string type, which is 16-bit here.
KX_API UnicodeString KxStreamToString(TStream* Stream, bool FreeStream = false,
                                      bool FromStart = true, bool DetectBOM = true,
                                      int32_t SourceCodePage = -1);

// The rest of Source, taken as UTF-16LE, written to Dest as UTF-8 (after EF BB BF when
// WriteBOM).
KX_API void KxUTF8EncodeStream(TStream* Source, TStream* Dest, bool WriteBOM);
// The rest of Source, UTF-8 with or without its mark, written to Dest as UTF-16LE through a
// TKxUTF8StreamAdapter, 1024 bytes at a time.
KX_API void KxUTF8DecodeStream(TStream* Source, TStream* Dest);
// The rest of Stream as 16-bit text; a mark other than UTF-8's raises EConvertError
// "The sourcestream does not contain unicode data!".
KX_API UnicodeString KxUTF8Decode(TStream* Stream);

} // namespace kx
