// SPDX-License-Identifier: MIT
#pragma once
// What a log record says about the machine that the environment functions do not: the screen,
// and a local time cheap enough for every record.

#include <kx/rtl/DateTime.h>
#include <kx/rtl/Strings.h>

#include <cstdint>

namespace kx::platform {

// Width, height and colour depth of the primary screen; false where there is none.
bool HostScreen(int32_t& Width, int32_t& Height, int32_t& BitsPerPixel);

// The local time for time stamps written many times a second: the zone is looked at again
// when the second changes, not on every call.
void HostStampLocalTime(TSystemTime& Time);

} // namespace kx::platform
