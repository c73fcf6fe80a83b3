// SPDX-License-Identifier: MIT
// The text parser: per-form movement and skip routines bound once, chunked reading of
// streams that are not in memory, marks, peeks and selections.
#include <kx/classes/MemoryStream.h>
#include <kx/classes/ObjectEx.h>
#include <kx/classes/TextParser.h>
#include <kx/types/Encoding.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "rtl/CpuFeatures.h"

namespace kx {

KX_IMPLEMENT_CLASS(TKxTextParser, TKxObject, "uKxClasses")
KX_IMPLEMENT_EXCEPTION(EKxTextParserEOF, Exception, "uKxClasses")

namespace {

constexpr int32_t EmptyStreamAssertLine = 5123;
constexpr int32_t EmptyBufferAssertLine = 5151;
constexpr int32_t LoadChunkAssertLine = 5262;
constexpr int32_t SelectedAssertLine = 5803;

// A skip over one-byte text looks at this many bytes at a time, so that counting the line
// feeds it passed reads bytes that are still in the cache.
constexpr ptrdiff_t ScanBlock = 0x10000;

constexpr uint8_t LF = 10;

[[noreturn]] void RaiseEOF() {
  throw EKxTextParserEOF(SUnexpectedEOF);
}

inline uint16_t Load16(const uint8_t* P) {
  uint16_t W;
  std::memcpy(&W, P, 2);
  return W;
}

// The number of bytes a UTF-8 sequence takes, from its lead byte.
inline int SequenceLength(uint8_t Lead) {
  return Lead >= 0xF0 ? 4 : Lead >= 0xE0 ? 3 : Lead >= 0xC0 ? 2 : 1;
}

// Vectors of bytes as GCC's vector extension knows them; the compiler picks the
// instructions (SSE2 for 16 bytes on x86, AVX2 for 32 bytes where the routine is built for it).
#if defined(__GNUC__)
#define KX_BYTE_VECTORS 1
template <int N>
using TByteVector __attribute__((vector_size(N))) = uint8_t;
template <int N>
using TWordVector __attribute__((vector_size(N))) = uint64_t;

// Finds the first C in [P, End) (End when there is none) and adds to Lines the line feeds
// before it: one pass over the bytes. Each lane counts its line feeds in a byte, emptied
// before it can wrap (at most 254 rounds).
template <int N>
const uint8_t* ScanCountImpl(const uint8_t* P, const uint8_t* End, uint8_t C, size_t& Lines) {
  const TByteVector<N> SplatC = TByteVector<N>{} + C;
  const TByteVector<N> SplatLF = TByteVector<N>{} + LF;
  while (End - P >= 2 * N) {
    const ptrdiff_t Rounds = std::min<ptrdiff_t>((End - P) / (2 * N), 127);
    TByteVector<N> Acc = {};
    bool Hit = false;
    for (ptrdiff_t I = 0; I < Rounds; ++I) {
      TByteVector<N> A, B;
      std::memcpy(&A, P, N);
      std::memcpy(&B, P + N, N);
      const TWordVector<N> Any = reinterpret_cast<TWordVector<N>>((A == SplatC) | (B == SplatC));
      uint64_t Bits = 0;
      for (int W = 0; W < N / 8; ++W) Bits |= Any[W];
      if (Bits != 0) {
        Hit = true;
        break;
      }
      Acc -= reinterpret_cast<TByteVector<N>>(A == SplatLF);
      Acc -= reinterpret_cast<TByteVector<N>>(B == SplatLF);
      P += 2 * N;
    }
    for (int L = 0; L < N; ++L) Lines += Acc[L];
    if (Hit) break;
  }
  for (; P < End && *P != C; ++P) Lines += *P == LF;
  return P;
}

#if defined(KX_X86_VECTORS)
// The same with AVX2 where the processor has it: 128 bytes a round, one test for C over all
// four vectors, and the line-feed lanes summed with SAD.
__attribute__((target("avx2"))) const uint8_t* ScanCountAVX2(const uint8_t* P, const uint8_t* End,
                                                             uint8_t C, size_t& Lines) {
  const __m256i SplatC = _mm256_set1_epi8(char(C));
  const __m256i SplatLF = _mm256_set1_epi8(char(LF));
  const __m256i Zero = _mm256_setzero_si256();
  bool Hit = false;
  while (!Hit && End - P >= 128) {
    // Four line feeds a lane per round: 63 rounds stay below 256.
    const ptrdiff_t Rounds = std::min<ptrdiff_t>((End - P) / 128, 63);
    __m256i Acc = Zero;
    for (ptrdiff_t I = 0; I < Rounds; ++I, P += 128) {
      const __m256i* V = reinterpret_cast<const __m256i*>(P);
      const __m256i A = _mm256_loadu_si256(V), B = _mm256_loadu_si256(V + 1);
      const __m256i D = _mm256_loadu_si256(V + 2), E = _mm256_loadu_si256(V + 3);
      const __m256i Found = _mm256_or_si256(
          _mm256_or_si256(_mm256_cmpeq_epi8(A, SplatC), _mm256_cmpeq_epi8(B, SplatC)),
          _mm256_or_si256(_mm256_cmpeq_epi8(D, SplatC), _mm256_cmpeq_epi8(E, SplatC)));
      if (!_mm256_testz_si256(Found, Found)) {
        Hit = true;
        break;
      }
      Acc = _mm256_sub_epi8(Acc, _mm256_cmpeq_epi8(A, SplatLF));
      Acc = _mm256_sub_epi8(Acc, _mm256_cmpeq_epi8(B, SplatLF));
      Acc = _mm256_sub_epi8(Acc, _mm256_cmpeq_epi8(D, SplatLF));
      Acc = _mm256_sub_epi8(Acc, _mm256_cmpeq_epi8(E, SplatLF));
    }
    uint64_t Sums[4];
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(Sums), _mm256_sad_epu8(Acc, Zero));
    Lines += size_t(Sums[0] + Sums[1] + Sums[2] + Sums[3]);
  }
  for (; P < End && *P != C; ++P) Lines += *P == LF;
  return P;
}

#endif

const uint8_t* ScanCount(const uint8_t* P, const uint8_t* End, uint8_t C, size_t& Lines) {
#if defined(KX_X86_VECTORS)
  if (detail::CpuHasAvx2()) return ScanCountAVX2(P, End, C, Lines);
#endif
  return ScanCountImpl<16>(P, End, C, Lines);
}
#endif

// The number of bytes equal to B in [P, End).
size_t CountByte(const uint8_t* P, const uint8_t* End, uint8_t B) {
  size_t N = 0;
#if defined(KX_BYTE_VECTORS)
  const TByteVector<16> Splat = TByteVector<16>{} + B;
  while (End - P >= 16) {
    const ptrdiff_t Rounds = std::min<ptrdiff_t>((End - P) / 16, 255);
    TByteVector<16> Acc = {};
    for (ptrdiff_t I = 0; I < Rounds; ++I, P += 16) {
      TByteVector<16> V;
      std::memcpy(&V, P, 16);
      Acc -= reinterpret_cast<TByteVector<16>>(V == Splat);
    }
    for (int L = 0; L < 16; ++L) N += Acc[L];
  }
#endif
  for (; P < End; ++P) N += *P == B;
  return N;
}

// Text conversions of the parser, all through the library's encoding class.
UnicodeString WidenText(const uint8_t* P, size_t N, uint16_t CodePage) {
  UnicodeString W;
  return TKxEncoding::ConvertA(P, int32_t(N), W, CodePage);
}
UnicodeString UTF16Text(const uint8_t* P, size_t Bytes) {
  UnicodeString W;
  return TKxEncoding::ConvertB(P, int32_t(Bytes), W, 1200);
}
UnicodeString UTF8Text(const uint8_t* P, size_t N) {
  return WidenText(P, N, 65001);
}
// Bytes in a code page as 8-bit text of the system code page.
AnsiString SystemText(const uint8_t* P, size_t N, uint16_t FromCodePage) {
  AnsiString S;
  return TKxEncoding::ConvertB(P, int32_t(N), S, 0, FromCodePage);
}
// One character narrowed to the system code page (its first byte); ASCII as it is.
AnsiChar NarrowChar(WideChar W) {
  if (W < 0x80) return AnsiChar(W);
  AnsiString S;
  TKxEncoding::ConvertW(&W, 1, S, 0);
  return S.empty() ? AnsiChar(0) : S[0];
}
// One 8-bit character of the system code page widened; ASCII as it is.
WideChar WidenSystemChar(AnsiChar C) {
  if (uint8_t(C) < 0x80) return WideChar(uint8_t(C));
  UnicodeString W = WidenText(reinterpret_cast<const uint8_t*>(&C), 1, 0);
  return W.empty() ? WideChar(0) : W[0];
}

// The comparison a skip makes.
template <class T>
struct TCompare {
  TKxTextParserSkipOp Op;
  T C;
  bool operator()(T X) const {
    switch (Op) {
    case sopEq:
      return X == C;
    case sopLt:
      return X < C;
    case sopGt:
      return X > C;
    case sopUnEq:
      return X != C;
    case sopLtEq:
      return X <= C;
    case sopGtEq:
      return X >= C;
    default:
      return false;
    }
  }
};

} // namespace

namespace detail {

// The per-form routines. Each skip is one loop with the character access and the move
// inlined; only the choice of the routine goes through the bound table.
struct TTextParserOps {
  using P = TKxTextParser;

  // --- one byte per character ---------------------------------------------------------

  static inline void StepSBCS(P* S) {
    if (S->FEOF) RaiseEOF();
    S->FPrevPos = S->FCurPos;
    ++S->FCurPos;
    ++S->FCharsRead;
    if (S->FCurPos == S->FBufferEnd) S->EndReached();
    // A line starts at the line feed arrived at.
    if (!S->FEOF && *S->FCurPos == LF) {
      ++S->FLineNr;
      S->FColNr = 0;
    }
    ++S->FColNr;
    ++S->FPosition;
  }

  static void NextSBCS(P* S) { StepSBCS(S); }

  // K moves at once, K >= 1 and CurPos + K <= BufferEnd: the same counters as K steps.
  // Lines is the number of line feeds arrived at, when the caller already knows it.
  static void AdvanceSBCS(P* S, ptrdiff_t K, ptrdiff_t Lines = -1) {
    const uint8_t* From = S->FCurPos;
    const uint8_t* To = From + K;
    const bool AtEnd = To == S->FBufferEnd;
    S->FPrevPos = To - 1;
    S->FCurPos = To;
    S->FCharsRead += K;
    S->FPosition += K;
    // The bytes arrived at are From + 1 .. To; the end itself holds no byte.
    const uint8_t* ArrivedEnd = AtEnd ? To : To + 1;
    if (Lines < 0) Lines = ptrdiff_t(CountByte(From + 1, ArrivedEnd, LF));
    if (Lines != 0) {
      const uint8_t* Last = ArrivedEnd - 1;
      while (*Last != LF) --Last;
      S->FLineNr += int64_t(Lines);
      S->FColNr = (To - Last) + 1;
    } else {
      S->FColNr += K;
    }
    if (AtEnd) {
      S->EndReached();
      if (!S->FEOF && *S->FCurPos == LF) {
        ++S->FLineNr;
        S->FColNr = 1;
      }
    }
  }

  // Moves while Find says the bytes hold: Find(P, Lim) returns the first byte in [P, Lim)
  // for which the comparison fails, or Lim.
  template <class F>
  static void SkipBytes(P* S, F Find) {
    while (!S->FEOF) {
      const uint8_t* From = S->FCurPos;
      const uint8_t* Lim = S->FBufferEnd - From > ScanBlock ? From + ScanBlock : S->FBufferEnd;
      const uint8_t* Stop = Find(From, Lim);
      if (Stop == From) return;
      const bool Found = Stop != Lim;
      AdvanceSBCS(S, Stop - From);
      if (Found) return;
    }
  }

  // Up to the next C, finding it and counting the line feeds passed in one pass.
  static void SkipToByte(P* S, uint8_t C) {
#if defined(KX_BYTE_VECTORS)
    while (!S->FEOF) {
      const uint8_t* From = S->FCurPos;
      const uint8_t* End = S->FBufferEnd;
      size_t Passed = 0;
      const uint8_t* Stop = ScanCount(From, End, C, Passed);
      if (Stop == From) return;
      const bool Found = Stop != End;
      // The scan counted From .. Stop - 1; the moves arrive at From + 1 .. Stop.
      ptrdiff_t Lines = ptrdiff_t(Passed) - (*From == LF) + (Found && C == LF);
      AdvanceSBCS(S, Stop - From, Lines);
      if (Found) return;
    }
#else
    SkipBytes(S, [C](const uint8_t* Q, const uint8_t* Lim) {
      const void* Hit = std::memchr(Q, C, size_t(Lim - Q));
      return Hit ? static_cast<const uint8_t*>(Hit) : Lim;
    });
#endif
  }

  template <class Pred>
  static void SkipBytesWhile(P* S, Pred Holds) {
    SkipBytes(S, [&](const uint8_t* Q, const uint8_t* Lim) {
      while (Q < Lim && Holds(*Q)) ++Q;
      return Q;
    });
  }

  static void SkipASBCS(P* S, TKxTextParserSkipOp Op, uint8_t C) {
    switch (Op) {
    case sopUnEq:
      SkipToByte(S, C);
      break;
    case sopEq:
      SkipBytesWhile(S, [C](uint8_t X) { return X == C; });
      break;
    case sopLt:
      SkipBytesWhile(S, [C](uint8_t X) { return X < C; });
      break;
    case sopGt:
      SkipBytesWhile(S, [C](uint8_t X) { return X > C; });
      break;
    case sopLtEq:
      SkipBytesWhile(S, [C](uint8_t X) { return X <= C; });
      break;
    case sopGtEq:
      SkipBytesWhile(S, [C](uint8_t X) { return X >= C; });
      break;
    default:
      break;
    }
  }

  static void SkipWSBCS(P* S, TKxTextParserSkipOp Op, uint16_t W) {
    S->Widen(0); // fills the table
    const WideChar* Table = S->FWiden;
    TCompare<uint16_t> Holds{Op, W};
    if (Op > sopGtEq) return;
    SkipBytesWhile(S, [&](uint8_t X) { return Holds(Table[X]); });
  }

  static void SkipInSBCS(P* S, bool In, const TKxCharSet& Chars) {
    bool Member[256];
    for (unsigned I = 0; I < 256; ++I) Member[I] = Chars.Contains(AnsiChar(I)) == In;
    SkipBytesWhile(S, [&](uint8_t X) { return Member[X]; });
  }

  // --- UTF-16LE ---------------------------------------------------------------------------

  static inline void StepDBCS(P* S) {
    if (S->FEOF) RaiseEOF();
    S->FPrevPos = S->FCurPos;
    // A lone last byte is no character: the move ends at the end.
    S->FCurPos = S->FBufferEnd - S->FCurPos >= 2 ? S->FCurPos + 2 : S->FBufferEnd;
    S->FCharsRead += 2;
    if (S->FCurPos == S->FBufferEnd) S->EndReached();
    if (!S->FEOF && S->FBufferEnd - S->FCurPos >= 2 && Load16(S->FCurPos) == LF) {
      ++S->FLineNr;
      S->FColNr = 0;
    }
    ++S->FColNr;
    S->FPosition += 2;
  }

  static void NextDBCS(P* S) {
    StepDBCS(S);
  }

  template <class Pred>
  static void SkipUnitsWhile(P* S, Pred Holds) {
    while (!S->FEOF && S->FBufferEnd - S->FCurPos >= 2 && Holds(Load16(S->FCurPos))) StepDBCS(S);
  }

  static void SkipWDBCS(P* S, TKxTextParserSkipOp Op, uint16_t W) {
    if (Op > sopGtEq) return;
    TCompare<uint16_t> Holds{Op, W};
    SkipUnitsWhile(S, Holds);
  }

  static void SkipADBCS(P* S, TKxTextParserSkipOp Op, uint8_t C) {
    SkipWDBCS(S, Op, WidenSystemChar(AnsiChar(C)));
  }

  static void SkipInDBCS(P* S, bool In, const TKxCharSet& Chars) {
    SkipUnitsWhile(S, [&](uint16_t X) { return Chars.Contains(uint32_t(X)) == In; });
  }

  // --- UTF-8 ------------------------------------------------------------------------------

  static inline void StepMBCS(P* S) {
    if (S->FEOF) RaiseEOF();
    S->FPrevPos = S->FCurPos;
    const uint8_t Lead = *S->FCurPos++;
    ++S->FPosition;
    // Here the line feed counts when it is moved over.
    if (Lead == LF) {
      ++S->FLineNr;
      S->FColNr = 0;
    }
    for (int Trail = SequenceLength(Lead) - 1; Trail > 0; --Trail) {
      if (S->FCurPos == S->FBufferEnd) {
        if (!S->FLastChunk) S->LoadNextChunk();
        if (S->FCurPos == S->FBufferEnd) {
          S->FEOF = true;
          RaiseEOF();
        }
      }
      ++S->FCurPos;
      ++S->FPosition;
    }
    if (S->FCurPos == S->FBufferEnd) S->EndReached();
    ++S->FCharsRead;
    ++S->FColNr;
  }

  static void NextMBCS(P* S) {
    StepMBCS(S);
  }

  // The value of the character at CurPos, decoded from its bytes (missing ones count as 0;
  // moving over such a sequence raises).
  static inline uint32_t CurrentMBCS(P* S) {
    const uint8_t Lead = *S->FCurPos;
    if (Lead < 0xC0) return Lead;
    const int Length = SequenceLength(Lead);
    if (S->FBufferEnd - S->FCurPos < Length && !S->FLastChunk) S->LoadNextChunk();
    const uint8_t* Q = S->FCurPos;
    const ptrdiff_t Avail = S->FBufferEnd - Q;
    auto Trail = [&](int I) { return I < Avail ? uint32_t(Q[I] & 0x3F) : 0u; };
    switch (Length) {
    case 2:
      return (uint32_t(Lead & 0x1F) << 6) | Trail(1);
    case 3:
      return (uint32_t(Lead & 0x0F) << 12) | (Trail(1) << 6) | Trail(2);
    default:
      return (uint32_t(Lead & 0x07) << 18) | (Trail(1) << 12) | (Trail(2) << 6) | Trail(3);
    }
  }

  template <class Pred>
  static void SkipCharsWhile(P* S, Pred Holds) {
    while (!S->FEOF && Holds(CurrentMBCS(S))) StepMBCS(S);
  }

  static void SkipWMBCS(P* S, TKxTextParserSkipOp Op, uint16_t W) {
    if (Op > sopGtEq) return;
    TCompare<uint32_t> Holds{Op, W};
    SkipCharsWhile(S, Holds);
  }

  static void SkipAMBCS(P* S, TKxTextParserSkipOp Op, uint8_t C) {
    SkipWMBCS(S, Op, WidenSystemChar(AnsiChar(C)));
  }

  static void SkipInMBCS(P* S, bool In, const TKxCharSet& Chars) {
    SkipCharsWhile(S, [&](uint32_t X) { return Chars.Contains(X) == In; });
  }

  static constexpr P::TOps Ops[3] = {
      {&NextSBCS, &SkipASBCS, &SkipWSBCS, &SkipInSBCS},
      {&NextDBCS, &SkipADBCS, &SkipWDBCS, &SkipInDBCS},
      {&NextMBCS, &SkipAMBCS, &SkipWMBCS, &SkipInMBCS},
  };
};

} // namespace detail

// --- creation and destruction ----------------------------------------------------------

TKxTextParser::TKxTextParser(TStream* AStream, uint16_t ACodePage, bool AOwnsStream)
    : FStream(AStream), FOwnsStream(AOwnsStream) {
  try {
    KxAssert(AStream && AStream->Size() > 0, SParseEmptyStream, SClassesUnit,
             EmptyStreamAssertLine);
    CheckCodePage(ACodePage);
    FCodePage = ACodePage;
    FStartPos = AStream->Position();
    FChunkSize = StreamChunkSize;
    TKxTextParser::SetCharacterSetType(FormOf(ACodePage));
    First();
  } catch (...) {
    // The object never comes to life, so nothing else would free what it was given.
    FreeBuffer();
    if (FOwnsStream && FStream) FStream->Free();
    throw;
  }
}

TKxTextParser::TKxTextParser(const void* ABuffer, uint32_t ASize, uint16_t ACodePage) {
  KxAssert(ASize > 0, SParseEmptyStream, SClassesUnit, EmptyBufferAssertLine);
  CheckCodePage(ACodePage);
  FCodePage = ACodePage;
  FBuffer = static_cast<const uint8_t*>(ABuffer);
  FBufferEnd = FBuffer + ASize;
  FChunkSize = ASize;
  TKxTextParser::SetCharacterSetType(FormOf(ACodePage));
  First();
}

TKxTextParser::~TKxTextParser() {
  FreeBuffer();
}

void TKxTextParser::AfterConstruction() {
  TKxObject::AfterConstruction();
  SetCharacterSetType(FCharacterSetType);
}

void TKxTextParser::BeforeDestruction() {
  TKxObject::BeforeDestruction();
  FreeBuffer();
  if (FOwnsStream) {
    FOwnsStream = false;
    FreeAndNil(FStream);
  }
}

void TKxTextParser::FreeBuffer() {
  if (FOwnsBuffer) std::free(const_cast<uint8_t*>(FBuffer));
  FOwnsBuffer = false;
  FBuffer = FBufferEnd = nullptr;
}

void TKxTextParser::CheckCodePage(uint16_t ACodePage) {
  if (ACodePage == 1201 || ACodePage == 12000 || ACodePage == 12001)
    throw Exception(SEncodingNotSupported);
}

TKxCharacterSetType TKxTextParser::FormOf(uint16_t ACodePage) const {
  return ACodePage == 1200 ? DBCS : ACodePage == 65001 ? MBCS : SBCS;
}

void TKxTextParser::SetCharacterSetType(TKxCharacterSetType Value) {
  FCharacterSetType = Value;
  FOps = detail::TTextParserOps::Ops[Value <= MBCS ? Value : SBCS];
}

void TKxTextParser::SetContentCodePage(uint16_t ACodePage) {
  CheckCodePage(ACodePage);
  FCodePage = ACodePage;
  FWidenReady = false;
  SetCharacterSetType(FormOf(ACodePage));
}

// --- chunks -----------------------------------------------------------------------------

void TKxTextParser::ReadChunk(uint8_t* Dest, uint32_t Count) {
  const uint32_t Done = uint32_t(FStream->ReadUpTo(Dest, Count));
  // The chunk is used whole even when the stream ends early; what it lacks reads as zeros.
  if (Done < Count) std::memset(Dest + Done, 0, Count - Done);
}

void TKxTextParser::First() {
  if (FStream) {
    if (auto* Mem = dynamic_cast<TKxMemoryStream*>(FStream)) {
      FBuffer = Mem->Memory() + std::min<int64_t>(FStartPos, Mem->Size());
      FBufferEnd = Mem->ContentEnd();
      FStream->Seek(int64_t(0), soEnd);
    } else if (auto* RtlMem = dynamic_cast<TCustomMemoryStream*>(FStream)) {
      const uint8_t* Memory = static_cast<const uint8_t*>(RtlMem->Memory());
      FBuffer = Memory + std::min<int64_t>(FStartPos, RtlMem->Size());
      FBufferEnd = Memory + RtlMem->Size();
      FStream->Seek(int64_t(0), soEnd);
    } else if (!FBuffer || FChunkCount != 1) {
      // The buffer no longer starts at the start of the text (or there is none yet).
      FreeBuffer();
      FStream->SetPosition(FStartPos);
      const int64_t Remaining = std::max<int64_t>(FStream->Size() - FStartPos, 0);
      const uint32_t Count = uint32_t(std::min<int64_t>(Remaining, FChunkSize));
      auto* Block = static_cast<uint8_t*>(std::malloc(std::max<uint32_t>(Count, 1)));
      if (!Block) throw EOutOfMemory(SMemoryStreamError);
      FBuffer = Block;
      FBufferEnd = Block + Count;
      FOwnsBuffer = true;
      ReadChunk(Block, Count);
      FChunked = Remaining > FChunkSize;
      FLastChunk = !FChunked;
      FChunkCount = 1;
    }
  }
  FEOF = FBuffer == FBufferEnd;
  FLineNr = 1;
  FColNr = FCharsRead = FPosition = 0;
  FCurPos = FBuffer;
  FPrevPos = nullptr;
  FPeekPos = FMarkPos1 = FMarkPos2 = FMarkPos3 = FHoldPos = nullptr;
}

void TKxTextParser::LoadNextChunk() {
  KxAssert(FStream && FChunked && !FLastChunk, SAssertionFailed, SClassesUnit, LoadChunkAssertLine);
  const uint8_t** Positions[] = {&FCurPos,   &FPrevPos, &FMarkPos1, &FMarkPos2,
                                 &FMarkPos3, &FPeekPos, &FHoldPos};
  // Every position still in use survives: keep the text from the earliest of them.
  ptrdiff_t Distance[std::size(Positions)];
  ptrdiff_t Keep = 0;
  for (size_t I = 0; I < std::size(Positions); ++I) {
    Distance[I] = *Positions[I] ? FBufferEnd - *Positions[I] : -1;
    Keep = std::max(Keep, Distance[I]);
  }
  auto* Block = static_cast<uint8_t*>(std::malloc(size_t(FChunkSize) + size_t(Keep)));
  if (!Block) throw EOutOfMemory(SMemoryStreamError);
  if (Keep > 0) std::memcpy(Block, FBufferEnd - Keep, size_t(Keep));
  FreeBuffer();
  FBuffer = Block;
  FOwnsBuffer = true;
  // Each position keeps its distance from where the old end now lies, the start of the
  // new chunk's bytes.
  const uint8_t* OldEnd = Block + Keep;
  FBufferEnd = OldEnd + FChunkSize;
  for (size_t I = 0; I < std::size(Positions); ++I)
    if (Distance[I] >= 0) *Positions[I] = OldEnd - Distance[I];
  ReadChunk(Block + Keep, FChunkSize);
  FLastChunk = FStream->Position() == FStream->Size();
  ++FChunkCount;
}

void TKxTextParser::EndReached() {
  if (!FLastChunk) {
    LoadNextChunk();
    FEOF = FCurPos == FBufferEnd;
  } else {
    FEOF = true;
  }
}

// --- movement ---------------------------------------------------------------------------

void TKxTextParser::Last() {
  if (FStream && FChunked) {
    while (!FLastChunk) {
      FCurPos = FBufferEnd;
      LoadNextChunk();
    }
  }
  FCurPos = FBufferEnd;
  FEOF = true;
}

void TKxTextParser::NextChar() {
  FOps.Next(this);
  FOps.SkipA(this, sopLt, ' ');
}

void TKxTextParser::SkipChars(int64_t Count) {
  for (int64_t I = 0; I < Count; ++I) NextChar();
}

void TKxTextParser::SkipWhile(TKxTextParserSkipOp Op, AnsiChar C) {
  FOps.SkipA(this, Op, uint8_t(C));
}

void TKxTextParser::SkipWhile(TKxTextParserSkipOp Op, WideChar W) {
  FOps.SkipW(this, Op, W);
}

void TKxTextParser::SkipWhile(TKxTextParserSkipOp Op, const TKxCharSet& Chars) {
  if (Op == sopIn || Op == sopNotIn) FOps.SkipIn(this, Op == sopIn, Chars);
}

void TKxTextParser::CheckEOF() const {
  if (FEOF) RaiseEOF();
}

// --- characters -------------------------------------------------------------------------

WideChar TKxTextParser::Widen(uint8_t C) {
  if (!FWidenReady) {
    for (unsigned I = 0; I < 256; ++I) {
      const uint8_t B = uint8_t(I);
      WideChar W = 0xFFFD;
      try {
        UnicodeString S = WidenText(&B, 1, FCodePage);
        if (!S.empty()) W = S[0];
      } catch (const Exception&) {
        // A byte that is no character by itself (a lead byte) stays the replacement one.
      }
      FWiden[I] = W;
    }
    FWidenReady = true;
  }
  return FWiden[C];
}

const uint8_t* TKxTextParser::WholeSequence(const uint8_t* const& Pos, int Length) {
  if (FBufferEnd - Pos < Length && !FLastChunk) LoadNextChunk();
  if (FBufferEnd - Pos < Length) RaiseEOF();
  return Pos;
}

const AnsiChar* TKxTextParser::CharAAt(const uint8_t* const& Pos) {
  const uint8_t* P = Pos;
  switch (FCharacterSetType) {
  case DBCS:
    FCharA = NarrowChar(Load16(P));
    return &FCharA;
  case MBCS: {
    if (*P < 0x80) return reinterpret_cast<const AnsiChar*>(P);
    const int Length = SequenceLength(*P);
    P = WholeSequence(Pos, Length);
    UnicodeString W = UTF8Text(P, size_t(Length));
    FCharA = W.empty() ? AnsiChar(0) : NarrowChar(W[0]);
    return &FCharA;
  }
  default:
    return reinterpret_cast<const AnsiChar*>(P);
  }
}

const WideChar* TKxTextParser::CharWAt(const uint8_t* const& Pos) {
  const uint8_t* P = Pos;
  switch (FCharacterSetType) {
  case DBCS:
    // In place when aligned; text at an odd address is copied out.
    if ((reinterpret_cast<uintptr_t>(P) & 1) == 0) return reinterpret_cast<const WideChar*>(P);
    FCharW = Load16(P);
    return &FCharW;
  case MBCS: {
    if (*P < 0x80) {
      FCharW = *P;
      return &FCharW;
    }
    const int Length = SequenceLength(*P);
    P = WholeSequence(Pos, Length);
    UnicodeString W = UTF8Text(P, size_t(Length));
    FCharW = W.empty() ? WideChar(0) : W[0];
    return &FCharW;
  }
  default:
    FCharW = Widen(*P);
    return &FCharW;
  }
}

namespace {
// Whether a character can be read at P: not at the end, and for UTF-16 two bytes there.
inline bool Readable(const uint8_t* P, const uint8_t* End, TKxCharacterSetType Form) {
  return P && End - P >= (Form == DBCS ? 2 : 1);
}
} // namespace

const AnsiChar* TKxTextParser::CurrCharA() {
  if (FEOF || !Readable(FCurPos, FBufferEnd, FCharacterSetType)) return &(FCharA = 0);
  return CharAAt(FCurPos);
}

const WideChar* TKxTextParser::CurrCharW() {
  if (FEOF || !Readable(FCurPos, FBufferEnd, FCharacterSetType)) return &(FCharW = 0);
  return CharWAt(FCurPos);
}

const AnsiChar* TKxTextParser::PrevCharA() {
  if (!Readable(FPrevPos, FBufferEnd, FCharacterSetType)) return &(FCharA = 0);
  return CharAAt(FPrevPos);
}

const WideChar* TKxTextParser::PrevCharW() {
  if (!Readable(FPrevPos, FBufferEnd, FCharacterSetType)) return &(FCharW = 0);
  return CharWAt(FPrevPos);
}

// The character is taken after the move, from the previous position: a move may load the
// next chunk, which keeps that position but not the old buffer.
// The odd last byte of UTF-16 text is moved over as no character: it reads as a 0 character.
const AnsiChar* TKxTextParser::ReadCharA() {
  if (FEOF) RaiseEOF();
  FOps.Next(this);
  if (!Readable(FPrevPos, FBufferEnd, FCharacterSetType)) return &(FCharA = 0);
  return CharAAt(FPrevPos);
}

const WideChar* TKxTextParser::ReadCharW() {
  if (FEOF) RaiseEOF();
  FOps.Next(this);
  if (!Readable(FPrevPos, FBufferEnd, FCharacterSetType)) return &(FCharW = 0);
  return CharWAt(FPrevPos);
}

// --- peeks ------------------------------------------------------------------------------

TKxTextParser::TCursor TKxTextParser::SaveCursor() {
  TCursor Saved{FEOF, FLineNr, FColNr, FCharsRead, FPosition};
  // Both positions are then kept by a chunk reload, and moved with it.
  FPeekPos = FCurPos;
  FHoldPos = FPrevPos;
  return Saved;
}

template <class F>
auto TKxTextParser::Peeking(F&& Body) {
  struct TRestore {
    TKxTextParser* Parser;
    TCursor Saved;
    ~TRestore() { Parser->RestoreCursor(Saved); }
  } Guard{this, SaveCursor()};
  return Body();
}

void TKxTextParser::RestoreCursor(const TCursor& Saved) {
  FCurPos = FPeekPos;
  FPrevPos = FHoldPos;
  FPeekPos = FHoldPos = nullptr;
  FEOF = Saved.AtEOF;
  FLineNr = Saved.LineNr;
  FColNr = Saved.ColNr;
  FCharsRead = Saved.CharsRead;
  FPosition = Saved.Position;
}

void TKxTextParser::PeekMove() {
  if (FEOF) return;
  FOps.Next(this);
  if (FCharacterSetType == MBCS) {
    // Only an ASCII character of 32 or more ends a UTF-8 peek.
    while (!FEOF && (*FCurPos < 32 || *FCurPos >= 0x80)) FOps.Next(this);
  } else {
    FOps.SkipA(this, sopLt, ' ');
  }
}

const AnsiChar* TKxTextParser::PeekCharA() {
  return Peeking([&] {
    const AnsiChar* Result;
    PeekMove();
    Result = CurrCharA();
    return Result;
  });
}

const WideChar* TKxTextParser::PeekCharW() {
  return Peeking([&] {
    const WideChar* Result;
    PeekMove();
    Result = CurrCharW();
    return Result;
  });
}

AnsiString TKxTextParser::PeekStringA(int32_t Count) {
  if (Count <= 0 || FEOF) return {};
  return Peeking([&] {
    AnsiString Result;
    for (int32_t I = 0; I < Count && !FEOF; ++I) FOps.Next(this);
    const uint8_t* From = FPeekPos;
    const size_t Bytes = size_t(FCurPos - From);
    switch (FCharacterSetType) {
    case DBCS:
      Result = SystemText(From, Bytes, 1200);
      break;
    case MBCS:
      Result = SystemText(From, Bytes, 65001);
      break;
    default:
      Result.assign(reinterpret_cast<const char*>(From), Bytes);
      break;
    }
    return Result;
  });
}

UnicodeString TKxTextParser::PeekStringW(int32_t Count) {
  if (Count <= 0 || FEOF) return {};
  return Peeking([&] {
    UnicodeString Result;
    for (int32_t I = 0; I < Count && !FEOF; ++I) FOps.Next(this);
    const uint8_t* From = FPeekPos;
    const size_t Bytes = size_t(FCurPos - From);
    switch (FCharacterSetType) {
    case DBCS:
      Result = UTF16Text(From, Bytes);
      break;
    case MBCS:
      Result = UTF8Text(From, Bytes);
      break;
    default:
      Result = WidenText(From, Bytes, FCodePage);
      break;
    }
    return Result;
  });
}

// --- positions, marks, selections -------------------------------------------------------

const uint8_t*& TKxTextParser::PosRef(TKxTextParserPosType PosType, const char* Message) {
  switch (PosType) {
  case tpPrevPos:
    return FPrevPos;
  case tpCurPos:
    return FCurPos;
  case tpPeekPos:
    return FPeekPos;
  case tpMarkPos1:
    return FMarkPos1;
  case tpMarkPos2:
    return FMarkPos2;
  case tpMarkPos3:
    return FMarkPos3;
  }
  throw Exception(Message);
}

const uint8_t* TKxTextParser::GetPos(TKxTextParserPosType PosType) const {
  return const_cast<TKxTextParser*>(this)->PosRef(PosType, SInvalidTillPos);
}

void TKxTextParser::SetMark(TKxTextParserPosType PosType) {
  if (PosType < tpMarkPos1 || PosType > tpMarkPos3) throw Exception(SInvalidMarkType);
  PosRef(PosType, SInvalidMarkType) = FCurPos;
}

void TKxTextParser::ClearMark(TKxTextParserPosType PosType) {
  if (PosType < tpMarkPos1 || PosType > tpMarkPos3) throw Exception(SInvalidMarkType);
  PosRef(PosType, SInvalidMarkType) = nullptr;
}

int64_t TKxTextParser::SelectedCnt(TKxTextParserPosType FromPos, TKxTextParserPosType TillPos) {
  const uint8_t* From = GetPos(FromPos);
  const uint8_t* Till = TillPos == tpPeekPos ? FCurPos : GetPos(TillPos);
  KxAssert(From && Till, SAssertionFailed, SClassesUnit, SelectedAssertLine);
  if (TillPos != tpPeekPos) return std::max<int64_t>(Till - From, 0);

  // Up to and including the current character: move over it and measure from where the
  // start position is now (a reload may have moved it).
  return Peeking([&] {
    int64_t Result;
    if (!FEOF) FOps.Next(this);
    From = FromPos == tpCurPos ? FPeekPos : FromPos == tpPrevPos ? FHoldPos : GetPos(FromPos);
    Result = std::max<int64_t>(FCurPos - From, 0);
    return Result;
  });
}

namespace {
bool IsMark(TKxTextParserPosType PosType) {
  return PosType >= tpMarkPos1 && PosType <= tpMarkPos3;
}
} // namespace

AnsiString TKxTextParser::SelectedA(TKxTextParserPosType FromPos, TKxTextParserPosType TillPos,
                                    bool ClearMarks) {
  const int64_t Count = SelectedCnt(FromPos, TillPos);
  const uint8_t* From = GetPos(FromPos);
  AnsiString Result;
  switch (FCharacterSetType) {
  case DBCS:
    Result = SystemText(From, size_t(Count), 1200);
    break;
  case MBCS:
    Result = SystemText(From, size_t(Count), 65001);
    break;
  default:
    Result.assign(reinterpret_cast<const char*>(From), size_t(Count));
    break;
  }
  if (ClearMarks) {
    if (IsMark(FromPos)) ClearMark(FromPos);
    if (IsMark(TillPos)) ClearMark(TillPos);
  }
  return Result;
}

UnicodeString TKxTextParser::SelectedW(TKxTextParserPosType FromPos, TKxTextParserPosType TillPos,
                                       bool ClearMarks) {
  const int64_t Count = SelectedCnt(FromPos, TillPos);
  const uint8_t* From = GetPos(FromPos);
  UnicodeString Result;
  switch (FCharacterSetType) {
  case DBCS:
    Result = UTF16Text(From, size_t(Count));
    break;
  case MBCS:
    Result = UTF8Text(From, size_t(Count));
    break;
  default:
    Result = WidenText(From, size_t(Count), FCodePage);
    break;
  }
  if (ClearMarks) {
    if (IsMark(FromPos)) ClearMark(FromPos);
    if (IsMark(TillPos)) ClearMark(TillPos);
  }
  return Result;
}

} // namespace kx
