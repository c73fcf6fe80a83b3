// SPDX-License-Identifier: MIT
#pragma once
// uKxBase64: Base64 and URL-safe Base64 of streams, strings, byte arrays and buffers.

#include <kx/encoding/KxBase64.h>
