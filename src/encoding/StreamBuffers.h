// SPDX-License-Identifier: MIT
#pragma once
// The codecs' view of their streams: the input from its position to its end, and room for the
// output at its position, both in place when the stream is a memory stream.

#include <kx/classes/MemoryStream.h>

#include <cstdint>
#include <cstdlib>

namespace kx::detail {

// The input bytes, in place or in a copy freed with this object. The input stream ends up at
// its end either way.
class TKxReadBuffer {
public:
  explicit TKxReadBuffer(TStream* Stream) {
    void* Buf = nullptr;
    int64_t Count = 0;
    FOwned = KxStreamToReadBuf(Stream, Buf, Count);
    FData = static_cast<const uint8_t*>(Buf);
    FCount = Count > INT32_MAX ? INT32_MAX : int32_t(Count);
    if (!FOwned) Stream->Seek(int64_t(FCount), soCurrent);
  }
  ~TKxReadBuffer() {
    if (FOwned) std::free(const_cast<uint8_t*>(FData));
  }
  TKxReadBuffer(const TKxReadBuffer&) = delete;
  TKxReadBuffer& operator=(const TKxReadBuffer&) = delete;

  const uint8_t* Data() const { return FData; }
  int32_t Count() const { return FCount; }

private:
  const uint8_t* FData = nullptr;
  int32_t FCount = 0;
  bool FOwned = false;
};

// Room for Capacity output bytes. Commit(N) keeps the first N: a memory stream is trimmed to
// them, any other stream receives them in one write. Either way the stream's position ends
// after them.
class TKxWriteBuffer {
public:
  TKxWriteBuffer(TStream* Stream, int32_t Capacity) : FStream(Stream) {
    FStart = Stream->Position();
    void* Buf = nullptr;
    FOwned = KxStreamToWriteBuf(Stream, Buf, Capacity);
    FData = static_cast<uint8_t*>(Buf);
  }
  ~TKxWriteBuffer() {
    if (FOwned) std::free(FData);
  }
  TKxWriteBuffer(const TKxWriteBuffer&) = delete;
  TKxWriteBuffer& operator=(const TKxWriteBuffer&) = delete;

  uint8_t* Data() const { return FData; }
  void Commit(int32_t Count) {
    if (FOwned) {
      FStream->WriteBuffer(FData, Count);
    } else {
      FStream->SetSize(FStart + Count);
      FStream->Seek(FStart + Count, soBeginning);
    }
  }

private:
  TStream* FStream;
  int64_t FStart = 0;
  uint8_t* FData = nullptr;
  bool FOwned = false;
};

} // namespace kx::detail
