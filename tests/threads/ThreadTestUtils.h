// SPDX-License-Identifier: MIT
#pragma once
// Small helpers for ordering test threads without sleeps.

#include <condition_variable>
#include <mutex>
#include <thread>
#include <type_traits>

namespace kxtest {

// A one-shot gate: Wait blocks until Open has been called.
class TGate {
public:
  void Open() {
    std::lock_guard Guard(FLock);
    FOpen = true;
    FChanged.notify_all();
  }
  void Wait() {
    std::unique_lock Guard(FLock);
    FChanged.wait(Guard, [this] { return FOpen; });
  }

private:
  std::mutex FLock;
  std::condition_variable FChanged;
  bool FOpen = false;
};

// Runs F on a new thread and returns its result once that thread has finished.
template <class F>
auto OnOtherThread(F Fn) {
  std::invoke_result_t<F> Result{};
  std::thread T([&] { Result = Fn(); });
  T.join();
  return Result;
}

} // namespace kxtest
