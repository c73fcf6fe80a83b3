// SPDX-License-Identifier: MIT
// Whole streams and strings through the compression streams.
#include <kx/zlib/ZLibFunctions.h>

#include <kx/rtl/Streams.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace kx {

namespace {

constexpr int32_t CopyChunk = ZLibBufferSize;

// Frees the object however the scope is left. When Free itself raises (the compression
// stream finishing its data), the object stays alive and a second Free releases it.
template <class T>
struct TFreeGuard {
  T* Obj;
  ~TFreeGuard() {
    if (Obj) Obj->Free();
  }
  void FreeNow() {
    T* P = Obj;
    try {
      P->Free();
    } catch (...) {
      Obj = P;
      throw;
    }
    Obj = nullptr;
  }
};

// Copies the rest of Source into Dest through buffers of one chunk.
void CopyRest(TStream* Source, TStream* Dest) {
  std::unique_ptr<uint8_t[]> Buffer(new uint8_t[CopyChunk]);
  for (;;) {
    const int32_t Got = Source->Read(Buffer.get(), CopyChunk);
    if (Got <= 0) break;
    Dest->WriteBuffer(Buffer.get(), Got);
  }
}

// zlib framing when the next byte is "x", raw deflate otherwise; the position is kept.
int32_t SniffWindowBits(TStream* Source) {
  uint8_t First = 0;
  if (Source->Read(&First, 1) != 1) throw EKxZLibDecompressionError(1);
  Source->Seek(int64_t(-1), soCurrent);
  return First == 'x' ? 15 : -15;
}

void Decompress(TStream* Source, TStream* Dest, int32_t WindowBits) {
  TFreeGuard<TKxZLibDecompressionStream> D{TKxZLibDecompressionStream::Create(Source, WindowBits)};
  CopyRest(D.Obj, Dest);
}

AnsiString DecompressToString(TStream* Source, bool FromStart) {
  if (FromStart) Source->SetPosition(0);
  TMemoryStream* M = TMemoryStream::Create();
  TFreeGuard<TMemoryStream> G{M};
  Decompress(Source, M, SniffWindowBits(Source));
  return AnsiString(static_cast<const char*>(M->Memory()), size_t(M->Size()));
}

} // namespace

void ZlCompressStream(TStream* Source, TStream* Dest, TKxZLibCompressionLevel Level,
                      bool FromStart) {
  if (FromStart) Source->SetPosition(0);
  TFreeGuard<TKxZLibCompressionStream> C{TKxZLibCompressionStream::Create(Dest, Level)};
  CopyRest(Source, C.Obj);
  C.FreeNow();
}

void ZlDecompressStream(TStream* Source, TStream* Dest, bool FromStart) {
  if (FromStart) Source->SetPosition(0);
  Decompress(Source, Dest, SniffWindowBits(Source));
}

void ZlDecompressStream(TStream* Source, TStream* Dest, int32_t WindowBits, bool FromStart) {
  if (FromStart) Source->SetPosition(0);
  Decompress(Source, Dest, WindowBits);
}

void ZlStringToCompressedStream(const AnsiString& S, TStream* Dest, TKxZLibCompressionLevel Level) {
  TFreeGuard<TKxZLibCompressionStream> C{TKxZLibCompressionStream::Create(Dest, Level)};
  // Written in pieces: Write takes a 32-bit count.
  for (size_t At = 0; At < S.size(); At += size_t(CopyChunk) * 256) {
    const size_t N = std::min(S.size() - At, size_t(CopyChunk) * 256);
    C.Obj->WriteBuffer(S.data() + At, int32_t(N));
  }
  C.FreeNow();
}

AnsiString ZlDecompressStreamToString(TStream* Source, bool FromStart) {
  return DecompressToString(Source, FromStart);
}

AnsiString ZlDecompressStreamToAnsiString(TStream* Source, bool FromStart) {
  return DecompressToString(Source, FromStart);
}

UnicodeString ZlDecompressStreamToWideString(TStream* Source, bool FromStart) {
  const AnsiString Bytes = DecompressToString(Source, FromStart);
  UnicodeString R(Bytes.size() / 2, u'\0');
  std::memcpy(R.data(), Bytes.data(), R.size() * 2);
  return R;
}

} // namespace kx
