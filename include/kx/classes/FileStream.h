// SPDX-License-Identifier: MIT
#pragma once
// TKxFileStream: the runtime's file stream with text writers.

#include <kx/rtl/Streams.h>

namespace kx {

class KX_API TKxFileStream : public TFileStream {
  KX_CLASS(TKxFileStream, TFileStream)
public:
  using TFileStream::TFileStream;

  // The raw bytes of S (two per character of 16-bit text); nothing for an empty string.
  void WriteString(const AnsiString& S);
  void WriteString(const UnicodeString& S);
};

} // namespace kx
