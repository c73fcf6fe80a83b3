// SPDX-License-Identifier: MIT
// uKxWindows' registry reading: multi-line values. Windows only: on Linux the functions raise
// EKxNotSupported "KxReadMultiLineReg is not supported on this platform".
#pragma once

#include <kx/rtl/StringList.h>
#include <kx/sysutils/StringUtils.h>

namespace kx {

inline constexpr const char* SFailedToReadRegValue = "Failed to read the registry value!";

// The registry's root keys; on Windows an HKEY passes as it is.
using TKxRootKey = void*;
inline TKxRootKey const KxHKeyClassesRoot = reinterpret_cast<TKxRootKey>(uintptr_t(0x80000000u));
inline TKxRootKey const KxHKeyCurrentUser = reinterpret_cast<TKxRootKey>(uintptr_t(0x80000001u));
inline TKxRootKey const KxHKeyLocalMachine = reinterpret_cast<TKxRootKey>(uintptr_t(0x80000002u));
inline TKxRootKey const KxHKeyUsers = reinterpret_cast<TKxRootKey>(uintptr_t(0x80000003u));

// Reads a multi-string value (REG_MULTI_SZ) of KeyName in the registry view of Bitness
// (bit64: the 64-bit view, bit32: the 32-bit one) into Lines, one item per line; Lines is
// cleared first. Exception "Failed to read the registry value!" when the key or the value
// cannot be read.
KX_API void KxReadMultiLineReg(TKxRootKey RootKey, TKxBitness Bitness, const AnsiString& KeyName,
                               const AnsiString& ValueName, TStrings* Lines);
// The view of the build: bit64 in the x86_64 build, bit32 in the i686 one.
KX_API void KxReadMultiLineReg(TKxRootKey RootKey, const AnsiString& KeyName,
                               const AnsiString& ValueName, TStrings* Lines);

} // namespace kx
