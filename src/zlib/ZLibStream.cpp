// SPDX-License-Identifier: MIT
// The compression and decompression streams over zlib's deflate and inflate.
#include <kx/zlib/ZLibStream.h>

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace kx {

namespace {

constexpr const char* Unit = "uKxZLib";

const char* const Messages[] = {"Need dictionary",     "Stream end",   "OK",
                                "File error",          "Stream error", "Data error",
                                "Insufficient memory", "Buffer error", "Incompatible version"};

z_stream& Z(z_stream_s* P) {
  return *P;
}

// Every level of the enumeration, as zlib's level number.
constexpr int LevelValues[] = {0, 1, Z_DEFAULT_COMPRESSION, 9, 1, 2, 3, 4, 5, 6, 7, 8, 9};

int CompressCheck(int Code) {
  if (Code < 0) throw EKxZLibCompressionError(Code);
  return Code;
}

int DecompressCheck(int Code) {
  if (Code < 0) throw EKxZLibDecompressionError(Code);
  return Code;
}

} // namespace

KX_IMPLEMENT_EXCEPTION(EKxZLibException, Exception, Unit)
KX_IMPLEMENT_EXCEPTION(EKxZLibCompressionError, EKxZLibException, Unit)
KX_IMPLEMENT_EXCEPTION(EKxZLibDecompressionError, EKxZLibException, Unit)
KX_IMPLEMENT_CLASS(TKxZLibStream, TStream, Unit)
KX_IMPLEMENT_CLASS(TKxZLibCompressionStream, TKxZLibStream, Unit)
KX_IMPLEMENT_CLASS(TKxZLibDecompressionStream, TKxZLibStream, Unit)

AnsiString KxZLibErrorMessage(int32_t Code) {
  if (Code >= -6 && Code <= 2) return Messages[2 - Code];
  return Format("%d", {Code});
}

EKxZLibException::EKxZLibException(int32_t Code)
    : Exception(KxZLibErrorMessage(Code)), ErrorCode(Code) {}

AnsiString KxZLibLinkedVersion() {
  return zlibVersion();
}

// --- TKxZLibStream -------------------------------------------------------------------------

TKxZLibStream::TKxZLibStream(TStream* Stream) : FStream(Stream), FStreamPos(Stream->Position()) {
  static_assert(sizeof(z_stream) <= sizeof(FZRec), "zlib's record does not fit");
  std::memset(FZRec, 0, sizeof(FZRec));
  new (FZRec) z_stream{};
}

TKxZLibStream::~TKxZLibStream() = default;

// --- compression ---------------------------------------------------------------------------

TKxZLibCompressionStream::TKxZLibCompressionStream(TStream* Dest, TKxZLibCompressionLevel Level)
    : TKxZLibStream(Dest) {
  Init(Level, 15, 8, zsDefault);
}

TKxZLibCompressionStream::TKxZLibCompressionStream(TStream* Dest, TKxZLibCompressionLevel Level,
                                                   int32_t WindowBits, int32_t MemLevel,
                                                   TKxZLibStrategy Strategy)
    : TKxZLibStream(Dest) {
  Init(Level, WindowBits, MemLevel, Strategy);
}

void TKxZLibCompressionStream::Init(TKxZLibCompressionLevel Level, int32_t WindowBits,
                                    int32_t MemLevel, TKxZLibStrategy Strategy) {
  z_stream& S = Z(ZRec());
  S.next_out = FBuffer;
  S.avail_out = ZLibBufferSize;
  const int L = Level <= clLevel9 ? LevelValues[Level] : Z_DEFAULT_COMPRESSION;
  CompressCheck(deflateInit2_(&S, L, Z_DEFLATED, WindowBits, MemLevel, int(Strategy), SZLibVersion,
                              int(sizeof(z_stream))));
}

TKxZLibCompressionStream::~TKxZLibCompressionStream() {
  deflateEnd(&Z(ZRec()));
}

void TKxZLibCompressionStream::BeforeDestruction() {
  if (FFinished) return;
  // Marked first: when finishing fails, a second Free only releases the engine.
  FFinished = true;
  Finish();
}

void TKxZLibCompressionStream::Finish() {
  z_stream& S = Z(ZRec());
  S.next_in = nullptr;
  S.avail_in = 0;
  while (CompressCheck(deflate(&S, Z_FINISH)) != Z_STREAM_END) {
    const int32_t N = ZLibBufferSize - int32_t(S.avail_out);
    ZlStreamWriteBuffer(FBuffer, N);
    FFlushedOut += N;
    S.next_out = FBuffer;
    S.avail_out = ZLibBufferSize;
  }
  if (S.avail_out < uInt(ZLibBufferSize)) {
    const int32_t N = ZLibBufferSize - int32_t(S.avail_out);
    ZlStreamWriteBuffer(FBuffer, N);
    FFlushedOut += N;
    S.next_out = FBuffer;
    S.avail_out = ZLibBufferSize;
  }
}

int32_t TKxZLibCompressionStream::Read(void*, int32_t) {
  throw EKxZLibCompressionError(SZInvalidStreamOp);
}

int32_t TKxZLibCompressionStream::Write(const void* Buffer, int32_t Count) {
  if (Count <= 0) return 0;
  z_stream& S = Z(ZRec());
  S.next_in = static_cast<Bytef*>(const_cast<void*>(Buffer));
  S.avail_in = uInt(Count);
  while (S.avail_in > 0) {
    CompressCheck(deflate(&S, Z_NO_FLUSH));
    if (S.avail_out == 0) {
      ZlStreamWriteBuffer(FBuffer, ZLibBufferSize);
      FFlushedOut += ZLibBufferSize;
      S.next_out = FBuffer;
      S.avail_out = ZLibBufferSize;
      DoProgress();
    }
  }
  FTotalIn += Count;
  return Count;
}

int64_t TKxZLibCompressionStream::Seek(int64_t Offset, TSeekOrigin Origin) {
  if ((Origin == soBeginning && Offset == FTotalIn) || (Origin != soBeginning && Offset == 0))
    return FTotalIn;
  throw EKxZLibCompressionError(SZInvalidStreamOp);
}

float TKxZLibCompressionStream::CompressionRate() {
  if (FTotalIn == 0) return 0;
  const int64_t Out = FFlushedOut + (ZLibBufferSize - int64_t(Z(ZRec()).avail_out));
  return float((1.0 - double(Out) / double(FTotalIn)) * 100.0);
}

// --- decompression -------------------------------------------------------------------------

TKxZLibDecompressionStream::TKxZLibDecompressionStream(TStream* Source) : TKxZLibStream(Source) {
  Init(15);
}

TKxZLibDecompressionStream::TKxZLibDecompressionStream(TStream* Source, int32_t WindowBits)
    : TKxZLibStream(Source) {
  Init(WindowBits);
}

void TKxZLibDecompressionStream::Init(int32_t WindowBits) {
  z_stream& S = Z(ZRec());
  S.next_in = FBuffer;
  S.avail_in = 0;
  DecompressCheck(inflateInit2_(&S, WindowBits, SZLibVersion, int(sizeof(z_stream))));
}

TKxZLibDecompressionStream::~TKxZLibDecompressionStream() {
  inflateEnd(&Z(ZRec()));
}

int32_t TKxZLibDecompressionStream::Read(void* Buffer, int32_t Count) {
  if (Count <= 0 || FStreamEnd) return 0;
  z_stream& S = Z(ZRec());
  S.next_out = static_cast<Bytef*>(Buffer);
  S.avail_out = uInt(Count);
  while (S.avail_out > 0 && !FStreamEnd) {
    bool Dry = false;
    if (S.avail_in == 0) {
      const int32_t Got = ZlStreamRead(FBuffer, ZLibBufferSize);
      if (Got > 0) {
        S.next_in = FBuffer;
        S.avail_in = uInt(Got);
        DoProgress();
      } else {
        // The engine may still hold output of input it has taken (a long match that did not
        // fit the last buffer): a source that ran dry ends the read only once that is out.
        Dry = true;
        S.next_in = FBuffer;
      }
    }
    const uInt Room = S.avail_out;
    const int Code = inflate(&S, Z_NO_FLUSH);
    if (Dry && Code != Z_STREAM_END && (Code == Z_BUF_ERROR || S.avail_out == Room)) break;
    // No preset dictionary can be given, and inflate would ask for it again on every call.
    if (Code == Z_NEED_DICT) throw EKxZLibDecompressionError(Code);
    FStreamEnd = DecompressCheck(Code) == Z_STREAM_END;
  }
  if (FStreamEnd && S.avail_in > 0) {
    // Leave the wrapped stream just after the compressed data.
    ZlStreamSeek(-int64_t(S.avail_in), soCurrent);
    S.avail_in = 0;
  }
  const int32_t Done = Count - int32_t(S.avail_out);
  FTotalOut += Done;
  return Done;
}

int32_t TKxZLibDecompressionStream::Write(const void*, int32_t) {
  throw EKxZLibDecompressionError(SZInvalidStreamOp);
}

void TKxZLibDecompressionStream::Discard(int64_t Count) {
  uint8_t Chunk[8192];
  while (Count > 0) {
    const int32_t Got = Read(Chunk, int32_t(std::min<int64_t>(Count, sizeof(Chunk))));
    if (Got == 0) break;
    Count -= Got;
  }
}

int64_t TKxZLibDecompressionStream::Seek(int64_t Offset, TSeekOrigin Origin) {
  if (Origin == soBeginning && Offset == 0) {
    z_stream& S = Z(ZRec());
    DecompressCheck(inflateReset(&S));
    SetStreamPosition(FStreamPos);
    S.next_in = FBuffer;
    S.avail_in = 0;
    FTotalOut = 0;
    FStreamEnd = false;
    return 0;
  }
  if (Origin == soBeginning && Offset >= FTotalOut) {
    Discard(Offset - FTotalOut);
    return FTotalOut;
  }
  if (Origin == soCurrent && Offset >= 0) {
    Discard(Offset);
    return FTotalOut;
  }
  if (Origin == soEnd && Offset == 0) {
    uint8_t Chunk[8192];
    while (Read(Chunk, sizeof(Chunk)) > 0) {
    }
    return FTotalOut;
  }
  throw EKxZLibDecompressionError(SZInvalidStreamOp);
}

} // namespace kx
