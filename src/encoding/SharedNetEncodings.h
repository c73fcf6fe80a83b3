// SPDX-License-Identifier: MIT
#pragma once
// The unit's shut-down frees the shared codec instances through this.

namespace kx::detail {

void FreeSharedNetEncodings();

} // namespace kx::detail
