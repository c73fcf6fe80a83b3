// SPDX-License-Identifier: MIT
#pragma once
// The source of the logon, network and power notifications behind TKxSENS. Windows: a
// transient subscription in the COM+ event system whose subscriber is a COM object for the
// event class's sink interface. Linux: logind, NetworkManager and UPower signals on a bus
// thread. Either way the calls arrive at a TSensCalls.

#include <kx/rtl/Interfaces.h>
#include <kx/rtl/Strings.h>

#include <cstdint>

namespace kx::platform {

// The sink methods of the three interfaces; results are HRESULT values.
struct TSensCalls {
  virtual ~TSensCalls() = default;
  virtual int32_t Logon(const UnicodeString&) { return 0; }
  virtual int32_t Logoff(const UnicodeString&) { return 0; }
  virtual int32_t StartShell(const UnicodeString&) { return 0; }
  virtual int32_t DisplayLock(const UnicodeString&) { return 0; }
  virtual int32_t DisplayUnlock(const UnicodeString&) { return 0; }
  virtual int32_t StartScreenSaver(const UnicodeString&) { return 0; }
  virtual int32_t StopScreenSaver(const UnicodeString&) { return 0; }
  virtual int32_t ConnectionMade(const UnicodeString&, uint32_t, uint32_t, uint32_t) { return 0; }
  virtual int32_t ConnectionMadeNoQOCInfo(const UnicodeString&, uint32_t) { return 0; }
  virtual int32_t ConnectionLost(const UnicodeString&, uint32_t) { return 0; }
  virtual int32_t OnACPower() { return 0; }
  virtual int32_t OnBatteryPower(uint32_t) { return 0; }
  virtual int32_t BatteryLow(uint32_t) { return 0; }
  // The subscription's hold on the subscriber.
  virtual void AddRef() = 0;
  virtual void Release() = 0;
};

// The network types of the service's calls.
inline constexpr uint32_t NETWORK_ALIVE_LAN_ = 1;
inline constexpr uint32_t NETWORK_ALIVE_WAN_ = 2;

struct TSensSubscription;

// Null on failure, with the HRESULT in Result.
TSensSubscription* SensSubscribe(const TGUID& EventClass, const TGUID& SubscriptionId,
                                 const AnsiString& Description, TSensCalls* Calls, int32_t& Result);
// Removes the subscription and frees it; the HRESULT of the removal.
int32_t SensUnsubscribe(TSensSubscription* Subscription, const TGUID& SubscriptionId);
AnsiString SensErrorText(int32_t Result);
TGUID SensNewGuid();

} // namespace kx::platform
