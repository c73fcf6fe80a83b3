// SPDX-License-Identifier: MIT
// The free Base64 functions over the shared codec instances.
#include <kx/encoding/KxBase64.h>

#include <kx/encoding/KxNetEncoding.h>

#include <cstdlib>
#include <cstring>

namespace kx {

namespace {

constexpr const char* SOutOfMemory = "Out of memory";

TKxBase64Encoding* B64() {
  return TKxNetEncoding::Base64Ex();
}

TKxBase64Encoding* B64Url() {
  return TKxNetEncoding::Base64Url();
}

} // namespace

void KxEncodeBase64(TStream* Input, TStream* Output) {
  B64()->Encode(Input, Output);
}
AnsiString KxEncodeBase64(TStream* Input) {
  return B64()->EncodeBytesToString(Input);
}
AnsiString KxEncodeBase64(const AnsiString& S) {
  return B64()->Encode(S);
}
AnsiString KxEncodeBase64(const UnicodeString& S) {
  return B64()->Encode(UTF8Encode(S));
}
AnsiString KxEncodeBase64(const TBytes& Bytes) {
  return B64()->EncodeBytesToString(Bytes);
}
AnsiString KxEncodeBase64(const void* Buffer, int32_t Size) {
  return B64()->EncodeA(Buffer, Size);
}

void KxEncodeBase64Url(TStream* Input, TStream* Output) {
  B64Url()->Encode(Input, Output);
}
AnsiString KxEncodeBase64Url(TStream* Input) {
  return B64Url()->EncodeBytesToString(Input);
}
AnsiString KxEncodeBase64Url(const AnsiString& S) {
  return B64Url()->Encode(S);
}
AnsiString KxEncodeBase64Url(const UnicodeString& S) {
  return B64Url()->Encode(UTF8Encode(S));
}
AnsiString KxEncodeBase64Url(const TBytes& Bytes) {
  return B64Url()->EncodeBytesToString(Bytes);
}
AnsiString KxEncodeBase64Url(const void* Buffer, int32_t Size) {
  return B64Url()->EncodeA(Buffer, Size);
}

void KxDecodeBase64(const AnsiString& S, TStream* Output) {
  B64()->Decode(S, Output);
}
void KxDecodeBase64(TStream* Input, TStream* Output) {
  B64()->Decode(Input, Output);
}
TBytes KxDecodeBase64(const UnicodeString& S) {
  return B64()->DecodeStringToBytes(UTF8Encode(S));
}
AnsiString KxDecodeBase64(const AnsiString& S) {
  return B64()->Decode(S);
}
void* KxDecodeBase64(const AnsiString& S, int32_t& Size) {
  const TBytes Bytes = B64()->DecodeStringToBytes(S);
  Size = int32_t(Bytes.size());
  if (Bytes.empty()) return nullptr;
  void* P = std::malloc(Bytes.size());
  if (!P) throw EOutOfMemory(SOutOfMemory);
  std::memcpy(P, Bytes.data(), Bytes.size());
  return P;
}

} // namespace kx
