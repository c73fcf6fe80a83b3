// SPDX-License-Identifier: MIT
// The runtime's streams: the abstract stream, handle and file streams, memory streams.
#include <kx/rtl/Streams.h>

#include "platform/Platform.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <vector>

namespace kx {

KX_IMPLEMENT_CLASS(TStream, TObject, "Classes")
KX_IMPLEMENT_CLASS(THandleStream, TStream, "Classes")
KX_IMPLEMENT_CLASS(TFileStream, THandleStream, "Classes")
KX_IMPLEMENT_CLASS(TCustomMemoryStream, TStream, "Classes")
KX_IMPLEMENT_CLASS(TMemoryStream, TCustomMemoryStream, "Classes")
KX_IMPLEMENT_CLASS(TBytesStream, TMemoryStream, "Classes")

namespace {
// Memory streams grow in blocks of this many bytes (a power of 2).
constexpr int64_t MemoryDelta = 0x2000;
// CopyFrom moves at most this much at a time.
constexpr int64_t MaxCopyBufSize = 0xF000;
// Larger capacities cannot be rounded up or allocated on this platform.
constexpr int64_t MaxCapacity =
    int64_t(std::min<uint64_t>(std::numeric_limits<size_t>::max() / 2,
                               uint64_t(std::numeric_limits<int64_t>::max()))) -
    MemoryDelta;

[[noreturn]] void MemoryStreamError() {
  throw EStreamError(SMemoryStreamError);
}

int64_t RoundCapacity(int64_t NewCapacity, int64_t Size) {
  // Delphi's rule, kept for the capacities callers observe: a request equal to the size is
  // taken as it is.
  if (NewCapacity < 0 || NewCapacity > MaxCapacity) MemoryStreamError();
  if (NewCapacity > 0 && NewCapacity != Size)
    NewCapacity = (NewCapacity + (MemoryDelta - 1)) & ~(MemoryDelta - 1);
  return NewCapacity;
}
} // namespace

// --- TStream ---------------------------------------------------------------------------

int32_t TStream::Seek(int32_t Offset, TSeekOrigin Origin) {
  return int32_t(Seek(int64_t(Offset), Origin));
}

void TStream::SetSize(int32_t NewSize) {
  SetSize(int64_t(NewSize));
}
void TStream::SetSize(int64_t) {}

int64_t TStream::GetSize() {
  int64_t Pos = Seek(int64_t(0), soCurrent);
  int64_t Result = Seek(int64_t(0), soEnd);
  Seek(Pos, soBeginning);
  return Result;
}

namespace {
// The most one Read or Write can be asked for.
constexpr int64_t MaxMove = std::numeric_limits<int32_t>::max();

// Calls Move(Pointer, N) until Count is done or a call moves nothing (or reports a negative
// count).
template <class Byte, class F>
int64_t MoveUpTo(Byte* Buffer, int64_t Count, F Move) {
  int64_t Done = 0;
  while (Done < Count) {
    const int32_t N = Move(Buffer + Done, int32_t(std::min(Count - Done, MaxMove)));
    if (N <= 0) break;
    Done += N;
  }
  return Done;
}
} // namespace

int64_t TStream::ReadUpTo(void* Buffer, int64_t Count) {
  return MoveUpTo(static_cast<uint8_t*>(Buffer), Count,
                  [this](uint8_t* P, int32_t N) { return Read(P, N); });
}

int64_t TStream::WriteUpTo(const void* Buffer, int64_t Count) {
  return MoveUpTo(static_cast<const uint8_t*>(Buffer), Count,
                  [this](const uint8_t* P, int32_t N) { return Write(P, N); });
}

void TStream::ReadBuffer(void* Buffer, int32_t Count) {
  if (ReadUpTo(Buffer, Count) < Count) throw EReadError(SReadError);
}

void TStream::WriteBuffer(const void* Buffer, int32_t Count) {
  if (WriteUpTo(Buffer, Count) < Count) throw EWriteError(SWriteError);
}

int64_t TStream::CopyFrom(TStream* Source, int64_t Count) {
  if (Count <= 0) {
    Source->SetPosition(0);
    Count = Source->Size();
  }
  int64_t Result = Count;
  std::vector<uint8_t> Buffer(size_t(std::min(Count, MaxCopyBufSize)));
  while (Count != 0) {
    int32_t N = int32_t(std::min(Count, int64_t(Buffer.size())));
    Source->ReadBuffer(Buffer.data(), N);
    WriteBuffer(Buffer.data(), N);
    Count -= N;
  }
  return Result;
}

// --- THandleStream / TFileStream -------------------------------------------------------

int32_t THandleStream::Read(void* Buffer, int32_t Count) {
  int32_t Result = platform::FileRead(FHandle, Buffer, Count);
  return Result < 0 ? 0 : Result;
}

int32_t THandleStream::Write(const void* Buffer, int32_t Count) {
  int32_t Result = platform::FileWrite(FHandle, Buffer, Count);
  return Result < 0 ? 0 : Result;
}

int64_t THandleStream::Seek(int64_t Offset, TSeekOrigin Origin) {
  return platform::FileSeek(FHandle, Offset, int32_t(Origin));
}

void THandleStream::SetSize(int64_t NewSize) {
  Seek(NewSize, soBeginning);
  if (!platform::FileSetEnd(FHandle)) RaiseLastOSError();
}

int64_t THandleStream::GetSize() {
  return platform::FileSize(FHandle);
}

TFileStream::TFileStream(const AnsiString& AFileName, uint16_t Mode)
    : THandleStream(platform::InvalidFileHandle), FFileName(AFileName) {
  if (Mode == fmCreate) {
    // fmCreate leaves no room for share bits: a new file is held exclusively while open.
    FHandle = platform::FileCreate(AFileName, fmShareExclusive);
    if (FHandle < 0) throw EFCreateError(SFCreateError, {AFileName});
  } else {
    FHandle = platform::FileOpen(AFileName, Mode);
    if (FHandle < 0) throw EFOpenError(SFOpenError, {AFileName});
  }
}

TFileStream::~TFileStream() {
  if (FHandle >= 0) platform::FileClose(FHandle);
}

// --- TCustomMemoryStream ----------------------------------------------------------------

void TCustomMemoryStream::SetPointer(void* Ptr, int64_t ASize) {
  FMemory = Ptr;
  FSize = ASize;
}

int32_t TCustomMemoryStream::Read(void* Buffer, int32_t Count) {
  if (FPosition >= 0 && Count >= 0) {
    int64_t N = std::min(FSize - FPosition, int64_t(Count));
    if (N > 0) {
      std::memcpy(Buffer, static_cast<uint8_t*>(FMemory) + FPosition, size_t(N));
      FPosition += N;
      return int32_t(N);
    }
  }
  return 0;
}

int64_t TCustomMemoryStream::Seek(int64_t Offset, TSeekOrigin Origin) {
  switch (Origin) {
  case soBeginning:
    FPosition = Offset;
    break;
  case soCurrent:
    FPosition += Offset;
    break;
  case soEnd:
    FPosition = FSize + Offset;
    break;
  }
  return FPosition;
}

void TCustomMemoryStream::SaveToStream(TStream* Stream) {
  // Whole blocks of at most 2 GiB, the most one write can take.
  const uint8_t* P = static_cast<const uint8_t*>(FMemory);
  for (int64_t Left = FSize; Left > 0;) {
    int32_t N = int32_t(std::min<int64_t>(Left, std::numeric_limits<int32_t>::max()));
    Stream->WriteBuffer(P, N);
    P += N;
    Left -= N;
  }
}

void TCustomMemoryStream::SaveToFile(const AnsiString& FileName) {
  TFileStream* Stream = TFileStream::Create(FileName, fmCreate);
  try {
    SaveToStream(Stream);
  } catch (...) {
    Stream->Free();
    throw;
  }
  Stream->Free();
}

// --- TMemoryStream ----------------------------------------------------------------------

TMemoryStream::~TMemoryStream() {
  Clear();
}

void* TMemoryStream::Realloc(int64_t& NewCapacity) {
  NewCapacity = RoundCapacity(NewCapacity, FSize);
  void* Result = FMemory;
  if (NewCapacity != FCapacity) {
    if (NewCapacity == 0) {
      std::free(FMemory);
      Result = nullptr;
    } else {
      Result = std::realloc(FMemory, size_t(NewCapacity));
      if (!Result) MemoryStreamError();
    }
  }
  return Result;
}

void TMemoryStream::SetCapacity(int64_t NewCapacity) {
  SetPointer(Realloc(NewCapacity), FSize);
  FCapacity = NewCapacity;
}

void TMemoryStream::SetSize(int64_t NewSize) {
  int64_t OldPosition = FPosition;
  int64_t OldSize = FSize;
  SetCapacity(NewSize);
  // A shrunk capacity may now be below the old size.
  if (OldSize > NewSize) OldSize = NewSize;
  // New bytes are zero rather than whatever the allocator left.
  if (NewSize > OldSize)
    std::memset(static_cast<uint8_t*>(FMemory) + OldSize, 0, size_t(NewSize - OldSize));
  FSize = NewSize;
  if (OldPosition > NewSize) Seek(int64_t(0), soEnd);
}

void TMemoryStream::Clear() {
  SetCapacity(0);
  FSize = 0;
  FPosition = 0;
}

int32_t TMemoryStream::Write(const void* Buffer, int32_t Count) {
  if (FPosition >= 0 && Count >= 0) {
    int64_t Pos = FPosition + Count;
    if (Pos > 0) {
      if (Pos > FSize) {
        if (Pos > FCapacity) SetCapacity(Pos);
        // A write beyond the end leaves a gap; fill it with zeros.
        if (FPosition > FSize)
          std::memset(static_cast<uint8_t*>(FMemory) + FSize, 0, size_t(FPosition - FSize));
        FSize = Pos;
      }
      std::memcpy(static_cast<uint8_t*>(FMemory) + FPosition, Buffer, size_t(Count));
      FPosition = Pos;
      return Count;
    }
  }
  return 0;
}

void TMemoryStream::LoadFromStream(TStream* Stream) {
  Stream->SetPosition(0);
  int64_t Count = Stream->Size();
  SetSize(Count);
  uint8_t* P = static_cast<uint8_t*>(FMemory);
  for (int64_t Left = Count; Left > 0;) {
    int32_t N = int32_t(std::min<int64_t>(Left, std::numeric_limits<int32_t>::max()));
    Stream->ReadBuffer(P, N);
    P += N;
    Left -= N;
  }
}

void TMemoryStream::LoadFromFile(const AnsiString& FileName) {
  TFileStream* Stream = TFileStream::Create(FileName, fmOpenRead | fmShareDenyWrite);
  try {
    LoadFromStream(Stream);
  } catch (...) {
    Stream->Free();
    throw;
  }
  Stream->Free();
}

// --- TBytesStream -----------------------------------------------------------------------

TBytesStream::TBytesStream(TBytes ABytes) : FBytes(std::move(ABytes)) {
  SetPointer(FBytes.data(), int64_t(FBytes.size()));
  SetCapacity(int64_t(FBytes.size()));
}

// The array frees itself; this leaves the memory stream nothing to release.
TBytesStream::~TBytesStream() {
  Clear();
}

void* TBytesStream::Realloc(int64_t& NewCapacity) {
  NewCapacity = RoundCapacity(NewCapacity, FSize);
  if (NewCapacity != FCapacity) {
    try {
      FBytes.resize(size_t(NewCapacity));
      if (NewCapacity == 0) FBytes.shrink_to_fit();
    } catch (const std::exception&) {
      MemoryStreamError();
    }
  }
  return NewCapacity == 0 ? nullptr : FBytes.data();
}

} // namespace kx
