// SPDX-License-Identifier: MIT
// MD5 and SHA-1 of 64 MiB against OpenSSL's EVP digests on the same bytes. MD5/kx is the
// running record (the library's own block function); MD5Hash/kx and Sha1/kx go through the
// platform provider, so on POSIX they measure the wrapping only.
#include <kx/uKxMD5.h>
#include <kx/uKxSha1.h>

#include <benchmark/benchmark.h>

#if __has_include(<openssl/evp.h>)
#include <openssl/evp.h>

#include <random>
#include <vector>

namespace {

constexpr size_t DataSize = 64u << 20;

const std::vector<uint8_t>& Data() {
  static const std::vector<uint8_t> D = [] {
    std::mt19937 Gen(777);
    std::vector<uint8_t> B(DataSize);
    for (auto& X : B) X = uint8_t(Gen());
    return B;
  }();
  return D;
}

void Processed(benchmark::State& State) {
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(DataSize));
}

void OpenSSLDigest(benchmark::State& State, const EVP_MD* Md) {
  const auto& In = Data();
  unsigned char Out[EVP_MAX_MD_SIZE];
  for (auto _ : State) {
    EVP_Digest(In.data(), In.size(), Out, nullptr, Md, nullptr);
    benchmark::DoNotOptimize(Out);
  }
  Processed(State);
}

void MD5Kx(benchmark::State& State) {
  const auto& In = Data();
  uint8_t Out[16];
  for (auto _ : State) {
    kx::TMD5Context C;
    kx::MD5Init(C);
    kx::MD5Update(C, reinterpret_cast<const char*>(In.data()), uint32_t(In.size()));
    kx::MD5Final(C, Out);
    benchmark::DoNotOptimize(Out);
  }
  Processed(State);
}

void MD5HashKx(benchmark::State& State) {
  const auto& In = Data();
  for (auto _ : State) {
    kx::TMD5Digest D = kx::MD5Hash(In.data(), uint32_t(In.size()));
    benchmark::DoNotOptimize(D);
  }
  Processed(State);
}

void Sha1Kx(benchmark::State& State) {
  const auto& In = Data();
  uint8_t Out[20];
  for (auto _ : State) {
    kx::KxHashBuffer(In.data(), uint32_t(In.size()), Out);
    benchmark::DoNotOptimize(Out);
  }
  Processed(State);
}

void MD5OpenSSL(benchmark::State& State) {
  OpenSSLDigest(State, EVP_md5());
}
void Sha1OpenSSL(benchmark::State& State) {
  OpenSSLDigest(State, EVP_sha1());
}

} // namespace

BENCHMARK(MD5Kx)->Name("MD5/kx")->Unit(benchmark::kMillisecond);
BENCHMARK(MD5OpenSSL)->Name("MD5/OpenSSL")->Unit(benchmark::kMillisecond);
BENCHMARK(MD5HashKx)->Name("MD5Hash/kx")->Unit(benchmark::kMillisecond);
BENCHMARK(MD5OpenSSL)->Name("MD5Hash/OpenSSL")->Unit(benchmark::kMillisecond);
BENCHMARK(Sha1Kx)->Name("Sha1/kx")->Unit(benchmark::kMillisecond);
BENCHMARK(Sha1OpenSSL)->Name("Sha1/OpenSSL")->Unit(benchmark::kMillisecond);

#endif
