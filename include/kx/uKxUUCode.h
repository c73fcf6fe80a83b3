// SPDX-License-Identifier: MIT
#pragma once
// uKxUUCode: uuencoding and uudecoding of streams, strings and string lists.

#include <kx/encoding/UUCode.h>
