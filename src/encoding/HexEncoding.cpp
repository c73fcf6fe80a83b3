// SPDX-License-Identifier: MIT
// Upper-case hexadecimal.
#include <kx/encoding/HexEncoding.h>

#include "encoding/StreamBuffers.h"

#include <array>
#include <bit>
#include <cstring>
#include <memory>

#include "rtl/CpuFeatures.h"

namespace kx {

KX_IMPLEMENT_CLASS(TKxHexEncoding, TNetEncodingEx, "uKxNetEncoding")

namespace {

static_assert(std::endian::native == std::endian::little);

constexpr char HexDigits[] = "0123456789ABCDEF";

// "00" ... "FF", each pair as the 16-bit word that stores it in order.
constexpr std::array<uint16_t, 256> MakeEncodeTable() {
  std::array<uint16_t, 256> T{};
  for (int B = 0; B < 256; ++B)
    T[B] = uint16_t(uint8_t(HexDigits[B >> 4]) | (uint8_t(HexDigits[B & 15]) << 8));
  return T;
}
constexpr std::array<uint16_t, 256> EncodeTable = MakeEncodeTable();

// Digit values; anything that is not a hexadecimal digit is 0. The high table holds the
// value already shifted into the upper half of the byte.
constexpr std::array<uint8_t, 256> MakeDecodeTable(int Shift) {
  std::array<uint8_t, 256> T{};
  for (int C = 0; C < 256; ++C) {
    int V = 0;
    if (C >= '0' && C <= '9')
      V = C - '0';
    else if (C >= 'A' && C <= 'F')
      V = C - 'A' + 10;
    else if (C >= 'a' && C <= 'f')
      V = C - 'a' + 10;
    T[C] = uint8_t(V << Shift);
  }
  return T;
}
constexpr std::array<uint8_t, 256> DecodeHigh = MakeDecodeTable(4);
constexpr std::array<uint8_t, 256> DecodeLow = MakeDecodeTable(0);

// Output of a stream decode is written in blocks of this size.
constexpr int32_t DecodeBlockSize = 64 * 1024;

#if defined(KX_X86_VECTORS)

// 16 bytes to 32 digits per step: each nibble picks its digit from a 16-byte table.
__attribute__((target("ssse3"))) void EncodeBlocksSsse3(const uint8_t*& Src, const uint8_t* End,
                                                        uint8_t*& Dst) {
  const __m128i Digits = _mm_loadu_si128(reinterpret_cast<const __m128i*>(HexDigits));
  const __m128i Nibble = _mm_set1_epi8(0x0F);
  const uint8_t* S = Src;
  uint8_t* D = Dst;
  while (End - S >= 16) {
    const __m128i In = _mm_loadu_si128(reinterpret_cast<const __m128i*>(S));
    const __m128i High = _mm_shuffle_epi8(Digits, _mm_and_si128(_mm_srli_epi16(In, 4), Nibble));
    const __m128i Low = _mm_shuffle_epi8(Digits, _mm_and_si128(In, Nibble));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(D), _mm_unpacklo_epi8(High, Low));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(D + 16), _mm_unpackhi_epi8(High, Low));
    S += 16;
    D += 32;
  }
  Src = S;
  Dst = D;
}

// The digit values of 16 characters; any other character is 0.
__attribute__((target("ssse3"))) inline __m128i DigitValuesSsse3(__m128i C) {
  const __m128i Digit = _mm_sub_epi8(C, _mm_set1_epi8('0'));
  const __m128i IsDigit = _mm_cmpeq_epi8(_mm_min_epu8(Digit, _mm_set1_epi8(9)), Digit);
  const __m128i Letter = _mm_sub_epi8(_mm_or_si128(C, _mm_set1_epi8(0x20)), _mm_set1_epi8('a'));
  const __m128i IsLetter = _mm_cmpeq_epi8(_mm_min_epu8(Letter, _mm_set1_epi8(5)), Letter);
  return _mm_or_si128(_mm_and_si128(Digit, IsDigit),
                      _mm_and_si128(_mm_add_epi8(Letter, _mm_set1_epi8(10)), IsLetter));
}

// 32 characters to 16 bytes per step: digit values, then each pair as high * 16 + low.
__attribute__((target("ssse3"))) void DecodeBlocksSsse3(const uint8_t*& Src, uint8_t*& Dst,
                                                        const uint8_t* DstEnd) {
  const __m128i Weights = _mm_set1_epi16(0x0110);
  const uint8_t* S = Src;
  uint8_t* D = Dst;
  while (DstEnd - D >= 16) {
    const __m128i A = DigitValuesSsse3(_mm_loadu_si128(reinterpret_cast<const __m128i*>(S)));
    const __m128i B = DigitValuesSsse3(_mm_loadu_si128(reinterpret_cast<const __m128i*>(S + 16)));
    const __m128i Bytes =
        _mm_packus_epi16(_mm_maddubs_epi16(A, Weights), _mm_maddubs_epi16(B, Weights));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(D), Bytes);
    S += 32;
    D += 16;
  }
  Src = S;
  Dst = D;
}

#endif

} // namespace

int32_t TKxHexEncoding::EncodedCapacity(int32_t Size) const {
  return int32_t(int64_t(Size) * 2);
}

int32_t TKxHexEncoding::EncodeBuffer(const uint8_t* Input, int32_t Size, uint8_t* Output) const {
  const uint8_t* S = Input;
  const uint8_t* const End = Input + Size;
  uint8_t* D = Output;
#if defined(KX_X86_VECTORS)
  if (detail::CpuHasSsse3()) EncodeBlocksSsse3(S, End, D);
#endif
  while (End - S >= 8) {
    const uint64_t W0 = uint64_t(EncodeTable[S[0]]) | (uint64_t(EncodeTable[S[1]]) << 16) |
                        (uint64_t(EncodeTable[S[2]]) << 32) | (uint64_t(EncodeTable[S[3]]) << 48);
    const uint64_t W1 = uint64_t(EncodeTable[S[4]]) | (uint64_t(EncodeTable[S[5]]) << 16) |
                        (uint64_t(EncodeTable[S[6]]) << 32) | (uint64_t(EncodeTable[S[7]]) << 48);
    std::memcpy(D, &W0, 8);
    std::memcpy(D + 8, &W1, 8);
    S += 8;
    D += 16;
  }
  for (; S < End; ++S, D += 2) std::memcpy(D, &EncodeTable[*S], 2);
  return int32_t(D - Output);
}

int32_t TKxHexEncoding::DecodedCapacity(int32_t Size) const {
  return Size / 2;
}

int32_t TKxHexEncoding::DecodeBuffer(const uint8_t* Input, int32_t Size, uint8_t* Output) const {
  const int32_t Count = Size / 2;
  const uint8_t* S = Input;
  uint8_t* D = Output;
  uint8_t* const End = Output + Count;
#if defined(KX_X86_VECTORS)
  if (detail::CpuHasSsse3()) DecodeBlocksSsse3(S, D, End);
#endif
  while (End - D >= 8) {
    const uint64_t W = uint64_t(DecodeHigh[S[0]] | DecodeLow[S[1]]) |
                       (uint64_t(DecodeHigh[S[2]] | DecodeLow[S[3]]) << 8) |
                       (uint64_t(DecodeHigh[S[4]] | DecodeLow[S[5]]) << 16) |
                       (uint64_t(DecodeHigh[S[6]] | DecodeLow[S[7]]) << 24) |
                       (uint64_t(DecodeHigh[S[8]] | DecodeLow[S[9]]) << 32) |
                       (uint64_t(DecodeHigh[S[10]] | DecodeLow[S[11]]) << 40) |
                       (uint64_t(DecodeHigh[S[12]] | DecodeLow[S[13]]) << 48) |
                       (uint64_t(DecodeHigh[S[14]] | DecodeLow[S[15]]) << 56);
    std::memcpy(D, &W, 8);
    S += 16;
    D += 8;
  }
  for (; D < End; S += 2) *D++ = DecodeHigh[S[0]] | DecodeLow[S[1]];
  return Count;
}

int32_t TKxHexEncoding::DoDecode(TStream* Input, TStream* Output) {
  detail::TKxReadBuffer In(Input);
  const int32_t Count = DecodedCapacity(In.Count());
  Output->SetSize(Output->Size() + Count);
  // Decoded block by block so that a large input needs no second buffer of its size.
  const int32_t Block = Count < DecodeBlockSize ? Count : DecodeBlockSize;
  std::unique_ptr<uint8_t[]> Buf(new uint8_t[size_t(Block > 0 ? Block : 1)]);
  const uint8_t* S = In.Data();
  for (int32_t Done = 0; Done < Count; Done += Block) {
    const int32_t N = Count - Done < Block ? Count - Done : Block;
    DecodeBuffer(S + int64_t(Done) * 2, N * 2, Buf.get());
    Output->WriteBuffer(Buf.get(), N);
  }
  return Count;
}

} // namespace kx
