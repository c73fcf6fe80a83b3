// SPDX-License-Identifier: MIT
#pragma once
// Names for threads, kept per thread and announced to debuggers and tools.

#include <kx/rtl/Strings.h>

namespace kx {

// Keeps at most the first 255 characters of Name as the calling thread's name and
// announces it to an attached debugger (and, where the OS has one, to the OS's thread
// name). Never fails. The name is kept as 8-bit text: the 16-bit form is converted to
// the process code page first.
KX_API void KxSetThreadName(const AnsiString& Name);
KX_API void KxSetThreadName(const UnicodeString& Name);
// The calling thread's stored name; empty when never set.
KX_API AnsiString KxGetThreadName();

} // namespace kx
