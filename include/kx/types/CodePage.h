// SPDX-License-Identifier: MIT
#pragma once
// Charset names and the platform's code-page numbers, both ways.

#include <kx/rtl/Strings.h>

namespace kx {

// The code page of a charset name (compared in lower case, not trimmed), 0 for an empty name;
// an unknown name raises Exception "No CodePage ID found for <name>!".
KX_API uint16_t KxCodePage(const AnsiString& Name);
// The canonical charset name of a code page; an unknown number raises Exception
// "No CodePage Name found for <number>!".
KX_API AnsiString KxCodePage(uint16_t CodePage);

} // namespace kx
