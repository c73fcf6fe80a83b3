// SPDX-License-Identifier: MIT
// Compression of 16 MiB of mixed text at levels 1, 6 and 9 through TKxZLibCompressionStream
// against raw zlib deflate on the same data, and decompression through
// TKxZLibDecompressionStream against one-shot inflate.
#include <kx/uKxZLib.h>

#include <benchmark/benchmark.h>
#include <zlib.h>

#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t DataSize = 16u << 20;

const std::string& Data() {
  static const std::string D = [] {
    std::mt19937 Gen(99);
    const char* Words[] = {"stream ", "buffer ", "deflate ", "window ", "header ", "trailer ",
                           "level ",  "byte ",   "the ",     "and ",    "of ",     "data\n"};
    std::string S;
    S.reserve(DataSize);
    while (S.size() < DataSize) {
      S += Words[Gen() % 12];
      if (Gen() % 16 == 0) S += std::to_string(Gen());
    }
    S.resize(DataSize);
    return S;
  }();
  return D;
}

const std::string& Packed() {
  static const std::string P = [] {
    kx::TMemoryStream* M = kx::TMemoryStream::Create();
    kx::ZlStringToCompressedStream(Data(), M, kx::clDefault);
    std::string R(static_cast<char*>(M->Memory()), size_t(M->Size()));
    M->Free();
    return R;
  }();
  return P;
}

void Processed(benchmark::State& State) {
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(DataSize));
}

kx::TKxZLibCompressionLevel LevelOf(int64_t L) {
  return L == 1 ? kx::clLevel1 : L == 6 ? kx::clLevel6 : kx::clLevel9;
}

void DeflateKx(benchmark::State& State) {
  const std::string& In = Data();
  kx::TMemoryStream* Out = kx::TMemoryStream::Create();
  Out->SetCapacity(int64_t(In.size()));
  for (auto _ : State) {
    Out->SetPosition(0);
    auto* Z = kx::TKxZLibCompressionStream::Create(Out, LevelOf(State.range(0)));
    Z->WriteBuffer(In.data(), int32_t(In.size()));
    Z->Free();
    benchmark::DoNotOptimize(Out->Memory());
  }
  Out->Free();
  Processed(State);
}

void DeflateZlib(benchmark::State& State) {
  const std::string& In = Data();
  std::vector<uint8_t> Out(compressBound(uLong(In.size())));
  for (auto _ : State) {
    z_stream S{};
    deflateInit(&S, int(State.range(0)));
    S.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(In.data()));
    S.avail_in = uInt(In.size());
    S.next_out = Out.data();
    S.avail_out = uInt(Out.size());
    deflate(&S, Z_FINISH);
    deflateEnd(&S);
    benchmark::DoNotOptimize(Out.data());
  }
  Processed(State);
}

void InflateKx(benchmark::State& State) {
  const std::string& In = Packed();
  std::vector<char> Out(DataSize);
  kx::TMemoryStream* Src = kx::TMemoryStream::Create();
  Src->WriteBuffer(In.data(), int32_t(In.size()));
  for (auto _ : State) {
    Src->SetPosition(0);
    auto* Z = kx::TKxZLibDecompressionStream::Create(Src);
    Z->ReadBuffer(Out.data(), int32_t(Out.size()));
    Z->Free();
    benchmark::DoNotOptimize(Out.data());
  }
  Src->Free();
  Processed(State);
}

void InflateZlib(benchmark::State& State) {
  const std::string& In = Packed();
  std::vector<uint8_t> Out(DataSize);
  for (auto _ : State) {
    uLongf N = uLongf(Out.size());
    uncompress(Out.data(), &N, reinterpret_cast<const Bytef*>(In.data()), uLong(In.size()));
    benchmark::DoNotOptimize(Out.data());
  }
  Processed(State);
}

} // namespace

BENCHMARK(DeflateKx)->Name("Deflate/kx")->Arg(1)->Arg(6)->Arg(9)->Unit(benchmark::kMillisecond);
BENCHMARK(DeflateZlib)->Name("Deflate/zlib")->Arg(1)->Arg(6)->Arg(9)->Unit(benchmark::kMillisecond);
BENCHMARK(InflateKx)->Name("Inflate/kx")->Unit(benchmark::kMillisecond);
BENCHMARK(InflateZlib)->Name("Inflate/zlib")->Unit(benchmark::kMillisecond);
