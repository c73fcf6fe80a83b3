// SPDX-License-Identifier: MIT
// The decompression stream over arbitrary bytes. The first byte picks the framing and window
// size, the second the read size and the largest read of the short-reading source; the rest
// is the compressed data. zlib's own inflate, given everything at once, is the reference:
// the stream must give the same bytes, end where it ends (leaving the source just after the
// data), fail where it fails, and seek consistently. Output is capped, so that a small input
// that inflates to a great deal cannot exhaust memory or time.
#include <kx/uKxZLib.h>

#include "FuzzSupport.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

using namespace kx;
using kxfuzz::Try;

namespace {

constexpr size_t MaxCap = size_t(16) << 20;

struct TReference {
  std::string Bytes; // at most Cap
  bool Ended = false;
  int Error = 0;       // zlib's code when inflate failed
  size_t Consumed = 0; // input used up to the end of the data
  bool Capped = false; // stopped at the cap, error or not
};

TReference Inflate(const std::string& In, int WindowBits, size_t Cap) {
  TReference R;
  z_stream S{};
  if (inflateInit2(&S, WindowBits) != Z_OK) {
    R.Error = Z_STREAM_ERROR;
    return R;
  }
  S.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(In.data()));
  S.avail_in = uInt(In.size());
  std::string Chunk(65536, '\0');
  for (;;) {
    S.next_out = reinterpret_cast<Bytef*>(Chunk.data());
    S.avail_out = uInt(Chunk.size());
    const int Code = inflate(&S, Z_NO_FLUSH);
    R.Bytes.append(Chunk.data(), Chunk.size() - S.avail_out);
    if (Code == Z_STREAM_END) {
      R.Ended = true;
      break;
    }
    // A preset dictionary is never supplied here: asking for one ends the data as an error.
    if (Code == Z_NEED_DICT || (Code < 0 && Code != Z_BUF_ERROR)) {
      R.Error = Code;
      break;
    }
    if (Code == Z_BUF_ERROR || (S.avail_in == 0 && S.avail_out > 0)) break; // input ran out
    if (R.Bytes.size() >= Cap) break;
  }
  R.Capped = R.Bytes.size() >= Cap;
  R.Consumed = In.size() - S.avail_in;
  inflateEnd(&S);
  return R;
}

// Reads up to Cap bytes in pieces of Piece bytes; the stream's own error escapes.
std::string ReadAll(TStream* S, int32_t Piece, size_t Cap) {
  std::string Out;
  std::string Buf(size_t(Piece), '\0');
  while (Out.size() < Cap) {
    const int32_t Got = S->Read(Buf.data(), Piece);
    KX_FUZZ_CHECK(Got >= 0 && Got <= Piece);
    if (Got == 0) break;
    Out.append(Buf.data(), size_t(Got));
  }
  return Out;
}

std::string DecompressionError(int Code) {
  return "EKxZLibDecompressionError: " + std::string(KxZLibErrorMessage(Code));
}

// The whole-stream functions pick zlib framing by a leading "x", raw deflate otherwise. A
// deflate stream expands at most about a thousandfold, so inputs of a few KiB stay bounded.
void CheckWholeStream(const std::string& In) {
  if (In.size() > 8192) return;
  const int Sniffed = In.empty() ? 0 : In[0] == 'x' ? 15 : -15;
  const auto Whole = Try([&] {
    auto M = kxfuzz::MemoryOf("??" + In);
    M->SetPosition(2);
    return std::string(ZlDecompressStreamToString(M.get()));
  });
  if (In.empty()) {
    KX_FUZZ_CHECK(!Whole.Value && Whole.Error == DecompressionError(Z_STREAM_END));
  } else {
    const TReference SniffRef = Inflate(In, Sniffed, MaxCap);
    if (SniffRef.Error != 0)
      KX_FUZZ_CHECK(!Whole.Value && Whole.Error == DecompressionError(SniffRef.Error));
    else
      KX_FUZZ_CHECK(Whole.Value && *Whole.Value == SniffRef.Bytes);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  if (Size < 2) return 0;
  // zlib, raw deflate, gzip, or either of the first and third by their header, each with
  // windows of 2^9..2^15 bytes (and 0: the zlib header's own size).
  static const int Bases[] = {0, 0, 16, 32};
  const int Bits = 8 + (Data[0] >> 2) % 8;
  const int Framing = Data[0] & 3;
  int WindowBits = Framing == 1 ? -std::max(Bits, 9) : Bases[Framing] + Bits;
  if (Framing == 0 && Bits == 8) WindowBits = 0;
  const int32_t Piece = 1 + Data[1] * 37;
  const int32_t MaxMove = 1 + (Data[1] & 0x1F) * 11;
  const std::string In(reinterpret_cast<const char*>(Data) + 2, Size - 2);
  // Small reads of a large output take many calls: the cap keeps the count of calls bounded.
  const size_t Cap = std::min(MaxCap, size_t(Piece) << 14);

  CheckWholeStream(In);
  const TReference Ref = Inflate(In, WindowBits, Cap);
  const bool Complete = !Ref.Capped;
  // With a window under 32 KiB, zlib takes a distance past the window but within what the
  // same call has written: whether it fails depends on how the calls fall, not on us.
  const bool Exact = std::abs(WindowBits) % 16 == 15;

  // Straight through in pieces.
  const auto Read = Try([&] {
    auto Source = kxfuzz::ShortReaderOf(In, MaxMove);
    kxfuzz::TOwned<TKxZLibDecompressionStream> D(
        TKxZLibDecompressionStream::Create(Source.get(), WindowBits));
    std::string Bytes = ReadAll(D.get(), Piece, Cap);
    if (Complete) {
      KX_FUZZ_CHECK(D->StreamEnded() == Ref.Ended);
      KX_FUZZ_CHECK(D->Position() == int64_t(Bytes.size()));
      // Finished data leaves the source just after it.
      if (Ref.Ended) KX_FUZZ_CHECK(Source->Position() == int64_t(Ref.Consumed));
    }
    return Bytes;
  });
  if (!Complete) {
    // Both stopped somewhere past the cap: what both have must agree.
    if (Read.Value) {
      const size_t N = std::min(Read.Value->size(), Ref.Bytes.size());
      KX_FUZZ_CHECK(Read.Value->compare(0, N, Ref.Bytes, 0, N) == 0);
    }
    return 0;
  }
  if (!Exact && (Ref.Error != 0) == Read.Value.has_value()) return 0;
  if (Ref.Error != 0) {
    KX_FUZZ_CHECK(!Read.Value && Read.Error == DecompressionError(Ref.Error));
    return 0;
  }
  KX_FUZZ_CHECK(Read.Value && *Read.Value == Ref.Bytes);
  if (!Exact) return 0;

  // Seeks: to the end for the size, back to the start, forward by discarding, and the ones
  // that cannot be emulated.
  const int64_t Total = int64_t(Ref.Bytes.size());
  auto Source = kxfuzz::ShortReaderOf(In, MaxMove);
  kxfuzz::TOwned<TKxZLibDecompressionStream> D(
      TKxZLibDecompressionStream::Create(Source.get(), WindowBits));
  KX_FUZZ_CHECK(D->Seek(0, soEnd) == Total);
  KX_FUZZ_CHECK(D->Seek(0, soCurrent) == Total);
  KX_FUZZ_CHECK(D->Seek(0, soBeginning) == 0);
  const int64_t Target = Total == 0 ? 0 : int64_t(uint32_t(Piece) * 7919u % uint64_t(Total + 1));
  KX_FUZZ_CHECK(D->Seek(Target, soBeginning) == Target);
  KX_FUZZ_CHECK(ReadAll(D.get(), Piece, Cap) == Ref.Bytes.substr(size_t(Target)));
  KX_FUZZ_CHECK(D->Seek(0, soBeginning) == 0);
  const int64_t Step = std::min<int64_t>(Total, Piece);
  KX_FUZZ_CHECK(D->Seek(Step, soCurrent) == Step);
  KX_FUZZ_CHECK(D->Seek(Total + 5, soBeginning) == Total);
  const auto Back = Try([&] { return D->Seek(-1, soCurrent); });
  KX_FUZZ_CHECK(!Back.Value &&
                Back.Error == "EKxZLibDecompressionError: " + std::string(SZInvalidStreamOp));
  const auto Write = Try([&] { return D->Write("x", 1); });
  KX_FUZZ_CHECK(!Write.Value);

  return 0;
}
