// SPDX-License-Identifier: MIT
#pragma once
// Streams that compress into, and decompress from, another stream through zlib, in zlib,
// raw deflate or gzip framing (chosen by the window bits, as zlib defines them).

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Streams.h>
#include <kx/rtl/StringList.h>

#include <cstdint>

struct z_stream_s;

namespace kx {

inline constexpr const char* SZInvalidStreamOp = "Invalid ZStream operation!";
// Passed to zlib's initialisers, which compare only its first character with the linked
// zlib's own version: any zlib 1.x serves.
inline constexpr const char* SZLibVersion = "1.2.8";

// Carries zlib's return code; the message is looked up from the code unless one is given.
class KX_API EKxZLibException : public Exception {
  KX_EXCEPTION_CLASS(EKxZLibException, Exception)
public:
  explicit EKxZLibException(int32_t Code);
  EKxZLibException(const AnsiString& Msg, int32_t Code) : Exception(Msg), ErrorCode(Code) {}
  int32_t ErrorCode = 0;
};
KX_DECLARE_EXCEPTION(EKxZLibCompressionError, EKxZLibException)
KX_DECLARE_EXCEPTION(EKxZLibDecompressionError, EKxZLibException)

// The message for a zlib return code ("Stream end", "Data error", ...).
KX_API AnsiString KxZLibErrorMessage(int32_t Code);
// The version of the zlib the library runs on.
KX_API AnsiString KxZLibLinkedVersion();

enum TKxZLibCompressionLevel : uint8_t {
  clNone,
  clFastest,
  clDefault,
  clMax,
  clLevel1,
  clLevel2,
  clLevel3,
  clLevel4,
  clLevel5,
  clLevel6,
  clLevel7,
  clLevel8,
  clLevel9
};

enum TKxZLibStrategy : uint8_t { zsDefault, zsFiltered, zsHuffman, zsRLE, zsFixed };

inline constexpr int32_t ZLibBufferSize = 65536;

// The common part: the wrapped stream (not owned), where it stood at construction, the
// progress event, the engine's record and one inline buffer for all I/O.
class KX_API TKxZLibStream : public TStream {
  KX_CLASS(TKxZLibStream, TStream)
public:
  ~TKxZLibStream() override;
  // Fired after each buffer moved to or from the wrapped stream.
  TNotifyEvent OnProgress;

protected:
  explicit TKxZLibStream(TStream* Stream);

  int32_t ZlStreamRead(void* Buffer, int32_t Count) { return FStream->Read(Buffer, Count); }
  int32_t ZlStreamWrite(const void* Buffer, int32_t Count) { return FStream->Write(Buffer, Count); }
  int64_t ZlStreamSeek(int64_t Offset, TSeekOrigin Origin) { return FStream->Seek(Offset, Origin); }
  void ZlStreamReadBuffer(void* Buffer, int32_t Count) { FStream->ReadBuffer(Buffer, Count); }
  void ZlStreamWriteBuffer(const void* Buffer, int32_t Count) {
    FStream->WriteBuffer(Buffer, Count);
  }
  void DoProgress() {
    if (OnProgress) OnProgress(this);
  }
  int64_t GetStreamPosition() { return FStream->Position(); }
  void SetStreamPosition(int64_t Pos) { FStream->SetPosition(Pos); }
  z_stream_s* ZRec() { return reinterpret_cast<z_stream_s*>(FZRec); }

  TStream* FStream;
  int64_t FStreamPos;
  // Room for zlib's record on every target (its size is checked where zlib is included).
  alignas(void*) unsigned char FZRec[14 * sizeof(void*)];
  uint8_t FBuffer[ZLibBufferSize];
};

// Write-only: everything written is deflated into the wrapped stream. The output is complete
// only once the stream is freed.
class KX_API TKxZLibCompressionStream : public TKxZLibStream {
  KX_CLASS(TKxZLibCompressionStream, TKxZLibStream)
public:
  // zlib framing, 15 window bits, memory level 8, the default strategy.
  TKxZLibCompressionStream(TStream* Dest, TKxZLibCompressionLevel Level);
  TKxZLibCompressionStream(TStream* Dest, TKxZLibCompressionLevel Level, int32_t WindowBits,
                           int32_t MemLevel, TKxZLibStrategy Strategy);
  ~TKxZLibCompressionStream() override;
  // Finishes the compressed data; an engine or write error leaves the object alive, and a
  // second Free then only releases it.
  void BeforeDestruction() override;

  int32_t Read(void* Buffer, int32_t Count) override;
  int32_t Write(const void* Buffer, int32_t Count) override;
  using TStream::Seek;
  // Position queries only: the count of bytes written so far.
  int64_t Seek(int64_t Offset, TSeekOrigin Origin) override;
  // The percentage saved so far; 0 before anything was written.
  float CompressionRate();

private:
  void Finish();
  void Init(TKxZLibCompressionLevel Level, int32_t WindowBits, int32_t MemLevel,
            TKxZLibStrategy Strategy);

  int64_t FTotalIn = 0;
  int64_t FFlushedOut = 0;
  bool FFinished = false;
};

// Read-only: inflates from the wrapped stream on demand. Once the compressed data ends, the
// wrapped stream is left just after it. Seeking decompresses: forward by discarding, back to 0
// by starting over, to the end to learn the size.
class KX_API TKxZLibDecompressionStream : public TKxZLibStream {
  KX_CLASS(TKxZLibDecompressionStream, TKxZLibStream)
public:
  // zlib framing.
  explicit TKxZLibDecompressionStream(TStream* Source);
  TKxZLibDecompressionStream(TStream* Source, int32_t WindowBits);
  ~TKxZLibDecompressionStream() override;

  int32_t Read(void* Buffer, int32_t Count) override;
  int32_t Write(const void* Buffer, int32_t Count) override;
  using TStream::Seek;
  int64_t Seek(int64_t Offset, TSeekOrigin Origin) override;
  // True once the engine has met the end of the compressed data; until then a source that
  // runs dry has ended early.
  bool StreamEnded() const { return FStreamEnd; }

private:
  void Init(int32_t WindowBits);
  void Discard(int64_t Count);

  int64_t FTotalOut = 0;
  bool FStreamEnd = false;
};

} // namespace kx
