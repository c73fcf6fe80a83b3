// SPDX-License-Identifier: MIT
#pragma once
// How binary values are written as text; each value selects one of the net encoders.

#include <cstdint>

namespace kx {

enum TKxBinEncoding : uint8_t { beBase64, beHexEncoded, beBase64Url };

} // namespace kx
