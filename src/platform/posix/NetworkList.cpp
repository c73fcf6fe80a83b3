// SPDX-License-Identifier: MIT
// The network list from NetworkManager. Networks are the active connections (identified by
// their connection's UUID, named by its id, described by its type); connections are the
// devices (identified by a name-based UUID of the interface, which names the adapter).
// Connectivity comes from NetworkManager's connectivity check where it has one
// (Connectivity, a device's Ip4Connectivity and Ip6Connectivity), else from its state.
#include "platform/NetworkList.h"

#include "platform/Digest.h"
#include "platform/Platform.h"
#include "platform/posix/SystemBus.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace kx::platform {

namespace {

constexpr const char* NM = "org.freedesktop.NetworkManager";
constexpr const char* NMPath = "/org/freedesktop/NetworkManager";
constexpr const char* NMDevice = "org.freedesktop.NetworkManager.Device";
constexpr const char* NMActive = "org.freedesktop.NetworkManager.Connection.Active";
constexpr const char* Properties = "org.freedesktop.DBus.Properties";

constexpr int32_t S_FALSE_ = 1;
constexpr int32_t E_NOTIMPL_ = int32_t(0x80004001u);

int32_t FromErrno(int NegativeErrno) {
  return int32_t(0x80070000u | (uint32_t(-NegativeErrno) & 0xFFFFu));
}

// NMConnectivityState (0 unknown, 1 none, 2 portal, 3 limited, 4 full) as the flags of one
// address family: Base is 0 for IPv4, 1 for IPv6.
uint32_t FamilyFlags(uint32_t Connectivity, int Base) {
  switch (Connectivity) {
  case 4:
    return 0x40u << (Base * 4);
  case 3:
  case 2:
    return 0x20u << (Base * 4);
  case 1:
    return 0x1u << Base;
  default:
    return 0;
  }
}

// NMState: 70 connected globally, 60 to a site, 50 locally.
uint32_t StateFlags(uint32_t State) {
  if (State >= 70) return 0x40;
  if (State >= 60) return 0x20;
  if (State >= 50) return 0x10;
  return 0;
}

bool ParseUuid(const char* Text, TGUID& Id) {
  // 8-4-4-4-12 hexadecimal digits.
  uint8_t Bytes[16];
  int N = 0;
  for (const char* P = Text; P && *P && N < 32; ++P) {
    if (*P == '-') continue;
    int V;
    if (*P >= '0' && *P <= '9')
      V = *P - '0';
    else if (*P >= 'a' && *P <= 'f')
      V = *P - 'a' + 10;
    else if (*P >= 'A' && *P <= 'F')
      V = *P - 'A' + 10;
    else
      return false;
    if (N % 2 == 0)
      Bytes[N / 2] = uint8_t(V << 4);
    else
      Bytes[N / 2] |= uint8_t(V);
    ++N;
  }
  if (N != 32) return false;
  Id.D1 = uint32_t(Bytes[0]) << 24 | uint32_t(Bytes[1]) << 16 | uint32_t(Bytes[2]) << 8 | Bytes[3];
  Id.D2 = uint16_t(Bytes[4] << 8 | Bytes[5]);
  Id.D3 = uint16_t(Bytes[6] << 8 | Bytes[7]);
  std::memcpy(Id.D4, Bytes + 8, 8);
  return true;
}

// A stable identifier for a device: a name-based (version 3) UUID of its interface name.
TGUID DeviceId(const std::string& Interface) {
  const std::string Name = "NetworkManager device " + Interface;
  uint8_t Digest[16] = {};
  ComputeDigest(TDigestAlgorithm::MD5, Name.data(), Name.size(), Digest);
  Digest[6] = uint8_t((Digest[6] & 0x0F) | 0x30);
  Digest[8] = uint8_t((Digest[8] & 0x3F) | 0x80);
  TGUID Id{};
  Id.D1 =
      uint32_t(Digest[0]) << 24 | uint32_t(Digest[1]) << 16 | uint32_t(Digest[2]) << 8 | Digest[3];
  Id.D2 = uint16_t(Digest[4] << 8 | Digest[5]);
  Id.D3 = uint16_t(Digest[6] << 8 | Digest[7]);
  std::memcpy(Id.D4, Digest + 8, 8);
  return Id;
}

UnicodeString Utf16(const std::string& S) {
  // Names on the bus are UTF-8.
  UnicodeString R;
  for (size_t I = 0; I < S.size();) {
    uint32_t C = uint8_t(S[I]);
    size_t Len = C < 0x80 ? 1 : C < 0xE0 ? 2 : C < 0xF0 ? 3 : 4;
    if (I + Len > S.size()) break;
    if (Len > 1) {
      C &= 0xFFu >> (Len + 1);
      for (size_t K = 1; K < Len; ++K) C = (C << 6) | (uint8_t(S[I + K]) & 0x3Fu);
    }
    I += Len;
    if (C >= 0x10000) {
      C -= 0x10000;
      R += char16_t(0xD800 + (C >> 10));
      R += char16_t(0xDC00 + (C & 0x3FF));
    } else {
      R += char16_t(C);
    }
  }
  return R;
}

// Property readers; false when the object or the property is not there.
bool GetU32(sd_bus* Bus, const char* Path, const char* Interface, const char* Name,
            uint32_t& Value) {
  return sd_bus_get_property_trivial(Bus, NM, Path, Interface, Name, nullptr, 'u', &Value) >= 0;
}
bool GetString(sd_bus* Bus, const char* Path, const char* Interface, const char* Name,
               std::string& Value, char Type = 's') {
  sd_bus_message* Reply = nullptr;
  const char Signature[2] = {Type, 0};
  bool Ok = sd_bus_get_property(Bus, NM, Path, Interface, Name, nullptr, &Reply, Signature) >= 0;
  const char* Text = nullptr;
  Ok = Ok && sd_bus_message_read_basic(Reply, Type, &Text) >= 0 && Text;
  if (Ok) Value = Text;
  sd_bus_message_unref(Reply);
  return Ok;
}
bool GetPaths(sd_bus* Bus, const char* Path, const char* Interface, const char* Name,
              std::vector<std::string>& Paths) {
  sd_bus_message* Reply = nullptr;
  int R = sd_bus_get_property(Bus, NM, Path, Interface, Name, nullptr, &Reply, "ao");
  if (R >= 0) R = sd_bus_message_enter_container(Reply, 'a', "o");
  const char* P = nullptr;
  while (R >= 0 && sd_bus_message_read_basic(Reply, 'o', &P) > 0) Paths.push_back(P);
  sd_bus_message_unref(Reply);
  return R >= 0;
}

uint32_t GlobalFlags(sd_bus* Bus) {
  uint32_t Connectivity = 0, State = 0;
  GetU32(Bus, NMPath, NM, "Connectivity", Connectivity);
  if (Connectivity != 0) return FamilyFlags(Connectivity, 0) & ~0x1u;
  GetU32(Bus, NMPath, NM, "State", State);
  return StateFlags(State);
}

bool ReadDevice(sd_bus* Bus, const std::string& Path, TNlmConnectionInfo& Info) {
  std::string Interface, Active;
  uint32_t State = 0;
  if (!GetString(Bus, Path.c_str(), NMDevice, "Interface", Interface)) return false;
  GetU32(Bus, Path.c_str(), NMDevice, "State", State);
  Info.Id = Info.AdapterId = DeviceId(Interface);
  Info.AdapterName = Utf16(Interface);
  Info.Connectivity = 0;
  if (State == 100) { // activated
    uint32_t V4 = 0, V6 = 0;
    const bool Has4 = GetU32(Bus, Path.c_str(), NMDevice, "Ip4Connectivity", V4);
    const bool Has6 = GetU32(Bus, Path.c_str(), NMDevice, "Ip6Connectivity", V6);
    Info.Connectivity = Has4 || Has6 ? FamilyFlags(V4, 0) | FamilyFlags(V6, 1) : GlobalFlags(Bus);
    if (Info.Connectivity == 0) Info.Connectivity = 0x1; // up, but nothing answers
  }
  Info.Connected = Info.Connectivity != 0;
  Info.Internet = (Info.Connectivity & 0x440u) != 0;
  Info.NetworkId = TGUID{};
  std::string Uuid;
  if (GetString(Bus, Path.c_str(), NMDevice, "ActiveConnection", Active, 'o') && Active != "/" &&
      GetString(Bus, Active.c_str(), NMActive, "Uuid", Uuid))
    ParseUuid(Uuid.c_str(), Info.NetworkId);
  return true;
}

bool ReadActive(sd_bus* Bus, const std::string& Path, TNlmNetworkInfo& Info) {
  std::string Uuid, Name, Type;
  if (!GetString(Bus, Path.c_str(), NMActive, "Uuid", Uuid) || !ParseUuid(Uuid.c_str(), Info.Id))
    return false;
  GetString(Bus, Path.c_str(), NMActive, "Id", Name);
  GetString(Bus, Path.c_str(), NMActive, "Type", Type);
  Info.Name = Utf16(Name);
  Info.Description = Utf16(Type);
  std::vector<std::string> Devices;
  GetPaths(Bus, Path.c_str(), NMActive, "Devices", Devices);
  Info.Connectivity = 0;
  for (const auto& Device : Devices) {
    TNlmConnectionInfo D;
    if (ReadDevice(Bus, Device, D)) Info.Connectivity |= D.Connectivity;
  }
  Info.Connected = Info.Connectivity != 0;
  Info.Internet = (Info.Connectivity & 0x440u) != 0;
  return true;
}

struct TSinkEntry {
  uint32_t Cookie;
  TNlmEvents Events;
  TNlmSink* Sink;
};

} // namespace

struct TNlm {
  std::shared_ptr<TBusThread> Bus; // signals, on its own thread
  sd_bus* Query = nullptr;         // callers' questions, one at a time
  std::mutex QueryLock;
  // Held while events are delivered, so that a sink is never called after Unadvise returns
  // (recursive: a handler may unadvise).
  std::recursive_mutex SinksLock;
  std::vector<TSinkEntry> Sinks;
  uint32_t NextCookie = 1;
  // Bus thread only: what the last events said.
  uint32_t LastFlags = 0;
  std::map<std::string, TGUID> Networks;
  std::map<std::string, uint32_t> DeviceFlags;
  std::map<std::string, TGUID> DeviceNetwork;

  ~TNlm() {
    if (Bus) Bus->Stop();
    if (Query) sd_bus_flush_close_unref(Query);
  }

  template <class F>
  void Deliver(TNlmEvents Events, F&& Call) {
    std::lock_guard<std::recursive_mutex> Guard(SinksLock);
    const std::vector<TSinkEntry> Copy = Sinks;
    for (const auto& E : Copy) {
      if (E.Events != Events) continue;
      const bool Still = std::any_of(Sinks.begin(), Sinks.end(),
                                     [&](const TSinkEntry& S) { return S.Cookie == E.Cookie; });
      if (Still) Call(E.Sink);
    }
  }

  void CheckConnectivity() {
    const uint32_t Flags = GlobalFlags(Bus->Bus());
    if (Flags == LastFlags) return;
    LastFlags = Flags;
    Deliver(neManager, [&](TNlmSink* S) { S->ConnectivityChanged(Flags); });
  }

  void CheckNetworks() {
    std::vector<std::string> Paths;
    GetPaths(Bus->Bus(), NMPath, NM, "ActiveConnections", Paths);
    std::map<std::string, TGUID> Now;
    for (const auto& P : Paths) {
      TNlmNetworkInfo Info;
      if (auto It = Networks.find(P); It != Networks.end())
        Now[P] = It->second;
      else if (ReadActive(Bus->Bus(), P, Info))
        Now[P] = Info.Id;
    }
    const auto Old = std::exchange(Networks, Now);
    // Elements, not structured bindings: clang 14 cannot capture a binding in a lambda.
    for (const auto& E : Old)
      if (!Now.count(E.first))
        Deliver(neNetwork, [&](TNlmSink* S) { S->NetworkDeleted(E.second); });
    for (const auto& E : Now)
      if (!Old.count(E.first)) Deliver(neNetwork, [&](TNlmSink* S) { S->NetworkAdded(E.second); });
  }

  void DeviceChanged(const std::string& Path) {
    TNlmConnectionInfo Info;
    if (!ReadDevice(Bus->Bus(), Path, Info)) return;
    // A device that went down has left its network: the network it was in is the one told.
    TGUID NetworkId = Info.NetworkId;
    if (NetworkId == TGUID{})
      NetworkId = DeviceNetwork[Path];
    else
      DeviceNetwork[Path] = NetworkId;
    auto& Last = DeviceFlags[Path];
    if (Last == Info.Connectivity) return;
    Last = Info.Connectivity;
    Deliver(neConnection,
            [&](TNlmSink* S) { S->ConnectionConnectivityChanged(Info.Id, Info.Connectivity); });
    if (NetworkId == TGUID{}) return;
    uint32_t Flags = Info.Connectivity;
    TNlmNetworkInfo Network;
    for (const auto& [ActivePath, Id] : Networks)
      if (Id == NetworkId && ReadActive(Bus->Bus(), ActivePath, Network))
        Flags = Network.Connectivity;
    Deliver(neNetwork, [&](TNlmSink* S) { S->NetworkConnectivityChanged(NetworkId, Flags); });
  }
};

namespace {

TNlm* Of(void* UserData) {
  return static_cast<TNlm*>(UserData);
}

// Which of Names a property change (a{sv} at the reader's position) names.
std::vector<std::string> ChangedNames(sd_bus_message* M) {
  std::vector<std::string> Names;
  if (sd_bus_message_enter_container(M, 'a', "{sv}") < 0) return Names;
  while (sd_bus_message_enter_container(M, 'e', "sv") > 0) {
    const char* Name = nullptr;
    if (sd_bus_message_read(M, "s", &Name) < 0) break;
    Names.push_back(Name);
    if (sd_bus_message_skip(M, "v") < 0 || sd_bus_message_exit_container(M) < 0) break;
  }
  return Names;
}

void ManagerPropertiesChanged(TNlm* N, const std::vector<std::string>& Names) {
  auto Has = [&](const char* Name) {
    return std::find(Names.begin(), Names.end(), Name) != Names.end();
  };
  if (Has("ActiveConnections")) N->CheckNetworks();
  if (Has("Connectivity") || Has("State")) N->CheckConnectivity();
}

int OnStateChanged(sd_bus_message*, void* UserData, sd_bus_error*) {
  Of(UserData)->CheckConnectivity();
  return 0;
}

// NetworkManager's own PropertiesChanged (a{sv}), which older versions and some mocks send.
int OnLegacyProperties(sd_bus_message* M, void* UserData, sd_bus_error*) {
  ManagerPropertiesChanged(Of(UserData), ChangedNames(M));
  return 0;
}

int OnProperties(sd_bus_message* M, void* UserData, sd_bus_error*) {
  const char* Interface = nullptr;
  if (sd_bus_message_read(M, "s", &Interface) < 0 || std::strcmp(Interface, NM) != 0) return 0;
  ManagerPropertiesChanged(Of(UserData), ChangedNames(M));
  return 0;
}

int OnDeviceStateChanged(sd_bus_message* M, void* UserData, sd_bus_error*) {
  if (const char* Path = sd_bus_message_get_path(M)) Of(UserData)->DeviceChanged(Path);
  return 0;
}

} // namespace

TNlm* NlmCreate(int32_t& Result) {
  auto N = std::make_unique<TNlm>();
  int R = sd_bus_open_system(&N->Query);
  if (R < 0) {
    N->Query = nullptr;
    Result = FromErrno(R);
    return nullptr;
  }
  // Like creating the COM object: it fails when the service is not there.
  std::string Version;
  sd_bus_error Error = SD_BUS_ERROR_NULL;
  sd_bus_message* Reply = nullptr;
  R = sd_bus_get_property(N->Query, NM, NMPath, NM, "Version", &Error, &Reply, "s");
  sd_bus_message_unref(Reply);
  if (R < 0) {
    Result = FromErrno(R);
    sd_bus_error_free(&Error);
    return nullptr;
  }
  auto Bus = std::make_shared<TBusThread>();
  if (!Bus->Open() ||
      !Bus->MatchSignal(NM, nullptr, NM, "StateChanged", &OnStateChanged, N.get()) ||
      !Bus->MatchSignal(NM, NMPath, NM, "PropertiesChanged", &OnLegacyProperties, N.get()) ||
      !Bus->MatchSignal(NM, NMPath, Properties, "PropertiesChanged", &OnProperties, N.get()) ||
      !Bus->MatchSignal(NM, nullptr, NMDevice, "StateChanged", &OnDeviceStateChanged, N.get())) {
    Result = FromErrno(-int(LastError()));
    return nullptr;
  }
  N->Bus = Bus;
  // The starting point of the changes the events report.
  N->LastFlags = GlobalFlags(Bus->Bus());
  N->CheckNetworks();
  std::vector<std::string> Devices;
  GetPaths(Bus->Bus(), NMPath, NM, "Devices", Devices);
  for (const auto& D : Devices) {
    TNlmConnectionInfo Info;
    if (!ReadDevice(Bus->Bus(), D, Info)) continue;
    N->DeviceFlags[D] = Info.Connectivity;
    N->DeviceNetwork[D] = Info.NetworkId;
  }
  if (!Bus->Start()) {
    Result = FromErrno(-int(LastError()));
    N->Bus = nullptr;
    return nullptr;
  }
  Result = 0;
  return N.release();
}

void NlmFree(TNlm* Nlm) {
  delete Nlm;
}

uint32_t NlmAdvise(TNlm* Nlm, TNlmEvents Events, TNlmSink* Sink, int32_t& Result, TNlmStep& Step) {
  std::lock_guard<std::recursive_mutex> Guard(Nlm->SinksLock);
  const uint32_t Cookie = Nlm->NextCookie++;
  Nlm->Sinks.push_back({Cookie, Events, Sink});
  Result = 0;
  Step = nsNone;
  return Cookie;
}

bool NlmUnadvise(TNlm* Nlm, TNlmEvents, uint32_t Cookie, int32_t& Result, TNlmStep& Step) {
  std::lock_guard<std::recursive_mutex> Guard(Nlm->SinksLock);
  auto& S = Nlm->Sinks;
  const auto It =
      std::find_if(S.begin(), S.end(), [&](const TSinkEntry& E) { return E.Cookie == Cookie; });
  if (It == S.end()) {
    Result = int32_t(0x80040200u); // CONNECT_E_NOCONNECTION
    Step = nsAdvise;
    return false;
  }
  S.erase(It);
  Result = 0;
  Step = nsNone;
  return true;
}

int32_t NlmConnectivity(TNlm* Nlm, uint32_t& Flags) {
  std::lock_guard<std::mutex> Guard(Nlm->QueryLock);
  Flags = GlobalFlags(Nlm->Query);
  return 0;
}

int32_t NlmNetworks(TNlm* Nlm, std::vector<TNlmNetworkInfo>& Networks) {
  std::lock_guard<std::mutex> Guard(Nlm->QueryLock);
  std::vector<std::string> Paths;
  if (!GetPaths(Nlm->Query, NMPath, NM, "ActiveConnections", Paths)) return FromErrno(-EIO);
  for (const auto& P : Paths) {
    TNlmNetworkInfo Info;
    if (ReadActive(Nlm->Query, P, Info)) Networks.push_back(Info);
  }
  return 0;
}

int32_t NlmConnections(TNlm* Nlm, std::vector<TNlmConnectionInfo>& Connections) {
  std::lock_guard<std::mutex> Guard(Nlm->QueryLock);
  std::vector<std::string> Paths;
  if (!GetPaths(Nlm->Query, NMPath, NM, "Devices", Paths)) return FromErrno(-EIO);
  for (const auto& P : Paths) {
    TNlmConnectionInfo Info;
    if (ReadDevice(Nlm->Query, P, Info)) Connections.push_back(Info);
  }
  return 0;
}

int32_t NlmNetwork(TNlm* Nlm, const TGUID& Id, TNlmNetworkInfo& Info) {
  std::vector<TNlmNetworkInfo> All;
  if (const int32_t R = NlmNetworks(Nlm, All); R < 0) return R;
  for (const auto& N : All)
    if (N.Id == Id) return Info = N, 0;
  return S_FALSE_;
}

int32_t NlmConnection(TNlm* Nlm, const TGUID& Id, TNlmConnectionInfo& Info) {
  std::vector<TNlmConnectionInfo> All;
  if (const int32_t R = NlmConnections(Nlm, All); R < 0) return R;
  for (const auto& C : All)
    if (C.Id == Id) return Info = C, 0;
  return S_FALSE_;
}

int32_t NlmNetworkConnections(TNlm* Nlm, const TGUID& Id, std::vector<TGUID>& Connections) {
  std::vector<TNlmConnectionInfo> All;
  if (const int32_t R = NlmConnections(Nlm, All); R < 0) return R;
  for (const auto& C : All)
    if (C.NetworkId == Id) Connections.push_back(C.Id);
  return 0;
}

// NetworkManager's names belong to the connection profiles, and there are no categories.
int32_t NlmSetNetwork(TNlm*, const TGUID&, int, const UnicodeString&, uint32_t) {
  return E_NOTIMPL_;
}

AnsiString NlmErrorText(int32_t Result) {
  if (Result == E_NOTIMPL_) return "Not implemented";
  if ((uint32_t(Result) & 0xFFFF0000u) == 0x80070000u)
    return ErrorMessage(uint32_t(Result) & 0xFFFFu);
  return "Error " + std::to_string(Result);
}

} // namespace kx::platform
