// SPDX-License-Identifier: MIT
// Logon, network and power notifications from the system bus. Logon: logind's SessionNew
// (logon), SessionRemoved (logoff) and a session's Lock and Unlock (display lock and unlock),
// with the session's user name. Network: NetworkManager's StateChanged crossing "connected"
// (50) either way, with the primary (else the first active) connection's name; its type
// decides LAN or WAN, and a wired device's speed, when known, makes the quality-of-connection
// call. Power: UPower's OnBattery (AC or battery power) and its display device's WarningLevel
// reaching low (battery low), with the display device's charge in percent. Shell start and
// screen savers have no source here.
#include "platform/SystemEvents.h"

#include "platform/Platform.h"
#include "platform/posix/SystemBus.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>

namespace kx::platform {

namespace {

constexpr const char* Login1 = "org.freedesktop.login1";
constexpr const char* Login1Path = "/org/freedesktop/login1";
constexpr const char* Login1Manager = "org.freedesktop.login1.Manager";
constexpr const char* Login1Session = "org.freedesktop.login1.Session";
constexpr const char* NM = "org.freedesktop.NetworkManager";
constexpr const char* NMPath = "/org/freedesktop/NetworkManager";
constexpr const char* NMActive = "org.freedesktop.NetworkManager.Connection.Active";
constexpr const char* NMWired = "org.freedesktop.NetworkManager.Device.Wired";
constexpr const char* UPower = "org.freedesktop.UPower";
constexpr const char* UPowerPath = "/org/freedesktop/UPower";
constexpr const char* UPowerDisplay = "/org/freedesktop/UPower/devices/DisplayDevice";
constexpr const char* UPowerDevice = "org.freedesktop.UPower.Device";
constexpr const char* Properties = "org.freedesktop.DBus.Properties";

constexpr uint32_t NMConnectedLocal = 50;
constexpr uint32_t UPowerWarningLow = 3;

int32_t FromErrno(int NegativeErrno) {
  return int32_t(0x80070000u | (uint32_t(-NegativeErrno) & 0xFFFFu));
}

UnicodeString Utf16(const char* S) {
  UnicodeString R;
  const std::string Text = S ? S : "";
  for (size_t I = 0; I < Text.size();) {
    uint32_t C = uint8_t(Text[I]);
    const size_t Len = C < 0x80 ? 1 : C < 0xE0 ? 2 : C < 0xF0 ? 3 : 4;
    if (I + Len > Text.size()) break;
    if (Len > 1) {
      C &= 0xFFu >> (Len + 1);
      for (size_t K = 1; K < Len; ++K) C = (C << 6) | (uint8_t(Text[I + K]) & 0x3Fu);
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

std::string StringProperty(sd_bus* Bus, const char* Service, const char* Path,
                           const char* Interface, const char* Name, char Type = 's') {
  sd_bus_message* Reply = nullptr;
  const char Signature[2] = {Type, 0};
  std::string R;
  const char* Text = nullptr;
  if (sd_bus_get_property(Bus, Service, Path, Interface, Name, nullptr, &Reply, Signature) >= 0 &&
      sd_bus_message_read_basic(Reply, Type, &Text) >= 0 && Text)
    R = Text;
  sd_bus_message_unref(Reply);
  return R;
}

} // namespace

struct TSensSubscription {
  std::shared_ptr<TBusThread> Bus;
  TSensCalls* Calls = nullptr;
  // Bus thread only.
  std::map<std::string, std::string> SessionUsers;
  bool Connected = false;
  std::string Connection;
  uint32_t ConnectionType = NETWORK_ALIVE_LAN_;
  bool OnBattery = false;
  uint32_t WarningLevel = 0;

  ~TSensSubscription() {
    if (Bus) Bus->Stop();
    if (Calls) Calls->Release();
  }

  std::string SessionUser(const char* Path) {
    std::string User = StringProperty(Bus->Bus(), Login1, Path, Login1Session, "Name");
    if (User.empty()) {
      if (auto It = SessionUsers.find(Path); It != SessionUsers.end()) User = It->second;
    } else {
      SessionUsers[Path] = User;
    }
    return User;
  }

  uint32_t Percentage() {
    double P = 0;
    sd_bus_get_property_trivial(Bus->Bus(), UPower, UPowerDisplay, UPowerDevice, "Percentage",
                                nullptr, 'd', &P);
    return P > 0 ? uint32_t(std::lround(P)) : 0;
  }

  void ReadPrimaryConnection() {
    sd_bus* B = Bus->Bus();
    std::string Active = StringProperty(B, NM, NMPath, NM, "PrimaryConnection", 'o');
    if (Active.empty() || Active == "/") {
      sd_bus_message* Reply = nullptr;
      const char* First = nullptr;
      if (sd_bus_get_property(B, NM, NMPath, NM, "ActiveConnections", nullptr, &Reply, "ao") >= 0 &&
          sd_bus_message_enter_container(Reply, 'a', "o") >= 0 &&
          sd_bus_message_read_basic(Reply, 'o', &First) > 0 && First)
        Active = First;
      sd_bus_message_unref(Reply);
    }
    if (Active.empty() || Active == "/") return;
    Connection = StringProperty(B, NM, Active.c_str(), NMActive, "Id");
    const std::string Type = StringProperty(B, NM, Active.c_str(), NMActive, "Type");
    ConnectionType =
        Type == "gsm" || Type == "cdma" || Type == "pppoe" || Type == "vpn" || Type == "wireguard"
            ? NETWORK_ALIVE_WAN_
            : NETWORK_ALIVE_LAN_;
  }

  // A wired device's speed in bits per second, 0 when unknown.
  uint32_t Speed() {
    sd_bus* B = Bus->Bus();
    sd_bus_message* Reply = nullptr;
    const char* Device = nullptr;
    uint32_t Mbps = 0;
    std::string Active = StringProperty(B, NM, NMPath, NM, "PrimaryConnection", 'o');
    if (!Active.empty() && Active != "/" &&
        sd_bus_get_property(B, NM, Active.c_str(), NMActive, "Devices", nullptr, &Reply, "ao") >=
            0 &&
        sd_bus_message_enter_container(Reply, 'a', "o") >= 0 &&
        sd_bus_message_read_basic(Reply, 'o', &Device) > 0 && Device)
      sd_bus_get_property_trivial(B, NM, Device, NMWired, "Speed", nullptr, 'u', &Mbps);
    sd_bus_message_unref(Reply);
    return Mbps >= 4294 ? 0xFFFFFFFFu : Mbps * 1000000u;
  }
};

namespace {

TSensSubscription* Of(void* UserData) {
  return static_cast<TSensSubscription*>(UserData);
}

int OnSessionNew(sd_bus_message* M, void* UserData, sd_bus_error*) {
  const char *Id = nullptr, *Path = nullptr;
  if (sd_bus_message_read(M, "so", &Id, &Path) >= 0)
    Of(UserData)->Calls->Logon(Utf16(Of(UserData)->SessionUser(Path).c_str()));
  return 0;
}

int OnSessionRemoved(sd_bus_message* M, void* UserData, sd_bus_error*) {
  const char *Id = nullptr, *Path = nullptr;
  if (sd_bus_message_read(M, "so", &Id, &Path) >= 0) {
    auto* S = Of(UserData);
    const std::string User = S->SessionUser(Path);
    S->SessionUsers.erase(Path);
    S->Calls->Logoff(Utf16(User.c_str()));
  }
  return 0;
}

int OnLock(sd_bus_message* M, void* UserData, sd_bus_error*) {
  if (const char* Path = sd_bus_message_get_path(M))
    Of(UserData)->Calls->DisplayLock(Utf16(Of(UserData)->SessionUser(Path).c_str()));
  return 0;
}

int OnUnlock(sd_bus_message* M, void* UserData, sd_bus_error*) {
  if (const char* Path = sd_bus_message_get_path(M))
    Of(UserData)->Calls->DisplayUnlock(Utf16(Of(UserData)->SessionUser(Path).c_str()));
  return 0;
}

int OnNetworkState(sd_bus_message* M, void* UserData, sd_bus_error*) {
  uint32_t State = 0;
  if (sd_bus_message_read(M, "u", &State) < 0) return 0;
  auto* S = Of(UserData);
  const bool Connected = State >= NMConnectedLocal;
  if (Connected == S->Connected) return 0;
  S->Connected = Connected;
  if (Connected) {
    S->ReadPrimaryConnection();
    const uint32_t Speed = S->Speed();
    if (Speed)
      S->Calls->ConnectionMade(Utf16(S->Connection.c_str()), S->ConnectionType, Speed, Speed);
    else
      S->Calls->ConnectionMadeNoQOCInfo(Utf16(S->Connection.c_str()), S->ConnectionType);
  } else {
    S->Calls->ConnectionLost(Utf16(S->Connection.c_str()), S->ConnectionType);
  }
  return 0;
}

// The names in a PropertiesChanged's a{sv}, with OnBattery's and WarningLevel's values.
void ReadChanges(sd_bus_message* M, int& OnBattery, int64_t& WarningLevel) {
  if (sd_bus_message_enter_container(M, 'a', "{sv}") < 0) return;
  while (sd_bus_message_enter_container(M, 'e', "sv") > 0) {
    const char* Name = nullptr;
    if (sd_bus_message_read(M, "s", &Name) < 0) break;
    int R;
    if (std::strcmp(Name, "OnBattery") == 0) {
      int B = 0;
      R = sd_bus_message_read(M, "v", "b", &B);
      if (R >= 0) OnBattery = B;
    } else if (std::strcmp(Name, "WarningLevel") == 0) {
      uint32_t W = 0;
      R = sd_bus_message_read(M, "v", "u", &W);
      if (R >= 0) WarningLevel = W;
    } else {
      R = sd_bus_message_skip(M, "v");
    }
    if (R < 0 || sd_bus_message_exit_container(M) < 0) break;
  }
}

int OnPowerProperties(sd_bus_message* M, void* UserData, sd_bus_error*) {
  const char* Interface = nullptr;
  if (sd_bus_message_read(M, "s", &Interface) < 0) return 0;
  int OnBattery = -1;
  int64_t WarningLevel = -1;
  ReadChanges(M, OnBattery, WarningLevel);
  auto* S = Of(UserData);
  if (OnBattery >= 0 && bool(OnBattery) != S->OnBattery) {
    S->OnBattery = OnBattery;
    if (OnBattery)
      S->Calls->OnBatteryPower(S->Percentage());
    else
      S->Calls->OnACPower();
  }
  if (WarningLevel >= 0) {
    const uint32_t Old = std::exchange(S->WarningLevel, uint32_t(WarningLevel));
    if (WarningLevel >= UPowerWarningLow && Old < UPowerWarningLow)
      S->Calls->BatteryLow(S->Percentage());
  }
  return 0;
}

bool SameGuid(const TGUID& A, const TGUID& B) {
  return std::memcmp(&A, &B, sizeof A) == 0;
}

constexpr TGUID LogonClass = {
    0xD5978630, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};
constexpr TGUID NetworkClass = {
    0xD5978620, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};
constexpr TGUID OnNowClass = {
    0xD5978640, 0x5B9F, 0x11D1, {0x8D, 0xD2, 0x00, 0xAA, 0x00, 0x4A, 0xBD, 0x5E}};

} // namespace

TSensSubscription* SensSubscribe(const TGUID& EventClass, const TGUID&, const AnsiString&,
                                 TSensCalls* Calls, int32_t& Result) {
  auto S = std::make_unique<TSensSubscription>();
  auto Bus = std::make_shared<TBusThread>();
  if (!Bus->Open()) return Result = FromErrno(-int(LastError())), nullptr;
  void* U = S.get();
  bool Ok;
  if (SameGuid(EventClass, LogonClass)) {
    Ok = Bus->MatchSignal(Login1, Login1Path, Login1Manager, "SessionNew", &OnSessionNew, U) &&
         Bus->MatchSignal(Login1, Login1Path, Login1Manager, "SessionRemoved", &OnSessionRemoved,
                          U) &&
         Bus->MatchSignal(Login1, nullptr, Login1Session, "Lock", &OnLock, U) &&
         Bus->MatchSignal(Login1, nullptr, Login1Session, "Unlock", &OnUnlock, U);
  } else if (SameGuid(EventClass, NetworkClass)) {
    Ok = Bus->MatchSignal(NM, nullptr, NM, "StateChanged", &OnNetworkState, U);
    // Not tied to the manager's path: some versions (and mocks) send it from their root.
    uint32_t State = 0;
    sd_bus_get_property_trivial(Bus->Bus(), NM, NMPath, NM, "State", nullptr, 'u', &State);
    S->Connected = State >= NMConnectedLocal;
    S->Bus = Bus;
    if (S->Connected) S->ReadPrimaryConnection();
  } else if (SameGuid(EventClass, OnNowClass)) {
    Ok = Bus->MatchSignal(UPower, UPowerPath, Properties, "PropertiesChanged", &OnPowerProperties,
                          U) &&
         Bus->MatchSignal(UPower, UPowerDisplay, Properties, "PropertiesChanged",
                          &OnPowerProperties, U);
    int OnBattery = 0;
    sd_bus_get_property_trivial(Bus->Bus(), UPower, UPowerPath, UPower, "OnBattery", nullptr, 'b',
                                &OnBattery);
    S->OnBattery = OnBattery;
    sd_bus_get_property_trivial(Bus->Bus(), UPower, UPowerDisplay, UPowerDevice, "WarningLevel",
                                nullptr, 'u', &S->WarningLevel);
  } else {
    return Result = int32_t(0x80040154u), nullptr; // REGDB_E_CLASSNOTREG
  }
  if (!Ok) return Result = FromErrno(-int(LastError())), nullptr;
  S->Bus = Bus;
  Calls->AddRef();
  S->Calls = Calls;
  if (!Bus->Start()) return Result = FromErrno(-int(LastError())), nullptr;
  Result = 0;
  return S.release();
}

int32_t SensUnsubscribe(TSensSubscription* Subscription, const TGUID&) {
  delete Subscription;
  return 0;
}

AnsiString SensErrorText(int32_t Result) {
  if ((uint32_t(Result) & 0xFFFF0000u) == 0x80070000u)
    return ErrorMessage(uint32_t(Result) & 0xFFFFu);
  return "Error " + std::to_string(Result);
}

TGUID SensNewGuid() {
  // A random (version 4) identifier.
  std::random_device Random;
  uint8_t B[16];
  for (auto& X : B) X = uint8_t(Random());
  B[6] = uint8_t((B[6] & 0x0F) | 0x40);
  B[8] = uint8_t((B[8] & 0x3F) | 0x80);
  TGUID G{};
  G.D1 = uint32_t(B[0]) << 24 | uint32_t(B[1]) << 16 | uint32_t(B[2]) << 8 | B[3];
  G.D2 = uint16_t(B[4] << 8 | B[5]);
  G.D3 = uint16_t(B[6] << 8 | B[7]);
  std::memcpy(G.D4, B + 8, 8);
  return G;
}

} // namespace kx::platform
