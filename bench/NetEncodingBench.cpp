// SPDX-License-Identifier: MIT
// Base64, Base64Url and hexadecimal encoding and decoding of 1 MiB against OpenSSL.
//
// The library's side goes through its public byte and string forms and so pays for a fresh
// result every round; OpenSSL writes into a buffer made once, outside the timing. Base64Url
// has no OpenSSL routine: its anchor is the standard routine plus the alphabet change (and the
// padding) a caller of OpenSSL needs around it.
#include <kx/uKxNetEncoding.h>

#include <benchmark/benchmark.h>

// OpenSSL is the anchor where its headers are at hand (not in the Windows cross build).
#if __has_include(<openssl/evp.h>)
#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t DataSize = 1 << 20;

const kx::TBytes& Data() {
  static const kx::TBytes D = [] {
    // A fixed generator start: every run encodes the same bytes.
    std::mt19937 Gen(12345);
    kx::TBytes B(DataSize);
    for (auto& X : B) X = uint8_t(Gen());
    return B;
  }();
  return D;
}

const kx::AnsiString& Base64Text() {
  static const kx::AnsiString T = kx::TKxNetEncoding::Base64Ex()->EncodeBytesToString(Data());
  return T;
}

const kx::AnsiString& Base64UrlText() {
  static const kx::AnsiString T = kx::TKxNetEncoding::Base64Url()->EncodeBytesToString(Data());
  return T;
}

const kx::AnsiString& HexText() {
  static const kx::AnsiString T = kx::TKxNetEncoding::Hex()->EncodeBytesToString(Data());
  return T;
}

void Processed(benchmark::State& State) {
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(DataSize));
}

// --- Base64 --------------------------------------------------------------------------------

void Base64EncodeKx(benchmark::State& State) {
  kx::TKxBase64Encoding* E = kx::TKxNetEncoding::Base64Ex();
  const kx::TBytes& In = Data();
  for (auto _ : State) {
    kx::AnsiString Out = E->EncodeBytesToString(In.data(), int32_t(In.size()));
    benchmark::DoNotOptimize(Out.data());
  }
  Processed(State);
}

void Base64EncodeOpenSSL(benchmark::State& State) {
  const kx::TBytes& In = Data();
  std::vector<unsigned char> Out((In.size() + 2) / 3 * 4 + 1);
  for (auto _ : State) {
    const int N = EVP_EncodeBlock(Out.data(), In.data(), int(In.size()));
    benchmark::DoNotOptimize(N);
    benchmark::ClobberMemory();
  }
  Processed(State);
}

void Base64DecodeKx(benchmark::State& State) {
  kx::TKxBase64Encoding* E = kx::TKxNetEncoding::Base64Ex();
  const kx::AnsiString& In = Base64Text();
  for (auto _ : State) {
    kx::TBytes Out = E->DecodeStringToBytes(In);
    benchmark::DoNotOptimize(Out.data());
  }
  Processed(State);
}

void Base64DecodeOpenSSL(benchmark::State& State) {
  const kx::AnsiString& In = Base64Text();
  std::vector<unsigned char> Out(In.size() / 4 * 3 + 3);
  for (auto _ : State) {
    const int N = EVP_DecodeBlock(Out.data(), reinterpret_cast<const unsigned char*>(In.data()),
                                  int(In.size()));
    benchmark::DoNotOptimize(N);
    benchmark::ClobberMemory();
  }
  Processed(State);
}

// --- Base64Url -----------------------------------------------------------------------------

void Base64UrlEncodeKx(benchmark::State& State) {
  kx::TKxBase64UrlEncoding* E = kx::TKxNetEncoding::Base64Url();
  const kx::TBytes& In = Data();
  for (auto _ : State) {
    kx::AnsiString Out = E->EncodeBytesToString(In.data(), int32_t(In.size()));
    benchmark::DoNotOptimize(Out.data());
  }
  Processed(State);
}

void Base64UrlEncodeOpenSSL(benchmark::State& State) {
  const kx::TBytes& In = Data();
  std::vector<unsigned char> Out((In.size() + 2) / 3 * 4 + 1);
  for (auto _ : State) {
    int N = EVP_EncodeBlock(Out.data(), In.data(), int(In.size()));
    for (int I = 0; I < N; ++I) {
      if (Out[I] == '+')
        Out[I] = '-';
      else if (Out[I] == '/')
        Out[I] = '_';
    }
    while (N > 0 && Out[N - 1] == '=') --N;
    benchmark::DoNotOptimize(N);
    benchmark::ClobberMemory();
  }
  Processed(State);
}

void Base64UrlDecodeKx(benchmark::State& State) {
  kx::TKxBase64UrlEncoding* E = kx::TKxNetEncoding::Base64Url();
  const kx::AnsiString& In = Base64UrlText();
  for (auto _ : State) {
    kx::TBytes Out = E->DecodeStringToBytes(In);
    benchmark::DoNotOptimize(Out.data());
  }
  Processed(State);
}

void Base64UrlDecodeOpenSSL(benchmark::State& State) {
  const kx::AnsiString& In = Base64UrlText();
  std::vector<unsigned char> Text(In.size() + 4);
  std::vector<unsigned char> Out(Text.size() / 4 * 3 + 3);
  for (auto _ : State) {
    size_t L = In.size();
    for (size_t I = 0; I < L; ++I) {
      const unsigned char C = uint8_t(In[I]);
      Text[I] = C == '-' ? '+' : C == '_' ? '/' : C;
    }
    while (L % 4) Text[L++] = '=';
    const int N = EVP_DecodeBlock(Out.data(), Text.data(), int(L));
    benchmark::DoNotOptimize(N);
    benchmark::ClobberMemory();
  }
  Processed(State);
}

// --- hexadecimal ---------------------------------------------------------------------------

void HexEncodeKx(benchmark::State& State) {
  kx::TKxHexEncoding* E = kx::TKxNetEncoding::Hex();
  const kx::TBytes& In = Data();
  for (auto _ : State) {
    kx::AnsiString Out = E->EncodeBytesToString(In.data(), int32_t(In.size()));
    benchmark::DoNotOptimize(Out.data());
  }
  Processed(State);
}

void HexEncodeOpenSSL(benchmark::State& State) {
  const kx::TBytes& In = Data();
  std::vector<char> Out(In.size() * 2 + 1);
  for (auto _ : State) {
    size_t N = 0;
    OPENSSL_buf2hexstr_ex(Out.data(), Out.size(), &N, In.data(), In.size(), '\0');
    benchmark::DoNotOptimize(N);
    benchmark::ClobberMemory();
  }
  Processed(State);
}

void HexDecodeKx(benchmark::State& State) {
  kx::TKxHexEncoding* E = kx::TKxNetEncoding::Hex();
  const kx::AnsiString& In = HexText();
  for (auto _ : State) {
    kx::TBytes Out = E->DecodeStringToBytes(In);
    benchmark::DoNotOptimize(Out.data());
  }
  Processed(State);
}

void HexDecodeOpenSSL(benchmark::State& State) {
  const kx::AnsiString& In = HexText();
  std::vector<unsigned char> Out(In.size() / 2);
  for (auto _ : State) {
    size_t N = 0;
    OPENSSL_hexstr2buf_ex(Out.data(), Out.size(), &N, In.c_str(), '\0');
    benchmark::DoNotOptimize(N);
    benchmark::ClobberMemory();
  }
  Processed(State);
}

} // namespace

BENCHMARK(Base64EncodeKx)->Name("Base64Encode/kx");
BENCHMARK(Base64EncodeOpenSSL)->Name("Base64Encode/openssl");
BENCHMARK(Base64DecodeKx)->Name("Base64Decode/kx");
BENCHMARK(Base64DecodeOpenSSL)->Name("Base64Decode/openssl");
BENCHMARK(Base64UrlEncodeKx)->Name("Base64UrlEncode/kx");
BENCHMARK(Base64UrlEncodeOpenSSL)->Name("Base64UrlEncode/openssl");
BENCHMARK(Base64UrlDecodeKx)->Name("Base64UrlDecode/kx");
BENCHMARK(Base64UrlDecodeOpenSSL)->Name("Base64UrlDecode/openssl");
BENCHMARK(HexEncodeKx)->Name("HexEncode/kx");
BENCHMARK(HexEncodeOpenSSL)->Name("HexEncode/openssl");
BENCHMARK(HexDecodeKx)->Name("HexDecode/kx");
BENCHMARK(HexDecodeOpenSSL)->Name("HexDecode/openssl");

#endif
