// SPDX-License-Identifier: MIT
// TKxUTF8StreamAdapter: UTF-8 bytes in, UTF-16LE characters out, and back.
#include <kx/classes/UTF8StreamAdapter.h>
#include <kx/types/Encoding.h>

#include <cstring>

namespace kx {

KX_IMPLEMENT_CLASS(TKxUTF8StreamAdapter, TStream, "uKxClasses")

namespace {

constexpr const char* SInvalidUTF8 = "The stream does not contain valid UTF-8 code!";
constexpr const char* SInvalidUTF8TwoMissing =
    "The stream does not contain valid UTF-8 code!\r\nThere are 1 or 2 bytes missing!";
constexpr const char* SInvalidUTF8OneMissing =
    "The stream does not contain valid UTF-8 code!\r\nThere is 1 byte missing!";

constexpr uint8_t Utf8Bom[3] = {0xEF, 0xBB, 0xBF};

} // namespace

TKxUTF8StreamAdapter::TKxUTF8StreamAdapter(TStream* AStream, bool AOwnsStream, bool AWriteBOM)
    : FStream(AStream), FOwnsStream(AOwnsStream), FWriteBOM(AWriteBOM) {}

TKxUTF8StreamAdapter::TKxUTF8StreamAdapter(TStream* AStream, bool AOwnsStream)
    : TKxUTF8StreamAdapter(AStream, AOwnsStream, true) {}

TKxUTF8StreamAdapter::~TKxUTF8StreamAdapter() {
  if (FOwnsStream && FStream) FStream->Free();
}

int32_t TKxUTF8StreamAdapter::Read(void* Buffer, int32_t Count) {
  uint8_t* Out = static_cast<uint8_t*>(Buffer);
  const int32_t Chars = Count / 2;
  int32_t Done = 0;
  // Byte by byte, so that the wrapped stream never stands past what was decoded.
  auto Next = [this](uint8_t& B) { return FStream->Read(&B, 1) == 1; };
  while (Done < Chars) {
    uint8_t B0, B1, B2;
    if (!Next(B0)) break;
    uint16_t C;
    if (B0 < 0x80) {
      C = B0;
    } else {
      if (!(B0 & 0x40)) throw Exception(SInvalidUTF8);
      if (!Next(B1)) throw Exception(SInvalidUTF8TwoMissing);
      // Leads of four-byte sequences take this branch too and lose their upper bits; trail
      // bytes are taken as they come.
      if (B0 & 0x20) {
        if (!Next(B2)) throw Exception(SInvalidUTF8OneMissing);
        C = uint16_t(((B0 & 0x0F) << 12) | ((B1 & 0x3F) << 6) | (B2 & 0x3F));
      } else {
        C = uint16_t(((B0 & 0x1F) << 6) | (B1 & 0x3F));
      }
    }
    Out[2 * Done] = uint8_t(C & 0xFF);
    Out[2 * Done + 1] = uint8_t(C >> 8);
    ++Done;
  }
  return Done * 2;
}

int32_t TKxUTF8StreamAdapter::Write(const void* Buffer, int32_t Count) {
  if (FWriteBOM) {
    FWriteBOM = false;
    if (FStream->WriteUpTo(Utf8Bom, 3) != 3) return 0;
  }
  UnicodeString Wide(size_t(Count > 0 ? Count / 2 : 0), u'\0');
  if (!Wide.empty()) std::memcpy(Wide.data(), Buffer, Wide.size() * 2);
  const UTF8String Utf8 = TKxEncoding::ConvertW(Wide, 65001);
  // The wrapped stream may take fewer bytes per call than it is given.
  return FStream->WriteUpTo(Utf8.data(), int64_t(Utf8.size())) == int64_t(Utf8.size()) ? Count : 0;
}

int64_t TKxUTF8StreamAdapter::Seek(int64_t Offset, TSeekOrigin Origin) {
  return FStream->Seek(Offset / 2, Origin) * 2;
}

} // namespace kx
