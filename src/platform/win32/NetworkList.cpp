// SPDX-License-Identifier: MIT
// The network list from the NetworkListManager COM object and its three connection points.
#include "platform/NetworkList.h"

#include "platform/Platform.h"

#include <initguid.h>

#include <windows.h>

#include <netlistmgr.h>
#include <ocidl.h>
#include <oleauto.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <cwchar>

namespace kx::platform {

namespace {

TGUID ToGuid(const GUID& G) {
  TGUID R;
  std::memcpy(&R, &G, sizeof R);
  return R;
}
GUID FromGuid(const TGUID& G) {
  GUID R;
  std::memcpy(&R, &G, sizeof R);
  return R;
}

UnicodeString FromBstr(BSTR S) {
  UnicodeString R;
  if (S) R.assign(reinterpret_cast<const char16_t*>(S), SysStringLen(S));
  SysFreeString(S);
  return R;
}

// A FILETIME in two halves, as local TDateTime; 0 stays 0.
TDateTime LocalDateTime(DWORD Low, DWORD High) {
  FILETIME Utc{Low, High}, Local{};
  if ((Low == 0 && High == 0) || !FileTimeToLocalFileTime(&Utc, &Local)) return 0;
  const uint64_t Ticks = uint64_t(Local.dwHighDateTime) << 32 | Local.dwLowDateTime;
  // 109205 days lie between 1 January 1601 and 30 December 1899.
  return double(Ticks) / 864000000000.0 - 109205.0;
}

const IID& EventsIID(TNlmEvents Events) {
  switch (Events) {
  case neManager:
    return IID_INetworkListManagerEvents;
  case neNetwork:
    return IID_INetworkEvents;
  default:
    return IID_INetworkConnectionEvents;
  }
}

// One COM object for the three event interfaces, forwarding to a sink.
class TSinkObject : public INetworkListManagerEvents,
                    public INetworkEvents,
                    public INetworkConnectionEvents {
public:
  explicit TSinkObject(TNlmSink* Sink) : FSink(Sink) {}

  ::HRESULT STDMETHODCALLTYPE QueryInterface(REFIID Riid, void** Obj) override {
    if (!Obj) return E_POINTER;
    if (IsEqualIID(Riid, IID_IUnknown) || IsEqualIID(Riid, IID_INetworkListManagerEvents))
      *Obj = static_cast<INetworkListManagerEvents*>(this);
    else if (IsEqualIID(Riid, IID_INetworkEvents))
      *Obj = static_cast<INetworkEvents*>(this);
    else if (IsEqualIID(Riid, IID_INetworkConnectionEvents))
      *Obj = static_cast<INetworkConnectionEvents*>(this);
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

  ::HRESULT STDMETHODCALLTYPE ConnectivityChanged(NLM_CONNECTIVITY C) override {
    FSink->ConnectivityChanged(uint32_t(C));
    return S_OK;
  }
  ::HRESULT STDMETHODCALLTYPE NetworkAdded(GUID Id) override {
    FSink->NetworkAdded(ToGuid(Id));
    return S_OK;
  }
  ::HRESULT STDMETHODCALLTYPE NetworkDeleted(GUID Id) override {
    FSink->NetworkDeleted(ToGuid(Id));
    return S_OK;
  }
  ::HRESULT STDMETHODCALLTYPE NetworkConnectivityChanged(GUID Id, NLM_CONNECTIVITY C) override {
    FSink->NetworkConnectivityChanged(ToGuid(Id), uint32_t(C));
    return S_OK;
  }
  ::HRESULT STDMETHODCALLTYPE NetworkPropertyChanged(GUID Id,
                                                     NLM_NETWORK_PROPERTY_CHANGE F) override {
    FSink->NetworkPropertyChanged(ToGuid(Id), uint32_t(F));
    return S_OK;
  }
  ::HRESULT STDMETHODCALLTYPE NetworkConnectionConnectivityChanged(GUID Id,
                                                                   NLM_CONNECTIVITY C) override {
    FSink->ConnectionConnectivityChanged(ToGuid(Id), uint32_t(C));
    return S_OK;
  }
  ::HRESULT STDMETHODCALLTYPE
  NetworkConnectionPropertyChanged(GUID Id, NLM_CONNECTION_PROPERTY_CHANGE F) override {
    FSink->ConnectionPropertyChanged(ToGuid(Id), uint32_t(F));
    return S_OK;
  }

private:
  virtual ~TSinkObject() = default;
  std::atomic<ULONG> FRefCount{1};
  TNlmSink* FSink;
};

::HRESULT ReadNetwork(INetwork* Net, TNlmNetworkInfo& Info) {
  GUID Id{};
  ::HRESULT Hr = Net->GetNetworkId(&Id);
  if (FAILED(Hr)) return Hr;
  Info.Id = ToGuid(Id);
  BSTR Text = nullptr;
  if (SUCCEEDED(Net->GetName(&Text))) Info.Name = FromBstr(Text);
  Text = nullptr;
  if (SUCCEEDED(Net->GetDescription(&Text))) Info.Description = FromBstr(Text);
  NLM_NETWORK_CATEGORY Category{};
  if (SUCCEEDED(Net->GetCategory(&Category))) Info.Category = uint32_t(Category);
  NLM_DOMAIN_TYPE Domain{};
  if (SUCCEEDED(Net->GetDomainType(&Domain))) Info.DomainType = uint32_t(Domain);
  NLM_CONNECTIVITY C{};
  if (SUCCEEDED(Net->GetConnectivity(&C))) Info.Connectivity = uint32_t(C);
  VARIANT_BOOL B = VARIANT_FALSE;
  if (SUCCEEDED(Net->get_IsConnected(&B))) Info.Connected = B != VARIANT_FALSE;
  B = VARIANT_FALSE;
  if (SUCCEEDED(Net->get_IsConnectedToInternet(&B))) Info.Internet = B != VARIANT_FALSE;
  DWORD CreatedLow = 0, CreatedHigh = 0, ConnectedLow = 0, ConnectedHigh = 0;
  if (SUCCEEDED(Net->GetTimeCreatedAndConnected(&CreatedLow, &CreatedHigh, &ConnectedLow,
                                                &ConnectedHigh))) {
    Info.Created = LocalDateTime(CreatedLow, CreatedHigh);
    Info.ConnectedAt = LocalDateTime(ConnectedLow, ConnectedHigh);
  }
  return S_OK;
}

UnicodeString AdapterName(const GUID& Adapter) {
  wchar_t Id[40] = {};
  StringFromGUID2(Adapter, Id, 40);
  std::wstring Key =
      L"SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\";
  Key += Id;
  Key += L"\\Connection";
  HKEY Handle = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, Key.c_str(), 0, KEY_READ, &Handle) != ERROR_SUCCESS)
    return {};
  wchar_t Name[512] = {};
  DWORD Size = sizeof Name - sizeof(wchar_t), Type = 0;
  UnicodeString R;
  if (RegQueryValueExW(Handle, L"Name", nullptr, &Type, reinterpret_cast<BYTE*>(Name), &Size) ==
          ERROR_SUCCESS &&
      (Type == REG_SZ || Type == REG_EXPAND_SZ))
    R.assign(reinterpret_cast<const char16_t*>(Name), wcsnlen(Name, Size / sizeof(wchar_t)));
  RegCloseKey(Handle);
  return R;
}

::HRESULT ReadConnection(INetworkConnection* Conn, TNlmConnectionInfo& Info) {
  GUID Id{};
  ::HRESULT Hr = Conn->GetConnectionId(&Id);
  if (FAILED(Hr)) return Hr;
  Info.Id = ToGuid(Id);
  GUID Adapter{};
  if (SUCCEEDED(Conn->GetAdapterId(&Adapter))) {
    Info.AdapterId = ToGuid(Adapter);
    Info.AdapterName = AdapterName(Adapter);
  }
  NLM_DOMAIN_TYPE Domain{};
  if (SUCCEEDED(Conn->GetDomainType(&Domain))) Info.DomainType = uint32_t(Domain);
  NLM_CONNECTIVITY C{};
  if (SUCCEEDED(Conn->GetConnectivity(&C))) Info.Connectivity = uint32_t(C);
  VARIANT_BOOL B = VARIANT_FALSE;
  if (SUCCEEDED(Conn->get_IsConnected(&B))) Info.Connected = B != VARIANT_FALSE;
  B = VARIANT_FALSE;
  if (SUCCEEDED(Conn->get_IsConnectedToInternet(&B))) Info.Internet = B != VARIANT_FALSE;
  INetwork* Net = nullptr;
  if (SUCCEEDED(Conn->GetNetwork(&Net)) && Net) {
    GUID NetId{};
    if (SUCCEEDED(Net->GetNetworkId(&NetId))) Info.NetworkId = ToGuid(NetId);
    Net->Release();
  }
  return S_OK;
}

} // namespace

struct TNlm {
  INetworkListManager* Manager = nullptr;
  bool ComStarted = false;
};

TNlm* NlmCreate(int32_t& Result) {
  auto* N = new TNlm;
  // The calling thread's COM apartment, if it has none yet.
  N->ComStarted = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
  const ::HRESULT Hr =
      CoCreateInstance(CLSID_NetworkListManager, nullptr, CLSCTX_ALL, IID_INetworkListManager,
                       reinterpret_cast<void**>(&N->Manager));
  Result = Hr;
  if (FAILED(Hr) || !N->Manager) {
    if (SUCCEEDED(Hr)) Result = E_POINTER;
    NlmFree(N);
    return nullptr;
  }
  return N;
}

void NlmFree(TNlm* Nlm) {
  if (!Nlm) return;
  if (Nlm->Manager) Nlm->Manager->Release();
  if (Nlm->ComStarted) CoUninitialize();
  delete Nlm;
}

uint32_t NlmAdvise(TNlm* Nlm, TNlmEvents Events, TNlmSink* Sink, int32_t& Result, TNlmStep& Step) {
  IConnectionPointContainer* Container = nullptr;
  ::HRESULT Hr = Nlm->Manager->QueryInterface(IID_IConnectionPointContainer,
                                              reinterpret_cast<void**>(&Container));
  if (FAILED(Hr) || !Container) return Result = Hr, Step = nsContainer, 0;
  IConnectionPoint* Point = nullptr;
  Hr = Container->FindConnectionPoint(EventsIID(Events), &Point);
  Container->Release();
  if (FAILED(Hr) || !Point) return Result = Hr, Step = nsConnectionPoint, 0;
  auto* Object = new TSinkObject(Sink);
  DWORD Cookie = 0;
  Hr = Point->Advise(static_cast<INetworkListManagerEvents*>(Object), &Cookie);
  Object->Release();
  Point->Release();
  if (FAILED(Hr) || Cookie == 0) return Result = Hr, Step = nsAdvise, 0;
  Result = S_OK;
  Step = nsNone;
  return Cookie;
}

bool NlmUnadvise(TNlm* Nlm, TNlmEvents Events, uint32_t Cookie, int32_t& Result, TNlmStep& Step) {
  IConnectionPointContainer* Container = nullptr;
  ::HRESULT Hr = Nlm->Manager->QueryInterface(IID_IConnectionPointContainer,
                                              reinterpret_cast<void**>(&Container));
  if (FAILED(Hr) || !Container) return Result = Hr, Step = nsContainer, false;
  IConnectionPoint* Point = nullptr;
  Hr = Container->FindConnectionPoint(EventsIID(Events), &Point);
  Container->Release();
  if (FAILED(Hr) || !Point) return Result = Hr, Step = nsConnectionPoint, false;
  Hr = Point->Unadvise(Cookie);
  Point->Release();
  Result = Hr;
  Step = FAILED(Hr) ? nsAdvise : nsNone;
  return SUCCEEDED(Hr);
}

int32_t NlmConnectivity(TNlm* Nlm, uint32_t& Flags) {
  NLM_CONNECTIVITY C{};
  const ::HRESULT Hr = Nlm->Manager->GetConnectivity(&C);
  Flags = SUCCEEDED(Hr) ? uint32_t(C) : 0;
  return Hr;
}

int32_t NlmNetworks(TNlm* Nlm, std::vector<TNlmNetworkInfo>& Networks) {
  IEnumNetworks* Enum = nullptr;
  ::HRESULT Hr = Nlm->Manager->GetNetworks(NLM_ENUM_NETWORK_ALL, &Enum);
  if (FAILED(Hr) || !Enum) return FAILED(Hr) ? Hr : E_POINTER;
  INetwork* Net = nullptr;
  ULONG Fetched = 0;
  while (Enum->Next(1, &Net, &Fetched) == S_OK && Net) {
    TNlmNetworkInfo Info;
    if (SUCCEEDED(ReadNetwork(Net, Info))) Networks.push_back(Info);
    Net->Release();
    Net = nullptr;
  }
  Enum->Release();
  return S_OK;
}

int32_t NlmConnections(TNlm* Nlm, std::vector<TNlmConnectionInfo>& Connections) {
  IEnumNetworkConnections* Enum = nullptr;
  ::HRESULT Hr = Nlm->Manager->GetNetworkConnections(&Enum);
  if (FAILED(Hr) || !Enum) return FAILED(Hr) ? Hr : E_POINTER;
  INetworkConnection* Conn = nullptr;
  ULONG Fetched = 0;
  while (Enum->Next(1, &Conn, &Fetched) == S_OK && Conn) {
    TNlmConnectionInfo Info;
    if (SUCCEEDED(ReadConnection(Conn, Info))) Connections.push_back(Info);
    Conn->Release();
    Conn = nullptr;
  }
  Enum->Release();
  return S_OK;
}

int32_t NlmNetwork(TNlm* Nlm, const TGUID& Id, TNlmNetworkInfo& Info) {
  INetwork* Net = nullptr;
  const ::HRESULT Hr = Nlm->Manager->GetNetwork(FromGuid(Id), &Net);
  // An unknown identifier may answer S_FALSE, or S_OK, with no object.
  if (FAILED(Hr)) return Hr;
  if (!Net) return S_FALSE;
  const ::HRESULT Read = ReadNetwork(Net, Info);
  Net->Release();
  return Read;
}

int32_t NlmConnection(TNlm* Nlm, const TGUID& Id, TNlmConnectionInfo& Info) {
  INetworkConnection* Conn = nullptr;
  const ::HRESULT Hr = Nlm->Manager->GetNetworkConnection(FromGuid(Id), &Conn);
  if (FAILED(Hr)) return Hr;
  if (!Conn) return S_FALSE;
  const ::HRESULT Read = ReadConnection(Conn, Info);
  Conn->Release();
  return Read;
}

int32_t NlmNetworkConnections(TNlm* Nlm, const TGUID& Id, std::vector<TGUID>& Connections) {
  INetwork* Net = nullptr;
  ::HRESULT Hr = Nlm->Manager->GetNetwork(FromGuid(Id), &Net);
  if (FAILED(Hr)) return Hr;
  if (!Net) return S_FALSE;
  IEnumNetworkConnections* Enum = nullptr;
  Hr = Net->GetNetworkConnections(&Enum);
  Net->Release();
  if (FAILED(Hr) || !Enum) return FAILED(Hr) ? Hr : S_OK;
  INetworkConnection* Conn = nullptr;
  ULONG Fetched = 0;
  while (Enum->Next(1, &Conn, &Fetched) == S_OK && Conn) {
    GUID C{};
    if (SUCCEEDED(Conn->GetConnectionId(&C))) Connections.push_back(ToGuid(C));
    Conn->Release();
    Conn = nullptr;
  }
  Enum->Release();
  return S_OK;
}

int32_t NlmSetNetwork(TNlm* Nlm, const TGUID& Id, int What, const UnicodeString& Text,
                      uint32_t Value) {
  INetwork* Net = nullptr;
  ::HRESULT Hr = Nlm->Manager->GetNetwork(FromGuid(Id), &Net);
  if (FAILED(Hr)) return Hr;
  if (!Net) return S_FALSE;
  if (What == 2) {
    Hr = Net->SetCategory(NLM_NETWORK_CATEGORY(Value));
  } else {
    BSTR S = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(Text.data()), UINT(Text.size()));
    Hr = What == 0 ? Net->SetName(S) : Net->SetDescription(S);
    SysFreeString(S);
  }
  Net->Release();
  return Hr;
}

AnsiString NlmErrorText(int32_t Result) {
  AnsiString Text = ErrorMessage(uint32_t(Result));
  // Not every result has a system text (COM's own codes often have none).
  if (Text.empty()) {
    char Buffer[32];
    std::snprintf(Buffer, sizeof Buffer, "OLE error %.8x", unsigned(Result));
    Text = Buffer;
  }
  return Text;
}

} // namespace kx::platform
