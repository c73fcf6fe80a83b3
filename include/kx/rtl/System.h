// SPDX-License-Identifier: MIT
#pragma once
// Threads ids, tick counts and wait results of the runtime.

#include <kx/KxExport.h>

#include <cstdint>

namespace kx {

using TThreadID = uint32_t;

enum TWaitResult : uint8_t { wrSignaled, wrTimeout, wrAbandoned, wrError, wrIOCompletion };

inline constexpr uint32_t INFINITE_TIMEOUT = 0xFFFFFFFFu;

// 32-bit id of the calling thread (GetCurrentThreadId / gettid).
KX_API TThreadID KxGetCurrentThreadId();
// Milliseconds since an arbitrary start, wrapping at 2^32 as GetTickCount does.
KX_API uint32_t KxGetTickCount();
KX_API void KxSleep(uint32_t Milliseconds);

} // namespace kx
