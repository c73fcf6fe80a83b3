// SPDX-License-Identifier: MIT
#pragma once
// TKxNetworkListManager, TKxNetwork and TKxNetworkConnection: the system's networks and
// connections with their connectivity, and the changes to them as callbacks.
//
// Windows: the NetworkListManager COM object and its three event connection points; the
// callbacks run on the thread on which COM delivers the sink calls. Linux: NetworkManager
// over the system bus (DBUS_SYSTEM_BUS_ADDRESS is honoured): active connections are the
// networks (identified by their connection UUID), devices the connections. Each active
// manager owns one bus connection serviced by a thread of its own, on which the callbacks
// run; the manager's queries use a second connection, so they may be called from any thread,
// callbacks included.

#include <kx/rtl/Component.h>
#include <kx/rtl/DateTime.h>
#include <kx/rtl/Method.h>
#include <kx/rtl/Set.h>

#include <cstdint>
#include <vector>

namespace kx {

enum TKxNlmConnectivity : uint8_t {
  nlmDisconnected,
  nlmIPV4NoTraffic,
  nlmIPV6NoTraffic,
  nlmIPV4Subnet,
  nlmIPV4LocalNetwork,
  nlmIPV4Internet,
  nlmIPV6Subnet,
  nlmIPV6LocalNetwork,
  nlmIPV6Internet
};
using TKxNlmConnectivitySet = TSet<TKxNlmConnectivity>;
enum TKxNlmDomainType : uint8_t {
  nlmDtNonDomainNetwork,
  nlmDtDomainNetwork,
  nlmDtDomainAuthenticated
};
// The last member is spelt so on purpose: programs use the name.
enum TKxNlmNetworkCategory : uint8_t { nlmNcPublic, nlmNcPrivate, nlmNcDomainAuthenicated };
enum TKxNlmNetworkPropChange : uint8_t {
  nlmNpcConnection,
  nlmNpcDescription,
  nlmNpcName,
  nlmNpcIcon,
  nlmNpcCategoryValue
};
using TKxNlmNetworkPropChanges = TSet<TKxNlmNetworkPropChange>;
enum TKxNlmConnectionPropChange : uint8_t { nlmNcpcAuthentication };
using TKxNlmConnectionPropChanges = TSet<TKxNlmConnectionPropChange>;

// The platform's connectivity flags as a set: 0 is {nlmDisconnected}; unknown bits are ignored.
KX_API TKxNlmConnectivitySet KxNlmConnectivity(uint32_t Flags);
KX_API TKxNlmNetworkPropChanges KxNlmNetworkPropChanges(uint32_t Flags);
KX_API TKxNlmConnectionPropChanges KxNlmConnectionPropChanges(uint32_t Flags);

using TKxNlmConnectivityEvent =
    TMethod<void(TObject* Sender, TKxNlmConnectivitySet NewConnectivity)>;
using TKxNetworkEvent = TMethod<void(TObject* Sender, const TGUID& NetworkID)>;
using TKxNetworkConnectivityEvent =
    TMethod<void(TObject* Sender, const TGUID& NetworkID, TKxNlmConnectivitySet NewConnectivity)>;
using TKxNetworkPropertyEvent =
    TMethod<void(TObject* Sender, const TGUID& NetworkID, TKxNlmNetworkPropChanges Changes)>;
using TKxNetworkConnectionConnectivityEvent = TMethod<void(
    TObject* Sender, const TGUID& ConnectionID, TKxNlmConnectivitySet NewConnectivity)>;
using TKxNetworkConnectionPropertyEvent =
    TMethod<void(TObject* Sender, const TGUID& ConnectionID, TKxNlmConnectionPropChanges Changes)>;

inline constexpr const char* SKxNlmNeedsVista =
    "The Network List Manager is only supported by Windows Vista or newer systems!";
inline constexpr const char* SKxNlmAlreadyCreated = "The NLM has already been created!";
inline constexpr const char* SKxNlmNoContainer =
    "Failed to get the IConnectionPointContainer from the NLM";
inline constexpr const char* SKxNlmNoManagerEvents =
    "Failed to get the IID_INetworkListManagerEvents from the Connectionpoint Container!";
inline constexpr const char* SKxNlmNoNetworkEvents =
    "Failed to get the IID_INetworkEvents from the Connectionpoint Container!";
inline constexpr const char* SKxNlmNoConnectionEvents =
    "Failed to get the IID_INetworkConnectionEvents from the Connectionpoint Container!";
inline constexpr const char* SKxNlmNotActive = "There is no active NLM!";
inline constexpr const char* SKxNlmNoNetworkConnection = "Failed to get the NetworkConnection!";
inline constexpr const char* SKxNlmManagerNotAssigned = "The NetworkListManager is not assigned";
inline constexpr const char* SKxNlmAlreadyActivated = "Already activated";
inline constexpr const char* SKxNlmNoNetworkWithId = "There is no network with the ID \"%s\"!";
inline constexpr const char* SKxNlmNoConnectionWithId =
    "Error: %d; There is no networkconnection with the ID \"%s\"!";
inline constexpr const char* SKxNlmNoNetworkContainer =
    "Failed to get the IConnectionPointContainer from the Network";
inline constexpr const char* SKxNlmNoConnectionPoint =
    "Failed to get the ConnectionPoint from the Connectionpoint Container!";
inline constexpr const char* SKxNlmNoNetworkEventsOnUnsubscribe =
    "Failed to get the INetworkEvents from the Connectionpoint Container!";
inline constexpr const char* SKxNlmRefCountNotZero = "The RefCount should be 0 here!";

class TKxNetwork;
class TKxNetworkConnection;

namespace detail {
struct TNlmState;
struct TNlmSinkAdapter;
} // namespace detail

class KX_API TKxNetworkListManager : public TComponent {
  KX_CLASS(TKxNetworkListManager, TComponent)
public:
  explicit TKxNetworkListManager(TComponent* AOwner = nullptr);
  ~TKxNetworkListManager() override;
  void BeforeDestruction() override;

  bool Active() const;
  void SetActive(bool Value);
  // Raises "There is no active NLM!" while inactive.
  void CheckActive() const;

  bool IsConnected() const;
  bool IsConnectedToInternet() const;
  TKxNlmConnectivitySet Connectivity() const;
  int32_t NetworkCount() const;
  int32_t NetworkConnectionCount() const;
  // The identifier of the network or connection at Index (0-based, in the platform's order).
  TGUID GetNetwork(int32_t Index) const;
  TGUID GetNetworkConnection(int32_t Index) const;
  // A component bound to the network or connection; the caller (or AOwner) frees it.
  TKxNetwork* OpenNetwork(const TGUID& NetworkID, TComponent* AOwner = nullptr);
  TKxNetworkConnection* OpenConnection(const TGUID& ConnectionID, TComponent* AOwner = nullptr);

  // The sink methods: the platform's events, converted; they always answer success (0).
  int32_t ConnectivityChanged(uint32_t NewConnectivity);
  int32_t NetworkAdded(const TGUID& NetworkID);
  int32_t NetworkDeleted(const TGUID& NetworkID);
  int32_t NetworkConnectivityChanged(const TGUID& NetworkID, uint32_t NewConnectivity);
  int32_t NetworkPropertyChanged(const TGUID& NetworkID, uint32_t Flags);
  int32_t NetworkConnectionConnectivityChanged(const TGUID& ConnectionID, uint32_t NewConnectivity);
  int32_t NetworkConnectionPropertyChanged(const TGUID& ConnectionID, uint32_t Flags);

  TKxNlmConnectivityEvent OnConnectivityChanged;
  TKxNetworkEvent OnNetworkAdded;
  TKxNetworkEvent OnNetworkDeleted;
  TKxNetworkConnectivityEvent OnNetworkConnectivityChanged;
  TKxNetworkPropertyEvent OnNetworkPropertyChanged;
  TKxNetworkConnectionConnectivityEvent OnConnectionConnectivityChanged;
  TKxNetworkConnectionPropertyEvent OnConnectionPropertyChanged;

  // The platform object (internal to the library's components).
  detail::TNlmState* State() const { return FState; }

private:
  void CreateNlm();
  void ReleaseNlm();

  detail::TNlmState* FState = nullptr;
  detail::TNlmSinkAdapter* FSink = nullptr;
};

// The common part of network and connection components: the manager they work through and a
// reference count that must be 0 when they are destroyed.
class KX_API TKxNLMBase : public TComponent {
  KX_CLASS(TKxNLMBase, TComponent)
public:
  explicit TKxNLMBase(TComponent* AOwner = nullptr) : TComponent(AOwner) {}

  int32_t KX_STDCALL _AddRef() override { return ++FRefCount; }
  int32_t KX_STDCALL _Release() override { return --FRefCount; }
  int32_t RefCount() const { return FRefCount; }

  TKxNetworkListManager* NetworkListManager() const { return FNetworkListManager; }
  virtual void SetNetworkListManager(TKxNetworkListManager* Value);
  // Raises "The NetworkListManager is not assigned" without a manager; else the manager's.
  void CheckActive() const;
  // The manager is deactivated or goes away: a bound component drops its subscription.
  virtual void NetworkListManagerGone() {}

protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;
  void ValidateDestruction() override;
  // Enters the component in (or takes it out of) the manager's list of subscribers.
  void Register(bool Add);

  TKxNetworkListManager* FNetworkListManager = nullptr;
  int32_t FRefCount = 0;
};

class KX_API TKxNetwork : public TKxNLMBase {
  KX_CLASS(TKxNetwork, TKxNLMBase)
public:
  explicit TKxNetwork(TComponent* AOwner = nullptr) : TKxNLMBase(AOwner) {}
  ~TKxNetwork() override;
  void BeforeDestruction() override;

  const TGUID& NetworkID() const { return FNetworkID; }
  // Binds the component to the network (once: "Already activated" afterwards) and subscribes
  // to its events.
  void SetNetworkID(const TGUID& Value);
  bool Active() const { return FBound; }

  UnicodeString NetworkName() const;
  void SetNetworkName(const UnicodeString& Value);
  UnicodeString Description() const;
  void SetDescription(const UnicodeString& Value);
  TKxNlmNetworkCategory Category() const;
  void SetCategory(TKxNlmNetworkCategory Value);
  TKxNlmDomainType DomainType() const;
  TKxNlmConnectivitySet Connectivity() const;
  bool IsConnected() const;
  bool IsConnectedToInternet() const;
  // Local times; 0 where the platform does not tell.
  void TimeCreatedAndConnected(TDateTime& Created, TDateTime& Connected) const;
  // The identifiers of the network's connections.
  std::vector<TGUID> Connections() const;

  // The sink methods of the network events: other networks' events are passed over.
  int32_t NetworkAdded(const TGUID& NetworkID);
  int32_t NetworkDeleted(const TGUID& NetworkID);
  int32_t NetworkConnectivityChanged(const TGUID& NetworkID, uint32_t NewConnectivity);
  int32_t NetworkPropertyChanged(const TGUID& NetworkID, uint32_t Flags);

  TKxNetworkEvent OnNetworkAdded;
  TKxNetworkEvent OnNetworkDeleted;
  TKxNetworkConnectivityEvent OnNetworkConnectivityChanged;
  TKxNetworkPropertyEvent OnNetworkPropertyChanged;

  void NetworkListManagerGone() override;

private:
  void Subscribe();
  void Unsubscribe();

  TGUID FNetworkID{};
  bool FBound = false;
  uint32_t FCookie = 0;
  detail::TNlmSinkAdapter* FSink = nullptr;
};

class KX_API TKxNetworkConnection : public TKxNLMBase {
  KX_CLASS(TKxNetworkConnection, TKxNLMBase)
public:
  explicit TKxNetworkConnection(TComponent* AOwner = nullptr) : TKxNLMBase(AOwner) {}
  ~TKxNetworkConnection() override;
  void BeforeDestruction() override;

  const TGUID& ConnectionID() const { return FConnectionID; }
  void SetConnectionID(const TGUID& Value);
  bool Active() const { return FBound; }

  TGUID AdapterID() const;
  // Windows: the adapter's name from the registry (empty when its key cannot be opened).
  // Linux: the device's interface name.
  UnicodeString AdapterName() const;
  TKxNlmConnectivitySet Connectivity() const;
  TKxNlmDomainType DomainType() const;
  bool IsConnected() const;
  bool IsConnectedToInternet() const;
  // The identifier of the network the connection belongs to.
  TGUID Network() const;

  int32_t NetworkConnectionConnectivityChanged(const TGUID& ConnectionID, uint32_t NewConnectivity);
  int32_t NetworkConnectionPropertyChanged(const TGUID& ConnectionID, uint32_t Flags);

  TKxNetworkConnectionConnectivityEvent OnConnectivityChanged;
  TKxNetworkConnectionPropertyEvent OnPropertyChanged;

  void NetworkListManagerGone() override;

private:
  void Subscribe();
  void Unsubscribe();

  TGUID FConnectionID{};
  bool FBound = false;
  uint32_t FCookie = 0;
  detail::TNlmSinkAdapter* FSink = nullptr;
};

} // namespace kx
