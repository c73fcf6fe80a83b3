// SPDX-License-Identifier: MIT
// Base64 in the standard and URL-safe alphabets.
#include <kx/encoding/Base64Encoding.h>

#include <bit>
#include <cstring>

#include "rtl/CpuFeatures.h"

namespace kx {

KX_IMPLEMENT_CLASS(TKxBase64Encoding, TNetEncodingEx, "uKxNetEncoding")
KX_IMPLEMENT_CLASS(TKxBase64UrlEncoding, TKxBase64Encoding, "uKxNetEncoding")

namespace {

// The whole-group paths store machine words whose low byte comes first.
static_assert(std::endian::native == std::endian::little);

constexpr const char* StandardAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr const char* UrlAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

// Set in a whole-group decode word by any byte outside the alphabet.
constexpr uint32_t GroupInvalid = 0xFF000000u;

inline uint64_t LoadBigEndian64(const uint8_t* P) {
  uint64_t V;
  std::memcpy(&V, P, 8);
  return __builtin_bswap64(V);
}

#if defined(KX_X86_VECTORS)

// 12 bytes to 16 characters per step while 16 bytes are left to load. The six-bit values are
// cut out with two multiplies and turned into characters by adding an offset chosen per value
// range; the last two ranges are the alphabet's own characters for 62 and 63.
__attribute__((target("ssse3"))) void EncodeBlocksSsse3(const uint8_t*& Src, const uint8_t* End,
                                                        uint8_t*& Dst, uint8_t C62, uint8_t C63) {
  const __m128i Spread = _mm_set_epi8(10, 11, 9, 10, 7, 8, 6, 7, 4, 5, 3, 4, 1, 2, 0, 1);
  const __m128i Offsets =
      _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                    '0' - 52, '0' - 52, '0' - 52, char(C62 - 62), char(C63 - 63), 'A', 0, 0);
  const uint8_t* S = Src;
  uint8_t* D = Dst;
  while (End - S >= 16) {
    const __m128i In =
        _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(S)), Spread);
    const __m128i Hi =
        _mm_mulhi_epu16(_mm_and_si128(In, _mm_set1_epi32(0x0FC0FC00)), _mm_set1_epi32(0x04000040));
    const __m128i Lo =
        _mm_mullo_epi16(_mm_and_si128(In, _mm_set1_epi32(0x003F03F0)), _mm_set1_epi32(0x01000010));
    const __m128i Values = _mm_or_si128(Hi, Lo);
    // Range: 13 for A-Z, 0 for a-z, 1-10 for the digits, 11 and 12 for values 62 and 63.
    __m128i Range = _mm_subs_epu8(Values, _mm_set1_epi8(51));
    const __m128i Upper = _mm_cmpgt_epi8(_mm_set1_epi8(26), Values);
    Range = _mm_or_si128(Range, _mm_and_si128(Upper, _mm_set1_epi8(13)));
    const __m128i Chars = _mm_add_epi8(_mm_shuffle_epi8(Offsets, Range), Values);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(D), Chars);
    S += 12;
    D += 16;
  }
  Src = S;
  Dst = D;
}

// 16 characters to 12 bytes per step while 32 are left, up to the first block holding a byte
// outside the shared alphabet (A-Z a-z 0-9 + - / _). A byte is in it when the bit sets of its
// low and high nibble meet; its value is the byte plus an offset chosen by the high nibble,
// corrected for "-", "/" and "_". Each step stores 16 bytes of which the last 4 are rewritten
// by the next, which the 32-character margin keeps inside the reserved capacity.
__attribute__((target("ssse3"))) void DecodeBlocksSsse3(const uint8_t*& Src, const uint8_t* End,
                                                        uint8_t*& Dst) {
  // Bit 0: + - / (high 2); bit 1: digits (high 3); bit 2: high 4 and 6 but not 0;
  // bit 3: high 5 and 7 up to A; bit 4: "_" (high 5).
  const __m128i LowBits =
      _mm_setr_epi8(2 | 8, 2 | 4 | 8, 2 | 4 | 8, 2 | 4 | 8, 2 | 4 | 8, 2 | 4 | 8, 2 | 4 | 8,
                    2 | 4 | 8, 2 | 4 | 8, 2 | 4 | 8, 4 | 8, 1 | 4, 4, 1 | 4, 4, 1 | 4 | 16);
  const __m128i HighBits = _mm_setr_epi8(0, 0, 1, 2, 4, 8 | 16, 4, 8, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m128i HighOffsets = _mm_setr_epi8(0, 0, 62 - '+', 52 - '0', -'A', -'A', 26 - 'a',
                                            26 - 'a', 0, 0, 0, 0, 0, 0, 0, 0);
  const __m128i Nibble = _mm_set1_epi8(0x0F);
  const uint8_t* S = Src;
  uint8_t* D = Dst;
  while (End - S >= 32) {
    const __m128i C = _mm_loadu_si128(reinterpret_cast<const __m128i*>(S));
    const __m128i High = _mm_and_si128(_mm_srli_epi32(C, 4), Nibble);
    const __m128i Low = _mm_and_si128(C, Nibble);
    const __m128i Member =
        _mm_and_si128(_mm_shuffle_epi8(LowBits, Low), _mm_shuffle_epi8(HighBits, High));
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(Member, _mm_setzero_si128())) != 0) break;
    __m128i Offset = _mm_shuffle_epi8(HighOffsets, High);
    Offset = _mm_add_epi8(
        Offset, _mm_and_si128(_mm_cmpeq_epi8(C, _mm_set1_epi8('-')), _mm_set1_epi8(('+' - '-'))));
    Offset = _mm_add_epi8(Offset, _mm_and_si128(_mm_cmpeq_epi8(C, _mm_set1_epi8('/')),
                                                _mm_set1_epi8(('+' - '/') + 1)));
    Offset = _mm_add_epi8(Offset, _mm_and_si128(_mm_cmpeq_epi8(C, _mm_set1_epi8('_')),
                                                _mm_set1_epi8(char(('A' - '_') + 63))));
    const __m128i Values = _mm_add_epi8(C, Offset);
    const __m128i Pairs = _mm_maddubs_epi16(Values, _mm_set1_epi32(0x01400140));
    const __m128i Words = _mm_madd_epi16(Pairs, _mm_set1_epi32(0x00011000));
    const __m128i Bytes = _mm_shuffle_epi8(
        Words, _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(D), Bytes);
    S += 16;
    D += 12;
  }
  Src = S;
  Dst = D;
}

#endif

} // namespace

TKxBase64Encoding::TKxBase64Encoding() : TKxBase64Encoding(StandardAlphabet, '=') {}

TKxBase64UrlEncoding::TKxBase64UrlEncoding() : TKxBase64Encoding(UrlAlphabet, 0) {}

TKxBase64Encoding::TKxBase64Encoding(const char* Alphabet, AnsiChar Pad) : FPad(Pad) {
  std::memcpy(FEncodeTable, Alphabet, 64);
  // One table for both alphabets: "+" and "-" are 62, "/" and "_" are 63.
  for (int32_t& V : FDecodeTable) V = InvalidChar;
  for (int I = 0; I < 26; ++I) {
    FDecodeTable['A' + I] = I;
    FDecodeTable['a' + I] = 26 + I;
  }
  for (int I = 0; I < 10; ++I) FDecodeTable['0' + I] = 52 + I;
  FDecodeTable[uint8_t('+')] = FDecodeTable[uint8_t('-')] = 62;
  FDecodeTable[uint8_t('/')] = FDecodeTable[uint8_t('_')] = 63;

#if defined(KX_X86_VECTORS)
  // The vector encoder knows the values up to 61 by their standard characters.
  FVectorEncode = detail::CpuHasSsse3() && std::memcmp(FEncodeTable, StandardAlphabet, 62) == 0;
  FVectorDecode = detail::CpuHasSsse3();
#endif

  for (int I = 0; I < 4096; ++I) {
    const uint8_t Pair[2] = {FEncodeTable[I >> 6], FEncodeTable[I & 63]};
    std::memcpy(&FEncodePairs[I], Pair, 2);
  }
  // A group a b c d gives the bytes a<<2|b>>4, b<<4|c>>2, c<<6|d: each table holds its
  // character's share of those three bytes at their places in a little-endian word.
  for (int C = 0; C < 256; ++C) {
    const int32_t V = FDecodeTable[C];
    if (V == InvalidChar) {
      for (auto& Table : FDecodeGroup) Table[C] = GroupInvalid;
      continue;
    }
    const uint32_t U = uint32_t(V);
    FDecodeGroup[0][C] = U << 2;
    FDecodeGroup[1][C] = (U >> 4) | ((U & 0x0F) << 12);
    FDecodeGroup[2][C] = ((U >> 2) << 8) | ((U & 0x03) << 22);
    FDecodeGroup[3][C] = U << 16;
  }
}

int32_t TKxBase64Encoding::EncodedCapacity(int32_t Size) const {
  return int32_t((int64_t(Size) + 2) / 3 * 4);
}

int32_t TKxBase64Encoding::EncodeBuffer(const uint8_t* Input, int32_t Size, uint8_t* Output) const {
  const uint8_t* S = Input;
  const uint8_t* const End = Input + Size;
  uint8_t* D = Output;
  const uint16_t* const Pairs = FEncodePairs;
#if defined(KX_X86_VECTORS)
  if (FVectorEncode) EncodeBlocksSsse3(S, End, D, FEncodeTable[62], FEncodeTable[63]);
#endif

  // 12 bytes to 16 characters per round, from two 8-byte loads of which 6 bytes each are
  // used; the loads may look 2 bytes past the 12, so the round needs 14 bytes left.
  while (End - S >= 14) {
    const uint64_t A = LoadBigEndian64(S) >> 16;
    const uint64_t B = LoadBigEndian64(S + 6) >> 16;
    const uint64_t W0 =
        uint64_t(Pairs[(A >> 36) & 0xFFF]) | (uint64_t(Pairs[(A >> 24) & 0xFFF]) << 16) |
        (uint64_t(Pairs[(A >> 12) & 0xFFF]) << 32) | (uint64_t(Pairs[A & 0xFFF]) << 48);
    const uint64_t W1 =
        uint64_t(Pairs[(B >> 36) & 0xFFF]) | (uint64_t(Pairs[(B >> 24) & 0xFFF]) << 16) |
        (uint64_t(Pairs[(B >> 12) & 0xFFF]) << 32) | (uint64_t(Pairs[B & 0xFFF]) << 48);
    std::memcpy(D, &W0, 8);
    std::memcpy(D + 8, &W1, 8);
    S += 12;
    D += 16;
  }
  while (End - S >= 3) {
    const uint32_t V = (uint32_t(S[0]) << 16) | (uint32_t(S[1]) << 8) | S[2];
    std::memcpy(D, &Pairs[V >> 12], 2);
    std::memcpy(D + 2, &Pairs[V & 0xFFF], 2);
    S += 3;
    D += 4;
  }

  const ptrdiff_t Rest = End - S;
  if (Rest == 1) {
    const uint32_t V = uint32_t(S[0]) << 4;
    *D++ = FEncodeTable[V >> 6];
    *D++ = FEncodeTable[V & 63];
    if (FPad) {
      *D++ = uint8_t(FPad);
      *D++ = uint8_t(FPad);
    }
  } else if (Rest == 2) {
    const uint32_t V = ((uint32_t(S[0]) << 8) | S[1]) << 2;
    *D++ = FEncodeTable[V >> 12];
    *D++ = FEncodeTable[(V >> 6) & 63];
    *D++ = FEncodeTable[V & 63];
    if (FPad) *D++ = uint8_t(FPad);
  }
  return int32_t(D - Output);
}

int32_t TKxBase64Encoding::DecodedCapacity(int32_t Size) const {
  // The length rule looks at the raw input, before anything is skipped.
  int64_t L = Size;
  switch (L % 4) {
  case 1:
    throw Exception(SInvalidBase64Data);
  case 2:
    L += 2;
    break;
  case 3:
    L += 1;
    break;
  default:
    break;
  }
  return int32_t(L / 4 * 3);
}

int32_t TKxBase64Encoding::DecodeBuffer(const uint8_t* Input, int32_t Size, uint8_t* Output) const {
  const uint8_t* S = Input;
  const uint8_t* const End = Input + Size;
  uint8_t* D = Output;
  const uint32_t* const T0 = FDecodeGroup[0];
  const uint32_t* const T1 = FDecodeGroup[1];
  const uint32_t* const T2 = FDecodeGroup[2];
  const uint32_t* const T3 = FDecodeGroup[3];
  uint32_t Acc = 0;
  int Pending = 0;
  // One character the exact way: skipped when outside the alphabet.
  const auto DecodeOne = [&](uint8_t C) {
    const int32_t V = FDecodeTable[C];
    if (V == InvalidChar) return;
    Acc = (Acc << 6) | uint32_t(V);
    if (++Pending == 4) {
      D[0] = uint8_t(Acc >> 16);
      D[1] = uint8_t(Acc >> 8);
      D[2] = uint8_t(Acc);
      D += 3;
      Acc = 0;
      Pending = 0;
    }
  };

  // Whole groups go 16 characters at a time while no partial group is pending. Each group
  // stores a 4-byte word of which the 4th byte is rewritten by the next group; the 24-byte
  // margin keeps the last word inside the capacity reserved for the input's length.
  while (End - S >= 24) {
    if (Pending == 0) {
#if defined(KX_X86_VECTORS)
      if (FVectorDecode && End - S >= 32) {
        DecodeBlocksSsse3(S, End, D);
        if (End - S < 24) break;
      }
#endif
      const uint32_t G0 = T0[S[0]] | T1[S[1]] | T2[S[2]] | T3[S[3]];
      const uint32_t G1 = T0[S[4]] | T1[S[5]] | T2[S[6]] | T3[S[7]];
      const uint32_t G2 = T0[S[8]] | T1[S[9]] | T2[S[10]] | T3[S[11]];
      const uint32_t G3 = T0[S[12]] | T1[S[13]] | T2[S[14]] | T3[S[15]];
      if (((G0 | G1 | G2 | G3) & GroupInvalid) == 0) {
        std::memcpy(D, &G0, 4);
        std::memcpy(D + 3, &G1, 4);
        std::memcpy(D + 6, &G2, 4);
        std::memcpy(D + 9, &G3, 4);
        S += 16;
        D += 12;
        continue;
      }
      if ((G0 & GroupInvalid) == 0) {
        std::memcpy(D, &G0, 4);
        S += 4;
        D += 3;
        continue;
      }
    }
    DecodeOne(*S++);
  }
  while (S < End) DecodeOne(*S++);
  // 3 pending values make 2 bytes, 2 make 1, a single one is dropped.
  if (Pending == 3) {
    Acc <<= 6;
    *D++ = uint8_t(Acc >> 16);
    *D++ = uint8_t(Acc >> 8);
  } else if (Pending == 2) {
    Acc <<= 12;
    *D++ = uint8_t(Acc >> 16);
  }
  return int32_t(D - Output);
}

int32_t TKxBase64Encoding::Decode(const TBytes& Input, TStream* Output) {
  return DecodeToStream(Input.data(), int32_t(Input.size()), Output);
}

int32_t TKxBase64Encoding::Decode(const AnsiString& Input, TStream* Output) {
  return DecodeToStream(Input.data(), int32_t(Input.size()), Output);
}

AnsiString TKxBase64Encoding::EncodeBytesToString(TStream* Input) {
  const TBytes Encoded = Encode(Input);
  return AnsiString(Encoded.begin(), Encoded.end());
}

} // namespace kx
