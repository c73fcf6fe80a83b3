// SPDX-License-Identifier: MIT
#pragma once
// The common interface of the binary-to-text codecs: streams, byte arrays, raw buffers and
// 8-bit strings in, fresh values out.

#include <kx/rtl/Object.h>
#include <kx/rtl/Streams.h>

namespace kx {

inline constexpr const char* SNetEncodingUnit =
    "source\\ComponentSets\\Components\\common\\uKxNetEncoding";

class KX_API TNetEncoding : public TObject {
  KX_CLASS(TNetEncoding, TObject)
public:
  // Encodes Input from its position to its end; the result is the bytes written to Output.
  int32_t Encode(TStream* Input, TStream* Output) { return DoEncode(Input, Output); }
  TBytes Encode(const TBytes& Input) { return DoEncode(Input); }
  AnsiString Encode(const AnsiString& Input) { return DoEncode(Input); }
  AnsiString EncodeBytesToString(const TBytes& Input) { return DoEncodeBytesToString(Input); }
  AnsiString EncodeBytesToString(const void* Input, int32_t Size) {
    return DoEncodeBytesToString(Input, Size);
  }

  // Decodes Input from its position to its end; the result is the bytes written to Output.
  int32_t Decode(TStream* Input, TStream* Output) { return DoDecode(Input, Output); }
  TBytes Decode(const TBytes& Input) { return DoDecode(Input); }
  // The decoded bytes, as a raw 8-bit string.
  AnsiString Decode(const AnsiString& Input) { return DoDecode(Input); }
  TBytes DecodeStringToBytes(const AnsiString& Input) { return DoDecodeStringToBytes(Input); }

protected:
  TNetEncoding() = default;

  virtual int32_t DoEncode(TStream* Input, TStream* Output) = 0;
  virtual TBytes DoEncode(const TBytes& Input) = 0;
  virtual AnsiString DoEncode(const AnsiString& Input) = 0;
  virtual AnsiString DoEncodeBytesToString(const TBytes& Input) = 0;
  virtual AnsiString DoEncodeBytesToString(const void* Input, int32_t Size) = 0;
  virtual int32_t DoDecode(TStream* Input, TStream* Output) = 0;
  virtual TBytes DoDecode(const TBytes& Input) = 0;
  virtual AnsiString DoDecode(const AnsiString& Input) = 0;
  virtual TBytes DoDecodeStringToBytes(const AnsiString& Input) = 0;
};

// A codec that also works on a whole stream or a raw buffer. Every form runs through one
// buffer-to-buffer primitive per direction: the output is sized once from the codec's
// bound and trimmed once to what was produced.
class KX_API TNetEncodingEx : public TNetEncoding {
  KX_CLASS(TNetEncodingEx, TNetEncoding)
public:
  using TNetEncoding::Decode;
  using TNetEncoding::Encode;

  // Encodes Input from its position to its end.
  TBytes Encode(TStream* Input);
  TBytes Encode(const void* Input, int32_t Size);
  AnsiString EncodeA(const void* Input, int32_t Size);
  // Decodes Input from its position to its end.
  TBytes Decode(TStream* Input);
  TBytes Decode(const void* Input, int32_t Size);

protected:
  TNetEncodingEx() = default;

  // The most bytes encoding Size input bytes can produce.
  virtual int32_t EncodedCapacity(int32_t Size) const = 0;
  // Encodes Size bytes at Input into Output (room for EncodedCapacity); returns the count.
  virtual int32_t EncodeBuffer(const uint8_t* Input, int32_t Size, uint8_t* Output) const = 0;
  // The most bytes decoding Size input bytes can produce; raises when Size can never be
  // valid input.
  virtual int32_t DecodedCapacity(int32_t Size) const = 0;
  // Decodes Size bytes at Input into Output (room for DecodedCapacity); returns the count.
  virtual int32_t DecodeBuffer(const uint8_t* Input, int32_t Size, uint8_t* Output) const = 0;

  int32_t DoEncode(TStream* Input, TStream* Output) override;
  TBytes DoEncode(const TBytes& Input) override;
  AnsiString DoEncode(const AnsiString& Input) override;
  AnsiString DoEncodeBytesToString(const TBytes& Input) override;
  AnsiString DoEncodeBytesToString(const void* Input, int32_t Size) override;
  int32_t DoDecode(TStream* Input, TStream* Output) override;
  TBytes DoDecode(const TBytes& Input) override;
  AnsiString DoDecode(const AnsiString& Input) override;
  TBytes DoDecodeStringToBytes(const AnsiString& Input) override;

  // Encodes or decodes Size bytes at Input into Output at its position, in place when Output
  // is a memory stream; returns the bytes written.
  int32_t EncodeToStream(const void* Input, int32_t Size, TStream* Output);
  int32_t DecodeToStream(const void* Input, int32_t Size, TStream* Output);
};

} // namespace kx
