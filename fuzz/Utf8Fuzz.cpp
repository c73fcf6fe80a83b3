// SPDX-License-Identifier: MIT
// The UTF-8 stream adapter and the UTF-8 stream functions against a plain model of the
// adapter's decoding rules, read through memory streams and short-reading streams, in reads
// of any size. The first byte picks the read size and the stream's largest move.
#include <kx/uKxClasses.h>
#include <kx/uKxTypes.h>

#include "FuzzSupport.h"

#include <vector>

using namespace kx;

namespace {

const std::string SInvalid = "The stream does not contain valid UTF-8 code!";
const std::string STwoMissing = SInvalid + "\r\nThere are 1 or 2 bytes missing!";
const std::string SOneMissing = SInvalid + "\r\nThere is 1 byte missing!";

// The decoding model: one to three bytes a character, continuation bytes unchecked, a
// four-byte lead read as a three-byte one.
struct TModel {
  std::u16string Text; // the characters before the end or the error
  std::string Error;   // empty when the input decodes
};

TModel Decode(const std::string& S) {
  TModel M;
  size_t I = 0;
  while (I < S.size()) {
    const uint8_t B0 = uint8_t(S[I++]);
    if (B0 < 0x80) {
      M.Text += char16_t(B0);
      continue;
    }
    if (!(B0 & 0x40)) return M.Error = SInvalid, M;
    if (I >= S.size()) return M.Error = STwoMissing, M;
    const uint8_t B1 = uint8_t(S[I++]);
    if (B0 & 0x20) {
      if (I >= S.size()) return M.Error = SOneMissing, M;
      const uint8_t B2 = uint8_t(S[I++]);
      M.Text += char16_t(((B0 & 0x0F) << 12) | ((B1 & 0x3F) << 6) | (B2 & 0x3F));
    } else {
      M.Text += char16_t(((B0 & 0x1F) << 6) | (B1 & 0x3F));
    }
  }
  return M;
}

// Reads the adapter dry in reads of ReadSize bytes; the characters read and the message of
// the exception that stopped it, if one did.
TModel ReadAll(TStream* Source, int32_t ReadSize) {
  TModel M;
  kxfuzz::TOwned<TKxUTF8StreamAdapter> Adapter(TKxUTF8StreamAdapter::Create(Source, false));
  std::vector<char> Buffer(static_cast<size_t>(ReadSize));
  try {
    for (;;) {
      const int32_t Got = Adapter->Read(Buffer.data(), ReadSize);
      KX_FUZZ_CHECK(Got >= 0 && Got <= ReadSize && Got % 2 == 0);
      if (Got == 0) break;
      M.Text.append(reinterpret_cast<const char16_t*>(Buffer.data()), size_t(Got / 2));
    }
  } catch (const Exception& E) {
    M.Error = E.Message();
  }
  return M;
}

void CheckAdapter(const std::string& Bytes, int32_t ReadSize, int32_t MaxMove) {
  const TModel Want = Decode(Bytes);
  for (int Pass = 0; Pass < 2; ++Pass) {
    auto Memory = kxfuzz::MemoryOf(Bytes);
    auto Short = kxfuzz::ShortReaderOf(Bytes, MaxMove);
    const TModel Got =
        ReadAll(Pass == 0 ? static_cast<TStream*>(Memory.get()) : Short.get(), ReadSize);
    KX_FUZZ_CHECK(Got.Error == Want.Error);
    if (Want.Error.empty()) {
      KX_FUZZ_CHECK(Got.Text == Want.Text);
    } else {
      // A read that fails loses what it decoded before the fault, never more.
      KX_FUZZ_CHECK(Got.Text.size() <= Want.Text.size());
      KX_FUZZ_CHECK(Want.Text.compare(0, Got.Text.size(), Got.Text) == 0);
    }
  }
}

void CheckStreamFunctions(const std::string& Bytes, int32_t MaxMove) {
  // One leading mark is skipped; a second one is text.
  const bool Marked = Bytes.compare(0, 3, "\xEF\xBB\xBF") == 0;
  const TModel Want = Decode(Marked ? Bytes.substr(3) : Bytes);
  auto In = kxfuzz::ShortReaderOf(Bytes, MaxMove);
  auto Out = kxfuzz::MemoryOf("");
  const auto Decoded = kxfuzz::Try([&] {
    KxUTF8DecodeStream(In.get(), Out.get());
    return true;
  });
  KX_FUZZ_CHECK(Decoded.Value.has_value() == Want.Error.empty());
  if (Decoded.Value) {
    KX_FUZZ_CHECK(Out->Size() == int64_t(Want.Text.size() * 2));
    std::u16string Written(Want.Text.size(), u'\0');
    Out->SetPosition(0);
    if (!Written.empty()) Out->ReadBuffer(Written.data(), int32_t(Written.size() * 2));
    KX_FUZZ_CHECK(Written == Want.Text);
  } else {
    KX_FUZZ_CHECK(Decoded.Error == "Exception: " + Want.Error);
  }

  // The whole text: only unmarked or UTF-8-marked streams are taken.
  auto Whole = kxfuzz::ShortReaderOf(Bytes, MaxMove);
  const uint16_t Mark = KxGetCodePage(Bytes.data(), int64_t(Bytes.size()));
  const auto Text = kxfuzz::Try([&] { return UnicodeString(KxUTF8Decode(Whole.get())); });
  if (Mark != 0 && Mark != 65001)
    KX_FUZZ_CHECK(Text.Error == "EConvertError: The sourcestream does not contain unicode data!");
  else if (Want.Error.empty())
    KX_FUZZ_CHECK(Text.Value && *Text.Value == Want.Text);
  else
    KX_FUZZ_CHECK(Text.Error == "Exception: " + Want.Error);
}

void CheckWriting(const std::string& Bytes, int32_t MaxMove) {
  // 16-bit text without surrogates is what the adapter writes and reads back unchanged.
  std::u16string Text;
  for (size_t I = 0; I + 1 < Bytes.size(); I += 2) {
    const char16_t C = char16_t(uint8_t(Bytes[I]) | (uint8_t(Bytes[I + 1]) << 8));
    if (C < 0xD800 || C > 0xDFFF) Text += C;
  }
  auto Sink = kxfuzz::MemoryOf("");
  {
    kxfuzz::TOwned<TKxUTF8StreamAdapter> Adapter(TKxUTF8StreamAdapter::Create(Sink.get(), false));
    size_t Done = 0;
    while (Done < Text.size()) {
      const size_t Piece = std::min(Text.size() - Done, size_t(MaxMove));
      const int32_t Count = int32_t(Piece * 2);
      KX_FUZZ_CHECK(Adapter->Write(Text.data() + Done, Count) == Count);
      Done += Piece;
    }
  }
  std::string Written(size_t(Sink->Size()), '\0');
  Sink->SetPosition(0);
  if (!Written.empty()) Sink->ReadBuffer(Written.data(), int32_t(Written.size()));
  // The first write put out the mark.
  KX_FUZZ_CHECK(Text.empty() || Written.compare(0, 3, "\xEF\xBB\xBF") == 0);
  const TModel Back = Decode(Text.empty() ? Written : Written.substr(3));
  KX_FUZZ_CHECK(Back.Error.empty() && Back.Text == Text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  if (Size < 1) return 0;
  const uint8_t Select = Data[0];
  const std::string Bytes(reinterpret_cast<const char*>(Data) + 1, Size - 1);
  const int32_t ReadSize = 2 * (1 + (Select & 0x1F)) + ((Select & 0x20) ? 1 : 0);
  const int32_t MaxMove = 1 + (Select >> 6);
  CheckAdapter(Bytes, ReadSize, MaxMove);
  CheckStreamFunctions(Bytes, MaxMove);
  CheckWriting(Bytes, MaxMove);
  return 0;
}
