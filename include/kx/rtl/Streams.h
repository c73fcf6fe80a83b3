// SPDX-License-Identifier: MIT
#pragma once
// The runtime's stream family: the abstract byte stream, streams over OS file handles and
// files, and the growable memory streams.

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Object.h>

namespace kx {

enum TSeekOrigin : uint8_t { soBeginning, soCurrent, soEnd };

// TFileStream modes: one access value or'ed with one share value, or fmCreate alone.
inline constexpr uint16_t fmCreate = 0xFFFF;
inline constexpr uint16_t fmOpenRead = 0x0000;
inline constexpr uint16_t fmOpenWrite = 0x0001;
inline constexpr uint16_t fmOpenReadWrite = 0x0002;
inline constexpr uint16_t fmShareCompat = 0x0000;
inline constexpr uint16_t fmShareExclusive = 0x0010;
inline constexpr uint16_t fmShareDenyWrite = 0x0020;
inline constexpr uint16_t fmShareDenyRead = 0x0030;
inline constexpr uint16_t fmShareDenyNone = 0x0040;

inline constexpr const char* SReadError = "Stream read error";
inline constexpr const char* SWriteError = "Stream write error";
// The plain form: the name only, without the OS error text.
inline constexpr const char* SFOpenError = "Cannot open file %s";
inline constexpr const char* SFCreateError = "Cannot create file %s";
inline constexpr const char* SMemoryStreamError = "Out of memory while expanding memory stream";

// An OS file handle (a HANDLE on Windows, a descriptor on POSIX); negative when invalid.
using THandle = intptr_t;

// The abstract byte stream. A descendant implements Read, Write and the 64-bit Seek; the
// 32-bit Seek and both SetSize forward to the 64-bit forms.
class KX_API TStream : public TObject {
  KX_CLASS(TStream, TObject)
public:
  // The number of bytes moved, which may be fewer than Count.
  virtual int32_t Read(void* Buffer, int32_t Count) = 0;
  virtual int32_t Write(const void* Buffer, int32_t Count) = 0;
  // The new position from the start.
  virtual int32_t Seek(int32_t Offset, TSeekOrigin Origin);
  virtual int64_t Seek(int64_t Offset, TSeekOrigin Origin) = 0;

  // Move up to Count bytes, calling Read/Write until the count is done or a call moves
  // nothing (the end of the stream); the number moved. Streams over pipes, sockets or codecs
  // may move fewer bytes per call than asked, so one call never tells that the end is reached.
  int64_t ReadUpTo(void* Buffer, int64_t Count);
  int64_t WriteUpTo(const void* Buffer, int64_t Count);
  // Move exactly Count bytes, calling Read/Write until done; EReadError / EWriteError when
  // a call moves nothing.
  void ReadBuffer(void* Buffer, int32_t Count);
  void WriteBuffer(const void* Buffer, int32_t Count);
  // Copies Count bytes from Source's position; Count <= 0 copies the whole of Source from its
  // start. Returns the number of bytes copied.
  int64_t CopyFrom(TStream* Source, int64_t Count);

  int64_t Position() { return Seek(int64_t(0), soCurrent); }
  void SetPosition(int64_t Pos) { Seek(Pos, soBeginning); }
  int64_t Size() { return GetSize(); }
  // Streams that cannot change their size ignore this.
  virtual void SetSize(int32_t NewSize);
  virtual void SetSize(int64_t NewSize);

protected:
  TStream() = default;
  // By default measured by seeking to the end and back.
  virtual int64_t GetSize();
};

// A stream over an OS file handle it does not own.
class KX_API THandleStream : public TStream {
  KX_CLASS(THandleStream, TStream)
public:
  explicit THandleStream(THandle AHandle) : FHandle(AHandle) {}

  int32_t Read(void* Buffer, int32_t Count) override;
  int32_t Write(const void* Buffer, int32_t Count) override;
  using TStream::Seek;
  int64_t Seek(int64_t Offset, TSeekOrigin Origin) override;
  using TStream::SetSize;
  // Moves to NewSize and ends the file there; an OS failure raises EOSError.
  void SetSize(int64_t NewSize) override;
  THandle Handle() const { return FHandle; }

protected:
  int64_t GetSize() override;
  THandle FHandle;
};

// A stream over a file it opens (or creates, with fmCreate) and closes.
class KX_API TFileStream : public THandleStream {
  KX_CLASS(TFileStream, THandleStream)
public:
  // EFCreateError / EFOpenError "Cannot create/open file <name>" when the OS refuses.
  TFileStream(const AnsiString& AFileName, uint16_t Mode);
  ~TFileStream() override;
  const AnsiString& FileName() const { return FFileName; }

private:
  AnsiString FFileName;
};

// A stream over one block of memory. Reads and seeks only; descendants decide who owns the
// memory and how it grows. Seeking is not clamped: a position past the end reads nothing.
class KX_API TCustomMemoryStream : public TStream {
  KX_CLASS(TCustomMemoryStream, TStream)
public:
  int32_t Read(void* Buffer, int32_t Count) override;
  using TStream::Seek;
  int64_t Seek(int64_t Offset, TSeekOrigin Origin) override;
  void SaveToStream(TStream* Stream);
  void SaveToFile(const AnsiString& FileName);
  void* Memory() const { return FMemory; }

protected:
  TCustomMemoryStream() = default;
  int64_t GetSize() override { return FSize; }
  // Points the stream at other memory; the position stays.
  void SetPointer(void* Ptr, int64_t ASize);

  void* FMemory = nullptr;
  int64_t FSize = 0;
  int64_t FPosition = 0;
};

// A memory stream that owns its memory and grows it in 8 KiB blocks.
class KX_API TMemoryStream : public TCustomMemoryStream {
  KX_CLASS(TMemoryStream, TCustomMemoryStream)
public:
  TMemoryStream() = default;
  ~TMemoryStream() override;

  int32_t Write(const void* Buffer, int32_t Count) override;
  using TCustomMemoryStream::SetSize;
  // The position is kept, moved back to the new end when it was past it.
  void SetSize(int64_t NewSize) override;
  void Clear();
  // Replaces the content by the whole of Stream (read from its start); the position stays
  // unless it is past the new end.
  void LoadFromStream(TStream* Stream);
  void LoadFromFile(const AnsiString& FileName);

  int64_t Capacity() const { return FCapacity; }
  void SetCapacity(int64_t NewCapacity);

protected:
  // Resizes the memory block for a capacity of NewCapacity (which it may round up) and
  // returns it; EStreamError "Out of memory while expanding memory stream" on failure.
  virtual void* Realloc(int64_t& NewCapacity);
  int64_t FCapacity = 0;
};

// A memory stream whose memory is a byte array. Bytes() is the whole array, whose length is
// the capacity: the content is its first Size() bytes.
class KX_API TBytesStream : public TMemoryStream {
  KX_CLASS(TBytesStream, TMemoryStream)
public:
  explicit TBytesStream(TBytes ABytes = {});
  ~TBytesStream() override;
  const TBytes& Bytes() const { return FBytes; }

protected:
  void* Realloc(int64_t& NewCapacity) override;

private:
  TBytes FBytes;
};

} // namespace kx
