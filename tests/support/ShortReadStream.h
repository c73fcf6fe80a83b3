// SPDX-License-Identifier: MIT
// A stream that moves at most N bytes per Read or Write, as pipes, sockets and adapters do.
#pragma once

#include <kx/rtl/Streams.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace kxtest {

// Wraps another stream (freed with it when owned) or a copy of some bytes, and passes each
// Read and Write on with the count cut to at most MaxMove: MaxMove = 1 gives a stream that
// hands out one byte per call. Seeks and sizes are the wrapped stream's. The wrapper is no
// memory stream, so code that reads memory streams in place must take the streaming path.
//
//   auto* S = kxtest::TShortReadStream::Create(std::string_view("abc"), 1);
//   ... S->Free();
class TShortReadStream : public kx::TStream {
  KX_CLASS(TShortReadStream, kx::TStream)
public:
  TShortReadStream(kx::TStream* AInner, int32_t AMaxMove, bool AOwnsInner = false)
      : FInner(AInner), FMaxMove(std::max<int32_t>(AMaxMove, 1)), FOwnsInner(AOwnsInner) {}
  TShortReadStream(std::string_view Bytes, int32_t AMaxMove)
      : TShortReadStream(kx::TBytesStream::Create(kx::TBytes(Bytes.begin(), Bytes.end())), AMaxMove,
                         true) {}
  ~TShortReadStream() override {
    if (FOwnsInner) FInner->Free();
  }

  int32_t Read(void* Buffer, int32_t Count) override {
    ++FReads;
    return FInner->Read(Buffer, std::min(Count, FMaxMove));
  }
  int32_t Write(const void* Buffer, int32_t Count) override {
    ++FWrites;
    return FInner->Write(Buffer, std::min(Count, FMaxMove));
  }
  using kx::TStream::Seek;
  int64_t Seek(int64_t Offset, kx::TSeekOrigin Origin) override {
    return FInner->Seek(Offset, Origin);
  }
  using kx::TStream::SetSize;
  void SetSize(int64_t NewSize) override { FInner->SetSize(NewSize); }

  kx::TStream* Inner() const { return FInner; }
  // The calls made so far.
  int64_t Reads() const { return FReads; }
  int64_t Writes() const { return FWrites; }

protected:
  int64_t GetSize() override { return FInner->Size(); }

private:
  kx::TStream* FInner;
  int32_t FMaxMove;
  bool FOwnsInner;
  int64_t FReads = 0;
  int64_t FWrites = 0;
};

// Header-only: the class reference is defined inline, once for the whole program.
inline KX_IMPLEMENT_CLASS(TShortReadStream, kx::TStream, "kxtest")

} // namespace kxtest
