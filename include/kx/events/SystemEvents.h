// SPDX-License-Identifier: MIT
#pragma once
// TKxSensLogon, TKxSensNetwork and TKxSensOnNow: logon, network and power notifications of
// the system through transient subscriptions.
//
// Windows: the COM+ event system (EventSystem.EventSubscription and EventSystem.EventSystem)
// with a subscriber object for the system event notification service's ISensLogon,
// ISensNetwork or ISensOnNow; the event system calls it on COM threads. Linux: logind
// (sessions, lock, unlock), NetworkManager (connected, disconnected) and UPower (AC, battery,
// low battery) over the system bus; each active component owns one bus connection serviced
// by a thread of its own. On both, handlers run on a thread that is not the application's
// and must synchronise themselves.

#include <kx/rtl/Component.h>
#include <kx/rtl/Method.h>

#include <atomic>
#include <cstdint>

namespace kx {

enum TKxSensNetworkConnectionType : uint8_t { ctLAN, ctWAN };

using TKxSensLogonEvent = TMethod<void(TObject* Sender, const WideString& UserName)>;
using TKxSensNetworkConnectionMadeEvent =
    TMethod<void(TObject* Sender, const WideString& Connection,
                 TKxSensNetworkConnectionType ConnectionType, uint32_t InSpeed, uint32_t OutSpeed)>;
using TKxSensNetworkConnectionEvent = TMethod<void(TObject* Sender, const WideString& Connection,
                                                   TKxSensNetworkConnectionType ConnectionType)>;
using TKxSensOnNowEvent = TMethod<void(TObject* Sender)>;
using TKxSensOnNowBatteryEvent = TMethod<void(TObject* Sender, uint32_t BatteryLifePercent)>;

inline constexpr const char* SKxSensAlreadyActive =
    "The SENS Subscription has already been activated";
inline constexpr const char* SKxSensNotActive = "There is no active subscription";
inline constexpr const char* SKxSensRefCountNotZero = "The Refcount should be 0 here!";

// The published event classes of the notification service.
inline constexpr TGUID SENSGUID_EVENTCLASS_LOGON = {
    0xD5978630, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};
inline constexpr TGUID SENSGUID_EVENTCLASS_NETWORK = {
    0xD5978620, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};
inline constexpr TGUID SENSGUID_EVENTCLASS_ONNOW = {
    0xD5978640, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};

class TKxSensSubscriber;

namespace detail {
struct TSensState;
struct TSensCallsAdapter;
} // namespace detail

class KX_API TKxSENS : public TComponent {
  KX_CLASS(TKxSENS, TComponent)
public:
  explicit TKxSENS(TComponent* AOwner = nullptr);
  ~TKxSENS() override;
  void BeforeDestruction() override;

  bool Active() const { return FActive; }
  void SetActive(bool Value);
  // Raise the assertions "The SENS Subscription has already been activated" and "There is no
  // active subscription"; failures of the platform raise EOleSysError (result and text).
  void Subscribe();
  void Unsubscribe();
  const TGUID& SubscriptionID() const { return FSubscriptionID; }

  virtual TGUID GetEventClass() const = 0;
  // A new subscriber bound to this component; the caller holds its one reference.
  virtual TKxSensSubscriber* CreateSubscriber() = 0;

private:
  TGUID FSubscriptionID{};
  bool FActive = false;
  detail::TSensState* FState = nullptr;
};

// The object the event system calls. It counts its references from 1 (its creator's) and
// frees itself at 0; its owner reference is cleared when the owner is freed, so late calls
// are dropped.
class KX_API TKxSensSubscriber : public TComponent {
  KX_CLASS(TKxSensSubscriber, TComponent)
public:
  explicit TKxSensSubscriber(TKxSENS* AOwner);
  ~TKxSensSubscriber() override;
  int32_t KX_STDCALL _AddRef() override;
  int32_t KX_STDCALL _Release() override;
  int32_t RefCount() const { return FRefCount; }
  TKxSENS* Sens() const { return FSens.load(); }
  // What the platform calls (internal to the library).
  detail::TSensCallsAdapter* Calls() const { return FCalls; }

protected:
  void Notification(TComponent* AComponent, TOperation Operation) override;
  void ValidateDestruction() override;

private:
  std::atomic<TKxSENS*> FSens{nullptr};
  std::atomic<int32_t> FRefCount{1};
  detail::TSensCallsAdapter* FCalls = nullptr;
};

class KX_API TKxSensLogon : public TKxSENS {
  KX_CLASS(TKxSensLogon, TKxSENS)
public:
  using TKxSENS::TKxSENS;
  TGUID GetEventClass() const override { return SENSGUID_EVENTCLASS_LOGON; }
  TKxSensSubscriber* CreateSubscriber() override;

  virtual void DoLogon(const WideString& UserName);
  virtual void DoLogoff(const WideString& UserName);
  virtual void DoStartShell(const WideString& UserName);
  virtual void DoDisplayLock(const WideString& UserName);
  virtual void DoDisplayUnlock(const WideString& UserName);
  virtual void DoStartScreenSaver(const WideString& UserName);
  virtual void DoStopScreenSaver(const WideString& UserName);

  TKxSensLogonEvent OnLogon, OnLogoff, OnStartShell, OnDisplayLock, OnDisplayUnlock,
      OnStartScreenSaver, OnStopScreenSaver;
};

class KX_API TKxSensNetwork : public TKxSENS {
  KX_CLASS(TKxSensNetwork, TKxSENS)
public:
  using TKxSENS::TKxSENS;
  TGUID GetEventClass() const override { return SENSGUID_EVENTCLASS_NETWORK; }
  TKxSensSubscriber* CreateSubscriber() override;

  virtual void DoConnectionMade(const WideString& Connection, TKxSensNetworkConnectionType Type,
                                uint32_t InSpeed, uint32_t OutSpeed);
  virtual void DoConnectionMadeNoQOCInfo(const WideString& Connection,
                                         TKxSensNetworkConnectionType Type);
  virtual void DoConnectionLost(const WideString& Connection, TKxSensNetworkConnectionType Type);

  TKxSensNetworkConnectionMadeEvent OnConnectionMade;
  TKxSensNetworkConnectionEvent OnConnectionMadeNoQOC;
  TKxSensNetworkConnectionEvent OnConnectionLost;
};

class KX_API TKxSensOnNow : public TKxSENS {
  KX_CLASS(TKxSensOnNow, TKxSENS)
public:
  using TKxSENS::TKxSENS;
  TGUID GetEventClass() const override { return SENSGUID_EVENTCLASS_ONNOW; }
  TKxSensSubscriber* CreateSubscriber() override;

  virtual void DoOnACPower();
  virtual void DoOnBatteryPower(uint32_t BatteryLifePercent);
  virtual void DoBatteryLow(uint32_t BatteryLifePercent);

  TKxSensOnNowEvent OnACPower;
  TKxSensOnNowBatteryEvent OnBatteryPower;
  TKxSensOnNowBatteryEvent OnBatteryLow;
};

// The sink methods answer 0 (success), DestinationReachable* E_NOTIMPL (0x80004001).
class KX_API TKxSensLogonSubscriber : public TKxSensSubscriber {
  KX_CLASS(TKxSensLogonSubscriber, TKxSensSubscriber)
public:
  using TKxSensSubscriber::TKxSensSubscriber;
  int32_t Logon(const WideString& UserName);
  int32_t Logoff(const WideString& UserName);
  int32_t StartShell(const WideString& UserName);
  int32_t DisplayLock(const WideString& UserName);
  int32_t DisplayUnlock(const WideString& UserName);
  int32_t StartScreenSaver(const WideString& UserName);
  int32_t StopScreenSaver(const WideString& UserName);
};

class KX_API TKxSensNetworkSubscriber : public TKxSensSubscriber {
  KX_CLASS(TKxSensNetworkSubscriber, TKxSensSubscriber)
public:
  using TKxSensSubscriber::TKxSensSubscriber;
  // Type is the service's network type (1 LAN, 2 WAN); the speeds come from its
  // quality-of-connection record.
  int32_t ConnectionMade(const WideString& Connection, uint32_t Type, uint32_t InSpeed,
                         uint32_t OutSpeed);
  int32_t ConnectionMadeNoQOCInfo(const WideString& Connection, uint32_t Type);
  int32_t ConnectionLost(const WideString& Connection, uint32_t Type);
  int32_t DestinationReachable(const WideString& Destination, const WideString& Connection,
                               uint32_t Type);
  int32_t DestinationReachableNoQOCInfo(const WideString& Destination, const WideString& Connection,
                                        uint32_t Type);
};

class KX_API TKxSensOnNowSubscriber : public TKxSensSubscriber {
  KX_CLASS(TKxSensOnNowSubscriber, TKxSensSubscriber)
public:
  using TKxSensSubscriber::TKxSensSubscriber;
  int32_t OnACPower();
  int32_t OnBatteryPower(uint32_t BatteryLifePercent);
  int32_t BatteryLow(uint32_t BatteryLifePercent);
};

} // namespace kx
