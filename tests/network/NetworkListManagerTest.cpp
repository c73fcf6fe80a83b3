// SPDX-License-Identifier: MIT
// The network list components: conversions and sink methods everywhere; under Wine the real
// NetworkListManager (activation, counts, enumeration, unknown identifiers).
#include <kx/rtl/Exceptions.h>
#include <kx/uKxNetworkListManager.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace kx;

namespace {

const TGUID NetworkA = StringToGUID("{6B29FC40-CA47-1067-B31D-00DD010662DA}");
const TGUID NetworkB = StringToGUID("{6B29FC40-CA47-1067-B31D-00DD010662DB}");

std::string Text(TKxNlmConnectivitySet S) {
  static const char* Names[] = {"Disconnected", "V4NoTraffic",    "V6NoTraffic",
                                "V4Subnet",     "V4LocalNetwork", "V4Internet",
                                "V6Subnet",     "V6LocalNetwork", "V6Internet"};
  std::string R;
  for (int I = 0; I < 9; ++I)
    if (S.Contains(TKxNlmConnectivity(I))) R += std::string(R.empty() ? "" : ",") + Names[I];
  return R;
}

template <class F>
std::string MessageOf(F&& Call) {
  try {
    Call();
  } catch (const Exception& E) {
    return E.Message();
  }
  return "(nothing raised)";
}

} // namespace

TEST(NetworkListManager, ConnectivityFlagsBecomeSets) {
  EXPECT_EQ(Text(KxNlmConnectivity(0)), "Disconnected");
  EXPECT_EQ(Text(KxNlmConnectivity(0x41)), "V4NoTraffic,V4Internet");
  EXPECT_EQ(Text(KxNlmConnectivity(0x773)),
            "V4NoTraffic,V6NoTraffic,V4Subnet,V4LocalNetwork,V4Internet,V6Subnet,V6LocalNetwork,"
            "V6Internet");
  // Bits without a member are dropped, and do not make "disconnected".
  EXPECT_EQ(Text(KxNlmConnectivity(0x8 | 0x800 | 0x10000)), "");
  EXPECT_EQ(Text(KxNlmConnectivity(0x8 | 0x400)), "V6Internet");

  EXPECT_TRUE(KxNlmNetworkPropChanges(0x14) ==
              TKxNlmNetworkPropChanges({nlmNpcName, nlmNpcCategoryValue}));
  EXPECT_TRUE(KxNlmNetworkPropChanges(0x20).Empty());
  EXPECT_TRUE(KxNlmConnectionPropChanges(0x3) ==
              TKxNlmConnectionPropChanges({nlmNcpcAuthentication}));
}

TEST(NetworkListManager, ManagerSinksConvertAndAnswerSuccess) {
  TKxNetworkListManager* M = TKxNetworkListManager::Create();
  std::vector<std::string> Calls;
  M->OnConnectivityChanged =
      TKxNlmConnectivityEvent(nullptr, [&](TObject* Sender, TKxNlmConnectivitySet C) {
        EXPECT_EQ(Sender, M);
        Calls.push_back("connectivity " + Text(C));
      });
  M->OnNetworkPropertyChanged =
      TKxNetworkPropertyEvent(nullptr, [&](TObject*, const TGUID& Id, TKxNlmNetworkPropChanges P) {
        Calls.push_back("property " + GUIDToString(Id) + " " + std::to_string(P.Count()));
      });
  M->OnConnectionConnectivityChanged = TKxNetworkConnectionConnectivityEvent(
      nullptr, [&](TObject*, const TGUID& Id, TKxNlmConnectivitySet C) {
        Calls.push_back("connection " + GUIDToString(Id) + " " + Text(C));
      });
  EXPECT_EQ(M->ConnectivityChanged(0), 0);
  EXPECT_EQ(M->NetworkPropertyChanged(NetworkA, 0x14), 0);
  EXPECT_EQ(M->NetworkConnectionConnectivityChanged(NetworkB, 0x200), 0);
  // Unassigned callbacks are skipped; the answer is the same.
  EXPECT_EQ(M->NetworkAdded(NetworkA), 0);
  EXPECT_EQ(M->NetworkConnectionPropertyChanged(NetworkA, 1), 0);
  EXPECT_EQ(Calls,
            std::vector<std::string>(
                {"connectivity Disconnected", "property {6B29FC40-CA47-1067-B31D-00DD010662DA} 2",
                 "connection {6B29FC40-CA47-1067-B31D-00DD010662DB} V6LocalNetwork"}));
  M->Free();
}

TEST(NetworkListManager, InactiveOrUnassignedComponentsRaiseTheirMessages) {
  TKxNetworkListManager* M = TKxNetworkListManager::Create();
  TKxNetwork* N = TKxNetwork::Create();
  TKxNetworkConnection* C = TKxNetworkConnection::Create();
  EXPECT_EQ(MessageOf([&] { M->NetworkCount(); }), "There is no active NLM!");
  EXPECT_EQ(MessageOf([&] { N->SetNetworkID(NetworkA); }),
            "The NetworkListManager is not assigned");
  N->SetNetworkListManager(M);
  C->SetNetworkListManager(M);
  EXPECT_EQ(MessageOf([&] { N->SetNetworkID(NetworkA); }), "There is no active NLM!");
  EXPECT_EQ(MessageOf([&] { C->Connectivity(); }), "There is no active NLM!");
  // Freeing the manager clears the components' reference to it.
  M->Free();
  EXPECT_EQ(N->NetworkListManager(), nullptr);
  EXPECT_EQ(C->NetworkListManager(), nullptr);
  N->Free();
  C->Free();
}

TEST(NetworkListManager, AReferencedComponentRefusesToBeFreed) {
  if (!KxAssertionsEnabled) GTEST_SKIP() << "assertions compiled out";
  TKxNetwork* N = TKxNetwork::Create();
  N->_AddRef();
  try {
    N->Free();
    FAIL() << "freed while referenced";
  } catch (const EAssertionFailed& E) {
    EXPECT_EQ(E.Message().rfind("The RefCount should be 0 here!", 0), 0u) << E.Message();
  }
  N->_Release();
  N->Free();
}

// A network component bound to Id hears only Id's events, whoever calls its sinks.
void ExpectFiltering(TKxNetworkListManager* M, const TGUID& Id) {
  TKxNetwork* N = M->OpenNetwork(Id);
  EXPECT_TRUE(N->Active());
  EXPECT_EQ(MessageOf([&] { N->SetNetworkID(Id); }), "Already activated");
  std::vector<std::string> Calls;
  N->OnNetworkConnectivityChanged = TKxNetworkConnectivityEvent(
      nullptr, [&](TObject*, const TGUID& Got, TKxNlmConnectivitySet C) {
        EXPECT_EQ(Got, Id);
        Calls.push_back("connectivity " + Text(C));
      });
  N->OnNetworkDeleted =
      TKxNetworkEvent(nullptr, [&](TObject*, const TGUID&) { Calls.push_back("deleted"); });
  TGUID Other = Id;
  Other.D4[7] ^= 1;
  EXPECT_EQ(N->NetworkConnectivityChanged(Other, 0x40), 0);
  EXPECT_EQ(N->NetworkDeleted(Other), 0);
  EXPECT_EQ(N->NetworkConnectivityChanged(Id, 0x41), 0);
  EXPECT_EQ(N->NetworkDeleted(Id), 0);
  EXPECT_EQ(Calls, std::vector<std::string>({"connectivity V4NoTraffic,V4Internet", "deleted"}));
  N->Free();
}

#if defined(_WIN32)

TEST(NetworkListManagerWindows, TheSystemsManagerEnumeratesAndRejectsUnknownIdentifiers) {
  TKxNetworkListManager* M = TKxNetworkListManager::Create();
  M->SetActive(true);
  ASSERT_TRUE(M->Active());
  M->SetActive(true); // again: nothing happens
  const int32_t Networks = M->NetworkCount();
  const int32_t Connections = M->NetworkConnectionCount();
  ASSERT_GE(Networks, 0);
  ASSERT_GE(Connections, 0);
  for (int32_t I = 0; I < Networks; ++I) M->GetNetwork(I);
  for (int32_t I = 0; I < Connections; ++I) M->GetNetworkConnection(I);
  EXPECT_EQ(MessageOf([&] { M->GetNetwork(Networks); }), "Failed to get the NetworkConnection!");
  EXPECT_EQ(MessageOf([&] { M->GetNetworkConnection(Connections); }),
            "Failed to get the NetworkConnection!");
  EXPECT_EQ(MessageOf([&] { M->OpenNetwork(NetworkA); }),
            "There is no network with the ID \"{6B29FC40-CA47-1067-B31D-00DD010662DA}\"!");
  EXPECT_EQ(MessageOf([&] { M->OpenConnection(NetworkB); }),
            "Error: 1; There is no networkconnection with the ID "
            "\"{6B29FC40-CA47-1067-B31D-00DD010662DB}\"!");
  M->Connectivity();
  if (Networks > 0) ExpectFiltering(M, M->GetNetwork(0));
  M->SetActive(false);
  EXPECT_FALSE(M->Active());
  EXPECT_EQ(MessageOf([&] { M->Connectivity(); }), "There is no active NLM!");
  M->Free();
}

#endif

#if !defined(_WIN32)

#include "events/MockBus.h"
#include "support/ScopedEnv.h"

using kxtest::TEventLog;
using kxtest::TMockBus;

namespace {

std::string Bus(const std::string& Python) {
  const std::string R = TMockBus::Get().Run(Python);
  EXPECT_EQ(R.rfind("ok", 0), 0u) << Python << " -> " << R;
  return R;
}

// A wired device "dev<Name>" (interface "eth<Name>") active in a connection "Wired <Name>".
void AddNetwork(const std::string& Name, const std::string& Uuid) {
  Bus("nm.AddEthernetDevice('dev" + Name + "', 'eth" + Name + "', 100, dbus_interface=MOCK)");
  Bus("settings = obj('org.freedesktop.NetworkManager', "
      "'/org/freedesktop/NetworkManager/Settings').AddConnection({'connection': {'uuid': '" +
      Uuid + "', 'type': '802-3-ethernet', 'id': 'Wired " + Name +
      "'}}, dbus_interface='org.freedesktop.NetworkManager.Settings')");
  Bus("nm.AddActiveConnection(['/org/freedesktop/NetworkManager/Devices/dev" + Name +
      "'], settings, '/', '" + Name + "', 2, dbus_interface=MOCK)");
}

const char* const DevicePath = "/org/freedesktop/NetworkManager/Devices/dev";

int32_t IndexOf(TKxNetworkListManager* M, const TGUID& Id) {
  for (int32_t I = 0; I < M->NetworkCount(); ++I)
    if (M->GetNetwork(I) == Id) return I;
  return -1;
}

class NetworkListManagerBus : public ::testing::Test {
protected:
  void SetUp() override { KX_REQUIRE_MOCK_BUS(); }
};

} // namespace

TEST_F(NetworkListManagerBus, ActiveConnectionsAreNetworksAndDevicesConnections) {
  TKxNetworkListManager* M = TKxNetworkListManager::Create();
  M->SetActive(true);
  const int32_t Networks = M->NetworkCount(), Connections = M->NetworkConnectionCount();
  Bus("nm.SetConnectivity(4, dbus_interface=MOCK)");
  AddNetwork("Q", "6b29fc40-ca47-1067-b31d-00dd010662da");
  EXPECT_EQ(M->NetworkCount(), Networks + 1);
  EXPECT_EQ(M->NetworkConnectionCount(), Connections + 1);
  ASSERT_GE(IndexOf(M, NetworkA), 0);
  EXPECT_TRUE(M->IsConnectedToInternet());

  TKxNetwork* N = M->OpenNetwork(NetworkA);
  EXPECT_EQ(N->NetworkName(), u"Wired Q");
  EXPECT_EQ(N->Description(), u"802-3-ethernet");
  EXPECT_TRUE(N->IsConnectedToInternet());
  EXPECT_EQ(Text(N->Connectivity()), "V4Internet");
  EXPECT_EQ(N->Category(), nlmNcPublic);
  EXPECT_EQ(N->DomainType(), nlmDtNonDomainNetwork);
  // Names belong to NetworkManager's profiles: setting one is refused as a COM error would be.
  EXPECT_THROW(N->SetNetworkName(u"x"), EOleSysError);
  const std::vector<TGUID> Devices = N->Connections();
  ASSERT_EQ(Devices.size(), 1u);

  TKxNetworkConnection* C = M->OpenConnection(Devices[0]);
  EXPECT_EQ(C->AdapterName(), u"ethQ");
  EXPECT_EQ(C->AdapterID(), Devices[0]);
  EXPECT_EQ(C->Network(), NetworkA);
  EXPECT_TRUE(C->IsConnected());

  EXPECT_EQ(MessageOf([&] { M->OpenNetwork(NetworkB); }),
            "There is no network with the ID \"{6B29FC40-CA47-1067-B31D-00DD010662DB}\"!");
  EXPECT_EQ(MessageOf([&] { M->OpenConnection(NetworkB); }),
            "Error: 1; There is no networkconnection with the ID "
            "\"{6B29FC40-CA47-1067-B31D-00DD010662DB}\"!");
  EXPECT_EQ(MessageOf([&] { M->GetNetwork(M->NetworkCount()); }),
            "Failed to get the NetworkConnection!");
  ExpectFiltering(M, NetworkA);
  C->Free();
  N->Free();
  M->Free();
}

TEST_F(NetworkListManagerBus, ChangesArriveAsEventsOfTheManagerAndTheBoundNetwork) {
  TKxNetworkListManager* M = TKxNetworkListManager::Create();
  TEventLog Lists, Connectivity, Devices, Bound;
  M->OnConnectivityChanged = TKxNlmConnectivityEvent(
      nullptr, [&](TObject*, TKxNlmConnectivitySet C) { Connectivity.Add(Text(C)); });
  M->OnNetworkAdded = TKxNetworkEvent(
      nullptr, [&](TObject*, const TGUID& Id) { Lists.Add("added " + GUIDToString(Id)); });
  M->OnNetworkDeleted = TKxNetworkEvent(
      nullptr, [&](TObject*, const TGUID& Id) { Lists.Add("deleted " + GUIDToString(Id)); });
  M->OnConnectionConnectivityChanged = TKxNetworkConnectionConnectivityEvent(
      nullptr, [&](TObject*, const TGUID&, TKxNlmConnectivitySet C) { Devices.Add(Text(C)); });
  Bus("nm.SetConnectivity(4, dbus_interface=MOCK)");
  M->SetActive(true);
  AddNetwork("R", "7c29fc40-ca47-1067-b31d-00dd010662da");
  AddNetwork("S", "8d29fc40-ca47-1067-b31d-00dd010662da");
  const TGUID R = StringToGUID("{7C29FC40-CA47-1067-B31D-00DD010662DA}");
  const TGUID S = StringToGUID("{8D29FC40-CA47-1067-B31D-00DD010662DA}");
  EXPECT_EQ(Lists.WaitFor(2),
            std::vector<std::string>({"added " + GUIDToString(R), "added " + GUIDToString(S)}));
  // The two new devices came up.
  EXPECT_EQ(Devices.WaitFor(2), std::vector<std::string>({"V4Internet", "V4Internet"}));

  TKxNetwork* N = M->OpenNetwork(R);
  N->OnNetworkConnectivityChanged =
      TKxNetworkConnectivityEvent(nullptr, [&](TObject*, const TGUID&, TKxNlmConnectivitySet C) {
        Bound.Add("connectivity " + Text(C));
      });
  N->OnNetworkDeleted =
      TKxNetworkEvent(nullptr, [&](TObject*, const TGUID&) { Bound.Add("deleted"); });

  // S going down concerns the manager only; R going down and away, both.
  Bus(std::string("nm.SetDeviceDisconnected('") + DevicePath + "S', dbus_interface=MOCK)");
  Bus("nm.SetConnectivity(3, dbus_interface=MOCK)");
  Bus(std::string("nm.RemoveActiveConnection('") + DevicePath +
      "R', '/org/freedesktop/NetworkManager/ActiveConnection/R', dbus_interface=MOCK)");
  EXPECT_EQ(Bound.WaitFor(2), std::vector<std::string>({"connectivity Disconnected", "deleted"}));
  EXPECT_EQ(Lists.WaitFor(3),
            std::vector<std::string>({"added " + GUIDToString(R), "added " + GUIDToString(S),
                                      "deleted " + GUIDToString(R)}));
  EXPECT_EQ(Connectivity.Lines(), std::vector<std::string>({"V4LocalNetwork"}));
  EXPECT_EQ(Devices.Lines(),
            std::vector<std::string>({"V4Internet", "V4Internet", "Disconnected", "Disconnected"}));
  N->Free();
  M->Free();
}

TEST_F(NetworkListManagerBus, AnUnreachableBusFailsActivationAsACOMError) {
  kxtest::TScopedEnv Nowhere("DBUS_SYSTEM_BUS_ADDRESS",
                             std::string("unix:path=/nonexistent/kx-test-bus"));
  TKxNetworkListManager* M = TKxNetworkListManager::Create();
  EXPECT_THROW(M->SetActive(true), EOleSysError);
  EXPECT_FALSE(M->Active());
  M->Free();
}

#endif
