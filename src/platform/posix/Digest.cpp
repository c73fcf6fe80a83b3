// SPDX-License-Identifier: MIT
// Digests through OpenSSL's one-shot EVP call.
#include "platform/Digest.h"

#include "platform/Platform.h"

#include <openssl/evp.h>

#include <cerrno>

namespace kx::platform {

bool ComputeDigest(TDigestAlgorithm Algorithm, const void* Data, size_t Size, uint8_t* Digest) {
  // The legacy getters hand out static method tables, so no fetch is paid per call.
  const EVP_MD* Md = Algorithm == TDigestAlgorithm::MD5 ? EVP_md5() : EVP_sha1();
  static const uint8_t Empty = 0;
  if (EVP_Digest(Size ? Data : &Empty, Size, Digest, nullptr, Md, nullptr) != 1) {
    SetLastError(EIO);
    return false;
  }
  return true;
}

} // namespace kx::platform
