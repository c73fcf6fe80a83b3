// SPDX-License-Identifier: MIT
#pragma once
// TKxEncoding: every conversion between 8-bit text, 16-bit text and raw bytes, as class
// operations; and the code page of a byte-order mark.

#include <kx/rtl/Streams.h>
#include <kx/rtl/Strings.h>

namespace kx {

// Conversions through the platform's code pages. Code page 0 is KxSystemCodePage(). 8-bit to
// 16-bit conversions fail on invalid input in the counting form (platform error 1113); the
// string forms substitute. 16-bit to 8-bit conversions compose base and nonspacing characters
// where the code page has the composite, and put the default character for the rest. The
// platform conversions do not handle 1200, 1201, 12000 and 12001: only the byte forms know
// 1200. Platform failures raise EOSError.
class KX_API TKxEncoding {
public:
  TKxEncoding() = delete;

  // 8-bit text to 16-bit text.
  static UnicodeString ConvertA(const AnsiString& S);
  static UnicodeString ConvertA(const AnsiString& S, uint16_t CodePage);
  // Length -1 takes Buffer as zero-terminated; the terminator is not part of the result.
  static UnicodeString& ConvertA(const void* Buffer, int32_t Length, UnicodeString& Wide,
                                 uint16_t CodePage);
  // Bytes in FromCodePage to 8-bit text in ToCodePage, through 16-bit text.
  static AnsiString& ConvertA(const void* Buffer, int32_t Length, AnsiString& S,
                              uint16_t ToCodePage, uint16_t FromCodePage);
  // The number of 16-bit characters written, or needed when WideLength is 0.
  static int32_t ConvertA(const void* Buffer, int32_t Length, WideChar* WideBuffer,
                          int32_t WideLength, uint16_t CodePage);

  // 16-bit text to 8-bit text.
  static AnsiString ConvertW(const UnicodeString& Wide, uint16_t CodePage);
  static AnsiString& ConvertW(const WideChar* WideBuffer, int32_t Length, AnsiString& S,
                              uint16_t CodePage);
  // The number of bytes written, or needed when BufferLength is 0.
  static int32_t ConvertW(const WideChar* WideBuffer, int32_t Length, void* Buffer,
                          int32_t BufferLength, uint16_t CodePage);

  // Bytes to 8-bit text: copied when both code pages are the same; FromCodePage 1200 reads
  // the bytes as 16-bit characters. ToCodePage must be an 8-bit code page (assertion).
  static AnsiString& ConvertB(const void* Buffer, int32_t Size, AnsiString& S, uint16_t ToCodePage,
                              uint16_t FromCodePage);
  // Bytes to 16-bit text; 1200 copies them.
  static UnicodeString& ConvertB(const void* Buffer, int32_t Size, UnicodeString& Wide,
                                 uint16_t FromCodePage);
  static AnsiString& ConvertB(const TBytes& Bytes, AnsiString& S, uint16_t ToCodePage,
                              uint16_t FromCodePage);
};

// The code page of the byte-order mark at the start of Buffer (12001, 12000, 65001, 1201 or
// 1200), 1200 for unmarked text whose second byte alone is zero, else 0.
KX_API uint16_t KxGetCodePage(const void* Buffer, int64_t Size);
// The same at the stream's position; the stream is left behind the mark, or where it was.
KX_API uint16_t KxGetCodePage(TStream* Stream);

} // namespace kx
