// SPDX-License-Identifier: MIT
// The forms every codec offers, each over the codec's buffer-to-buffer primitives.
#include <kx/encoding/NetEncoding.h>

#include "encoding/StreamBuffers.h"

namespace kx {

KX_IMPLEMENT_CLASS(TNetEncoding, TObject, "uKxNetEncoding")
KX_IMPLEMENT_CLASS(TNetEncodingEx, TNetEncoding, "uKxNetEncoding")

namespace {

// The line the unit's capacity assertion reports.
constexpr int32_t CapacityAssertLine = 412;

inline const uint8_t* Bytes(const void* P) {
  return static_cast<const uint8_t*>(P);
}

// Output sized once from the bound and trimmed once to what was produced. The bytes are
// written into the result's own storage: no intermediate copy.
template <class R, class F>
R Produce(int32_t Capacity, F Fill) {
  R Result;
  if (Capacity <= 0) return Result;
  Result.resize(size_t(Capacity));
  const int32_t N = Fill(reinterpret_cast<uint8_t*>(Result.data()));
  KxAssert(N <= Capacity, SAssertionFailed, SNetEncodingUnit, CapacityAssertLine);
  Result.resize(size_t(N));
  return Result;
}

} // namespace

TBytes TNetEncodingEx::Encode(TStream* Input) {
  detail::TKxReadBuffer In(Input);
  return Encode(In.Data(), In.Count());
}

TBytes TNetEncodingEx::Encode(const void* Input, int32_t Size) {
  return Produce<TBytes>(EncodedCapacity(Size),
                         [&](uint8_t* Out) { return EncodeBuffer(Bytes(Input), Size, Out); });
}

AnsiString TNetEncodingEx::EncodeA(const void* Input, int32_t Size) {
  return Produce<AnsiString>(EncodedCapacity(Size),
                             [&](uint8_t* Out) { return EncodeBuffer(Bytes(Input), Size, Out); });
}

TBytes TNetEncodingEx::Decode(TStream* Input) {
  detail::TKxReadBuffer In(Input);
  return Decode(In.Data(), In.Count());
}

TBytes TNetEncodingEx::Decode(const void* Input, int32_t Size) {
  if (Size <= 0) return {};
  return Produce<TBytes>(DecodedCapacity(Size),
                         [&](uint8_t* Out) { return DecodeBuffer(Bytes(Input), Size, Out); });
}

int32_t TNetEncodingEx::DoEncode(TStream* Input, TStream* Output) {
  detail::TKxReadBuffer In(Input);
  return EncodeToStream(In.Data(), In.Count(), Output);
}

TBytes TNetEncodingEx::DoEncode(const TBytes& Input) {
  return Encode(Input.data(), int32_t(Input.size()));
}

AnsiString TNetEncodingEx::DoEncode(const AnsiString& Input) {
  return EncodeA(Input.data(), int32_t(Input.size()));
}

AnsiString TNetEncodingEx::DoEncodeBytesToString(const TBytes& Input) {
  return EncodeA(Input.data(), int32_t(Input.size()));
}

AnsiString TNetEncodingEx::DoEncodeBytesToString(const void* Input, int32_t Size) {
  return EncodeA(Input, Size);
}

int32_t TNetEncodingEx::DoDecode(TStream* Input, TStream* Output) {
  detail::TKxReadBuffer In(Input);
  return DecodeToStream(In.Data(), In.Count(), Output);
}

TBytes TNetEncodingEx::DoDecode(const TBytes& Input) {
  return Decode(Input.data(), int32_t(Input.size()));
}

AnsiString TNetEncodingEx::DoDecode(const AnsiString& Input) {
  const int32_t Size = int32_t(Input.size());
  if (Size == 0) return {};
  return Produce<AnsiString>(DecodedCapacity(Size), [&](uint8_t* Out) {
    return DecodeBuffer(Bytes(Input.data()), Size, Out);
  });
}

TBytes TNetEncodingEx::DoDecodeStringToBytes(const AnsiString& Input) {
  return Decode(Input.data(), int32_t(Input.size()));
}

int32_t TNetEncodingEx::EncodeToStream(const void* Input, int32_t Size, TStream* Output) {
  const int32_t Capacity = EncodedCapacity(Size);
  if (Capacity <= 0) return 0;
  detail::TKxWriteBuffer Out(Output, Capacity);
  const int32_t N = EncodeBuffer(Bytes(Input), Size, Out.Data());
  KxAssert(N <= Capacity, SAssertionFailed, SNetEncodingUnit, CapacityAssertLine);
  Out.Commit(N);
  return N;
}

int32_t TNetEncodingEx::DecodeToStream(const void* Input, int32_t Size, TStream* Output) {
  if (Size <= 0) return 0;
  const int32_t Capacity = DecodedCapacity(Size);
  if (Capacity <= 0) return 0;
  detail::TKxWriteBuffer Out(Output, Capacity);
  const int32_t N = DecodeBuffer(Bytes(Input), Size, Out.Data());
  Out.Commit(N);
  return N;
}

} // namespace kx
