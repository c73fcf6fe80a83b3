// SPDX-License-Identifier: MIT
// Whole streams as text, and the UTF-8 stream functions.
#include <kx/classes/ClassesConsts.h>
#include <kx/classes/MemoryStream.h>
#include <kx/classes/ObjectEx.h>
#include <kx/classes/StreamStrings.h>
#include <kx/classes/StringStream.h>
#include <kx/classes/UTF8StreamAdapter.h>
#include <kx/types/Encoding.h>

#include "classes/StreamCodePage.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kx {

namespace {

constexpr const char* SNoUnicodeData = "The sourcestream does not contain unicode data!";
constexpr int32_t StreamToAnsiStringAssertLine = 1574;
constexpr int32_t StreamToWideStringAssertLine = 1631;

constexpr uint8_t Utf8Bom[3] = {0xEF, 0xBB, 0xBF};
constexpr int32_t DecodeBlockSize = 1024;

bool IsUnicodeCodePage(int32_t CodePage) {
  return CodePage == 1200 || CodePage == 1201 || CodePage == 12000 || CodePage == 12001;
}

} // namespace

namespace detail {

TStreamRest::TStreamRest(TStream* Stream) {
  Owned = KxStreamToReadBuf(Stream, Buf, Count);
  if (Count < 0) Count = 0;
  if (!Owned && Count > 0) Stream->Seek(Count, soCurrent);
}

TStreamRest::~TStreamRest() {
  if (Owned) std::free(Buf);
}

uint16_t StreamSourceCodePage(TStream* Stream, bool DetectBOM, int32_t SourceCodePage) {
  const uint16_t Marked = DetectBOM ? KxGetCodePage(Stream) : 0;
  if (Marked >= 1 && SourceCodePage >= 0 && Marked != SourceCodePage)
    throw Exception(SEncodingBOMMismatch);
  if (SourceCodePage >= 0) return uint16_t(SourceCodePage);
  return Marked;
}

} // namespace detail

AnsiString KxStreamToAnsiString(TStream* Stream, bool FreeStream, bool FromStart, bool DetectBOM,
                                int32_t SourceCodePage, uint16_t DestCodePage) {
  KxAssert(Stream != nullptr, SAssertionFailed, SClassesUnit, StreamToAnsiStringAssertLine);
  detail::TFreeOnExit Free{FreeStream ? Stream : nullptr};
  if (IsUnicodeCodePage(DestCodePage)) throw Exception(SEncodingNotSupported);
  if (FromStart) Stream->SetPosition(0);
  const uint16_t Source = detail::StreamSourceCodePage(Stream, DetectBOM, SourceCodePage);
  AnsiString Result;
  if (int32_t(DestCodePage) != SourceCodePage) {
    detail::TStreamRest Rest(Stream);
    TKxEncoding::ConvertB(Rest.Buf, int32_t(Rest.Count), Result, DestCodePage, Source);
  } else {
    // Sized to the whole stream though read from the position: behind a mark the last bytes
    // stay zero, as they always have.
    Result.assign(size_t(Stream->Size()), '\0');
    Stream->ReadUpTo(Result.data(), int64_t(Result.size()));
  }
  return Result;
}

UnicodeString KxStreamToWideString(TStream* Stream, bool FreeStream, bool FromStart, bool DetectBOM,
                                   int32_t SourceCodePage) {
  KxAssert(Stream != nullptr, SAssertionFailed, SClassesUnit, StreamToWideStringAssertLine);
  detail::TFreeOnExit Free{FreeStream ? Stream : nullptr};
  if (FromStart) Stream->SetPosition(0);
  const uint16_t Source = detail::StreamSourceCodePage(Stream, DetectBOM, SourceCodePage);
  detail::TStreamRest Rest(Stream);
  // UTF-16LE is copied as it is; anything else is converted.
  UnicodeString Result;
  TKxEncoding::ConvertB(Rest.Buf, int32_t(Rest.Count), Result, Source);
  return Result;
}

UnicodeString KxStreamToString(TStream* Stream, bool FreeStream, bool FromStart, bool DetectBOM,
                               int32_t SourceCodePage) {
  return KxStreamToWideString(Stream, FreeStream, FromStart, DetectBOM, SourceCodePage);
}

void KxUTF8EncodeStream(TStream* Source, TStream* Dest, bool WriteBOM) {
  detail::TStreamRest Rest(Source);
  UnicodeString Wide(size_t(Rest.Count / 2), u'\0');
  if (!Wide.empty()) std::memcpy(Wide.data(), Rest.Buf, Wide.size() * 2);
  const UTF8String Utf8 = TKxEncoding::ConvertW(Wide, 65001);
  if (WriteBOM) Dest->WriteBuffer(Utf8Bom, 3);
  if (!Utf8.empty()) Dest->WriteBuffer(Utf8.data(), int32_t(Utf8.size()));
}

void KxUTF8DecodeStream(TStream* Source, TStream* Dest) {
  const int64_t Start = Source->Position();
  uint8_t Mark[3] = {};
  if (Source->ReadUpTo(Mark, 3) != 3 || std::memcmp(Mark, Utf8Bom, 3) != 0)
    Source->SetPosition(Start);
  TKxUTF8StreamAdapter* Adapter = TKxUTF8StreamAdapter::Create(Source, false);
  detail::TFreeOnExit Free{Adapter};
  char Block[DecodeBlockSize];
  int32_t Count;
  do {
    Count = Adapter->Read(Block, DecodeBlockSize);
    // Each block is handed over in one call where the stream takes it whole.
    const int32_t Written = std::max(Dest->Write(Block, Count), 0);
    if (Written < Count) Dest->WriteBuffer(Block + Written, Count - Written);
  } while (Count >= DecodeBlockSize);
}

UnicodeString KxUTF8Decode(TStream* Stream) {
  const int64_t Start = Stream->Position();
  const uint16_t Marked = KxGetCodePage(Stream);
  if (Marked != 0 && Marked != 65001) throw EConvertError(SNoUnicodeData);
  // The decoder skips the mark itself; skipping it here too would take a U+FEFF of the text.
  Stream->SetPosition(Start);
  TKxStringStream* Text = TKxStringStream::Create(uint16_t(1200), uint32_t(16));
  detail::TFreeOnExit Free{Text};
  KxUTF8DecodeStream(Stream, Text);
  return Text->GetWString();
}

} // namespace kx
