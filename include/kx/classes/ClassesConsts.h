// SPDX-License-Identifier: MIT
#pragma once
// Messages shared by several components of uKxClasses.

namespace kx {

// A typed read, a parser move or a sequence ran past the end of the data.
inline constexpr const char* SUnexpectedEOF = "Unexpected EOF";
// A stream over memory it does not own was asked to grow, shrink or clear.
inline constexpr const char* SResizeBufferNotPossible = "It is not possible to resize the buffer!";
// A code page the text component cannot store or parse.
inline constexpr const char* SEncodingNotSupported = "The specified encoding is not supported!";
// A code page given for a stream's text that its byte-order mark contradicts.
inline constexpr const char* SEncodingBOMMismatch =
    "The specified encoding does not match the BOM of the stream!";
// Text whose code page the reader cannot handle, and a code page a method cannot handle.
inline constexpr const char* SUnsupportedStreamEncoding =
    "The stream contains text in an unsupported encoding!";
inline constexpr const char* SEncodingNotSupportedByMethod =
    "The specified encoding is not supported by this method!";
// A variant whose type holds no text, given to a string stream.
inline constexpr const char* SUnsupportedVarType = "Unsupported type %d!";

} // namespace kx
