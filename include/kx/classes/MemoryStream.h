// SPDX-License-Identifier: MIT
#pragma once
// TKxMemoryStream: a memory stream with its own growth step and typed reads and writes, or a
// fixed-size stream over memory the caller owns; and the helpers that let code read and write
// memory streams in place.

#include <kx/classes/ClassesConsts.h>
#include <kx/rtl/Streams.h>

namespace kx {

class KX_API TKxMemoryStream : public TStream {
  KX_CLASS(TKxMemoryStream, TStream)
public:
  // An empty stream that owns its memory: BlockSize bytes at first, growing in steps of
  // BlockSize. A block size of 0 grows one byte at a time.
  explicit TKxMemoryStream(uint32_t BlockSize);
  // A stream over Size bytes at Buffer that stay the caller's: they may be read and
  // overwritten, but the stream never resizes, clears or frees them.
  TKxMemoryStream(void* Buffer, uint32_t Size);
  ~TKxMemoryStream() override;

  // Copies what lies between the position and the end, at most Count bytes, and moves the
  // position by the count returned. A position beyond the end gives a negative count and
  // moves back to the end.
  int32_t Read(void* Buffer, int32_t Count) override;
  // Writes at the position, growing the stream when the write ends past it; the resize
  // error for a stream over foreign memory.
  int32_t Write(const void* Buffer, int32_t Count) override;
  using TStream::Seek;
  // soBeginning clamps at the end; soCurrent clamps at the end; soEnd counts a positive
  // Offset backwards from the end (an Offset beyond the start gives the start). Negative
  // positions and a negative Offset from the end are not clamped.
  int64_t Seek(int64_t Offset, TSeekOrigin Origin) override;
  void SetSize(int32_t NewSize) override;
  // Reallocates to the next step above NewSize; new bytes are not cleared and the position
  // is clamped to NewSize. The resize error for a stream over foreign memory.
  void SetSize(int64_t NewSize) override;
  // Shrinks the memory back to one step and empties the stream.
  void Clear();

  // Exactly that many bytes in machine order, or a general exception "Unexpected EOF" (the
  // position has then moved past what was there).
  uint8_t ReadByte();
  uint16_t ReadWord();
  uint32_t ReadLongWord();
  int64_t ReadInt64();
  TBytes ReadBytes(int32_t Count);
  void ReadBytes(void* Buffer, int32_t Count);

  void WriteByte(uint8_t Value) { Write(&Value, 1); }
  void WriteWord(uint16_t Value) { Write(&Value, 2); }
  void WriteLongWord(uint32_t Value) { Write(&Value, 4); }
  void WriteInt64(int64_t Value) { Write(&Value, 8); }
  void WriteBytes(const TBytes& Bytes) { Write(Bytes.data(), int32_t(Bytes.size())); }

  bool OwnsBuffer() const { return FOwnsBuffer; }
  uint32_t Delta() const { return FDelta; }
  uint8_t* Memory() const { return FMemory; }
  uint32_t Capacity() const { return FCapacity; }
  uint8_t* ContentEnd() const { return FMemory + FSize; }
  // The byte at the position; the position itself is not clamped by reading it here,
  // unlike Position(), which seeks.
  uint8_t* CurPos() const { return FMemory + FPosition; }

protected:
  int64_t GetSize() override { return FSize; }

  bool FOwnsBuffer;
  uint32_t FDelta;
  uint8_t* FMemory;
  uint32_t FCapacity;
  uint32_t FSize = 0;
  // Kept as an offset: seeks may leave it before the start or past the end.
  int64_t FPosition = 0;

private:
  [[noreturn]] static void ResizeError();
  // Resizes the owned block; the resize error for foreign memory, before anything changes.
  void Reallocate(uint64_t NewCapacity);
};

// Direct access to the bytes from Stream's position to its end; Count receives their number.
// For a memory stream (the library's or the runtime's) Buf points into its memory and the
// result is false. For any other stream Buf is a block from std::malloc, read until the end
// of the stream, Count the bytes read, and the result is true: the caller frees it with
// std::free.
KX_API bool KxStreamToReadBuf(TStream* Stream, void*& Buf, int64_t& Count);
// Room for Count bytes at Stream's position. A TKxMemoryStream is resized to position + Count
// and Buf points at the position (the result is false; the position stays). For any other
// stream Buf is a block of Count bytes from std::malloc and the result is true: the caller
// writes it to the stream and frees it with std::free.
KX_API bool KxStreamToWriteBuf(TStream* Stream, void*& Buf, int64_t Count);

} // namespace kx
