// SPDX-License-Identifier: MIT
#pragma once
// uKxNetEncoding: Base64, Base64Url, hexadecimal and URL encodings behind one interface, and
// their shared instances.

#include <kx/encoding/Base64Encoding.h>
#include <kx/encoding/HexEncoding.h>
#include <kx/encoding/KxNetEncoding.h>
#include <kx/encoding/NetEncoding.h>
#include <kx/encoding/URLEncoding.h>
