// SPDX-License-Identifier: MIT
// Variants against std::variant, and the type registry's schema-name lookup against a
// std::shared_mutex-guarded std::unordered_map of the same names, read from 8 threads.
#include <kx/uKxTypes.h>

#include <benchmark/benchmark.h>

#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

namespace {

using StdValue = std::variant<int64_t, double, std::string>;

// --- copies ------------------------------------------------------------------------------

void VariantCopyScalarKx(benchmark::State& State) {
  kx::Variant Source(int64_t(123456789));
  for (auto _ : State) {
    benchmark::DoNotOptimize(Source);
    kx::Variant Copy(Source);
    benchmark::DoNotOptimize(Copy);
  }
}

void VariantCopyScalarStd(benchmark::State& State) {
  StdValue Source(int64_t(123456789));
  for (auto _ : State) {
    benchmark::DoNotOptimize(Source);
    StdValue Copy(Source);
    benchmark::DoNotOptimize(Copy);
  }
}

// An integer and a short string, each copied and turned into text.
void VariantCopyToTextKx(benchmark::State& State) {
  const kx::Variant Number(int64_t(-42017)), Text(kx::AnsiString("short text"));
  for (auto _ : State) {
    kx::Variant A(Number), B(Text);
    kx::AnsiString SA = kx::VarToStr(A), SB = kx::VarToStr(B);
    benchmark::DoNotOptimize(SA);
    benchmark::DoNotOptimize(SB);
  }
}

std::string StdToText(const StdValue& V) {
  return std::visit(
      [](const auto& X) -> std::string {
        if constexpr (std::is_same_v<std::decay_t<decltype(X)>, std::string>)
          return X;
        else
          return std::to_string(X);
      },
      V);
}

void VariantCopyToTextStd(benchmark::State& State) {
  const StdValue Number(int64_t(-42017)), Text(std::string("short text"));
  for (auto _ : State) {
    StdValue A(Number), B(Text);
    std::string SA = StdToText(A), SB = StdToText(B);
    benchmark::DoNotOptimize(SA);
    benchmark::DoNotOptimize(SB);
  }
}

BENCHMARK(VariantCopyScalarKx)->Name("VariantCopyScalar/kx");
BENCHMARK(VariantCopyScalarStd)->Name("VariantCopyScalar/std::variant");
BENCHMARK(VariantCopyToTextKx)->Name("VariantCopyToText/kx");
BENCHMARK(VariantCopyToTextStd)->Name("VariantCopyToText/std::variant");

// --- registry lookups --------------------------------------------------------------------

// The default table's schema names and 64 registered records' calculated ones.
struct TNames {
  std::vector<kx::AnsiString> Names;
  std::unordered_map<std::string, const void*> Map;
  std::shared_mutex Lock;

  TNames() {
    kx::TKxTypes* Types = kx::KxTypes();
    for (int I = 0; I < 64; ++I) {
      const kx::AnsiString Name = "uBench.TRecord" + std::to_string(I);
      Types->AddTypeRec(nullptr, Name, Name.substr(7), kx::rtkRecord, kx::varEmpty,
                        kx::xsdComplexType, {}, kx::tkRecord, nullptr);
      Names.push_back("uBench_Record" + std::to_string(I));
    }
    for (const char* N :
         {"unsignedByte", "unsignedShort", "unsignedInt", "unsignedLong",   "byte",
          "short",        "int",           "long",        "float",          "double",
          "decimal",      "boolean",       "string",      "date",           "time",
          "dateTime",     "ArrayOfString", "ArrayOfInt",  "ArrayOfBoolean", "ArrayOfDateTime"})
      Names.push_back(N);
    for (const kx::AnsiString& N : Names)
      Map.emplace(N, Types->GetTypeInfo(N, kx::tntSchemaName, true, kx::mtkUnknown));
  }
};

TNames& Names() {
  static TNames* N = new TNames; // made before the threads start (Setup), kept for the run
  return *N;
}

void SetUpNames(const benchmark::State&) {
  Names();
}

void RegistryLookupKx(benchmark::State& State) {
  TNames& N = Names();
  kx::TKxTypes* Types = kx::KxTypes();
  size_t I = size_t(State.thread_index()) * 7;
  for (auto _ : State) {
    kx::TKxTypeInfo* Info =
        Types->GetTypeInfo(N.Names[I % N.Names.size()], kx::tntSchemaName, false, kx::mtkUnknown);
    benchmark::DoNotOptimize(Info);
    ++I;
  }
}

void RegistryLookupStd(benchmark::State& State) {
  TNames& N = Names();
  size_t I = size_t(State.thread_index()) * 7;
  for (auto _ : State) {
    const void* Info;
    {
      std::shared_lock Read(N.Lock);
      auto It = N.Map.find(N.Names[I % N.Names.size()]);
      Info = It == N.Map.end() ? nullptr : It->second;
    }
    benchmark::DoNotOptimize(Info);
    ++I;
  }
}

BENCHMARK(RegistryLookupKx)
    ->Name("RegistryLookup/kx")
    ->Setup(SetUpNames)
    ->Threads(1)
    ->Threads(8)
    ->UseRealTime();
BENCHMARK(RegistryLookupStd)
    ->Name("RegistryLookup/std::shared_mutex")
    ->Setup(SetUpNames)
    ->Threads(1)
    ->Threads(8)
    ->UseRealTime();

} // namespace
