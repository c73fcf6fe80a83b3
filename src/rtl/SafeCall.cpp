// SPDX-License-Identifier: MIT
// The safe-call error handler and the caller's check of a safe-call result.
#include <kx/rtl/SafeCall.h>

#include <atomic>

namespace kx {

KX_IMPLEMENT_EXCEPTION(ESafecallException, Exception, "System")

namespace {
std::atomic<TSafeCallErrorProc> ErrorProc{nullptr};
} // namespace

TSafeCallErrorProc GetSafeCallErrorProc() {
  return ErrorProc.load(std::memory_order_acquire);
}

TSafeCallErrorProc SetSafeCallErrorProc(TSafeCallErrorProc Proc) {
  return ErrorProc.exchange(Proc, std::memory_order_acq_rel);
}

void SafeCallCheck(HRESULT Result) {
  if (Result >= 0) return;
  if (TSafeCallErrorProc Proc = GetSafeCallErrorProc()) Proc(Result, __builtin_return_address(0));
  throw ESafecallException(SSafecallException);
}

} // namespace kx
