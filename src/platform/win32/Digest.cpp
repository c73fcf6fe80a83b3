// SPDX-License-Identifier: MIT
// Digests through BCrypt's hash objects; the algorithm providers are opened once per process.
#include "platform/Digest.h"

#include "platform/Platform.h"

#include <windows.h>

#include <bcrypt.h>

#include <atomic>

namespace kx::platform {

namespace {

bool Failed(NTSTATUS Status) {
  if (Status >= 0) return false;
  // The NTSTATUS stands as the error code; there is no Win32 code for most of them.
  ::SetLastError(DWORD(Status));
  return true;
}

// A provider handle opened on first use; a racer that loses closes its own.
BCRYPT_ALG_HANDLE Provider(TDigestAlgorithm Algorithm) {
  static std::atomic<BCRYPT_ALG_HANDLE> Handles[2];
  auto& Slot = Handles[Algorithm == TDigestAlgorithm::MD5 ? 0 : 1];
  BCRYPT_ALG_HANDLE H = Slot.load(std::memory_order_acquire);
  if (H) return H;
  BCRYPT_ALG_HANDLE Opened = nullptr;
  const wchar_t* Name =
      Algorithm == TDigestAlgorithm::MD5 ? BCRYPT_MD5_ALGORITHM : BCRYPT_SHA1_ALGORITHM;
  if (Failed(BCryptOpenAlgorithmProvider(&Opened, Name, nullptr, 0))) return nullptr;
  if (Slot.compare_exchange_strong(H, Opened, std::memory_order_acq_rel)) return Opened;
  BCryptCloseAlgorithmProvider(Opened, 0);
  return H;
}

} // namespace

bool ComputeDigest(TDigestAlgorithm Algorithm, const void* Data, size_t Size, uint8_t* Digest) {
  BCRYPT_ALG_HANDLE Alg = Provider(Algorithm);
  if (!Alg) return false;
  BCRYPT_HASH_HANDLE Hash = nullptr;
  if (Failed(BCryptCreateHash(Alg, &Hash, nullptr, 0, nullptr, 0, 0))) return false;
  bool Ok = true;
  auto* P = static_cast<PUCHAR>(const_cast<void*>(Data));
  // BCryptHashData takes a 32-bit count.
  while (Ok && Size > 0) {
    const ULONG Part = Size > 0x40000000 ? 0x40000000 : ULONG(Size);
    Ok = !Failed(BCryptHashData(Hash, P, Part, 0));
    P += Part;
    Size -= Part;
  }
  const ULONG Length = Algorithm == TDigestAlgorithm::MD5 ? 16 : 20;
  if (Ok) Ok = !Failed(BCryptFinishHash(Hash, Digest, Length, 0));
  BCryptDestroyHash(Hash);
  return Ok;
}

} // namespace kx::platform
