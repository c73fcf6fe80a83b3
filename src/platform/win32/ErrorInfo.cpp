// SPDX-License-Identifier: MIT
// The thread's COM error information and BSTRs through oleaut32.
#include "platform/ErrorInfo.h"

#include <windows.h>

#include <oleauto.h>

namespace kx::platform {

void SetErrorInfo(IInterface* Info) {
  ::SetErrorInfo(0, reinterpret_cast<::IErrorInfo*>(Info));
}

IInterface* GetErrorInfo() {
  ::IErrorInfo* Info = nullptr;
  if (::GetErrorInfo(0, &Info) != S_OK) return nullptr;
  return reinterpret_cast<IInterface*>(Info);
}

WideChar* AllocBSTR(const UnicodeString& S) {
  static_assert(sizeof(WCHAR) == sizeof(WideChar));
  return reinterpret_cast<WideChar*>(
      ::SysAllocStringLen(reinterpret_cast<const WCHAR*>(S.data()), UINT(S.size())));
}

void FreeBSTR(WideChar* S) {
  ::SysFreeString(reinterpret_cast<BSTR>(S));
}

UnicodeString BSTRToString(const WideChar* S) {
  if (!S) return UnicodeString();
  return UnicodeString(S, ::SysStringLen(reinterpret_cast<BSTR>(const_cast<WideChar*>(S))));
}

} // namespace kx::platform
