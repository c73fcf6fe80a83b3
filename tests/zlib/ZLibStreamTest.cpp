// SPDX-License-Identifier: MIT
// The compression streams: round trips in every framing, the emulated seeks, the wrapped
// stream left after the data, the errors, and gzip as a peer.
#include <kx/rtl/OwnedPtr.h>
#include <kx/uKxZLib.h>

#include "support/ExternalTool.h"
#include "support/ShortReadStream.h"

#include <gtest/gtest.h>

#include <random>

using namespace kx;

namespace {

std::string MixedData(size_t N, uint32_t Start) {
  // Text-like runs with random bytes between them: compresses, but not to nothing.
  std::mt19937 Gen(Start);
  std::string S;
  S.reserve(N);
  while (S.size() < N) {
    if (Gen() % 3 == 0)
      for (int I = 0; I < 20 && S.size() < N; ++I) S += char(Gen());
    else
      S += "the quick brown fox " + std::to_string(Gen() % 1000) + "\n";
  }
  S.resize(N);
  return S;
}

std::string Compress(const std::string& In, int32_t WindowBits,
                     TKxZLibCompressionLevel Level = clDefault) {
  TMemoryStream* Out = TMemoryStream::Create();
  auto* C = TKxZLibCompressionStream::Create(Out, Level, WindowBits, 8, zsDefault);
  // Uneven pieces, so the writes do not line up with the inline buffer.
  for (size_t At = 0; At < In.size(); At += 40000)
    C->WriteBuffer(In.data() + At, int32_t(std::min<size_t>(40000, In.size() - At)));
  C->Free();
  std::string R(static_cast<const char*>(Out->Memory()), size_t(Out->Size()));
  Out->Free();
  return R;
}

// Reads the whole decompressed content through a source that hands out Move bytes per call.
std::string Decompress(const std::string& In, int32_t WindowBits, int32_t Move = 1 << 30) {
  auto* Src = kxtest::TShortReadStream::Create(std::string_view(In), Move);
  auto* D = TKxZLibDecompressionStream::Create(Src, WindowBits);
  std::string R;
  char Buf[5000];
  for (int32_t N; (N = D->Read(Buf, sizeof Buf)) > 0;) R.append(Buf, size_t(N));
  const bool Ended = D->StreamEnded();
  D->Free();
  Src->Free();
  EXPECT_TRUE(Ended);
  return R;
}

TMemoryStream* MemoryOf(const std::string& S) {
  TMemoryStream* M = TMemoryStream::Create();
  M->WriteBuffer(S.data(), int32_t(S.size()));
  M->SetPosition(0);
  return M;
}

template <class E, class F>
void ExpectZError(F&& Call, int32_t Code, const char* Message) {
  try {
    Call();
    ADD_FAILURE() << "no exception";
  } catch (const E& Ex) {
    EXPECT_EQ(Ex.ErrorCode, Code);
    EXPECT_EQ(Ex.Message(), Message);
  }
}

} // namespace

TEST(ZLibStream, RoundTripsInEveryFraming) {
  for (int32_t Bits : {15, -15, 31}) {
    for (size_t N : {size_t(0), size_t(1), size_t(65536), size_t(300001)}) {
      const std::string In = MixedData(N, uint32_t(N) + 7);
      const std::string Packed = Compress(In, Bits);
      EXPECT_EQ(Decompress(Packed, Bits), In) << Bits << " " << N;
      EXPECT_EQ(Decompress(Packed, Bits, 3), In) << Bits << " " << N;
    }
  }
  // Each level and strategy gives data the default reader takes.
  const std::string In = MixedData(100000, 1);
  for (auto L : {clNone, clFastest, clMax, clLevel5})
    EXPECT_EQ(Decompress(Compress(In, 15, L), 15), In);
  TMemoryStream* Out = TMemoryStream::Create();
  auto* C = TKxZLibCompressionStream::Create(Out, clDefault, 15, 9, zsHuffman);
  C->WriteBuffer(In.data(), int32_t(In.size()));
  C->Free();
  EXPECT_EQ(ZlDecompressStreamToString(Out, true), In);
  Out->Free();
}

TEST(ZLibStream, EmptyInputStillMakesACompleteStream) {
  const std::string Z = Compress("", 15);
  ASSERT_GE(Z.size(), 8u); // header and Adler-32 trailer
  EXPECT_EQ(uint8_t(Z[0]), 0x78);
  EXPECT_EQ(Decompress(Z, 15), "");
  const std::string G = Compress("", 31);
  EXPECT_EQ(uint8_t(G[0]), 0x1f);
  EXPECT_EQ(uint8_t(G[1]), 0x8b);
}

TEST(ZLibStream, TheSourceIsLeftJustAfterTheCompressedData) {
  const std::string In = MixedData(200000, 3);
  for (int32_t Bits : {15, -15, 31}) {
    const std::string Packed = Compress(In, Bits);
    TMemoryStream* Src = MemoryOf("lead" + Packed + "TRAILER");
    Src->SetPosition(4);
    TMemoryStream* Dest = TMemoryStream::Create();
    ZlDecompressStream(Src, Dest, Bits, false);
    EXPECT_EQ(Dest->Size(), int64_t(In.size()));
    EXPECT_EQ(Src->Position(), int64_t(4 + Packed.size())) << Bits;
    char Tail[8] = {};
    EXPECT_EQ(Src->Read(Tail, 8), 7);
    EXPECT_STREQ(Tail, "TRAILER");
    Dest->Free();
    Src->Free();
  }
}

TEST(ZLibStream, FreeFunctionsSniffTheFirstByte) {
  const std::string In = MixedData(50000, 4);
  for (int32_t Bits : {15, -15}) {
    TMemoryStream* Src = MemoryOf(Compress(In, Bits));
    EXPECT_EQ(ZlDecompressStreamToAnsiString(Src, true), In);
    Src->Free();
  }
  TMemoryStream* Packed = TMemoryStream::Create();
  ZlStringToCompressedStream(In, Packed, clMax);
  TMemoryStream* Back = TMemoryStream::Create();
  ZlDecompressStream(Packed, Back, true);
  EXPECT_EQ(std::string(static_cast<char*>(Back->Memory()), size_t(Back->Size())), In);
  // ZlCompressStream takes the rest of the source, or all of it with FromStart.
  TMemoryStream* Src = MemoryOf("xyz" + In);
  Src->SetPosition(3);
  Packed->Clear();
  ZlCompressStream(Src, Packed, clFastest, false);
  EXPECT_EQ(ZlDecompressStreamToString(Packed, true), In);
  Packed->Clear();
  ZlCompressStream(Src, Packed, clFastest, true);
  EXPECT_EQ(ZlDecompressStreamToString(Packed, true), "xyz" + In);
  Src->Free();
  // UTF-16 code units straight from the bytes.
  Packed->Clear();
  ZlStringToCompressedStream(std::string("h\0i\0!", 5), Packed, clDefault);
  EXPECT_EQ(ZlDecompressStreamToWideString(Packed, true), u"hi");
  Back->Free();
  Packed->Free();
  TMemoryStream* Empty = TMemoryStream::Create();
  ExpectZError<EKxZLibDecompressionError>(
      [&] {
        OwnedPtr<TMemoryStream> D = MakeOwned<TMemoryStream>();
        ZlDecompressStream(Empty, D.Get(), true);
      },
      1, "Stream end");
  Empty->Free();
}

TEST(ZLibStream, SeeksAreEmulatedOnTheDecompressedData) {
  const std::string In = MixedData(100000, 5);
  TMemoryStream* Src = MemoryOf("ab" + Compress(In, 15));
  Src->SetPosition(2);
  auto* D = TKxZLibDecompressionStream::Create(Src);
  EXPECT_EQ(D->Size(), int64_t(In.size()));
  EXPECT_EQ(D->Seek(int64_t(0), soBeginning), 0);
  EXPECT_EQ(Src->Position(), 2);
  char Buf[100];
  D->ReadBuffer(Buf, 100);
  EXPECT_EQ(std::string(Buf, 100), In.substr(0, 100));
  EXPECT_EQ(D->Seek(int64_t(10000), soCurrent), 10100);
  EXPECT_EQ(D->Seek(int64_t(20000), soBeginning), 20000);
  D->ReadBuffer(Buf, 100);
  EXPECT_EQ(std::string(Buf, 100), In.substr(20000, 100));
  EXPECT_EQ(D->Position(), 20100);
  // A forward seek past the end stops at the end.
  EXPECT_EQ(D->Seek(int64_t(10000000), soBeginning), int64_t(In.size()));
  ExpectZError<EKxZLibDecompressionError>([&] { D->Seek(int64_t(5), soBeginning); }, 0,
                                          "Invalid ZStream operation!");
  ExpectZError<EKxZLibDecompressionError>([&] { D->Seek(int64_t(-1), soEnd); }, 0,
                                          "Invalid ZStream operation!");
  ExpectZError<EKxZLibDecompressionError>([&] { D->Write("x", 1); }, 0,
                                          "Invalid ZStream operation!");
  D->SetPosition(0);
  std::string All(In.size(), '\0');
  D->ReadBuffer(All.data(), int32_t(All.size()));
  EXPECT_EQ(All, In);
  D->Free();
  Src->Free();
}

TEST(ZLibStream, CompressionStreamAnswersPositionQueriesOnly) {
  TMemoryStream* Out = TMemoryStream::Create();
  auto* C = TKxZLibCompressionStream::Create(Out, clDefault);
  EXPECT_EQ(C->CompressionRate(), 0.0f);
  int Progress = 0;
  C->OnProgress = [&](TObject* Sender) {
    EXPECT_EQ(Sender, C);
    ++Progress;
  };
  const std::string Same(1000000, 'a');
  C->WriteBuffer(Same.data(), int32_t(Same.size()));
  EXPECT_EQ(C->Position(), 1000000);
  EXPECT_EQ(C->Seek(int64_t(1000000), soBeginning), 1000000);
  EXPECT_GT(C->CompressionRate(), 99.0f);
  ExpectZError<EKxZLibCompressionError>([&] { C->Seek(int64_t(0), soBeginning); }, 0,
                                        "Invalid ZStream operation!");
  ExpectZError<EKxZLibCompressionError>([&] { C->Seek(int64_t(1), soCurrent); }, 0,
                                        "Invalid ZStream operation!");
  char B;
  ExpectZError<EKxZLibCompressionError>([&] { C->Read(&B, 1); }, 0, "Invalid ZStream operation!");
  const std::string Random = MixedData(300000, 9);
  C->WriteBuffer(Random.data(), int32_t(Random.size()));
  EXPECT_GT(Progress, 0);
  C->Free();
  EXPECT_EQ(ZlDecompressStreamToString(Out, true), Same + Random);
  Out->Free();
}

TEST(ZLibStream, CorruptAndTruncatedInput) {
  const std::string In = MixedData(100000, 6);
  std::string Bad = Compress(In, 15);
  Bad[Bad.size() / 2] ^= 0x55;
  Bad[Bad.size() / 2 + 1] ^= 0x55;
  TMemoryStream* Src = MemoryOf(Bad);
  TMemoryStream* Dest = TMemoryStream::Create();
  EXPECT_THROW(ZlDecompressStream(Src, Dest, true), EKxZLibDecompressionError);
  // A broken header is a data error at the first read.
  TMemoryStream* Junk = MemoryOf("xx not zlib at all");
  ExpectZError<EKxZLibDecompressionError>([&] { ZlDecompressStream(Junk, Dest, true); }, -3,
                                          "Data error");
  // A source that runs dry before the end stops the reads without an error; the stream says
  // the data ended early.
  const std::string Good = Compress(In, 15);
  TMemoryStream* Cut = MemoryOf(Good.substr(0, Good.size() / 2));
  auto* D = TKxZLibDecompressionStream::Create(Cut);
  char Buf[4096];
  int64_t Total = 0;
  for (int32_t N; (N = D->Read(Buf, sizeof Buf)) > 0;) Total += N;
  EXPECT_LT(Total, int64_t(In.size()));
  EXPECT_FALSE(D->StreamEnded());
  D->Free();
  Cut->Free();
  // Cut inside a long match: the engine still holds output when the source runs dry, and it
  // comes out however small the reads are.
  const std::string Runs = Compress(std::string(1000000, 'a'), 15);
  const std::string Part = Runs.substr(0, Runs.size() / 2);
  std::string ByByte, ByBlock;
  for (auto [Piece, Into] : {std::pair{1, &ByByte}, std::pair{1 << 20, &ByBlock}}) {
    TMemoryStream* Source = MemoryOf(Part);
    auto* R = TKxZLibDecompressionStream::Create(Source);
    std::string Chunk(size_t(Piece), '\0');
    for (int32_t N; (N = R->Read(Chunk.data(), Piece)) > 0;) Into->append(Chunk.data(), size_t(N));
    R->Free();
    Source->Free();
  }
  EXPECT_GT(ByBlock.size(), 100000u);
  EXPECT_TRUE(ByByte == ByBlock) << ByByte.size() << " / " << ByBlock.size();
  // A header asking for a preset dictionary, which cannot be given, fails instead of
  // spinning.
  TMemoryStream* Dict = MemoryOf(std::string("\x78\xbb\0\0\0\x01\x03\0", 8));
  ExpectZError<EKxZLibDecompressionError>([&] { ZlDecompressStream(Dict, Dest, true); }, 2,
                                          "Need dictionary");
  Dict->Free();
  Junk->Free();
  Dest->Free();
  Src->Free();
}

TEST(ZLibStream, MessagesByCodeAndTheVersionPassedToZlib) {
  const std::pair<int32_t, const char*> Codes[] = {
      {2, "Need dictionary"},      {1, "Stream end"},    {0, "OK"},
      {-1, "File error"},          {-2, "Stream error"}, {-3, "Data error"},
      {-4, "Insufficient memory"}, {-5, "Buffer error"}, {-6, "Incompatible version"}};
  for (auto [Code, Text] : Codes) {
    EXPECT_EQ(KxZLibErrorMessage(Code), Text);
    EXPECT_EQ(EKxZLibCompressionError(Code).Message(), Text);
  }
  EXPECT_TRUE(EKxZLibDecompressionError(1).InheritsFrom(EKxZLibException::ClassInfo()));
  // zlib compares only the first character of the version it is handed; the streams above
  // were made with "1.2.8" against whatever 1.x zlib is linked.
  EXPECT_STREQ(SZLibVersion, "1.2.8");
  EXPECT_EQ(KxZLibLinkedVersion()[0], '1');
  // An invalid parameter is the engine's stream error, raised by the constructor.
  TMemoryStream* Out = TMemoryStream::Create();
  ExpectZError<EKxZLibCompressionError>(
      [&] { TKxZLibCompressionStream::Create(Out, clDefault, 99, 8, zsDefault)->Free(); }, -2,
      "Stream error");
  Out->Free();
}

TEST(ZLibStream, GzipReadsOursAndWeReadGzips) {
  const std::string In = MixedData(500000, 8);
  const auto Peer = kxtest::RunExternalTool("gzip", {"-dc"}, Compress(In, 31));
  if (Peer.Absent) GTEST_SKIP() << Peer.Message;
  ASSERT_EQ(Peer.ExitCode, 0);
  EXPECT_EQ(Peer.Output, In);
  const auto Theirs = kxtest::RunExternalTool("gzip", {"-c", "-9"}, In);
  ASSERT_EQ(Theirs.ExitCode, 0);
  EXPECT_EQ(Decompress(Theirs.Output, 31), In);
}
