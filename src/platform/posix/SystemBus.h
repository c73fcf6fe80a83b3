// SPDX-License-Identifier: MIT
// A connection to the system bus serviced by a thread of its own. sd-bus connections are not
// thread-safe: everything done on one (matches, calls, handlers) happens before Start on the
// opening thread, or afterwards on the servicing thread.
#pragma once

#include <systemd/sd-bus.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

namespace kx::platform {

class TBusThread : public std::enable_shared_from_this<TBusThread> {
public:
  TBusThread() = default;
  TBusThread(const TBusThread&) = delete;
  TBusThread& operator=(const TBusThread&) = delete;
  ~TBusThread();

  // Connects to the system bus (DBUS_SYSTEM_BUS_ADDRESS is honoured); false with the errno
  // value in LastError().
  bool Open();
  sd_bus* Bus() const { return FBus; }
  // Adds a signal match whose handler runs on the servicing thread; Path may be null.
  bool MatchSignal(const char* Sender, const char* Path, const char* Interface, const char* Member,
                   sd_bus_message_handler_t Handler, void* UserData);
  bool Start();
  // Stops the servicing thread. Called from that thread (a handler ending its own
  // component), it only asks: the thread ends when the handler returns.
  void Stop();
  bool OnBusThread() const { return FThread.get_id() == std::this_thread::get_id(); }
  bool Stopping() const { return FStop.load(); }

private:
  void Run();

  sd_bus* FBus = nullptr;
  int FWake = -1;
  std::atomic<bool> FStop{false};
  std::thread FThread;
};

// The errno value of a failed sd-bus call, as LastError().
void SetBusError(int NegativeErrno);

} // namespace kx::platform
