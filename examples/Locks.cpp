// SPDX-License-Identifier: MIT
// The library's locks with the standard scoped holders: a critical section under
// std::scoped_lock, a multi-reader lock read under std::shared_lock and written under
// std::unique_lock, and a timed try. The locks are owned by OwnedPtr, so nothing leaks
// when a worker throws.

#include <kx/rtl/OwnedPtr.h>
#include <kx/uKxThreads.h>

#include <chrono>
#include <cstdio>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <thread>
#include <vector>

using namespace kx;
using namespace std::chrono_literals;

namespace {

// A price table many threads read and a few update.
class TPrices {
public:
  void Set(const std::string& Item, int Price) {
    std::unique_lock Writing(*FLock);
    FPrices[Item] = Price;
  }
  int Get(const std::string& Item) const {
    std::shared_lock Reading(*FLock);
    auto It = FPrices.find(Item);
    return It == FPrices.end() ? -1 : It->second;
  }

private:
  OwnedPtr<TKxMultiReadSingleWrite> FLock = MakeOwned<TKxMultiReadSingleWrite>();
  std::map<std::string, int> FPrices;
};

} // namespace

int main() {
  try {
    TPrices Prices;
    Prices.Set("apple", 3);

    OwnedPtr<TKxCriticalSection> TotalLock = MakeOwned<TKxCriticalSection>();
    long Total = 0;
    constexpr int Workers = 4, Rounds = 10000;

    std::vector<std::thread> Threads;
    for (int W = 0; W < Workers; ++W)
      Threads.emplace_back([&, W] {
        for (int I = 0; I < Rounds; ++I) {
          if (W == 0 && I % 1000 == 0) Prices.Set("pear", I); // a writer among the readers
          const int Price = Prices.Get("apple");
          std::scoped_lock Guard(*TotalLock); // Enter here, Leave on every way out
          Total += Price;
        }
      });
    for (auto& T : Threads) T.join();
    std::printf("total %ld (expected %d), pear at %d\n", Total, Workers * Rounds * 3,
                Prices.Get("pear"));
    if (Total != long(Workers) * Rounds * 3) return 1;

    // A timed try gives up when another thread holds the section for longer.
    std::unique_lock Held(*TotalLock);
    bool Got = true;
    std::thread([&] {
      std::unique_lock Try(*TotalLock, std::defer_lock);
      Got = Try.try_lock_for(50ms);
    }).join();
    std::printf("another thread %s the held section within 50 ms\n", Got ? "got" : "did not get");
    return Got ? 1 : 0;
  } catch (const Exception& E) {
    std::fprintf(stderr, "%s: %s\n", E.ClassName().c_str(), E.Message().c_str());
    return 1;
  }
}
