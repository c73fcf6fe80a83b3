// SPDX-License-Identifier: MIT
// The library's memory stream and in-place access to memory streams.
#include <kx/classes/MemoryStream.h>
#include <kx/classes/ObjectEx.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace kx {

KX_IMPLEMENT_CLASS(TKxMemoryStream, TStream, "uKxClasses")

namespace {
constexpr int32_t ReadBytesAssertLine = 1187;

// Capacities are 32-bit; anything larger cannot be held.
constexpr uint64_t MaxCapacity = std::numeric_limits<uint32_t>::max();

// The next multiple of Delta strictly above Need.
uint64_t StepAbove(uint64_t Need, uint32_t Delta) {
  uint64_t Step = Delta == 0 ? 1 : Delta;
  return (Need / Step + 1) * Step;
}
} // namespace

TKxMemoryStream::TKxMemoryStream(uint32_t BlockSize)
    : FOwnsBuffer(true), FDelta(BlockSize), FMemory(nullptr), FCapacity(BlockSize) {
  // Never a null block, so Memory() is always usable, even for a block size of 0.
  FMemory = static_cast<uint8_t*>(std::malloc(std::max<uint32_t>(FCapacity, 1)));
  if (!FMemory) throw EStreamError(SMemoryStreamError);
}

TKxMemoryStream::TKxMemoryStream(void* Buffer, uint32_t Size)
    : FOwnsBuffer(false), FDelta(0), FMemory(static_cast<uint8_t*>(Buffer)), FCapacity(Size),
      FSize(Size) {}

TKxMemoryStream::~TKxMemoryStream() {
  if (FOwnsBuffer) std::free(FMemory);
}

void TKxMemoryStream::ResizeError() {
  throw Exception(SResizeBufferNotPossible);
}

void TKxMemoryStream::Reallocate(uint64_t NewCapacity) {
  if (!FOwnsBuffer) ResizeError();
  if (NewCapacity > MaxCapacity) throw EStreamError(SMemoryStreamError);
  void* P = std::realloc(FMemory, size_t(std::max<uint64_t>(NewCapacity, 1)));
  if (!P) throw EStreamError(SMemoryStreamError);
  FMemory = static_cast<uint8_t*>(P);
  FCapacity = uint32_t(NewCapacity);
}

int32_t TKxMemoryStream::Read(void* Buffer, int32_t Count) {
  // Nothing lies before the start; reading there would leave the block.
  if (FPosition < 0) return 0;
  int64_t N = int64_t(FSize) - FPosition;
  if (N > Count) N = Count;
  if (N > 0) std::memcpy(Buffer, FMemory + FPosition, size_t(N));
  FPosition += N;
  return int32_t(N);
}

int32_t TKxMemoryStream::Write(const void* Buffer, int32_t Count) {
  if (Count <= 0 || FPosition < 0) return 0;
  int64_t NewEnd = FPosition + Count;
  if (NewEnd > int64_t(FSize)) {
    // One spare byte beyond the content is always kept, so text built here can be ended
    // with a zero without another reallocation.
    uint64_t Need = uint64_t(NewEnd) + 1;
    if (Need > FCapacity) {
      Reallocate(StepAbove(Need, FDelta));
      // A position past the end is pulled back to it by the reallocation.
      if (FPosition > int64_t(FSize)) FPosition = FSize;
    }
  }
  std::memcpy(FMemory + FPosition, Buffer, size_t(Count));
  FPosition += Count;
  if (NewEnd > int64_t(FSize)) {
    // A write that started past the end leaves a gap; it reads as zeros.
    if (FPosition < NewEnd)
      std::memset(FMemory + FPosition, 0, size_t(NewEnd - FPosition));
    else if (FPosition - Count > int64_t(FSize))
      std::memset(FMemory + FSize, 0, size_t(FPosition - Count - FSize));
    FSize = uint32_t(NewEnd);
  }
  return Count;
}

int64_t TKxMemoryStream::Seek(int64_t Offset, TSeekOrigin Origin) {
  int64_t Size = FSize;
  switch (Origin) {
  case soBeginning:
    FPosition = Offset > Size ? Size : Offset;
    break;
  case soCurrent:
    FPosition = FPosition + Offset > Size ? Size : FPosition + Offset;
    break;
  case soEnd:
    // A positive offset counts backwards from the end.
    FPosition = Offset <= Size ? Size - Offset : 0;
    break;
  }
  return FPosition;
}

void TKxMemoryStream::SetSize(int32_t NewSize) {
  SetSize(int64_t(NewSize));
}

void TKxMemoryStream::SetSize(int64_t NewSize) {
  if (!FOwnsBuffer || NewSize < 0) ResizeError();
  Reallocate(StepAbove(uint64_t(NewSize), FDelta));
  FSize = uint32_t(NewSize);
  if (FPosition > NewSize) FPosition = NewSize;
}

void TKxMemoryStream::Clear() {
  if (!FOwnsBuffer) ResizeError();
  Reallocate(FDelta);
  FSize = 0;
  FPosition = 0;
}

namespace {
void ReadExactly(TKxMemoryStream* Stream, void* Buffer, int32_t Count) {
  if (Stream->ReadUpTo(Buffer, Count) != Count) throw Exception(SUnexpectedEOF);
}
} // namespace

uint8_t TKxMemoryStream::ReadByte() {
  uint8_t Result;
  ReadExactly(this, &Result, 1);
  return Result;
}

uint16_t TKxMemoryStream::ReadWord() {
  uint16_t Result;
  ReadExactly(this, &Result, 2);
  return Result;
}

uint32_t TKxMemoryStream::ReadLongWord() {
  uint32_t Result;
  ReadExactly(this, &Result, 4);
  return Result;
}

int64_t TKxMemoryStream::ReadInt64() {
  int64_t Result;
  ReadExactly(this, &Result, 8);
  return Result;
}

TBytes TKxMemoryStream::ReadBytes(int32_t Count) {
  KxAssert(Count >= 1, SAssertionFailed, SClassesUnit, ReadBytesAssertLine);
  if (Count <= 0) return {};
  TBytes Result(static_cast<size_t>(Count));
  ReadExactly(this, Result.data(), Count);
  return Result;
}

void TKxMemoryStream::ReadBytes(void* Buffer, int32_t Count) {
  KxAssert(Count >= 1, SAssertionFailed, SClassesUnit, ReadBytesAssertLine + 8);
  ReadExactly(this, Buffer, Count);
}

// --- in-place access --------------------------------------------------------------------

bool KxStreamToReadBuf(TStream* Stream, void*& Buf, int64_t& Count) {
  // Nothing before the start is handed out.
  int64_t Position = std::max<int64_t>(Stream->Position(), 0);
  Count = std::max<int64_t>(Stream->Size() - Position, 0);
  if (auto* Mem = dynamic_cast<TKxMemoryStream*>(Stream)) {
    Buf = Mem->Memory() + Position;
    return false;
  }
  if (auto* Mem = dynamic_cast<TCustomMemoryStream*>(Stream)) {
    Buf = static_cast<uint8_t*>(Mem->Memory()) + Position;
    return false;
  }
  Buf = std::malloc(size_t(std::max<int64_t>(Count, 1)));
  if (!Buf) throw EOutOfMemory(SMemoryStreamError);
  // The stream may give less per call than asked, and in the end less than its size said:
  // the count is what was read.
  Count = Stream->ReadUpTo(Buf, Count);
  return true;
}

bool KxStreamToWriteBuf(TStream* Stream, void*& Buf, int64_t Count) {
  if (auto* Mem = dynamic_cast<TKxMemoryStream*>(Stream)) {
    int64_t Position = Mem->Position();
    Mem->SetSize(Position + Count);
    Buf = Mem->Memory() + Position;
    return false;
  }
  Buf = std::malloc(size_t(std::max<int64_t>(Count, 1)));
  if (!Buf) throw EOutOfMemory(SMemoryStreamError);
  return true;
}

} // namespace kx
