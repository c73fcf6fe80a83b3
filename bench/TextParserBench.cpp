// SPDX-License-Identifier: MIT
// A text parser scan of 16 MiB against memchr over the same bytes.
//
// The text is lines of words with a single '#' at its very end. The library's side creates a
// parser over the memory and skips up to the '#' (keeping its line, column and byte counters
// as it goes); the anchor finds the '#' with memchr.
#include <kx/classes/TextParser.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>

namespace {

constexpr size_t TextSize = size_t(16) << 20;

const std::string& Text() {
  static const std::string T = [] {
    std::mt19937 Gen(4711);
    std::string S;
    S.reserve(TextSize);
    while (S.size() < TextSize - 1) {
      // Words of 1 to 12 letters, lines of about 60 characters.
      size_t Line = 0;
      while (Line < 60 && S.size() < TextSize - 1) {
        size_t Word = 1 + Gen() % 12;
        for (size_t I = 0; I < Word && S.size() < TextSize - 1; ++I, ++Line)
          S.push_back(char('a' + Gen() % 26));
        if (S.size() < TextSize - 1) S.push_back(' '), ++Line;
      }
      if (S.size() < TextSize - 1) S.push_back('\n');
    }
    S.push_back('#');
    return S;
  }();
  return T;
}

void TextParserScanKx(benchmark::State& State) {
  const std::string& T = Text();
  for (auto _ : State) {
    kx::TKxTextParser* P = kx::TKxTextParser::Create(T.data(), uint32_t(T.size()), 1252);
    P->SkipWhile(kx::sopUnEq, '#');
    benchmark::DoNotOptimize(P->GetLineNr());
    if (P->GetPosition() != int64_t(T.size() - 1)) State.SkipWithError("scan ended early");
    P->Free();
  }
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(T.size()));
}
BENCHMARK(TextParserScanKx)->Name("TextParserScan/kx")->Unit(benchmark::kMicrosecond);

void TextParserScanMemchr(benchmark::State& State) {
  const std::string& T = Text();
  for (auto _ : State) {
    const void* Hit = std::memchr(T.data(), '#', T.size());
    benchmark::DoNotOptimize(Hit);
    if (Hit != T.data() + T.size() - 1) State.SkipWithError("scan ended early");
  }
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(T.size()));
}
BENCHMARK(TextParserScanMemchr)->Name("TextParserScan/memchr")->Unit(benchmark::kMicrosecond);

} // namespace
