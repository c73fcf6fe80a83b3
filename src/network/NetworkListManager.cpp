// SPDX-License-Identifier: MIT
#include <kx/network/NetworkListManager.h>
#include <kx/rtl/Exceptions.h>

#include "platform/Environment.h"
#include "platform/NetworkList.h"

#include <algorithm>
#include <mutex>

namespace kx {

KX_IMPLEMENT_CLASS(TKxNetworkListManager, TComponent, "uKxNetworkListManager")
KX_IMPLEMENT_CLASS(TKxNLMBase, TComponent, "uKxNetworkListManager")
KX_IMPLEMENT_CLASS(TKxNetwork, TKxNLMBase, "uKxNetworkListManager")
KX_IMPLEMENT_CLASS(TKxNetworkConnection, TKxNLMBase, "uKxNetworkListManager")

namespace {

constexpr const char* UnitPath = "source\\ComponentSets\\Components\\common\\uKxNetworkListManager";

[[noreturn]] void RaiseComError(int32_t Result) {
  throw EOleSysError(platform::NlmErrorText(Result), Result);
}

void Check(int32_t Result) {
  if (Result < 0) RaiseComError(Result);
}

} // namespace

namespace detail {

struct TNlmState {
  platform::TNlm* Nlm = nullptr;
  uint32_t Cookies[3] = {0, 0, 0};
  // The bound network and connection components, told when the manager goes.
  std::mutex Lock;
  std::vector<TKxNLMBase*> Clients;
};

// Forwards the platform's events to a component. A handler's exception stays here: the
// caller is COM or the bus thread, which could do nothing with it.
struct TNlmSinkAdapter : platform::TNlmSink {
  TKxNetworkListManager* Manager = nullptr;
  TKxNetwork* Network = nullptr;
  TKxNetworkConnection* Connection = nullptr;

  template <class F>
  static void Guarded(F&& Call) {
    try {
      Call();
    } catch (...) {
    }
  }
  void ConnectivityChanged(uint32_t C) override {
    if (Manager) Guarded([&] { Manager->ConnectivityChanged(C); });
  }
  void NetworkAdded(const TGUID& Id) override {
    if (Manager) Guarded([&] { Manager->NetworkAdded(Id); });
    if (Network) Guarded([&] { Network->NetworkAdded(Id); });
  }
  void NetworkDeleted(const TGUID& Id) override {
    if (Manager) Guarded([&] { Manager->NetworkDeleted(Id); });
    if (Network) Guarded([&] { Network->NetworkDeleted(Id); });
  }
  void NetworkConnectivityChanged(const TGUID& Id, uint32_t C) override {
    if (Manager) Guarded([&] { Manager->NetworkConnectivityChanged(Id, C); });
    if (Network) Guarded([&] { Network->NetworkConnectivityChanged(Id, C); });
  }
  void NetworkPropertyChanged(const TGUID& Id, uint32_t F) override {
    if (Manager) Guarded([&] { Manager->NetworkPropertyChanged(Id, F); });
    if (Network) Guarded([&] { Network->NetworkPropertyChanged(Id, F); });
  }
  void ConnectionConnectivityChanged(const TGUID& Id, uint32_t C) override {
    if (Manager) Guarded([&] { Manager->NetworkConnectionConnectivityChanged(Id, C); });
    if (Connection) Guarded([&] { Connection->NetworkConnectionConnectivityChanged(Id, C); });
  }
  void ConnectionPropertyChanged(const TGUID& Id, uint32_t F) override {
    if (Manager) Guarded([&] { Manager->NetworkConnectionPropertyChanged(Id, F); });
    if (Connection) Guarded([&] { Connection->NetworkConnectionPropertyChanged(Id, F); });
  }
};

} // namespace detail

TKxNlmConnectivitySet KxNlmConnectivity(uint32_t Flags) {
  if (Flags == 0) return {nlmDisconnected};
  static constexpr struct {
    uint32_t Flag;
    TKxNlmConnectivity Member;
  } Map[] = {{0x1, nlmIPV4NoTraffic},      {0x2, nlmIPV6NoTraffic}, {0x10, nlmIPV4Subnet},
             {0x20, nlmIPV4LocalNetwork},  {0x40, nlmIPV4Internet}, {0x100, nlmIPV6Subnet},
             {0x200, nlmIPV6LocalNetwork}, {0x400, nlmIPV6Internet}};
  TKxNlmConnectivitySet R;
  for (const auto& M : Map)
    if (Flags & M.Flag) R.Include(M.Member);
  return R;
}

TKxNlmNetworkPropChanges KxNlmNetworkPropChanges(uint32_t Flags) {
  TKxNlmNetworkPropChanges R;
  for (uint8_t I = 0; I <= uint8_t(nlmNpcCategoryValue); ++I)
    if (Flags & (1u << I)) R.Include(TKxNlmNetworkPropChange(I));
  return R;
}

TKxNlmConnectionPropChanges KxNlmConnectionPropChanges(uint32_t Flags) {
  TKxNlmConnectionPropChanges R;
  if (Flags & 1u) R.Include(nlmNcpcAuthentication);
  return R;
}

// --- TKxNetworkListManager -------------------------------------------------------------

TKxNetworkListManager::TKxNetworkListManager(TComponent* AOwner) : TComponent(AOwner) {}

TKxNetworkListManager::~TKxNetworkListManager() {
  if (FState) {
    platform::NlmFree(FState->Nlm);
    delete FState;
  }
  delete FSink;
}

void TKxNetworkListManager::BeforeDestruction() {
  if (FState) ReleaseNlm();
  inherited::BeforeDestruction();
}

bool TKxNetworkListManager::Active() const {
  return FState != nullptr;
}

void TKxNetworkListManager::SetActive(bool Value) {
  // Only Windows has a version code; other systems have their own network list.
  const int32_t Version = platform::WindowsVersionCode();
  if (Version > 0 && Version < 601) throw Exception(SKxNlmNeedsVista);
  if (Value && !FState)
    CreateNlm();
  else if (!Value && FState)
    ReleaseNlm();
}

void TKxNetworkListManager::CheckActive() const {
  if (!FState) throw Exception(SKxNlmNotActive);
}

void TKxNetworkListManager::CreateNlm() {
  if (FState) throw Exception(SKxNlmAlreadyCreated);
  int32_t Result = 0;
  platform::TNlm* Nlm = platform::NlmCreate(Result);
  if (!Nlm) RaiseComError(Result);
  auto* State = new detail::TNlmState;
  State->Nlm = Nlm;
  if (!FSink) {
    FSink = new detail::TNlmSinkAdapter;
    FSink->Manager = this;
  }
  static constexpr const char* Failures[] = {SKxNlmNoManagerEvents, SKxNlmNoNetworkEvents,
                                             SKxNlmNoConnectionEvents};
  for (int I = 0; I < 3; ++I) {
    platform::TNlmStep Step = platform::nsNone;
    State->Cookies[I] = platform::NlmAdvise(Nlm, platform::TNlmEvents(I), FSink, Result, Step);
    if (State->Cookies[I] == 0) {
      for (int J = 0; J < I; ++J)
        platform::NlmUnadvise(Nlm, platform::TNlmEvents(J), State->Cookies[J], Result, Step);
      platform::NlmFree(Nlm);
      delete State;
      throw Exception(Step == platform::nsContainer ? SKxNlmNoContainer : Failures[I]);
    }
  }
  FState = State;
}

void TKxNetworkListManager::ReleaseNlm() {
  if (!FState) throw Exception(SKxNlmNotActive);
  std::vector<TKxNLMBase*> Clients;
  {
    std::lock_guard<std::mutex> Guard(FState->Lock);
    Clients = FState->Clients;
  }
  for (TKxNLMBase* Client : Clients) Client->NetworkListManagerGone();
  detail::TNlmState* State = FState;
  bool NoContainer = false;
  for (int I = 0; I < 3; ++I) {
    int32_t Result = 0;
    platform::TNlmStep Step = platform::nsNone;
    if (!platform::NlmUnadvise(State->Nlm, platform::TNlmEvents(I), State->Cookies[I], Result,
                               Step))
      NoContainer = NoContainer || Step == platform::nsContainer;
  }
  FState = nullptr;
  platform::NlmFree(State->Nlm);
  delete State;
  if (NoContainer) throw Exception(SKxNlmNoContainer);
}

bool TKxNetworkListManager::IsConnected() const {
  return !Connectivity().Contains(nlmDisconnected);
}

bool TKxNetworkListManager::IsConnectedToInternet() const {
  const TKxNlmConnectivitySet C = Connectivity();
  return C.Contains(nlmIPV4Internet) || C.Contains(nlmIPV6Internet);
}

TKxNlmConnectivitySet TKxNetworkListManager::Connectivity() const {
  CheckActive();
  uint32_t Flags = 0;
  Check(platform::NlmConnectivity(FState->Nlm, Flags));
  return KxNlmConnectivity(Flags);
}

int32_t TKxNetworkListManager::NetworkCount() const {
  CheckActive();
  std::vector<platform::TNlmNetworkInfo> Networks;
  Check(platform::NlmNetworks(FState->Nlm, Networks));
  return int32_t(Networks.size());
}

int32_t TKxNetworkListManager::NetworkConnectionCount() const {
  CheckActive();
  std::vector<platform::TNlmConnectionInfo> Connections;
  Check(platform::NlmConnections(FState->Nlm, Connections));
  return int32_t(Connections.size());
}

TGUID TKxNetworkListManager::GetNetwork(int32_t Index) const {
  CheckActive();
  std::vector<platform::TNlmNetworkInfo> Networks;
  Check(platform::NlmNetworks(FState->Nlm, Networks));
  if (Index < 0 || size_t(Index) >= Networks.size()) throw Exception(SKxNlmNoNetworkConnection);
  return Networks[size_t(Index)].Id;
}

TGUID TKxNetworkListManager::GetNetworkConnection(int32_t Index) const {
  CheckActive();
  std::vector<platform::TNlmConnectionInfo> Connections;
  Check(platform::NlmConnections(FState->Nlm, Connections));
  if (Index < 0 || size_t(Index) >= Connections.size()) throw Exception(SKxNlmNoNetworkConnection);
  return Connections[size_t(Index)].Id;
}

TKxNetwork* TKxNetworkListManager::OpenNetwork(const TGUID& NetworkID, TComponent* AOwner) {
  TKxNetwork* Network = TKxNetwork::Create(AOwner);
  try {
    Network->SetNetworkListManager(this);
    Network->SetNetworkID(NetworkID);
  } catch (...) {
    Network->Free();
    throw;
  }
  return Network;
}

TKxNetworkConnection* TKxNetworkListManager::OpenConnection(const TGUID& ConnectionID,
                                                            TComponent* AOwner) {
  TKxNetworkConnection* Connection = TKxNetworkConnection::Create(AOwner);
  try {
    Connection->SetNetworkListManager(this);
    Connection->SetConnectionID(ConnectionID);
  } catch (...) {
    Connection->Free();
    throw;
  }
  return Connection;
}

int32_t TKxNetworkListManager::ConnectivityChanged(uint32_t NewConnectivity) {
  if (OnConnectivityChanged) OnConnectivityChanged(this, KxNlmConnectivity(NewConnectivity));
  return 0;
}
int32_t TKxNetworkListManager::NetworkAdded(const TGUID& NetworkID) {
  if (OnNetworkAdded) OnNetworkAdded(this, NetworkID);
  return 0;
}
int32_t TKxNetworkListManager::NetworkDeleted(const TGUID& NetworkID) {
  if (OnNetworkDeleted) OnNetworkDeleted(this, NetworkID);
  return 0;
}
int32_t TKxNetworkListManager::NetworkConnectivityChanged(const TGUID& NetworkID,
                                                          uint32_t NewConnectivity) {
  if (OnNetworkConnectivityChanged)
    OnNetworkConnectivityChanged(this, NetworkID, KxNlmConnectivity(NewConnectivity));
  return 0;
}
int32_t TKxNetworkListManager::NetworkPropertyChanged(const TGUID& NetworkID, uint32_t Flags) {
  if (OnNetworkPropertyChanged)
    OnNetworkPropertyChanged(this, NetworkID, KxNlmNetworkPropChanges(Flags));
  return 0;
}
int32_t TKxNetworkListManager::NetworkConnectionConnectivityChanged(const TGUID& ConnectionID,
                                                                    uint32_t NewConnectivity) {
  if (OnConnectionConnectivityChanged)
    OnConnectionConnectivityChanged(this, ConnectionID, KxNlmConnectivity(NewConnectivity));
  return 0;
}
int32_t TKxNetworkListManager::NetworkConnectionPropertyChanged(const TGUID& ConnectionID,
                                                                uint32_t Flags) {
  if (OnConnectionPropertyChanged)
    OnConnectionPropertyChanged(this, ConnectionID, KxNlmConnectionPropChanges(Flags));
  return 0;
}

// --- TKxNLMBase ------------------------------------------------------------------------

void TKxNLMBase::SetNetworkListManager(TKxNetworkListManager* Value) {
  if (Value == FNetworkListManager) return;
  if (FNetworkListManager) {
    NetworkListManagerGone();
    FNetworkListManager->RemoveFreeNotification(this);
  }
  FNetworkListManager = Value;
  if (Value) Value->FreeNotification(this);
}

void TKxNLMBase::CheckActive() const {
  if (!FNetworkListManager) throw Exception(SKxNlmManagerNotAssigned);
  FNetworkListManager->CheckActive();
}

void TKxNLMBase::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == FNetworkListManager) {
    NetworkListManagerGone();
    FNetworkListManager = nullptr;
  }
}

void TKxNLMBase::ValidateDestruction() {
  KxAssert(FRefCount == 0, SKxNlmRefCountNotZero, UnitPath, __LINE__);
}

void TKxNLMBase::Register(bool Add) {
  if (!FNetworkListManager || !FNetworkListManager->State()) return;
  detail::TNlmState* State = FNetworkListManager->State();
  std::lock_guard<std::mutex> Guard(State->Lock);
  auto& C = State->Clients;
  C.erase(std::remove(C.begin(), C.end(), this), C.end());
  if (Add) C.push_back(this);
}

// --- TKxNetwork ------------------------------------------------------------------------

TKxNetwork::~TKxNetwork() {
  delete FSink;
}

void TKxNetwork::BeforeDestruction() {
  NetworkListManagerGone();
  inherited::BeforeDestruction();
}

void TKxNetwork::SetNetworkID(const TGUID& Value) {
  if (FBound) throw Exception(SKxNlmAlreadyActivated);
  CheckActive();
  platform::TNlmNetworkInfo Info;
  const int32_t Result = platform::NlmNetwork(FNetworkListManager->State()->Nlm, Value, Info);
  if (Result != 0) {
    if (Result < 0) RaiseComError(Result);
    throw Exception(SKxNlmNoNetworkWithId, {GUIDToString(Value)});
  }
  FNetworkID = Value;
  FBound = true;
  Subscribe();
}

void TKxNetwork::Subscribe() {
  if (!FSink) {
    FSink = new detail::TNlmSinkAdapter;
    FSink->Network = this;
  }
  int32_t Result = 0;
  platform::TNlmStep Step = platform::nsNone;
  FCookie = platform::NlmAdvise(FNetworkListManager->State()->Nlm, platform::neNetwork, FSink,
                                Result, Step);
  if (FCookie == 0)
    throw Exception(Step == platform::nsContainer ? SKxNlmNoNetworkContainer
                                                  : SKxNlmNoConnectionPoint);
  Register(true);
}

void TKxNetwork::Unsubscribe() {
  if (FCookie == 0) return;
  Register(false);
  const uint32_t Cookie = FCookie;
  FCookie = 0;
  int32_t Result = 0;
  platform::TNlmStep Step = platform::nsNone;
  if (!platform::NlmUnadvise(FNetworkListManager->State()->Nlm, platform::neNetwork, Cookie, Result,
                             Step))
    throw Exception(Step == platform::nsContainer ? SKxNlmNoNetworkContainer
                                                  : SKxNlmNoNetworkEventsOnUnsubscribe);
}

void TKxNetwork::NetworkListManagerGone() {
  if (FCookie && FNetworkListManager && FNetworkListManager->State()) Unsubscribe();
  FCookie = 0;
}

namespace {
platform::TNlmNetworkInfo NetworkInfo(const TKxNetwork& N) {
  N.CheckActive();
  platform::TNlmNetworkInfo Info;
  const int32_t Result =
      platform::NlmNetwork(N.NetworkListManager()->State()->Nlm, N.NetworkID(), Info);
  if (Result < 0) RaiseComError(Result);
  if (Result != 0) throw Exception(SKxNlmNoNetworkWithId, {GUIDToString(N.NetworkID())});
  return Info;
}
} // namespace

UnicodeString TKxNetwork::NetworkName() const {
  return NetworkInfo(*this).Name;
}
UnicodeString TKxNetwork::Description() const {
  return NetworkInfo(*this).Description;
}
TKxNlmNetworkCategory TKxNetwork::Category() const {
  return TKxNlmNetworkCategory(std::min<uint32_t>(NetworkInfo(*this).Category, 2));
}
TKxNlmDomainType TKxNetwork::DomainType() const {
  return TKxNlmDomainType(std::min<uint32_t>(NetworkInfo(*this).DomainType, 2));
}
TKxNlmConnectivitySet TKxNetwork::Connectivity() const {
  return KxNlmConnectivity(NetworkInfo(*this).Connectivity);
}
bool TKxNetwork::IsConnected() const {
  return NetworkInfo(*this).Connected;
}
bool TKxNetwork::IsConnectedToInternet() const {
  return NetworkInfo(*this).Internet;
}

void TKxNetwork::TimeCreatedAndConnected(TDateTime& Created, TDateTime& Connected) const {
  const platform::TNlmNetworkInfo Info = NetworkInfo(*this);
  Created = Info.Created;
  Connected = Info.ConnectedAt;
}

std::vector<TGUID> TKxNetwork::Connections() const {
  CheckActive();
  std::vector<TGUID> R;
  Check(platform::NlmNetworkConnections(FNetworkListManager->State()->Nlm, FNetworkID, R));
  return R;
}

void TKxNetwork::SetNetworkName(const UnicodeString& Value) {
  NetworkInfo(*this);
  Check(platform::NlmSetNetwork(FNetworkListManager->State()->Nlm, FNetworkID, 0, Value, 0));
}
void TKxNetwork::SetDescription(const UnicodeString& Value) {
  NetworkInfo(*this);
  Check(platform::NlmSetNetwork(FNetworkListManager->State()->Nlm, FNetworkID, 1, Value, 0));
}
void TKxNetwork::SetCategory(TKxNlmNetworkCategory Value) {
  NetworkInfo(*this);
  Check(platform::NlmSetNetwork(FNetworkListManager->State()->Nlm, FNetworkID, 2, {},
                                uint32_t(Value)));
}

int32_t TKxNetwork::NetworkAdded(const TGUID& NetworkID) {
  if (OnNetworkAdded && NetworkID == FNetworkID) OnNetworkAdded(this, NetworkID);
  return 0;
}
int32_t TKxNetwork::NetworkDeleted(const TGUID& NetworkID) {
  if (OnNetworkDeleted && NetworkID == FNetworkID) OnNetworkDeleted(this, NetworkID);
  return 0;
}
int32_t TKxNetwork::NetworkConnectivityChanged(const TGUID& NetworkID, uint32_t NewConnectivity) {
  if (OnNetworkConnectivityChanged && NetworkID == FNetworkID)
    OnNetworkConnectivityChanged(this, NetworkID, KxNlmConnectivity(NewConnectivity));
  return 0;
}
int32_t TKxNetwork::NetworkPropertyChanged(const TGUID& NetworkID, uint32_t Flags) {
  if (OnNetworkPropertyChanged && NetworkID == FNetworkID)
    OnNetworkPropertyChanged(this, NetworkID, KxNlmNetworkPropChanges(Flags));
  return 0;
}

// --- TKxNetworkConnection --------------------------------------------------------------

TKxNetworkConnection::~TKxNetworkConnection() {
  delete FSink;
}

void TKxNetworkConnection::BeforeDestruction() {
  NetworkListManagerGone();
  inherited::BeforeDestruction();
}

void TKxNetworkConnection::SetConnectionID(const TGUID& Value) {
  if (FBound) throw Exception(SKxNlmAlreadyActivated);
  CheckActive();
  platform::TNlmConnectionInfo Info;
  const int32_t Result = platform::NlmConnection(FNetworkListManager->State()->Nlm, Value, Info);
  if (Result != 0) throw Exception(SKxNlmNoConnectionWithId, {Result, GUIDToString(Value)});
  FConnectionID = Value;
  FBound = true;
  Subscribe();
}

void TKxNetworkConnection::Subscribe() {
  if (!FSink) {
    FSink = new detail::TNlmSinkAdapter;
    FSink->Connection = this;
  }
  int32_t Result = 0;
  platform::TNlmStep Step = platform::nsNone;
  FCookie = platform::NlmAdvise(FNetworkListManager->State()->Nlm, platform::neConnection, FSink,
                                Result, Step);
  if (FCookie == 0)
    throw Exception(Step == platform::nsContainer ? SKxNlmNoNetworkContainer
                                                  : SKxNlmNoConnectionPoint);
  Register(true);
}

void TKxNetworkConnection::Unsubscribe() {
  if (FCookie == 0) return;
  Register(false);
  const uint32_t Cookie = FCookie;
  FCookie = 0;
  int32_t Result = 0;
  platform::TNlmStep Step = platform::nsNone;
  if (!platform::NlmUnadvise(FNetworkListManager->State()->Nlm, platform::neConnection, Cookie,
                             Result, Step))
    throw Exception(Step == platform::nsContainer ? SKxNlmNoNetworkContainer
                                                  : SKxNlmNoConnectionPoint);
}

void TKxNetworkConnection::NetworkListManagerGone() {
  if (FCookie && FNetworkListManager && FNetworkListManager->State()) Unsubscribe();
  FCookie = 0;
}

namespace {
platform::TNlmConnectionInfo ConnectionInfo(const TKxNetworkConnection& C) {
  C.CheckActive();
  platform::TNlmConnectionInfo Info;
  const int32_t Result =
      platform::NlmConnection(C.NetworkListManager()->State()->Nlm, C.ConnectionID(), Info);
  if (Result != 0)
    throw Exception(SKxNlmNoConnectionWithId, {Result, GUIDToString(C.ConnectionID())});
  return Info;
}
} // namespace

TGUID TKxNetworkConnection::AdapterID() const {
  return ConnectionInfo(*this).AdapterId;
}
UnicodeString TKxNetworkConnection::AdapterName() const {
  return ConnectionInfo(*this).AdapterName;
}
TKxNlmConnectivitySet TKxNetworkConnection::Connectivity() const {
  return KxNlmConnectivity(ConnectionInfo(*this).Connectivity);
}
TKxNlmDomainType TKxNetworkConnection::DomainType() const {
  return TKxNlmDomainType(std::min<uint32_t>(ConnectionInfo(*this).DomainType, 2));
}
bool TKxNetworkConnection::IsConnected() const {
  return ConnectionInfo(*this).Connected;
}
bool TKxNetworkConnection::IsConnectedToInternet() const {
  return ConnectionInfo(*this).Internet;
}
TGUID TKxNetworkConnection::Network() const {
  return ConnectionInfo(*this).NetworkId;
}

int32_t TKxNetworkConnection::NetworkConnectionConnectivityChanged(const TGUID& ConnectionID,
                                                                   uint32_t NewConnectivity) {
  if (OnConnectivityChanged && ConnectionID == FConnectionID)
    OnConnectivityChanged(this, ConnectionID, KxNlmConnectivity(NewConnectivity));
  return 0;
}
int32_t TKxNetworkConnection::NetworkConnectionPropertyChanged(const TGUID& ConnectionID,
                                                               uint32_t Flags) {
  if (OnPropertyChanged && ConnectionID == FConnectionID)
    OnPropertyChanged(this, ConnectionID, KxNlmConnectionPropChanges(Flags));
  return 0;
}

} // namespace kx
