// SPDX-License-Identifier: MIT
#pragma once
// Upper-case hexadecimal, two digits per byte. Decoding is lenient: a character that is not a
// hexadecimal digit counts as 0 and a final odd character is ignored.

#include <kx/encoding/NetEncoding.h>

namespace kx {

class KX_API TKxHexEncoding : public TNetEncodingEx {
  KX_CLASS(TKxHexEncoding, TNetEncodingEx)
public:
  TKxHexEncoding() = default;

protected:
  int32_t EncodedCapacity(int32_t Size) const override;
  int32_t EncodeBuffer(const uint8_t* Input, int32_t Size, uint8_t* Output) const override;
  int32_t DecodedCapacity(int32_t Size) const override;
  int32_t DecodeBuffer(const uint8_t* Input, int32_t Size, uint8_t* Output) const override;

  // Enlarges Output by half the remaining input first, then writes the decoded bytes at
  // Output's position.
  int32_t DoDecode(TStream* Input, TStream* Output) override;
  using TNetEncodingEx::DoDecode;
};

} // namespace kx
