// SPDX-License-Identifier: MIT
// Session and power messages from systemd-logind and UPower: PrepareForShutdown is the
// query and the end of the session, PrepareForSleep suspend and resume, SessionNew,
// SessionRemoved, Lock and Unlock the session changes, UPower's OnBattery and its display
// device the power status. A delay inhibitor lock stands for the answer to the query: logind
// waits for it (up to its InhibitDelayMaxSec) but cannot be refused.
#include "platform/SessionEvents.h"

#include "platform/Platform.h"
#include "platform/posix/SystemBus.h"

#include <systemd/sd-login.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace kx::platform {

namespace {

constexpr const char* Login1 = "org.freedesktop.login1";
constexpr const char* Login1Path = "/org/freedesktop/login1";
constexpr const char* Login1Manager = "org.freedesktop.login1.Manager";
constexpr const char* Login1Session = "org.freedesktop.login1.Session";
constexpr const char* SessionPathPrefix = "/org/freedesktop/login1/session";
constexpr const char* UPower = "org.freedesktop.UPower";
constexpr const char* UPowerPath = "/org/freedesktop/UPower";
constexpr const char* UPowerDisplayDevice = "/org/freedesktop/UPower/devices/DisplayDevice";
constexpr const char* Properties = "org.freedesktop.DBus.Properties";

constexpr uint32_t WM_QUERYENDSESSION_ = 17, WM_ENDSESSION_ = 22, WM_POWERBROADCAST_ = 536,
                   WM_WTSSESSION_CHANGE_ = 689;
constexpr uint32_t PBT_APMSUSPEND_ = 4, PBT_APMRESUMESUSPEND_ = 7, PBT_APMPOWERSTATUSCHANGE_ = 10,
                   PBT_APMRESUMEAUTOMATIC_ = 18;
constexpr uint32_t WTS_SESSION_LOGON_ = 5, WTS_SESSION_LOGOFF_ = 6, WTS_SESSION_LOCK_ = 7,
                   WTS_SESSION_UNLOCK_ = 8;

// logind's session ids are audit session numbers ("3") or "c" and a counter ("c2"): the
// number in them is the 32-bit identifier the events carry.
uint32_t SessionNumber(const char* Id) {
  if (!Id) return 0;
  while (*Id && (*Id < '0' || *Id > '9')) ++Id;
  return static_cast<uint32_t>(std::strtoul(Id, nullptr, 10));
}

// The logind session of this process: the one its environment names (a desktop program's
// XDG_SESSION_ID), else the one its control group belongs to.
std::string OwnSession() {
  if (const char* Env = std::getenv("XDG_SESSION_ID"); Env && *Env) return Env;
  char* Session = nullptr;
  if (sd_pid_get_session(0, &Session) < 0 || !Session) return {};
  std::string R = Session;
  std::free(Session);
  return R;
}

struct TSessionWatcher : std::enable_shared_from_this<TSessionWatcher> {
  TSessionMessageProc Proc = nullptr;
  // The owner's reference; DestroySessionWindow drops it.
  std::shared_ptr<TSessionWatcher> Self;
  std::shared_ptr<TBusThread> Bus;
  bool AllSessions = false;
  std::string Session;
  int ShutdownLock = -1;
  int SleepLock = -1;

  ~TSessionWatcher() {
    Release(ShutdownLock);
    Release(SleepLock);
  }

  intptr_t Send(uint32_t Msg, uintptr_t WParam, intptr_t LParam = 0) {
    if (!Bus || Bus->Stopping()) return 1;
    return Proc(this, Msg, WParam, LParam);
  }

  // A delay lock for What ("shutdown" or "sleep"); without logind there is none.
  int Inhibit(const char* What) {
    sd_bus_message* Reply = nullptr;
    int Fd = -1;
    if (sd_bus_call_method(Bus->Bus(), Login1, Login1Path, Login1Manager, "Inhibit", nullptr,
                           &Reply, "ssss", What, program_invocation_short_name,
                           "The application is told before the system goes down", "delay") >= 0) {
      int Received = -1;
      // The descriptor belongs to the reply: keep a copy.
      if (sd_bus_message_read(Reply, "h", &Received) >= 0) Fd = fcntl(Received, F_DUPFD_CLOEXEC, 3);
    }
    sd_bus_message_unref(Reply);
    return Fd;
  }
  static void Release(int& Lock) {
    if (Lock >= 0) close(Lock);
    Lock = -1;
  }

  bool Concerns(const char* Id) const { return AllSessions || (!Session.empty() && Session == Id); }
};

TSessionWatcher* Watcher(void* UserData) {
  return static_cast<TSessionWatcher*>(UserData);
}

int OnPrepareForShutdown(sd_bus_message* M, void* UserData, sd_bus_error*) {
  auto W = Watcher(UserData)->shared_from_this();
  int Starting = 0;
  if (sd_bus_message_read(M, "b", &Starting) < 0) return 0;
  if (Starting) {
    // A refusal keeps the delay lock: logind waits as long as it allows, then goes on.
    if (W->Send(WM_QUERYENDSESSION_, 0, 0) == 0) return 0;
    W->Send(WM_ENDSESSION_, 1, 0);
    TSessionWatcher::Release(W->ShutdownLock);
  } else {
    // The shutdown was cancelled: the session goes on.
    if (W->ShutdownLock < 0) W->ShutdownLock = W->Inhibit("shutdown");
    W->Send(WM_ENDSESSION_, 0, 0);
  }
  return 0;
}

int OnPrepareForSleep(sd_bus_message* M, void* UserData, sd_bus_error*) {
  auto W = Watcher(UserData)->shared_from_this();
  int Starting = 0;
  if (sd_bus_message_read(M, "b", &Starting) < 0) return 0;
  if (Starting) {
    W->Send(WM_POWERBROADCAST_, PBT_APMSUSPEND_);
    TSessionWatcher::Release(W->SleepLock);
  } else {
    if (W->SleepLock < 0) W->SleepLock = W->Inhibit("sleep");
    // As on Windows: the automatic resume first, then the one a user can see.
    W->Send(WM_POWERBROADCAST_, PBT_APMRESUMEAUTOMATIC_);
    W->Send(WM_POWERBROADCAST_, PBT_APMRESUMESUSPEND_);
  }
  return 0;
}

int SessionListChanged(sd_bus_message* M, void* UserData, uint32_t Code) {
  auto W = Watcher(UserData)->shared_from_this();
  const char* Id = nullptr;
  const char* Path = nullptr;
  if (sd_bus_message_read(M, "so", &Id, &Path) < 0 || !W->Concerns(Id)) return 0;
  W->Send(WM_WTSSESSION_CHANGE_, Code, static_cast<intptr_t>(SessionNumber(Id)));
  return 0;
}
int OnSessionNew(sd_bus_message* M, void* UserData, sd_bus_error*) {
  return SessionListChanged(M, UserData, WTS_SESSION_LOGON_);
}
int OnSessionRemoved(sd_bus_message* M, void* UserData, sd_bus_error*) {
  return SessionListChanged(M, UserData, WTS_SESSION_LOGOFF_);
}

int SessionLockChanged(sd_bus_message* M, void* UserData, uint32_t Code) {
  auto W = Watcher(UserData)->shared_from_this();
  char* Id = nullptr;
  if (sd_bus_path_decode(sd_bus_message_get_path(M), SessionPathPrefix, &Id) <= 0) return 0;
  if (W->Concerns(Id))
    W->Send(WM_WTSSESSION_CHANGE_, Code, static_cast<intptr_t>(SessionNumber(Id)));
  std::free(Id);
  return 0;
}
int OnLock(sd_bus_message* M, void* UserData, sd_bus_error*) {
  return SessionLockChanged(M, UserData, WTS_SESSION_LOCK_);
}
int OnUnlock(sd_bus_message* M, void* UserData, sd_bus_error*) {
  return SessionLockChanged(M, UserData, WTS_SESSION_UNLOCK_);
}

// True when the changed properties of a PropertiesChanged signal name one of Names.
bool ChangedOneOf(sd_bus_message* M, std::initializer_list<const char*> Names) {
  const char* Interface = nullptr;
  if (sd_bus_message_read(M, "s", &Interface) < 0) return false;
  if (sd_bus_message_enter_container(M, 'a', "{sv}") < 0) return false;
  bool Found = false;
  while (!Found && sd_bus_message_enter_container(M, 'e', "sv") > 0) {
    const char* Name = nullptr;
    if (sd_bus_message_read(M, "s", &Name) < 0) break;
    for (const char* N : Names) Found = Found || std::strcmp(N, Name) == 0;
    if (sd_bus_message_skip(M, "v") < 0 || sd_bus_message_exit_container(M) < 0) break;
  }
  return Found;
}

int OnPowerProperties(sd_bus_message* M, void* UserData, sd_bus_error*) {
  auto W = Watcher(UserData)->shared_from_this();
  if (ChangedOneOf(M, {"OnBattery", "Percentage", "State"}))
    W->Send(WM_POWERBROADCAST_, PBT_APMPOWERSTATUSCHANGE_);
  return 0;
}

} // namespace

void* AllocateSessionWindow(TSessionMessageProc Proc) {
  auto W = std::make_shared<TSessionWatcher>();
  W->Proc = Proc;
  W->Self = W;
  return W.get();
}

void DestroySessionWindow(void* Window) {
  if (!Window) return;
  auto W = std::move(Watcher(Window)->Self);
  if (W && W->Bus) W->Bus->Stop();
}

intptr_t DefSessionWindowProc(void*, uint32_t, uintptr_t, intptr_t) {
  return 0;
}

TSessionRegisterResult RegisterSessionNotification(void* Window, bool AllSessions) {
  auto* W = Watcher(Window);
  if (W->Bus) return srOK;
  auto Bus = std::make_shared<TBusThread>();
  if (!Bus->Open()) return srFailed;
  W->AllSessions = AllSessions;
  W->Session = OwnSession();
  const bool Matched =
      Bus->MatchSignal(Login1, Login1Path, Login1Manager, "PrepareForShutdown",
                       &OnPrepareForShutdown, W) &&
      Bus->MatchSignal(Login1, Login1Path, Login1Manager, "PrepareForSleep", &OnPrepareForSleep,
                       W) &&
      Bus->MatchSignal(Login1, Login1Path, Login1Manager, "SessionNew", &OnSessionNew, W) &&
      Bus->MatchSignal(Login1, Login1Path, Login1Manager, "SessionRemoved", &OnSessionRemoved, W) &&
      Bus->MatchSignal(Login1, nullptr, Login1Session, "Lock", &OnLock, W) &&
      Bus->MatchSignal(Login1, nullptr, Login1Session, "Unlock", &OnUnlock, W) &&
      Bus->MatchSignal(UPower, UPowerPath, Properties, "PropertiesChanged", &OnPowerProperties,
                       W) &&
      Bus->MatchSignal(UPower, UPowerDisplayDevice, Properties, "PropertiesChanged",
                       &OnPowerProperties, W);
  if (!Matched) return srFailed;
  W->Bus = Bus;
  W->ShutdownLock = W->Inhibit("shutdown");
  W->SleepLock = W->Inhibit("sleep");
  if (!Bus->Start()) {
    W->Bus = nullptr;
    return srFailed;
  }
  return srOK;
}

void UnRegisterSessionNotification(void* Window) {
  auto* W = Watcher(Window);
  if (!W->Bus) return;
  W->Bus->Stop();
  W->Bus = nullptr;
  TSessionWatcher::Release(W->ShutdownLock);
  TSessionWatcher::Release(W->SleepLock);
}

uint32_t CurrentSessionId() {
  return SessionNumber(OwnSession().c_str());
}

} // namespace kx::platform
