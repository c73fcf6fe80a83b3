#pragma once
// Messages shared by several components of uKxClasses.

namespace kx {

// A typed read, a parser move or a sequence ran past the end of the data.
inline constexpr const char* SUnexpectedEOF = "Unexpected EOF";
// A stream over memory it does not own was asked to grow, shrink or clear.
inline constexpr const char* SResizeBufferNotPossible = "It is not possible to resize the buffer!";
// A code page the text component cannot store or parse.
inline constexpr const char* SEncodingNotSupported = "The specified encoding is not supported!";

} // namespace kx
