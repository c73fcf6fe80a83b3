// SPDX-License-Identifier: MIT
#pragma once
// TKxUTF8StreamAdapter: a UTF-8 byte stream seen as a stream of UTF-16LE characters.

#include <kx/rtl/Streams.h>

namespace kx {

class KX_API TKxUTF8StreamAdapter : public TStream {
  KX_CLASS(TKxUTF8StreamAdapter, TStream)
public:
  // The adapter frees AStream when it owns it. AWriteBOM: the first write puts out EF BB BF.
  TKxUTF8StreamAdapter(TStream* AStream, bool AOwnsStream, bool AWriteBOM);
  TKxUTF8StreamAdapter(TStream* AStream, bool AOwnsStream);
  ~TKxUTF8StreamAdapter() override;

  // Decodes up to Count div 2 characters into Buffer and returns the bytes filled. Malformed
  // UTF-8 raises Exception "The stream does not contain valid UTF-8 code!" (with a second
  // line when the stream ends inside a character). Four-byte sequences are read as three-byte
  // ones and continuation bytes are not checked, as the library always did.
  int32_t Read(void* Buffer, int32_t Count) override;
  // Writes Count bytes of UTF-16LE as UTF-8; Count when every byte went out, else 0.
  int32_t Write(const void* Buffer, int32_t Count) override;
  // Seeks the wrapped stream to Offset div 2 and returns twice its new position: positions
  // count two per byte of UTF-8, an approximation.
  using TStream::Seek;
  int64_t Seek(int64_t Offset, TSeekOrigin Origin) override;

  TStream* Stream() const { return FStream; }
  bool OwnsStream() const { return FOwnsStream; }
  bool WriteBOM() const { return FWriteBOM; }

private:
  TStream* FStream;
  bool FOwnsStream;
  // Kept for the layout callers rely on; nothing reads it.
  [[maybe_unused]] uint8_t FReserved[3] = {};
  bool FWriteBOM;
};

} // namespace kx
