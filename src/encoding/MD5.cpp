// SPDX-License-Identifier: MIT
// MD5 (RFC 1321). The caller owns the running state as a plain record, which no provider's
// opaque state can stand in for, so the block function is written out here; one-call digests
// go to the platform's provider.
#include <kx/encoding/MD5.h>

#include <kx/encoding/KxNetEncoding.h>
#include <kx/rtl/Exceptions.h>

#include "platform/Digest.h"

#include <bit>
#include <cstring>

namespace kx {

namespace {

inline uint32_t LoadLE32(const uint8_t* P) {
  uint32_t V;
  std::memcpy(&V, P, 4);
  if constexpr (std::endian::native == std::endian::big) V = __builtin_bswap32(V);
  return V;
}

inline void StoreLE32(uint8_t* P, uint32_t V) {
  if constexpr (std::endian::native == std::endian::big) V = __builtin_bswap32(V);
  std::memcpy(P, &V, 4);
}

// The round functions are written so that the terms not depending on the previous step's
// result (the message word, the constant, and in rounds 2 and 4 the part of the function
// that needs only c and d) can be added before that result is known: MD5 is one long
// dependency chain, and its length is the speed.
#define KX_MD5_F(a, b, c, d, x, t, s)                                                              \
  a += (x) + (t) + ((d) ^ ((b) & ((c) ^ (d))));                                                    \
  a = std::rotl(a, s) + (b);
#define KX_MD5_G(a, b, c, d, x, t, s)                                                              \
  a += (x) + (t) + ((c) & ~(d));                                                                   \
  a += (b) & (d);                                                                                  \
  a = std::rotl(a, s) + (b);
#define KX_MD5_H(a, b, c, d, x, t, s)                                                              \
  a += (x) + (t) + ((b) ^ (c) ^ (d));                                                              \
  a = std::rotl(a, s) + (b);
#define KX_MD5_I(a, b, c, d, x, t, s)                                                              \
  a += (x) + (t) + ((c) ^ ((b) | ~(d)));                                                           \
  a = std::rotl(a, s) + (b);

// Hashes Blocks consecutive 64-byte blocks into State.
void Transform(uint32_t State[4], const uint8_t* P, size_t Blocks) {
  uint32_t A = State[0], B = State[1], C = State[2], D = State[3];
  for (; Blocks > 0; --Blocks, P += 64) {
    uint32_t X[16];
    for (int I = 0; I < 16; ++I) X[I] = LoadLE32(P + 4 * I);
    const uint32_t AA = A, BB = B, CC = C, DD = D;

    KX_MD5_F(A, B, C, D, X[0], 0xd76aa478, 7)
    KX_MD5_F(D, A, B, C, X[1], 0xe8c7b756, 12)
    KX_MD5_F(C, D, A, B, X[2], 0x242070db, 17)
    KX_MD5_F(B, C, D, A, X[3], 0xc1bdceee, 22)
    KX_MD5_F(A, B, C, D, X[4], 0xf57c0faf, 7)
    KX_MD5_F(D, A, B, C, X[5], 0x4787c62a, 12)
    KX_MD5_F(C, D, A, B, X[6], 0xa8304613, 17)
    KX_MD5_F(B, C, D, A, X[7], 0xfd469501, 22)
    KX_MD5_F(A, B, C, D, X[8], 0x698098d8, 7)
    KX_MD5_F(D, A, B, C, X[9], 0x8b44f7af, 12)
    KX_MD5_F(C, D, A, B, X[10], 0xffff5bb1, 17)
    KX_MD5_F(B, C, D, A, X[11], 0x895cd7be, 22)
    KX_MD5_F(A, B, C, D, X[12], 0x6b901122, 7)
    KX_MD5_F(D, A, B, C, X[13], 0xfd987193, 12)
    KX_MD5_F(C, D, A, B, X[14], 0xa679438e, 17)
    KX_MD5_F(B, C, D, A, X[15], 0x49b40821, 22)

    KX_MD5_G(A, B, C, D, X[1], 0xf61e2562, 5)
    KX_MD5_G(D, A, B, C, X[6], 0xc040b340, 9)
    KX_MD5_G(C, D, A, B, X[11], 0x265e5a51, 14)
    KX_MD5_G(B, C, D, A, X[0], 0xe9b6c7aa, 20)
    KX_MD5_G(A, B, C, D, X[5], 0xd62f105d, 5)
    KX_MD5_G(D, A, B, C, X[10], 0x02441453, 9)
    KX_MD5_G(C, D, A, B, X[15], 0xd8a1e681, 14)
    KX_MD5_G(B, C, D, A, X[4], 0xe7d3fbc8, 20)
    KX_MD5_G(A, B, C, D, X[9], 0x21e1cde6, 5)
    KX_MD5_G(D, A, B, C, X[14], 0xc33707d6, 9)
    KX_MD5_G(C, D, A, B, X[3], 0xf4d50d87, 14)
    KX_MD5_G(B, C, D, A, X[8], 0x455a14ed, 20)
    KX_MD5_G(A, B, C, D, X[13], 0xa9e3e905, 5)
    KX_MD5_G(D, A, B, C, X[2], 0xfcefa3f8, 9)
    KX_MD5_G(C, D, A, B, X[7], 0x676f02d9, 14)
    KX_MD5_G(B, C, D, A, X[12], 0x8d2a4c8a, 20)

    KX_MD5_H(A, B, C, D, X[5], 0xfffa3942, 4)
    KX_MD5_H(D, A, B, C, X[8], 0x8771f681, 11)
    KX_MD5_H(C, D, A, B, X[11], 0x6d9d6122, 16)
    KX_MD5_H(B, C, D, A, X[14], 0xfde5380c, 23)
    KX_MD5_H(A, B, C, D, X[1], 0xa4beea44, 4)
    KX_MD5_H(D, A, B, C, X[4], 0x4bdecfa9, 11)
    KX_MD5_H(C, D, A, B, X[7], 0xf6bb4b60, 16)
    KX_MD5_H(B, C, D, A, X[10], 0xbebfbc70, 23)
    KX_MD5_H(A, B, C, D, X[13], 0x289b7ec6, 4)
    KX_MD5_H(D, A, B, C, X[0], 0xeaa127fa, 11)
    KX_MD5_H(C, D, A, B, X[3], 0xd4ef3085, 16)
    KX_MD5_H(B, C, D, A, X[6], 0x04881d05, 23)
    KX_MD5_H(A, B, C, D, X[9], 0xd9d4d039, 4)
    KX_MD5_H(D, A, B, C, X[12], 0xe6db99e5, 11)
    KX_MD5_H(C, D, A, B, X[15], 0x1fa27cf8, 16)
    KX_MD5_H(B, C, D, A, X[2], 0xc4ac5665, 23)

    KX_MD5_I(A, B, C, D, X[0], 0xf4292244, 6)
    KX_MD5_I(D, A, B, C, X[7], 0x432aff97, 10)
    KX_MD5_I(C, D, A, B, X[14], 0xab9423a7, 15)
    KX_MD5_I(B, C, D, A, X[5], 0xfc93a039, 21)
    KX_MD5_I(A, B, C, D, X[12], 0x655b59c3, 6)
    KX_MD5_I(D, A, B, C, X[3], 0x8f0ccc92, 10)
    KX_MD5_I(C, D, A, B, X[10], 0xffeff47d, 15)
    KX_MD5_I(B, C, D, A, X[1], 0x85845dd1, 21)
    KX_MD5_I(A, B, C, D, X[8], 0x6fa87e4f, 6)
    KX_MD5_I(D, A, B, C, X[15], 0xfe2ce6e0, 10)
    KX_MD5_I(C, D, A, B, X[6], 0xa3014314, 15)
    KX_MD5_I(B, C, D, A, X[13], 0x4e0811a1, 21)
    KX_MD5_I(A, B, C, D, X[4], 0xf7537e82, 6)
    KX_MD5_I(D, A, B, C, X[11], 0xbd3af235, 10)
    KX_MD5_I(C, D, A, B, X[2], 0x2ad7d2bb, 15)
    KX_MD5_I(B, C, D, A, X[9], 0xeb86d391, 21)

    A += AA;
    B += BB;
    C += CC;
    D += DD;
  }
  State[0] = A;
  State[1] = B;
  State[2] = C;
  State[3] = D;
}

#undef KX_MD5_F
#undef KX_MD5_G
#undef KX_MD5_H
#undef KX_MD5_I

} // namespace

void MD5Init(TMD5Context& Context) {
  Context.State[0] = 0x67452301;
  Context.State[1] = 0xefcdab89;
  Context.State[2] = 0x98badcfe;
  Context.State[3] = 0x10325476;
  Context.Count = 0;
  std::memset(Context.Buffer, 0, sizeof(Context.Buffer));
}

void MD5Update(TMD5Context& Context, const char* Input, uint32_t Length) {
  if (Length == 0) return;
  const auto* P = reinterpret_cast<const uint8_t*>(Input);
  size_t Used = size_t(Context.Count >> 3) & 63;
  Context.Count += uint64_t(Length) << 3;
  size_t Rest = Length;
  if (Used) {
    const size_t Fill = 64 - Used;
    if (Rest < Fill) {
      std::memcpy(Context.Buffer + Used, P, Rest);
      return;
    }
    std::memcpy(Context.Buffer + Used, P, Fill);
    Transform(Context.State, Context.Buffer, 1);
    P += Fill;
    Rest -= Fill;
  }
  // Whole blocks straight from the caller's memory.
  if (Rest >= 64) {
    Transform(Context.State, P, Rest / 64);
    P += Rest & ~size_t(63);
    Rest &= 63;
  }
  if (Rest) std::memcpy(Context.Buffer, P, Rest);
}

void MD5Final(TMD5Context& Context, uint8_t* Digest) {
  const uint64_t Bits = Context.Count;
  size_t Used = size_t(Bits >> 3) & 63;
  // A 1 bit, zeros up to 56 bytes into a block, then the message length in bits.
  Context.Buffer[Used++] = 0x80;
  if (Used > 56) {
    std::memset(Context.Buffer + Used, 0, 64 - Used);
    Transform(Context.State, Context.Buffer, 1);
    Used = 0;
  }
  std::memset(Context.Buffer + Used, 0, 56 - Used);
  StoreLE32(Context.Buffer + 56, uint32_t(Bits));
  StoreLE32(Context.Buffer + 60, uint32_t(Bits >> 32));
  Transform(Context.State, Context.Buffer, 1);
  for (int I = 0; I < 4; ++I) StoreLE32(Digest + 4 * I, Context.State[I]);
  // Nothing of the message stays behind in the caller's record.
  std::memset(&Context, 0, sizeof(Context));
}

TMD5Digest MD5Hash(const void* Buffer, uint32_t Length) {
  TMD5Digest D;
  if (!platform::ComputeDigest(platform::TDigestAlgorithm::MD5, Buffer, Length, D.data()))
    RaiseLastOSError();
  return D;
}

AnsiString MD5Hash(const AnsiString& S) {
  const TMD5Digest D = MD5Hash(S.data(), uint32_t(S.size()));
  return TKxNetEncoding::Hex()->EncodeA(D.data(), int32_t(D.size()));
}

AnsiString MD5Hash(const UnicodeString& S) {
  return MD5Hash(UTF8Encode(S));
}

} // namespace kx
