// SPDX-License-Identifier: MIT
// Thread ids and tick counts of the runtime.
#include <kx/rtl/System.h>

#include "platform/Platform.h"

namespace kx {

TThreadID KxGetCurrentThreadId() {
  return platform::CurrentThreadId();
}
uint32_t KxGetTickCount() {
  return platform::TickCount();
}
void KxSleep(uint32_t Milliseconds) {
  platform::Sleep(Milliseconds);
}

} // namespace kx
