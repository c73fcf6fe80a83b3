// SPDX-License-Identifier: MIT
#pragma once
// The source of session and power messages behind TKxSessionEvents. Windows: a hidden window
// whose procedure is replaced by the unit's. Linux: a watcher of logind and UPower on the
// system bus that delivers the same messages, from its own thread, to the unit's procedure.

#include <cstdint>

namespace kx::platform {

using TSessionMessageProc = intptr_t (*)(void* Window, uint32_t Msg, uintptr_t WParam,
                                         intptr_t LParam);

// Null on failure (LastError).
void* AllocateSessionWindow(TSessionMessageProc Proc);
void DestroySessionWindow(void* Window);
intptr_t DefSessionWindowProc(void* Window, uint32_t Msg, uintptr_t WParam, intptr_t LParam);

enum TSessionRegisterResult : uint8_t { srOK, srNoLibrary, srNoFunction, srFailed };
// AllSessions selects NOTIFY_FOR_ALL_SESSIONS; srFailed leaves the code in LastError().
TSessionRegisterResult RegisterSessionNotification(void* Window, bool AllSessions);
void UnRegisterSessionNotification(void* Window);
uint32_t CurrentSessionId();

} // namespace kx::platform
