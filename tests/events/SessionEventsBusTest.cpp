// SPDX-License-Identifier: MIT
// TKxSessionEvents on Linux: logind and UPower played by python-dbusmock on a private system
// bus; the handlers run on the component's bus thread.
#if !defined(_WIN32)

#include <kx/rtl/Exceptions.h>
#include <kx/uKxSessionEvents.h>

#include "MockBus.h"
#include "support/ScopedEnv.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

using namespace kx;
using kxtest::TEventLog;
using kxtest::TMockBus;

namespace {

std::string Bus(const std::string& Python) {
  const std::string R = TMockBus::Get().Run(Python);
  EXPECT_EQ(R.rfind("ok", 0), 0u) << Python << " -> " << R;
  return R;
}

void EmitManagerSignal(const std::string& Member, const std::string& Signature,
                       const std::string& Args) {
  Bus("logind.EmitSignal('org.freedesktop.login1.Manager', '" + Member + "', '" + Signature +
      "', [" + Args + "], dbus_interface=MOCK)");
}

std::string Inhibitors() {
  return Bus("[str(i[0]) + '/' + str(i[3]) for i in "
             "logind.ListInhibitors(dbus_interface='org.freedesktop.login1.Manager')]");
}

// logind forgets a lock when its descriptor closes, which the mock sees a moment later.
void ExpectLock(const std::string& What, bool Held) {
  const std::string Entry = What + "/delay";
  for (int I = 0; I < 100; ++I) {
    if ((Inhibitors().find(Entry) != std::string::npos) == Held) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  ADD_FAILURE() << What << (Held ? " lock not held" : " lock still held");
}

std::string Types(TKxEndSessionTypes T) {
  return std::string(T.Contains(esCloseApp) ? "C" : "") + (T.Contains(esCritical) ? "R" : "") +
         (T.Contains(esLogoff) ? "L" : "");
}

// A component whose every handler writes a line to the log.
struct TRecorder {
  TKxSessionEvents* Events = TKxSessionEvents::Create();
  TEventLog Log;
  bool Veto = false;

  TRecorder() {
    auto Session = [this](const char* Name) {
      return TKxOnSessionEvent(nullptr, [this, Name](TObject*, uint32_t Id) {
        Log.Add(std::string(Name) + " " + std::to_string(Id));
      });
    };
    auto Power = [this](const char* Name) {
      return TKxOnPowerEvent(nullptr, [this, Name](TObject*) { Log.Add(Name); });
    };
    Events->OnSessionLogon = Session("logon");
    Events->OnSessionLogoff = Session("logoff");
    Events->OnSessionLock = Session("lock");
    Events->OnSessionUnlock = Session("unlock");
    Events->OnSuspend = Power("suspend");
    Events->OnResumeAutomatic = Power("resume-automatic");
    Events->OnResumeSuspend = Power("resume-suspend");
    Events->OnPowerStatusChange = Power("power-status");
    Events->OnQueryEndSession =
        TKxOnQueryEndSessionEvent(nullptr, [this](TObject*, TKxEndSessionTypes T, bool& CanEnd) {
          Log.Add("query " + Types(T));
          if (Veto) CanEnd = false;
        });
    Events->OnEndSession =
        TKxOnEndSessionEvent(nullptr, [this](TObject*, bool Ending, TKxEndSessionTypes T) {
          Log.Add(std::string("end ") + (Ending ? "true" : "false") + " " + Types(T));
        });
  }
  ~TRecorder() { Events->Free(); }
};

class SessionEventsBus : public ::testing::Test {
protected:
  void SetUp() override { KX_REQUIRE_MOCK_BUS(); }
};

} // namespace

TEST_F(SessionEventsBus, ShutdownQueryHoldsTheDelayLockOnlyWhenRefused) {
  TRecorder R;
  R.Events->SetActive(true);
  ExpectLock("shutdown", true);

  // Agreed: the end of the session follows and the lock goes, so logind need not wait.
  EmitManagerSignal("PrepareForShutdown", "b", "True");
  auto Lines = R.Log.WaitFor(2);
  ASSERT_EQ(Lines.size(), 2u);
  EXPECT_EQ(Lines[0], "query ");
  EXPECT_EQ(Lines[1], "end true ");
  ExpectLock("shutdown", false);

  // Cancelled: the session goes on, with a new lock for the next query.
  EmitManagerSignal("PrepareForShutdown", "b", "False");
  Lines = R.Log.WaitFor(3);
  ASSERT_EQ(Lines.size(), 3u);
  EXPECT_EQ(Lines[2], "end false ");
  ExpectLock("shutdown", true);

  // Refused: no end yet, and the lock stays so that logind waits.
  R.Veto = true;
  EmitManagerSignal("PrepareForShutdown", "b", "True");
  EmitManagerSignal("PrepareForShutdown", "b", "False");
  Lines = R.Log.WaitFor(5);
  ASSERT_EQ(Lines.size(), 5u);
  EXPECT_EQ(Lines[3], "query ");
  EXPECT_EQ(Lines[4], "end false ");
  ExpectLock("shutdown", true);

  R.Events->SetActive(false);
  ExpectLock("shutdown", false);
  ExpectLock("sleep", false);
}

TEST_F(SessionEventsBus, SleepGivesSuspendThenBothResumes) {
  TRecorder R;
  R.Events->SetActive(true);
  ExpectLock("sleep", true);
  EmitManagerSignal("PrepareForSleep", "b", "True");
  EXPECT_EQ(R.Log.WaitFor(1), std::vector<std::string>({"suspend"}));
  ExpectLock("sleep", false);
  EmitManagerSignal("PrepareForSleep", "b", "False");
  EXPECT_EQ(R.Log.WaitFor(3),
            std::vector<std::string>({"suspend", "resume-automatic", "resume-suspend"}));
  ExpectLock("sleep", true);
}

TEST_F(SessionEventsBus, SessionChangesFollowTheScope) {
  kxtest::TScopedEnv Own("XDG_SESSION_ID", std::string("c5"));
  TRecorder All, This;
  All.Events->SetNotificationScope(nsAllSessions);
  All.Events->SetActive(true);
  This.Events->SetActive(true);
  EXPECT_EQ(GetCurrentSessionID(), 5u);

  Bus("logind.AddSession('c5', 'seat0', dbus.UInt32(1000), 'user', True, dbus_interface=MOCK)");
  Bus("logind.AddSession('12', 'seat0', dbus.UInt32(1000), 'user', True, dbus_interface=MOCK)");
  EmitManagerSignal("SessionNew", "so", "'12', '/org/freedesktop/login1/session/12'");
  EmitManagerSignal("SessionNew", "so", "'c5', '/org/freedesktop/login1/session/c5'");
  Bus("obj('org.freedesktop.login1', '/org/freedesktop/login1/session/12')"
      ".Lock(dbus_interface='org.freedesktop.login1.Session')");
  Bus("obj('org.freedesktop.login1', '/org/freedesktop/login1/session/c5')"
      ".Lock(dbus_interface='org.freedesktop.login1.Session')");
  Bus("obj('org.freedesktop.login1', '/org/freedesktop/login1/session/c5')"
      ".Unlock(dbus_interface='org.freedesktop.login1.Session')");
  EmitManagerSignal("SessionRemoved", "so", "'c5', '/org/freedesktop/login1/session/c5'");

  EXPECT_EQ(All.Log.WaitFor(6), std::vector<std::string>({"logon 12", "logon 5", "lock 12",
                                                          "lock 5", "unlock 5", "logoff 5"}));
  // The component for this session heard only of c5: its last event came after the others.
  EXPECT_EQ(This.Log.WaitFor(4),
            std::vector<std::string>({"logon 5", "lock 5", "unlock 5", "logoff 5"}));
}

TEST_F(SessionEventsBus, BatteryChangesArePowerStatusChanges) {
  TRecorder R;
  R.Events->SetActive(true);
  Bus("upower.UpdateProperties('org.freedesktop.UPower', {'OnBattery': True}, "
      "dbus_interface=MOCK)");
  // A property the component does not follow, a sleep to show it was passed over, then the
  // display device's charge.
  Bus("upower.UpdateProperties('org.freedesktop.UPower', {'LidIsClosed': True}, "
      "dbus_interface=MOCK)");
  EmitManagerSignal("PrepareForSleep", "b", "True");
  Bus("obj('org.freedesktop.UPower', '/org/freedesktop/UPower/devices/DisplayDevice')"
      ".UpdateProperties('org.freedesktop.UPower.Device', {'Percentage': 40.0}, "
      "dbus_interface=MOCK)");
  EXPECT_EQ(R.Log.WaitFor(3),
            std::vector<std::string>({"power-status", "suspend", "power-status"}));
}

TEST_F(SessionEventsBus, AHandlerMayDeactivateItsOwnComponent) {
  TRecorder R;
  R.Events->OnSuspend = TKxOnPowerEvent(nullptr, [&R](TObject*) {
    R.Events->SetActive(false);
    R.Log.Add("suspend");
  });
  R.Events->SetActive(true);
  EmitManagerSignal("PrepareForSleep", "b", "True");
  EXPECT_EQ(R.Log.WaitFor(1), std::vector<std::string>({"suspend"}));
  // Nothing arrives any more, and the component can be activated again.
  EmitManagerSignal("PrepareForSleep", "b", "False");
  EXPECT_EQ(R.Log.WaitFor(2, std::chrono::milliseconds(500)).size(), 1u);
  EXPECT_FALSE(R.Events->Active());
  R.Events->SetActive(true);
  EXPECT_TRUE(R.Events->Active());
}

TEST_F(SessionEventsBus, AnUnreachableBusFailsActivation) {
  kxtest::TScopedEnv Nowhere("DBUS_SYSTEM_BUS_ADDRESS",
                             std::string("unix:path=/nonexistent/kx-test-bus"));
  TKxSessionEvents* Events = TKxSessionEvents::Create();
  EXPECT_THROW(Events->SetActive(true), EOSError);
  EXPECT_FALSE(Events->Active());
  Events->Free();
}

#endif
