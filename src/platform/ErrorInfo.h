// SPDX-License-Identifier: MIT
#pragma once
// The thread's COM error information and the strings that cross COM (BSTR). Windows:
// oleaut32's SetErrorInfo/GetErrorInfo and SysAllocStringLen/SysFreeString. POSIX keeps the
// same contract in-process: one counted error-information reference per thread, and BSTRs
// laid out as OLE lays them out (the byte length before the text, a NUL after it).

#include "platform/Platform.h"

#include <kx/rtl/Interfaces.h>

namespace kx::platform {

// Replaces the thread's error information (an IErrorInfo pointer; null clears it), taking a
// reference of its own.
void SetErrorInfo(IInterface* Info);
// Hands the thread's error information to the caller (its reference) and clears it; null
// when there is none.
IInterface* GetErrorInfo();

WideChar* AllocBSTR(const UnicodeString& S);
void FreeBSTR(WideChar* S);
// The text of a BSTR, its length from its prefix; null is empty.
UnicodeString BSTRToString(const WideChar* S);

} // namespace kx::platform
