// SPDX-License-Identifier: MIT
// Bytes between buffers, byte arrays, streams and their textual forms.
#include <kx/classes/BufferConversions.h>
#include <kx/classes/MemoryStream.h>
#include <kx/classes/ObjectEx.h>
#include <kx/encoding/KxNetEncoding.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace kx {

namespace {
constexpr const char* SOutOfMemory = "Out of memory";
constexpr int32_t HexToStreamAssertLine = 1391;

// A std::malloc copy of Bytes; null when it is empty.
void* CopyToBuf(const TBytes& Bytes, uint32_t& Size) {
  Size = uint32_t(Bytes.size());
  if (Bytes.empty()) return nullptr;
  void* P = std::malloc(Bytes.size());
  if (!P) throw EOutOfMemory(SOutOfMemory);
  std::memcpy(P, Bytes.data(), Bytes.size());
  return P;
}

// Encodes the rest of Stream and leaves Stream at its end.
AnsiString EncodeStream(TNetEncodingEx* Encoding, TStream* Stream) {
  void* Buf = nullptr;
  int64_t Count = 0;
  const bool Owned = KxStreamToReadBuf(Stream, Buf, Count);
  AnsiString Result;
  try {
    Result = Encoding->EncodeA(Buf, int32_t(std::min<int64_t>(Count, INT32_MAX)));
  } catch (...) {
    if (Owned) std::free(Buf);
    throw;
  }
  if (Owned)
    std::free(Buf);
  else
    Stream->Seek(int64_t(0), soEnd);
  return Result;
}

// Decodes Text into Stream at its position; the text is read in place.
void DecodeToStream(TNetEncodingEx* Encoding, const AnsiString& Text, TStream* Stream) {
  TKxMemoryStream Input(const_cast<char*>(Text.data()), uint32_t(Text.size()));
  Encoding->Decode(&Input, Stream);
}
} // namespace

TBytes KxBufToByteArr(const void* Buf, uint32_t Size) {
  if (Size == 0) return {};
  const uint8_t* P = static_cast<const uint8_t*>(Buf);
  return TBytes(P, P + Size);
}

void* KxByteArrToBuf(const TBytes& Bytes, uint32_t& Size) {
  return CopyToBuf(Bytes, Size);
}

void KxReverseBuffer(void* Buf, uint32_t Size) {
  if (Size == 0) return;
  uint8_t* P = static_cast<uint8_t*>(Buf);
  std::reverse(P, P + Size);
}

// --- hexadecimal ------------------------------------------------------------------------

AnsiString KxBufToHex(const void* Buf, uint32_t Size) {
  return TKxNetEncoding::Hex()->EncodeA(Buf, int32_t(Size));
}

AnsiString KxBufToHex(const TBytes& Bytes) {
  return TKxNetEncoding::Hex()->EncodeBytesToString(Bytes);
}

AnsiString KxBufToHex(TStream* Stream) {
  return EncodeStream(TKxNetEncoding::Hex(), Stream);
}

void* KxHexToBuf(const AnsiString& Text, uint32_t& Size) {
  return CopyToBuf(KxHexToBuf(Text), Size);
}

TBytes KxHexToBuf(const AnsiString& Text) {
  return TKxNetEncoding::Hex()->DecodeStringToBytes(Text);
}

TStream* KxHexToBuf(const AnsiString& Text, TStream* Stream) {
  KxAssert(Stream != nullptr, SAssertionFailed, SClassesUnit, HexToStreamAssertLine);
  Stream->SetSize(int64_t(0));
  Stream->SetPosition(0);
  DecodeToStream(TKxNetEncoding::Hex(), Text, Stream);
  return Stream;
}

// --- any binary encoding ----------------------------------------------------------------

AnsiString KxBufToString(const void* Buf, uint32_t Size, TKxBinEncoding Encoding) {
  return TKxNetEncoding::GetEncoding(Encoding)->EncodeA(Buf, int32_t(Size));
}

AnsiString KxBufToString(const TBytes& Bytes, TKxBinEncoding Encoding) {
  if (Bytes.empty()) return {};
  return TKxNetEncoding::GetEncoding(Encoding)->EncodeBytesToString(Bytes);
}

AnsiString KxBufToString(TStream* Stream, TKxBinEncoding Encoding) {
  return EncodeStream(TKxNetEncoding::GetEncoding(Encoding), Stream);
}

TBytes KxStringToBuf(const AnsiString& Text, TKxBinEncoding Encoding) {
  return TKxNetEncoding::GetEncoding(Encoding)->DecodeStringToBytes(Text);
}

void* KxStringToBuf(const AnsiString& Text, TKxBinEncoding Encoding, uint32_t& Size) {
  return CopyToBuf(KxStringToBuf(Text, Encoding), Size);
}

TStream* KxStringToBuf(const AnsiString& Text, TKxBinEncoding Encoding, TStream* Stream) {
  DecodeToStream(TKxNetEncoding::GetEncoding(Encoding), Text, Stream);
  return Stream;
}

} // namespace kx
