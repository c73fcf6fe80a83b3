// SPDX-License-Identifier: MIT
#pragma once
// uKxMD5: MD5 digests of strings and buffers, and the running state for pieces.

#include <kx/encoding/MD5.h>
