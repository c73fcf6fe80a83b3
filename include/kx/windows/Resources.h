// SPDX-License-Identifier: MIT
// Resources of uKxWindows: data built into a module, found by name and type.
#pragma once
// Names and types are texts, or "#<number>" for a numbered one (RT_RCDATA is "#10"), and are
// compared ignoring case. Windows looks in the module's own resources first; modules elsewhere
// carry none, so a program registers what it embeds (for example with #embed or xxd), and
// Windows looks there second.

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Strings.h>

namespace kx {

KX_DECLARE_EXCEPTION(EResNotFound, Exception)
inline constexpr const char* SResNotFound = "Resource %s not found";

// Makes Size bytes at Data resource Name of type ResType; the bytes stay the caller's and must
// outlive the registration. A second registration of the same name and type replaces the
// first. All registrations go when the library is unloaded.
KX_API void KxRegisterResource(const AnsiString& Name, const AnsiString& ResType, const void* Data,
                               uint32_t Size);
// Module null is the executable.
KX_API bool KxFindResource(const AnsiString& Name, const AnsiString& ResType,
                           void* Module = nullptr);
// A copy of the resource's bytes; EResNotFound "Resource <Name> not found" when there is none.
KX_API TBytes KxGetResource(const AnsiString& Name, const AnsiString& ResType,
                            void* Module = nullptr);

namespace detail {
// The unit's shut-down step: forgets every registration.
KX_API void ClearRegisteredResources();
} // namespace detail

} // namespace kx
