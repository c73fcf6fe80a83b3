// SPDX-License-Identifier: MIT
// Transient subscriptions in the COM+ event system: an EventSystem.EventSubscription whose
// SubscriberInterface is a live COM object for ISensLogon, ISensNetwork or ISensOnNow, stored
// with and removed from EventSystem.EventSystem.
#include "platform/SystemEvents.h"

#include "platform/Platform.h"

#include <windows.h>

#include <eventsys.h>
#include <objbase.h>
#include <oleauto.h>
#include <sensevts.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>

namespace kx::platform {

namespace {

// The published interface identifiers, which the import libraries do not carry.
constexpr GUID IID_IEventSystem_ = {
    0x4E14FB9F, 0x2E22, 0x11D1, {0x99, 0x64, 0x00, 0xC0, 0x4F, 0xBB, 0xB3, 0x45}};
constexpr GUID IID_IEventSubscription_ = {
    0x4A6B0E15, 0x2E38, 0x11D1, {0x99, 0x65, 0x00, 0xC0, 0x4F, 0xBB, 0xB3, 0x45}};
constexpr GUID IID_ISensNetwork_ = {
    0xD597BAB1, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};
constexpr GUID IID_ISensOnNow_ = {
    0xD597BAB2, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};
constexpr GUID IID_ISensLogon_ = {
    0xD597BAB3, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};
constexpr GUID LogonClass = {
    0xD5978630, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};
constexpr GUID NetworkClass = {
    0xD5978620, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};

UnicodeString Text(BSTR S) {
  return S ? UnicodeString(reinterpret_cast<const char16_t*>(S), SysStringLen(S)) : UnicodeString();
}

// A BSTR that frees itself.
struct TBstr {
  BSTR S;
  explicit TBstr(const std::wstring& W) : S(SysAllocStringLen(W.data(), UINT(W.size()))) {}
  ~TBstr() { SysFreeString(S); }
};

std::wstring GuidText(const GUID& G) {
  wchar_t Buffer[40] = {};
  StringFromGUID2(G, Buffer, 40);
  return Buffer;
}

// The subscriber object: one class for the three sink interfaces; the event system asks for
// the one of the subscription's event class.
class TSubscriber : public ISensLogon, public ISensNetwork, public ISensOnNow {
public:
  explicit TSubscriber(TSensCalls* Calls) : FCalls(Calls) { FCalls->AddRef(); }

  ::HRESULT STDMETHODCALLTYPE QueryInterface(REFIID Riid, void** Obj) override {
    if (!Obj) return E_POINTER;
    if (IsEqualIID(Riid, IID_IUnknown) || IsEqualIID(Riid, IID_IDispatch) ||
        IsEqualIID(Riid, IID_ISensLogon_))
      *Obj = static_cast<ISensLogon*>(this);
    else if (IsEqualIID(Riid, IID_ISensNetwork_))
      *Obj = static_cast<ISensNetwork*>(this);
    else if (IsEqualIID(Riid, IID_ISensOnNow_))
      *Obj = static_cast<ISensOnNow*>(this);
    else
      return *Obj = nullptr, E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++FRefCount; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG R = --FRefCount;
    if (R == 0) delete this;
    return R;
  }
  // The event system calls the sink through its vtable; late binding is not offered.
  ::HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* Count) override {
    if (Count) *Count = 0;
    return S_OK;
  }
  ::HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  ::HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  ::HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
    return E_NOTIMPL;
  }

  ::HRESULT STDMETHODCALLTYPE Logon(BSTR U) override { return FCalls->Logon(Text(U)); }
  ::HRESULT STDMETHODCALLTYPE Logoff(BSTR U) override { return FCalls->Logoff(Text(U)); }
  ::HRESULT STDMETHODCALLTYPE StartShell(BSTR U) override { return FCalls->StartShell(Text(U)); }
  ::HRESULT STDMETHODCALLTYPE DisplayLock(BSTR U) override { return FCalls->DisplayLock(Text(U)); }
  ::HRESULT STDMETHODCALLTYPE DisplayUnlock(BSTR U) override {
    return FCalls->DisplayUnlock(Text(U));
  }
  ::HRESULT STDMETHODCALLTYPE StartScreenSaver(BSTR U) override {
    return FCalls->StartScreenSaver(Text(U));
  }
  ::HRESULT STDMETHODCALLTYPE StopScreenSaver(BSTR U) override {
    return FCalls->StopScreenSaver(Text(U));
  }
  ::HRESULT STDMETHODCALLTYPE ConnectionMade(BSTR C, ULONG T, LPSENS_QOCINFO Q) override {
    return FCalls->ConnectionMade(Text(C), T, Q ? Q->dwInSpeed : 0, Q ? Q->dwOutSpeed : 0);
  }
  ::HRESULT STDMETHODCALLTYPE ConnectionMadeNoQOCInfo(BSTR C, ULONG T) override {
    return FCalls->ConnectionMadeNoQOCInfo(Text(C), T);
  }
  ::HRESULT STDMETHODCALLTYPE ConnectionLost(BSTR C, ULONG T) override {
    return FCalls->ConnectionLost(Text(C), T);
  }
  ::HRESULT STDMETHODCALLTYPE DestinationReachable(BSTR, BSTR, ULONG, LPSENS_QOCINFO) override {
    return E_NOTIMPL;
  }
  ::HRESULT STDMETHODCALLTYPE DestinationReachableNoQOCInfo(BSTR, BSTR, ULONG) override {
    return E_NOTIMPL;
  }
  ::HRESULT STDMETHODCALLTYPE OnACPower() override { return FCalls->OnACPower(); }
  ::HRESULT STDMETHODCALLTYPE OnBatteryPower(DWORD P) override { return FCalls->OnBatteryPower(P); }
  ::HRESULT STDMETHODCALLTYPE BatteryLow(DWORD P) override { return FCalls->BatteryLow(P); }

private:
  virtual ~TSubscriber() { FCalls->Release(); }
  std::atomic<ULONG> FRefCount{1};
  TSensCalls* FCalls;
};

::HRESULT CreateByProgId(const wchar_t* ProgId, const GUID& Iid, void** Obj) {
  CLSID Clsid{};
  const ::HRESULT Hr = CLSIDFromProgID(ProgId, &Clsid);
  if (FAILED(Hr)) return Hr;
  return CoCreateInstance(Clsid, nullptr, CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER, Iid, Obj);
}

} // namespace

struct TSensSubscription {
  bool ComStarted = false;
};

TSensSubscription* SensSubscribe(const TGUID& EventClass, const TGUID& SubscriptionId,
                                 const AnsiString& Description, TSensCalls* Calls,
                                 int32_t& Result) {
  auto* S = new TSensSubscription;
  S->ComStarted = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
  GUID Class, Id;
  std::memcpy(&Class, &EventClass, sizeof Class);
  std::memcpy(&Id, &SubscriptionId, sizeof Id);
  IEventSubscription* Sub = nullptr;
  ::HRESULT Hr = CreateByProgId(L"EventSystem.EventSubscription", IID_IEventSubscription_,
                                reinterpret_cast<void**>(&Sub));
  auto Step = [&](::HRESULT R) {
    if (SUCCEEDED(Hr)) Hr = R;
  };
  if (SUCCEEDED(Hr)) {
    const std::wstring Desc(Description.begin(), Description.end());
    Step(Sub->put_Description(TBstr(Desc + L"").S));
    Step(Sub->put_Enabled(TRUE));
    Step(Sub->put_EventClassID(TBstr(GuidText(Class)).S));
    Step(Sub->put_InterfaceID(TBstr(L"").S));
    Step(Sub->put_MachineName(TBstr(L"").S));
    Step(Sub->put_MethodName(TBstr(L"").S));
    Step(Sub->put_PerUser(TRUE));
    Step(Sub->put_PublisherID(TBstr(L"").S));
    Step(Sub->put_SubscriberCLSID(TBstr(L"").S));
    if (SUCCEEDED(Hr)) {
      auto* Object = new TSubscriber(Calls);
      IUnknown* Sink = IsEqualGUID(Class, LogonClass) ? static_cast<ISensLogon*>(Object)
                       : IsEqualGUID(Class, NetworkClass)
                           ? static_cast<IUnknown*>(static_cast<ISensNetwork*>(Object))
                           : static_cast<ISensOnNow*>(Object);
      Step(Sub->put_SubscriberInterface(Sink));
      Object->Release();
    }
    Step(Sub->put_SubscriptionID(TBstr(GuidText(Id)).S));
    Step(Sub->put_SubscriptionName(TBstr(L"SENS Client").S));
  }
  if (SUCCEEDED(Hr)) {
    IEventSystem* System = nullptr;
    Hr = CreateByProgId(L"EventSystem.EventSystem", IID_IEventSystem_,
                        reinterpret_cast<void**>(&System));
    if (SUCCEEDED(Hr)) {
      Hr = System->Store(TBstr(L"EventSystem.EventSubscription").S, Sub);
      System->Release();
    }
  }
  if (Sub) Sub->Release();
  Result = Hr;
  if (SUCCEEDED(Hr)) return S;
  if (S->ComStarted) CoUninitialize();
  delete S;
  return nullptr;
}

int32_t SensUnsubscribe(TSensSubscription* Subscription, const TGUID& SubscriptionId) {
  GUID Id;
  std::memcpy(&Id, &SubscriptionId, sizeof Id);
  IEventSystem* System = nullptr;
  ::HRESULT Hr = CreateByProgId(L"EventSystem.EventSystem", IID_IEventSystem_,
                                reinterpret_cast<void**>(&System));
  if (SUCCEEDED(Hr)) {
    int ErrorIndex = 0;
    Hr = System->Remove(TBstr(L"EventSystem.EventSubscription").S,
                        TBstr(L"SubscriptionID == " + GuidText(Id)).S, &ErrorIndex);
    System->Release();
  }
  if (Subscription && Subscription->ComStarted) CoUninitialize();
  delete Subscription;
  return Hr;
}

AnsiString SensErrorText(int32_t Result) {
  AnsiString Text = ErrorMessage(uint32_t(Result));
  // Not every result has a system text (COM's own codes often have none).
  if (Text.empty()) {
    char Buffer[32];
    std::snprintf(Buffer, sizeof Buffer, "OLE error %.8x", unsigned(Result));
    Text = Buffer;
  }
  return Text;
}

TGUID SensNewGuid() {
  GUID G{};
  CoCreateGuid(&G);
  TGUID R;
  std::memcpy(&R, &G, sizeof R);
  return R;
}

} // namespace kx::platform
