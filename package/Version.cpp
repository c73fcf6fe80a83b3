// SPDX-License-Identifier: MIT
// The version the library was built as, for callers that check what they loaded.
#include <kx/KxVersion.h>

namespace kx {

const char* KxVersion() {
  return KX_VERSION_STRING;
}

} // namespace kx
