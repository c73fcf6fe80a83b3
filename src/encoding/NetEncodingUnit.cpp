// SPDX-License-Identifier: MIT
// Start-up and shut-down of uKxNetEncoding.
#include "encoding/SharedNetEncodings.h"
#include "package/Units.h"

#include <atomic>

namespace kx::detail {

namespace {
// The package may be loaded more than once; the instances go with the last shut-down.
std::atomic<int32_t> InitCount{0};
} // namespace

void uKxNetEncoding_Initialize() {
  ++InitCount;
}

void uKxNetEncoding_Finalize() {
  if (--InitCount == 0) FreeSharedNetEncodings();
}

} // namespace kx::detail
