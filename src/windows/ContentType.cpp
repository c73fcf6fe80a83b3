// SPDX-License-Identifier: MIT
// MIME types by content of uKxWindows.
#include <kx/rtl/Streams.h>
#include <kx/windows/ContentType.h>

#include "platform/Mime.h"

namespace kx {

namespace {
// FindMimeFromData looks at 256 bytes; libmagic's text and archive tests like more.
constexpr int64_t SniffSize = 4096;
} // namespace

AnsiString KxGetMimeType(const void* Buffer, int64_t Size) {
  AnsiString Mime;
  if (!Buffer || Size < 0 || !platform::MimeTypeOfData(Buffer, size_t(Size), Mime)) return "";
  return Mime;
}

namespace uKxWindows {

AnsiString KxGetFileMimeType(const AnsiString& FileName) {
  TFileStream* F = TFileStream::Create(FileName, uint16_t(fmOpenRead | fmShareDenyNone));
  char Buf[SniffSize];
  int64_t Got = 0;
  try {
    Got = F->ReadUpTo(Buf, SniffSize);
  } catch (...) {
    F->Free();
    throw;
  }
  F->Free();
  return KxGetMimeType(Buf, Got);
}

} // namespace uKxWindows

} // namespace kx
