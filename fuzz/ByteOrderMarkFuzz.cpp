// SPDX-License-Identifier: MIT
// Byte-order-mark detection on streams: from any start position, through memory streams and
// streams that give a few bytes per read, the code page is the buffer form's answer for the
// same bytes and the stream is left just behind the mark or where it was.
#include <kx/uKxTypes.h>

#include "FuzzSupport.h"

using namespace kx;

namespace {

int64_t MarkSize(uint16_t CodePage) {
  switch (CodePage) {
  case 12000:
  case 12001:
    return 4;
  case 65001:
    return 3;
  case 1201:
    return 2;
  default:
    // 1200 with a mark; the mark-less UTF-16 guess moves nothing.
    return -1;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  if (Size < 1) return 0;
  const std::string Bytes(reinterpret_cast<const char*>(Data) + 1, Size - 1);
  const size_t Start = std::min<size_t>(Data[0] & 0x07, Bytes.size());
  const int32_t MaxMove = 1 + (Data[0] >> 3);
  const std::string_view Rest = std::string_view(Bytes).substr(Start);

  const uint16_t Expected = KxGetCodePage(Rest.data(), int64_t(Rest.size()));
  int64_t Moved = MarkSize(Expected);
  if (Moved < 0) {
    const bool Marked = Rest.size() >= 2 && uint8_t(Rest[0]) == 0xFF && uint8_t(Rest[1]) == 0xFE;
    Moved = Expected == 1200 && Marked ? 2 : 0;
  }
  KX_FUZZ_CHECK(Expected == 0 || Expected == 1200 || Expected == 1201 || Expected == 12000 ||
                Expected == 12001 || Expected == 65001);

  auto Memory = kxfuzz::MemoryOf(Bytes);
  auto Short = kxfuzz::ShortReaderOf(Bytes, MaxMove);
  for (TStream* S : {static_cast<TStream*>(Memory.get()), static_cast<TStream*>(Short.get())}) {
    S->SetPosition(int64_t(Start));
    KX_FUZZ_CHECK(KxGetCodePage(S) == Expected);
    KX_FUZZ_CHECK(S->Position() == int64_t(Start) + Moved);
  }
  return 0;
}
