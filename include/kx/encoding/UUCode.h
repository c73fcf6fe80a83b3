// SPDX-License-Identifier: MIT
#pragma once
// The uuencode text format: a "begin <mode> <name>" line, lines of up to 45 bytes each led by
// their length character, and the "`" / "end" terminator.

#include <kx/rtl/Streams.h>
#include <kx/rtl/StringList.h>

#include <cstdint>

namespace kx {

inline constexpr const char* SUUUnexpectedEOF = "Unexpected EOF";
inline constexpr const char* SUUInvalidData = "Invalid UUData";

// What the begin line of a decoded section said. The decoders fill one when given it.
struct TKxUUHeader {
  // The mode as written, a decimal number (644 for the traditional octal rw-r--r--); 644
  // when the begin line holds no number there.
  uint16_t Mode = 0;
  AnsiString FileName;
};

// Encodes the rest of Input as a complete uuencoded text into Output. Mode is printed in
// decimal as given. Lines end with CR LF; the text ends with "end" and no line break. A final
// chunk whose length leaves a remainder of 1 when divided by 3 loses its last byte, though
// its length character counts it.
KX_API void KxUUEncode(TStream* Input, TStream* Output, const AnsiString& FileName, uint16_t Mode);
KX_API AnsiString KxUUEncode(TStream* Input, const AnsiString& FileName, uint16_t Mode);
KX_API AnsiString KxUUEncode(const AnsiString& S, const AnsiString& FileName, uint16_t Mode);

// Decode the first section, or the section whose begin line names FileName (compared
// without regard to case), into Output. "Invalid UUData" when there is no such begin line,
// "Unexpected EOF" when the lines end before the terminator.
KX_API void KxUUDecode(const AnsiString& S, TStream* Output, TKxUUHeader* Header = nullptr);
KX_API void KxUUDecode(const AnsiString& S, const AnsiString& FileName, TStream* Output,
                       TKxUUHeader* Header = nullptr);
// Decodes the rest of Input.
KX_API void KxUUDecode(TStream* Input, TStream* Output, TKxUUHeader* Header = nullptr);
KX_API void KxUUDecode(TStrings* Lines, TStream* Output, TKxUUHeader* Header = nullptr);
KX_API void KxUUDecode(TStrings* Lines, const AnsiString& FileName, TStream* Output,
                       TKxUUHeader* Header = nullptr);

} // namespace kx
