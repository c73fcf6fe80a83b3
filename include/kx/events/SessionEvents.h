// SPDX-License-Identifier: MIT
#pragma once
// TKxSessionEvents: the end of the session (with a veto), terminal-session changes and power
// events as callbacks.
//
// Windows: a hidden window of the component receives the session and power messages; the
// handlers run on the thread that activated the component, through its message loop.
// Linux: systemd-logind and UPower signals over the system bus (DBUS_SYSTEM_BUS_ADDRESS is
// honoured). Each active component owns one bus connection serviced by a thread of its own,
// and the handlers run on that thread: they must synchronise with the rest of the program.
// logind lets a program delay a shutdown or a suspend, never refuse it: a handler that clears
// CanEnd keeps the component's delay lock until logind's delay runs out or the shutdown is
// cancelled.

#include <kx/rtl/Component.h>
#include <kx/rtl/Method.h>
#include <kx/rtl/Set.h>

#include <cstdint>

namespace kx {

enum TKxNotificationScope : uint8_t { nsThisSession, nsAllSessions };

// Member n stands for the session-change code n + 1.
enum TKxSessionEventType : uint8_t {
  seConnect,
  seDisconnect,
  seRemoteConnect,
  seRemoteDisconnect,
  seSessionLogon,
  seSessionLogoff,
  seSessionLock,
  seSessionUnlock,
  seSessionRemoteControl,
  seSessionCreate,
  seSessionTerminate
};

enum TKxEndSessionType : uint8_t { esCloseApp, esCritical, esLogoff };
using TKxEndSessionTypes = TSet<TKxEndSessionType>;

enum TKxPowerEventType : uint8_t {
  peSuspend,
  peResumeAutomatic,
  peResumeSuspend,
  pePowerStatusChange,
  pePowerSettingChange
};

using TKxOnQueryEndSessionEvent =
    TMethod<void(TObject* Sender, TKxEndSessionTypes Types, bool& CanEnd)>;
using TKxOnEndSessionEvent = TMethod<void(TObject* Sender, bool Ending, TKxEndSessionTypes Types)>;
using TKxOnSessionEvent = TMethod<void(TObject* Sender, uint32_t SessionId)>;
using TKxOnPowerEvent = TMethod<void(TObject* Sender)>;
using TKxOnPowerSettingEvent = TMethod<void(TObject* Sender, intptr_t LParam)>;

inline constexpr const char* SKxFailedToLoadWtsapi = "Failed to load the Wtsapi32.dll!";
inline constexpr const char* SKxFailedToLocateWTSRegister =
    "Failed to locate the WTSRegisterSessionNotification function!";

// The messages the component's window procedure handles, with their Windows values; the
// Linux sources deliver the same codes.
inline constexpr uint32_t KX_WM_QUERYENDSESSION = 17;
inline constexpr uint32_t KX_WM_ENDSESSION = 22;
inline constexpr uint32_t KX_WM_POWERBROADCAST = 536;
inline constexpr uint32_t KX_WM_WTSSESSION_CHANGE = 689;
inline constexpr uint32_t KX_ENDSESSION_CLOSEAPP = 0x00000001;
inline constexpr uint32_t KX_ENDSESSION_CRITICAL = 0x40000000;
inline constexpr uint32_t KX_ENDSESSION_LOGOFF = 0x80000000;
inline constexpr uint32_t KX_PBT_APMSUSPEND = 4;
inline constexpr uint32_t KX_PBT_APMRESUMESUSPEND = 7;
inline constexpr uint32_t KX_PBT_APMPOWERSTATUSCHANGE = 10;
inline constexpr uint32_t KX_PBT_APMRESUMEAUTOMATIC = 18;
inline constexpr uint32_t KX_PBT_POWERSETTINGCHANGE = 32787;

class KX_API TKxSessionEvents : public TComponent {
  KX_CLASS(TKxSessionEvents, TComponent)
public:
  explicit TKxSessionEvents(TComponent* AOwner = nullptr);
  ~TKxSessionEvents() override;
  void BeforeDestruction() override;

  bool Active() const { return FActive; }
  // Raises when the notification registration fails; the window then stays allocated
  // until deactivation or destruction, and the component stays inactive.
  void SetActive(bool Value);
  TKxNotificationScope NotificationScope() const { return FNotificationScope; }
  void SetNotificationScope(TKxNotificationScope Value) { FNotificationScope = Value; }
  // The hidden window (Windows HWND; on Linux the bus watcher); null while none exists.
  void* WindowHandle() const { return FWindowHandle; }
  // Destroys the hidden window and forgets its handle.
  void CloseHandle();

  virtual void TriggerWtsEvent(uint32_t Code, uint32_t SessionId);
  virtual void TriggerPwrEvent(uint32_t Code, intptr_t LParam = 0);
  virtual void TriggerQesEvent(TKxEndSessionTypes Types, bool& CanEnd);
  virtual void TriggerEndSessionEvent(bool Ending, TKxEndSessionTypes Types);

  TKxOnSessionEvent OnConsoleConnect;
  TKxOnSessionEvent OnConsoleDisconnect;
  TKxOnSessionEvent OnRemoteConnect;
  TKxOnSessionEvent OnRemoteDisconnect;
  TKxOnSessionEvent OnSessionLogon;
  TKxOnSessionEvent OnSessionLogoff;
  TKxOnSessionEvent OnSessionLock;
  TKxOnSessionEvent OnSessionUnlock;
  TKxOnSessionEvent OnSessionRemoteControl;
  TKxOnSessionEvent OnSessionCreate;
  TKxOnSessionEvent OnSessionTerminate;
  TKxOnPowerEvent OnPowerStatusChange;
  TKxOnPowerEvent OnResumeAutomatic;
  TKxOnPowerEvent OnResumeSuspend;
  TKxOnPowerEvent OnSuspend;
  TKxOnPowerSettingEvent OnPowerSettingChange;
  TKxOnQueryEndSessionEvent OnQueryEndSession;
  TKxOnEndSessionEvent OnEndSession;

private:
  void* FWindowHandle = nullptr;
  bool FActive = false;
  TKxNotificationScope FNotificationScope = nsThisSession;
};

// Registers the window for session-change notification (WTSRegisterSessionNotification,
// bound at run time); raises when the library or the function is missing or the call fails.
KX_API void WTSRegisterSessionNotification(void* Window, TKxNotificationScope Scope);
// Unregisters; silently does nothing when the library or the function is missing.
KX_API void WTSUnRegisterSessionNotification(void* Window);
// The session of the current process; 0 when the system cannot tell.
KX_API uint32_t GetCurrentSessionID();

} // namespace kx
