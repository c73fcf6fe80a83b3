// SPDX-License-Identifier: MIT
// ISO 8601 time stamps: writing against strftime and reading against strptime, over the same
// 1024 random instants of 1970 to 2099.
//
// Writing: the library decodes a date-time value and writes "yyyy-mm-ddThh:nn:ss.zzz"; the
// anchor breaks a time_t down with gmtime_r, writes "%FT%T" with strftime and appends the
// milliseconds. Reading: the library decodes "yyyy-mm-ddThh:nn:ss+hh:nn" into its record; the
// anchor reads the same text with strptime("%Y-%m-%dT%H:%M:%S%z").
#include <kx/uKxDateTimeUtils.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <ctime>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr size_t InstantCount = 1024;

struct TInstant {
  time_t Seconds;
  int MSec;
  kx::TDateTime Value;
  std::string Text;
};

const std::vector<TInstant>& Instants() {
  static const std::vector<TInstant> List = [] {
    std::mt19937_64 Gen(1899);
    std::uniform_int_distribution<int64_t> Seconds(0, 4102444799LL);
    std::vector<TInstant> L;
    for (size_t I = 0; I < InstantCount; ++I) {
      TInstant T;
      T.Seconds = time_t(Seconds(Gen));
      T.MSec = int(Gen() % 1000);
      T.Value = kx::IncMilliSecond(kx::UnixToDateTime(int64_t(T.Seconds)), T.MSec);
      const int Offset = int(Gen() % 57) * 15 - 14 * 60;
      char Zone[16];
      std::snprintf(Zone, sizeof Zone, "%c%02d:%02d", Offset < 0 ? '-' : '+',
                    (Offset < 0 ? -Offset : Offset) / 60, (Offset < 0 ? -Offset : Offset) % 60);
      T.Text = kx::KxDateTimeToISOStr(T.Value, false) + Zone;
      L.push_back(T);
    }
    return L;
  }();
  return List;
}

void ISOFormatKx(benchmark::State& State) {
  const auto& L = Instants();
  for (auto _ : State) {
    for (const TInstant& T : L) {
      kx::AnsiString S = kx::KxDateTimeToISOStr(T.Value, true);
      benchmark::DoNotOptimize(S.data());
    }
  }
  State.SetItemsProcessed(int64_t(State.iterations() * L.size()));
}
BENCHMARK(ISOFormatKx)->Name("ISOFormat/kx")->Unit(benchmark::kMicrosecond);

void ISOFormatStrftime(benchmark::State& State) {
  const auto& L = Instants();
  for (auto _ : State) {
    for (const TInstant& T : L) {
      tm Parts{};
      gmtime_r(&T.Seconds, &Parts);
      char Buffer[40];
      size_t N = strftime(Buffer, sizeof Buffer, "%FT%T", &Parts);
      N += size_t(std::snprintf(Buffer + N, sizeof Buffer - N, ".%03d", T.MSec));
      std::string S(Buffer, N);
      benchmark::DoNotOptimize(S.data());
    }
  }
  State.SetItemsProcessed(int64_t(State.iterations() * L.size()));
}
BENCHMARK(ISOFormatStrftime)->Name("ISOFormat/strftime")->Unit(benchmark::kMicrosecond);

void ISODecodeKx(benchmark::State& State) {
  const auto& L = Instants();
  for (auto _ : State) {
    for (const TInstant& T : L) {
      kx::TKxISODateTime R = kx::KxDecodeISODateTime(T.Text);
      benchmark::DoNotOptimize(R);
    }
  }
  State.SetItemsProcessed(int64_t(State.iterations() * L.size()));
}
BENCHMARK(ISODecodeKx)->Name("ISODecode/kx")->Unit(benchmark::kMicrosecond);

void ISODecodeStrptime(benchmark::State& State) {
  const auto& L = Instants();
  for (auto _ : State) {
    for (const TInstant& T : L) {
      tm Parts{};
      const char* End = strptime(T.Text.c_str(), "%Y-%m-%dT%H:%M:%S%z", &Parts);
      if (!End) State.SkipWithError("strptime refused a time stamp");
      benchmark::DoNotOptimize(Parts);
    }
  }
  State.SetItemsProcessed(int64_t(State.iterations() * L.size()));
}
BENCHMARK(ISODecodeStrptime)->Name("ISODecode/strptime")->Unit(benchmark::kMicrosecond);

} // namespace
