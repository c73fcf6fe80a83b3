// SPDX-License-Identifier: MIT
// The source path and the messages shared by several components of uKxSysUtils.
#pragma once

namespace kx {

inline constexpr const char* SSysUtilsUnit =
    "source\\ComponentSets\\Components\\common\\uKxSysUtils";
// The message of the unit's own assertions.
inline constexpr const char* SAssertionFailure = "Assertion failure";

} // namespace kx
