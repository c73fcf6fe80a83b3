// SPDX-License-Identifier: MIT
// The uKxThreads locks against the standard library's: uncontended lock and unlock, and
// contended runs from several threads.
//
// Every run happens in a process that has another thread: glibc leaves out the atomic
// instructions of its mutexes while a process has a single thread, so a one-thread process
// would measure a lock no user of a lock ever meets.
//
// Contended runs share one lock between the benchmark's threads and compare real time: a
// lock whose waiters sleep spends little processor time and still keeps its threads waiting.
// Each critical section entry moves a few shared words (as a small data structure update
// would); the reader/writer runs read or write a pair of words that must stay equal.
#include <kx/uKxThreads.h>

#include <benchmark/benchmark.h>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <shared_mutex>
#include <thread>

namespace {

// A second thread that sleeps for the life of the benchmark program.
class TParkedThread {
public:
  TParkedThread()
      : FThread([this] {
          std::unique_lock Guard(FLock);
          FChanged.wait(Guard, [this] { return FDone; });
        }) {}
  ~TParkedThread() {
    {
      std::lock_guard Guard(FLock);
      FDone = true;
    }
    FChanged.notify_all();
    FThread.join();
  }

private:
  std::mutex FLock;
  std::condition_variable FChanged;
  bool FDone = false;
  std::thread FThread; // last: it uses the members above
};

void EnsureThreaded() {
  static TParkedThread Parked;
}

// --- uncontended -------------------------------------------------------------------------

void CriticalSectionKx(benchmark::State& State) {
  EnsureThreaded();
  kx::TKxCriticalSection* CS = kx::TKxCriticalSection::Create();
  for (auto _ : State) {
    CS->Enter();
    CS->Leave();
  }
  CS->Free();
}

void CriticalSectionStd(benchmark::State& State) {
  EnsureThreaded();
  std::recursive_mutex M;
  for (auto _ : State) {
    M.lock();
    M.unlock();
  }
}

void ReadLockKx(benchmark::State& State) {
  EnsureThreaded();
  kx::TKxMultiReadSingleWrite* Lock = kx::TKxMultiReadSingleWrite::Create();
  for (auto _ : State) {
    Lock->BeginRead();
    Lock->EndRead();
  }
  Lock->Free();
}

void ReadLockStd(benchmark::State& State) {
  EnsureThreaded();
  std::shared_mutex M;
  for (auto _ : State) {
    M.lock_shared();
    M.unlock_shared();
  }
}

void WriteLockKx(benchmark::State& State) {
  EnsureThreaded();
  kx::TKxMultiReadSingleWrite* Lock = kx::TKxMultiReadSingleWrite::Create();
  for (auto _ : State) {
    Lock->BeginWrite();
    Lock->EndWrite();
  }
  Lock->Free();
}

void WriteLockStd(benchmark::State& State) {
  EnsureThreaded();
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

// --- contended ---------------------------------------------------------------------------

// The state the threads of one contended run share; set up before they start.
struct TShared {
  kx::TKxCriticalSection* CS = nullptr;
  std::recursive_mutex RecursiveMutex;
  kx::TKxMultiReadSingleWrite* RW = nullptr;
  std::shared_mutex SharedMutex;
  alignas(64) uint64_t Words[4] = {};
};
TShared Shared;

void SetUpKx(const benchmark::State&) {
  EnsureThreaded();
  Shared.CS = kx::TKxCriticalSection::Create();
  Shared.RW = kx::TKxMultiReadSingleWrite::Create();
}

void TearDownKx(const benchmark::State&) {
  Shared.CS->Free();
  Shared.RW->Free();
}

void SetUpStd(const benchmark::State&) {
  EnsureThreaded();
}

inline void Update() {
  for (uint64_t& W : Shared.Words) ++W;
}

void ContendedCriticalSectionKx(benchmark::State& State) {
  for (auto _ : State) {
    Shared.CS->Enter();
    Update();
    Shared.CS->Leave();
  }
}

void ContendedCriticalSectionStd(benchmark::State& State) {
  for (auto _ : State) {
    Shared.RecursiveMutex.lock();
    Update();
    Shared.RecursiveMutex.unlock();
  }
}

// Every WriteEvery-th pass writes (0: never); the other passes read.
template <class TLock, class TBeginRead, class TEndRead, class TBeginWrite, class TEndWrite>
void ReadWriteLoop(benchmark::State& State, int WriteEvery, TLock& Lock, TBeginRead BeginRead,
                   TEndRead EndRead, TBeginWrite BeginWrite, TEndWrite EndWrite) {
  int Pass = State.thread_index(); // spread the writes over the threads
  for (auto _ : State) {
    if (WriteEvery != 0 && ++Pass % WriteEvery == 0) {
      BeginWrite(Lock);
      ++Shared.Words[0];
      ++Shared.Words[1];
      EndWrite(Lock);
    } else {
      BeginRead(Lock);
      if (Shared.Words[0] != Shared.Words[1]) State.SkipWithError("a read saw half a write");
      EndRead(Lock);
    }
  }
}

void ContendedReadWriteKx(benchmark::State& State, int WriteEvery) {
  ReadWriteLoop(
      State, WriteEvery, *Shared.RW, [](auto& L) { L.BeginRead(); }, [](auto& L) { L.EndRead(); },
      [](auto& L) { L.BeginWrite(); }, [](auto& L) { L.EndWrite(); });
}

void ContendedReadWriteStd(benchmark::State& State, int WriteEvery) {
  ReadWriteLoop(
      State, WriteEvery, Shared.SharedMutex, [](auto& L) { L.lock_shared(); },
      [](auto& L) { L.unlock_shared(); }, [](auto& L) { L.lock(); }, [](auto& L) { L.unlock(); });
}

BENCHMARK(ContendedCriticalSectionKx)
    ->Name("CriticalSectionContended/kx")
    ->Setup(SetUpKx)
    ->Teardown(TearDownKx)
    ->Threads(2)
    ->Threads(8)
    ->UseRealTime();
BENCHMARK(ContendedCriticalSectionStd)
    ->Name("CriticalSectionContended/std::recursive_mutex")
    ->Setup(SetUpStd)
    ->Threads(2)
    ->Threads(8)
    ->UseRealTime();
BENCHMARK_CAPTURE(ContendedReadWriteKx, Reads, 0)
    ->Name("MultiReadSingleWriteReads/kx")
    ->Setup(SetUpKx)
    ->Teardown(TearDownKx)
    ->Threads(8)
    ->UseRealTime();
BENCHMARK_CAPTURE(ContendedReadWriteStd, Reads, 0)
    ->Name("MultiReadSingleWriteReads/std::shared_mutex")
    ->Setup(SetUpStd)
    ->Threads(8)
    ->UseRealTime();
BENCHMARK_CAPTURE(ContendedReadWriteKx, Mixed, 10)
    ->Name("MultiReadSingleWriteMixed/kx")
    ->Setup(SetUpKx)
    ->Teardown(TearDownKx)
    ->Threads(8)
    ->UseRealTime();
BENCHMARK_CAPTURE(ContendedReadWriteStd, Mixed, 10)
    ->Name("MultiReadSingleWriteMixed/std::shared_mutex")
    ->Setup(SetUpStd)
    ->Threads(8)
    ->UseRealTime();

} // namespace
