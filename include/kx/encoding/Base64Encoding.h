// SPDX-License-Identifier: MIT
#pragma once
// Base64 in its standard and URL-safe alphabets. Both decode with one shared table, so either
// decoder takes either alphabet, and any byte outside it (padding, line breaks, spaces) is
// skipped.

#include <kx/encoding/NetEncoding.h>

namespace kx {

inline constexpr const char* SInvalidBase64Data = "Invalid Base64 data!";

class KX_API TKxBase64Encoding : public TNetEncodingEx {
  KX_CLASS(TKxBase64Encoding, TNetEncodingEx)
public:
  TKxBase64Encoding();

  using TNetEncodingEx::Decode;
  using TNetEncodingEx::Encode;
  using TNetEncodingEx::EncodeBytesToString;

  AnsiString Encode64(const AnsiString& Input) { return DoEncode(Input); }
  // Decode into the caller's stream at its position; the result is the bytes written.
  int32_t Decode(const TBytes& Input, TStream* Output);
  int32_t Decode(const AnsiString& Input, TStream* Output);
  int32_t DecodeStringToStream(const AnsiString& Input, TStream* Output) {
    return Decode(Input, Output);
  }
  // Encodes Input from its position to its end.
  AnsiString EncodeBytesToString(TStream* Input);

  // The value of a decode-table entry for a byte outside the alphabet.
  static constexpr int32_t InvalidChar = 255;

protected:
  TKxBase64Encoding(const char* Alphabet, AnsiChar Pad);

  int32_t EncodedCapacity(int32_t Size) const override;
  int32_t EncodeBuffer(const uint8_t* Input, int32_t Size, uint8_t* Output) const override;
  int32_t DecodedCapacity(int32_t Size) const override;
  int32_t DecodeBuffer(const uint8_t* Input, int32_t Size, uint8_t* Output) const override;

  uint8_t FEncodeTable[64];
  int32_t FDecodeTable[256];
  // Written after a partial final group; 0 writes none.
  AnsiChar FPad;

private:
  // Lookup tables derived from the two above for whole-group work: two output characters
  // per 12 input bits, and each input byte's bits already in place for each of the four
  // positions of a group (an invalid byte sets the top byte).
  uint16_t FEncodePairs[4096];
  uint32_t FDecodeGroup[4][256];
  // Whole blocks go through the processor's vector unit where it can.
  bool FVectorEncode = false;
  bool FVectorDecode = false;
};

// Base64 with "-" and "_" for the last two values and no padding.
class KX_API TKxBase64UrlEncoding : public TKxBase64Encoding {
  KX_CLASS(TKxBase64UrlEncoding, TKxBase64Encoding)
public:
  TKxBase64UrlEncoding();
};

} // namespace kx
