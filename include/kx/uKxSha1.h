// SPDX-License-Identifier: MIT
#pragma once
// uKxSha1: SHA-1 digests of buffers, strings, streams and files.

#include <kx/encoding/Sha1.h>
