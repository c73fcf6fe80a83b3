// SPDX-License-Identifier: MIT
#pragma once
// MD5 digests: a running state the caller owns and feeds piece by piece, and one-call digests
// of buffers and strings.

#include <kx/rtl/Strings.h>

#include <array>
#include <cstdint>

namespace kx {

// The running state of one digest. A plain record: callers may keep it anywhere, copy it to
// fork a digest, and reuse it after MD5Init.
struct TMD5Context {
  uint32_t State[4];
  // Bits hashed so far.
  uint64_t Count;
  // The start of an incomplete block.
  uint8_t Buffer[64];
};

using TMD5Digest = std::array<uint8_t, 16>;

KX_API void MD5Init(TMD5Context& Context);
KX_API void MD5Update(TMD5Context& Context, const char* Input, uint32_t Length);
// Writes the 16-byte digest; the context must be initialised again before reuse.
KX_API void MD5Final(TMD5Context& Context, uint8_t* Digest);

KX_API TMD5Digest MD5Hash(const void* Buffer, uint32_t Length);
// 32 upper-case hexadecimal digits of the digest of the string's bytes.
KX_API AnsiString MD5Hash(const AnsiString& S);
// The same of the string's UTF-8 form.
KX_API AnsiString MD5Hash(const UnicodeString& S);

} // namespace kx
