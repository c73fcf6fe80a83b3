// SPDX-License-Identifier: MIT
// The system event subscriptions: the subscribers' sink methods called directly, the
// assertions of the subscription, and the sources: on Linux logind, NetworkManager and UPower
// played on the private bus; under Wine, which has no COM+ event system, the COM error of
// the activation.
#include <kx/rtl/Exceptions.h>
#include <kx/uKxSystemEvents.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace kx;

namespace {

std::string Narrow(const WideString& W) {
  return std::string(W.begin(), W.end());
}

template <class F>
std::string AssertionOf(F&& Call) {
  try {
    Call();
  } catch (const EAssertionFailed& E) {
    return E.Message().substr(0, E.Message().find(" ("));
  }
  return "(nothing raised)";
}

} // namespace

TEST(SystemEvents, SinksForwardToTheComponentUntilItIsFreed) {
  TKxSensLogon* Logon = TKxSensLogon::Create();
  std::vector<std::string> Calls;
  Logon->OnLogon = TKxSensLogonEvent(nullptr, [&](TObject* Sender, const WideString& U) {
    EXPECT_EQ(Sender, Logon);
    Calls.push_back("logon " + Narrow(U));
  });
  Logon->OnDisplayLock = TKxSensLogonEvent(nullptr, [&](TObject*, const WideString& U) {
    Calls.push_back("lock " + Narrow(U));
    throw Exception("handler failed");
  });
  auto* Sub = static_cast<TKxSensLogonSubscriber*>(Logon->CreateSubscriber());
  EXPECT_EQ(Sub->RefCount(), 1);
  EXPECT_EQ(Sub->Logon(u"anna"), 0);
  // A handler's exception stays in the sink, which still answers success.
  EXPECT_EQ(Sub->DisplayLock(u"anna"), 0);
  EXPECT_EQ(Sub->Logoff(u"anna"), 0); // no handler
  Logon->Free();
  EXPECT_EQ(Sub->Sens(), nullptr);
  EXPECT_EQ(Sub->Logon(u"late"), 0);
  EXPECT_EQ(Calls, std::vector<std::string>({"logon anna", "lock anna"}));
  Sub->_Release();
}

TEST(SystemEvents, NetworkAndPowerSinksConvertTheirArguments) {
  TKxSensNetwork* Network = TKxSensNetwork::Create();
  TKxSensOnNow* Power = TKxSensOnNow::Create();
  std::vector<std::string> Calls;
  Network->OnConnectionMade = TKxSensNetworkConnectionMadeEvent(
      nullptr, [&](TObject*, const WideString& C, TKxSensNetworkConnectionType T, uint32_t In,
                   uint32_t Out) {
        Calls.push_back("made " + Narrow(C) + (T == ctWAN ? " WAN " : " LAN ") +
                        std::to_string(In) + "/" + std::to_string(Out));
      });
  Network->OnConnectionLost = TKxSensNetworkConnectionEvent(
      nullptr, [&](TObject*, const WideString& C, TKxSensNetworkConnectionType T) {
        Calls.push_back("lost " + Narrow(C) + (T == ctWAN ? " WAN" : " LAN"));
      });
  Power->OnBatteryLow = TKxSensOnNowBatteryEvent(
      nullptr, [&](TObject*, uint32_t P) { Calls.push_back("low " + std::to_string(P)); });
  Power->OnACPower = TKxSensOnNowEvent(nullptr, [&](TObject*) { Calls.push_back("ac"); });

  auto* N = static_cast<TKxSensNetworkSubscriber*>(Network->CreateSubscriber());
  auto* P = static_cast<TKxSensOnNowSubscriber*>(Power->CreateSubscriber());
  EXPECT_EQ(N->ConnectionMade(u"eth0", 1, 100000000, 50000000), 0);
  EXPECT_EQ(N->ConnectionLost(u"ppp0", 2), 0);
  EXPECT_EQ(uint32_t(N->DestinationReachable(u"host", u"eth0", 1)), 0x80004001u);
  EXPECT_EQ(uint32_t(N->DestinationReachableNoQOCInfo(u"host", u"eth0", 1)), 0x80004001u);
  EXPECT_EQ(P->BatteryLow(7), 0);
  EXPECT_EQ(P->OnACPower(), 0);
  EXPECT_EQ(Calls, std::vector<std::string>(
                       {"made eth0 LAN 100000000/50000000", "lost ppp0 WAN", "low 7", "ac"}));
  N->_Release();
  P->_Release();
  Network->Free();
  Power->Free();
}

TEST(SystemEvents, TheSubscriptionsAssertionsAndTheSetter) {
  if (!KxAssertionsEnabled) GTEST_SKIP() << "assertions compiled out";
  TKxSensOnNow* Power = TKxSensOnNow::Create();
  EXPECT_EQ(AssertionOf([&] { Power->Unsubscribe(); }), "There is no active subscription");
  Power->SetActive(false); // inactive already: nothing
  EXPECT_FALSE(Power->Active());
  auto* Sub = Power->CreateSubscriber();
  Sub->_AddRef();
  EXPECT_EQ(AssertionOf([&] { Sub->Free(); }), "The Refcount should be 0 here!");
  Sub->_Release();
  Sub->_Release();
  Power->Free();
}

TEST(SystemEvents, EachComponentHasItsOwnSubscriptionIdentifier) {
  TKxSensLogon* A = TKxSensLogon::Create();
  TKxSensLogon* B = TKxSensLogon::Create();
  EXPECT_FALSE(A->SubscriptionID() == B->SubscriptionID());
  EXPECT_TRUE(A->GetEventClass() == StringToGUID("{D5978630-5B9F-11D1-8DD2-00AA004ABD5E}"));
  A->Free();
  B->Free();
}

#if defined(_WIN32)

TEST(SystemEventsWindows, WithoutTheEventSystemActivationRaisesTheCOMError) {
  TKxSensLogon* Logon = TKxSensLogon::Create();
  try {
    Logon->SetActive(true);
    // A system with the COM+ event system: the subscription is real, and can be removed.
    EXPECT_TRUE(Logon->Active());
    if (KxAssertionsEnabled) {
      EXPECT_EQ(AssertionOf([&] { Logon->Subscribe(); }),
                "The SENS Subscription has already been activated");
    }
    Logon->SetActive(false);
  } catch (const EOleSysError& E) {
    // Wine registers neither EventSystem.EventSubscription nor EventSystem.EventSystem.
    EXPECT_EQ(uint32_t(E.ErrorCode), 0x800401F3u) << E.Message();
    EXPECT_FALSE(E.Message().empty());
    EXPECT_FALSE(Logon->Active());
  }
  Logon->Free();
}

#else

#include "MockBus.h"

using kxtest::TEventLog;
using kxtest::TMockBus;

namespace {

std::string Bus(const std::string& Python) {
  const std::string R = TMockBus::Get().Run(Python);
  EXPECT_EQ(R.rfind("ok", 0), 0u) << Python << " -> " << R;
  return R;
}

class SystemEventsBus : public ::testing::Test {
protected:
  void SetUp() override { KX_REQUIRE_MOCK_BUS(); }
};

} // namespace

TEST_F(SystemEventsBus, LogindSessionsAreLogonsLogoffsAndDisplayLocks) {
  TKxSensLogon* Logon = TKxSensLogon::Create();
  TEventLog Log;
  auto Record = [&](const char* What) {
    return TKxSensLogonEvent(nullptr, [&Log, What](TObject*, const WideString& U) {
      Log.Add(std::string(What) + " " + Narrow(U));
    });
  };
  Logon->OnLogon = Record("logon");
  Logon->OnLogoff = Record("logoff");
  Logon->OnDisplayLock = Record("lock");
  Logon->OnDisplayUnlock = Record("unlock");
  Logon->SetActive(true);
  EXPECT_TRUE(Logon->Active());
  if (KxAssertionsEnabled) {
    EXPECT_EQ(AssertionOf([&] { Logon->Subscribe(); }),
              "The SENS Subscription has already been activated");
  }
  Bus("logind.AddSession('41', 'seat0', dbus.UInt32(1041), 'berta', True, dbus_interface=MOCK)");
  Bus("logind.EmitSignal('org.freedesktop.login1.Manager', 'SessionNew', 'so', ['41', "
      "'/org/freedesktop/login1/session/41'], dbus_interface=MOCK)");
  Bus("obj('org.freedesktop.login1', '/org/freedesktop/login1/session/41')"
      ".Lock(dbus_interface='org.freedesktop.login1.Session')");
  Bus("obj('org.freedesktop.login1', '/org/freedesktop/login1/session/41')"
      ".Unlock(dbus_interface='org.freedesktop.login1.Session')");
  Bus("logind.EmitSignal('org.freedesktop.login1.Manager', 'SessionRemoved', 'so', ['41', "
      "'/org/freedesktop/login1/session/41'], dbus_interface=MOCK)");
  EXPECT_EQ(Log.WaitFor(4), std::vector<std::string>(
                                {"logon berta", "lock berta", "unlock berta", "logoff berta"}));
  Logon->SetActive(false);
  EXPECT_FALSE(Logon->Active());
  Logon->Free();
}

TEST_F(SystemEventsBus, NetworkManagerStatesAreConnectionsMadeAndLost) {
  Bus("nm.AddEthernetDevice('devT', 'ethT', 100, dbus_interface=MOCK)");
  Bus("settings = obj('org.freedesktop.NetworkManager', "
      "'/org/freedesktop/NetworkManager/Settings').AddConnection({'connection': {'uuid': "
      "'9e29fc40-ca47-1067-b31d-00dd010662da', 'type': '802-3-ethernet', 'id': 'Wired T'}}, "
      "dbus_interface='org.freedesktop.NetworkManager.Settings')");
  Bus("nm.AddActiveConnection(['/org/freedesktop/NetworkManager/Devices/devT'], settings, '/', "
      "'T', 2, dbus_interface=MOCK)");
  Bus("nm.SetGlobalConnectionState(70, dbus_interface=MOCK)");
  TKxSensNetwork* Network = TKxSensNetwork::Create();
  TEventLog Log;
  Network->OnConnectionLost = TKxSensNetworkConnectionEvent(
      nullptr, [&](TObject*, const WideString& C, TKxSensNetworkConnectionType T) {
        Log.Add("lost " + Narrow(C) + (T == ctLAN ? " LAN" : " WAN"));
      });
  Network->OnConnectionMadeNoQOC = TKxSensNetworkConnectionEvent(
      nullptr, [&](TObject*, const WideString& C, TKxSensNetworkConnectionType T) {
        Log.Add("made " + Narrow(C) + (T == ctLAN ? " LAN" : " WAN"));
      });
  Network->SetActive(true);
  // Connected to a site is still connected; then down, and up again.
  Bus("nm.SetGlobalConnectionState(60, dbus_interface=MOCK)");
  Bus("nm.SetGlobalConnectionState(20, dbus_interface=MOCK)");
  Bus("nm.SetGlobalConnectionState(70, dbus_interface=MOCK)");
  EXPECT_EQ(Log.WaitFor(2), std::vector<std::string>({"lost Wired T LAN", "made Wired T LAN"}));
  Network->Free();
}

TEST_F(SystemEventsBus, UPowerGivesBatteryACAndLowBattery) {
  Bus("obj('org.freedesktop.UPower', '/org/freedesktop/UPower/devices/DisplayDevice')"
      ".UpdateProperties('org.freedesktop.UPower.Device', {'Percentage': 40.0, 'WarningLevel': "
      "dbus.UInt32(1)}, dbus_interface=MOCK)");
  Bus("upower.UpdateProperties('org.freedesktop.UPower', {'OnBattery': False}, "
      "dbus_interface=MOCK)");
  TKxSensOnNow* Power = TKxSensOnNow::Create();
  TEventLog Log;
  Power->OnBatteryPower = TKxSensOnNowBatteryEvent(
      nullptr, [&](TObject*, uint32_t P) { Log.Add("battery " + std::to_string(P)); });
  Power->OnBatteryLow = TKxSensOnNowBatteryEvent(
      nullptr, [&](TObject*, uint32_t P) { Log.Add("low " + std::to_string(P)); });
  Power->OnACPower = TKxSensOnNowEvent(nullptr, [&](TObject*) { Log.Add("ac"); });
  Power->SetActive(true);
  Bus("upower.UpdateProperties('org.freedesktop.UPower', {'OnBattery': True}, "
      "dbus_interface=MOCK)");
  Bus("obj('org.freedesktop.UPower', '/org/freedesktop/UPower/devices/DisplayDevice')"
      ".UpdateProperties('org.freedesktop.UPower.Device', {'WarningLevel': dbus.UInt32(3)}, "
      "dbus_interface=MOCK)");
  Bus("upower.UpdateProperties('org.freedesktop.UPower', {'OnBattery': False}, "
      "dbus_interface=MOCK)");
  EXPECT_EQ(Log.WaitFor(3), std::vector<std::string>({"battery 40", "low 40", "ac"}));
  Power->Free();
}

#endif
