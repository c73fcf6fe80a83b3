// SPDX-License-Identifier: MIT
#include <kx/events/SystemEvents.h>
#include <kx/rtl/Exceptions.h>

#include "platform/SystemEvents.h"

namespace kx {

KX_IMPLEMENT_CLASS(TKxSENS, TComponent, "uKxSystemEvents")
KX_IMPLEMENT_CLASS(TKxSensSubscriber, TComponent, "uKxSystemEvents")
KX_IMPLEMENT_CLASS(TKxSensLogon, TKxSENS, "uKxSystemEvents")
KX_IMPLEMENT_CLASS(TKxSensNetwork, TKxSENS, "uKxSystemEvents")
KX_IMPLEMENT_CLASS(TKxSensOnNow, TKxSENS, "uKxSystemEvents")
KX_IMPLEMENT_CLASS(TKxSensLogonSubscriber, TKxSensSubscriber, "uKxSystemEvents")
KX_IMPLEMENT_CLASS(TKxSensNetworkSubscriber, TKxSensSubscriber, "uKxSystemEvents")
KX_IMPLEMENT_CLASS(TKxSensOnNowSubscriber, TKxSensSubscriber, "uKxSystemEvents")

namespace {

constexpr const char* UnitPath = "source\\ComponentSets\\Components\\common\\uKxSystemEvents";
constexpr int32_t E_NOTIMPL_ = int32_t(0x80004001u);

TKxSensNetworkConnectionType ConnectionType(uint32_t Type) {
  return Type == platform::NETWORK_ALIVE_WAN_ ? ctWAN : ctLAN;
}

// Calls the owner when there still is one; a handler's exception is not the event
// system's business.
template <class T, class F>
int32_t Forward(TKxSENS* Sens, F&& Call) {
  if (auto* Owner = dynamic_cast<T*>(Sens)) {
    try {
      Call(Owner);
    } catch (...) {
    }
  }
  return 0;
}

} // namespace

namespace detail {

struct TSensState {
  platform::TSensSubscription* Subscription = nullptr;
  TKxSensSubscriber* Subscriber = nullptr;
};

// The platform's view of a subscriber: its sink methods and its reference count.
struct TSensCallsAdapter : platform::TSensCalls {
  TKxSensSubscriber* Subscriber = nullptr;

  template <class T>
  T* As() const {
    return dynamic_cast<T*>(Subscriber);
  }
  int32_t Logon(const UnicodeString& U) override {
    auto* S = As<TKxSensLogonSubscriber>();
    return S ? S->Logon(U) : 0;
  }
  int32_t Logoff(const UnicodeString& U) override {
    auto* S = As<TKxSensLogonSubscriber>();
    return S ? S->Logoff(U) : 0;
  }
  int32_t StartShell(const UnicodeString& U) override {
    auto* S = As<TKxSensLogonSubscriber>();
    return S ? S->StartShell(U) : 0;
  }
  int32_t DisplayLock(const UnicodeString& U) override {
    auto* S = As<TKxSensLogonSubscriber>();
    return S ? S->DisplayLock(U) : 0;
  }
  int32_t DisplayUnlock(const UnicodeString& U) override {
    auto* S = As<TKxSensLogonSubscriber>();
    return S ? S->DisplayUnlock(U) : 0;
  }
  int32_t StartScreenSaver(const UnicodeString& U) override {
    auto* S = As<TKxSensLogonSubscriber>();
    return S ? S->StartScreenSaver(U) : 0;
  }
  int32_t StopScreenSaver(const UnicodeString& U) override {
    auto* S = As<TKxSensLogonSubscriber>();
    return S ? S->StopScreenSaver(U) : 0;
  }
  int32_t ConnectionMade(const UnicodeString& C, uint32_t T, uint32_t In, uint32_t Out) override {
    auto* S = As<TKxSensNetworkSubscriber>();
    return S ? S->ConnectionMade(C, T, In, Out) : 0;
  }
  int32_t ConnectionMadeNoQOCInfo(const UnicodeString& C, uint32_t T) override {
    auto* S = As<TKxSensNetworkSubscriber>();
    return S ? S->ConnectionMadeNoQOCInfo(C, T) : 0;
  }
  int32_t ConnectionLost(const UnicodeString& C, uint32_t T) override {
    auto* S = As<TKxSensNetworkSubscriber>();
    return S ? S->ConnectionLost(C, T) : 0;
  }
  int32_t OnACPower() override {
    auto* S = As<TKxSensOnNowSubscriber>();
    return S ? S->OnACPower() : 0;
  }
  int32_t OnBatteryPower(uint32_t P) override {
    auto* S = As<TKxSensOnNowSubscriber>();
    return S ? S->OnBatteryPower(P) : 0;
  }
  int32_t BatteryLow(uint32_t P) override {
    auto* S = As<TKxSensOnNowSubscriber>();
    return S ? S->BatteryLow(P) : 0;
  }
  void AddRef() override { Subscriber->_AddRef(); }
  void Release() override { Subscriber->_Release(); }
};

} // namespace detail

// --- TKxSENS ---------------------------------------------------------------------------

TKxSENS::TKxSENS(TComponent* AOwner)
    : TComponent(AOwner), FSubscriptionID(platform::SensNewGuid()) {}

TKxSENS::~TKxSENS() {
  delete FState;
}

void TKxSENS::BeforeDestruction() {
  if (FActive) {
    try {
      Unsubscribe();
    } catch (const Exception&) {
      // The subscription dies with the process; the component goes anyway.
    }
  }
  inherited::BeforeDestruction();
}

void TKxSENS::SetActive(bool Value) {
  if (Value == FActive) return;
  if (Value)
    Subscribe();
  else
    Unsubscribe();
}

void TKxSENS::Subscribe() {
  KxAssert(!FActive, SKxSensAlreadyActive, UnitPath, __LINE__);
  TKxSensSubscriber* Subscriber = CreateSubscriber();
  int32_t Result = 0;
  platform::TSensSubscription* Subscription = platform::SensSubscribe(
      GetEventClass(), FSubscriptionID, ClassName() + " Subscription", Subscriber->Calls(), Result);
  if (!Subscription) {
    Subscriber->_Release();
    throw EOleSysError(platform::SensErrorText(Result), Result);
  }
  if (!FState) FState = new detail::TSensState;
  FState->Subscription = Subscription;
  FState->Subscriber = Subscriber;
  FActive = true;
}

void TKxSENS::Unsubscribe() {
  KxAssert(FActive, SKxSensNotActive, UnitPath, __LINE__);
  const int32_t Result = platform::SensUnsubscribe(FState->Subscription, FSubscriptionID);
  FState->Subscription = nullptr;
  TKxSensSubscriber* Subscriber = std::exchange(FState->Subscriber, nullptr);
  FActive = false;
  if (Subscriber) Subscriber->_Release();
  if (Result < 0) throw EOleSysError(platform::SensErrorText(Result), Result);
}

// --- TKxSensSubscriber -----------------------------------------------------------------

TKxSensSubscriber::TKxSensSubscriber(TKxSENS* AOwner) : TComponent(nullptr), FSens(AOwner) {
  FCalls = new detail::TSensCallsAdapter;
  FCalls->Subscriber = this;
  if (AOwner) AOwner->FreeNotification(this);
}

TKxSensSubscriber::~TKxSensSubscriber() {
  delete FCalls;
}

int32_t TKxSensSubscriber::_AddRef() {
  return ++FRefCount;
}

int32_t TKxSensSubscriber::_Release() {
  const int32_t R = --FRefCount;
  if (R == 0) Free();
  return R;
}

void TKxSensSubscriber::Notification(TComponent* AComponent, TOperation Operation) {
  inherited::Notification(AComponent, Operation);
  if (Operation == opRemove && AComponent == FSens.load()) FSens.store(nullptr);
}

void TKxSensSubscriber::ValidateDestruction() {
  KxAssert(FRefCount.load() == 0, SKxSensRefCountNotZero, UnitPath, __LINE__);
}

// --- the components' events ------------------------------------------------------------

TKxSensSubscriber* TKxSensLogon::CreateSubscriber() {
  return TKxSensLogonSubscriber::Create(this);
}
TKxSensSubscriber* TKxSensNetwork::CreateSubscriber() {
  return TKxSensNetworkSubscriber::Create(this);
}
TKxSensSubscriber* TKxSensOnNow::CreateSubscriber() {
  return TKxSensOnNowSubscriber::Create(this);
}

void TKxSensLogon::DoLogon(const WideString& U) {
  if (OnLogon) OnLogon(this, U);
}
void TKxSensLogon::DoLogoff(const WideString& U) {
  if (OnLogoff) OnLogoff(this, U);
}
void TKxSensLogon::DoStartShell(const WideString& U) {
  if (OnStartShell) OnStartShell(this, U);
}
void TKxSensLogon::DoDisplayLock(const WideString& U) {
  if (OnDisplayLock) OnDisplayLock(this, U);
}
void TKxSensLogon::DoDisplayUnlock(const WideString& U) {
  if (OnDisplayUnlock) OnDisplayUnlock(this, U);
}
void TKxSensLogon::DoStartScreenSaver(const WideString& U) {
  if (OnStartScreenSaver) OnStartScreenSaver(this, U);
}
void TKxSensLogon::DoStopScreenSaver(const WideString& U) {
  if (OnStopScreenSaver) OnStopScreenSaver(this, U);
}

void TKxSensNetwork::DoConnectionMade(const WideString& C, TKxSensNetworkConnectionType T,
                                      uint32_t In, uint32_t Out) {
  if (OnConnectionMade) OnConnectionMade(this, C, T, In, Out);
}
void TKxSensNetwork::DoConnectionMadeNoQOCInfo(const WideString& C,
                                               TKxSensNetworkConnectionType T) {
  if (OnConnectionMadeNoQOC) OnConnectionMadeNoQOC(this, C, T);
}
void TKxSensNetwork::DoConnectionLost(const WideString& C, TKxSensNetworkConnectionType T) {
  if (OnConnectionLost) OnConnectionLost(this, C, T);
}

void TKxSensOnNow::DoOnACPower() {
  if (OnACPower) OnACPower(this);
}
void TKxSensOnNow::DoOnBatteryPower(uint32_t P) {
  if (OnBatteryPower) OnBatteryPower(this, P);
}
void TKxSensOnNow::DoBatteryLow(uint32_t P) {
  if (OnBatteryLow) OnBatteryLow(this, P);
}

// --- the subscribers' sink methods -----------------------------------------------------

int32_t TKxSensLogonSubscriber::Logon(const WideString& U) {
  return Forward<TKxSensLogon>(Sens(), [&](TKxSensLogon* S) { S->DoLogon(U); });
}
int32_t TKxSensLogonSubscriber::Logoff(const WideString& U) {
  return Forward<TKxSensLogon>(Sens(), [&](TKxSensLogon* S) { S->DoLogoff(U); });
}
int32_t TKxSensLogonSubscriber::StartShell(const WideString& U) {
  return Forward<TKxSensLogon>(Sens(), [&](TKxSensLogon* S) { S->DoStartShell(U); });
}
int32_t TKxSensLogonSubscriber::DisplayLock(const WideString& U) {
  return Forward<TKxSensLogon>(Sens(), [&](TKxSensLogon* S) { S->DoDisplayLock(U); });
}
int32_t TKxSensLogonSubscriber::DisplayUnlock(const WideString& U) {
  return Forward<TKxSensLogon>(Sens(), [&](TKxSensLogon* S) { S->DoDisplayUnlock(U); });
}
int32_t TKxSensLogonSubscriber::StartScreenSaver(const WideString& U) {
  return Forward<TKxSensLogon>(Sens(), [&](TKxSensLogon* S) { S->DoStartScreenSaver(U); });
}
int32_t TKxSensLogonSubscriber::StopScreenSaver(const WideString& U) {
  return Forward<TKxSensLogon>(Sens(), [&](TKxSensLogon* S) { S->DoStopScreenSaver(U); });
}

int32_t TKxSensNetworkSubscriber::ConnectionMade(const WideString& C, uint32_t T, uint32_t In,
                                                 uint32_t Out) {
  return Forward<TKxSensNetwork>(
      Sens(), [&](TKxSensNetwork* S) { S->DoConnectionMade(C, ConnectionType(T), In, Out); });
}
int32_t TKxSensNetworkSubscriber::ConnectionMadeNoQOCInfo(const WideString& C, uint32_t T) {
  return Forward<TKxSensNetwork>(
      Sens(), [&](TKxSensNetwork* S) { S->DoConnectionMadeNoQOCInfo(C, ConnectionType(T)); });
}
int32_t TKxSensNetworkSubscriber::ConnectionLost(const WideString& C, uint32_t T) {
  return Forward<TKxSensNetwork>(
      Sens(), [&](TKxSensNetwork* S) { S->DoConnectionLost(C, ConnectionType(T)); });
}
int32_t TKxSensNetworkSubscriber::DestinationReachable(const WideString&, const WideString&,
                                                       uint32_t) {
  return E_NOTIMPL_;
}
int32_t TKxSensNetworkSubscriber::DestinationReachableNoQOCInfo(const WideString&,
                                                                const WideString&, uint32_t) {
  return E_NOTIMPL_;
}

int32_t TKxSensOnNowSubscriber::OnACPower() {
  return Forward<TKxSensOnNow>(Sens(), [&](TKxSensOnNow* S) { S->DoOnACPower(); });
}
int32_t TKxSensOnNowSubscriber::OnBatteryPower(uint32_t P) {
  return Forward<TKxSensOnNow>(Sens(), [&](TKxSensOnNow* S) { S->DoOnBatteryPower(P); });
}
int32_t TKxSensOnNowSubscriber::BatteryLow(uint32_t P) {
  return Forward<TKxSensOnNow>(Sens(), [&](TKxSensOnNow* S) { S->DoBatteryLow(P); });
}

} // namespace kx
