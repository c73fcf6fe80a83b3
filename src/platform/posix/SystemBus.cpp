// SPDX-License-Identifier: MIT
#include "platform/posix/SystemBus.h"

#include "platform/Platform.h"

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace kx::platform {

void SetBusError(int NegativeErrno) {
  SetLastError(static_cast<uint32_t>(-NegativeErrno));
}

TBusThread::~TBusThread() {
  Stop();
  if (FBus) sd_bus_flush_close_unref(FBus);
  if (FWake >= 0) close(FWake);
}

bool TBusThread::Open() {
  FWake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (FWake < 0) return SetLastError(static_cast<uint32_t>(errno)), false;
  const int R = sd_bus_open_system(&FBus);
  if (R < 0) {
    FBus = nullptr;
    return SetBusError(R), false;
  }
  return true;
}

bool TBusThread::MatchSignal(const char* Sender, const char* Path, const char* Interface,
                             const char* Member, sd_bus_message_handler_t Handler, void* UserData) {
  // A floating slot: the match lives as long as the connection.
  const int R =
      sd_bus_match_signal(FBus, nullptr, Sender, Path, Interface, Member, Handler, UserData);
  if (R < 0) return SetBusError(R), false;
  return true;
}

bool TBusThread::Start() {
  // The thread holds the connection alive: a handler may drop the last other reference.
  auto Self = shared_from_this();
  try {
    FThread = std::thread([Self] { Self->Run(); });
  } catch (const std::system_error& E) {
    SetLastError(static_cast<uint32_t>(E.code().value()));
    return false;
  }
  return true;
}

void TBusThread::Stop() {
  if (!FThread.joinable()) return;
  FStop.store(true);
  const uint64_t One = 1;
  [[maybe_unused]] const auto Written = write(FWake, &One, sizeof One);
  if (OnBusThread())
    FThread.detach();
  else
    FThread.join();
}

void TBusThread::Run() {
  while (!FStop.load()) {
    const int R = sd_bus_process(FBus, nullptr);
    if (R < 0) break; // the connection is gone: nothing more will arrive
    if (R > 0) continue;
    if (FStop.load()) break;
    int TimeoutMs = -1;
    uint64_t Until = 0;
    if (sd_bus_get_timeout(FBus, &Until) >= 0 && Until != UINT64_MAX) {
      timespec Now{};
      clock_gettime(CLOCK_MONOTONIC, &Now);
      const uint64_t NowUs = uint64_t(Now.tv_sec) * 1000000u + uint64_t(Now.tv_nsec) / 1000u;
      TimeoutMs = Until <= NowUs ? 0 : int((Until - NowUs + 999) / 1000);
    }
    pollfd Fds[2] = {{sd_bus_get_fd(FBus), static_cast<short>(sd_bus_get_events(FBus)), 0},
                     {FWake, POLLIN, 0}};
    if (poll(Fds, 2, TimeoutMs) < 0 && errno != EINTR) break;
  }
}

} // namespace kx::platform
