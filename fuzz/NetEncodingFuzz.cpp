// SPDX-License-Identifier: MIT
// Base64, Base64url, hexadecimal and URL decoding in every form the library offers. The
// first byte picks the codec and the largest read of the short-reading input stream; the
// rest is the text to decode. Every form must give the same bytes or the same error, and
// what decodes must come back from its own encoding.
#include <kx/classes/BufferConversions.h>
#include <kx/classes/MemoryStream.h>
#include <kx/uKxNetEncoding.h>

#include "FuzzSupport.h"

#include <cstring>

using namespace kx;
using kxfuzz::Try;

namespace {

std::string AsString(const TBytes& B) {
  return std::string(B.begin(), B.end());
}

TBytes AsBytes(const std::string& S) {
  return TBytes(S.begin(), S.end());
}

// The bytes written to a memory stream.
std::string ContentOf(TStream* S) {
  std::string Bytes(size_t(S->Size()), '\0');
  S->SetPosition(0);
  if (!Bytes.empty()) S->ReadBuffer(Bytes.data(), int32_t(Bytes.size()));
  return Bytes;
}

void CheckCodec(TNetEncodingEx* Codec, TKxBinEncoding Kind, const std::string& Text,
                int32_t MaxMove) {
  const auto ByString = Try([&] { return std::string(Codec->Decode(AnsiString(Text))); });
  const auto ByBytes = Try([&] { return AsString(Codec->Decode(AsBytes(Text))); });
  const auto ByStringToBytes =
      Try([&] { return AsString(Codec->DecodeStringToBytes(AnsiString(Text))); });
  const auto ByBuffer =
      Try([&] { return AsString(Codec->Decode(Text.data(), int32_t(Text.size()))); });
  const auto ByInputStream = Try([&] {
    auto In = kxfuzz::ShortReaderOf(Text, MaxMove);
    return AsString(Codec->Decode(In.get()));
  });
  const auto ByStreams = Try([&] {
    auto In = kxfuzz::ShortReaderOf(Text, MaxMove);
    kxfuzz::TOwned<TKxMemoryStream> Out(TKxMemoryStream::Create(uint32_t(64)));
    const int32_t Written = Codec->Decode(In.get(), Out.get());
    std::string Bytes = ContentOf(Out.get());
    KX_FUZZ_CHECK(size_t(Written) == Bytes.size());
    return Bytes;
  });
  const auto ByStreamsShort = Try([&] {
    auto In = kxfuzz::MemoryOf(Text);
    auto Out = kxfuzz::ShortReaderOf("", MaxMove); // writes of at most MaxMove bytes too
    Codec->Decode(In.get(), Out.get());
    return ContentOf(Out->Inner());
  });
  const auto ByBufferConversion =
      Try([&] { return AsString(KxStringToBuf(AnsiString(Text), Kind)); });

  KX_FUZZ_CHECK(ByBytes == ByString);
  KX_FUZZ_CHECK(ByStringToBytes == ByString);
  KX_FUZZ_CHECK(ByBuffer == ByString);
  KX_FUZZ_CHECK(ByInputStream == ByString);
  KX_FUZZ_CHECK(ByStreams == ByString);
  KX_FUZZ_CHECK(ByStreamsShort == ByString);
  KX_FUZZ_CHECK(ByBufferConversion == ByString);

  // The input taken as bytes comes back through every encoding form.
  const std::string Encoded = Codec->Encode(AnsiString(Text));
  KX_FUZZ_CHECK(AsString(Codec->Encode(AsBytes(Text))) == Encoded);
  KX_FUZZ_CHECK(std::string(Codec->EncodeA(Text.data(), int32_t(Text.size()))) == Encoded);
  KX_FUZZ_CHECK(std::string(KxBufToString(Text.data(), uint32_t(Text.size()), Kind)) == Encoded);
  {
    auto In = kxfuzz::ShortReaderOf(Text, MaxMove);
    KX_FUZZ_CHECK(std::string(KxBufToString(In.get(), Kind)) == Encoded);
  }
  {
    auto In = kxfuzz::ShortReaderOf(Text, MaxMove);
    kxfuzz::TOwned<TKxMemoryStream> Out(TKxMemoryStream::Create(uint32_t(64)));
    KX_FUZZ_CHECK(size_t(Codec->Encode(In.get(), Out.get())) == Encoded.size());
    KX_FUZZ_CHECK(ContentOf(Out.get()) == Encoded);
  }
  KX_FUZZ_CHECK(std::string(Codec->Decode(AnsiString(Encoded))) == Text);
  if (ByString.Value)
    KX_FUZZ_CHECK(std::string(Codec->Decode(Codec->Encode(*ByString.Value))) == *ByString.Value);
}

void CheckHexText(const std::string& Text) {
  // The lenient reading: two digits a byte, a non-digit counts as 0, an odd last digit is
  // ignored; it never fails.
  const TBytes Bytes = KxHexToBuf(AnsiString(Text));
  KX_FUZZ_CHECK(Bytes.size() == Text.size() / 2);
  uint32_t Size = 0;
  void* Raw = KxHexToBuf(AnsiString(Text), Size);
  KX_FUZZ_CHECK(Size == Bytes.size() && (Size == 0 || std::memcmp(Raw, Bytes.data(), Size) == 0));
  std::free(Raw);
  auto Out = kxfuzz::MemoryOf("leftover");
  KxHexToBuf(AnsiString(Text), Out.get());
  KX_FUZZ_CHECK(ContentOf(Out.get()) == AsString(Bytes));
  // Written back as upper-case digits it reads the same.
  const AnsiString Digits = KxBufToHex(Bytes);
  KX_FUZZ_CHECK(Digits.size() == 2 * Bytes.size());
  KX_FUZZ_CHECK(KxHexToBuf(Digits) == Bytes);
}

void CheckUrl(const std::string& Text) {
  const auto Decoded = Try([&] { return std::string(TURLEncoding::Decode(AnsiString(Text))); });
  // Decoding never makes text longer; what decodes encodes to something that decodes back.
  if (Decoded.Value) KX_FUZZ_CHECK(Decoded.Value->size() <= Text.size());
  const AnsiString Encoded = TURLEncoding::Encode(AnsiString(Text));
  // "%" itself is not escaped, so only text without it comes back whole.
  if (Text.find('%') == std::string::npos)
    KX_FUZZ_CHECK(std::string(TURLEncoding::Decode(Encoded)) == Text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  if (Size < 1) return 0;
  const uint8_t Select = Data[0];
  const std::string Text(reinterpret_cast<const char*>(Data) + 1, Size - 1);
  const int32_t MaxMove = 1 + (Select >> 3);
  switch (Select & 7) {
  case 0:
  case 1:
    CheckCodec(TKxNetEncoding::Base64Ex(), beBase64, Text, MaxMove);
    break;
  case 2:
  case 3:
    CheckCodec(TKxNetEncoding::Base64Url(), beBase64Url, Text, MaxMove);
    break;
  case 4:
    CheckCodec(TKxNetEncoding::Hex(), beHexEncoded, Text, MaxMove);
    break;
  case 5:
    CheckHexText(Text);
    break;
  default:
    CheckUrl(Text);
    break;
  }
  return 0;
}
