// SPDX-License-Identifier: MIT
#pragma once
// uKxZLib: compression and decompression streams over zlib, and whole-stream functions.

#include <kx/zlib/ZLibFunctions.h>
#include <kx/zlib/ZLibStream.h>
