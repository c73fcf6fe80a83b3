// SPDX-License-Identifier: MIT
#pragma once
// Methods called across COM report failures as result codes ("safe-call"): the callee turns
// an exception into a code and the thread's error information, the caller turns a failed
// code back into an exception through the installed safe-call error handler.

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Interfaces.h>

namespace kx {

inline constexpr const char* SSafecallException = "Exception in safecall method";
inline constexpr HRESULT KX_E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFFu);
inline constexpr HRESULT KX_E_POINTER = static_cast<HRESULT>(0x80004003u);

// Raised when a safe-call result fails and no handler raised anything better.
KX_DECLARE_EXCEPTION(ESafecallException, Exception)

// Called with a failed result and the caller's address; it raises. Null means none.
using TSafeCallErrorProc = void (*)(HRESULT ErrorCode, void* ErrorAddr);
KX_API TSafeCallErrorProc GetSafeCallErrorProc();
// Installs a handler and returns the previous one.
KX_API TSafeCallErrorProc SetSafeCallErrorProc(TSafeCallErrorProc Proc);

// The caller's side of a safe-call: a failed (negative) Result goes to the handler, and when
// the handler returns, or there is none, raises ESafecallException.
KX_API void SafeCallCheck(HRESULT Result);

} // namespace kx
