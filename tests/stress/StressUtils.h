// SPDX-License-Identifier: MIT
// Helpers of the lock stress programs: threads released together, bounded rounds.
#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace kxtest {

// Runs Body(Index) on Count threads that all start at once, and joins them.
inline void RunTogether(int Count, const std::function<void(int)>& Body) {
  std::atomic<int> Ready{0};
  std::vector<std::thread> Pool;
  for (int I = 0; I < Count; ++I)
    Pool.emplace_back([&, I] {
      ++Ready;
      while (Ready.load() < Count) std::this_thread::yield();
      Body(I);
    });
  for (auto& T : Pool) T.join();
}

// A small per-thread random sequence (xorshift), so runs differ by thread but not by clock.
class TRandom {
public:
  explicit TRandom(uint32_t Start) : FState(Start * 2654435761u + 1) {}
  uint32_t Next(uint32_t Below) {
    FState ^= FState << 13;
    FState ^= FState >> 17;
    FState ^= FState << 5;
    return FState % Below;
  }

private:
  uint32_t FState;
};

} // namespace kxtest
