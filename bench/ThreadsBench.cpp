// Uncontended lock and unlock of the uKxThreads locks against the standard library's.
#include <kx/uKxThreads.h>

#include <benchmark/benchmark.h>

#include <mutex>
#include <shared_mutex>

namespace {

void CriticalSectionKx(benchmark::State& State) {
  kx::TKxCriticalSection* CS = kx::TKxCriticalSection::Create();
  for (auto _ : State) {
    CS->Enter();
    CS->Leave();
  }
  CS->Free();
}

void CriticalSectionStd(benchmark::State& State) {
  std::recursive_mutex M;
  for (auto _ : State) {
    M.lock();
    M.unlock();
  }
}

void ReadLockKx(benchmark::State& State) {
  kx::TKxMultiReadSingleWrite* Lock = kx::TKxMultiReadSingleWrite::Create();
  for (auto _ : State) {
    Lock->BeginRead();
    Lock->EndRead();
  }
  Lock->Free();
}

void ReadLockStd(benchmark::State& State) {
  std::shared_mutex M;
  for (auto _ : State) {
    M.lock_shared();
    M.unlock_shared();
  }
}

void WriteLockKx(benchmark::State& State) {
  kx::TKxMultiReadSingleWrite* Lock = kx::TKxMultiReadSingleWrite::Create();
  for (auto _ : State) {
    Lock->BeginWrite();
    Lock->EndWrite();
  }
  Lock->Free();
}

void WriteLockStd(benchmark::State& State) {
  std::shared_mutex M;
  for (auto _ : State) {
    M.lock();
    M.unlock();
  }
}

BENCHMARK(CriticalSectionKx)->Name("CriticalSection/kx");
BENCHMARK(CriticalSectionStd)->Name("CriticalSection/std::recursive_mutex");
BENCHMARK(ReadLockKx)->Name("MultiReadSingleWriteRead/kx");
BENCHMARK(ReadLockStd)->Name("MultiReadSingleWriteRead/std::shared_mutex");
BENCHMARK(WriteLockKx)->Name("MultiReadSingleWriteWrite/kx");
BENCHMARK(WriteLockStd)->Name("MultiReadSingleWriteWrite/std::shared_mutex");

} // namespace
