// SPDX-License-Identifier: MIT
#pragma once
// Names shared by the components of uKxTypes.

namespace kx {

// The unit named by the assertions of uKxTypes.
inline constexpr const char* STypesUnit = "source\\ComponentSets\\Components\\common\\uKxTypes";

} // namespace kx
