// SPDX-License-Identifier: MIT
// uKxSysUtils' questions about the machine and the process: thread id, computer and user
// names, the computer's description, environment variables and their expansion.
#pragma once

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Strings.h>
#include <kx/rtl/System.h>

namespace kx {

inline constexpr const char* SNoEnvironmentVar =
    "There is no Environment Variable with the name %s";
inline constexpr const char* SComputerDescriptionNotSupported =
    "The KxGetComputerDescription is not supported by your version of Windows";
inline constexpr const char* SFailedToLocateAPI = "Failed to locate API funtion.";
inline constexpr const char* SFailedNetServerGetInfo =
    "Failed to execute the NetServerGetInfo funtion.";
// What a facility that only Windows has raises elsewhere, with the facility's name.
inline constexpr const char* SNotSupportedOnPlatform = "%s is not supported on this platform";

// A facility of Windows (the registry, WMI, the version code) asked for on another platform.
KX_DECLARE_EXCEPTION(EKxNotSupported, Exception)

// The computer's name (GetComputerName; Linux: gethostname). Empty when the call fails.
KX_API AnsiString KxGetComputerName();
// The user who runs the process (GetUserName; Linux: the effective user's login name). Empty
// when the call fails.
KX_API AnsiString KxGetUserName();
// The account of the process token and, in Domain, its domain (Linux: the effective user and
// the host name, the domain Windows gives local accounts). Domain is cleared first; failures
// give empty texts.
KX_API AnsiString KxGetUserName(AnsiString& Domain);
// The computer's description (the server comment of NetServerGetInfo; Linux: PRETTY_HOSTNAME of
// /etc/machine-info, empty without one). Windows: an assertion when netapi32 cannot be loaded,
// Exception "Failed to locate API funtion." when a function is missing and "Failed to execute
// the NetServerGetInfo funtion." when the call fails.
KX_API AnsiString KxGetComputerDescription();

// The value of an environment variable, of any length; Exception "There is no Environment
// Variable with the name <Name>" when it is not set (Windows also for a set, empty one).
KX_API AnsiString KxGetEnvironmentVar(const AnsiString& Name);
// Expands "$(NAME)" tokens, then "%NAME%" ones:
// 1. While the text holds "$(", the token from the first "$(" to the first ")" after it is
//    replaced everywhere (ignoring case) by KxGetEnvironmentVar of its name, which raises for
//    an unknown name; "$(" without a ")" asks for the empty name and so raises.
// 2. When the result holds a "%", the answer is the platform's %-expansion of the original S
//    (unknown "%NAME%" stay as written), so step 1's work is dropped when both forms are used.
KX_API AnsiString KxExpandEnvVarsAndStrings(const AnsiString& S);

} // namespace kx
