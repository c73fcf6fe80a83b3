// SPDX-License-Identifier: MIT
#include <kx/events/SessionEvents.h>
#include <kx/rtl/Exceptions.h>

#include "package/Units.h"
#include "platform/Platform.h"
#include "platform/SessionEvents.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace kx {

KX_IMPLEMENT_CLASS(TKxSessionEvents, TComponent, "uKxSessionEvents")

namespace {

// The live components, for the shared window procedure to find the owner of a window. On
// Linux the messages come from the components' bus threads, hence the lock.
struct TSessionEventsList {
  std::mutex Lock;
  std::vector<TKxSessionEvents*> Items;
};
TSessionEventsList* GList = nullptr;
std::mutex GListCreation;

TSessionEventsList& List() {
  std::lock_guard<std::mutex> Guard(GListCreation);
  if (!GList) GList = new TSessionEventsList;
  return *GList;
}

TKxSessionEvents* FindOwner(void* Window) {
  std::lock_guard<std::mutex> Guard(GListCreation);
  if (!GList) return nullptr;
  std::lock_guard<std::mutex> ItemsGuard(GList->Lock);
  const auto& Items = GList->Items;
  for (auto It = Items.rbegin(); It != Items.rend(); ++It)
    if ((*It)->WindowHandle() == Window) return *It;
  return nullptr;
}

TKxEndSessionTypes EndSessionTypes(intptr_t LParam) {
  const auto Bits = static_cast<uint32_t>(static_cast<uintptr_t>(LParam));
  TKxEndSessionTypes Types;
  if (Bits & KX_ENDSESSION_CLOSEAPP) Types.Include(esCloseApp);
  if (Bits & KX_ENDSESSION_CRITICAL) Types.Include(esCritical);
  if (Bits & KX_ENDSESSION_LOGOFF) Types.Include(esLogoff);
  return Types;
}

intptr_t SessionWindowProc(void* Window, uint32_t Msg, uintptr_t WParam, intptr_t LParam) {
  TKxSessionEvents* Owner = nullptr;
  switch (Msg) {
  case KX_WM_QUERYENDSESSION: {
    bool CanEnd = true;
    if ((Owner = FindOwner(Window))) Owner->TriggerQesEvent(EndSessionTypes(LParam), CanEnd);
    // Answering 0 is how the application refuses the end of the session.
    return CanEnd ? 1 : 0;
  }
  case KX_WM_ENDSESSION:
    if ((Owner = FindOwner(Window)))
      Owner->TriggerEndSessionEvent(WParam != 0, EndSessionTypes(LParam));
    return 0;
  case KX_WM_POWERBROADCAST:
    if ((Owner = FindOwner(Window))) Owner->TriggerPwrEvent(static_cast<uint32_t>(WParam), LParam);
    return 1;
  case KX_WM_WTSSESSION_CHANGE:
    if ((Owner = FindOwner(Window)))
      Owner->TriggerWtsEvent(static_cast<uint32_t>(WParam),
                             static_cast<uint32_t>(static_cast<uintptr_t>(LParam)));
    return 0;
  default:
    return platform::DefSessionWindowProc(Window, Msg, WParam, LParam);
  }
}

} // namespace

TKxSessionEvents::TKxSessionEvents(TComponent* AOwner) : TComponent(AOwner) {
  auto& L = List();
  std::lock_guard<std::mutex> Guard(L.Lock);
  L.Items.push_back(this);
}

TKxSessionEvents::~TKxSessionEvents() {
  // Normally done before destruction; this covers a component destroyed without Free.
  if (FActive || FWindowHandle) {
    FActive = false;
    CloseHandle();
  }
  std::lock_guard<std::mutex> Guard(GListCreation);
  if (GList) {
    std::lock_guard<std::mutex> ItemsGuard(GList->Lock);
    auto& Items = GList->Items;
    Items.erase(std::remove(Items.begin(), Items.end(), this), Items.end());
  }
}

void TKxSessionEvents::BeforeDestruction() {
  SetActive(false);
  CloseHandle();
  inherited::BeforeDestruction();
}

void TKxSessionEvents::CloseHandle() {
  if (!FWindowHandle) return;
  void* Window = FWindowHandle;
  // The window leaves the list's view first, so a late message finds no owner.
  {
    std::lock_guard<std::mutex> Guard(List().Lock);
    FWindowHandle = nullptr;
  }
  platform::DestroySessionWindow(Window);
}

void TKxSessionEvents::SetActive(bool Value) {
  if (Value == FActive) return;
  if (Value) {
    if (!FWindowHandle) {
      void* Window = platform::AllocateSessionWindow(&SessionWindowProc);
      if (!Window) RaiseLastOSError();
      std::lock_guard<std::mutex> Guard(List().Lock);
      FWindowHandle = Window;
    }
    WTSRegisterSessionNotification(FWindowHandle, FNotificationScope);
    FActive = true;
  } else {
    if (FWindowHandle) WTSUnRegisterSessionNotification(FWindowHandle);
    CloseHandle();
    FActive = false;
  }
}

void TKxSessionEvents::TriggerWtsEvent(uint32_t Code, uint32_t SessionId) {
  const TKxOnSessionEvent* Handlers[] = {
      &OnConsoleConnect,       &OnConsoleDisconnect, &OnRemoteConnect,   &OnRemoteDisconnect,
      &OnSessionLogon,         &OnSessionLogoff,     &OnSessionLock,     &OnSessionUnlock,
      &OnSessionRemoteControl, &OnSessionCreate,     &OnSessionTerminate};
  if (Code < 1 || Code > std::size(Handlers)) return;
  const TKxOnSessionEvent& Handler = *Handlers[Code - 1];
  if (Handler) Handler(this, SessionId);
}

void TKxSessionEvents::TriggerPwrEvent(uint32_t Code, intptr_t LParam) {
  switch (Code) {
  case KX_PBT_APMSUSPEND:
    if (OnSuspend) OnSuspend(this);
    break;
  case KX_PBT_APMRESUMESUSPEND:
    if (OnResumeSuspend) OnResumeSuspend(this);
    break;
  case KX_PBT_APMPOWERSTATUSCHANGE:
    if (OnPowerStatusChange) OnPowerStatusChange(this);
    break;
  case KX_PBT_APMRESUMEAUTOMATIC:
    if (OnResumeAutomatic) OnResumeAutomatic(this);
    break;
  case KX_PBT_POWERSETTINGCHANGE:
    if (OnPowerSettingChange) OnPowerSettingChange(this, LParam);
    break;
  default:
    break;
  }
}

void TKxSessionEvents::TriggerQesEvent(TKxEndSessionTypes Types, bool& CanEnd) {
  if (OnQueryEndSession) OnQueryEndSession(this, Types, CanEnd);
}

void TKxSessionEvents::TriggerEndSessionEvent(bool Ending, TKxEndSessionTypes Types) {
  if (OnEndSession) OnEndSession(this, Ending, Types);
}

void WTSRegisterSessionNotification(void* Window, TKxNotificationScope Scope) {
  switch (platform::RegisterSessionNotification(Window, Scope == nsAllSessions)) {
  case platform::srOK:
    return;
  case platform::srNoLibrary:
    throw Exception(SKxFailedToLoadWtsapi);
  case platform::srNoFunction:
    throw Exception(SKxFailedToLocateWTSRegister);
  case platform::srFailed:
    RaiseLastOSError();
  }
}

void WTSUnRegisterSessionNotification(void* Window) {
  platform::UnRegisterSessionNotification(Window);
}

uint32_t GetCurrentSessionID() {
  return platform::CurrentSessionId();
}

namespace detail {

void uKxSessionEvents_Finalize() {
  std::lock_guard<std::mutex> Guard(GListCreation);
  delete GList;
  GList = nullptr;
}

} // namespace detail

} // namespace kx
