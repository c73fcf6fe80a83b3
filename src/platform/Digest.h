// SPDX-License-Identifier: MIT
#pragma once
// Message digests from the platform's cryptography: BCrypt on Windows, OpenSSL's libcrypto on
// POSIX. One call per digest; the state stays with the provider.

#include <cstddef>
#include <cstdint>

namespace kx::platform {

enum class TDigestAlgorithm : uint8_t { MD5, SHA1 };

// Writes the digest of Size bytes at Data to Digest (16 bytes for MD5, 20 for SHA-1). False
// when the provider fails, with the code in LastError().
bool ComputeDigest(TDigestAlgorithm Algorithm, const void* Data, size_t Size, uint8_t* Digest);

} // namespace kx::platform
