// SPDX-License-Identifier: MIT
#pragma once
// The network list behind TKxNetworkListManager. Windows: the NetworkListManager COM object.
// Linux: NetworkManager on the system bus, its active connections as networks and its devices
// as connections. Results are HRESULT values (0 success, S_FALSE 1 for "none there").

#include <kx/rtl/DateTime.h>
#include <kx/rtl/Interfaces.h>
#include <kx/rtl/Strings.h>

#include <cstdint>
#include <vector>

namespace kx::platform {

// The events, called on the platform's delivery thread.
struct TNlmSink {
  virtual ~TNlmSink() = default;
  virtual void ConnectivityChanged(uint32_t) {}
  virtual void NetworkAdded(const TGUID&) {}
  virtual void NetworkDeleted(const TGUID&) {}
  virtual void NetworkConnectivityChanged(const TGUID&, uint32_t) {}
  virtual void NetworkPropertyChanged(const TGUID&, uint32_t) {}
  virtual void ConnectionConnectivityChanged(const TGUID&, uint32_t) {}
  virtual void ConnectionPropertyChanged(const TGUID&, uint32_t) {}
};

// Which events a sink takes: the manager's own, the networks', the connections'.
enum TNlmEvents : uint8_t { neManager, neNetwork, neConnection };

// Where creating, advising or unadvising failed.
enum TNlmStep : uint8_t { nsNone, nsCreate, nsContainer, nsConnectionPoint, nsAdvise };

struct TNlmNetworkInfo {
  TGUID Id{};
  UnicodeString Name, Description;
  uint32_t Category = 0, DomainType = 0, Connectivity = 0;
  bool Connected = false, Internet = false;
  TDateTime Created = 0, ConnectedAt = 0;
};

struct TNlmConnectionInfo {
  TGUID Id{}, AdapterId{}, NetworkId{};
  UnicodeString AdapterName;
  uint32_t DomainType = 0, Connectivity = 0;
  bool Connected = false, Internet = false;
};

struct TNlm;

// Null on failure, with the result and the step that failed.
TNlm* NlmCreate(int32_t& Result);
void NlmFree(TNlm* Nlm);
// A cookie for Unadvise; 0 on failure, with the result and the step.
uint32_t NlmAdvise(TNlm* Nlm, TNlmEvents Events, TNlmSink* Sink, int32_t& Result, TNlmStep& Step);
bool NlmUnadvise(TNlm* Nlm, TNlmEvents Events, uint32_t Cookie, int32_t& Result, TNlmStep& Step);

int32_t NlmConnectivity(TNlm* Nlm, uint32_t& Flags);
int32_t NlmNetworks(TNlm* Nlm, std::vector<TNlmNetworkInfo>& Networks);
int32_t NlmConnections(TNlm* Nlm, std::vector<TNlmConnectionInfo>& Connections);
// S_FALSE (1) when there is none with that identifier.
int32_t NlmNetwork(TNlm* Nlm, const TGUID& Id, TNlmNetworkInfo& Info);
int32_t NlmConnection(TNlm* Nlm, const TGUID& Id, TNlmConnectionInfo& Info);
int32_t NlmNetworkConnections(TNlm* Nlm, const TGUID& Id, std::vector<TGUID>& Connections);
// What: 0 name, 1 description, 2 category (Value as the category's number).
int32_t NlmSetNetwork(TNlm* Nlm, const TGUID& Id, int What, const UnicodeString& Text,
                      uint32_t Value);
// The platform's text for a result.
AnsiString NlmErrorText(int32_t Result);

} // namespace kx::platform
